// SPDX-License-Identifier: MIT
/// The import of a vector map with its tables.
#pragma once
#include "core/export.h"
#include "core/import/importPlan.h"
#include "core/import/nearVertices.h"
#include "core/project/progress.h"

namespace meridor {

struct ImportReport {
    int geography = -1;
    int objects = 0;
    int shapes = 0;
    QStringList withoutShape; ///< keys of objects without a shape at any time
    QVector<int> datasets;
    QVector<Unmatched> unmatched;
    NearVertices nearVertices; ///< counted for polygons only
};

/// Imports a map into the loaded project. Raises a Failure; no geography is added then.
MERIDOR_EXPORT ImportReport importMap(const ImportOptions &options, const Notes &notes,
                                      const Progress &progress);
/// The same for a map in memory, in place of the one that the options name.
MERIDOR_EXPORT ImportReport importMap(const FeatureTable &map, const ImportOptions &options,
                                      const Notes &notes, const Progress &progress);

} // namespace meridor
