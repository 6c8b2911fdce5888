// SPDX-License-Identifier: MIT
/// The open project and what the windows share of it: times, selections, the log, and the one place
/// through which they ask the library for work. It listens to the library and tells the windows.
#pragma once
#include <QDateTime>
#include <QHash>
#include <QObject>
#include <QString>
#include <QVector>
#include <functional>
#include <memory>
#include "core/project/session.h"
#include "datainterface/DataId.h"
#include "desk/project/actionLog.h"
#include "desk/project/selection.h"

class MDataSource;
class MGeoData;
class MLinker;

namespace meridor {

struct ImportOptions;
class Progress;

/// Work that a process which ended, or was killed, had not saved.
struct Recovery {
    QString file;
    QString project; ///< empty: it was never saved
    QDateTime saved;
};

/// Ids of geographies and datasets are those of the library. All calls are made on the main thread.
class Workspace : public QObject {
    Q_OBJECT
public:
    /// @param host  the library's controller, not owned.
    Workspace(ProjectHost &host, const SessionOptions &options);
    ~Workspace() override;

    Selection &selection() { return mSelection; }
    ActionLog &log() { return mLog; }
    ProjectHost &host() { return mHost; }

    // Work
    /// Runs `work` with the library's progress dialog, which can cancel it. The user is told of a
    /// Failure and of an exception of the library in one sentence; a cancel is told as "cancelled".
    /// Signals about added and removed geographies are emitted at the end. Refused, and told, while
    /// other work is running, which a timer or an event can bring about.
    /// @param title  of the dialog, and of a message.
    /// @return whether the work was done.
    bool run(const QString &title, const std::function<void(const Progress &)> &work);
    /// The same for short reads: without a dialog.
    bool look(const std::function<void()> &work);
    /// Whether run() or look() is working. The dialog processes events: a timer or a paint that needs
    /// the library must not ask it now, and is to come back after idle().
    bool isBusy() const { return mDepth > 0; }
    /// Whether a widget is being painted. Meanwhile the progress dialog processes no events.
    bool isPainting() const { return mIsPainting; }
    void setPainting(bool isPainting) { mIsPainting = isPainting; }
    /// Tells the user a sentence, in the line of messages and in the log.
    void tell(const QString &text, bool isTrouble = false);

    // The project
    /// Replaces the present project. False after telling the user why not: the present one stays open
    /// if the file cannot be read, and none is open if it holds no project or is locked.
    bool open(const QString &path);
    /// The same for a project that another process holds: it is there to be looked at, and to be saved
    /// under other names.
    bool openUnlocked(const QString &path);
    void close();
    /// @param path  empty: the present one.
    bool save(const QString &path = QString());
    /// Opens the file again, without the changes.
    bool revert();
    /// Adds a map, grid or cube to the project. @return the geography; -1 after telling why not.
    int import(const ImportOptions &options);
    /// Empty for a project that was never saved.
    const QString &path() const { return mPath; }
    /// The name of the project in command lines.
    QString commandPath() const;
    bool isDirty() const { return mIsDirty; }
    /// To be called after each change of the project: within run() or look() before the log has its
    /// line, else after that. The mark is taken back by save and open.
    void markDirty();
    /// The project agrees with its file again; its recovery copy goes.
    void markClean();

    // Recovery
    /// Saves a copy beside the project, see recoveryOf(), if it changed since the last one. False if
    /// there is nothing to save or it failed; a failure is told once for each file.
    bool saveRecovery();
    /// The file that saveRecovery() writes for a project; for one without a name, or in a folder that
    /// cannot be written, a file of this process. It is removed by save() and close().
    static QString recoveryOf(const QString &project);
    /// The work that ended processes left of these projects and of projects without a name.
    static QVector<Recovery> recoveries(const QStringList &projects);
    /// What was found when the project was opened, and moved aside.
    static QVector<Recovery> earlierWork(const QString &project);
    /// Opens what was recovered as its project, with changes.
    bool recover(const Recovery &recovery);

    // Times
    /// The time that views of the geography show; the last one of the geography at first.
    qint64 timeOf(int geography);
    /// With isInStep() every geography with the same time format, within its own bounds.
    /// @param driver  only views that it drives follow; null: all.
    void setTime(int geography, qint64 time, MLinker *driver = nullptr);
    /// The instants from which on a shape or a value of a dataset is another one, ascending.
    const QVector<qint64> &stepsOf(int geography);
    bool isInStep() const { return mInStep; }
    void setInStep(bool inStep) { mInStep = inStep; }

    // Neighbours
    /// The weight set whose neighbours of the hovered object are shown; -1: none.
    int shownWeights(int geography) const { return mShownWeights.value(geography, -1); }
    void setShownWeights(int geography, int set);

    // Views
    /// Registers a view: it is linked with those that are linked, and with its geography's objects.
    /// Views take themselves out when they are destroyed.
    void addView(MLinker *view, int geography);
    const QVector<MLinker *> &views() const { return mViews; }
    /// Takes a view out of its group into one of its own, and back.
    void unlink(MLinker *view);
    void link(MLinker *view, MLinker *with);
    /// Calls UpdateView of the views that `driver` drives; of all if it is null.
    void updateViews(MLinker *driver);

    /// Called by the controller when it has added a geography: the windows are told when what is
    /// adding it has returned.
    void meetSoon();
    /// Called by the controller before it deletes a geography.
    void geographyDies(int geography);

Q_SIGNALS:
    void opened();
    void refusedLock(const QString &path); ///< open() would have to be openUnlocked()
    void closing();
    void closed();
    void pathChanged(const QString &path);
    void dirtyChanged(bool dirty);
    void told(const QString &text, bool isTrouble);
    void idle(); ///< run() has ended, or, when events are processed again, look()
    void geographyAdded(int geography);
    void geographyDying(int geography); ///< it still exists
    void geographyRenamed(int geography);
    void datasetsAdded(const QVector<int> &datasets);
    void datasetsDying(const QVector<int> &datasets); ///< they still exist
    void datasetsChanged(const QVector<int> &datasets);
    void datasetRenamed(int dataset);
    void weightSetsChanged(int geography);
    void weightSetDying(int geography, int set); ///< it no longer exists
    void shownWeightsChanged(int geography);
    void modelsChanged(int dataset);    ///< -1: those of the project
    void objectsRemoved(int geography); ///< the objects behind them have other indices now
    void timeChanged(int geography, qint64 time);
    void stepsChanged(int geography);

public Q_SLOTS:
    // The library connects these by their names.
    void DatasetsDyingSlot(const QList<DataId> &ids);
    void DatasetsAddedSlot(const QList<DataId> &ids, bool flag);
    void DatasetsChangedSlot(const QList<DataId> &ids);
    void DatasetNameChangedSlot(const DataId &id, const QString &name);
    void SuspendDataUsageSlot(MDataSource *source);
    void ResumeDataUsageSlot(MDataSource *source);
    void GeographyNameChangedSlot(MGeoData *geography, const char *name);
    void ObjectsWillBeRemovedSlot(int geography, const QSet<int> &objects);
    void ObjectsWereRemovedSlot(int geography, const QSet<int> &objects);
    void WeightSetAddedSlot(MGeoData *geography, qint32 id);
    void WeightSetRemovedSlot(MGeoData *geography, qint32 id);
    void WeightSetChangedSlot(MGeoData *geography, qint32 id);
    void WeightSetRenamedSlot(MGeoData *geography, qint32 id, const char *name);
    void VariogramModelAddedSlot(const DataId &id, qint32 model);
    void VariogramModelRemovedSlot(const DataId &id, qint32 model);
    void VariogramModelChangedSlot(const DataId &id, qint32 model);
    void NonConVariogramModelAddedSlot(qint32 model);
    void NonConVariogramModelRemovedSlot(qint32 model);
    void NonConVariogramModelChangedSlot(qint32 model);

private:
    class Dialogs;
    class Busy;
    class Messages;

    bool attempt(const QString &title, const std::function<void()> &work);
    bool load(const QString &file, bool isPacked);
    bool open(const QString &path, bool locks);
    void leave();
    void removeRecovery();
    void setPath(const QString &path);
    void setDirty(bool dirty);
    void meetGeographies();
    void restSoon();
    void leaveTimelessness();
    void viewDies(MLinker *view);

    ProjectHost &mHost;
    Selection mSelection;
    ActionLog mLog;
    std::unique_ptr<Messages> mMessages;
    std::unique_ptr<Dialogs> mDialogs;
    Session mSession;
    QString mPath;
    bool mIsLocked = false; ///< the project can be saved in its place
    bool mIsDirty = false;
    bool mIsRecoveryStale = false;           ///< the project changed since saveRecovery()
    QString mUnwritten;                      ///< the recovery file that could not be written
    std::unique_ptr<FileLock> mRecoveryLock; ///< shows that a file without a project is in use
    int mDepth = 0;
    bool mIsIdleDue = false; ///< idle() follows a look()
    bool mIsPainting = false;
    bool mInStep = false;
    QHash<int, qint64> mTimes;
    QHash<int, QVector<qint64>> mSteps;
    QHash<int, int> mShownWeights;
    QVector<int> mKnown; ///< geographies that windows were told of
    QVector<MLinker *> mViews;
};

} // namespace meridor
