// SPDX-License-Identifier: MIT
// Geometry objects compared with GEOS and GDAL: point in polygon, shared borders, contiguity of a
// pair, polygons over grids, and the cost of conversion to GEOS and back in an overlay.
#include <cmath>
#include <gdal.h>
#include <gdal_alg.h>
#include <geos_c.h>
#include <memory>
#include <ogr_api.h>
#include <random>
#include "fennimark/FMPolygon.h"
#include "ratios.h"

using benchmark::DoNotOptimize;
using ratios::Pair;
using ratios::repeat;

namespace {

constexpr int kCells = 2000;
const FMGrid kGrid{-1.6, -1.6, 1.6, 3.2 / kCells, 3.2 / kCells};
const FMGridWindow kWindow{0, 0, kCells - 1, kCells - 1};

GEOSContextHandle_t geos()
{
    static const GEOSContextHandle_t handle = GEOS_init_r();
    return handle;
}

struct Destroy {
    void operator()(GEOSGeometry *geometry) const { GEOSGeom_destroy_r(geos(), geometry); }
};
using Geometry = std::unique_ptr<GEOSGeometry, Destroy>;

Geometry geometryOf(QPolygonF ring)
{
    ring.append(ring.first());
    GEOSCoordSequence *sequence =
        GEOSCoordSeq_copyFromBuffer_r(geos(), reinterpret_cast<const double *>(ring.constData()),
                                      static_cast<unsigned>(ring.size()), 0, 0);
    return Geometry(GEOSGeom_createPolygon_r(geos(), GEOSGeom_createLinearRing_r(geos(), sequence),
                                             nullptr, 0));
}

/// A coast: waves of every length around a circle.
QPolygonF coast(int vertices, unsigned seed, const QPointF &center = {0, 0})
{
    std::mt19937 random(seed);
    std::uniform_real_distribution<double> phase(0.0, 6.283185307179586);
    std::vector<double> phases(64);
    for (double &value : phases)
        value = phase(random);
    QPolygonF ring;
    for (int i = 0; i < vertices; ++i) {
        const double angle = 6.283185307179586 * i / vertices;
        double radius = 1.0;
        for (std::size_t k = 1; k < phases.size(); ++k)
            radius += 0.12 * std::sin(static_cast<double>(k) * angle + phases[k])
                      / static_cast<double>(k);
        ring.append(center + QPointF(std::cos(angle), std::sin(angle)) * radius);
    }
    return ring;
}

/// A unit square with `vertices` vertices in all, turned by 30 degrees, since few borders in maps
/// are parallel to an axis.
QPolygonF tile(int column, int row, int vertices)
{
    const QPointF corners[] = {{0, 0}, {1, 0}, {1, 1}, {0, 1}};
    QPolygonF ring;
    for (int side = 0; side < 4; ++side) {
        for (int i = 0; i < vertices / 4; ++i) {
            const QPointF p = corners[side]
                              + (corners[(side + 1) % 4] - corners[side]) * (4.0 * i / vertices)
                              + QPointF(column, row);
            ring.append(QPointF(0.8660254037844387 * p.x() - 0.5 * p.y(),
                                0.5 * p.x() + 0.8660254037844387 * p.y()));
        }
    }
    return ring;
}

void addPointInPolygon(std::vector<Pair> &table)
{
    constexpr std::size_t kPoints = 4096;
    for (const int vertices : {50, 5000}) {
        const auto polygon = std::make_shared<FMPolygon>(coast(vertices, 1));
        const auto area = std::make_shared<Geometry>(geometryOf(coast(vertices, 1)));
        const GEOSPreparedGeometry *prepared = GEOSPrepare_r(geos(), area->get());
        std::mt19937 random(2);
        std::uniform_real_distribution<double> place(-1.3, 1.3);
        const auto points = std::make_shared<std::vector<QPointF>>();
        const auto geometries = std::make_shared<std::vector<Geometry>>();
        for (std::size_t i = 0; i < kPoints; ++i) {
            points->push_back({place(random), place(random)});
            geometries->emplace_back(
                GEOSGeom_createPointFromXY_r(geos(), points->back().x(), points->back().y()));
        }
        table.push_back({"point in polygon, " + std::to_string(vertices) + " vertices",
                         "GEOS prepared", 1.1, repeat([=, i = std::size_t(0)]() mutable {
                             DoNotOptimize(polygon->ContainsPoint((*points)[++i % kPoints]));
                         }),
                         repeat([=, prepares = area, i = std::size_t(0)]() mutable {
                             DoNotOptimize(GEOSPreparedIntersects_r(
                                 geos(), prepared, (*geometries)[++i % kPoints].get()));
                         })});
    }
}

void addBorders(std::vector<Pair> &table)
{
    for (const int vertices : {4, 32, 64}) {
        const auto a = std::make_shared<FMPolygon>(tile(0, 0, vertices));
        const auto b = std::make_shared<FMPolygon>(tile(1, 0, vertices));
        const auto first = std::make_shared<Geometry>(geometryOf(tile(0, 0, vertices)));
        const auto second = std::make_shared<Geometry>(geometryOf(tile(1, 0, vertices)));
        table.push_back(
            {"shared border of a pair, " + std::to_string(vertices) + " vertices",
             "GEOS intersection", 0.06,
             repeat([=] { DoNotOptimize(a->GetBorderEdges(*b, nullptr)); }), repeat([=] {
                 const Geometry common(GEOSIntersection_r(geos(), first->get(), second->get()));
                 double length = 0.0;
                 GEOSLength_r(geos(), common.get(), &length);
                 DoNotOptimize(length);
             })});
    }
    for (const int vertices : {4, 32}) {
        const auto tiles = std::make_shared<std::vector<std::unique_ptr<FMPolygon>>>();
        const auto geometries = std::make_shared<std::vector<Geometry>>();
        for (int i = 0; i < 9; ++i) {
            tiles->push_back(std::make_unique<FMPolygon>(tile(i % 3, i / 3, vertices)));
            geometries->push_back(geometryOf(tile(i % 3, i / 3, vertices)));
        }
        table.push_back({"contact with eight neighbours, " + std::to_string(vertices) + " vertices",
                         "GEOS touches", 0.08, repeat([=] {
                             for (const auto &other : *tiles)
                                 DoNotOptimize(&other != &(*tiles)[4]
                                               && (*tiles)[4]->BordersPolygon(*other, true));
                         }),
                         repeat([=] {
                             for (const auto &other : *geometries)
                                 DoNotOptimize(
                                     &other != &(*geometries)[4]
                                     && GEOSTouches_r(geos(), (*geometries)[4].get(), other.get()));
                         })});
    }
}

/// Burns the polygon into a byte raster and collects the cells; GDAL selects them by their centres.
std::size_t burnt(OGRGeometryH polygon)
{
    GDALDatasetH raster =
        GDALCreate(GDALGetDriverByName("MEM"), "", kCells, kCells, 1, GDT_Byte, nullptr);
    double transform[6] = {kGrid.left, kGrid.cellWidth, 0.0, kGrid.top, 0.0, -kGrid.cellHeight};
    GDALSetGeoTransform(raster, transform);
    int band = 1;
    double value = 1.0;
    GDALRasterizeGeometries(raster, 1, &band, 1, &polygon, nullptr, nullptr, &value, nullptr,
                            nullptr, nullptr);
    std::vector<unsigned char> bytes(std::size_t(kCells) * kCells);
    CPLErr status = GDALRasterIO(GDALGetRasterBand(raster, 1), GF_Read, 0, 0, kCells, kCells,
                                 bytes.data(), kCells, kCells, GDT_Byte, 0, 0);
    std::vector<std::pair<unsigned, unsigned>> cells;
    for (unsigned row = 0; status == CE_None && row < kCells; ++row) {
        for (unsigned column = 0; column < kCells; ++column) {
            if (bytes[std::size_t(row) * kCells + column])
                cells.push_back({column, row});
        }
    }
    GDALClose(raster);
    return cells.size();
}

/// Cell areas by GEOS: a prepared polygon decides which cells are inside and outside, the areas of
/// the others are computed by intersection.
double areasByGeos(const GEOSGeometry *polygon, const GEOSPreparedGeometry *prepared)
{
    double sum = 0.0;
    for (int column = 0; column < kCells; ++column) {
        for (int row = 0; row < kCells; ++row) {
            const double x = kGrid.left + column * kGrid.cellWidth;
            const double y = kGrid.bottom + row * kGrid.cellHeight;
            const Geometry cell(GEOSGeom_createRectangle_r(geos(), x, y, x + kGrid.cellWidth,
                                                           y + kGrid.cellHeight));
            if (!GEOSPreparedIntersects_r(geos(), prepared, cell.get()))
                continue;
            double area = kGrid.cellWidth * kGrid.cellHeight;
            if (!GEOSPreparedContains_r(geos(), prepared, cell.get())) {
                const Geometry part(GEOSIntersection_r(geos(), polygon, cell.get()));
                GEOSArea_r(geos(), part.get(), &area);
            }
            sum += area;
        }
    }
    return sum;
}

void addGrids(std::vector<Pair> &table)
{
    const QPolygonF ring = coast(5000, 3);
    const auto polygon = std::make_shared<FMPolygon>(ring);
    const auto area = std::make_shared<Geometry>(geometryOf(ring));
    const GEOSPreparedGeometry *prepared = GEOSPrepare_r(geos(), area->get());
    OGRGeometryH burning = OGR_G_CreateGeometry(wkbPolygon);
    OGRGeometryH line = OGR_G_CreateGeometry(wkbLinearRing);
    for (const QPointF &p : ring)
        OGR_G_AddPoint_2D(line, p.x(), p.y());
    OGR_G_AddPoint_2D(line, ring.first().x(), ring.first().y());
    OGR_G_AddGeometryDirectly(burning, line);
    GDALAllRegister();
    table.push_back({"centres in 5,000 vertices, 2000 x 2000", "GDAL rasterize and collect", 0.6,
                     repeat([=] {
                         QVector<QPair<unsigned int, unsigned int>> cells;
                         polygon->ContainedCenters(kGrid, kWindow, cells);
                         DoNotOptimize(cells.size());
                     }),
                     repeat([=] { DoNotOptimize(burnt(burning)); })});
    table.push_back({"cell areas of 5,000 vertices, 2000 x 2000", "GEOS prepared and partial cells",
                     0.005, repeat([=] {
                         QVector<FMCellArea> cells;
                         polygon->CellAreas(kGrid, kWindow, cells);
                         DoNotOptimize(cells.size());
                     }),
                     repeat([=] { DoNotOptimize(areasByGeos(area->get(), prepared)); })});
}

void addIntersections(std::vector<Pair> &table)
{
    for (const int vertices : {30, 5000}) {
        const QPolygonF first = coast(vertices, 5);
        const QPolygonF second = coast(vertices, 6, {0.7, 0.4});
        const auto a = std::make_shared<FMPolygon>(first);
        const auto b = std::make_shared<FMPolygon>(second);
        const auto ga = std::make_shared<Geometry>(geometryOf(first));
        const auto gb = std::make_shared<Geometry>(geometryOf(second));
        table.push_back(
            {"intersection, " + std::to_string(vertices) + " vertices", "GEOS alone", 1.1,
             repeat([=] {
                 QVector<const FMPolygon *> both{a.get(), b.get()};
                 const std::unique_ptr<FMPolygon> common(FMPolygon::GetIntersection(both));
                 DoNotOptimize(common.get());
             }),
             repeat([=] {
                 const Geometry common(GEOSIntersection_r(geos(), ga->get(), gb->get()));
                 DoNotOptimize(common.get());
             })});
    }
}

/// Disjoint squares as one polygon. The first call of GetArea computes the nesting of the rings and
/// tests the validity of the polygon.
void addIslands(std::vector<Pair> &table)
{
    constexpr int kSide = 200;
    QList<QPolygonF> rings;
    std::vector<GEOSGeometry *> islands;
    for (int i = 0; i < kSide * kSide; ++i) {
        const double x = i % kSide;
        const double y = i / kSide;
        rings.append(QVector<QPointF>{{x, y}, {x + 0.5, y}, {x + 0.5, y + 0.5}, {x, y + 0.5}});
        islands.push_back(geometryOf(rings.last()).release());
    }
    const auto all = std::make_shared<Geometry>(GEOSGeom_createCollection_r(
        geos(), GEOS_MULTIPOLYGON, islands.data(), static_cast<unsigned>(islands.size())));
    table.push_back({"first area of 40,000 islands", "GEOS validity", 3.0,
                     repeat([=] { DoNotOptimize(FMPolygon(rings).GetArea()); }),
                     repeat([=] { DoNotOptimize(GEOSisValid_r(geos(), all->get())); })});
}

} // namespace

int main(int argc, char **argv)
{
    std::vector<Pair> table;
    addPointInPolygon(table);
    addBorders(table);
    addIntersections(table);
    addGrids(table);
    addIslands(table);
    return ratios::run(argc, argv, table);
}
