// SPDX-License-Identifier: MIT
#include "exchange/dbfFile.h"
#include <QFileInfo>
#include <QtEndian>
#include <cstring>

namespace datainterface {

/// One open file. Contiguous bytes are collected in `pending`, whose first byte has the position
/// `start` in the file. The buffer also allows overwriting: shapelib writes an end mark after each
/// record and then writes the next record over it.
struct DbfFile::Stream {
    Stream(DbfFile &opener, const QString &name) : owner(opener), file(name) {}

    bool write(const char *bytes, qint64 count)
    {
        if (position < start || position > start + pending.size())
            flush();
        if (!owner.mIsWritten)
            return false;
        if (pending.isEmpty())
            start = position;
        pending.replace(static_cast<int>(position - start), static_cast<int>(count), bytes,
                        static_cast<int>(count));
        position += count;
        return pending.size() < kPieceBytes || flush();
    }
    qint64 read(char *bytes, qint64 count)
    {
        if (!flush() || !file.seek(position))
            return 0;
        const qint64 done = std::max(qint64(0), file.read(bytes, count));
        position += done;
        return done;
    }
    bool flush()
    {
        if (!pending.isEmpty() && owner.mIsWritten)
            owner.mIsWritten = file.seek(start) && file.write(pending) == pending.size();
        pending.resize(0);
        return owner.mIsWritten;
    }

    static constexpr int kPieceBytes = 1 << 16;
    DbfFile &owner;
    QFile file;
    QByteArray pending;
    qint64 start = 0;
    qint64 position = 0;
};

/// The file functions that shapelib calls. They have no context argument until a file is open, so
/// `creating` names the file that is being created.
struct DbfFile::Hooks {
    static DbfFile *creating;

    static Stream *streamOf(SAFile file) { return reinterpret_cast<Stream *>(file); }

    static SAFile open(const char *name, const char *access)
    {
        const bool isTable = std::strcmp(name + std::strlen(name) - 4, ".dbf") == 0;
        auto stream = std::make_unique<Stream>(*creating,
                                               isTable ? creating->mName : QFile::decodeName(name));
        const QIODevice::OpenMode mode =
            access[0] == 'w' ? QIODevice::WriteOnly | QIODevice::Truncate : QIODevice::ReadWrite;
        // A table is not written sequentially.
        if (!stream->file.open(mode | QIODevice::Unbuffered) || stream->file.isSequential()) {
            creating->mIsWritten = false;
            return nullptr;
        }
        stream->pending.reserve(2 * Stream::kPieceBytes);
        return reinterpret_cast<SAFile>(stream.release());
    }
    static SAOffset read(void *bytes, SAOffset size, SAOffset count, SAFile file)
    {
        if (!file || size == 0)
            return 0;
        return static_cast<SAOffset>(streamOf(file)->read(static_cast<char *>(bytes),
                                                          static_cast<qint64>(size * count)))
               / size;
    }
    static SAOffset write(void *bytes, SAOffset size, SAOffset count, SAFile file)
    {
        const bool isWritten =
            file
            && streamOf(file)->write(static_cast<char *>(bytes), static_cast<qint64>(size * count));
        return isWritten ? count : 0;
    }
    static SAOffset seek(SAFile file, SAOffset offset, int whence)
    {
        Stream &stream = *streamOf(file);
        if (whence == SEEK_END)
            stream.flush();
        const qint64 base = whence == SEEK_SET   ? 0
                            : whence == SEEK_CUR ? stream.position
                                                 : stream.file.size();
        stream.position = base + static_cast<qint64>(offset);
        return 0;
    }
    static SAOffset tell(SAFile file) { return static_cast<SAOffset>(streamOf(file)->position); }
    static int flush(SAFile file) { return streamOf(file)->flush() ? 0 : EOF; }
    static int close(SAFile file)
    {
        const std::unique_ptr<Stream> stream(streamOf(file));
        return stream && stream->flush() ? 0 : EOF;
    }
    static int remove(const char *name) { return QFile::remove(QFile::decodeName(name)) ? 0 : -1; }
    static void error(const char *) {} // the export returns false instead
};

DbfFile *DbfFile::Hooks::creating = nullptr;

DBFHandle DbfFile::create()
{
    SAHooks hooks;
    SASetupDefaultHooks(&hooks);
    hooks.FOpen = &Hooks::open;
    hooks.FRead = &Hooks::read;
    hooks.FWrite = &Hooks::write;
    hooks.FSeek = &Hooks::seek;
    hooks.FTell = &Hooks::tell;
    hooks.FFlush = &Hooks::flush;
    hooks.FClose = &Hooks::close;
    hooks.Remove = &Hooks::remove;
    hooks.Error = &Hooks::error;
    Hooks::creating = this;
    mHandle = DBFCreateLL(QFile::encodeName(mName).constData(), "UTF-8", &hooks);
    Hooks::creating = nullptr;
    if (!mIsWritten)
        remove();
    return mHandle;
}

bool DbfFile::close()
{
    if (!mHandle)
        return mIsWritten;
    const int records = mHandle->nRecords;
    const qint64 bytes = mHandle->nHeaderLength + qint64(records) * mHandle->nRecordLength;
    DBFClose(mHandle);
    mHandle = nullptr;
    mIsWritten = mIsWritten && isWhole(records, bytes);
    return mIsWritten;
}

// Checks the finished file: the number of records in its header, and its size with or without an
// end mark. A device has neither and passes.
bool DbfFile::isWhole(int records, qint64 bytes) const
{
    if (!QFileInfo(mName).isFile())
        return true;
    QFile file(mName);
    constexpr int kCountEnd = 8;
    const QByteArray head = file.open(QIODevice::ReadOnly) ? file.read(kCountEnd) : QByteArray();
    return head.size() == kCountEnd
           && qFromLittleEndian<qint32>(head.constData() + kCountEnd - 4) == records
           && (file.size() == bytes || file.size() == bytes + 1);
}

void DbfFile::remove()
{
    close();
    if (QFileInfo(mName).isFile())
        QFile::remove(mName);
}

} // namespace datainterface
