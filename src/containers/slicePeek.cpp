// SPDX-License-Identifier: MIT
// A slice of n numbers of w bytes with m missing objects (sliceImage.h) and the parts that are
// read:
//
//     0          n                 shape, once: the block's size must be 8 + n w + 4 m
//     4 + i w    value of object i
//     4 + n w    m                 shape, once
//     8 + n w    missing ids       if m > 0, for a bisection; all of them, at most kMaxListedIds
//
// The shape (n, m, whether the ids ascend) is kept with the slice until it changes. With a known
// shape a slice without missing objects is read in one step. An image whose ids do not ascend, or
// that has too many of them to read from the file, is left to a full page-in.
#include "containers/slicePeek.h"
#include <QtEndian>
#include <algorithm>
#include <array>
#include <cstring>

namespace datainterface {
namespace {

constexpr int kCountBytes = 4;
// A longer list of missing ids is not read from the file on its own: reading the whole slice takes
// hardly longer.
constexpr int kMaxListedIds = 1024;

/// The bytes of one block: in the cache, else read piece by piece from the file.
class BlockPieces {
public:
    BlockPieces(const BlockReading &store, int id, int size)
        : mStore(store), mId(id), mSize(size), mInPlace(store.inPlace(id, size))
    {
    }

    /// `count` bytes from offset `place` on, in the cache or copied to `buffer`; null when the
    /// store refuses to read a piece.
    const char *at(int place, int count, char *buffer) const
    {
        if (mInPlace)
            return mInPlace + place;
        return mStore.readPiece(mId, mSize, place, buffer, count) ? buffer : nullptr;
    }
    bool isInPlace() const { return mInPlace; }

private:
    const BlockReading &mStore;
    const int mId;
    const int mSize;
    const char *const mInPlace;
};

template <class T> qint64 sizeOf(const SliceShape &shape)
{
    return placeOfValue<T>(0) + qint64(shape.count) * qint64(sizeof(T)) + kCountBytes
           + qint64(shape.missingCount) * 4;
}

template <class T> int placeOfIds(const SliceShape &shape)
{
    return placeOfValue<T>(shape.count) + kCountBytes;
}

class MissingList {
public:
    MissingList(const char *ids, int count) : mIds(ids), mCount(count) {}

    bool ascends() const
    {
        for (int i = 1; i < mCount; ++i) {
            if (id(i) <= id(i - 1))
                return false;
        }
        return true;
    }
    /// In an ascending list.
    bool holds(int object) const
    {
        int first = 0;
        for (int length = mCount; length > 0;) {
            const int half = length / 2;
            const bool before = id(first + half) < object;
            first += before ? half + 1 : 0;
            length = before ? length - half - 1 : half;
        }
        return first < mCount && id(first) == object;
    }

private:
    qint32 id(int index) const { return qFromBigEndian<qint32>(mIds + 4 * index); }

    const char *mIds;
    int mCount;
};

using IdBuffer = std::array<char, 4 * kMaxListedIds>;

const char *readIds(const BlockPieces &block, int place, int count, IdBuffer &buffer)
{
    const bool isShort = block.isInPlace() || count <= kMaxListedIds;
    return isShort ? block.at(place, 4 * count, buffer.data()) : nullptr;
}

// False for an image whose size does not follow from its counts, and when its bytes cannot be read.
template <class T> bool findShape(const BlockPieces &block, int size, SliceShape &shape)
{
    std::array<char, kCountBytes> buffer;
    const auto count = [&](int place) {
        const char *bytes = block.at(place, kCountBytes, buffer.data());
        return bytes ? qFromBigEndian<qint32>(bytes) : -1;
    };
    SliceShape found;
    if (size < 2 * kCountBytes)
        return false;
    found.count = count(0);
    if (found.count < 0 || sizeOf<T>(found) > size)
        return false;
    found.missingCount = count(placeOfValue<T>(found.count));
    if (found.missingCount < 0 || sizeOf<T>(found) != size)
        return false;
    IdBuffer idBuffer;
    const char *ids = readIds(block, placeOfIds<T>(found), found.missingCount, idBuffer);
    found.idsAscend = ids && MissingList(ids, found.missingCount).ascends();
    shape = found;
    return true;
}

} // namespace

template <class T>
Peek peekValue(const BlockReading &store, int blockId, SliceShape &shape, int object, T &value)
{
    const qint64 size = shape.count < 0 ? store.sizeOf(blockId) : sizeOf<T>(shape);
    if (size < 0)
        return Peek::Unknown;
    const BlockPieces block(store, blockId, static_cast<int>(size));
    if (shape.count < 0 && !findShape<T>(block, static_cast<int>(size), shape))
        return Peek::Unknown;
    if (object < 0 || object >= shape.count)
        return Peek::NoValue;
    if (shape.missingCount > 0) {
        IdBuffer buffer;
        const char *ids = shape.idsAscend
                              ? readIds(block, placeOfIds<T>(shape), shape.missingCount, buffer)
                              : nullptr;
        if (!ids)
            return Peek::Unknown;
        if (MissingList(ids, shape.missingCount).holds(object))
            return Peek::NoValue;
    }
    std::array<char, sizeof(T)> buffer;
    const char *bytes = block.at(placeOfValue<T>(object), sizeof(T), buffer.data());
    if (!bytes)
        return Peek::Unknown;
    std::memcpy(&value, bytes, sizeof(T));
    return Peek::Value;
}

template Peek peekValue(const BlockReading &, int, SliceShape &, int, int &);
template Peek peekValue(const BlockReading &, int, SliceShape &, int, double &);

} // namespace datainterface
