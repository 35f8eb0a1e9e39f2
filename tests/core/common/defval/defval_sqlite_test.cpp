// Statements in a throw-away database.

#include "counting_sqlite.hpp"
#include "defval/defval_sqlite.hpp"
#include "failing_alloc.hpp"
#include "kt_test.hpp"

// A context and an open database behind a table that counts.
class SqliteExec : public ContextTest {
  protected:
    void SetUp() override
    {
        ContextTest::SetUp();
        fns = tov__get_sqlite_functions();
        ASSERT_EQ(fns->open(":memory:", &connection, 6), 0);
    }
    void TearDown() override
    {
        EXPECT_EQ(sqlite.open_statements(), 0);
        EXPECT_EQ(fns->close(connection), 0);
        EXPECT_EQ(sqlite.open_connections(), 0);
        ContextTest::TearDown();
    }
    int count_rows()
    {
        sqlite3_stmt *statement = nullptr;
        fns->prepare(connection, "SELECT count(*) FROM t", &statement);
        fns->step(statement);
        const int rows = static_cast<int>(fns->column_int64(statement, 0));
        fns->finalize(statement);
        return rows;
    }

    kt_counting_sqlite sqlite;
    const KT_sqlite_functions *fns = nullptr;
    sqlite3 *connection = nullptr;
};

TEST_F(SqliteExec, RunsOneStatementToItsEnd)
{
    _tov_sqlite__exec(ctx, fns, connection, "CREATE TABLE t (a)");
    EXPECT_OK(ctx);
    _tov_sqlite__exec(ctx, fns, connection, "INSERT INTO t VALUES (1), (2), (3) RETURNING a");
    EXPECT_OK(ctx);
    EXPECT_EQ(count_rows(), 3);
    _tov_sqlite__exec(ctx, fns, connection, "SELECT a FROM t");
    EXPECT_OK(ctx);
}

TEST_F(SqliteExec, FormatsAndRuns)
{
    _tov_sqlite__execf(ctx, fns, connection, "CREATE TABLE %s (a)", "t");
    EXPECT_OK(ctx);
    _tov_sqlite__execf(ctx, fns, connection, "INSERT INTO t VALUES (%d), (%s)", 1, "'100%'");
    EXPECT_OK(ctx);
    EXPECT_EQ(count_rows(), 2);
    _tov_sqlite__execf(ctx, fns, connection, "DELETE FROM t");
    EXPECT_OK(ctx);
    EXPECT_EQ(count_rows(), 0);
}

TEST_F(SqliteExec, TakesPercentSignsAsTheyStand)
{
    _tov_sqlite__exec(ctx, fns, connection, "CREATE TABLE t (a DEFAULT '%s%d')");
    EXPECT_OK(ctx);
}

static void expect_frames(KT_context *ctx, uint32_t count)
{
    EXPECT_EQ(KT_context__count_err_stackframes(ctx), count);
    for (uint32_t n = 0; n < count; n++) {
        const char *file = nullptr;
        int32_t line = 0;
        KT_context__get_nth_err_stackframe(ctx, n, &file, &line);
        EXPECT_STREQ(file, "src/core/common/tov_parse_defin");
    }
}

TEST_F(SqliteExec, ReportsMalformedSql)
{
    _tov_sqlite__exec(ctx, fns, connection, "SELEKT 1");
    EXPECT_ERROR(ctx, KT_ERR_SQLITE(1), "SQL logic error: near \"SELEKT\": syntax error");
    expect_frames(ctx, 1);
    reset();
    _tov_sqlite__execf(ctx, fns, connection, "SELEKT %d", 1);
    EXPECT_ERROR(ctx, KT_ERR_SQLITE(1), "SQL logic error: near \"SELEKT\": syntax error");
    expect_frames(ctx, 2);
    reset();
}

TEST_F(SqliteExec, ReportsAConstraint)
{
    _tov_sqlite__exec(ctx, fns, connection, "CREATE TABLE t (a NOT NULL)");
    _tov_sqlite__exec(ctx, fns, connection, "INSERT INTO t VALUES (NULL)");
    EXPECT_ERROR(ctx, KT_ERR_SQLITE(19), "constraint failed: NOT NULL constraint failed: t.a");
    reset();
    EXPECT_EQ(count_rows(), 0);
}

TEST_F(SqliteExec, ReportsTextWithoutAStatement)
{
    _tov_sqlite__exec(ctx, fns, connection, " -- nothing here");
    EXPECT_FAILED(ctx, KT_ERR_SQLITE(21)); // SQLite calls it a misuse to step through no statement
    reset();
}

TEST_F(SqliteExec, ReportsWhicheverCallFails)
{
    struct {
        kt_sqlite_entry entry;
        int turn;
    } const failures[] = {
        {kt_sqlite_entry::prepare, 1}, {kt_sqlite_entry::step, 1},     {kt_sqlite_entry::step, 2},
        {kt_sqlite_entry::step, 3},    {kt_sqlite_entry::finalize, 1},
    };
    for (const auto &failure : failures) {
        SCOPED_TRACE(static_cast<int>(failure.entry));
        sqlite.fail(failure.entry, failure.turn);
        _tov_sqlite__exec(ctx, fns, connection, "SELECT 1 UNION ALL SELECT 2");
        EXPECT_TRUE(sqlite.fired());
        EXPECT_FAILED(ctx, KT_ERR_SQLITE(kt_counting_sqlite::failure_code));
        EXPECT_EQ(sqlite.open_statements(), 0);
        reset();
    }
}

TEST_F(SqliteExec, SurvivesEveryFailingAllocation)
{
    const std::string longer(1000, 'a');
    for (kt_failing_alloc fault; fault.next(); reset()) {
        _tov_sqlite__execf(ctx, fns, connection, "SELECT '%s'", longer.c_str());
        if (!fault.fired()) {
            EXPECT_OK(ctx);
            break;
        }
        EXPECT_FAILED(ctx, KT_ERR_OUT_OF_MEMORY);
        EXPECT_EQ(fault.leaked(), 0u);
        EXPECT_EQ(sqlite.open_statements(), 0);
    }
}

TEST_F(SqliteExec, ScratchClosesAtTheEndOfItsScope)
{
    {
        tov_scratch scratch;
        _tov_scratch__open(ctx, &scratch);
        EXPECT_OK(ctx);
        EXPECT_EQ(sqlite.open_connections(), 2);
        _tov_sqlite__exec(ctx, scratch.fns, scratch.connection, "CREATE TABLE only_here (a)");
        EXPECT_OK(ctx);
    }
    EXPECT_EQ(sqlite.open_connections(), 1);
    _tov_sqlite__exec(ctx, fns, connection, "SELECT * FROM only_here");
    EXPECT_FAILED(ctx, KT_ERR_SQLITE(1));
    reset();
}

TEST_F(SqliteExec, ReportsAScratchThatDoesNotOpen)
{
    sqlite.fail(kt_sqlite_entry::open, 1);
    tov_scratch scratch;
    _tov_scratch__open(ctx, &scratch);
    EXPECT_ERROR(ctx, KT_ERR_SQLITE(kt_counting_sqlite::failure_code), "disk I/O error");
    expect_frames(ctx, 1);
    EXPECT_EQ(scratch.connection, nullptr);
    reset();
}
