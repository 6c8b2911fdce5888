// SPDX-License-Identifier: MIT
/// The library's life within one command: started with a scratch directory of its own, stopped and
/// swept at the end.
#pragma once
#include <QString>
#include <QTemporaryDir>
#include <memory>
#include "cli/console.h"
#include "core/project/projectHost.h"

namespace meridor {

struct SessionOptions {
    QString
        scratch; ///< parent of the scratch directory; empty: the user's cache, else the system's
    int cacheMegabytes = 64;
    bool smallest = false; ///< projects packed as small as the library can, rather than quickly
};

class Session {
public:
    Session(const SessionOptions &options, const Console &console);
    ~Session();
    Session(const Session &) = delete;
    Session &operator=(const Session &) = delete;

    HostController &controller() { return *mController; }
    /// Raises a Failure when the file is no project that this version reads.
    void load(const QString &path);
    /// Whole or not at all: a cancel, a crash or a full disk leaves the old project as it was.
    void save(const QString &path);
    void unload();

private:
    const Console &mConsole;
    std::unique_ptr<QTemporaryDir> mScratch;
    std::unique_ptr<HostController> mController;
};

} // namespace meridor
