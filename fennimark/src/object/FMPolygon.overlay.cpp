// SPDX-License-Identifier: MIT
// The operations on a polygon as an area: measures as sums over rings, overlay through GEOS.
#include "fennimark/FMPolygon.h"
#include <cmath>
#include "shape/overlay.h"

using fennimark::Geometry;
using fennimark::ObjectAccess;
using fennimark::Shape;
using fennimark::Simplicity;

namespace {

/// Area and first moments of one ring about its first vertex, with the signs of a counter-clockwise
/// ring.
struct RingSums {
    double area = 0.0;
    double momentX = 0.0;
    double momentY = 0.0;

    RingSums(const Shape &polygon, quint32 part)
    {
        if (polygon.partBegin(part) == polygon.partEnd(part))
            return;
        const QPointF &origin = polygon.vertex(polygon.partBegin(part));
        polygon.visitSegments(polygon.partBegin(part), polygon.partEnd(part),
                              [&](quint32, const QPointF &from, const QPointF &to) {
                                  const double ax = from.x() - origin.x();
                                  const double ay = from.y() - origin.y();
                                  const double bx = to.x() - origin.x();
                                  const double by = to.y() - origin.y();
                                  const double cross = ax * by - ay * bx;
                                  area += cross / 2.0;
                                  momentX += (ax + bx) * cross / 6.0;
                                  momentY += (ay + by) * cross / 6.0;
                                  return true;
                              });
        if (area < 0.0) {
            area = -area;
            momentX = -momentX;
            momentY = -momentY;
        }
    }
};

bool allSimple(const QVector<const FMPolygon *> &polygons)
{
    return !polygons.isEmpty()
           && std::all_of(polygons.cbegin(), polygons.cend(),
                          [](const FMPolygon *polygon) { return polygon && polygon->IsSimple(); });
}

std::unique_ptr<FMPolygon> common(const FMPolygon &a, const FMPolygon &b)
{
    if (!fennimark::boxesMeet(a.GetBounds(), b.GetBounds()))
        return nullptr;
    const Geometry first = fennimark::toGeometry(a);
    const Geometry second = fennimark::toGeometry(b);
    if (!first || !second)
        return nullptr;
    const Geometry both(GEOSIntersection_r(fennimark::geosContext(), first.get(), second.get()));
    return fennimark::fromGeometry(both.get());
}

} // namespace

bool FMPolygon::IsSimple() const
{
    if (ObjectAccess::simplicity(*this) == Simplicity::Unknown) {
        const bool simple = fennimark::isValidArea(fennimark::toGeometry(*this).get());
        ObjectAccess::setSimplicity(*this, simple ? Simplicity::Simple : Simplicity::NotSimple);
    }
    return ObjectAccess::simplicity(*this) == Simplicity::Simple;
}

double FMPolygon::GetArea() const
{
    if (!IsSimple()) {
        const auto whole = fennimark::fromGeometry(fennimark::repaired(*this).get());
        return whole ? whole->GetArea() : 0.0;
    }
    const Shape shape(*this);
    const fennimark::Nesting &nesting = fennimark::nestingOf(*this);
    double area = 0.0;
    for (quint32 part = 0; part < shape.partCount(); ++part)
        area += (nesting.isHole[part] ? -1.0 : 1.0) * RingSums(shape, part).area;
    return area;
}

bool FMPolygon::GetCentroid(double &x, double &y) const
{
    if (!IsSimple()) {
        const auto whole = fennimark::fromGeometry(fennimark::repaired(*this).get());
        return whole && whole->GetCentroid(x, y);
    }
    const Shape shape(*this);
    const fennimark::Nesting &nesting = fennimark::nestingOf(*this);
    const QPointF &origin = shape.vertex(0);
    double area = 0.0;
    double momentX = 0.0;
    double momentY = 0.0;
    for (quint32 part = 0; part < shape.partCount(); ++part) {
        if (shape.partBegin(part) == shape.partEnd(part))
            continue;
        const RingSums sums(shape, part);
        const QPointF &first = shape.vertex(shape.partBegin(part));
        const double sign = nesting.isHole[part] ? -1.0 : 1.0;
        area += sign * sums.area;
        momentX += sign * (sums.momentX + sums.area * (first.x() - origin.x()));
        momentY += sign * (sums.momentY + sums.area * (first.y() - origin.y()));
    }
    if (!(area > 0.0))
        return false;
    x = origin.x() + momentX / area;
    y = origin.y() + momentY / area;
    return true;
}

FMPolygon *FMPolygon::GetIntersection(QVector<const FMPolygon *> &polygons)
{
    if (!allSimple(polygons))
        return nullptr;
    if (polygons.size() == 1)
        return new FMPolygon(*polygons.first());
    auto result = common(*polygons[0], *polygons[1]);
    for (int i = 2; i < polygons.size() && result; ++i)
        result = common(*result, *polygons[i]);
    return result.release();
}

FMPolygon *FMPolygon::GetUnion(QVector<const FMPolygon *> &polygons)
{
    if (!allSimple(polygons))
        return nullptr;
    if (polygons.size() == 1)
        return new FMPolygon(*polygons.first());
    std::vector<Geometry> geometries;
    for (const FMPolygon *polygon : polygons) {
        geometries.push_back(fennimark::toGeometry(*polygon));
        if (!geometries.back())
            return nullptr;
    }
    return fennimark::fromGeometry(fennimark::unionOf(std::move(geometries)).get()).release();
}

bool FMPolygon::Decompose(QVector<const FMPolygon *> &pieces) const
{
    if (IsSimple()) {
        pieces.append(new FMPolygon(*this));
        return true;
    }
    const auto whole = fennimark::fromGeometry(fennimark::repaired(*this).get());
    if (!whole)
        return false;
    const QList<QPolygonF> rings = whole->GetVertices();
    const fennimark::Nesting &nesting = fennimark::nestingOf(*whole);
    for (int first = 0, end = 1; first < rings.size(); first = end++) {
        while (end < rings.size() && nesting.isHole[static_cast<std::size_t>(end)])
            ++end;
        pieces.append(new FMPolygon(rings.mid(first, end - first), 1));
    }
    return true;
}

namespace fennimark {

double commonArea(const FMPolygon &a, const FMPolygon &b)
{
    const auto valid = [](const FMPolygon &polygon) {
        return polygon.IsSimple() ? toGeometry(polygon) : repaired(polygon);
    };
    const Geometry first = valid(a);
    const Geometry second = valid(b);
    if (!first || !second)
        return 0.0;
    const Geometry both(GEOSIntersection_r(geosContext(), first.get(), second.get()));
    return areaOf(both.get());
}

} // namespace fennimark
