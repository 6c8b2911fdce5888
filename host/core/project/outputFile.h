// SPDX-License-Identifier: MIT
/// Writing of results: regular files are replaced atomically, devices and pipes are written directly,
/// and are never removed or renamed over.
#pragma once
#include <QIODevice>
#include <QString>
#include <QStringList>
#include <functional>
#include "core/export.h"

namespace meridor {

/// Whether the target is a device, a pipe, a socket or an open descriptor such as /dev/stdout, whose
/// content a program can only append to. False for a name that does not exist.
MERIDOR_EXPORT bool isStream(const QString &target);

/// A sequential device for such a target. Opening a named pipe and writing wait for the reader, and
/// raise a Failure if the user cancels meanwhile. A name of an open descriptor (/dev/stdout,
/// /dev/fd/N) is written through that descriptor, which keeps its position and stays open.
class MERIDOR_EXPORT StreamDevice : public QIODevice {
public:
    /// Raises a Failure if the target cannot be opened.
    explicit StreamDevice(const QString &target);
    ~StreamDevice() override;
    bool isSequential() const override { return true; }

protected:
    qint64 readData(char *data, qint64 size) override;
    qint64 writeData(const char *data, qint64 size) override;

private:
    int mHandle = -1;
    bool mOwned = true;
    bool mIsPipe = false;
};

/// Writes `bytes` whole, or raises a Failure that names the target.
MERIDOR_EXPORT void writeWhole(QIODevice &device, const QByteArray &bytes, const QString &target);

/// Calls `write` with a device for the target: that of the stream itself, or a new file that replaces
/// the target when it is complete. Raises a Failure for a write error; `write` raises its own.
MERIDOR_EXPORT void writeOutput(const QString &target,
                                const std::function<void(QIODevice &)> &write);

/// Replaces files that belong together, such as those of a Shapefile. `write` receives the path of
/// the main file in a new directory beside the target and creates any files there. They are synced
/// and renamed into the directory of the target, the main file last. If `write` returns false or
/// throws, or a write error occurs, the target is unchanged. Raises a Failure for a write error.
/// @param stale  suffixes of files beside the target that are removed if `write` made none, because
///               they describe the previous content.
/// @return false if `write` returned false.
MERIDOR_EXPORT bool replaceFiles(const QString &target, const QStringList &stale,
                                 const std::function<bool(const QString &)> &write);

} // namespace meridor
