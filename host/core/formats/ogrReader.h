// SPDX-License-Identifier: MIT
/// Reads any vector file or table that GDAL reads.
#pragma once
#include <QSet>
#include <functional>
#include "core/export.h"
#include "core/formats/featureTable.h"

namespace meridor {

struct ReadOptions {
    QString layer;   ///< empty: the only layer
    QString xColumn; ///< with yColumn: points from two columns of a table
    QString yColumn;
    QString projection;  ///< "EPSG:4326", WKT or a PROJ text that replaces the file's own
    QStringList missing; ///< texts that stand for a missing cell; an empty cell always does
    bool shapes = true;  ///< false: attributes alone
    /// Given a table with its columns and no rows yet, returns the columns to keep. Empty: all are
    /// kept.
    std::function<QSet<int>(const FeatureTable &)> choose;
    /// Receives the percentage of rows read, 0 to 100; throws to stop.
    std::function<void(int)> progress = [](int) {};
};

/// Raises a Failure that names the file and the row.
MERIDOR_EXPORT FeatureTable readFeatures(const QString &path, const ReadOptions &options);

} // namespace meridor
