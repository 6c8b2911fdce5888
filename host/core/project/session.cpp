// SPDX-License-Identifier: MIT
#include "core/project/session.h"
#include <QDataStream>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QStandardPaths>
#include <exception>
#include "core/project/cancel.h"
#include "core/project/failure.h"
#include "core/project/outputFile.h"
#include "datainterface/DataBlocks.h"
#include "datainterface/FrameAPI.h"
#include "datainterface/HostDialogs.h"
#include "datainterface/ProjectAPI.h"
#include "datainterface/VersionAPI.h"
#include "datainterface/vorn_error.h"

namespace meridor {
namespace {

std::unique_ptr<ScratchDirectory> makeScratch(const QString &wanted)
{
    if (VORN_GetController())
        fail(QStringLiteral("a project is open already; there is one at a time"));
    if (!wanted.isEmpty())
        return std::make_unique<ScratchDirectory>(QStringList{wanted});
    return std::make_unique<ScratchDirectory>(QStringList{
        QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation), QDir::tempPath()});
}

[[noreturn]] void failScratch(const QString &directory, const QString &reason)
{
    fail(QStringLiteral("scratch directory %1: %2").arg(directory, reason), "scratch");
}

/// The version text that a project begins with, such as "4.00.021"; empty if the file begins with
/// anything else.
QString versionText(QFile &file)
{
    QDataStream in(&file);
    quint32 bytes = 0;
    in >> bytes;
    if (bytes < 4 || bytes > 16 || bytes % 2 != 0)
        return QString();
    QString text;
    for (; bytes > 0; bytes -= 2) {
        quint16 letter = 0;
        in >> letter;
        text += QChar(letter);
    }
    static const QRegularExpression version(QStringLiteral("^\\d\\.[\\d.]*$"));
    return in.status() == QDataStream::Ok && version.match(text).hasMatch() ? text : QString();
}

/// Reads a file to its end. Returns the system's error, or an empty text.
QString readTrouble(QFile &file)
{
    QByteArray bytes(1024 * 1024, Qt::Uninitialized);
    qint64 count = 0;
    do
        count = file.read(bytes.data(), bytes.size());
    while (count > 0);
    return count < 0 ? file.errorString() : QString();
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

bool isProject(const QString &path)
{
    if (path.endsWith(QLatin1String(".vorn"), Qt::CaseInsensitive))
        return true;
    QFile file(path);
    return QFileInfo(path).isFile() && file.open(QIODevice::ReadOnly)
           && !versionText(file).isEmpty();
}

Session::Session(const SessionOptions &options, const SessionUser &user, ProjectHost *host)
    : mScratch(makeScratch(options.scratch)),
      mOwnController(host ? nullptr : std::make_unique<ProjectHost>()),
      mController(host ? host : mOwnController.get()),
      mDialogs(user.dialogs ? nullptr : std::make_unique<SessionDialogs>(*mController)),
      mExceptions(std::uncaught_exceptions())
{
    mController->begin(user, mScratch->path());
    InitializeCInterface(mController);
    VORN_SetHostDialogs(user.dialogs ? user.dialogs : mDialogs.get());
    const int limit = qBound(1, options.cacheMegabytes, 2000);
    try {
        InitializeDataManager(mScratch->path(), limit * 1000000);
    } catch (const vorn_error &) {
        VORN_SetHostDialogs(nullptr);
        InitializeCInterface(nullptr);
        failScratch(mScratch->path(), mScratch->trouble());
    }
    VORN_SetProjectCompression(options.smallest ? 0 : 1);
}

// A bar that is still open is closed while the controller that it reports to exists.
Session::~Session()
{
    quietly([this] {
        const QString reason =
            std::uncaught_exceptions() > mExceptions ? mScratch->trouble() : QString();
        if (!reason.isEmpty())
            mController->tellScratchFailed(
                QStringLiteral("scratch directory %1: %2").arg(mScratch->path(), reason));
    });
    quietly([] { VORN_SetHostDialogs(nullptr); });
    quietly([this] {
        for (const int id : mController->GetGeoData().keys())
            mController->RemoveGeography(id);
    });
    quietly([] { ClearDataManager(); });
    quietly([this] {
        if (!mOwnController)
            mController->begin({}, QString());
        mOwnController.reset();
    });
    InitializeCInterface(nullptr);
}

void Session::reserve(const QString &path)
{
    if (isStream(path) || (mLock && mLock->holds(path)))
        return;
    mLock = std::make_unique<FileLock>(path); // a refusal leaves the present one held
}

void Session::load(const QString &path)
{
    requireReadable(path);
    bool loaded = false;
    {
        const Progress bar("Opening", "Opening the project...");
        mLoaded = QFileInfo(path).canonicalFilePath();
        mLoadedFile = identityOf(path);
        loaded = VORN_LoadProject(path);
    }
    if (!loaded)
        failLoad(path);
}

/// The library says only that a load failed; the reason is looked for here.
void Session::failLoad(const QString &path)
{
    mLoaded.clear();
    const QString reason = isCancelled() ? QString() : mScratch->trouble();
    if (!reason.isEmpty())
        failScratch(mScratch->path(), reason);
    unload();
    stopIfCancelled();
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        fail(QStringLiteral("%1: %2").arg(path, file.errorString()));
    const QString version = versionText(file);
    const QString trouble = readTrouble(file);
    if (!trouble.isEmpty())
        fail(QStringLiteral("%1: %2").arg(path, trouble));
    if (version.isEmpty())
        fail(QStringLiteral("%1: not a project that this version reads").arg(path));
    SetDataInterfaceVersionLoading(version);
    if (dataInterfaceVersionLoading > serializationVersionNumber)
        fail(QStringLiteral("%1: is of version %2, which is newer than this one")
                 .arg(path, version));
    fail(QStringLiteral("%1: a project of version %2 that is damaged or cut off")
             .arg(path, version));
}

void Session::loadPacked(const QString &path)
{
    const struct Setting {
        Setting() { VORN_SetProjectLoading(true); }
        ~Setting() { VORN_SetProjectLoading(false); }
    } isPacked;
    load(path);
}

void Session::save(const QString &path)
{
    reserve(path);
    const Progress bar("Saving", "Saving the project...");
    const bool replacesLoaded =
        QFileInfo(path).canonicalFilePath() == mLoaded && !mLoaded.isEmpty();
    replaceFile(path, [&](const QString &beside) {
        if (!VORN_SaveProject(beside)) {
            stopIfCancelled();
            const QString disk = appendTrouble(beside);
            const QString scratch = mScratch->trouble();
            if (disk.isEmpty() && !scratch.isEmpty())
                failScratch(mScratch->path(), scratch);
            fail(QStringLiteral("%1: %2; what stood there is unchanged")
                     .arg(path, disk.isEmpty() ? QStringLiteral("could not be written") : disk));
        }
        stopIfCancelled();
        if (replacesLoaded && !(identityOf(path) == mLoadedFile))
            fail(QStringLiteral("%1: another program changed it since it was read; it is left as "
                                "it is")
                     .arg(path));
        return true;
    });
    mLoaded = QFileInfo(path).canonicalFilePath();
    mLoadedFile = identityOf(path);
    mController->MarkProjectClean();
}

void Session::unload()
{
    mLoaded.clear();
    mLock.reset();
    try {
        VORN_UnloadProject();
    } catch (const vorn_error &) { // unloading creates a new scratch file
        failScratch(mScratch->path(), mScratch->trouble());
    }
}

} // namespace meridor
