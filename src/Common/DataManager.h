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
#include "datainterface/VORN_Progress.h"

/// Gives the block new contents of any size. Always true. Raises "result", with the old contents still in place, when
/// the cache has to write something back for it and cannot.
bool ReplaceDataBlock(int id, const QByteArray &bytes);

/// Blocks in a write-back cache over one scratch file. A block goes to the file when the cache evicts it, and at once
/// when it is larger than the cache. Deleted and outgrown extents are used again (ExtentMap).
///
/// Every write-back is done, and known to have succeeded, before the memory it came from is given up: when one fails,
/// the call raises "result", nothing has changed, and it can be made again when there is room.
class DataManager {
public:
    /// All of the store's state that is not contents.
    struct State {
        QVector<datainterface::ExtentMap::Extent> extents;  ///< in file order
        QVector<datainterface::ExtentMap::Extent> freeList; ///< in the order in which they are considered
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

    int SaveDataBlock(const QByteArray &bytes);
    void ReplaceDataBlock(int id, const QByteArray &bytes);
    bool ReadDataBlock(int id, QByteArray &bytes);
    bool DeleteDataBlock(int id);

    /// See VORN_SetProjectCompression.
    void SetPackLevel(int level);
    /// `report` may be null.
    bool SaveProjectData(QDataStream &out, bool compress, ProgressCallback report);
    bool RestoreProjectData(QDataStream &in, bool compressed, ProgressCallback report);

    State Inspect() const;

private:
    using WriteMode = datainterface::ScratchFile::Mode;

    void Keep(int id, const QByteArray &bytes, bool dirty);
    void Evict(int id);
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
