// SPDX-License-Identifier: MIT
// Quantile classes over runs of equal values. Runs are the atoms: a first pass fuses small
// neighbours up to the size that the small ones would share out evenly, a second one fuses whatever
// pair is smallest until the count is right.
#include "Common/quantiles.h"
#include <algorithm>
#include <limits>
#include <queue>
#include <tuple>
#include <vector>
#include "Common/detail/failure.h"

namespace {

constexpr double kTinyNeighbour = 0.2; // of the size of the run before it
constexpr qint64 kNoPair = std::numeric_limits<qint64>::max();

struct Run {
    double low;
    double high;
    qint64 size;
};

void fuse(Run &run, const Run &next)
{
    run.high = next.high;
    run.size += next.size;
}

// The size below which runs are fused: what the small runs hold, shared out over the classes that
// the big ones leave. 0, so that none counts as small, when the big runs leave no class.
qint64 targetSize(const std::vector<Run> &runs, qint64 values, int classes)
{
    const qint64 mean = values / classes;
    int count = 0;
    qint64 sum = 0;
    for (const Run &run : runs) {
        if (run.size < mean) {
            ++count;
            sum += run.size;
        }
    }
    const int left = count + classes - static_cast<int>(runs.size());
    return left > 0 ? static_cast<qint64>(static_cast<double>(sum) / left + 1.0) : 0;
}

// @return the fusions still to be made.
int fuseSmallRuns(std::vector<Run> &runs, qint64 target, int fusions)
{
    std::vector<Run> fused;
    fused.reserve(runs.size());
    for (size_t next = 0; next < runs.size();) {
        Run run = runs[next++];
        if (run.size < target) {
            while (fusions > 0 && next < runs.size() && run.size + runs[next].size < target) {
                fuse(run, runs[next++]);
                --fusions;
            }
            if (fusions > 0 && next < runs.size()
                && static_cast<double>(runs[next].size) / static_cast<double>(run.size)
                       < kTinyNeighbour) {
                fuse(run, runs[next++]);
                --fusions;
            }
        }
        fused.push_back(run);
    }
    runs.swap(fused);
    return fusions;
}

// The pair with the smallest sum is fused, the first of equal ones; pairs wait in a heap, and one
// that no longer stands is recognised by its sizes' sum or by a fused partner.
class PairFuser {
public:
    explicit PairFuser(std::vector<Run> &runs)
        : mRuns(runs), mNext(runs.size()), mPrevious(runs.size())
    {
        for (size_t i = 0; i < runs.size(); ++i) {
            mNext[i] = i + 1;
            mPrevious[i] = i == 0 ? 0 : i - 1;
        }
        for (size_t i = 0; i < runs.size(); ++i)
            push(i);
    }

    void fuseSmallest()
    {
        const size_t at = popSmallest();
        const size_t gone = mNext[at];
        fuse(mRuns[at], mRuns[gone]);
        mRuns[gone].size = 0;
        mNext[at] = mNext[gone];
        if (mNext[at] < mRuns.size())
            mPrevious[mNext[at]] = at;
        push(at);
        if (at > 0)
            push(mPrevious[at]);
    }

private:
    using Pair = std::tuple<qint64, size_t>;

    qint64 sumAt(size_t at) const { return mRuns[at].size + mRuns[mNext[at]].size; }

    void push(size_t at)
    {
        if (mNext[at] < mRuns.size())
            mPairs.emplace(sumAt(at), at);
    }

    size_t popSmallest()
    {
        int fuseB = -1;
        while (fuseB < 0 && !mPairs.empty()) {
            const auto [sum, at] = mPairs.top();
            mPairs.pop();
            if (mRuns[at].size > 0 && mNext[at] < mRuns.size() && sumAt(at) == sum && sum < kNoPair)
                fuseB = static_cast<int>(at);
        }
        datainterface::require(fuseB >= 0, "fuseB>=0");
        return static_cast<size_t>(fuseB);
    }

    std::vector<Run> &mRuns;
    std::vector<size_t> mNext;
    std::vector<size_t> mPrevious;
    std::priority_queue<Pair, std::vector<Pair>, std::greater<Pair>> mPairs;
};

void fuseSmallestPairs(std::vector<Run> &runs, int fusions)
{
    PairFuser fuser(runs);
    for (; fusions > 0; --fusions)
        fuser.fuseSmallest();
    runs.erase(
        std::remove_if(runs.begin(), runs.end(), [](const Run &run) { return run.size == 0; }),
        runs.end());
}

} // namespace

bool quantiles(const QVector<double> &sorted, int classes, QMap<int, QPair<double, double>> &result)
{
    result.clear();
    const auto descends = [](double a, double b) { return !(a <= b); };
    if (std::adjacent_find(sorted.begin(), sorted.end(), descends) != sorted.end())
        return false;
    return quantiles(datainterface::runsOf(sorted), classes, result);
}

bool quantiles(const datainterface::ValueRuns &sorted, int classes,
               QMap<int, QPair<double, double>> &result)
{
    result.clear();
    if (classes < 1)
        return false;
    std::vector<Run> runs;
    qint64 values = 0;
    for (const datainterface::ValueRun &run : sorted) {
        runs.push_back({run.value, run.value, run.count});
        values += run.count;
    }
    const int surplus = static_cast<int>(runs.size()) - classes;
    if (surplus > 0) {
        const int left = fuseSmallRuns(runs, targetSize(runs, values, classes), surplus);
        if (left > 0)
            fuseSmallestPairs(runs, left);
    }
    for (size_t i = 0; i < runs.size(); ++i)
        result.insert(static_cast<int>(i), {runs[i].low, runs[i].high});
    return surplus >= 0;
}
