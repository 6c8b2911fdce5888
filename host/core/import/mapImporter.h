// SPDX-License-Identifier: MIT
/// An import from its options to the finished geography.
#pragma once
#include "core/import/importPlan.h"
#include "core/import/nearVertices.h"
#include "cli/terminalProgress.h"

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
ImportReport importMap(const ImportOptions &options, const Console &console,
                       const Progress &progress);

} // namespace meridor
