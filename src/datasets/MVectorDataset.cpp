// SPDX-License-Identifier: MIT
#include "datainterface/MVectorDataset.h"
#include <QDateTime>
#include <cmath>
#include "Common/detail/failure.h"
#include "datasets/elementTypes.h"
#include "datasets/lastSlice.h"

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

// A slice of texts cannot be empty, so without objects there is none.
template <class T> bool dropEmptySlices(MVectorDataset::SliceMap<T> &slices, int objectCount)
{
    if (!std::is_same_v<T, QString> || objectCount > 0)
        return false;
    qDeleteAll(slices);
    slices.clear();
    return true;
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
    : MDataset(source, directory)
{
    mDatasetKind = VectorKind;
    SetMetaData(QStringLiteral("Creation date"), now());
}

MVectorDataset::MVectorDataset(MDataSource *source, StorageType storage, int id, DataType type,
                               const QString &name, const QString &path, int realizationCount,
                               int objectCount)
    : MDataset(source, id, type, name, path, realizationCount),
      mObjectCount(objectCount),
      mStorageType(storage)
{
    mDatasetKind = VectorKind;
    SetMetaData(QStringLiteral("Creation date"), now());
    for (int i = 0; i < realizationCount; ++i)
        mRealizationData.insert(i, MVectorDataRealization());
}

// Every map, not the one in use alone: a single value of another kind than the dataset's lies in
// the map of its kind, and a load that failed may have left the type unset.
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

MVectorDataRealization *MVectorDataset::realizationAt(int realization)
{
    QMap<int, MVectorDataRealization> &realizations = realizationsToChange();
    const auto found = realizations.find(realization);
    return found == realizations.end() ? nullptr : &*found;
}

QMap<int, MVectorDataRealization> &MVectorDataset::realizationsToChange()
{
    mLastSlices = LastSlices();
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
               const auto *slice = sliceAt<ElementOf<decltype(element)>>(realization, time);
               if (slice)
                   slice->CheckOut();
               return slice != nullptr;
           });
}

bool MVectorDataset::CheckInTimeSlice(int realization, qint64 time, int) const
{
    knownRealization(realization);
    return isSliced() && visitElement(mDataType, [&](auto element) {
               const auto *slice = sliceAt<ElementOf<decltype(element)>>(realization, time);
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
        using T = ElementOf<decltype(element)>;
        auto &series = mRealizationData[realization].template seriesOf<T>();
        if (!series.contains(id))
            series.insert(id, new TimeSeriesData<T>);
        series.value(id)->CheckOut();
    });
    return true;
}

bool MVectorDataset::CheckInTimeSeries(int realization, int id, int) const
{
    require(mStorageType == TimeSeries, "mStorageType == TimeSeries");
    require(holdsObject(id), "id < mObjectCount");
    knownRealization(realization);
    return visitElement(mDataType, [&](auto element) {
        const auto *series = seriesOf<ElementOf<decltype(element)>>(realization, id);
        if (series && series->CheckOutCount() > 0)
            series->CheckIn();
        return series != nullptr;
    });
}

void MVectorDataset::ClearRealization(MVectorDataRealization &realization)
{
    mLastSlices = LastSlices();
    visitContainers(realization, mDataType, mStorageType, [](auto &map) {
        qDeleteAll(map);
        map.clear();
    });
}

template <class T> void MVectorDataset::makeStatic(MVectorDataRealization &realization)
{
    if (!isSliced()) {
        auto &series = realization.seriesOf<T>();
        qDeleteAll(series);
        series.clear();
        return;
    }
    auto &slices = realization.slicesOf<T>();
    TimeSliceData<T> *earliest =
        mIsStatic && !slices.isEmpty() ? slices.take(slices.firstKey()) : nullptr;
    qDeleteAll(slices);
    slices.clear();
    if (earliest)
        slices.insert(kStaticStamp, earliest);
}

void MVectorDataset::SetStatic(bool isStatic)
{
    if (isStatic == mIsStatic)
        return;
    mIsStatic = isStatic;
    visitElement(mDataType, [this](auto element) {
        using T = ElementOf<decltype(element)>;
        mFrequencies.tableOf<T>().clear();
        for (MVectorDataRealization &realization : realizationsToChange())
            makeStatic<T>(realization);
    });
    RecalculateFrequencies();
    mTimeBounds = kStaticStamp;
}

// Series of objects that shrinking cuts off stay in the map: files hold such series, and
// CleanPre201044Data knows them.
bool MVectorDataset::Resize(int objectCount)
{
    if (objectCount < 0)
        return false;
    RemoveAllVariogramModels();
    visitElement(mDataType, [&](auto element) {
        for (MVectorDataRealization &realization : realizationsToChange()) {
            auto &slices = realization.slicesOf<ElementOf<decltype(element)>>();
            if (!dropEmptySlices(slices, objectCount))
                for (auto *slice : slices)
                    slice->Resize(objectCount);
        }
    });
    mObjectCount = objectCount;
    return true;
}

template <class T>
void MVectorDataset::removeObjects(MVectorDataRealization &realization, const QVector<int> &ids)
{
    const QSet<int> removed(ids.begin(), ids.end());
    SliceMap<T> &slices = realization.slicesOf<T>();
    if (!dropEmptySlices(slices, mObjectCount - ids.size()))
        for (TimeSliceData<T> *slice : slices)
            slice->RemoveObjects(removed);

    SeriesMap<T> kept;
    int removedBelow = 0;
    auto &series = realization.seriesOf<T>();
    for (auto it = series.cbegin(); it != series.cend(); ++it) {
        while (removedBelow < ids.size() && ids.at(removedBelow) < it.key())
            ++removedBelow;
        if (removed.contains(it.key()))
            delete it.value();
        else
            kept.insert(it.key() - removedBelow, it.value());
    }
    series = kept;
}

void MVectorDataset::RequireReleased(const QSet<int> &ids) const
{
    visitElement(mDataType, [&](auto element) {
        using T = ElementOf<decltype(element)>;
        for (const MVectorDataRealization &realization : qAsConst(mRealizationData)) {
            for (const int id : ids) {
                const TimeSeriesData<T> *series =
                    realization.template seriesOf<T>().value(id, nullptr);
                require(!series || series->CheckOutCount() == 0, "Time series still in use");
            }
        }
    });
}

void MVectorDataset::RemoveObjects(const QSet<int> &ids)
{
    QVector<int> sorted;
    std::copy_if(ids.begin(), ids.end(), std::back_inserter(sorted),
                 [this](int id) { return holdsObject(id); });
    std::sort(sorted.begin(), sorted.end());
    RequireReleased(QSet<int>(sorted.begin(), sorted.end()));
    visitElement(mDataType, [&](auto element) {
        using T = ElementOf<decltype(element)>;
        auto &realizations = realizationsToChange();
        for (auto realization = realizations.begin(); realization != realizations.end();
             ++realization) {
            removeObjects<T>(*realization, sorted);
            invalidateStatistics(realization.key());
        }
    });
    mObjectCount -= sorted.size();
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
    const MVectorDataRealization *found = realizationAt(realization);
    return visitElement(mDataType, [&](auto element) {
        using T = ElementOf<decltype(element)>;
        if (!found)
            return false;
        if (isSliced()) {
            const auto &slices = found->slicesOf<T>();
            return std::any_of(slices.begin(), slices.end(),
                               [](const auto *slice) { return slice->GetMissingCount() > 0; });
        }
        for (int id = 0; id < mObjectCount; ++id) {
            const TimeSeriesData<T> *series = found->seriesOf<T>().value(id, nullptr);
            if (!series || series->GetCount() == 0)
                return true;
        }
        return false;
    });
}

void MVectorDataset::CleanPre201044Data()
{
    if (isSliced())
        return;
    visitElement(mDataType, [this](auto element) {
        for (MVectorDataRealization &realization : realizationsToChange()) {
            auto &series = realization.seriesOf<ElementOf<decltype(element)>>();
            for (auto it = series.lowerBound(mObjectCount); it != series.end();
                 it = series.erase(it))
                delete *it;
        }
    });
}
