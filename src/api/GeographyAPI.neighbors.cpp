// SPDX-License-Identifier: MIT
#include "datainterface/GeographyAPI.h"
#include <algorithm>
#include <cmath>
#include "api/shapeCalls.h"
#include "fennimark/FMPoint.h"
#include "frame/progressSection.h"

using namespace datainterface;

namespace {

/// The neighbour records of `records` of a geography, with the angle from `place` where it is not
/// null and the squared distance that `sqrDistance` gives for an object.
template <class Measure>
QVector<neighborDatum> neighborsOf(const MVectorData &geography, const QVector<int> &records,
                                   const QPointF *place, Measure sqrDistance)
{
    QVector<neighborDatum> neighbors;
    neighbors.reserve(records.size());
    for (const int record : records) {
        const HeldObject held(*geography.GetFennims()->mTree, record);
        const auto *object = held.as<FMObject>();
        if (!object)
            continue;
        neighborDatum datum;
        datum.id = geography.GetObjectId(held.chainId());
        datum.distance = static_cast<float>(sqrDistance(*object));
        const auto *point = dynamic_cast<const FMPoint *>(object);
        if (place && point)
            datum.angle =
                static_cast<float>(std::atan2(point->y - place->y(), point->x - place->x()));
        neighbors.append(datum);
    }
    return neighbors;
}

QVector<neighborDatum> neighborsOf(const MVectorData &geography, const QVector<int> &records,
                                   const FMObject &object)
{
    const auto *point = dynamic_cast<const FMPoint *>(&object);
    const QPointF place = point ? QPointF(point->x, point->y) : QPointF();
    return neighborsOf(geography, records, point ? &place : nullptr,
                       [&object](const FMObject &other) {
                           return object.SqrDistance(static_cast<const TreeObject *>(&other));
                       });
}

/// Runs `calculate(fennims of to, tree of from, records of from, found records by record,
/// callback)` and converts the records that it finds to objects.
template <class Calculate>
bool queryObjects(int from, int to, qint64 time, QVector<QVector<neighborDatum>> &neighbors,
                  bool showProgress, Calculate calculate)
{
    return onGeography<MVectorData>(from, false, [&](const MVectorData &source) {
        Fennims &sources = *source.GetFennims();
        const QVector<int> records = sources.GetObservationsAtTime(time);
        if (records.isEmpty())
            return true;
        return onGeography<MVectorData>(to, false, [&](const MVectorData &target) {
            QMap<int, QVector<int>> found;
            if (!calculate(*target.GetFennims(), sources.mTree, records, found,
                           showProgress ? progressCallback() : nullptr))
                return false;
            QVector<QVector<neighborDatum>> all(sources.GetChainCount());
            for (auto entry = found.cbegin(); entry != found.cend(); ++entry) {
                const HeldObject held(*sources.mTree, entry.key());
                const auto *object = held.as<FMObject>();
                const int index = object ? source.GetObjectId(held.chainId()) : -1;
                if (index >= 0)
                    all[index] = neighborsOf(target, entry.value(), *object);
            }
            neighbors = all;
            return true;
        });
    });
}

} // namespace

bool VORN_NearestNeighborQuery(int geographyId, const QPointF &place, qint64 time, int count,
                               QVector<neighborDatum> &neighbors)
{
    return onGeography<MVectorData>(geographyId, false, [&](const MVectorData &geography) {
        QVector<int> records;
        if (!geography.GetFennims()->CalculateNearestNeighborsToPoint(place, time, count, records))
            return false;
        neighbors = neighborsOf(geography, records, &place, [&place](const FMObject &object) {
            return object.SqrDistance(place.x(), place.y());
        });
        return true;
    });
}

bool VORN_NearestNeighborObjectQuery(int from, int to, qint64 time, int count,
                                     QVector<QVector<neighborDatum>> &neighbors, bool showProgress)
{
    return queryObjects(from, to, time, neighbors, showProgress,
                        [&](Fennims &target, HilbertTree *tree, const QVector<int> &records,
                            QMap<int, QVector<int>> &found, ProgressCallback progress) {
                            return target.CalculateNearestNeighborsToObjects(
                                tree, records, time, count, found, progress);
                        });
}

bool VORN_RangeObjectQuery(int from, int to, qint64 time, double range,
                           QVector<QVector<neighborDatum>> &neighbors, bool showProgress)
{
    return queryObjects(from, to, time, neighbors, showProgress,
                        [&](Fennims &target, HilbertTree *tree, const QVector<int> &records,
                            QMap<int, QVector<int>> &found, ProgressCallback progress) {
                            return target.CalculateRangeNeighborsToObjects(tree, records, time,
                                                                           range, found, progress);
                        });
}

bool VORN_GetPolygonNeighborRings(int geographyId, unsigned int object, qint64 time, int rings,
                                  bool queen, QVector<QVector<unsigned int>> &neighbors)
{
    return onGeography<MVectorData>(geographyId, false, [&](const MVectorData &geography) {
        const int record = recordAt(geography, object, time);
        const auto found =
            geography.GetFennims()->CalculatePolygonNeighborRings(record, time, queen, rings);
        if (found.isEmpty()) // not a polygon, or no ring requested
            return false;
        QVector<QVector<unsigned int>> all;
        all.reserve(found.size());
        for (const QSet<int> &ring : found) {
            QVector<unsigned int> objects;
            objects.reserve(ring.size());
            for (const int reached : ring)
                objects.append(static_cast<unsigned int>(objectOf(geography, reached)));
            std::sort(objects.begin(), objects.end());
            all.append(objects);
        }
        neighbors = all;
        return true;
    });
}
