// SPDX-License-Identifier: MIT
// Rasters compared with GDAL, GEOS and plain loops: passes over whole grids, single cells, tables
// of values and places.
#include <QMap>
#include <QTemporaryDir>
#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <gdal_priv.h>
#include <geos_c.h>
#include <memory>
#include <random>
#include <vector>
#include "datainterface/ControllerBase.h"
#include "datainterface/DataAPI.h"
#include "datainterface/DataBlocks.h"
#include "datainterface/FrameAPI.h"
#include "datainterface/MRasterData.h"
#include "datainterface/MRasterDataSource.h"
#include "datainterface/ProjectAPI.h"
#include "datainterface/RasterAPI.h"
#include "ratios.h"

namespace {

constexpr int kRounds = 5;
constexpr int kSide = 4000;
constexpr int kCount = kSide * kSide;
constexpr int kPlaceSide = 2000;
const Interval kAlways{0, 9, true, true};

class Host : public ControllerBase {
public:
    void RemoveGeography(int id) override { delete GetGeoData().take(id); }
};

[[noreturn]] void stop(const char *what)
{
    std::fprintf(stderr, "%s went wrong\n", what);
    std::abort();
}

void require(bool holds, const char *what)
{
    if (!holds)
        stop(what);
}

MRasterDataset &rasterOf(Host &host, int id)
{
    auto *source = host.GetGeoData().value(VORN_GetGeographyId(id))->GetDataSource();
    return *static_cast<MRasterDataSource *>(source)->GetRasterDataset(id);
}

int addGrid(int side)
{
    const auto n = static_cast<unsigned>(side);
    return VORN_CreateNewRasterGeography("grid", n, n, QRectF(-1.6, -1.6, 3.2, 3.2), kAlways,
                                         TF_Integer, "", "");
}

template <class T>
int addDataset(Host &host, int geography, DataType type, const std::vector<T> &cells)
{
    const int id = VORN_NewRasterDataset(geography, "cells", type, 1, 8 * sizeof(T), "");
    MRasterDataset &dataset = rasterOf(host, id);
    const MRasterBand band(kSide, kSide, type, 8 * sizeof(T), cells.data(), {});
    require(dataset.AddRasterValues(0, TimeStamp(kAlways), band, true, false), "adding a grid");
    return id;
}

std::vector<float> drawn(unsigned keys)
{
    std::mt19937 engine(1);
    std::vector<float> cells(kCount);
    for (float &cell : cells)
        cell = static_cast<float>(engine() % keys) / 8.0f;
    return cells;
}

GDALDataset *inMemory(std::vector<float> &cells)
{
    GDALDataset *file = GetGDALDriverManager()->GetDriverByName("MEM")->Create(
        "", kSide, kSide, 1, GDT_Float32, nullptr);
    require(file->GetRasterBand(1)->RasterIO(GF_Write, 0, 0, kSide, kSide, cells.data(), kSide,
                                             kSide, GDT_Float32, 0, 0)
                == CE_None,
            "filling GDAL's grid");
    return file;
}

/// Minimum, maximum, mean and deviation by plain loops.
std::array<double, 4> plainStatistics(const std::vector<float> &cells)
{
    double sum = 0.0;
    float low = cells.front();
    float high = cells.front();
    for (const float cell : cells) {
        sum += static_cast<double>(cell);
        low = std::min(low, cell);
        high = std::max(high, cell);
    }
    const double mean = sum / static_cast<double>(cells.size());
    double squares = 0.0;
    for (const float cell : cells)
        squares += (static_cast<double>(cell) - mean) * (static_cast<double>(cell) - mean);
    return {static_cast<double>(low), static_cast<double>(high), mean,
            std::sqrt(squares / static_cast<double>(cells.size()))};
}

void statistics(Host &host, int geography)
{
    std::vector<float> cells = drawn(1u << 30);
    const int id = addDataset(host, geography, RasterDecimalType, cells);
    double ours[4] = {};
    const double time = ratios::best(kRounds, kCount, [&] {
        rasterOf(host, id).SetMissingFlag(MissingFlag()); // drops the cached statistics
        require(VORN_GetMin(id, 0, 5, ours[0]) && VORN_GetMax(id, 0, 5, ours[1])
                    && VORN_GetMean(id, 0, 5, ours[2]) && VORN_GetStddev(id, 0, 5, ours[3]),
                "statistics");
    });
    std::array<double, 4> plain{};
    const double loop = ratios::best(kRounds, kCount, [&] { plain = plainStatistics(cells); });
    GDALDataset *file = inMemory(cells);
    double theirs[4] = {};
    const double gdal = ratios::best(kRounds, kCount, [&] {
        require(file->GetRasterBand(1)->ComputeStatistics(FALSE, &theirs[0], &theirs[1], &theirs[2],
                                                          &theirs[3], nullptr, nullptr)
                    == CE_None,
                "GDAL's statistics");
    });
    for (int i = 0; i < 4; ++i)
        require(std::abs(ours[i] - theirs[i]) <= 1e-9 * std::abs(theirs[i])
                    && std::abs(ours[i] - plain[static_cast<std::size_t>(i)])
                           <= 1e-9 * std::abs(ours[i]),
                "agreement of statistics");
    ratios::row("statistics of 4,000 x 4,000 floats, a cell", time, "GDAL, exact", gdal, 1.0 / 3);
    ratios::row("the same", time, "plain loops", loop, 1.4);

    QVector<double> values;
    MissingFlag flag;
    const double widened =
        ratios::best(kRounds, kCount, [&] { VORN_GetRasterDataAsDecimal(id, 0, 5, values, flag); });
    QVector<double> wide(kCount);
    const double widening = ratios::best(kRounds, kCount, [&] {
        double *to = wide.data();
        for (int i = 0; i < kCount; ++i)
            to[i] = static_cast<double>(cells[static_cast<std::size_t>(i)]);
    });
    require(values == wide, "agreement of values");
    ratios::row("all cells as decimals, a cell", widened, "plain widening loop", widening, 1.3);

    double sum = 0.0;
    double sumThere = 0.0;
    ratios::row("a value tallied, a cell",
                ratios::best(kRounds, kCount,
                             [&] {
                                 sum += rasterOf(host, id).GetConstRasterInfo(0, 5)->TallyValue(
                                     double(cells[77]));
                             }),
                "std::count",
                ratios::best(kRounds, kCount,
                             [&] {
                                 sumThere += static_cast<double>(
                                     std::count(cells.begin(), cells.end(), cells[77]));
                             }),
                1.2);
    require(sum == sumThere, "agreement of tallies");
    delete file;
    VORN_RemoveDataset(id);
}

/// A pixel of a file that fits into GDAL's cache, and of a file of four times the cache's size.
void pixelOfFile(Host &host, int geography)
{
    const QTemporaryDir directory;
    const QByteArray path = directory.filePath("grid.tif").toLocal8Bit();
    std::vector<float> cells = drawn(1u << 30);
    GDALDriver *driver = GetGDALDriverManager()->GetDriverByName("GTiff");
    GDALDataset *memory = inMemory(cells);
    char **options = CSLSetNameValue(nullptr, "TILED", "YES");
    GDALClose(driver->CreateCopy(path.constData(), memory, FALSE, options, nullptr, nullptr));
    CSLDestroy(options);
    delete memory;
    auto *file = static_cast<GDALDataset *>(GDALOpen(path.constData(), GA_ReadOnly));
    const int id = addDataset(host, geography, RasterDecimalType, cells);
    std::mt19937 engine(3);
    double sum = 0.0;
    const auto read = [&](int reads, auto get) {
        return ratios::best(kRounds, reads, [&] {
            for (int i = 0; i < reads; ++i) {
                const auto place = static_cast<unsigned>(engine() % kCount);
                get(place % kSide, place / kSide);
            }
        });
    };
    rasterOf(host, id).CheckOutRealization(0, 0);
    const double ours = read(100000, [&](unsigned column, unsigned row) {
        double value = 0.0;
        VORN_GetRasterValue(id, 0, column, row, 5, value);
        sum += value;
    });
    rasterOf(host, id).CheckInRealization(0, 0);
    const auto readPixel = [&](unsigned column, unsigned row) {
        double value = 0.0;
        if (file->GetRasterBand(1)->RasterIO(GF_Read, static_cast<int>(column),
                                             static_cast<int>(row), 1, 1, &value, 1, 1, GDT_Float64,
                                             0, 0)
            == CE_None)
            sum += value;
    };
    const auto cacheBefore = GDALGetCacheMax64();
    GDALSetCacheMax64(1 << 30);
    ratios::row("one cell", ours, "GDAL, a pixel in its cache", read(100000, readPixel), 1.0);
    file->FlushCache(FALSE);
    GDALSetCacheMax64(16 << 20);
    ratios::row("the same", ours, "GDAL, cache a quarter", read(2000, readPixel), 0.02);
    GDALSetCacheMax64(cacheBefore);
    require(sum < 1e300, "reading");
    GDALClose(file);
    VORN_RemoveDataset(id);
}

template <class T>
void frequencies(Host &host, int geography, DataType type, const std::vector<T> &cells,
                 const char *name, double target)
{
    const int id = addDataset(host, geography, type, cells);
    const double ours = ratios::best(kRounds, kCount, [&] { VORN_RecalculateDataFrequencies(id); });
    QMap<T, int> counts;
    const double theirs = ratios::best(1, kCount, [&] {
        for (const T cell : cells)
            ++counts[cell];
    });
    bool isCapped = false;
    require(VORN_GetUniqueDataCount(id, isCapped) == counts.size(), "agreement of tables");
    ratios::row(name, ours, "QMap, an increment a cell", theirs, target);
    const T wanted = cells[12345];
    qint64 sum = 0;
    qint64 sumThere = 0;
    const MRasterObservation *grid = rasterOf(host, id).GetConstRasterInfo(0, 5);
    if (type == RasterUnsignedType)
        ratios::row(
            "a value tallied, 8 bits, a cell",
            ratios::best(kRounds, kCount,
                         [&] { sum += grid->TallyValue(static_cast<quint64>(wanted)); }),
            "std::count",
            ratios::best(kRounds, kCount,
                         [&] { sumThere += std::count(cells.begin(), cells.end(), wanted); }),
            1.2);
    require(sum == sumThere, "agreement of tallies");
    VORN_RemoveDataset(id);
}

GEOSContextHandle_t geos()
{
    static const GEOSContextHandle_t handle = GEOS_init_r();
    return handle;
}

struct Destroy {
    void operator()(GEOSGeometry *geometry) const { GEOSGeom_destroy_r(geos(), geometry); }
};
using Geometry = std::unique_ptr<GEOSGeometry, Destroy>;

/// A coast: waves of every length around a circle.
QVector<QPointF> coast(int vertices)
{
    std::mt19937 random(3);
    std::uniform_real_distribution<double> phase(0.0, 6.283185307179586);
    std::vector<double> phases(64);
    for (double &value : phases)
        value = phase(random);
    QVector<QPointF> ring;
    for (int i = 0; i < vertices; ++i) {
        const double angle = 6.283185307179586 * i / vertices;
        double radius = 1.0;
        for (std::size_t k = 1; k < phases.size(); ++k)
            radius += 0.12 * std::sin(static_cast<double>(k) * angle + phases[k])
                      / static_cast<double>(k);
        ring.append(QPointF(std::cos(angle), std::sin(angle)) * radius);
    }
    return ring;
}

Geometry geometryOf(QVector<QPointF> ring)
{
    ring.append(ring.first());
    GEOSCoordSequence *sequence =
        GEOSCoordSeq_copyFromBuffer_r(geos(), reinterpret_cast<const double *>(ring.constData()),
                                      static_cast<unsigned>(ring.size()), 0, 0);
    return Geometry(GEOSGeom_createPolygon_r(geos(), GEOSGeom_createLinearRing_r(geos(), sequence),
                                             nullptr, 0));
}

/// A prepared polygon decides which cells are inside and outside; the areas of the others are
/// computed by intersection.
double areasByGeos(const GEOSGeometry *polygon, const GEOSPreparedGeometry *prepared)
{
    constexpr double kWidth = 3.2 / kPlaceSide;
    double sum = 0.0;
    for (int i = 0; i < kPlaceSide * kPlaceSide; ++i) {
        const double x = -1.6 + i % kPlaceSide * kWidth;
        const double y = -1.6 + i / kPlaceSide * kWidth;
        const Geometry cell(GEOSGeom_createRectangle_r(geos(), x, y, x + kWidth, y + kWidth));
        if (!GEOSPreparedIntersects_r(geos(), prepared, cell.get()))
            continue;
        double area = kWidth * kWidth;
        if (!GEOSPreparedContains_r(geos(), prepared, cell.get())) {
            const Geometry part(GEOSIntersection_r(geos(), polygon, cell.get()));
            GEOSArea_r(geos(), part.get(), &area);
        }
        sum += area;
    }
    return sum;
}

int centersByGeos(const GEOSPreparedGeometry *prepared)
{
    constexpr double kWidth = 3.2 / kPlaceSide;
    int count = 0;
    for (int i = 0; i < kPlaceSide * kPlaceSide; ++i) {
        const Geometry point(GEOSGeom_createPointFromXY_r(geos(),
                                                          -1.6 + (i % kPlaceSide + 0.5) * kWidth,
                                                          -1.6 + (i / kPlaceSide + 0.5) * kWidth));
        count += GEOSPreparedContains_r(geos(), prepared, point.get()) == 1;
    }
    return count;
}

void places()
{
    const int grid = addGrid(kPlaceSide);
    const QVector<QPointF> ring = coast(5000);
    const Geometry polygon = geometryOf(ring);
    const GEOSPreparedGeometry *prepared = GEOSPrepare_r(geos(), polygon.get());
    RasterPixels pixels;
    QVector<double> areas;
    const double query = ratios::best(kRounds, 1e6, [&] {
        require(VORN_QueryRasterWithPolygon(grid, {ring}, pixels, &areas), "the polygon query");
    });
    double whole = 0.0;
    const double overlay =
        ratios::best(1, 1e6, [&] { whole = areasByGeos(polygon.get(), prepared); });
    double sum = 0.0;
    for (const double area : qAsConst(areas))
        sum += area;
    // Rows are mirrored within the polygon's window: only cells inside both images are reported.
    require(sum > 0.9 * whole && sum <= whole * (1 + 1e-9), "agreement of areas");
    ratios::row("areas in 5,000 vertices, 2,000 x 2,000 cells", query,
                "GEOS, prepared, partial cells", overlay, 0.005, "ms");
    const double centers = ratios::best(kRounds, 1e6, [&] {
        require(VORN_GetPixelCentersInPolygon(grid, {ring}, pixels), "the query of centres");
    });
    int count = 0;
    const double points = ratios::best(1, 1e6, [&] { count = centersByGeos(prepared); });
    // The two may differ in cells on the border.
    require(std::abs(count - pixels.size()) <= 2, "agreement of centres");
    ratios::row("centres in them", centers, "GEOS, a prepared test a cell", points, 0.2, "ms");
    GEOSPreparedGeom_destroy_r(geos(), prepared);
}

} // namespace

int main()
{
    GDALAllRegister();
    const QTemporaryDir scratch;
    Host host;
    InitializeCInterface(&host);
    InitializeDataManager(scratch.path(), 512 << 20);
    ratios::head("Rasters");
    const int grid = addGrid(kSide);
    statistics(host, grid);
    pixelOfFile(host, grid);
    std::vector<quint8> bytes(kCount);
    std::mt19937 engine(4);
    for (quint8 &byte : bytes)
        byte = static_cast<quint8>(engine());
    frequencies(host, grid, RasterUnsignedType, bytes, "frequencies of 8 bits, a cell", 0.02);
    frequencies(host, grid, RasterDecimalType, drawn(5000),
                "frequencies of floats, 5,000 values, a cell", 0.2);
    places();
    VORN_UnloadProject();
    ClearDataManager();
    return ratios::missed > 0;
}
