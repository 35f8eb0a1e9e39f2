// Creating a database of very many tables, and opening it.
#include "bench_business.hpp"
#include "bench_report.hpp"
#include "bench_schema.hpp"

#include <sqlite3.h>

#include <stdexcept>

namespace fs = std::filesystem;

namespace {

constexpr const char *peer = "SQLite, the bare tables";

// Creating so many tables takes so long that once is enough.
constexpr uint32_t many_tbls = 5'000;

void measure_creation(benchmark::State &state, const bench_form *form, const bench_size &size)
{
    bench_business &of = bench_business_of(size.tables, size.columns);
    const std::string path = of.path("creation.db");
    of.make_bare_statements();
    for (auto _ : state) {
        fs::remove(path);
        const double before = bench_processor_time();
        if (form)
            of.create(*form, path);
        else
            of.create_bare(path, false);
        state.SetIterationTime(bench_processor_time() - before);
    }
}

// The limits are no measurements, but what nobody should have to wait for.
void measure_opening(benchmark::State &state, const bench_size &size)
{
    const std::string place = "/" + std::to_string(size.tables) + "/";
    const std::string &path = bench_business_of(size.tables, size.columns).database(&bench_forms[1]);
    int bytes = 0, most = 0;
    for (auto _ : state) {
        sqlite3 *connection = nullptr;
        const double before = bench_processor_time();
        sqlite3_open(path.c_str(), &connection);
        if (sqlite3_exec(connection, "SELECT 1 FROM sqlite_master LIMIT 1", nullptr, nullptr, nullptr) != SQLITE_OK)
            throw std::runtime_error(sqlite3_errmsg(connection));
        state.SetIterationTime(bench_processor_time() - before);
        sqlite3_db_status(connection, SQLITE_DBSTATUS_SCHEMA_USED, &bytes, &most, 0);
        sqlite3_close(connection);
    }
    bench_add_figure("bytes_created" + place + "ours", bytes);
    bench_add_figure("bytes_created" + place + "limit", 500e6);
    bench_add_figure("open_created" + place + "limit", 2e9);
}

void add(const std::string &name, const bench_size &size,
         void (*body)(benchmark::State &, const bench_form *, const bench_size &), const bench_form *form)
{
    benchmark::internal::Benchmark *made = benchmark::RegisterBenchmark(name.c_str(), body, form, size);
    made->Unit(benchmark::kMillisecond)->UseManualTime();
    if (size.tables > many_tbls)
        made->Iterations(1)->Repetitions(1);
}

} // namespace

void register_creation_benches()
{
    for (const bench_size &size : bench_sizes) {
        const std::string number = std::to_string(size.tables);
        add("create/" + number + "/ours", size, measure_creation, &bench_forms[1]);
        add("create/" + number + "/" + peer, size, measure_creation, nullptr);
        add("create_triggers/" + number + "/ours", size, measure_creation, &bench_forms[3]);
        add("create_triggers/" + number + "/" + peer, size, measure_creation, nullptr);
        benchmark::RegisterBenchmark(("open_created/" + number + "/ours").c_str(), measure_opening, size)
            ->Unit(benchmark::kMillisecond)
            ->UseManualTime();
    }
}
