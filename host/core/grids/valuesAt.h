// SPDX-License-Identifier: MIT
/// The values of a vector or raster dataset at one time.
#pragma once
#include <QSet>
#include <QStringList>
#include <QVector>
#include "core/export.h"

namespace meridor {

/// Values by object or cell, numeric or text.
struct ValuesAt {
    bool numeric = true;
    QVector<double> numbers; ///< of grids: NaN where missing
    QStringList texts;
    QSet<int> missing;
};
/// Raises a Failure if the dataset has no values at that time.
MERIDOR_EXPORT ValuesAt valuesAt(int dataset, qint64 time);

} // namespace meridor
