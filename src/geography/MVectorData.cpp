// SPDX-License-Identifier: MIT
#include "datainterface/MVectorData.h"
#include <algorithm>
#include "Common/detail/failure.h"
#include "datainterface/MAttributes.h"
#include "datainterface/MDatum.h"
#include "datainterface/MVectorDataSource.h"
#include "fennimark/FMObjectChain.h"
#include "fennimark/FMProjectionInfo.h"
#include "fennimark/Fennims.h"
#include "frame/listeners.h"
#include "geography/projectionTags.h"

using namespace datainterface;

namespace {

const Connection kObjectConnections[] = {
    {SIGNAL(ObjectsWillBeRemovedSignal(int, const QSet<int> &)),
     SLOT(ObjectsWillBeRemovedSlot(int, const QSet<int> &))},
    {SIGNAL(ObjectsWereRemovedSignal(int, const QSet<int> &)),
     SLOT(ObjectsWereRemovedSlot(int, const QSet<int> &))},
};

// The attribute of selected objects. It is cleared when object indices change.
constexpr int kSelectedAttribute = 1;

int propertyType(Fennims::GeoTypes type)
{
    switch (type) {
    case Fennims::PointGeography:
        return GeoProps::Points;
    case Fennims::LineGeography:
        return GeoProps::Lines;
    case Fennims::PolygonGeography:
        break;
    }
    return GeoProps::Polygons;
}

// The id of the first dataset: the geography's id in the upper 16 bits.
int datasetIdSeed(int geographyId)
{
    return static_cast<int>(static_cast<quint32>(geographyId) << 16);
}

bool existsIn(const QPair<timeRange, int> &observation)
{
    return observation.first.end >= observation.first.start;
}

QList<TimeStamp> timesOf(const FMObjectChain &chain)
{
    QList<TimeStamp> times;
    for (const auto &observation : chain.GetObservations())
        times.append(TimeStamp(observation.first));
    return times;
}

} // namespace

MVectorData::MVectorData(const QString &name, TimeFormat format, const QString &filePath)
    : MGeoData(name, format, filePath)
{
}

MVectorData::~MVectorData() = default;

bool MVectorData::Initialize(Fennims *fennims, bool createDefaultWeightSet)
{
    mFennims.reset(fennims);
    mFennims->SetName(mName.toLocal8Bit().constData());
    setProjectionTags(mMetaData, mFennims->GetProjectionSettings(), AngularUnit::Name);
    mVectorDataSource = new MVectorDataSource(
        mFilePath, static_cast<unsigned int>(mFennims->GetChainCount()), datasetIdSeed(mId));
    delete mDataSource;
    mDataSource = mVectorDataSource;
    numberObjects();
    if (createDefaultWeightSet)
        if (AdjacencySet *set = CreateDefaultAdjacencySet(this, false))
            AddSpatialWeightSet(set);
    return true;
}

void MVectorData::numberObjects()
{
    mFennimIdMap.clear();
    mFennimIdMap.reserve(mFennims->mChains.size());
    for (const FMObjectChain *chain : std::as_const(mFennims->mChains))
        mFennimIdMap.append(chain->id);
    indexFennimIds();
}

void MVectorData::indexFennimIds()
{
    mObjectIndexByFennimId.clear();
    const auto other = std::find_if(mFennimIdMap.cbegin(), mFennimIdMap.cend(),
                                    [index = 0](int id) mutable { return id != index++; });
    if (other == mFennimIdMap.cend())
        return;
    mObjectIndexByFennimId.reserve(mFennimIdMap.size());
    for (int i = 0; i < mFennimIdMap.size(); ++i)
        mObjectIndexByFennimId.insert(mFennimIdMap[i], i);
}

bool MVectorData::IsValid() const
{
    return mFennims && mFennims->GetChainCount() >= 1
           && mDataSource->GetSourceKind() == MDataSource::VectorSource;
}

void MVectorData::SetName(const QString &name)
{
    MGeoData::SetName(name);
    mFennims->SetName(name.toLocal8Bit().constData());
}

GeoProps MVectorData::GetProperties()
{
    GeoProps props = BaseProperties();
    props.type = propertyType(mFennims->GetGeographyType());
    return props;
}

unsigned int MVectorData::GetObjectCount() const
{
    return mDataSource->GetObjectCount();
}

TimeStamp MVectorData::GetTimeBounds()
{
    return TimeStamp(mFennims->GetTimeBounds());
}

RectInT MVectorData::GetBoundingRect()
{
    return mFennims->GetBoundingRect();
}

bool MVectorData::AddListener(QObject *listener)
{
    if (!MGeoData::AddListener(listener))
        return false;
    require(connectAll(this, listener, kObjectConnections), "Can't connect signals");
    return true;
}

// An object that exists at a time outside the intervals of the data has missing data. The
// dataset is tested first, for objects without any value.
bool MVectorData::HasObjectsWithMissingData(int dataset) const
{
    MVectorDataset *data = mVectorDataSource->GetVectorDataset(dataset);
    if (!data)
        return false;
    for (int realization = 0; realization < data->GetRealizationCount(); ++realization)
        if (data->HasMissing(realization))
            return true;
    if (data->IsStatic())
        return false;
    const auto leavesGap = [&](int object, const QList<TimeStamp> &dataTimes) {
        const FMObjectChain *chain =
            mFennims->GetChainById(GetFennimId(static_cast<unsigned int>(object)));
        return chain && !TimeStamp::TimeStampDifference(timesOf(*chain), dataTimes).isEmpty();
    };
    for (int realization = 0; realization < data->GetRealizationCount(); ++realization) {
        // All objects of a dataset stored as slices share its intervals.
        const bool isShared = data->GetStorageType() == MVectorDataset::TimeSlice;
        const QList<TimeStamp> shared =
            isShared ? data->GetTimeSliceIntervals(realization) : QList<TimeStamp>();
        for (int object = 0; object < mFennimIdMap.size(); ++object)
            if (leavesGap(object,
                          isShared ? shared : data->GetTimeSeriesIntervals(realization, object)))
                return true;
    }
    return false;
}

void MVectorData::SelectObjectsByValue(int dataset, int realization, qint64 time,
                                       const QSet<MDatum> &values, int attribute)
{
    selectByValue(dataset, realization, time, values, attribute);
}

void MVectorData::SelectObjectsByRange(int dataset, int realization, qint64 time, double low,
                                       double high, int attribute)
{
    selectByRange(dataset, realization, time, low, high, attribute);
}

void MVectorData::RemoveObjects(const QSet<int> &objects)
{
    QSet<int> present;
    for (int object : objects)
        if (object >= 0 && object < mFennimIdMap.size())
            present.insert(object);
    mVectorDataSource->RequireReleased(present);
    Q_EMIT ObjectsWillBeRemovedSignal(mId, objects);
    QVector<int> kept;
    for (int object = 0; object < mFennimIdMap.size(); ++object) {
        if (present.contains(object))
            mFennims->RemoveChain(mFennims->GetChainById(mFennimIdMap[object]));
        else
            kept.append(mFennimIdMap[object]);
    }
    mFennimIdMap = kept;
    indexFennimIds();
    mVectorDataSource->RemoveObjects(present);
    for (MAttributes *attributes : std::as_const(mAttributes)) {
        attributes->RemoveObjects(present);
        attributes->SetAllAttribute(kSelectedAttribute, false);
    }
    ClearSpatialWeightSets();
    Q_EMIT ObjectsWereRemovedSignal(mId, objects);
    mVectorDataSource->AnnounceChangedDatasets(mVectorDataSource->GetDatasetIds());
}

bool MVectorData::ReplaceVORN(Fennims *fennims)
{
    require(dynamic_cast<MVectorDataSource *>(mDataSource) != nullptr, "Invalid data source type");
    if (fennims->GetChainCount() != mFennims->GetChainCount())
        return false;
    ClearSpatialWeightSets();
    mDataSource->RemoveAllVariogramModels();
    mFennims.reset(fennims);
    mFennims->SetName(mName.toLocal8Bit().constData());
    numberObjects();
    return true;
}

MVectorData *MVectorData::CreateFromSubset(const QString &, bool, const QSet<unsigned int> &)
{
    return nullptr;
}

bool MVectorData::ExistsAtTime(qint64 time)
{
    return std::any_of(
        mFennims->mChains.cbegin(), mFennims->mChains.cend(),
        [time](const FMObjectChain *chain) { return existsIn(chain->GetObservation(time)); });
}

bool MVectorData::GetMissingValues(int dataset, int realization, qint64 time, QSet<int> &missing)
{
    QSet<int> found;
    if (!mVectorDataSource->GetMissingValues(dataset, realization, time, found))
        return false;
    for (const FMObjectChain *chain : std::as_const(mFennims->mChains)) {
        if (!existsIn(chain->GetObservation(time)))
            found.insert(GetObjectId(chain->id));
    }
    missing = found;
    return true;
}

bool MVectorData::SetMissingValue(int dataset, int realization, unsigned int object,
                                  const TimeStamp &stamp)
{
    return mVectorDataSource->SetMissingValue(dataset, realization, object, stamp);
}

int MVectorData::GetFennimId(unsigned int index) const
{
    require(index < static_cast<unsigned int>(mFennimIdMap.size()), "index < mFennimIdMap.size()");
    return mFennimIdMap[static_cast<int>(index)];
}

QList<TimeStamp> MVectorData::GetMergedObjectTimes() const
{
    QList<QList<TimeStamp>> times;
    for (const FMObjectChain *chain : std::as_const(mFennims->mChains))
        times.append(timesOf(*chain));
    return TimeStamp::MergeTimeStamps(times);
}
