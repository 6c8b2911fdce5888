// SPDX-License-Identifier: MIT
#include "file/geometryFile.h"
#include <QDataStream>
#include <QFile>
#include <QRandomGenerator>
#include <QtEndian>
#include <cstring>
#include <filesystem>
#include "file/crc32c.h"

namespace fennimark {
namespace {

using namespace file;

/// Calls field(offset, value) for the fields of the header; one list for writing and reading.
template <class Header, class Field> void eachField(Header &header, Field field)
{
    field(24, header.chains);
    field(32, header.records);
    field(40, header.times);
    field(48, header.parts);
    field(56, header.vertices);
    field(64, header.payloadBytes);
    field(72, header.hull.xMin);
    field(80, header.hull.xMax);
    field(88, header.hull.yMin);
    field(96, header.hull.yMax);
    field(104, header.hull.start);
    field(112, header.hull.end);
    field(128, header.tolerance);
}

bool addProduct(quint64 &sum, quint64 count, quint64 size)
{
    quint64 product = 0;
    return !__builtin_mul_overflow(count, size, &product)
           && !__builtin_add_overflow(sum, product, &sum);
}

} // namespace

QByteArray FileHeader::toBytes() const
{
    uchar raw[kHeaderSize] = {};
    std::memcpy(raw, kMagic, sizeof kMagic);
    qToLittleEndian(kMajor, raw + 8);
    qToLittleEndian(kMinor, raw + 10);
    qToLittleEndian(quint32(kHeaderSize), raw + 12);
    qToLittleEndian(quint32(typeCode(kind)), raw + 16);
    eachField(*this, [&raw](int at, auto value) { qToLittleEndian(value, raw + at); });
    qToLittleEndian(quint64(hull.flags), raw + 120);
    qToLittleEndian(crc32c(0, raw, kHeaderSize - 4), raw + kHeaderSize - 4);
    return QByteArray(reinterpret_cast<const char *>(raw), kHeaderSize);
}

bool FileHeader::fromBytes(const QByteArray &bytes, FileHeader &header)
{
    const auto *raw = reinterpret_cast<const uchar *>(bytes.constData());
    if (bytes.size() != kHeaderSize || std::memcmp(raw, kMagic, sizeof kMagic) != 0
        || qFromLittleEndian<quint16>(raw + 8) != kMajor
        || qFromLittleEndian<quint32>(raw + 12) != kHeaderSize
        || qFromLittleEndian<quint32>(raw + kHeaderSize - 4) != crc32c(0, raw, kHeaderSize - 4))
        return false;
    header.minor = qFromLittleEndian<quint16>(raw + 10);
    const auto type = qFromLittleEndian<quint32>(raw + 16);
    const auto flags = qFromLittleEndian<quint64>(raw + 120);
    if (type < 1 || type > 3 || flags > 0xff)
        return false;
    header.kind = type == 1   ? ObjectKind::Point
                  : type == 2 ? ObjectKind::Polygon
                              : ObjectKind::Line;
    header.hull.flags = static_cast<unsigned char>(flags);
    eachField(header, [raw](int at, auto &value) {
        value = qFromLittleEndian<std::remove_reference_t<decltype(value)>>(raw + at);
    });
    quint64 payload = 0;
    return header.records <= kMaxRecords && header.chains <= kMaxRecords
           && header.times <= header.records && header.expectedPayload(payload)
           && payload == header.payloadBytes && std::isfinite(header.tolerance)
           && header.tolerance >= 0;
}

bool FileHeader::expectedPayload(quint64 &bytes) const
{
    bytes = 0;
    if (kind == ObjectKind::Point)
        return parts == 0 && vertices == records && addProduct(bytes, vertices, 16);
    return parts >= records && addProduct(bytes, records, 4) && addProduct(bytes, parts, 4)
           && addProduct(bytes, vertices, 16);
}

bool hasUsableParts(const GeometryView &view, ObjectKind kind)
{
    const QPointF *vertex = view.vertices;
    for (quint32 i = 0; i < view.partCount; ++i) {
        const quint32 size = view.partSizes[i];
        if (kind == ObjectKind::Line && size < 2)
            return false;
        if (kind == ObjectKind::Polygon) {
            const auto same = [](const QPointF &a, const QPointF &b) {
                return a.x() == b.x() && a.y() == b.y();
            };
            quint32 second = 1;
            while (second < size && same(vertex[second], vertex[0]))
                ++second;
            quint32 third = second + 1;
            while (third < size
                   && (same(vertex[third], vertex[0]) || same(vertex[third], vertex[second])))
                ++third;
            if (third >= size)
                return false;
        }
        vertex += size;
    }
    return view.partCount > 0;
}

bool replaceFile(const QString &path, const std::function<bool(QDataStream &)> &write)
{
    QFile file;
    for (int tries = 0; tries < 100 && !file.isOpen(); ++tries) {
        file.setFileName(path + QLatin1Char('.')
                         + QString::number(QRandomGenerator::global()->generate(), 36));
        if (!file.open(QIODevice::WriteOnly | QIODevice::NewOnly) && !file.exists())
            return false;
    }
    if (!file.isOpen())
        return false;
    QDataStream out(&file);
    out.setVersion(QDataStream::Qt_5_4);
    bool done = write(out) && out.status() == QDataStream::Ok && file.flush();
    file.close();
    if (done) {
        // Unlike QFile::rename this replaces an existing file, in one step.
        std::error_code error;
        std::filesystem::rename(QFile::encodeName(file.fileName()).constData(),
                                QFile::encodeName(path).constData(), error);
        done = !error;
    }
    if (!done)
        file.remove();
    return done;
}

} // namespace fennimark
