// SPDX-License-Identifier: MIT
// The definition of a set and the map of its lists. The keys of the map are spans of time that do
// not overlap. Spans that overlap compare equal, so a search for an instant finds the span that
// contains it.
#include "datainterface/AdjacencySet.h"
#include <algorithm>
#include <limits>
#include "Common/detail/failure.h"
#include "datainterface/MRasterData.h"
#include "datainterface/MVectorData.h"
#include "datainterface/MissingData.h"
#include "fennimark/Fennims.h"
#include "weights/egoNeighbors.h"
#include "weights/weighting.h"

using namespace datainterface;

namespace {

constexpr int kGeographyShift = 16;
constexpr double kUnusedRange = 100.0; // the value of the field in sets of nearest points

bool isByBorder(spatialWeightType type)
{
    return type == BorderLengthWeight || type == BorderShareWeight;
}

// Removes missing neighbours; returns false if none was missing.
bool dropMissing(QVector<neighborDatum> &list, const VORN_MissingData &missing)
{
    const auto isMissing = [&missing](const neighborDatum &datum) {
        return missing.isMissing(datum.id);
    };
    if (missing.noneMissing() || std::none_of(list.cbegin(), list.cend(), isMissing))
        return false;
    list.erase(std::remove_if(list.begin(), list.end(), isMissing), list.end());
    return true;
}

AdjacencySet::GeographyType typeOf(const MGeoData *geography)
{
    if (dynamic_cast<const MRasterData *>(geography))
        return AdjacencySet::RasterGeography;
    const auto *vector = dynamic_cast<const MVectorData *>(geography);
    const Fennims *fennims = vector ? vector->GetFennims() : nullptr;
    const bool isPolygons = fennims && fennims->GetGeographyType() == Fennims::PolygonGeography;
    return isPolygons ? AdjacencySet::PolygonGeography : AdjacencySet::PointGeography;
}

} // namespace

int AdjacencySet::sNextId = 0;

AdjacencySet::AdjacencySet() = default;

AdjacencySet::AdjacencySet(const QString &name, MGeoData *geography, const Definition &definition,
                           bool suits)
    : mName(name), mDefinition(definition)
{
    require(suits, "Invalid weight set type");
    SetGeoData(geography);
    CreateId();
}

AdjacencySet::AdjacencySet(const QString &name, MGeoData *geography, bool isClusterSet,
                           bool includeEgo)
    : AdjacencySet(name, geography,
                   {typeOf(geography), CustomNeighbors, CustomWeight, 0, 0, false, 0.0, 1.0, 1.0,
                    includeEgo, isClusterSet},
                   true)
{
}

AdjacencySet::AdjacencySet(const QString &name, MVectorData *geography, int ringCount, bool queen,
                           spatialWeightType weights, bool includeEgo)
    : AdjacencySet(name, geography,
                   {PolygonGeography, PolygonNeighbors, weights, 0, ringCount, queen, 0.0, 1.0, 1.0,
                    includeEgo},
                   weights != InverseDistanceWeight)
{
}

AdjacencySet::AdjacencySet(const QString &name, MVectorData *geography, int neighborCount,
                           spatialWeightType weights, bool includeEgo, double numerator,
                           double power)
    : AdjacencySet(name, geography,
                   {PointGeography, NearestNeighbors, weights, neighborCount, 0, false,
                    kUnusedRange, numerator, power, includeEgo},
                   !isByBorder(weights))
{
}

AdjacencySet::AdjacencySet(const QString &name, MVectorData *geography, double range,
                           spatialWeightType weights, bool includeEgo, double numerator,
                           double power)
    : AdjacencySet(
        name, geography,
        {PointGeography, RangeNeighbors, weights, 0, 0, false, range, numerator, power, includeEgo},
        !isByBorder(weights))
{
}

AdjacencySet::AdjacencySet(const QString &name, MRasterData *geography, double range,
                           spatialWeightType weights, bool includeEgo, double numerator,
                           double power)
    : AdjacencySet(name, geography,
                   {RasterGeography, RangeNeighbors, weights, 0, 0, false, range, numerator, power,
                    includeEgo},
                   !isByBorder(weights))
{
}

AdjacencySet::AdjacencySet(const QString &name, MRasterData *geography, neighborMethodType method,
                           spatialWeightType weights, bool includeEgo, double numerator,
                           double power)
    : AdjacencySet(
        name, geography,
        {RasterGeography, method, weights, 0, 0, false, 0.0, numerator, power, includeEgo},
        (method == RookNeighbors || method == QueenNeighbors) && !isByBorder(weights))
{
}

AdjacencySet::AdjacencySet(const AdjacencySet &other)
    : QObject(),
      mName(other.mName),
      mDefinition(other.mDefinition),
      mId(other.mId),
      mInformation(other.mInformation)
{
    SetGeoData(other.mGeoData);
    for (const auto &[stamp, lists] : other.mWeights) {
        auto copies = std::make_shared<NeighborLists>();
        copies->reserve(lists->size());
        for (const egoNeighbors &list : *lists)
            copies->push_back(list.copy());
        mWeights.emplace(stamp, std::move(copies));
    }
}

AdjacencySet::~AdjacencySet() = default;

void AdjacencySet::CreateId()
{
    require(mGeoData != nullptr, "Geography not defined");
    require(sNextId >= 0 && sNextId < kIdCount, "Weight set id not defined");
    mId = static_cast<int>(static_cast<quint32>(mGeoData->GetId()) << kGeographyShift) + sNextId++;
}

void AdjacencySet::SetName(const QString &name, bool notify)
{
    mName = name;
    if (notify)
        Q_EMIT RenamedSignal(mGeoData, mId, name.toUtf8().constData());
}

void AdjacencySet::SetGeoData(MGeoData *geography)
{
    mGeoData = geography;
    if (geography)
        connect(this, &AdjacencySet::RenamedSignal, geography, &MGeoData::WeightSetRenamedSignal,
                Qt::UniqueConnection);
}

void AdjacencySet::ClearSpatialWeights()
{
    mWeights.clear();
}

// Returns null when nothing is stored for the time.
AdjacencySet::ListsPointer AdjacencySet::listsAt(qint64 t) const
{
    const auto found = mWeights.find(TimeStamp(t));
    return found != mWeights.end() && found->first.contains(t) ? found->second : nullptr;
}

// Returns the lists of a span, which are created empty if there are none. Null for a span without
// an instant, and when another span overlaps it and may not be replaced.
AdjacencySet::ListsPointer AdjacencySet::prepareLists(const TimeStamp &stamp, bool replace)
{
    require(mGeoData != nullptr, "Geography not defined");
    if (!stamp.isValid())
        return nullptr;
    const auto [first, last] = mWeights.equal_range(stamp);
    if (first != last && first->first == stamp)
        return first->second;
    if (first != last && !replace)
        return nullptr;
    auto lists = std::make_shared<NeighborLists>(mGeoData->GetObjectCount());
    mWeights.erase(first, last);
    mWeights.emplace(stamp, lists);
    return lists;
}

void AdjacencySet::store(NeighborLists &lists, int id, const neighborDatum *list, int count)
{
    lists[static_cast<size_t>(id)] = egoNeighbors(list, count);
    mGeoData->SpatialWeightSetChanged(this);
}

bool AdjacencySet::AddToSpatialWeights(int id, const QVector<neighborDatum> &list,
                                       const TimeStamp &stamp, bool replace)
{
    require(mGeoData != nullptr, "Geography not defined");
    if (id < 0 || static_cast<unsigned int>(id) >= mGeoData->GetObjectCount())
        return false;
    const ListsPointer lists = prepareLists(stamp, replace);
    if (!lists)
        return false;
    store(*lists, id, list.constData(), list.size());
    return true;
}

bool AdjacencySet::HasPrecalculatedSpatialWeights(qint64 t) const
{
    return listsAt(t) != nullptr;
}

QVector<neighborDatum>
AdjacencySet::RecalculateNeighborWeights(const QVector<neighborDatum> &list,
                                         const VORN_MissingData &missing) const
{
    QVector<neighborDatum> present = list;
    dropMissing(present, missing);
    weightRule().apply(present.data(), present.size());
    return present;
}

WeightRule AdjacencySet::weightRule() const
{
    const bool isRaster = dynamic_cast<const MRasterData *>(mGeoData) != nullptr;
    return {isRaster,
            mDefinition.neighborType,
            mDefinition.weightType,
            mDefinition.neighborCount,
            mDefinition.inverseDistanceNumerator,
            mDefinition.inverseDistancePower};
}

WeightsAtT AdjacencySet::GetSpatialWeightsHandle(qint64 t, bool showProgress)
{
    if (!PrecalculateSpatialWeights(t, showProgress))
        return {};
    const ListsPointer lists = listsAt(t);
    return lists ? WeightsAtT{this, lists} : WeightsAtT{};
}

bool AdjacencySet::GetSpatialWeights(unsigned int id, qint64 t, QVector<neighborDatum> &list,
                                     const VORN_MissingData &missing, bool showProgress)
{
    list.clear();
    if (!PrecalculateSpatialWeights(t, showProgress))
        return false;
    const ListsPointer lists = listsAt(t);
    return lists && readList(*lists, id, list, missing);
}

bool AdjacencySet::GetSpatialWeights(const WeightsAtT &handle, unsigned int id,
                                     QVector<neighborDatum> &list,
                                     const VORN_MissingData &missing) const
{
    const auto lists = handle.lists.lock();
    list.clear();
    return lists && readList(*lists, id, list, missing);
}

bool AdjacencySet::readList(const NeighborLists &lists, unsigned int id,
                            QVector<neighborDatum> &list, const VORN_MissingData &missing) const
{
    if (id >= lists.size() || !lists[id].read(list))
        return false;
    if (dropMissing(list, missing) && !IsCustom())
        weightRule().apply(list.data(), list.size());
    return true;
}

bool AdjacencySet::GetSpatialWeightSetSize(const WeightsAtT &handle, int &size) const
{
    const auto lists = handle.lists.lock();
    if (!lists)
        return false;
    qint64 bytes = 0;
    for (const egoNeighbors &list : *lists)
        bytes += list.storedBytes();
    size = static_cast<int>(std::min<qint64>(bytes, std::numeric_limits<int>::max()));
    return true;
}

QList<TimeStamp> AdjacencySet::GetAdjacencyTimes() const
{
    QList<TimeStamp> times;
    for (const auto &entry : mWeights)
        times.append(entry.first);
    return times;
}

SpatialWeightSetProps AdjacencySet::GetProperties() const
{
    return {mId, mName, mDefinition.isClusterSet, mDefinition.includeEgo};
}

bool AdjacencySet::HoldsListsOf(unsigned int objectCount) const
{
    return std::all_of(mWeights.begin(), mWeights.end(), [objectCount](const auto &entry) {
        return entry.second->size() == objectCount;
    });
}
