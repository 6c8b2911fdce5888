// SPDX-License-Identifier: MIT
#include "shape/relate.h"
#include "base/orientation.h"
#include "shape/sides.h"

namespace fennimark {
namespace {

/// Calls visit(i, a, b, j, c, d) for the pairs of segments that meet: segment i of x from a to b
/// and segment j of y from c to d. Stops and returns false when `visit` returns false.
template <class Visit> bool visitMeetings(const Shape &x, const Shape &y, Visit visit)
{
    const auto enter = [](const RunBox &a, const RunBox &b) { return boxesMeet(a, b); };
    return visitRunPairs(
        x, y, enter, [&](quint32 firstX, quint32 endX, quint32 firstY, quint32 endY) {
            return x.visitSegments(
                firstX, endX, [&](quint32 i, const QPointF &a, const QPointF &b) {
                    return y.visitSegments(
                        firstY, endY, [&](quint32 j, const QPointF &c, const QPointF &d) {
                            return !segmentsMeet(a, b, c, d) || visit(i, a, b, j, c, d);
                        });
                });
        });
}

/// Whether a part of `inner` is in the area of `outer`. No segments of the two may meet, so one
/// vertex decides for its part.
bool holdsPart(const Shape &outer, const Shape &inner)
{
    if (!outer.isPolygon())
        return false;
    for (quint32 part = 0; part < inner.partCount(); ++part) {
        const quint32 first = inner.partBegin(part);
        if (first != inner.partEnd(part) && locate(outer, inner.vertex(first)) != Place::Outside)
            return true;
    }
    return false;
}

bool allAt(const Shape &shape, const QPointF &place)
{
    return shape.visitSegments(
        0, shape.vertexCount(),
        [&place](quint32, const QPointF &from, const QPointF &) { return samePlace(from, place); });
}

/// Whether a side of a piece is inside `first` and outside `second`.
bool differs(const Sides &first, const Sides &second)
{
    return (first.left && !second.left) || (first.right && !second.right);
}

bool shares(const Sides &first, const Sides &second)
{
    return (first.left && second.left) || (first.right && second.right);
}

/// Whether `place`, which is on segment `index`, is an end of the part of that segment. A closed
/// part has no ends.
bool isEnd(const Shape &line, quint32 index, const QPointF &place)
{
    const quint32 part = line.partOf(index);
    const QPointF &first = line.vertex(line.partBegin(part));
    const QPointF &last = line.vertex(line.partEnd(part) - 1);
    return !samePlace(first, last) && (samePlace(place, first) || samePlace(place, last));
}

bool lineInteriorsMeet(const Shape &x, const Shape &y)
{
    const bool touchAtMost =
        visitMeetings(x, y,
                      [&](quint32 i, const QPointF &a, const QPointF &b, quint32 j,
                          const QPointF &c, const QPointF &d) {
                          if (orientation(a, b, c) * orientation(a, b, d) < 0
                              && orientation(c, d, a) * orientation(c, d, b) < 0)
                              return false;
                          for (const QPointF *place : {&a, &b, &c, &d}) {
                              if (onSegment(a, b, *place) && onSegment(c, d, *place)
                                  && !isEnd(x, i, *place) && !isEnd(y, j, *place))
                                  return false;
                          }
                          return true;
                      });
    return !touchAtMost || !SideWalk(x, x, y).visitPieces([](const Sides &, const Sides &other) {
        return !other.on;
    });
}

bool interiorsMeet(const Shape &a, const Shape &b)
{
    if (a.isPolygon() && b.isPolygon()) {
        const auto apart = [](const Sides &first, const Sides &second) {
            return !shares(first, second);
        };
        return !SideWalk(a, a, b).visitPieces(apart) || !SideWalk(b, a, b).visitPieces(apart);
    }
    if (!a.isPolygon() && !b.isPolygon())
        return lineInteriorsMeet(a, b);
    const Shape &line = a.isPolygon() ? b : a;
    const Shape &area = a.isPolygon() ? a : b;
    return !SideWalk(line, area, line).visitPieces([](const Sides &of, const Sides &) {
        return !of.inside();
    });
}

} // namespace

bool segmentsMeet(const QPointF &a, const QPointF &b, const QPointF &c, const QPointF &d)
{
    if (std::max(a.x(), b.x()) < std::min(c.x(), d.x())
        || std::max(c.x(), d.x()) < std::min(a.x(), b.x())
        || std::max(a.y(), b.y()) < std::min(c.y(), d.y())
        || std::max(c.y(), d.y()) < std::min(a.y(), b.y()))
        return false;
    return orientation(a, b, c) * orientation(a, b, d) <= 0
           && orientation(c, d, a) * orientation(c, d, b) <= 0;
}

bool meets(const Shape &a, const Shape &b)
{
    if (a.isEmpty() || b.isEmpty() || !boxesMeet(a.bounds(), b.bounds()))
        return false;
    if (a.kind() == ObjectKind::Point || b.kind() == ObjectKind::Point) {
        const bool first = a.kind() == ObjectKind::Point;
        return locate(first ? b : a, (first ? a : b).vertex(0)) != Place::Outside;
    }
    const auto never = [](quint32, const QPointF &, const QPointF &, quint32, const QPointF &,
                          const QPointF &) { return false; };
    return !visitMeetings(a, b, never) || holdsPart(a, b) || holdsPart(b, a);
}

bool covers(const Shape &outer, const Shape &inner)
{
    if (outer.isEmpty() || inner.isEmpty() || !boxContains(outer.bounds(), inner.bounds()))
        return false;
    if (inner.kind() == ObjectKind::Point)
        return locate(outer, inner.vertex(0)) != Place::Outside;
    if (outer.kind() == ObjectKind::Point)
        return allAt(inner, outer.vertex(0));
    const bool boundaryInside =
        SideWalk(inner, outer, inner).visitPieces([](const Sides &of, const Sides &own) {
            return of.covered() && !differs(own, of);
        });
    if (!boundaryInside || !inner.isPolygon() || !outer.isPolygon())
        return boundaryInside;
    return SideWalk(outer, outer, inner).visitPieces([](const Sides &own, const Sides &of) {
        return !differs(of, own);
    });
}

bool crosses(const Shape &a, const Shape &b)
{
    if (a.isEmpty() || b.isEmpty() || a.kind() == ObjectKind::Point || b.kind() == ObjectKind::Point
        || !boxesMeet(a.bounds(), b.bounds()))
        return false;
    return interiorsMeet(a, b) && !covers(a, b) && !covers(b, a);
}

bool ringInside(const Shape &inner, const Shape &outer)
{
    if (!boxContains(outer.bounds(), inner.bounds()))
        return false;
    for (quint32 i = 0; i < inner.vertexCount(); ++i) {
        const Place place = locate(outer, inner.vertex(i));
        if (place != Place::Boundary)
            return place == Place::Inside;
    }
    bool inside = false; // every vertex is on the boundary: a piece between vertices decides
    SideWalk(inner, outer, inner).visitPieces([&inside](const Sides &of, const Sides &) {
        inside = of.inside();
        return of.on;
    });
    return inside;
}

} // namespace fennimark
