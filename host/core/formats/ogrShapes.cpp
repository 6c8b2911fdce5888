// SPDX-License-Identifier: MIT
#include "core/formats/ogrShapes.h"
#include <algorithm>
#include <cmath>
#include <limits>
#include "core/project/failure.h"

namespace meridor {
namespace {

struct FreeGeometry {
    void operator()(void *geometry) const
    {
        OGR_G_DestroyGeometry(static_cast<OGRGeometryH>(geometry));
    }
};

ShapeKind kindOf(OGRGeometryH geometry);

/// The kind that all members have which are not empty; None if they differ.
ShapeKind kindOfMembers(OGRGeometryH collection)
{
    ShapeKind kind = ShapeKind::None;
    for (int i = 0; i < OGR_G_GetGeometryCount(collection); ++i) {
        OGRGeometryH member = OGR_G_GetGeometryRef(collection, i);
        if (OGR_G_IsEmpty(member))
            continue;
        const ShapeKind own = kindOf(member);
        if (own == ShapeKind::None || (kind != ShapeKind::None && own != kind))
            return ShapeKind::None;
        kind = own;
    }
    return kind;
}

ShapeKind kindOf(OGRGeometryH geometry)
{
    switch (wkbFlatten(OGR_G_GetGeometryType(geometry))) {
    case wkbGeometryCollection:
        return kindOfMembers(geometry);
    case wkbPoint:
    case wkbMultiPoint:
        return ShapeKind::Points;
    case wkbLineString:
    case wkbMultiLineString:
        return ShapeKind::Lines;
    case wkbPolygon:
    case wkbMultiPolygon:
    case wkbTriangle:
        return ShapeKind::Polygons;
    default:
        return ShapeKind::None;
    }
}

const char *nameOf(ShapeKind kind)
{
    switch (kind) {
    case ShapeKind::Points:
        return "a point";
    case ShapeKind::Lines:
        return "a line";
    case ShapeKind::Polygons:
        return "a polygon";
    default:
        return "no shape";
    }
}

bool isClosed(const QVector<QPointF> &part)
{
    return part.size() > 1 && part.first().x() == part.last().x()
           && part.first().y() == part.last().y();
}

/// Whether all vertices lie on one line, up to rounding: such a ring has no area.
bool isStraight(const QVector<QPointF> &ring)
{
    const QPointF origin = ring.first();
    QPointF along;
    for (const QPointF &point : ring) {
        const QPointF side = point - origin;
        if (std::abs(side.x()) + std::abs(side.y()) > std::abs(along.x()) + std::abs(along.y()))
            along = side;
    }
    return std::all_of(ring.begin(), ring.end(), [&](const QPointF &point) {
        const double left = along.x() * (point.y() - origin.y());
        const double right = along.y() * (point.x() - origin.x());
        // Differences of coordinates carry the rounding of the coordinates themselves.
        const double slack = 4 * std::numeric_limits<double>::epsilon()
                             * (std::abs(along.x()) + std::abs(along.y()))
                             * (std::abs(point.x()) + std::abs(point.y()) + std::abs(origin.x())
                                + std::abs(origin.y()));
        return std::abs(left - right) <= slack;
    });
}

/// The number of vertices that differ from the one before.
int distinct(const QVector<QPointF> &points)
{
    int count = points.isEmpty() ? 0 : 1;
    for (int i = 1; i < points.size(); ++i)
        count += points[i].x() != points[i - 1].x() || points[i].y() != points[i - 1].y();
    return count;
}

QVector<QPointF> vertices(const FeatureTable &table, OGRGeometryH part)
{
    const int count = OGR_G_GetPointCount(part);
    QVector<QPointF> points(count);
    constexpr int kStride = sizeof(QPointF);
    OGR_G_GetPoints(part, &points.data()->rx(), kStride, &points.data()->ry(), kStride, nullptr, 0);
    for (int i = 0; i < count; ++i)
        if (!std::isfinite(points[i].x()) || !std::isfinite(points[i].y()))
            fail(QStringLiteral("%1: vertex %2 is not finite")
                     .arg(place(table, table.rows), QString::number(i + 1)));
    return points;
}

void collect(const FeatureTable &table, OGRGeometryH geometry, ShapeKind kind, ShapeParts &parts)
{
    const int children = OGR_G_GetGeometryCount(geometry);
    for (int i = 0; i < children; ++i)
        collect(table, OGR_G_GetGeometryRef(geometry, i), kind, parts);
    if (children > 0 || OGR_G_GetPointCount(geometry) == 0)
        return;
    const QVector<QPointF> points = vertices(table, geometry);
    // A ring without an area and a line without a length are dropped.
    const int needed = kind == ShapeKind::Polygons ? (isClosed(points) ? 4 : 3)
                       : kind == ShapeKind::Lines  ? 2
                                                   : 1;
    if (distinct(points) >= needed && !(kind == ShapeKind::Polygons && isStraight(points)))
        parts.append(points);
}

std::unique_ptr<OGRSimpleCurve> curve(const QVector<QPointF> &points, bool isRing)
{
    std::unique_ptr<OGRSimpleCurve> line;
    if (isRing)
        line = std::make_unique<OGRLinearRing>();
    else
        line = std::make_unique<OGRLineString>();
    line->setNumPoints(points.size());
    for (int i = 0; i < points.size(); ++i)
        line->setPoint(i, points[i].x(), points[i].y());
    if (isRing)
        line->closeRings();
    return line;
}

/// Shells counter-clockwise and holes clockwise, as GeoJSON and GeoPackage recommend.
void orient(OGRGeometry &geometry)
{
    if (wkbFlatten(geometry.getGeometryType()) == wkbMultiPolygon) {
        for (OGRPolygon *polygon : *geometry.toMultiPolygon())
            orient(*polygon);
    } else if (wkbFlatten(geometry.getGeometryType()) == wkbPolygon) {
        bool isShell = true;
        for (OGRLinearRing *ring : *geometry.toPolygon()) {
            if (ring->isClockwise() == static_cast<int>(isShell))
                ring->reversePoints();
            isShell = false;
        }
    }
}

/// Shells with their holes from rings in any order. A ring is a hole if it is inside an odd number of
/// others, which is the even-odd rule of the geometry library.
std::unique_ptr<OGRGeometry> polygonOf(const ShapeParts &rings)
{
    std::vector<OGRGeometry *> polygons; // organizePolygons takes ownership
    for (const QVector<QPointF> &ring : rings) {
        auto polygon = std::make_unique<OGRPolygon>();
        polygon->addRingDirectly(static_cast<OGRLinearRing *>(curve(ring, true).release()));
        polygons.push_back(polygon.release());
    }
    int valid = 0;
    std::unique_ptr<OGRGeometry> geometry(OGRGeometryFactory::organizePolygons(
        polygons.data(), static_cast<int>(polygons.size()), &valid, nullptr));
    orient(*geometry);
    return geometry;
}

} // namespace

std::unique_ptr<OGRGeometry> geometryOf(const ShapeParts &parts, ShapeKind kind,
                                        OGRwkbGeometryType type)
{
    std::unique_ptr<OGRGeometry> geometry;
    if (parts.isEmpty())
        return geometry;
    if (kind == ShapeKind::Points) {
        geometry = std::make_unique<OGRPoint>(parts[0][0].x(), parts[0][0].y());
    } else if (kind == ShapeKind::Polygons) {
        geometry = polygonOf(parts);
    } else if (parts.size() == 1) {
        geometry = curve(parts[0], false);
    } else {
        auto lines = std::make_unique<OGRMultiLineString>();
        for (const QVector<QPointF> &part : parts)
            lines->addGeometryDirectly(curve(part, false).release());
        geometry = std::move(lines);
    }
    if (OGR_GT_IsSubClassOf(type, wkbGeometryCollection))
        geometry.reset(OGRGeometryFactory::forceTo(geometry.release(), type, nullptr));
    return geometry;
}

void takeShape(FeatureTable &table, OGRGeometryH geometry)
{
    if (!geometry || OGR_G_IsEmpty(geometry)) {
        table.shapes->append(ShapeParts());
        return;
    }
    std::unique_ptr<void, FreeGeometry> linear;
    if (OGR_G_HasCurveGeometry(geometry, 0)) {
        linear.reset(OGR_G_GetLinearGeometry(geometry, 0, nullptr));
        geometry = static_cast<OGRGeometryH>(linear.get());
    }
    const ShapeKind kind = kindOf(geometry);
    if (kind == ShapeKind::None)
        fail(QStringLiteral("%1: a %2 cannot be an object of a geography")
                 .arg(place(table, table.rows),
                      QString::fromLatin1(OGR_G_GetGeometryName(geometry)).toLower()));
    if (table.shapeKind != ShapeKind::None && table.shapeKind != kind)
        fail(QStringLiteral("%1: %2 among shapes of another kind; the first shape was %3")
                 .arg(place(table, table.rows), QLatin1String(nameOf(kind)),
                      QLatin1String(nameOf(table.shapeKind))));
    table.shapeKind = kind;
    ShapeParts parts;
    collect(table, geometry, kind, parts);
    if (kind == ShapeKind::Polygons && parts.isEmpty())
        fail(place(table, table.rows) + QStringLiteral(": the polygon has no area"));
    if (kind == ShapeKind::Lines && parts.isEmpty())
        fail(place(table, table.rows) + QStringLiteral(": the line has no length"));
    if (kind == ShapeKind::Points && parts.size() > 1)
        fail(QStringLiteral(
                 "%1: %2 points in one object; an object of a point geography is one place")
                 .arg(place(table, table.rows), QString::number(parts.size())));
    table.shapes->append(parts);
}

} // namespace meridor
