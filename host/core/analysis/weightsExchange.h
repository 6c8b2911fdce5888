// SPDX-License-Identifier: MIT
/// Export of weight sets to files, and import.
#pragma once
#include <QString>
#include "core/analysis/weightSets.h"
#include "core/export.h"

namespace meridor {

struct WrittenWeights {
    qint64 time = 0;
    int objects = 0;
    qint64 links = 0;
    bool losesWeights = false; ///< the format has no weights, but those of the set are not all 1
};

/// Writes the lists of a set at a time. The file is replaced atomically. Raises a Failure, also on
/// a cancel.
/// @param key  the dataset whose values identify the objects; empty: the key dataset.
/// @param at  a time as text; empty: the last time.
/// @param format  as in weightsFormatOf.
MERIDOR_EXPORT WrittenWeights exportWeights(int set, const QString &path, const QString &key,
                                            const QString &at, const QString &format = QString());

struct WeightsImport {
    QString key;              ///< as in exportWeights
    QString at;               ///< the interval of the lists as text; empty: all times of objects
    bool standardize = false; ///< divide each object's weights by their sum
    bool strict = false;      ///< ids without a match are a failure
};

/// Creates a set of the lists in `file`. Raises a Failure; no set is added then.
/// @param path  the name of the file in messages and in the description of the set.
MERIDOR_EXPORT WeightsMatch importWeights(int geography, const QString &name,
                                          const WeightsFile &file, const QString &path,
                                          const WeightsImport &options);

} // namespace meridor
