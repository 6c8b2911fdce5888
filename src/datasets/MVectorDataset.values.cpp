// SPDX-License-Identifier: MIT
// How values leave a dataset.
#include <algorithm>
#include <vector>
#include "Common/detail/failure.h"
#include "containers/slicePeek.h"
#include "datasets/elementTypes.h"
#include "datasets/heldValues.h"
#include "datasets/lastSlice.h"

using namespace datainterface;

namespace {

/// One value of an object as the interpolation sees it.
struct TimedNumber {
    bool isThere = false;
    TimeStamp stamp;
    double value = 0.0;
};

/// From an earlier to a later time; the difference may not fit a signed number.
double span(qint64 from, qint64 to)
{
    return static_cast<double>(static_cast<quint64>(to) - static_cast<quint64>(from));
}

/// Half the sum, rounded toward zero, where the sum itself may not fit.
qint64 midpoint(qint64 start, qint64 end)
{
    if ((start < 0) != (end < 0))
        return (start + end) / 2;
    return start < 0 ? end - (end - start) / 2 : start + (end - start) / 2;
}

/// Linear in time between the values around `time`. `current` stands at the middle of its interval,
/// its neighbours at one instant of theirs; with no value on a side, the current one holds.
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

/// The value that a slice or an entry holds of the object.
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

/// The interpolated values of all objects, empty where there is none. From the time outwards each
/// slice is paged in once, and asked about the objects that still lack a value on that side.
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
    // Objects that the slice holds a value of no longer wait.
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

/// Calls `take(stamp, value)` for every slice that holds a value of the object. The store is locked
/// once for all slices.
template <class T, class Take>
void visitThroughTime(const QMap<TimeStamp, TimeSliceData<T> *> &slices, int id, Take take)
{
    const BlockReading store;
    for (auto slice = slices.cbegin(); slice != slices.cend(); ++slice) {
        slice.key().timeInInterval(); // raises for an interval that holds no instant
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
bool MVectorDataset::readCell(int realization, int id, qint64 time, T &value) const
{
    if (!holdsObject(id))
        return false;
    if (isSliced()) {
        const TimeSliceData<T> *slice = sliceAt<T>(realization, time);
        return slice && slice->GetValue(id, value);
    }
    const TimeSeriesData<T> *series = seriesOf<T>(realization, id);
    return series && series->GetValue(timeOf(time), value);
}

bool MVectorDataset::ReadValue(int realization, int id, qint64 time, int &value) const
{
    return mDataType == IntegerType && readCell(realization, id, time, value);
}

bool MVectorDataset::ReadValue(int realization, int id, qint64 time, double &value) const
{
    return mDataType == DecimalType && readCell(realization, id, time, value);
}

MDatum MVectorDataset::GetValue(int id, qint64 time, int realization)
{
    return visitElement(mDataType, [&](auto element) {
        ElementOf<decltype(element)> value{};
        return readCell(realization, id, time, value) ? MDatum(value) : MDatum();
    });
}

template <class T> MDatum MVectorDataset::interpolated(int realization, int id, qint64 time) const
{
    const MVectorDataRealization *found = realizationAt(realization);
    if (!found || !holdsObject(id))
        return MDatum();
    if (isSliced())
        return interpolatedIn(found->slicesOf<T>(), id, timeOf(time));
    const TimeSeriesData<T> *series = found->seriesOf<T>().value(id, nullptr);
    return series ? interpolatedIn(*series, timeOf(time)) : MDatum();
}

MDatum MVectorDataset::GetValue(int id, qint64 time, bool interpolate, int realization)
{
    if (!interpolate || !std::as_const(*this).realizationAt(realization) || mDataType == StringType)
        return GetValue(id, time, realization);
    return visitNumericElement(mDataType, [&](auto element) {
        return interpolated<ElementOf<decltype(element)>>(realization, id, time);
    });
}

template <class T, class Take> void MVectorDataset::visitObject(int realization, int id, Take take)
{
    // Whatever the interval, a static dataset is read at time 0.
    if (mIsStatic) {
        T value{};
        for (const TimeStamp &stamp : GetDataIntervals(realization, id)) {
            if (readCell(realization, id, stamp.timeInInterval(), value))
                take(stamp, value);
        }
    } else if (!isSliced()) {
        if (const TimeSeriesData<T> *series =
                holdsObject(id) ? seriesOf<T>(realization, id) : nullptr)
            visitEntries(*series, take);
    } else if (const auto *found = std::as_const(*this).realizationAt(realization)) {
        visitThroughTime(found->slicesOf<T>(), id, take);
    }
}

void MVectorDataset::GetObjectValues(int realization, int id, QVector<Interval> &intervals,
                                     QVector<datum> &values)
{
    intervals.clear();
    values.clear();
    visitElement(mDataType, [&](auto element) {
        using T = ElementOf<decltype(element)>;
        const MVectorDataRealization *found = std::as_const(*this).realizationAt(realization);
        const int most = found && isSliced() ? found->slicesOf<T>().size() : 0;
        intervals.reserve(most);
        values.reserve(most);
        visitObject<T>(realization, id, [&](const TimeStamp &stamp, const T &value) {
            intervals.append(stamp);
            values.append(datum(value));
        });
    });
}

MDatum MVectorDataset::GetIdValue(int realization, unsigned int id)
{
    const int object = id <= static_cast<unsigned int>(std::numeric_limits<int>::max())
                           ? static_cast<int>(id)
                           : -1;
    const MVectorDataRealization *found = realizationAt(realization);
    return visitElement(mDataType, [&](auto element) {
        using T = ElementOf<decltype(element)>;
        if (!found || !holdsObject(object))
            return MDatum();
        if (isSliced()) {
            const auto &slices = found->slicesOf<T>();
            T value{};
            return !slices.isEmpty() && slices.first()->GetValue(object, value) ? MDatum(value)
                                                                                : MDatum();
        }
        const TimeSeriesData<T> *series = found->seriesOf<T>().value(object, nullptr);
        if (!series)
            return MDatum();
        const CheckedOut<TimeSeriesData<T>> hold(*series);
        return series->GetCount() > 0 ? MDatum(series->Data()->value) : MDatum();
    });
}

template <class T>
bool MVectorDataset::readValues(int realization, qint64 time, QVector<T> &values,
                                QSet<int> &missing, bool interpolate) const
{
    const MVectorDataRealization *found = realizationAt(realization);
    if (!found || mDataType != typeCode<T>())
        return false;
    missing.clear();
    if (const TimeSliceData<T> *slice =
            isSliced() && !interpolate ? sliceAt<T>(realization, time) : nullptr) {
        values = slice->GetValues();
        missing = slice->GetMissingIds();
        for (int id = values.size(); id < mObjectCount; ++id)
            missing.insert(id);
        if (values.size() != mObjectCount)
            values.resize(mObjectCount);
        for (const int id : qAsConst(missing)) {
            if (holdsObject(id))
                values[id] = T();
        }
        return true;
    }
    values = QVector<T>(mObjectCount);
    const auto fill = [&](auto read) {
        for (int id = 0; id < mObjectCount; ++id) {
            if (!read(id, values[id]))
                missing.insert(id);
        }
    };
    if constexpr (std::is_arithmetic_v<T>) {
        const auto take = [](const MDatum &number, T &value) {
            if (!number.isEmpty())
                value = static_cast<T>(number.decimalValue());
            return !number.isEmpty();
        };
        if (interpolate && isSliced()) {
            const SliceInterpolation<T> all(found->slicesOf<T>(), mObjectCount, timeOf(time));
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
    fill([&](int id, T &value) { return !isSliced() && readCell(realization, id, time, value); });
    return true;
}

bool MVectorDataset::GetValues(int realization, qint64 time, QVector<int> &values,
                               QSet<int> &missing, bool interpolate) const
{
    return readValues(realization, time, values, missing, interpolate);
}

bool MVectorDataset::GetValues(int realization, qint64 time, QVector<double> &values,
                               QSet<int> &missing, bool interpolate) const
{
    return readValues(realization, time, values, missing, interpolate);
}

bool MVectorDataset::GetValues(int realization, qint64 time, QVector<QString> &values,
                               QSet<int> &missing) const
{
    return readValues(realization, time, values, missing, false);
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
        return !readCell(realization, id, time, value);
    });
}

int MVectorDataset::GetDataCount(int realization, qint64 time) const
{
    const MVectorDataRealization &known = knownRealization(realization);
    return visitElement(mDataType, [&](auto element) {
        using T = ElementOf<decltype(element)>;
        if (isSliced()) {
            const TimeSliceData<T> *slice = sliceAt<T>(realization, time);
            return slice ? slice->GetCount() - slice->GetMissingCount() : 0;
        }
        int count = 0;
        T value{};
        visitObjects(known.seriesOf<T>(), mObjectCount, [&](const TimeSeriesData<T> &series) {
            count += series.GetValue(timeOf(time), value);
        });
        return count;
    });
}

bool MVectorDataset::GetMissingTimeSliceValues(int realization, qint64 time, QSet<int> &missing)
{
    return isSliced() && visitElement(mDataType, [&](auto element) {
               const auto *slice = sliceAt<ElementOf<decltype(element)>>(realization, time);
               if (slice)
                   missing = slice->GetMissingIds();
               return slice != nullptr;
           });
}
