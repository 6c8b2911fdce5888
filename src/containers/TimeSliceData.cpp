// SPDX-License-Identifier: MIT
// In memory a slice begins as its image, whose bytes it shares with the block store: one value read costs one value.
// Values and missing ids are decoded apart, each when somebody first needs them whole, and both before a change.
#include <algorithm>
#include "Common/DataManager.h"
#include "Common/detail/failure.h"
#include "containers/sliceImage.h"
#include "datainterface/DataBlocks.h"
#include "datainterface/TimeContainers.h"

using namespace datainterface;

template <class T> class TimeSliceData<T>::Content {
public:
    Content() = default;
    Content(const QVector<T> &values, const QSet<int> &missing)
        : mValues(values), mMissing(missing), mHasValues(true), mHasMissing(true)
    {
    }

    bool assign(const QByteArray &image)
    {
        mHasValues = mHasMissing = false;
        return mImage.assign(image);
    }
    QByteArray encode()
    {
        const bool isUntouched = !mHasValues && !mHasMissing && !mImage.bytes().isEmpty();
        return isUntouched ? mImage.bytes() : SliceImage<T>::encode(values(), missing());
    }

    int count() const { return mHasValues ? mValues.size() : mImage.count(); }
    int missingCount() const { return mHasMissing ? mMissing.size() : mImage.missingCount(); }
    T value(int object) const
    {
        if (object < 0 || object >= count())
            return T();
        return mHasValues ? mValues.at(object) : mImage.value(object);
    }
    bool isMissing(int object) const { return mHasMissing ? mMissing.contains(object) : mImage.isMissing(object); }
    const T *data()
    {
        const T *inPlace = mHasValues ? nullptr : mImage.valuesInPlace();
        return inPlace ? inPlace : values().constData();
    }

    QVector<T> &values()
    {
        if (!mHasValues) {
            mValues = mImage.values();
            mImage.dropValues();
            mHasValues = true;
        }
        return mValues;
    }
    QSet<int> &missing()
    {
        if (!mHasMissing) {
            mMissing = mImage.missing();
            mHasMissing = true;
        }
        return mMissing;
    }

private:
    SliceImage<T> mImage;
    QVector<T> mValues;
    QSet<int> mMissing;
    bool mHasValues = false; ///< else they are in the image
    bool mHasMissing = false;
};

template <class T>
TimeSliceData<T>::TimeSliceData(const QVector<T> &values, const QSet<int> &missing)
    : mContent(std::make_unique<Content>(values, missing))
{
    PageOut();
}

template <class T> TimeSliceData<T>::TimeSliceData(int blockId) : mBlockId(blockId) {}

template <class T> TimeSliceData<T>::TimeSliceData(const TimeSliceData &other)
{
    const CheckedOut<TimeSliceData> hold(other);
    mContent = std::make_unique<Content>(*other.mContent);
    PageOut();
}

template <class T> TimeSliceData<T>::~TimeSliceData()
{
    if (mBlockId >= 0)
        DeleteDataBlock(mBlockId);
}

template <class T> void TimeSliceData<T>::CheckOut() const
{
    // Content that could not be written back is still here, and newer than the block.
    if (!mContent)
        PageIn();
    ++mCheckOutCount;
}

template <class T> void TimeSliceData<T>::CheckIn() const
{
    if (mCheckOutCount == 0 || --mCheckOutCount > 0)
        return;
    if (mDirty)
        PageOut();
    mContent.reset();
}

template <class T> int TimeSliceData<T>::CheckOutCount() const
{
    return mCheckOutCount;
}

template <class T> int TimeSliceData<T>::BlockId() const
{
    return mBlockId;
}

template <class T> int TimeSliceData<T>::GetCount() const
{
    const CheckedOut<TimeSliceData> hold(*this);
    return mContent->count();
}

template <class T> T TimeSliceData<T>::GetValue(int object) const
{
    const CheckedOut<TimeSliceData> hold(*this);
    if (!isRaw<T> && IsHeld())
        mContent->values(); // finding one text means walking those before it
    return mContent->value(object);
}

template <class T> bool TimeSliceData<T>::GetValue(int object, T &value) const
{
    const auto read = [&] {
        if (object < 0 || object >= mContent->count() || mContent->isMissing(object))
            return false;
        value = mContent->value(object);
        return true;
    };
    if (mCheckOutCount > 0)
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
    mDirty = true;
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
    if (IsHeld())
        mContent->missing();
    return mContent->isMissing(object);
}

template <class T> void TimeSliceData<T>::SetMissing(int object)
{
    const CheckedOut<TimeSliceData> hold(*this);
    mContent->missing().insert(object);
    mDirty = true;
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
    mDirty = true;
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
    mDirty = true;
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

// Inside an operation: whether somebody else has the slice checked out. He will ask again, and what is decoded for one
// question serves the next.
template <class T> bool TimeSliceData<T>::IsHeld() const
{
    return mCheckOutCount > 1;
}

// A block of numbers that cannot be read is an empty slice; one of strings must not be.
template <class T> void TimeSliceData<T>::PageIn() const
{
    QByteArray image;
    auto content = std::make_unique<Content>();
    const bool isWhole = ReadDataBlock(mBlockId, image) && content->assign(image);
    if constexpr (!isRaw<T>) {
        require(isWhole, "Invalid block id");
        require(content->count() > 0, "size");
    }
    mContent = std::move(content);
    mDirty = false;
}

// Nothing is let go of before the store has taken the image.
template <class T> void TimeSliceData<T>::PageOut() const
{
    require(isRaw<T> || mContent->count() > 0, "empty dataset");
    const QByteArray image = mContent->encode();
    if (mBlockId >= 0)
        ReplaceDataBlock(mBlockId, image);
    else
        mBlockId = SaveDataBlock(image);
    mContent.reset();
    mDirty = false;
}

template class TimeSliceData<int>;
template class TimeSliceData<double>;
template class TimeSliceData<QString>;
