// SPDX-License-Identifier: MIT
#include <cmath>
#include <pybind11/stl.h>
#include "call.h"
#include "core/analysis/distanceSets.h"
#include "core/formats/wellKnownBinary.h"
#include "core/grids/cellShares.h"
#include "core/project/catalog.h"
#include "core/project/shapeAccess.h"
#include "datainterface/GeographyAPI.h"
#include "datainterface/MVectorData.h"
#include "datainterface/RasterAPI.h"
#include "fennimark/FMObjectChain.h"
#include "fennimark/FMPolygon.h"
#include "fennimark/Fennims.h"
#include "fennimark/HeldObject.h"
#include "nouns.h"

namespace meridor::python {
namespace {

using Places = py::array_t<double, py::array::c_style | py::array::forcecast>;
using Rings = QList<QVector<QPointF>>;

void require(int geography)
{
    if (!geographyOf(geography))
        fail(QStringLiteral("the geography is no longer in the project"));
}

py::array ascending(QVector<unsigned int> objects)
{
    std::sort(objects.begin(), objects.end());
    return arrayOf(std::vector<int>(objects.begin(), objects.end()));
}

/// Rings of matrices with the columns x and y.
Rings ringsOfArrays(const py::iterable &arrays)
{
    Rings rings;
    for (const py::handle array : arrays) {
        const auto places = array.cast<Places>();
        const auto row = places.unchecked<2>();
        QVector<QPointF> ring;
        for (py::ssize_t i = 0; i < places.shape(0); ++i)
            ring.append(QPointF(row(i, 0), row(i, 1)));
        rings.append(ring);
    }
    return rings;
}

/// The shape of an object as well-known binary; None if it does not exist then.
py::object shapeOf(int geography, int object, qint64 time)
{
    const auto *vector = dynamic_cast<const MVectorData *>(geographyOf(geography));
    if (!vector)
        fail(QStringLiteral("%1 is a grid").arg(geographyName(geography)));
    const FMObjectChain *chain =
        vector->GetFennims()->GetChainById(vector->GetFennimId(static_cast<unsigned>(object)));
    const int record = chain ? chain->GetObservation(time).second : -1;
    const int type = VORN_GetGeographyProperties(geography).type;
    const QByteArray bytes =
        wellKnownBinary(partsOf(*vector, record), type == GeoProps::Points  ? ShapeKind::Points
                                                  : type == GeoProps::Lines ? ShapeKind::Lines
                                                                            : ShapeKind::Polygons);
    if (bytes.isEmpty())
        return py::none();
    return py::bytes(bytes.constData(), static_cast<size_t>(bytes.size()));
}

/// The objects that have a point in common with the rings, and the area that each shares with them.
py::tuple objectsIn(int geography, const Rings &rings, qint64 time)
{
    const auto &vector = dynamic_cast<const MVectorData &>(*geographyOf(geography));
    const FMPolygon polygon(QList<QPolygonF>(rings.begin(), rings.end()));
    const Rect2D box = polygon.GetBounds();
    QVector<unsigned int> near;
    VORN_MBRQuery(geography, QRectF(QPointF(box.xMin, box.yMin), QPointF(box.xMax, box.yMax)), time,
                  near);
    std::sort(near.begin(), near.end());
    std::vector<int> objects;
    std::vector<double> areas;
    for (const unsigned int object : qAsConst(near)) {
        const FMObjectChain *chain = vector.GetFennims()->GetChainById(vector.GetFennimId(object));
        const int record = chain ? chain->GetObservation(time).second : -1;
        const fennimark::HeldObject held(*vector.GetFennims()->mTree, record);
        const auto *shape = held.as<FMObject>();
        double area = 0;
        if (!shape || !shape->OverlapsPolygon(polygon, &area))
            continue;
        objects.push_back(static_cast<int>(object));
        areas.push_back(area);
    }
    return py::make_tuple(arrayOf(std::move(objects)), arrayOf(std::move(areas)));
}

/// Cells as (rows, columns, areas); the areas are None where only centres count.
py::tuple cellsOf(const RasterPixels &pixels, const py::object &areas)
{
    std::vector<int> rows, columns;
    for (const auto &pixel : pixels) {
        columns.push_back(static_cast<int>(pixel.first));
        rows.push_back(static_cast<int>(pixel.second));
    }
    return py::make_tuple(arrayOf(std::move(rows)), arrayOf(std::move(columns)), areas);
}

py::tuple cellsOf(const QVector<CellShare> &shares)
{
    RasterPixels pixels;
    std::vector<double> areas;
    for (const CellShare &share : shares) {
        pixels.append({share.column, share.row});
        areas.push_back(share.area);
    }
    return cellsOf(pixels, arrayOf(std::move(areas)));
}

py::tuple cellsIn(int geography, const Rings &rings, bool centers)
{
    if (!centers)
        return cellsOf(CellShares(geography).of(rings));
    RasterPixels pixels;
    VORN_GetPixelCentersInPolygon(geography, rings, pixels);
    return cellsOf(pixels, py::none());
}

py::tuple nearest(int geography, double x, double y, qint64 time, int count, bool greatCircle)
{
    std::vector<int> objects;
    std::vector<double> distances;
    if (greatCircle) {
        for (const NearObject &near : nearestOnEarth(geography, QPointF(x, y), time, count)) {
            objects.push_back(near.object);
            distances.push_back(near.distance);
        }
    } else {
        QVector<neighborDatum> neighbors;
        VORN_NearestNeighborQuery(geography, QPointF(x, y), time, count, neighbors);
        for (const neighborDatum &neighbor : qAsConst(neighbors)) {
            objects.push_back(neighbor.id);
            distances.push_back(std::sqrt(static_cast<double>(neighbor.distance)));
        }
    }
    return py::make_tuple(arrayOf(std::move(objects)), arrayOf(std::move(distances)));
}

} // namespace

void addQueries(py::module_ &module)
{
    module.def("in_rectangle", [](int geography, double left, double bottom, double right,
                                  double top, qint64 time) {
        return inTurn([&] {
            require(geography);
            QVector<unsigned int> objects;
            VORN_RectQuery(geography, QRectF(QPointF(left, bottom), QPointF(right, top)), time,
                           objects);
            return ascending(objects);
        });
    });
    module.def("in_circle", [](int geography, double x, double y, double radius, qint64 time) {
        return inTurn([&] {
            require(geography);
            QVector<unsigned int> objects;
            VORN_CircleQuery(geography, QPointF(x, y), radius, time, objects);
            return ascending(objects);
        });
    });
    module.def("nearest",
               [](int geography, double x, double y, qint64 time, int count, bool greatCircle) {
                   return inTurn([&] {
                       require(geography);
                       return nearest(geography, x, y, time, count, greatCircle);
                   });
               });
    module.def("in_polygon", [](int geography, const py::iterable &rings, qint64 time) {
        return inTurn([&] {
            require(geography);
            return objectsIn(geography, ringsOfArrays(rings), time);
        });
    });
    module.def("cells_in_rectangle", [](int geography, double left, double bottom, double right,
                                        double top, bool centers) {
        return inTurn([&] {
            require(geography);
            const QRectF rect(QPointF(left, bottom), QPointF(right, top));
            return centers ? cellsOf(centersInRect(geography, rect), py::none())
                           : cellsOf(sharesWithRect(geography, rect));
        });
    });
    module.def("cells_in_circle", [](int geography, double x, double y, double radius) {
        return inTurn([&] {
            require(geography);
            RasterPixels pixels;
            VORN_QueryRasterWithCircle(geography, QPointF(x, y), radius, pixels);
            return cellsOf(pixels, py::none());
        });
    });
    module.def("cells_in_polygon", [](int geography, const py::iterable &rings, bool centers) {
        return inTurn([&] {
            require(geography);
            return cellsIn(geography, ringsOfArrays(rings), centers);
        });
    });
    module.def("shape", [](int geography, int object, qint64 time) {
        return inTurn([&] {
            require(geography);
            return shapeOf(geography, object, time);
        });
    });
}

} // namespace meridor::python
