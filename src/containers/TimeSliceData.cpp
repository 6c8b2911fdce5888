// SPDX-License-Identifier: MIT
#include <algorithm>
#include "containers/TimeSliceData.content.h"
#include "containers/pagedContainer.h"
#include "containers/slicePeek.h"

using namespace datainterface;

template <class T>
TimeSliceData<T>::TimeSliceData(const QVector<T> &values, const QSet<int> &missing)
    : TimeSliceData(-1)
{
    mContent = std::make_unique<Content>(values, missing);
    this->PageOut();
}

template <class T>
TimeSliceData<T>::TimeSliceData(int blockId) : PagedContainer<TimeSliceData>(blockId)
{
}

template <class T> TimeSliceData<T>::TimeSliceData(const TimeSliceData &other) : TimeSliceData(-1)
{
    const CheckedOut<TimeSliceData> hold(other);
    mContent = std::make_unique<Content>(*other.mContent);
    this->PageOut();
}

template <class T> TimeSliceData<T>::~TimeSliceData() = default;

template <class T> int TimeSliceData<T>::GetCount() const
{
    const CheckedOut<TimeSliceData> hold(*this);
    return mContent->count();
}

template <class T> T TimeSliceData<T>::GetValue(int object) const
{
    const CheckedOut<TimeSliceData> hold(*this);
    if (!isRaw<T> && IsHeld())
        mContent->values(); // decoded once: finding one text in the image walks all before it
    return mContent->value(object);
}

template <class T> bool TimeSliceData<T>::GetValue(int object, T &value) const
{
    if (!mContent)
        return SliceAccess::getValue(BlockReading(), *this, object, value);
    return getWhole(object, value);
}

template <class T> bool TimeSliceData<T>::getWhole(int object, T &value) const
{
    const auto read = [&] {
        if (object < 0 || object >= mContent->count() || mContent->isMissing(object))
            return false;
        value = mContent->value(object);
        return true;
    };
    if (this->mCheckOutCount > 0)
        return read();
    const CheckedOut<TimeSliceData> hold(*this);
    return read();
}

template <class T> void TimeSliceData<T>::SetValue(int object, const T &value)
{
    const CheckedOut<TimeSliceData> hold(*this);
    if (object < 0 || object >= mContent->count())
        return;
    mContent->values()[object] = value;
    mContent->missing().remove(object);
    Changed();
}

template <class T> QVector<T> TimeSliceData<T>::GetValues() const
{
    const CheckedOut<TimeSliceData> hold(*this);
    return mContent->values();
}

template <class T> QSet<int> TimeSliceData<T>::GetMissingIds() const
{
    const CheckedOut<TimeSliceData> hold(*this);
    return mContent->missing();
}

template <class T> int TimeSliceData<T>::GetMissingCount() const
{
    const CheckedOut<TimeSliceData> hold(*this);
    return mContent->missingCount();
}

template <class T> bool TimeSliceData<T>::IsMissing(int object) const
{
    const CheckedOut<TimeSliceData> hold(*this);
    return mContent->isMissing(object);
}

template <class T> void TimeSliceData<T>::SetMissing(int object)
{
    const CheckedOut<TimeSliceData> hold(*this);
    mContent->missing().insert(object);
    Changed();
}

template <class T> void TimeSliceData<T>::Resize(int count)
{
    const CheckedOut<TimeSliceData> hold(*this);
    QVector<T> &values = mContent->values();
    QSet<int> &missing = mContent->missing();
    const int oldCount = values.size();
    values.resize(std::max(count, 0));
    for (int object = oldCount; object < values.size(); ++object)
        missing.insert(object);
    for (auto id = missing.begin(); id != missing.end();)
        id = *id >= values.size() ? missing.erase(id) : std::next(id);
    Changed();
}

template <class T> void TimeSliceData<T>::RemoveObjects(const QSet<int> &objects)
{
    const CheckedOut<TimeSliceData> hold(*this);
    std::vector<int> removed(objects.begin(), objects.end());
    std::sort(removed.begin(), removed.end());
    QVector<T> &values = mContent->values();
    auto next = removed.begin();
    int kept = 0;
    for (int object = 0; object < values.size(); ++object) {
        next = std::find_if(next, removed.end(), [object](int id) { return id >= object; });
        if (next != removed.end() && *next == object)
            continue;
        if (kept != object)
            values[kept] = std::move(values[object]);
        ++kept;
    }
    values.resize(kept);

    QSet<int> missing;
    for (const int id : std::as_const(mContent->missing())) {
        const auto below = std::lower_bound(removed.begin(), removed.end(), id);
        const auto belowNone = std::lower_bound(removed.begin(), below, 0);
        if (below == removed.end() || *below != id)
            missing.insert(id - static_cast<int>(below - belowNone));
    }
    mContent->missing() = missing;
    Changed();
}

template <class T> const T *TimeSliceData<T>::Data() const
{
    require(mContent != nullptr, "not checked out");
    return mContent->data();
}

template <class T> const QSet<int> &TimeSliceData<T>::MissingIds() const
{
    require(mContent != nullptr, "not checked out");
    return mContent->missing();
}

// Whether a caller has the slice checked out besides the present operation. More reads are likely
// then, so it is faster to decode all values.
template <class T> bool TimeSliceData<T>::IsHeld() const
{
    return this->mCheckOutCount > 1;
}

// Every change of values or missing ids invalidates the shape that slicePeek has found.
template <class T> void TimeSliceData<T>::Changed()
{
    this->mDirty = true;
    mShape = SliceShape();
}

template class PagedContainer<TimeSliceData<int>>;
template class PagedContainer<TimeSliceData<double>>;
template class PagedContainer<TimeSliceData<QString>>;
template class TimeSliceData<int>;
template class TimeSliceData<double>;
template class TimeSliceData<QString>;
