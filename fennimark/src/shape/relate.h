// SPDX-License-Identifier: MIT
/// Exact relations of closed sets: what two shapes have in common. No tolerance anywhere.
#pragma once
#include "shape/locate.h"

namespace fennimark {

/// Whether two segments have a common point.
bool segmentsMeet(const QPointF &a, const QPointF &b, const QPointF &c, const QPointF &d);

/// A common point.
bool meets(const Shape &a, const Shape &b);
/// No point of `inner` is outside `outer`; false when `inner` is empty.
bool covers(const Shape &outer, const Shape &inner);
/// The interiors meet and neither covers the other.
bool crosses(const Shape &a, const Shape &b);
/// Whether ring `inner` of a polygon lies inside ring `outer` alone; rings that cross give either
/// answer.
bool ringInside(const Shape &inner, const Shape &outer);

} // namespace fennimark
