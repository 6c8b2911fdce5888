// SPDX-License-Identifier: MIT
// Fennims::Open on arbitrary bytes. A geography that it accepts must be written, read again and
// queried without a failure. Checksums would refuse every random change, so the input is a file
// without them: the fields of the header, then the data chunk by chunk.
#include <QBuffer>
#include <QDataStream>
#include <QtEndian>
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include "fennimark/FMObject.h"
#include "fennimark/Fennims.h"
#include "file/crc32c.h"

namespace {

constexpr int kHeader = 252;
constexpr quint64 kChunk = 1U << 20;

void appendCrc(QByteArray &bytes, int from)
{
    uchar crc[4];
    qToLittleEndian(
        fennimark::crc32c(0, bytes.constData() + from, std::size_t(bytes.size() - from)), crc);
    bytes.append(reinterpret_cast<const char *>(crc), 4);
}

/// The input as a file: with the magic and with all checksums inserted.
QByteArray checksummed(const char *data, int size)
{
    QByteArray bytes(data, std::min(size, kHeader));
    if (bytes.size() < kHeader)
        return bytes;
    bytes.replace(0, 10, QByteArray("FNMK\r\n\x1a\0\1\0", 10));
    appendCrc(bytes, 0);
    for (int at = kHeader; at + 16 <= size;) {
        bytes.append(data + at, 16);
        auto left = qFromLittleEndian<quint64>(data + at + 8);
        at += 16;
        while (left > 0 && at < size) {
            const auto piece = int(std::min<quint64>({left, kChunk, quint64(size - at)}));
            const int from = bytes.size();
            bytes.append(data + at, piece);
            appendCrc(bytes, from);
            at += piece;
            left -= quint64(piece);
        }
    }
    return bytes;
}

bool opens(Fennims &fennims, const QByteArray &bytes)
{
    QDataStream in(bytes);
    return fennims.Open(in, nullptr);
}

void useAll(Fennims &fennims)
{
    QVector<int> records;
    const RectInT hull = fennims.GetBoundingRect();
    fennims.mTree->Overlaps(hull, records);
    for (const int id : qAsConst(records)) {
        HilbertTreeRecord *record = fennims.mTree->CheckOutRecord(id, true);
        auto *object = dynamic_cast<FMObject *>(record->GetTreeObject(fennims.mTree));
        object->OverlapsRect(hull);
        object->SqrDistance(hull.xMin, hull.yMax);
        record->ReturnTreeObject(fennims.mTree);
        fennims.mTree->CheckInRecord(id);
    }
    const QList<qint64> times = fennims.GetAllObjectTimes();
    for (int i = 0; i < std::min(times.size(), 8); ++i) {
        QMap<int, QVector<int>> neighbors;
        fennims.CalculatePolygonAdjacencies(true, times[i], 1, false, neighbors, nullptr);
        fennims.CalculateNearestNeighborsToPoint(QPointF(hull.xMin, hull.yMin), times[i], 3,
                                                 records);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    if (size > 1 << 22)
        return 0;
    const auto *bytes = reinterpret_cast<const char *>(data);
    Fennims raw;
    opens(raw, QByteArray::fromRawData(bytes, int(size)));
    Fennims fennims;
    if (!opens(fennims, checksummed(bytes, int(size))))
        return 0;
    useAll(fennims);
    QByteArray saved;
    QDataStream out(&saved, QIODevice::WriteOnly);
    Fennims again;
    if (!fennims.Save(out, nullptr) || !opens(again, saved)
        || again.GetChainCount() != fennims.GetChainCount())
        std::abort();
    return 0;
}
