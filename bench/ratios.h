// SPDX-License-Identifier: MIT
/// The library against a peer or a physical limit in the same run: best times, their ratio and the
/// target, as rows of a table. The exit code is 1 when a ratio is above its target.
#pragma once
#include <algorithm>
#include <benchmark/benchmark.h>
#include <chrono>
#include <cstdio>
#include <functional>
#include <limits>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace ratios {

inline int missed = 0; // rows above their target: the exit code of a bench program

template <class Work> double secondsOf(Work work)
{
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

/// The best of `rounds` times of `work()`, in nanoseconds for each of its `count` operations.
template <class Work> double best(int rounds, double count, Work work)
{
    double least = std::numeric_limits<double>::infinity();
    for (int i = 0; i < rounds; ++i)
        least = std::min(least, 1e9 * secondsOf(work) / count);
    return least;
}

/// The same for two works in turns, so that other load of the machine affects both.
template <class Ours, class Theirs>
std::pair<double, double> bestInTurns(int rounds, double count, Ours ours, Theirs theirs)
{
    std::pair<double, double> least{std::numeric_limits<double>::infinity(),
                                    std::numeric_limits<double>::infinity()};
    for (int i = 0; i < rounds; ++i) {
        least.first = std::min(least.first, best(1, count, ours));
        least.second = std::min(least.second, best(1, count, theirs));
    }
    return least;
}

inline double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

inline void head(const char *title)
{
    std::printf("\n%s\n%-52s %12s %-28s %12s %7s %7s\n", title, "", "ours", "peer", "", "ratio",
                "target");
}

inline void row(const char *name, double ours, const char *peerName, double peer, double target,
                const char *unit = "ns")
{
    const bool met = ours <= peer * target;
    missed += !met;
    std::printf("%-52s %9.4g %-2s %-28s %9.4g %-2s %7.3f %7.2f%s\n", name, ours, unit, peerName,
                peer, unit, ours / peer, target, met ? "" : "  MISSED");
    std::fflush(stdout);
}

using Body = std::function<void(benchmark::State &)>;

struct Pair {
    std::string job;
    std::string peer; ///< what the peer is
    double reach;     ///< the largest ratio, ours / peer, that is good enough
    Body ours;
    Body theirs;
};

class BestTimes : public benchmark::ConsoleReporter {
public:
    void ReportRuns(const std::vector<Run> &runs) override
    {
        ConsoleReporter::ReportRuns(runs);
        for (const Run &run : runs) {
            if (run.run_type != Run::RT_Iteration || run.error_occurred)
                continue;
            auto &best = mBest
                             .try_emplace(run.run_name.function_name,
                                          std::numeric_limits<double>::infinity())
                             .first->second;
            best = std::min(best, run.real_accumulated_time / static_cast<double>(run.iterations));
        }
    }
    double seconds(const std::string &name) const
    {
        const auto found = mBest.find(name);
        return found == mBest.end() ? 0.0 : found->second;
    }

private:
    std::map<std::string, double> mBest;
};

/// A benchmark body that calls `work()` once in each iteration.
template <class Work> Body repeat(Work work)
{
    return [work](benchmark::State &state) mutable {
        for (auto _ : state)
            work();
    };
}

/// Measures each pair in turns with Google Benchmark, the best of five, and prints the table.
inline int run(int argc, char **argv, const std::vector<Pair> &table)
{
    std::vector<std::string> words(argv, argv + argc);
    words.insert(words.begin() + 1,
                 {"--benchmark_repetitions=5", "--benchmark_enable_random_interleaving=true",
                  "--benchmark_min_time=0.05", "--benchmark_report_aggregates_only=false"});
    std::vector<char *> arguments;
    for (std::string &word : words)
        arguments.push_back(word.data());
    int count = static_cast<int>(arguments.size());
    benchmark::Initialize(&count, arguments.data());
    for (const Pair &pair : table) {
        benchmark::RegisterBenchmark((pair.job + "/ours").c_str(), pair.ours);
        benchmark::RegisterBenchmark((pair.job + "/peer").c_str(), pair.theirs);
    }
    BestTimes times;
    benchmark::RunSpecifiedBenchmarks(&times);

    head("");
    for (const Pair &pair : table) {
        const double ours = times.seconds(pair.job + "/ours");
        const double theirs = times.seconds(pair.job + "/peer");
        if (ours <= 0.0 || theirs <= 0.0)
            continue; // filtered out
        row(pair.job.c_str(), 1e6 * ours, pair.peer.c_str(), 1e6 * theirs, pair.reach, "us");
    }
    return missed > 0;
}

} // namespace ratios
