// What the module's calls cost: an operation on a column against the lookups it cannot do without, and all texts of
// a schema against SQLite's work on them.

#include "bench_report.hpp"
#include "bench_schema.hpp"
#include "tov_client.h"
#include "tov_shape.h"

#include <sqlite3.h>

namespace {

struct column {
    std::string tbl;
    std::string col;
};

// Every 7th column of the schema, so that the walk leaves the cache as a real one does.
std::vector<column> columns_of(const bench_size &size)
{
    KT_context *ctx = bench_ctx();
    tov_schema *schema = bench_schema(size);
    std::vector<column> all;
    for (uint32_t t = 0; t < size.tables; t++) {
        const char *tbl = nullptr, *col = nullptr;
        uint32_t count = 0;
        tov_schema__get_nth_tbl_id(ctx, schema, t, &tbl);
        tov_schema__count_cols(ctx, schema, tbl, &count);
        for (uint32_t c = t % 7; c < count; c += 7) {
            tov_schema__get_nth_col_id(ctx, schema, tbl, c, &col);
            all.push_back({tbl, col});
        }
    }
    bench_check();
    return all;
}

void read_type(benchmark::State &state, const bench_size &size)
{
    tov_schema *schema = nullptr;
    tov_schema__from_json(bench_ctx(), bench_json(size).c_str(), &schema);
    const std::vector<column> all = columns_of(size);
    for (auto _ : state) {
        for (const column &c : all) {
            const char *type = nullptr;
            tov_schema__get_col_type(bench_ctx(), schema, c.tbl.c_str(), c.col.c_str(), &type, nullptr);
            benchmark::DoNotOptimize(type);
        }
    }
    bench_check();
    tov_schema__nullfree(bench_ctx(), &schema);
}

// The table by its id among the tables, the column by its id among its columns; type and name are two more.
void look_up(benchmark::State &state, const bench_size &size)
{
    KT_context *ctx = bench_ctx();
    KT_vhash *document = nullptr, *tbls = nullptr;
    KT_vhash__alloc__from_json__sz(ctx, &document, bench_json(size).c_str());
    KT_vhash__get__vhash(ctx, document, "tbls", &tbls);
    const std::vector<column> all = columns_of(size);
    for (auto _ : state) {
        for (const column &c : all) {
            KT_vhash *at = nullptr;
            const char *name = nullptr;
            KT_vhash__get__vhash(ctx, tbls, c.tbl.c_str(), &at);
            KT_vhash__get__vhash(ctx, at, "cols", &at);
            KT_vhash__get__vhash(ctx, at, c.col.c_str(), &at);
            KT_vhash__get__vhash(ctx, at, "type", &at);
            KT_vhash__get__sz(ctx, at, "name", &name);
            benchmark::DoNotOptimize(name);
        }
    }
    bench_check();
    KT_vhash__free(ctx, document);
}

// The texts live in the schema's pool, so each round starts from a fresh schema.
void texts(benchmark::State &state, const bench_size &size)
{
    KT_context *ctx = bench_ctx();
    for (auto _ : state) {
        state.PauseTiming();
        tov_schema *schema = nullptr;
        tov_schema__from_json(ctx, bench_json(size).c_str(), &schema);
        state.ResumeTiming();
        for (uint32_t t = 0; t < size.tables; t++) {
            const char *tbl = nullptr;
            tov_schema__get_nth_tbl_id(ctx, schema, t, &tbl);
            bench_texts_of_table(ctx, schema, tbl);
        }
        state.PauseTiming();
        tov_schema__nullfree(ctx, &schema);
        state.ResumeTiming();
    }
    bench_check();
}

// The script of the same schema, executed in memory.
void execute(benchmark::State &state, const bench_size &size)
{
    KT_string *script = nullptr;
    tov_client__write_script(bench_ctx(), bench_schema(size), &script);
    bench_check();
    for (auto _ : state) {
        state.PauseTiming();
        sqlite3 *connection = nullptr;
        sqlite3_open(":memory:", &connection);
        state.ResumeTiming();
        if (sqlite3_exec(connection, KT_string__sz(script), nullptr, nullptr, nullptr) != SQLITE_OK)
            state.SkipWithError(sqlite3_errmsg(connection));
        state.PauseTiming();
        sqlite3_close(connection);
        state.ResumeTiming();
    }
    KT_string__free(bench_ctx(), script);
}

void check_shape(benchmark::State &state, const bench_size &size)
{
    tov_schema *schema = nullptr;
    tov_schema__from_json(bench_ctx(), bench_json(size).c_str(), &schema);
    for (auto _ : state) {
        tov_schema__set_filter_id(bench_ctx(), schema, 1); // else the last answer still holds
        tov_schema__check_shape(bench_ctx(), schema);
    }
    bench_check();
    tov_schema__nullfree(bench_ctx(), &schema);
}

using bench = void (*)(benchmark::State &, const bench_size &);

void add(const char *name, const char *who, const bench_size &size, bench body)
{
    benchmark::RegisterBenchmark((std::string(name) + "/" + std::to_string(size.tables) + "/" + who).c_str(), body,
                                 size)
        ->Unit(benchmark::kMillisecond)
        ->UseRealTime();
}

} // namespace

void register_module_benches()
{
    for (const bench_size &size : bench_sizes) {
        add("col_read", "ours", size, read_type);
        add("col_read", "the lookups", size, look_up);
        add("shape", "ours", size, check_shape);
        add("shape", "reading it", size, bench_read_schema);
        add("texts", "ours", size, texts);
        if (size.tables <= 1000) // SQLite's own work grows faster than the schema
            add("texts", "SQLite", size, execute);
    }
}
