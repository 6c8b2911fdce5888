// SPDX-License-Identifier: MIT
#include "Common/DataManager.cache.h"

namespace datainterface {

BlockSlot *BlockTable::Find(int id)
{
    const size_t chunk = static_cast<size_t>(id) >> kChunkBits;
    if (id < 0 || chunk >= mChunks.size() || !mChunks[chunk])
        return nullptr;
    BlockSlot &slot = SlotIn(*mChunks[chunk], id);
    return slot.known ? &slot : nullptr;
}

BlockSlot &BlockTable::FindOrMake(int id)
{
    const size_t index = static_cast<size_t>(id) >> kChunkBits;
    if (index >= mChunks.size())
        mChunks.resize(index + 1);
    if (!mChunks[index])
        mChunks[index] = std::make_unique<Chunk>();
    Chunk &chunk = *mChunks[index];
    BlockSlot &slot = SlotIn(chunk, id);
    if (!slot.known) {
        slot.known = true;
        ++chunk.knownCount;
    }
    return slot;
}

void BlockTable::DropIfEmpty(int id)
{
    BlockSlot *slot = Find(id);
    if (!slot || slot->cached || slot->extent >= 0)
        return;
    slot->known = false;
    auto &chunk = mChunks[static_cast<size_t>(id) >> kChunkBits];
    if (--chunk->knownCount == 0)
        chunk.reset();
}

QVector<int> BlockTable::WrittenIds() const
{
    QVector<int> ids;
    for (size_t i = 0; i < mChunks.size(); ++i) {
        for (int j = 0; j < kChunkSize && mChunks[i]; ++j) {
            if (mChunks[i]->slots[static_cast<size_t>(j)].extent >= 0)
                ids.append(static_cast<int>(i) * kChunkSize + j);
        }
    }
    return ids;
}

void BlockCache::Touch(int id, BlockSlot &slot)
{
    if (mNewest == id)
        return;
    Unlink(slot);
    LinkNewest(id, slot);
}

void BlockCache::Put(int id, const QByteArray &bytes, bool dirty)
{
    BlockSlot &slot = mTable.FindOrMake(id);
    if (slot.cached)
        Remove(slot);
    slot.bytes = bytes;
    slot.cached = true;
    slot.dirty = dirty;
    mCost += CostOf(bytes);
    LinkNewest(id, slot);
}

void BlockCache::Remove(BlockSlot &slot)
{
    Unlink(slot);
    mCost -= CostOf(slot.bytes);
    slot.bytes = QByteArray();
    slot.cached = false;
    slot.dirty = false;
}

void BlockCache::Clear()
{
    mCost = 0;
    mNewest = -1;
    mOldest = -1;
}

QVector<int> BlockCache::Ids() const
{
    QVector<int> ids;
    for (int id = mNewest; id >= 0; id = mTable.Find(id)->older)
        ids.append(id);
    return ids;
}

void BlockCache::LinkNewest(int id, BlockSlot &slot)
{
    slot.newer = -1;
    slot.older = mNewest;
    (mNewest >= 0 ? mTable.Find(mNewest)->newer : mOldest) = id;
    mNewest = id;
}

void BlockCache::Unlink(const BlockSlot &slot)
{
    (slot.newer >= 0 ? mTable.Find(slot.newer)->older : mNewest) = slot.older;
    (slot.older >= 0 ? mTable.Find(slot.older)->newer : mOldest) = slot.newer;
}

} // namespace datainterface
