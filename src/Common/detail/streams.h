// SPDX-License-Identifier: MIT
/// How the library opens and reads its QDataStreams: one version for all, and no count that is
/// believed unseen.
#pragma once
#include <QByteArray>
#include <QDataStream>
#include <QMap>
#include <QSet>
#include <QString>
#include <QVariant>
#include <QVector>
#include <limits>

namespace datainterface {

/// The form of every stream that this version writes, and of every block image and nested array.
constexpr int kStreamVersion = QDataStream::Qt_5_4;
static_assert(kStreamVersion == 16, "block images and projects are written in stream version 16");

/// A stream over a byte array, at the version above.
class BytesWriter : public QDataStream {
public:
    explicit BytesWriter(QByteArray *bytes) : QDataStream(bytes, QIODevice::WriteOnly)
    {
        setVersion(kStreamVersion);
    }
};
class BytesReader : public QDataStream {
public:
    explicit BytesReader(const QByteArray &bytes) : QDataStream(bytes)
    {
        setVersion(kStreamVersion);
    }
};

/// A stream over a device, which stays the caller's.
class DeviceStream : public QDataStream {
public:
    explicit DeviceStream(QIODevice *device) : QDataStream(device) { setVersion(kStreamVersion); }
};

/// Bytes that the stream's device can still give; the largest number when a sequential device
/// cannot tell.
qint64 bytesLeft(const QDataStream &in);

/// A value in T's own stream form.
template <class T> T read(QDataStream &in)
{
    T value{};
    in >> value;
    return value;
}

/// Reads a 32-bit element count and holds it against the bytes left, `minElementBytes` for each
/// element. A negative or impossible count sets the status ReadCorruptData and gives 0, so a loop
/// over it does nothing.
int readCount(QDataStream &in, qint64 minElementBytes);

/// A QByteArray in Qt's form (length, bytes; 0xFFFFFFFF is null), never allocating beyond the bytes
/// left.
bool readBytes(QDataStream &in, QByteArray &bytes);

/// qUncompress's form through libdeflate. False when the declared length is impossible (zlib
/// expands no more than about 1032 times), above `limit`, or the data are corrupt; the result is
/// then left empty.
bool inflateBytes(const QByteArray &packed, QByteArray &bytes,
                  qint64 limit = std::numeric_limits<int>::max());

/// Whether a value can stand in a stream: MMetaData::setTag lists the types. Nesting ends at 32
/// levels, and other types are refused: a foreign file must not overflow the stack or construct
/// arbitrary types.
bool isStorable(const QVariant &value);

/// A map of storable values in QDataStream's form. Tables inside are written in ascending order of
/// keys.
void writeVariantMap(QDataStream &out, const QMap<QString, QVariant> &map);
/// A value that is not storable sets ReadCorruptData.
bool readVariantMap(QDataStream &in, QMap<QString, QVariant> &map);

/// Any list or vector in Qt's form: count, elements through `readElement(T &)`. Ends when the
/// status turns bad, with the container then empty.
template <class Container, class ReadElement>
bool readList(QDataStream &in, Container &list, qint64 minElementBytes, ReadElement readElement)
{
    list.clear();
    const int count = readCount(in, minElementBytes);
    for (int i = 0; i < count && in.status() == QDataStream::Ok; ++i) {
        typename Container::value_type element{};
        readElement(element);
        list.append(element);
    }
    if (in.status() != QDataStream::Ok)
        list.clear();
    return in.status() == QDataStream::Ok;
}
template <class Container> bool readList(QDataStream &in, Container &list, qint64 minElementBytes)
{
    return readList(in, list, minElementBytes, [&in](auto &element) { in >> element; });
}

/// Any QMap in Qt's form (count, then pairs; writers put the last key first).
template <class Key, class Value, class ReadPair>
bool readMap(QDataStream &in, QMap<Key, Value> &map, qint64 minPairBytes, ReadPair readPair)
{
    map.clear();
    const int count = readCount(in, minPairBytes);
    for (int i = 0; i < count && in.status() == QDataStream::Ok; ++i) {
        Key key{};
        Value value{};
        readPair(key, value);
        map.insert(key, value);
    }
    if (in.status() != QDataStream::Ok)
        map.clear();
    return in.status() == QDataStream::Ok;
}
template <class Key, class Value>
bool readMap(QDataStream &in, QMap<Key, Value> &map, qint64 minPairBytes)
{
    return readMap(in, map, minPairBytes, [&in](Key &key, Value &value) { in >> key >> value; });
}

/// The elements in ascending order.
QVector<int> ascending(const QSet<int> &set);

/// QSet<int> in Qt's form; written in ascending order, so that equal sets are equal bytes.
void writeIntSet(QDataStream &out, const QSet<int> &set);
bool readIntSet(QDataStream &in, QSet<int> &set);

} // namespace datainterface
