// SPDX-License-Identifier: MIT
/// The geometry file, which is also the form of a geography inside another stream: little-endian
/// bytes, written and read in one pass.
///
///     | header | NAME | PROJ | TIME | CHAI | OBSV | RECS | GEOM | END. |
///
/// The header has 256 bytes:
///       0  char[8]  magic
///       8  u16      major number
///      10  u16      minor number
///      12  u32      header size
///      16  u32      geometry type: 1 points, 2 polygons, 3 lines
///      20  u32      flags, 0
///      24  u64      chains
///      32  u64      records
///      40  u64      distinct time ranges
///      48  u64      parts
///      56  u64      vertices
///      64  u64      bytes of GEOM
///      72  f64[4]   hull: x min, x max, y min, y max
///     104  f64[2]   hull: start, end
///     120  u64      hull: time flags
///     128  f64      adjacency tolerance
///     136           zeros
///     252  u32      CRC-32C of the 252 bytes before
///
/// A section has a head of u32 tag, u32 element size and u64 length of its data in bytes. The data
/// follow in chunks of 1 MiB, the last one shorter, each followed by its u32 CRC-32C:
///
///     | tag | size | length | 1 MiB of data | CRC | ... | rest of the data | CRC |
///
/// The elements of the sections:
///     NAME  1   UTF-8, at most 16 MiB
///     PROJ  1   UTF-8, at most 16 MiB; see FMProjectionInfo::ToUtf8
///     TIME  24  f64 start, f64 end, u64 flags; ascending and distinct
///     CHAI  8   i32 id, u32 observation count; ids ascend
///     OBSV  4   u32 record id, from 1, by chain and time; each record once
///     RECS  5   u32 index in TIME, u8 geometry type
///     GEOM  1   for each record, points: f64 x, f64 y; otherwise u32 part count, u32 size of each
///               part, f64 x and f64 y of each vertex
///     END.  0   no data
///
/// A reader refuses a file of another major number. In a file of a higher minor number it skips
/// sections that it does not know; in others it refuses them. Boxes, payload positions, nodes and
/// run boxes are not stored but computed, so a file cannot contradict them. The hull is computed
/// too and compared with the header.
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

/// The header of the file. A reader checks the sections against it.
struct FileHeader {
    ObjectKind kind = ObjectKind::Point;
    quint16 minor = 0;
    quint64 chains = 0, records = 0, times = 0, parts = 0, vertices = 0, payloadBytes = 0;
    RectInT hull;
    double tolerance = 0.0;

    QByteArray toBytes() const;
    /// False for another magic or major number, a wrong checksum, and inconsistent counts.
    static bool fromBytes(const QByteArray &bytes, FileHeader &header);

    /// The length of GEOM that follows from the counts of records, parts and vertices. False on
    /// overflow and for impossible counts.
    bool expectedPayload(quint64 &bytes) const;
};

/// The totals of all geometries for the header. Points have no parts.
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

/// A geography to be written: the records of a source, their order in the file, and their chains.
class FileContent {
public:
    QByteArray name, projection;
    ObjectKind kind = ObjectKind::Point;
    double tolerance = 0.0;
    std::vector<quint32> order;          // the source's records in file order
    std::vector<ChainEntry> chains;      // ascending ids
    std::vector<quint32> recordsByChain; // the source's records, by chain and time
    std::optional<ContentTotals> totals; // computed from the geometries when absent
    std::function<timeRange(quint32)> rangeOf;
    std::function<bool(quint32, GeometryView &)> geometryOf; // for a point only the bounds are used

    /// False when the device or `geometryOf` fails and when the callback returns false.
    bool write(QDataStream &out, ProgressCallback progress) const;

private:
    struct Plan;
    bool plan(Plan &plan) const;
};

/// A geography as it was read.
struct FileImage {
    QByteArray name, projection;
    std::vector<ChainEntry> chains;
    StoreContent content;
    RectInT hull; // as in the header; the caller compares it with the hull of the store

    /// False when the bytes are not a valid file, when the device or the scratch file fails, and
    /// when the callback returns false.
    bool read(QDataStream &in, ProgressCallback progress);
};

/// Whether the parts make a geometry: there is at least one part, each part of a line has 2
/// vertices or more, and each ring has 3 distinct vertices or more.
bool hasUsableParts(const GeometryView &view, ObjectKind kind);

/// Writes a file under a temporary name in the directory of `path` and renames it to `path` when
/// write(stream) returns true. False, with `path` unchanged, otherwise.
bool replaceFile(const QString &path, const std::function<bool(QDataStream &)> &write);

namespace file {

constexpr char kMagic[8] = {'F', 'N', 'M', 'K', '\r', '\n', '\x1a', '\0'};
constexpr quint16 kMajor = 1;
constexpr quint16 kMinor = 0;
constexpr int kHeaderSize = 256;
constexpr quint32 kChunkSize = 1U << 20;
constexpr quint64 kMaxText = quint64(16) << 20; // bytes of NAME and of PROJ

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
