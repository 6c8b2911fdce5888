// SPDX-License-Identifier: MIT
// When a dataset has values.
#include "Common/detail/failure.h"
#include "datasets/elementTypes.h"
#include "datasets/heldValues.h"

using namespace datainterface;

QList<TimeStamp> MVectorDataset::GetTimeSliceIntervals(int realization)
{
    const MVectorDataRealization *found = realizationAt(realization);
    return visitElement(mDataType, [&](auto element) {
        return found && isSliced() ? found->slicesOf<ElementOf<decltype(element)>>().keys()
                                   : QList<TimeStamp>();
    });
}

QList<TimeStamp> MVectorDataset::GetTimeSeriesIntervals(int realization, int id)
{
    return visitElement(mDataType, [&](auto element) {
        const auto *series = isSliced() || !holdsObject(id)
                                 ? nullptr
                                 : seriesOf<ElementOf<decltype(element)>>(realization, id);
        return series ? series->GetIntervals() : QList<TimeStamp>();
    });
}

QList<TimeStamp> MVectorDataset::GetDataIntervals(int realization, int id)
{
    return isSliced() ? GetTimeSliceIntervals(realization)
                      : GetTimeSeriesIntervals(realization, id);
}

QList<TimeStamp> MVectorDataset::GetCommonTimeStamps(int realization)
{
    if (isSliced())
        return GetTimeSliceIntervals(realization);
    const MVectorDataRealization *found = realizationAt(realization);
    QList<QList<TimeStamp>> intervals;
    visitElement(mDataType, [&](auto element) {
        if (!found)
            return;
        visitObjects(found->seriesOf<ElementOf<decltype(element)>>(), mObjectCount,
                     [&intervals](const auto &series) { intervals.append(series.GetIntervals()); });
    });
    return TimeStamp::MergeTimeStamps(intervals);
}

bool MVectorDataset::GetCommonTimeStamp(int realization, qint64 time, TimeStamp &stamp) const
{
    const MVectorDataRealization *found = realizationAt(realization);
    return visitElement(mDataType, [&](auto element) {
        using T = ElementOf<decltype(element)>;
        if (!found)
            return false;
        if (isSliced()) {
            const auto &slices = found->slicesOf<T>();
            const auto slice = slices.constFind(TimeStamp(timeOf(time)));
            if (slice != slices.constEnd())
                stamp = slice.key();
            return slice != slices.constEnd();
        }
        bool isFirst = true;
        visitObjects(found->seriesOf<T>(), mObjectCount, [&](const TimeSeriesData<T> &series) {
            const CheckedOut<TimeSeriesData<T>> hold(series);
            if (const auto *entry = entryAt(series, timeOf(time))) {
                stamp = isFirst ? entry->stamp : stamp.intersect(entry->stamp);
                isFirst = false;
            }
        });
        return !isFirst;
    });
}

template <class T>
TimeStamp MVectorDataset::stampOfValue(int realization, int id, qint64 time) const
{
    const MVectorDataRealization *found = realizationAt(realization);
    if (!found || !holdsObject(id))
        return TimeStamp::Invalid;
    if (isSliced()) {
        const auto &slices = found->slicesOf<T>();
        const auto slice = slices.constFind(TimeStamp(timeOf(time)));
        T value{};
        return slice != slices.constEnd() && (*slice)->GetValue(id, value) ? slice.key()
                                                                           : TimeStamp::Invalid;
    }
    const TimeSeriesData<T> *series = found->seriesOf<T>().value(id, nullptr);
    if (!series)
        return TimeStamp::Invalid;
    const CheckedOut<TimeSeriesData<T>> hold(*series);
    const TimeSeriesEntry<T> *entry = entryAt(*series, timeOf(time));
    return entry ? entry->stamp : TimeStamp::Invalid;
}

bool MVectorDataset::ObjectValueChanged(int realization, int id, qint64 first, qint64 second)
{
    return visitElement(mDataType, [&](auto element) {
        using T = ElementOf<decltype(element)>;
        return stampOfValue<T>(realization, id, first) != stampOfValue<T>(realization, id, second);
    });
}

TimeStamp MVectorDataset::CalculateTimeBounds(const MVectorDataRealization &realization)
{
    TimeStamp bounds = TimeStamp::Invalid;
    visitElement(mDataType, [&](auto element) {
        using T = ElementOf<decltype(element)>;
        if (isSliced()) {
            const auto &slices = realization.slicesOf<T>();
            if (!slices.isEmpty())
                bounds = bounds + slices.firstKey() + slices.lastKey();
            return;
        }
        for (const TimeSeriesData<T> *series : realization.seriesOf<T>()) {
            const CheckedOut<TimeSeriesData<T>> hold(*series);
            if (series->GetCount() > 0)
                bounds =
                    bounds + series->Data()[0].stamp + series->Data()[series->GetCount() - 1].stamp;
        }
    });
    return bounds;
}
