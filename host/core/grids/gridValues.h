// SPDX-License-Identifier: MIT
/// Cells of a raster dataset as numbers.
#pragma once
#include <QPair>
#include <QString>
#include <QVector>
#include "core/export.h"

namespace meridor {

/// Every cell of the grid at a time, row after row; NaN for a missing one. Raises a Failure when
/// there is no grid then.
MERIDOR_EXPORT QVector<double> gridValues(int dataset, qint64 time);

/// The shortest text that reads back as the same cell of a dataset.
MERIDOR_EXPORT QString cellText(int dataset, double value);

/// Column and row of a cell told as "COLUMN,ROW" from 0 at the top left, or by its place as "@X,Y".
/// Raises a Failure.
MERIDOR_EXPORT QPair<unsigned, unsigned> findCell(int geography, const QString &text);

/// Numbers parted by commas, exactly `count`; `option` is named in the failure.
MERIDOR_EXPORT QVector<double> numbersOf(const QString &text, int count, const QString &option);

} // namespace meridor
