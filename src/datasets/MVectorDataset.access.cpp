// SPDX-License-Identifier: MIT
// Access to the containers themselves: to read them, to replace them, to copy them.
#include <memory>
#include <vector>
#include "datasets/MVectorDataset.stores.h"

using namespace datainterface;

namespace {

template <class Map> bool areThere(const Map &map)
{
    return std::none_of(map.begin(), map.end(),
                        [](const auto *container) { return container == nullptr; });
}

/// Fills `copies` with deep copies, all or none. False for a null map.
template <class Map> bool copyContainers(const Map *map, Map &copies)
{
    if (!map)
        return false;
    using Container = std::remove_pointer_t<typename Map::mapped_type>;
    std::vector<std::pair<typename Map::key_type, std::unique_ptr<Container>>> made;
    for (auto it = map->cbegin(); it != map->cend(); ++it)
        made.emplace_back(it.key(), std::make_unique<Container>(*it.value()));
    copies.clear();
    for (auto &[key, container] : made)
        copies.insert(key, container.release());
    return true;
}

} // namespace

template <class T>
bool MVectorDataset::Stores::findSlice(int realization, qint64 time, const TimeSliceData<T> *&slice)
{
    const TimeSliceData<T> *found = mDataset.isSliced() ? sliceAt<T>(realization, time) : nullptr;
    if (found)
        slice = found;
    return found != nullptr;
}

template <class T> bool MVectorDataset::Stores::canTake(int realization, StorageType storage) const
{
    return mDataset.mStorageType == storage && !mDataset.mIsStatic
           && mDataset.holdsRealization(realization) && mDataset.mDataType == typeCode<T>();
}

template <class T>
bool MVectorDataset::Stores::takeSlices(int realization, const SliceMap<T> &taken)
{
    if (!canTake<T>(realization, TimeSlice) || !areThere(taken))
        return false;
    slices<T>().replace(realization, taken);
    if (!taken.isEmpty())
        mDataset.mTimeBounds = mDataset.mTimeBounds + taken.firstKey() + taken.lastKey();
    return true;
}

template <class T>
bool MVectorDataset::Stores::takeSeries(int id, int realization, TimeSeriesData<T> *taken)
{
    if (!canTake<T>(realization, TimeSeries) || !mDataset.holdsObject(id) || !taken)
        return false;
    const QList<TimeStamp> intervals = taken->GetIntervals();
    series<T>().replace(realization, id, taken);
    widenBounds(intervals);
    return true;
}

template <class T>
bool MVectorDataset::Stores::takeAllSeries(int realization, const SeriesMap<T> &taken)
{
    if (!canTake<T>(realization, TimeSeries) || !areThere(taken))
        return false;
    series<T>().replaceAll(realization, taken);
    for (const TimeSeriesData<T> *one : taken)
        widenBounds(one->GetIntervals());
    return true;
}

void MVectorDataset::Stores::widenBounds(const QList<TimeStamp> &intervals)
{
    if (!intervals.isEmpty())
        mDataset.mTimeBounds = mDataset.mTimeBounds + intervals.first() + intervals.last();
}

const MVectorDataset::SliceMap<int> *MVectorDataset::GetTimeSliceIntegerData(int realization) const
{
    return mStores->slices<int>().of(realization);
}

const MVectorDataset::SliceMap<double> *
MVectorDataset::GetTimeSliceDecimalData(int realization) const
{
    return mStores->slices<double>().of(realization);
}

const MVectorDataset::SliceMap<QString> *
MVectorDataset::GetTimeSliceStringData(int realization) const
{
    return mStores->slices<QString>().of(realization);
}

const MVectorDataset::SeriesMap<int> *
MVectorDataset::GetTimeSeriesIntegerData(int realization) const
{
    return mStores->series<int>().of(realization);
}

const MVectorDataset::SeriesMap<double> *
MVectorDataset::GetTimeSeriesDecimalData(int realization) const
{
    return mStores->series<double>().of(realization);
}

const MVectorDataset::SeriesMap<QString> *
MVectorDataset::GetTimeSeriesStringData(int realization) const
{
    return mStores->series<QString>().of(realization);
}

bool MVectorDataset::GetTimeSliceData(int realization, qint64 time,
                                      const TimeSliceData<int> *&slice) const
{
    return mStores->findSlice(realization, time, slice);
}

bool MVectorDataset::GetTimeSliceData(int realization, qint64 time,
                                      const TimeSliceData<double> *&slice) const
{
    return mStores->findSlice(realization, time, slice);
}

bool MVectorDataset::GetTimeSliceData(int realization, qint64 time,
                                      const TimeSliceData<QString> *&slice) const
{
    return mStores->findSlice(realization, time, slice);
}

bool MVectorDataset::SetTimeSliceData(int realization, const SliceMap<int> &slices, bool)
{
    return mStores->takeSlices(realization, slices);
}

bool MVectorDataset::SetTimeSliceData(int realization, const SliceMap<double> &slices, bool)
{
    return mStores->takeSlices(realization, slices);
}

bool MVectorDataset::SetTimeSliceData(int realization, const SliceMap<QString> &slices, bool)
{
    return mStores->takeSlices(realization, slices);
}

bool MVectorDataset::SetTimeSeriesData(int id, int realization, TimeSeriesData<int> *series, bool)
{
    return mStores->takeSeries(id, realization, series);
}

bool MVectorDataset::SetTimeSeriesData(int id, int realization, TimeSeriesData<double> *series,
                                       bool)
{
    return mStores->takeSeries(id, realization, series);
}

bool MVectorDataset::SetTimeSeriesData(int id, int realization, TimeSeriesData<QString> *series,
                                       bool)
{
    return mStores->takeSeries(id, realization, series);
}

namespace {

/// Makes a series of `values` and calls `take(series)`, which returns whether it owns the series
/// now.
template <class T, class Take> bool giveSeries(const QMap<TimeStamp, T> &values, Take take)
{
    auto series = std::make_unique<TimeSeriesData<T>>(values);
    if (!take(series.get()))
        return false;
    series.release();
    return true;
}

} // namespace

bool MVectorDataset::SetTimeSeriesData(int id, int realization, const QMap<TimeStamp, int> &values,
                                       bool)
{
    return giveSeries(values,
                      [&](auto *series) { return mStores->takeSeries(id, realization, series); });
}

bool MVectorDataset::SetTimeSeriesData(int id, int realization,
                                       const QMap<TimeStamp, double> &values, bool)
{
    return giveSeries(values,
                      [&](auto *series) { return mStores->takeSeries(id, realization, series); });
}

bool MVectorDataset::SetTimeSeriesData(int id, int realization,
                                       const QMap<TimeStamp, QString> &values, bool)
{
    return giveSeries(values,
                      [&](auto *series) { return mStores->takeSeries(id, realization, series); });
}

bool MVectorDataset::SetTimeSeriesData(int realization, const SeriesMap<int> &series, bool)
{
    return mStores->takeAllSeries(realization, series);
}

bool MVectorDataset::SetTimeSeriesData(int realization, const SeriesMap<double> &series, bool)
{
    return mStores->takeAllSeries(realization, series);
}

bool MVectorDataset::SetTimeSeriesData(int realization, const SeriesMap<QString> &series, bool)
{
    return mStores->takeAllSeries(realization, series);
}

bool MVectorDataset::CopyIntegerData(int realization, SliceMap<int> &slices) const
{
    return copyContainers(mStores->slices<int>().of(realization), slices);
}

bool MVectorDataset::CopyIntegerData(int realization, SeriesMap<int> &series) const
{
    return copyContainers(mStores->series<int>().of(realization), series);
}

bool MVectorDataset::CopyDecimalData(int realization, SliceMap<double> &slices) const
{
    return copyContainers(mStores->slices<double>().of(realization), slices);
}

bool MVectorDataset::CopyDecimalData(int realization, SeriesMap<double> &series) const
{
    return copyContainers(mStores->series<double>().of(realization), series);
}

bool MVectorDataset::CopyStringData(int realization, SliceMap<QString> &slices) const
{
    return copyContainers(mStores->slices<QString>().of(realization), slices);
}

bool MVectorDataset::CopyStringData(int realization, SeriesMap<QString> &series) const
{
    return copyContainers(mStores->series<QString>().of(realization), series);
}
