// SPDX-License-Identifier: MIT
/// The directory of a session's temporary files.
#pragma once
#include <QString>
#include <QStringList>
#include "core/export.h"

namespace meridor {

/// A directory meridor-XXXXXX with the lock file meridor-XXXXXX.lock beside it. The system releases
/// the lock when the process ends, however it ends, so a directory whose lock nobody holds belongs
/// to a process that was killed. The constructor removes such directories of the same user. The
/// destructor removes the own one and does not throw.
class MERIDOR_EXPORT ScratchDirectory {
public:
    /// Uses the first of `parents` in which a directory can be made; parents that are missing are
    /// created. Raises a Failure with the reason if there is none.
    explicit ScratchDirectory(const QStringList &parents);
    ~ScratchDirectory();
    ScratchDirectory(const ScratchDirectory &) = delete;
    ScratchDirectory &operator=(const ScratchDirectory &) = delete;

    const QString &path() const { return mPath; }
    /// Why the directory takes no more files now, such as "No space left on device"; empty if it
    /// does.
    QString trouble() const;

private:
    bool makeIn(const QString &parent);

    QString mPath;
    int mLock = -1; ///< handle of the lock file
};

} // namespace meridor
