// SPDX-License-Identifier: MIT
/// An import from its options to the finished geography.
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
    QStringList withoutShape; ///< keys of objects that have none at any time
    QVector<int> datasets;
    QVector<Unmatched> unmatched;
    NearVertices nearVertices; ///< of polygons
};

/// Brings a map into the model that is loaded. Raises a Failure; the geography is then not there.
MERIDOR_EXPORT ImportReport importMap(const ImportOptions &options, const Notes &notes,
                                      const Progress &progress);

} // namespace meridor
