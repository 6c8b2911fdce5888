// SPDX-License-Identifier: MIT
// Reads of a part of a block that do not bring the block into the cache.
#include "Common/DataManager.h"
#include <algorithm>
#include <limits>

namespace datainterface {
namespace {

// Reading a piece costs about as much as reading this many bytes of a whole block. Pieces are read
// until they have cost as much as the whole block would, and then the whole block is read: this
// costs at most twice the optimum (the ski rental rule).
// A piece of a packed block costs a segment, unless that is still kept.
constexpr int kPieceBytes = 4096;
constexpr int kMostPieces = std::numeric_limits<quint8>::max();

} // namespace

int BlockReading::sizeOf(int id) const
{
    const BlockSlot *slot = mStore.mTable.Find(id);
    if (!slot)
        return -1;
    return slot->cached ? slot->bytes.size() : slot->size;
}

const char *BlockReading::inPlace(int id, int size) const
{
    BlockSlot *slot = mStore.mTable.Find(id);
    if (!slot || !slot->cached || slot->bytes.size() != size)
        return nullptr;
    mStore.mCache.Touch(id, *slot);
    return slot->bytes.constData();
}

bool BlockReading::readPiece(int id, int size, int at, char *to, int count) const
{
    BlockSlot *slot = mStore.mTable.Find(id);
    if (!slot || slot->cached || slot->size != size || at < 0 || count < 0 || at > size - count)
        return false;
    const bool isPacked = slot->isPacked();
    const int costOfPiece = isPacked ? kSegmentBytes : kPieceBytes;
    if (BlockCache::CostOf(size) <= mStore.mCache.Limit()
        && (slot->pieces == kMostPieces || qint64(slot->pieces) * costOfPiece >= size))
        return false;
    if (isPacked) {
        int unpacked = 0;
        const bool isRead =
            mStore.mPacked->unpackPiece(slot->packed(), size, at, to, count, unpacked);
        slot->pieces = static_cast<quint8>(std::min(slot->pieces + unpacked, kMostPieces));
        return isRead;
    }
    slot->pieces = static_cast<quint8>(std::min(slot->pieces + 1, kMostPieces));
    return mStore.mFile.read(slot->position + at, to, count);
}

} // namespace datainterface
