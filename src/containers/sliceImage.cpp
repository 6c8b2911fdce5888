// SPDX-License-Identifier: MIT
#include "containers/sliceImage.h"
#include <cstdint>
#include <cstring>
#include <vector>
#include "Common/detail/streams.h"
#include "containers/imageCursor.h"

namespace datainterface {
namespace {

constexpr int kHeadBytes = 4;
static_assert(Q_BYTE_ORDER == Q_LITTLE_ENDIAN, "raw values in files are little-endian");

template <class T> qint64 bytesOf(const QVector<T> &values)
{
    if constexpr (isRaw<T>)
        return qint64(values.size()) * qint64(sizeof(T));
    qint64 bytes = 0;
    if constexpr (!isRaw<T>) {
        for (const T &value : values)
            bytes += ImageWriter::textBytes(value);
    }
    return bytes;
}

// Where many are missing, marking them in order of position is cheaper than sorting them.
QVector<int> idsInOrder(const QSet<int> &missing, int count)
{
    constexpr int kFewIds = 32; // one in as many positions
    if (missing.size() < count / kFewIds)
        return ascending(missing);
    std::vector<bool> marks(static_cast<std::size_t>(count));
    for (const int id : missing) {
        if (id < 0 || id >= count)
            return ascending(missing);
        marks[static_cast<std::size_t>(id)] = true;
    }
    QVector<int> ids;
    ids.reserve(missing.size());
    for (int id = 0; id < count; ++id) {
        if (marks[static_cast<std::size_t>(id)])
            ids.append(id);
    }
    return ids;
}

template <class T> QByteArray encodeSlice(const QVector<T> &values, const QSet<int> &missing)
{
    const qint64 valueBytes = bytesOf(values);
    ImageWriter out(kHeadBytes + valueBytes + 4 + 4 * qint64(missing.size()));
    out.integer(qint32(values.size()));
    if constexpr (isRaw<T>) {
        out.raw(values.constData(), valueBytes);
    } else {
        for (const T &value : values)
            out.text(value);
    }
    out.integer(qint32(missing.size()));
    const QVector<int> ids = idsInOrder(missing, values.size());
    for (const int id : ids)
        out.integer(qint32(id));
    return out.image();
}

} // namespace

QByteArray encodeTextSlice(const QVector<QStringView> &texts, const QSet<int> &missing)
{
    return encodeSlice(texts, missing);
}

template <class T> bool SliceImage<T>::assign(const QByteArray &bytes)
{
    *this = SliceImage();
    ImageReader in(bytes);
    const int count = in.count(isRaw<T> ? qint64(sizeof(T)) : ImageReader::kMinTextBytes);
    if constexpr (isRaw<T>) {
        in.take(count * qint64(sizeof(T)));
    } else {
        for (int i = 0; i < count && in.ok(); ++i)
            in.skipText();
    }
    const int missingCount = in.count(4);
    if (!in.ok())
        return false;
    mBytes = bytes;
    mCount = count;
    mMissingCount = missingCount;
    mMissingAt = in.at();
    return true;
}

template <class T>
QByteArray SliceImage<T>::encode(const QVector<T> &values, const QSet<int> &missing)
{
    return encodeSlice(values, missing);
}

template <class T> T SliceImage<T>::value(int object) const
{
    if constexpr (isRaw<T>) {
        T value;
        std::memcpy(&value, mBytes.constData() + kHeadBytes + object * qint64(sizeof(T)),
                    sizeof(T));
        return value;
    } else {
        ImageReader in(mBytes, kHeadBytes);
        for (int i = 0; i < object; ++i)
            in.skipText();
        return in.text();
    }
}

// The ids can be in any order: other writers store them in the order of a hash table.
template <class T> bool SliceImage<T>::isMissing(int object) const
{
    const qint32 wanted = qToBigEndian(qint32(object));
    const char *from = mBytes.constData() + mMissingAt;
    for (int i = 0; i < mMissingCount; ++i, from += 4) {
        if (std::memcmp(from, &wanted, 4) == 0)
            return true;
    }
    return false;
}

template <class T> QBitArray SliceImage<T>::missingBits() const
{
    QBitArray bits(mCount);
    ImageReader in(mBytes, mMissingAt);
    for (int i = 0; i < mMissingCount; ++i) {
        const auto id = in.integer<qint32>();
        if (id >= 0 && id < mCount)
            bits.setBit(id);
    }
    return bits;
}

template <class T> QVector<T> SliceImage<T>::values() const
{
    QVector<T> values(mCount);
    ImageReader in(mBytes, kHeadBytes);
    if constexpr (isRaw<T>) {
        const qint64 bytes = mCount * qint64(sizeof(T));
        if (bytes > 0)
            std::memcpy(values.data(), in.take(bytes), static_cast<size_t>(bytes));
    } else {
        for (T &value : values)
            value = in.text();
    }
    return values;
}

template <class T> QSet<int> SliceImage<T>::missing() const
{
    QSet<int> missing;
    missing.reserve(mMissingCount);
    ImageReader in(mBytes, mMissingAt);
    for (int i = 0; i < mMissingCount; ++i)
        missing.insert(in.integer<qint32>());
    return missing;
}

template <class T> const T *SliceImage<T>::valuesInPlace() const
{
    if constexpr (!isRaw<T>)
        return nullptr;
    const char *from = mBytes.constData() + kHeadBytes;
    const bool aligned = reinterpret_cast<std::uintptr_t>(from) % alignof(T) == 0;
    return aligned ? reinterpret_cast<const T *>(from) : nullptr;
}

template <class T> void SliceImage<T>::dropValues()
{
    mBytes = mBytes.mid(mMissingAt);
    mMissingAt = 0;
}

template class SliceImage<int>;
template class SliceImage<double>;
template class SliceImage<QString>;

} // namespace datainterface
