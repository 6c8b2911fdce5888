// SPDX-License-Identifier: MIT
/// Conversion of cells to the values of a dataset, and the choice of the dataset's type.
#pragma once
#include "core/formats/values.h"
#include "core/import/importPlan.h"

namespace meridor {

/// A column and its table.
struct CellColumn {
    const FeatureTable *table;
    int column;
    const Column &cells() const { return table->columns[column]; }
    QString place(int row) const { return meridor::place(*table, cells(), row); }
};

/// The kind of a dataset made of these columns: as options.types says, else the narrowest kind that
/// holds all cells.
/// @param measured  numbers are expected: a text among numbers raises a Failure that names its row,
///                  and does not make the whole dataset a text dataset.
/// @param notes     receives why a column of numbers with a few texts becomes text.
ValueKind kindOfDataset(const ImportPlan &plan, const QString &name,
                        const QVector<CellColumn> &columns, bool measured, const Notes &notes);

/// The cell as a T (int, double, QString). Raises a Failure that names the cell if it is no T.
template <class T> T valueOf(const CellColumn &column, int row);

} // namespace meridor
