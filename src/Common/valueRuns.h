// SPDX-License-Identifier: MIT
/// A sorted list told as its different values and how often each stands in it: tables of values
/// hold them so, and a list of billions takes no more room than its different values.
#pragma once
#include <QVector>
#include <vector>

namespace datainterface {

struct ValueRun {
    double value;
    qint64 count; ///< above 0
};
/// Ascending, no value twice.
using ValueRuns = std::vector<ValueRun>;

/// @param sorted  ascending
inline ValueRuns runsOf(const QVector<double> &sorted)
{
    ValueRuns runs;
    for (const double value : sorted) {
        if (runs.empty() || value != runs.back().value)
            runs.push_back({value, 1});
        else
            ++runs.back().count;
    }
    return runs;
}

} // namespace datainterface
