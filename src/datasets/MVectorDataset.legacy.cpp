// SPDX-License-Identifier: MIT
// Vector datasets of files before 180004, which hold their values inline. After the base part
// (there is none before 103000):
//
//   int32 old data type, int32 object count
//   before 130000  slices and series of the type; before 103000 the statistics follow
//   from 130000    frequencies: int32 count of three maps each;
//                  for each realization int64 length and as many bytes: slices of decimals,
//                  integers and texts, series of the same; from 170001 as an array, with an int32
//                  length of its own
//
//   slices  int32 count of (stamp, list of values, list of int32 ids); value i belongs to object
//           ids[i]
//   series  int32 count of (int32 object, int32 count of (stamp, value))
//
// The files do not store the storage type: it follows from the map that has entries. A container is
// made, and stored as a block, as soon as its values are read, so a realization may be larger than
// memory.
#include <QtEndian>
#include <algorithm>
#include <vector>
#include "Common/detail/failure.h"
#include "Common/detail/readAhead.h"
#include "containers/sliceImage.h"
#include "datainterface/DataBlocks.h"
#include "datasets/elementTypes.h"
#include "datasets/oldForms.h"
#include "frame/loadContext.h"

using namespace datainterface;

namespace {

constexpr qint64 kStampBytes = 24;
constexpr int kElementsAtOnce = 1 << 17; // memory grows with what is read, not with a stored count

template <class T> using Stored = std::conditional_t<std::is_same_v<T, QString>, std::string, T>;
template <class T> constexpr qint64 leastBytes()
{
    return std::is_arithmetic_v<T> ? sizeof(T) : sizeof(qint32);
}

// The TimeStamp constructor makes both ends of a point inclusive.
TimeStamp readStamp(ReadAhead &in)
{
    const auto start = in.number<qint64>();
    const auto end = in.number<qint64>();
    const bool isClosedAtStart = (in.number<qint32>() & 0xff) != 0;
    const bool isClosedAtEnd = (in.number<qint32>() & 0xff) != 0;
    return TimeStamp(start, end, isClosedAtStart, isClosedAtEnd);
}

template <class T> void readElements(ReadAhead &in, T *first, int count)
{
    if (const char *bytes = in.take(count * qint64(sizeof(T))))
        qFromBigEndian<T>(bytes, count, first);
}
void readElements(ReadAhead &in, std::string *first, int count)
{
    for (std::string *text = first; text != first + count; ++text) {
        const auto length = in.number<quint32>();
        const char *bytes = in.take(length);
        text->assign(bytes ? bytes : "", bytes ? length : 0);
    }
}

// Overwrites the elements of the previous list, so that texts reuse their memory.
template <class T> bool readElements(ReadAhead &in, QVector<T> &elements)
{
    const int count = in.count(leastBytes<T>());
    if (elements.size() > count)
        elements.resize(count);
    for (int done = 0; done < count && in.ok();) {
        const int step = std::min(count - done, kElementsAtOnce);
        if (elements.size() < done + step)
            elements.resize(done + step);
        readElements(in, elements.data() + done, step);
        done += step;
    }
    return in.ok();
}

template <class T> bool isHistory(const QVector<TimeSeriesEntry<T>> &entries)
{
    const bool areStamps = std::all_of(entries.begin(), entries.end(),
                                       [](const auto &entry) { return entry.stamp.isValid(); });
    const auto inOrder = [](const auto &a, const auto &b) { return !(a.stamp < b.stamp); };
    return areStamps
           && std::adjacent_find(entries.begin(), entries.end(), inOrder) == entries.end();
}

} // namespace

QDataStream &operator<<(QDataStream &out, const std::string &text)
{
    return out << QByteArray::fromRawData(text.data(), static_cast<int>(text.size()));
}

QDataStream &operator>>(QDataStream &in, std::string &text)
{
    QByteArray bytes;
    readBytes(in, bytes);
    text.assign(bytes.constData(), static_cast<std::size_t>(bytes.size()));
    return in;
}

DataType datainterface::dataTypeFromOld(qint32 code)
{
    switch (code) {
    case 0:
        return IntegerType;
    case 1:
        return DecimalType;
    case 2:
        return StringType;
    default:
        fail("Invalid data type");
    }
}

/// Reads the maps of one dataset. The status of the stream is the result.
class MVectorDataset::OldValues {
public:
    OldValues(QDataStream &in, DataType type, int objectCount)
        : mIn(in), mType(type), mObjectCount(objectCount)
    {
    }

    /// The two maps of the dataset's type.
    void readOwn(MVectorDataRealization &realization)
    {
        visitElement(mType, [&](auto element) {
            using T = ElementOf<decltype(element)>;
            readSlices<T>(realization.slicesOf<T>());
            readSeries<T>(realization.seriesOf<T>());
        });
    }

    void readSix(MVectorDataRealization &realization)
    {
        readSlices<double>(realization.slicesOf<double>());
        readSlices<int>(realization.slicesOf<int>());
        readSlices<QString>(realization.slicesOf<QString>());
        readSeries<double>(realization.seriesOf<double>());
        readSeries<int>(realization.seriesOf<int>());
        readSeries<QString>(realization.seriesOf<QString>());
    }

private:
    /// Entries of another data type than the dataset's make the file corrupt.
    template <class T> int readMapSize(qint64 leastEntryBytes)
    {
        const int count = mIn.count(leastEntryBytes);
        if (count > 0 && mType != typeCode<T>())
            mIn.setCorrupt();
        return count;
    }

    template <class T> void readSlices(SliceMap<T> &slices)
    {
        oldSlice<Stored<T>> old;
        const int count = readMapSize<T>(kStampBytes + 2 * qint64(sizeof(qint32)));
        for (int i = 0; i < count && mIn.ok(); ++i) {
            const TimeStamp stamp = readStamp(mIn);
            if (!readElements(mIn, old.values) || !readElements(mIn, old.ids) || !stamp.isValid()
                || slices.contains(stamp) || !namesObjects(old))
                return mIn.setCorrupt();
            slices[stamp] = newSlice(old);
        }
    }

    template <class S> bool namesObjects(const oldSlice<S> &slice) const
    {
        return slice.values.size() == slice.ids.size()
               && std::all_of(slice.ids.begin(), slice.ids.end(),
                              [this](int id) { return id >= 0 && id < mObjectCount; });
    }

    template <class T> TimeSliceData<T> *newSlice(const oldSlice<T> &slice) const
    {
        QSet<int> missing;
        const QVector<T> values = placed(slice.values, slice.ids, missing);
        return new TimeSliceData<T>(values, missing);
    }
    // Texts are encoded into the block image directly, without a QString for each.
    TimeSliceData<QString> *newSlice(const oldSlice<std::string> &slice) const
    {
        require(mObjectCount > 0, "empty dataset");
        QString joined;
        QVector<QStringView> texts;
        ProcessPre180005StringData(slice.values, joined, texts);
        QSet<int> missing;
        const QVector<QStringView> values = placed(texts, slice.ids, missing);
        return new TimeSliceData<QString>(SaveDataBlock(encodeTextSlice(values, missing)));
    }

    /// Puts each element at the position of its object. Objects that are not named are missing.
    template <class V>
    QVector<V> placed(const QVector<V> &named, const QVector<int> &ids, QSet<int> &missing) const
    {
        QVector<V> values(mObjectCount);
        std::vector<bool> isNamed(static_cast<std::size_t>(mObjectCount));
        for (int i = 0; i < named.size(); ++i) {
            values[ids.at(i)] = named.at(i);
            isNamed[static_cast<std::size_t>(ids.at(i))] = true;
        }
        missing.reserve(mObjectCount - named.size());
        for (int id = 0; id < mObjectCount; ++id) {
            if (!isNamed[static_cast<std::size_t>(id)])
                missing.insert(id);
        }
        return values;
    }

    template <class T> void readSeries(SeriesMap<T> &series)
    {
        const int count = readMapSize<T>(2 * qint64(sizeof(qint32)));
        for (int i = 0; i < count && mIn.ok(); ++i) {
            const auto object = mIn.number<qint32>();
            const QVector<TimeSeriesEntry<T>> entries = readHistory<T>();
            // Shrinking left series of objects beyond the count; they are freed later in the load.
            if (!mIn.ok() || !isHistory(entries) || object < 0 || series.contains(object))
                return mIn.setCorrupt();
            series[object] = new TimeSeriesData<T>(entries);
        }
    }

    /// In the file the entries are in descending order of time.
    template <class T> QVector<TimeSeriesEntry<T>> readHistory()
    {
        QVector<TimeStamp> stamps;
        QVector<Stored<T>> stored;
        const int count = mIn.count(kStampBytes + leastBytes<Stored<T>>());
        for (int i = 0; i < count && mIn.ok(); ++i) {
            stamps.append(readStamp(mIn));
            stored.append(Stored<T>());
            readElements(mIn, &stored.last(), 1);
        }
        return historyOf(stamps, stored);
    }

    template <class T>
    static QVector<TimeSeriesEntry<T>> historyOf(const QVector<TimeStamp> &stamps,
                                                 const QVector<T> &values)
    {
        QVector<TimeSeriesEntry<T>> entries;
        entries.reserve(values.size());
        for (int i = values.size(); i-- > 0;)
            entries.append({stamps.at(i), values.at(i)});
        return entries;
    }
    static QVector<TimeSeriesEntry<QString>> historyOf(const QVector<TimeStamp> &stamps,
                                                       const QVector<std::string> &stored)
    {
        QString joined;
        QVector<QStringView> texts;
        ProcessPre180005StringData(stored, joined, texts);
        QVector<QString> values;
        for (const QStringView text : qAsConst(texts))
            values.append(text.toString());
        return historyOf(stamps, values);
    }

    ReadAhead mIn;
    const DataType mType;
    const int mObjectCount;
};

// The program that wrote these files read texts as C strings, so none contains a NUL. They are
// joined with NULs between them and decoded in one call, which is several times faster than one
// call each.
void MVectorDataset::ProcessPre180005StringData(const QVector<std::string> &stored, QString &joined,
                                                QVector<QStringView> &texts)
{
    QByteArray bytes;
    for (const std::string &text : stored)
        bytes.append('\0').append(text.c_str());
    // The overload for arrays would stop at the first NUL.
    joined = QString::fromUtf8(bytes.constData(), bytes.size());
    texts.resize(0);
    texts.reserve(stored.size());
    const QChar *const end = joined.constData() + joined.size();
    for (const QChar *at = joined.constData(); at != end;) {
        const QChar *const first = at + 1;
        at = std::find(first, end, QChar());
        texts.append(QStringView(first, at));
    }
}

/// Before 130000.
bool MVectorDataset::restoreSingle(QDataStream &in, const LoadContext &context)
{
    if (!restoreOldHead(in, context))
        return false;
    OldValues(in, mDataType, mObjectCount).readOwn(realizationsToChange()[0]);
    if (!context.since(fileVersions::kVectorDatasetHasBase))
        readStatistics(in, context);
    if (in.status() != QDataStream::Ok || !settleStorage())
        return false;
    CleanPre201044Data(); // series beyond the object count must not be counted
    mTimeBounds = CalculateTimeBounds(mRealizationData.first());
    return RecalculateFrequencies();
}

/// From 130000 to 180003.
bool MVectorDataset::restoreInline(QDataStream &in, const LoadContext &context)
{
    if (!restoreOldHead(in, context))
        return false;
    restoreOldFrequencies(in, context);
    for (int i = 0; i < mRealizationCount; ++i) {
        if (!restoreInlineRealization(in, context, realizationsToChange()[i]))
            return false;
    }
    return in.status() == QDataStream::Ok && settleStorage();
}

bool MVectorDataset::restoreOldHead(QDataStream &in, const LoadContext &context)
{
    const qint32 code = read<qint32>(in);
    if (in.status() == QDataStream::Ok)
        mDataType = dataTypeFromOld(code);
    return restoreObjectCount(in, context);
}

// A file whose maps do not end where their length says is refused.
bool MVectorDataset::restoreInlineRealization(QDataStream &in, const LoadContext &context,
                                              MVectorDataRealization &realization)
{
    const qint64 length = read<qint64>(in);
    if (in.status() != QDataStream::Ok || length < 0 || length > bytesLeft(in))
        return false;
    const qint64 end = in.device()->pos() + length;
    if (context.since(fileVersions::kNestsInlineMaps)
        && read<qint32>(in) != length - qint64(sizeof(qint32)))
        return false;
    OldValues(in, mDataType, mObjectCount).readSix(realization);
    return in.status() == QDataStream::Ok
           && (in.device()->isSequential() || in.device()->pos() == end);
}

bool MVectorDataset::settleStorage()
{
    return visitElement(mDataType, [this](auto element) {
        using T = ElementOf<decltype(element)>;
        const auto any = [this](auto containersOf) {
            return std::any_of(
                mRealizationData.cbegin(), mRealizationData.cend(),
                [&](const auto &realization) { return !containersOf(realization).isEmpty(); });
        };
        const bool hasSlices =
            any([](const auto &data) -> auto & { return data.template slicesOf<T>(); });
        const bool hasSeries =
            any([](const auto &data) -> auto & { return data.template seriesOf<T>(); });
        mStorageType = hasSeries ? TimeSeries : TimeSlice;
        return !(hasSlices && hasSeries);
    });
}
