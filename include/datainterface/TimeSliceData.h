// SPDX-License-Identifier: MIT
/// A container of a vector dataset: the values of all objects over one interval.
#pragma once
#include <QSet>
#include <QString>
#include <QVector>
#include <memory>
#include "datainterface/PagedContainer.h"
#include "datainterface/export.h"

namespace datainterface {

struct SliceAccess;

/// The layout of the image in the block of a slice, cached to read one value without the others.
struct SliceShape {
    int count = -1; ///< number of values; -1 when it is not known
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
    /// A slice whose image is in block `blockId`.
    explicit TimeSliceData(int blockId);
    /// A deep copy with a block of its own.
    TimeSliceData(const TimeSliceData &other);
    ~TimeSliceData();

    int GetCount() const;
    /// The value at a position, 0 <= object < count. The value of a missing object has no meaning.
    T GetValue(int object) const;
    /// False, with `value` unchanged, when the object is missing or the position does not exist. A
    /// number of a slice that is not checked out is read from the cache or the scratch file without
    /// the rest of the slice.
    bool GetValue(int object, T &value) const;
    /// Stores a value; the object is no longer missing.
    void SetValue(int object, const T &value);
    QVector<T> GetValues() const;
    QSet<int> GetMissingIds() const;
    int GetMissingCount() const;
    bool IsMissing(int object) const;
    void SetMissing(int object);
    /// Positions that are added are missing.
    void Resize(int count);
    /// Removes the listed positions. Later positions, and the missing ids, decrease accordingly.
    void RemoveObjects(const QSet<int> &objects);

    /// The GetCount() values in memory. The container must be checked out; the pointer is valid
    /// until the next change or the last check-in.
    const T *Data() const;
    /// The missing ids in memory, under the same conditions.
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
