// SPDX-License-Identifier: MIT
/// Benchmarks in pairs: a job as this library does it beside a peer or a physical limit, in the same run. Both are run in
/// turns, the best of five each counts, and a table of the ratios stands at the end. A ratio above its reach is exit 1.
#pragma once
#include <benchmark/benchmark.h>
#include <cstdio>
#include <functional>
#include <limits>
#include <map>
#include <string>
#include <vector>

namespace pairs {

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
            auto &best = mBest.try_emplace(run.run_name.function_name, std::numeric_limits<double>::infinity())
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

/// A body that calls `work()` once an iteration.
template <class Work> Body repeat(Work work)
{
    return [work](benchmark::State &state) mutable {
        for (auto _ : state)
            work();
    };
}

inline int run(int argc, char **argv, const std::vector<Pair> &table)
{
    std::vector<std::string> words(argv, argv + argc);
    words.insert(words.begin() + 1, {"--benchmark_repetitions=5", "--benchmark_enable_random_interleaving=true",
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
    BestTimes best;
    benchmark::RunSpecifiedBenchmarks(&best);

    bool good = true;
    std::printf("\n| job | peer | ours | peer | ratio | reach |\n|---|---|---|---|---|---|\n");
    for (const Pair &pair : table) {
        const double ours = best.seconds(pair.job + "/ours");
        const double theirs = best.seconds(pair.job + "/peer");
        if (ours <= 0.0 || theirs <= 0.0)
            continue; // filtered out
        const double ratio = ours / theirs;
        good = good && ratio <= pair.reach;
        std::printf("| %s | %s | %.3g us | %.3g us | %.2f | %.2f%s |\n", pair.job.c_str(), pair.peer.c_str(), 1e6 * ours,
                    1e6 * theirs, ratio, pair.reach, ratio <= pair.reach ? "" : " missed");
    }
    return good ? 0 : 1;
}

} // namespace pairs
