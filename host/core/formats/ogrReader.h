// SPDX-License-Identifier: MIT
/// Reads any vector file or table that GDAL reads. The only place that knows GDAL's vector model.
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
    /// Given the columns, names those whose cells are kept; without it all are.
    std::function<QSet<int>(const FeatureTable &)> choose;
    /// Told the share of rows read, 0 to 100; raises to stop.
    std::function<void(int)> progress = [](int) {};
};

/// Raises a Failure that names the file and the row.
MERIDOR_EXPORT FeatureTable readFeatures(const QString &path, const ReadOptions &options);

} // namespace meridor
