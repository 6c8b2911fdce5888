// SPDX-License-Identifier: MIT
#include "core/project/outputFile.h"
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>
#include "core/project/cancel.h"
#include "core/project/failure.h"
#include "core/project/safeFile.h"
#include "core/project/text.h"

namespace meridor {
namespace {

constexpr int kPatience = 50; ///< milliseconds between two questions whether the user cancelled

/// The number in /dev/stdout, /dev/fd/3 or /proc/self/fd/3; -1 for any other name.
int descriptorOf(const QString &target)
{
    static const QRegularExpression numbered(QStringLiteral("^/(dev|proc/self)/fd/(\\d{1,6})$"));
    if (target == QLatin1String("/dev/stdout"))
        return STDOUT_FILENO;
    if (target == QLatin1String("/dev/stderr"))
        return STDERR_FILENO;
    const auto match = numbered.match(target);
    return match.hasMatch() ? match.captured(2).toInt() : -1;
}

/// Opens without blocking: a named pipe without a reader is tried again until there is one.
int openPatiently(const QByteArray &name)
{
    for (;;) {
        const int handle = ::open(name.constData(), O_WRONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY);
        if (handle >= 0) {
            ::fcntl(handle, F_SETFL, ::fcntl(handle, F_GETFL) & ~O_NONBLOCK);
            return handle;
        }
        if (errno != ENXIO && errno != EINTR)
            return -1;
        stopIfCancelled();
        ::poll(nullptr, 0, kPatience);
    }
}

bool synced(const QString &path, int flags)
{
    const int handle = ::open(QFile::encodeName(path).constData(), flags | O_CLOEXEC);
    if (handle < 0)
        return false;
    const bool done = ::fsync(handle) == 0;
    return ::close(handle) == 0 && done;
}

void moveInto(const QString &from, const QString &to)
{
    struct stat old = {};
    if (::stat(QFile::encodeName(to).constData(), &old) == 0)
        ::chmod(QFile::encodeName(from).constData(), old.st_mode & 07777);
    if (std::rename(QFile::encodeName(from).constData(), QFile::encodeName(to).constData()) != 0)
        fail(QStringLiteral("%1: %2").arg(to, systemError()));
}

} // namespace

bool isStream(const QString &target)
{
    if (descriptorOf(target) >= 0)
        return true;
    struct stat info = {};
    return ::stat(QFile::encodeName(target).constData(), &info) == 0 && !S_ISREG(info.st_mode)
           && !S_ISDIR(info.st_mode);
}

StreamDevice::StreamDevice(const QString &target) : mHandle(descriptorOf(target))
{
    mOwned = mHandle < 0;
    if (mOwned)
        mHandle = openPatiently(QFile::encodeName(target));
    struct stat info = {};
    if (mHandle < 0 || ::fstat(mHandle, &info) != 0)
        fail(QStringLiteral("%1: %2").arg(target, systemError()));
    mIsPipe = S_ISFIFO(info.st_mode) || S_ISSOCK(info.st_mode);
    open(QIODevice::WriteOnly | QIODevice::Unbuffered);
}

StreamDevice::~StreamDevice()
{
    if (mOwned && mHandle >= 0)
        ::close(mHandle);
}

qint64 StreamDevice::readData(char *, qint64)
{
    return -1;
}

// A pipe that poll() calls writable takes PIPE_BUF bytes without blocking, so that a cancel is seen
// while the reader pauses. The descriptor itself stays blocking, since other processes share it.
qint64 StreamDevice::writeData(const char *data, qint64 size)
{
    qint64 done = 0;
    while (done < size) {
        struct pollfd ready = {mHandle, POLLOUT, 0};
        if (mIsPipe && ::poll(&ready, 1, kPatience) == 0) {
            stopIfCancelled();
            continue;
        }
        const qint64 piece = mIsPipe ? std::min<qint64>(size - done, PIPE_BUF) : size - done;
        const ssize_t written = ::write(mHandle, data + done, static_cast<size_t>(piece));
        if (written < 0 && errno != EINTR) {
            setErrorString(systemError());
            return -1;
        }
        done += std::max<qint64>(written, 0);
    }
    return done;
}

void writeWhole(QIODevice &device, const QByteArray &bytes, const QString &target)
{
    // A write that stops short reports no error: that of the rest does.
    for (qint64 done = 0, step = 0; done < bytes.size(); done += step) {
        step = device.write(bytes.constData() + done, bytes.size() - done);
        if (step <= 0)
            fail(QStringLiteral("%1: %2").arg(target, device.errorString()));
    }
}

void writeOutput(const QString &target, const std::function<void(QIODevice &)> &write)
{
    if (isStream(target)) {
        StreamDevice device(target);
        write(device);
        return;
    }
    replaceFile(target, [&](const QString &beside) {
        QFile file(beside);
        if (!file.open(QIODevice::WriteOnly | QIODevice::Unbuffered))
            fail(QStringLiteral("%1: %2").arg(target, file.errorString()));
        write(file);
        stopIfCancelled();
        return true;
    });
}

bool replaceFiles(const QString &target, const QStringList &stale,
                  const std::function<bool(const QString &)> &write)
{
    const QFileInfo given(target);
    const QFileInfo real(given.isSymLink() && given.exists() ? given.canonicalFilePath()
                                                             : given.absoluteFilePath());
    QTemporaryDir beside(real.absolutePath() + QStringLiteral("/.") + real.completeBaseName()
                         + QStringLiteral("-XXXXXX"));
    if (!beside.isValid())
        fail(QStringLiteral("%1: %2").arg(target, beside.errorString()));
    if (!write(beside.filePath(real.fileName())))
        return false;
    QStringList names = QDir(beside.path()).entryList(QDir::Files | QDir::Hidden);
    for (const QString &name : names)
        if (!synced(beside.filePath(name), O_RDWR))
            fail(QStringLiteral("%1: %2").arg(target, systemError()));
    std::sort(names.begin(), names.end(), [&real](const QString &a, const QString &b) {
        return a != real.fileName() && (b == real.fileName() || a < b);
    });
    for (const QString &name : names)
        refuseProtected(real.absolutePath() + QLatin1Char('/') + name);
    for (const QString &suffix : stale)
        refuseProtected(real.absolutePath() + QLatin1Char('/') + real.completeBaseName() + suffix);
    refuseUnreadable(target);
    stopIfCancelled(); // for the last time: the files must not be replaced in part
    for (const QString &name : names)
        moveInto(beside.filePath(name), real.absolutePath() + QLatin1Char('/') + name);
    for (const QString &suffix : stale) {
        const QString name = real.completeBaseName() + suffix;
        if (!names.contains(name))
            QFile::remove(real.absolutePath() + QLatin1Char('/') + name);
    }
    synced(real.absolutePath(), O_RDONLY);
    return true;
}

} // namespace meridor
