// What is small: one table from its JSON to all its texts, single questions, and the start of the command.

#include "bench_report.hpp"
#include "bench_schema.hpp"

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fcntl.h>
#include <spawn.h>

#include <iterator>
#include <stdexcept>

namespace {

constexpr bench_size one_table = {1, 10};

void whole_table(benchmark::State &state)
{
    KT_context *ctx = bench_ctx();
    const std::string &json = bench_json(one_table);
    for (auto _ : state) {
        tov_schema *schema = nullptr;
        const char *tbl = nullptr;
        tov_schema__from_json(ctx, json.c_str(), &schema);
        tov_schema__get_nth_tbl_id(ctx, schema, 0, &tbl);
        bench_texts_of_table(ctx, schema, tbl);
        tov_schema__nullfree(ctx, &schema);
    }
    bench_check();
}

// A question of a schema of ordinary size, asked of one column again and again.
template <class Ask> void ask(benchmark::State &state, Ask question)
{
    KT_context *ctx = bench_ctx();
    tov_schema *schema = bench_schema(bench_sizes[0]);
    const char *tbl = nullptr, *answer = nullptr;
    tov_schema__get_nth_tbl_id(ctx, schema, 50, &tbl);
    for (auto _ : state) {
        question(ctx, schema, tbl, &answer);
        benchmark::DoNotOptimize(answer);
    }
    bench_check();
}

void ask_map(benchmark::State &state)
{
    KT_context *ctx = bench_ctx();
    KT_vhash *map = nullptr;
    const char *value = nullptr;
    KT_vhash__alloc__from_json__sz(ctx, &map, R"({"type":1,"width":20,"name":"Customer","unicode":true})");
    for (auto _ : state) {
        KT_vhash__get__sz(ctx, map, "name", &value);
        benchmark::DoNotOptimize(value);
    }
    bench_check();
    KT_vhash__free(ctx, map);
}

void ask_tbl_name(benchmark::State &state)
{
    ask(state, [](KT_context *ctx, tov_schema *schema, const char *tbl, const char **name) {
        tov_schema__get_tbl_name(ctx, schema, tbl, name);
    });
}

void ask_col_name(benchmark::State &state)
{
    ask(state, [](KT_context *ctx, tov_schema *schema, const char *tbl, const char **name) {
        tov_schema__get_col_name(ctx, schema, tbl, "7", name);
    });
}

// The same of another column of another table each time, so that nothing remembered helps.
void ask_col_names(benchmark::State &state)
{
    KT_context *ctx = bench_ctx();
    tov_schema *schema = bench_schema(bench_sizes[0]);
    const char *tbls[100] = {}, *name = nullptr;
    for (uint32_t n = 0; n < std::size(tbls); n++)
        tov_schema__get_nth_tbl_id(ctx, schema, n, &tbls[n]);
    constexpr const char *cols[] = {"7", "3", "9", "1", "5", "8", "2"};
    size_t n = 0;
    for (auto _ : state) {
        n++;
        tov_schema__get_col_name(ctx, schema, tbls[n % std::size(tbls)], cols[n % std::size(cols)], &name);
        benchmark::DoNotOptimize(name);
    }
    bench_check();
}

double children_time()
{
    rusage usage{};
    getrusage(RUSAGE_CHILDREN, &usage);
    const auto seconds = [](const timeval &time) {
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
    };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

// Spawned, since a fork would copy the page tables of this process, which is large by then.
void run(const char *const *command)
{
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    pid_t child = 0;
    int status = posix_spawnp(&child, command[0], &actions, nullptr, const_cast<char *const *>(command), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (status != 0 || waitpid(child, &status, 0) != child || status != 0)
        throw std::runtime_error(std::string(command[0]) + " failed");
}

constexpr const char *our_command[] = {TOV_BENCH_COMMAND, "--version", nullptr};
constexpr const char *shell_command[] = {"sqlite3", ":memory:", ".quit", nullptr};

// Twenty starts at a time, since the clock of processes that have ended is a coarse one.
void start(benchmark::State &state, const char *const *command)
{
    constexpr int starts = 20;
    for (auto _ : state) {
        const double before = children_time();
        for (int n = 0; n < starts; n++)
            run(command);
        state.SetIterationTime((children_time() - before) / starts);
    }
}

} // namespace

void register_small_benches()
{
    benchmark::RegisterBenchmark("small_table/10/ours", whole_table);
    benchmark::RegisterBenchmark("get_map/1/ours", ask_map);
    benchmark::RegisterBenchmark("get_tbl/1/ours", ask_tbl_name);
    benchmark::RegisterBenchmark("get_col/1/ours", ask_col_name);
    benchmark::RegisterBenchmark("get_cols/1/ours", ask_col_names);
    bench_add_figure("small_table/10/the limit", 15e3);
    for (const char *name : {"get_map", "get_tbl", "get_col", "get_cols"})
        bench_add_figure(std::string(name) + "/1/the limit", 30);
    benchmark::RegisterBenchmark("start/1/ours", start, our_command)->UseManualTime()->Iterations(3);
    benchmark::RegisterBenchmark("start/1/sqlite3 :memory: .quit", start, shell_command)
        ->UseManualTime()
        ->Iterations(3);
}
