// SPDX-License-Identifier: MIT
#include "Common/DataManager.h"
#include <QMutexLocker>
#include <limits>
#include "Common/detail/failure.h"
#include "Common/detail/pendingWrite.h"
#include "datainterface/DataBlocks.h"
#include "fennimark/Fennims.h"

using namespace datainterface;

namespace {

// The cache must own the bytes that it keeps, and their memory must be close to the cost that it
// counts: an array over foreign memory is copied, and so is one with much spare capacity.
QByteArray compactBytes(const QByteArray &bytes)
{
    const qint64 spare = qint64(bytes.capacity()) - bytes.size();
    if (spare < 0 || spare > 64 + bytes.size() / 4)
        return QByteArray(bytes.constData(), bytes.size());
    return bytes;
}

// An array of that size. The memory of `used` is taken when nothing else shares it and it is hardly
// larger.
QByteArray recycled(QByteArray used, int size)
{
    const int spare = used.capacity() - size;
    if (!used.isDetached() || spare < 0 || spare > 16 + size / 8)
        return QByteArray(size, Qt::Uninitialized);
    used.resize(size);
    return used;
}

} // namespace

DataManager::DataManager(std::unique_ptr<PositionedFile> file)
    : mFile(std::move(file)), mCache(mTable)
{
}

DataManager::~DataManager()
{
    Clear();
}

void DataManager::Initialize(const QString &directory, int cacheBytes)
{
    const QMutexLocker lock(&mLock);
    Clear();
    mDirectory = directory;
    mCache.SetLimit(cacheBytes);
    Reset();
}

void DataManager::Reset()
{
    const QMutexLocker lock(&mLock);
    Clear();
    mUnreadable.clear();
    require(mFile.open(mDirectory), "opened");
    mNextId = 0;
}

void DataManager::Clear()
{
    const QMutexLocker lock(&mLock);
    mCache.Clear();
    mTable.Clear();
    mExtents.Clear();
    mFile.close();
    mUnreadable = UnreadableFile();
    mPacked.reset();
    mPackedCount = 0;
}

int DataManager::SaveDataBlock(const QByteArray &bytes)
{
    const QMutexLocker lock(&mLock);
    require(mNextId < std::numeric_limits<int>::max(), "block ids");
    Keep(mNextId, compactBytes(bytes), true);
    return mNextId++;
}

void DataManager::ReplaceDataBlock(int id, const QByteArray &bytes)
{
    require(id >= 0, "block id");
    const QMutexLocker lock(&mLock);
    Keep(id, compactBytes(bytes), true);
}

bool DataManager::ReadDataBlock(int id, QByteArray &bytes)
{
    const QMutexLocker lock(&mLock);
    BlockSlot *slot = mTable.Find(id);
    if (!slot)
        return false;
    if (slot->cached) {
        mCache.Touch(id, *slot);
        bytes = slot->bytes;
        return true;
    }
    const qint64 cost = BlockCache::CostOf(slot->size);
    QByteArray evicted;
    // A block in the file can be read even when the disk is too full to evict others for it. It is
    // not kept in the cache then.
    const bool isKept = cost <= mCache.Limit() && TryMakeRoom(cost, evicted);
    bool read = false;
    try {
        bytes = recycled(std::move(evicted), slot->size);
        read = ReadHome(*slot, bytes.data());
    } catch (...) {
        // Out of memory for the contents: reported like a failed read of the file.
    }
    if (!read)
        bytes.clear();
    else if (isKept)
        mCache.Put(id, bytes, false);
    else
        MoveToScratch(id, *slot, bytes);
    return read;
}

bool DataManager::ReadHome(const BlockSlot &slot, char *to)
{
    return slot.isPacked() ? mPacked->unpack(slot.packed(), to, slot.size)
                           : mFile.read(slot.position, to, slot.size);
}

// Writes the contents of a block that is not kept in the cache to the scratch file if it was
// unpacked repeatedly. On a full disk it stays packed.
void DataManager::MoveToScratch(int id, const BlockSlot &slot, const QByteArray &bytes)
{
    if (slot.isPacked() && mPacked->unpackCount(slot.packed()) > 1)
        WriteDataBlock(id, bytes, WriteMode::Combined);
}

bool DataManager::DeleteDataBlock(int id)
{
    const QMutexLocker lock(&mLock);
    BlockSlot *slot = mTable.Find(id);
    if (slot && slot->cached)
        mCache.Remove(*slot);
    const bool wasWritten = FreeDataBlock(id);
    mTable.DropIfEmpty(id);
    return wasWritten;
}

bool DataManager::Holds(int id)
{
    const QMutexLocker lock(&mLock);
    return mTable.Find(id) != nullptr;
}

DataManager::State DataManager::Inspect() const
{
    const QMutexLocker lock(&mLock);
    return {mExtents.Extents(), mExtents.FreeList(), mCache.Ids(), mCache.Cost(), mNextId,
            mFile.path()};
}

// Makes the contents the most recently used entry of the cache. Earlier contents of the id are
// dropped without being written, after there is room for the new ones.
void DataManager::Keep(int id, const QByteArray &bytes, bool dirty)
{
    const qint64 cost = BlockCache::CostOf(bytes.size());
    BlockSlot *old = mTable.Find(id);
    if (cost > mCache.Limit()) {
        require(!dirty || WriteDataBlock(id, bytes, WriteMode::Through), "result");
        if (old && old->cached)
            mCache.Remove(*old);
        return;
    }
    const qint64 oldCost = old && old->cached ? BlockCache::CostOf(old->bytes.size()) : 0;
    if (oldCost > 0)
        mCache.Touch(id, *old); // evicted last, so not by MakeRoom
    MakeRoom(cost - oldCost);
    mCache.Put(id, bytes, dirty);
}

void DataManager::MakeRoom(qint64 cost)
{
    QByteArray evicted;
    require(TryMakeRoom(cost, evicted), "result");
}

// Evicts blocks until `cost` more fits; false when one of them cannot be written. `evicted`
// receives the contents that were evicted last, whose memory may be reused.
bool DataManager::TryMakeRoom(qint64 cost, QByteArray &evicted)
{
    while (mCache.Cost() + cost > mCache.Limit()) {
        if (!TryEvict(mCache.Oldest(), evicted))
            return false;
    }
    return true;
}

// Writes a dirty block and removes it from the cache; false, with the block left there, when it
// cannot be written. `contents` receives the contents of the block.
bool DataManager::TryEvict(int id, QByteArray &contents)
{
    BlockSlot &slot = *mTable.Find(id);
    if (slot.dirty && !WriteDataBlock(id, slot.bytes, WriteMode::Combined))
        return false;
    if (!slot.dirty)
        MoveToScratch(id, slot, slot.bytes);
    contents = mCache.Remove(slot);
    return true;
}

void DataManager::EmptyCache()
{
    QByteArray contents;
    while (mCache.Oldest() >= 0)
        require(TryEvict(mCache.Oldest(), contents), "result");
}

// The bytes are written first; the extents change only after the write has succeeded.
bool DataManager::WriteDataBlock(int id, const QByteArray &bytes, WriteMode mode)
{
    BlockSlot *slot = mTable.Find(id);
    if (!slot || !slot->isWritten())
        return AllocateDataBlock(id, bytes, mode);
    if (bytes.size() > slot->size) {
        // A block that grows is likely to grow again, so it moves to the end of the file and takes
        // no free extent.
        if (!mFile.write(mExtents.End(), bytes.constData(), bytes.size(), mode))
            return false;
        FreeDataBlock(id);
        Place(id, mExtents.Append(id, bytes.size()));
        return true;
    }
    if (!mFile.write(slot->position, bytes.constData(), bytes.size(), mode))
        return false;
    if (bytes.size() < slot->size)
        mExtents.Shrink(slot->extent(), bytes.size());
    slot->size = bytes.size();
    return true;
}

bool DataManager::AllocateDataBlock(int id, const QByteArray &bytes, WriteMode mode)
{
    const int fit = mExtents.BestFit(bytes.size());
    if (fit < 0)
        return AppendDataBlock(id, bytes, mode);
    if (!mFile.write(mExtents.PositionOf(fit), bytes.constData(), bytes.size(), mode))
        return false;
    Place(id, mExtents.Take(fit, id, bytes.size()));
    return true;
}

bool DataManager::AppendDataBlock(int id, const QByteArray &bytes, WriteMode mode)
{
    if (!mFile.write(mExtents.End(), bytes.constData(), bytes.size(), mode))
        return false;
    Place(id, mExtents.Append(id, bytes.size()));
    return true;
}

void DataManager::Place(int id, int extent)
{
    BlockSlot &slot = mTable.FindOrMake(id);
    LeavePacked(slot);
    slot.home = extent;
    slot.position = mExtents.PositionOf(extent);
    slot.size = static_cast<int>(mExtents.SizeOf(extent));
}

bool DataManager::FreeDataBlock(int id)
{
    BlockSlot *slot = mTable.Find(id);
    if (!slot || slot->home == -1)
        return false;
    if (slot->isPacked()) {
        LeavePacked(*slot);
        return true;
    }
    const int extent = slot->extent();
    slot->home = -1;
    mExtents.Release(extent);
    return true;
}

// The project file stays open until the store is cleared, since its blocks are numbered.
void DataManager::LeavePacked(BlockSlot &slot)
{
    if (!slot.isPacked())
        return;
    slot.home = -1;
    --mPackedCount;
}

DataManager &blockStore()
{
    static DataManager store;
    return store;
}

void InitializeDataManager(const QString &directory, int cacheBytes)
{
    Fennims::SetScratchDirectory(directory);
    PendingWrite::drop();
    blockStore().Initialize(directory, cacheBytes);
}

void ResetDataManager()
{
    PendingWrite::drop();
    blockStore().Reset();
}

void ClearDataManager()
{
    PendingWrite::drop();
    blockStore().Clear();
}

int SaveDataBlock(const QByteArray &bytes)
{
    return blockStore().SaveDataBlock(bytes);
}

bool ReplaceDataBlock(int id, const QByteArray &bytes)
{
    blockStore().ReplaceDataBlock(id, bytes);
    return true;
}

bool ReadDataBlock(int id, QByteArray &bytes)
{
    return blockStore().ReadDataBlock(id, bytes);
}

bool DeleteDataBlock(int id)
{
    return blockStore().DeleteDataBlock(id);
}
