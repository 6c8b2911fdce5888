// SPDX-License-Identifier: MIT
#include "desk/draw/flatGeometry.h"
#include <algorithm>
#include <cmath>
#include <limits>
#include "datainterface/GeographyAPI.h"
#include "datainterface/TimeAPI.h"
#include "desk/draw/viewTransform.h"

namespace meridor {
namespace {

constexpr double kInfinite = std::numeric_limits<double>::infinity();
constexpr Rect2D kNoBox(kInfinite, -kInfinite, kInfinite, -kInfinite);

void widen(Rect2D &hull, const Rect2D &box)
{
    hull.xMin = std::min(hull.xMin, box.xMin);
    hull.xMax = std::max(hull.xMax, box.xMax);
    hull.yMin = std::min(hull.yMin, box.yMin);
    hull.yMax = std::max(hull.yMax, box.yMax);
}

FlatGeometry::Kind kindOf(int type)
{
    return type == GeoProps::Polygons ? FlatGeometry::Areas
           : type == GeoProps::Lines  ? FlatGeometry::Lines
                                      : FlatGeometry::Places;
}

} // namespace

bool FlatGeometry::load(int geography, qint64 time)
{
    FMShapes shapes;
    const auto isObject = [](int id) { return id >= 0; };
    if (!VORN_GetAllShapes(geography, time, shapes)
        || !std::all_of(shapes.ids.begin(), shapes.ids.end(), isObject))
        return false;
    Interval span{time, time, true, true};
    VORN_GetStaticObjectInterval(geography, time, span);
    setShapes(kindOf(VORN_GetGeographyProperties(geography).type), std::move(shapes));
    mSpan = span;
    return true;
}

void FlatGeometry::setPlaces(const std::vector<QPointF> &places)
{
    FMShapes shapes;
    shapes.ids.reserve(places.size());
    shapes.vertices.reserve(places.size());
    for (std::size_t i = 0; i < places.size(); ++i) {
        if (!std::isfinite(places[i].x()) || !std::isfinite(places[i].y()))
            continue;
        shapes.ids.push_back(static_cast<int>(i));
        shapes.vertices.push_back(places[i]);
    }
    setShapes(Places, std::move(shapes));
    mSpan = {std::numeric_limits<qint64>::min(), std::numeric_limits<qint64>::max(), true, true};
}

void FlatGeometry::setShapes(Kind kind, FMShapes &&shapes)
{
    mKind = kind;
    mShapes = std::move(shapes);
    mHull = kNoBox;
    mWidths = mHeights = 0.0;
    mBlocks.assign((count() + kBlock - 1) / kBlock, kNoBox);
    for (std::size_t i = 0; i < count(); ++i) {
        const QPointF &place = mShapes.vertices[i]; // of places; there are no boxes then
        const Rect2D box =
            kind == Places ? Rect2D(place.x(), place.x(), place.y(), place.y()) : mShapes.boxes[i];
        widen(mBlocks[i / kBlock], box);
        mWidths += box.xMax - box.xMin;
        mHeights += box.yMax - box.yMin;
    }
    for (const Rect2D &block : mBlocks)
        widen(mHull, block);
    mObjectLimit = 0;
    for (const int id : mShapes.ids)
        mObjectLimit = std::max(mObjectLimit, id + 1);
}

QRectF FlatGeometry::bounds() const
{
    return count() == 0 ? QRectF()
                        : QRectF(QPointF(mHull.xMin, mHull.yMin), QPointF(mHull.xMax, mHull.yMax));
}

double FlatGeometry::meanSize(const ViewTransform &view) const
{
    if (count() == 0)
        return 0.0;
    return 0.5 * (mWidths * view.xScale() + mHeights * view.yScale())
           / static_cast<double>(count());
}

double FlatGeometry::meanEdge(const ViewTransform &view) const
{
    if (mShapes.vertices.empty())
        return 0.0;
    return 2.0 * (mWidths * view.xScale() + mHeights * view.yScale())
           / static_cast<double>(mShapes.vertices.size());
}

} // namespace meridor
