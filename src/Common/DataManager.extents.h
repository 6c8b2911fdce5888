// SPDX-License-Identifier: MIT
/// Who owns which bytes of the scratch file.
#pragma once
#include <QVector>
#include <QtGlobal>
#include <map>
#include <vector>

namespace datainterface {

/// The extents of the scratch file, used and free. They form a chain in file order and cover the
/// file without gaps.
///
/// Free extents are found by size, smallest fit first, and among equals the one that became free
/// last. Freeing joins an extent with its direct free neighbours. The tail that Shrink splits off
/// alone is not joined with what lies behind it. The file never shrinks: a free last extent stays.
///
/// Nothing here touches the file; a caller writes first and enters the result when that succeeded.
/// Extents are named by small integers, valid until they are released.
class ExtentMap {
public:
    struct Extent {
        int id; ///< of the block; -1 when free
        qint64 size;
        qint64 position;
        bool inUse;
    };

    /// The size of the file.
    qint64 End() const;
    int UsedCount() const { return mUsedCount; }
    qint64 PositionOf(int extent) const { return At(extent).position; }
    qint64 SizeOf(int extent) const { return At(extent).size; }

    /// The free extent in which `size` bytes go; -1 when none is large enough.
    int BestFit(qint64 size) const;
    /// Gives the front of a free extent to block `id`. @return the used extent.
    int Take(int freeExtent, int id, qint64 size);
    /// A new used extent behind all others.
    int Append(int id, qint64 size);
    /// Cuts a used extent; the remainder becomes a free extent of its own.
    void Shrink(int extent, qint64 size);
    void Release(int extent);
    void Clear();

    /// In file order.
    QVector<Extent> Extents() const;
    /// Free extents in the order in which they are considered.
    QVector<Extent> FreeList() const;

private:
    // Half a cache line, so that finding an extent waits for memory once.
    struct alignas(32) Record {
        qint64 position = 0;
        qint64 size = 0;
        int previous = -1; ///< neighbours in the file
        int next = -1;
        int id = -1; ///< of the block; of a free extent the one before it among those of its size
        int nextFree = kUsed;
    };
    static constexpr int kUsed = -2; ///< in place of the next free extent

    Record &At(int index) { return mRecords[static_cast<size_t>(index)]; }
    const Record &At(int index) const { return mRecords[static_cast<size_t>(index)]; }
    int NewRecord(int id, qint64 position, qint64 size);
    void LinkAfter(int index, int previous);
    void UnlinkAndDelete(int index);
    void AddFree(int index);
    void RemoveFree(int index);
    void GrowFree(int index, qint64 by);
    bool IsFree(int index) const { return index >= 0 && At(index).nextFree != kUsed; }
    void RequireContiguous(int first, int second) const;
    Extent Describe(int index) const;

    std::vector<Record> mRecords;
    std::vector<int> mSpare;     ///< records to use again
    std::map<qint64, int> mFree; ///< by size, the free extent of that size to take first
    int mFirst = -1;             ///< the ends of the chain
    int mLast = -1;
    int mUsedCount = 0;
};

} // namespace datainterface
