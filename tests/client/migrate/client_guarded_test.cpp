// A statement with texts of a schema does what it is for, whatever the texts are.
#include "client_test.hpp"
#include "migrate/client_guarded.hpp"

namespace {

struct guarded_case {
    const char *name;
    client_migration_statement statement;
    bool is_run;
};

const guarded_case guarded_cases[] = {
    {"a table", {"CREATE TABLE n (a CHECK (a > 0))", client_duty::tbl, "n"}, true},
    {"another table", {"CREATE TABLE m (a)", client_duty::tbl, "n"}, false},
    {"a table of what another holds", {"CREATE TABLE n AS SELECT * FROM t", client_duty::tbl, "n"}, false},
    {"a second statement", {"CREATE TABLE n (a); DROP TABLE t", client_duty::tbl, "n"}, false},
    {"no statement", {"-- nothing", client_duty::tbl, "n"}, false},
    {"a column", {"ALTER TABLE t ADD COLUMN b NOT NULL DEFAULT 1 CHECK (abs(b) > 0)", client_duty::column, "t"}, true},
    {"a column of another table", {"ALTER TABLE u ADD COLUMN b", client_duty::column, "t"}, false},
    {"a column that goes", {"ALTER TABLE t DROP COLUMN a", client_duty::column, "t"}, false},
    {"a harmful function", {"ALTER TABLE t ADD COLUMN b CHECK (load_extension(b))", client_duty::column, "t"}, false},
    {"rows", {"INSERT INTO t SELECT a FROM u", client_duty::copying, "t", "u"}, true},
    {"rows of a third table", {"INSERT INTO t SELECT a FROM v", client_duty::copying, "t", "u"}, false},
    {"rows into another table", {"INSERT INTO v SELECT a FROM u", client_duty::copying, "t", "u"}, false},
    {"rows that go", {"DELETE FROM t", client_duty::copying, "t", "u"}, false},
    {"rows with a function that reads files",
     {"INSERT INTO t SELECT readfile(a) FROM u", client_duty::copying, "t", "u"},
     false},
    {"a setting", {"PRAGMA writable_schema=ON", client_duty::copying, "t", "u"}, false},
    {"another file", {"ATTACH ':memory:' AS x", client_duty::column, "t"}, false},
};

class ClientGuarded : public ClientTest {
  protected:
    void open(client_guarded &database)
    {
        ASSERT_EQ(database.functions->open(":memory:", database.connection.out(), SQLITE_OPEN_READWRITE), SQLITE_OK);
        client_guarded__watch(ctx, database);
        for (const char *tbl : {"t", "u", "v"}) {
            client_guarded__run(ctx, database, {std::string("CREATE TABLE ") + tbl + " (a)"});
            client_guarded__run(ctx, database, {std::string("INSERT INTO ") + tbl + " VALUES (1)"});
        }
        ASSERT_OK(ctx);
    }
};

TEST_F(ClientGuarded, RunsWhatAStatementIsFor)
{
    for (const guarded_case &c : guarded_cases) {
        SCOPED_TRACE(c.name);
        client_guarded database;
        open(database);
        client_guarded__run(ctx, database, c.statement);
        EXPECT_EQ(KT_context__has_err(ctx) == 0, c.is_run)
            << (KT_context__has_err(ctx) ? KT_context__err_description(ctx) : "");
        KT_context__err_reset(ctx);
        std::string found;
        client_read_statement(ctx, database, "t", found);
        EXPECT_NE(found, "");
    }
}

} // namespace
