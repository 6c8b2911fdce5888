// SPDX-License-Identifier: MIT
/// Ours against a peer in one run: best times, their ratio and the target, as one row of a table.
#pragma once
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <limits>
#include <utility>

namespace ratios {

inline int missed = 0; // rows above their target: the exit code of a bench program

/// The best of `rounds` times of `work()`, in nanoseconds for each of its `count` operations.
template <class Work> double best(int rounds, double count, Work work)
{
    double least = std::numeric_limits<double>::infinity();
    for (int i = 0; i < rounds; ++i) {
        const auto start = std::chrono::steady_clock::now();
        work();
        const std::chrono::duration<double, std::nano> took =
            std::chrono::steady_clock::now() - start;
        least = std::min(least, took.count() / count);
    }
    return least;
}

/// The same of two works in turns, so that a busy spell of the machine meets both.
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

} // namespace ratios
