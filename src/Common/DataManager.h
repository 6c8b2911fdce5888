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
#include "Common/detail/scratchFile.h"
#include "datainterface/ProgressCallback.h"

namespace datainterface {
class BlockReading;
}

/// Gives the block new contents of any size. Always true. Raises "result", with the old contents
/// still in place, when the cache has to write something back for it and cannot.
bool ReplaceDataBlock(int id, const QByteArray &bytes);

/// Blocks in a write-back cache over one scratch file. A block goes to the file when the cache
/// evicts it, and at once when it is larger than the cache. Deleted and outgrown extents are used
/// again (ExtentMap).
///
/// Every write-back is done, and known to have succeeded, before the memory it came from is given
/// up: when one fails, the call raises "result", nothing has changed, and it can be made again when
/// there is room.
class DataManager {
public:
    /// All of the store's state that is not contents.
    struct State {
        QVector<datainterface::ExtentMap::Extent> extents; ///< in file order
        QVector<datainterface::ExtentMap::Extent>
            freeList;           ///< in the order in which they are considered
        QVector<int> cachedIds; ///< most recently used first
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
    /// As given to Initialize; empty before.
    const QString &Directory() const { return mDirectory; }

    int SaveDataBlock(const QByteArray &bytes);
    void ReplaceDataBlock(int id, const QByteArray &bytes);
    bool ReadDataBlock(int id, QByteArray &bytes);
    bool DeleteDataBlock(int id);

    /// See VORN_SetProjectCompression.
    void SetPackLevel(int level);
    /// `report` may be null.
    bool SaveProjectData(QDataStream &out, bool compress, ProgressCallback report);
    bool RestoreProjectData(QDataStream &in, bool compressed, ProgressCallback report);

    /// Deletes the blocks in the file whose ids are not among `kept`.
    void DeleteBlocksBut(QVector<int> kept);

    State Inspect() const;

private:
    using WriteMode = datainterface::ScratchFile::Mode;

    friend class datainterface::BlockReading;

    void Keep(int id, const QByteArray &bytes, bool dirty);
    QByteArray MakeRoom(qint64 cost);
    QByteArray Evict(int id);
    void EmptyCache();
    bool WriteDataBlock(int id, const QByteArray &bytes, WriteMode mode);
    bool AllocateDataBlock(int id, const QByteArray &bytes, WriteMode mode);
    bool AppendDataBlock(int id, const QByteArray &bytes, WriteMode mode);
    void Place(int id, int extent);
    bool FreeDataBlock(int id);
    bool RestoreBlock(int id, const QByteArray &bytes);

    int mNextId = 0;
    int mPackLevel = 0;
    QString mDirectory;
    datainterface::ScratchFile mFile;
    datainterface::ExtentMap mExtents;
    datainterface::BlockTable mTable;
    datainterface::BlockCache mCache;
    mutable QRecursiveMutex mLock;
};

/// The one store of the process.
DataManager &blockStore();

namespace datainterface {

/// Reads a few bytes of a block, of many blocks in a row. Holds the store's lock, which taken once
/// costs a block next to nothing.
class BlockReading {
public:
    BlockReading() : mStore(blockStore()) { mStore.mLock.lock(); }
    ~BlockReading() { mStore.mLock.unlock(); }
    BlockReading(const BlockReading &) = delete;
    BlockReading &operator=(const BlockReading &) = delete;

    /// In bytes; -1 for an unknown block.
    int sizeOf(int id) const;
    /// The contents where they lie in the cache, which is a use of them; null when they are not
    /// there or are not `size` bytes. Until the next call of the store itself.
    const char *inPlace(int id, int size) const;
    /// `count` bytes of a block of `size` bytes that is not in the cache, out of the file; the
    /// cache stays as it is. False when there is no such block, when its size is another, and when
    /// so much of it was read in pieces since it was last cached that the whole block is the
    /// cheaper read.
    bool readPiece(int id, int size, int at, char *to, int count) const;

private:
    DataManager &mStore;
};

} // namespace datainterface
