// SPDX-License-Identifier: MIT
/// Values and times as coordinates of graphs.
#pragma once
#include <QVector>
#include "core/plot/plots.h"
#include "core/project/times.h"

namespace meridor {

/// Raises a Failure unless the dataset holds numbers.
void requireNumbers(int dataset);
/// The finite values of the objects that exist at a time, or of the cells.
QVector<double> presentValues(ShownDataset dataset, qint64 time);

/// Times on an axis: numbers as they are, dates in the unit of GraphAxis::dates.
class TimeScale {
public:
    explicit TimeScale(int geography);
    GraphAxis axis() const;
    double at(qint64 time) const;
    double middleOf(const Interval &interval) const;

private:
    TimeAxis mAxis;
};

/// Texts beside points: the values of a dataset by object; empty texts without a dataset.
QStringList labelsOf(ShownDataset label, qint64 time, const QVector<int> &objects);

struct Line {
    double slope = 0;
    double intercept = 0;
    double r = 0;
};
/// Least squares of y on x; NaN for fewer than two points or equal x.
Line fittedLine(const QVector<QPointF> &points);

} // namespace meridor
