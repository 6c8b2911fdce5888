// SPDX-License-Identifier: MIT
/// What the block store knows of each block, by id, and the order in which cached blocks were used.
#pragma once
#include <QByteArray>
#include <QVector>
#include <QtGlobal>
#include <array>
#include <memory>
#include <vector>

namespace datainterface {

struct BlockSlot {
    QByteArray bytes; ///< the contents, when cached
    int extent = -1;  ///< where they lie in the scratch file; -1 when they were never written
    int newer = -1;   ///< neighbours in the order of use, by block id
    int older = -1;
    bool known = false;
    bool cached = false;
    bool dirty = false; ///< the contents differ from the scratch file
};

/// Slots by block id. Ids rise and are never used again, so slots lie in chunks that come and go with their blocks.
class BlockTable {
public:
    /// Null when the id is unknown.
    BlockSlot *Find(int id);
    BlockSlot &FindOrMake(int id);
    /// Forgets an id that has neither contents in the cache nor an extent.
    void DropIfEmpty(int id);
    void Clear() { mChunks.clear(); }

    /// The ids that have an extent, ascending.
    QVector<int> WrittenIds() const;

private:
    static constexpr int kChunkBits = 8;
    static constexpr int kChunkSize = 1 << kChunkBits;
    struct Chunk {
        std::array<BlockSlot, kChunkSize> slots;
        int knownCount = 0;
    };
    BlockSlot &SlotIn(Chunk &chunk, int id) { return chunk.slots[static_cast<size_t>(id & (kChunkSize - 1))]; }

    std::vector<std::unique_ptr<Chunk>> mChunks;
};

/// The cached blocks from the most to the least recently used, and their cost: each one's bytes and 16 more.
class BlockCache {
public:
    explicit BlockCache(BlockTable &table) : mTable(table) {}

    static qint64 CostOf(const QByteArray &bytes) { return qint64(bytes.size()) + 16; }
    qint64 Limit() const { return mLimit; }
    void SetLimit(qint64 limit) { mLimit = limit; }
    qint64 Cost() const { return mCost; }
    /// The id of the entry to evict next; -1 when there is none.
    int Oldest() const { return mOldest; }

    void Touch(int id, BlockSlot &slot);
    /// Enters contents as the most recently used; what the id held before is dropped.
    void Put(int id, const QByteArray &bytes, bool dirty);
    void Remove(BlockSlot &slot);
    void Clear();
    /// Most recently used first.
    QVector<int> Ids() const;

private:
    void LinkNewest(int id, BlockSlot &slot);
    void Unlink(const BlockSlot &slot);

    BlockTable &mTable;
    qint64 mLimit = 100;
    qint64 mCost = 0;
    int mNewest = -1;
    int mOldest = -1;
};

} // namespace datainterface
