// SPDX-License-Identifier: MIT
#include "core/project/session.h"
#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>
#include "datainterface/DataBlocks.h"
#include "datainterface/FrameAPI.h"
#include "datainterface/ProjectAPI.h"
#include "core/project/failure.h"
#include "fennimark/Fennims.h"
#include "cli/interrupt.h"
#include "core/project/catalog.h"
#include "cli/terminalProgress.h"
#include "core/project/safeFile.h"

namespace meridor {
namespace {

std::unique_ptr<QTemporaryDir> makeScratch(const QString &wanted)
{
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
    fail(QStringLiteral("no directory for scratch files; --scratch names one (tried %1)")
             .arg(parents.join(QStringLiteral(", "))));
}

} // namespace

Session::Session(const SessionOptions &options, const Console &console)
    : mConsole(console),
      mScratch(makeScratch(options.scratch)),
      mController(std::make_unique<HostController>(console))
{
    // All scratch files of the library go where the platform keeps caches: that is ours alone for
    // this process.
    qputenv("XDG_CACHE_HOME", QFile::encodeName(mScratch->path()));
    Fennims::SetScratchDirectory(mScratch->path());
    setController(mController.get());
    InitializeCInterface(mController.get());
    const int limit = qBound(1, options.cacheMegabytes, 2000);
    InitializeDataManager(mScratch->path(), limit * 1000000);
    VORN_SetProjectCompression(options.smallest ? 0 : 2);
}

Session::~Session()
{
    VORN_UnloadProject();
    ClearDataManager();
}

void Session::load(const QString &path)
{
    if (!QFileInfo::exists(path))
        fail(QStringLiteral("%1: no such file").arg(path));
    const Progress bar("Opening", "Opening the project...");
    if (VORN_LoadProject(path))
        return;
    stopIfInterrupted();
    VORN_UnloadProject();
    fail(QStringLiteral("%1: not a project that this version reads").arg(path));
}

void Session::save(const QString &path)
{
    const Progress bar("Saving", "Saving the project...");
    const bool saved = replaceFile(
        path, [](const QString &beside) { return VORN_SaveProject(beside) && !interrupted(); });
    stopIfInterrupted();
    if (!saved)
        fail(QStringLiteral("%1: could not be written; what stood there is unchanged").arg(path));
    mController->MarkProjectClean();
}

void Session::unload()
{
    VORN_UnloadProject();
}

} // namespace meridor
