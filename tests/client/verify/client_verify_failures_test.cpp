// A check that fails says so: no violation is lost without an error, nothing leaks, and nothing stays open.
#include "allocations_to_failure.hpp"
#include "counting_sqlite.hpp"
#include "failing_alloc.hpp"
#include "load_test.hpp"
#include "tov_check.h"

namespace {

const char *const all_kinds_of_rows =
    "CREATE TABLE Customers(Id INTEGER, Name TEXT, Code TEXT, Born TEXT);"
    "CREATE TABLE \"Sales.Orders\"(Id INTEGER PRIMARY KEY, Customer INTEGER, Price INTEGER, Note TEXT);"
    "INSERT INTO Customers VALUES(1, 'Ada', 'A', NULL), (1, 'Bob', x'00', '2024-02-30');"
    "INSERT INTO \"Sales.Orders\" VALUES(1, 1, 5, ''), (2, 7, -9223372036854775808, ''), (3, 1, -1, NULL)";

class ClientVerifyFailures : public LoadTest {
  protected:
    void SetUp() override
    {
        LoadTest::SetUp();
        tov_schema__add_check_constraint(ctx, schema, "2", "o", "abs(\"Price\") < 100");
        ASSERT_OK(ctx);
        database = path("db"); // made while memory can be had
        sqlite3 *file = nullptr;
        ASSERT_EQ(sqlite3_open(database.c_str(), &file), SQLITE_OK);
        ASSERT_EQ(run(file, all_kinds_of_rows), "");
        sqlite3_close(file);
        count = 0;
        check();
        ASSERT_OK(ctx);
        whole = count;
        ASSERT_EQ(whole, 9);
    }
    void check()
    {
        const auto take = [](KT_context *, void *data, const tov_client_violation *) { ++*static_cast<int *>(data); };
        count = 0;
        tov_client__check_database(ctx, schema, database.c_str(), nullptr, take, &count, nullptr);
        allocations_to_failure = 0;
    }

    std::string database;
    int count = 0;
    int whole = 0;
};

TEST_F(ClientVerifyFailures, OfMemory)
{
    for (kt_failing_alloc fault; fault.next(); KT_context__err_reset(ctx)) {
        check();
        EXPECT_EQ(fault.leaked(), 0u);
        if (!fault.fired()) {
            EXPECT_OK(ctx);
            break;
        }
        EXPECT_FAILED(ctx, KT_ERR_OUT_OF_MEMORY);
    }
    EXPECT_EQ(count, whole);
    bool is_over = false;
    size_t turn = 1;
    for (; !is_over; turn++) {
        allocations_to_failure = turn;
        check();
        is_over = !KT_context__has_err(ctx);
        if (!is_over) {
            EXPECT_FAILED(ctx, KT_ERR_OUT_OF_MEMORY);
        }
        KT_context__err_reset(ctx);
    }
    EXPECT_EQ(count, whole);
    EXPECT_GT(turn, 300u);
}

TEST_F(ClientVerifyFailures, OfSqlite)
{
    kt_counting_sqlite sqlite;
    const auto judge = [&](kt_sqlite_entry entry, int turn, int code) {
        SCOPED_TRACE("entry " + std::to_string(static_cast<int>(entry)) + ", call " + std::to_string(turn));
        EXPECT_EQ(sqlite.open_statements(), 0);
        EXPECT_EQ(sqlite.open_connections(), 0);
        const bool is_closing =
            entry == kt_sqlite_entry::close || entry == kt_sqlite_entry::finalize || entry == kt_sqlite_entry::reset;
        if (code && !is_closing && !KT_context__has_err(ctx)) {
            EXPECT_GE(count, whole);
        }
        if (KT_context__has_err(ctx) && code) {
            EXPECT_EQ(KT_context__err_code(ctx), KT_ERR_SQLITE(code));
        }
        KT_context__err_reset(ctx);
    };
    EXPECT_GT(kt_sweep_sqlite(
                  sqlite, [this] { check(); }, judge),
              100);
}

// What the callback raises ends the check.
TEST_F(ClientVerifyFailures, OfTheCallback)
{
    const auto take = [](KT_context *context, void *data, const tov_client_violation *) {
        if (++*static_cast<int *>(data) == 2)
            KT_context__err__generic(context, KT_ERR_OUT_OF_RANGE, "here", 1);
    };
    count = 0;
    KT_bool is_whole = 1;
    tov_client__check_database(ctx, schema, database.c_str(), nullptr, take, &count, &is_whole);
    EXPECT_FAILED(ctx, KT_ERR_OUT_OF_RANGE);
    EXPECT_EQ(count, 2);
    EXPECT_EQ(is_whole, 1);
    KT_context__err_reset(ctx);
}

} // namespace
