// SPDX-License-Identifier: MIT
#include "core/project/fileLock.h"
#include <QFileInfo>
#include <QSysInfo>
#include <cerrno>
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
