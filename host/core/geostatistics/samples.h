// SPDX-License-Identifier: MIT
/// Numbers at places: what variograms are calculated from and what kriging predicts from.
#pragma once
#include <QPointF>
#include <QStringList>
#include <QVector>
#include <QtGlobal>
#include <vector>
#include "core/export.h"
#include "datainterface/TimeStamp.h"

namespace meridor {

/// Rows of places with a value each.
struct MERIDOR_EXPORT Samples {
    std::vector<double> x;
    std::vector<double> y;
    std::vector<double> values;
    std::vector<int> objects; ///< the object index or the number of the cell

    size_t size() const { return x.size(); }
    void add(const QPointF &place, double value, int object);
};

/// All places of a geography at a time: points, centroids of polygons, centres of cells.
struct Places {
    std::vector<double> x;
    std::vector<double> y;
    std::vector<int> objects;

    size_t size() const { return x.size(); }
};
/// Raises a Failure for a geography of lines.
MERIDOR_EXPORT Places placesAt(int geography, qint64 time);

/// The finite values of a numeric dataset with their places. Raises a Failure for a dataset of
/// texts, for lines, for an unknown realization and for a time without values.
MERIDOR_EXPORT Samples samplesAt(int dataset, qint64 time, int realization = 0);

/// The intervals of the samples that are predicted from: those with values that hold the times of the
/// texts, or all. The values of a static dataset are predicted from once, at the places of one time:
/// the last one at which a shape changed, if none is given. Raises a Failure for a time without
/// values, and for several times of a static dataset.
MERIDOR_EXPORT QVector<Interval> sampleTimes(int dataset, const QStringList &times,
                                             int realization = 0);

/// The one of a time, or the last one for an empty text. Raises a Failure if there is none.
MERIDOR_EXPORT Interval sampleTime(int dataset, const QString &time, int realization = 0);

/// Replaces samples at the same place by one with the mean of their values, at the row and with the
/// object of the first.
/// @param merged  receives the number of samples that were removed.
MERIDOR_EXPORT Samples withoutColocated(const Samples &samples, int &merged);

/// The diagonal of the bounding box.
MERIDOR_EXPORT double diagonalOf(const Samples &samples);

/// Raises a Failure if there are fewer than two samples of a time.
/// @param purpose  what needs two: "a variogram".
void requireTwo(size_t count, int dataset, const Interval &when, const char *purpose);

/// Whether no place of a geography is among the samples. What is calculated there comes from the
/// mean alone; the usual cause is that the coordinates are of different projections.
bool isApart(const Samples &samples, int geography);

} // namespace meridor
