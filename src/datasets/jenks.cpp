// SPDX-License-Identifier: MIT
// Natural breaks by the recurrence F(c, j) = min over i of F(c-1, i) + cost(i+1 .. j), the smallest
// i of equal ones, as it comes out in doubles when each cost is summed from its first element to
// its last.
//
// Equal values never part, so the recurrence is run over runs of them. First every F is found
// approximately from prefix sums, in O(k d log d) for d runs, since the best i never falls as j
// grows. Then the way back from F(k, n) is walked: at each step all i that could be the best one,
// given bounds on the rounding of both computations, are candidates. A lone candidate is the
// answer. Several are told apart by the sums of the recurrence itself, of which only those that
// matter are formed. When too many matter, or rounding is a fair part of the costs (values with a
// large common offset), all of them are formed: the plain recurrence, first element by first
// element, in O(k n) memory.
#include "datasets/jenks.h"
#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <optional>
#include <vector>
#include "datainterface/VORN_Progress.h"

using datainterface::ValueRun;
using datainterface::ValueRuns;

namespace {

constexpr double kRounding = 0x1p-53;
constexpr double kSquareLimit = 1e140; // a larger value could overflow the sums
constexpr double kScaleDown = 0x1p-600;
constexpr qint64 kPlainLimit =
    20000; // values that the plain recurrence is still fit for: 2e8 costs
constexpr qint64 kPlainFewLimit =
    2000; // the same when there are not more different values than classes
constexpr qint64 kMostSums = 1LL << 30; // however many values there are
constexpr qint64 kSumsPerValue =
    64; // elements summed a value before the plain recurrence is the shorter way

using Splits = std::vector<qint64>; // for c = k down to 2: the elements before class c

bool goOn(double part)
{
    return !VORN_Progress::UsingProgressBar()
           || VORN_Progress::UpdateProgress(static_cast<int>(100.0 * part), nullptr);
}

// The costs of the stretches that begin at one element, each from the one before.
class GrowingCost {
public:
    double add(double value)
    {
        mSum += value;
        mSquares += value * value;
        ++mCount;
        return mSquares - mSum * mSum / mCount;
    }

private:
    double mSum = 0.0;
    double mSquares = 0.0;
    double mCount = 0.0;
};

// All of the recurrence. An empty result: cancelled.
Splits plainSplits(const ValueRuns &runs, int classes)
{
    std::vector<double> values;
    for (const ValueRun &run : runs)
        values.insert(values.end(), static_cast<std::size_t>(run.count), run.value);
    const int n = static_cast<int>(values.size());
    std::vector<std::vector<double>> best(classes + 1, std::vector<double>(n + 1, HUGE_VAL));
    std::vector<std::vector<int>> back(classes + 1, std::vector<int>(n + 1, 1));
    std::vector<double> cost(n + 1);
    for (int i = 0; i < n; ++i) {
        if (i % 64 == 0 && !goOn(1.0 - std::pow(1.0 - static_cast<double>(i) / n, 2)))
            return {};
        GrowingCost growing;
        for (int j = i + 1; j <= n; ++j)
            cost[j] = growing.add(values[j - 1]);
        if (i == 0) {
            best[1] = cost;
            for (int c = 2; c <= classes; ++c)
                best[c][1] = 0.0;
            continue;
        }
        for (int c = 2; c <= classes; ++c) {
            const double before = best[c - 1][i];
            double *const row = best[c].data();
            int *const from = back[c].data();
            for (int j = i + 1; j <= n; ++j) {
                const double value = before + cost[j];
                from[j] = value < row[j] ? i : from[j];
                row[j] = value < row[j] ? value : row[j];
            }
        }
    }
    Splits splits;
    for (int c = classes, j = n; c > 1; --c) {
        j = back[c][j];
        splits.push_back(j);
    }
    return splits;
}

// With no more different values than classes every run is a class; classes left over part off the
// first element.
Splits splitsOfFewRuns(const std::vector<qint64> &ends, int classes)
{
    Splits splits;
    size_t run = ends.size() - 1;
    for (int c = classes; c > 1; --c) {
        run -= run > 0 ? 1 : 0;
        splits.push_back(std::max<qint64>(ends[run], 1));
    }
    return splits;
}

class RunSplits {
public:
    // ends[r]: the elements in the first r runs. More runs than classes.
    RunSplits(const ValueRuns &values, const std::vector<qint64> &ends, int classes)
        : mValues(values),
          mEnds(ends),
          mRuns(static_cast<int>(values.size())),
          mClasses(classes),
          mBudget(std::min(kSumsPerValue * ends.back(), kMostSums))
    {
        sumUp();
    }

    // False: cancelled.
    bool approximate()
    {
        mBest.resize(mClasses);
        mBest[1].resize(mRuns + 1);
        for (int b = 1; b <= mRuns; ++b)
            mBest[1][b] = cost(0, b);
        for (int c = 2; c < mClasses; ++c) {
            mBest[c].assign(mRuns + 1, HUGE_VAL);
            fillRow(c, c, mRuns, c - 1, mRuns - 1);
            if (!goOn(static_cast<double>(c) / mClasses))
                return false;
        }
        return true;
    }

    // Nothing: rounding decides, or too many sums matter.
    std::optional<Splits> certifiedSplits()
    {
        if (leastValue(mClasses, mRuns) < mSlack * mClasses * static_cast<double>(mEnds.back()))
            return std::nullopt;
        return walkBack([this](int c, int b) -> int {
            const std::vector<int> all = candidates(c, b, mSlack);
            return all.size() == 1 ? all.front() : exact(c, b).back;
        });
    }

    // What the approximation alone says.
    Splits likelySplits()
    {
        mBudget = std::numeric_limits<qint64>::max();
        return *walkBack([this](int c, int b) { return candidates(c, b, 0.0).front(); });
    }

private:
    struct Exact {
        double cost;
        int back;
    };

    // Prefix sums of the values less the middle one; what that takes off the costs' rounding is all
    // the better.
    void sumUp()
    {
        const auto middle = std::upper_bound(mEnds.begin(), mEnds.end(), mEnds.back() / 2);
        const double shift = mValues[static_cast<std::size_t>(middle - mEnds.begin()) - 1].value;
        mSums.assign(mRuns + 1, 0.0);
        mSquares.assign(mRuns + 1, 0.0);
        double squares = 0.0;   // of the values themselves
        double magnitude = 0.0; // of the shifted ones, summed
        double largest = 0.0;
        for (int r = 0; r < mRuns; ++r) {
            const double value = mValues[r].value;
            const double shifted = value - shift;
            const double count = static_cast<double>(mValues[r].count);
            mSums[r + 1] = mSums[r] + count * shifted;
            mSquares[r + 1] = mSquares[r] + count * shifted * shifted;
            squares += count * value * value;
            magnitude += count * std::abs(shifted);
            largest = std::max(largest, std::abs(shifted));
        }
        // The recurrence: n additions each to sums of which the squared one is at most n times the
        // sum of squares. The approximation: d additions, two ends, k classes, and 2 log2 d + 2
        // times that since a split that rounding moved bounds the search for others.
        const double n = static_cast<double>(mEnds.back());
        const double d = mRuns;
        const double k = mClasses;
        const double plain = (3.0 * n + 8.0 + k) * squares;
        const double approximation =
            k * (2.0 * std::ceil(std::log2(d)) + 3.0) * (6.0 * d + 20.0) * largest * magnitude;
        mSlack = 2.0 * kRounding * (plain + approximation);
    }

    // Of the runs a to b - 1.
    double cost(int a, int b) const
    {
        const double sum = mSums[b] - mSums[a];
        return mSquares[b] - mSquares[a] - sum * sum / static_cast<double>(mEnds[b] - mEnds[a]);
    }

    double approximateValue(int c, int i, int b) const { return mBest[c - 1][i] + cost(i, b); }

    // The entries low to high of row c, whose splits lie between `from` and `to`.
    void fillRow(int c, int low, int high, int from, int to)
    {
        while (low <= high) {
            const int middle = low + (high - low) / 2;
            int split = std::min(from, middle - 1);
            double least = HUGE_VAL;
            for (int i = split; i <= std::min(to, middle - 1); ++i) {
                const double value = approximateValue(c, i, middle);
                if (value < least) {
                    least = value;
                    split = i;
                }
            }
            mBest[c][middle] = least;
            fillRow(c, low, middle - 1, from, split);
            low = middle + 1;
            from = split;
        }
    }

    double leastValue(int c, int b) const
    {
        double least = HUGE_VAL;
        for (int i = c - 1; i < b; ++i)
            least = std::min(least, approximateValue(c, i, b));
        return least;
    }

    // All splits before run b whose value lies within `slack` of the least, ascending; never empty.
    std::vector<int> candidates(int c, int b, double slack)
    {
        mBudget -= b;
        const double least = leastValue(c, b);
        // To the recurrence fewer values than classes cost nothing. Only rounding can make that the
        // better way.
        for (int i = 1; i < c - 1; ++i) {
            if (slack > 0.0 && cost(i, b) <= least + slack)
                mBudget = -1;
        }
        std::vector<int> found;
        for (int i = c - 1; i < b; ++i) {
            if (approximateValue(c, i, b) <= least + slack)
                found.push_back(i);
        }
        if (found.empty())
            found.push_back(b - 1);
        return found;
    }

    double exactCost(int a, int b)
    {
        mBudget -= mEnds[b] - mEnds[a];
        double result = 0.0;
        GrowingCost growing;
        for (int r = a; r < b && mBudget >= 0; ++r) {
            for (qint64 i = 0; i < mValues[r].count; ++i)
                result = growing.add(mValues[r].value);
        }
        return result;
    }

    // The recurrence's own entry, by the entries that could be its parts.
    Exact exact(int c, int b)
    {
        if (c == 1)
            return {exactCost(0, b), 0};
        const auto known = mExact.find({c, b});
        if (known != mExact.end())
            return known->second;
        Exact entry{HUGE_VAL, b - 1};
        for (const int i : candidates(c, b, mSlack)) {
            if (mBudget < 0)
                break;
            const double value = exact(c - 1, i).cost + exactCost(i, b);
            if (value < entry.cost)
                entry = {value, i};
        }
        mExact[{c, b}] = entry;
        return entry;
    }

    template <class BestSplit> std::optional<Splits> walkBack(BestSplit bestSplit)
    {
        Splits splits;
        for (int c = mClasses, b = mRuns; c > 1; --c) {
            b = bestSplit(c, b);
            if (mBudget < 0)
                return std::nullopt;
            splits.push_back(mEnds[b]);
        }
        return splits;
    }

    const ValueRuns &mValues;
    const std::vector<qint64> &mEnds;
    const int mRuns;
    const int mClasses;
    qint64 mBudget; // elements that may still be summed or looked at
    double mSlack = 0.0;
    std::vector<double> mSums;
    std::vector<double> mSquares;
    std::vector<std::vector<double>> mBest; // [c][b]: b runs in c classes
    std::map<std::pair<int, int>, Exact> mExact;
};

std::vector<qint64> runEnds(const ValueRuns &runs)
{
    std::vector<qint64> ends{0};
    for (const ValueRun &run : runs)
        ends.push_back(ends.back() + run.count);
    return ends;
}

// Where the classes part; nothing: cancelled.
std::optional<Splits> findSplits(const ValueRuns &values, const std::vector<qint64> &ends,
                                 int classes)
{
    const qint64 count = ends.back();
    const auto plain = [&]() -> std::optional<Splits> {
        Splits splits = plainSplits(values, classes);
        return splits.empty() ? std::nullopt : std::make_optional(std::move(splits));
    };
    if (static_cast<int>(values.size()) <= classes)
        return count + classes <= kPlainFewLimit ? plain() : splitsOfFewRuns(ends, classes);

    RunSplits runs(values, ends, classes);
    if (!runs.approximate())
        return std::nullopt;
    if (auto splits = runs.certifiedSplits())
        return splits;
    return count <= kPlainLimit ? plain() : runs.likelySplits();
}

} // namespace

QList<double> datainterface::jenksBreaks(int breakCount, const QVector<double> &sorted)
{
    return jenksBreaks(breakCount, runsOf(sorted));
}

QList<double> datainterface::jenksBreaks(int breakCount, const ValueRuns &sorted)
{
    if (sorted.empty())
        return {};
    const std::vector<qint64> ends = runEnds(sorted);
    Splits splits;
    if (breakCount > 2) {
        const double largest =
            std::max(std::abs(sorted.front().value), std::abs(sorted.back().value));
        ValueRuns values = sorted;
        for (ValueRun &run : values)
            run.value *= largest > kSquareLimit ? kScaleDown : 1.0;
        const auto found = findSplits(values, ends, breakCount - 1);
        if (!found)
            return {};
        splits = *found;
    }
    const auto valueAt = [&](qint64 element) {
        const auto behind = std::upper_bound(ends.begin(), ends.end(), element);
        return sorted[static_cast<std::size_t>(behind - ends.begin()) - 1].value;
    };
    QList<double> breaks{sorted.front().value};
    for (auto split = splits.rbegin(); split != splits.rend(); ++split)
        breaks.append((valueAt(*split - 1) + valueAt(std::min(*split, ends.back() - 1))) * 0.5);
    breaks.append(sorted.back().value);
    return breaks;
}
