// SPDX-License-Identifier: MIT
#include "datainterface/WeightsAPI.h"
#include <algorithm>
#include <initializer_list>
#include <memory>
#include "api/callFrame.h"
#include "datainterface/MRasterData.h"
#include "datainterface/MVectorData.h"
#include "fennimark/Fennims.h"

using namespace datainterface;

namespace {

/// Calls `call` with the weight set of the given id.
template <class Result, class Call> Result onSet(int setId, Result miss, Call call)
{
    return onGeography(geographyIdOf(setId), miss, [&](MGeoData &geography) {
        AdjacencySet *set = geography.GetSpatialWeightSet(setId);
        return set ? call(*set) : miss;
    });
}

int addSet(MGeoData &geography, std::unique_ptr<AdjacencySet> set, const QString &information)
{
    set->AddInformation(information);
    const int id = set->GetId();
    geography.AddSpatialWeightSet(set.release());
    return id;
}

bool isOneOf(spatialWeightType type, std::initializer_list<spatialWeightType> types)
{
    return std::find(types.begin(), types.end(), type) != types.end();
}

bool suitsDistances(spatialWeightType type)
{
    return isOneOf(
        type, {ConstantWeight, RowStandardizedWeight, DistanceRankWeight, InverseDistanceWeight});
}

/// Adds the weight set that `make` creates for a geography. @return its id; -1 when the geography
/// does not exist or has objects of another kind.
template <class Make>
int createOn(int geographyId, Fennims::GeoTypes type, const QString &information, Make make)
{
    return onGeography<MVectorData>(geographyId, -1, [&](MVectorData &geography) {
        if (geography.GetFennims()->GetGeographyType() != type)
            return -1;
        return addSet(geography, make(geography), information);
    });
}
template <class Make> int createOnRaster(int geographyId, const QString &information, Make make)
{
    return onGeography<MRasterData>(geographyId, -1, [&](MRasterData &geography) {
        return addSet(geography, make(geography), information);
    });
}

} // namespace

int VORN_CreateNearestNeighborWeightSet(int geographyId, const QString &name,
                                        const QString &information, int neighborCount,
                                        spatialWeightType weights, bool includeEgo,
                                        double numerator, double power)
{
    if (!suitsDistances(weights))
        return -1;
    return createOn(geographyId, Fennims::PointGeography, information, [&](MVectorData &geography) {
        return std::make_unique<AdjacencySet>(name, &geography, neighborCount, weights, includeEgo,
                                              numerator, power);
    });
}

int VORN_CreateRangeWeightSet(int geographyId, const QString &name, const QString &information,
                              double range, spatialWeightType weights, bool includeEgo,
                              double numerator, double power)
{
    if (!suitsDistances(weights))
        return -1;
    const auto make = [&](auto &geography) {
        return std::make_unique<AdjacencySet>(name, &geography, range, weights, includeEgo,
                                              numerator, power);
    };
    const int id = createOn(geographyId, Fennims::PointGeography, information, make);
    return id >= 0 ? id : createOnRaster(geographyId, information, make);
}

int VORN_CreatePolygonWeightSet(int geographyId, const QString &name, const QString &information,
                                int ringCount, bool queen, spatialWeightType weights,
                                bool includeEgo, double, double)
{
    if (!isOneOf(weights, {ConstantWeight, RowStandardizedWeight, DistanceRankWeight,
                           BorderLengthWeight, BorderShareWeight, CustomWeight}))
        return -1;
    return createOn(geographyId, Fennims::PolygonGeography, information,
                    [&](MVectorData &geography) {
                        return std::make_unique<AdjacencySet>(name, &geography, ringCount, queen,
                                                              weights, includeEgo);
                    });
}

int VORN_CreateAdjacentPixelWeightSet(int geographyId, const QString &name,
                                      const QString &information, neighborMethodType method,
                                      spatialWeightType weights, bool includeEgo, double numerator,
                                      double power)
{
    if ((method != RookNeighbors && method != QueenNeighbors)
        || !(suitsDistances(weights) || weights == CustomWeight))
        return -1;
    return createOnRaster(geographyId, information, [&](MRasterData &geography) {
        return std::make_unique<AdjacencySet>(name, &geography, method, weights, includeEgo,
                                              numerator, power);
    });
}

int VORN_CreateClusterSet(int geographyId, const QString &name, const QString &information)
{
    return onGeography(geographyId, -1, [&](MGeoData &geography) {
        constexpr bool isClusterSet = true;
        constexpr bool includeEgo = false;
        return addSet(geography,
                      std::make_unique<AdjacencySet>(name, &geography, isClusterSet, includeEgo),
                      information);
    });
}

bool VORN_RemoveClusterSet(int setId)
{
    return onGeography(geographyIdOf(setId), false, [setId](MGeoData &geography) {
        return geography.RemoveSpatialWeightSet(setId);
    });
}

bool VORN_AddToClusterSet(int setId, int id, const Interval &interval,
                          const QVector<neighborDatum> &list)
{
    constexpr bool replace = false;
    return onSet(setId, false, [&](AdjacencySet &set) {
        return set.AddToSpatialWeights(id, list, TimeStamp(interval), replace);
    });
}

bool VORN_ShowClusterSetInLayer(int window, int setId)
{
    constexpr int kNoObject = -1;
    return controller()->ShowSpatialWeightsInMap(window, setId, kNoObject);
}

bool VORN_IsCustomWeightSet(int setId)
{
    return onSet(setId, false, [](const AdjacencySet &set) { return set.IsCustom(); });
}

SpatialWeightSetProps VORN_GetSpatialWeightSetProperties(int setId)
{
    return onSet(setId, SpatialWeightSetProps(),
                 [](const AdjacencySet &set) { return set.GetProperties(); });
}

bool VORN_PrecalculateSpatialWeights(int setId, qint64 t, bool showProgress)
{
    return onSet(setId, false, [&](AdjacencySet &set) {
        return set.PrecalculateSpatialWeights(t, showProgress);
    });
}

bool VORN_GetSpatialWeights(int setId, unsigned int id, qint64 t, QVector<neighborDatum> &list,
                            const VORN_MissingData &missing)
{
    constexpr bool showProgress = false;
    return onSet(setId, false, [&](AdjacencySet &set) {
        return set.GetSpatialWeights(id, t, list, missing, showProgress);
    });
}

WeightsAtT VORN_GetSpatialWeightsHandle(int setId, qint64 t, bool showProgress)
{
    return onSet(setId, WeightsAtT(),
                 [&](AdjacencySet &set) { return set.GetSpatialWeightsHandle(t, showProgress); });
}

bool VORN_GetSpatialWeights(WeightsAtT handle, unsigned int id, QVector<neighborDatum> &list,
                            const VORN_MissingData &missing)
{
    // The set owns the lists, so handle.set is valid as long as the lists exist.
    return handle.set && !handle.lists.expired()
           && handle.set->GetSpatialWeights(handle, id, list, missing);
}

bool VORN_GetSpatialWeightsSize(WeightsAtT handle, int &size)
{
    return handle.set && !handle.lists.expired()
           && handle.set->GetSpatialWeightSetSize(handle, size);
}
