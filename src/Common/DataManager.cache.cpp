// SPDX-License-Identifier: MIT
#include "Common/DataManager.cache.h"
#include <utility>

namespace datainterface {
namespace {

constexpr size_t kShortestLog = 1024; // shorter logs are not searched for stale entries
constexpr size_t kLookAhead = 8;      // entries, for prefetching

} // namespace

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
        mChunks[index] = mPool.make();
    Chunk &chunk = *mChunks[index];
    BlockSlot &slot = SlotIn(chunk, id);
    if (!slot.known) {
        slot.known = true;
        ++chunk.knownCount;
    }
    return slot;
}

const BlockSlot *BlockTable::AddressOf(int id)
{
    const size_t chunk = static_cast<size_t>(id) >> kChunkBits;
    return chunk < mChunks.size() && mChunks[chunk] ? &SlotIn(*mChunks[chunk], id) : nullptr;
}

void BlockTable::DropIfEmpty(int id)
{
    BlockSlot *slot = Find(id);
    if (!slot || slot->cached || slot->home != -1)
        return;
    slot->known = false;
    auto &chunk = mChunks[static_cast<size_t>(id) >> kChunkBits];
    if (--chunk->knownCount == 0)
        chunk.reset();
}

QVector<int> BlockTable::StoredIds() const
{
    QVector<int> ids;
    for (size_t i = 0; i < mChunks.size(); ++i) {
        for (int j = 0; j < kChunkSize && mChunks[i]; ++j) {
            if (mChunks[i]->slots[static_cast<size_t>(j)].home != -1)
                ids.append(static_cast<int>(i) * kChunkSize + j);
        }
    }
    return ids;
}

// The log shows which blocks will be evicted next, so their slots and array headers are prefetched.
// The prefetches are in the loop itself, because the compiler removes a function that does nothing
// else.
int BlockCache::Oldest()
{
    if (mCount == 0)
        return -1;
    for (;; ++mFront) {
        if (mFront + 2 * kLookAhead < mLog.size()) {
            __builtin_prefetch(mTable.AddressOf(mLog[mFront + 2 * kLookAhead]));
            if (const BlockSlot *slot = mTable.AddressOf(mLog[mFront + kLookAhead]))
                __builtin_prefetch(const_cast<QByteArray &>(slot->bytes).data_ptr());
        }
        if (IsValid(mFront))
            return mLog[mFront];
    }
}

void BlockCache::Touch(int id, BlockSlot &slot)
{
    if (size_t(slot.lastUse) + 1 != mLog.size())
        Log(id, slot);
}

void BlockCache::Put(int id, const QByteArray &bytes, bool dirty)
{
    BlockSlot &slot = mTable.FindOrMake(id);
    if (slot.cached)
        Remove(slot);
    slot.bytes = bytes;
    slot.cached = true;
    slot.dirty = dirty;
    slot.pieces = 0;
    mCost += CostOf(bytes.size());
    ++mCount;
    Log(id, slot);
}

QByteArray BlockCache::Remove(BlockSlot &slot)
{
    mCost -= CostOf(slot.bytes.size());
    --mCount;
    slot.cached = false;
    slot.dirty = false;
    return std::exchange(slot.bytes, QByteArray());
}

void BlockCache::Clear()
{
    mCost = 0;
    mCount = 0;
    mLog = std::vector<int>();
    mFront = 0;
}

QVector<int> BlockCache::Ids() const
{
    QVector<int> ids;
    for (size_t index = mLog.size(); index > mFront; --index) {
        if (IsValid(index - 1))
            ids.append(mLog[index - 1]);
    }
    return ids;
}

bool BlockCache::IsValid(size_t index) const
{
    const BlockSlot *slot = mTable.Find(mLog[index]);
    return slot && slot->cached && slot->lastUse == index;
}

void BlockCache::Log(int id, BlockSlot &slot)
{
    if (mLog.size() >= kShortestLog && mLog.size() >= 3 * mCount)
        DropStaleEntries();
    slot.lastUse = static_cast<quint32>(mLog.size());
    mLog.push_back(id);
}

void BlockCache::DropStaleEntries()
{
    size_t kept = 0;
    for (size_t index = mFront; index < mLog.size(); ++index) {
        if (index + kLookAhead < mLog.size())
            __builtin_prefetch(mTable.AddressOf(mLog[index + kLookAhead]));
        if (!IsValid(index))
            continue;
        mTable.Find(mLog[index])->lastUse = static_cast<quint32>(kept);
        mLog[kept++] = mLog[index];
    }
    mLog.resize(kept);
    mFront = 0;
}

} // namespace datainterface
