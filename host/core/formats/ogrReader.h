// SPDX-License-Identifier: MIT
/// Reads any vector file, table or database that GDAL reads, and tables of texts.
#pragma once
#include <QSet>
#include <functional>
#include "core/export.h"
#include "core/formats/featureTable.h"
#include "core/project/notes.h"

namespace meridor {

struct ReadOptions {
    QString layer;   ///< empty: the only layer
    QString xColumn; ///< with yColumn: points from two columns of a table
    QString yColumn;
    QString projection; ///< "EPSG:4326", WKT or a PROJ text that replaces the file's own
    QString key;        ///< the column of the keys
    /// Texts that stand for a missing cell; an empty cell always does.
    QStringList missing;
    /// Texts that stand for a missing cell in the column of the keys.
    QStringList missingKeys;
    QString encoding;   ///< of texts; empty: see textEncoding.h
    char decimal = '.'; ///< the decimal separator of texts
    bool shapes = true; ///< false: attributes alone
    const Notes *notes = nullptr;
    /// Given a table with its columns and no rows yet, returns the columns to keep. Empty: all are
    /// kept. May be called twice, if the file has to be read again in another encoding.
    std::function<QSet<int>(const FeatureTable &)> choose;
    /// Receives the percentage of rows read, 0 to 100; throws to stop.
    std::function<void(int)> progress = [](int) {};
};

/// Raises a Failure that names the file and the row.
MERIDOR_EXPORT FeatureTable readFeatures(const QString &path, const ReadOptions &options);

/// The names of the layers of a vector file or database; empty for a table of texts. Raises a Failure
/// if GDAL cannot read the file.
MERIDOR_EXPORT QStringList layerNames(const QString &path);

/// Whether a layer of a vector file can have shapes: those of spreadsheets and dBASE tables cannot.
/// @param layer  empty: the first one.
bool canHaveShapes(const QString &path, const QString &layer);

} // namespace meridor
