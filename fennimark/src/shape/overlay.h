// SPDX-License-Identifier: MIT
/// The road to GEOS and back: validity, repair, intersection and union of polygons. Geometries are
/// made for one operation and not kept: a conversion costs one or two hundredths of the overlay
/// that follows.
#pragma once
#include <geos_c.h>
#include "fennimark/FMPolygon.h"
#include "shape/shape.h"

namespace fennimark {

/// GEOS's context of this thread; its messages go nowhere, since failures are null results.
GEOSContextHandle_t geosContext();

struct GeometryDeleter {
    void operator()(GEOSGeometry *geometry) const { GEOSGeom_destroy_r(geosContext(), geometry); }
};
using Geometry = std::unique_ptr<GEOSGeometry, GeometryDeleter>;

/// Made on first use and kept with the polygon.
const Nesting &nestingOf(const FMPolygon &polygon);

/// The rings as a multipolygon, valid exactly when the polygon is simple; null when a ring has
/// fewer than three vertices.
Geometry toGeometry(const FMPolygon &polygon);
/// The even-odd set of any rings as a valid geometry of polygons, null when it has no area: the
/// faces that the noded rings cut out of the plane, those inside united. (GEOS's own repair drops
/// edges that two rings share.)
Geometry repaired(const FMPolygon &polygon);

/// The polygons of a result in canonical order: closed rings, shells counter-clockwise, each
/// followed by its holes clockwise. Points and lines in it are dropped; null when no area is left.
std::unique_ptr<FMPolygon> fromGeometry(const GEOSGeometry *geometry);

bool isValidArea(const GEOSGeometry *geometry);
double areaOf(const GEOSGeometry *geometry);
/// Of the intersection of two polygons, simple or not.
double commonArea(const FMPolygon &a, const FMPolygon &b);
/// Valid inputs, two or more.
Geometry unionOf(std::vector<Geometry> polygons);

} // namespace fennimark
