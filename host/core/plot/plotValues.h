// SPDX-License-Identifier: MIT
/// Values and times as coordinates of graphs, and the figures that graphs show.
#pragma once
#include <QPointF>
#include <QVector>
#include "core/export.h"
#include "core/plot/plots.h"
#include "core/project/progress.h"
#include "core/project/times.h"

namespace meridor {

/// Raises a Failure unless the dataset holds numbers.
MERIDOR_EXPORT void requireNumbers(int dataset);
/// The finite values of the objects that exist at a time, or of the cells.
MERIDOR_EXPORT QVector<double> presentValues(ShownDataset dataset, qint64 time);

/// Times on an axis: numbers as they are, dates in the unit of GraphAxis::dates.
class MERIDOR_EXPORT TimeScale {
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
MERIDOR_EXPORT Line fittedLine(const QVector<QPointF> &points);

/// Quartiles, and whiskers to the farthest values within one and a half interquartile ranges of them
/// (J. W. Tukey 1977).
struct BoxFigures {
    double low = 0; ///< low and high: of the whiskers
    double firstQuartile = 0;
    double median = 0;
    double thirdQuartile = 0;
    double high = 0;
    QVector<double> beyond; ///< ascending
};
/// @param values  at least one, finite.
MERIDOR_EXPORT BoxFigures boxOf(QVector<double> values);

/// Bars of equal width.
struct MERIDOR_EXPORT Bins {
    double start = 0;
    double width = 1;
    int count = 0;
    /// The bar of a finite value; the first or last one for a value beyond them.
    int of(double value) const;
};
/// Bars for finite values; none without values. Their width is that of D. Freedman and P. Diaconis
/// 1981 (Z. Wahrsch. 57), rounded down to 1, 2 or 5 times a power of ten.
MERIDOR_EXPORT Bins binsOf(const QVector<double> &values);

/// A line of values over their intervals, with gaps where there is none.
class MERIDOR_EXPORT History {
public:
    explicit History(const TimeScale &scale) : mScale(scale) {}
    /// Intervals are added in ascending order. A value that is not finite is a gap.
    void add(const Interval &when, double value);
    const QVector<QPointF> &points() const { return mPoints; }

private:
    TimeScale mScale;
    QVector<QPointF> mPoints;
    qint64 mEnd = 0;
    bool mIsSpan = false;
    bool mIsGap = false; ///< before the next value
};

/// The places of a Moran scatter plot: see plots.h.
struct MoranPlaces {
    double moran = 0;
    Line line; ///< its slope is Moran's I for weights whose rows sum to one
    QVector<int> objects;
    QVector<QPointF> places; ///< in the order of the objects
};
/// Raises a Failure if there is no Moran's I at that time.
MERIDOR_EXPORT MoranPlaces moranPlaces(ShownDataset shown, int weightSet, const Interval &when,
                                       const Progress &progress);

} // namespace meridor
