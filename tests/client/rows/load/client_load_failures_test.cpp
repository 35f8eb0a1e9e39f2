// Loads and unloads in which memory runs out or SQLite fails, at every step in turn. A load that failed is started
// again, and must end like one that nothing happened to.
#include "counting_sqlite.hpp"
#include "failing_alloc.hpp"
#include "failing_new.hpp"
#include "load_test.hpp"

#include <filesystem>

namespace fs = std::filesystem;

namespace {

class ClientLoadFailures : public LoadTest {
  protected:
    void SetUp() override
    {
        LoadTest::SetUp();
        create("empty");
        ASSERT_EQ(query("CREATE TRIGGER mine AFTER INSERT ON Customers WHEN NEW.Name = 'Eve' BEGIN SELECT RAISE(ABORT, "
                        "'not her'); END",
                        "empty"),
                  "");
        database = path("db");
        rejects = path("rejects");
        out = path("out");
        files = {write("Customers.dat", "1\tAda\tABC\t1815-12-10\n2\tBob\tABC\tsoon\n3\tEve\tABC\t\n"),
                 write("Orders.csv", "Id,Customer,Price,Note\r\n1,1,2.50,\"a, b\"\r\n2,9,1.00,\r\n3,,-1,\r\n"),
                 write("more.sql",
                       "INSERT Customers (Id, Name) VALUES (4, N'Mia')\nGO\nINSERT Sales.Orders (Id, Price) "
                       "VALUES (4, 1.5)\nINSERT Nobody VALUES (1)\n")};
        start_anew();
        expected_rows = rows();
        start_anew();
        expected = state();
        ASSERT_EQ(expected.substr(0, expected.find('\n')),
                  "Customers 3 1 2; Sales.Orders 3 1 2;  1 0 1; Customers 1 1 0; Sales.Orders 1 1 0");
    }
    // The database as it was created, and no rejects.
    void start_anew()
    {
        fs::copy_file(path("empty"), database, fs::copy_options::overwrite_existing);
        fs::remove_all(path("rejects"));
    }
    tov_client_load_options options() const
    {
        tov_client_load_options result = {};
        result.rejects = rejects.c_str();
        result.batch = 2;
        return result;
    }
    // Loads without a look at errors between the calls. Takes no memory of its own.
    void attempt()
    {
        const tov_client_load_options how = options();
        tov_client_loader *loader = nullptr;
        KT_varray *report = nullptr;
        KT_varray *remarks = nullptr;
        tov_client__open_loader(ctx, schema, database.c_str(), &how, &loader);
        for (const std::string &file : files)
            tov_client__load_file(ctx, loader, file.c_str());
        tov_client__finish_load(ctx, loader, &report, &remarks);
        allocations_to_failure = 0;
        EXPECT_EQ(report != nullptr, !KT_context__has_err(ctx));
        KT_varray__free(ctx, report);
        KT_varray__free(ctx, remarks);
        tov_client__free_loader(ctx, loader);
    }
    // What a load leaves after all: it goes on where one was interrupted.
    std::string rows()
    {
        std::string text = load(files, options()) + "\n";
        text += told + "\n";
        for (const char *sql : {"PRAGMA integrity_check", "PRAGMA foreign_key_check", "SELECT * FROM Customers",
                                "SELECT * FROM \"Sales.Orders\""})
            text += query(sql) + "\n";
        return text;
    }
    // And what it keeps of how it was, with the refused rows.
    std::string state()
    {
        std::string text = rows();
        text += query("SELECT * FROM tov_load_progress ORDER BY id") + "\n";
        for (const char *name : {"Customers.dat", "Orders.csv", "more.sql"})
            text += read(std::string("rejects/") + name) + read(std::string("rejects/") + name + ".jsonl");
        return text;
    }
    // All rows as a script, and the rows of a query as CSV. Takes no memory of its own.
    void unload()
    {
        KT_varray *report = nullptr;
        tov_client_unload_options how = {};
        how.format = "insert";
        tov_client__unload(ctx, schema, database.c_str(), out.c_str(), &how, &report);
        how.format = "csv";
        how.query = "SELECT Id, Name FROM Customers";
        KT_varray *of_query = nullptr;
        tov_client__unload(ctx, schema, database.c_str(), out.c_str(), &how, &of_query);
        allocations_to_failure = 0;
        EXPECT_EQ(of_query != nullptr, !KT_context__has_err(ctx));
        KT_varray__free(ctx, report);
        KT_varray__free(ctx, of_query);
    }
    std::string unloaded()
    {
        return read("out/rows.sql") + read("out/query.csv");
    }

    std::string database;
    std::string rejects;
    std::string out;
    std::vector<std::string> files;
    std::string expected;
    std::string expected_rows;
};

TEST_F(ClientLoadFailures, OfTheRuntimesMemory)
{
    for (kt_failing_alloc fault; fault.next();) {
        start_anew();
        attempt();
        const bool is_over = !fault.fired();
        EXPECT_EQ(KT_context__has_err(ctx) != 0, !is_over);
        if (!is_over) {
            EXPECT_FAILED(ctx, KT_ERR_OUT_OF_MEMORY);
        }
        KT_context__err_reset(ctx);
        EXPECT_EQ(fault.leaked(), 0u);
        fault.pause();
        ASSERT_EQ(state(), expected);
        if (is_over)
            break;
    }
}

TEST_F(ClientLoadFailures, OfTheContainersMemory)
{
    bool is_over = false;
    for (size_t turn = 1; !is_over; turn += 1 + turn / 100) { // later ones are of rows like those before
        SCOPED_TRACE(turn);
        start_anew();
        allocations_to_failure = turn;
        attempt();
        is_over = !KT_context__has_err(ctx);
        if (!is_over) {
            EXPECT_FAILED(ctx, KT_ERR_OUT_OF_MEMORY);
        }
        KT_context__err_reset(ctx);
        ASSERT_EQ(state(), expected);
    }
}

TEST_F(ClientLoadFailures, OfSqlite)
{
    kt_counting_sqlite sqlite;
    size_t failed_calls = 0;
    for (size_t n = 0; n < static_cast<size_t>(kt_sqlite_entry::count); n++) {
        const auto entry = static_cast<kt_sqlite_entry>(n);
        if (entry == kt_sqlite_entry::changes || entry == kt_sqlite_entry::column_type)
            continue;                                    // cannot fail
        for (int turn = 1;; turn += turn < 10 ? 1 : 4) { // later calls are of rows like those before
            const int code = kt_sqlite_failures[failed_calls % std::size(kt_sqlite_failures)];
            SCOPED_TRACE("entry " + std::to_string(n) + ", call " + std::to_string(turn) + ", code " +
                         std::to_string(code));
            start_anew();
            sqlite.fail(entry, turn, code);
            attempt();
            const bool is_over = !sqlite.fired();
            EXPECT_EQ(sqlite.open_statements(), 0);
            EXPECT_EQ(sqlite.open_connections(), 0);
            sqlite.fail(kt_sqlite_entry::none, 0);
            if (is_over)
                break;
            failed_calls++;
            const bool is_survived = !KT_context__has_err(ctx);
            if (!is_survived && sqlite.has_code(entry)) {
                EXPECT_EQ(KT_context__err_code(ctx), KT_ERR_SQLITE(code)) << KT_context__err_description(ctx);
            }
            KT_context__err_reset(ctx);
            if (is_survived)
                EXPECT_EQ(rows(), expected_rows); // words about a refused row may be missing
            else
                EXPECT_EQ(state(), expected);
            KT_context__err_reset(ctx);
        }
    }
    EXPECT_GT(failed_calls, 60u);
    RecordProperty("failed calls", static_cast<int>(failed_calls));
}

// A failed unload says so, whatever it has written; the next one writes all.
TEST_F(ClientLoadFailures, OfUnloading)
{
    unload();
    ASSERT_OK(ctx);
    const std::string whole = unloaded();
    ASSERT_NE(whole.find("N'Ada'"), std::string::npos);
    size_t failures = 0;
    const auto judge = [&] {
        failures += KT_context__has_err(ctx) ? 1U : 0U;
        KT_context__err_reset(ctx);
    };
    for (kt_failing_alloc fault; fault.next();) {
        unload();
        EXPECT_EQ(KT_context__has_err(ctx) != 0, fault.fired());
        judge();
        EXPECT_EQ(fault.leaked(), 0u);
        if (!fault.fired())
            break;
    }
    EXPECT_EQ(unloaded(), whole);
    bool is_over = false;
    for (size_t turn = 1; !is_over; turn++) {
        allocations_to_failure = turn;
        unload();
        is_over = !KT_context__has_err(ctx);
        judge();
    }
    EXPECT_EQ(unloaded(), whole);
    kt_counting_sqlite sqlite;
    const auto count = [&](kt_sqlite_entry entry, int, int code) {
        EXPECT_EQ(sqlite.open_statements(), 0);
        EXPECT_EQ(sqlite.open_connections(), 0);
        if (KT_context__has_err(ctx) && sqlite.has_code(entry) && code) {
            EXPECT_EQ(KT_context__err_code(ctx), KT_ERR_SQLITE(code));
        }
        judge();
    };
    EXPECT_GT(kt_sweep_sqlite(
                  sqlite, [this] { unload(); }, count),
              60);
    EXPECT_GT(failures, 200u);
}

} // namespace
