// SPDX-License-Identifier: MIT
/// The interface to GEOS: validity, repair, intersection and union of polygons. GEOS geometries are
/// made for one operation and not kept: a conversion takes one to two percent of the time of the
/// overlay that follows.
#pragma once
#include <geos_c.h>
#include "fennimark/FMPolygon.h"
#include "shape/shape.h"

namespace fennimark {

/// The GEOS context of this thread. Its messages are discarded; failures are null results.
GEOSContextHandle_t geosContext();

struct GeometryDeleter {
    void operator()(GEOSGeometry *geometry) const { GEOSGeom_destroy_r(geosContext(), geometry); }
};
using Geometry = std::unique_ptr<GEOSGeometry, GeometryDeleter>;

/// The nesting of the rings, which is computed on first use and stored in the polygon's backing.
const Nesting &nestingOf(const FMPolygon &polygon);

/// The rings as a GEOS polygon or multipolygon, which is valid exactly when the polygon is simple.
/// Null when a ring has fewer than three vertices.
Geometry toGeometry(const FMPolygon &polygon);
/// The even-odd set of any rings as a valid geometry; null when it has no area. The rings are
/// noded, and the faces into which they divide the plane are united where they are inside. (GEOS's
/// own repair drops edges that two rings share.)
Geometry repaired(const FMPolygon &polygon);

/// The polygons of a result in canonical form: closed rings, counter-clockwise shells, each
/// followed by its clockwise holes. Points and lines are dropped; null when no area is left.
std::unique_ptr<FMPolygon> fromGeometry(const GEOSGeometry *geometry);

/// Whether a geometry is valid and has a finite area above 0.
bool isValidArea(const GEOSGeometry *geometry);
/// In squared map units; 0 for null.
double areaOf(const GEOSGeometry *geometry);
/// The area of the intersection of two polygons, simple or not, in squared map units.
double commonArea(const FMPolygon &a, const FMPolygon &b);
/// The union of two or more valid geometries.
Geometry unionOf(std::vector<Geometry> polygons);

} // namespace fennimark
