// SPDX-License-Identifier: MIT
// How much slower are the union and the refinement of a million intervals than sorting their ends,
// which is the least that they must do? The ratio of each pair of rows is the answer. "ordered":
// both lists are in order of time, as in containers; "shuffled": neither is.
#include <QVector>
#include <algorithm>
#include <benchmark/benchmark.h>
#include <random>
#include <vector>
#include "datainterface/TimeAPI.h"

namespace {

constexpr int kEach = 500000;

enum Order { Ordered, Shuffled };

// Two lists, neither of which overlaps itself; each interval of one overlaps about two of
// the other.
struct Input {
    explicit Input(Order order)
    {
        std::mt19937 random(20240501);
        for (QVector<Interval> *list : {&a, &b}) {
            list->reserve(kEach);
            qint64 at = 0;
            for (int i = 0; i < kEach; ++i) {
                const qint64 start = at + 1 + static_cast<qint64>(random() % 3000);
                at = start + 1 + static_cast<qint64>(random() % 3000);
                list->append({start, at, (random() & 1) != 0, (random() & 1) != 0});
            }
            if (order == Shuffled)
                std::shuffle(list->begin(), list->end(), random);
        }
    }
    std::vector<qint64> ends() const
    {
        std::vector<qint64> ends;
        ends.reserve(4 * kEach);
        for (const QVector<Interval> *list : {&a, &b}) {
            for (const Interval &interval : *list) {
                ends.push_back(interval.startTime);
                ends.push_back(interval.endTime);
            }
        }
        return ends;
    }
    QVector<Interval> a;
    QVector<Interval> b;
};

const Input &input(benchmark::State &state)
{
    static const Input ordered(Ordered);
    static const Input shuffled(Shuffled);
    state.SetLabel(state.range(0) == Ordered ? "ordered" : "shuffled");
    return state.range(0) == Ordered ? ordered : shuffled;
}

void sortOfTheEnds(benchmark::State &state)
{
    const Input &in = input(state);
    for (auto _ : state) {
        std::vector<qint64> ends = in.ends();
        std::sort(ends.begin(), ends.end());
        benchmark::DoNotOptimize(ends.data());
    }
}

void unionOfIntervals(benchmark::State &state)
{
    const Input &in = input(state);
    for (auto _ : state)
        benchmark::DoNotOptimize(VORN_IntervalUnion(in.a, in.b));
}

void intersectionOfIntervals(benchmark::State &state)
{
    const Input &in = input(state);
    for (auto _ : state)
        benchmark::DoNotOptimize(VORN_IntervalIntersection(in.a, in.b, true));
}

void mergeOfIntervals(benchmark::State &state)
{
    const Input &in = input(state);
    for (auto _ : state)
        benchmark::DoNotOptimize(VORN_MergeIntervals(in.a, in.b));
}

void mergeOfTimeStamps(benchmark::State &state)
{
    const Input &in = input(state);
    QList<TimeStamp> a, b;
    for (int i = 0; i < kEach; ++i) {
        a.append(in.a[i]);
        b.append(in.b[i]);
    }
    for (auto _ : state)
        benchmark::DoNotOptimize(TimeStamp::MergeTimeStamps(a, b));
}

BENCHMARK(sortOfTheEnds)->Arg(Ordered)->Arg(Shuffled)->Unit(benchmark::kMillisecond);
BENCHMARK(unionOfIntervals)->Arg(Ordered)->Arg(Shuffled)->Unit(benchmark::kMillisecond);
BENCHMARK(intersectionOfIntervals)->Arg(Ordered)->Arg(Shuffled)->Unit(benchmark::kMillisecond);
BENCHMARK(mergeOfIntervals)->Arg(Ordered)->Arg(Shuffled)->Unit(benchmark::kMillisecond);
BENCHMARK(mergeOfTimeStamps)->Arg(Ordered)->Arg(Shuffled)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
