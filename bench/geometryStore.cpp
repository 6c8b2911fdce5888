// SPDX-License-Identifier: MIT
// The record store of the geometry library against well-known indexes: boxes in space and time,
// exact rectangles, nearest polygons, contiguity, opening a file, what a live object and a kept
// polygon cost.
#include <QDataStream>
#include <QFile>
#include <QTemporaryDir>
#include <boost/geometry.hpp>
#include <boost/geometry/index/rtree.hpp>
#include <boost/iterator/function_output_iterator.hpp>
#include <gdal.h>
#include <geos_c.h>
#include <malloc.h>
#include <memory>
#include <ogr_api.h>
#include <ogr_srs_api.h>
#include <random>
#include <sys/wait.h>
#include <unistd.h>
#include "base/hilbertOrder.h"
#include "fennimark/FMPoint.h"
#include "fennimark/FMPolygon.h"
#include "fennimark/Fennims.h"
#include "fennimark/VORNBuilder.h"
#include "file/geometryFile.h"
#include "ratios.h"
#include "store/contiguity.h"

namespace {

namespace bg = boost::geometry;
namespace bgi = boost::geometry::index;
using namespace fennimark;
template <int Dimensions>
using BoostPoint = bg::model::point<double, Dimensions, bg::cs::cartesian>;
template <int Dimensions> using BoostBox = bg::model::box<BoostPoint<Dimensions>>;
template <int Dimensions>
using BoostTree = bgi::rtree<std::pair<BoostBox<Dimensions>, int>, bgi::quadratic<16>>;

constexpr int kRounds = 5;
std::mt19937_64 random(20240607);
double uniform(double low, double high)
{
    return std::uniform_real_distribution<double>(low, high)(random);
}

using Ring = QVector<QPointF>;

Ring rect(double x, double y, double width, double height)
{
    return {{x, y}, {x + width, y}, {x + width, y + height}, {x, y + height}};
}

Ring star(double x, double y, double radius, int vertices)
{
    Ring ring;
    for (int i = 0; i < vertices; ++i) {
        const double angle = 2 * M_PI * i / vertices, r = radius * uniform(0.7, 1);
        ring.append({x + r * std::cos(angle), y + r * std::sin(angle)});
    }
    return ring;
}

struct Shape {
    Ring ring;
    timeRange range{0, 1, 0xFF};
};

QString scratchFile()
{
    static QTemporaryDir directory;
    return directory.filePath(QStringLiteral("geometry"));
}

/// The shapes as a geography; chain i has shapes i * each to (i + 1) * each - 1.
std::unique_ptr<Fennims> opened(const std::vector<Shape> &shapes, double size, double time,
                                int each = 1)
{
    VORNBuilder builder(RectInT{Rect2D{0, size, 0, size}, timeRange{0, time, 0xFF}}, nullptr,
                        nullptr);
    for (std::size_t i = 0; i < shapes.size(); i += std::size_t(each)) {
        QVector<TreeObject *> objects;
        QVector<timeRange> ranges;
        for (std::size_t j = i; j < i + std::size_t(each); ++j) {
            objects.append(new FMPolygon(shapes[j].ring));
            ranges.append(shapes[j].range);
        }
        builder.CreateChain(objects, ranges, -1);
    }
    auto fennims = std::make_unique<Fennims>();
    if (!builder.Finish(QFile::encodeName(scratchFile()).constData(), nullptr))
        return nullptr;
    QFile file(scratchFile());
    file.open(QIODevice::ReadOnly);
    QDataStream in(&file);
    return fennims->Open(in, nullptr) ? std::move(fennims) : nullptr;
}

Rect2D boundsOf(const Ring &ring)
{
    return vertexBounds(ring.constData(), quint32(ring.size()));
}

template <int Dimensions> BoostBox<Dimensions> boostBox(const Rect2D &box, double start, double end)
{
    BoostBox<Dimensions> result;
    bg::set<bg::min_corner, 0>(result, box.xMin);
    bg::set<bg::max_corner, 0>(result, box.xMax);
    bg::set<bg::min_corner, 1>(result, box.yMin);
    bg::set<bg::max_corner, 1>(result, box.yMax);
    if constexpr (Dimensions == 3) {
        bg::set<bg::min_corner, 2>(result, start);
        bg::set<bg::max_corner, 2>(result, end);
    }
    return result;
}

template <int Dimensions> BoostTree<Dimensions> boostTree(const std::vector<Shape> &shapes)
{
    std::vector<std::pair<BoostBox<Dimensions>, int>> values;
    for (const Shape &shape : shapes)
        values.emplace_back(
            boostBox<Dimensions>(boundsOf(shape.ring), shape.range.start, shape.range.end),
            int(values.size()));
    return BoostTree<Dimensions>(values);
}

/// GEOS geometries of rings, its tree over them, all freed in the end.
class GeosShapes {
public:
    explicit GeosShapes(const std::vector<Shape> &shapes) : mContext(GEOS_init_r())
    {
        for (const Shape &shape : shapes)
            geometries.push_back(polygon(shape.ring));
    }
    ~GeosShapes()
    {
        for (const GEOSPreparedGeometry *one : mPrepared)
            GEOSPreparedGeom_destroy_r(mContext, one);
        if (tree)
            GEOSSTRtree_destroy_r(mContext, tree);
        for (GEOSGeometry *one : geometries)
            GEOSGeom_destroy_r(mContext, one);
        GEOS_finish_r(mContext);
    }
    Q_DISABLE_COPY(GeosShapes)
    GEOSGeometry *polygon(Ring ring) const
    {
        ring.append(ring.first());
        GEOSCoordSequence *sequence = GEOSCoordSeq_copyFromBuffer_r(
            mContext, reinterpret_cast<const double *>(ring.constData()), unsigned(ring.size()), 0,
            0);
        return GEOSGeom_createPolygon_r(mContext, GEOSGeom_createLinearRing_r(mContext, sequence),
                                        nullptr, 0);
    }
    void index()
    {
        tree = GEOSSTRtree_create_r(mContext, 10);
        for (std::size_t i = 0; i < geometries.size(); ++i)
            GEOSSTRtree_insert_r(mContext, tree, geometries[i], reinterpret_cast<void *>(i));
    }
    void prepare()
    {
        for (const GEOSGeometry *one : geometries)
            mPrepared.push_back(GEOSPrepare_r(mContext, one));
    }
    template <class Visit> void query(const GEOSGeometry *box, Visit visit) const
    {
        GEOSSTRtree_query_r(
            mContext, tree, box,
            [](void *item, void *context) {
                (*static_cast<Visit *>(context))(reinterpret_cast<std::size_t>(item));
            },
            &visit);
    }
    GEOSContextHandle_t context() const { return mContext; }
    const GEOSPreparedGeometry *prepared(std::size_t i) const { return mPrepared[i]; }

    std::vector<GEOSGeometry *> geometries;
    GEOSSTRtree *tree = nullptr;

private:
    GEOSContextHandle_t mContext;
    std::vector<const GEOSPreparedGeometry *> mPrepared;
};

volatile std::size_t sink; // receives the results, so that no query is optimized away

// Boxes in space and time

constexpr int kRecords = 100000;
constexpr double kSize = 1000;

enum class Changes { Together, Apart };

/// Objects whose observations follow one another without a gap, either all at the same times or
/// each object at its own times.
std::vector<Shape> timedBoxes(int each, Changes changes = Changes::Together)
{
    std::vector<Shape> shapes;
    for (int i = 0; i < kRecords / each; ++i) {
        const double x = uniform(0, kSize), y = uniform(0, kSize);
        std::vector<double> times;
        for (int j = 0; j <= each; ++j) {
            const bool inner = j > 0 && j < each;
            times.push_back(changes == Changes::Apart && inner ? uniform(0, 1000)
                                                               : j * 1000.0 / each);
        }
        std::sort(times.begin(), times.end());
        for (int j = 0; j < each; ++j)
            shapes.push_back(
                {rect(x + uniform(-5, 5), y + uniform(-5, 5), uniform(0.5, 3), uniform(0.5, 3)),
                 {times[std::size_t(j)], times[std::size_t(j) + 1], 0xF0}});
    }
    return shapes;
}

template <int Dimensions>
void timedQueries(int each, Changes changes, double instantTarget, double spanTarget,
                  double wholeTarget)
{
    const std::vector<Shape> shapes = timedBoxes(each, changes);
    const std::unique_ptr<Fennims> fennims = opened(shapes, kSize, 1000, each);
    const BoostTree<Dimensions> peer = boostTree<Dimensions>(shapes);
    struct Query {
        Rect2D box;
        double time;
    };
    std::vector<Query> queries(2000);
    for (Query &query : queries) {
        const double x = uniform(0, kSize - 10), y = uniform(0, kSize - 10);
        query = {{x, x + 10, y, y + 10}, std::floor(uniform(0, 1000))};
    }
    QVector<int> records;
    std::vector<int> ids;
    const auto row = [&](const char *question, double target, auto ask, auto window) {
        const auto [ours, boost] = ratios::bestInTurns(
            kRounds, double(queries.size()),
            [&] {
                for (const Query &query : queries) {
                    ask(query);
                    sink = sink + std::size_t(records.size());
                }
            },
            [&] {
                for (const Query &query : queries) {
                    ids.clear();
                    peer.query(bgi::intersects(window(query)),
                               boost::make_function_output_iterator(
                                   [&ids](const auto &value) { ids.push_back(value.second); }));
                    sink = sink + ids.size();
                }
            });
        char name[64];
        std::snprintf(name, sizeof name, "%s, %d observations%s", question, each,
                      changes == Changes::Apart ? ", own times" : "");
        ratios::row(name, ours, Dimensions == 2 ? "Boost rtree 2D" : "Boost rtree 3D", boost,
                    target);
    };
    row(
        "box at an instant", instantTarget,
        [&](const Query &q) { fennims->OverlapsMBRs(q.box, qint64(q.time), records); },
        [](const Query &q) { return boostBox<Dimensions>(q.box, q.time, q.time); });
    if (each == 1)
        return;
    row(
        "box over a time range", spanTarget,
        [&](const Query &q) {
            fennims->mTree->Overlaps(RectInT{q.box, timeRange{q.time, q.time + 50, 0xFF}}, records);
        },
        [](const Query &q) { return boostBox<Dimensions>(q.box, q.time, q.time + 50); });
    queries.resize(100);
    const Rect2D whole{-10, kSize + 10, -10, kSize + 10};
    row(
        "whole extent at an instant", wholeTarget,
        [&](const Query &q) { fennims->OverlapsMBRs(whole, qint64(q.time), records); },
        [&](const Query &q) { return boostBox<Dimensions>(whole, q.time, q.time); });
}

void boxRows()
{
    timedQueries<2>(1, Changes::Together, 0.7, 0, 0);
    timedQueries<3>(10, Changes::Together, 0.45, 0.7, 0.35);
    timedQueries<3>(100, Changes::Together, 0.55, 0.85, 0.35);
    timedQueries<3>(10, Changes::Apart, 0.8, 0.8, 1.2);
    timedQueries<3>(100, Changes::Apart, 0.8, 0.85, 1.2);
}

void indexRows()
{
    const std::vector<Shape> shapes = timedBoxes(1);
    std::vector<std::pair<BoostBox<2>, int>> values;
    std::vector<Rect2D> boxes;
    for (const Shape &shape : shapes) {
        boxes.push_back(boundsOf(shape.ring));
        values.emplace_back(boostBox<2>(boxes.back(), 0, 0), int(values.size()));
    }
    const double ours = ratios::best(kRounds, 1e6, [&] {
        std::vector<RecordCenter> centers;
        for (const Rect2D &box : boxes)
            centers.push_back({box.xMin / 2 + box.xMax / 2, box.yMin / 2 + box.yMax / 2, 0});
        const auto order =
            hilbertOrder(centers, RectInT{Rect2D{0, kSize, 0, kSize}, timeRange{}}, false);
        std::vector<Rect2D> sorted;
        std::vector<LeafHull> hulls((boxes.size() + kRecordsPerLeaf - 1) / kRecordsPerLeaf);
        for (const quint32 i : order) {
            widen(hulls[sorted.size() / kRecordsPerLeaf].box, boxes[i]);
            sorted.push_back(boxes[i]);
        }
        sink = sink + BoxTree::build(hulls).size();
    });
    const double peer =
        ratios::best(kRounds, 1e6, [&] { sink = sink + BoostTree<2>(values).size(); });
    ratios::row("box tree build, 100k", ours, "Boost rtree, packed", peer, 1.2, "ms");
    for (const int each : {1, 10}) {
        const std::unique_ptr<Fennims> fennims = opened(timedBoxes(each), kSize, 1000, each);
        const double bytes = double(StoreAccess::store(*fennims->mTree).columnBytes()) / kRecords;
        ratios::row(each == 1 ? "all columns, one time, a record"
                              : "all columns, 10 observations, a record",
                    bytes, "boxes, times, id bare", each == 1 ? 32 + 4 : 32 + 16 + 4, 1.5, "B");
    }
}

// Exact queries

void exactRows()
{
    std::vector<Shape> shapes;
    for (int i = 0; i < 30000; ++i)
        shapes.push_back(
            {star(uniform(0, kSize), uniform(0, kSize), uniform(1, 4), 32), {0, 1, 0xFF}});
    const std::unique_ptr<Fennims> fennims = opened(shapes, kSize, 1);
    GeosShapes geos(shapes);
    geos.index();
    geos.prepare();
    std::vector<Rect2D> windows;
    for (int i = 0; i < 2000; ++i) {
        const double x = uniform(0, kSize), y = uniform(0, kSize);
        windows.push_back({x, x + 5, y, y + 5});
    }
    std::vector<GEOSGeometry *> geosWindows;
    for (const Rect2D &w : windows)
        geosWindows.push_back(geos.polygon(rect(w.xMin, w.yMin, 5, 5)));
    QVector<int> records;
    std::size_t oursFound = 0, theirsFound = 0;
    const auto [ours, peer] = ratios::bestInTurns(
        kRounds, double(windows.size()),
        [&] {
            oursFound = 0;
            for (const Rect2D &window : windows) {
                fennims->RectQuery(window, 0, records);
                oursFound += std::size_t(records.size());
            }
        },
        [&] {
            theirsFound = 0;
            for (const GEOSGeometry *window : geosWindows) {
                geos.query(window, [&](std::size_t i) {
                    theirsFound +=
                        GEOSPreparedIntersects_r(geos.context(), geos.prepared(i), window) == 1;
                });
            }
        });
    if (oursFound != theirsFound)
        std::printf("rectangle queries differ: %zu and %zu\n", oursFound, theirsFound);
    ratios::row("rectangle query, exact, 30k polygons", ours, "GEOS STRtree + prepared", peer, 0.6);

    const double nearest = ratios::best(kRounds, double(windows.size()), [&] {
        for (const Rect2D &w : windows) {
            fennims->CalculateNearestNeighborsToPoint(QPointF(w.xMin, w.yMin), 0, 1, records);
            sink = sink + std::size_t(records[0]);
        }
    });
    std::vector<GEOSGeometry *> points;
    for (const Rect2D &w : windows)
        points.push_back(GEOSGeom_createPointFromXY_r(geos.context(), w.xMin, w.yMin));
    // The tree over the geometries themselves, so that its own distance function can be used.
    GEOSSTRtree *tree = GEOSSTRtree_create_r(geos.context(), 10);
    for (GEOSGeometry *one : geos.geometries)
        GEOSSTRtree_insert_r(geos.context(), tree, one, one);
    const double geosNearest = ratios::best(2, double(windows.size()), [&] {
        for (const GEOSGeometry *point : points)
            sink =
                sink + std::size_t(GEOSSTRtree_nearest_r(geos.context(), tree, point) != nullptr);
    });
    ratios::row("nearest polygon to a point", nearest, "GEOS STRtree nearest", geosNearest, 0.3);
    GEOSSTRtree_destroy_r(geos.context(), tree);
    for (GEOSGeometry *one : points)
        GEOSGeom_destroy_r(geos.context(), one);
    for (GEOSGeometry *one : geosWindows)
        GEOSGeom_destroy_r(geos.context(), one);
}

// Contiguity

/// Both relations from rings, including the index: in milliseconds, with the numbers of pairs.
double oursContiguity(const std::vector<Shape> &shapes, double size, int rounds, std::size_t &queen,
                      std::size_t &rook)
{
    return ratios::best(rounds, 1e6, [&] {
        StoreContent content;
        content.kind = ObjectKind::Polygon;
        content.times = {timeRange{0, 1, 0xFF}};
        std::vector<RecordCenter> centers;
        for (const Shape &shape : shapes) {
            const Rect2D box = boundsOf(shape.ring);
            centers.push_back({box.xMin / 2 + box.xMax / 2, box.yMin / 2 + box.yMax / 2, 0});
        }
        for (const quint32 i :
             hilbertOrder(centers, RectInT{Rect2D{0, size, 0, size}, timeRange{}}, false)) {
            const auto count = quint32(shapes[i].ring.size());
            GeometryView view;
            view.vertices = shapes[i].ring.constData();
            view.partSizes = &count;
            view.partCount = 1;
            view.vertexCount = count;
            view.bounds = boundsOf(shapes[i].ring);
            content.addPayload(view);
            content.timeIndex.push_back(0);
            content.chainOf.push_back(qint32(i));
            content.observations.push_back(quint32(content.observations.size()) + 1);
        }
        RecordStore store;
        store.assign(std::move(content));
        ContiguityGraph graph;
        graph.build(store, ContactReaches(store), 0, nullptr);
        queen = rook = 0;
        for (quint32 i = 0; i < store.recordCount(); ++i) {
            queen += graph.bordering(i, true).size();
            rook += graph.bordering(i, false).size();
        }
    });
}

/// By GEOS's tree and prepared geometries: the touching pairs, and those of them whose boundaries
/// share a line.
double geosContiguity(const std::vector<Shape> &shapes, bool withRook, std::size_t &queen,
                      std::size_t &rook)
{
    GeosShapes geos(shapes);
    return ratios::best(1, 1e6, [&] {
        geos.index();
        geos.prepare();
        queen = rook = 0;
        for (std::size_t i = 0; i < shapes.size(); ++i) {
            geos.query(geos.geometries[i], [&](std::size_t j) {
                if (j <= i
                    || GEOSPreparedIntersects_r(geos.context(), geos.prepared(i),
                                                geos.geometries[j])
                           != 1)
                    return;
                queen += 2;
                if (withRook)
                    rook += 2
                            * std::size_t(GEOSRelatePattern_r(geos.context(), geos.geometries[i],
                                                              geos.geometries[j], "****1****")
                                          == 1);
            });
        }
    });
}

void contiguityRow(const char *name, const std::vector<Shape> &shapes, double size, bool withRook,
                   double target)
{
    std::size_t queen = 0, rook = 0, geosQueen = 0, geosRook = 0;
    const double ours = oursContiguity(shapes, size, kRounds, queen, rook);
    const double peer = geosContiguity(shapes, withRook, geosQueen, geosRook);
    ratios::row(name, ours, withRook ? "GEOS tree + prepared + relate" : "same, queen only", peer,
                target, "ms");
    std::printf("    pairs: queen %zu, rook %zu; GEOS, which knows no slack: %zu, %zu\n", queen / 2,
                rook / 2, geosQueen / 2, geosRook / 2);
}

void oneNeighbourhood(int vertices, double target)
{
    std::vector<Shape> squares;
    const int side = vertices / 4;
    for (int i = 0; i < 10000; ++i) {
        Ring ring;
        const double x = i % 100, y = i / 100;
        for (int k = 0; k < vertices; ++k) {
            const double t = double(k % side) / side;
            const QPointF at[4] = {{x + t, y}, {x + 1, y + t}, {x + 1 - t, y + 1}, {x, y + 1 - t}};
            ring.append(at[k / side]);
        }
        squares.push_back({ring, {0, 1, 0xFF}});
    }
    GeosShapes geos(squares);
    geos.index();
    geos.query(geos.geometries[0], [](std::size_t) {}); // the tree is packed by its first query
    // After 64 queries about one time all results come from one graph. So every round has its own
    // geography, with which half of these queries have been made before.
    constexpr int kAsked = 30;
    const auto ask = [](Fennims &geography) {
        for (int i = 0; i < kAsked; ++i) {
            const int record = geography.GetChainById(1000 + 97 * i)->GetObservation(0).second;
            sink =
                sink
                + std::size_t(geography.CalculatePolygonAdjacencies(record, 0, true, 1, {}).size());
        }
    };
    std::vector<std::unique_ptr<Fennims>> geographies;
    for (int round = 0; round < kRounds; ++round) {
        geographies.push_back(opened(squares, 100, 1));
        ask(*geographies.back());
    }
    auto fresh = geographies.begin();
    const auto [ours, peer] = ratios::bestInTurns(
        kRounds, kAsked, [&] { ask(**fresh++); },
        [&] {
            for (int i = 0; i < kAsked; ++i) {
                const GEOSGeometry *ego = geos.geometries[std::size_t(1000 + 97 * i)];
                geos.query(ego, [&](std::size_t j) {
                    sink =
                        sink
                        + std::size_t(GEOSTouches_r(geos.context(), ego, geos.geometries[j]) == 1);
                });
            }
        });
    char name[64];
    std::snprintf(name, sizeof name, "one polygon's neighbours, %d vertices", vertices);
    ratios::row(name, ours, "GEOS tree + touches", peer, target);
}

void contiguityRows()
{
    for (const int n : {100, 300, 500}) {
        std::vector<Shape> squares;
        for (int i = 0; i < n * n; ++i)
            squares.push_back({rect(i % n, i / n, 1, 1), {0, 1, 0xFF}});
        std::shuffle(squares.begin(), squares.end(), random);
        char name[64];
        std::snprintf(name, sizeof name, "queen + rook, %d squared", n);
        contiguityRow(name, squares, n, n < 500, n < 500 ? 0.1 : 0.4);
    }
    std::vector<Shape> wall;
    for (int i = 0; i < 90000; ++i) {
        const int row = i / 300;
        const double x = i % 300 + (row % 2) * 0.5, y = row * 0.5, c = std::cos(M_PI / 6),
                     s = std::sin(M_PI / 6);
        Ring brick = rect(x, y, 1, 0.5);
        for (QPointF &vertex : brick)
            vertex = QPointF(vertex.x() * c - vertex.y() * s, vertex.x() * s + vertex.y() * c);
        wall.push_back({brick, {0, 1, 0xFF}});
    }
    contiguityRow("T-junction wall, 90k, queen + rook", wall, 400, false, 0.9);
    std::vector<Shape> round;
    for (int i = 0; i < 10000; ++i) {
        Ring ring; // a square with 16 vertices on each side
        const double x = i % 100, y = i / 100;
        for (int k = 0; k < 64; ++k) {
            const double t = (k % 16) / 16.0;
            const QPointF at[4] = {{x + t, y}, {x + 1, y + t}, {x + 1 - t, y + 1}, {x, y + 1 - t}};
            ring.append(at[k / 16]);
        }
        round.push_back({ring, {0, 1, 0xFF}});
    }
    contiguityRow("queen + rook, 10k polygons of 64 vertices", round, 100, true, 0.1);
    oneNeighbourhood(4, 0.08);
    oneNeighbourhood(32, 0.08);
}

// Files and live objects

void fileRows()
{
    std::vector<Shape> shapes;
    for (int i = 0; i < 100000; ++i)
        shapes.push_back({star(uniform(0, kSize), uniform(0, kSize), 2, 32), {0, 1, 0xFF}});
    const std::unique_ptr<Fennims> fennims = opened(shapes, kSize, 1);
    GDALAllRegister();
    const QByteArray path = QFile::encodeName(scratchFile() + QStringLiteral(".fgb"));
    GDALDriverH driver = GDALGetDriverByName("FlatGeobuf");
    GDALDatasetH written = GDALCreate(driver, path.constData(), 0, 0, 0, GDT_Unknown, nullptr);
    OGRLayerH layer = GDALDatasetCreateLayer(written, "layer", nullptr, wkbPolygon, nullptr);
    for (const Shape &shape : shapes) {
        OGRGeometryH ring = OGR_G_CreateGeometry(wkbLinearRing);
        for (const QPointF &vertex : shape.ring)
            OGR_G_AddPoint_2D(ring, vertex.x(), vertex.y());
        OGR_G_AddPoint_2D(ring, shape.ring[0].x(), shape.ring[0].y());
        OGRGeometryH polygon = OGR_G_CreateGeometry(wkbPolygon);
        OGR_G_AddGeometryDirectly(polygon, ring);
        OGRFeatureH feature = OGR_F_Create(OGR_L_GetLayerDefn(layer));
        OGR_F_SetGeometryDirectly(feature, polygon);
        sink = sink + std::size_t(OGR_L_CreateFeature(layer, feature));
        OGR_F_Destroy(feature);
    }
    GDALClose(written);
    const auto [ours, peer] = ratios::bestInTurns(
        kRounds, 1e6,
        [] {
            QFile file(scratchFile());
            file.open(QIODevice::ReadOnly);
            QDataStream in(&file);
            Fennims again;
            sink = sink + std::size_t(again.Open(in, nullptr));
        },
        [&] {
            GDALDatasetH dataset =
                GDALOpenEx(path.constData(), GDAL_OF_VECTOR, nullptr, nullptr, nullptr);
            OGRLayerH read = GDALDatasetGetLayer(dataset, 0);
            while (OGRFeatureH feature = OGR_L_GetNextFeature(read)) {
                sink = sink + std::size_t(OGR_F_GetGeometryRef(feature) != nullptr);
                OGR_F_Destroy(feature);
            }
            GDALClose(dataset);
        });
    ratios::row("Open, 100k polygons of 32 vertices, all checks", ours, "OGR, FlatGeobuf", peer,
                0.8, "ms");

    std::vector<int> ids(10000);
    for (int &id : ids)
        id = 1 + int(uniform(0, 99999));
    const auto pass = [&](auto use) {
        return ratios::best(kRounds, double(ids.size()), [&] {
            for (const int id : ids) {
                HilbertTreeRecord *record = fennims->mTree->CheckOutRecord(id, false);
                use(record->GetTreeObject(fennims->mTree));
                record->ReturnTreeObject(fennims->mTree);
                fennims->mTree->CheckInRecord(id);
            }
        });
    };
    const double view =
        pass([](TreeObject *object) { sink = sink + std::size_t(object != nullptr); });
    const double copy = pass([](TreeObject *object) { delete object->Copy(); }) - view;
    ratios::row("check-out to check-in, live view", view, "allowed", 80, 1.0);
    ratios::row("the same", view, "an owning copy", copy, 1.0);
}

void heapRow(int vertices)
{
    constexpr int kCount = 100000;
    std::vector<Shape> shapes;
    for (int i = 0; i < kCount; ++i)
        shapes.push_back({star(i % 316, i / 316, 0.5, vertices), {0, 1, 0xFF}});
    (void)opened(shapes, 316, 1);
    QFile file(scratchFile());
    file.open(QIODevice::ReadOnly);
    QDataStream in(&file);
    malloc_trim(0);
    const std::size_t before = mallinfo2().uordblks;
    Fennims fennims;
    fennims.Open(in, nullptr);
    const double ours = double(mallinfo2().uordblks - before) / kCount;
    const std::size_t geosBefore = mallinfo2().uordblks;
    const GeosShapes geos(shapes);
    const double peer = double(mallinfo2().uordblks - geosBefore) / kCount;
    char name[64];
    std::snprintf(name, sizeof name, "heap a static polygon, %d vertices", vertices);
    ratios::row(name, ours, "GEOS polygon", peer, 0.3, "B");
    ratios::row("the same", ours, "allowed", 80, 1.0, "B");
}

void heapRows()
{
    heapRow(4);
    heapRow(32);
}

// Building

double statusBytes(const char *field)
{
    QFile status(QStringLiteral("/proc/self/status"));
    status.open(QIODevice::ReadOnly);
    for (const QByteArray &line : status.readAll().split('\n')) {
        if (line.startsWith(field))
            return 1024 * line.mid(int(std::strlen(field))).simplified().split(' ')[0].toDouble();
    }
    return 0;
}

struct BuildCost {
    double bytes, nanoseconds; // for each object
};

/// The peak memory and the time of building and writing `count` points or squares, in a separate
/// process.
BuildCost costOfBuilding(int count, bool points)
{
    int ends[2];
    BuildCost cost{};
    if (pipe(ends) != 0)
        return cost;
    const pid_t child = fork();
    if (child == 0) {
        const QString path = scratchFile() + QString::number(getpid());
        const double before = statusBytes("VmRSS:");
        const double seconds = ratios::secondsOf([&] {
            VORNBuilder builder(RectInT{Rect2D{0, kSize, 0, kSize}, timeRange{0, 1, 0xFF}}, nullptr,
                                nullptr);
            for (int i = 0; i < count; ++i) {
                const double x = uniform(0, kSize), y = uniform(0, kSize);
                FMObjectChain *chain = builder.CreateChain({}, {}, -1);
                TreeObject *object = points ? static_cast<TreeObject *>(new FMPoint(QPointF(x, y)))
                                            : new FMPolygon(rect(x, y, 1, 1));
                builder.AddObjectsToChain(chain->id, {object}, {timeRange{0, 1, 0xFF}}, true);
            }
            builder.Finish(QFile::encodeName(path).constData(), nullptr);
        });
        cost = {(statusBytes("VmHWM:") - before) / count, 1e9 * seconds / count};
        QFile::remove(path);
        _exit(write(ends[1], &cost, sizeof cost) == sizeof cost ? 0 : 1);
    }
    if (read(ends[0], &cost, sizeof cost) != sizeof cost)
        cost = {};
    waitpid(child, nullptr, 0);
    close(ends[0]);
    close(ends[1]);
    return cost;
}

void buildRows()
{
    for (const bool points : {true, false}) {
        const char *what = points ? "points" : "squares";
        const BuildCost few = costOfBuilding(10000, points);
        char name[64];
        for (const int count : {1000000, 4000000}) {
            const BuildCost many = costOfBuilding(count, points);
            std::snprintf(name, sizeof name, "build %d %s, peak memory an object", count, what);
            ratios::row(name, many.bytes, "allowed", points ? 120 : 160, 1.0, "B");
            std::snprintf(name, sizeof name, "build %d %s, time an object", count, what);
            ratios::row(name, many.nanoseconds, "10,000 of them", few.nanoseconds, 1.5);
        }
    }
}

} // namespace

/// Runs all groups of rows, or those named on the command line.
int main(int argc, char **argv)
{
    const std::pair<const char *, void (*)()> groups[] = {
        {"boxes", boxRows},   {"index", indexRows},
        {"exact", exactRows}, {"contiguity", contiguityRows},
        {"files", fileRows},  {"heap", heapRows},
        {"build", buildRows},
    };
    ratios::head("Geometry store");
    for (const auto &[name, rows] : groups) {
        if (argc == 1 || std::find(argv + 1, argv + argc, std::string(name)) != argv + argc)
            rows();
    }
    return ratios::missed;
}
