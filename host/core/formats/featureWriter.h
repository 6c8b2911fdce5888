// SPDX-License-Identifier: MIT
/// Tables with shapes in the vector formats that GDAL writes, and DBF tables.
#pragma once
#include <QString>
#include <QStringList>
#include <QVector>
#include <functional>
#include "core/export.h"
#include "core/formats/valueTable.h"

namespace meridor {

enum class FeatureFormat { Dbf, GeoPackage, GeoJson, FlatGeobuf, Shapefile, Database };

struct FeatureTarget {
    QString path; ///< or, for a database, a connection text such as "PG:dbname=survey"
    FeatureFormat format = FeatureFormat::GeoPackage;
    QString layer;
    QString projection; ///< WKT; empty if there is none
    ShapeKind kind = ShapeKind::None;
    bool overwrite = false; ///< replace files, or the table of a database
};

/// Whether the text is the connection text of a database server rather than the name of a file.
MERIDOR_EXPORT bool isDatabase(const QString &target);
/// The files that a target consists of; empty for a database.
MERIDOR_EXPORT QStringList filesOf(const FeatureTarget &target);

/// Writes a layer. A file is written beside its target and renamed when it is complete, a table of a
/// database in one transaction. Raises a Failure; the target is then unchanged.
/// @param pass  passes all rows to a sink; called twice for formats whose fields have widths.
/// @param note  receives what the format cannot hold, such as long names of fields.
MERIDOR_EXPORT void writeFeatures(const FeatureTarget &target,
                                  const std::function<void(TableSink &)> &pass,
                                  const std::function<void(const QString &)> &note);

} // namespace meridor
