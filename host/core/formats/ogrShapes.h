// SPDX-License-Identifier: MIT
/// Turns GDAL's geometries into plain parts.
#pragma once
#include <ogr_api.h>
#include "core/formats/featureTable.h"

namespace meridor {

/// Appends the shape of the row that is being read; a null or empty geometry gives a row without
/// parts. Curves become lines, third coordinates are left out. Raises a Failure for what a
/// geography cannot hold: several kinds of shapes in one layer, points of several vertices,
/// coordinates that are no numbers.
void takeShape(FeatureTable &table, OGRGeometryH geometry);

} // namespace meridor
