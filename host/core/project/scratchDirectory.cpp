// SPDX-License-Identifier: MIT
#include "core/project/scratchDirectory.h"
#include <QDir>
#include <QFile>
#include <QRandomGenerator>
#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include "core/project/failure.h"
#include "core/project/text.h"

namespace meridor {
namespace {

// The step in which the block store reserves space: with less the next value may not fit.
constexpr qint64 kReserve = 16 * 1024 * 1024;

QString lockOf(const QString &directory)
{
    return directory + QStringLiteral(".lock");
}

/// Whether the name still refers to the file of the handle. It does not if another process removed
/// the file between open() and flock().
bool isSameFile(int handle, const QString &name)
{
    struct stat open = {};
    struct stat named = {};
    return ::fstat(handle, &open) == 0 && ::lstat(QFile::encodeName(name).constData(), &named) == 0
           && open.st_dev == named.st_dev && open.st_ino == named.st_ino;
}

bool isOwnDirectory(const QString &name)
{
    struct stat info = {};
    return ::lstat(QFile::encodeName(name).constData(), &info) == 0 && S_ISDIR(info.st_mode)
           && info.st_uid == ::geteuid();
}

/// Removes a scratch directory and then its lock file, for a holder of the lock. Links in the
/// directory are removed and not followed. What cannot be removed keeps its lock file, so that a
/// later start tries again.
void discard(const QString &directory)
{
    const QByteArray name = QFile::encodeName(directory);
    if (isOwnDirectory(directory)) {
        ::chmod(name.constData(), 0700);
        std::error_code ignored;
        std::filesystem::remove_all(name.toStdString(), ignored);
    }
    if (::access(name.constData(), F_OK) != 0)
        ::unlink(QFile::encodeName(lockOf(directory)).constData());
}

/// Removes the scratch directory of a process that was killed. If the lock file is that of a
/// process that is just starting and does not hold it yet, that process notices that it is gone.
void removeIfAbandoned(const QString &lock)
{
    const QByteArray name = QFile::encodeName(lock);
    const int handle = ::open(name.constData(), O_RDWR | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK);
    if (handle < 0)
        return;
    struct stat info = {};
    if (::fstat(handle, &info) == 0 && S_ISREG(info.st_mode) && info.st_uid == ::geteuid()
        && ::flock(handle, LOCK_EX | LOCK_NB) == 0 && isSameFile(handle, lock))
        discard(lock.left(lock.size() - lockOf(QString()).size()));
    ::close(handle);
}

} // namespace

ScratchDirectory::ScratchDirectory(const QStringList &parents)
{
    QStringList reasons;
    for (const QString &parent : parents) {
        if (parent.isEmpty())
            continue;
        errno = 0;
        if (QDir().mkpath(parent) && makeIn(QDir(parent).absolutePath()))
            break;
        reasons.append(QStringLiteral("%1: %2").arg(parent, systemError()));
    }
    if (mPath.isEmpty())
        fail(QStringLiteral("no directory for scratch files (%1)")
                 .arg(reasons.join(QStringLiteral("; "))),
             "scratch");
    for (const QString &parent : parents)
        for (const QString &lock :
             QDir(parent).entryList({QStringLiteral("meridor-*.lock")}, QDir::Files))
            if (!parent.isEmpty())
                removeIfAbandoned(QDir(parent).absoluteFilePath(lock));
}

/// The lock is held before the directory exists, so that a directory without a holder is never a
/// new one. False with errno if the disk refuses.
bool ScratchDirectory::makeIn(const QString &parent)
{
    for (;;) {
        const QString path =
            parent
            + QStringLiteral("/meridor-%1")
                  .arg(QRandomGenerator::system()->generate(), 8, 16, QLatin1Char('0'));
        const QString lock = lockOf(path);
        const QByteArray name = QFile::encodeName(lock);
        const int handle = ::open(name.constData(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
        if (handle < 0 && errno == EEXIST)
            continue;
        if (handle < 0)
            return false;
        const bool held = ::flock(handle, LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK;
        if (held && isSameFile(handle, lock)) {
            if (::mkdir(QFile::encodeName(path).constData(), 0700) == 0) {
                mPath = path;
                mLock = handle;
                return true;
            }
            const int reason = errno;
            ::unlink(name.constData());
            ::close(handle);
            errno = reason;
            if (reason != EEXIST)
                return false;
            continue;
        }
        ::close(handle); // a start of another process took the file for an abandoned one
    }
}

ScratchDirectory::~ScratchDirectory()
{
    discard(mPath);
    ::close(mLock);
}

QString ScratchDirectory::trouble() const
{
    QByteArray name = QFile::encodeName(mPath) + "/probe-XXXXXX";
    const int handle = ::mkstemp(name.data());
    if (handle < 0)
        return systemError();
    // From the end of the largest file on, since a limit of the size of files may be reached.
    qint64 largest = 0;
    for (const QFileInfo &file : QDir(mPath).entryInfoList(QDir::Files | QDir::Hidden))
        largest = qMax(largest, file.size());
    QString reason;
    const int full = ::posix_fallocate(handle, largest, kReserve);
    if (full != 0 && full != EOPNOTSUPP && full != EINVAL)
        reason = systemError(full);
    ::close(handle);
    ::unlink(name.constData());
    return reason;
}

} // namespace meridor
