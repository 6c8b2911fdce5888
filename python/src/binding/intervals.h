// SPDX-License-Identifier: MIT
/// Lists of intervals as arrays, and back.
#pragma once
#include "convert.h"
#include "datainterface/TimeStamp.h"

namespace meridor::python {

/// An int64 matrix with a row (start, end, whether the end is included) for each interval.
inline py::array intervalRows(const QVector<Interval> &intervals)
{
    std::vector<qint64> rows;
    rows.reserve(static_cast<size_t>(intervals.size()) * 3);
    for (const Interval &when : intervals)
        rows.insert(rows.end(), {when.inclusiveStart ? when.startTime : when.startTime + 1,
                                 when.endTime, qint64(when.inclusiveEnd)});
    return matrixOf(std::move(rows), intervals.size(), 3);
}

inline Interval intervalOf(qint64 start, qint64 end, bool closed)
{
    return {start, end, true, closed};
}

} // namespace meridor::python
