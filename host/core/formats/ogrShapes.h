// SPDX-License-Identifier: MIT
/// Converts GDAL's geometries to ShapeParts.
#pragma once
#include <ogr_api.h>
#include "core/formats/featureTable.h"

namespace meridor {

/// Appends the shape of the row that is being read; a null or empty geometry gives a shape without
/// parts. Curves are converted to lines, third coordinates are dropped. Raises a Failure for what a
/// geography cannot hold: several kinds of shapes in one layer, points of several vertices,
/// coordinates that are not finite.
void takeShape(FeatureTable &table, OGRGeometryH geometry);

} // namespace meridor
