// SPDX-License-Identifier: MIT
// The intervals on which a dataset has values.
#include "Common/detail/failure.h"
#include "datasets/MVectorDataset.stores.h"

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
        using T = ElementOf<decltype(element)>;
        const auto *series =
            isSliced() || !holdsObject(id) ? nullptr : mStores->series<T>().at(realization, id);
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
    return mStores->visit([&](const auto &store, auto) {
        return store.of(realization)
               && store.commonStamp(realization, timeOf(time), mObjectCount, stamp);
    });
}

bool MVectorDataset::ObjectValueChanged(int realization, int id, qint64 first, qint64 second)
{
    const auto stampAt = [&](const auto &store, qint64 time) {
        return store.of(realization) && holdsObject(id)
                   ? store.stampOf(realization, id, timeOf(time))
                   : TimeStamp::Invalid;
    };
    return mStores->visit(
        [&](const auto &store, auto) { return stampAt(store, first) != stampAt(store, second); });
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
