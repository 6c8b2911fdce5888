// SPDX-License-Identifier: MIT
/// Converts GDAL's geometries to ShapeParts and back.
#pragma once
#include <memory>
#include <ogr_api.h>
#include <ogr_geometry.h>
#include "core/formats/featureTable.h"

namespace meridor {

/// Appends the shape of the row that is being read; a null or empty geometry gives a shape without
/// parts. Curves are converted to lines, third coordinates are dropped. Raises a Failure for what a
/// geography cannot hold: several kinds of shapes in one layer, points of several vertices,
/// coordinates that are not finite.
void takeShape(FeatureTable &table, OGRGeometryH geometry);

/// The geometry of a shape: shells with their holes from rings in any order; null without parts.
/// @param type  the type of the layer: a collection makes a collection of a single part.
std::unique_ptr<OGRGeometry> geometryOf(const ShapeParts &parts, ShapeKind kind,
                                        OGRwkbGeometryType type);

} // namespace meridor
