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
    const bool isRead = isUnchanged() && unpackWhole(place, to, size);
    mIsIntact = mIsIntact && isRead;
    if (isRead && place.unpackCount < std::numeric_limits<quint8>::max())
        ++place.unpackCount;
    return isRead;
}

bool PackedFile::unpackWhole(const Place &place, char *to, int size) const
{
    if (!mIsPacked)
        return size == place.storedBytes && read(place.position, to, size);
    QByteArray stored(place.storedBytes, Qt::Uninitialized);
    return read(place.position, stored.data(), stored.size()) && inflateInto(stored, to, size);
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
