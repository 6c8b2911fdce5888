// SPDX-License-Identifier: MIT
/// Squared planar distances between shapes, in squared map units.
#pragma once
#include "shape/shape.h"

namespace fennimark {

double squaredDistance(const QPointF &point, const QPointF &from, const QPointF &to);
/// 0 when they have a common point; infinity when one is empty.
double squaredDistance(const Shape &a, const Shape &b);
/// To the farthest vertex; infinity when empty.
double squaredReach(const Shape &shape, const QPointF &center);

} // namespace fennimark
