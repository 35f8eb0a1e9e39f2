// Reading T-SQL scripts into tables, beside SQLite finding out whether the same text is complete.

#include "bench_report.hpp"
#include "bench_schema.hpp"
#include "script/host_script.hpp"
#include "tov_host.h"

#include <sqlite3.h>

namespace {

void read_script(benchmark::State &state, const bench_size &size)
{
    KT_context *ctx = bench_ctx();
    const std::string script = bench_script(size);
    const host_script_file file{"bench.sql", script};
    for (auto _ : state) {
        host_findings findings{ctx};
        auto catalogue = std::make_unique<host_catalogue>();
        host_read_scripts(ctx, {&file, 1}, {}, findings, *catalogue);
        bench_check();
        if (catalogue->tables.size() != size.tables)
            state.SkipWithError("tables are missing");
        state.PauseTiming();
        catalogue.reset();
        state.ResumeTiming();
    }
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(script.size()));
}

void complete(benchmark::State &state, const bench_size &size)
{
    const std::string script = bench_script(size);
    for (auto _ : state)
        benchmark::DoNotOptimize(sqlite3_complete(script.c_str()));
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(script.size()));
}

void import_script(benchmark::State &state, const bench_size &size)
{
    KT_context *ctx = bench_ctx();
    const std::string script = bench_script(size);
    for (auto _ : state) {
        tov_schema *schema = nullptr;
        KT_varray *findings = nullptr;
        tov_host__import(ctx, script.data(), script.size(), nullptr, &schema, &findings);
        bench_check();
        state.PauseTiming();
        KT_varray__free(ctx, findings);
        tov_schema__nullfree(ctx, &schema);
        state.ResumeTiming();
    }
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

void register_script_benches()
{
    for (const bench_size &size : bench_sizes) {
        add("script", "ours", size, read_script);
        add("script", "sqlite3_complete()", size, complete);
        add("way_import_script", "ours", size, import_script);
    }
}
