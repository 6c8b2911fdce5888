// SPDX-License-Identifier: MIT
/// The plain recurrence of natural breaks, which defines their result.
///
///     F(1, j) = cost(1 .. j)
///     F(c, 1) = 0
///     F(c, j) = min over i < j of F(c - 1, i) + cost(i + 1 .. j),  the smallest i of equal ones
///
/// F(c, j) is the least cost of the first j elements in c classes (Fisher 1958, JASA 53, 789-798).
/// cost(i .. j) is the sum of squares around the mean of the elements i to j, in doubles and summed
/// from the first element to the last.
#pragma once
#include <vector>
#include "Common/valueRuns.h"

namespace datainterface {

/// For each class c from the last down to the second: the number of elements before it.
using Splits = std::vector<qint64>;

/// The costs of the stretches that begin at one element, each from the one before.
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

/// Reports progress, from 0 to 1. False when the user cancels.
bool continueBreaks(double part);

/// All entries of the recurrence, in O(k n^2) time and O(k n) memory. Empty when the user cancels.
Splits plainSplits(const ValueRuns &runs, int classes);

} // namespace datainterface
