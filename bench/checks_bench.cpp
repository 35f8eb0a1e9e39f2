// The check of a wide table's expressions, against SQLite creating a table with the same ones and compiling an INSERT.

#include "bench_report.hpp"
#include "bench_schema.hpp"
#include "tov_client.h"

#include <sqlite3.h>

namespace {

constexpr uint32_t checks_of_a_col = 4;

std::string check_of(uint32_t col, uint32_t n)
{
    return "([C" + std::to_string(col) + "]>" + std::to_string(n) + ")";
}

// One table with as many checks, four for each column.
tov_schema *wide_schema(uint32_t checks)
{
    KT_context *ctx = bench_ctx();
    tov_schema *schema = nullptr;
    tov_schema__new(ctx, 1, &schema);
    tov_schema__add_tbl(ctx, schema, "t", "T", 0);
    for (uint32_t col = 0; col < checks / checks_of_a_col; col++) {
        const std::string id = "c" + std::to_string(col), name = "C" + std::to_string(col);
        tov_schema__add_col(ctx, schema, "t", id.c_str(), name.c_str(), 1, 0, 0);
        tov_schema__set_col_type_simple(ctx, schema, "t", id.c_str(), "sint32");
        for (uint32_t n = 0; n < checks_of_a_col; n++)
            tov_schema__add_colcon_check(ctx, schema, "t", id.c_str(), nullptr, check_of(col, n).c_str());
    }
    bench_check();
    return schema;
}

void check_texts(benchmark::State &state, uint32_t checks)
{
    tov_schema *schema = wide_schema(checks);
    for (auto _ : state)
        tov_client__check_texts(bench_ctx(), schema);
    bench_check();
    tov_schema__nullfree(bench_ctx(), &schema);
}

void run(sqlite3 *connection, const std::string &sql, benchmark::State &state)
{
    if (sqlite3_exec(connection, sql.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK)
        state.SkipWithError(sqlite3_errmsg(connection));
}

void direct(benchmark::State &state, uint32_t checks)
{
    std::string sql = "CREATE TABLE T(";
    for (uint32_t col = 0; col < checks / checks_of_a_col; col++) {
        sql += (col ? ", C" : "C") + std::to_string(col) + " int";
        for (uint32_t n = 0; n < checks_of_a_col; n++)
            sql += " CHECK " + check_of(col, n);
    }
    sql += ")";
    for (auto _ : state) {
        sqlite3 *connection = nullptr;
        sqlite3_open(":memory:", &connection);
        run(connection, sql, state);
        run(connection, "EXPLAIN INSERT INTO T DEFAULT VALUES", state);
        sqlite3_close(connection);
    }
}

} // namespace

void register_checks_benches()
{
    for (const uint32_t checks : {1000U, 2000U, 4000U, 8000U}) {
        const std::string name = "checks/" + std::to_string(checks);
        benchmark::RegisterBenchmark((name + "/ours").c_str(), check_texts, checks)->UseRealTime();
        benchmark::RegisterBenchmark((name + "/SQLite").c_str(), direct, checks)->UseRealTime();
    }
}
