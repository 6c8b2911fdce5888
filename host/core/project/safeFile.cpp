// SPDX-License-Identifier: MIT
#include "core/project/safeFile.h"
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryFile>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include "core/project/failure.h"

namespace meridor {
namespace {

QString systemError()
{
    return QString::fromLocal8Bit(std::strerror(errno));
}

/// Syncs a file or a directory to the disk. The content must be synced before the rename, and the
/// directory after it, for the rename to survive a crash.
bool flush(const QString &path, int flags)
{
    const int handle = ::open(QFile::encodeName(path).constData(), flags | O_CLOEXEC);
    if (handle < 0)
        return false;
    const bool flushed = ::fsync(handle) == 0;
    return ::close(handle) == 0 && flushed;
}

/// The access rights of the file that is replaced; for a new file those that the umask leaves.
mode_t rightsFor(const QString &target)
{
    struct stat info = {};
    if (::stat(QFile::encodeName(target).constData(), &info) == 0)
        return info.st_mode & 07777;
    const mode_t mask = ::umask(0);
    ::umask(mask);
    return 0666 & ~mask;
}

} // namespace

FileIdentity identityOf(const QString &path)
{
    struct stat info = {};
    if (::stat(QFile::encodeName(path).constData(), &info) != 0)
        return {};
    return {info.st_dev, info.st_ino, info.st_size,
            qint64(info.st_mtim.tv_sec) * 1000000000 + info.st_mtim.tv_nsec};
}

void refuseInput(const QString &target, const QStringList &inputs)
{
    const FileIdentity written = identityOf(target);
    for (const QString &input : inputs) {
        const FileIdentity read = identityOf(input);
        if (read.size >= 0 && read.device == written.device && read.number == written.number)
            fail(QStringLiteral("%1: is read and cannot be the output as well").arg(target));
    }
}

void requireWritable(const QString &target, bool overwrite)
{
    const QFileInfo info(target);
    if (info.isDir())
        fail(QStringLiteral("%1: is a directory").arg(target));
    if (info.exists() && !overwrite)
        fail(QStringLiteral("%1: is there already").arg(target), "overwrite");
    if (!info.absoluteDir().exists())
        fail(QStringLiteral("%1: no directory %2").arg(target, info.absolutePath()));
}

bool replaceFile(const QString &target, const std::function<bool(const QString &)> &write)
{
    const QFileInfo given(target);
    const QString real =
        given.isSymLink() && given.exists() ? given.canonicalFilePath() : given.absoluteFilePath();
    const QFileInfo info(real);
    const QString suffix =
        info.suffix().isEmpty() ? QString() : QString(QLatin1Char('.') + info.suffix());
    QTemporaryFile beside(info.absolutePath() + QStringLiteral("/.") + info.completeBaseName()
                          + QStringLiteral("-XXXXXX") + suffix);
    if (!beside.open())
        fail(QStringLiteral("%1: %2").arg(target, beside.errorString()));
    const QString name = beside.fileName();
    beside.close();
    if (!write(name))
        return false;
    if (!flush(name, O_RDWR))
        fail(QStringLiteral("%1: %2").arg(target, systemError()));
    ::chmod(QFile::encodeName(name).constData(), rightsFor(real));
    if (std::rename(QFile::encodeName(name).constData(), QFile::encodeName(real).constData()) != 0)
        fail(QStringLiteral("%1: %2").arg(target, systemError()));
    flush(info.absolutePath(), O_RDONLY);
    return true;
}

} // namespace meridor
