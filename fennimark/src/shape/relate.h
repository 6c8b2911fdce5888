// SPDX-License-Identifier: MIT
/// Exact relations of two shapes as closed sets, without any tolerance.
#pragma once
#include "shape/locate.h"

namespace fennimark {

/// Whether two segments have a common point.
bool segmentsMeet(const QPointF &a, const QPointF &b, const QPointF &c, const QPointF &d);

/// Whether two shapes have a common point.
bool meets(const Shape &a, const Shape &b);
/// Whether no point of `inner` is outside `outer`; false when one of them is empty.
bool covers(const Shape &outer, const Shape &inner);
/// Whether the interiors meet and neither shape covers the other.
bool crosses(const Shape &a, const Shape &b);
/// Whether the ring `inner` is inside the ring `outer`. The result is arbitrary for rings that
/// cross.
bool ringInside(const Shape &inner, const Shape &outer);

} // namespace fennimark
