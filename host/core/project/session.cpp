// SPDX-License-Identifier: MIT
#include "core/project/session.h"
#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>
#include "core/project/cancel.h"
#include "core/project/failure.h"
#include "datainterface/DataBlocks.h"
#include "datainterface/FrameAPI.h"
#include "datainterface/HostDialogs.h"
#include "datainterface/ProjectAPI.h"
#include "datainterface/vorn_error.h"

namespace meridor {
namespace {

std::unique_ptr<QTemporaryDir> makeScratch(const QString &wanted)
{
    if (VORN_GetController())
        fail(QStringLiteral("a project is open already; there is one at a time"));
    QStringList parents{wanted};
    if (wanted.isEmpty())
        parents =
            QStringList{QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation),
                        QDir::tempPath()};
    for (const QString &parent : parents) {
        if (parent.isEmpty() || !QDir().mkpath(parent))
            continue;
        auto scratch = std::make_unique<QTemporaryDir>(parent + QStringLiteral("/meridor-XXXXXX"));
        if (scratch->isValid())
            return scratch;
    }
    fail(QStringLiteral("no directory for scratch files (tried %1)")
             .arg(parents.join(QStringLiteral(", "))),
         "scratch");
}

/// Runs a step of an end; what comes after it must run even if it throws.
template <class Step> void quietly(Step step)
{
    try {
        step();
    } catch (...) {
        // A write error of the scratch disk, or an exception of the session's user. What the step
        // did not free is freed at process exit.
    }
}

/// Passes the library's progress bar and warnings to the user of the session.
class SessionDialogs final : public HostDialogs {
public:
    explicit SessionDialogs(ProjectHost &host) : mHost(host) {}

    void BeginProgress(const QString &, const QString &label, const QString &) override
    {
        mPercent = 0;
        mLabel = label;
        tell();
    }
    void SetProgressLabel(const QString &text) override { mLabel = text; }
    void SetProgressPercent(int percent) override { mPercent = percent; }
    bool PollProgress() override
    {
        tell();
        return !mHost.isCancelled();
    }
    void EndProgress() override
    {
        mPercent = -1;
        mLabel.clear();
        quietly([this] { tell(); }); // bars are closed by destructors
    }
    void ShowWarning(const QString &, const QString &text) override { mHost.AddWarning(text); }
    void ShowException(const QString &text, const QString &what, const QString &) override
    {
        mHost.AddWarning(text + QStringLiteral(": ") + what);
    }

private:
    void tell() const
    {
        if (mHost.progress())
            mHost.progress()(mPercent, mLabel);
    }

    ProjectHost &mHost;
    int mPercent = -1;
    QString mLabel;
};

} // namespace

Session::Session(const SessionOptions &options, const SessionUser &user)
    : mScratch(makeScratch(options.scratch)),
      mController(std::make_unique<ProjectHost>(user, mScratch->path())),
      mDialogs(std::make_unique<SessionDialogs>(*mController))
{
    InitializeCInterface(mController.get());
    VORN_SetHostDialogs(mDialogs.get());
    const int limit = qBound(1, options.cacheMegabytes, 2000);
    try {
        InitializeDataManager(mScratch->path(), limit * 1000000);
    } catch (const vorn_error &) {
        VORN_SetHostDialogs(nullptr);
        InitializeCInterface(nullptr);
        fail(QStringLiteral("%1: no scratch file can be made there").arg(mScratch->path()),
             "scratch");
    }
    VORN_SetProjectCompression(options.smallest ? 0 : 2);
}

// A bar that is still open is closed while the controller that it reports to exists.
Session::~Session()
{
    quietly([] { VORN_SetHostDialogs(nullptr); });
    quietly([this] {
        for (const int id : mController->GetGeoData().keys())
            mController->RemoveGeography(id);
    });
    quietly([] { ClearDataManager(); });
    quietly([this] { mController.reset(); });
    InitializeCInterface(nullptr);
}

void Session::load(const QString &path)
{
    if (!QFileInfo::exists(path))
        fail(QStringLiteral("%1: no such file").arg(path));
    mLoaded = QFileInfo(path).canonicalFilePath();
    mLoadedFile = identityOf(path);
    bool loaded = false;
    {
        const Progress bar("Opening", "Opening the project...");
        loaded = VORN_LoadProject(path);
    }
    if (loaded)
        return;
    stopIfCancelled();
    unload();
    fail(QStringLiteral("%1: not a project that this version reads").arg(path));
}

void Session::save(const QString &path)
{
    const Progress bar("Saving", "Saving the project...");
    const bool replacesLoaded =
        QFileInfo(path).canonicalFilePath() == mLoaded && !mLoaded.isEmpty();
    const bool saved = replaceFile(path, [&](const QString &beside) {
        if (!VORN_SaveProject(beside) || isCancelled())
            return false;
        if (replacesLoaded && !(identityOf(path) == mLoadedFile))
            fail(QStringLiteral("%1: another program changed it since it was read; it is left as "
                                "it is")
                     .arg(path));
        return true;
    });
    if (!saved) {
        stopIfCancelled();
        fail(QStringLiteral("%1: could not be written; what stood there is unchanged").arg(path));
    }
    mLoaded = QFileInfo(path).canonicalFilePath();
    mLoadedFile = identityOf(path);
    mController->MarkProjectClean();
}

void Session::unload()
{
    mLoaded.clear();
    try {
        VORN_UnloadProject();
    } catch (const vorn_error &) { // unloading creates a new scratch file
        fail(QStringLiteral("%1: no scratch file can be made there").arg(mScratch->path()),
             "scratch");
    }
}

} // namespace meridor
