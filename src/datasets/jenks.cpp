// SPDX-License-Identifier: MIT
// Natural breaks: the classes that the plain recurrence (plainJenks.h) finds, in O(k d log d) time
// for d different values in k classes instead of O(k n^2) for n values.
//
// Let F(c, j) be the entries of the recurrence as they come out in doubles, V(c, i, j) =
// F(c - 1, i) + cost(i + 1 .. j) the value of the split i, and i* the split that the recurrence
// takes: the smallest i with the least V.
//
// Approximation. Equal values are never separated, so splits are between runs of equal values. For
// sorted values the best split never falls as j grows (Wu 1991, J. Algorithms 12, 663-673), so a
// row is filled by halving: the split of the middle entry bounds the splits on either side of it.
// Costs are computed from prefix sums. The result is V', which differs from V by rounding alone.
//
// Theorem. Let |V' - V| <= e for all splits. Then V'(c, i*, j) <= min over i of V'(c, i, j) + 2 e.
// Proof: for the split m with the least V',
//     V'(i*) <= V(i*) + e <= V(m) + e <= V'(m) + 2 e.
//
// So i* is among the candidates: the splits with a V' within the slack 2 e of the least. The slack
// is computed from bounds on the rounding of both computations (RunSplits::sumUp). The way back
// from F(k, n) is walked with it:
//
//     one candidate        it is i*: certified, and no entry of F is needed
//     several candidates   the entries of F that they need are computed exactly as the recurrence
//                          does, by the same additions in the same order, and memoized
//     too many sums, or    no certificate: the plain recurrence computes all entries; for more
//     costs near rounding  values than that can take, the first candidate of slack 0 is used
#include "datasets/jenks.h"
#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <optional>
#include <vector>
#include "datasets/plainJenks.h"

using namespace datainterface;

namespace {

constexpr double kRounding = 0x1p-53;
constexpr double kSquareLimit = 1e140; // a larger value could overflow the sums
constexpr double kScaleDown = 0x1p-600;
// The number of values up to which the plain recurrence is used: 2e8 costs.
constexpr qint64 kPlainLimit = 20000;
// The same when there are not more different values than classes.
constexpr qint64 kPlainFewLimit = 2000;
// How many elements may be summed to tell candidates apart: in all, and per value. The plain
// recurrence is faster than more sums per value.
constexpr qint64 kMostSums = 1LL << 30;
constexpr qint64 kSumsPerValue = 64;

// With no more different values than classes every run is a class. Each class left over takes the
// first element, as in the recurrence.
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
    // ends[r] is the number of elements in the first r runs. There must be more runs than classes.
    RunSplits(const ValueRuns &values, const std::vector<qint64> &ends, int classes)
        : mValues(values),
          mEnds(ends),
          mRuns(static_cast<int>(values.size())),
          mClasses(classes),
          mBudget(std::min(kSumsPerValue * ends.back(), kMostSums))
    {
        sumUp();
    }

    // Fills mBest. False when the user cancels.
    bool approximate()
    {
        mBest.resize(mClasses);
        mBest[1].resize(mRuns + 1);
        for (int b = 1; b <= mRuns; ++b)
            mBest[1][b] = cost(0, b);
        for (int c = 2; c < mClasses; ++c) {
            mBest[c].assign(mRuns + 1, HUGE_VAL);
            fillRow(c, c, mRuns, c - 1, mRuns - 1);
            if (!continueBreaks(static_cast<double>(c) / mClasses))
                return false;
        }
        return true;
    }

    // The splits of the recurrence. Nothing when rounding is a fair part of the costs, or when too
    // many sums would be needed.
    std::optional<Splits> certifiedSplits()
    {
        if (leastValue(mClasses, mRuns) < mSlack * mClasses * static_cast<double>(mEnds.back()))
            return std::nullopt;
        return walkBack([this](int c, int b) -> int {
            const std::vector<int> all = candidates(c, b, mSlack);
            return all.size() == 1 ? all.front() : exact(c, b).back;
        });
    }

    // The splits by the approximation alone.
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

    // Prefix sums of the values less the middle one, which keeps the rounding of the costs small
    // when the values have a large common offset.
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
        // The recurrence adds n elements to each of its sums, and the square of the sum is at most
        // n times the sum of squares. The approximation adds d runs, subtracts two prefixes, and
        // does so for k classes. The factor 2 log2 d + 3 is there because a split that rounding has
        // moved bounds the search for other splits.
        const double n = static_cast<double>(mEnds.back());
        const double d = mRuns;
        const double k = mClasses;
        const double plain = (3.0 * n + 8.0 + k) * squares;
        const double approximation =
            k * (2.0 * std::ceil(std::log2(d)) + 3.0) * (6.0 * d + 20.0) * largest * magnitude;
        mSlack = 2.0 * kRounding * (plain + approximation);
    }

    // The cost of the runs a to b - 1, approximately.
    double cost(int a, int b) const
    {
        const double sum = mSums[b] - mSums[a];
        return mSquares[b] - mSquares[a] - sum * sum / static_cast<double>(mEnds[b] - mEnds[a]);
    }

    double approximateValue(int c, int i, int b) const { return mBest[c - 1][i] + cost(i, b); }

    // Fills the entries low to high of row c. Their splits are between `from` and `to`.
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

    // All splits before run b whose value is within `slack` of the least, ascending; never empty.
    std::vector<int> candidates(int c, int b, double slack)
    {
        mBudget -= b;
        const double least = leastValue(c, b);
        // In the recurrence c - 1 classes of fewer values have the cost 0, so a split there can also
        // be the least, but only because of rounding. There is no certificate then.
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

    // The entry F(c, b) of the recurrence, from the entries of its candidates.
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
    qint64 mBudget; // elements that may still be summed or examined; negative when it is used up
    double mSlack = 0.0; // 2 e of the theorem
    std::vector<double> mSums;
    std::vector<double> mSquares;
    std::vector<std::vector<double>> mBest; // [c][b]: the least cost of b runs in c classes
    std::map<std::pair<int, int>, Exact> mExact;
};

std::vector<qint64> runEnds(const ValueRuns &runs)
{
    std::vector<qint64> ends{0};
    for (const ValueRun &run : runs)
        ends.push_back(ends.back() + run.count);
    return ends;
}

// The splits between the classes; nothing when the user cancels.
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
