// SPDX-License-Identifier: MIT
/// The geometries of many objects at one time as flat arrays, for drawing and other passes over all
/// vertices.
#pragma once
#include <QPointF>
#include <vector>
#include "fennimark/geometryTypes.h"

/// Shapes 0 to n - 1. Shape i of lines or polygons has the parts firstPart[i] to firstPart[i + 1] -
/// 1, and part p has the vertices partStart[p] to partStart[p + 1] - 1, so both lists have one
/// entry more than there are shapes or parts. A part is a line or a ring; a ring may repeat its
/// first vertex at its end. For points both lists and `boxes` are empty, and vertex i is the place
/// of shape i. All vertices are finite.
struct FMShapes {
    std::vector<int> ids;      ///< what each shape belongs to
    std::vector<Rect2D> boxes; ///< the bounds of each shape
    std::vector<QPointF> vertices;
    std::vector<quint32> partStart;
    std::vector<quint32> firstPart;
};
