// SPDX-License-Identifier: MIT
/// What a user asks of an import, as the texts of the command line.
#pragma once
#include <QString>
#include <QStringList>

namespace meridor {

struct ImportOptions {
    QString map;
    QString layer;
    QString name;  ///< of the geography; empty: the layer's
    QString key;   ///< field that names the objects; empty: their row
    QString start; ///< fields of a row's existence
    QString end;   ///< a field, or "next": up to the object's next row
    QString xColumn;
    QString yColumn;
    QString projection;
    bool attributes = true; ///< further fields become datasets ...
    QStringList fields;     ///< ... these alone when any is named
    QStringList tables;     ///< files whose columns are added to the map's by key
    QStringList series;     ///< NAME=COLUMNS
    QString observations;   ///< a table with a row for each observation
    QStringList observed;   ///< NAME=VALUE@START[/END], columns of that table
    QStringList types;      ///< NAME=decimal|integer|text
    QStringList missing;
    QString times;              ///< "auto", "number", "date", "date-time" or "time"
    QString timePattern;        ///< how files write times; empty: as TimeAxis reads them
    QString dataset;            ///< of a grid: the dataset's name; empty: the file's
    QString noData;             ///< of a grid: a number or "none", in place of the file's
    double snap = 0;            ///< tolerance of contiguity, in map units; 0: rounding slack alone
    bool strict = false;        ///< keys without a partner are a failure
    bool bandsAreTimes = false; ///< of a grid: of one dataset, else datasets each
};

} // namespace meridor
