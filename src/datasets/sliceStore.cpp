// SPDX-License-Identifier: MIT
// How a slice of values is added to a map of slices that it overlaps.
//
//   present   [----- A -----]      [-- B --]
//   new              [----------- t -----------]
//   pieces           [  p1  ][ p2 ][  p3   ][p4]
//   result    [- A -][  p1  ][ p2 ][  p3   ][p4]
//
// The new interval t is cut into pieces at the ends of the present slices that it overlaps. Each
// piece gets a container of its own, in which new and present values are combined by the rule of
// `overwrite`:
//
//   overwrite        new values win; present values fill the holes of the new data. A present slice
//                    without a value in any of these holes does not cut: the next piece spans it.
//   no overwrite     present values win; new values fill their holes. A present slice without a
//                    hole that the new data fill stays as it is, and no piece is made for it.
//
// A present slice keeps what is outside the pieces under a shorter key; one that is cut in the
// middle is copied. The keys of a map therefore never overlap.
//
// Adding is all or nothing. Containers are stored as blocks when they are made, which can fail, so
// all pieces and copies are made and all values are counted before the map is changed.
#include "datasets/sliceStore.h"
#include <algorithm>
#include <memory>
#include <vector>
#include "Common/detail/failure.h"
#include "datasets/elementTypes.h"
#include "datasets/intervalCuts.h"
#include "datasets/ownedContainers.h"

using namespace datainterface;

namespace {

// A slice of texts cannot be empty, so without objects there are no slices of texts.
template <class T>
bool dropEmptySlices(MVectorDataRealization::SliceMap<T> &slices, int objectCount)
{
    if (!std::is_same_v<T, QString> || objectCount > 0)
        return false;
    qDeleteAll(slices);
    slices.clear();
    return true;
}

template <class T>
void countSlice(FrequencyTable<T> &table, const TimeSliceData<T> &slice,
                typename FrequencyTally<T>::Direction direction)
{
    const CheckedOut<TimeSliceData<T>> hold(slice);
    const HeldValues<T> held(slice);
    FrequencyTally<T> tally(table, held.count() - held.missing().size(), direction);
    if (!tally.isFull())
        held.visit([&tally](int, const T &value) { tally.count(value); });
    tally.finish();
}

template <class T> class SliceMerge {
public:
    using Slice = TimeSliceData<T>;
    using Map = MVectorDataRealization::SliceMap<T>;

    SliceMerge(Map &slices, const TimeStamp &stamp, const QVector<T> &values,
               const QSet<int> &missing)
        : mSlices(slices), mStamp(stamp), mValues(values), mMissing(missing)
    {
    }

    /// Makes the pieces.
    void cutNewValues(bool overwrite)
    {
        PieceCursor cursor(mStamp);
        for (auto present = begin(); isUnder(present); ++present) {
            const CheckedOut<Slice> hold(**present);
            const HeldValues<T> held(**present);
            // Nothing of the present slice is kept: the next piece spans it.
            if (overwrite && !isAnyHeld(held, mMissing))
                continue;
            addPiece(cursor.upTo(present.key()), mValues, mMissing);
            const TimeStamp piece = cursor.through(present.key());
            if (!piece.isValid())
                continue;
            if (overwrite)
                addNewOverPresent(piece, held);
            else if (hasHoleToFill(held))
                addPresentOverNew(piece, **present, held);
        }
        addPiece(cursor.rest(), mValues, mMissing);
    }

    /// Puts the pieces into the map. Values are counted first, in the order of the pieces, unless
    /// `table` is null. False when there is no piece.
    bool apply(FrequencyTable<T> *table)
    {
        cutPresentSlices();
        if (table)
            count(*table);
        for (PresentSlice &present : mPresent)
            mSlices.remove(present.key);
        for (PresentSlice &present : mPresent)
            putBack(present);
        for (Piece &piece : mPieces)
            mSlices.insert(piece.stamp, piece.slice.release());
        return !mPieces.empty();
    }

private:
    struct Piece {
        TimeStamp stamp;
        std::unique_ptr<Slice> slice;
    };
    struct PresentSlice {
        std::size_t piece; ///< the one that cuts it
        TimeStamp key;
        Slice *slice;
        Cut cut;
        std::unique_ptr<Slice> tail; ///< the copy of a slice that is cut in the middle
    };

    typename Map::const_iterator begin() const { return qAsConst(mSlices).lowerBound(mStamp); }
    bool isUnder(typename Map::const_iterator present) const
    {
        return present != mSlices.constEnd() && !(mStamp < present.key());
    }

    static bool isAnyHeld(const HeldValues<T> &held, const QSet<int> &ids)
    {
        return std::any_of(ids.begin(), ids.end(), [&held](int id) { return held.holds(id); });
    }
    bool isNew(int id) const { return !mMissing.contains(id); }
    bool hasHoleToFill(const HeldValues<T> &held) const
    {
        if (std::any_of(held.missing().begin(), held.missing().end(),
                        [this](int id) { return isNew(id); }))
            return true;
        for (int id = held.count(); id < mValues.size(); ++id) {
            if (isNew(id))
                return true;
        }
        return false;
    }

    void addPiece(const TimeStamp &stamp, const QVector<T> &values, const QSet<int> &missing)
    {
        if (stamp.isValid())
            mPieces.push_back({stamp, std::make_unique<Slice>(values, missing)});
    }
    void addNewOverPresent(const TimeStamp &stamp, const HeldValues<T> &held)
    {
        QVector<T> values = mValues;
        QSet<int> missing = mMissing;
        for (const int id : mMissing) {
            if (held.holds(id)) {
                values[id] = held[id];
                missing.remove(id);
            }
        }
        addPiece(stamp, values, missing);
    }
    void addPresentOverNew(const TimeStamp &stamp, const Slice &present, const HeldValues<T> &held)
    {
        QVector<T> values = present.GetValues();
        QSet<int> missing = held.missing();
        values.resize(mValues.size());
        for (int id = 0; id < mValues.size(); ++id) {
            if (held.holds(id))
                continue;
            values[id] = mValues.at(id);
            if (isNew(id))
                missing.remove(id);
            else
                missing.insert(id);
        }
        addPiece(stamp, values, missing);
    }

    // Pieces and slices are in order of time, and no slice is under two pieces.
    void cutPresentSlices()
    {
        std::size_t i = 0;
        for (auto present = begin(); isUnder(present) && i < mPieces.size(); ++present) {
            while (i < mPieces.size() && mPieces[i].stamp < present.key())
                ++i;
            if (i == mPieces.size() || present.key() < mPieces[i].stamp)
                continue;
            const Cut cut = cutBy(mPieces[i].stamp, present.key(), kDatasetLabel);
            mPresent.push_back(
                {i, present.key(), *present, cut,
                 cut == Cut::HeadAndTail ? std::make_unique<Slice>(**present) : nullptr});
        }
    }
    void count(FrequencyTable<T> &table) const
    {
        auto present = mPresent.begin();
        for (std::size_t i = 0; i < mPieces.size(); ++i) {
            for (; present != mPresent.end() && present->piece == i; ++present) {
                if (present->cut == Cut::Nothing)
                    countSlice(table, *present->slice, FrequencyTally<T>::Down);
                else if (present->cut == Cut::HeadAndTail)
                    countSlice(table, *present->slice, FrequencyTally<T>::Up);
            }
            countSlice(table, *mPieces[i].slice, FrequencyTally<T>::Up);
        }
    }
    void putBack(PresentSlice &present)
    {
        const TimeStamp &piece = mPieces[present.piece].stamp;
        switch (present.cut) {
        case Cut::Nothing:
            delete present.slice;
            break;
        case Cut::Head:
            mSlices.insert(headOf(present.key, piece), present.slice);
            break;
        case Cut::Tail:
            mSlices.insert(tailOf(present.key, piece), present.slice);
            break;
        case Cut::HeadAndTail:
            mSlices.insert(headOf(present.key, piece), present.slice);
            mSlices.insert(tailOf(present.key, piece), present.tail.release());
            break;
        }
    }

    Map &mSlices;
    const TimeStamp mStamp;
    const QVector<T> mValues;
    const QSet<int> mMissing;
    std::vector<Piece> mPieces;
    std::vector<PresentSlice> mPresent;
};

} // namespace

template <class T>
bool SliceStore<T>::add(int realization, const TimeStamp &stamp, const QVector<T> &values,
                        const QSet<int> &missing, bool overwrite, FrequencyTable<T> *table)
{
    if (!holdsTick(stamp))
        return false;
    SliceMerge<T> merge(toChange(realization), stamp, values, missing);
    merge.cutNewValues(overwrite);
    return merge.apply(table);
}

template <class T>
bool SliceStore<T>::setValue(int realization, int id, const TimeStamp &stamp, const T &value,
                             bool overwrite, FrequencyTable<T> *table)
{
    const Map &slices = toChange(realization);
    const auto present = slices.constFind(stamp);
    if (present == slices.constEnd() || !(present.key() == stamp) || id >= (*present)->GetCount())
        return false;
    Slice &slice = **present;
    const CheckedOut<Slice> hold(slice);
    slice.WriteLater();
    const bool isHeld = !slice.IsMissing(id);
    if (table && isHeld) {
        const auto oldValue = table->find(slice.GetValue(id));
        require(oldValue != table->end(), "frequencies.contains(oldValue)", kDatasetLabel);
        // The count falls even when the present value is kept, and a count of 0 keeps its key: the
        // tables in project files are counted this way.
        --*oldValue;
    }
    if (isHeld && !overwrite)
        return true;
    slice.SetValue(id, value);
    if (table)
        countUp(*table, value);
    return true;
}

template <class T>
bool SliceStore<T>::setMissing(int realization, int id, const TimeStamp &stamp,
                               FrequencyTable<T> &table)
{
    struct Found {
        TimeStamp key;
        Slice *slice;
    };
    Map &slices = toChange(realization);
    std::vector<Found> under;
    for (auto it = qAsConst(slices).lowerBound(stamp);
         it != slices.constEnd() && !(stamp < it.key()); ++it) {
        if (holdsTick(partUnder(it.key(), stamp)))
            under.push_back({it.key(), *it});
    }
    for (const Found &found : under) {
        const Cut cut = cutBy(stamp, found.key, kDatasetLabel);
        if (cut == Cut::Nothing) {
            const CheckedOut<Slice> hold(*found.slice);
            found.slice->WriteLater();
            if (id < found.slice->GetCount() && !found.slice->IsMissing(id))
                countDown(table, found.slice->GetValue(id));
            found.slice->SetMissing(id);
            continue;
        }
        auto part = std::make_unique<Slice>(*found.slice);
        part->SetMissing(id);
        auto tail = cut == Cut::HeadAndTail ? std::make_unique<Slice>(*found.slice) : nullptr;
        countSlice(table, *part, FrequencyTally<T>::Up);
        if (tail)
            countSlice(table, *tail, FrequencyTally<T>::Up);
        slices.remove(found.key);
        slices.insert(cut == Cut::Tail ? tailOf(found.key, stamp) : headOf(found.key, stamp),
                      found.slice);
        if (tail)
            slices.insert(tailOf(found.key, stamp), tail.release());
        slices.insert(partUnder(found.key, stamp), part.release());
    }
    return !under.empty();
}

template <class T> void SliceStore<T>::replace(int realization, const Map &slices)
{
    replaceContainers(toChange(realization), slices);
}

template <class T> void SliceStore<T>::resize(int objectCount)
{
    forget();
    for (MVectorDataRealization &realization : mRealizations) {
        Map &slices = realization.slicesOf<T>();
        if (dropEmptySlices<T>(slices, objectCount))
            continue;
        for (Slice *slice : qAsConst(slices))
            slice->Resize(objectCount);
    }
}

template <class T>
void SliceStore<T>::removeObjects(int realization, const QSet<int> &ids, int objectCount)
{
    Map &slices = toChange(realization);
    if (dropEmptySlices<T>(slices, objectCount))
        return;
    for (Slice *slice : qAsConst(slices))
        slice->RemoveObjects(ids);
}

template <class T> void SliceStore<T>::clear()
{
    forget();
    for (MVectorDataRealization &realization : mRealizations) {
        Map &slices = realization.slicesOf<T>();
        qDeleteAll(slices);
        slices.clear();
    }
}

template <class T> void SliceStore<T>::keepEarliest(const TimeStamp &stamp)
{
    forget();
    for (MVectorDataRealization &realization : mRealizations) {
        Map &slices = realization.slicesOf<T>();
        if (slices.isEmpty())
            continue;
        Slice *earliest = slices.take(slices.firstKey());
        qDeleteAll(slices);
        slices.clear();
        slices.insert(stamp, earliest);
    }
}

namespace datainterface {

template class SliceStore<int>;
template class SliceStore<double>;
template class SliceStore<QString>;

} // namespace datainterface
