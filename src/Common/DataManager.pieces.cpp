// SPDX-License-Identifier: MIT
// Bytes of a block without the block.
#include "Common/DataManager.h"
#include <limits>

namespace datainterface {
namespace {

// A read of a piece costs about as much as this many bytes of a whole block. Whoever pays for
// pieces as long as they have not cost what the whole would, and then for the whole, never pays
// more than twice what was best.
constexpr int kPieceBytes = 4096;

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
    if (BlockCache::CostOf(size) <= mStore.mCache.Limit()) {
        if (slot->pieces == std::numeric_limits<quint8>::max()
            || slot->pieces * kPieceBytes >= size)
            return false;
        ++slot->pieces;
    }
    return mStore.mFile.read(slot->position + at, to, count);
}

} // namespace datainterface
