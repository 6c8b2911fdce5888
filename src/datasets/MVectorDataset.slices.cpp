// SPDX-License-Identifier: MIT
// How a slice of values enters a map of slices that it overlaps.
//
// The new interval is cut into pieces at the ends of the slices under it. Each piece gets a
// container of its own, with the new values and the old ones put together by the rule of
// `overwrite`. What the present slices had outside the pieces stays with them, under shorter keys;
// one that is cut in the middle is copied. Everything that can fail on the way to the block store
// happens before the map is touched.
#include <memory>
#include <vector>
#include "Common/detail/failure.h"
#include "datainterface/dataContainer.h"
#include "datasets/dataContainer.elements.h"
#include "datasets/elementTypes.h"
#include "datasets/frequencyTally.h"
#include "datasets/heldValues.h"
#include "datasets/intervalCuts.h"

using namespace datainterface;

namespace {

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
    using Map = MVectorDataset::SliceMap<T>;

    SliceMerge(Map &slices, const TimeStamp &stamp, const QVector<T> &values,
               const QSet<int> &missing)
        : mSlices(slices), mStamp(stamp), mValues(values), mMissing(missing)
    {
    }

    void cutNewValues(bool overwrite)
    {
        PieceCursor cursor(mStamp);
        for (auto present = begin(); isUnder(present); ++present) {
            const CheckedOut<Slice> hold(**present);
            const HeldValues<T> held(**present);
            // Where nothing of a present slice survives, the later piece simply spans it.
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

    /// Counts with the pieces in order, unless `table` is null. False when there is no piece.
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
        std::size_t piece; ///< that cuts it
        TimeStamp key;
        Slice *slice;
        Cut cut;
        std::unique_ptr<Slice> tail; ///< of one that is cut in the middle
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

    // Both lists are in order of time, and no slice lies under two pieces.
    void cutPresentSlices()
    {
        std::size_t i = 0;
        for (auto present = begin(); isUnder(present) && i < mPieces.size(); ++present) {
            while (i < mPieces.size() && mPieces[i].stamp < present.key())
                ++i;
            if (i == mPieces.size() || present.key() < mPieces[i].stamp)
                continue;
            const Cut cut = cutBy(mPieces[i].stamp, present.key());
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

/// The elements of a container as `To`.
template <class To, class From> QVector<To> widened(const From *values, int count)
{
    QVector<To> result;
    result.reserve(count);
    std::transform(values, values + count, std::back_inserter(result), [](const From &value) {
        if constexpr (std::is_same_v<To, double>)
            return toNumber(value);
        else
            return static_cast<To>(value);
    });
    return result;
}

/// What an element of a container becomes in a vector dataset; void where it has no place.
template <class T>
using SliceElement = std::conditional_t<
    std::is_same_v<T, QString>, QString,
    std::conditional_t<
        std::is_same_v<T, double> || std::is_same_v<T, float> || std::is_same_v<T, half>, double,
        std::conditional_t<std::is_integral_v<T> && (sizeof(T) < 4 || std::is_same_v<T, qint32>),
                           int, void>>>;

} // namespace

template <class T>
bool MVectorDataset::mergeSlice(SliceMap<T> &slices, const TimeStamp &stamp,
                                const QVector<T> &values, const QSet<int> &missing, bool overwrite,
                                bool updateFrequencies)
{
    if (!holdsTick(stamp))
        return false;
    SliceMerge<T> merge(slices, stamp, values, missing);
    merge.cutNewValues(overwrite);
    if (!merge.apply(updateFrequencies ? &mFrequencies.tableOf<T>() : nullptr))
        return false;
    mTimeBounds += stamp;
    return true;
}

template <class T>
void MVectorDataset::replaceCell(TimeSliceData<T> &slice, int id, const T &value, bool overwrite,
                                 bool updateFrequencies)
{
    slice.WriteLater();
    const CheckedOut<TimeSliceData<T>> hold(slice);
    const bool isHeld = id < slice.GetCount() && !slice.IsMissing(id);
    auto &frequencies = mFrequencies.tableOf<T>();
    if (updateFrequencies && isHeld) {
        const auto oldValue = frequencies.find(slice.GetValue(id));
        require(oldValue != frequencies.end(), "frequencies.contains(oldValue)");
        // Before the test below, and without taking a key along whose count is 0: tables of files
        // are counted so.
        --*oldValue;
    }
    if (isHeld && !overwrite)
        return;
    slice.SetValue(id, value);
    if (updateFrequencies)
        countUp(frequencies, value);
}

template <class T>
bool MVectorDataset::addCell(int realization, int id, const TimeStamp &stamp, const T &value,
                             bool overwrite, bool updateFrequencies)
{
    auto &slices = realizationAt(realization)->slicesOf<T>();
    const auto present = slices.constFind(stamp);
    if (present != slices.constEnd() && present.key() == stamp && id < (*present)->GetCount()) {
        replaceCell(**present, id, value, overwrite, updateFrequencies);
        return true;
    }
    QVector<T> values(mObjectCount);
    values[id] = value;
    QSet<int> missing;
    missing.reserve(mObjectCount);
    for (int other = 0; other < mObjectCount; ++other) {
        if (other != id)
            missing.insert(other);
    }
    return mergeSlice(slices, stamp, values, missing, overwrite, updateFrequencies);
}

bool MVectorDataset::AddTimeSliceValue(int realization, int id, const TimeStamp &stamp,
                                       const MDatum &value, bool overwrite, bool updateFrequencies)
{
    if (!isSliced() || !realizationAt(realization) || !holdsObject(id))
        return false;
    const TimeStamp closed(stamp.startTime, stamp.endTime, stamp.inclusiveStart,
                           stamp.inclusiveEnd);
    switch (value.type()) {
    case MDatum::Integer:
        return addCell(realization, id, closed, integerOf(value), overwrite,
                       updateFrequencies);
    case MDatum::Decimal:
        return addCell(realization, id, closed, value.decimalValue(), overwrite, updateFrequencies);
    case MDatum::String:
        return addCell(realization, id, closed, value.text(), overwrite,
                       updateFrequencies);
    default:
        return false;
    }
}

template <class T>
bool MVectorDataset::addSlice(int realization, const TimeStamp &stamp, const QVector<T> &values,
                              const QSet<int> &missing, bool overwrite, bool updateFrequencies)
{
    MVectorDataRealization *target = realizationAt(realization);
    if (!target || mDataType != typeCode<T>() || !isSliced())
        return false;
    require(values.size() == mObjectCount, "Invalid object count");

    QSet<int> absent = missing;
    for (const int id : missing) {
        if (!holdsObject(id))
            absent.remove(id);
    }
    if constexpr (std::is_same_v<T, double>) {
        for (int id = 0; id < values.size(); ++id) {
            if (!std::isfinite(values.at(id)))
                absent.insert(id);
        }
        if (absent.size() == mObjectCount)
            return true;
    }
    const bool changed = mergeSlice(target->slicesOf<T>(), stampOf(stamp), values, absent,
                                    overwrite, updateFrequencies);
    if (changed)
        invalidateStatistics(realization);
    RemoveAllVariogramModels();
    return changed;
}

bool MVectorDataset::AddTimeSliceValues(int realization, const TimeStamp &stamp,
                                        const QVector<int> &values, const QSet<int> &missing,
                                        bool overwrite, bool updateFrequencies)
{
    return addSlice(realization, stamp, values, missing, overwrite, updateFrequencies);
}

bool MVectorDataset::AddTimeSliceValues(int realization, const TimeStamp &stamp,
                                        const QVector<double> &values, const QSet<int> &missing,
                                        bool overwrite, bool updateFrequencies)
{
    return addSlice(realization, stamp, values, missing, overwrite, updateFrequencies);
}

bool MVectorDataset::AddTimeSliceValues(int realization, const TimeStamp &stamp,
                                        const QVector<QString> &values, const QSet<int> &missing,
                                        bool overwrite, bool updateFrequencies)
{
    return addSlice(realization, stamp, values, missing, overwrite, updateFrequencies);
}

bool MVectorDataset::AddTimeSliceValues(int realization, const TimeStamp &stamp,
                                        VORN_DataContainer &values, bool overwrite,
                                        bool updateFrequencies)
{
    if (!isSliced() || values.count() != mObjectCount || ContainerAccess::isEmpty(values))
        return false;
    // After setAllMissing the ids are not listed: such a container's values count as present.
    const QSet<int> missing =
        values.missingData().isValid() ? values.missingData().missingIds() : QSet<int>();
    bool changed = false;
    ContainerAccess::visitValues(values, [&](const auto *elements) {
        using From = std::decay_t<decltype(*elements)>;
        using To = SliceElement<From>;
        if constexpr (!std::is_void_v<To>)
            changed = addSlice(realization, stamp, widened<To>(elements, mObjectCount), missing,
                               overwrite, updateFrequencies);
    });
    return changed;
}

template <class T>
bool MVectorDataset::markMissing(SliceMap<T> &slices, int id, const TimeStamp &stamp)
{
    struct Found {
        TimeStamp key;
        TimeSliceData<T> *slice;
    };
    std::vector<Found> under;
    for (auto it = qAsConst(slices).lowerBound(stamp);
         it != slices.constEnd() && !(stamp < it.key()); ++it) {
        if (holdsTick(partUnder(it.key(), stamp)))
            under.push_back({it.key(), *it});
    }
    auto &frequencies = mFrequencies.tableOf<T>();
    for (const Found &found : under) {
        const Cut cut = cutBy(stamp, found.key);
        if (cut == Cut::Nothing) {
            found.slice->WriteLater();
            const CheckedOut<TimeSliceData<T>> hold(*found.slice);
            if (id < found.slice->GetCount() && !found.slice->IsMissing(id))
                countDown(frequencies, found.slice->GetValue(id));
            found.slice->SetMissing(id);
            continue;
        }
        auto part = std::make_unique<TimeSliceData<T>>(*found.slice);
        part->SetMissing(id);
        auto tail =
            cut == Cut::HeadAndTail ? std::make_unique<TimeSliceData<T>>(*found.slice) : nullptr;
        countSlice(frequencies, *part, FrequencyTally<T>::Up);
        if (tail)
            countSlice(frequencies, *tail, FrequencyTally<T>::Up);
        slices.remove(found.key);
        slices.insert(cut == Cut::Tail ? tailOf(found.key, stamp) : headOf(found.key, stamp),
                      found.slice);
        if (tail)
            slices.insert(tailOf(found.key, stamp), tail.release());
        slices.insert(partUnder(found.key, stamp), part.release());
    }
    return !under.empty();
}
template bool MVectorDataset::markMissing(SliceMap<int> &, int, const TimeStamp &);
template bool MVectorDataset::markMissing(SliceMap<double> &, int, const TimeStamp &);
template bool MVectorDataset::markMissing(SliceMap<QString> &, int, const TimeStamp &);
