// What a run of the benchmarks says, as one table: medians, ratios, targets, growth.
#pragma once

#include <benchmark/benchmark.h>

#include <map>
#include <string>
#include <vector>

// A benchmark is named case/size/who: who is "ours" or a peer. A case's ratio is ours over the best of its peers.
struct bench_case {
    const char *name;
    const char *title;                    // for the table
    std::map<std::string, double> target; // by size; "" for every size without one of its own
};

// The cases with their targets, in the order of the table.
const std::vector<bench_case> &bench_cases();

// A figure that is no time, such as bytes; put beside the times in the same table.
void bench_add_figure(const std::string &name, double value);

// Keeps every repetition's time, and prints progress.
class bench_collector : public benchmark::BenchmarkReporter {
  public:
    bool ReportContext(const Context &context) override;
    void ReportRuns(const std::vector<Run> &runs) override;

    // The table as Markdown; whether every target was met is in *is_met.
    std::string table(bool *is_met) const;

  private:
    std::map<std::string, std::vector<double>> times_; // nanoseconds of one iteration, by name
};
