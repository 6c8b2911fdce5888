// SPDX-License-Identifier: MIT
#include "Common/DataManager.extents.h"
#include "Common/detail/failure.h"

namespace datainterface {

qint64 ExtentMap::End() const
{
    return mLast < 0 ? 0 : At(mLast).position + At(mLast).size;
}

int ExtentMap::BestFit(qint64 size) const
{
    const auto found = mFree.lower_bound(size);
    if (found == mFree.end())
        return -1;
    require(At(found->second).size >= size, "Data block too small");
    return found->second;
}

int ExtentMap::Take(int freeExtent, int id, qint64 size)
{
    RemoveFree(freeExtent);
    ++mUsedCount;
    if (At(freeExtent).size == size) {
        At(freeExtent).id = id;
        At(freeExtent).nextFree = kUsed;
        return freeExtent;
    }
    const int used = NewRecord(id, At(freeExtent).position, size);
    LinkAfter(used, At(freeExtent).previous);
    At(freeExtent).position += size;
    At(freeExtent).size -= size;
    AddFree(freeExtent);
    return used;
}

int ExtentMap::Append(int id, qint64 size)
{
    const int used = NewRecord(id, End(), size);
    LinkAfter(used, mLast);
    ++mUsedCount;
    return used;
}

void ExtentMap::Shrink(int extent, qint64 size)
{
    const int remainder = NewRecord(-1, At(extent).position + size, At(extent).size - size);
    AddFree(remainder);
    LinkAfter(remainder, extent);
    At(extent).size = size;
}

void ExtentMap::Release(int extent)
{
    --mUsedCount;
    const int previous = At(extent).previous;
    const int next = At(extent).next;
    const bool joinsPrevious = IsFree(previous);
    const bool joinsNext = IsFree(next);
    if (joinsPrevious)
        RequireContiguous(previous, extent);
    if (joinsNext)
        RequireContiguous(extent, next);
    if (joinsPrevious && joinsNext) {
        require(mLast != extent, "Unexpected end of data blocks");
        GrowFree(previous, At(extent).size + At(next).size);
        RemoveFree(next);
        UnlinkAndDelete(next);
        UnlinkAndDelete(extent);
    } else if (joinsPrevious) {
        GrowFree(previous, At(extent).size);
        UnlinkAndDelete(extent);
    } else if (joinsNext) {
        At(extent).size += At(next).size;
        AddFree(extent);
        RemoveFree(next);
        UnlinkAndDelete(next);
    } else {
        AddFree(extent);
    }
}

void ExtentMap::Clear()
{
    *this = ExtentMap();
}

QVector<ExtentMap::Extent> ExtentMap::Extents() const
{
    QVector<Extent> extents;
    for (int index = mFirst; index >= 0; index = At(index).next)
        extents.append(Describe(index));
    return extents;
}

QVector<ExtentMap::Extent> ExtentMap::FreeList() const
{
    QVector<Extent> extents;
    for (const auto &[size, first] : mFree) {
        for (int index = first; index >= 0; index = At(index).nextFree)
            extents.append(Describe(index));
    }
    return extents;
}

int ExtentMap::NewRecord(int id, qint64 position, qint64 size)
{
    Record record;
    record.id = id;
    record.position = position;
    record.size = size;
    if (mSpare.empty()) {
        mRecords.push_back(record);
        return static_cast<int>(mRecords.size()) - 1;
    }
    const int index = mSpare.back();
    mSpare.pop_back();
    At(index) = record;
    return index;
}

// With `previous` -1 the extent becomes the first of the file.
void ExtentMap::LinkAfter(int index, int previous)
{
    const int next = previous >= 0 ? At(previous).next : mFirst;
    At(index).previous = previous;
    At(index).next = next;
    (previous >= 0 ? At(previous).next : mFirst) = index;
    (next >= 0 ? At(next).previous : mLast) = index;
}

void ExtentMap::UnlinkAndDelete(int index)
{
    const int previous = At(index).previous;
    const int next = At(index).next;
    (previous >= 0 ? At(previous).next : mFirst) = next;
    (next >= 0 ? At(next).previous : mLast) = previous;
    mSpare.push_back(index);
}

void ExtentMap::AddFree(int index)
{
    const auto [entry, isNew] = mFree.try_emplace(At(index).size, index);
    At(index).id = -1;
    At(index).nextFree = isNew ? -1 : entry->second;
    if (isNew)
        return;
    At(entry->second).id = index;
    entry->second = index;
}

void ExtentMap::RemoveFree(int index)
{
    const Record &record = At(index);
    const int before = record.id;
    const auto entry = mFree.find(record.size);
    require(entry != mFree.end(), "Couldn't find empty data block");
    if (record.nextFree >= 0)
        At(record.nextFree).id = before;
    if (before >= 0) {
        At(before).nextFree = record.nextFree;
        return;
    }
    require(entry->second == index, "Couldn't find empty data block");
    if (record.nextFree >= 0)
        entry->second = record.nextFree;
    else
        mFree.erase(entry);
}

void ExtentMap::GrowFree(int index, qint64 by)
{
    RemoveFree(index);
    At(index).size += by;
    AddFree(index);
}

void ExtentMap::RequireContiguous(int first, int second) const
{
    require(At(first).position + At(first).size == At(second).position,
            "Data blocks not contiguous");
}

ExtentMap::Extent ExtentMap::Describe(int index) const
{
    const Record &record = At(index);
    const bool inUse = record.nextFree == kUsed;
    return {inUse ? record.id : -1, record.size, record.position, inUse};
}

} // namespace datainterface
