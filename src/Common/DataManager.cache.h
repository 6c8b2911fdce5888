// SPDX-License-Identifier: MIT
/// The block store's record of each block, by id, and the order in which cached blocks were used.
#pragma once
#include <QByteArray>
#include <QVector>
#include <QtGlobal>
#include <array>
#include <vector>
#include "Common/detail/slabPool.h"

namespace datainterface {

/// All that a read of a block needs, in half a cache line, so that finding it costs one cache miss.
struct alignas(32) BlockSlot {
    QByteArray bytes;    ///< the contents, when cached
    qint64 position = 0; ///< of the extent, in bytes from the start of the scratch file
    int size = 0;        ///< in bytes, of the extent or of the contents that are packed
    int home = -1;       ///< see below
    quint32 lastUse = 0; ///< when cached, index of the block's valid entry in the cache's log
    bool known = false;  ///< the block has contents in the cache, an extent, or both
    bool cached = false;
    bool dirty = false; ///< cached contents that the scratch file does not hold
    quint8 pieces = 0;  ///< partial reads from the file since the contents were last cached

    /// Where the contents are besides the cache: an extent of the scratch file (home >= 0), the
    /// project file from which they are loaded on demand (home <= -2), or nowhere yet (-1).
    bool isWritten() const { return home >= 0; }
    bool isPacked() const { return home <= -2; }
    int extent() const { return home; }
    int packed() const { return -2 - home; } ///< number of the block in PackedFile
    static int homeOfPacked(int block) { return -2 - block; }
};
static_assert(sizeof(BlockSlot) == 32);

/// Slots by block id. Ids rise and are never reused, so the slots are stored in chunks of
/// consecutive ids. A chunk is allocated with its first known block and freed with its last.
class BlockTable {
public:
    /// Null when the id is unknown.
    BlockSlot *Find(int id);
    BlockSlot &FindOrMake(int id);
    /// The address of the id's slot, known or not, to prefetch it; null when its chunk is not
    /// allocated.
    const BlockSlot *AddressOf(int id);
    /// Removes an id that has neither contents in the cache nor a home.
    void DropIfEmpty(int id);
    void Clear()
    {
        mChunks.clear();
        mChunks.shrink_to_fit();
    }

    /// The ids that have a home, ascending.
    QVector<int> StoredIds() const;

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

/// The cached blocks in the order of their last use, and their cost: the bytes of each and 16 more.
///
/// The order is kept as a log of block ids. Every use appends the id and stores the new index in
/// BlockSlot::lastUse; an entry is valid while its block is cached and lastUse is its index.
///
///     index     0    1    2    3    4    5
///     mLog      7    9    7    4    9    7        valid: 4 at 3, 9 at 4, 7 at 5
///                    ^ mFront: entries before it are stale
///
/// Eviction takes the first valid entry from mFront on. A use therefore writes the block's own slot
/// and the end of the log; a linked list would also write the two neighbouring slots, at a cache
/// miss each.
///
/// Bound of the log: before an entry is appended to a log of at least max(1024, 3 n) entries, for n
/// cached blocks, the stale ones are removed, which leaves at most n. The log is therefore never
/// longer than max(1024, 3 n) for the largest n so far, and removal costs O(1) per use on average.
/// Each cached block costs at least 16 of a limit below 2^31, so n is at most 2^27 and an index
/// fits into the 32 bits of lastUse.
class BlockCache {
public:
    explicit BlockCache(BlockTable &table) : mTable(table) {}

    static qint64 CostOf(qint64 size) { return size + 16; }
    qint64 Limit() const { return mLimit; }
    void SetLimit(qint64 limit) { mLimit = limit; }
    qint64 Cost() const { return mCost; }
    /// The id of the block to evict next; -1 when no block is cached.
    int Oldest();

    /// Makes a cached block the most recently used.
    void Touch(int id, BlockSlot &slot);
    /// Stores contents as the most recently used block. Earlier contents of the id are dropped
    /// without being written.
    void Put(int id, const QByteArray &bytes, bool dirty);
    /// Removes the block from the cache. @return its contents.
    QByteArray Remove(BlockSlot &slot);
    void Clear();
    /// Most recently used first.
    QVector<int> Ids() const;

private:
    bool IsValid(size_t index) const;
    void Log(int id, BlockSlot &slot);
    void DropStaleEntries();

    BlockTable &mTable;
    qint64 mLimit = 100;
    qint64 mCost = 0;
    size_t mCount = 0; ///< of cached blocks
    std::vector<int> mLog;
    size_t mFront = 0; ///< every entry before this index is stale
};

} // namespace datainterface
