// SPDX-License-Identifier: MIT
/// One shape of a vector dataset's values: all objects at one time.
#pragma once
#include <QSet>
#include <QString>
#include <QVector>
#include <memory>
#include "datainterface/PagedContainer.h"
#include "datainterface/export.h"

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

extern template class PagedContainer<TimeSliceData<int>>;
extern template class PagedContainer<TimeSliceData<double>>;
extern template class PagedContainer<TimeSliceData<QString>>;
extern template class TimeSliceData<int>;
extern template class TimeSliceData<double>;
extern template class TimeSliceData<QString>;
