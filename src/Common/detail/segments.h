// SPDX-License-Identifier: MIT
/// Large blocks that are packed in segments, so that a part can be unpacked without what precedes
/// it.
///
/// The packed block is qCompress's form, with an index behind its zlib stream, which other readers
/// of that form ignore:
///
///     uint32       size of the contents
///     zlib stream  of segments: every 256 KiB of the contents are packed without reference to
///                  bytes before them, and end at a whole byte with an empty stored block
///     index        for each segment: uint32 bytes in the stream, uint32 Adler-32 of its contents
///     uint32       contents of a segment in bytes; the last one can have less
///     uint32       number of segments
///     uint32       Adler-32 of the index and the two numbers
///     "SEGM"
///
/// All numbers are big-endian. Packing and unpacking need the memory of one segment.
#pragma once
#include <QByteArray>
#include <QDataStream>
#include <functional>
#include <vector>

namespace datainterface {

constexpr int kSegmentBytes = 256 * 1024;
constexpr int kSegmentTailBytes = 16; ///< of the fields after the index

/// Whether a block of that many bytes is worth the index.
constexpr bool isWorthSegments(qint64 size)
{
    return size >= 2 * kSegmentBytes && size < (qint64(1) << 31) - (1 << 25);
}

/// Writes a QByteArray with the packed contents. They are read in order by `read(at, to, count)`; a
/// false result ends the packing, which is then incomplete. @return false also when a write fails.
bool packInSegments(QDataStream &out, int size,
                    const std::function<bool(int at, char *to, int count)> &read);

/// The segments of one packed block.
struct SegmentIndex {
    struct Segment {
        qint64 position; ///< in the packed block
        int packedBytes;
        quint32 check; ///< Adler-32 of the contents
    };
    int segmentBytes = 0;
    std::vector<Segment> segments;

    /// The number of segments that the last kSegmentTailBytes of a packed block state; 0 for a block
    /// without an index.
    static int countOf(const QByteArray &tail);
    /// Reads index and tail. False when they are damaged or do not fit contents of `size` bytes in
    /// `packedBytes`.
    bool read(const QByteArray &index, int size, int packedBytes);
};

/// Unpacks a segment into `size` bytes at `to`. `packed` is used as a buffer. False when the segment
/// is damaged.
bool unpackSegment(QByteArray &packed, quint32 check, char *to, int size);

} // namespace datainterface
