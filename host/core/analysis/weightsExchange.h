// SPDX-License-Identifier: MIT
/// Weight sets out of the project into files, and back.
#pragma once
#include <QString>
#include "core/analysis/weightSets.h"
#include "core/export.h"

namespace meridor {

struct WrittenWeights {
    qint64 time = 0;
    int objects = 0;
    qint64 links = 0;
    bool losesWeights = false; ///< the format holds neighbours alone, the set has other weights
};

/// Writes the lists of a set at a time (the last one for an empty text), whole or not at all.
/// @param key  the dataset whose values name the objects; empty: their keys. Raises a Failure or
/// the cancel.
MERIDOR_EXPORT WrittenWeights exportWeights(int set, const QString &path, const QString &key,
                                            const QString &at);

struct WeightsImport {
    QString key; ///< as in exportWeights
    QString at;  ///< the span that the lists hold for; empty: as long as there are objects
    bool standardize = false; ///< each object's weights are divided by their sum
    bool strict = false;      ///< ids that do not match are a failure
};

/// Makes a set of what was read from `path`. Raises a Failure with no set made.
MERIDOR_EXPORT WeightsMatch importWeights(int geography, const QString &name,
                                          const WeightsFile &file, const QString &path,
                                          const WeightsImport &options);

} // namespace meridor
