// SPDX-License-Identifier: MIT
#include "Common/detail/scratchFile.h"
#include <QFile>
#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <limits>
#include <unistd.h>
#include "Common/detail/tempFile.h"

namespace datainterface {
namespace {

constexpr int kTailBytes = 256 * 1024;
// Blocks of this size or larger are written directly: the tail would only copy them once more.
constexpr qint64 kDirectBytes = 32 * 1024;
constexpr qint64 kReserveStep = 16 * 1024 * 1024;

class PosixFile final : public PositionedFile {
public:
    ~PosixFile() override { PosixFile::close(); }

    bool open(const QString &path) override
    {
        const QByteArray name = QFile::encodeName(path);
        // The access time of a scratch file is of no use, and updating it takes a twentieth of the
        // time of a small read.
        mHandle = ::open(name.constData(), O_RDWR | O_CLOEXEC | O_NOATIME);
        if (mHandle < 0)
            mHandle = ::open(name.constData(), O_RDWR | O_CLOEXEC);
        return mHandle >= 0;
    }

    void close() override
    {
        if (mHandle >= 0)
            ::close(mHandle);
        mHandle = -1;
    }

    bool read(qint64 position, char *to, qint64 count) override
    {
        return transfer(position, count, [this, to](qint64 done, size_t rest, off_t at) {
            return ::pread(mHandle, to + done, rest, at);
        });
    }

    bool write(qint64 position, const char *from, qint64 count) override
    {
        return transfer(position, count, [this, from](qint64 done, size_t rest, off_t at) {
            return ::pwrite(mHandle, from + done, rest, at);
        });
    }

    Reserved reserve(qint64 position, qint64 count) override
    {
        int result = 0;
        do {
            result = ::fallocate(mHandle, FALLOC_FL_KEEP_SIZE, position, count);
        } while (result != 0 && errno == EINTR);
        if (result == 0)
            return Reserved::Yes;
        const bool full = errno == ENOSPC || errno == EDQUOT || errno == EFBIG || errno == EIO;
        return full ? Reserved::NoRoom : Reserved::Unsupported;
    }

private:
    template <class Call> bool transfer(qint64 position, qint64 count, Call call)
    {
        for (qint64 done = 0; done < count;) {
            const ssize_t step = call(done, static_cast<size_t>(count - done), position + done);
            if (step < 0 && errno == EINTR)
                continue;
            if (step <= 0)
                return false;
            done += step;
        }
        return true;
    }

    int mHandle = -1;
};

} // namespace

std::unique_ptr<PositionedFile> makePositionedFile()
{
    return std::make_unique<PosixFile>();
}

ScratchFile::ScratchFile(std::unique_ptr<PositionedFile> file) : mFile(std::move(file))
{
}

ScratchFile::~ScratchFile()
{
    close();
}

bool ScratchFile::open(const QString &directory)
{
    close();
    const QString path = uniqueTempFile(directory, "DM");
    if (path.isEmpty())
        return false;
    if (!mFile->open(path)) {
        QFile::remove(path);
        return false;
    }
    mPath = path;
    mTail.reserve(kTailBytes);
    return true;
}

void ScratchFile::close()
{
    if (!isOpen())
        return;
    mFile->close();
    QFile::remove(mPath);
    mPath.clear();
    mTail.clear();
    mTailStart = 0;
    mReservedEnd = 0;
}

bool ScratchFile::read(qint64 position, char *to, qint64 count)
{
    if (!isOpen())
        return false;
    if (position + count > mTailStart) {
        if (position >= mTailStart && position + count <= tailEnd()) {
            std::memcpy(to, mTail.constData() + (position - mTailStart),
                        static_cast<size_t>(count));
            return true;
        }
        if (!flush())
            return false;
    }
    return mFile->read(position, to, count);
}

bool ScratchFile::write(qint64 position, const char *from, qint64 count, Mode mode)
{
    if (!isOpen() || !reserveTo(position + count))
        return false;
    const qint64 end = position + count;
    if (mode == Mode::Combined && count < kDirectBytes) {
        if (position >= mTailStart && end <= tailEnd()) {
            std::memcpy(mTail.data() + (position - mTailStart), from, static_cast<size_t>(count));
            return true;
        }
        if (position == tailEnd())
            return appendToTail(from, count);
    }
    if (end > mTailStart && !flush())
        return false;
    if (!mFile->write(position, from, count))
        return false;
    mTailStart = std::max(mTailStart, end);
    return true;
}

bool ScratchFile::appendToTail(const char *from, qint64 count)
{
    if (mTail.size() + count > kTailBytes && !flush())
        return false;
    mTail.append(from, static_cast<int>(count));
    return true;
}

bool ScratchFile::flush()
{
    if (mTail.isEmpty())
        return true;
    if (!isOpen() || !mFile->write(mTailStart, mTail.constData(), mTail.size()))
        return false;
    mTailStart += mTail.size();
    mTail.resize(0);
    return true;
}

bool ScratchFile::reserveTo(qint64 end)
{
    if (end <= mReservedEnd)
        return true;
    const qint64 needed = end - mReservedEnd;
    auto reserved = mFile->reserve(mReservedEnd, std::max(needed, kReserveStep));
    qint64 reservedEnd = mReservedEnd + std::max(needed, kReserveStep);
    if (reserved == PositionedFile::Reserved::NoRoom) {
        // The disk has less than a step left, but the bytes themselves may fit.
        reserved = mFile->reserve(mReservedEnd, needed);
        reservedEnd = end;
    }
    if (reserved == PositionedFile::Reserved::Unsupported)
        reservedEnd = std::numeric_limits<qint64>::max(); // so that no further reservation is tried
    if (reserved == PositionedFile::Reserved::NoRoom)
        return false;
    mReservedEnd = reservedEnd;
    return true;
}

} // namespace datainterface
