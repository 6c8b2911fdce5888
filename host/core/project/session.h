// SPDX-License-Identifier: MIT
/// The library's life within one piece of work: started with a scratch directory of its own,
/// stopped and swept at the end.
#pragma once
#include <QString>
#include <QTemporaryDir>
#include <memory>
#include "core/export.h"
#include "core/project/projectHost.h"
#include "core/project/safeFile.h"

class HostDialogs;

namespace meridor {

struct SessionOptions {
    QString
        scratch; ///< parent of the scratch directory; empty: the user's cache, else the system's
    int cacheMegabytes = 64;
    bool smallest = false; ///< projects packed as small as the library can, rather than quickly
};

/// One at a time in a process: a second one raises a Failure. The ends of the library and of the scratch directory never raise:
/// what the disk refuses then is left where it is.
class MERIDOR_EXPORT Session {
public:
    /// What `user` names stays the caller's and outlives the session.
    explicit Session(const SessionOptions &options, const SessionUser &user = {});
    ~Session();
    Session(const Session &) = delete;
    Session &operator=(const Session &) = delete;

    ProjectHost &controller() { return *mController; }
    const Notes &notes() const { return mController->notes(); }
    /// Raises a Failure when the file is no project that this version reads.
    void load(const QString &path);
    /// Whole or not at all: a cancel, a crash or a full disk leaves the old project as it was. A
    /// project that was loaded and has changed on the disk since is not replaced.
    void save(const QString &path);
    void unload();

private:
    std::unique_ptr<QTemporaryDir> mScratch;
    std::unique_ptr<ProjectHost> mController;
    std::unique_ptr<HostDialogs> mDialogs;
    QString mLoaded;          ///< the project that was loaded last
    FileIdentity mLoadedFile; ///< as it was then
};

} // namespace meridor
