// SPDX-License-Identifier: MIT
// Operations on polygons, which are given by handles.
#include "datainterface/GeographyAPI.h"
#include <list>
#include <memory>
#include "api/shapeCalls.h"
#include "datainterface/StatisticsAPI.h"
#include "fennimark/FMPolygon.h"
#include "geography/centroid.h"

using namespace datainterface;

namespace {

/// Calls `call` with the polygon of a handle; false when the handle is of another kind.
template <class Call> bool onPolygon(const VORN_Object &handle, Call call)
{
    const HandleObject object(handle);
    const auto *polygon = object.as<FMPolygon>();
    return polygon && call(*polygon);
}

/// The same for a simple polygon, for which overlays are defined; false for another one.
template <class Call> bool onSimplePolygon(const VORN_Object &handle, Call call)
{
    return onPolygon(handle,
                     [&](const FMPolygon &polygon) { return polygon.IsSimple() && call(polygon); });
}

QList<QVector<QPointF>> ringsOf(const FMPolygon &polygon)
{
    QList<QVector<QPointF>> rings;
    for (const QPolygonF &ring : polygon.GetVertices())
        rings.append(ring);
    return rings;
}

bool intersect(const FMPolygon &a, const FMPolygon &b, QList<QVector<QPointF>> &rings, double &area)
{
    QVector<const FMPolygon *> both{&a, &b};
    const std::unique_ptr<FMPolygon> common(FMPolygon::GetIntersection(both));
    if (!common)
        return false;
    area = common->GetArea();
    rings = ringsOf(*common);
    return true;
}

} // namespace

bool VORN_GetPolygonVertices(VORN_Object polygon, QList<QVector<QPointF>> &rings)
{
    return onPolygon(polygon, [&](const FMPolygon &shape) {
        rings = ringsOf(shape);
        return true;
    });
}

bool VORN_GetPolygonCentroid(VORN_Object polygon, QPointF &centroid)
{
    return onPolygon(polygon, [&](const FMPolygon &shape) {
        centroid = centroidOf(shape);
        return true;
    });
}

bool VORN_GetPolygonArea(VORN_Object polygon, double &area)
{
    area = 0.0;
    return onSimplePolygon(polygon, [&](const FMPolygon &shape) {
        area = shape.GetArea();
        return true;
    });
}

bool VORN_GetRandomPointsInPolygon(VORN_Object polygon, int count, QVector<QPointF> &points)
{
    return onPolygon(polygon, [&](const FMPolygon &shape) {
        const QVector<QPointF> drawn = shape.GetRandomPoints(VORN_GetUniformDeviate, count);
        if (drawn.isEmpty())
            return false;
        points = drawn;
        return true;
    });
}

bool VORN_GetCommonPolygonBorder(VORN_Object a, VORN_Object b, QList<QLineF> &border)
{
    return onPolygon(a, [&](const FMPolygon &first) {
        return onPolygon(b, [&](const FMPolygon &second) {
            border.clear();
            first.GetBorderEdges(second, &border);
            return true;
        });
    });
}

bool VORN_GetPolygonIntersection(VORN_Object a, VORN_Object b, QList<QVector<QPointF>> &rings,
                                 double &area)
{
    return onSimplePolygon(a, [&](const FMPolygon &first) {
        return onSimplePolygon(
            b, [&](const FMPolygon &second) { return intersect(first, second, rings, area); });
    });
}

bool VORN_GetPolygonRectIntersection(VORN_Object polygon, const QRectF &rect,
                                     QList<QVector<QPointF>> &rings, double &area)
{
    return onSimplePolygon(polygon, [&](const FMPolygon &shape) {
        const FMPolygon corners(QVector<QPointF>{rect.topLeft(), rect.topRight(),
                                                 rect.bottomRight(), rect.bottomLeft()});
        return intersect(shape, corners, rings, area);
    });
}

bool VORN_GetPolygonUnion(const QVector<VORN_Object> &polygons, QList<QVector<QPointF>> &rings)
{
    if (polygons.size() == 1)
        return VORN_GetPolygonVertices(polygons.first(), rings);
    std::list<HandleObject> objects;
    QVector<const FMPolygon *> shapes;
    for (const VORN_Object &handle : polygons) {
        const auto *shape = objects.emplace_back(handle).as<FMPolygon>();
        if (!shape || !shape->IsSimple())
            return false;
        shapes.append(shape);
    }
    const std::unique_ptr<FMPolygon> whole(FMPolygon::GetUnion(shapes)); // null when there is none
    if (!whole)
        return false;
    rings = ringsOf(*whole);
    return true;
}
