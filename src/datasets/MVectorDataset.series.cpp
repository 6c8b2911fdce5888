// SPDX-License-Identifier: MIT
// How values enter the history of one object. A history is edited on a copy of its entries and
// written back once; the frequency table follows when it is back.
#include <memory>
#include "Common/detail/failure.h"
#include "datasets/dataContainer.elements.h"
#include "datasets/elementTypes.h"
#include "datasets/frequencyTally.h"
#include "datasets/intervalCuts.h"

using namespace datainterface;

namespace {

/// Entries in order of time, and the occurrences that an edit adds and takes away, in the order in
/// which it does.
template <class T> class SeriesEdit {
public:
    using Entry = TimeSeriesEntry<T>;

    explicit SeriesEdit(const QVector<Entry> &entries) : mEntries(entries) {}

    const QVector<Entry> &entries() const { return mEntries; }
    bool isChanged() const { return mIsChanged; }

    void add(const TimeStamp &stamp, const T &value, bool overwrite)
    {
        if (overwrite) {
            const int at = clear(stamp);
            insert(at, stamp, value);
        } else {
            fillGaps(stamp, value);
        }
    }

    /// Takes away what lies under `stamp`. Returns where an entry of that stamp belongs.
    int clear(const TimeStamp &stamp)
    {
        int i = firstUnder(stamp);
        while (i < mEntries.size() && !(stamp < mEntries.at(i).stamp)) {
            mIsChanged = true;
            const Entry present = mEntries.at(i);
            const TimeStamp head = headOf(present.stamp, stamp);
            const TimeStamp tail = tailOf(present.stamp, stamp);
            switch (cutBy(stamp, present.stamp)) {
            case Cut::Nothing:
                mEntries.remove(i);
                mCounts.append({present.value, false});
                break;
            case Cut::Head:
                mEntries[i++].stamp = head;
                break;
            case Cut::Tail:
                mEntries[i].stamp = tail;
                return i;
            case Cut::HeadAndTail:
                mEntries[i++].stamp = head;
                insert(i, tail, present.value);
                return i;
            }
        }
        return i;
    }

    void count(FrequencyTable<T> &table) const
    {
        for (const auto &[value, up] : mCounts)
            up ? void(countUp(table, value)) : countDown(table, value);
    }

private:
    int firstUnder(const TimeStamp &stamp) const
    {
        const auto first = std::lower_bound(
            mEntries.begin(), mEntries.end(), stamp,
            [](const Entry &entry, const TimeStamp &t) { return entry.stamp < t; });
        return static_cast<int>(first - mEntries.begin());
    }
    void insert(int at, const TimeStamp &stamp, const T &value)
    {
        Entry entry;
        entry.stamp = stamp;
        entry.value = value;
        mEntries.insert(at, entry);
        mCounts.append({value, true});
        mIsChanged = true;
    }
    void fillGaps(const TimeStamp &stamp, const T &value)
    {
        PieceCursor cursor(stamp);
        int i = firstUnder(stamp);
        for (; i < mEntries.size() && !(stamp < mEntries.at(i).stamp); ++i) {
            const TimeStamp present = mEntries.at(i).stamp;
            const TimeStamp gap = cursor.upTo(present);
            cursor.through(present);
            if (gap.isValid())
                insert(i++, gap, value);
        }
        const TimeStamp rest = cursor.rest();
        if (rest.isValid())
            insert(i, rest, value);
    }

    QVector<Entry> mEntries;
    QVector<QPair<T, bool>> mCounts;
    bool mIsChanged = false;
};

template <class T> T valueOf(const MDatum &datum)
{
    if constexpr (std::is_same_v<T, double>)
        return datum.decimalValue();
    else if constexpr (std::is_same_v<T, int>)
        return integerOf(datum);
    else
        return datum.text();
}

} // namespace

template <class T>
void MVectorDataset::addToSeries(MVectorDataRealization &realization, int id,
                                 const TimedValues<T> &values, bool overwrite,
                                 bool updateFrequencies)
{
    auto &series = realization.seriesOf<T>();
    TimeSeriesData<T> *present = series.value(id, nullptr);
    SeriesEdit<T> edit(present ? present->GetEntries() : QVector<TimeSeriesEntry<T>>());
    for (const auto &[stamp, value] : values)
        edit.add(stamp, value, overwrite);
    if (!present)
        series.insert(id, new TimeSeriesData<T>(edit.entries()));
    else if (edit.isChanged())
        present->SetEntries(edit.entries());
    if (updateFrequencies)
        edit.count(mFrequencies.tableOf<T>());
    for (const auto &[stamp, value] : values)
        mTimeBounds += stamp;
}

bool MVectorDataset::AddTimeSeriesValue(int realization, int id, const TimeStamp &stamp,
                                        const MDatum &value, bool overwrite, bool updateFrequencies)
{
    MVectorDataRealization *target = realizationAt(realization);
    const TimeStamp filed = stampOf(stamp);
    if (!target || isSliced() || value.isEmpty() || !holdsObject(id) || !holdsTick(filed))
        return false;
    visitElement(mDataType, [&](auto element) {
        using T = ElementOf<decltype(element)>;
        addToSeries<T>(*target, id, {{filed, valueOf<T>(value)}}, overwrite, updateFrequencies);
    });
    dataChanged(realization);
    return true;
}

template <class T>
bool MVectorDataset::addSeries(int realization, int id, const TimedValues<T> &values,
                               bool overwrite, bool updateFrequencies)
{
    MVectorDataRealization *target = realizationAt(realization);
    if (!target || mDataType != typeCode<T>() || isSliced() || mIsStatic || !holdsObject(id))
        return false;
    TimedValues<T> kept;
    kept.reserve(values.size());
    bool areValid = true;
    for (const auto &[stamp, value] : values) {
        if constexpr (std::is_same_v<T, double>) {
            if (!std::isfinite(value))
                continue;
        }
        const TimeStamp filed = stampOf(stamp);
        if (holdsTick(filed))
            kept.append({filed, value});
        else
            areValid = false;
    }
    if (!kept.isEmpty()) {
        addToSeries(*target, id, kept, overwrite, updateFrequencies);
        dataChanged(realization);
    }
    return areValid;
}

bool MVectorDataset::AddTimeSeriesValues(int realization, int id, const TimedValues<int> &values,
                                         bool overwrite, bool updateFrequencies)
{
    return addSeries(realization, id, values, overwrite, updateFrequencies);
}

bool MVectorDataset::AddTimeSeriesValues(int realization, int id, const TimedValues<double> &values,
                                         bool overwrite, bool updateFrequencies)
{
    return addSeries(realization, id, values, overwrite, updateFrequencies);
}

bool MVectorDataset::AddTimeSeriesValues(int realization, int id,
                                         const TimedValues<QString> &values, bool overwrite,
                                         bool updateFrequencies)
{
    return addSeries(realization, id, values, overwrite, updateFrequencies);
}

bool MVectorDataset::AddDataValue(int realization, int id, const TimeStamp &stamp,
                                  const MDatum &value, bool overwrite, bool updateFrequencies)
{
    return isSliced()
               ? AddTimeSliceValue(realization, id, stamp, value, overwrite, updateFrequencies)
               : AddTimeSeriesValue(realization, id, stamp, value, overwrite, updateFrequencies);
}

template <class T>
bool MVectorDataset::markMissing(SeriesMap<T> &series, int id, const TimeStamp &stamp)
{
    TimeSeriesData<T> *present = series.value(id, nullptr);
    if (!present)
        return false;
    SeriesEdit<T> edit(present->GetEntries());
    edit.clear(stamp);
    if (!edit.isChanged())
        return false;
    present->SetEntries(edit.entries());
    edit.count(mFrequencies.tableOf<T>());
    return true;
}

bool MVectorDataset::SetMissing(int realization, int id, const TimeStamp &stamp)
{
    knownRealization(realization);
    const TimeStamp filed = stampOf(stamp);
    if (!holdsObject(id) || !holdsTick(filed))
        return false;
    const bool changed =
        visitContainers(*realizationAt(realization), mDataType, mStorageType,
                        [&](auto &containers) { return markMissing(containers, id, filed); });
    dataChanged(realization);
    return changed;
}
