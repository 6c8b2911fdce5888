// SPDX-License-Identifier: MIT
/// A point tree that is filled from plain points or from the objects of a geography.
#pragma once
#include <QPair>
#include <QPointF>
#include <QVector>
#include <fennimark/FM_PointTree.h>
#include "datainterface/export.h"

/// x' = m00 x + m01 y, y' = m10 x + m11 y. A matrix with m00 == m11 and m01 == m10 counts as the
/// identity, whatever its numbers: half a turn, for one, is not applied.
struct PT_RotationMatrix {
    double m00 = 1.0;
    double m01 = 0.0;
    double m10 = 0.0;
    double m11 = 1.0;
};

/// A point tree over the objects of a geography, or over points, turned by a matrix first.
class DATAINTERFACE_EXPORT GeoPointTree : public FM_PointTree {
public:
    using FM_PointTree::SetPoints;
    /// Points with their ids. No points: true, and the tree stays as it is.
    /// @return false when the user cancelled and for a coordinate that is not finite. The tree is
    ///         empty then, or as it was.
    bool SetPoints(const QVector<QPair<QPointF, int>> &points, const PT_RotationMatrix &rotation);
    /// The objects that exist at the time, by object index: points, centroids of polygons (the
    /// middle of the bounds where there is none), centres of all cells of a raster. A geography
    /// without objects gives an empty tree.
    /// @return false for an unknown id, for lines, and as SetPoints. Raises "Invalid point bounds"
    ///         for a point that is no place, and "Invalid object type" for an object that cannot be
    ///         read.
    bool SetGeography(int geographyId, qint64 time, const PT_RotationMatrix &rotation);
};
