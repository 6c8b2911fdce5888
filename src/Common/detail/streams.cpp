// SPDX-License-Identifier: MIT
#include "Common/detail/streams.h"
#include <QIODevice>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMetaType>
#include <QPolygon>
#include <QPolygonF>
#include <QVariantHash>
#include <QVariantList>
#include <QtEndian>
#include <algorithm>
#include <libdeflate.h>
#include <memory>
#include <new>

namespace datainterface {
namespace {

constexpr int kMaxVariantDepth = 32;
// Qt 4 numbered float, long and the other small types from here on.
constexpr quint32 kFirstQt4CoreType = 128;
constexpr qint64 kMaxZlibRatio = 1032;
// QByteArray's header counts against its limit of int bytes.
constexpr qint64 kMaxArrayBytes = std::numeric_limits<int>::max() - 64;
constexpr int kPackedHeadBytes = 4; // the length before qCompress's zlib stream
constexpr qint64 kUncheckedBytes = 64 * 1024;
constexpr int kSequentialStep = 16 * 1024 * 1024;

bool corrupt(QDataStream &in)
{
    in.setStatus(QDataStream::ReadCorruptData);
    return false;
}

bool readVariant(QDataStream &in, QVariant &value, int depth);

template <class Table> bool readVariantPairs(QDataStream &in, Table &table, int depth)
{
    const int count = readCount(in, 4 + 5);
    for (int i = 0; i < count && in.status() == QDataStream::Ok; ++i) {
        QString key;
        QVariant value;
        in >> key;
        readVariant(in, value, depth);
        table.insert(key, value);
    }
    return in.status() == QDataStream::Ok;
}

// Types whose own stream operators hold no nested variants and bound what they allocate.
bool isPlainType(int type)
{
    switch (type) {
    case QMetaType::Bool:
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::Double:
    case QMetaType::Float:
    case QMetaType::Short:
    case QMetaType::UShort:
    case QMetaType::Char:
    case QMetaType::SChar:
    case QMetaType::UChar:
    case QMetaType::Long:
    case QMetaType::ULong:
    case QMetaType::QChar:
    case QMetaType::QString:
    case QMetaType::QDate:
    case QMetaType::QTime:
    case QMetaType::QDateTime:
    case QMetaType::QUrl:
    case QMetaType::QUuid:
    case QMetaType::QSize:
    case QMetaType::QSizeF:
    case QMetaType::QPoint:
    case QMetaType::QPointF:
    case QMetaType::QRect:
    case QMetaType::QRectF:
    case QMetaType::QLine:
    case QMetaType::QLineF:
    case QMetaType::QColor:
    case QMetaType::QBitArray:
    case QMetaType::QLocale:
    case QMetaType::QRegExp:
    case QMetaType::QRegularExpression:
    case QMetaType::QTransform:
    case QMetaType::QMatrix4x4:
    case QMetaType::QVector2D:
    case QMetaType::QVector3D:
    case QMetaType::QVector4D:
    case QMetaType::QQuaternion:
        return true;
    default:
        return false;
    }
}

// JSON values are streamed as text; Qt's parser limits the depth of their nesting.
bool isJsonType(int type)
{
    return type == QMetaType::QJsonValue || type == QMetaType::QJsonObject
           || type == QMetaType::QJsonArray || type == QMetaType::QJsonDocument;
}

bool isReadableJson(const QVariant &value)
{
    QByteArray bytes;
    BytesWriter out(&bytes);
    out << value;
    BytesReader in(bytes);
    QVariant again;
    return readVariant(in, again, 0);
}

template <class List> QVariant readListOf(QDataStream &in, qint64 minElementBytes)
{
    List list;
    readList(in, list, minElementBytes);
    return QVariant::fromValue(list);
}

// Reads the part of a variant after its type and null flag.
QVariant readContents(QDataStream &in, int type, int depth)
{
    switch (type) {
    case QMetaType::QVariantMap: {
        QVariantMap map;
        readVariantPairs(in, map, depth + 1);
        return map;
    }
    case QMetaType::QVariantHash: {
        QVariantHash hash;
        readVariantPairs(in, hash, depth + 1);
        return hash;
    }
    case QMetaType::QVariantList: {
        QVariantList list;
        readList(in, list, 5, [&](QVariant &element) { readVariant(in, element, depth + 1); });
        return list;
    }
    case QMetaType::QStringList:
        return readListOf<QStringList>(in, 4);
    case QMetaType::QByteArrayList:
        return readListOf<QByteArrayList>(in, 4);
    case QMetaType::QPolygon:
        return readListOf<QPolygon>(in, 8);
    case QMetaType::QPolygonF:
        return readListOf<QPolygonF>(in, 16);
    case QMetaType::QByteArray: {
        QByteArray bytes;
        readBytes(in, bytes);
        return bytes;
    }
    default: {
        QVariant plain(type, nullptr);
        if (!(isPlainType(type) || isJsonType(type)) || !QMetaType::load(in, type, plain.data()))
            corrupt(in);
        return plain;
    }
    }
}

bool readVariant(QDataStream &in, QVariant &value, int depth)
{
    quint32 type = 0;
    qint8 isNull = 0;
    in >> type >> isNull;
    if (in.status() != QDataStream::Ok)
        return false;
    const bool isOfQt4 = in.version() < QDataStream::Qt_5_0;
    if (isOfQt4 && type >= kFirstQt4CoreType)
        type -= kFirstQt4CoreType - QMetaType::VoidStar;
    if (type == QMetaType::UnknownType) {
        QString padding; // Qt 4 wrote a string after an invalid variant
        if (isOfQt4)
            in >> padding;
        value = QVariant();
        return in.status() == QDataStream::Ok;
    }
    if (depth >= kMaxVariantDepth)
        return corrupt(in);
    value = readContents(in, static_cast<int>(type), depth);
    if (isNull)
        value = QVariant(static_cast<QVariant::Type>(type));
    return in.status() == QDataStream::Ok;
}

// A table that is read keeps one value for each key.
template <class Table> bool hasUniqueKeys(const Table &table)
{
    const QStringList keys = table.keys();
    return QSet<QString>(keys.begin(), keys.end()).size() == keys.size();
}

bool isStorable(const QVariant &value, int depth)
{
    if (!value.isValid())
        return true;
    if (depth >= kMaxVariantDepth)
        return false;
    const auto areStorable = [depth](const auto &values) {
        return std::all_of(values.begin(), values.end(), [depth](const QVariant &element) {
            return isStorable(element, depth + 1);
        });
    };
    switch (value.userType()) {
    case QMetaType::QVariantMap:
        return hasUniqueKeys(value.toMap()) && areStorable(value.toMap());
    case QMetaType::QVariantHash:
        return hasUniqueKeys(value.toHash()) && areStorable(value.toHash());
    case QMetaType::QVariantList:
        return areStorable(value.toList());
    case QMetaType::QStringList:
    case QMetaType::QByteArrayList:
    case QMetaType::QPolygon:
    case QMetaType::QPolygonF:
    case QMetaType::QByteArray:
        return true;
    default:
        return isPlainType(value.userType())
               || (isJsonType(value.userType()) && isReadableJson(value));
    }
}

void writeVariant(QDataStream &out, const QVariant &value);

// Writes the last key first, as QMap's own operator does.
void writePairs(QDataStream &out, const QVariantMap &map)
{
    QList<QString> keys = map.keys();
    keys.erase(std::unique(keys.begin(), keys.end()), keys.end());
    out << qint32(keys.size());
    for (auto key = keys.crbegin(); key != keys.crend(); ++key) {
        out << *key;
        writeVariant(out, map.value(*key));
    }
}

QVariantMap sorted(const QVariantHash &hash)
{
    QVariantMap map;
    for (auto pair = hash.cbegin(); pair != hash.cend(); ++pair)
        map.insert(pair.key(), hash.value(pair.key()));
    return map;
}

void writeVariant(QDataStream &out, const QVariant &value)
{
    const int type = value.userType();
    if (type != QMetaType::QVariantMap && type != QMetaType::QVariantHash
        && type != QMetaType::QVariantList) {
        out << value;
        return;
    }
    out << quint32(type) << qint8(value.isNull());
    if (type == QMetaType::QVariantList) {
        const QVariantList list = value.toList();
        out << qint32(list.size());
        for (const QVariant &element : list)
            writeVariant(out, element);
    } else {
        writePairs(out, type == QMetaType::QVariantMap ? value.toMap() : sorted(value.toHash()));
    }
}

} // namespace

qint64 bytesLeft(const QDataStream &in)
{
    const QIODevice *device = in.device();
    if (!device)
        return 0;
    return device->isSequential() ? std::numeric_limits<qint64>::max() : device->bytesAvailable();
}

int readCount(QDataStream &in, qint64 minElementBytes)
{
    qint32 count = 0;
    in >> count;
    if (in.status() != QDataStream::Ok)
        return 0;
    if (count < 0 || count > bytesLeft(in) / std::max<qint64>(minElementBytes, 1)) {
        corrupt(in);
        return 0;
    }
    return count;
}

bool readBytes(QDataStream &in, QByteArray &bytes)
{
    bytes.clear();
    quint32 length = 0;
    in >> length;
    if (in.status() != QDataStream::Ok || length == 0xffffffffU)
        return in.status() == QDataStream::Ok;
    // Asking a file for its size is a system call. The length of a short array is not checked: a
    // wrong one costs a small allocation, and the read below fails.
    const bool tooLong = length > kUncheckedBytes && length > bytesLeft(in);
    if (length > kMaxArrayBytes || tooLong)
        return corrupt(in);
    const int total = static_cast<int>(length);
    const int longestStep = in.device() && in.device()->isSequential() ? kSequentialStep : total;
    for (int done = 0; done < total;) {
        const int step = std::min(total - done, longestStep);
        bytes.resize(done + step);
        if (in.readRawData(bytes.data() + done, step) != step) {
            bytes.clear();
            in.setStatus(QDataStream::ReadPastEnd);
            return false;
        }
        done += step;
    }
    return true;
}

bool isPossibleSize(qint64 size, qint64 packedBytes)
{
    return size <= kMaxArrayBytes && size <= packedBytes * kMaxZlibRatio + 64;
}

libdeflate_decompressor *sharedDecompressor()
{
    static thread_local const std::unique_ptr<libdeflate_decompressor,
                                              decltype(&libdeflate_free_decompressor)>
        decompressor(libdeflate_alloc_decompressor(), &libdeflate_free_decompressor);
    if (!decompressor)
        throw std::bad_alloc();
    return decompressor.get();
}

bool inflateInto(const QByteArray &packed, char *to, int size)
{
    if (packed.size() == kPackedHeadBytes || packed.isEmpty())
        return size == 0; // an empty array is packed as its length alone
    if (packed.size() < kPackedHeadBytes
        || qFromBigEndian<quint32>(packed.constData()) != static_cast<quint32>(size))
        return false;
    size_t written = 0;
    const auto result =
        libdeflate_zlib_decompress(sharedDecompressor(), packed.constData() + kPackedHeadBytes,
                                   static_cast<size_t>(packed.size() - kPackedHeadBytes), to,
                                   static_cast<size_t>(size), &written);
    return result == LIBDEFLATE_SUCCESS && written == static_cast<size_t>(size);
}

bool inflateBytes(const QByteArray &packed, QByteArray &bytes, qint64 limit)
{
    bytes.clear();
    if (packed.isEmpty() || packed == QByteArray(kPackedHeadBytes, '\0'))
        return true;
    if (packed.size() < kPackedHeadBytes)
        return false;
    const qint64 length = qFromBigEndian<quint32>(packed.constData());
    if (length > limit || !isPossibleSize(length, packed.size() - kPackedHeadBytes))
        return false;
    bytes.resize(static_cast<int>(length));
    if (inflateInto(packed, bytes.data(), bytes.size()))
        return true;
    bytes.clear();
    return false;
}

bool isStorable(const QVariant &value)
{
    return isStorable(value, 0);
}

void writeVariantMap(QDataStream &out, const QMap<QString, QVariant> &map)
{
    writePairs(out, map);
}

bool readVariantMap(QDataStream &in, QMap<QString, QVariant> &map)
{
    map.clear();
    if (!readVariantPairs(in, map, 0))
        map.clear();
    return in.status() == QDataStream::Ok;
}

QVector<int> ascending(const QSet<int> &set)
{
    QVector<int> ids;
    ids.reserve(set.size());
    for (const int id : set)
        ids.append(id);
    std::sort(ids.begin(), ids.end());
    return ids;
}

void writeIntSet(QDataStream &out, const QSet<int> &set)
{
    const QVector<int> ids = ascending(set);
    out << qint32(ids.size());
    for (int id : ids)
        out << qint32(id);
}

bool readIntSet(QDataStream &in, QSet<int> &set)
{
    set.clear();
    const int count = readCount(in, 4);
    set.reserve(count);
    for (int i = 0; i < count && in.status() == QDataStream::Ok; ++i) {
        qint32 id = 0;
        in >> id;
        set.insert(id);
    }
    return in.status() == QDataStream::Ok;
}

} // namespace datainterface
