// Reading, writing, walking and freeing documents, beside the libraries that are fast at it.

#include "bench_memory.hpp"
#include "bench_report.hpp"
#include "bench_schema.hpp"

#include <boost/json.hpp>
#include <nlohmann/json.hpp>
#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>
#include <simdjson.h>

#include <random>

namespace {

namespace bj = boost::json;

constexpr unsigned rapidjson_flags = rapidjson::kParseValidateEncodingFlag | rapidjson::kParseFullPrecisionFlag;

KT_vhash *parse_ours(const std::string &text)
{
    KT_vhash *map = nullptr;
    KT_vhash__alloc__from_json__sz(bench_ctx(), &map, text.c_str());
    bench_check();
    return map;
}

// Freeing is measured on its own, so it happens outside of the time.
void parse(benchmark::State &state, const bench_size &size)
{
    const std::string &text = bench_json(size);
    for (auto _ : state) {
        KT_vhash *map = parse_ours(text);
        benchmark::DoNotOptimize(map);
        state.PauseTiming();
        KT_vhash__free(bench_ctx(), map);
        state.ResumeTiming();
    }
}

void parse_boost(benchmark::State &state, const bench_size &size)
{
    const std::string &text = bench_json(size);
    for (auto _ : state) {
        state.PauseTiming();
        auto memory = std::make_unique<bj::monotonic_resource>();
        state.ResumeTiming();
        {
            const bj::value value = bj::parse(text, memory.get());
            benchmark::DoNotOptimize(&value);
        }
        state.PauseTiming();
        memory.reset();
        state.ResumeTiming();
    }
}

void parse_rapidjson(benchmark::State &state, const bench_size &size)
{
    const std::string &text = bench_json(size);
    for (auto _ : state) {
        state.PauseTiming();
        auto document = std::make_unique<rapidjson::Document>();
        state.ResumeTiming();
        document->Parse<rapidjson_flags>(text.c_str(), text.size());
        benchmark::DoNotOptimize(document.get());
        state.PauseTiming();
        document.reset();
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
        KT_vhash *map = parse_ours(text);
        state.ResumeTiming();
        KT_vhash__free(bench_ctx(), map);
    }
}

void write(benchmark::State &state, const bench_size &size)
{
    KT_vhash *map = parse_ours(bench_json(size));
    for (auto _ : state) {
        KT_string *text = nullptr;
        KT_string__alloc(bench_ctx(), &text);
        KT_vhash__to_json(bench_ctx(), map, text);
        benchmark::DoNotOptimize(KT_string__sz(text));
        KT_string__free(bench_ctx(), text);
    }
    bench_check();
    KT_vhash__free(bench_ctx(), map);
}

void write_boost(benchmark::State &state, const bench_size &size)
{
    bj::monotonic_resource memory;
    const bj::value value = bj::parse(bench_json(size), &memory);
    for (auto _ : state) {
        const std::string text = bj::serialize(value);
        benchmark::DoNotOptimize(text.data());
    }
}

void write_rapidjson(benchmark::State &state, const bench_size &size)
{
    rapidjson::Document document;
    document.Parse<rapidjson_flags>(bench_json(size).c_str());
    for (auto _ : state) {
        rapidjson::StringBuffer text;
        rapidjson::Writer<rapidjson::StringBuffer> writer(text);
        document.Accept(writer);
        benchmark::DoNotOptimize(text.GetString());
    }
}

// Tables and columns to ask for, the same for everyone.
struct question {
    std::string tbl;
    std::string col;
};

std::vector<question> questions(const bench_size &size)
{
    KT_context *ctx = bench_ctx();
    std::mt19937 random(1);
    std::vector<question> all(20000);
    for (question &q : all) {
        const char *tbl = nullptr;
        uint32_t count = 0;
        tov_schema__get_nth_tbl_id(ctx, bench_schema(size), static_cast<uint32_t>(random() % size.tables), &tbl);
        tov_schema__count_cols(ctx, bench_schema(size), tbl, &count);
        q = {tbl, std::to_string(1 + random() % count)};
    }
    bench_check();
    return all;
}

void walk(benchmark::State &state, const bench_size &size)
{
    KT_context *ctx = bench_ctx();
    KT_vhash *map = parse_ours(bench_json(size));
    const std::vector<question> all = questions(size);
    for (auto _ : state) {
        for (const question &q : all) {
            KT_vhash *at = nullptr;
            const char *name = nullptr;
            KT_vhash__get__vhash(ctx, map, "tbls", &at);
            KT_vhash__get__vhash(ctx, at, q.tbl.c_str(), &at);
            KT_vhash__get__vhash(ctx, at, "cols", &at);
            KT_vhash__get__vhash(ctx, at, q.col.c_str(), &at);
            KT_vhash__get__vhash(ctx, at, "type", &at);
            KT_vhash__get__sz(ctx, at, "name", &name);
            benchmark::DoNotOptimize(name);
        }
    }
    bench_check();
    KT_vhash__free(ctx, map);
}

void walk_boost(benchmark::State &state, const bench_size &size)
{
    bj::monotonic_resource memory;
    const bj::value value = bj::parse(bench_json(size), &memory);
    const std::vector<question> all = questions(size);
    for (auto _ : state) {
        for (const question &q : all) {
            const bj::object &tbl = value.as_object().at("tbls").as_object().at(q.tbl).as_object();
            const bj::object &type = tbl.at("cols").as_object().at(q.col).as_object().at("type").as_object();
            benchmark::DoNotOptimize(type.at("name").as_string().data());
        }
    }
}

// Measured once; its time says nothing.
void measure_memory(benchmark::State &state, const bench_size &size)
{
    for (auto _ : state) {
    }
    const std::string &text = bench_json(size);
    const auto length = static_cast<double>(text.size());
    const size_t before = bench_live_bytes();
    KT_vhash *map = parse_ours(text);
    const size_t with_ours = bench_live_bytes();
    KT_vhash__free(bench_ctx(), map);
    const size_t between = bench_live_bytes();
    rapidjson::Document document;
    document.Parse<rapidjson_flags>(text.c_str());
    const size_t with_rapidjson = bench_live_bytes();
    const std::string name = "memory_live/" + std::to_string(size.tables);
    bench_add_figure(name + "/ours", static_cast<double>(with_ours - before) / length);
    bench_add_figure(name + "/RapidJSON", static_cast<double>(with_rapidjson - between) / length);
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
        add("json_parse", "ours", size, parse);
        add("json_parse", "Boost.JSON", size, parse_boost);
        add("json_parse", "RapidJSON", size, parse_rapidjson);
        add("json_write", "ours", size, write);
        add("json_write", "Boost.JSON", size, write_boost);
        add("json_write", "RapidJSON", size, write_rapidjson);
        add("json_walk", "ours", size, walk);
        add("json_walk", "Boost.JSON", size, walk_boost);
        add("json_release", "ours", size, release)->Iterations(5); // each needs a parse that is not counted
        add("json_release", "the parse", size, parse);
        if (size.tables <= 1000) { // beside the others: a tree that cannot be changed, and a slow one
            add("json_parse_more", "ours", size, parse);
            add("json_parse_more", "simdjson (read-only)", size, parse_simdjson);
            add("json_parse_more", "nlohmann", size, parse_nlohmann);
        }
    }
}
