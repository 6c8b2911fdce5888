// SPDX-License-Identifier: MIT
#include "core/project/inputFile.h"
#include <cerrno>
#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>
#include "core/project/cancel.h"
#include "core/project/failure.h"
#include "core/project/text.h"

namespace meridor {
namespace {

constexpr int kPatience = 100; // milliseconds between two questions for a cancel

} // namespace

InputFile::InputFile(const QString &path) : QFile(path)
{
}

InputFile::~InputFile() = default;

bool InputFile::openForReading()
{
    const QByteArray name = QFile::encodeName(fileName());
    const int handle = ::open(name.constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY);
    struct stat info = {};
    if (handle < 0 || ::fstat(handle, &info) != 0) {
        setErrorString(systemError());
        return false;
    }
    // A device may have no end. A terminal ends with what is typed.
    if (S_ISBLK(info.st_mode) || (S_ISCHR(info.st_mode) && ::isatty(handle) == 0)) {
        ::close(handle);
        setErrorString(QStringLiteral("is a device and no file"));
        return false;
    }
    mIsStream = !S_ISREG(info.st_mode) && !S_ISDIR(info.st_mode);
    ::fcntl(handle, F_SETFL, ::fcntl(handle, F_GETFL) & ~O_NONBLOCK);
    return QFile::open(handle, QIODevice::ReadOnly | QIODevice::Unbuffered,
                       QFileDevice::AutoCloseHandle);
}

qint64 InputFile::readData(char *data, qint64 size)
{
    if (!mIsStream)
        return QFile::readData(data, size);
    for (;;) {
        // A pipe that nobody has opened for writing yet is not ready, rather than at its end.
        struct pollfd ready = {handle(), POLLIN, 0};
        if (::poll(&ready, 1, kPatience) <= 0) {
            stopIfCancelled();
            continue;
        }
        const ssize_t count = ::read(handle(), data, static_cast<size_t>(size));
        if (count >= 0)
            return count;
        if (errno != EINTR)
            fail(QStringLiteral("%1: %2").arg(fileName(), systemError()));
    }
}

} // namespace meridor
