// The first reading, writing and walking of a process, beside other libraries: what a program pays that starts, asks
// and ends. Each figure comes from processes of its own, the libraries by turns.

#include "cold_bench.hpp"

#include "bench_report.hpp"
#include "json_libraries.hpp"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <stdexcept>

namespace fs = std::filesystem;

namespace {

constexpr int rounds = 9;
constexpr bench_size sizes[] = {bench_sizes[1], bench_sizes[2]};
static_assert(sizes[0].tables == 1000 && sizes[1].tables == 10000);

double processor_time()
{
    timespec now{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) * 1e9 + static_cast<double>(now.tv_nsec);
}

std::string read_file(const fs::path &path)
{
    std::string bytes(fs::file_size(path), '\0'); // at once, so that the heap is still as good as new
    std::ifstream(path, std::ios::binary).read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    return bytes;
}

// What a process measures: the nanoseconds of one operation.
using measurement = double (*)(const std::string &text, const std::string &places);

template <class Tree> double read_once(const std::string &text, const std::string &)
{
    const double before = processor_time();
    const auto tree = std::make_unique<Tree>(text);
    return processor_time() - before;
}

template <class Tree> double write_once(const std::string &text, const std::string &)
{
    const Tree tree(text);
    const double before = processor_time();
    benchmark::DoNotOptimize(tree.write());
    return processor_time() - before;
}

template <class Tree> double walk_once(const std::string &text, const std::string &places)
{
    const Tree tree(text);
    const auto *all = reinterpret_cast<const bench_place *>(places.data());
    const double before = processor_time();
    for (size_t n = 0; n < places.size() / sizeof(bench_place); n++)
        benchmark::DoNotOptimize(tree.type_name(all[n]));
    return processor_time() - before;
}

struct cold_case {
    const char *name;
    const char *who;
    measurement measure;
};

constexpr cold_case cases[] = {
    {"cold_parse", our_tree::name, read_once<our_tree>},
    {"cold_parse", boost_tree::name, read_once<boost_tree>},
    {"cold_parse", rapidjson_tree::name, read_once<rapidjson_tree>},
    {"cold_write", our_tree::name, write_once<our_tree>},
    {"cold_write", boost_tree::name, write_once<boost_tree>},
    {"cold_write", rapidjson_tree::name, write_once<rapidjson_tree>},
    {"cold_walk", our_tree::name, walk_once<our_tree>},
    {"cold_walk", boost_tree::name, walk_once<boost_tree>},
};

// Puts down what the processes read.
void write_inputs(const fs::path &folder, const bench_size &size)
{
    std::ofstream(folder / "document.json", std::ios::binary) << bench_json(size);
    const std::vector<bench_place> places = bench_places(size, 1'000'000);
    std::ofstream(folder / "places", std::ios::binary)
        .write(reinterpret_cast<const char *>(places.data()),
               static_cast<std::streamsize>(places.size() * sizeof(bench_place)));
}

double in_a_process(const char *program, size_t which, const fs::path &folder)
{
    const std::string command =
        std::string("'") + program + "' --once " + std::to_string(which) + " " + folder.string();
    FILE *output = popen(command.c_str(), "r");
    double nanoseconds = 0;
    const bool has_answered = output && std::fscanf(output, "%lf", &nanoseconds) == 1;
    if (!output || pclose(output) != 0 || !has_answered)
        throw std::runtime_error("a measurement failed: " + command);
    return nanoseconds;
}

void measure_size(const char *program, const fs::path &folder, const bench_size &size)
{
    std::vector<double> times[std::size(cases)];
    for (int round = 0; round < rounds; round++)
        for (size_t n = 0; n < std::size(cases); n++)
            times[n].push_back(in_a_process(program, n, folder));
    for (size_t n = 0; n < std::size(cases); n++) {
        std::sort(times[n].begin(), times[n].end());
        bench_add_figure(std::string(cases[n].name) + "/" + std::to_string(size.tables) + "/" + cases[n].who,
                         times[n][rounds / 2]);
    }
}

} // namespace

void measure_cold(const char *program)
{
    char name[] = "/tmp/tov_bench_XXXXXX";
    if (!mkdtemp(name))
        throw std::runtime_error("no folder for the measurements");
    const fs::path folder = name;
    for (const bench_size &size : sizes) {
        write_inputs(folder, size);
        measure_size(program, folder, size);
    }
    fs::remove_all(folder);
}

int bench_once(const char *which, const char *folder)
{
    const size_t n = std::stoul(which);
    const std::string text = read_file(fs::path(folder) / "document.json");
    const std::string places = read_file(fs::path(folder) / "places");
    if (n >= std::size(cases) || text.empty())
        return 2;
    std::printf("%.0f\n", cases[n].measure(text, places));
    return 0;
}
