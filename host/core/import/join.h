// SPDX-License-Identifier: MIT
/// Joins the columns of a table to the rows of a map by key.
#pragma once
#include "core/export.h"
#include "core/formats/featureTable.h"
#include "core/project/notes.h"

namespace meridor {

/// Keys without a match, in the order of their file.
struct Unmatched {
    QString table;
    QStringList tableKeys;  ///< keys of the table that no object of the map has
    QStringList objectKeys; ///< keys of objects that the table does not have
};

/// The index of the column of `table` that holds the keys: the column named `key`, else the first.
MERIDOR_EXPORT int keyColumnOf(const FeatureTable &table, const QString &key);

/// Appends the other columns of the table to those of the map, rows matched by key; cells of rows
/// without a match are missing. A column whose name the map already has is skipped with a note.
/// Raises a Failure if a key occurs twice in the table, or if no key matches.
MERIDOR_EXPORT Unmatched join(FeatureTable &map, int mapKey, const FeatureTable &table,
                              const Notes &notes);

} // namespace meridor
