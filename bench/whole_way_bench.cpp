// The whole way, from a catalogue to all texts, one step at a time.

#include "bench_report.hpp"
#include "bench_schema.hpp"
#include "tov_client.h"
#include "tov_host.h"

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

void bench_read_schema(benchmark::State &state, const bench_size &size)
{
    for (auto _ : state) {
        tov_schema *schema = nullptr;
        tov_schema__from_json(bench_ctx(), bench_json(size).c_str(), &schema);
        state.PauseTiming();
        tov_schema__nullfree(bench_ctx(), &schema);
        state.ResumeTiming();
    }
    bench_check();
}

namespace {

void import_catalogue(benchmark::State &state, const bench_size &size)
{
    KT_context *ctx = bench_ctx();
    const std::string catalogue = bench_catalogue(size);
    for (auto _ : state) {
        tov_schema *schema = nullptr;
        KT_varray *findings = nullptr;
        tov_host__import(ctx, catalogue.data(), catalogue.size(), nullptr, &schema, &findings);
        bench_check();
        state.PauseTiming();
        KT_varray__free(ctx, findings);
        tov_schema__nullfree(ctx, &schema);
        state.ResumeTiming();
    }
}

void write_schema(benchmark::State &state, const bench_size &size)
{
    for (auto _ : state) {
        KT_string *json = nullptr;
        tov_schema__to_json(bench_ctx(), bench_schema(size), &json);
        KT_string__free(bench_ctx(), json);
    }
    bench_check();
}

void order(benchmark::State &state, const bench_size &size)
{
    const char *tbl = nullptr;
    tov_schema__get_nth_tbl_id(bench_ctx(), bench_schema(size), 0, &tbl);
    for (auto _ : state) {
        // A column that refers to no table still does not: it is a change, after which no order is kept.
        tov_schema__set_colcon_fk(bench_ctx(), bench_schema(size), tbl, "2", 0, nullptr, nullptr, nullptr, nullptr, 0,
                                  nullptr, nullptr, 0);
        KT_varray *ids = nullptr;
        tov_schema__sort_by_references(bench_ctx(), bench_schema(size), &ids);
        KT_varray__free(bench_ctx(), ids);
    }
    bench_check();
}

template <class Visit> void for_each_col(tov_schema *schema, const bench_size &size, Visit visit)
{
    KT_context *ctx = bench_ctx();
    for (uint32_t t = 0; t < size.tables; t++) {
        const char *tbl = nullptr, *col = nullptr;
        uint32_t columns = 0;
        tov_schema__get_nth_tbl_id(ctx, schema, t, &tbl);
        tov_schema__count_cols(ctx, schema, tbl, &columns);
        for (uint32_t c = 0; c < columns; c++) {
            tov_schema__get_nth_col_id(ctx, schema, tbl, c, &col);
            visit(tbl, col);
        }
    }
    bench_check();
}

void texts(benchmark::State &state, const bench_size &size)
{
    for (auto _ : state) {
        state.PauseTiming();
        tov_schema *schema = nullptr;
        tov_schema__from_json(bench_ctx(), bench_json(size).c_str(), &schema);
        state.ResumeTiming();
        for_each_col(schema, size, [&](const char *tbl, const char *col) {
            const char *defin = nullptr;
            tov_schema__get_col_defin(bench_ctx(), schema, tbl, col, nullptr, &defin);
        });
        state.PauseTiming();
        tov_schema__nullfree(bench_ctx(), &schema);
        state.ResumeTiming();
    }
}

// What triggers are made of: the check of every column, and the references to every table.
void triggers(benchmark::State &state, const bench_size &size)
{
    KT_context *ctx = bench_ctx();
    tov_schema *schema = bench_schema(size);
    for (auto _ : state) {
        for_each_col(schema, size, [&](const char *tbl, const char *col) {
            KT_string *check = nullptr;
            tov_schema__get_col_validation_expression(ctx, schema, tbl, col, &check);
            KT_string__free(ctx, check);
        });
        for (uint32_t t = 0; t < size.tables; t++) {
            const char *tbl = nullptr;
            KT_varray *held = nullptr, *references = nullptr;
            uint32_t count = 0;
            tov_schema__get_nth_tbl_id(ctx, schema, t, &tbl);
            tov_schema__list_fk_constraints(ctx, schema, tbl, nullptr, 1, &held, &count);
            tov_schema__find_references_to_tbl(ctx, schema, tbl, 1, 1, &references, &count);
            KT_varray__free(ctx, held);
            KT_varray__free(ctx, references);
        }
    }
    bench_check();
}

// Import, JSON out and in, order, all texts, all inputs of triggers: each once.
void go_the_whole_way(const bench_size &size)
{
    KT_context *ctx = bench_ctx();
    tov_schema *imported = nullptr, *schema = nullptr;
    KT_varray *findings = nullptr, *ids = nullptr;
    KT_string *json = nullptr;
    {
        const std::string catalogue = bench_catalogue(size);
        tov_host__import(ctx, catalogue.data(), catalogue.size(), nullptr, &imported, &findings);
        bench_check();
    }
    tov_schema__to_json(ctx, imported, &json);
    tov_schema__nullfree(ctx, &imported);
    tov_schema__from_json(ctx, KT_string__sz(json), &schema);
    KT_string__free(ctx, json);
    tov_schema__sort_by_references(ctx, schema, &ids);
    for_each_col(schema, size, [&](const char *tbl, const char *col) {
        const char *defin = nullptr;
        KT_string *check = nullptr;
        tov_schema__get_col_defin(ctx, schema, tbl, col, nullptr, &defin);
        tov_schema__get_col_validation_expression(ctx, schema, tbl, col, &check);
        KT_string__free(ctx, check);
    });
    bench_check();
}

using bench = void (*)(benchmark::State &, const bench_size &);

} // namespace

// Each size in a process of its own, the catalogue's text included.
void measure_whole_way_peaks()
{
    for (const bench_size &size : bench_sizes) {
        const pid_t child = fork();
        if (child == 0) {
            go_the_whole_way(size);
            _exit(0);
        }
        int status = 0;
        struct rusage usage {};
        wait4(child, &status, 0, &usage);
        if (status == 0)
            bench_add_figure("peak/" + std::to_string(size.tables) + "/ours",
                             static_cast<double>(usage.ru_maxrss) * 1024);
    }
}

void register_whole_way_benches()
{
    const std::pair<const char *, bench> steps[] = {
        {"way_import", import_catalogue},
        {"way_write", write_schema},
        {"way_read", bench_read_schema},
        {"way_order", order},
        {"way_texts", texts},
        {"way_triggers", triggers},
    };
    for (const bench_size &size : bench_sizes)
        for (const auto &[name, body] : steps)
            benchmark::RegisterBenchmark((std::string(name) + "/" + std::to_string(size.tables) + "/ours").c_str(),
                                         body, size)
                ->Unit(benchmark::kMillisecond)
                ->UseRealTime();
}
