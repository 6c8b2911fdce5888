// SPDX-License-Identifier: MIT
/// Files that are whole or not there: written beside their target and moved over it once complete.
#pragma once
#include <QString>
#include <QStringList>
#include <functional>
#include "core/export.h"

namespace meridor {

/// Raises a Failure when the target is there and may not be replaced, or its directory is not.
MERIDOR_EXPORT void requireWritable(const QString &target, bool overwrite);

/// Which file stands under a name, and in which state: to see that it is still the same.
struct FileIdentity {
    quint64 device = 0;
    quint64 number = 0;
    qint64 size = -1;       ///< -1: there is none
    qint64 nanoseconds = 0; ///< of its last change
};
inline bool operator==(const FileIdentity &a, const FileIdentity &b)
{
    return a.device == b.device && a.number == b.number && a.size == b.size
           && a.nanoseconds == b.nanoseconds;
}
MERIDOR_EXPORT FileIdentity identityOf(const QString &path);
/// Raises a Failure when `target` is the same file as one of `inputs`, under whatever name.
MERIDOR_EXPORT void refuseInput(const QString &target, const QStringList &inputs);

/// Calls `write` with the name of a new empty file in the target's directory (with the target's
/// extension), brings what was written to the disk, and renames it to the target. When `write`
/// gives false or raises, or the disk refuses, the target is as it was and the new file is gone. A
/// link is followed. @return false when `write` gave false
MERIDOR_EXPORT bool replaceFile(const QString &target,
                                const std::function<bool(const QString &)> &write);

} // namespace meridor
