// Checking the rows of a table of 8 columns, beside one SELECT count(*) with the same conditions written by hand.
//
// Processor time is compared, in the same run, on a database without triggers and checks of its own.

#include "bench_report.hpp"
#include "bench_schema.hpp"
#include "tov_check.h"
#include "tov_host.h"

#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <sqlite3.h>

namespace fs = std::filesystem;

namespace {

constexpr std::string_view table_script =
    "CREATE TABLE dbo.Sales (Id int IDENTITY NOT NULL PRIMARY KEY, Name nvarchar(60) NOT NULL, Code char(9) COLLATE "
    "Latin1_General_CI_AS NOT NULL, Price decimal(9,2) NOT NULL CHECK (Price >= 0), Placed datetime NOT NULL, Done bit "
    "NOT NULL, Quantity smallint NULL, Note nvarchar(200) NULL);";

constexpr const char *rows_script =
    "CREATE TABLE Sales (Id INTEGER PRIMARY KEY, Name TEXT, Code TEXT, Price INTEGER, Placed TEXT, Done INTEGER, "
    "Quantity INTEGER, Note TEXT);"
    "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < %lld)"
    "INSERT INTO Sales SELECT i, 'large wooden chair ' || i, printf('%%03d-%%05d', i %% 1000, i %% 99991), i * 7 %% "
    "10000000,"
    "printf('20%%02d-%%02d-%%02d %%02d:%%02d:%%02d.%%02d7', i %% 24, i %% 12 + 1, i %% 28 + 1, i %% 23, i %% 59, i %% "
    "58, i %% 99),"
    "i %% 2, i %% 60000 - 30000, CASE WHEN i %% 3 THEN 'green cover, express, table red' END FROM n;";

// What the types and rules of the columns mean, as a person would write it.
constexpr const char *by_hand =
    "SELECT count(*) FROM Sales WHERE "
    "Id NOT BETWEEN -2147483648 AND 2147483647 OR "
    "Name IS NULL OR typeof(Name) != 'text' OR length(Name) > 60 OR "
    "(length(CAST(Name AS BLOB)) > 60 AND length(Name) * 2 > 60 AND "
    "Name GLOB replace(hex(zeroblob(61 - length(Name))), '00', '*[\xF0\x90\x80\x80-\xF4\x8F\xBF\xBF]') || '*') OR "
    "Code IS NULL OR typeof(Code) != 'text' OR length(Code) != 9 OR "
    "(length(CAST(Code AS BLOB)) > length(Code) AND Code GLOB '*[^\x01-\xC3\xBF]*') OR "
    "Price IS NULL OR typeof(Price) != 'integer' OR length(CAST(abs(Price) AS TEXT)) > 9 OR Price < 0 OR "
    "Placed IS NULL OR typeof(Placed) != 'text' OR Placed NOT GLOB "
    "'[0-9][0-9][0-9][0-9]-[01][0-9]-[0-3][0-9] [0-2][0-9]:[0-5][0-9]:[0-5][0-9].[0-9][0-9][037]' OR "
    "substr(Placed, 12, 2) >= '24' OR NOT (substr(Placed, 9, 2) BETWEEN '01' AND '28' AND "
    "substr(Placed, 6, 2) BETWEEN '01' AND '12' OR "
    "coalesce(date(substr(Placed, 1, 10), '+0 days') = substr(Placed, 1, 10), 0)) OR Placed < '1753' OR "
    "Done IS NULL OR typeof(Done) != 'integer' OR Done NOT BETWEEN 0 AND 1 OR "
    "typeof(Quantity) NOT IN ('integer', 'null') OR Quantity NOT BETWEEN -32768 AND 32767 OR "
    "typeof(Note) NOT IN ('text', 'null') OR length(Note) > 200 OR "
    "(length(CAST(Note AS BLOB)) > 200 AND length(Note) * 2 > 200 AND "
    "Note GLOB replace(hex(zeroblob(201 - length(Note))), '00', '*[\xF0\x90\x80\x80-\xF4\x8F\xBF\xBF]') || '*')";

class stage {
  public:
    explicit stage(int64_t count)
    {
        std::string name = (fs::temp_directory_path() / "tov_check_XXXXXX").string();
        if (!mkdtemp(name.data()))
            throw std::runtime_error("no folder for files");
        folder_ = name;
        KT_varray *findings = nullptr;
        tov_host__import(bench_ctx(), table_script.data(), table_script.size(), nullptr, &schema, &findings);
        KT_varray__free(bench_ctx(), findings);
        bench_check();
        sqlite3 *connection = nullptr;
        sqlite3_open(database().c_str(), &connection);
        char *script = sqlite3_mprintf(rows_script, static_cast<long long>(count));
        if (sqlite3_exec(connection, script, nullptr, nullptr, nullptr) != SQLITE_OK)
            throw std::runtime_error(sqlite3_errmsg(connection));
        sqlite3_free(script);
        sqlite3_close(connection);
    }
    ~stage()
    {
        tov_schema__nullfree(bench_ctx(), &schema);
        std::error_code ignored;
        fs::remove_all(folder_, ignored);
    }
    stage(const stage &) = delete;
    stage &operator=(const stage &) = delete;

    std::string database() const
    {
        return folder_ / "rows.db";
    }
    tov_schema *schema = nullptr;

  private:
    fs::path folder_;
};

const stage &stage_of(int64_t count)
{
    static std::map<int64_t, std::unique_ptr<stage>> made;
    std::unique_ptr<stage> &entry = made[count];
    if (!entry)
        entry = std::make_unique<stage>(count);
    return *entry;
}

void check(const stage &of)
{
    const auto take = [](KT_context *, void *, const tov_client_violation *violation) {
        throw std::runtime_error(violation->message);
    };
    tov_client__check_database(bench_ctx(), of.schema, of.database().c_str(), nullptr, take, nullptr, nullptr);
    bench_check();
}

void count_by_hand(const stage &of)
{
    sqlite3 *connection = nullptr;
    sqlite3_stmt *statement = nullptr;
    sqlite3_open_v2(of.database().c_str(), &connection, SQLITE_OPEN_READONLY | SQLITE_OPEN_NOMUTEX, nullptr);
    sqlite3_exec(connection, "PRAGMA cache_size=-32768", nullptr, nullptr, nullptr); // as the check has
    if (sqlite3_prepare_v2(connection, by_hand, -1, &statement, nullptr) != SQLITE_OK ||
        sqlite3_step(statement) != SQLITE_ROW || sqlite3_column_int64(statement, 0) != 0)
        throw std::runtime_error(std::string("counted by hand: ") + sqlite3_errmsg(connection));
    sqlite3_finalize(statement);
    sqlite3_close(connection);
}

double processor_time()
{
    return static_cast<double>(std::clock()) / CLOCKS_PER_SEC;
}

void measure(benchmark::State &state, void (*body)(const stage &of), int64_t count)
{
    const stage &of = stage_of(count);
    for (auto _ : state) {
        const double before = processor_time();
        body(of);
        state.SetIterationTime(processor_time() - before);
    }
    state.SetItemsProcessed(state.iterations() * count);
}

} // namespace

void register_check_benches()
{
    for (const int64_t count : {10'000, 1'000'000}) {
        const std::string name = "check_rows/" + std::to_string(count);
        benchmark::RegisterBenchmark((name + "/ours").c_str(), measure, check, count)
            ->Unit(benchmark::kMillisecond)
            ->UseManualTime();
        benchmark::RegisterBenchmark((name + "/count(*) by hand").c_str(), measure, count_by_hand, count)
            ->Unit(benchmark::kMillisecond)
            ->UseManualTime();
    }
}
