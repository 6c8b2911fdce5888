// SPDX-License-Identifier: MIT
/// The division of the scratch file into extents.
#pragma once
#include <QVector>
#include <QtGlobal>
#include <map>
#include <vector>

namespace datainterface {

/// The extents of the scratch file, used and free, in two structures over the same records:
///
///     file      0                                                                    End()
///               | used, id 4 | free | used, id 9 | free | used, id 2 |      free       |
///     chain     mFirst <---> ... <---> (previous, next) <---> ...  <---> mLast
///     mFree     size -> the extent of that size that became free last -> nextFree -> ... -> -1
///
/// Invariants: each extent starts where the one before it ends, so the chain covers the file
/// without gaps. Every free extent is in the list of its size, and nextFree of a used one is kUsed.
/// Two free extents are neighbours only after Shrink, whose remainder is not joined with a free
/// extent after it; Release joins an extent with its direct free neighbours. The file never
/// shrinks: a free last extent remains.
///
/// Search is best fit: the smallest size that is large enough, and among extents of that size the
/// one that became free last. Search, Release and Shrink take O(log n) for n different free sizes.
///
/// The class does not access the file: its caller writes first and changes the extents after the
/// write has succeeded. Extents are named by indices of records, valid until they are released.
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

    /// The free extent to use for `size` bytes; -1 when none is large enough.
    int BestFit(qint64 size) const;
    /// Assigns the first `size` bytes of a free extent to block `id`; the rest stays free.
    /// @return the used extent.
    int Take(int freeExtent, int id, qint64 size);
    /// Adds a used extent at the end of the file.
    int Append(int id, qint64 size);
    /// Shortens a used extent to `size` bytes; the rest becomes a free extent.
    void Shrink(int extent, qint64 size);
    /// Makes a used extent free.
    void Release(int extent);
    void Clear();

    /// In file order.
    QVector<Extent> Extents() const;
    /// The free extents in the order of the search: by size, and the last one freed first.
    QVector<Extent> FreeList() const;

private:
    // Half a cache line, so that access to an extent costs one cache miss.
    struct alignas(32) Record {
        qint64 position = 0;
        qint64 size = 0;
        int previous = -1; ///< neighbours in the file
        int next = -1;
        int id = -1; ///< used: the block; free: the previous extent in the list of its size, or -1
        int nextFree = kUsed; ///< free: the next extent in the list of its size, or -1
    };
    static constexpr int kUsed = -2; ///< nextFree of a used extent

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
    std::vector<int> mSpare;     ///< records that are not in use
    std::map<qint64, int> mFree; ///< by size, the first extent in the list of that size
    int mFirst = -1;             ///< the ends of the chain; -1 for an empty file
    int mLast = -1;
    int mUsedCount = 0;
};

} // namespace datainterface
