// SPDX-License-Identifier: MIT
#include "shape/overlay.h"
#include <cmath>
#include "base/boxTree.h"
#include "base/hilbertOrder.h"
#include "base/orientation.h"
#include "shape/relate.h"

namespace fennimark {
namespace {

class Context {
public:
    Context() : mHandle(GEOS_init_r())
    {
        GEOSContext_setNoticeMessageHandler_r(mHandle, ignore, nullptr);
        GEOSContext_setErrorMessageHandler_r(mHandle, ignore, nullptr);
    }
    ~Context() { GEOS_finish_r(mHandle); }
    Q_DISABLE_COPY(Context)
    GEOSContextHandle_t handle() const { return mHandle; }

private:
    static void ignore(const char *, void *) {}
    GEOSContextHandle_t mHandle;
};

/// Releases geometries to be passed to a GEOS constructor, which owns them from then on, also when
/// it fails.
std::vector<GEOSGeometry *> released(std::vector<Geometry> &geometries)
{
    std::vector<GEOSGeometry *> raw;
    raw.reserve(geometries.size());
    for (Geometry &geometry : geometries)
        raw.push_back(geometry.release());
    return raw;
}

Geometry collection(int type, std::vector<Geometry> &geometries)
{
    std::vector<GEOSGeometry *> raw = released(geometries);
    return Geometry(GEOSGeom_createCollection_r(geosContext(), type, raw.data(),
                                                static_cast<unsigned int>(raw.size())));
}

/// Whether a face into which the rings divide the plane is inside, decided by a point in it.
bool faceInside(const Shape &polygon, const GEOSGeometry *face)
{
    GEOSContextHandle_t context = geosContext();
    const Geometry place(GEOSPointOnSurface_r(context, face));
    double x = 0.0;
    double y = 0.0;
    return place && GEOSGeomGetX_r(context, place.get(), &x) == 1
           && GEOSGeomGetY_r(context, place.get(), &y) == 1
           && locate(polygon, QPointF(x, y)) == Place::Inside;
}

/// The vertices [first, end) of a ring without the repeated first vertex at its end.
std::pair<quint32, quint32> openRing(const Shape &polygon, quint32 part)
{
    const quint32 first = polygon.partBegin(part);
    quint32 end = polygon.partEnd(part);
    while (end - first > 1 && samePlace(polygon.vertex(end - 1), polygon.vertex(first)))
        --end;
    return {first, end};
}

/// Null for a ring of fewer than three vertices.
Geometry toRing(const Shape &polygon, quint32 part)
{
    static_assert(sizeof(QPointF) == 2 * sizeof(double), "vertices are copied as pairs of doubles");
    GEOSContextHandle_t context = geosContext();
    const auto range = openRing(polygon, part);
    const quint32 first = range.first;
    const quint32 count = range.second - first;
    if (count < 3)
        return nullptr;
    const auto *raw = reinterpret_cast<const double *>(&polygon.vertex(first));
    GEOSCoordSequence *sequence = nullptr;
    if (range.second < polygon.partEnd(part)) { // the ring as given is closed
        sequence = GEOSCoordSeq_copyFromBuffer_r(context, raw, count + 1, 0, 0);
    } else {
        // Kept between calls: the system would clear newly allocated memory for each large ring.
        thread_local std::vector<double> closed;
        closed.assign(raw, raw + 2 * std::size_t(count));
        closed.insert(closed.end(), raw, raw + 2);
        sequence = GEOSCoordSeq_copyFromBuffer_r(context, closed.data(), count + 1, 0, 0);
    }
    return Geometry(sequence ? GEOSGeom_createLinearRing_r(context, sequence) : nullptr);
}

/// Twice the area of a ring, positive when it is counter-clockwise.
double doubleArea(const QPointF *ring, std::size_t count)
{
    double sum = 0.0;
    for (std::size_t i = 1; i < count; ++i) {
        sum += (ring[i - 1].x() - ring[0].x()) * (ring[i].y() - ring[0].y())
               - (ring[i - 1].y() - ring[0].y()) * (ring[i].x() - ring[0].x());
    }
    return sum;
}

/// Appends a ring in canonical direction. False, with nothing appended, for a ring without area.
bool appendRing(ObjectBacking &out, const GEOSGeometry *ring, bool hole)
{
    GEOSContextHandle_t context = geosContext();
    const GEOSCoordSequence *sequence = GEOSGeom_getCoordSeq_r(context, ring);
    unsigned int count = 0;
    if (!sequence || !GEOSCoordSeq_getSize_r(context, sequence, &count) || count < 4)
        return false;
    const std::size_t first = out.vertices.size();
    out.vertices.resize(first + count);
    GEOSCoordSeq_copyToBuffer_r(context, sequence, reinterpret_cast<double *>(&out.vertices[first]),
                                0, 0);
    const double area = doubleArea(&out.vertices[first], count);
    if (area == 0.0) {
        out.vertices.resize(first);
        return false;
    }
    if ((area > 0.0) == hole)
        std::reverse(out.vertices.begin() + static_cast<std::ptrdiff_t>(first), out.vertices.end());
    const auto number = static_cast<quint32>(out.partSizes.size());
    out.partSizes.push_back(count);
    out.nesting.isHole.push_back(hole);
    out.nesting.shell.push_back(hole ? out.nesting.shell.back() : number);
    return true;
}

void appendPolygons(ObjectBacking &out, const GEOSGeometry *geometry)
{
    GEOSContextHandle_t context = geosContext();
    const int type = GEOSGeomTypeId_r(context, geometry);
    if (type == GEOS_POLYGON) {
        if (!appendRing(out, GEOSGetExteriorRing_r(context, geometry), false))
            return;
        for (int hole = 0; hole < GEOSGetNumInteriorRings_r(context, geometry); ++hole)
            appendRing(out, GEOSGetInteriorRingN_r(context, geometry, hole), true);
    } else if (type == GEOS_MULTIPOLYGON || type == GEOS_GEOMETRYCOLLECTION) {
        for (int i = 0; i < GEOSGetNumGeometries_r(context, geometry); ++i)
            appendPolygons(out, GEOSGetGeometryN_r(context, geometry, i));
    }
}

/// An index of the rings of a polygon by their boxes; each ring is a shape.
class RingIndex {
public:
    explicit RingIndex(const Shape &polygon)
    {
        const quint32 count = polygon.partCount();
        std::vector<RecordCenter> centers;
        for (quint32 i = 0; i < count; ++i) {
            GeometryView ring;
            ring.vertices = &polygon.vertex(polygon.partBegin(i));
            ring.vertexCount = polygon.partEnd(i) - polygon.partBegin(i);
            ring.partCount = 1;
            ring.bounds = vertexBounds(ring.vertices, ring.vertexCount);
            mRings.push_back(std::make_unique<Shape>(ring, ObjectKind::Polygon));
            mAreas.push_back(std::abs(doubleArea(ring.vertices, ring.vertexCount)));
            centers.push_back({ring.bounds.xMin / 2 + ring.bounds.xMax / 2,
                               ring.bounds.yMin / 2 + ring.bounds.yMax / 2, 0.0});
        }
        mOrder = hilbertOrder(centers, RectInT{polygon.bounds(), timeRange{}}, false);
        std::vector<LeafHull> leaves((count + kRecordsPerLeaf - 1) / kRecordsPerLeaf);
        for (quint32 i = 0; i < count; ++i) {
            LeafHull &leaf = leaves[i / kRecordsPerLeaf];
            widen(leaf.box, mRings[mOrder[i]]->bounds());
            leaf.start = leaf.end = 0.0;
        }
        mNodes = BoxTree::build(leaves);
        mTree = BoxTree(mNodes.data(), quint32(leaves.size()));
    }
    Q_DISABLE_COPY(RingIndex)

    /// The smallest ring around a ring; the ring itself when there is none. The result is arbitrary
    /// for rings that cross, but never are two rings around each other: the outer one has the
    /// larger area.
    quint32 around(quint32 ring)
    {
        mCandidates.clear();
        const Rect2D &box = mRings[ring]->bounds();
        if (mRings[ring]->isEmpty())
            return ring;
        mTree.visitLeaves(BoxWindow({box.xMin, box.xMin, box.yMin, box.yMin}), [&](quint32 leaf) {
            const quint32 end = std::min(quint32(mOrder.size()), (leaf + 1) * kRecordsPerLeaf);
            for (quint32 i = leaf * kRecordsPerLeaf; i < end; ++i) {
                const quint32 other = mOrder[i];
                if (mAreas[other] > mAreas[ring] && boxContains(mRings[other]->bounds(), box))
                    mCandidates.push_back(other);
            }
        });
        const auto isLarger = [this](quint32 a, quint32 b) { return mAreas[a] > mAreas[b]; };
        std::make_heap(mCandidates.begin(), mCandidates.end(), isLarger);
        for (auto end = mCandidates.end(); end != mCandidates.begin(); --end) {
            std::pop_heap(mCandidates.begin(), end, isLarger);
            if (ringInside(*mRings[ring], *mRings[*(end - 1)]))
                return *(end - 1);
        }
        return ring;
    }
    /// All rings in descending order of area.
    std::vector<quint32> byArea() const
    {
        std::vector<quint32> rings = mOrder;
        std::sort(rings.begin(), rings.end(), [this](quint32 a, quint32 b) {
            return mAreas[a] != mAreas[b] ? mAreas[a] > mAreas[b] : a < b;
        });
        return rings;
    }

private:
    std::vector<std::unique_ptr<Shape>> mRings;
    std::vector<double> mAreas;
    std::vector<quint32> mOrder; // along the Hilbert curve
    std::vector<BoxNode> mNodes;
    BoxTree mTree;
    std::vector<quint32> mCandidates;
};

/// In a polygon whose rings do not cross, a ring is a hole exactly when the smallest ring around it
/// is a shell. O(n log n) for n rings when each is inside few others.
Nesting computeNesting(const Shape &polygon)
{
    RingIndex index(polygon);
    const quint32 count = polygon.partCount();
    Nesting nesting{std::vector<quint8>(count, 0), std::vector<quint32>(count, 0)};
    for (const quint32 ring : index.byArea()) { // the ring around has been decided before
        const quint32 around = index.around(ring);
        nesting.isHole[ring] = around != ring && !nesting.isHole[around];
        nesting.shell[ring] = nesting.isHole[ring] ? around : ring;
    }
    return nesting;
}

/// GEOS's coverage union, which is fast but right only when shared edges have the same vertices.
/// Otherwise its result is invalid or its area is not the sum of the areas; null in that case.
Geometry coverageUnion(const GEOSGeometry *polygons)
{
    GEOSContextHandle_t context = geosContext();
    Geometry result(GEOSCoverageUnion_r(context, polygons));
    if (!result || GEOSisValid_r(context, result.get()) != 1)
        return nullptr;
    const double sum = areaOf(polygons);
    return std::abs(areaOf(result.get()) - sum) <= 1.0e-12 * sum ? std::move(result) : nullptr;
}

} // namespace

GEOSContextHandle_t geosContext()
{
    thread_local const Context context;
    return context.handle();
}

const Nesting &nestingOf(const FMPolygon &polygon)
{
    static const Nesting single{{0}, {0}};
    const Shape shape(polygon);
    if (shape.partCount() == 1)
        return single;
    // The backing exists: making the shape of several parts stored their ends in it.
    Nesting &nesting = ObjectAccess::backing(polygon)->nesting;
    if (nesting.isHole.empty())
        nesting = computeNesting(shape);
    return nesting;
}

Geometry toGeometry(const FMPolygon &polygon)
{
    const Shape shape(polygon);
    if (shape.isEmpty())
        return nullptr;
    const Nesting &nesting = nestingOf(polygon);
    const quint32 count = shape.partCount();
    std::vector<Geometry> shells(count);
    std::vector<std::vector<Geometry>> holes(count);
    for (quint32 i = 0; i < count; ++i) {
        Geometry ring = toRing(shape, i);
        if (!ring)
            return nullptr;
        if (nesting.shell[i] == i)
            shells[i] = std::move(ring);
        else
            holes[nesting.shell[i]].push_back(std::move(ring));
    }
    std::vector<Geometry> polygons;
    for (quint32 i = 0; i < count; ++i) {
        if (!shells[i])
            continue;
        std::vector<GEOSGeometry *> raw = released(holes[i]);
        polygons.emplace_back(GEOSGeom_createPolygon_r(
            geosContext(), shells[i].release(), raw.data(), static_cast<unsigned int>(raw.size())));
        if (!polygons.back())
            return nullptr;
    }
    if (polygons.size() == 1)
        return std::move(polygons.front());
    return polygons.empty() ? nullptr : collection(GEOS_MULTIPOLYGON, polygons);
}

Geometry repaired(const FMPolygon &polygon)
{
    GEOSContextHandle_t context = geosContext();
    const Shape shape(polygon);
    std::vector<Geometry> rings;
    for (quint32 part = 0; part < shape.partCount() && !shape.isEmpty(); ++part) {
        if (Geometry ring = toRing(shape, part))
            rings.push_back(std::move(ring));
    }
    const Geometry lines = rings.empty() ? nullptr : collection(GEOS_GEOMETRYCOLLECTION, rings);
    const Geometry noded(lines ? GEOSUnaryUnion_r(context, lines.get()) : nullptr);
    const GEOSGeometry *edges = noded.get();
    const Geometry faces(noded ? GEOSPolygonize_r(context, &edges, 1) : nullptr);
    std::vector<Geometry> inside;
    for (int i = 0; faces && i < GEOSGetNumGeometries_r(context, faces.get()); ++i) {
        const GEOSGeometry *face = GEOSGetGeometryN_r(context, faces.get(), i);
        if (faceInside(shape, face))
            inside.emplace_back(GEOSGeom_clone_r(context, face));
    }
    if (inside.empty())
        return nullptr;
    return inside.size() == 1 ? std::move(inside.front()) : unionOf(std::move(inside));
}

std::unique_ptr<FMPolygon> fromGeometry(const GEOSGeometry *geometry)
{
    auto out = std::make_unique<ObjectBacking>();
    if (geometry)
        appendPolygons(*out, geometry);
    return out->partSizes.empty() ? nullptr
                                  : ObjectAccess::makePolygon(std::move(out), Simplicity::Simple);
}

double areaOf(const GEOSGeometry *geometry)
{
    double area = 0.0;
    return geometry && GEOSArea_r(geosContext(), geometry, &area) ? area : 0.0;
}

bool isValidArea(const GEOSGeometry *geometry)
{
    if (!geometry || GEOSisValid_r(geosContext(), geometry) != 1)
        return false;
    const double area = areaOf(geometry);
    return std::isfinite(area) && area > 0.0;
}

Geometry unionOf(std::vector<Geometry> polygons)
{
    GEOSContextHandle_t context = geosContext();
    if (polygons.size() == 2)
        return Geometry(GEOSUnion_r(context, polygons[0].get(), polygons[1].get()));
    const Geometry all = collection(GEOS_GEOMETRYCOLLECTION, polygons);
    if (!all)
        return nullptr;
    Geometry result = coverageUnion(all.get());
    return result ? std::move(result) : Geometry(GEOSUnaryUnion_r(context, all.get()));
}

} // namespace fennimark
