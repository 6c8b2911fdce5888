// SPDX-License-Identifier: MIT
// The open project as the windows share it: selections, times, messages, saving and recovery.
#include <QDir>
#include <QFileInfo>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>
#include <linux/capability.h>
#include <sys/syscall.h>
#include <unistd.h>
#include "core/import/samples.h"
#include "core/project/catalog.h"
#include "core/project/failure.h"
#include "core/project/geographyTimes.h"
#include "datainterface/DataAPI.h"
#include "datainterface/GeographyAPI.h"
#include "datainterface/MDataset.h"
#include "datainterface/MGeoData.h"
#include "datainterface/RasterAPI.h"
#include "desk/person.h"
#include "desk/project/things.h"
#include "desk/project/workspace.h"

using namespace meridor;

namespace {

/// From here on the superuser is bound by the rights of files, as others are.
void giveUpWritingEverywhere()
{
    __user_cap_header_struct header = {_LINUX_CAPABILITY_VERSION_3, 0};
    __user_cap_data_struct sets[_LINUX_CAPABILITY_U32S_3] = {};
    QCOMPARE(::syscall(SYS_capget, &header, sets), 0L);
    sets[0].effective &= ~CAP_TO_MASK(CAP_DAC_OVERRIDE);
    sets[0].permitted &= ~CAP_TO_MASK(CAP_DAC_OVERRIDE);
    QCOMPARE(::syscall(SYS_capset, &header, sets), 0L);
}

} // namespace

class tst_Workspace : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void whatHoldsForGoodIsNoStep();
    void selectionsAreKeptInSteps();
    void savesRevertsAndRecovers();
    void workOfProcessesWithTheSameNumberIsFound();
    void projectsOpenWhereNothingCanBeWritten();
    void failuresAreTold();

    void cleanupTestCase() { workspace().close(); }

private:
    Workspace &workspace() { return static_cast<Application *>(qApp)->workspace(); }
    QTemporaryDir mFolder;
    int mStates = -1;
};

void tst_Workspace::initTestCase()
{
    muteSizeHints();
    ImportOptions options;
    options.map = QStringLiteral(MERIDOR_TEST_SAMPLES "/us_income/states48.geojson");
    mStates = workspace().import(options);
    QVERIFY(mStates >= 0);
    QVERIFY(workspace().isDirty());
}

/// The library gives the time 0 to it, beside what changes.
void tst_Workspace::whatHoldsForGoodIsNoStep()
{
    QCOMPARE(workspace().timeOf(mStates), qint64(0));
    QCOMPARE(workspace().stepsOf(mStates).size(), 1);
    const auto add = [&](int dataset, const QVector<qint64> &times, auto one) {
        const int count = VORN_GetGeographyProperties(VORN_GetGeographyId(dataset)).objectCount;
        const QVector<double> values(count, 2.5);
        for (const qint64 time : times)
            QVERIFY(one(dataset, Interval{time, time + 10, true, false}, values));
        VORN_NewDatasetCreated(dataset);
    };
    QVERIFY(workspace().run(QStringLiteral("values"), [&](const Progress &) {
        add(VORN_NewVectorDataset(mStates, QStringLiteral("v"), TimeSlice, DecimalType, 1, {}),
            {90000, 90010}, [](int id, const Interval &when, const QVector<double> &values) {
                return VORN_AddDataValues(id, 0, when, values, {}, true, true);
            });
    }));
    QCOMPARE(workspace().stepsOf(mStates), (QVector<qint64>{90000, 90010}));
    QCOMPARE(workspace().timeOf(mStates), qint64(90010));
    const int rain =
        workspace().import(sampleImport(Sample::Rain, QStringLiteral(MERIDOR_TEST_SAMPLES)));
    const QVector<qint64> steps = workspace().stepsOf(rain);
    const qint64 start = timeBoundsOf(rain).startTime;
    QVERIFY(workspace().run(QStringLiteral("cells"), [&](const Progress &) {
        const int always =
            VORN_NewRasterDataset(rain, QStringLiteral("height"), RasterDecimalType, 1, 64, {});
        datasetOf(always)->SetStatic(true);
        add(always, {0}, [](int id, const Interval &when, const QVector<double> &values) {
            return VORN_AddRasterValues(id, 0, when, values, -1.0, true, true);
        });
    }));
    QCOMPARE(workspace().stepsOf(rain), steps);
    QCOMPARE(timeBoundsOf(rain).startTime, start);
    QCOMPARE(chooseTimeOf(rain, QString()), steps.first());
    geographyOf(mStates)->SetTimeFormat(geographyOf(rain)->GetTheTimeFormat());
    workspace().setInStep(true);
    workspace().setTime(rain, steps.last());
    QCOMPARE(workspace().timeOf(mStates), qint64(90019)); // of another century
    workspace().setInStep(false);
    QVERIFY(removeThings(workspace(), {{Thing::Geography, rain, -1}}));
}

void tst_Workspace::selectionsAreKeptInSteps()
{
    using Ids = QVector<unsigned int>;
    Selection &selection = workspace().selection();
    QSignalSpy changes(&selection, &Selection::changed);
    selection.select(mStates, {5, 3, 3, 1000000});
    QCOMPARE(selection.selected(mStates), (Ids{3, 5}));
    selection.select(mStates, {5, 7}, SelectionMode::Toggle);
    QCOMPARE(selection.selected(mStates), (Ids{3, 7}));
    selection.select(mStates, {8}, SelectionMode::Add);
    QCOMPARE(selection.selected(mStates), (Ids{3, 7, 8}));
    QCOMPARE(changes.size(), 3);
    QVERIFY(selection.back(mStates));
    QVERIFY(selection.back(mStates));
    QCOMPARE(selection.selected(mStates), (Ids{3, 5}));
    QVERIFY(selection.forward(mStates));
    QCOMPARE(selection.selected(mStates), (Ids{3, 7}));
    selection.clear(mStates);
    QVERIFY(!selection.canGoForward(mStates));
    QCOMPARE(selection.count(mStates), 0);
}

void tst_Workspace::savesRevertsAndRecovers()
{
    const QString file = mFolder.filePath(QStringLiteral("Übersicht 1.vorn"));
    QVERIFY(workspace().save(file));
    QVERIFY(!workspace().isDirty());
    const int states = geographyIds().value(0, -1);
    QVERIFY(workspace().run(QStringLiteral("rename"), [&](const Progress &) {
        geographyOf(states)->SetName(QStringLiteral("Länder"));
    }));
    workspace().markDirty();
    QVERIFY(workspace().saveRecovery());
    QVERIFY(QFileInfo::exists(Workspace::recoveryOf(file)));
    const QString kept = mFolder.filePath(QStringLiteral("kept"));
    QVERIFY(QFile::copy(Workspace::recoveryOf(file), kept));
    QVERIFY(workspace().revert());
    QCOMPARE(geographyName(geographyIds().value(0)) == QStringLiteral("Länder"), false);
    QVERIFY(!QFileInfo::exists(Workspace::recoveryOf(file)));
    // As if the program had died. The file is kept when the project is opened again, and changed.
    QVERIFY(QFile::copy(kept, Workspace::recoveryOf(file)));
    QVERIFY(workspace().open(file));
    workspace().markDirty();
    QVERIFY(workspace().saveRecovery());
    workspace().close();
    const QVector<Recovery> left = Workspace::recoveries({file});
    QCOMPARE(left.size(), 1);
    QCOMPARE(left.first().project, file);
    QVERIFY(workspace().recover(left.first()));
    QCOMPARE(geographyName(geographyIds().value(0)), QStringLiteral("Länder"));
    QVERIFY(workspace().isDirty());
    QVERIFY(workspace().save());
    QCOMPARE(Workspace::recoveries({file}).size(), 0);
}

/// In a container the next process often has the number of the one that was killed.
void tst_Workspace::workOfProcessesWithTheSameNumberIsFound()
{
    workspace().close();
    const QDir folder(QFileInfo(Workspace::recoveryOf(QString())).absolutePath());
    QVERIFY(folder.mkpath(QStringLiteral(".")));
    const auto write = [](const QString &file, const QByteArray &content) {
        QFile out(file);
        return out.open(QIODevice::WriteOnly) && out.write(content) == content.size();
    };
    const QString file = mFolder.filePath(QStringLiteral("left.vorn"));
    const QString lockName = mFolder.filePath(QStringLiteral(".left.vorn.lock"));
    const QString untitled = folder.filePath(
        QStringLiteral("untitled-%1.recovery").arg(QCoreApplication::applicationPid()));
    ImportOptions options;
    options.map = QStringLiteral(MERIDOR_TEST_SAMPLES "/us_income/states48.geojson");
    QVERIFY(workspace().import(options) >= 0);
    QVERIFY(workspace().save(file));
    QByteArray held; // by this process
    if (QFile lock(lockName); lock.open(QIODevice::ReadOnly))
        held = lock.readAll();
    QVERIFY2(held.startsWith(QByteArray::number(QCoreApplication::applicationPid())), held);
    QVERIFY(QFile::copy(file, Workspace::recoveryOf(file)));
    QVERIFY(QFile::copy(file, untitled));
    QCOMPARE(Workspace::recoveries({file}).size(), 1); // that of the project is in use
    workspace().close();
    for (const QString &lock :
         {lockName,
          folder.filePath(QStringLiteral(".%1.lock").arg(QFileInfo(untitled).fileName()))})
        QVERIFY(write(lock, held));
    QCOMPARE(Workspace::recoveries({file}).size(), 2);
    QVERIFY(write(lockName, held));
    QVERIFY(workspace().open(file));
    workspace().close();
    // Work without a name goes elsewhere, and takes nothing with it.
    QVERIFY(workspace().import(options) >= 0);
    QVERIFY(workspace().saveRecovery());
    workspace().close();
    QCOMPARE(Workspace::recoveries({file}).size(), 2);
    QCOMPARE(QFileInfo(untitled).size(), QFileInfo(file).size());
    QVERIFY(workspace().recover({untitled, QString(), QDateTime()}));
    QCOMPARE(geographyIds().size(), 1);
}

void tst_Workspace::projectsOpenWhereNothingCanBeWritten()
{
    const QTemporaryDir folder;
    const QString file = folder.filePath(QStringLiteral("p.vorn"));
    QVERIFY(workspace().save(file));
    workspace().close(); // and with it the lock
    QFile::setPermissions(folder.path(), QFile::ReadOwner | QFile::ExeOwner);
    const auto restore = qScopeGuard([&] {
        QFile::setPermissions(folder.path(),
                              QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    });
    giveUpWritingEverywhere();
    QSignalSpy told(&workspace(), &Workspace::told);
    QVERIFY(workspace().open(file));
    QVERIFY(told.last().at(0).toString().contains(QStringLiteral("under another name")));
    workspace().markDirty();
    QVERIFY(workspace().saveRecovery());
    QCOMPARE(QDir(folder.path()).entryList(QDir::Files | QDir::Hidden), QStringList{"p.vorn"});
    QVERIFY(QFileInfo::exists(Workspace::recoveryOf(QString())));
    QVERIFY(!workspace().save());
    QVERIFY(workspace().save(mFolder.filePath(QStringLiteral("elsewhere.vorn"))));
    QVERIFY(!QFileInfo::exists(Workspace::recoveryOf(QString())));
}

void tst_Workspace::failuresAreTold()
{
    QSignalSpy told(&workspace(), &Workspace::told);
    QVERIFY(!workspace().run(QStringLiteral("Try"),
                             [](const Progress &) { fail(QStringLiteral("it is refused")); }));
    QCOMPARE(told.last().at(0).toString(), QStringLiteral("Try: it is refused"));
    QVERIFY(!workspace().open(mFolder.filePath(QStringLiteral("absent.vorn"))));
    QVERIFY(told.last().at(0).toString().contains(QStringLiteral("absent.vorn")));
    QCOMPARE(geographyIds().size(), 1); // what was open stays open
}

int main(int argc, char **argv)
{
    return runTest<tst_Workspace>(argc, argv);
}

#include "tst_Workspace.moc"
