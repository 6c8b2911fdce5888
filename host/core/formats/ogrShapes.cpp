// SPDX-License-Identifier: MIT
#include "core/formats/ogrShapes.h"
#include <cmath>
#include <memory>
#include "core/project/failure.h"

namespace meridor {
namespace {

struct FreeGeometry {
    void operator()(void *geometry) const
    {
        OGR_G_DestroyGeometry(static_cast<OGRGeometryH>(geometry));
    }
};

ShapeKind kindOf(OGRGeometryH geometry)
{
    switch (wkbFlatten(OGR_G_GetGeometryType(geometry))) {
    case wkbPoint:
    case wkbMultiPoint:
        return ShapeKind::Points;
    case wkbLineString:
    case wkbMultiLineString:
        return ShapeKind::Lines;
    case wkbPolygon:
    case wkbMultiPolygon:
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
    QVector<QPointF> points;
    points.reserve(count);
    for (int i = 0; i < count; ++i) {
        const double x = OGR_G_GetX(part, i);
        const double y = OGR_G_GetY(part, i);
        if (!std::isfinite(x) || !std::isfinite(y))
            fail(QStringLiteral("%1: vertex %2 is not finite")
                     .arg(place(table, table.rows))
                     .arg(i + 1));
        points.append(QPointF(x, y));
    }
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
    // A ring of fewer than three distinct places has no area, and a line of one place no length:
    // both are dropped.
    const int needed = kind == ShapeKind::Polygons ? (isClosed(points) ? 4 : 3)
                       : kind == ShapeKind::Lines  ? 2
                                                   : 1;
    if (distinct(points) >= needed)
        parts.append(points);
}

} // namespace

void takeShape(FeatureTable &table, OGRGeometryH geometry)
{
    if (!geometry || OGR_G_IsEmpty(geometry)) {
        table.shapes.append(ShapeParts());
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
    if (kind == ShapeKind::Points && parts.size() > 1)
        fail(QStringLiteral(
                 "%1: %2 points in one object; an object of a point geography is one place")
                 .arg(place(table, table.rows))
                 .arg(parts.size()));
    table.shapes.append(parts);
}

} // namespace meridor
