// SPDX-License-Identifier: MIT
/// From cells to values: which kind a dataset needs, and each cell as such a value.
#pragma once
#include "core/formats/values.h"
#include "core/import/importPlan.h"

namespace meridor {

/// A column and the table it stands in.
struct CellColumn {
    const FeatureTable *table;
    int column;
    const Column &cells() const { return table->columns[column]; }
    QString place(int row) const { return meridor::place(*table, cells(), row); }
};

/// The kind of a dataset made of these columns: what a type names, else what all cells allow.
/// @param measured  numbers are expected: a lone text among numbers is an error that names its row,
/// not a reason to
///                  keep all of them as text.
ValueKind kindOfDataset(const ImportPlan &plan, const QString &name,
                        const QVector<CellColumn> &columns, bool measured);

/// The cell as a T (int, double, QString). Raises a Failure that names the place when it is none.
template <class T> T valueOf(const CellColumn &column, int row);

} // namespace meridor
