// SPDX-License-Identifier: MIT
// What does a weight set cost over the search for its neighbours? Sets are calculated through the
// public functions, which leave all lists in the block store. They are compared with the search
// alone, without storing.
#include <QCoreApplication>
#include <QTemporaryDir>
#include <QtEndian>
#include <cmath>
#include <cstring>
#include <nanoflann.hpp>
#include <random>
#include <sys/resource.h>
#include "datainterface/AdjacencySet.h"
#include "datainterface/ControllerBase.h"
#include "datainterface/DataBlocks.h"
#include "datainterface/FrameAPI.h"
#include "datainterface/GeographyAPI.h"
#include "datainterface/MVectorData.h"
#include "datainterface/MissingData.h"
#include "datainterface/ProjectAPI.h"
#include "datainterface/RasterAPI.h"
#include "datainterface/WeightsAPI.h"
#include "fennimark/Fennims.h"
#include "ratios.h"

namespace {

constexpr int kRounds = 5;
constexpr int kCacheBytes = 64 << 20;

class Host : public ControllerBase {
public:
    Host()
    {
        InitializeCInterface(this);
        InitializeDataManager(mDirectory.filePath(QStringLiteral("blocks")), kCacheBytes);
    }
    ~Host() override
    {
        VORN_UnloadProject();
        ClearDataManager();
    }
    void RemoveGeography(int id) override { delete GetGeoData().take(id); }
    MVectorData &vectorData(int id) const
    {
        return dynamic_cast<MVectorData &>(*GetGeoData().value(id));
    }

private:
    QTemporaryDir mDirectory;
};

/// The same as ratios::best, with a `prepare` before each round that is not measured.
template <class Prepare, class Work>
double bestOf(int rounds, double count, Prepare prepare, Work work)
{
    double least = std::numeric_limits<double>::infinity();
    for (int i = 0; i < rounds; ++i) {
        prepare();
        least = std::min(least, ratios::best(1, count, work));
    }
    return least;
}

void precalculate(int set)
{
    if (!VORN_PrecalculateSpatialWeights(set, 5, false))
        std::abort();
}

double peakBytes()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return static_cast<double>(usage.ru_maxrss) * 1024.0;
}

// --- a grid of 1,000 by 1,000 ---

constexpr int kSide = 1000;

void listInMemory(std::vector<QVector<neighborDatum>> &lists)
{
    constexpr int kAround[8][2] = {{-1, 0},  {1, 0},  {0, -1}, {0, 1},
                                   {-1, -1}, {1, -1}, {-1, 1}, {1, 1}};
    lists.assign(kSide * kSide, {});
    for (int y = 0; y < kSide; ++y) {
        for (int x = 0; x < kSide; ++x) {
            QVector<neighborDatum> &list = lists[static_cast<size_t>(y * kSide + x)];
            list.reserve(8);
            for (const auto &step : kAround) {
                const int column = x + step[0];
                const int row = y + step[1];
                if (column >= 0 && column < kSide && row >= 0 && row < kSide)
                    list.append({row * kSide + column, 0.0F,
                                 static_cast<float>(std::atan2(-step[1], step[0])), 0.0F});
            }
            for (neighborDatum &one : list)
                one.weight = static_cast<float>(1.0 / list.size());
        }
    }
}

void benchRaster()
{
    const int grid = VORN_CreateNewRasterGeography(QStringLiteral("grid"), kSide, kSide,
                                                   QRectF(0, 0, kSide, kSide), {0, 9, true, true},
                                                   TF_Integer, QString(), QString());
    double ours = std::numeric_limits<double>::infinity();
    double grown = 0.0;
    for (int i = 0; i < kRounds; ++i) {
        const double before = peakBytes();
        const int set = VORN_CreateAdjacentPixelWeightSet(grid, {}, {}, QueenNeighbors,
                                                          RowStandardizedWeight, false, 1.0, 1.0);
        ours = std::min(ours, ratios::best(1, kSide * kSide, [set] { precalculate(set); }));
        grown = std::max(grown, peakBytes() - before);
        VORN_RemoveClusterSet(set);
        ResetDataManager(); // every round begins with an empty file
    }
    std::vector<QVector<neighborDatum>> lists;
    const double peer = bestOf(
        kRounds, kSide * kSide, [&] { lists.clear(); }, [&] { listInMemory(lists); });
    ratios::head("A grid of 1,000 by 1,000, for a cell");
    ratios::row("queen, lists stored", ours, "lists built in memory", peer, 4.0);
    ratios::row("memory that it takes", grown / 1048576.0, "cache and 100 bytes a cell",
                (kCacheBytes + 100.0 * kSide * kSide) / 1048576.0, 1.0, "MB");
}

// --- a lattice of 300 by 300 squares ---

constexpr int kSquares = 300;

int addLattice()
{
    VORN_StartNewVectorGeography(QRectF(0, 0, kSquares, kSquares), 0, 19, -1);
    for (int i = 0; i < kSquares * kSquares; ++i) {
        const double x = i % kSquares;
        const double y = i / kSquares;
        // One square changes at 10, so there are two maps. Rounds alternate between them, because
        // the geometry library caches the contiguity of the last one.
        const qint64 end = i == 0 ? 10 : 19;
        VORN_AddPolygonToChain(static_cast<unsigned int>(VORN_CreateNewObjectChain()),
                               QList<QPointF>{{x, y}, {x + 1, y}, {x + 1, y + 1}, {x, y + 1}},
                               {0, end, true, true});
    }
    return VORN_FinishVectorGeography(QStringLiteral("lattice"), QString(), TF_Integer);
}

QVector<neighborDatum> decoded(const QByteArray &block)
{
    const char *from = block.constData();
    QVector<neighborDatum> list(qFromBigEndian<qint32>(from));
    from += 4;
    const auto number = [](const char *at) {
        const auto bits = qFromBigEndian<quint64>(at);
        double value = 0.0;
        std::memcpy(&value, &bits, sizeof value);
        return static_cast<float>(value);
    };
    for (neighborDatum &one : list) {
        one = {qFromBigEndian<qint32>(from), number(from + 4), number(from + 12),
               number(from + 20)};
        from += 28;
    }
    return list;
}

void benchReading(int set)
{
    const WeightsAtT handle = VORN_GetSpatialWeightsHandle(set, 5, false);
    constexpr unsigned int kCount = kSquares * kSquares;
    QVector<QByteArray> blocks;
    QByteArray block;
    for (int id = 0; static_cast<unsigned int>(blocks.size()) < kCount; ++id)
        if (ReadDataBlock(id, block))
            blocks.append(QByteArray(block.constData(), block.size()));
    double sum = 0.0;
    const double ours = ratios::best(kRounds, kCount, [&] {
        QVector<neighborDatum> list;
        const VORN_MissingData none;
        for (unsigned int i = 0; i < kCount; ++i) {
            VORN_GetSpatialWeights(handle, i, list, none);
            sum += static_cast<double>(list.last().weight);
        }
    });
    const double peer = ratios::best(kRounds, kCount, [&] {
        for (const QByteArray &bytes : qAsConst(blocks))
            sum -= static_cast<double>(decoded(bytes).last().weight);
    });
    if (std::fabs(sum) > 1.0)
        std::abort();
    ratios::row("reading a list through a handle", ours, "decoding the same bytes", peer, 1.5);
}

void benchLattice(const Host &host)
{
    const int id = addLattice();
    MVectorData &geography = host.vectorData(id);
    Fennims &fennims = *geography.GetFennims();
    const auto create = [id](bool queen) {
        return VORN_CreatePolygonWeightSet(id, {}, {}, 1, queen, RowStandardizedWeight, false, 1,
                                           1);
    };
    const int queen = create(true);
    const int rook = create(false);
    QMap<int, QVector<int>> neighbors;
    const auto forget = [&] {
        geography.ClearSpatialWeightSets();
        ResetDataManager();
        fennims.CalculatePolygonAdjacencies(true, 15, 1, false, neighbors, nullptr);
        neighbors.clear();
    };
    const double count = kSquares * kSquares;
    const double ours = bestOf(kRounds, count, forget, [&] {
        precalculate(queen);
        precalculate(rook);
    });
    const double peer = bestOf(kRounds, count, forget, [&] {
        fennims.CalculatePolygonAdjacencies(true, 5, 1, false, neighbors, nullptr);
        fennims.CalculatePolygonAdjacencies(false, 5, 1, false, neighbors, nullptr);
    });
    ratios::head("A lattice of 300 by 300 squares, for a square");
    ratios::row("queen and rook, lists stored", ours, "contiguity alone", peer, 2.0);
    geography.ClearSpatialWeightSets();
    ResetDataManager();
    benchReading(queen);
}

// --- 1,000,000 points ---

constexpr int kPoints = 1000000;
constexpr int kNearest = 5;

struct Cloud {
    std::vector<double> x;
    std::vector<double> y;

    size_t kdtree_get_point_count() const { return x.size(); }
    double kdtree_get_pt(size_t at, size_t axis) const { return axis == 0 ? x[at] : y[at]; }
    template <class Box> bool kdtree_get_bbox(Box &) const { return false; }
};
using FlannTree = nanoflann::KDTreeSingleIndexAdaptor<nanoflann::L2_Simple_Adaptor<double, Cloud>,
                                                      Cloud, 2, unsigned>;

int addPoints(const Cloud &cloud)
{
    VORN_StartNewVectorGeography(QRectF(0, 0, 1, 1), 0, 9, -1);
    for (size_t i = 0; i < cloud.x.size(); ++i)
        VORN_AddPointToChain(static_cast<unsigned int>(VORN_CreateNewObjectChain()),
                             QPointF(cloud.x[i], cloud.y[i]), {0, 9, true, true});
    return VORN_FinishVectorGeography(QStringLiteral("points"), QString(), TF_Integer);
}

void benchPoints(const Host &host)
{
    Cloud cloud;
    std::mt19937_64 random(42);
    std::uniform_real_distribution<double> unit;
    for (int i = 0; i < kPoints; ++i) {
        cloud.x.push_back(unit(random));
        cloud.y.push_back(unit(random));
    }
    const int id = addPoints(cloud);
    FlannTree tree(2, cloud, nanoflann::KDTreeSingleIndexAdaptorParams(10));
    tree.buildIndex();
    const double range = std::sqrt(10.0 / (3.14159265358979 * kPoints));
    const int nearest = VORN_CreateNearestNeighborWeightSet(id, {}, {}, kNearest,
                                                            RowStandardizedWeight, false, 1, 1);
    const int within =
        VORN_CreateRangeWeightSet(id, {}, {}, range, RowStandardizedWeight, false, 1, 1);
    const auto forget = [&] {
        host.vectorData(id).ClearSpatialWeightSets();
        ResetDataManager();
    };
    const auto ours = [&](int set) {
        return bestOf(3, kPoints, forget, [set] { precalculate(set); });
    };
    size_t found = 0;
    // The point itself is among the hits, so one more is requested.
    const double flannNearest = ratios::best(3, kPoints, [&] {
        unsigned ids[kNearest + 1];
        double distances[kNearest + 1];
        for (size_t i = 0; i < kPoints; ++i) {
            const double place[2] = {cloud.x[i], cloud.y[i]};
            found += tree.knnSearch(place, kNearest + 1, ids, distances);
        }
    });
    const double flannWithin = ratios::best(3, kPoints, [&] {
        std::vector<std::pair<unsigned, double>> hits;
        for (size_t i = 0; i < kPoints; ++i) {
            const double place[2] = {cloud.x[i], cloud.y[i]};
            found += tree.radiusSearch(place, range * range, hits, nanoflann::SearchParams());
        }
    });
    if (found == 0)
        std::abort();
    ratios::head("1,000,000 points at random, for a point");
    ratios::row("nearest 5 with ties, tree made, lists stored", ours(nearest),
                "nanoflann, queries alone", flannNearest, 1.2);
    ratios::row("about 10 in range, tree made, lists stored", ours(within),
                "nanoflann, queries alone", flannWithin, 1.2);
}

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    const auto wants = [argc, argv](const char *group) {
        return argc < 2 || std::any_of(argv + 1, argv + argc, [group](const char *word) {
                   return std::strcmp(word, group) == 0;
               });
    };
    const Host host;
    if (wants("raster"))
        benchRaster();
    if (wants("lattice"))
        benchLattice(host);
    if (wants("points"))
        benchPoints(host);
    return ratios::missed;
}
