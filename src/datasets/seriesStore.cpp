// SPDX-License-Identifier: MIT
// How values are added to the history of one object: a list of entries in order of time whose
// intervals never overlap.
//
// With `overwrite` the entries under the new interval are removed, shortened or, around an interval
// in their middle, split in two, and the new value is inserted. Without it the entries stay and the
// new value is inserted in the gaps between them.
//
// A history is edited on a copy of its entries and written back once. The frequency table is
// updated after that, so that a failure of the block store changes neither.
#include "datasets/seriesStore.h"
#include <algorithm>
#include "Common/detail/failure.h"
#include "datasets/elementTypes.h"
#include "datasets/intervalCuts.h"
#include "datasets/ownedContainers.h"

using namespace datainterface;

namespace {

/// A copy of a series' entries that is edited, and a list of the values that the edit adds and
/// removes, in the order of the edit.
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

    /// Removes what is under `stamp`. Returns the position of an entry with that stamp.
    int clear(const TimeStamp &stamp)
    {
        int i = firstUnder(stamp);
        while (i < mEntries.size() && !(stamp < mEntries.at(i).stamp)) {
            mIsChanged = true;
            const Entry present = mEntries.at(i);
            const TimeStamp head = headOf(present.stamp, stamp);
            const TimeStamp tail = tailOf(present.stamp, stamp);
            switch (cutBy(stamp, present.stamp, kDatasetLabel)) {
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

} // namespace

template <class T> const TimeSeriesData<T> *SeriesStore<T>::atOrNew(int realization, int id)
{
    Map &series = toChange(realization);
    if (!series.contains(id))
        series.insert(id, new Series);
    return series.value(id);
}

template <class T>
void SeriesStore<T>::add(int realization, int id, const TimedValues &values, bool overwrite,
                         FrequencyTable<T> *table)
{
    Map &series = toChange(realization);
    Series *present = series.value(id, nullptr);
    SeriesEdit<T> edit(present ? present->GetEntries() : QVector<TimeSeriesEntry<T>>());
    for (const auto &[stamp, value] : values)
        edit.add(stamp, value, overwrite);
    if (!present)
        series.insert(id, new Series(edit.entries()));
    else if (edit.isChanged())
        present->SetEntries(edit.entries());
    if (table)
        edit.count(*table);
}

template <class T>
bool SeriesStore<T>::setMissing(int realization, int id, const TimeStamp &stamp,
                                FrequencyTable<T> &table)
{
    Series *present = toChange(realization).value(id, nullptr);
    if (!present)
        return false;
    SeriesEdit<T> edit(present->GetEntries());
    edit.clear(stamp);
    if (!edit.isChanged())
        return false;
    present->SetEntries(edit.entries());
    edit.count(table);
    return true;
}

template <class T> void SeriesStore<T>::replace(int realization, int id, Series *series)
{
    Series *&present = toChange(realization)[id];
    if (present == series)
        return;
    require(!present || present->CheckOutCount() == 0, "Time series still in use", kDatasetLabel);
    delete present;
    present = series;
}

template <class T> void SeriesStore<T>::replaceAll(int realization, const Map &series)
{
    replaceContainers(toChange(realization), series);
}

template <class T> void SeriesStore<T>::requireReleased(const QSet<int> &ids) const
{
    for (const MVectorDataRealization &realization : qAsConst(mRealizations)) {
        for (const int id : ids) {
            const Series *series = realization.seriesOf<T>().value(id, nullptr);
            require(!series || series->CheckOutCount() == 0, "Time series still in use",
                    kDatasetLabel);
        }
    }
}

template <class T> void SeriesStore<T>::removeObjects(int realization, const QVector<int> &ids)
{
    Map &series = toChange(realization);
    const QSet<int> removed(ids.begin(), ids.end());
    Map kept;
    int removedBelow = 0;
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

template <class T> void SeriesStore<T>::dropBeyond(int objectCount)
{
    for (MVectorDataRealization &realization : mRealizations) {
        Map &series = realization.seriesOf<T>();
        for (auto it = series.lowerBound(objectCount); it != series.end(); it = series.erase(it))
            delete *it;
    }
}

template <class T> void SeriesStore<T>::clear()
{
    for (MVectorDataRealization &realization : mRealizations) {
        Map &series = realization.seriesOf<T>();
        qDeleteAll(series);
        series.clear();
    }
}

namespace datainterface {

template class SeriesStore<int>;
template class SeriesStore<double>;
template class SeriesStore<QString>;

} // namespace datainterface
