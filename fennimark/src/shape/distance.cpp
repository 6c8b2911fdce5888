// SPDX-License-Identifier: MIT
// Common points are found first, by exact tests. For shapes without a common point the distance is
// the least one between the two boundaries. It is found by descending both trees of run boxes at
// the same time, nearer boxes first, into pairs of boxes whose distance is below the least so far.
#include "shape/distance.h"
#include <limits>
#include "shape/relate.h"

namespace fennimark {
namespace {

constexpr double kFar = std::numeric_limits<double>::infinity();

double squared(const QPointF &v)
{
    return v.x() * v.x() + v.y() * v.y();
}

double boxDistance(const RunBox &a, const RunBox &b)
{
    const double dx =
        std::max({0.0, double(a.xMin) - double(b.xMax), double(b.xMin) - double(a.xMax)});
    const double dy =
        std::max({0.0, double(a.yMin) - double(b.yMax), double(b.yMin) - double(a.yMax)});
    return dx * dx + dy * dy;
}

/// The squared distance of segments that do not meet, which is that of one of the four ends.
double segmentDistance(const QPointF &a, const QPointF &b, const QPointF &c, const QPointF &d)
{
    return std::min({squaredDistance(a, c, d), squaredDistance(b, c, d), squaredDistance(c, a, b),
                     squaredDistance(d, a, b)});
}

class Descent {
public:
    Descent(const Shape &a, const Shape &b) : mA(a), mB(b) {}

    double least()
    {
        below(mA.root(), mB.root());
        return mBest;
    }

private:
    struct Step {
        double distance;
        quint32 child;
    };

    void below(Shape::Node a, Shape::Node b)
    {
        if (a.level == 0 && b.level == 0) {
            segments(a, b);
            return;
        }
        const bool descendA = a.level >= b.level;
        const Shape &split = descendA ? mA : mB;
        const Shape::Node node = descendA ? a : b;
        const RunBox other = descendA ? mB.box(b) : mA.box(a);
        const RunBox *boxes = split.children(node);
        const quint32 first = split.firstChild(node);
        const quint32 count = split.endChild(node) - first;
        Step steps[kRunLength];
        for (quint32 i = 0; i < count; ++i) { // nearest first
            const Step step{boxDistance(boxes[i], other), first + i};
            quint32 at = i;
            for (; at > 0 && step.distance < steps[at - 1].distance; --at)
                steps[at] = steps[at - 1];
            steps[at] = step;
        }
        for (quint32 i = 0; i < count && steps[i].distance < mBest; ++i) {
            const Shape::Node child{node.level - 1, steps[i].child};
            descendA ? below(child, b) : below(a, child);
        }
    }

    void segments(Shape::Node a, Shape::Node b)
    {
        mA.visitSegments(mA.firstSegment(a), mA.endSegment(a),
                         [&](quint32, const QPointF &from, const QPointF &to) {
                             return mB.visitSegments(
                                 mB.firstSegment(b), mB.endSegment(b),
                                 [&](quint32, const QPointF &otherFrom, const QPointF &otherTo) {
                                     mBest = std::min(
                                         mBest, segmentDistance(from, to, otherFrom, otherTo));
                                     return true;
                                 });
                         });
    }

    const Shape &mA;
    const Shape &mB;
    double mBest = kFar;
};

} // namespace

double squaredDistance(const QPointF &point, const QPointF &from, const QPointF &to)
{
    const QPointF edge(to.x() - from.x(), to.y() - from.y());
    const QPointF offset(point.x() - from.x(), point.y() - from.y());
    const double length = squared(edge);
    const double dot = edge.x() * offset.x() + edge.y() * offset.y();
    if (!(dot > 0.0))
        return squared(offset);
    if (dot >= length)
        return squared(QPointF(point.x() - to.x(), point.y() - to.y()));
    const double cross = edge.x() * offset.y() - edge.y() * offset.x();
    return cross * cross / length;
}

double squaredDistance(const Shape &a, const Shape &b)
{
    if (a.isEmpty() || b.isEmpty())
        return kFar;
    return meets(a, b) ? 0.0 : Descent(a, b).least();
}

double squaredReach(const Shape &shape, const QPointF &center)
{
    double reach = shape.isEmpty() ? kFar : 0.0;
    for (quint32 i = 0; i < shape.vertexCount(); ++i)
        reach = std::max(reach, squared(QPointF(shape.vertex(i).x() - center.x(),
                                                shape.vertex(i).y() - center.y())));
    return reach;
}

} // namespace fennimark
