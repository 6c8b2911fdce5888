// SPDX-License-Identifier: MIT
/// A sorted list in run-length form: its different values and how often each occurs. Tables of
/// frequencies have this form already, and a list of billions of values takes no more memory than
/// its different values.
#pragma once
#include <QVector>
#include <vector>

namespace datainterface {

struct ValueRun {
    double value;
    qint64 count; ///< above 0
};
/// Ascending; every value occurs once.
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
