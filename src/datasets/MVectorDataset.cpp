// SPDX-License-Identifier: MIT
#include "datainterface/MVectorDataset.h"
#include <QDateTime>
#include <cmath>
#include "Common/detail/failure.h"
#include "datasets/MVectorDataset.stores.h"

using namespace datainterface;

namespace {

/// The one interval of a static dataset.
const TimeStamp kStaticStamp(0, 0, true, true);

QString now()
{
    return QDateTime::currentDateTime().toString();
}

template <class... Maps> void deleteContainers(std::tuple<Maps &...> maps)
{
    std::apply([](Maps &...map) { ((qDeleteAll(map), map.clear()), ...); }, maps);
}

template <class Map> bool checkOutAll(const Map &map)
{
    for (const auto *container : map)
        container->CheckOut();
    return !map.isEmpty();
}

template <class Map> void checkInAll(const Map &map)
{
    for (const auto *container : map) {
        if (container->CheckOutCount() > 0)
            container->CheckIn();
    }
}

} // namespace

MVectorDataset::MVectorDataset(MDataSource *source, const QString &directory)
    : MDataset(source, directory), mStores(std::make_unique<Stores>(*this))
{
    mDatasetKind = VectorKind;
    SetMetaData(QStringLiteral("Creation date"), now());
}

MVectorDataset::MVectorDataset(MDataSource *source, StorageType storage, int id, DataType type,
                               const QString &name, const QString &path, int realizationCount,
                               int objectCount)
    : MDataset(source, id, type, name, path, realizationCount),
      mObjectCount(objectCount),
      mStorageType(storage),
      mStores(std::make_unique<Stores>(*this))
{
    mDatasetKind = VectorKind;
    SetMetaData(QStringLiteral("Creation date"), now());
    for (int i = 0; i < realizationCount; ++i)
        mRealizationData.insert(i, MVectorDataRealization());
}

// Every map is cleared, not only the one in use: a single value of another kind than the dataset's
// is stored in the map of its kind, and a load that failed may have left the type unset.
MVectorDataset::~MVectorDataset()
{
    for (MVectorDataRealization &realization : realizationsToChange()) {
        deleteContainers(realization.maps());
    }
}

void MVectorDataset::DropValues()
{
    for (MVectorDataRealization &realization : realizationsToChange()) {
        deleteContainers(realization.maps());
    }
    mFrequencies = RealizationVectorDataFrequencies();
    mStatistics.fill(StatsRealization());
    mTimeBounds = TimeStamp();
    RemoveAllVariogramModels();
}

TimeStamp MVectorDataset::stampOf(const TimeStamp &stamp) const
{
    if (mIsStatic)
        return kStaticStamp;
    return TimeStamp(stamp.startTime, stamp.endTime, stamp.inclusiveStart, stamp.inclusiveEnd);
}

const MVectorDataRealization *MVectorDataset::realizationAt(int realization) const
{
    const auto found = mRealizationData.constFind(realization);
    return found == mRealizationData.constEnd() ? nullptr : &*found;
}

QMap<int, MVectorDataRealization> &MVectorDataset::realizationsToChange()
{
    mStores->forget();
    return mRealizationData;
}

const MVectorDataRealization &MVectorDataset::knownRealization(int realization) const
{
    const MVectorDataRealization *found = realizationAt(realization);
    require(found, "Invalid realization index");
    return *found;
}

void MVectorDataset::dataChanged(int realization)
{
    invalidateStatistics(realization);
    RemoveAllVariogramModels();
}

bool MVectorDataset::CheckOutRealization(int realization, int) const
{
    const MVectorDataRealization *found = realizationAt(realization);
    return found && visitContainers(*found, mDataType, mStorageType, [](const auto &map) {
               return checkOutAll(map);
           });
}

bool MVectorDataset::CheckInRealization(int realization, int) const
{
    visitContainers(knownRealization(realization), mDataType, mStorageType,
                    [](const auto &map) { checkInAll(map); });
    return true;
}

bool MVectorDataset::CheckOutTimeSlice(int realization, qint64 time, int) const
{
    return isSliced() && visitElement(mDataType, [&](auto element) {
               const auto *slice =
                   mStores->sliceAt<ElementOf<decltype(element)>>(realization, time);
               if (slice)
                   slice->CheckOut();
               return slice != nullptr;
           });
}

bool MVectorDataset::CheckInTimeSlice(int realization, qint64 time, int) const
{
    knownRealization(realization);
    return isSliced() && visitElement(mDataType, [&](auto element) {
               const auto *slice =
                   mStores->sliceAt<ElementOf<decltype(element)>>(realization, time);
               if (slice && slice->CheckOutCount() > 0)
                   slice->CheckIn();
               return slice != nullptr;
           });
}

bool MVectorDataset::CheckOutTimeSeries(int realization, int id, int) const
{
    require(mStorageType == TimeSeries, "mStorageType == TimeSeries");
    require(holdsObject(id), "id < mObjectCount");
    knownRealization(realization);
    visitElement(mDataType, [&](auto element) {
        mStores->series<ElementOf<decltype(element)>>().atOrNew(realization, id)->CheckOut();
    });
    return true;
}

bool MVectorDataset::CheckInTimeSeries(int realization, int id, int) const
{
    require(mStorageType == TimeSeries, "mStorageType == TimeSeries");
    require(holdsObject(id), "id < mObjectCount");
    knownRealization(realization);
    return visitElement(mDataType, [&](auto element) {
        const auto *series = mStores->series<ElementOf<decltype(element)>>().at(realization, id);
        if (series && series->CheckOutCount() > 0)
            series->CheckIn();
        return series != nullptr;
    });
}

void MVectorDataset::ClearRealization(MVectorDataRealization &realization)
{
    mStores->forget();
    visitContainers(realization, mDataType, mStorageType, [](auto &map) {
        qDeleteAll(map);
        map.clear();
    });
}

void MVectorDataset::SetStatic(bool isStatic)
{
    if (isStatic == mIsStatic)
        return;
    mIsStatic = isStatic;
    visitElement(mDataType, [this](auto element) {
        using T = ElementOf<decltype(element)>;
        mFrequencies.tableOf<T>().clear();
        if (!isSliced())
            mStores->series<T>().clear();
        else if (mIsStatic)
            mStores->slices<T>().keepEarliest(kStaticStamp);
        else
            mStores->slices<T>().clear();
    });
    RecalculateFrequencies();
    mTimeBounds = kStaticStamp;
}

// Shrinking keeps the series of the objects that it cuts off: project files contain such series,
// and CleanPre201044Data removes them.
bool MVectorDataset::Resize(int objectCount)
{
    if (objectCount < 0)
        return false;
    RemoveAllVariogramModels();
    visitElement(mDataType, [&](auto element) {
        mStores->slices<ElementOf<decltype(element)>>().resize(objectCount);
    });
    mObjectCount = objectCount;
    return true;
}

void MVectorDataset::RequireReleased(const QSet<int> &ids) const
{
    visitElement(mDataType, [&](auto element) {
        mStores->series<ElementOf<decltype(element)>>().requireReleased(ids);
    });
}

void MVectorDataset::RemoveObjects(const QSet<int> &ids)
{
    QVector<int> sorted;
    std::copy_if(ids.begin(), ids.end(), std::back_inserter(sorted),
                 [this](int id) { return holdsObject(id); });
    std::sort(sorted.begin(), sorted.end());
    const QSet<int> removed(sorted.begin(), sorted.end());
    const int remaining = mObjectCount - sorted.size();
    RequireReleased(removed);
    visitElement(mDataType, [&](auto element) {
        using T = ElementOf<decltype(element)>;
        for (auto it = mRealizationData.keyBegin(); it != mRealizationData.keyEnd(); ++it) {
            mStores->slices<T>().removeObjects(*it, removed, remaining);
            mStores->series<T>().removeObjects(*it, sorted);
            invalidateStatistics(*it);
        }
    });
    mObjectCount = remaining;
    RecalculateFrequencies();
}

bool MVectorDataset::IsValid() const
{
    if (mDataType == DecimalType) {
        const auto &table = mFrequencies.tableOf<double>();
        return std::any_of(table.keyBegin(), table.keyEnd(),
                           [](double key) { return std::isfinite(key); });
    }
    return mDataType == IntegerType ? !mFrequencies.tableOf<int>().isEmpty()
                                    : !mFrequencies.tableOf<QString>().isEmpty();
}

bool MVectorDataset::HasMissing(int realization) const
{
    return mStores->visit([&](const auto &store, auto) {
        return store.of(realization) && store.hasMissing(realization, mObjectCount);
    });
}

void MVectorDataset::CleanPre201044Data()
{
    if (isSliced())
        return;
    visitElement(mDataType, [this](auto element) {
        mStores->series<ElementOf<decltype(element)>>().dropBeyond(mObjectCount);
    });
}
