// SPDX-License-Identifier: MIT
#include "core/analysis/weightSets.h"
#include <QHash>
#include <QSet>
#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include "core/analysis/distanceSets.h"
#include "core/project/cancel.h"
#include "core/project/catalog.h"
#include "core/project/edit.h"
#include "core/project/failure.h"
#include "core/project/text.h"
#include "datainterface/GeographyAPI.h"
#include "datainterface/MGeoData.h"

namespace meridor {
namespace {

struct WeightName {
    const char *name;
    spatialWeightType type;
};
constexpr WeightName kWeightNames[] = {
    {"constant", ConstantWeight},   {"row", RowStandardizedWeight},
    {"rank", DistanceRankWeight},   {"inverse", InverseDistanceWeight},
    {"border", BorderLengthWeight}, {"border-share", BorderShareWeight},
};

spatialWeightType weightTypeOf(const QString &name)
{
    for (const WeightName &known : kWeightNames)
        if (name == QLatin1String(known.name))
            return known.type;
    failUsage(
        QStringLiteral("weights are one of %1").arg(weightNames().join(QStringLiteral(", "))));
}

QString weightName(spatialWeightType type)
{
    for (const WeightName &known : kWeightNames)
        if (type == known.type)
            return QLatin1String(known.name);
    return QStringLiteral("as given");
}

/// Raises a Failure for numbers without a meaning. The library takes them as they are.
void requireMeaning(const WeightSetPlan &plan)
{
    static const QStringList methods{QStringLiteral("queen"), QStringLiteral("rook"),
                                     QStringLiteral("nearest"), QStringLiteral("range")};
    if (!methods.contains(plan.method))
        failUsage(QStringLiteral("neighbours are found by %1, not by %2")
                      .arg(methods.join(QStringLiteral(", ")), plan.method),
                  "method");
    if (plan.order < 1 || plan.order > 1000)
        failUsage(QStringLiteral("an order is 1 to 1000, not %1").arg(plan.order), "order");
    if (plan.count < 1 || plan.count > 1000000)
        failUsage(QStringLiteral("a count is 1 to 1000000, not %1").arg(plan.count), "count");
    if (plan.method == QLatin1String("range") && !(plan.range > 0 && std::isfinite(plan.range)))
        failUsage(QStringLiteral("a range is a distance in map units"), "range");
    if (!std::isfinite(plan.numerator) || !std::isfinite(plan.power))
        failUsage(QStringLiteral("the numerator and the power of inverse distances are finite"),
                  std::isfinite(plan.power) ? "numerator" : "power");
}

/// Raises a Failure if the kind of geography cannot have such a set. The library only returns a
/// failure code, without a reason.
void requireSuited(int kind, const WeightSetPlan &plan, spatialWeightType weights)
{
    const bool contiguity =
        plan.method == QLatin1String("queen") || plan.method == QLatin1String("rook");
    const QString shapes = QLatin1String(shapeName(kind));
    const bool byCentroids = kind == GeoProps::Polygons && !contiguity;
    const bool suited = kind == GeoProps::Polygons ? true
                        : kind == GeoProps::Points ? !contiguity
                        : kind == GeoProps::Raster ? plan.method != QLatin1String("nearest")
                                                   : false;
    if (!suited)
        fail(QStringLiteral("neighbours by %1 are not defined for %2").arg(plan.method, shapes));
    const bool distances = weights == DistanceRankWeight || weights == InverseDistanceWeight;
    const bool borders = weights == BorderLengthWeight || weights == BorderShareWeight;
    if (plan.greatCircle && (contiguity || kind == GeoProps::Raster))
        fail(QStringLiteral("geodesics are for the neighbours of points and centroids by distance"),
             "great-circle");
    if (kind == GeoProps::Polygons && !byCentroids ? distances : borders)
        fail(QStringLiteral("weights by %1 are not defined for %2 with neighbours by %3")
                 .arg(plan.weights, shapes, plan.method));
}

int create(int geography, int kind, const WeightSetPlan &plan, spatialWeightType weights)
{
    const bool queen = plan.method == QLatin1String("queen");
    if (kind == GeoProps::Polygons)
        return VORN_CreatePolygonWeightSet(geography, plan.name, plan.information, plan.order,
                                           queen, weights, plan.includeEgo, plan.numerator,
                                           plan.power);
    if (plan.method == QLatin1String("nearest"))
        return VORN_CreateNearestNeighborWeightSet(geography, plan.name, plan.information,
                                                   plan.count, weights, plan.includeEgo,
                                                   plan.numerator, plan.power);
    if (plan.method == QLatin1String("range"))
        return VORN_CreateRangeWeightSet(geography, plan.name, plan.information, plan.range,
                                         weights, plan.includeEgo, plan.numerator, plan.power);
    return VORN_CreateAdjacentPixelWeightSet(geography, plan.name, plan.information,
                                             queen ? QueenNeighbors : RookNeighbors, weights,
                                             plan.includeEgo, plan.numerator, plan.power);
}

QString describeMethod(const AdjacencySet &set)
{
    switch (set.NeighborType()) {
    case PolygonNeighbors:
        return QStringLiteral("%1 neighbours to order %2")
            .arg(set.QueenNeighbor() ? QStringLiteral("queen") : QStringLiteral("rook"),
                 QString::number(set.RingCount()));
    case NearestNeighbors:
        return QStringLiteral("nearest %1").arg(set.NeighborCount());
    case RangeNeighbors:
        return QStringLiteral("within %1").arg(exactNumber(set.Range()));
    case RookNeighbors:
        return QStringLiteral("rook neighbours");
    case QueenNeighbors:
        return QStringLiteral("queen neighbours");
    default:
        return set.IsClusterSet() ? QStringLiteral("cluster") : QStringLiteral("custom");
    }
}

QHash<QString, int> objectsById(const QStringList &ids)
{
    QHash<QString, int> objects;
    for (int i = 0; i < ids.size(); ++i)
        objects.insert(ids[i], i);
    return objects;
}

QVector<neighborDatum> neighborsOf(const WeightsFile::Ego &ego, const QHash<QString, int> &objects,
                                   bool standardize, QSet<QString> &unknown)
{
    QVector<neighborDatum> neighbors;
    double sum = 0;
    for (const WeightsFile::Link &link : ego.links) {
        const int object = objects.value(link.to, -1);
        if (object < 0) {
            unknown.insert(link.to);
            continue;
        }
        if (!(std::fabs(link.weight) <= std::numeric_limits<float>::max()))
            fail(QStringLiteral("the weight of %1 for %2 is beyond 32-bit numbers: %3")
                     .arg(link.to, ego.id)
                     .arg(link.weight));
        neighborDatum neighbor{};
        neighbor.id = object;
        neighbor.weight = static_cast<float>(link.weight);
        neighbors.append(neighbor);
        sum += link.weight;
    }
    if (standardize && sum != 0)
        for (neighborDatum &neighbor : neighbors)
            neighbor.weight = static_cast<float>(neighbor.weight / sum);
    return neighbors;
}

bool holdsSelf(const WeightsFile &file)
{
    for (const WeightsFile::Ego &ego : file.egos)
        for (const WeightsFile::Link &link : ego.links)
            if (link.to == ego.id)
                return true;
    return false;
}

} // namespace

QStringList weightNames()
{
    QStringList names;
    for (const WeightName &known : kWeightNames)
        names.append(QLatin1String(known.name));
    return names;
}

int createWeightSet(int geography, const WeightSetPlan &plan)
{
    const int kind = VORN_GetGeographyProperties(geography).type;
    const spatialWeightType weights = weightTypeOf(plan.weights);
    requireMeaning(plan);
    requireSuited(kind, plan, weights);
    requireNewWeightSetName(geography, plan.name);
    if (needsDistanceLists(kind, plan))
        return createDistanceSet(geography, plan);
    const int id = create(geography, kind, plan, weights);
    if (id < 0)
        fail(QStringLiteral("weight set %1 could not be made").arg(plan.name));
    return id;
}

int findWeightSet(const QString &name)
{
    QVector<int> found;
    QStringList names;
    for (const int geography : geographyIds()) {
        for (const int id : geographyOf(geography)->GetSpatialWeightsIds()) {
            const QString own = weightSetOf(id).GetName();
            names.append(own);
            if (own == name || geographyName(geography) + QLatin1Char('/') + own == name)
                found.append(id);
        }
    }
    if (names.isEmpty())
        fail(QStringLiteral("the project holds no weight set"));
    if (found.isEmpty())
        fail(QStringLiteral("no weight set %1; there are: %2").arg(name, someOf(names)));
    if (found.size() > 1)
        fail(QStringLiteral("several weight sets %1; write GEOGRAPHY/%1").arg(name));
    return found.first();
}

AdjacencySet &weightSetOf(int id)
{
    return *geographyOf(id >> 16)->GetSpatialWeightSet(id);
}

void requireNewWeightSetName(int geography, const QString &name)
{
    if (name.isEmpty())
        failUsage(QStringLiteral("a name is not empty"));
    if (geographyOf(geography)->GetSpatialWeightsNames().contains(name))
        fail(QStringLiteral("%1 has a weight set %2 already").arg(geographyName(geography), name));
}

void renameWeightSet(int set, const QString &name)
{
    if (weightSetOf(set).GetName() == name)
        return;
    requireNewWeightSetName(set >> 16, name);
    geographyOf(set >> 16)->RenameSpatialWeightSet(set, name.toUtf8().constData());
}

int duplicateWeightSet(int set, const QString &name)
{
    MGeoData &geography = *geographyOf(set >> 16);
    const QString own = weightSetOf(set).GetName();
    const QString copied =
        name.isEmpty() ? copyName(own, geography.GetSpatialWeightsNames()) : name;
    requireNewWeightSetName(geography.GetId(), copied);
    const QList<int> before = geography.GetSpatialWeightsIds();
    if (!geography.DuplicateSpatialWeightSet(set))
        fail(QStringLiteral("the weight set %1 could not be copied").arg(own));
    for (const int id : geography.GetSpatialWeightsIds()) {
        if (before.contains(id))
            continue;
        geography.RenameSpatialWeightSet(id, copied.toUtf8().constData());
        return id;
    }
    fail(QStringLiteral("the weight set %1 could not be copied").arg(own));
}

void removeWeightSets(const QVector<int> &sets)
{
    for (const int id : sets)
        geographyOf(id >> 16)->RemoveSpatialWeightSet(id);
}

QString calculatedMark()
{
    return QStringLiteral("Calculated: ");
}

QString describe(const AdjacencySet &set)
{
    if (set.IsCustom() && set.GetInformation().startsWith(calculatedMark()))
        return set.GetInformation().section(QLatin1Char('\n'), 0, 0).mid(calculatedMark().size())
               + (set.IncludeEgo() ? QStringLiteral(", with the object itself") : QString());
    QString text = describeMethod(set);
    if (!set.IsCustom())
        text += QStringLiteral(", weights ") + weightName(set.WeightType());
    if (set.WeightType() == InverseDistanceWeight)
        text += QStringLiteral(" (%1 / (1 + distance^%2))")
                    .arg(exactNumber(set.InverseDistanceNumerator()),
                         exactNumber(set.InverseDistancePower()));
    if (set.IncludeEgo())
        text += QStringLiteral(", with the object itself");
    return text;
}

qint64 listTime(int set, qint64 time)
{
    for (const TimeStamp &when : weightSetOf(set).GetAdjacencyTimes())
        if (when.contains(time))
            return time;
    return shapeTime(set >> 16, time);
}

void visitNeighbors(
    int set, qint64 time,
    const std::function<void(int object, const QVector<neighborDatum> &neighbors)> &visit)
{
    const int geography = set >> 16;
    const QVector<int> objects = objectsAt(geography, shapeTime(geography, time));
    const QString when = axisOf(geography).show(time);
    if (objects.isEmpty())
        fail(QStringLiteral("no object of %1 exists at %2").arg(geographyName(geography), when));
    const WeightsAtT handle = VORN_GetSpatialWeightsHandle(set, listTime(set, time), true);
    const VORN_MissingData noneMissing;
    QVector<neighborDatum> neighbors;
    for (const int object : objects) {
        stopIfCancelled();
        if (!VORN_GetSpatialWeights(handle, static_cast<unsigned int>(object), neighbors,
                                    noneMissing))
            fail(QStringLiteral("weight set %1 has nothing at %2")
                     .arg(weightSetOf(set).GetName(), when));
        visit(object, neighbors);
    }
}

QVector<unsigned int> neighborsAt(int set, const QVector<unsigned int> &objects, qint64 time)
{
    const int geography = set >> 16;
    const qint64 when = listTime(set, time);
    const bool isGrid = VORN_GetGeographyProperties(geography).type == GeoProps::Raster;
    const QVector<int> existing =
        isGrid ? QVector<int>() : objectsAt(geography, shapeTime(geography, time));
    QVector<neighborDatum> list;
    QVector<unsigned int> found;
    for (const unsigned int object : objects) {
        stopIfCancelled();
        if (!isGrid
            && !std::binary_search(existing.begin(), existing.end(), static_cast<int>(object)))
            continue;
        if (!VORN_GetSpatialWeights(set, object, when, list, VORN_MissingData()))
            fail(QStringLiteral("weight set %1 has nothing at %2")
                     .arg(weightSetOf(set).GetName(), axisOf(geography).show(time)));
        for (const neighborDatum &neighbor : qAsConst(list))
            if (neighbor.id >= 0 && static_cast<unsigned int>(neighbor.id) != object)
                found.append(static_cast<unsigned int>(neighbor.id));
    }
    return found;
}

LinkSummary summarize(int set, qint64 time)
{
    LinkSummary summary;
    visitNeighbors(set, time, [&summary](int object, const QVector<neighborDatum> &neighbors) {
        const int count = neighbors.size();
        summary.least = summary.objects == 0 ? count : qMin(summary.least, count);
        summary.most = qMax(summary.most, count);
        summary.links += count;
        ++summary.objects;
        if (count == 0)
            summary.islands.append(object);
    });
    return summary;
}

WeightsFile weightsAt(int set, qint64 time, const QStringList &ids)
{
    WeightsFile file;
    file.name = geographyName(set >> 16);
    visitNeighbors(set, time, [&](int object, const QVector<neighborDatum> &neighbors) {
        WeightsFile::Ego ego{ids[object], {}};
        for (const neighborDatum &neighbor : neighbors)
            ego.links.append({ids[neighbor.id], static_cast<double>(neighbor.weight)});
        file.egos.append(ego);
    });
    return file;
}

WeightsMatch adoptWeights(int geography, const QString &name, const WeightsFile &file,
                          const QStringList &ids, const Interval &when, bool standardize)
{
    requireNewWeightSetName(geography, name);
    const QHash<QString, int> objects = objectsById(ids);
    auto made =
        std::make_unique<AdjacencySet>(name, geographyOf(geography), false, holdsSelf(file));
    WeightsMatch match;
    QSet<QString> unknown;
    QVector<bool> named(ids.size());
    for (const WeightsFile::Ego &ego : file.egos) {
        stopIfCancelled();
        const int object = objects.value(ego.id, -1);
        const auto neighbors = neighborsOf(ego, objects, standardize, unknown);
        if (object < 0) {
            unknown.insert(ego.id);
            continue;
        }
        named[object] = true;
        match.links += neighbors.size();
        made->AddToSpatialWeights(object, neighbors, when, false);
    }
    match.unknown = unknown.values();
    match.unknown.sort();
    for (int i = 0; i < ids.size(); ++i)
        if (!named[i])
            match.unnamed.append(ids[i]);
    if (match.unnamed.size() == ids.size())
        fail(QStringLiteral("no id of the file is one of the objects'; its first is %1, theirs %2")
                 .arg(file.egos.isEmpty() ? QString() : file.egos.first().id, ids.value(0)));
    match.set = made->GetId();
    geographyOf(geography)->AddSpatialWeightSet(made.release());
    return match;
}

} // namespace meridor
