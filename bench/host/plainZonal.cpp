// SPDX-License-Identifier: MIT
// The peer of `meridor zonal`: means of a grid over polygons by the plain loop over the cells of each
// polygon's box, with the polygon cut to each cell (Sutherland and Hodgman 1974, CACM 17, 32-42).
// usage: plainZonal GRID POLYGONS; polygons have one ring, which must be convex or nearly so.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <gdal_priv.h>
#include <ogrsf_frmts.h>
#include <vector>

namespace {

struct Point {
    double x;
    double y;
};
using Ring = std::vector<Point>;

/// The part of a ring on one side of a line of constant x or y.
void cut(const Ring &ring, double Point::*axis, double limit, bool keepsAbove, Ring &kept)
{
    kept.clear();
    const auto isIn = [&](const Point &p) {
        return keepsAbove ? p.*axis >= limit : p.*axis <= limit;
    };
    for (std::size_t i = 0; i < ring.size(); ++i) {
        const Point &a = ring[i];
        const Point &b = ring[(i + 1) % ring.size()];
        if (isIn(a))
            kept.push_back(a);
        if (isIn(a) != isIn(b)) {
            const double t = (limit - a.*axis) / (b.*axis - a.*axis);
            kept.push_back({a.x + t * (b.x - a.x), a.y + t * (b.y - a.y)});
        }
    }
}

double areaOf(const Ring &ring)
{
    double twice = 0;
    for (std::size_t i = 0; i < ring.size(); ++i) {
        const Point &a = ring[i];
        const Point &b = ring[(i + 1) % ring.size()];
        twice += a.x * b.y - b.x * a.y;
    }
    return std::fabs(twice) / 2;
}

} // namespace

int main(int argc, char **argv)
{
    GDALAllRegister();
    if (argc != 3)
        return 2;
    auto *grid = static_cast<GDALDataset *>(GDALOpen(argv[1], GA_ReadOnly));
    auto *map =
        static_cast<GDALDataset *>(GDALOpenEx(argv[2], GDAL_OF_VECTOR, nullptr, nullptr, nullptr));
    if (!grid || !map)
        return 1;
    const int columns = grid->GetRasterXSize();
    const int rows = grid->GetRasterYSize();
    double place[6];
    grid->GetGeoTransform(place);
    std::vector<float> values(static_cast<std::size_t>(columns) * static_cast<std::size_t>(rows));
    if (grid->GetRasterBand(1)->RasterIO(GF_Read, 0, 0, columns, rows, values.data(), columns, rows,
                                         GDT_Float32, 0, 0)
        != CE_None)
        return 1;
    Ring ring;
    Ring first;
    Ring second;
    for (const auto &feature : map->GetLayer(0)) {
        const auto *shape = feature->GetGeometryRef();
        const OGRGeometry *part = wkbFlatten(shape->getGeometryType()) == wkbMultiPolygon
                                      ? shape->toMultiPolygon()->getGeometryRef(0)
                                      : shape;
        // In units of cells, from the top left.
        ring.clear();
        for (const OGRPoint &p : part->toPolygon()->getExteriorRing())
            ring.push_back({(p.getX() - place[0]) / place[1], (p.getY() - place[3]) / place[5]});
        ring.pop_back();
        const auto [left, right] = std::minmax_element(
            ring.begin(), ring.end(), [](const Point &a, const Point &b) { return a.x < b.x; });
        const auto [top, bottom] = std::minmax_element(
            ring.begin(), ring.end(), [](const Point &a, const Point &b) { return a.y < b.y; });
        double sum = 0;
        double area = 0;
        const int lastRow = std::min(rows - 1, static_cast<int>(bottom->y));
        const int lastColumn = std::min(columns - 1, static_cast<int>(right->x));
        for (int row = std::max(0, static_cast<int>(top->y)); row <= lastRow; ++row) {
            for (int column = std::max(0, static_cast<int>(left->x)); column <= lastColumn;
                 ++column) {
                cut(ring, &Point::x, column, true, first);
                cut(first, &Point::x, column + 1, false, second);
                cut(second, &Point::y, row, true, first);
                cut(first, &Point::y, row + 1, false, second);
                const double shared = areaOf(second);
                area += shared;
                sum += shared
                       * static_cast<double>(
                           values[static_cast<std::size_t>(row) * static_cast<std::size_t>(columns)
                                  + static_cast<std::size_t>(column)]);
            }
        }
        std::printf("%lld %.6f %.9g\n", static_cast<long long>(feature->GetFID()), area,
                    sum / area);
    }
    GDALClose(map);
    GDALClose(grid);
    return 0;
}
