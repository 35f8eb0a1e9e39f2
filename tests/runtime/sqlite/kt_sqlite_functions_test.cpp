// The table over SQLite: positions, each entry at work, and another table in its place.
#include "kt_sqlite_functions.h"
#include "kt_test.hpp"

#include <cstdio>
#include <cstring>
#include <sqlite3.h>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

class SqliteFunctionsTest : public ContextTest {
  protected:
    void SetUp() override
    {
        ContextTest::SetUp();
        ASSERT_EQ(sqlite->open(":memory:", &connection, 6), SQLITE_OK);
    }
    void TearDown() override
    {
        EXPECT_EQ(sqlite->close(connection), SQLITE_OK);
        ContextTest::TearDown();
    }
    sqlite3_stmt *prepare(const char *sql)
    {
        sqlite3_stmt *statement = nullptr;
        EXPECT_EQ(sqlite->prepare(connection, sql, &statement), SQLITE_OK) << sqlite->message(connection);
        return statement;
    }

    const KT_sqlite_functions *sqlite = tov__get_sqlite_functions();
    sqlite3 *connection = nullptr;
};

} // namespace

TEST_F(SqliteFunctionsTest, EveryEntryIsSet)
{
    void (*entries[sizeof(KT_sqlite_functions) / sizeof(void (*)())])();
    static_assert(sizeof entries == sizeof(KT_sqlite_functions));
    std::memcpy(entries, sqlite, sizeof entries);
    for (size_t n = 0; n < std::size(entries); n++)
        EXPECT_NE(entries[n], nullptr) << n;
}

TEST_F(SqliteFunctionsTest, ValuesAreBoundAndRead)
{
    sqlite3_stmt *statement = prepare("SELECT ?1 AS b, ?2, ?3, ?4, ?5 AS t");
    ASSERT_NE(statement, nullptr);
    EXPECT_EQ(sqlite->bind_parameter_count(statement), 5);
    {
        std::string bytes("\0\1\2", 3);
        std::string text = "text and more";
        EXPECT_EQ(sqlite->bind_blob(statement, 1, bytes.data(), 3), SQLITE_OK);
        EXPECT_EQ(sqlite->bind_double(statement, 2, 2.5), SQLITE_OK);
        EXPECT_EQ(sqlite->bind_int64(statement, 3, INT64_MIN), SQLITE_OK);
        EXPECT_EQ(sqlite->bind_null(statement, 4), SQLITE_OK);
        EXPECT_EQ(sqlite->bind_text(statement, 5, text.c_str(), 4), SQLITE_OK);
        bytes.assign(3, 'x');
        text.assign(13, 'x');
    }
    ASSERT_EQ(sqlite->step(statement), SQLITE_ROW);
    EXPECT_EQ(sqlite->column_count(statement), 5);
    EXPECT_STREQ(sqlite->column_name(statement, 4), "t");
    const int types[] = {SQLITE_BLOB, SQLITE_FLOAT, SQLITE_INTEGER, SQLITE_NULL, SQLITE_TEXT};
    for (int column = 0; column < 5; column++)
        EXPECT_EQ(sqlite->column_type(statement, column), types[column]) << column;
    EXPECT_EQ(sqlite->column_bytes(statement, 0), 3);
    EXPECT_EQ(std::memcmp(sqlite->column_blob(statement, 0), "\0\1\2", 3), 0);
    EXPECT_EQ(sqlite->column_double(statement, 1), 2.5);
    EXPECT_EQ(sqlite->column_int64(statement, 2), INT64_MIN);
    EXPECT_STREQ(sqlite->column_text(statement, 4), "text");
    EXPECT_EQ(sqlite->step(statement), SQLITE_DONE);
    EXPECT_EQ(sqlite->reset(statement), SQLITE_OK);
    EXPECT_EQ(sqlite->clear_bindings(statement), SQLITE_OK);
    ASSERT_EQ(sqlite->step(statement), SQLITE_ROW);
    EXPECT_EQ(sqlite->column_type(statement, 2), SQLITE_NULL);

    sqlite3_stmt *copy = prepare("SELECT ?1");
    EXPECT_EQ(sqlite->bind_value(copy, 1, sqlite->column_value(statement, 0)), SQLITE_OK);
    EXPECT_EQ(sqlite->finalize(copy), SQLITE_OK);
    EXPECT_EQ(sqlite->finalize(statement), SQLITE_OK);
}

TEST_F(SqliteFunctionsTest, ChangesRowidsAndTransactionsAreTold)
{
    EXPECT_EQ(sqlite->busy_timeout(connection, 10), SQLITE_OK);
    EXPECT_EQ(sqlite->get_autocommit(connection), 1);
    EXPECT_EQ(sqlite->exec(connection, "BEGIN; CREATE TABLE t (a UNIQUE); INSERT INTO t VALUES (1), (2);"), SQLITE_OK);
    EXPECT_EQ(sqlite->get_autocommit(connection), 0);
    EXPECT_EQ(sqlite->changes(connection), 2);
    EXPECT_EQ(sqlite->last_insert_rowid(connection), 2);
    EXPECT_EQ(sqlite->exec(connection, "INSERT INTO t VALUES (1)"), SQLITE_CONSTRAINT);
    EXPECT_EQ(sqlite->extended_errcode(connection), SQLITE_CONSTRAINT_UNIQUE);
    EXPECT_STREQ(sqlite->message(connection), "UNIQUE constraint failed: t.a");
    EXPECT_STREQ(sqlite->errstr(SQLITE_CONSTRAINT), "constraint failed");
    EXPECT_EQ(sqlite->exec(connection, "COMMIT"), SQLITE_OK);
}

TEST_F(SqliteFunctionsTest, PrepareIgnoresWhatFollowsAndPrepareNextGivesIt)
{
    EXPECT_EQ(sqlite->finalize(prepare("SELECT 1; this is not SQL")), SQLITE_OK);
    const char *rest = "SELECT 1; SELECT 2; -- end";
    std::vector<std::string> statements;
    for (sqlite3_stmt *statement = nullptr; *rest; sqlite->finalize(statement)) {
        ASSERT_EQ(sqlite->prepare_next(connection, rest, &statement, &rest), SQLITE_OK);
        if (!statement)
            break;
        statements.emplace_back(sqlite3_sql(statement));
    }
    EXPECT_EQ(statements, (std::vector<std::string>{"SELECT 1;", " SELECT 2;"}));
    sqlite3_stmt *statement = nullptr;
    EXPECT_EQ(sqlite->prepare(connection, "nonsense", &statement), SQLITE_ERROR);
    EXPECT_EQ(statement, nullptr);
}

TEST_F(SqliteFunctionsTest, AFunctionReadsEveryTypeAndGivesEveryResult)
{
    // Gives back what it gets, changed a little; its data counts the calls.
    const auto change = [](sqlite3_context *call, int count, sqlite3_value **arguments) {
        const KT_sqlite_functions *table = tov__get_sqlite_functions();
        *static_cast<int *>(table->user_data(call)) += count;
        sqlite3_value *value = arguments[0];
        switch (table->value_type(value)) {
        case SQLITE_INTEGER:
            return table->result_int64(call, table->value_int64(value) + 1);
        case SQLITE_FLOAT:
            return table->result_double(call, table->value_double(value) / 2);
        case SQLITE_TEXT:
            if (std::strcmp(table->value_text(value), "error") == 0)
                return table->result_error(call, "what went wrong");
            if (std::strcmp(table->value_text(value), "code") == 0)
                return table->result_error_code(call, SQLITE_NOMEM);
            return table->result_text(call, table->value_text(value), table->value_bytes(value) - 1);
        case SQLITE_BLOB:
            return table->value_blob(value) ? table->result_value(call, value) : table->result_null(call);
        default:
            return table->result_null(call);
        }
    };
    static int released;
    released = 0;
    int calls = 0;
    ASSERT_EQ(sqlite->create_function(connection, "change", 1, SQLITE_UTF8, &calls, change, [](void *) { released++; }),
              SQLITE_OK);
    sqlite3_stmt *statement = prepare("SELECT quote(change(41)) || quote(change(5.0)) || quote(change('text'))"
                                      "|| quote(change(x'0102')) || quote(change(x'')) || quote(change(NULL))");
    ASSERT_EQ(sqlite->step(statement), SQLITE_ROW);
    EXPECT_STREQ(sqlite->column_text(statement, 0), "422.5'tex'X'0102'NULLNULL");
    EXPECT_EQ(sqlite->finalize(statement), SQLITE_OK);
    EXPECT_EQ(calls, 6);
    EXPECT_EQ(sqlite->exec(connection, "SELECT change('error')"), SQLITE_ERROR);
    EXPECT_STREQ(sqlite->message(connection), "what went wrong");
    EXPECT_EQ(sqlite->exec(connection, "SELECT change('code')"), SQLITE_NOMEM);
    EXPECT_EQ(released, 0);
    ASSERT_EQ(sqlite->create_function(connection, "change", 1, SQLITE_UTF8, nullptr, change, nullptr), SQLITE_OK);
    EXPECT_EQ(released, 1);
}

TEST_F(SqliteFunctionsTest, OpeningFailsWithNothingLeftOpen)
{
    const int64_t before = sqlite3_memory_used();
    for (const auto open : {sqlite->open, sqlite->open_plain}) {
        sqlite3 *opened = connection;
        EXPECT_EQ(open("no/such/directory/file", &opened, 6), SQLITE_CANTOPEN);
        EXPECT_EQ(opened, nullptr);
    }
    EXPECT_EQ(sqlite3_memory_used(), before);
}

TEST_F(SqliteFunctionsTest, FlagsSayHowToOpen)
{
    const std::string file = ::testing::TempDir() + "kt_sqlite_functions_test." + std::to_string(getpid());
    std::remove(file.c_str());
    sqlite3 *opened = nullptr;
    EXPECT_EQ(sqlite->open(file.c_str(), &opened, SQLITE_OPEN_READWRITE), SQLITE_CANTOPEN) << "not created";
    ASSERT_EQ(sqlite->open(file.c_str(), &opened, 6), SQLITE_OK);
    EXPECT_EQ(sqlite->exec(opened, "CREATE TABLE t (a)"), SQLITE_OK);
    EXPECT_EQ(sqlite->close(opened), SQLITE_OK);
    ASSERT_EQ(sqlite->open(file.c_str(), &opened, SQLITE_OPEN_READONLY), SQLITE_OK);
    EXPECT_EQ(sqlite->exec(opened, "INSERT INTO t VALUES (1)"), SQLITE_READONLY);
    EXPECT_EQ(sqlite->exec(opened, "SELECT date('2024-02-29') FROM t"), SQLITE_OK);
    EXPECT_EQ(sqlite->close(opened), SQLITE_OK);
    std::remove(file.c_str());
}

TEST_F(SqliteFunctionsTest, VersionAndMemoryAreTheLibrarys)
{
    EXPECT_STREQ(sqlite->libversion(), sqlite3_libversion());
    EXPECT_EQ(sqlite->libversion_number(), sqlite3_libversion_number());
    const int64_t before = sqlite3_memory_used();
    void *block = sqlite->allocate(100);
    ASSERT_NE(block, nullptr);
    EXPECT_GE(sqlite3_memory_used(), before + 100);
    sqlite->release(block);
    EXPECT_EQ(sqlite3_memory_used(), before);
}

TEST_F(SqliteFunctionsTest, AnotherTableMayTakeItsPlace)
{
    static KT_sqlite_functions own;
    own = *sqlite;
    own.libversion = [] { return "the program's own"; };
    tov__set_sqlite_functions(&own);
    EXPECT_EQ(tov__get_sqlite_functions(), &own);
    EXPECT_STREQ(tov__get_sqlite_functions()->libversion(), "the program's own");
    tov__set_sqlite_functions(nullptr);
    EXPECT_EQ(tov__get_sqlite_functions(), sqlite);
}
