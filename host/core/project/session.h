// SPDX-License-Identifier: MIT
/// Starts the library with a scratch directory, and stops it and removes the directory at the end.
#pragma once
#include <QString>
#include <memory>
#include "core/export.h"
#include "core/project/fileLock.h"
#include "core/project/projectHost.h"
#include "core/project/safeFile.h"
#include "core/project/scratchDirectory.h"

class HostDialogs;

namespace meridor {

struct SessionOptions {
    /// Parent of the scratch directory. Empty: the user's cache directory, else the system's
    /// directory for temporary files.
    QString scratch;
    int cacheMegabytes = 64;
    bool smallest = false; ///< pack projects as small as possible, which is much slower
};

/// Whether a file has the name of a project, or begins like one under another name. Pipes and devices
/// are not read.
MERIDOR_EXPORT bool isProject(const QString &path);

/// A process has one session at a time: the constructor of a second one raises a Failure. The
/// destructor never throws; files that cannot be removed then are left in place.
class MERIDOR_EXPORT Session {
public:
    /// `user.notes` is not owned and must outlive the session.
    /// @param host  the controller, which is not owned and must outlive the session; null: the
    ///              session makes one.
    explicit Session(const SessionOptions &options, const SessionUser &user = {},
                     ProjectHost *host = nullptr);
    ~Session();
    Session(const Session &) = delete;
    Session &operator=(const Session &) = delete;

    ProjectHost &controller() { return *mController; }
    const Notes &notes() const { return mController->notes(); }
    /// Keeps other processes from replacing a project until the session ends or saves to another
    /// file. Called before load() by work that saves. Raises a Failure if another process does so.
    void reserve(const QString &path);
    /// Raises a Failure with the reason if the file cannot be read or is no project that this
    /// version reads.
    void load(const QString &path);
    /// The same for work that reads only some of the values: they stay packed in the file until they
    /// are needed, so that a load takes hardly any time and memory.
    void loadPacked(const QString &path);
    /// Replaces the file atomically, see replaceFile, and reserves it. Raises a Failure with the
    /// reason, also if `path` is the loaded project and its file has changed since it was loaded.
    void save(const QString &path);
    /// Removes all geographies, starts a new scratch file and no longer reserves a project.
    void unload();

private:
    [[noreturn]] void failLoad(const QString &path);

    std::unique_ptr<ScratchDirectory> mScratch;
    std::unique_ptr<ProjectHost> mOwnController; ///< unless the caller has one
    ProjectHost *mController;
    std::unique_ptr<HostDialogs> mDialogs;
    std::unique_ptr<FileLock> mLock; ///< of the project that is reserved
    int mExceptions;                 ///< in flight when the session was made
    QString mLoaded;                 ///< path of the project that was loaded or saved last
    FileIdentity mLoadedFile;        ///< its state then
};

} // namespace meridor
