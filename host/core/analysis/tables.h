// SPDX-License-Identifier: MIT
/// Export of the values of a vector geography: tables as text or DBF, and layers of shapes.
#pragma once
#include <QString>
#include <QVector>
#include <functional>
#include "core/analysis/valueRows.h"
#include "core/export.h"
#include "core/formats/featureWriter.h"

namespace meridor {

enum class TableFormat { Csv, GeoEas, Dbf };

struct WrittenTable {
    qint64 rows = 0;
    QVector<int> datasets;
    QStringList columns;
};

/// Writes a table without shapes. A file is replaced atomically, a device or pipe is written
/// directly. Raises a Failure, also on a cancel.
/// @param missing  the text of a missing value; without effect in a DBF table, which has nulls.
/// @param note  receives what the format cannot hold.
MERIDOR_EXPORT WrittenTable exportTable(const QString &path, TableFormat format,
                                        const RowPlan &plan, const QString &missing,
                                        const std::function<void(const QString &)> &note);

/// Writes a layer of shapes with values. Raises a Failure, also on a cancel; nothing is changed then.
/// @param target  its `kind` and `projection`, and an empty `layer`, are those of the geography.
MERIDOR_EXPORT WrittenTable exportShapes(FeatureTarget target, RowPlan plan,
                                         const std::function<void(const QString &)> &note);

/// The first and the last instant of the datasets; {0, 0} if all are static.
MERIDOR_EXPORT QPair<qint64, qint64> timesOf(const QVector<int> &datasets);

} // namespace meridor
