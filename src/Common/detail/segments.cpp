// SPDX-License-Identifier: MIT
#include "Common/detail/segments.h"
#include <QIODevice>
#include <QtEndian>
#include <algorithm>
#include <isa-l/igzip_lib.h>
#include <libdeflate.h>
#include <memory>
#include "Common/detail/streams.h"

namespace datainterface {
namespace {

constexpr int kHeadBytes = 4;
constexpr int kZlibHeadBytes = 2;
constexpr int kEntryBytes = 8;
constexpr char kMark[] = "SEGM";
// The fastest level for values that change from cell to cell, and as small as any.
constexpr int kLevel = 2;
// An empty last block, which ends a segment that is unpacked by itself.
constexpr char kEndOfStream[] = "\x03";
constexpr int kEndBytes = 2; // with the zero after it

quint32 adler(const char *bytes, qint64 count)
{
    return libdeflate_adler32(1, bytes, static_cast<size_t>(count));
}

/// A zlib stream that is written as it is packed.
class SegmentStream {
public:
    explicit SegmentStream(QDataStream &out)
        : mOut(out),
          mStream(std::make_unique<isal_zstream>()),
          mLevel(ISAL_DEF_LVL2_DEFAULT),
          mPacked(kSegmentBytes + kSegmentBytes / 8, Qt::Uninitialized)
    {
        isal_deflate_init(mStream.get());
        mStream->level = kLevel;
        mStream->level_buf = mLevel.data();
        mStream->level_buf_size = static_cast<quint32>(mLevel.size());
        mStream->gzip_flag = IGZIP_ZLIB;
    }

    /// @return the bytes that were written; -1 when they could not be.
    int add(const char *contents, int count)
    {
        mStream->flush = FULL_FLUSH;
        mStream->next_in = reinterpret_cast<quint8 *>(const_cast<char *>(contents));
        mStream->avail_in = static_cast<quint32>(count);
        return run();
    }
    int finish()
    {
        mStream->flush = NO_FLUSH;
        mStream->end_of_stream = 1;
        return run();
    }

private:
    int run()
    {
        int written = 0;
        do {
            mStream->next_out = reinterpret_cast<quint8 *>(mPacked.data());
            mStream->avail_out = static_cast<quint32>(mPacked.size());
            if (isal_deflate(mStream.get()) != COMP_OK)
                return -1;
            const int count = mPacked.size() - static_cast<int>(mStream->avail_out);
            if (mOut.writeRawData(mPacked.constData(), count) != count)
                return -1;
            written += count;
        } while (mStream->avail_out == 0);
        return written;
    }

    QDataStream &mOut;
    std::unique_ptr<isal_zstream> mStream;
    std::vector<quint8> mLevel;
    QByteArray mPacked;
};

bool writeSegments(QDataStream &out, int size,
                   const std::function<bool(int at, char *to, int count)> &read)
{
    SegmentStream stream(out);
    QByteArray contents(kSegmentBytes, Qt::Uninitialized);
    QByteArray index;
    BytesWriter entries(&index);
    for (int at = 0; at < size; at += kSegmentBytes) {
        const int count = std::min(size - at, kSegmentBytes);
        if (!read(at, contents.data(), count))
            return false;
        const int written = stream.add(contents.constData(), count);
        if (written < 0)
            return false;
        entries << quint32(at == 0 ? written - kZlibHeadBytes : written)
                << adler(contents.constData(), count);
    }
    entries << quint32(kSegmentBytes) << quint32(index.size() / kEntryBytes);
    entries << adler(index.constData(), index.size());
    index.append(kMark);
    return stream.finish() >= 0
           && out.writeRawData(index.constData(), index.size()) == index.size();
}

} // namespace

bool packInSegments(QDataStream &out, int size,
                    const std::function<bool(int at, char *to, int count)> &read)
{
    QIODevice *device = out.device();
    if (!device || device->isSequential()) {
        QByteArray packed;
        BytesWriter collected(&packed);
        return packInSegments(collected, size, read)
               && out.writeRawData(packed.constData(), packed.size()) == packed.size();
    }
    // The length is known at the end.
    const qint64 start = device->pos();
    out << quint32(0) << quint32(size);
    if (!writeSegments(out, size, read))
        return false;
    const qint64 end = device->pos();
    if (!device->seek(start))
        return false;
    out << quint32(end - start - kHeadBytes);
    return device->seek(end) && out.status() == QDataStream::Ok;
}

int SegmentIndex::countOf(const QByteArray &tail)
{
    const auto count = qFromBigEndian<qint32>(tail.constData() + 4);
    return tail.endsWith(kMark) && count > 0 ? count : 0;
}

bool SegmentIndex::read(const QByteArray &index, int size, int packedBytes)
{
    const int checked = index.size() - 8;
    const int count = (index.size() - kSegmentTailBytes) / kEntryBytes;
    const char *tail = index.constData() + index.size() - kSegmentTailBytes;
    segments.clear();
    segmentBytes = qFromBigEndian<qint32>(tail);
    if (segmentBytes != kSegmentBytes || count != (size - 1) / segmentBytes + 1
        || qFromBigEndian<quint32>(tail + 8) != adler(index.constData(), checked))
        return false;
    qint64 position = kHeadBytes + kZlibHeadBytes;
    for (int i = 0; i < count; ++i) {
        const char *entry = index.constData() + i * kEntryBytes;
        const auto bytes = qFromBigEndian<qint32>(entry);
        if (bytes <= 0 || bytes > packedBytes - position)
            return false;
        segments.push_back({position, bytes, qFromBigEndian<quint32>(entry + 4)});
        position += bytes;
    }
    return true;
}

bool unpackSegment(QByteArray &packed, quint32 check, char *to, int size)
{
    packed.append(kEndOfStream, kEndBytes);
    size_t written = 0;
    return libdeflate_deflate_decompress(sharedDecompressor(), packed.constData(),
                                         static_cast<size_t>(packed.size()), to,
                                         static_cast<size_t>(size), &written)
               == LIBDEFLATE_SUCCESS
           && written == static_cast<size_t>(size) && adler(to, size) == check;
}

} // namespace datainterface
