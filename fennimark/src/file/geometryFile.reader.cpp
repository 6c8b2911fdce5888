// SPDX-License-Identifier: MIT
// The reader trusts no number in a file: counts are checked against section lengths, and buffers
// grow only with data that have been read, a chunk at a time.
#include "file/geometryFile.h"
#include <QDataStream>
#include <QtEndian>
#include <algorithm>
#include <cstring>
#include "file/crc32c.h"

namespace fennimark {
namespace {

using namespace file;

constexpr quint64 kAhead = quint64(1) << 24; // the most bytes reserved for data not yet read

/// Reads one section after the other. The data of a chunk are returned only when its checksum is
/// right.
class SectionReader {
public:
    SectionReader(QDataStream &in, const FileHeader &header, ProgressCallback progress)
        : mIn(in),
          mProgress(progress),
          mSkipsUnknown(header.minor > kMinor),
          mTotal(std::max<quint64>(1, header.payloadBytes
                                          + header.records * (kObservationSize + kRecordSize)
                                          + header.chains * kChainSize + header.times * kTimeSize))
    {
    }

    /// Reads the head of the section, after the unknown sections of a later minor number. False for
    /// another tag, another element size, and a length that is not a multiple of it.
    bool begin(quint32 sectionTag, quint32 elementSize)
    {
        for (;;) {
            uchar head[16];
            if (!raw(head, sizeof head))
                return false;
            const auto found = qFromLittleEndian<quint32>(head);
            mUnread = qFromLittleEndian<quint64>(head + 8);
            mAt = mEnd = 0;
            if (found == sectionTag) {
                return qFromLittleEndian<quint32>(head + 4) == elementSize
                       && (elementSize == 0 ? mUnread == 0 : mUnread % elementSize == 0);
            }
            if (!mSkipsUnknown || found == kEnd || !skip())
                return false;
        }
    }
    /// The bytes of the section that have not been returned yet.
    quint64 left() const { return mUnread + (mEnd - mAt); }

    bool bytes(void *data, quint64 size)
    {
        auto *to = static_cast<uchar *>(data);
        while (size > 0) {
            if (mAt == mEnd && !nextChunk())
                return false;
            const auto piece = std::size_t(std::min<quint64>(size, mEnd - mAt));
            std::memcpy(to, mChunk.data() + mAt, piece);
            to += piece;
            mAt += piece;
            size -= piece;
        }
        return true;
    }
    template <class T> bool value(T &number)
    {
        uchar raw[sizeof(T)];
        if (!bytes(raw, sizeof raw))
            return false;
        number = qFromLittleEndian<T>(raw);
        return true;
    }
    /// Reads `count` elements, which consist of words of 1, 4 or 8 bytes. The vector grows with the
    /// data that have been read.
    template <class Word, class T> bool words(std::vector<T> &values, quint64 count)
    {
        static_assert(sizeof(T) % sizeof(Word) == 0);
        values.clear();
        while (count > 0) {
            const auto piece = std::size_t(std::min<quint64>(count, kChunkSize / sizeof(T)));
            const std::size_t first = values.size();
            if (values.capacity() < first + piece)
                values.reserve(std::max(
                    first + piece, std::min<std::size_t>(2 * first, first + std::size_t(count))));
            values.resize(first + piece);
            auto *raw = reinterpret_cast<uchar *>(values.data() + first);
            if (!bytes(raw, piece * sizeof(T)))
                return false;
            qFromLittleEndian<Word>(raw, qsizetype(piece * sizeof(T) / sizeof(Word)), raw);
            count -= piece;
        }
        return true;
    }
    /// A pointer to `count` elements in the current chunk, `ahead` bytes from the current position.
    /// Null when the chunk does not contain all of them, or they are misaligned or of another byte
    /// order. Valid until the next call that reads.
    template <class T> const T *inPlace(quint64 ahead, quint64 count) const
    {
        const std::size_t at = mAt + std::size_t(ahead);
        const bool isReady = Q_BYTE_ORDER == Q_LITTLE_ENDIAN && at % alignof(T) == 0
                             && mEnd - mAt >= ahead + count * sizeof(T);
        return isReady ? reinterpret_cast<const T *>(mChunk.data() + at) : nullptr;
    }
    /// Skips bytes that were used in place.
    void pass(quint64 size) { mAt += std::size_t(size); }
    bool text(quint32 sectionTag, QByteArray &utf8)
    {
        std::vector<uchar> bytes;
        if (!begin(sectionTag, 1) || left() > kMaxText || !words<uchar>(bytes, left()))
            return false;
        utf8 = QByteArray(reinterpret_cast<const char *>(bytes.data()), int(bytes.size()));
        return true;
    }
    bool raw(void *bytes, quint64 size)
    {
        return mIn.readRawData(static_cast<char *>(bytes), int(size)) == int(size)
               && mIn.status() == QDataStream::Ok;
    }

private:
    bool nextChunk()
    {
        const auto size = std::size_t(std::min<quint64>(mUnread, kChunkSize));
        if (size == 0)
            return false;
        mChunk.resize(std::max(mChunk.size(), size + 4));
        if (!raw(mChunk.data(), size + 4)
            || qFromLittleEndian<quint32>(mChunk.data() + size) != crc32c(0, mChunk.data(), size))
            return false;
        mUnread -= size;
        mAt = 0;
        mEnd = size;
        mRead += size;
        return !mProgress || mProgress(int(std::min<quint64>(100, mRead * 100 / mTotal)), nullptr);
    }
    bool skip()
    {
        while (mUnread > 0) {
            if (!nextChunk())
                return false;
        }
        return true;
    }

    QDataStream &mIn;
    ProgressCallback mProgress;
    bool mSkipsUnknown;
    quint64 mTotal, mRead = 0;
    quint64 mUnread = 0; // bytes of the section after the current chunk
    std::vector<uchar> mChunk;
    std::size_t mAt = 0, mEnd = 0;
};

bool readTimes(SectionReader &section, quint64 count, std::vector<timeRange> &times)
{
    if (!section.begin(kTimes, kTimeSize) || section.left() != count * kTimeSize)
        return false;
    for (quint64 i = 0; i < count; ++i) {
        timeRange range;
        quint64 flags = 0;
        if (!section.value(range.start) || !section.value(range.end) || !section.value(flags)
            || flags > 0xff)
            return false;
        range.flags = static_cast<unsigned char>(flags);
        if (!isUsable(range) || normalized(range).flags != range.flags
            || (!times.empty() && !startsBefore(times.back(), range)))
            return false;
        times.push_back(range);
    }
    return true;
}

bool readChains(SectionReader &section, const FileHeader &header, std::vector<ChainEntry> &chains)
{
    if (!section.begin(kChains, kChainSize) || section.left() != header.chains * kChainSize
        || !section.words<quint32>(chains, header.chains))
        return false;
    quint64 observations = 0;
    qint64 last = -1;
    for (const ChainEntry &chain : chains) {
        if (chain.id <= last)
            return false;
        last = chain.id;
        observations += chain.count;
    }
    return observations == header.records;
}

/// Reads OBSV; false unless each record is in exactly one observation.
bool readObservations(SectionReader &section, quint64 count, std::vector<quint32> &observations)
{
    if (!section.begin(kObservations, kObservationSize)
        || section.left() != count * kObservationSize
        || !section.words<quint32>(observations, count))
        return false;
    std::vector<bool> seen(observations.size(), false);
    for (const quint32 id : observations) {
        if (id < 1 || id > count || seen[id - 1])
            return false;
        seen[id - 1] = true;
    }
    return true;
}

bool readRecords(SectionReader &section, quint64 count, StoreContent &content)
{
    if (!section.begin(kRecords, kRecordSize) || section.left() != count * kRecordSize)
        return false;
    content.timeIndex.reserve(std::min<quint64>(count, kAhead / sizeof(quint32)));
    for (quint64 i = 0; i < count; ++i) {
        quint32 time = 0;
        quint8 flags = 0;
        if (!section.value(time) || !section.value(flags) || time >= content.times.size()
            || flags != typeCode(content.kind))
            return false;
        content.timeIndex.push_back(time);
    }
    return true;
}

/// Sets the chain of each record. False when the observations of a chain overlap or are out of
/// order.
bool placeObservations(const std::vector<ChainEntry> &chains, StoreContent &content)
{
    content.chainOf.resize(content.timeIndex.size());
    const quint32 *id = content.observations.data();
    for (const ChainEntry &chain : chains) {
        const timeRange *before = nullptr;
        for (quint32 i = 0; i < chain.count; ++i, ++id) {
            const timeRange &range = content.times[content.timeIndex[*id - 1]];
            if (before && (!startsBefore(*before, range) || overlaps(*before, range)))
                return false;
            before = &range;
            content.chainOf[*id - 1] = chain.id;
        }
    }
    return true;
}

bool readPoints(SectionReader &section, quint64 count, StoreContent &content)
{
    return section.words<quint64>(content.points, count)
           && std::all_of(content.points.begin(), content.points.end(), [](const QPointF &point) {
                  return std::isfinite(point.x()) && std::isfinite(point.y());
              });
}

/// Reads lines and polygons: in place when one is within a chunk, otherwise as a copy.
class ShapeReader {
public:
    explicit ShapeReader(SectionReader &section) : mSection(section) {}

    bool next(GeometryView &view)
    {
        if (!mSection.value(view.partCount))
            return false;
        const quint64 sizesSize = 4 * quint64(view.partCount);
        view.partSizes = mSection.inPlace<quint32>(0, view.partCount);
        if (view.partSizes && count(view)) {
            view.vertices = mSection.inPlace<QPointF>(sizesSize, view.vertexCount);
            if (view.vertices) {
                mSection.pass(sizesSize + sizeof(QPointF) * quint64(view.vertexCount));
                return true;
            }
        }
        return copyNext(view);
    }

private:
    static bool count(GeometryView &view)
    {
        quint64 vertexCount = 0;
        for (quint32 i = 0; i < view.partCount; ++i)
            vertexCount += view.partSizes[i];
        view.vertexCount = quint32(vertexCount);
        return vertexCount <= 0x7fffffffU;
    }
    bool copyNext(GeometryView &view)
    {
        if (view.partCount > mSection.left() / 4
            || !mSection.words<quint32>(mSizes, view.partCount))
            return false;
        view.partSizes = mSizes.data();
        if (!count(view) || view.vertexCount > mSection.left() / sizeof(QPointF)
            || !mSection.words<quint64>(mVertices, view.vertexCount))
            return false;
        view.vertices = mVertices.data();
        return true;
    }

    SectionReader &mSection;
    std::vector<quint32> mSizes;
    std::vector<QPointF> mVertices;
};

bool readShapes(SectionReader &section, const FileHeader &header, StoreContent &content)
{
    ShapeReader shapes(section);
    quint64 parts = 0, total = 0;
    content.expect(std::min<quint64>(header.records, kAhead / sizeof(Rect2D)), header.payloadBytes);
    for (quint64 i = 0; i < header.records; ++i) {
        GeometryView view;
        bool finite = true;
        if (!shapes.next(view))
            return false;
        view.bounds = vertexBounds(view.vertices, view.vertexCount, &finite);
        if (!finite || !hasUsableParts(view, content.kind) || !content.addPayload(view))
            return false;
        parts += view.partCount;
        total += view.vertexCount;
    }
    return parts == header.parts && total == header.vertices;
}

bool readGeometry(SectionReader &section, const FileHeader &header, StoreContent &content)
{
    if (!section.begin(kGeometry, 1) || section.left() != header.payloadBytes)
        return false;
    return content.kind == ObjectKind::Point ? readPoints(section, header.records, content)
                                             : readShapes(section, header, content);
}

} // namespace

bool FileImage::read(QDataStream &in, ProgressCallback progress)
{
    QByteArray head(kHeaderSize, '\0');
    FileHeader header;
    if (in.readRawData(head.data(), kHeaderSize) != kHeaderSize
        || !FileHeader::fromBytes(head, header))
        return false;
    content.kind = header.kind;
    content.tolerance = header.tolerance;
    hull = header.hull;
    SectionReader section(in, header, progress);
    return section.text(kName, name) && section.text(kProjection, projection)
           && readTimes(section, header.times, content.times) && readChains(section, header, chains)
           && readObservations(section, header.records, content.observations)
           && readRecords(section, header.records, content) && placeObservations(chains, content)
           && readGeometry(section, header, content) && section.begin(kEnd, 0);
}

} // namespace fennimark
