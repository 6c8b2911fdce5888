// SPDX-License-Identifier: MIT
/// Tables of datasets as files.
#pragma once
#include <QString>
#include <QVector>
#include "core/export.h"

namespace meridor {

enum class TableFormat { Csv, GeoEas, Dbf };

/// One row for each object and time of `datasets`, which share a geography; [start, end] closed.
/// Whole or not at all: raises a Failure or the cancel.
MERIDOR_EXPORT void exportTable(const QString &path, TableFormat format,
                                const QVector<int> &datasets, qint64 start, qint64 end,
                                const QString &missing);

/// The hull of the datasets' times; of those that hold for good, their one.
MERIDOR_EXPORT QPair<qint64, qint64> timesOf(const QVector<int> &datasets);

} // namespace meridor
