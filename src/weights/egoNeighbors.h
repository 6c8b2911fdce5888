// SPDX-License-Identifier: MIT
/// The neighbour list of one object, stored in the block store.
#pragma once
#include <QVector>
#include "datainterface/neighborDatum.h"

namespace datainterface {

/// Owns one block, or none for an empty list. The block holds the stream form of a
/// QVector<neighborDatum>. The object takes only four bytes, since a set has one for each object
/// and time. A read decodes the block directly into the reader's list, so readers on several
/// threads need no lock but that of the block store.
class egoNeighbors {
public:
    egoNeighbors() = default;
    /// Takes ownership of a block.
    explicit egoNeighbors(int blockId) : mBlockId(blockId) {}
    egoNeighbors(const neighborDatum *list, int count);
    egoNeighbors(egoNeighbors &&other) noexcept : mBlockId(other.release()) {}
    egoNeighbors &operator=(egoNeighbors &&other) noexcept;
    ~egoNeighbors() { freeBlock(); }

    /// Copies the list into a new block. Raises "Invalid block id" if it cannot be read.
    egoNeighbors copy() const;
    /// Replaces `list`; it is empty if the block is unknown or does not hold a list. @return false
    /// if the block cannot be read.
    bool read(QVector<neighborDatum> &list) const;
    /// The length of the block; 0 when it cannot be read.
    int storedBytes() const;
    int blockId() const { return mBlockId; } ///< -1: no block

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
