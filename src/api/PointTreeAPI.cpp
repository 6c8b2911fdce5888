// SPDX-License-Identifier: MIT
#include "datainterface/PointTreeAPI.h"
#include <map>
#include <memory>
#include "api/rotation.h"
#include "api/shapeCalls.h"
#include "fennimark/FMPolygon.h"

using namespace datainterface;

namespace {

struct Registry {
    std::map<int, std::unique_ptr<GeoPointTree>> trees;
    int nextHandle = 0;
};

Registry &registry()
{
    static Registry trees;
    return trees;
}

int add(std::unique_ptr<GeoPointTree> tree)
{
    const int handle = registry().nextHandle++;
    registry().trees.emplace(handle, std::move(tree));
    return handle;
}

/// Calls `call` with the tree of a handle; false when there is none.
template <class Call> bool onTree(int handle, Call call)
{
    const auto found = registry().trees.find(handle);
    return found != registry().trees.end() && call(*found->second);
}

} // namespace

int VORN_CreatePointTree()
{
    return add(std::make_unique<GeoPointTree>());
}

int VORN_CreatePointTreeFromPoints(const QVector<QPair<QPointF, int>> &points,
                                   const PT_RotationMatrix &rotation)
{
    if (points.isEmpty())
        return -1;
    auto tree = std::make_unique<GeoPointTree>();
    try {
        if (!tree->SetPoints(points, rotation))
            return -1;
    } catch (...) { // out of memory for very many points
        return -1;
    }
    return add(std::move(tree));
}

int VORN_CreatePointTreeFromCentroids(int geographyId, qint64 time,
                                      const PT_RotationMatrix &rotation)
{
    auto tree = std::make_unique<GeoPointTree>();
    return tree->SetGeography(geographyId, time, rotation) ? add(std::move(tree)) : -1;
}

int VORN_CreatePointTreeFromGeography(int geographyId, qint64 time,
                                      const PT_RotationMatrix &rotation)
{
    return VORN_CreatePointTreeFromCentroids(geographyId, time, rotation);
}

bool VORN_AddToPointTree(int tree, const QPointF &point, int id, const PT_RotationMatrix &rotation)
{
    return onTree(tree, [&](GeoPointTree &points) {
        return points.AddPointToSet(rotated(point, rotation), id);
    });
}

bool VORN_RemoveFromPointTree(int tree, const QPointF &point, int id)
{
    return onTree(tree, [&](GeoPointTree &points) { return points.RemovePointFromSet(point, id); });
}

bool VORN_GetPointTreeFirstNearestNeighbor(int tree, const QPointF &place, const QSet<int> &exclude,
                                           ptTreeQueryResult &hit, void *&cursor)
{
    return onTree(tree, [&](const GeoPointTree &points) {
        return points.GetFirstNearestNeighbor(place, exclude, hit, cursor);
    });
}

bool VORN_GetPointTreeNextNearestNeighbor(int tree, const QSet<int> &, ptTreeQueryResult &hit,
                                          void *&cursor)
{
    return onTree(tree, [&](const GeoPointTree &points) {
        return points.GetNextNearestNeighbor(hit, cursor);
    });
}

void VORN_DoneWithPointTreeNearestNeighbors(int tree, void *&cursor)
{
    onTree(tree, [&](const GeoPointTree &points) {
        points.DoneWithNeighborSearch(cursor);
        return true;
    });
}

bool VORN_GetPointTreeNearestNeighbors(int tree, const QPointF &place, int count,
                                       const QSet<int> &exclude, QVector<ptTreeQueryResult> &hits)
{
    return onTree(tree, [&](const GeoPointTree &points) {
        return points.GetNearestNeighbors(place, count, exclude, hits, true);
    });
}

bool VORN_GetPointTreeRangeNeighbors(int tree, const QPointF &place, double range,
                                     const QSet<int> &exclude, QVector<ptTreeQueryResult> &hits)
{
    return onTree(tree, [&](const GeoPointTree &points) {
        return points.GetRangeNeighbors(place, range, exclude, hits, true);
    });
}

bool VORN_QueryPointTreeWithRect(int tree, const QRectF &rect, QVector<ptTreeQueryResult> &hits)
{
    return onTree(
        tree, [&](const GeoPointTree &points) { return points.GetPointsInRect(rect, {}, hits); });
}

bool VORN_QueryPointTreeWithPolygon(int tree, int geographyId, int object, qint64 time,
                                    QVector<ptTreeQueryResult> &hits)
{
    return onTree(tree, [&](const GeoPointTree &points) {
        const auto index = static_cast<unsigned int>(object);
        return onShape<FMPolygon>(geographyId, index, time, [&](const FMPolygon &polygon) {
            return points.GetPointsInPolygon(&polygon, {}, hits);
        });
    });
}

bool VORN_DeletePointTree(int tree)
{
    return registry().trees.erase(tree) > 0;
}
