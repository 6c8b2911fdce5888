// SPDX-License-Identifier: MIT
/// The pair test of contiguity and shared borders. The results for (a, b) and (b, a) are the same,
/// except for the direction of the pieces.
#pragma once
#include <QLineF>
#include <QList>
#include "shape/geometryView.h"

namespace fennimark {

/// The contact of two boundaries: none, at a place, or along a piece longer than four times the
/// slack.
enum class Contact : quint8 { None, Place, Piece };

/// The distance in map units that rounding can move a place within these bounds: 8 ulp of their
/// largest coordinate. The slack of a pair is the larger one of its two polygons.
double roundingSlack(const Rect2D &bounds);

/// The reach of a polygon in map units. The boxes of two polygons in contact are no farther apart
/// than the larger one of their reaches.
double contactReach(const Rect2D &bounds, double tolerance);

/// The contact of two boundaries. Two places are the same within `tolerance` or the rounding slack
/// of the pair, whichever is larger. The search stops as soon as `enough` is found.
Contact contact(const GeometryView &a, const GeometryView &b, double tolerance,
                Contact enough = Contact::Piece);

/// The length of all common pieces in map units, each stretch of either boundary counted once.
/// `pieces`, when not null, receives them in the order and direction of a's vertices.
double sharedBorder(const GeometryView &a, const GeometryView &b, double tolerance,
                    QList<QLineF> *pieces = nullptr);

} // namespace fennimark
