// SPDX-License-Identifier: MIT
#include "core/formats/spool.h"
#include <QDir>
#include <QTemporaryFile>
#include <algorithm>
#include <cstring>
#include <limits>
#include <sys/mman.h>
#include <unistd.h>
#include "core/project/catalog.h"
#include "core/project/failure.h"
#include "core/project/projectHost.h"
#include "datainterface/FrameAPI.h"

namespace meridor {
namespace {

constexpr size_t kHead = 4 << 20;
/// Mapped pages count as memory of the process, so they are released after this many bytes.
constexpr quint64 kWindow = 4 << 20;

QString scratchDirectory()
{
    const auto *host = dynamic_cast<const ProjectHost *>(VORN_GetController());
    return host ? host->scratch() : QDir::tempPath();
}

quint32 endAt(const char *ends, int index)
{
    quint32 end = 0;
    std::memcpy(&end, ends + sizeof end * static_cast<size_t>(index), sizeof end);
    return end;
}

} // namespace

std::unique_ptr<QTemporaryFile> makeScratchFile()
{
    auto file = std::make_unique<QTemporaryFile>(QDir(scratchDirectory()).filePath("XXXXXX.rows"));
    if (!file->open())
        fail(QStringLiteral("%1: no scratch file can be made there: %2")
                 .arg(scratchDirectory(), file->errorString()),
             "scratch");
    return file;
}

Spool::Spool() = default;

Spool::~Spool()
{
    unmap();
}

quint64 Spool::append(std::string_view bytes)
{
    const quint64 position = mSize;
    if (!mFile && mHead.size() + bytes.size() <= kHead) {
        mHead.insert(mHead.end(), bytes.begin(), bytes.end());
    } else {
        if (!mFile)
            mFile = makeScratchFile();
        write(bytes);
    }
    mSize += bytes.size();
    return position;
}

void Spool::write(std::string_view bytes)
{
    auto offset = static_cast<off_t>(mSize - mHead.size());
    while (!bytes.empty()) {
        const ssize_t written = ::pwrite(mFile->handle(), bytes.data(), bytes.size(), offset);
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0)
            fail(QStringLiteral("%1: rows of the import cannot be kept there: %2")
                     .arg(scratchDirectory(), QString::fromLocal8Bit(std::strerror(errno))),
                 "scratch");
        bytes.remove_prefix(static_cast<size_t>(written));
        offset += written;
    }
}

const char *Spool::at(quint64 position, quint64 size) const
{
    if (position < mHead.size())
        return mHead.data() + position;
    const quint64 offset = position - mHead.size();
    // All bytes are mapped at once: mapping the rest at a later read would invalidate what was
    // returned before, without an append.
    if (mMappedSize != mSize - mHead.size())
        map();
    mTouched += qMax(size, quint64(1) << 16); // the kernel maps neighbouring pages as well
    if (mTouched > kWindow) {
        ::madvise(mMapped, mMappedSize, MADV_DONTNEED);
        mTouched = 0;
    }
    return mMapped + offset;
}

void Spool::map() const
{
    unmap();
    const quint64 size = mSize - mHead.size();
    void *const mapped = ::mmap(nullptr, size, PROT_READ, MAP_SHARED, mFile->handle(), 0);
    if (mapped == MAP_FAILED)
        fail(QStringLiteral("%1: rows of the import cannot be read back: %2")
                 .arg(scratchDirectory(), QString::fromLocal8Bit(std::strerror(errno))),
             "scratch");
    mMapped = static_cast<char *>(mapped);
    mMappedSize = size;
}

void Spool::unmap() const
{
    if (mMapped)
        ::munmap(mMapped, mMappedSize);
    mMapped = nullptr;
    mMappedSize = 0;
}

Cells::Cells(const std::shared_ptr<Spool> &spool, int chunkSize)
    : mSpool(spool), mChunkSize(static_cast<size_t>(chunkSize))
{
}

void Cells::append(std::string_view cell)
{
    if (cell.size() > std::numeric_limits<quint32>::max() / 2
        || size() == std::numeric_limits<int>::max())
        fail(QStringLiteral("more rows, or a longer cell, than an import can hold"));
    const size_t needed = mBytes.size() + cell.size() + sizeof(quint32) * (mEnds.size() + 1);
    if (needed > mChunkSize && !mEnds.empty())
        seal();
    mBytes.insert(mBytes.end(), cell.begin(), cell.end());
    mEnds.push_back(static_cast<quint32>(mBytes.size()));
}

void Cells::seal()
{
    const std::string_view ends(reinterpret_cast<const char *>(mEnds.data()),
                                sizeof(quint32) * mEnds.size());
    const auto rows = static_cast<int>(mEnds.size());
    // One piece, since the spool promises contiguity only within one call.
    std::vector<char> chunk(ends.begin(), ends.end());
    chunk.insert(chunk.end(), mBytes.begin(), mBytes.end());
    const quint64 position = mSpool->append({chunk.data(), chunk.size()});
    mChunks.push_back({mSealed, rows, position, chunk.size()});
    mSealed += rows;
    mEnds.clear();
    mBytes.clear();
    if (mBytes.capacity() > 4 * mChunkSize)
        mBytes.shrink_to_fit();
}

void Cells::find(int row) const
{
    const auto behind =
        std::upper_bound(mChunks.begin(), mChunks.end(), row,
                         [](int wanted, const Chunk &chunk) { return wanted < chunk.firstRow; });
    const Chunk &chunk = *std::prev(behind);
    mChunk = mSpool->at(chunk.position, chunk.size);
    mGeneration = mSpool->generation();
    mFirst = chunk.firstRow;
    mBehind = chunk.firstRow + chunk.rows;
}

std::string_view Cells::view(int row) const
{
    if (row >= mSealed) {
        const auto index = static_cast<size_t>(row - mSealed);
        const quint32 start = index == 0 ? 0 : mEnds[index - 1];
        return {mBytes.data() + start, mEnds[index] - start};
    }
    if (row < mFirst || row >= mBehind || mGeneration != mSpool->generation())
        find(row);
    const int index = row - mFirst;
    const quint32 start = index == 0 ? 0 : endAt(mChunk, index - 1);
    const char *bytes = mChunk + sizeof(quint32) * static_cast<size_t>(mBehind - mFirst);
    return {bytes + start, endAt(mChunk, index) - start};
}

} // namespace meridor
