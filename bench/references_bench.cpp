// Foreign keys at scale, against one walk over all columns through the public operations.

#include "bench_report.hpp"
#include "bench_schema.hpp"

#include <map>

namespace {

constexpr uint32_t table_counts[] = {100, 1000, 10000, 26653};

tov_schema *random_schema(uint32_t tables)
{
    static std::map<uint32_t, tov_schema *> made;
    tov_schema *&schema = made[tables];
    if (!schema)
        schema = bench_reference_schema(tables, 3 * tables);
    return schema;
}

tov_schema *chain(uint32_t tables)
{
    static std::map<uint32_t, tov_schema *> made;
    tov_schema *&schema = made[tables];
    if (!schema)
        schema = bench_reversed_chain(tables);
    return schema;
}

template <class Visit> void for_each_tbl(tov_schema *schema, uint32_t tables, Visit visit)
{
    for (uint32_t n = 0; n < tables; n++) {
        const char *tbl = nullptr;
        tov_schema__get_nth_tbl_id(bench_ctx(), schema, n, &tbl);
        visit(tbl);
    }
}

// The yardstick: the reference of every column, once.
void walk_all(tov_schema *schema, uint32_t tables)
{
    KT_context *ctx = bench_ctx();
    for_each_tbl(schema, tables, [&](const char *tbl) {
        uint32_t columns = 0;
        tov_schema__count_cols(ctx, schema, tbl, &columns);
        for (uint32_t c = 0; c < columns; c++) {
            const char *col = nullptr, *ref_tbl = nullptr, *ref_col = nullptr;
            KT_bool has = 0;
            tov_schema__get_nth_col_id(ctx, schema, tbl, c, &col);
            tov_schema__get_colcon_fk(ctx, schema, tbl, col, &has, nullptr, &ref_tbl, &ref_col, nullptr, nullptr);
            benchmark::DoNotOptimize(ref_tbl);
        }
    });
}

void walk(benchmark::State &state, uint32_t tables)
{
    tov_schema *schema = random_schema(tables);
    for (auto _ : state)
        walk_all(schema, tables);
    bench_check();
}

void walk_chain(benchmark::State &state, uint32_t tables)
{
    tov_schema *schema = chain(tables);
    for (auto _ : state)
        walk_all(schema, tables);
    bench_check();
}

// A change to a reference before each round, so that whatever is kept between questions is made anew in the time.
void touch(tov_schema *schema)
{
    const char *tbl = nullptr;
    tov_schema__get_nth_tbl_id(bench_ctx(), schema, 0, &tbl);
    tov_schema__set_colcon_fk(bench_ctx(), schema, tbl, "10", 0, nullptr, nullptr, nullptr, nullptr, 0, nullptr,
                              nullptr, 0);
}

void refs_to_tbl(benchmark::State &state, uint32_t tables)
{
    KT_context *ctx = bench_ctx();
    tov_schema *schema = random_schema(tables);
    for (auto _ : state) {
        touch(schema);
        for_each_tbl(schema, tables, [&](const char *tbl) {
            KT_varray *records = nullptr;
            uint32_t count = 0;
            tov_schema__find_references_to_tbl(ctx, schema, tbl, 1, 0, &records, &count);
            KT_varray__free(ctx, records);
        });
    }
    bench_check();
}

void refs_to_col(benchmark::State &state, uint32_t tables)
{
    KT_context *ctx = bench_ctx();
    tov_schema *schema = random_schema(tables);
    for (auto _ : state) {
        touch(schema);
        for_each_tbl(schema, tables, [&](const char *tbl) {
            KT_vhash *references = nullptr;
            tov_schema__find_references_to_col(ctx, schema, tbl, "1", &references);
            KT_vhash__free(ctx, references);
        });
    }
    bench_check();
}

void tbls_to(benchmark::State &state, uint32_t tables)
{
    KT_context *ctx = bench_ctx();
    tov_schema *schema = random_schema(tables);
    for (auto _ : state) {
        touch(schema);
        for_each_tbl(schema, tables, [&](const char *tbl) {
            KT_nullhash *ids = nullptr;
            tov_schema__find_tbls_with_references_to(ctx, schema, tbl, &ids);
            KT_nullhash__free(ctx, ids);
        });
    }
    bench_check();
}

void order_of(benchmark::State &state, tov_schema *schema)
{
    for (auto _ : state) {
        KT_varray *ids = nullptr;
        touch(schema);
        tov_schema__sort_by_references(bench_ctx(), schema, &ids);
        KT_varray__free(bench_ctx(), ids);
    }
    bench_check();
}

void order_random(benchmark::State &state, uint32_t tables)
{
    order_of(state, random_schema(tables));
}

void order_chain(benchmark::State &state, uint32_t tables)
{
    order_of(state, chain(tables));
}

using bench = void (*)(benchmark::State &, uint32_t);

void add(const char *name, const char *who, uint32_t tables, bench body)
{
    benchmark::RegisterBenchmark((std::string(name) + "/" + std::to_string(tables) + "/" + who).c_str(), body, tables)
        ->Unit(benchmark::kMillisecond)
        ->UseRealTime();
}

} // namespace

void register_references_benches()
{
    for (const uint32_t tables : table_counts) {
        for (const char *name : {"refs_to_tbl", "refs_to_col", "tbls_to", "order_random"})
            add(name, "one walk", tables, walk);
        add("order_chain", "one walk", tables, walk_chain);
        add("refs_to_tbl", "ours", tables, refs_to_tbl);
        add("refs_to_col", "ours", tables, refs_to_col);
        add("tbls_to", "ours", tables, tbls_to);
        add("order_random", "ours", tables, order_random);
        add("order_chain", "ours", tables, order_chain);
    }
}
