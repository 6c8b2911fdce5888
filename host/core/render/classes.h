// SPDX-License-Identifier: MIT
/// Classes of a dataset's values, as a legend shows them.
#pragma once
#include <QString>
#include <QStringList>
#include <QVector>
#include "core/export.h"
#include "core/grids/valuesAt.h"
#include "datainterface/MDataset.h"

namespace meridor {

MERIDOR_EXPORT MDataset::ClassificationType classificationOf(const QString &method);
MERIDOR_EXPORT QStringList classificationNames();

/// Class limits, ascending, one more than there are classes: of all values of a realization, or of
/// those of the objects that exist at a time, or at several times. Empty if there are no values.
/// Raises a Failure on a cancel.
MERIDOR_EXPORT QVector<double> breaksOfAll(int dataset, MDataset::ClassificationType method,
                                           int classes, int realization = 0);
MERIDOR_EXPORT QVector<double> breaksAt(int dataset, qint64 time,
                                        MDataset::ClassificationType method, int classes);
MERIDOR_EXPORT QVector<double> breaksAt(int dataset, const QVector<qint64> &times,
                                        MDataset::ClassificationType method, int classes,
                                        int realization = 0);

/// Whether the grids of so many times have more cells than are classified one by one. Their classes
/// are those of gridSample() with kSampledCells cells.
MERIDOR_EXPORT bool isLargeGrid(int dataset, int times);
constexpr int kSampledCells = 1'000'000;

/// valuesAt, with the values of objects that do not exist then as missing.
MERIDOR_EXPORT ValuesAt existingValuesAt(int dataset, qint64 time, int realization = 0);

/// The value below which a share of the values lies, interpolated linearly between ranks (R. J.
/// Hyndman and Y. Fan 1996, Am. Stat. 50, type 7). NaN without values.
MERIDOR_EXPORT double quantileOf(const QVector<double> &sorted, double share);

/// The class of a value. A class includes its upper limit, the first class also its lower limit. -1
/// if the value is outside.
MERIDOR_EXPORT int classOf(double value, const QVector<double> &breaks);

} // namespace meridor
