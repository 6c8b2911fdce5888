// SPDX-License-Identifier: MIT
/// Atomic replacement of files: the new content is written to a temporary file in the directory of
/// the target, which is renamed to the target when it is complete.
#pragma once
#include <QString>
#include <QStringList>
#include <functional>
#include "core/export.h"

namespace meridor {

/// Raises a Failure with the reason if the path is no file, or the user may not read it.
MERIDOR_EXPORT void requireReadable(const QString &path);
/// Raises a Failure if the target is a directory or write-protected, if it exists and `overwrite` is
/// false, or if its directory does not exist. Devices and pipes may always be written.
MERIDOR_EXPORT void requireWritable(const QString &target, bool overwrite);

/// Makes a directory and those above it, unless they exist. Raises a Failure with the reason.
MERIDOR_EXPORT void makeDirectory(const QString &path);

/// Raises a Failure if the target is a file that the user may not write, or that nobody may write:
/// renaming replaces a file whatever its own rights are, also for the system's administrator.
MERIDOR_EXPORT void refuseProtected(const QString &target);
/// Raises a Failure if a value of the loaded project could not be read, because what was made since
/// then may lack values. For use before a complete output replaces its target.
MERIDOR_EXPORT void refuseUnreadable(const QString &target);

/// Identifies a file and its state, to detect that it was replaced or changed.
struct FileIdentity {
    quint64 device = 0;
    quint64 number = 0;
    qint64 size = -1;       ///< -1: there is no file
    qint64 nanoseconds = 0; ///< time of the last change, since 1970
};
inline bool operator==(const FileIdentity &a, const FileIdentity &b)
{
    return a.device == b.device && a.number == b.number && a.size == b.size
           && a.nanoseconds == b.nanoseconds;
}
MERIDOR_EXPORT FileIdentity identityOf(const QString &path);
/// Raises a Failure if `target` is the same file as one of `inputs`, also through a link.
MERIDOR_EXPORT void refuseInput(const QString &target, const QStringList &inputs);

/// Why nothing more can be appended to a file, such as "No space left on device"; empty if it can.
/// The file is made if it is missing.
MERIDOR_EXPORT QString appendTrouble(const QString &file);
/// Raises a Failure that names the target and says why nothing more can be appended to `beside`, the
/// unfinished file in its place; if more can be, it has the text of `complaint` instead.
[[noreturn]] MERIDOR_EXPORT void failWriting(const QString &target, const QString &beside,
                                             const QString &complaint = QString());

/// The absolute path of the file that a replacement of `target` replaces: that which a symbolic
/// link refers to, else `target` itself.
MERIDOR_EXPORT QString replacedFile(const QString &target);

/// Calls `write` with the name of a new empty file that has the target's directory and extension,
/// syncs the file to the disk and renames it to the target, see replacedFile. If `write` returns
/// false or throws, the user cancels before the file is renamed, the loaded project turned out to be
/// unreadable, or a write error occurs, the target is unchanged and the temporary file is removed. What is written for a device or pipe is
/// copied to it. Raises a Failure for a write error and a cancel.
/// @return false if `write` returned false.
MERIDOR_EXPORT bool replaceFile(const QString &target,
                                const std::function<bool(const QString &)> &write);

} // namespace meridor
