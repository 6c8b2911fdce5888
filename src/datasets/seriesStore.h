// SPDX-License-Identifier: MIT
/// The series of one element type.
///
/// A dataset has one store per element type. It works on the series maps of all realizations, which
/// the dataset owns: one series per object id, and none for an object without values. The intervals
/// of one series never overlap. A map may hold series beyond the object count of the dataset, which
/// shrinking left there.
///
/// All calls but of() and at() require a realization that exists. Failures carry the label of the
/// dataset.
#pragma once
#include <QMap>
#include <QPair>
#include <QSet>
#include <QVector>
#include "datainterface/MVectorDataset.h"
#include "datasets/frequencyTally.h"
#include "datasets/heldValues.h"

namespace datainterface {

template <class T> class SeriesStore {
public:
    using Series = TimeSeriesData<T>;
    using Map = MVectorDataRealization::SeriesMap<T>;
    using TimedValues = QVector<QPair<TimeStamp, T>>;

    explicit SeriesStore(QMap<int, MVectorDataRealization> &realizations)
        : mRealizations(realizations)
    {
    }

    /// The series of a realization; null for one that does not exist.
    const Map *of(int realization) const
    {
        const auto found = mRealizations.constFind(realization);
        return found == mRealizations.constEnd() ? nullptr : &found->template seriesOf<T>();
    }
    /// The series of an object; null without one.
    const Series *at(int realization, int id) const
    {
        const Map *series = of(realization);
        return series ? series->value(id, nullptr) : nullptr;
    }
    /// The object's first value in time; false, with `value` untouched, where it has none.
    bool readFirst(int realization, int id, T &value) const
    {
        const Series *series = at(realization, id);
        if (!series)
            return false;
        const CheckedOut<Series> hold(*series);
        if (series->GetCount() > 0)
            value = series->Data()->value;
        return series->GetCount() > 0;
    }
    /// The interval of the object's value at the instant, else TimeStamp::Invalid.
    TimeStamp stampOf(int realization, int id, qint64 time) const
    {
        const Series *series = at(realization, id);
        if (!series)
            return TimeStamp::Invalid;
        const CheckedOut<Series> hold(*series);
        const auto *entry = entryAt(*series, time);
        return entry ? entry->stamp : TimeStamp::Invalid;
    }
    /// The intersection of the intervals at the instant over all objects with a value there; false
    /// when no object has one.
    bool commonStamp(int realization, qint64 time, int objectCount, TimeStamp &stamp) const
    {
        bool isFirst = true;
        visitObjects(*of(realization), objectCount, [&](const Series &series) {
            const CheckedOut<Series> hold(series);
            if (const auto *entry = entryAt(series, time)) {
                stamp = isFirst ? entry->stamp : stamp.intersect(entry->stamp);
                isFirst = false;
            }
        });
        return !isFirst;
    }
    /// How many objects have a value at the instant.
    int valueCount(int realization, qint64 time, int objectCount) const
    {
        int count = 0;
        T value{};
        visitObjects(*of(realization), objectCount,
                     [&](const Series &series) { count += series.GetValue(time, value); });
        return count;
    }
    /// Whether an object has no series or an empty one.
    bool hasMissing(int realization, int objectCount) const
    {
        const Map &map = *of(realization);
        for (int id = 0; id < objectCount; ++id) {
            const Series *series = map.value(id, nullptr);
            if (!series || series->GetCount() == 0)
                return true;
        }
        return false;
    }
    /// The series of an object; an empty one is made where there is none.
    const Series *atOrNew(int realization, int id);

    /// Adds values in their order. With `overwrite` a new value takes the place of what its
    /// interval covers; without it, the value is added in the gaps only. A frequency table that is
    /// null is not updated.
    void add(int realization, int id, const TimedValues &values, bool overwrite,
             FrequencyTable<T> *table);
    /// Removes the object's values under `stamp`. False when there are none.
    bool setMissing(int realization, int id, const TimeStamp &stamp, FrequencyTable<T> &table);
    /// Takes ownership of `series` in place of the object's present series. Raises "Time series
    /// still in use" when that is checked out.
    void replace(int realization, int id, Series *series);
    /// Takes ownership of `series` in place of all present ones. A series in both maps stays.
    void replaceAll(int realization, const Map &series);
    /// Raises "Time series still in use" when the series of one of the objects is checked out.
    void requireReleased(const QSet<int> &ids) const;
    /// Deletes the series of the objects; those of the other objects move down to their new ids.
    /// @param ids  ascending.
    void removeObjects(int realization, const QVector<int> &ids);
    /// Deletes, in all realizations, the series of ids from `objectCount` on.
    void dropBeyond(int objectCount);
    /// Deletes all series of all realizations.
    void clear();

private:
    Map &toChange(int realization)
    {
        return mRealizations.find(realization)->template seriesOf<T>();
    }

    QMap<int, MVectorDataRealization> &mRealizations;
};

extern template class SeriesStore<int>;
extern template class SeriesStore<double>;
extern template class SeriesStore<QString>;

} // namespace datainterface
