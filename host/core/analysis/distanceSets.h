// SPDX-License-Identifier: MIT
/// Neighbours by distance that the library does not calculate: between the centroids of polygons, and
/// along geodesics.
#pragma once
#include <QPointF>
#include <QVector>
#include "core/analysis/weightSets.h"
#include "core/export.h"

namespace meridor {

/// Whether the coordinates of a geography are longitudes and latitudes in degrees, by its projection.
MERIDOR_EXPORT bool isInDegrees(int geography);
/// Whether a set of this plan is made by createDistanceSet.
bool needsDistanceLists(int geographyKind, const WeightSetPlan &plan);
/// Creates a set with lists for every span of time in which no shape changes. Raises a Failure, also
/// on a cancel; no set is added then. @return the id of the set.
int createDistanceSet(int geography, const WeightSetPlan &plan);

struct NearObject {
    int object = -1;
    double distance = 0; ///< in kilometres
};
/// The objects nearest to a place (longitude, latitude) along geodesics of the WGS 84 ellipsoid,
/// between points or the centroids of polygons, ascending. Raises a Failure if the map is projected
/// or a coordinate is no longitude or latitude.
MERIDOR_EXPORT QVector<NearObject> nearestOnEarth(int geography, const QPointF &place, qint64 time,
                                                  int count);

} // namespace meridor
