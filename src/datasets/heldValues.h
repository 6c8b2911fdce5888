// SPDX-License-Identifier: MIT
/// The values that a checked-out container holds.
#pragma once
#include <QMap>
#include <QSet>
#include <algorithm>
#include "datainterface/TimeContainers.h"

namespace datainterface {

/// The positions of a slice that exist and are not missing. Valid while the slice is checked out
/// and not changed.
template <class T> class HeldValues {
public:
    explicit HeldValues(const TimeSliceData<T> &slice)
        : mValues(slice.Data()), mCount(slice.GetCount()), mMissing(slice.MissingIds())
    {
    }
    int count() const { return mCount; }
    const QSet<int> &missing() const { return mMissing; }
    bool holds(int id) const
    {
        return id >= 0 && id < mCount && (mMissing.isEmpty() || !mMissing.contains(id));
    }
    const T &operator[](int id) const { return mValues[id]; }

    /// Calls `visit(id, value)` for each value held, in ascending order of ids.
    template <class Visit> void visit(Visit visit) const
    {
        if (mMissing.isEmpty()) {
            for (int id = 0; id < mCount; ++id)
                visit(id, mValues[id]);
            return;
        }
        for (int id = 0; id < mCount; ++id) {
            if (!mMissing.contains(id))
                visit(id, mValues[id]);
        }
    }

private:
    const T *mValues;
    int mCount;
    const QSet<int> &mMissing;
};

/// Calls `visit(value)` for each value of a slice, which is checked out meanwhile.
template <class T, class Visit> void visitHeld(const TimeSliceData<T> &slice, Visit visit)
{
    const CheckedOut<TimeSliceData<T>> hold(slice);
    HeldValues<T>(slice).visit([&visit](int, const T &value) { visit(value); });
}
/// Calls `visit(value)` for each entry of a series, which is checked out meanwhile.
template <class T, class Visit> void visitHeld(const TimeSeriesData<T> &series, Visit visit)
{
    const CheckedOut<TimeSeriesData<T>> hold(series);
    std::for_each(series.Data(), series.Data() + series.GetCount(),
                  [&visit](const TimeSeriesEntry<T> &entry) { visit(entry.value); });
}

/// Calls `visit(series)` for the series of each object, without the series that shrinking left
/// beyond the object count.
template <class T, class Visit>
void visitObjects(const QMap<int, TimeSeriesData<T> *> &series, int objectCount, Visit visit)
{
    const auto end = series.lowerBound(objectCount);
    for (auto one = series.cbegin(); one != end; ++one)
        visit(**one);
}

/// The entry that holds an instant, null without one. Valid while the series is checked out and not
/// changed.
template <class T> const TimeSeriesEntry<T> *entryAt(const TimeSeriesData<T> &series, qint64 time)
{
    const TimeSeriesEntry<T> *end = series.Data() + series.GetCount();
    const TimeStamp instant(time);
    const auto *entry = std::lower_bound(
        series.Data(), end, instant,
        [](const TimeSeriesEntry<T> &e, const TimeStamp &t) { return e.stamp < t; });
    return entry != end && entry->stamp.contains(time) ? entry : nullptr;
}

} // namespace datainterface
