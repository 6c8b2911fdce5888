// SPDX-License-Identifier: MIT
/// Writes a report as one self-contained HTML page.
#pragma once
#include <QByteArray>
#include <QString>
#include "core/export.h"
#include "core/report/reportModel.h"

namespace meridor {

/// The page with its data, scripts and styles. Without scripts it shows the first map and the
/// tables of each geography.
MERIDOR_EXPORT QByteArray reportPage(const ReportProject &report);

/// Escapes a text for HTML.
QString escaped(const QString &text);
/// The data for the scripts of the page as JSON. "<" is escaped, so that no text ends the script
/// element.
QByteArray reportJson(const ReportProject &report);
/// The first map of a geography as a picture; empty if it has none.
QString staticMap(const ReportGeography &geography);
/// Tables of the numbers that charts show: statistics, links, Moran's I.
QString staticTables(const ReportGeography &geography);
/// The number of missing values of the objects that exist at the layer's times.
qint64 missingValues(const ReportGeography &geography, const ReportLayer &layer);
/// For display: at most seven digits.
QString readable(double value);

} // namespace meridor
