// SPDX-License-Identifier: MIT
// The lists are calculated once for each span of time in which no shape changes, and stored in a set
// of given lists. Plane distances come from the library's point tree, geodesic distances from a
// vantage-point tree (P. N. Yianilos, 1993), which needs the triangle inequality alone, over the
// lengths of geodesics on WGS 84 (C. F. F. Karney, 2013, J. Geodesy 87, 43-55).
//
// Weights are those of the library's point sets: neighbours that tie with the last of the nearest
// share the remaining places.
#include "core/analysis/distanceSets.h"
#include <GeographicLib/Geodesic.hpp>
#include <GeographicLib/NearestNeighbor.hpp>
#include <QHash>
#include <algorithm>
#include <cmath>
#include <memory>
#include "core/project/cancel.h"
#include "core/project/catalog.h"
#include "core/project/failure.h"
#include "core/project/progress.h"
#include "core/project/text.h"
#include "datainterface/GeographyAPI.h"
#include "datainterface/MVectorData.h"
#include "fennimark/FMObject.h"
#include "fennimark/FMObjectChain.h"
#include "fennimark/FMProjectionInfo.h"
#include "fennimark/FM_PointTree.h"
#include "fennimark/Fennims.h"
#include "fennimark/HeldObject.h"

namespace meridor {
namespace {

constexpr double kTieWidth = 1e-9; ///< relative difference of distances up to which they tie
constexpr double kTieFloor = 1e-9; ///< the same in kilometres, for distances near 0

struct Site {
    int object;
    QPointF place;
};

double kilometres(const QPointF &a, const QPointF &b)
{
    double metres = 0;
    GeographicLib::Geodesic::WGS84().Inverse(a.y(), a.x(), b.y(), b.x(), metres);
    return metres / 1000;
}

bool tie(double a, double b)
{
    return std::abs(a - b) <= kTieWidth * std::max(a, b) + kTieFloor;
}

/// The centroids of the objects that exist at a time; each shape is read once.
class Sites {
public:
    explicit Sites(int geography)
        : mId(geography),
          mGeography(dynamic_cast<const MVectorData &>(*geographyOf(geography))),
          mShapes(*mGeography.GetFennims())
    {
    }

    std::vector<Site> at(qint64 time)
    {
        std::vector<Site> sites;
        for (int object = 0; object < static_cast<int>(mGeography.GetObjectCount()); ++object) {
            if (object % 1024 == 0)
                stopIfCancelled();
            const FMObjectChain *chain =
                mShapes.GetChainById(mGeography.GetFennimId(static_cast<unsigned>(object)));
            const int record = chain ? chain->GetObservation(time).second : -1;
            if (record >= 0)
                sites.push_back({object, placeOf(record)});
        }
        return sites;
    }

    /// Raises a Failure for an object whose place is no longitude and latitude.
    void requireOnEarth(const std::vector<Site> &sites) const
    {
        for (const Site &site : sites)
            if (!(std::abs(site.place.y()) <= 90 && std::abs(site.place.x()) <= 360))
                fail(QStringLiteral("%1 is at %2, %3, which is no longitude and latitude")
                         .arg(objectKeys(mId, {site.object}).first(), exactNumber(site.place.x()),
                              exactNumber(site.place.y())));
    }

private:
    QPointF placeOf(int record)
    {
        const auto known = mPlaces.constFind(record);
        if (known != mPlaces.constEnd())
            return *known;
        const fennimark::HeldObject held(*mShapes.mTree, record, false);
        double x = 0;
        double y = 0;
        const auto *shape = held.as<FMObject>();
        if (!shape || !shape->GetCentroid(x, y))
            fail(QStringLiteral("%1: a shape has no centroid").arg(geographyName(mId)));
        return *mPlaces.insert(record, QPointF(x, y));
    }

    int mId;
    const MVectorData &mGeography;
    const Fennims &mShapes;
    QHash<int, QPointF> mPlaces; ///< by record
};

/// Finds the neighbours of each site.
class Finder {
public:
    virtual ~Finder() = default;
    /// Ascending by distance. The site itself is among them if the plan includes it.
    virtual std::vector<NearObject> near(const Site &site) = 0;
};

class PlaneFinder final : public Finder {
public:
    PlaneFinder(const std::vector<Site> &sites, const WeightSetPlan &plan) : mPlan(plan)
    {
        QVector<QPointF> places;
        QVector<int> ids;
        for (const Site &site : sites) {
            places.append(site.place);
            ids.append(site.object);
        }
        mTree.SetPoints(places, ids, nullptr, 0, 100);
    }
    std::vector<NearObject> near(const Site &site) override
    {
        const QSet<int> excluded = mPlan.includeEgo ? QSet<int>() : QSet<int>{site.object};
        QVector<ptTreeQueryResult> hits;
        if (mPlan.method == QLatin1String("nearest"))
            mTree.GetNearestNeighbors(site.place, mPlan.count, excluded, hits, true);
        else
            mTree.GetRangeNeighbors(site.place, mPlan.range, excluded, hits, true);
        std::vector<NearObject> found;
        for (const ptTreeQueryResult &hit : qAsConst(hits))
            found.push_back({hit.id, std::sqrt(hit.distance)});
        return found;
    }

private:
    const WeightSetPlan &mPlan;
    FM_PointTree mTree;
};

class EarthFinder final : public Finder {
public:
    EarthFinder(const std::vector<Site> &sites, const WeightSetPlan &plan)
        : mSites(sites), mPlan(plan), mTree(sites, &between)
    {
    }
    std::vector<NearObject> near(const Site &site) override
    {
        constexpr double kFar = std::numeric_limits<double>::max();
        if (mPlan.method == QLatin1String("range"))
            return within(site, static_cast<int>(mSites.size()), mPlan.range);
        // One more than asked for tells whether the last place is shared.
        std::vector<NearObject> found = within(site, mPlan.count + 1, kFar);
        const auto count = static_cast<size_t>(mPlan.count);
        if (found.size() <= count)
            return found;
        const double last = found[count - 1].distance;
        if (tie(found[count].distance, last))
            return within(site, static_cast<int>(mSites.size()),
                          last * (1 + kTieWidth) + kTieFloor);
        found.resize(count);
        return found;
    }

private:
    static double between(const Site &a, const Site &b) { return kilometres(a.place, b.place); }

    std::vector<NearObject> within(const Site &site, int count, double distance) const
    {
        std::vector<int> indices;
        mTree.Search(mSites, &between, site, indices, count + (mPlan.includeEgo ? 0 : 1), distance);
        std::vector<NearObject> found;
        for (const int index : indices) {
            const Site &other = mSites[static_cast<size_t>(index)];
            if (mPlan.includeEgo || other.object != site.object)
                found.push_back({other.object, between(site, other)});
        }
        std::sort(found.begin(), found.end(), [](const NearObject &a, const NearObject &b) {
            return a.distance != b.distance ? a.distance < b.distance : a.object < b.object;
        });
        if (static_cast<int>(found.size()) > count)
            found.resize(static_cast<size_t>(count));
        return found;
    }

    const std::vector<Site> &mSites;
    const WeightSetPlan &mPlan;
    const GeographicLib::NearestNeighbor<double, Site, double (*)(const Site &, const Site &)>
        mTree;
};

QVector<neighborDatum> weighted(const std::vector<NearObject> &found, const WeightSetPlan &plan)
{
    const auto count = static_cast<int>(found.size());
    const bool isShared = plan.method == QLatin1String("nearest") && count > plan.count;
    const auto ties = std::count_if(found.begin(), found.end(), [&found](const NearObject &near) {
        return tie(near.distance, found.back().distance);
    });
    const double share = 1 - static_cast<double>(count - plan.count) / static_cast<double>(ties);
    double sum = 0;
    const auto factor = [&](const NearObject &near) {
        return isShared && tie(near.distance, found.back().distance) ? share : 1.0;
    };
    for (const NearObject &near : found)
        sum += factor(near);
    QVector<neighborDatum> list;
    int nearer = 0; // than the present one
    for (int i = 0; i < count; ++i) {
        const NearObject &near = found[static_cast<size_t>(i)];
        if (i > 0 && !tie(near.distance, found[static_cast<size_t>(i) - 1].distance))
            nearer = i;
        neighborDatum datum{};
        datum.id = near.object;
        datum.distance = static_cast<float>(near.distance);
        datum.weight =
            static_cast<float>(plan.weights == QLatin1String("row")    ? factor(near) / sum
                               : plan.weights == QLatin1String("rank") ? 1.0 / (1 + nearer)
                               : plan.weights == QLatin1String("inverse")
                                   ? plan.numerator / (1 + std::pow(near.distance, plan.power))
                                   : factor(near));
        list.append(datum);
    }
    std::sort(list.begin(), list.end(),
              [](const neighborDatum &a, const neighborDatum &b) { return a.id < b.id; });
    return list;
}

QString definition(const WeightSetPlan &plan, int kind)
{
    const QString what = plan.method == QLatin1String("nearest")
                             ? QStringLiteral("nearest %1").arg(plan.count)
                             : QStringLiteral("within %1").arg(exactNumber(plan.range));
    const QString unit = plan.greatCircle ? QStringLiteral("kilometres along geodesics")
                                          : QStringLiteral("map units");
    return calculatedMark() + what
           + (kind == GeoProps::Polygons ? QStringLiteral(" by centroids") : QString())
           + QStringLiteral(", distances in %1, weights %2").arg(unit, plan.weights);
}

/// The spans in which no shape changes.
QVector<Interval> spansOf(int geography)
{
    const auto &vector = dynamic_cast<const MVectorData &>(*geographyOf(geography));
    QVector<Interval> spans;
    if (vector.IsStatic())
        return {VORN_GetGeographyProperties(geography).timeBounds};
    for (const TimeStamp &time : vector.GetMergedObjectTimes())
        spans.append(time);
    return spans;
}

} // namespace

bool isInDegrees(int geography)
{
    const auto *vector = dynamic_cast<const MVectorData *>(geographyOf(geography));
    if (!vector)
        return false;
    const FMProjectionInfo projection = vector->GetFennims()->GetProjectionSettings();
    return projection.GetProjectionName().isEmpty() && !projection.GetGeographicCSName().isEmpty();
}

bool needsDistanceLists(int geographyKind, const WeightSetPlan &plan)
{
    const bool byDistance =
        plan.method == QLatin1String("nearest") || plan.method == QLatin1String("range");
    return byDistance
           && (geographyKind == GeoProps::Polygons
               || (geographyKind == GeoProps::Points && plan.greatCircle));
}

namespace {

void requireDegrees(int geography)
{
    const auto &vector = dynamic_cast<const MVectorData &>(*geographyOf(geography));
    const QString name = vector.GetFennims()->GetProjectionSettings().GetProjectionName();
    if (!name.isEmpty())
        fail(QStringLiteral("%1 is projected (%2): it has plane distances")
                 .arg(geographyName(geography), name),
             "great-circle");
}

} // namespace

int createDistanceSet(int geography, const WeightSetPlan &plan)
{
    if (plan.greatCircle)
        requireDegrees(geography);
    auto made =
        std::make_unique<AdjacencySet>(plan.name, geographyOf(geography), false, plan.includeEgo);
    const Progress progress("Weights", "Calculating distances...");
    const QVector<Interval> spans = spansOf(geography);
    Sites places(geography);
    for (int i = 0; i < spans.size(); ++i) {
        const std::vector<Site> sites = places.at(instantOf(spans[i]));
        if (plan.greatCircle)
            places.requireOnEarth(sites);
        std::unique_ptr<Finder> finder;
        if (plan.greatCircle)
            finder = std::make_unique<EarthFinder>(sites, plan);
        else
            finder = std::make_unique<PlaneFinder>(sites, plan);
        for (size_t k = 0; k < sites.size(); ++k) {
            if (k % 64 == 0)
                progress.report(static_cast<int>(
                    (100 * qint64(i) + 100 * qint64(k) / qint64(sites.size())) / spans.size()));
            made->AddToSpatialWeights(sites[k].object, weighted(finder->near(sites[k]), plan),
                                      spans[i], false);
        }
    }
    const int kind = VORN_GetGeographyProperties(geography).type;
    made->AddInformation(definition(plan, kind)
                         + (plan.information.isEmpty() ? QString() : '\n' + plan.information));
    const int id = made->GetId();
    geographyOf(geography)->AddSpatialWeightSet(made.release());
    return id;
}

QVector<NearObject> nearestOnEarth(int geography, const QPointF &place, qint64 time, int count)
{
    requireDegrees(geography);
    Sites places(geography);
    const std::vector<Site> sites = places.at(time);
    places.requireOnEarth(sites);
    if (!(std::abs(place.y()) <= 90 && std::abs(place.x()) <= 360))
        failUsage(QStringLiteral("%1, %2 is no longitude and latitude")
                      .arg(exactNumber(place.x()), exactNumber(place.y())));
    QVector<NearObject> found;
    for (const Site &site : sites) {
        if (found.size() % 1024 == 0)
            stopIfCancelled();
        found.append({site.object, kilometres(place, site.place)});
    }
    const int kept = std::min(count, found.size());
    std::partial_sort(found.begin(), found.begin() + kept, found.end(),
                      [](const NearObject &a, const NearObject &b) {
                          return a.distance != b.distance ? a.distance < b.distance
                                                          : a.object < b.object;
                      });
    found.resize(kept);
    return found;
}

} // namespace meridor
