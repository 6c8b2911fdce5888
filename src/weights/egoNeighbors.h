// SPDX-License-Identifier: MIT
/// One object's neighbour list, held in the block store.
#pragma once
#include <QVector>
#include "datainterface/neighborDatum.h"

namespace datainterface {

/// Owns one block, or none: an empty list. Its form in the block is that of a
/// QVector<neighborDatum> on a stream. Four bytes, since a set holds one for each object and time;
/// reading goes from the block straight into the reader's list, so that the store's own lock is all
/// that readers on several threads need.
class egoNeighbors {
public:
    egoNeighbors() = default;
    /// Takes a block over.
    explicit egoNeighbors(int blockId) : mBlockId(blockId) {}
    egoNeighbors(const neighborDatum *list, int count);
    egoNeighbors(egoNeighbors &&other) noexcept : mBlockId(other.release()) {}
    egoNeighbors &operator=(egoNeighbors &&other) noexcept;
    ~egoNeighbors() { freeBlock(); }

    /// The same list in a block of its own.
    egoNeighbors copy() const;
    /// Replaces `list`; with nothing when the block cannot be read or is no list.
    void read(QVector<neighborDatum> &list) const;
    /// The length of the block; 0 when it cannot be read.
    int storedBytes() const;
    int blockId() const { return mBlockId; } ///< -1: none

private:
    int release()
    {
        const int id = mBlockId;
        mBlockId = -1;
        return id;
    }
    void freeBlock();

    qint32 mBlockId = -1;
};

} // namespace datainterface
