// SPDX-License-Identifier: MIT
#include "core/project/fileLock.h"
#include <QFile>
#include <QFileInfo>
#include <QSysInfo>
#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include "core/project/failure.h"
#include "core/project/safeFile.h"
#include "core/project/text.h"

namespace meridor {
namespace {

// A lock file is empty for a moment while it is made. One that stays empty is left from a crash of
// the machine.
constexpr int kEmptyMilliseconds = 10000;

QString lockName(const QString &file)
{
    const QFileInfo info(replacedFile(file));
    return QStringLiteral("%1/.%2.lock").arg(info.absolutePath(), info.fileName());
}

/// Whether a lock file was made since this system was started, also in another container on it: its fifth
/// line tells. Systems that share a disk may not see each other's flock().
bool isOfThisSystem(QFile &lock)
{
    const QByteArray start = QSysInfo::bootUniqueId();
    return !start.isEmpty() && lock.readAll().split('\n').value(4) == start;
}

/// Removes a lock file whose holder has ended although a process has its number again, as it happens
/// in containers. A holder keeps flock() on the file, and sets it before it writes its number.
bool removeIfLeft(const QString &name)
{
    const QByteArray path = QFile::encodeName(name);
    QFile lock;
    const int handle = ::open(path.constData(), O_RDWR | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK);
    if (handle < 0 || !lock.open(handle, QIODevice::ReadOnly, QFileDevice::AutoCloseHandle))
        return false;
    struct stat open = {};
    struct stat named = {};
    return ::flock(handle, LOCK_EX | LOCK_NB) == 0 && isOfThisSystem(lock)
           && ::fstat(handle, &open) == 0 && ::lstat(path.constData(), &named) == 0
           && open.st_dev == named.st_dev && open.st_ino == named.st_ino
           && ::unlink(path.constData()) == 0;
}

} // namespace

FileLock::FileLock(const QString &file) : mName(lockName(file)), mLock(mName)
{
    mLock.setStaleLockTime(0); // the holder's end makes a lock stale, and not its age
    errno = 0;
    if (mLock.tryLock(0))
        return;
    qint64 process = 0;
    QString machine;
    QString program;
    if (mLock.error() == QLockFile::LockFailedError
        && !mLock.getLockInfo(&process, &machine, &program)) {
        mLock.setStaleLockTime(kEmptyMilliseconds);
        if (mLock.tryLock(0))
            return;
    }
    if (mLock.error() == QLockFile::LockFailedError && removeIfLeft(mName) && mLock.tryLock(0))
        return;
    if (mLock.error() != QLockFile::LockFailedError)
        fail(QStringLiteral("%1: its directory takes no lock file: %2").arg(file, systemError()));
    if (process == 0)
        fail(QStringLiteral("%1: another process is changing it (%2)").arg(file, mName));
    // Whether a process of another machine lives cannot be asked.
    const QString advice =
        machine == QSysInfo::machineHostName()
            ? QString()
            : QStringLiteral("; if that process has ended, remove %1").arg(mName);
    fail(QStringLiteral("%1: %2 is changing it (process %3 on %4); nothing is changed")
             .arg(file, program, QString::number(process), machine)
         + advice);
}

FileLock::~FileLock() = default;

bool FileLock::holds(const QString &file) const
{
    return mName == lockName(file);
}

} // namespace meridor
