// SPDX-License-Identifier: MIT
/// The scratch file of the block store: positioned reads and writes, small appended writes
/// combined.
#pragma once
#include <QByteArray>
#include <QString>
#include <memory>

namespace datainterface {

/// What the store asks of the operating system. Tests put one that fails in its place.
class PositionedFile {
public:
    enum class Reserved { Yes, NoRoom, Unsupported };

    virtual ~PositionedFile() = default;
    virtual bool open(const QString &path) = 0;
    virtual void close() = 0;
    /// Whole or false.
    virtual bool read(qint64 position, char *to, qint64 count) = 0;
    virtual bool write(qint64 position, const char *from, qint64 count) = 0;
    /// Makes sure that the disk has room for these bytes; the file's size stays.
    virtual Reserved reserve(qint64 position, qint64 count) = 0;
};

std::unique_ptr<PositionedFile> makePositionedFile();

/// Bytes by position in a file that only grows. Appended writes gather in a buffer, the tail, that
/// goes out in one call; what a write was told true about is readable from then on, from the tail
/// or from the file, and a failed flush keeps the tail. Room is reserved ahead in steps, so that a
/// full disk shows when a write is asked for.
class ScratchFile {
public:
    enum class Mode { Combined, Through };

    explicit ScratchFile(std::unique_ptr<PositionedFile> file);
    ~ScratchFile();

    /// Makes a file of its own in `directory` and opens it.
    bool open(const QString &directory);
    /// Closes and deletes the file.
    void close();
    bool isOpen() const { return !mPath.isEmpty(); }
    QString path() const { return mPath; }

    bool read(qint64 position, char *to, qint64 count);
    /// `position` is at most the end of what was written. Mode::Through leaves nothing in the tail.
    bool write(qint64 position, const char *from, qint64 count, Mode mode = Mode::Combined);
    bool flush();

private:
    qint64 tailEnd() const { return mTailStart + mTail.size(); }
    bool appendToTail(const char *from, qint64 count);
    bool reserveTo(qint64 end);

    std::unique_ptr<PositionedFile> mFile;
    QString mPath;
    QByteArray mTail; ///< the last bytes of the file, not yet written
    qint64 mTailStart = 0;
    qint64 mReservedEnd = 0; ///< the disk has room up to here
};

} // namespace datainterface
