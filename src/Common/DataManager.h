// SPDX-License-Identifier: MIT
/// The block store behind datainterface/DataBlocks.h.
#pragma once
#include <QByteArray>
#include <QDataStream>
#include <QMutex>
#include <QString>
#include <QVector>
#include <memory>
#include "Common/DataManager.cache.h"
#include "Common/DataManager.extents.h"
#include "Common/detail/packedFile.h"
#include "Common/detail/scratchFile.h"
#include "datainterface/ProgressCallback.h"

namespace datainterface {
class BlockReading;

/// What came of reading the block of a container. A container of numbers whose block is unknown is
/// empty; one whose block cannot be read has values, which must not be taken for missing.
enum class BlockRead { Done, Unknown, Failed };
} // namespace datainterface

/// Replaces the contents of a block by contents of any size. @return always true. Raises "result",
/// with the old contents unchanged, when the cache must write a block back to make room and cannot.
bool ReplaceDataBlock(int id, const QByteArray &bytes);

/// Blocks in a write-back cache over one scratch file.
///
///     id ---> BlockTable ---> BlockSlot
///                             |-- bytes    while cached; BlockCache keeps the order of eviction
///                             '-- home     once written, an extent: ExtentMap divides the file
///                                          into extents, ScratchFile reads and writes their bytes;
///                                          before the first change of a block that is loaded on
///                                          demand, a place in PackedFile
///
///     cached  extent  dirty   state of a known block
///     yes     no      yes     new, not yet written
///     yes     yes     no      the cache and the file hold the same contents
///     yes     yes     yes     replaced; the extent holds older contents, of the older size
///     no      yes     no      evicted, or larger than the cache
///
/// A block that is still packed in its project file has no extent. It is unpacked when it is read,
/// and then cached like others; a change gives it an extent when it is written. A block that was
/// unpacked a second time is written to the scratch file when it leaves the cache, because reading
/// it there is faster: this costs at most twice the optimum (the ski rental rule).
///
/// A block is written when the cache evicts it, and at once when it is larger than the cache. New
/// blocks take the smallest free extent that is large enough, else the end of the file. A block
/// that becomes smaller gives the rest of its extent free; one that outgrows its extent moves to
/// the end of the file.
///
/// Memory is released only after the write of its contents has succeeded, so no contents are lost
/// when a write fails. A call that stores contents then raises "result" and can be repeated when
/// there is room. A read returns the contents without keeping them in the cache.
class DataManager {
public:
    /// The store's state without the contents of blocks, for tests.
    struct State {
        QVector<datainterface::ExtentMap::Extent> extents;  ///< in file order
        QVector<datainterface::ExtentMap::Extent> freeList; ///< as ExtentMap::FreeList
        QVector<int> cachedIds;                             ///< most recently used first
        qint64 cacheCost;
        int nextId;
        QString scratchPath;
    };

    explicit DataManager(
        std::unique_ptr<datainterface::PositionedFile> file = datainterface::makePositionedFile());
    virtual ~DataManager();
    DataManager(const DataManager &) = delete;
    DataManager &operator=(const DataManager &) = delete;

    void Initialize(const QString &directory, int cacheBytes);
    void Reset();
    void Clear();
    /// The directory given to Initialize; empty before.
    const QString &Directory() const { return mDirectory; }

    int SaveDataBlock(const QByteArray &bytes);
    void ReplaceDataBlock(int id, const QByteArray &bytes);
    bool ReadDataBlock(int id, QByteArray &bytes);
    bool DeleteDataBlock(int id);
    /// Whether the id is known.
    bool Holds(int id);

    /// See VORN_SetProjectCompression.
    void SetPackLevel(int level);
    /// `report` may be null.
    bool SaveProjectData(QDataStream &out, bool compress, ProgressCallback report);
    bool RestoreProjectData(QDataStream &in, bool compressed, ProgressCallback report);

    /// Whether VORN_LoadProject leaves blocks packed: see VORN_SetProjectLoading.
    void SetKeepsPacked(bool keepsPacked);
    bool KeepsPacked() const { return mKeepsPacked; }
    /// Reads what RestoreProjectData reads, but leaves the contents in the file of `handle`, over
    /// which `in` is a stream.
    bool RestorePackedData(QDataStream &in, int handle, const QString &fileName, bool compressed,
                           ProgressCallback report);
    /// Unpacks all blocks that are still in the file `path`, which can be overwritten then. False,
    /// with no block lost, when one of them cannot be unpacked or written.
    bool ReleaseFile(const QString &path);
    /// See VORN_GetUnreadableProjectFile.
    QString UnreadableFile() const;

    /// Deletes the stored blocks whose ids are not among `kept`.
    void DeleteBlocksBut(QVector<int> kept);

    /// Bytes of contents that the cache may hold.
    qint64 CacheLimit() const { return mCache.Limit(); }

    State Inspect() const;

private:
    using WriteMode = datainterface::ScratchFile::Mode;
    using BlockSlot = datainterface::BlockSlot;

    friend class datainterface::BlockReading;

    void Keep(int id, const QByteArray &bytes, bool dirty);
    void MakeRoom(qint64 cost);
    bool TryMakeRoom(qint64 cost, QByteArray &evicted);
    bool TryEvict(int id, QByteArray &contents);
    void EmptyCache();
    bool WriteDataBlock(int id, const QByteArray &bytes, WriteMode mode);
    bool AllocateDataBlock(int id, const QByteArray &bytes, WriteMode mode);
    bool AppendDataBlock(int id, const QByteArray &bytes, WriteMode mode);
    void Place(int id, int extent);
    bool ReadHome(const BlockSlot &slot, char *to);
    void MoveToScratch(int id, const BlockSlot &slot, const QByteArray &bytes);
    void LeavePacked(BlockSlot &slot);
    bool UnpackAll();
    bool FreeDataBlock(int id);
    bool RestoreBlock(int id, const QByteArray &bytes);

    int mNextId = 0;
    int mPackLevel = 0;
    bool mKeepsPacked = false;
    int mPackedCount = 0; ///< of blocks whose home is mPacked
    QString mPackedName;  ///< of the file of mPacked
    QString mUnreadable;  ///< the same, if a block of a file that is closed could not be read
    QString mDirectory;
    datainterface::ScratchFile mFile;
    std::unique_ptr<datainterface::PackedFile> mPacked; ///< null when no block is loaded on demand
    datainterface::ExtentMap mExtents;
    datainterface::BlockTable mTable;
    datainterface::BlockCache mCache;
    mutable QRecursiveMutex mLock;
};

/// The one store of the process.
DataManager &blockStore();

namespace datainterface {

/// Reads parts of many blocks in a row. Holds the store's lock during its lifetime, so that the
/// lock is taken once for all of them.
class BlockReading {
public:
    BlockReading() : mStore(blockStore()) { mStore.mLock.lock(); }
    ~BlockReading() { mStore.mLock.unlock(); }
    BlockReading(const BlockReading &) = delete;
    BlockReading &operator=(const BlockReading &) = delete;

    /// In bytes; -1 for an unknown block.
    int sizeOf(int id) const;
    /// The contents in the cache, which counts as a use; null when the block is not cached or does
    /// not have `size` bytes. Valid until the next call of the store itself.
    const char *inPlace(int id, int size) const;
    /// Reads `count` bytes, from offset `at` on, of a block of `size` bytes that is not cached, and
    /// leaves the cache as it is. False when there is no such block or it has another size, and
    /// when so many pieces of it were read since it was last cached that reading all of it is
    /// cheaper.
    bool readPiece(int id, int size, int at, char *to, int count) const;

private:
    DataManager &mStore;
};

} // namespace datainterface
