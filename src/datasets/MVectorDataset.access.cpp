// SPDX-License-Identifier: MIT
// The containers themselves: handed out to be read, taken over, copied.
#include <memory>
#include "Common/detail/failure.h"
#include "datasets/elementTypes.h"
#include "datasets/lastSlice.h"

using datainterface::require;
using datainterface::typeCode;

template <class T> const TimeSeriesData<T> *MVectorDataset::seriesOf(int realization, int id) const
{
    const MVectorDataRealization *found = realizationAt(realization);
    return found ? found->seriesOf<T>().value(id, nullptr) : nullptr;
}
template const TimeSeriesData<int> *MVectorDataset::seriesOf(int, int) const;
template const TimeSeriesData<double> *MVectorDataset::seriesOf(int, int) const;
template const TimeSeriesData<QString> *MVectorDataset::seriesOf(int, int) const;

namespace {

/// Deletes the containers of `map` that `kept` does not hold: a host may hand a map back that it
/// was given.
template <class Map> void replaceContainers(Map &map, const Map &kept)
{
    const auto stays = kept.values();
    const QSet<typename Map::mapped_type> staying(stays.begin(), stays.end());
    for (auto *container : qAsConst(map)) {
        if (!staying.contains(container))
            delete container;
    }
    map = kept;
}

template <class Map> bool areThere(const Map &map)
{
    return std::none_of(map.begin(), map.end(),
                        [](const auto *container) { return container == nullptr; });
}

template <class T>
const QMap<TimeStamp, TimeSliceData<T> *> *slicesIn(const MVectorDataRealization *realization)
{
    return realization ? &realization->slicesOf<T>() : nullptr;
}

template <class T>
const QMap<int, TimeSeriesData<T> *> *seriesIn(const MVectorDataRealization *realization)
{
    return realization ? &realization->seriesOf<T>() : nullptr;
}

/// Deep copies into `copies`, all or none.
template <class Map> void copyContainers(const Map &map, Map &copies)
{
    using Container = std::remove_pointer_t<typename Map::mapped_type>;
    std::vector<std::pair<typename Map::key_type, std::unique_ptr<Container>>> made;
    for (auto it = map.cbegin(); it != map.cend(); ++it)
        made.emplace_back(it.key(), std::make_unique<Container>(*it.value()));
    copies.clear();
    for (auto &[key, container] : made)
        copies.insert(key, container.release());
}

} // namespace

template <class T>
bool MVectorDataset::findSlice(int realization, qint64 time, const TimeSliceData<T> *&slice) const
{
    const TimeSliceData<T> *found = isSliced() ? sliceAt<T>(realization, time) : nullptr;
    if (found)
        slice = found;
    return found != nullptr;
}

template <class T> bool MVectorDataset::takeSlices(int realization, const SliceMap<T> &slices)
{
    MVectorDataRealization *target = realizationAt(realization);
    if (!isSliced() || mIsStatic || !target || mDataType != typeCode<T>() || !areThere(slices))
        return false;
    replaceContainers(target->slicesOf<T>(), slices);
    if (!slices.isEmpty())
        mTimeBounds = mTimeBounds + slices.firstKey() + slices.lastKey();
    return true;
}

template <class T>
bool MVectorDataset::takeSeries(int id, int realization, TimeSeriesData<T> *series)
{
    MVectorDataRealization *target = realizationAt(realization);
    if (isSliced() || mIsStatic || !target || mDataType != typeCode<T>() || !holdsObject(id)
        || !series)
        return false;
    const QList<TimeStamp> intervals = series->GetIntervals();
    auto &slot = target->seriesOf<T>()[id];
    if (slot != series) {
        require(!slot || slot->CheckOutCount() == 0, "Time series still in use");
        delete slot;
        slot = series;
    }
    if (!intervals.isEmpty())
        mTimeBounds = mTimeBounds + intervals.first() + intervals.last();
    return true;
}

template <class T> bool MVectorDataset::takeAllSeries(int realization, const SeriesMap<T> &series)
{
    MVectorDataRealization *target = realizationAt(realization);
    if (isSliced() || mIsStatic || !target || mDataType != typeCode<T>() || !areThere(series))
        return false;
    replaceContainers(target->seriesOf<T>(), series);
    for (const TimeSeriesData<T> *one : series) {
        const QList<TimeStamp> intervals = one->GetIntervals();
        if (!intervals.isEmpty())
            mTimeBounds = mTimeBounds + intervals.first() + intervals.last();
    }
    return true;
}

template <class T> bool MVectorDataset::copySlices(int realization, SliceMap<T> &slices) const
{
    const MVectorDataRealization *source = realizationAt(realization);
    if (source)
        copyContainers(source->slicesOf<T>(), slices);
    return source != nullptr;
}

template <class T> bool MVectorDataset::copySeries(int realization, SeriesMap<T> &series) const
{
    const MVectorDataRealization *source = realizationAt(realization);
    if (source)
        copyContainers(source->seriesOf<T>(), series);
    return source != nullptr;
}

const MVectorDataset::SliceMap<int> *MVectorDataset::GetTimeSliceIntegerData(int realization) const
{
    return slicesIn<int>(realizationAt(realization));
}

const MVectorDataset::SliceMap<double> *
MVectorDataset::GetTimeSliceDecimalData(int realization) const
{
    return slicesIn<double>(realizationAt(realization));
}

const MVectorDataset::SliceMap<QString> *
MVectorDataset::GetTimeSliceStringData(int realization) const
{
    return slicesIn<QString>(realizationAt(realization));
}

const MVectorDataset::SeriesMap<int> *
MVectorDataset::GetTimeSeriesIntegerData(int realization) const
{
    return seriesIn<int>(realizationAt(realization));
}

const MVectorDataset::SeriesMap<double> *
MVectorDataset::GetTimeSeriesDecimalData(int realization) const
{
    return seriesIn<double>(realizationAt(realization));
}

const MVectorDataset::SeriesMap<QString> *
MVectorDataset::GetTimeSeriesStringData(int realization) const
{
    return seriesIn<QString>(realizationAt(realization));
}

bool MVectorDataset::GetTimeSliceData(int realization, qint64 time,
                                      const TimeSliceData<int> *&slice) const
{
    return findSlice(realization, time, slice);
}

bool MVectorDataset::GetTimeSliceData(int realization, qint64 time,
                                      const TimeSliceData<double> *&slice) const
{
    return findSlice(realization, time, slice);
}

bool MVectorDataset::GetTimeSliceData(int realization, qint64 time,
                                      const TimeSliceData<QString> *&slice) const
{
    return findSlice(realization, time, slice);
}

bool MVectorDataset::SetTimeSliceData(int realization, const SliceMap<int> &slices, bool)
{
    return takeSlices(realization, slices);
}

bool MVectorDataset::SetTimeSliceData(int realization, const SliceMap<double> &slices, bool)
{
    return takeSlices(realization, slices);
}

bool MVectorDataset::SetTimeSliceData(int realization, const SliceMap<QString> &slices, bool)
{
    return takeSlices(realization, slices);
}

bool MVectorDataset::SetTimeSeriesData(int id, int realization, TimeSeriesData<int> *series, bool)
{
    return takeSeries(id, realization, series);
}

bool MVectorDataset::SetTimeSeriesData(int id, int realization, TimeSeriesData<double> *series,
                                       bool)
{
    return takeSeries(id, realization, series);
}

bool MVectorDataset::SetTimeSeriesData(int id, int realization, TimeSeriesData<QString> *series,
                                       bool)
{
    return takeSeries(id, realization, series);
}

namespace {

/// Hands a series of `values` to `take`, and takes it back when that refuses it.
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
    return giveSeries(values, [&](auto *series) { return takeSeries(id, realization, series); });
}

bool MVectorDataset::SetTimeSeriesData(int id, int realization,
                                       const QMap<TimeStamp, double> &values, bool)
{
    return giveSeries(values, [&](auto *series) { return takeSeries(id, realization, series); });
}

bool MVectorDataset::SetTimeSeriesData(int id, int realization,
                                       const QMap<TimeStamp, QString> &values, bool)
{
    return giveSeries(values, [&](auto *series) { return takeSeries(id, realization, series); });
}

bool MVectorDataset::SetTimeSeriesData(int realization, const SeriesMap<int> &series, bool)
{
    return takeAllSeries(realization, series);
}

bool MVectorDataset::SetTimeSeriesData(int realization, const SeriesMap<double> &series, bool)
{
    return takeAllSeries(realization, series);
}

bool MVectorDataset::SetTimeSeriesData(int realization, const SeriesMap<QString> &series, bool)
{
    return takeAllSeries(realization, series);
}

bool MVectorDataset::CopyIntegerData(int realization, SliceMap<int> &slices) const
{
    return copySlices(realization, slices);
}

bool MVectorDataset::CopyIntegerData(int realization, SeriesMap<int> &series) const
{
    return copySeries(realization, series);
}

bool MVectorDataset::CopyDecimalData(int realization, SliceMap<double> &slices) const
{
    return copySlices(realization, slices);
}

bool MVectorDataset::CopyDecimalData(int realization, SeriesMap<double> &series) const
{
    return copySeries(realization, series);
}

bool MVectorDataset::CopyStringData(int realization, SliceMap<QString> &slices) const
{
    return copySlices(realization, slices);
}

bool MVectorDataset::CopyStringData(int realization, SeriesMap<QString> &series) const
{
    return copySeries(realization, series);
}
