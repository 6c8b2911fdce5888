// SPDX-License-Identifier: MIT
/// The scratch file of the block store: reads and writes by position, with small writes at the end
/// combined.
#pragma once
#include <QByteArray>
#include <QString>
#include <memory>

namespace datainterface {

/// The file operations that the store needs from the operating system. Tests replace them by ones
/// that fail.
class PositionedFile {
public:
    enum class Reserved { Yes, NoRoom, Unsupported };

    virtual ~PositionedFile() = default;
    virtual bool open(const QString &path) = 0;
    virtual void close() = 0;
    /// Transfers all `count` bytes; false when it cannot.
    virtual bool read(qint64 position, char *to, qint64 count) = 0;
    virtual bool write(qint64 position, const char *from, qint64 count) = 0;
    /// Reserves disk space for these bytes; the file's size does not change.
    virtual Reserved reserve(qint64 position, qint64 count) = 0;
};

std::unique_ptr<PositionedFile> makePositionedFile();

/// Bytes by position in a file that only grows.
///
///     0               mTailStart             tailEnd()            mReservedEnd
///     |  in the file  |  tail, in memory     |  reserved on disk  |
///
/// Small writes at the end are collected in the tail, which flush() writes in one call. The bytes
/// of a write that returned true can be read from then on, from the tail or from the file; a flush
/// that fails keeps the tail. Disk space is reserved ahead in steps, so that a full disk is
/// reported by the write that needs the space and not by a later flush.
class ScratchFile {
public:
    enum class Mode { Combined, Through };

    explicit ScratchFile(std::unique_ptr<PositionedFile> file);
    ~ScratchFile();

    /// Makes a new file in `directory` and opens it.
    bool open(const QString &directory);
    /// Closes and deletes the file.
    void close();
    bool isOpen() const { return !mPath.isEmpty(); }
    QString path() const { return mPath; }

    bool read(qint64 position, char *to, qint64 count);
    /// `position` is at most the end of the bytes written so far. Mode::Through writes
    /// directly into the file.
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
