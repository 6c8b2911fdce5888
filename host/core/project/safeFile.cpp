// SPDX-License-Identifier: MIT
#include "core/project/safeFile.h"
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryFile>
#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>
#include "core/project/cancel.h"
#include "core/project/failure.h"
#include "core/project/outputFile.h"
#include "core/project/text.h"
#include "datainterface/ProjectAPI.h"

namespace meridor {
namespace {

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

/// Gives a file the owner, as far as the process may, and the access rights of the file that it
/// replaces; the rights of a new file are those that the umask leaves.
void takeRights(const QString &name, const QString &target)
{
    const QByteArray file = QFile::encodeName(name);
    struct stat info = {};
    if (::stat(QFile::encodeName(target).constData(), &info) == 0) {
        if (::chown(file.constData(), info.st_uid, info.st_gid) != 0)
            info.st_mode &= 0777; // no rights of another owner's program
        ::chmod(file.constData(), info.st_mode & 07777);
        return;
    }
    const mode_t mask = ::umask(0);
    ::umask(mask);
    ::chmod(file.constData(), 0666 & ~mask);
}

/// Writes a temporary file and copies it to a device or pipe, over which nothing can be renamed.
bool writeThrough(const QString &target, const std::function<bool(const QString &)> &write)
{
    QTemporaryFile whole;
    if (!whole.open())
        fail(QStringLiteral("%1: %2").arg(target, whole.errorString()));
    if (!write(whole.fileName()))
        return false;
    QFile content(whole.fileName()); // `write` may have replaced the file
    if (!content.open(QIODevice::ReadOnly))
        fail(QStringLiteral("%1: %2").arg(target, content.errorString()));
    StreamDevice device(target);
    while (!content.atEnd())
        writeWhole(device, content.read(1 << 20), target);
    return true;
}

} // namespace

void refuseProtected(const QString &target)
{
    const QByteArray name = QFile::encodeName(target);
    struct stat info = {};
    if (::stat(name.constData(), &info) != 0 || !S_ISREG(info.st_mode))
        return;
    if ((info.st_mode & 0222) == 0 || (::access(name.constData(), W_OK) != 0 && errno == EACCES))
        fail(QStringLiteral("%1: is write-protected").arg(target));
}

void refuseUnreadable(const QString &target)
{
    const QString file = VORN_GetUnreadableProjectFile();
    if (!file.isEmpty())
        fail(QStringLiteral("%1: not written, since values of %2 could not be read")
                 .arg(target, file));
}

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

QString replacedFile(const QString &target)
{
    const QFileInfo given(target);
    return given.isSymLink() && given.exists() ? given.canonicalFilePath()
                                               : given.absoluteFilePath();
}

void requireReadable(const QString &path)
{
    if (path.isEmpty())
        failUsage(QStringLiteral("the name of a file is empty"));
    const QByteArray name = QFile::encodeName(path);
    struct stat info = {};
    if (::stat(name.constData(), &info) != 0)
        fail(QStringLiteral("%1: %2").arg(path, errno == ENOENT ? QStringLiteral("no such file")
                                                                : systemError()));
    if (S_ISDIR(info.st_mode))
        fail(QStringLiteral("%1: is a directory").arg(path));
    if (!S_ISREG(info.st_mode))
        fail(QStringLiteral("%1: is a pipe or a device and no file").arg(path));
    const int handle = ::open(name.constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (handle < 0)
        fail(QStringLiteral("%1: %2").arg(path, systemError()));
    ::close(handle);
}

void requireWritable(const QString &target, bool overwrite)
{
    if (target.isEmpty())
        failUsage(QStringLiteral("the name of a file is empty"));
    if (isStream(target))
        return;
    const QFileInfo info(target);
    if (info.isDir())
        fail(QStringLiteral("%1: is a directory").arg(target));
    if (info.exists() && !overwrite)
        fail(QStringLiteral("%1: is there already").arg(target), "overwrite");
    if (!info.absoluteDir().exists())
        fail(QStringLiteral("%1: no directory %2").arg(target, info.absolutePath()));
    refuseProtected(target);
}

void makeDirectory(const QString &path)
{
    std::error_code error;
    std::filesystem::create_directories(QFile::encodeName(path).toStdString(), error);
    if (error)
        fail(QStringLiteral("%1: %2").arg(path, systemError(error.value())));
}

QString appendTrouble(const QString &file)
{
    const int handle = ::open(QFile::encodeName(file).constData(),
                              O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC | O_NONBLOCK, 0600);
    if (handle < 0)
        return systemError();
    const QByteArray zeros(1024 * 1024, '\0');
    QString reason;
    ssize_t step = 1; // a write that stops short has no reason, the next one has
    for (ssize_t done = 0; done < zeros.size() && step > 0; done += step)
        step = ::write(handle, zeros.constData(), static_cast<size_t>(zeros.size() - done));
    if (step <= 0)
        reason = systemError(step < 0 ? errno : ENOSPC);
    ::close(handle);
    return reason;
}

void failWriting(const QString &target, const QString &beside, const QString &complaint)
{
    stopIfCancelled();
    const QString disk = appendTrouble(beside);
    if (!disk.isEmpty())
        fail(QStringLiteral("%1: %2").arg(target, disk));
    fail(QStringLiteral("%1: could not be written%2").arg(target, complaint));
}

bool replaceFile(const QString &target, const std::function<bool(const QString &)> &write)
{
    if (isStream(target))
        return writeThrough(target, write);
    refuseProtected(target);
    const QString real = replacedFile(target);
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
    takeRights(name, real);
    refuseUnreadable(target);
    stopIfCancelled(); // for the last time: from here on the work is done
    if (std::rename(QFile::encodeName(name).constData(), QFile::encodeName(real).constData()) != 0)
        fail(QStringLiteral("%1: %2").arg(target, systemError()));
    flush(info.absolutePath(), O_RDONLY);
    return true;
}

} // namespace meridor
