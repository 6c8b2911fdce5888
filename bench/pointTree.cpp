// SPDX-License-Identifier: MIT
// What do the queries of a point tree cost, compared with nanoflann and Boost's rtree? The peers
// give the same results: hits with distance and angle, sorted, including the ties of the last one,
// without one excluded id. nanoflann uses the library's own collection of hits and ties, so that
// only the trees differ.
#include <boost/geometry.hpp>
#include <boost/geometry/geometries/point_xy.hpp>
#include <boost/geometry/index/rtree.hpp>
#include <boost/iterator/function_output_iterator.hpp>
#include <chrono>
#include <cmath>
#include <limits>
#include <malloc.h>
#include <memory>
#include <nanoflann.hpp>
#include <random>
#include <string>
#include <vector>
#include "fennimark/FM_PointTree.h"
#include "points/pointHits.h"
#include "ratios.h"

namespace bgi = boost::geometry::index;

namespace {

using BoostPoint = boost::geometry::model::d2::point_xy<double>;
using BoostValue = std::pair<BoostPoint, int>;
using BoostTree = bgi::rtree<BoostValue, bgi::quadratic<16>>;
using Hits = QVector<ptTreeQueryResult>;
using fennimark::PointHit;

constexpr int kQueries = 50000;

struct Cloud {
    QVector<QPointF> points;
    QVector<int> ids;

    size_t kdtree_get_point_count() const { return static_cast<size_t>(points.size()); }
    double kdtree_get_pt(size_t at, size_t axis) const
    {
        const QPointF &point = points.at(static_cast<int>(at));
        return axis == 0 ? point.x() : point.y();
    }
    template <class Box> bool kdtree_get_bbox(Box &) const { return false; }
};
using FlannTree = nanoflann::KDTreeSingleIndexAdaptor<nanoflann::L2_Simple_Adaptor<double, Cloud>,
                                                      Cloud, 2, unsigned>;

Cloud randomCloud(int count)
{
    std::mt19937_64 random(42);
    std::uniform_real_distribution<double> unit;
    Cloud cloud;
    for (int i = 0; i < count; ++i) {
        cloud.points.append(QPointF(unit(random), unit(random)));
        cloud.ids.append(i);
    }
    return cloud;
}

Cloud lattice(int count)
{
    Cloud cloud;
    const int side = static_cast<int>(std::sqrt(count));
    for (int i = 0; i < side * side; ++i) {
        cloud.points.append(QPointF(i % side, i / side));
        cloud.ids.append(i);
    }
    return cloud;
}

// The id of a query's point, with the set that excludes it.
struct Asked {
    int id;
    QSet<int> exclude;
};

// Ids all over the cloud.
std::vector<Asked> asked(const Cloud &cloud)
{
    std::mt19937 random(7);
    std::vector<Asked> result(kQueries);
    for (Asked &one : result) {
        one.id = static_cast<int>(random() % static_cast<unsigned>(cloud.ids.size()));
        one.exclude = {one.id};
    }
    return result;
}

ptTreeQueryResult record(const QPointF &point, int id, const QPointF &place, double distance)
{
    ptTreeQueryResult hit;
    hit.point = point;
    hit.id = id;
    hit.distance = distance;
    hit.angle = std::atan2(point.y() - place.y(), point.x() - place.x());
    return hit;
}

double squaredDistance(const QPointF &a, const QPointF &b)
{
    return (a.x() - b.x()) * (a.x() - b.x()) + (a.y() - b.y()) * (a.y() - b.y());
}

// Adapts the library's collection of hits to nanoflann's interface of result sets.
template <class Sink> struct FlannSink {
    Sink &sink;
    using DistanceType = double;
    bool full() const { return true; }
    size_t size() const { return 0; }
    double worstDist() const { return sink.limit(); }
    bool addPoint(double distance, unsigned at)
    {
        sink.offer(distance, static_cast<int>(at), at);
        return true;
    }
};

class Peers {
public:
    explicit Peers(const Cloud &cloud)
        : mCloud(cloud), mFlann(2, cloud, nanoflann::KDTreeSingleIndexAdaptorParams(10))
    {
        mFlann.buildIndex();
        mBoost = boostTree(cloud);
    }

    static std::unique_ptr<BoostTree> boostTree(const Cloud &cloud)
    {
        std::vector<BoostValue> values;
        for (int i = 0; i < cloud.points.size(); ++i)
            values.emplace_back(BoostPoint(cloud.points[i].x(), cloud.points[i].y()), cloud.ids[i]);
        return std::make_unique<BoostTree>(values.begin(), values.end());
    }

    void flannNearest(const QPointF &place, int count, const QSet<int> &exclude, Hits &hits)
    {
        const fennimark::ExcludedIds excluded(exclude);
        fennimark::NearestHits sink(mHits, mTies, static_cast<size_t>(count), 1e-15, excluded,
                                    nullptr);
        FlannSink<fennimark::NearestHits> set{sink};
        ask(place, set);
        sink.finish([this](const fennimark::PointHit &hit) {
            const QPointF &point = mCloud.points.at(static_cast<int>(hit.slot));
            return std::max(std::abs(point.x()), std::abs(point.y()));
        });
        fill(place, hits);
    }

    void flannWithin(const QPointF &place, double range, const QSet<int> &exclude, Hits &hits)
    {
        const fennimark::ExcludedIds excluded(exclude);
        fennimark::HitsWithin sink(mHits, range * range, excluded);
        FlannSink<fennimark::HitsWithin> set{sink};
        ask(place, set);
        std::sort(mHits.begin(), mHits.end());
        fill(place, hits);
    }

    // Steps of the nearest query. The number of steps is given to the query, which is a hundred
    // times slower without it. There are no ties.
    void boostSteps(const QPointF &place, int steps, int exclude, Hits &hits) const
    {
        hits.clear();
        auto at = mBoost->qbegin(
            bgi::nearest(BoostPoint(place.x(), place.y()), static_cast<unsigned>(steps + 1)));
        for (; hits.size() < steps && at != mBoost->qend(); ++at) {
            if (at->second != exclude)
                hits.append(boostRecord(*at, place));
        }
    }

    void boostWithin(const QPointF &place, double range, int exclude, Hits &hits) const
    {
        hits.clear();
        const boost::geometry::model::box<BoostPoint> box(
            BoostPoint(place.x() - range, place.y() - range),
            BoostPoint(place.x() + range, place.y() + range));
        mBoost->query(bgi::intersects(box),
                      boost::make_function_output_iterator([&](const BoostValue &value) {
                          const QPointF point(value.first.x(), value.first.y());
                          if (value.second != exclude
                              && squaredDistance(point, place) <= range * range)
                              hits.append(boostRecord(value, place));
                      }));
        std::sort(hits.begin(), hits.end(), [](const auto &a, const auto &b) {
            return a.distance < b.distance || (a.distance == b.distance && a.id < b.id);
        });
    }

    static ptTreeQueryResult boostRecord(const BoostValue &value, const QPointF &place)
    {
        const QPointF point(value.first.x(), value.first.y());
        return record(point, value.second, place, squaredDistance(point, place));
    }

    BoostTree &boost() { return *mBoost; }

private:
    template <class Set> void ask(const QPointF &place, Set &set) const
    {
        const double query[2] = {place.x(), place.y()};
        mFlann.findNeighbors(set, query, nanoflann::SearchParams());
    }

    void fill(const QPointF &place, Hits &hits) const
    {
        hits.resize(static_cast<int>(mHits.size()));
        for (size_t i = 0; i < mHits.size(); ++i) {
            const int at = static_cast<int>(mHits[i].slot);
            hits[static_cast<int>(i)] =
                record(mCloud.points[at], mCloud.ids[at], place, mHits[i].distance);
        }
    }

    const Cloud &mCloud;
    FlannTree mFlann;
    std::unique_ptr<BoostTree> mBoost;
    std::vector<PointHit> mHits;
    std::vector<PointHit> mTies;
};

template <class Call> double seconds(Call &&call)
{
    const auto start = std::chrono::steady_clock::now();
    call();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

// One row: ours and the peers in turns, the best of five rounds each. Every call returns the
// seconds for one operation.
template <class Ours, class... Peers>
void compare(const std::string &name, double target, Ours ours, const char *peerName,
             Peers... peers)
{
    double mine = std::numeric_limits<double>::infinity();
    double best = mine;
    for (int round = 0; round < 5; ++round) {
        mine = std::min(mine, ours());
        ((best = std::min(best, peers())), ...);
    }
    ratios::row(name.c_str(), 1e9 * mine, peerName, 1e9 * best, target);
}

double gKeep = 0.0; // the sum of the results, so that no query is optimized away

// Seconds for one query, made from points of the cloud with their own ids excluded.
template <class Ask>
double perQuestion(const Cloud &cloud, const std::vector<Asked> &questions, Ask ask)
{
    Hits hits;
    const double total = seconds([&] {
        for (const Asked &one : questions) {
            ask(cloud.points.at(one.id), one, hits);
            gKeep += hits.isEmpty() ? 0.0 : hits.constLast().angle;
        }
    });
    return total / static_cast<double>(questions.size());
}

void nearestRow(const std::string &name, double target, const Cloud &cloud,
                const FM_PointTree &tree, Peers &peers, int count)
{
    const std::vector<Asked> questions = asked(cloud);
    compare(
        name, target,
        [&] {
            return perQuestion(cloud, questions,
                               [&](const QPointF &place, const Asked &one, Hits &hits) {
                                   tree.GetNearestNeighbors(place, count, one.exclude, hits, true);
                               });
        },
        "nanoflann + tie set",
        [&] {
            return perQuestion(cloud, questions,
                               [&](const QPointF &place, const Asked &one, Hits &hits) {
                                   peers.flannNearest(place, count, one.exclude, hits);
                               });
        });
}

void iteratorRow(const std::string &name, const Cloud &cloud, const FM_PointTree &tree,
                 Peers &peers)
{
    constexpr int kSteps = 10;
    const std::vector<Asked> questions = asked(cloud);
    compare(
        name, 0.6,
        [&] {
            return perQuestion(
                cloud, questions, [&](const QPointF &place, const Asked &one, Hits &hits) {
                    hits.clear();
                    void *cursor = nullptr;
                    ptTreeQueryResult hit;
                    for (bool more = tree.GetFirstNearestNeighbor(place, one.exclude, hit, cursor);
                         more && hits.size() < kSteps;
                         more = hits.size() < kSteps && tree.GetNextNearestNeighbor(hit, cursor))
                        hits.append(hit);
                    tree.DoneWithNeighborSearch(cursor);
                });
        },
        "Boost rtree",
        [&] {
            return perQuestion(cloud, questions,
                               [&](const QPointF &place, const Asked &one, Hits &hits) {
                                   peers.boostSteps(place, kSteps, one.id, hits);
                               });
        });
}

void rangeRow(const std::string &name, double target, const Cloud &cloud, const FM_PointTree &tree,
              Peers &peers)
{
    const double range = std::sqrt(20.0 / (M_PI * cloud.points.size()));
    const std::vector<Asked> questions = asked(cloud);
    compare(
        name, target,
        [&] {
            return perQuestion(cloud, questions,
                               [&](const QPointF &place, const Asked &one, Hits &hits) {
                                   tree.GetRangeNeighbors(place, range, one.exclude, hits, true);
                               });
        },
        "nanoflann, Boost + sort",
        [&] {
            return perQuestion(cloud, questions,
                               [&](const QPointF &place, const Asked &one, Hits &hits) {
                                   peers.flannWithin(place, range, one.exclude, hits);
                               });
        },
        [&] {
            return perQuestion(cloud, questions,
                               [&](const QPointF &place, const Asked &one, Hits &hits) {
                                   peers.boostWithin(place, range, one.id, hits);
                               });
        });
}

void buildRow(const std::string &name, const Cloud &cloud)
{
    compare(
        name, 1.0,
        [&] {
            FM_PointTree tree;
            return seconds([&] { tree.SetPoints(cloud.points, cloud.ids, nullptr, 0, 100); });
        },
        "Boost rtree, packed",
        [&] {
            std::unique_ptr<BoostTree> tree;
            return seconds([&] { tree = Peers::boostTree(cloud); });
        });
}

// One point is added and the five nearest to it are looked up, again and again.
void addRow(const std::string &name, double target, const Cloud &cloud)
{
    constexpr int kAdded = 20000;
    const Cloud added = randomCloud(2 * kAdded);
    const int first = cloud.points.size();
    const auto place = [&](int i) { return QPointF(added.points[i].y(), added.points[i].x()); };
    compare(
        name, target,
        [&] {
            FM_PointTree tree;
            tree.SetPoints(cloud.points, cloud.ids, nullptr, 0, 100);
            Hits hits;
            return seconds([&] {
                       for (int i = 0; i < kAdded; ++i) {
                           tree.AddPointToSet(place(i), first + i);
                           tree.GetNearestNeighbors(place(i), 5, {}, hits, true);
                           gKeep += hits.constLast().angle;
                       }
                   })
                   / kAdded;
        },
        "Boost rtree, quadratic",
        [&] {
            const auto tree = Peers::boostTree(cloud);
            Hits hits;
            return seconds([&] {
                       for (int i = 0; i < kAdded; ++i) {
                           const QPointF at = place(i);
                           const BoostPoint point(at.x(), at.y());
                           tree->insert(BoostValue(point, first + i));
                           hits.clear();
                           tree->query(
                               bgi::nearest(point, 5),
                               boost::make_function_output_iterator([&](const BoostValue &value) {
                                   hits.append(Peers::boostRecord(value, at));
                               }));
                           std::sort(hits.begin(), hits.end(), [](const auto &a, const auto &b) {
                               return a.distance < b.distance;
                           });
                           gKeep += hits.constLast().angle;
                       }
                   })
                   / kAdded;
        });
}

void removalRow(const std::string &name, const Cloud &cloud)
{
    std::vector<int> ids(cloud.ids.begin(), cloud.ids.end());
    std::shuffle(ids.begin(), ids.end(), std::mt19937(3));
    ids.resize(ids.size() / 5);
    const double count = static_cast<double>(ids.size());
    compare(
        name, 1.2,
        [&] {
            FM_PointTree tree;
            tree.SetPoints(cloud.points, cloud.ids, nullptr, 0, 100);
            return seconds([&] {
                       for (const int id : ids)
                           gKeep += tree.RemovePointFromSet(cloud.points.at(id), id);
                   })
                   / count;
        },
        "Boost rtree, quadratic",
        [&] {
            const auto tree = Peers::boostTree(cloud);
            return seconds([&] {
                       for (const int id : ids)
                           gKeep += tree->remove({BoostPoint(cloud.points.at(id).x(),
                                                             cloud.points.at(id).y()),
                                                  id})
                                    > 0;
                   })
                   / count;
        });
}

double bytesInUse()
{
    const struct mallinfo2 info = mallinfo2();
    return static_cast<double>(info.uordblks) + static_cast<double>(info.hblkhd);
}

void memoryRow(const std::string &name, const Cloud &cloud)
{
    const double count = cloud.points.size();
    const auto perPoint = [count](auto make) {
        const double before = bytesInUse();
        const auto made = make();
        return (bytesInUse() - before) / count;
    };
    const double ours = perPoint([&] {
        auto tree = std::make_unique<FM_PointTree>();
        tree->SetPoints(cloud.points, cloud.ids, nullptr, 0, 100);
        return tree;
    });
    // nanoflann leaves the coordinates and ids to its caller; their 20 bytes are counted too.
    const double flann = 20.0 + perPoint([&] {
                             auto tree = std::make_unique<FlannTree>(
                                 2, cloud, nanoflann::KDTreeSingleIndexAdaptorParams(10));
                             tree->buildIndex();
                             return tree;
                         });
    ratios::row(name.c_str(), ours, "nanoflann", flann, 24.0 / 34.0, "B");
}

} // namespace

int main()
{
    ratios::head("Point tree");
    struct Size {
        const char *name;
        int count;
        double five, twenty, range;
    };
    for (const Size &size :
         {Size{"10k", 10000, 0.9, 0.9, 1.0}, Size{"100k", 100000, 0.8, 0.8, 0.95},
          Size{"1M", 1000000, 0.65, 0.6, 0.95}}) {
        const Cloud cloud = randomCloud(size.count);
        const auto name = [&](const char *operation) {
            return std::string(operation) + ", " + size.name;
        };
        {
            FM_PointTree tree;
            tree.SetPoints(cloud.points, cloud.ids, nullptr, 0, 100);
            Peers peers(cloud);
            nearestRow(name("5 nearest, ties, one exclusion"), size.five, cloud, tree, peers, 5);
            nearestRow(name("20 nearest, ties, one exclusion"), size.twenty, cloud, tree, peers,
                       20);
            iteratorRow(name("iterator, 10 steps"), cloud, tree, peers);
            rangeRow(name("range, 20 hits, sorted"), size.range, cloud, tree, peers);
        }
        if (size.count < 100000)
            continue;
        buildRow(name("build"), cloud);
        addRow(name("one add + one 5-nearest"), size.count > 100000 ? 0.65 : 0.95, cloud);
        removalRow(name("one removal"), cloud);
        memoryRow(name("bytes a point"), cloud);
    }
    const Cloud grid = lattice(100000);
    FM_PointTree tree;
    tree.SetPoints(grid.points, grid.ids, nullptr, 0, 100);
    Peers peers(grid);
    nearestRow("5 nearest on a lattice, 100k", 0.95, grid, tree, peers, 5);
    nearestRow("20 nearest on a lattice, 100k", 0.95, grid, tree, peers, 20);
    std::printf("(%g)\n", gKeep);
    return ratios::missed;
}
