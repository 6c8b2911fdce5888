// SPDX-License-Identifier: MIT
/// Brings the columns of a table to the rows of a map.
#pragma once
#include "core/export.h"
#include "core/formats/featureTable.h"
#include "core/project/notes.h"

namespace meridor {

/// Keys that found no partner, in the order of their file.
struct Unmatched {
    QString table;
    QStringList tableKeys;  ///< rows of the table that no object of the map has
    QStringList objectKeys; ///< objects that the table does not name
    bool any() const { return !tableKeys.isEmpty() || !objectKeys.isEmpty(); }
};

/// The column of `table` that holds the keys: the one of that name, else its first.
MERIDOR_EXPORT int keyColumnOf(const FeatureTable &table, const QString &key);

/// Appends the table's other columns to the map's, each row's cells found by key; a row without a
/// partner misses them. A name that the map has already is left out with a note. Raises a Failure
/// for a key that stands twice in the table, and when no key matches at all.
MERIDOR_EXPORT Unmatched join(FeatureTable &map, int mapKey, const FeatureTable &table,
                              const Notes &notes);

} // namespace meridor
