// SPDX-License-Identifier: MIT
#include "core/plot/plotValues.h"
#include <cmath>
#include <limits>
#include "core/grids/valuesAt.h"
#include "core/project/catalog.h"
#include "core/project/failure.h"
#include "core/project/text.h"
#include "core/render/classes.h"
#include "datainterface/MDataset.h"
#include "datainterface/TimeAPI.h"

namespace meridor {

void requireNumbers(int dataset)
{
    if (!datasetOf(dataset)->IsNumeric())
        fail(QStringLiteral("%1 holds texts; this graph is of numbers").arg(datasetName(dataset)));
}

QVector<double> presentValues(ShownDataset dataset, qint64 time)
{
    requireNumbers(dataset.id);
    const ValuesAt values = existingValuesAt(dataset.id, time, dataset.realization);
    QVector<double> present;
    for (int i = 0; i < values.numbers.size(); ++i)
        if (std::isfinite(values.numbers[i]) && !values.missing.contains(i))
            present.append(values.numbers[i]);
    return present;
}

TimeScale::TimeScale(int geography) : mAxis(axisOf(geography))
{
}

GraphAxis TimeScale::axis() const
{
    GraphAxis axis;
    axis.dates = mAxis.countsSeconds() || mAxis.format() == TF_Date;
    return axis;
}

double TimeScale::at(qint64 time) const
{
    if (!axis().dates)
        return static_cast<double>(time);
    const qint64 start =
        mAxis.format() == TF_Time ? 0 : VORN_ConstructTime(TF_Date, 1970, 1, 1, 0, 0, 0);
    return static_cast<double>(time - start) * 1000;
}

double TimeScale::middleOf(const Interval &interval) const
{
    return (at(interval.startTime) + at(interval.endTime)) / 2;
}

QStringList labelsOf(ShownDataset label, qint64 time, const QVector<int> &objects)
{
    QStringList labels;
    if (label.id < 0)
        return labels;
    const ValuesAt values = valuesAt(label.id, time, label.realization);
    for (const int object : objects)
        labels.append(values.missing.contains(object) ? QString()
                      : values.numeric                ? shortNumber(values.numbers[object])
                                                      : values.texts[object]);
    return labels;
}

Line fittedLine(const QVector<QPointF> &points)
{
    const auto n = static_cast<double>(points.size());
    QPointF mean;
    for (const QPointF &point : points)
        mean += point / n;
    double xx = 0;
    double xy = 0;
    double yy = 0;
    for (const QPointF &point : points) {
        const QPointF d = point - mean;
        xx += d.x() * d.x();
        xy += d.x() * d.y();
        yy += d.y() * d.y();
    }
    constexpr double kNone = std::numeric_limits<double>::quiet_NaN();
    if (points.size() < 2 || !(xx > 0))
        return {kNone, kNone, kNone};
    return {xy / xx, mean.y() - xy / xx * mean.x(), yy > 0 ? xy / std::sqrt(xx * yy) : kNone};
}

} // namespace meridor
