// SPDX-License-Identifier: MIT
/// The test for normal scores, by mean and median.
#pragma once
#include <QVector>
#include <algorithm>
#include <cmath>
#include "datainterface/OrderedDouble.h"
#include "datainterface/StatisticsAPI.h"

namespace datainterface {

constexpr double kNormalScoreTolerance = 1e-05;

inline bool isNormalScoreMean(double mean)
{
    return std::fabs(mean) <= kNormalScoreTolerance;
}

/// @param present  the values that are not missing. They are reordered.
inline bool areNormalScores(double mean, QVector<OrderedDouble> &present)
{
    if (present.isEmpty() || !isNormalScoreMean(mean))
        return false;
    const int n = present.size();
    const int m = qMin(n / 2 + 1, n); // counted from 1
    std::nth_element(present.begin(), present.begin() + (m - 1), present.end());
    double score = 0.0;
    VORN_GetNormalQuantile((m - 0.5) / n, score);
    return std::fabs(present.at(m - 1) - score) <= kNormalScoreTolerance;
}

} // namespace datainterface
