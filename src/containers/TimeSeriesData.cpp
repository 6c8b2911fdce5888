// SPDX-License-Identifier: MIT
// In memory a series of numbers begins as its image, whose bytes it shares with the block store, and is searched there;
// the entries are decoded when somebody needs them whole.
#include <algorithm>
#include "Common/DataManager.h"
#include "Common/detail/failure.h"
#include "containers/seriesImage.h"
#include "datainterface/DataBlocks.h"
#include "datainterface/TimeContainers.h"

using namespace datainterface;

template <class T> class TimeSeriesData<T>::Content {
public:
    Content() = default;
    explicit Content(const QVector<Entry> &entries) : mEntries(entries), mIsDecoded(true) {}

    /// False when the image cannot be read; there are no entries then.
    bool assign(const QByteArray &image)
    {
        mIsDecoded = !kSearchesImage;
        if constexpr (!kSearchesImage)
            return SeriesImage<T>::decode(image, mEntries);
        if (SeriesImage<T>::count(image) > 0)
            mImage = image;
        return true;
    }
    QByteArray encode() { return mImage.isEmpty() ? SeriesImage<T>::encode(mEntries) : mImage; }

    int count() const { return mIsDecoded ? mEntries.size() : SeriesImage<T>::count(mImage); }
    Entry entry(int index) const { return mIsDecoded ? mEntries.at(index) : SeriesImage<T>::entry(mImage, index); }
    TimeStamp stamp(int index) const { return mIsDecoded ? mEntries.at(index).stamp : entry(index).stamp; }
    QVector<Entry> &entries()
    {
        if (!mIsDecoded) {
            SeriesImage<T>::decode(mImage, mEntries);
            mImage = QByteArray();
            mIsDecoded = true;
        }
        return mEntries;
    }

    /// The first entry that is not wholly before the stamp.
    int lowerBound(const TimeStamp &probe) const
    {
        int first = 0;
        for (int length = count(); length > 0;) {
            const int half = length / 2;
            const bool before = stamp(first + half) < probe;
            first += before ? half + 1 : 0;
            length = before ? length - half - 1 : half;
        }
        return first;
    }

private:
    static constexpr bool kSearchesImage = std::is_arithmetic_v<T>;

    QByteArray mImage;
    QVector<Entry> mEntries;
    bool mIsDecoded = true; ///< else the entries are in the image
};

namespace {

template <class T> QVector<TimeSeriesEntry<T>> entriesOf(const QMap<TimeStamp, T> &values)
{
    QVector<TimeSeriesEntry<T>> entries;
    entries.reserve(values.size());
    for (auto value = values.begin(); value != values.end(); ++value)
        entries.append({value.key(), value.value()});
    return entries;
}

} // namespace

template <class T> TimeSeriesData<T>::TimeSeriesData() : TimeSeriesData(QVector<Entry>()) {}

template <class T>
TimeSeriesData<T>::TimeSeriesData(const QMap<TimeStamp, T> &values) : TimeSeriesData(entriesOf(values))
{
}

template <class T>
TimeSeriesData<T>::TimeSeriesData(const QVector<Entry> &entries) : mContent(std::make_unique<Content>(entries))
{
    PageOut();
}

template <class T> TimeSeriesData<T>::TimeSeriesData(int blockId) : mBlockId(blockId) {}

template <class T> TimeSeriesData<T>::TimeSeriesData(const TimeSeriesData &other)
{
    const CheckedOut<TimeSeriesData> hold(other);
    mContent = std::make_unique<Content>(*other.mContent);
    PageOut();
}

template <class T> TimeSeriesData<T>::~TimeSeriesData()
{
    if (mBlockId >= 0)
        DeleteDataBlock(mBlockId);
}

template <class T> void TimeSeriesData<T>::CheckOut() const
{
    // Content that could not be written back is still here, and newer than the block.
    if (!mContent)
        PageIn();
    ++mCheckOutCount;
}

template <class T> void TimeSeriesData<T>::CheckIn() const
{
    if (mCheckOutCount == 0 || --mCheckOutCount > 0)
        return;
    if (mDirty)
        PageOut();
    mContent.reset();
}

template <class T> int TimeSeriesData<T>::CheckOutCount() const
{
    return mCheckOutCount;
}

template <class T> int TimeSeriesData<T>::BlockId() const
{
    return mBlockId;
}

template <class T> int TimeSeriesData<T>::GetCount() const
{
    const CheckedOut<TimeSeriesData> hold(*this);
    return mContent->count();
}

template <class T> bool TimeSeriesData<T>::GetValue(qint64 time, T &value) const
{
    const CheckedOut<TimeSeriesData> hold(*this);
    const int found = mContent->lowerBound(TimeStamp(time));
    if (found == mContent->count())
        return false;
    const Entry entry = mContent->entry(found);
    if (!entry.stamp.contains(time))
        return false;
    value = entry.value;
    return true;
}

template <class T> void TimeSeriesData<T>::AddValue(const TimeStamp &stamp, const T &value)
{
    const CheckedOut<TimeSeriesData> hold(*this);
    mContent->entries().insert(mContent->lowerBound(stamp), Entry{stamp, value});
    mDirty = true;
}

template <class T> QMap<TimeStamp, T> TimeSeriesData<T>::GetValues() const
{
    QMap<TimeStamp, T> values;
    const QVector<Entry> entries = GetEntries();
    for (const Entry &entry : entries)
        values.insert(values.cend(), entry.stamp, entry.value);
    return values;
}

template <class T> QList<TimeStamp> TimeSeriesData<T>::GetIntervals() const
{
    const CheckedOut<TimeSeriesData> hold(*this);
    QList<TimeStamp> intervals;
    intervals.reserve(mContent->count());
    for (int i = 0; i < mContent->count(); ++i)
        intervals.append(mContent->stamp(i));
    return intervals;
}

template <class T> QVector<TimeSeriesEntry<T>> TimeSeriesData<T>::GetEntries() const
{
    const CheckedOut<TimeSeriesData> hold(*this);
    return mContent->entries();
}

template <class T> void TimeSeriesData<T>::SetEntries(const QVector<Entry> &entries)
{
    const CheckedOut<TimeSeriesData> hold(*this);
    mContent->entries() = entries;
    mDirty = true;
}

template <class T> const TimeSeriesEntry<T> *TimeSeriesData<T>::Data() const
{
    require(mContent != nullptr, "not checked out");
    return mContent->entries().constData();
}

// A block of numbers that cannot be read is an empty series.
template <class T> void TimeSeriesData<T>::PageIn() const
{
    QByteArray image;
    auto content = std::make_unique<Content>();
    const bool isWhole = ReadDataBlock(mBlockId, image) && content->assign(image);
    require(isWhole || std::is_arithmetic_v<T>, "Invalid block id");
    mContent = std::move(content);
    mDirty = false;
}

// Nothing is let go of before the store has taken the image.
template <class T> void TimeSeriesData<T>::PageOut() const
{
    const QByteArray image = mContent->encode();
    if (mBlockId >= 0)
        ReplaceDataBlock(mBlockId, image);
    else
        mBlockId = SaveDataBlock(image);
    mContent.reset();
    mDirty = false;
}

template class TimeSeriesData<int>;
template class TimeSeriesData<double>;
template class TimeSeriesData<QString>;
