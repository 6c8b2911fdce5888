// SPDX-License-Identifier: MIT
/// The values of a vector or raster dataset at one time.
#pragma once
#include <QMap>
#include <QSet>
#include <QStringList>
#include <QVector>
#include <optional>
#include "core/export.h"
#include "datainterface/MDatum.h"
#include "datainterface/datum.h"

namespace meridor {

/// Values by object or cell, numeric or text.
struct ValuesAt {
    bool numeric = true;
    QVector<double> numbers; ///< of grids: NaN where missing
    QStringList texts;
    QSet<int> missing;
};
/// Raises a Failure if the dataset has no values at that time.
MERIDOR_EXPORT ValuesAt valuesAt(int dataset, qint64 time, int realization = 0);

/// The value of one object or cell; nothing where it is missing or the dataset has none at that time.
MERIDOR_EXPORT std::optional<datum> valueOf(int dataset, int realization, unsigned int object,
                                            qint64 time);

/// "realization 3 of 30", for an index from 0; empty for a dataset with a single one.
MERIDOR_EXPORT QString realizationText(int dataset, int realization);

/// How often each value occurs in a realization, over all times. Raises a Failure on a cancel.
MERIDOR_EXPORT QMap<MDatum, int> frequenciesOf(int dataset, int realization);

} // namespace meridor
