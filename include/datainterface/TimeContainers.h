// SPDX-License-Identifier: MIT
/// The two shapes of a vector dataset's values: all objects at one time, or one object over time.
/// Each is a handle of a few words; its content is one block of the block store and in memory only
/// while somebody has it checked out.
#pragma once
#include <QList>
#include <QMap>
#include <QPair>
#include <QSet>
#include <QString>
#include <QTypeInfo>
#include <QVector>
#include <exception>
#include <memory>
#include "datainterface/TimeStamp.h"
#include "datainterface/export.h"

/// One value of one object and the interval on which it holds. 32 bytes in memory and, for numbers,
/// in the block.
template <class T> struct TimeSeriesEntry {
    TimeStamp stamp;
    T value{};
};
template <class T>
class QTypeInfo<TimeSeriesEntry<T>> : public QTypeInfoMerger<TimeSeriesEntry<T>, TimeStamp, T> {
};

/// What the two shapes share: the block, the count of check-outs, and when the content comes and
/// goes.
///
/// Every operation pages in at need and, when nobody holds the container checked out, writes a
/// change back and lets go of the memory before it returns. Check-out counts are not atomic.
template <class Container> class DATAINTERFACE_EXPORT PagedContainer {
public:
    PagedContainer(const PagedContainer &) = delete;
    PagedContainer &operator=(const PagedContainer &) = delete;

    void CheckOut() const;
    /// A surplus check-in is ignored. The last one writes back, which can raise "result".
    void CheckIn() const;
    int CheckOutCount() const { return mCheckOutCount; }
    int BlockId() const { return mBlockId; }

protected:
    explicit PagedContainer(int blockId) : mBlockId(blockId) {}
    /// Gives the block back to the store.
    ~PagedContainer();

    void PageIn() const;
    void PageOut() const;
    const Container &self() const { return static_cast<const Container &>(*this); }

    mutable int mBlockId; ///< -1 before the first page-out
    mutable int mCheckOutCount = 0;
    mutable bool mDirty = false; ///< the content differs from the block
};

namespace datainterface {

struct SliceAccess;

/// What a slice remembers of the image in its block, to find one value without all the others.
struct SliceShape {
    int count = -1; ///< of the values; -1 when it is to be looked up
    int missingCount = 0;
    bool idsAscend = false;
};

} // namespace datainterface

/// All values of one time slice. T is int, double or QString.
template <class T>
class DATAINTERFACE_EXPORT TimeSliceData : public PagedContainer<TimeSliceData<T>> {
public:
    /// Takes copies and stores them as a new block at once. A slice of strings must hold a value
    /// ("empty dataset").
    TimeSliceData(const QVector<T> &values, const QSet<int> &missing);
    /// A slice that lies in block `blockId` already.
    explicit TimeSliceData(int blockId);
    /// A deep copy with a block of its own.
    TimeSliceData(const TimeSliceData &other);
    ~TimeSliceData();

    int GetCount() const;
    /// The value at a position; what a missing object's position holds has no meaning. 0 <= object
    /// < count.
    T GetValue(int object) const;
    /// False, with `value` untouched, when the object is missing or the position does not exist. A
    /// number of a slice that nobody holds is read where it lies, in the cache or in the scratch
    /// file, without the rest of the slice.
    bool GetValue(int object, T &value) const;
    /// Stores a value; the object is no longer missing.
    void SetValue(int object, const T &value);
    QVector<T> GetValues() const;
    QSet<int> GetMissingIds() const;
    int GetMissingCount() const;
    bool IsMissing(int object) const;
    void SetMissing(int object);
    /// Positions added by growing are missing.
    void Resize(int count);
    /// Drops the listed positions; the rest moves down in order, missing ids with it.
    void RemoveObjects(const QSet<int> &objects);

    /// The values in place: GetCount() elements, valid until the next change or the last check-in.
    /// Check out first.
    const T *Data() const;
    /// The missing ids in place, under the same conditions.
    const QSet<int> &MissingIds() const;

private:
    friend class PagedContainer<TimeSliceData>;
    friend struct datainterface::SliceAccess;
    class Content;
    bool IsHeld() const;
    bool getWhole(int object, T &value) const;
    void Changed();

    mutable datainterface::SliceShape mShape;
    mutable std::unique_ptr<Content> mContent; ///< null while paged out
};

/// The history of one object: entries sorted by interval, which never overlap. T is int, double or
/// QString.
template <class T>
class DATAINTERFACE_EXPORT TimeSeriesData : public PagedContainer<TimeSeriesData<T>> {
public:
    using Entry = TimeSeriesEntry<T>;

    TimeSeriesData();
    explicit TimeSeriesData(const QMap<TimeStamp, T> &values);
    /// Entries must be sorted and free of overlap.
    explicit TimeSeriesData(const QVector<Entry> &entries);
    explicit TimeSeriesData(int blockId);
    TimeSeriesData(const TimeSeriesData &other);
    ~TimeSeriesData();

    int GetCount() const;
    /// False, with `value` untouched, when no entry holds the instant.
    bool GetValue(qint64 time, T &value) const;
    /// Inserts at its sorted place. Overlaps are the caller's to prevent.
    void AddValue(const TimeStamp &stamp, const T &value);
    QMap<TimeStamp, T> GetValues() const;
    QList<TimeStamp> GetIntervals() const;
    QVector<Entry> GetEntries() const;
    /// Replaces the history; entries sorted and free of overlap.
    void SetEntries(const QVector<Entry> &entries);

    /// The entries in place: GetCount() of them, valid until the next change or the last check-in.
    /// Check out first.
    const Entry *Data() const;

private:
    friend class PagedContainer<TimeSeriesData>;
    class Content;

    mutable std::unique_ptr<Content> mContent; ///< null while paged out
};

extern template class PagedContainer<TimeSliceData<int>>;
extern template class PagedContainer<TimeSliceData<double>>;
extern template class PagedContainer<TimeSliceData<QString>>;
extern template class PagedContainer<TimeSeriesData<int>>;
extern template class PagedContainer<TimeSeriesData<double>>;
extern template class PagedContainer<TimeSeriesData<QString>>;
extern template class TimeSliceData<int>;
extern template class TimeSliceData<double>;
extern template class TimeSliceData<QString>;
extern template class TimeSeriesData<int>;
extern template class TimeSeriesData<double>;
extern template class TimeSeriesData<QString>;

/// Holds a container checked out for a scope. Leaving the scope by an exception never raises a
/// second one.
template <class Container> class CheckedOut {
public:
    explicit CheckedOut(const Container &container)
        : mContainer(container), mUnwinding(std::uncaught_exceptions())
    {
        mContainer.CheckOut();
    }
    ~CheckedOut() noexcept(false)
    {
        try {
            mContainer.CheckIn();
        } catch (...) {
            if (std::uncaught_exceptions() == mUnwinding)
                throw;
        }
    }
    CheckedOut(const CheckedOut &) = delete;
    CheckedOut &operator=(const CheckedOut &) = delete;

private:
    const Container &mContainer;
    const int mUnwinding;
};
