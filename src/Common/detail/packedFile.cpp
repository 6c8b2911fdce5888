// SPDX-License-Identifier: MIT
#include "Common/detail/packedFile.h"
#include <QFile>
#include <QtEndian>
#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <limits>
#include <sys/stat.h>
#include <unistd.h>
#include "Common/detail/streams.h"

namespace datainterface {
namespace {

constexpr int kCopyBytes = 256 * 1024;

} // namespace

std::unique_ptr<PackedFile> PackedFile::share(int handle, bool isPacked)
{
    const int own = ::fcntl(handle, F_DUPFD_CLOEXEC, 0);
    if (own < 0)
        return nullptr;
    return std::unique_ptr<PackedFile>(new PackedFile(own, isPacked));
}

PackedFile::PackedFile(int handle, bool isPacked)
    : mHandle(handle), mIsPacked(isPacked), mLoaded(state())
{
}

PackedFile::~PackedFile()
{
    ::close(mHandle);
}

int PackedFile::sizeOf(const char *head, int storedBytes)
{
    const auto size = qFromBigEndian<quint32>(head);
    return isPossibleSize(size, storedBytes - kHeadBytes) ? static_cast<int>(size) : 0;
}

int PackedFile::add(qint64 position, int storedBytes)
{
    mPlaces.push_back({position, storedBytes, 0});
    return static_cast<int>(mPlaces.size()) - 1;
}

PackedFile::State PackedFile::state() const
{
    struct stat info = {};
    if (::fstat(mHandle, &info) != 0)
        return {};
    return {info.st_size, info.st_mtim.tv_sec, info.st_mtim.tv_nsec};
}

bool PackedFile::isUnchanged() const
{
    const State now = state();
    return now.size >= 0 && now.size == mLoaded.size && now.seconds == mLoaded.seconds
           && now.nanoseconds == mLoaded.nanoseconds;
}

bool PackedFile::read(qint64 position, char *to, qint64 count) const
{
    for (qint64 done = 0; done < count;) {
        const ssize_t step =
            ::pread(mHandle, to + done, static_cast<size_t>(count - done), position + done);
        if (step < 0 && errno == EINTR)
            continue;
        if (step <= 0)
            return false;
        done += step;
    }
    return true;
}

bool PackedFile::unpack(int block, char *to, int size)
{
    Place &place = mPlaces[static_cast<size_t>(block)];
    const bool isRead = isUnchanged() && unpackWhole(block, to, size);
    mIsIntact = mIsIntact && isRead;
    if (isRead && place.unpackCount < std::numeric_limits<quint8>::max())
        ++place.unpackCount;
    return isRead;
}

bool PackedFile::unpackWhole(int block, char *to, int size)
{
    const Place &place = mPlaces[static_cast<size_t>(block)];
    if (!mIsPacked)
        return size == place.storedBytes && read(place.position, to, size);
    if (findSegments(block, size)) {
        for (int at = 0, i = 0; at < size; at += mIndex.segmentBytes, ++i)
            if (!readSegment(block, i, to + at, std::min(mIndex.segmentBytes, size - at)))
                return false;
        return true;
    }
    QByteArray stored(place.storedBytes, Qt::Uninitialized);
    return read(place.position, stored.data(), stored.size()) && inflateInto(stored, to, size);
}

// A damaged index is no reason to give up: the block is then unpacked as a whole.
bool PackedFile::findSegments(int block, int size)
{
    if (block == mIndexed)
        return !mIndex.segments.empty();
    const Place &place = mPlaces[static_cast<size_t>(block)];
    mIndexed = block;
    mIndex = SegmentIndex();
    QByteArray bytes(kSegmentTailBytes, Qt::Uninitialized);
    const qint64 end = place.position + place.storedBytes;
    if (!mIsPacked || !isWorthSegments(size) || place.storedBytes < kSegmentTailBytes
        || !read(end - kSegmentTailBytes, bytes.data(), bytes.size()))
        return false;
    const qint64 indexBytes = kSegmentTailBytes + qint64(8) * SegmentIndex::countOf(bytes);
    if (indexBytes == kSegmentTailBytes || indexBytes > place.storedBytes)
        return false;
    bytes.resize(static_cast<int>(indexBytes));
    if (!read(end - indexBytes, bytes.data(), indexBytes)
        || !mIndex.read(bytes, size, place.storedBytes))
        mIndex = SegmentIndex();
    return !mIndex.segments.empty();
}

bool PackedFile::readSegment(int block, int segment, char *to, int size)
{
    const SegmentIndex::Segment &packed = mIndex.segments[static_cast<size_t>(segment)];
    mBuffer.resize(packed.packedBytes);
    return read(mPlaces[static_cast<size_t>(block)].position + packed.position, mBuffer.data(),
                packed.packedBytes)
           && unpackSegment(mBuffer, packed.check, to, size);
}

bool PackedFile::unpackPiece(int block, int size, int at, char *to, int count, int &unpacked)
{
    unpacked = 0;
    if (!findSegments(block, size))
        return false;
    for (int done = 0; done < count;) {
        const int segment = (at + done) / mIndex.segmentBytes;
        const int start = segment * mIndex.segmentBytes;
        const QByteArray *contents =
            keptSegment(block, segment, std::min(mIndex.segmentBytes, size - start), unpacked);
        if (!contents) {
            mIsIntact = false;
            return false;
        }
        const int from = at + done - start;
        const int step = std::min(count - done, contents->size() - from);
        std::copy_n(contents->constData() + from, step, to + done);
        done += step;
    }
    return true;
}

// The contents of a segment, in place of those that were used least recently if it is not kept yet.
const QByteArray *PackedFile::keptSegment(int block, int segment, int size, int &unpacked)
{
    Kept *oldest = &mKept[0];
    for (Kept &kept : mKept) {
        if (kept.block == block && kept.segment == segment) {
            kept.lastUse = ++mUses;
            return &kept.contents;
        }
        if (kept.lastUse < oldest->lastUse)
            oldest = &kept;
    }
    oldest->block = -1;
    oldest->contents.resize(size);
    if (!isUnchanged() || !readSegment(block, segment, oldest->contents.data(), size))
        return nullptr;
    ++unpacked;
    oldest->block = block;
    oldest->segment = segment;
    oldest->lastUse = ++mUses;
    return &oldest->contents;
}

bool PackedFile::copyTo(int block, QDataStream &out)
{
    const Place &place = mPlaces[static_cast<size_t>(block)];
    mIsIntact = mIsIntact && isUnchanged();
    if (!mIsIntact)
        return false;
    out << quint32(place.storedBytes);
    QByteArray piece(std::min(place.storedBytes, kCopyBytes), Qt::Uninitialized);
    for (int done = 0; done < place.storedBytes;) {
        const int step = std::min(place.storedBytes - done, piece.size());
        if (!read(place.position + done, piece.data(), step)
            || out.writeRawData(piece.constData(), step) != step)
            return false;
        done += step;
    }
    return true;
}

bool PackedFile::isAt(const QString &path) const
{
    struct stat own = {};
    struct stat other = {};
    return ::fstat(mHandle, &own) == 0 && ::stat(QFile::encodeName(path).constData(), &other) == 0
           && own.st_dev == other.st_dev && own.st_ino == other.st_ino;
}

} // namespace datainterface
