// SPDX-License-Identifier: MIT
#include "store/scratchSpace.h"
#include <QDir>
#include <QTemporaryFile>
#include <algorithm>
#include <cstring>

namespace fennimark {
namespace {

constexpr std::size_t kHeapLimit = std::size_t(4) << 20;
constexpr std::size_t kFlushSize = std::size_t(256) << 10; // larger writes are not faster

QString &scratchDirectory()
{
    static QString directory;
    return directory;
}

bool mappingAllowed = true;

} // namespace

/// QTemporaryFile makes a file without a name, where the platform has them, until the name is asked
/// for. It never is.
class SpillFile : public QTemporaryFile {
public:
    explicit SpillFile(const QString &place) : QTemporaryFile(place) {}
    bool openUnbuffered()
    {
        return QTemporaryFile::open(QIODevice::ReadWrite | QIODevice::Unbuffered);
    }
};

ScratchSpace::ScratchSpace() = default;
ScratchSpace::~ScratchSpace() = default;
ScratchSpace::ScratchSpace(ScratchSpace &&other) noexcept = default;
ScratchSpace &ScratchSpace::operator=(ScratchSpace &&other) noexcept = default;

void ScratchSpace::setDirectory(const QString &directory)
{
    scratchDirectory() = directory;
}

void ScratchSpace::allowMapping(bool allowed)
{
    mappingAllowed = allowed;
}

void ScratchSpace::expect(quint64 size)
{
    mExpectsFile = size > kHeapLimit;
    mBuffer.reserve(std::size_t(mExpectsFile ? kFlushSize : size));
}

bool ScratchSpace::append(const void *bytes, quint64 size)
{
    const auto *from = static_cast<const uchar *>(bytes);
    while (size > 0) {
        const std::size_t limit = mFile || mExpectsFile ? kFlushSize : kHeapLimit;
        const std::size_t room = std::min<quint64>(limit - std::min(limit, mBuffer.size()), size);
        mBuffer.insert(mBuffer.end(), from, from + room);
        from += room;
        size -= room;
        if (size > 0 && !flush())
            return false;
    }
    return true;
}

bool ScratchSpace::align(quint64 alignment)
{
    static const uchar zeros[64] = {};
    return append(zeros, (alignment - size() % alignment) % alignment);
}

bool ScratchSpace::flush()
{
    if (!mFile) {
        const QString directory =
            scratchDirectory().isEmpty() ? QDir::tempPath() : scratchDirectory();
        QDir().mkpath(directory);
        mFile = std::make_unique<SpillFile>(directory + QLatin1String("/fennimark"));
        if (!mFile->openUnbuffered())
            return false;
    }
    for (std::size_t done = 0; done < mBuffer.size();) {
        const std::size_t piece = std::min(kFlushSize, mBuffer.size() - done);
        const qint64 written =
            mFile->write(reinterpret_cast<const char *>(mBuffer.data() + done), qint64(piece));
        if (written <= 0)
            return false;
        done += std::size_t(written);
    }
    mFlushed += mBuffer.size();
    mBuffer.clear();
    return true;
}

bool ScratchSpace::freeze(quint64 residentFrom, Reads reads)
{
    if (!mFile) {
        mBuffer.shrink_to_fit();
        return true;
    }
    if (!flush())
        return false;
    mMapped = mappingAllowed && reads == Reads::Mapped ? mFile->map(0, qint64(mFlushed)) : nullptr;
    std::vector<uchar>().swap(mBuffer);
    if (mMapped)
        return true;
    mBuffer.resize(mFlushed - residentFrom);
    return mFile->seek(qint64(residentFrom))
           && mFile->read(reinterpret_cast<char *>(mBuffer.data()), qint64(mBuffer.size()))
                  == qint64(mBuffer.size());
}

const uchar *ScratchSpace::at(quint64 offset) const
{
    if (mMapped)
        return mMapped + offset;
    const quint64 residentFrom = mFile ? mFlushed - mBuffer.size() : 0;
    return offset < residentFrom ? nullptr : mBuffer.data() + (offset - residentFrom);
}

bool ScratchSpace::read(quint64 offset, void *bytes, quint64 size) const
{
    if (const uchar *from = at(offset)) {
        std::memcpy(bytes, from, size);
        return true;
    }
    return mFile->seek(qint64(offset))
           && mFile->read(static_cast<char *>(bytes), qint64(size)) == qint64(size);
}

} // namespace fennimark
