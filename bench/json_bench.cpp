// Reading, writing, walking and freeing documents, beside the libraries that are fast at it.

#include "bench_memory.hpp"
#include "bench_report.hpp"
#include "json_libraries.hpp"

#include <nlohmann/json.hpp>
#include <simdjson.h>

#include <map>
#include <memory>

namespace {

// Freeing is measured on its own, so it happens outside of the time.
template <class Tree> void parse(benchmark::State &state, const bench_size &size)
{
    const std::string &text = bench_json(size);
    for (auto _ : state) {
        auto tree = std::make_unique<Tree>(text);
        benchmark::DoNotOptimize(tree.get());
        state.PauseTiming();
        tree.reset();
        state.ResumeTiming();
    }
}

void parse_simdjson(benchmark::State &state, const bench_size &size)
{
    const simdjson::padded_string text(bench_json(size));
    for (auto _ : state) {
        simdjson::dom::parser parser;
        simdjson::dom::element element = parser.parse(text);
        benchmark::DoNotOptimize(&element);
    }
}

void parse_nlohmann(benchmark::State &state, const bench_size &size)
{
    const std::string &text = bench_json(size);
    for (auto _ : state) {
        const auto value = nlohmann::ordered_json::parse(text);
        benchmark::DoNotOptimize(&value);
    }
}

void release(benchmark::State &state, const bench_size &size)
{
    const std::string &text = bench_json(size);
    for (auto _ : state) {
        state.PauseTiming();
        auto tree = std::make_unique<our_tree>(text);
        state.ResumeTiming();
        tree.reset();
    }
}

template <class Tree> void write(benchmark::State &state, const bench_size &size)
{
    const Tree tree(bench_json(size));
    for (auto _ : state)
        benchmark::DoNotOptimize(tree.write());
}

const std::vector<bench_place> &places(const bench_size &size)
{
    static std::map<uint32_t, std::vector<bench_place>> made;
    std::vector<bench_place> &all = made[size.tables];
    if (all.empty())
        all = bench_places(size, 1'000'000);
    return all;
}

template <class Tree> void walk(benchmark::State &state, const bench_size &size)
{
    const Tree tree(bench_json(size));
    const std::vector<bench_place> &all = places(size);
    for (auto _ : state)
        for (const bench_place &place : all)
            benchmark::DoNotOptimize(tree.type_name(place));
    bench_check();
}

template <class Tree> double live_bytes(const std::string &text)
{
    const size_t before = bench_live_bytes();
    const Tree tree(text);
    return static_cast<double>(bench_live_bytes() - before) / static_cast<double>(text.size());
}

// Measured once; its time says nothing.
void measure_memory(benchmark::State &state, const bench_size &size)
{
    for (auto _ : state) {
    }
    const std::string name = "memory_live/" + std::to_string(size.tables);
    bench_add_figure(name + "/ours", live_bytes<our_tree>(bench_json(size)));
    bench_add_figure(name + "/RapidJSON", live_bytes<rapidjson_tree>(bench_json(size)));
}

using bench = void (*)(benchmark::State &, const bench_size &);

benchmark::internal::Benchmark *add(const char *name, const char *who, const bench_size &size, bench body)
{
    return benchmark::RegisterBenchmark((std::string(name) + "/" + std::to_string(size.tables) + "/" + who).c_str(),
                                        body, size)
        ->Unit(benchmark::kMillisecond)
        ->UseRealTime();
}

} // namespace

void register_json_benches()
{
    for (const bench_size &size : bench_sizes) {
        benchmark::RegisterBenchmark(("measure_memory/" + std::to_string(size.tables)).c_str(), measure_memory, size)
            ->Iterations(1)
            ->Repetitions(1);
        add("json_parse", "ours", size, parse<our_tree>);
        add("json_parse", "Boost.JSON", size, parse<boost_tree>);
        add("json_parse", "RapidJSON", size, parse<rapidjson_tree>);
        add("json_write", "ours", size, write<our_tree>);
        add("json_write", "Boost.JSON", size, write<boost_tree>);
        add("json_write", "RapidJSON", size, write<rapidjson_tree>);
        add("json_walk", "ours", size, walk<our_tree>);
        add("json_walk", "Boost.JSON", size, walk<boost_tree>);
        add("json_release", "ours", size, release)->Iterations(5); // each needs a parse that is not counted
        add("json_release", "the parse", size, parse<our_tree>);
        if (size.tables <= 1000) { // beside the others: a tree that cannot be changed, and a slow one
            add("json_parse_more", "ours", size, parse<our_tree>);
            add("json_parse_more", "simdjson (read-only)", size, parse_simdjson);
            add("json_parse_more", "nlohmann", size, parse_nlohmann);
        }
    }
}
