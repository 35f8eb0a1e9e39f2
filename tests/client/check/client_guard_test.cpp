#include "check/client_guard.hpp"

#include "client_test.hpp"

class ClientGuard : public ClientTest {
  protected:
    void SetUp() override
    {
        ClientTest::SetUp();
        ASSERT_EQ(sqlite3_open(":memory:", &connection), SQLITE_OK);
        ASSERT_EQ(run(connection, "CREATE TABLE T(a); CREATE TABLE other(x); ATTACH ':memory:' AS aux"), "");
        ASSERT_EQ(client_guard__watch(tov__get_sqlite_functions(), connection, &guard), SQLITE_OK);
    }
    client_guard guard;
};

namespace {
struct guard_case {
    const char *sentence;
    client_duty duty;
    const char *sql;
    bool allowed;
};
} // namespace

static constexpr const char *trigger_body = " BEGIN SELECT 1; END";

static const guard_case guard_cases[] = {
    {"without a duty not even a query", client_duty::nothing, "SELECT 1", false},
    {"an expression", client_duty::expression, "SELECT (upper('x') || 1)", true},
    {"an expression that reads a table", client_duty::expression, "SELECT (SELECT x FROM other)", false},
    {"an expression with a function that does more than compute", client_duty::expression,
     "SELECT (load_extension('x'))", false},
    {"an expression that writes", client_duty::expression, "DELETE FROM other", false},
    {"the table named, with keys and checks", client_duty::tbl,
     "CREATE TABLE \"New\"(a PRIMARY KEY, b UNIQUE REFERENCES other(x), CHECK (length(b) > 0))", true},
    {"another table", client_duty::tbl, "CREATE TABLE elsewhere(a)", false},
    {"a temporary table of that name", client_duty::tbl, "CREATE TEMP TABLE New(a)", false},
    {"a table of that name in an attached database", client_duty::tbl, "CREATE TABLE aux.New(a)", false},
    {"a table made from a query", client_duty::tbl, "CREATE TABLE New AS SELECT * FROM other", false},
    {"a virtual table", client_duty::tbl, "CREATE VIRTUAL TABLE New USING fts5(a)", false},
    {"a view", client_duty::tbl, "CREATE VIEW New AS SELECT 1", false},
    {"an index on another table", client_duty::tbl, "CREATE INDEX i ON other(x)", false},
    {"dropping a table", client_duty::tbl, "DROP TABLE other", false},
    {"changing a table", client_duty::tbl, "ALTER TABLE other RENAME TO New", false},
    {"attaching a file", client_duty::tbl, "ATTACH ':memory:' AS New", false},
    {"a pragma", client_duty::tbl, "PRAGMA writable_schema=ON", false},
    {"a check with a function that does more than compute", client_duty::tbl,
     "CREATE TABLE New(a, CHECK (sqlite_version() > 0))", false},
    {"the index named, with an order, a condition and a function that computes", client_duty::index,
     "CREATE UNIQUE INDEX tr ON New(a DESC, ifnull(a, 0)) WHERE a IS NOT NULL", true},
    {"another index", client_duty::index, "CREATE INDEX other_index ON New(a)", false},
    {"the index named on another table", client_duty::index, "CREATE INDEX tr ON other(x)", false},
    {"an index with a function that does more than compute", client_duty::index,
     "CREATE INDEX tr ON New(a) WHERE likelihood(a, 0.5) OR sqlite_source_id() > 0", false},
    {"a table, where an index is meant", client_duty::index, "CREATE TABLE tr(a)", false},
    {"a row for the table named", client_duty::rows, "INSERT INTO T DEFAULT VALUES", true},
    {"a change of its rows, with functions that compute", client_duty::rows, "UPDATE T SET a = abs(a)", true},
    {"a row for another table", client_duty::rows, "INSERT INTO other DEFAULT VALUES", false},
    {"a row from a query", client_duty::rows, "INSERT INTO T SELECT x FROM other", false},
    {"a change with a function that does more than compute", client_duty::rows, "UPDATE T SET a = sqlite_version()",
     false},
    {"deleting rows", client_duty::rows, "DELETE FROM T", false},
    {"the trigger named", client_duty::trigger, "CREATE TRIGGER tr BEFORE INSERT ON New", true},
    {"another trigger", client_duty::trigger, "CREATE TRIGGER tr2 BEFORE INSERT ON New", false},
    {"the trigger named on another table", client_duty::trigger, "CREATE TRIGGER tr BEFORE INSERT ON other", false},
    {"a temporary trigger", client_duty::trigger, "CREATE TEMP TRIGGER tr BEFORE INSERT ON New", false},
    {"anything, in a statement of our own", client_duty::own_statement, "DROP TABLE other", true},
};

TEST_F(ClientGuard, AllowsWhatIsMeantAndNothingElse)
{
    for (const guard_case &c : guard_cases) {
        SCOPED_TRACE(c.sentence);
        const bool trigger = c.duty == client_duty::trigger;
        guard = {client_duty::own_statement};
        if (trigger || c.duty == client_duty::index) {
            ASSERT_EQ(run(connection, "CREATE TABLE IF NOT EXISTS New(a)"), "");
        }
        guard = {c.duty, c.duty == client_duty::rows ? "T" : "New", "tr"};
        sqlite3_stmt *statement = nullptr;
        const std::string sql = std::string(c.sql) + (trigger ? trigger_body : "");
        EXPECT_EQ(sqlite3_prepare_v2(connection, sql.c_str(), -1, &statement, nullptr) == SQLITE_OK, c.allowed)
            << sqlite3_errmsg(connection);
        sqlite3_finalize(statement);
    }
}

TEST_F(ClientGuard, TellsHarmlessFunctions)
{
    for (const char *name : {"abs", "zeroblob", "->", "date", "current_timestamp"})
        EXPECT_TRUE(client_is_harmless_function(name)) << name;
    for (const char *name : {"load_extension", "readfile", "writefile", "edit", "fts3_tokenizer", "sqlite_version", ""})
        EXPECT_FALSE(client_is_harmless_function(name)) << name;
}
