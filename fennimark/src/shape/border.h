// SPDX-License-Identifier: MIT
/// The pair test behind contiguity and shared borders. Every answer is the same for (a, b) and
/// (b, a), up to the direction of the pieces.
#pragma once
#include <QLineF>
#include <QList>
#include "shape/geometryView.h"

namespace fennimark {

/// Contact of two boundaries: none, at a place, along a piece longer than four times the slack.
enum class Contact : quint8 { None, Place, Piece };

/// What rounding can do to a place within these bounds: 8 ulp of their largest coordinate, in map
/// units. The slack of a pair is the larger one of its two polygons.
double roundingSlack(const Rect2D &bounds);

/// How far the boxes of two polygons in contact may be apart, in map units: no more than the larger
/// one of the two polygons' reaches.
double contactReach(const Rect2D &bounds, double tolerance);

/// How two boundaries meet. Two places are the same within `tolerance` or the rounding slack of the
/// pair, whichever is more. The walk ends as soon as `enough` is known to hold.
Contact contact(const GeometryView &a, const GeometryView &b, double tolerance,
                Contact enough = Contact::Piece);

/// The length of all common pieces, each stretch of either boundary counted once, in map units.
/// `pieces`, when given, gets them in the order and direction of a's vertices.
double sharedBorder(const GeometryView &a, const GeometryView &b, double tolerance,
                    QList<QLineF> *pieces = nullptr);

} // namespace fennimark
