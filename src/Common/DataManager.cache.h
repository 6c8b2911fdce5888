// SPDX-License-Identifier: MIT
/// What the block store knows of each block, by id, and the order in which cached blocks were used.
#pragma once
#include <QByteArray>
#include <QVector>
#include <QtGlobal>
#include <array>
#include <vector>
#include "Common/detail/slabPool.h"

namespace datainterface {

/// Half a cache line with all that a read needs, so that it waits for memory once.
struct alignas(32) BlockSlot {
    QByteArray bytes;    ///< the contents, when cached
    qint64 position = 0; ///< of the extent
    int size = 0;        ///< of the extent
    int extent =
        -1; ///< where the contents lie in the scratch file; -1 when they were never written
    quint32 lastUse = 0; ///< when cached, the entry of the cache's log that counts
    bool known = false;
    bool cached = false;
    bool dirty = false; ///< the contents differ from the scratch file
    quint8 pieces = 0;  ///< read from the file since the contents were last cached
};
static_assert(sizeof(BlockSlot) == 32);

/// Slots by block id. Ids rise and are never used again, so slots lie in chunks that come and go
/// with their blocks.
class BlockTable {
public:
    /// Null when the id is unknown.
    BlockSlot *Find(int id);
    BlockSlot &FindOrMake(int id);
    /// Where the slot lies, known or not, to have its memory on the way before it is needed; null
    /// when nowhere.
    const BlockSlot *AddressOf(int id);
    /// Forgets an id that has neither contents in the cache nor an extent.
    void DropIfEmpty(int id);
    void Clear()
    {
        mChunks.clear();
        mChunks.shrink_to_fit();
    }

    /// The ids that have an extent, ascending.
    QVector<int> WrittenIds() const;

private:
    static constexpr int kChunkBits = 8;
    static constexpr int kChunkSize = 1 << kChunkBits;
    struct Chunk {
        std::array<BlockSlot, kChunkSize> slots;
        int knownCount = 0;
    };
    BlockSlot &SlotIn(Chunk &chunk, int id)
    {
        return chunk.slots[static_cast<size_t>(id & (kChunkSize - 1))];
    }

    SlabPool<Chunk> mPool;
    std::vector<SlabPool<Chunk>::Pointer> mChunks;
};

/// The cached blocks in the order of their last use, and their cost: each one's bytes and 16 more.
///
/// The order is a log: every use appends the block's id, and an entry counts when its block was not
/// used after it. A use so touches the block's own slot alone; in a list of slots it would touch
/// two strangers as well, and each of them is a wait for memory. Entries that no longer count are
/// dropped when they come to the front, or all at once when they are the greater part.
class BlockCache {
public:
    explicit BlockCache(BlockTable &table) : mTable(table) {}

    static qint64 CostOf(qint64 size) { return size + 16; }
    qint64 Limit() const { return mLimit; }
    void SetLimit(qint64 limit) { mLimit = limit; }
    qint64 Cost() const { return mCost; }
    /// The id of the entry to evict next; -1 when there is none.
    int Oldest();

    void Touch(int id, BlockSlot &slot);
    /// Enters contents as the most recently used; what the id held before is dropped.
    void Put(int id, const QByteArray &bytes, bool dirty);
    /// @return the contents.
    QByteArray Remove(BlockSlot &slot);
    void Clear();
    /// Most recently used first.
    QVector<int> Ids() const;

private:
    bool Counts(size_t index) const;
    void Log(int id, BlockSlot &slot);
    void DropStaleEntries();

    BlockTable &mTable;
    qint64 mLimit = 100;
    qint64 mCost = 0;
    size_t mCount = 0;
    std::vector<int> mLog;
    size_t mFront = 0; ///< entries of the log before this one are done with
};

} // namespace datainterface
