// SPDX-License-Identifier: MIT
#include "datainterface/GeographyAPI.h"
#include <numeric>
#include "Common/detail/failure.h"
#include "api/dataFrame.h"
#include "api/shapeCalls.h"
#include "datainterface/MRasterData.h"

using namespace datainterface;

namespace {

bool exists(const FMObjectChain &chain, qint64 time)
{
    const timeRange range = chain.GetObservation(time).first;
    return range.end >= range.start;
}

} // namespace

GeoProps VORN_GetGeographyProperties(int geographyId)
{
    return onGeography(geographyId, GeoProps(),
                       [](MGeoData &geography) { return geography.GetProperties(); });
}

void *VORN_GetGeography(int geographyId)
{
    return controller()->GetGeoData().value(geographyId);
}

QVector<int> VORN_GetGeographyIds()
{
    return controller()->GetGeoData().keys().toVector();
}

bool VORN_RemoveGeography(int geographyId)
{
    if (!controller()->GetGeoData().contains(geographyId))
        return false;
    controller()->RemoveGeography(geographyId);
    return true;
}

bool VORN_GetObservationTimes(int geographyId, unsigned int object, QVector<Interval> &intervals)
{
    return onGeography<MVectorData>(geographyId, false, [&](const MVectorData &geography) {
        if (object >= geography.GetObjectCount())
            return false;
        const FMObjectChain *chain = chainOf(geography, object);
        require(chain != nullptr, "Invalid object chain");
        intervals.clear();
        for (const auto &observation : chain->GetObservations())
            intervals.append(TimeStamp(observation.first));
        return true;
    });
}

bool VORN_ObjectExistsAtTime(int geographyId, unsigned int object, qint64 time)
{
    return onGeography<MVectorData>(geographyId, false, [&](const MVectorData &geography) {
        const FMObjectChain *chain = chainOf(geography, object);
        return chain && exists(*chain, time);
    });
}

bool VORN_GetExistingObjects(int geographyId, qint64 time, QVector<unsigned int> &objects)
{
    return onGeography<MVectorData>(geographyId, false, [&](const MVectorData &geography) {
        const QVector<int> &ids = geography.GetFennimIdMap();
        const QMap<int, FMObjectChain *> &chains = geography.GetFennims()->mChains;
        QVector<unsigned int> found;
        found.reserve(ids.size());
        // The geometry keeps its lists of observations. As many as objects: all of them exist.
        if (!ids.isEmpty() && chains.size() == ids.size() && chains.firstKey() == ids.first()
            && chains.lastKey() == ids.last()
            && geography.GetFennims()->GetObservationsAtTime(time).size() == ids.size()) {
            found.resize(ids.size());
            std::iota(found.begin(), found.end(), 0U);
            objects = found;
            return true;
        }
        auto chain =
            chains.constBegin(); // both usually ascend: the next one is seldom searched for
        for (int i = 0; i < ids.size(); ++i) {
            if (chain == chains.constEnd() || chain.key() != ids[i])
                chain = chains.constFind(ids[i]);
            if (chain == chains.constEnd())
                continue;
            if (exists(**chain, time))
                found.append(static_cast<unsigned int>(i));
            ++chain;
        }
        objects = found;
        return true;
    });
}

bool VORN_GetAllObjectTimes(int geographyId, QVector<Interval> &intervals)
{
    return onGeography(geographyId, false, [&](MGeoData &geography) {
        if (const auto *vectors = asKind<MVectorData>(&geography))
            intervals = toIntervals(vectors->GetMergedObjectTimes());
        else
            intervals = {geography.GetTimeBounds()};
        return true;
    });
}

unsigned int VORN_GetObjectCount(int geographyId, qint64 time)
{
    return onGeography(geographyId, 0U, [time](MGeoData &geography) {
        const auto *vectors = asKind<MVectorData>(&geography);
        if (!vectors)
            return geography.GetObjectCount();
        return static_cast<unsigned int>(vectors->GetFennims()->GetObservationsAtTime(time).size());
    });
}
