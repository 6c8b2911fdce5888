// SPDX-License-Identifier: MIT
/// Keeps two processes from changing one file at a time.
#pragma once
#include <QLockFile>
#include <QString>
#include "core/export.h"

namespace meridor {

/// Holds the file `.NAME.lock` beside a file, or beside the file that a link refers to, until it is
/// destroyed. It keeps out other holders only: readers ignore it.
class MERIDOR_EXPORT FileLock {
public:
    /// Takes over the lock of a process that has ended. Raises a Failure that says who holds the
    /// lock, or why the directory takes no lock file.
    explicit FileLock(const QString &file);
    ~FileLock();
    FileLock(const FileLock &) = delete;
    FileLock &operator=(const FileLock &) = delete;
    /// Whether this lock is that of `file`.
    bool holds(const QString &file) const;

private:
    QString mName;
    QLockFile mLock;
};

} // namespace meridor
