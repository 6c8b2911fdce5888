// SPDX-License-Identifier: MIT
/// Export of datasets as tables.
#pragma once
#include <QString>
#include <QVector>
#include "core/export.h"

namespace meridor {

enum class TableFormat { Csv, GeoEas, Dbf };

/// Writes one row for each object and time of `datasets`, which must have one geography. Times
/// outside the closed interval [start, end] are left out. The file is replaced atomically. Raises a
/// Failure, also on a cancel.
/// @param missing  the text of a missing value.
MERIDOR_EXPORT void exportTable(const QString &path, TableFormat format,
                                const QVector<int> &datasets, qint64 start, qint64 end,
                                const QString &missing);

/// The first and the last instant of the datasets; {0, 0} if all are static.
MERIDOR_EXPORT QPair<qint64, qint64> timesOf(const QVector<int> &datasets);

} // namespace meridor
