// SPDX-License-Identifier: MIT
#include "core/plot/plotValues.h"
#include <algorithm>
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

BoxFigures boxOf(QVector<double> values)
{
    std::sort(values.begin(), values.end());
    BoxFigures box;
    box.firstQuartile = quantileOf(values, 0.25);
    box.median = quantileOf(values, 0.5);
    box.thirdQuartile = quantileOf(values, 0.75);
    const double reach = 1.5 * (box.thirdQuartile - box.firstQuartile);
    QVector<double> within;
    for (const double value : values) {
        const bool isNear =
            value >= box.firstQuartile - reach && value <= box.thirdQuartile + reach;
        (isNear ? within : box.beyond).append(value);
    }
    box.low = within.isEmpty() ? box.firstQuartile : within.first();
    box.high = within.isEmpty() ? box.thirdQuartile : within.last();
    return box;
}

namespace {

constexpr int kMostBars = 60;

double widthFor(QVector<double> values, double least, double most)
{
    if (!(most > least))
        return std::max(1e-9, std::abs(least) * 0.1);
    std::sort(values.begin(), values.end());
    double width = 2 * (quantileOf(values, 0.75) - quantileOf(values, 0.25))
                   / std::cbrt(static_cast<double>(values.size()));
    width = std::max(width, (most - least) / kMostBars);
    const double power = std::pow(10, std::floor(std::log10(width)));
    for (const double factor : {5.0, 2.0})
        if (factor * power <= width)
            return factor * power;
    return power;
}

} // namespace

int Bins::of(double value) const
{
    return static_cast<int>(
        std::clamp(std::floor((value - start) / width), 0.0, static_cast<double>(count - 1)));
}

Bins binsOf(const QVector<double> &values)
{
    if (values.isEmpty())
        return {};
    const auto ends = std::minmax_element(values.begin(), values.end());
    const double width = widthFor(values, *ends.first, *ends.second);
    const double start = std::floor(*ends.first / width) * width;
    const double count = std::floor((*ends.second - start) / width) + 1;
    // The range of the values can be beyond the largest double, and the width below the smallest.
    if (!std::isfinite(start) || !(count >= 1 && count <= 10 * kMostBars))
        return {*ends.first, std::max(*ends.second / 2 - *ends.first / 2, 1e-300), 2};
    return {start, width, static_cast<int>(count)};
}

void History::add(const Interval &when, double value)
{
    constexpr double kNone = std::numeric_limits<double>::quiet_NaN();
    if (!std::isfinite(value)) {
        mIsGap = true;
        return;
    }
    if (!mPoints.isEmpty() && (mIsGap || (mIsSpan && when.startTime > mEnd)))
        mPoints.append(QPointF(mScale.at(when.startTime), kNone));
    mIsGap = false;
    mIsSpan = when.endTime > when.startTime;
    mEnd = when.endTime;
    mPoints.append({mScale.at(when.startTime), value});
    if (mIsSpan) // the value holds for the whole span
        mPoints.append({mScale.at(when.endTime), value});
}

} // namespace meridor
