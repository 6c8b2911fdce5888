// SPDX-License-Identifier: MIT
#include "desk/project/workspace.h"
#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QRandomGenerator>
#include <QStandardPaths>
#include <QTimer>
#include <algorithm>
#include <exception>
#include <optional>
#include <utility>
#include "core/formats/cubeReader.h"
#include "core/formats/rasterReader.h"
#include "core/geostatistics/variogramModels.h"
#include "core/import/cubeImporter.h"
#include "core/import/rasterImporter.h"
#include "core/project/catalog.h"
#include "core/project/failure.h"
#include "core/project/fileLock.h"
#include "core/project/geographyTimes.h"
#include "core/project/safeFile.h"
#include "datainterface/GeographyAPI.h"
#include "datainterface/HostDialogs.h"
#include "datainterface/MGeoData.h"
#include "datainterface/MLinker.h"
#include "datainterface/ProjectAPI.h"
#include "datainterface/VORN_Progress.h"
#include "desk/project/importLine.h"

namespace meridor {

/// Passes the progress dialog of the library on when work takes a while, and turns its warnings into
/// messages. A dialog that comes and goes at once would flicker, and while it is modal without being
/// on the screen yet, the window system's news that the main window has the keyboard focus is lost.
class Workspace::Dialogs final : public HostDialogs {
public:
    explicit Dialogs(Workspace &workspace) : mWorkspace(workspace) {}

    void BeginProgress(const QString &title, const QString &label,
                       const QString &cancelText) override
    {
        mBar = {title, label, cancelText, 0, {}};
        mQt = nullptr;
        mSinceBegin.start();
    }
    void SetProgressLabel(const QString &text) override
    {
        mBar.label = text;
        if (HostDialogs *const qt = shown())
            qt->SetProgressLabel(text);
    }
    void SetProgressPercent(int percent) override
    {
        mBar.percent = percent;
        if (HostDialogs *const qt = shown())
            qt->SetProgressPercent(percent);
    }
    bool PollProgress() override
    {
        HostDialogs *const qt = shown();
        return !qt || qt->PollProgress();
    }
    void SetProgressButton(const QString &text, bool resetOnCancel) override
    {
        mBar.cancelText = text;
        mBar.resetsOnCancel = resetOnCancel;
        if (HostDialogs *const qt = shown())
            qt->SetProgressButton(text, resetOnCancel);
    }
    void ResetProgress() override
    {
        if (mQt)
            mQt->ResetProgress();
    }
    void EndProgress() override
    {
        if (HostDialogs *const qt = std::exchange(mQt, nullptr))
            qt->EndProgress();
    }
    void ShowWarning(const QString &, const QString &text) override { mWorkspace.tell(text, true); }
    void ShowException(const QString &text, const QString &what, const QString &) override
    {
        mWorkspace.tell(text + QStringLiteral(": ") + what, true);
    }

private:
    struct Bar {
        QString title;
        QString label;
        QString cancelText;
        int percent = 0;
        std::optional<bool> resetsOnCancel; ///< once it was said
    };

    /// The dialogs of Qt if the bar is on the screen; null while the work is young. Their bar
    /// processes events: in a paint that would start a paint in the midst of another.
    HostDialogs *shown()
    {
        if (mWorkspace.mIsPainting)
            return nullptr;
        if (mQt || mSinceBegin.elapsed() < kRestBeforeBar)
            return mQt;
        mQt = VORN_GetQtDialogs();
        if (!mQt)
            return nullptr;
        mQt->BeginProgress(mBar.title, mBar.label, mBar.cancelText);
        if (mBar.resetsOnCancel)
            mQt->SetProgressButton(mBar.cancelText, *mBar.resetsOnCancel);
        // The focus may be on its way from a dialog that was closed a moment ago.
        const qint64 begin = mSinceBegin.elapsed();
        while (mQt && !QApplication::activeWindow()
               && mSinceBegin.elapsed() < begin + kMostWaitForFocus)
            QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
        if (mQt && mBar.percent > 0)
            mQt->SetProgressPercent(mBar.percent);
        return mQt;
    }

    static constexpr qint64 kRestBeforeBar = 400; ///< milliseconds
    static constexpr qint64 kMostWaitForFocus = 200;

    Workspace &mWorkspace;
    Bar mBar;
    HostDialogs *mQt = nullptr; ///< while the bar is shown
    QElapsedTimer mSinceBegin;
};

/// Shows the notes of work in the line of messages and in the log.
class Workspace::Messages final : public Notes {
public:
    explicit Messages(Workspace &workspace) : mWorkspace(workspace) {}
    void note(const QString &text) const override { mWorkspace.tell(text); }
    void warn(const QString &text) const override { mWorkspace.tell(text, true); }

private:
    Workspace &mWorkspace;
};

/// Counts nested work, and tells the windows of its end.
class Workspace::Busy {
public:
    explicit Busy(Workspace &workspace) : mWorkspace(workspace) { ++mWorkspace.mDepth; }
    ~Busy() { --mWorkspace.mDepth; }
    Busy(const Busy &) = delete;
    Busy &operator=(const Busy &) = delete;

private:
    Workspace &mWorkspace;
};

namespace {

SessionUser userOf(HostDialogs &dialogs, const Notes &notes)
{
    SessionUser user;
    user.notes = &notes;
    user.dialogs = &dialogs;
    user.variogramFitter = &fitRequestedModel;
    user.cancel = [] {
        return VORN_Progress::UsingProgressBar() && VORN_Progress::ProgressBarCanceled();
    };
    return user;
}

const QString kUntitled = QStringLiteral("untitled.vorn");

/// Where unsaved work is kept that belongs to no project file.
QString recoveryFolder()
{
    return QStandardPaths::writableLocation(QStandardPaths::AppLocalDataLocation);
}

/// Whether files can be made in the folder of a project, or in that of the file that it links to.
bool mayWriteBeside(const QString &project)
{
    return QFileInfo(QFileInfo(replacedFile(project)).absolutePath()).isWritable();
}

/// A recovery file that was there when its project was opened is moved here, so that the next one
/// does not replace it.
QString earlierRecovery(const QString &project)
{
    return Workspace::recoveryOf(project) + QStringLiteral(".earlier");
}

/// False while another process holds the lock of a file.
bool isFree(const QString &file)
{
    try {
        const FileLock probe(file);
        return true;
    } catch (const Failure &) {
        return false;
    }
}

} // namespace

Workspace::Workspace(ProjectHost &host, const SessionOptions &options)
    : mHost(host),
      mMessages(std::make_unique<Messages>(*this)),
      mDialogs(std::make_unique<Dialogs>(*this)),
      mSession(options, userOf(*mDialogs, *mMessages), &host)
{
    mHost.AddNonConVariogramModelListener(this);
    connect(this, &Workspace::idle, this, &Workspace::leaveTimelessness);
}

// The project goes while all members that it notifies exist.
Workspace::~Workspace()
{
    leave();
}

void Workspace::tell(const QString &text, bool isTrouble)
{
    mLog.remark(text);
    Q_EMIT told(text, isTrouble);
}

bool Workspace::attempt(const QString &title, const std::function<void()> &work)
{
    QString trouble;
    try {
        const Busy busy(*this);
        work();
    } catch (const Failure &failure) {
        trouble = failure.kind() == FailureKind::Cancelled ? tr("cancelled") : failure.text();
    } catch (const std::bad_alloc &) {
        trouble = tr("there is not enough memory");
    } catch (const std::exception &error) {
        trouble = QString::fromUtf8(error.what());
    }
    if (mDepth == 0)
        meetGeographies();
    if (trouble.isNull())
        return true;
    tell(title.isEmpty() ? trouble : title + QStringLiteral(": ") + trouble, true);
    return false;
}

bool Workspace::run(const QString &title, const std::function<void(const Progress &)> &work)
{
    if (isBusy()) { // the outermost work has the dialog
        tell(tr("%1: something else is being done").arg(title), true);
        return false;
    }
    const bool done = attempt(title, [&] {
        const Progress progress(title.toUtf8().constData(), title.toUtf8().constData());
        work(progress);
    });
    Q_EMIT idle();
    return done;
}

bool Workspace::look(const std::function<void()> &work)
{
    const bool done = attempt(QString(), work);
    if (!isBusy())
        restSoon();
    return done;
}

/// What came while look() worked is done after the event that looked, which may be a paint.
void Workspace::restSoon()
{
    if (std::exchange(mIsIdleDue, true))
        return;
    QTimer::singleShot(0, this, [this] {
        mIsIdleDue = false;
        if (!isBusy()) // else its end tells
            Q_EMIT idle();
    });
}

void Workspace::setPath(const QString &path)
{
    mPath = path;
    Q_EMIT pathChanged(path);
}

void Workspace::setDirty(bool dirty)
{
    if (mIsDirty == dirty)
        return;
    mIsDirty = dirty; // first, since the host marks this workspace in turn
    if (dirty)
        mHost.MarkProjectDirty();
    else
        mHost.MarkProjectClean();
    Q_EMIT dirtyChanged(dirty);
}

// Work that changes the project is noted when it is done.
void Workspace::markDirty()
{
    mLog.changed(!isBusy());
    mIsRecoveryStale = true;
    setDirty(true);
}

void Workspace::markClean()
{
    if (!mIsDirty)
        return;
    removeRecovery();
    mIsRecoveryStale = false;
    setDirty(false);
}

QString Workspace::commandPath() const
{
    return mPath.isEmpty() ? kUntitled : pathWord(mPath);
}

bool Workspace::load(const QString &file, bool isPacked)
{
    const bool loaded =
        attempt(tr("Open"), [&] { isPacked ? mSession.loadPacked(file) : mSession.load(file); });
    if (!loaded)
        leave();
    return loaded;
}

bool Workspace::open(const QString &path)
{
    // One that cannot be saved in its place is there to be looked at, and for other names.
    return open(path, mayWriteBeside(path));
}

bool Workspace::openUnlocked(const QString &path)
{
    return open(path, false);
}

bool Workspace::open(const QString &file, bool locks)
{
    const QString path = file; // which may be path(), and that is cleared
    if (!attempt(tr("Open"), [&] { requireReadable(path); }))
        return false;
    close();
    if (locks && !attempt(tr("Open"), [&] { mSession.reserve(path); })) {
        Q_EMIT refusedLock(path);
        return false;
    }
    if (!load(path, true))
        return false;
    mIsLocked = locks;
    // Without the lock it may be that of the process that works on the project.
    if (const QString left = recoveryOf(path); locks && QFileInfo::exists(left)) {
        QFile::remove(earlierRecovery(path));
        QFile::rename(left, earlierRecovery(path));
    }
    setPath(QFileInfo(path).absoluteFilePath());
    mLog.did({QStringLiteral("info"), commandPath()});
    Q_EMIT opened();
    if (!locks)
        tell((mayWriteBeside(path)
                  ? tr("%1 is changed by another program: changes are saved under "
                       "another name only.")
                  : tr("The folder of %1 cannot be written: changes are saved under "
                       "another name only."))
                 .arg(path));
    return true;
}

void Workspace::close()
{
    removeRecovery();
    leave();
}

void Workspace::leave()
{
    Q_EMIT closing();
    attempt(QString(), [&] { mSession.unload(); });
    mTimes.clear();
    mSteps.clear();
    mShownWeights.clear();
    mRecoveryLock.reset();
    mUnwritten.clear();
    mIsRecoveryStale = false;
    mIsLocked = false;
    mLog.discarded();
    setPath(QString());
    setDirty(false);
    Q_EMIT closed();
}

bool Workspace::save(const QString &path)
{
    const QString target = path.isEmpty() ? mPath : QFileInfo(path).absoluteFilePath();
    if (target.isEmpty()) {
        tell(tr("The project has no name yet."), true);
        return false;
    }
    const QString before = mPath.isEmpty() ? QString() : commandPath();
    if (!attempt(tr("Save"), [&] { mSession.save(target); }))
        return false;
    removeRecovery();
    setPath(target);
    mIsLocked = true;
    mLog.saved(before, commandPath(), kUntitled);
    setDirty(false);
    tell(tr("Saved as %1").arg(target));
    return true;
}

bool Workspace::revert()
{
    const QString path = mPath;
    if (path.isEmpty()) {
        tell(tr("The project was never saved; there is nothing to go back to."), true);
        return false;
    }
    return open(path);
}

QString Workspace::recoveryOf(const QString &project)
{
    // Not the number of the process: another one may have had it, and left its work.
    static const quint64 own = QRandomGenerator::system()->generate64();
    if (project.isEmpty())
        return QStringLiteral("%1/untitled-%2.recovery")
            .arg(recoveryFolder(), QString::number(own, 16));
    const QFileInfo file(project);
    return file.absolutePath() + QStringLiteral("/.") + file.fileName()
           + QStringLiteral(".recovery");
}

QVector<Recovery> Workspace::recoveries(const QStringList &projects)
{
    QVector<Recovery> found;
    const auto add = [&found](const QString &file, const QString &project) {
        const QFileInfo info(file);
        if (info.exists() && isFree(project.isEmpty() ? file : project))
            found.append({file, project, info.lastModified()});
    };
    for (const QString &project : projects) {
        add(recoveryOf(project), project);
        add(earlierRecovery(project), project);
    }
    const QDir folder(recoveryFolder());
    for (const QString &name :
         folder.entryList({QStringLiteral("untitled-*.recovery")}, QDir::Files))
        add(folder.filePath(name), QString());
    return found;
}

QVector<Recovery> Workspace::earlierWork(const QString &project)
{
    const QFileInfo info(earlierRecovery(project));
    if (!info.exists())
        return {};
    return {{info.filePath(), project, info.lastModified()}};
}

// The values are read at once, since the file goes when the project is saved.
bool Workspace::recover(const Recovery &recovery)
{
    close();
    const QString &project = recovery.project;
    if (!project.isEmpty() && !attempt(tr("Open"), [&] { mSession.reserve(project); }))
        return false;
    if (!load(recovery.file, false))
        return false;
    setPath(project.isEmpty() ? project : QFileInfo(project).absoluteFilePath());
    mIsLocked = !project.isEmpty();
    mLog.remark(tr("Work of an earlier session that was not saved is here again. The command lines "
                   "that made it are not known."));
    markDirty();
    if (saveRecovery() && recovery.file != recoveryOf(mPath))
        QFile::remove(recovery.file);
    Q_EMIT opened();
    return true;
}

bool Workspace::saveRecovery()
{
    const QString besideNone = recoveryOf(QString());
    const QString target = mIsLocked && mayWriteBeside(mPath) ? recoveryOf(mPath) : besideNone;
    if (!mIsDirty || !mIsRecoveryStale || isBusy() || mUnwritten == target)
        return false;
    const bool isSaved = attempt(tr("Copy for recovery"), [&] {
        QDir().mkpath(QFileInfo(target).absolutePath());
        if (target == besideNone && !mRecoveryLock)
            mRecoveryLock = std::make_unique<FileLock>(target);
        replaceFile(target, [&](const QString &beside) {
            if (!VORN_SaveProject(beside))
                failWriting(target, beside);
            return true;
        });
    });
    mIsRecoveryStale = !isSaved;
    if (!isSaved)
        mUnwritten = target;
    return isSaved;
}

/// The files are of this process only once the project has changes.
void Workspace::removeRecovery()
{
    if (mIsDirty)
        QFile::remove(recoveryOf(QString()));
    if (mIsDirty && mIsLocked)
        QFile::remove(recoveryOf(mPath));
    mRecoveryLock.reset();
}

int Workspace::import(const ImportOptions &options)
{
    int made = -1;
    const bool append = !mPath.isEmpty() || !geographyIds().isEmpty();
    run(tr("Import"), [&](const Progress &progress) {
        const Notes &notes = mHost.notes();
        made = (isCubeFile(options.map)     ? importCube(options, notes, progress)
                : isRasterFile(options.map) ? importRaster(options, notes, progress)
                                            : importMap(options, notes, progress))
                   .geography;
    });
    if (made < 0)
        return made;
    mLog.did(importLine(options, commandPath(), append));
    markDirty();
    return made;
}

qint64 Workspace::timeOf(int geography)
{
    const auto known = mTimes.constFind(geography);
    if (known != mTimes.constEnd())
        return *known;
    qint64 time = 0;
    const QVector<qint64> &steps = stepsOf(geography);
    if (!steps.isEmpty())
        time = steps.last();
    mTimes.insert(geography, time);
    return time;
}

/// Static shapes have the time 0 until values that change are added: then they have the last of these.
void Workspace::leaveTimelessness()
{
    for (const int id : geographyIds()) {
        if (!mTimes.contains(id) || !geographyOf(id)->IsStatic() || stepsOf(id).isEmpty())
            continue;
        const TimeStamp bounds = timeBoundsOf(id);
        if (mTimes[id] < bounds.startTime || mTimes[id] > bounds.endTime)
            setTime(id, stepsOf(id).last());
    }
}

void Workspace::setTime(int geography, qint64 time, MLinker *driver)
{
    const MGeoData *const chosen = geographyOf(geography);
    if (!chosen)
        return;
    for (const int id : geographyIds()) {
        MGeoData *const other = geographyOf(id);
        if (id != geography
            && !(mInStep && other->GetTheTimeFormat() == chosen->GetTheTimeFormat()))
            continue;
        qint64 wanted = time;
        if (id != geography && !stepsOf(id).isEmpty()) {
            const TimeStamp bounds = timeBoundsOf(id);
            wanted = std::min(std::max(time, bounds.startTime), lastInstantOf(Interval(bounds)));
        }
        if (timeOf(id) == wanted)
            continue;
        mTimes[id] = wanted;
        Q_EMIT timeChanged(id, wanted);
    }
    updateViews(driver);
}

const QVector<qint64> &Workspace::stepsOf(int geography)
{
    auto known = mSteps.find(geography);
    if (known != mSteps.end())
        return *known;
    QVector<qint64> steps;
    look([&] {
        // What holds for good has a span without ends or the time 0, which is no step beside others.
        QVector<Interval> spans;
        for (const int dataset : datasetIds(geography)) {
            const int count = std::max(1, datasetOf(dataset)->GetRealizationCount());
            for (int i = 0; i < count && !datasetOf(dataset)->IsStatic(); ++i)
                spans += dataTimes(dataset, i);
        }
        if (spans.isEmpty() || !geographyOf(geography)->IsStatic())
            spans += objectTimes(geography);
        for (const Interval &span : std::as_const(spans))
            steps.append(instantOf(span));
    });
    std::sort(steps.begin(), steps.end());
    steps.erase(std::unique(steps.begin(), steps.end()), steps.end());
    return *mSteps.insert(geography, steps);
}

void Workspace::setShownWeights(int geography, int set)
{
    if (shownWeights(geography) == set)
        return;
    mShownWeights[geography] = set;
    Q_EMIT shownWeightsChanged(geography);
}

void Workspace::addView(MLinker *view, int geography)
{
    MGeoData *const data = geographyOf(geography);
    if (!data || mViews.contains(view))
        return;
    view->SetAttributes(mSelection.attributes(geography));
    data->AddObjectManager(view);
    if (!mViews.isEmpty())
        MLinker::LinkViews(mViews.first(), view);
    mViews.append(view);
    connect(view, &MLinker::ObjectManagerDying, this, [this](MLinker *gone) { viewDies(gone); });
}

void Workspace::viewDies(MLinker *view)
{
    mViews.removeAll(view);
}

void Workspace::unlink(MLinker *view)
{
    for (MLinker *const other : std::as_const(mViews)) {
        if (other == view)
            continue;
        other->Unlink(view);
        view->Unlink(other);
    }
}

void Workspace::link(MLinker *view, MLinker *with)
{
    MLinker::LinkViews(with, view);
}

void Workspace::updateViews(MLinker *driver)
{
    if (driver) {
        driver->UpdateLinkedViews();
        return;
    }
    const QVector<MLinker *> views = mViews; // an update may close one
    for (MLinker *const view : views)
        if (mViews.contains(view))
            view->UpdateView();
}

void Workspace::meetGeographies()
{
    const QVector<int> present = geographyIds();
    for (const int id : present) {
        if (mKnown.contains(id))
            continue;
        mKnown.append(id);
        mTimes.remove(id); // what was asked while it was being made
        mSteps.remove(id);
        MGeoData *const data = geographyOf(id);
        data->AddListener(this);
        data->AddSpatialWeightSetListener(this);
        data->AddVariogramModelListener(this);
        Q_EMIT geographyAdded(id);
    }
}

void Workspace::meetSoon()
{
    QMetaObject::invokeMethod(
        this,
        [this] {
            if (!isBusy()) // else at the end of the work
                meetGeographies();
        },
        Qt::QueuedConnection);
}

void Workspace::geographyDies(int geography)
{
    if (mKnown.removeAll(geography) > 0)
        Q_EMIT geographyDying(geography);
    mSelection.forget(geography);
    mTimes.remove(geography);
    mSteps.remove(geography);
    mShownWeights.remove(geography);
}

namespace {

QVector<int> plain(const QList<DataId> &ids)
{
    return QVector<int>(ids.begin(), ids.end());
}

} // namespace

void Workspace::DatasetsDyingSlot(const QList<DataId> &ids)
{
    Q_EMIT datasetsDying(plain(ids));
}

void Workspace::DatasetsAddedSlot(const QList<DataId> &ids, bool)
{
    for (const DataId &id : ids)
        mSteps.remove(id.GeoId());
    Q_EMIT datasetsAdded(plain(ids));
    for (const DataId &id : ids)
        Q_EMIT stepsChanged(id.GeoId());
}

void Workspace::DatasetsChangedSlot(const QList<DataId> &ids)
{
    for (const DataId &id : ids)
        mSteps.remove(id.GeoId());
    Q_EMIT datasetsChanged(plain(ids));
}

void Workspace::DatasetNameChangedSlot(const DataId &id, const QString &)
{
    Q_EMIT datasetRenamed(id);
}

void Workspace::SuspendDataUsageSlot(MDataSource *)
{
}

void Workspace::ResumeDataUsageSlot(MDataSource *)
{
}

void Workspace::GeographyNameChangedSlot(MGeoData *geography, const char *)
{
    Q_EMIT geographyRenamed(geography->GetId());
}

void Workspace::ObjectsWillBeRemovedSlot(int, const QSet<int> &)
{
}

void Workspace::ObjectsWereRemovedSlot(int geography, const QSet<int> &)
{
    mSelection.forget(geography);
    mSteps.remove(geography);
    Q_EMIT objectsRemoved(geography);
    Q_EMIT stepsChanged(geography);
}

void Workspace::WeightSetAddedSlot(MGeoData *geography, qint32)
{
    Q_EMIT weightSetsChanged(geography->GetId());
}

void Workspace::WeightSetRemovedSlot(MGeoData *geography, qint32 id)
{
    if (shownWeights(geography->GetId()) == id)
        setShownWeights(geography->GetId(), -1);
    Q_EMIT weightSetDying(geography->GetId(), id);
    Q_EMIT weightSetsChanged(geography->GetId());
}

void Workspace::WeightSetChangedSlot(MGeoData *geography, qint32)
{
    Q_EMIT weightSetsChanged(geography->GetId());
}

void Workspace::WeightSetRenamedSlot(MGeoData *geography, qint32, const char *)
{
    Q_EMIT weightSetsChanged(geography->GetId());
}

void Workspace::VariogramModelAddedSlot(const DataId &id, qint32)
{
    Q_EMIT modelsChanged(id);
}

void Workspace::VariogramModelRemovedSlot(const DataId &id, qint32)
{
    Q_EMIT modelsChanged(id);
}

void Workspace::VariogramModelChangedSlot(const DataId &id, qint32)
{
    Q_EMIT modelsChanged(id);
}

void Workspace::NonConVariogramModelAddedSlot(qint32)
{
    Q_EMIT modelsChanged(-1);
}

void Workspace::NonConVariogramModelRemovedSlot(qint32)
{
    Q_EMIT modelsChanged(-1);
}

void Workspace::NonConVariogramModelChangedSlot(qint32)
{
    Q_EMIT modelsChanged(-1);
}

} // namespace meridor
