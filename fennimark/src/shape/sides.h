// SPDX-License-Identifier: MIT
/// What lies on either side along a segment, exactly, whatever touches or overlaps it.
//
// The segment from p to q is cut where it meets edges of a shape:
//
//           left          \        left            |
//     p -----------------cut------------------cut------------------ q
//           right            \     right           |
//
// Each open piece between cuts has three exact properties: whether the places next to it on its left
// and on its right are inside the shape, and whether an edge runs along it. They follow from
// parities. A path just left of the segment's line, from far behind p, changes between outside and
// inside at every edge that has one end strictly left of the line and the other end not. A path just
// right of the line does so at every edge with one end strictly right of it. A cut is the ratio of
// two determinants. Cuts are compared by intervals and, where these overlap, by exact expansions.
#pragma once
#include "shape/shape.h"

namespace fennimark {

struct Sides {
    bool left = false;
    bool right = false;
    bool on = false;

    bool inside() const { return left && right && !on; } ///< in the open interior
    bool covered() const { return left || right || on; } ///< in the closed set
};

/// The pieces of the segments of `path`, seen from two shapes (one of which may be path's own):
/// visit(first, second) until it returns false; the result is false then. A part whose vertices are
/// all at one place is one piece.
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
