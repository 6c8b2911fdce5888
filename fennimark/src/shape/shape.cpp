// SPDX-License-Identifier: MIT
#include "shape/shape.h"
#include <cmath>
#include <cstring>
#include <limits>
#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace fennimark {
namespace {

/// Larger coordinates count as not finite: boxes are floats, and determinants must not overflow.
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

/// The hull of points, computed for both axes at the same time. It is undefined when a coordinate
/// is NaN, which hasNumbersOnly() reports for points passed to addChecked.
class Hull {
public:
#ifdef __SSE2__
    explicit Hull(const QPointF &first) : mLow(load(first)), mHigh(mLow)
    {
    }
    void add(const QPointF &point)
    {
        const __m128d place = load(point);
        mLow = _mm_min_pd(mLow, place);
        mHigh = _mm_max_pd(mHigh, place);
    }
    void addChecked(const QPointF &point)
    {
        mNoNumber = _mm_or_pd(mNoNumber, _mm_cmpunord_pd(load(point), load(point)));
        add(point);
    }
    bool hasNumbersOnly() const
    {
        return _mm_movemask_pd(mNoNumber) == 0;
    }
    Rect2D rect() const
    {
        Rect2D rect;
        _mm_storeu_pd(&rect.xMin, _mm_unpacklo_pd(mLow, mHigh));
        _mm_storeu_pd(&rect.yMin, _mm_unpackhi_pd(mLow, mHigh));
        return rect;
    }
    /// The same as roundedOut(rect()), for all four sides at the same time.
    RunBox roundedOut() const
    {
        const __m128 near = _mm_movelh_ps(_mm_cvtpd_ps(mLow), _mm_cvtpd_ps(mHigh));
        const __m128d tooHigh = _mm_cmpgt_pd(_mm_cvtps_pd(near), mLow);
        const __m128d tooLow = _mm_cmplt_pd(_mm_cvtps_pd(_mm_movehl_ps(near, near)), mHigh);
        const __m128i wrong = _mm_castps_si128(
            _mm_shuffle_ps(_mm_castpd_ps(tooHigh), _mm_castpd_ps(tooLow), _MM_SHUFFLE(2, 0, 2, 0)));
        const __m128i step = _mm_and_si128(wrong, _mm_set_epi32(1, 1, -1, -1));
        const __m128i isZero = _mm_castps_si128(_mm_cmpeq_ps(near, _mm_setzero_ps()));
        const __m128i steps = _mm_add_epi32(step, _mm_and_si128(step, isZero));
        const auto ordered = [](__m128i bits) { // its own inverse
            return _mm_xor_si128(
                bits, _mm_and_si128(_mm_srai_epi32(bits, 31), _mm_set1_epi32(0x7fffffff)));
        };
        RunBox box;
        const __m128i stepped = ordered(_mm_add_epi32(ordered(_mm_castps_si128(near)), steps));
        std::memcpy(&box, &stepped, sizeof box);
        return box;
    }

private:
    static __m128d load(const QPointF &point)
    {
        return _mm_loadu_pd(reinterpret_cast<const double *>(&point));
    }

    __m128d mLow, mHigh, mNoNumber = _mm_setzero_pd();
#else
    explicit Hull(const QPointF &first) : mRect{first.x(), first.x(), first.y(), first.y()}
    {
    }
    void add(const QPointF &point)
    {
        mRect.xMin = std::min(mRect.xMin, point.x());
        mRect.yMin = std::min(mRect.yMin, point.y());
        mRect.xMax = std::max(mRect.xMax, point.x());
        mRect.yMax = std::max(mRect.yMax, point.y());
    }
    void addChecked(const QPointF &point)
    {
        mHasNumbersOnly = mHasNumbersOnly && point.x() == point.x() && point.y() == point.y();
        add(point);
    }
    bool hasNumbersOnly() const
    {
        return mHasNumbersOnly;
    }
    Rect2D rect() const
    {
        return mRect;
    }
    RunBox roundedOut() const
    {
        return fennimark::roundedOut(mRect);
    }

private:
    Rect2D mRect;
    bool mHasNumbersOnly = true;
#endif
};

/// Computes the boxes of all levels above `runs` run boxes, which are at the beginning of `boxes`,
/// and appends them.
void fillUpperBoxes(RunBox *boxes, quint32 runs)
{
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

/// The run boxes of a single part. A segment begins where the one before ends, so the box of a run
/// is the hull of its vertices and the one after them.
void fillRunBoxes(const QPointF *vertices, quint32 count, ObjectKind kind, RunBox *boxes)
{
    const quint32 runs = boxesOf(count);
    for (quint32 run = 0; run < runs; ++run) {
        const quint32 first = run << kRunShift;
        const quint32 end = std::min(first + kRunLength, count);
        Hull hull(end < count ? vertices[end]
                              : vertices[kind == ObjectKind::Polygon ? 0 : count - 1]);
        for (quint32 i = first; i < end; ++i)
            hull.add(vertices[i]);
        boxes[run] = hull.roundedOut();
    }
    fillUpperBoxes(boxes, runs);
}

void fillRunBoxes(const Shape &shape, RunBox *boxes)
{
    if (shape.partCount() == 1) {
        fillRunBoxes(&shape.vertex(0), shape.vertexCount(), shape.kind(), boxes);
        return;
    }
    const quint32 runs = boxesOf(shape.vertexCount());
    for (quint32 run = 0; run < runs; ++run) {
        const quint32 first = run << kRunShift;
        Hull hull(shape.vertex(first));
        shape.visitSegments(first, std::min(first + kRunLength, shape.vertexCount()),
                            [&hull](quint32, const QPointF &from, const QPointF &to) {
                                hull.add(from);
                                hull.add(to);
                                return true;
                            });
        boxes[run] = hull.roundedOut();
    }
    fillUpperBoxes(boxes, runs);
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
    if (view.partCount == 1) {
        fillRunBoxes(view.vertices, view.vertexCount, kind, boxes);
        return;
    }
    GeometryView bare = view;
    bare.runBoxes = boxes; // not null, so that the shape makes none; it is used for segments alone
    fillRunBoxes(Shape(bare, kind), boxes);
}

Rect2D vertexBounds(const QPointF *vertices, quint32 count, bool *finite)
{
    if (finite)
        *finite = true;
    if (count == 0)
        return {};
    Hull hull(*vertices);
    for (quint32 i = 0; i < count; ++i)
        hull.addChecked(vertices[i]);
    const Rect2D rect = hull.rect();
    if (hull.hasNumbersOnly() && std::min(rect.xMin, rect.yMin) >= -kReach
        && std::max(rect.xMax, rect.yMax) <= kReach)
        return rect;
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

namespace {

bool needsRunBoxes(const GeometryView &view)
{
    return view.vertexCount > kRunLength && !view.runBoxes;
}

/// Computes what shapes of a line or polygon need beyond its view, and stores it in the object's
/// backing: the part ends of several parts, and the run boxes that the view lacks. Both are
/// computed once and shared by all later shapes of the object. This writes to a const object
/// without a lock, so the first shapes of one object must not be made by two threads at the same
/// time.
void fillCache(const FMObject &object)
{
    const GeometryView &view = ObjectAccess::view(object);
    auto &backing = ObjectAccess::backing(object);
    if (!backing && (view.partCount > 1 || needsRunBoxes(view)))
        backing = std::make_unique<ObjectBacking>();
    if (view.partCount > 1 && backing->partEnds.empty())
        backing->partEnds = endsOf(view);
    if (needsRunBoxes(view) && backing->runBoxes.empty()) {
        std::vector<RunBox> boxes(runBoxCount(view.vertexCount));
        buildRunBoxes(view, ObjectAccess::kind(object), boxes.data());
        backing->runBoxes = std::move(boxes);
    }
}

} // namespace

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
    fillCache(object);
    const ObjectBacking *cache = ObjectAccess::backing(object).get();
    setParts(view, view.partCount > 1 ? cache->partEnds.data() : nullptr);
    setTree(needsRunBoxes(view) ? cache->runBoxes.data() : view.runBoxes);
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
