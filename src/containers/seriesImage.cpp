// SPDX-License-Identifier: MIT
#include "containers/seriesImage.h"
#include <cstddef>
#include <cstring>
#include <type_traits>
#include "containers/imageCursor.h"

namespace datainterface {
namespace {

constexpr int kHeadBytes = 4;
constexpr qint64 kTimeBytes = 8 + 8 + 4 + 4; // of an entry of strings, without the text
constexpr qint64 kEntryBytes = 32;           // of a raw entry; the offsets below are in it
constexpr int kFlagsAt = 16;
constexpr int kGapAt = 18;
constexpr int kValueAt = 24;

template <class T> constexpr bool isRawEntry = std::is_arithmetic_v<T>;
template <class T> constexpr qint64 minEntryBytes()
{
    return isRawEntry<T> ? kEntryBytes : kTimeBytes + ImageReader::kMinTextBytes;
}

template <class T> constexpr bool hasFileLayout()
{
    using Entry = TimeSeriesEntry<T>;
    return std::is_trivially_copyable_v<Entry> && sizeof(Entry) == kEntryBytes
           && offsetof(Entry, value) == kValueAt && offsetof(TimeStamp, startTime) == 0
           && offsetof(TimeStamp, endTime) == 8 && offsetof(TimeStamp, inclusiveStart) == kFlagsAt
           && offsetof(TimeStamp, inclusiveEnd) == kFlagsAt + 1;
}
static_assert(hasFileLayout<int>() && hasFileLayout<double>(),
              "entries are written as they are in memory");

// A flag byte of a foreign image may have any value, a bool only 0 and 1.
void settleFlags(void *entry)
{
    unsigned char *flags = static_cast<unsigned char *>(entry) + kFlagsAt;
    flags[0] = flags[0] != 0;
    flags[1] = flags[1] != 0;
}

// The padding of an entry is indeterminate in memory. It is cleared so that equal entries give
// equal bytes.
template <class T> void clearGaps(char *entry)
{
    std::memset(entry + kGapAt, 0, kValueAt - kGapAt);
    std::memset(entry + kValueAt + sizeof(T), 0, sizeof(double) - sizeof(T));
}

template <class T> void readEntry(ImageReader &in, TimeSeriesEntry<T> &entry)
{
    entry.stamp.startTime = in.integer<qint64>();
    entry.stamp.endTime = in.integer<qint64>();
    entry.stamp.inclusiveStart = (in.integer<qint32>() & 0xff) != 0;
    entry.stamp.inclusiveEnd = (in.integer<qint32>() & 0xff) != 0;
    entry.value = in.text();
}

template <class T> void writeEntry(ImageWriter &out, const TimeSeriesEntry<T> &entry)
{
    out.integer(entry.stamp.startTime);
    out.integer(entry.stamp.endTime);
    out.integer(qint32(entry.stamp.inclusiveStart));
    out.integer(qint32(entry.stamp.inclusiveEnd));
    out.text(entry.value);
}

} // namespace

template <class T> bool SeriesImage<T>::decode(const QByteArray &image, QVector<Entry> &entries)
{
    ImageReader in(image);
    entries.clear();
    entries.resize(in.count(minEntryBytes<T>()));
    if constexpr (isRawEntry<T>) {
        const qint64 bytes = entries.size() * kEntryBytes;
        if (bytes > 0)
            std::memcpy(static_cast<void *>(entries.data()), in.take(bytes),
                        static_cast<size_t>(bytes));
        for (Entry &entry : entries)
            settleFlags(&entry);
    } else {
        for (Entry &entry : entries)
            readEntry(in, entry);
    }
    if (!in.ok())
        entries.clear();
    return in.ok();
}

template <class T> QByteArray SeriesImage<T>::encode(const QVector<Entry> &entries)
{
    qint64 size = kHeadBytes + entries.size() * (isRawEntry<T> ? kEntryBytes : kTimeBytes);
    if constexpr (!isRawEntry<T>) {
        for (const Entry &entry : entries)
            size += ImageWriter::textBytes(entry.value);
    }
    ImageWriter out(size);
    out.integer(qint32(entries.size()));
    if constexpr (isRawEntry<T>) {
        char *at = out.raw(entries.constData(), entries.size() * kEntryBytes);
        for (int i = 0; i < entries.size(); ++i, at += kEntryBytes)
            clearGaps<T>(at);
    } else {
        for (const Entry &entry : entries)
            writeEntry(out, entry);
    }
    return out.image();
}

template <class T> int SeriesImage<T>::count(const QByteArray &image)
{
    return ImageReader(image).count(minEntryBytes<T>());
}

template <class T> TimeSeriesEntry<T> SeriesImage<T>::entry(const QByteArray &image, int index)
{
    Entry result;
    if constexpr (isRawEntry<T>) {
        std::memcpy(static_cast<void *>(&result),
                    image.constData() + kHeadBytes + index * kEntryBytes, kEntryBytes);
        settleFlags(&result);
    }
    return result;
}

template struct SeriesImage<int>;
template struct SeriesImage<double>;
template struct SeriesImage<QString>;

} // namespace datainterface
