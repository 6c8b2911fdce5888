// SPDX-License-Identifier: MIT
/// The geometry file, which is also the form of a geography inside another stream.
///
/// Raw little-endian bytes, written and read in one pass. A header of 256 bytes:
///     0 magic, 8 u16 major, 10 u16 minor, 12 u32 header size, 16 u32 geometry type, 20 u32 flags
///     (0), 24 u64 chains, 32 records, 40 distinct times, 48 parts, 56 vertices, 64 payload bytes,
///     72 f64 hull x min, x max, y min, y max, start, end, 120 u64 time flags, 128 f64 adjacency
///     tolerance, 136 zeros, 252 u32 CRC-32C of the 252 bytes before.
/// Then the sections, each u32 tag, u32 element size, u64 length in bytes:
///     NAME, PROJ   UTF-8
///     TIME         f64 start, f64 end, u64 flags; ascending, distinct
///     CHAI         i32 id, u32 observation count; ids ascend
///     OBSV         u32 record ids, from 1, by chain and time
///     RECS         u32 time index, u8 geometry type
///     GEOM         points: f64 x, f64 y; else u32 part count, u32 part sizes, f64 x, f64 y of each
///     vertex END.         empty
/// Data stand in chunks of 1 MiB, the last of a section shorter, each followed by its CRC-32C.
/// Boxes, positions, nodes and run boxes are not stored and so need no trust; the hull is compared.
#pragma once
#include <QByteArray>
#include <functional>
#include <optional>
#include <vector>
#include "base/progress.h"
#include "store/recordStore.h"

class QDataStream;

namespace fennimark {

struct ChainEntry {
    qint32 id;
    quint32 count;
};

/// What precedes the sections, and what a reader holds the sections against.
struct FileHeader {
    ObjectKind kind = ObjectKind::Point;
    quint16 minor = 0;
    quint64 chains = 0, records = 0, times = 0, parts = 0, vertices = 0, payloadBytes = 0;
    RectInT hull;
    double tolerance = 0.0;

    QByteArray toBytes() const;
    /// False for another magic or major number, a wrong checksum, and counts that contradict one
    /// another.
    static bool fromBytes(const QByteArray &bytes, FileHeader &header);

    /// The bytes of GEOM that so many records, parts and vertices make; false on overflow.
    bool expectedPayload(quint64 &bytes) const;
};

/// What the header says of the geometries together. Points have no parts.
struct ContentTotals {
    quint64 parts = 0, vertices = 0;
    Rect2D box = kNoBox;

    void add(const GeometryView &view, ObjectKind kind)
    {
        parts += view.partCount;
        vertices += kind == ObjectKind::Point ? 1 : view.vertexCount;
        widen(box, view.bounds);
    }
};

/// A geography on its way into a file: which records of some source, in which order, under which
/// chains.
class FileContent {
public:
    QByteArray name, projection;
    ObjectKind kind = ObjectKind::Point;
    double tolerance = 0.0;
    std::vector<quint32> order;          // the source's records in file order
    std::vector<ChainEntry> chains;      // ascending ids
    std::vector<quint32> recordsByChain; // the source's records, by chain and time
    std::optional<ContentTotals> totals; // worked out from the geometries when not given
    std::function<timeRange(quint32)> rangeOf;
    std::function<bool(quint32, GeometryView &)> geometryOf; // of a point only the bounds are read

    /// False when the device fails or the callback says so.
    bool write(QDataStream &out, ProgressCallback progress) const;

private:
    struct Plan;
    bool plan(Plan &plan) const;
};

/// A geography read back.
struct FileImage {
    QByteArray name, projection;
    std::vector<ChainEntry> chains;
    StoreContent content;
    RectInT hull; // as the header says: whoever makes a store of the content compares it

    /// False for anything wrong with the bytes, a failing device or scratch file, and a callback
    /// that says so.
    bool read(QDataStream &in, ProgressCallback progress);
};

/// Whether parts of these vertices make a geometry: at least one part, lines of 2 vertices, rings
/// of 3 distinct ones.
bool hasUsableParts(const GeometryView &view, ObjectKind kind);

/// Writes a file under a temporary name beside `path` and moves it there when `write(QDataStream
/// &)` is true.
bool replaceFile(const QString &path, const std::function<bool(QDataStream &)> &write);

namespace file {

constexpr char kMagic[8] = {'F', 'N', 'M', 'K', '\r', '\n', '\x1a', '\0'};
constexpr quint16 kMajor = 1;
constexpr quint16 kMinor = 0;
constexpr int kHeaderSize = 256;
constexpr quint32 kChunkSize = 1U << 20;
constexpr quint64 kMaxText = quint64(16) << 20; // name, projection

constexpr quint32 tag(const char (&text)[5])
{
    return quint32(uchar(text[0])) | quint32(uchar(text[1])) << 8 | quint32(uchar(text[2])) << 16
           | quint32(uchar(text[3])) << 24;
}
constexpr quint32 kName = tag("NAME"), kProjection = tag("PROJ"), kTimes = tag("TIME"),
                  kChains = tag("CHAI"), kObservations = tag("OBSV"), kRecords = tag("RECS"),
                  kGeometry = tag("GEOM"), kEnd = tag("END.");

constexpr quint32 kTimeSize = 24, kChainSize = 8, kObservationSize = 4, kRecordSize = 5;

} // namespace file
} // namespace fennimark
