// SPDX-License-Identifier: MIT
// Point in polygon by a ray from the point to the right, through the tree of run boxes. A box that
// is wholly right of the point is not entered when its segments are one connected path: the path
// crosses the ray an odd number of times exactly when its two ends are on different sides of it.
// So, apart from boxes with segments of several parts, only boxes that contain the point are
// entered:
//
//                  +-------+      right of the point: compare the two ends of the path
//      +-----+     |  /\   |
//      |  .--|-----|-/--\--|----->
//      +-----+     |/    \ |
//      contains    +-------+
//      the point: enter
#include "shape/locate.h"
#include "base/orientation.h"

namespace fennimark {
namespace {

class Ray {
public:
    Ray(const Shape &shape, const QPointF &point)
        : mShape(shape),
          mPoint(point),
          mX(point.x()),
          mY(point.y()),
          mLow{roundedDown(mX), roundedDown(mY)},
          mHigh{roundedUp(mX), roundedUp(mY)}
    {
    }

    Place place()
    {
        if (!below(mShape.root()))
            return Place::Boundary;
        return mOdd ? Place::Inside : Place::Outside;
    }

private:
    bool above(const QPointF &p) const { return p.y() > mY; }

    /// Counts the crossings of the segments below `node`; false as soon as the point is on one.
    bool below(Shape::Node node)
    {
        if (node.level == 0)
            return segments(mShape.firstSegment(node), mShape.endSegment(node));
        const RunBox *boxes = mShape.children(node);
        const quint32 first = mShape.firstChild(node);
        const quint32 count = mShape.endChild(node) - first;
        for (quint32 i = 0; i < count; ++i) {
            const RunBox &box = boxes[i];
            if ((box.yMin > mHigh[1]) | (box.yMax < mLow[1]) | (box.xMax < mLow[0]))
                continue;
            const Shape::Node child{node.level - 1, first + i};
            if (!(box.xMin > mHigh[0] && jumped(child)) && !below(child))
                return false;
        }
        return true;
    }

    /// Counts the crossings of a node right of the point by the ends of its path. False, with
    /// nothing counted, when its segments belong to several parts.
    bool jumped(Shape::Node node)
    {
        const quint32 first = mShape.firstSegment(node);
        const quint32 last = mShape.endSegment(node) - 1;
        if (mShape.partCount() > 1 && mShape.partOf(first) != mShape.partOf(last))
            return false;
        mOdd ^= above(mShape.vertex(first)) != above(mShape.segmentEnd(last));
        return true;
    }

    bool segments(quint32 first, quint32 end)
    {
        return mShape.visitSegments(
            first, end, [this](quint32, const QPointF &from, const QPointF &to) {
                const bool fromAbove = above(from);
                if (fromAbove == above(to))
                    return !(samePlace(from, mPoint)
                             || (from.y() == mY && to.y() == mY && onSegment(from, to, mPoint)));
                if (from.x() < mX && to.x() < mX)
                    return true;
                if (from.x() > mX && to.x() > mX) {
                    mOdd = !mOdd;
                    return true;
                }
                const int side = orientation(from, to, mPoint);
                // The ray meets the edge when the point is left of a rising or right of a falling
                // one.
                mOdd ^= (side > 0) != fromAbove;
                return side != 0;
            });
    }

    const Shape &mShape;
    const QPointF mPoint;
    const double mX;
    const double mY;
    const float mLow[2];
    const float mHigh[2];
    bool mOdd = false;
};

} // namespace

bool onSegment(const QPointF &a, const QPointF &b, const QPointF &p)
{
    return std::min(a.x(), b.x()) <= p.x() && p.x() <= std::max(a.x(), b.x())
           && std::min(a.y(), b.y()) <= p.y() && p.y() <= std::max(a.y(), b.y())
           && orientation(a, b, p) == 0;
}

Place locate(const Shape &shape, const QPointF &point)
{
    const Rect2D &bounds = shape.bounds();
    if (shape.isEmpty()
        || !(bounds.xMin <= point.x() && point.x() <= bounds.xMax && bounds.yMin <= point.y()
             && point.y() <= bounds.yMax))
        return Place::Outside;
    if (shape.isPolygon())
        return Ray(shape, point).place();
    const RunBox box = roundedOut({point.x(), point.x(), point.y(), point.y()});
    const bool missed = shape.visitNear([&box](const RunBox &run) { return boxesMeet(run, box); },
                                        [&point](quint32, const QPointF &from, const QPointF &to) {
                                            return !onSegment(from, to, point);
                                        });
    return missed ? Place::Outside : Place::Boundary;
}

} // namespace fennimark
