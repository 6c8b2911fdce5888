// SPDX-License-Identifier: MIT
/// Squared planar distances between shapes, in squared map units.
#pragma once
#include "shape/shape.h"

namespace fennimark {

/// From a point to a segment.
double squaredDistance(const QPointF &point, const QPointF &from, const QPointF &to);
/// 0 when the shapes have a common point; infinity when one is empty.
double squaredDistance(const Shape &a, const Shape &b);
/// From `center` to the farthest vertex; infinity when the shape is empty.
double squaredReach(const Shape &shape, const QPointF &center);

} // namespace fennimark
