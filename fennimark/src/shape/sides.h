// SPDX-License-Identifier: MIT
/// The exact sides of segments: whether a shape is on the left and on the right of each piece of a
/// segment, also where edges touch or overlap the segment.
///
/// The segment from p to q is cut where it meets edges of a shape:
///
///           left          \        left            |
///     p -----------------cut------------------cut------------------ q
///           right            \     right           |
///
/// Each open piece between cuts has three exact properties: whether the points next to it on its
/// left and on its right are inside the shape, and whether an edge of the shape runs along it.
///
/// The sides follow from parities. A path that begins far before p, outside the shape, and runs
/// just left of the segment's line changes between outside and inside at every edge with one end
/// strictly left of the line and the other end not. A path just right of the line does so at every
/// edge with one end strictly right of it and the other end not. Edges that meet the line at p or
/// before it determine the state of the first piece, edges between p and q are events at their cut,
/// and edges at q or after it have no effect.
///
/// The position of a cut is a fraction of the segment: the ratio of two determinants where an edge
/// crosses the line, of two differences where a vertex is on it. Cuts are compared by intervals
/// from rounded arithmetic and, where these overlap, by exact expansions.
#pragma once
#include "shape/shape.h"

namespace fennimark {

/// The properties of one piece with respect to one shape.
struct Sides {
    bool left = false;
    bool right = false;
    bool on = false;

    bool inside() const { return left && right && !on; } ///< in the open interior
    bool covered() const { return left || right || on; } ///< in the closed set
};

/// The pieces of the segments of `path`, with their sides with respect to two shapes, one of which
/// may be `path` itself. visitPieces calls visit(first, second) for each piece; it stops and
/// returns false when `visit` returns false. A part whose vertices are all equal is one piece.
class SideWalk {
public:
    SideWalk(const Shape &path, const Shape &first, const Shape &second)
        : mPath(path), mFirst(first), mSecond(second)
    {
    }

    template <class Visit> bool visitPieces(Visit visit)
    {
        return mPath.visitSegments(0, mPath.vertexCount(),
                                   [&](quint32 index, const QPointF &from, const QPointF &to) {
                                       cut(index, from, to);
                                       for (const auto &piece : mPieces) {
                                           if (!visit(piece.first, piece.second))
                                               return false;
                                       }
                                       return true;
                                   });
    }

private:
    void cut(quint32 index, const QPointF &from, const QPointF &to);

    const Shape &mPath;
    const Shape &mFirst;
    const Shape &mSecond;
    std::vector<std::pair<Sides, Sides>> mPieces;
};

} // namespace fennimark
