// SPDX-License-Identifier: MIT
#include "shape.h"
#include <cmath>
#include <limits>

namespace fennimark {
namespace {

/// Coordinates beyond it count as not finite: boxes are floats, and determinants must not overflow.
constexpr double kReach = 1.0e37;

quint32 boxesOf(quint32 count)
{
    return ((count - 1) >> kRunShift) + 1;
}

RunBox emptyBox()
{
    constexpr float kFar = std::numeric_limits<float>::infinity();
    return {kFar, kFar, -kFar, -kFar};
}

void widen(RunBox &box, const RunBox &other)
{
    box.xMin = std::min(box.xMin, other.xMin);
    box.yMin = std::min(box.yMin, other.yMin);
    box.xMax = std::max(box.xMax, other.xMax);
    box.yMax = std::max(box.yMax, other.yMax);
}

void widen(Rect2D &rect, const QPointF &point)
{
    rect.xMin = std::min(rect.xMin, point.x());
    rect.yMin = std::min(rect.yMin, point.y());
    rect.xMax = std::max(rect.xMax, point.x());
    rect.yMax = std::max(rect.yMax, point.y());
}

void fillRunBoxes(const Shape &shape, RunBox *boxes)
{
    const quint32 runs = boxesOf(shape.vertexCount());
    for (quint32 run = 0; run < runs; ++run) {
        const quint32 first = run << kRunShift;
        const quint32 end = std::min(first + kRunLength, shape.vertexCount());
        Rect2D hull{shape.vertex(first).x(), shape.vertex(first).x(), shape.vertex(first).y(),
                    shape.vertex(first).y()};
        // One segment begins where another ends, as long as no part begins between them.
        const bool onePart = shape.partCount() == 1;
        for (quint32 i = first + 1; onePart && i < end; ++i)
            widen(hull, shape.vertex(i));
        shape.visitSegments(onePart ? end - 1 : first, end, [&hull](quint32, const QPointF &from, const QPointF &to) {
            widen(hull, from);
            widen(hull, to);
            return true;
        });
        boxes[run] = roundedOut(hull);
    }
    const RunBox *below = boxes;
    for (quint32 count = runs; count > 1; count = boxesOf(count)) {
        RunBox *above = boxes + (below - boxes) + count;
        for (quint32 i = 0; i < boxesOf(count); ++i) {
            above[i] = emptyBox();
            for (quint32 child = i << kRunShift; child < std::min((i + 1) << kRunShift, count);
                 ++child)
                widen(above[i], below[child]);
        }
        below = above;
    }
}

std::vector<quint32> endsOf(const GeometryView &view)
{
    std::vector<quint32> ends(view.partCount);
    quint32 end = 0;
    for (quint32 part = 0; part < view.partCount; ++part)
        ends[part] = end += view.partSizes[part];
    return ends;
}

} // namespace

RunBox roundedOut(const Rect2D &rect)
{
    return {roundedDown(rect.xMin), roundedDown(rect.yMin), roundedUp(rect.xMax),
            roundedUp(rect.yMax)};
}

quint32 runBoxCount(quint32 vertexCount)
{
    if (vertexCount <= kRunLength)
        return 0;
    quint32 total = 0;
    for (quint32 count = vertexCount; count > 1;) {
        count = boxesOf(count);
        total += count;
    }
    return total;
}

void buildRunBoxes(const GeometryView &view, ObjectKind kind, RunBox *boxes)
{
    if (view.vertexCount <= kRunLength)
        return;
    GeometryView bare = view;
    bare.runBoxes = boxes; // only asked for the segments: nothing reads a box before it is written
    fillRunBoxes(Shape(bare, kind), boxes);
}

Rect2D vertexBounds(const QPointF *vertices, quint32 count, bool *finite)
{
    if (finite)
        *finite = true;
    if (count == 0)
        return {};
    Rect2D hull{vertices->x(), vertices->x(), vertices->y(), vertices->y()};
    double probe = 0.0; // turns NaN with the first coordinate that is not finite
    for (quint32 i = 0; i < count; ++i) {
        widen(hull, vertices[i]);
        probe += vertices[i].x() * 0.0 + vertices[i].y() * 0.0;
    }
    if (probe == 0.0 && std::min(hull.xMin, hull.yMin) >= -kReach
        && std::max(hull.xMax, hull.yMax) <= kReach)
        return hull;
    if (finite)
        *finite = false;
    return {};
}

void Shape::setTree(const RunBox *boxes)
{
    mRootBox = roundedOut(mBounds);
    if (mCount <= kRunLength)
        return;
    mRunBoxes = boxes;
    quint32 start = 0;
    for (quint32 count = boxesOf(mCount);; count = boxesOf(count)) {
        mLevelStarts[mLevels] = start;
        if (count == 1)
            return;
        start += count;
        ++mLevels;
    }
}

void Shape::setParts(const GeometryView &view, const quint32 *ends)
{
    mVertices = view.vertices;
    mCount = view.vertexCount;
    mBounds = view.bounds;
    mPartCount = std::max(view.partCount, 1U);
    mPartEnds = ends;
}

Shape::Shape(const FMObject &object) : mKind(ObjectAccess::kind(object))
{
    if (mKind == ObjectKind::Point) {
        const Rect2D place = object.GetBounds();
        mLocal[0] = QPointF(place.xMin, place.yMin);
        setLocal(std::isfinite(place.xMin) && std::isfinite(place.yMin) ? 1 : 0, mKind);
        return;
    }
    const GeometryView &view = ObjectAccess::view(object);
    if (view.vertexCount == 0)
        return;
    const bool needsBoxes = view.vertexCount > kRunLength && !view.runBoxes;
    auto &backing = ObjectAccess::backing(object);
    if (!backing && (view.partCount > 1 || needsBoxes))
        backing = std::make_unique<ObjectBacking>();
    if (view.partCount > 1 && backing->partEnds.empty())
        backing->partEnds = endsOf(view);
    setParts(view, view.partCount > 1 ? backing->partEnds.data() : nullptr);
    if (needsBoxes && backing->runBoxes.empty()) {
        std::vector<RunBox> boxes(runBoxCount(mCount));
        fillRunBoxes(*this, boxes.data());
        backing->runBoxes = std::move(boxes);
    }
    setTree(needsBoxes ? backing->runBoxes.data() : view.runBoxes);
}

Shape::Shape(const GeometryView &view, ObjectKind kind) : mKind(kind)
{
    if (view.vertexCount == 0)
        return;
    if (view.partCount > 1)
        mOwnEnds = endsOf(view);
    setParts(view, mOwnEnds.data());
    if (mCount > kRunLength && !view.runBoxes) {
        mOwnBoxes.resize(runBoxCount(mCount));
        fillRunBoxes(*this, mOwnBoxes.data());
    }
    setTree(view.runBoxes ? view.runBoxes : mOwnBoxes.data());
}

Shape::Shape(const Rect2D &rect)
{
    mLocal[0] = QPointF(rect.xMin, rect.yMin);
    mLocal[1] = QPointF(rect.xMax, rect.yMin);
    mLocal[2] = QPointF(rect.xMax, rect.yMax);
    mLocal[3] = QPointF(rect.xMin, rect.yMax);
    setLocal(4, ObjectKind::Polygon);
}

Shape::Shape(const QPointF &point)
{
    mLocal[0] = point;
    setLocal(1, ObjectKind::Point);
}

Shape::Shape(const QPointF &from, const QPointF &to)
{
    mLocal[0] = from;
    mLocal[1] = to;
    setLocal(2, ObjectKind::Line);
}

void Shape::setLocal(quint32 count, ObjectKind kind)
{
    bool finite = true;
    mBounds = vertexBounds(mLocal, count, &finite);
    mVertices = mLocal;
    mCount = finite ? count : 0;
    mKind = kind;
    mRootBox = roundedOut(mBounds);
}

quint32 Shape::partOf(quint32 vertex) const
{
    if (mPartCount == 1)
        return 0;
    return static_cast<quint32>(std::upper_bound(mPartEnds, mPartEnds + mPartCount, vertex)
                                - mPartEnds);
}

} // namespace fennimark
