// SPDX-License-Identifier: MIT
/// A point tree that is filled from plain points or from the objects of a geography.
#pragma once
#include <QPair>
#include <QPointF>
#include <QVector>
#include <fennimark/FM_PointTree.h>
#include "datainterface/export.h"

/// x' = m00 x + m01 y, y' = m10 x + m11 y. A matrix with m00 == m11 and m01 == m10 is treated as
/// the identity whatever its elements are; half a turn, for example, is not applied.
struct PT_RotationMatrix {
    double m00 = 1.0;
    double m01 = 0.0;
    double m10 = 0.0;
    double m11 = 1.0;
};

/// A point tree over the objects of a geography, or over points, which are first rotated by a
/// matrix.
class DATAINTERFACE_EXPORT GeoPointTree : public FM_PointTree {
public:
    using FM_PointTree::SetPoints;
    /// Replaces the content by points with their ids. Without points the result is true and the
    /// tree does not change.
    /// @return false when the user cancelled and for a coordinate that is not finite. The tree is
    ///         then empty or unchanged.
    bool SetPoints(const QVector<QPair<QPointF, int>> &points, const PT_RotationMatrix &rotation);
    /// Replaces the content by the objects that exist at the time, by object index: points,
    /// centroids of polygons (the centre of the bounds where there is no centroid), centres of all
    /// cells of a raster. A geography without objects gives an empty tree.
    /// @return false for an unknown id, for lines, and as SetPoints. Raises "Invalid point bounds"
    ///         for a point object whose bounds are not a point, and "Invalid object type" for an
    ///         object that cannot be read.
    bool SetGeography(int geographyId, qint64 time, const PT_RotationMatrix &rotation);
};
