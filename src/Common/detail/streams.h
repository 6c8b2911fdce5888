// SPDX-License-Identifier: MIT
/// How the library opens and reads its QDataStreams: all have one stream version, and every count
/// is checked against the bytes left before memory is allocated for it.
#pragma once
#include <QByteArray>
#include <QDataStream>
#include <QMap>
#include <QSet>
#include <QString>
#include <QVariant>
#include <QVector>
#include <limits>

struct libdeflate_decompressor;

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

/// The bytes left in the stream's device; the largest qint64 for a sequential device, whose end is
/// unknown.
qint64 bytesLeft(const QDataStream &in);

/// A value in T's own stream form.
template <class T> T read(QDataStream &in)
{
    T value{};
    in >> value;
    return value;
}

/// Reads a 32-bit element count and checks it against the bytes left, with `minElementBytes` for
/// each element. @return the count; 0, with the status ReadCorruptData, for a negative or
/// impossible one.
int readCount(QDataStream &in, qint64 minElementBytes);

/// Reads a QByteArray in Qt's form (length, bytes; 0xFFFFFFFF is null). An array of more than 64
/// KiB is not allocated unless the device has as many bytes left; from a sequential device it is
/// read in steps of 16 MiB. @return false for a bad length and when the stream ends early.
bool readBytes(QDataStream &in, QByteArray &bytes);

/// Unpacks qCompress's form with libdeflate. @return false, with `bytes` empty, when the declared
/// length is impossible (zlib expands at most about 1032 times) or above `limit`, or the data are
/// corrupt.
bool inflateBytes(const QByteArray &packed, QByteArray &bytes,
                  qint64 limit = std::numeric_limits<int>::max());

/// Whether a zlib stream of that many bytes can expand to `size` bytes, and an array can hold them.
bool isPossibleSize(qint64 size, qint64 packedBytes);
/// The thread's decompressor. Raises std::bad_alloc when there is no memory for it.
libdeflate_decompressor *sharedDecompressor();
/// Unpacks qCompress's form into `size` bytes at `to`, whose contents are undefined after a failure.
/// @return false when the data are corrupt or their contents have another size.
bool inflateInto(const QByteArray &packed, char *to, int size);

/// Whether a value can be written to a stream; MMetaData::setTag lists the types. Nesting is
/// limited to 32 levels and other types are refused, because a foreign file must not overflow the
/// stack or construct arbitrary types.
bool isStorable(const QVariant &value);

/// Writes a map of storable values in QDataStream's form. A nested hash is written in the order of
/// a map, so that equal values give equal bytes.
void writeVariantMap(QDataStream &out, const QMap<QString, QVariant> &map);
/// Reads such a map. A value that is not storable sets ReadCorruptData. @return whether the status
/// is Ok; the map is empty otherwise.
bool readVariantMap(QDataStream &in, QMap<QString, QVariant> &map);

/// Reads any list or vector in Qt's form: count, then the elements through `readElement(T &)`.
/// Stops when the status is no longer Ok; the container is empty then.
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

/// Reads any QMap in Qt's form: count, then pairs, of which writers put the last key first.
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

/// QSet<int> in Qt's form, written in ascending order so that equal sets give equal bytes.
void writeIntSet(QDataStream &out, const QSet<int> &set);
bool readIntSet(QDataStream &in, QSet<int> &set);

} // namespace datainterface
