// SPDX-License-Identifier: MIT
// A series of numbers is kept in memory as its image, whose bytes are shared with the block store,
// and is searched there by bisection. The entries are decoded when all of them are needed or one
// changes. A series of strings, whose entries differ in length, is decoded at once.
#include <algorithm>
#include "Common/detail/failure.h"
#include "containers/pagedContainer.h"
#include "containers/seriesImage.h"

using namespace datainterface;

template <class T> class TimeSeriesData<T>::Content {
public:
    Content() = default;
    explicit Content(const QVector<Entry> &entries) : mEntries(entries), mIsDecoded(true) {}

    /// A series of numbers that cannot be read becomes empty; one of strings raises.
    void restore(BlockRead result, const QByteArray &image)
    {
        const bool isRead = result == BlockRead::Done;
        require(result != BlockRead::Failed, "Invalid block id");
        mIsDecoded = !kSearchesImage;
        if constexpr (!kSearchesImage)
            require(isRead && SeriesImage<T>::decode(image, mEntries), "Invalid block id");
        else if (isRead && SeriesImage<T>::count(image) > 0)
            mImage = image;
    }
    QByteArray encode() { return mImage.isEmpty() ? SeriesImage<T>::encode(mEntries) : mImage; }

    /// Bytes that the decoded content takes in memory, without those of long texts.
    qint64 memory() const { return count() * qint64(sizeof(Entry)); }

    int count() const { return mIsDecoded ? mEntries.size() : SeriesImage<T>::count(mImage); }
    Entry entry(int index) const
    {
        return mIsDecoded ? mEntries.at(index) : SeriesImage<T>::entry(mImage, index);
    }
    TimeStamp stamp(int index) const
    {
        return mIsDecoded ? mEntries.at(index).stamp : entry(index).stamp;
    }
    QVector<Entry> &entries()
    {
        if (!mIsDecoded) {
            SeriesImage<T>::decode(mImage, mEntries);
            mImage = QByteArray();
            mIsDecoded = true;
        }
        return mEntries;
    }

    /// The index of the first entry that is not entirely before the stamp.
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
    bool mIsDecoded = true; ///< entries are in mEntries; else in mImage
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

template <class T> TimeSeriesData<T>::TimeSeriesData() : TimeSeriesData(QVector<Entry>())
{
}

template <class T>
TimeSeriesData<T>::TimeSeriesData(const QMap<TimeStamp, T> &values)
    : TimeSeriesData(entriesOf(values))
{
}

template <class T>
TimeSeriesData<T>::TimeSeriesData(const QVector<Entry> &entries) : TimeSeriesData(-1)
{
    mContent = std::make_unique<Content>(entries);
    this->PageOut();
}

template <class T>
TimeSeriesData<T>::TimeSeriesData(int blockId) : PagedContainer<TimeSeriesData>(blockId)
{
}

template <class T>
TimeSeriesData<T>::TimeSeriesData(const TimeSeriesData &other) : TimeSeriesData(-1)
{
    const CheckedOut<TimeSeriesData> hold(other);
    mContent = std::make_unique<Content>(*other.mContent);
    this->PageOut();
}

template <class T> TimeSeriesData<T>::~TimeSeriesData() = default;

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
    this->mDirty = true;
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
    this->mDirty = true;
}

template <class T> const TimeSeriesEntry<T> *TimeSeriesData<T>::Data() const
{
    require(mContent != nullptr, "not checked out");
    return mContent->entries().constData();
}

template class PagedContainer<TimeSeriesData<int>>;
template class PagedContainer<TimeSeriesData<double>>;
template class PagedContainer<TimeSeriesData<QString>>;
template class TimeSeriesData<int>;
template class TimeSeriesData<double>;
template class TimeSeriesData<QString>;
