// SPDX-License-Identifier: MIT
/// Where a place lies with respect to a shape, exactly.
#pragma once
#include "shape/shape.h"

namespace fennimark {

enum class Place : quint8 { Outside, Boundary, Inside };

/// Of a place in a shape. All of a line and a point counts as boundary.
Place locate(const Shape &shape, const QPointF &point);

/// Whether the segment from a to b holds p.
bool onSegment(const QPointF &a, const QPointF &b, const QPointF &p);

} // namespace fennimark
