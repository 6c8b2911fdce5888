// SPDX-License-Identifier: MIT
// The blocks in a project file:
//
//   int32        next block id
//   int32        number of blocks, then for each block, in ascending order of ids:
//     int32      block id
//     QByteArray contents; with `compress` packed in qCompress's form, which is a big-endian uint32
//                length and a zlib stream; at level 1 large blocks are packed in segments
//                (detail/segments.h)
#include "Common/DataManager.h"
#include <QMutexLocker>
#include <QtEndian>
#include <algorithm>
#include <libdeflate.h>
#include <limits>
#include "Common/detail/failure.h"
#include "Common/detail/readAhead.h"
#include "Common/detail/segments.h"
#include "Common/detail/streams.h"
#include "datainterface/DataBlocks.h"

using namespace datainterface;

namespace {

constexpr int kQtPackLevel = 9;
constexpr int kMaxPackLevel = 12;
constexpr int kSegmentLevel = 1; // at which large blocks are packed in segments
constexpr int kPollSegments = 16;
constexpr qint64 kMinBlockBytes = 8; // id and length

// Packs blocks into qCompress's form.
class Packer {
public:
    /// Level 0 is qCompress itself; 1 to 12 are libdeflate's.
    explicit Packer(int level)
        : mCompressor(level > 0 ? libdeflate_alloc_compressor(level) : nullptr,
                      &libdeflate_free_compressor)
    {
    }

    QByteArray Pack(const QByteArray &bytes) const
    {
        if (!mCompressor || bytes.isEmpty())
            return qCompress(bytes, kQtPackLevel);
        const auto size = static_cast<size_t>(bytes.size());
        const size_t bound = libdeflate_zlib_compress_bound(mCompressor.get(), size);
        if (bound > static_cast<size_t>(std::numeric_limits<int>::max()) - 64)
            return qCompress(bytes, kQtPackLevel);
        QByteArray packed(static_cast<int>(bound) + 4, Qt::Uninitialized);
        qToBigEndian(static_cast<quint32>(size), packed.data());
        const size_t length = libdeflate_zlib_compress(mCompressor.get(), bytes.constData(), size,
                                                       packed.data() + 4, bound);
        if (length == 0)
            return qCompress(bytes, kQtPackLevel);
        packed.resize(static_cast<int>(length) + 4);
        return packed;
    }

private:
    std::unique_ptr<libdeflate_compressor, decltype(&libdeflate_free_compressor)> mCompressor;
};

bool isUsableId(int id)
{
    return id >= 0 && id < std::numeric_limits<int>::max();
}

int percentOf(int done, int count)
{
    return static_cast<int>(qint64(100) * done / count);
}

} // namespace

void DataManager::SetPackLevel(int level)
{
    const QMutexLocker lock(&mLock);
    if (level >= 0 && level <= kMaxPackLevel)
        mPackLevel = level;
}

bool DataManager::SaveProjectData(QDataStream &out, bool compress, ProgressCallback report)
{
    const QMutexLocker lock(&mLock);
    EmptyCache();
    const int count = mExtents.UsedCount() + mPackedCount;
    out << qint32(mNextId) << qint32(count);
    const int reportStep = std::max(count / 1000, 1);
    const Packer packer(mPackLevel);
    // Level 0 promises a certain form, so blocks are packed again for it.
    const bool copiesPacked =
        mPacked && compress == mPacked->isPacked() && (!compress || mPackLevel > 0);
    const QVector<int> ids = mTable.StoredIds();
    for (int i = 0; i < ids.size(); ++i) {
        out << qint32(ids[i]);
        const BlockSlot &slot = *mTable.Find(ids[i]);
        if (slot.isPacked() && copiesPacked) {
            if (!mPacked->copyTo(slot.packed(), out))
                return false;
        } else if (compress && mPackLevel == kSegmentLevel && slot.isWritten()
                   && isWorthSegments(slot.size)) {
            const auto read = [&](int at, char *to, int bytes) {
                const bool isPolled = at % (kPollSegments * kSegmentBytes) == 0;
                return mFile.read(slot.position + at, to, bytes)
                       && (!report || !isPolled || report(percentOf(i, count), nullptr));
            };
            if (!packInSegments(out, slot.size, read))
                return false;
        } else {
            QByteArray bytes;
            if (!ReadDataBlock(ids[i], bytes))
                return false;
            out << (compress ? packer.Pack(bytes) : bytes);
        }
        if (out.status() != QDataStream::Ok)
            return false;
        if (report && i % reportStep == 0 && !report(percentOf(i, count), nullptr))
            return false;
    }
    return out.status() == QDataStream::Ok;
}

bool DataManager::RestoreProjectData(QDataStream &in, bool compressed, ProgressCallback report)
{
    const QMutexLocker lock(&mLock);
    require(mFile.isOpen(), "File stream not open");
    EmptyCache();
    qint32 nextId = 0;
    in >> nextId;
    const int count = readCount(in, kMinBlockBytes);
    if (in.status() != QDataStream::Ok || nextId < 0)
        return false;
    mNextId = std::max(mNextId, nextId); // a store that was not reset has ids in use
    for (int i = 0; i < count; ++i) {
        qint32 id = -1;
        QByteArray stored;
        in >> id;
        if (!readBytes(in, stored))
            return false;
        QByteArray bytes = stored;
        if (compressed && !inflateBytes(stored, bytes))
            return false;
        if (!RestoreBlock(id, bytes))
            return false;
        if (report && !report(percentOf(i, count), nullptr))
            return false;
    }
    return mFile.flush();
}

void DataManager::SetKeepsPacked(bool keepsPacked)
{
    const QMutexLocker lock(&mLock);
    mKeepsPacked = keepsPacked;
}

// A block's head is read, and the rest of it is passed over.
bool DataManager::RestorePackedData(QDataStream &in, int handle, const QString &fileName,
                                    bool compressed, ProgressCallback report)
{
    const QMutexLocker lock(&mLock);
    require(mFile.isOpen(), "File stream not open");
    require(mPackedCount == 0, "packed blocks");
    EmptyCache();
    mPacked = PackedFile::share(handle, compressed);
    if (!mPacked)
        return false;
    mPackedName = fileName;
    ReadAhead blocks(in);
    const auto nextId = blocks.number<qint32>();
    const int count = blocks.count(kMinBlockBytes);
    if (!blocks.ok() || nextId < 0)
        return false;
    mNextId = std::max(mNextId, nextId);
    const qint64 end = in.device()->size();
    const int reportStep = std::max(count / 1000, 1);
    for (int i = 0; i < count; ++i) {
        const auto id = blocks.number<qint32>();
        const auto stored = blocks.number<qint32>();
        const int bytes = std::max(stored, 0); // -1 is a null array
        const int headBytes = compressed ? std::min(bytes, PackedFile::kHeadBytes) : 0;
        const qint64 position = end - blocks.left();
        const char *head = blocks.take(headBytes);
        int size = bytes;
        if (compressed)
            size =
                headBytes == PackedFile::kHeadBytes && head ? PackedFile::sizeOf(head, bytes) : 0;
        if (stored < -1 || !isUsableId(id) || !blocks.skip(bytes - headBytes) || !blocks.ok())
            return false;
        FreeDataBlock(id);
        BlockSlot &slot = mTable.FindOrMake(id);
        slot.home = BlockSlot::homeOfPacked(mPacked->add(position, bytes));
        slot.size = size;
        ++mPackedCount;
        mNextId = std::max(mNextId, id + 1);
        if (report && i % reportStep == 0 && !report(percentOf(i, count), nullptr))
            return false;
    }
    return true;
}

bool DataManager::ReleaseFile(const QString &path)
{
    const QMutexLocker lock(&mLock);
    if (!mPacked || !mPacked->isAt(path))
        return true;
    return UnpackAll();
}

bool DataManager::UnpackAll()
{
    const QVector<int> ids = mTable.StoredIds();
    for (const int id : ids) {
        BlockSlot &slot = *mTable.Find(id);
        if (!slot.isPacked())
            continue;
        QByteArray bytes = slot.bytes;
        if (!slot.cached) {
            bytes = QByteArray(slot.size, Qt::Uninitialized);
            if (!ReadHome(slot, bytes.data()))
                return false;
        }
        if (!WriteDataBlock(id, bytes, WriteMode::Combined))
            return false;
        slot.dirty = false;
    }
    mPacked.reset();
    return true;
}

QString DataManager::UnreadableFile() const
{
    const QMutexLocker lock(&mLock);
    return mPacked && !mPacked->isIntact() ? mPackedName : mUnreadable;
}

// A later block with the same id replaces the earlier one. mNextId stays above every id in use.
bool DataManager::RestoreBlock(int id, const QByteArray &bytes)
{
    if (!isUsableId(id))
        return false;
    FreeDataBlock(id);
    if (!AppendDataBlock(id, bytes, WriteMode::Combined))
        return false;
    mNextId = std::max(mNextId, id + 1);
    return true;
}

void DataManager::DeleteBlocksBut(QVector<int> kept)
{
    const QMutexLocker lock(&mLock);
    std::sort(kept.begin(), kept.end());
    const QVector<int> ids = mTable.StoredIds();
    for (int id : ids)
        if (!std::binary_search(kept.cbegin(), kept.cend(), id))
            DeleteDataBlock(id);
}

void VORN_SetProjectCompression(int level)
{
    blockStore().SetPackLevel(level);
}
