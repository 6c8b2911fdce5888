// SPDX-License-Identifier: MIT
/// The slices of one element type.
///
/// A dataset has one store per element type. It works on the slice maps of all realizations, which
/// the dataset owns. The keys of a map never overlap: every call that adds values cuts, splits or
/// fills the slices that are present.
///
/// All calls but of() and at() require a realization that exists. Failures carry the label of the
/// dataset. A frequency table that is null is not updated.
#pragma once
#include <QMap>
#include <QSet>
#include <QVector>
#include <algorithm>
#include "datainterface/MVectorDataset.h"
#include "datasets/frequencyTally.h"
#include "datasets/heldValues.h"

namespace datainterface {

template <class T> class SliceStore {
public:
    using Slice = TimeSliceData<T>;
    using Map = MVectorDataRealization::SliceMap<T>;

    explicit SliceStore(QMap<int, MVectorDataRealization> &realizations)
        : mRealizations(realizations)
    {
    }

    /// The slices of a realization; null for one that does not exist.
    const Map *of(int realization) const
    {
        const auto found = mRealizations.constFind(realization);
        return found == mRealizations.constEnd() ? nullptr : &found->template slicesOf<T>();
    }
    /// The slice that holds the instant `time`; null without one. The slice found last is kept,
    /// because successive reads are mostly of one slice and the search is most of their cost.
    const Slice *at(int realization, qint64 time) const
    {
        const TimeStamp instant(time);
        if (mLast.slice && mLast.realization == realization && !(mLast.stamp < instant)
            && !(instant < mLast.stamp))
            return mLast.slice;
        const Map *slices = of(realization);
        if (!slices)
            return nullptr;
        const auto found = slices->constFind(instant);
        if (found == slices->constEnd())
            return nullptr;
        mLast = {realization, found.key(), *found};
        return *found;
    }
    /// The object's value in the earliest slice; false, with `value` untouched, where it has none.
    bool readFirst(int realization, int id, T &value) const
    {
        const Map &slices = *of(realization);
        return !slices.isEmpty() && slices.first()->GetValue(id, value);
    }
    /// The key of the slice that holds the instant and a value of the object, else
    /// TimeStamp::Invalid.
    TimeStamp stampOf(int realization, int id, qint64 time) const
    {
        const Map &slices = *of(realization);
        const auto found = slices.constFind(TimeStamp(time));
        T value{};
        return found != slices.constEnd() && (*found)->GetValue(id, value) ? found.key()
                                                                           : TimeStamp::Invalid;
    }
    /// The key of the slice that holds the instant; false without one.
    bool commonStamp(int realization, qint64 time, int, TimeStamp &stamp) const
    {
        const Map &slices = *of(realization);
        const auto found = slices.constFind(TimeStamp(time));
        if (found != slices.constEnd())
            stamp = found.key();
        return found != slices.constEnd();
    }
    /// How many objects have a value at the instant.
    int valueCount(int realization, qint64 time, int) const
    {
        const Slice *slice = at(realization, time);
        return slice ? slice->GetCount() - slice->GetMissingCount() : 0;
    }
    /// Whether an object is missing in a slice.
    bool hasMissing(int realization, int) const
    {
        const Map &slices = *of(realization);
        return std::any_of(slices.begin(), slices.end(),
                           [](const Slice *slice) { return slice->GetMissingCount() > 0; });
    }
    /// Forgets the slice found last. The calls below do so themselves; any other code that changes
    /// a map must call this first.
    void forget() { mLast.slice = nullptr; }

    /// Adds a slice of values. The interval is cut at the ends of the slices that it overlaps;
    /// `overwrite` decides whether new or present values win on the common parts. Nothing is
    /// changed before everything that can fail on the way to the block store has succeeded.
    /// @param missing  ids of `values` that have none.
    /// @return false when no value was added.
    bool add(int realization, const TimeStamp &stamp, const QVector<T> &values,
             const QSet<int> &missing, bool overwrite, FrequencyTable<T> *table);
    /// Stores one value in the slice with exactly the key `stamp`; a present value is replaced only
    /// with `overwrite`. False when there is no such slice, or it has no position for the object.
    bool setValue(int realization, int id, const TimeStamp &stamp, const T &value, bool overwrite,
                  FrequencyTable<T> *table);
    /// Removes the object's values under `stamp`. A slice that is only partly under it is cut.
    /// False when no slice is under it.
    bool setMissing(int realization, int id, const TimeStamp &stamp, FrequencyTable<T> &table);
    /// Takes ownership of `slices` in place of the present ones. A slice in both maps stays.
    void replace(int realization, const Map &slices);
    /// Gives all slices of all realizations positions for `objectCount` objects.
    void resize(int objectCount);
    /// Removes the positions in `ids`; `objectCount` remain.
    void removeObjects(int realization, const QSet<int> &ids, int objectCount);
    /// Deletes all slices of all realizations.
    void clear();
    /// The same, but the earliest slice of each realization is kept under the key `stamp`.
    void keepEarliest(const TimeStamp &stamp);

private:
    struct LastSlice {
        int realization = -1;
        TimeStamp stamp;
        const Slice *slice = nullptr; ///< null when nothing is remembered
    };

    Map &toChange(int realization)
    {
        forget();
        return mRealizations.find(realization)->template slicesOf<T>();
    }

    QMap<int, MVectorDataRealization> &mRealizations;
    mutable LastSlice mLast; ///< valid until a map changes
};

extern template class SliceStore<int>;
extern template class SliceStore<double>;
extern template class SliceStore<QString>;

} // namespace datainterface
