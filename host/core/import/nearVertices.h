// SPDX-License-Identifier: MIT
/// Vertices that are nearly but not quite the same: borders that a map shows as one line and that
/// are two.
#pragma once
#include "core/export.h"
#include "core/formats/featureTable.h"

namespace meridor {

struct NearVertices {
    double distance = 0; ///< up to which two vertices count as near, in map units
    int count = 0;       ///< vertices that have such a neighbour
};

/// @param tolerance  in map units; at least a hundred-millionth of the extent is looked at. O(n log
/// n) for n vertices.
MERIDOR_EXPORT NearVertices countNearVertices(const QVector<ShapeParts> &shapes, double tolerance);

} // namespace meridor
