// SPDX-License-Identifier: MIT
#include "fennimark/Fennims.h"
#include <algorithm>
#include "fennimark/FMObject.h"
#include "fennimark/HeldObject.h"
#include "geography/fennimsState.h"
#include "store/nearest.h"

using namespace fennimark;

namespace {

// A result has more elements than this only where rings have records: large counts cost no memory.
constexpr int kMostRings = 1 << 16;

QVector<int> recordIds(const std::vector<RecordDistance> &found)
{
    QVector<int> ids;
    ids.reserve(int(found.size()));
    for (const RecordDistance &one : found)
        ids.append(int(one.record) + 1);
    return ids;
}

/// The records of all rings and the ego, as ascending record ids.
QVector<int> within(const std::vector<std::vector<quint32>> &rings, quint32 ego)
{
    QVector<int> ids{int(ego) + 1};
    for (const auto &ring : rings) {
        for (const quint32 record : ring)
            ids.append(int(record) + 1);
    }
    std::sort(ids.begin(), ids.end());
    return ids;
}

/// Calls hits(tree, point, excluded ids, neighbors[id]) for all points. False, with `neighbors`
/// empty, when the callback returns false.
template <class Hits>
bool eachPoint(const QVector<QPointF> &points, const QVector<int> &ids, bool includeEgo,
               QMap<int, QVector<ptTreeQueryResult>> &neighbors, Fennims::Progress progress,
               Hits hits)
{
    FM_PointTree tree;
    tree.SetPoints(points, ids, nullptr, 0, 100);
    QSet<int> exclude;
    for (int i = 0; i < points.size(); ++i) {
        exclude.clear();
        if (!includeEgo)
            exclude.insert(ids[i]);
        hits(tree, points[i], exclude, neighbors[ids[i]]);
        if (!reported(progress, i, points.size())) {
            neighbors.clear();
            return false;
        }
    }
    return true;
}

/// Sets neighbors[id] to search(box, exact) for each record of `source` that exists, where
/// exact(record) is the squared distance to a record of the store. False, with `neighbors` empty,
/// when `source` is null and when the callback returns false.
template <class Search>
bool eachSource(const RecordStore &store, const HilbertTree *source, const QVector<int> &records,
                QMap<int, QVector<int>> &neighbors, Fennims::Progress progress, Search search)
{
    neighbors.clear();
    if (!source)
        return false;
    std::vector<quint64> buffer;
    std::unique_ptr<FMObject> target;
    for (int i = 0; i < records.size(); ++i) {
        const HeldObject held(*source, records[i], false);
        if (const auto *object = dynamic_cast<const FMObject *>(held.get())) {
            neighbors.insert(records[i], recordIds(search(object->GetBounds(), [&](quint32 record) {
                                 return store.present(record, target, buffer)
                                            ? object->SqrDistance(target.get())
                                            : kInfinity;
                             })));
        }
        if (!reported(progress, i, records.size())) {
            neighbors.clear();
            return false;
        }
    }
    return true;
}

} // namespace

bool Fennims::Private::polygonAt(int recordId, qint64 time, quint32 &record) const
{
    record = quint32(recordId) - 1;
    return store.kind() == ObjectKind::Polygon && store.isRecordId(recordId)
           && contains(store.range(record), double(time));
}

bool Fennims::Private::pointsAt(qint64 time, QVector<QPointF> &points, QVector<int> &ids) const
{
    if (store.kind() != ObjectKind::Point)
        return false;
    const Rect2D everywhere{-kInfinity, kInfinity, -kInfinity, kInfinity};
    store.visit(everywhere, AtTime{double(time)}, [&](quint32 record) {
        const Rect2D box = store.box(record);
        points.append(QPointF(box.xMin, box.yMin));
        ids.append(int(record) + 1);
    });
    return true;
}

QVector<int> Fennims::CalculatePolygonAdjacencies(int recordId, qint64 time, bool queen, int order,
                                                  const QSet<int> &exclude)
{
    quint32 record = 0;
    if (order < 0 || !d->polygonAt(recordId, time, record))
        return {};
    QVector<int> ids = within(d->contiguity.rings(record, time, queen, order), record);
    ids.erase(
        std::remove_if(ids.begin(), ids.end(), [&exclude](int id) { return exclude.contains(id); }),
        ids.end());
    return ids;
}

bool Fennims::CalculatePolygonAdjacencies(bool queen, qint64 time, int order, bool includeEgo,
                                          QMap<int, QVector<int>> &neighbors, Progress progress)
{
    neighbors.clear();
    if (order < 0 || d->store.kind() != ObjectKind::Polygon
        || !d->contiguity.prepare(time, progress))
        return false;
    QVector<int> egos;
    const Rect2D everywhere{-kInfinity, kInfinity, -kInfinity, kInfinity};
    d->store.collect(everywhere, AtTime{double(time)}, egos);
    for (int i = 0; i < egos.size(); ++i) {
        const quint32 record = quint32(egos[i]) - 1;
        QVector<int> ids = within(d->contiguity.rings(record, time, queen, order), record);
        if (!includeEgo)
            ids.removeOne(egos[i]);
        neighbors.insert(neighbors.cend(), egos[i], ids);
        if (!reported(progress, i, egos.size())) {
            neighbors.clear();
            return false;
        }
    }
    return true;
}

QVector<QSet<int>> Fennims::CalculatePolygonNeighborRings(int recordId, qint64 time, bool queen,
                                                          int rings)
{
    quint32 record = 0;
    if (rings < 1 || !d->polygonAt(recordId, time, record))
        return {};
    const auto found = d->contiguity.rings(record, time, queen, rings);
    QVector<QSet<int>> result(std::max(int(found.size()), std::min(rings, kMostRings)));
    for (std::size_t i = 0; i < found.size(); ++i) {
        for (const quint32 reached : found[i])
            result[int(i)].insert(int(reached) + 1);
    }
    return result;
}

bool Fennims::CalculatePointAdjacenciesByRange(double range, qint64 time, bool includeEgo,
                                               QMap<int, QVector<ptTreeQueryResult>> &neighbors,
                                               Progress progress)
{
    QVector<QPointF> points;
    QVector<int> ids;
    neighbors.clear();
    return range >= 0 && d->pointsAt(time, points, ids)
           && eachPoint(
               points, ids, includeEgo, neighbors, progress,
               [range](const FM_PointTree &tree, const QPointF &point, const QSet<int> &exclude,
                       auto &hits) { tree.GetRangeNeighbors(point, range, exclude, hits, true); });
}

bool Fennims::CalculatePointAdjacenciesByNearestNeighbor(
    int count, qint64 time, bool includeEgo, QMap<int, QVector<ptTreeQueryResult>> &neighbors,
    Progress progress)
{
    QVector<QPointF> points;
    QVector<int> ids;
    neighbors.clear();
    return count >= 1 && d->pointsAt(time, points, ids)
           && eachPoint(points, ids, includeEgo, neighbors, progress,
                        [count](const FM_PointTree &tree, const QPointF &point,
                                const QSet<int> &exclude, auto &hits) {
                            tree.GetNearestNeighbors(point, count, exclude, hits, true);
                        });
}

bool Fennims::CalculateNearestNeighborsToObjects(HilbertTree *source, const QVector<int> &records,
                                                 qint64 time, int count,
                                                 QMap<int, QVector<int>> &neighbors,
                                                 Progress progress)
{
    neighbors.clear();
    return count >= 1
           && eachSource(d->store, source, records, neighbors, progress,
                         [&](const Rect2D &from, auto exact) {
                             return nearestRecords(d->store, from, AtTime{double(time)},
                                                   std::size_t(count), kInfinity, exact);
                         });
}

bool Fennims::CalculateRangeNeighborsToObjects(HilbertTree *source, const QVector<int> &records,
                                               qint64 time, double range,
                                               QMap<int, QVector<int>> &neighbors,
                                               Progress progress)
{
    neighbors.clear();
    return range >= 0
           && eachSource(d->store, source, records, neighbors, progress,
                         [&](const Rect2D &from, auto exact) {
                             return nearestRecords(d->store, from, AtTime{double(time)},
                                                   kMaxRecords, range * range, exact);
                         });
}

bool Fennims::CalculateNearestNeighborsToPoint(const QPointF &point, qint64 time, int count,
                                               QVector<int> &records)
{
    records.clear();
    if (count < 1 || !std::isfinite(point.x()) || !std::isfinite(point.y()))
        return false;
    std::vector<quint64> buffer;
    std::unique_ptr<FMObject> object;
    const Rect2D from{point.x(), point.x(), point.y(), point.y()};
    const bool points = d->store.kind() == ObjectKind::Point;
    records = recordIds(nearestRecords(d->store, from, AtTime{double(time)}, std::size_t(count),
                                       kInfinity, [&](quint32 record) {
                                           if (points)
                                               return sqrDistance(d->store.box(record), from);
                                           return d->store.present(record, object, buffer)
                                                      ? object->SqrDistance(point.x(), point.y())
                                                      : kInfinity;
                                       }));
    return !records.isEmpty();
}
