// SPDX-License-Identifier: MIT
/// The exact position of a point relative to a shape.
#pragma once
#include "shape/shape.h"

namespace fennimark {

enum class Place : quint8 { Outside, Boundary, Inside };

/// The position of a point. All points of a line or point object count as boundary.
Place locate(const Shape &shape, const QPointF &point);

/// Whether p is on the segment from a to b.
bool onSegment(const QPointF &a, const QPointF &b, const QPointF &p);

} // namespace fennimark
