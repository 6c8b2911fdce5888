// SPDX-License-Identifier: MIT
// How values leave a dataset.
#include <algorithm>
#include <vector>
#include "Common/detail/failure.h"
#include "containers/slicePeek.h"
#include "datasets/MVectorDataset.stores.h"

using namespace datainterface;

namespace {

/// A value of one object, as a number, and its interval.
struct TimedNumber {
    bool isThere = false;
    TimeStamp stamp;
    double value = 0.0;
};

/// The time between two instants. The difference may not fit a signed integer.
double span(qint64 from, qint64 to)
{
    return static_cast<double>(static_cast<quint64>(to) - static_cast<quint64>(from));
}

/// Half the sum, rounded toward zero, without overflow of the sum.
qint64 midpoint(qint64 start, qint64 end)
{
    if ((start < 0) != (end < 0))
        return (start + end) / 2;
    return start < 0 ? end - (end - start) / 2 : start + (end - start) / 2;
}

/// Interpolates linearly in time between the values around `time`. The current value is placed at
/// the middle of its interval, its neighbours at timeInInterval() of theirs. Without a neighbour on
/// the side of `time` the result is the current value.
MDatum interpolate(const TimedNumber &previous, const TimedNumber &current, const TimedNumber &next,
                   qint64 time)
{
    const auto between = [time](double a, qint64 ta, double b, qint64 tb) {
        return MDatum(a + (b - a) * span(ta, time) / span(ta, tb));
    };
    if (!current.isThere) {
        if (!previous.isThere || !next.isThere)
            return MDatum();
        return between(previous.value, previous.stamp.timeInInterval(), next.value,
                       next.stamp.timeInInterval());
    }
    const qint64 middle = midpoint(current.stamp.startTime, current.stamp.endTime);
    if (time < middle && previous.isThere)
        return between(previous.value, previous.stamp.timeInInterval(), current.value, middle);
    if (time > middle && next.isThere)
        return between(current.value, middle, next.value, next.stamp.timeInInterval());
    return MDatum(current.value);
}

/// The value of the object in a slice or an entry.
template <class T>
TimedNumber numberIn(const TimeStamp &stamp, const TimeSliceData<T> &slice, int id)
{
    T value{};
    if (!slice.GetValue(id, value))
        return {};
    return {true, stamp, static_cast<double>(value)};
}
template <class T> TimedNumber numberIn(const TimeSeriesEntry<T> &entry)
{
    return {true, entry.stamp, static_cast<double>(entry.value)};
}

template <class T>
MDatum interpolatedIn(const QMap<TimeStamp, TimeSliceData<T> *> &slices, int id, qint64 time)
{
    auto after = slices.lowerBound(TimeStamp(time));
    auto before = after;
    TimedNumber previous;
    TimedNumber current;
    TimedNumber next;
    if (after != slices.cend() && after.key().contains(time)) {
        current = numberIn(after.key(), **after, id);
        ++after;
    }
    for (; after != slices.cend() && !next.isThere; ++after)
        next = numberIn(after.key(), **after, id);
    while (before != slices.cbegin() && !previous.isThere) {
        --before;
        previous = numberIn(before.key(), **before, id);
    }
    return interpolate(previous, current, next, time);
}

template <class T> MDatum interpolatedIn(const TimeSeriesData<T> &series, qint64 time)
{
    const CheckedOut<TimeSeriesData<T>> hold(series);
    const TimeSeriesEntry<T> *begin = series.Data();
    const TimeSeriesEntry<T> *end = begin + series.GetCount();
    const auto *at = std::lower_bound(
        begin, end, TimeStamp(time),
        [](const TimeSeriesEntry<T> &e, const TimeStamp &t) { return e.stamp < t; });
    const bool isHeld = at != end && at->stamp.contains(time);
    const auto *after = at + (isHeld ? 1 : 0);
    return interpolate(at != begin ? numberIn(at[-1]) : TimedNumber(),
                       isHeld ? numberIn(*at) : TimedNumber(),
                       after != end ? numberIn(*after) : TimedNumber(), time);
}

/// The interpolated values of all objects, empty where there is none. Slices are read outwards from
/// the time. Each is paged in at most once, for the objects that have no value on that side yet.
template <class T> class SliceInterpolation {
public:
    using Slices = QMap<TimeStamp, TimeSliceData<T> *>;

    SliceInterpolation(const Slices &slices, int objectCount, qint64 time)
        : mTime(time),
          mPrevious(static_cast<std::size_t>(objectCount)),
          mCurrent(mPrevious.size()),
          mNext(mPrevious.size())
    {
        auto after = slices.lowerBound(TimeStamp(time));
        auto before = after;
        qint64 middle = time;
        if (after != slices.cend() && after.key().contains(time)) {
            middle = midpoint(after.key().startTime, after.key().endTime);
            std::vector<int> all = objects([](std::size_t) { return true; });
            look(after.key(), **after, all, mCurrent);
            ++after;
        }
        std::vector<int> waiting =
            objects([&](std::size_t id) { return !mCurrent[id].isThere || time > middle; });
        for (; after != slices.cend() && !waiting.empty(); ++after)
            look(after.key(), **after, waiting, mNext);
        // An object without a value at the time needs both sides.
        waiting = objects([&](std::size_t id) {
            return mCurrent[id].isThere ? time < middle : mNext[id].isThere;
        });
        while (before != slices.cbegin() && !waiting.empty()) {
            --before;
            look(before.key(), **before, waiting, mPrevious);
        }
    }
    MDatum operator[](int object) const
    {
        const auto id = static_cast<std::size_t>(object);
        return interpolate(mPrevious[id], mCurrent[id], mNext[id], mTime);
    }

private:
    using Numbers = std::vector<TimedNumber>;

    template <class Test> std::vector<int> objects(Test test) const
    {
        std::vector<int> ids;
        for (std::size_t id = 0; id < mCurrent.size(); ++id) {
            if (test(id))
                ids.push_back(static_cast<int>(id));
        }
        return ids;
    }
    // Removes the objects that have a value in the slice from `waiting`.
    static void look(const TimeStamp &stamp, const TimeSliceData<T> &slice,
                     std::vector<int> &waiting, Numbers &found)
    {
        const CheckedOut<TimeSliceData<T>> hold(slice);
        const auto isFound = [&](int id) {
            T value{};
            if (!slice.GetValue(id, value))
                return false;
            found[static_cast<std::size_t>(id)] = {true, stamp, static_cast<double>(value)};
            return true;
        };
        waiting.erase(std::remove_if(waiting.begin(), waiting.end(), isFound), waiting.end());
    }

    const qint64 mTime;
    Numbers mPrevious;
    Numbers mCurrent;
    Numbers mNext;
};

/// Calls `take(stamp, value)` for each slice that holds a value of the object, in order of time.
/// The block store is locked once for all slices.
template <class T, class Take>
void visitThroughTime(const QMap<TimeStamp, TimeSliceData<T> *> &slices, int id, Take take)
{
    const BlockReading store;
    for (auto slice = slices.cbegin(); slice != slices.cend(); ++slice) {
        slice.key().timeInInterval(); // raises for an interval without an instant
        T value{};
        if (SliceAccess::getValue(store, **slice, id, value))
            take(slice.key(), value);
    }
}

template <class T, class Take> void visitEntries(const TimeSeriesData<T> &series, Take take)
{
    const CheckedOut<TimeSeriesData<T>> hold(series);
    const TimeSeriesEntry<T> *entry = series.Data();
    for (const auto *end = entry + series.GetCount(); entry != end; ++entry)
        take(entry->stamp, entry->value);
}

} // namespace

template <class T>
inline bool MVectorDataset::Stores::read(int realization, int id, qint64 time, T &value)
{
    if (!mDataset.holdsObject(id))
        return false;
    if (mDataset.isSliced()) {
        const TimeSliceData<T> *slice = sliceAt<T>(realization, time);
        return slice && slice->GetValue(id, value);
    }
    const TimeSeriesData<T> *one = series<T>().at(realization, id);
    return one && one->GetValue(mDataset.timeOf(time), value);
}

bool MVectorDataset::ReadValue(int realization, int id, qint64 time, int &value) const
{
    return mDataType == IntegerType && mStores->read(realization, id, time, value);
}

bool MVectorDataset::ReadValue(int realization, int id, qint64 time, double &value) const
{
    return mDataType == DecimalType && mStores->read(realization, id, time, value);
}

MDatum MVectorDataset::GetValue(int id, qint64 time, int realization)
{
    return visitElement(mDataType, [&](auto element) {
        ElementOf<decltype(element)> value{};
        return mStores->read(realization, id, time, value) ? MDatum(value) : MDatum();
    });
}

template <class T> MDatum MVectorDataset::Stores::interpolated(int realization, int id, qint64 time)
{
    if (!mDataset.holdsRealization(realization) || !mDataset.holdsObject(id))
        return MDatum();
    const qint64 instant = mDataset.timeOf(time);
    if (mDataset.isSliced())
        return interpolatedIn(*slices<T>().of(realization), id, instant);
    const TimeSeriesData<T> *one = series<T>().at(realization, id);
    return one ? interpolatedIn(*one, instant) : MDatum();
}

MDatum MVectorDataset::GetValue(int id, qint64 time, bool interpolate, int realization)
{
    if (!interpolate || !holdsRealization(realization) || mDataType == StringType)
        return GetValue(id, time, realization);
    return visitNumericElement(mDataType, [&](auto element) {
        return mStores->interpolated<ElementOf<decltype(element)>>(realization, id, time);
    });
}

void MVectorDataset::GetObjectValues(int realization, int id, QVector<Interval> &intervals,
                                     QVector<datum> &values)
{
    intervals.clear();
    values.clear();
    visitElement(mDataType, [&](auto element) {
        using T = ElementOf<decltype(element)>;
        const auto append = [&](const TimeStamp &stamp, const T &value) {
            intervals.append(stamp);
            values.append(datum(value));
        };
        const auto *slices = isSliced() ? mStores->slices<T>().of(realization) : nullptr;
        if (slices) {
            intervals.reserve(slices->size());
            values.reserve(slices->size());
        }
        // A static dataset is read at time 0, whatever the interval.
        if (mIsStatic) {
            T value{};
            for (const TimeStamp &stamp : GetDataIntervals(realization, id)) {
                if (mStores->read(realization, id, stamp.timeInInterval(), value))
                    append(stamp, value);
            }
        } else if (slices) {
            visitThroughTime(*slices, id, append);
        } else if (!isSliced() && holdsObject(id)) {
            if (const TimeSeriesData<T> *series = mStores->series<T>().at(realization, id))
                visitEntries(*series, append);
        }
    });
}

MDatum MVectorDataset::GetIdValue(int realization, unsigned int id)
{
    const int object = id <= static_cast<unsigned int>(std::numeric_limits<int>::max())
                           ? static_cast<int>(id)
                           : -1;
    return mStores->visit([&](const auto &store, auto element) {
        ElementOf<decltype(element)> value{};
        return store.of(realization) && holdsObject(object)
                       && store.readFirst(realization, object, value)
                   ? MDatum(value)
                   : MDatum();
    });
}

template <class T>
bool MVectorDataset::Stores::readAll(int realization, qint64 time, QVector<T> &values,
                                     QSet<int> &missing, bool interpolate)
{
    if (!mDataset.holdsRealization(realization) || mDataset.mDataType != typeCode<T>())
        return false;
    const bool isSliced = mDataset.isSliced();
    const int objectCount = mDataset.mObjectCount;
    missing.clear();
    if (const TimeSliceData<T> *slice =
            isSliced && !interpolate ? sliceAt<T>(realization, time) : nullptr) {
        values = slice->GetValues();
        missing = slice->GetMissingIds();
        for (int id = values.size(); id < objectCount; ++id)
            missing.insert(id);
        if (values.size() != objectCount)
            values.resize(objectCount);
        for (const int id : qAsConst(missing)) {
            if (mDataset.holdsObject(id))
                values[id] = T();
        }
        return true;
    }
    values = QVector<T>(objectCount);
    const auto fill = [&](auto readOne) {
        for (int id = 0; id < objectCount; ++id) {
            if (!readOne(id, values[id]))
                missing.insert(id);
        }
    };
    if constexpr (std::is_arithmetic_v<T>) {
        const auto take = [](const MDatum &number, T &value) {
            if (!number.isEmpty())
                value = static_cast<T>(number.decimalValue());
            return !number.isEmpty();
        };
        if (interpolate && isSliced) {
            const SliceInterpolation<T> all(*slices<T>().of(realization), objectCount,
                                            mDataset.timeOf(time));
            fill([&](int id, T &value) { return take(all[id], value); });
            return true;
        }
        if (interpolate) {
            fill([&](int id, T &value) {
                return take(interpolated<T>(realization, id, time), value);
            });
            return true;
        }
    }
    fill([&](int id, T &value) { return !isSliced && read(realization, id, time, value); });
    return true;
}

bool MVectorDataset::GetValues(int realization, qint64 time, QVector<int> &values,
                               QSet<int> &missing, bool interpolate) const
{
    return mStores->readAll(realization, time, values, missing, interpolate);
}

bool MVectorDataset::GetValues(int realization, qint64 time, QVector<double> &values,
                               QSet<int> &missing, bool interpolate) const
{
    return mStores->readAll(realization, time, values, missing, interpolate);
}

bool MVectorDataset::GetValues(int realization, qint64 time, QVector<QString> &values,
                               QSet<int> &missing) const
{
    return mStores->readAll(realization, time, values, missing, false);
}

bool MVectorDataset::GetValuesAsDecimal(int realization, qint64 time, QVector<double> &values,
                                        QSet<int> &missing) const
{
    if (mDataType == DecimalType)
        return GetValues(realization, time, values, missing, false);
    QVector<int> integers;
    if (!GetValues(realization, time, integers, missing, false))
        return false;
    values.resize(integers.size());
    std::copy(integers.begin(), integers.end(), values.begin());
    return true;
}

bool MVectorDataset::IsMissing(int realization, int id, qint64 time) const
{
    knownRealization(realization);
    return visitElement(mDataType, [&](auto element) {
        ElementOf<decltype(element)> value{};
        return !mStores->read(realization, id, time, value);
    });
}

int MVectorDataset::GetDataCount(int realization, qint64 time) const
{
    knownRealization(realization);
    return mStores->visit([&](const auto &store, auto) {
        return store.valueCount(realization, timeOf(time), mObjectCount);
    });
}

bool MVectorDataset::GetMissingTimeSliceValues(int realization, qint64 time, QSet<int> &missing)
{
    return isSliced() && visitElement(mDataType, [&](auto element) {
               const auto *slice =
                   mStores->sliceAt<ElementOf<decltype(element)>>(realization, time);
               if (slice)
                   missing = slice->GetMissingIds();
               return slice != nullptr;
           });
}
