// SPDX-License-Identifier: MIT
/// Finds vertices that nearly coincide, a sign of borders that are drawn twice with small
/// differences.
#pragma once
#include "core/export.h"
#include "core/formats/featureTable.h"

namespace meridor {

struct NearVertices {
    double distance = 0; ///< largest distance at which vertices are near, in map units
    int count = 0;       ///< number of vertices with another vertex nearby
};

/// Coincident vertices do not count. O(n log n) for n vertices.
/// @param tolerance  in map units; a hundred-millionth of the extent if that is more.
MERIDOR_EXPORT NearVertices countNearVertices(const Shapes &shapes, double tolerance);

} // namespace meridor
