// SPDX-License-Identifier: MIT
/// A report as one page of HTML that needs nothing beside it.
#pragma once
#include <QByteArray>
#include <QString>
#include "core/export.h"
#include "core/report/reportModel.h"

namespace meridor {

/// The page with its data, scripts and styles. Without scripts it shows the first map and the
/// tables of each geography.
MERIDOR_EXPORT QByteArray reportPage(const ReportProject &report);

/// As text in the page, never markup.
QString escaped(const QString &text);
/// What the scripts read. "<" is escaped, so that no text in it ends the element around it.
QByteArray reportJson(const ReportProject &report);
/// The first map of a geography as a picture; empty without one.
QString staticMap(const ReportGeography &geography);
/// Tables of the numbers that charts show: statistics, links, Moran's I.
QString staticTables(const ReportGeography &geography);
/// Objects that exist at the layer's times without a value there.
qint64 missingValues(const ReportGeography &geography, const ReportLayer &layer);
/// At most seven digits: for the eye.
QString readable(double value);

} // namespace meridor
