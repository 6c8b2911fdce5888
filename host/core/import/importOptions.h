// SPDX-License-Identifier: MIT
/// The options of an import, as texts of the user.
#pragma once
#include <QString>
#include <QStringList>

namespace meridor {

struct ImportOptions {
    QString map;
    QString layer;
    QString name;  ///< of the geography; empty: that of the layer
    QString key;   ///< field of the objects' keys; empty: every row is an object
    QString start; ///< field of the start of a row's existence
    QString end;   ///< field of its end, or "next": the start of the object's next row
    QString xColumn;
    QString yColumn;
    QString projection;
    bool attributes = true;     ///< fields without another use become datasets
    QStringList fields;         ///< only these fields become datasets; empty: all
    QStringList tables;         ///< files whose columns are joined to the map by key
    QStringList series;         ///< NAME=COLUMNS
    QString observations;       ///< file of a table with a row for each observation
    QStringList observed;       ///< NAME=VALUE@START[/END], columns of that table
    QStringList types;          ///< NAME=decimal|integer|text
    QStringList missing;        ///< texts of missing values; empty: the usual ones
    QStringList missingAlso;    ///< further texts of missing values
    QString encoding;           ///< of texts in files; empty: see textEncoding.h
    QString decimal;            ///< the decimal separator of texts: ".", "," or empty for "."
    QString times;              ///< "auto", "number", "date", "date-time" or "time"
    QString timePattern;        ///< format of times in the files; empty: that of TimeAxis
    QString dataset;            ///< of a grid: name of the dataset; empty: that of the file
    QString noData;             ///< of a grid: a number or "none"; replaces that of the file
    QString realizations;       ///< of a cube: the dimension whose places are realizations
    bool packed = false;        ///< of a cube: cells stay as they are stored
    double snap = 0;            ///< tolerance of contiguity in map units; 0: rounding error only
    bool strict = false;        ///< keys without a match are a failure
    bool bandsAreTimes = false; ///< of a grid: bands are times of one dataset, else datasets
};

} // namespace meridor
