#include "bench_report.hpp"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace {

std::map<std::string, double> &figures()
{
    static std::map<std::string, double> all;
    return all;
}

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    const size_t half = values.size() / 2;
    return values.size() % 2 ? values[half] : (values[half - 1] + values[half]) / 2;
}

struct measured {
    double ours = 0;
    std::map<std::string, double> peers;
};

// case -> size -> who.
using results = std::map<std::string, std::map<uint64_t, measured>>;

void add(results *all, const std::string &name, double value)
{
    const size_t first = name.find('/'), second = name.find('/', first + 1);
    if (first == std::string::npos || second == std::string::npos)
        return;
    const std::string who = name.substr(second + 1, name.find('/', second + 1) - second - 1);
    measured &entry = (*all)[name.substr(0, first)][std::stoull(name.substr(first + 1, second - first - 1))];
    if (who == "ours")
        entry.ours = value;
    else
        entry.peers[who] = value;
}

std::string rounded(double value, int decimals)
{
    char text[64];
    std::snprintf(text, sizeof text, "%.*f", decimals, value);
    return text;
}

// Three digits and a unit that suits.
std::string as_time(double nanoseconds)
{
    const char *units[] = {" ns", " us", " ms", " s"};
    size_t unit = 0;
    while (nanoseconds >= 1000 && unit < 3) {
        nanoseconds /= 1000;
        unit++;
    }
    char text[64];
    std::snprintf(text, sizeof text, "%.3g", nanoseconds);
    return text + std::string(units[unit]);
}

std::string as_size(double bytes)
{
    char text[64];
    std::snprintf(text, sizeof text, "%.3g %s", bytes < 1e6 ? bytes / 1e3 : bytes / 1e6, bytes < 1e6 ? "kB" : "MB");
    return text;
}

std::string as_value(const std::string &name, double value)
{
    if (name.rfind("bytes", 0) == 0)
        return as_size(value);
    if (name.rfind("peak", 0) == 0)
        return rounded(value / 1e6, 0) + " MB";
    return name.rfind("memory", 0) == 0 ? rounded(value, 2) + " B/B" : as_time(value);
}

// The exponent e of time ~ size^e, by least squares over the logarithms; who is "ours" or a peer at every size.
double growth(const std::map<uint64_t, measured> &sizes, const std::string &who)
{
    double n = 0, x = 0, y = 0, xx = 0, xy = 0;
    for (const auto &[size, entry] : sizes) {
        const double value = who == "ours" ? entry.ours : entry.peers.at(who);
        const double lx = std::log(static_cast<double>(size)), ly = std::log(value);
        n += 1;
        x += lx;
        y += ly;
        xx += lx * lx;
        xy += lx * ly;
    }
    return (n * xy - x * y) / (n * xx - x * x);
}

// The peer's own growth: where a pass over the smallest schema stays in the cache and one over the largest does not,
// plain walks grow faster than their size too.
std::string peer_growth(const std::map<uint64_t, measured> &sizes)
{
    const auto &peers = sizes.begin()->second.peers;
    for (const auto &[who, value] : peers) {
        bool is_everywhere = true;
        for (const auto &[size, entry] : sizes)
            is_everywhere = is_everywhere && entry.peers.count(who);
        if (is_everywhere)
            return rounded(growth(sizes, who), 2) + " (" + who + ")";
    }
    return "-";
}

std::string row(const bench_case &c, uint64_t size, const measured &entry, bool *is_met)
{
    std::string best_name = "-", text = "| " + std::string(c.title) + " | " + std::to_string(size) + " | " +
                                        as_value(c.name, entry.ours) + " | ";
    double best = 0;
    for (const auto &[who, value] : entry.peers) {
        if (best == 0 || value < best) {
            best = value;
            best_name = who;
        }
    }
    text += best > 0 ? as_value(c.name, best) + " (" + best_name + ") | " : "- | ";
    const double ratio = best > 0 ? entry.ours / best : 0;
    text += best > 0 ? rounded(ratio, 2) + " | " : "- | ";
    auto target = c.target.find(std::to_string(size));
    if (target == c.target.end())
        target = c.target.find("");
    if (target == c.target.end() || best == 0)
        return text + "- | |\n";
    const bool met = ratio <= target->second;
    *is_met = *is_met && met;
    return text + rounded(target->second, 2) + " | " + (met ? "met" : "**missed**") + " |\n";
}

} // namespace

void bench_add_figure(const std::string &name, double value)
{
    figures()[name] = value;
}

bool bench_collector::ReportContext(const Context &)
{
    return true;
}

void bench_collector::ReportRuns(const std::vector<Run> &runs)
{
    for (const Run &run : runs) {
        if (run.run_type != Run::RT_Iteration || run.error_occurred)
            continue;
        const std::string name = run.run_name.function_name;
        // Processor time, which neighbours on the machine do not add to; a case that takes the time itself gives that.
        const bool is_manual = run.run_name.time_type == "manual_time";
        const double seconds = is_manual ? run.real_accumulated_time : run.cpu_accumulated_time;
        times_[name].push_back(seconds / static_cast<double>(run.iterations) * 1e9);
        if (times_[name].size() == 1)
            std::fprintf(stderr, "  %s\n", name.c_str());
    }
}

std::string bench_collector::table(bool *is_met) const
{
    results all;
    for (const auto &[name, times] : times_)
        add(&all, name, median(times));
    for (const auto &[name, value] : figures())
        add(&all, name, value);

    *is_met = true;
    std::string text = "| case | tables | ours | best peer | ratio | target | |\n|---|--:|--:|--:|--:|--:|---|\n";
    std::string exponents = "\n| case | sizes | growth exponent | target | | a peer's |\n|---|---|--:|--:|---|--:|\n";
    for (const bench_case &c : bench_cases()) {
        const auto found = all.find(c.name);
        if (found == all.end())
            continue;
        for (const auto &[size, entry] : found->second)
            if (entry.ours > 0) // a limit alone says nothing
                text += row(c, size, entry, is_met);
        if (found->second.size() < 3 || std::string(c.name).rfind("memory", 0) == 0)
            continue;
        const double exponent = growth(found->second, "ours");
        exponents += "| " + std::string(c.title) + " | " + std::to_string(found->second.begin()->first) + " to " +
                     std::to_string(found->second.rbegin()->first) + " | " + rounded(exponent, 2) + " | 1.10 | " +
                     (exponent <= 1.1 ? "met" : "**missed**") + " | " + peer_growth(found->second) + " |\n";
        *is_met = *is_met && exponent <= 1.1;
    }
    return text + exponents;
}
