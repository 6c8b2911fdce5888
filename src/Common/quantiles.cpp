// SPDX-License-Identifier: MIT
// Quantile classes. The values begin as groups of equal values, which are never split. Neighbouring
// groups are fused until there are as many groups as classes:
//
//   1. Small groups are fused with their successors up to a target size: the number of values in
//      small groups divided by the number of classes that the large groups leave for them.
//   2. While there are too many groups, the two neighbours with the smallest sum are fused.
#include "Common/quantiles.h"
#include <algorithm>
#include <limits>
#include <queue>
#include <tuple>
#include <vector>
#include "Common/detail/failure.h"

namespace {

constexpr double kTinyNeighbour = 0.2; // of the size of the group before it
constexpr qint64 kNoPair = std::numeric_limits<qint64>::max();

struct Group {
    double low;
    double high;
    qint64 size;
};

void fuse(Group &group, const Group &next)
{
    group.high = next.high;
    group.size += next.size;
}

// The size below which groups are fused: the number of values in small groups (below the mean size
// of a class) divided by the number of classes that the large groups leave. 0, so that no group is
// below it, when the large groups leave no class.
qint64 targetSize(const std::vector<Group> &groups, qint64 values, int classes)
{
    const qint64 mean = values / classes;
    int count = 0;
    qint64 sum = 0;
    for (const Group &group : groups) {
        if (group.size < mean) {
            ++count;
            sum += group.size;
        }
    }
    const int left = count + classes - static_cast<int>(groups.size());
    return left > 0 ? static_cast<qint64>(static_cast<double>(sum) / left + 1.0) : 0;
}

// @param fusions  the most to make. @return the number of fusions still to be made.
int fuseSmallGroups(std::vector<Group> &groups, qint64 target, int fusions)
{
    std::vector<Group> fused;
    fused.reserve(groups.size());
    for (size_t next = 0; next < groups.size();) {
        Group group = groups[next++];
        if (group.size < target) {
            while (fusions > 0 && next < groups.size() && group.size + groups[next].size < target) {
                fuse(group, groups[next++]);
                --fusions;
            }
            if (fusions > 0 && next < groups.size()
                && static_cast<double>(groups[next].size) / static_cast<double>(group.size)
                       < kTinyNeighbour) {
                fuse(group, groups[next++]);
                --fusions;
            }
        }
        fused.push_back(group);
    }
    groups.swap(fused);
    return fusions;
}

// Fuses the two neighbours with the smallest sum of sizes, the first of equal pairs. Pairs are kept
// in a heap by the sum that they had when they were entered. An outdated pair is recognised when it
// is taken out: its first group was fused into another one (size 0), or its sum has changed.
class PairFuser {
public:
    explicit PairFuser(std::vector<Group> &groups)
        : mGroups(groups), mNext(groups.size()), mPrevious(groups.size())
    {
        for (size_t i = 0; i < groups.size(); ++i) {
            mNext[i] = i + 1;
            mPrevious[i] = i == 0 ? 0 : i - 1;
        }
        for (size_t i = 0; i < groups.size(); ++i)
            push(i);
    }

    void fuseSmallest()
    {
        const size_t at = popSmallest();
        const size_t gone = mNext[at];
        fuse(mGroups[at], mGroups[gone]);
        mGroups[gone].size = 0;
        mNext[at] = mNext[gone];
        if (mNext[at] < mGroups.size())
            mPrevious[mNext[at]] = at;
        push(at);
        if (at > 0)
            push(mPrevious[at]);
    }

private:
    using Pair = std::tuple<qint64, size_t>;

    qint64 sumAt(size_t at) const { return mGroups[at].size + mGroups[mNext[at]].size; }

    void push(size_t at)
    {
        if (mNext[at] < mGroups.size())
            mPairs.emplace(sumAt(at), at);
    }

    size_t popSmallest()
    {
        int fuseB = -1;
        while (fuseB < 0 && !mPairs.empty()) {
            const auto [sum, at] = mPairs.top();
            mPairs.pop();
            if (mGroups[at].size > 0 && mNext[at] < mGroups.size() && sumAt(at) == sum
                && sum < kNoPair)
                fuseB = static_cast<int>(at);
        }
        datainterface::require(fuseB >= 0, "fuseB>=0");
        return static_cast<size_t>(fuseB);
    }

    std::vector<Group> &mGroups;
    std::vector<size_t> mNext;
    std::vector<size_t> mPrevious;
    std::priority_queue<Pair, std::vector<Pair>, std::greater<Pair>> mPairs;
};

void fuseSmallestPairs(std::vector<Group> &groups, int fusions)
{
    PairFuser fuser(groups);
    for (; fusions > 0; --fusions)
        fuser.fuseSmallest();
    const auto isFused = [](const Group &group) { return group.size == 0; };
    groups.erase(std::remove_if(groups.begin(), groups.end(), isFused), groups.end());
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
    std::vector<Group> groups;
    qint64 values = 0;
    for (const datainterface::ValueRun &run : sorted) {
        groups.push_back({run.value, run.value, run.count});
        values += run.count;
    }
    const int surplus = static_cast<int>(groups.size()) - classes;
    if (surplus > 0) {
        const int left = fuseSmallGroups(groups, targetSize(groups, values, classes), surplus);
        if (left > 0)
            fuseSmallestPairs(groups, left);
    }
    for (size_t i = 0; i < groups.size(); ++i)
        result.insert(static_cast<int>(i), {groups[i].low, groups[i].high});
    return surplus >= 0;
}
