// A long life: builds, changes, serialises, reads and frees schemas of mixed sizes, round after round, and holds each
// round against the first. Every schema must say what it said in the first round, every block must be given back by
// the end of a round, and what the process occupies must not grow.
//
//   tov_soak SECONDS [SEED]
//
// A round is the same jobs in another order. Several schemas are alive at a time and leave in another order than they
// came, so blocks of all sizes and ages lie beside each other.
#include "kt_memory.h"
#include "soak_life.hpp"

#include <algorithm>
#include <chrono>
#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <random>
#include <sqlite3.h>
#include <unistd.h>
#include <vector>

namespace {

// Pairs of tables of each job: many small schemas, a few large ones.
constexpr unsigned job_sizes[] = {1, 1, 1, 1, 1, 2, 2, 2, 3, 3, 5, 8, 8, 13, 20, 20, 40, 75, 150, 300, 1000};
constexpr size_t job_count = std::size(job_sizes);
constexpr size_t alive_at_a_time = 7;

// The most that the process may occupy, by what it occupied in the first tenth of the time, eight rounds at least: one
// round occupies half as much again as another, by the order of its jobs.
constexpr double settling_share = 0.1;
constexpr uint64_t settling_rounds = 8;
constexpr double allowed_growth = 1.05;
constexpr long allowed_kilobytes = 4096;

// Blocks that the runtime has taken and not given back.
int64_t live_blocks = 0;

void *allocate(void *, size_t size)
{
    live_blocks++;
    return std::malloc(size);
}

void *resize(void *, void *block, size_t, size_t new_size)
{
    return std::realloc(block, new_size);
}

void release(void *, void *block)
{
    live_blocks--;
    std::free(block);
}

// What the process occupies, in kilobytes. Instruments occupy memory of their own; 0 then.
long occupied()
{
#ifdef TOV_SANITIZED
    return 0;
#else
    std::ifstream statm("/proc/self/statm");
    long size = 0;
    long resident = 0;
    statm >> size >> resident;
    return resident * (sysconf(_SC_PAGESIZE) / 1024);
#endif
}

struct soak {
    std::mt19937 random;
    std::vector<uint64_t> digests = std::vector<uint64_t>(job_count, 0);
    uint64_t rounds = 0;
    uint64_t schemas = 0;
    long settled = 0; // kilobytes
    long most = 0;    // since then
};

void do_job(soak &s, size_t job, std::vector<life> &alive)
{
    alive.push_back(begin_life(job_sizes[job]));
    s.schemas++;
    const uint64_t digest = alive.back().digest;
    if (s.rounds == 0)
        s.digests[job] = digest;
    else if (s.digests[job] != digest)
        stop("round " + std::to_string(s.rounds + 1) + ": a schema of " + std::to_string(job_sizes[job]) +
             " pairs says other things than in the first round");
    if (alive.size() < alive_at_a_time)
        return;
    std::swap(alive[s.random() % alive.size()], alive.back());
    end_life(alive.back());
    alive.pop_back();
}

void do_round(soak &s)
{
    std::vector<size_t> jobs;
    std::vector<life> alive;
    for (size_t job = 0; job < job_count; job++)
        jobs.push_back(job);
    std::shuffle(jobs.begin(), jobs.end(), s.random);
    for (const size_t job : jobs)
        do_job(s, job, alive);
    std::shuffle(alive.begin(), alive.end(), s.random);
    for (life &l : alive)
        end_life(l);
    s.rounds++;
    if (live_blocks != 0 || sqlite3_memory_used() != 0)
        stop("round " + std::to_string(s.rounds) + ": " + std::to_string(live_blocks) + " blocks of the runtime and " +
             std::to_string(sqlite3_memory_used()) + " bytes of SQLite are left");
    if (sqlite3_memory_highwater(0) == 0)
        stop("SQLite was asked nothing");
}

void measure(soak &s, double share)
{
    const long now = occupied();
    if (share <= settling_share || s.rounds <= settling_rounds)
        s.settled = std::max(s.settled, now);
    else
        s.most = std::max(s.most, now);
    if (static_cast<double>(s.most) > static_cast<double>(s.settled) * allowed_growth + allowed_kilobytes)
        stop("occupies " + std::to_string(s.most) + " KB, after " + std::to_string(s.settled) + " KB in the beginning");
}

void report(const soak &s, double seconds)
{
    std::printf("%7.0f s  %8" PRIu64 " rounds  %9" PRIu64 " schemas  %7ld KB\n", seconds, s.rounds, s.schemas,
                occupied());
    std::fflush(stdout);
}

void run(soak &s, double seconds)
{
    const auto start = std::chrono::steady_clock::now();
    for (int tenth = 0; tenth < 10;) {
        do_round(s);
        const std::chrono::duration<double> passed = std::chrono::steady_clock::now() - start;
        measure(s, passed.count() / seconds);
        if (passed.count() < seconds * (tenth + 1) / 10)
            continue;
        report(s, passed.count());
        tenth++;
    }
}

} // namespace

int main(int count, char **arguments)
{
    if (count < 2 || std::atof(arguments[1]) <= 0) {
        std::fprintf(stderr, "usage: tov_soak SECONDS [SEED]\n");
        return 2;
    }
    const KT_allocator counting = {allocate, resize, release, nullptr};
    KT_memory__set_allocator(&counting);
    soak s;
    s.random.seed(count > 2 ? static_cast<uint32_t>(std::atol(arguments[2])) : 1);
    run(s, std::atof(arguments[1]));
    std::printf("%" PRIu64 " rounds of %zu schemas said what the first one said; "
                "%ld KB at most, %ld KB until it had settled\n",
                s.rounds, job_count, s.most, s.settled);
    return 0;
}
