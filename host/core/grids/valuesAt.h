// SPDX-License-Identifier: MIT
/// A dataset of objects or cells at one time.
#pragma once
#include <QSet>
#include <QStringList>
#include <QVector>
#include "core/export.h"

namespace meridor {

/// A dataset's values at one time, numeric or text.
struct ValuesAt {
    bool numeric = true;
    QVector<double> numbers; ///< of grids with NaN for what is missing
    QStringList texts;
    QSet<int> missing;
};
/// Raises a Failure for a time without values.
MERIDOR_EXPORT ValuesAt valuesAt(int dataset, qint64 time);

} // namespace meridor
