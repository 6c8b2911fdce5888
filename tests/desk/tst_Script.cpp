// SPDX-License-Identifier: MIT
// The program from outside: steps that it plays, the log as a script for a shell, and what a killed
// process leaves.
#include <QAction>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QRegularExpression>
#include <QSettings>
#include <QTemporaryDir>
#include <QtTest>
#include <csignal>
#include "core/analysis/snapshot.h"
#include "core/project/catalog.h"
#include "core/project/fileLock.h"
#include "desk/person.h"
#include "desk/project/workspace.h"
#include "desk/window/mainWindow.h"
#include "desk/window/settings.h"

using namespace meridor;

namespace {

// Steps as JSON, with grave accents for quotation marks.
const char *const kImport =
    "{`do`: `import`, `file`: `%1/us_income/states48.geojson`, `name`: `states`, `key`: `fips`,"
    "`tables`: [`%1/us_income/income_1929_2009.csv`], `series`: [`income=1929..2009`]}";

/// The last changes are given up.
const char *const kSession =
    ","
    " {`do`: `method`, `name`: `weights`,"
    " `parameters`: {`geography`: `states`, `name`: `queen`, `method`: `queen`}},"
    " {`do`: `save`, `file`: `first it's.vorn`},"
    " {`do`: `method`, `name`: `moran`,"
    " `parameters`: {`dataset`: `income`, `weights`: `queen`, `permutations`: 49, `seed`: 3,"
    " `local`: true, `save`: `income Moran`}},"
    " {`do`: `duplicate`, `weights`: `queen`},"
    " {`do`: `rename`, `weights`: `queen copy`, `to`: `-it's ö`},"
    " {`do`: `duplicate`, `weights`: `-it's ö`},"
    " {`do`: `remove`, `weights`: `queen`},"
    " {`do`: `method`, `name`: `variogram`, `parameters`: {`dataset`: `income`, `pooled`: true,"
    " `model`: `exponential`, `save`: `-m`}},"
    " {`do`: `duplicate`, `model`: `-m`, `dataset`: `income`},"
    " {`do`: `rename`, `model`: `-m copy`, `dataset`: `income`, `to`: `m's`},"
    " {`do`: `remove`, `model`: `-m`, `dataset`: `income`},"
    " {`do`: `method`, `name`: `variogram`, `parameters`: {`dataset`: `income`, `at`: `1950`,"
    " `structures`: `nugget:1e4,exponential:2e5:7.5:30:20`, `save`: `own`}},"
    " {`do`: `method`, `name`: `variogram`, `parameters`: {`dataset`: -1,"
    " `structures`: `spherical:1:0.1`, `save`: `of the project`}},"
    " {`do`: `method`, `name`: `weights`,"
    " `parameters`: {`geography`: `states`, `name`: `-near`, `method`: `nearest`}},"
    " {`do`: `method`, `name`: `convert`,"
    " `parameters`: {`dataset`: `income`, `new`: `-as text`, `type`: `text`}},"
    " {`do`: `method`, `name`: `select`, `parameters`: {`dataset`: `income`, `min`: `-5`}},"
    " {`do`: `method`, `name`: `select`,"
    " `parameters`: {`dataset`: `sub_region`, `values`: `New England;Pacific`}},"
    " {`do`: `method`, `name`: `select-neighbors`, `parameters`: {`weights`: `-near`}},"
    " {`do`: `method`, `name`: `krige`, `parameters`: {`dataset`: `income`, `model`: `own`,"
    " `to`: `states`, `into`: `kriged`}},"
    " {`do`: `rename`, `dataset`: `income`, `to`: `Einkommen in €`},"
    " {`do`: `describe`, `dataset`: `Einkommen in €`, `summary`: `$ per head, `,"
    " `history`: `first line\n#second's line`},"
    " {`do`: `describe`, `geography`: `states`, `history`: ``},"
    " {`do`: `duplicate`, `dataset`: `sub_region`},"
    " {`do`: `view`, `kind`: `map`, `datasets`: [`sub_region 2`]},"
    " {`do`: `export`, `file`: `map.png`},"
    " {`do`: `view`, `kind`: `table`, `geography`: `states`},"
    " {`do`: `time`, `geography`: `states`, `time`: `1950`},"
    " {`do`: `export`, `file`: `table.csv`},"
    " {`do`: `report`, `file`: `report.html`},"
    " {`do`: `remove`, `dataset`: `abbr`},"
    " {`do`: `save`, `file`: `second.vorn`},"
    " {`do`: `remove`, `geography`: `states`},"
    " {`do`: `close`},"
    " {`do`: `log`, `file`: `session.sh`}]";
const char *const kWait = ", {`do`: `wait`, `milliseconds`: 600000}]";
const char *const kRename = ", {`do`: `save`, `file`: `work.vorn`},"
                            " {`do`: `rename`, `dataset`: `income`, `to`: `renamed`}";

} // namespace

class tst_Script : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() { muteSizeHints(); }
    void init()
    {
        mFolder = std::make_unique<QTemporaryDir>();
        QVERIFY(mFolder->isValid());
    }
    void theLogRepeatsTheSession();
    void failingStepsAreNamed_data();
    void failingStepsAreNamed();
    void wrongOptionsAreRefused();
    void picturesHaveTheSizeAskedFor();
    void scriptsLeaveTheSettingsAlone();
    void helpNeedsNoDisplay();
    void aKilledSessionLosesNothing();

private:
    struct Outcome {
        int code = -1;
        QString errors;
    };
    QString path(const char *name) const { return mFolder->filePath(QLatin1String(name)); }
    void write(const char *name, const QString &text) const
    {
        QFile file(path(name));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(text.toUtf8());
    }
    QByteArray read(const char *name) const
    {
        QFile file(path(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    void writeSteps(QString steps) const
    {
        write("steps.json", steps.replace(QLatin1Char('`'), QLatin1Char('"')));
    }
    Outcome run(const QString &program, const QStringList &arguments) const
    {
        QProcess process;
        process.setWorkingDirectory(mFolder->path());
        process.start(program, arguments);
        if (!process.waitForFinished(kPatience))
            return {};
        return {process.exitCode(), QString::fromUtf8(process.readAllStandardError())};
    }
    Outcome play(const QString &steps) const
    {
        writeSteps(steps);
        return run(QStringLiteral(MERIDOR_TEST_DESK),
                   {QStringLiteral("--script"), QStringLiteral("steps.json")});
    }
    /// What "meridor info" tells of a project besides its file.
    QJsonObject held(const QString &file) const
    {
        QProcess process;
        process.start(QStringLiteral(MERIDOR_DIRECTORY "/meridor"),
                      {QStringLiteral("info"), QStringLiteral("--json"), file});
        process.waitForFinished(60000);
        // The library notes in the history of a conversion when it was made.
        static const QRegularExpression moment(QStringLiteral(" on \\d+ \\w+ \\d+ \\d+:\\d+:\\d+"));
        const QString told = QString::fromUtf8(process.readAllStandardOutput()).remove(moment);
        QJsonObject all = QJsonDocument::fromJson(told.toUtf8()).object();
        all.remove(QStringLiteral("project"));
        all.remove(QStringLiteral("bytes"));
        return all;
    }
    Workspace &workspace() const { return static_cast<Application *>(qApp)->workspace(); }

    std::unique_ptr<QTemporaryDir> mFolder;
};

void tst_Script::theLogRepeatsTheSession()
{
    const Outcome outcome =
        play(QString(QLatin1String("[") + QLatin1String(kImport) + QString::fromUtf8(kSession))
                 .arg(QStringLiteral(MERIDOR_TEST_SAMPLES)));
    QCOMPARE(outcome.errors.section(QStringLiteral("meridor-desk: "), 1), QString());
    QCOMPARE(outcome.code, 0);
    QVERIFY(QDir(mFolder->path()).mkdir(QStringLiteral("kept")));
    const char *const names[] = {"first it's.vorn", "second.vorn"};
    for (const char *const name : names)
        QVERIFY(QFile::rename(path(name), path("kept/") + QLatin1String(name)));
    QVERIFY(QFile::copy(path("table.csv"), path("kept/table.csv")));
    for (const char *const name : {"map.png", "report.html"})
        QVERIFY2(QFileInfo(path(name)).size() > 1000, name);
    const QByteArray before = qgetenv("PATH");
    qputenv("PATH", QByteArray(MERIDOR_DIRECTORY ":") + before);
    const Outcome repeated = run(QStringLiteral("bash"), {QStringLiteral("session.sh")});
    qputenv("PATH", before);
    QVERIFY2(repeated.code == 0, qPrintable(repeated.errors));
    for (const char *const name : names) {
        QVERIFY(workspace().open(path("kept/") + QLatin1String(name)));
        const Snapshot kept = takeSnapshot();
        QVERIFY(workspace().open(path(name)));
        QCOMPARE(differences(kept, takeSnapshot()), QStringList());
        QVERIFY(kept.count > 48 * 81);
        QCOMPARE(held(path(name)), held(path("kept/") + QLatin1String(name)));
    }
    const QJsonObject last = held(path("second.vorn"));
    QCOMPARE(last["geographies"][0]["weightSets"].toArray(),
             (QJsonArray{QStringLiteral("-it's ö"), QStringLiteral("-it's ö copy"),
                         QStringLiteral("-near")}));
    QCOMPARE(last["variogramModels"].toArray().size(), 3);
    QCOMPARE(last["variogramModels"][0]["name"].toString(), QStringLiteral("m's"));
    QCOMPARE(last["geographies"][0]["history"].toString(), QString());
    QCOMPARE(read("table.csv"), read("kept/table.csv"));
    QCOMPARE(read("table.csv").count('\n'), 49);
    QVERIFY(findDataset(QStringLiteral("Einkommen in €")) >= 0);
    QVERIFY(findDataset(QStringLiteral("sub_region 2")) >= 0);
    workspace().close();
}

void tst_Script::failingStepsAreNamed_data()
{
    QTest::addColumn<QString>("steps");
    QTest::addColumn<QString>("text");
    const QString import =
        QString(QLatin1String(kImport)).arg(QStringLiteral(MERIDOR_TEST_SAMPLES));
    const auto row = [](const char *name, const QString &steps, const char *text) {
        QTest::newRow(name) << steps << QString::fromUtf8(text);
    };
    row("no JSON", "[{]", "steps.json, byte");
    row("no list", "{}", "the steps are not a list");
    row("unknown", "[{`do`: `fly`}]", "step 1 (fly): there is no step of this name");
    row("no such project", "[{`do`: `open`, `file`: `absent.vorn`}]", "step 1 (open): ");
    row("rubbish as a project", "[{`do`: `open`, `file`: `rubbish.vorn`}]",
        "not a project that this version reads");
    row("rubbish dropped", "[{`do`: `import`, `file`: `rubbish.vorn`}]", "step 1 (import): ");
    row("no such dataset", "[" + import + ", {`do`: `remove`, `dataset`: `incme`}]",
        "step 2 (remove): ");
    row("name that is taken",
        "[" + import + ", {`do`: `rename`, `dataset`: `abbr`, `to`: `income`}]",
        "has a dataset income already");
    row("no such view", "[" + import + ", {`do`: `zoom`, `view`: 3, `to`: `all`}]",
        "there is no such view");
    row("no such object",
        "[" + import + ", {`do`: `select`, `geography`: `states`, `objects`: [`Atlantis`]}]",
        "Atlantis");
    row("no such time",
        "[" + import + ", {`do`: `time`, `geography`: `states`, `time`: `someday`}]", "someday");
    row("unwritable", "[" + import + ", {`do`: `save`, `file`: `no/such/folder.vorn`}]",
        "step 2 (save): ");
    row("member that is none",
        "[" + import + ", {`do`: `select`, `geography`: `states`, `objcts`: []}]",
        "step 2 (select): it has no member \"objcts\"");
    row("dropped rubbish", "[{`do`: `drop`, `file`: `rubbish.vorn`}]", "step 1 (drop): Open: ");
    row("dropped file that is not there", "[{`do`: `drop`, `file`: `absent.csv`}]", "absent.csv");
    row("dropped device", "[{`do`: `drop`, `file`: `/dev/zero`}]", "is a pipe or a device");
    // Each of the following is refused by what it acts on.
    const auto refused = [&](const char *name, const char *step, const char *text) {
        row(name,
            "[" + import
                + ", {`do`: `view`, `kind`: `map`, `datasets`: [`income`]},"
                  " {`do`: `view`, `kind`: `histogram`, `datasets`: [`income`]},"
                  " {`do`: `view`, `kind`: `table`, `geography`: `states`},"
                + QLatin1String(step) + "]",
            text);
    };
    refused("text dropped on a histogram", "{`do`: `drop`, `dataset`: `abbr`, `view`: 2}",
            "step 5 (drop): abbr holds texts");
    refused("dropped on a table", "{`do`: `drop`, `dataset`: `abbr`, `view`: 3}",
            "step 5 (drop): A dataset cannot be dropped");
    refused("file dropped on a view", "{`do`: `drop`, `file`: `rubbish.vorn`, `view`: 1}",
            "step 5 (drop): a file is dropped on the window");
    refused("unsaved changes", "{`do`: `drop`, `file`: `other.vorn`}",
            "the project has changes; save or close it first");
    refused("unsaved changes, sample", "{`do`: `sample`}", "the project has changes");
    refused("question", "{`do`: `action`, `name`: `fileOpen`}",
            "step 5 (action): it asks \"Open a project\"");
    refused("nothing to zoom to", "{`do`: `zoom`, `view`: 1, `to`: `selection`}",
            "Nothing is selected");
    refused("unknown zoom", "{`do`: `zoom`, `view`: 1, `to`: `al`}", "a zoom is to");
    refused("extent of a graph", "{`do`: `zoom`, `view`: 2, `extent`: [0, 0, 1, 1]}",
            "only a map has an extent");
    refused("extent inside out", "{`do`: `zoom`, `view`: 1, `extent`: [0, 1, 1, 0]}",
            "an extent is [left");
    refused("unknown classes", "{`do`: `classes`, `view`: 1, `method`: `best`}", "best");
    refused("unknown palette", "{`do`: `classes`, `view`: 1, `palette`: `mud`}", "mud");
    refused("number of classes", "{`do`: `classes`, `view`: 1, `count`: `many`}", "\"count\"");
    refused("classes of a table", "{`do`: `classes`, `view`: 3, `count`: 3}",
            "the view has no classes");
    refused("unknown group", "{`do`: `link`, `view`: 1, `group`: `C`}", "a group is");
    refused("view by name", "{`do`: `unlink`, `view`: `1`}", "is the number of a view");
    refused("mode that is no text", "{`do`: `select`, `objects`: [`Utah`], `mode`: 2}",
            "\"mode\" is a text");
    refused("unknown parameter", "{`do`: `method`, `name`: `moran`, `parameters`: {`data`: 1}}",
            "there is no parameter \"data\"");
    refused("form of an unknown dataset",
            "{`do`: `method`, `name`: `moran`, `parameters`: {`dataset`: `rain`}, `show`: true}",
            "no dataset rain");
    refused("wrong choice",
            "{`do`: `method`, `name`: `weights`, `parameters`: {`geography`: `states`,"
            " `name`: `w`, `method`: `bishop`}}",
            "\"method\" is one of queen, rook, nearest, range, not bishop");
    refused("no number",
            "{`do`: `method`, `name`: `variogram`, `parameters`: {`dataset`: `income`,"
            " `cutoff`: `far`}}",
            "\"cutoff\" is a number, not far");
    refused("unwritable picture", "{`do`: `export`, `view`: 1, `file`: `no/such/map.png`}",
            "step 5 (export): ");
    refused("unwritable log", "{`do`: `log`, `file`: `no/such/log.sh`}", "step 5 (log): ");
    refused("taken name of weights",
            "{`do`: `method`, `name`: `weights`, `parameters`: {`geography`: `states`,"
            " `name`: `w`}}, {`do`: `duplicate`, `weights`: `w`},"
            " {`do`: `rename`, `weights`: `w copy`, `to`: `w`}",
            "states has a weight set w already");
    refused("no wait", "{`do`: `wait`, `milliseconds`: -1}", "it waits 0 to");
    row("locked", "[" + import + ", {`do`: `save`, `file`: `locked.vorn`}]", "is changing it");
}

void tst_Script::failingStepsAreNamed()
{
    QFETCH(QString, steps);
    QFETCH(QString, text);
    write("rubbish.vorn", QStringLiteral("rubbish\n"));
    const FileLock lock(path("locked.vorn"));
    const Outcome outcome = play(steps);
    QCOMPARE(outcome.code, 1);
    QVERIFY2(outcome.errors.contains(text), qPrintable(outcome.errors));
}

/// Also with more views than there is room for, and in pixels of the scale.
void tst_Script::picturesHaveTheSizeAskedFor()
{
    QString views;
    for (const char *const kind :
         {"map", "histogram", "boxes", "time", "map", "histogram", "boxes"})
        views += QStringLiteral(", {`do`: `view`, `kind`: `%1`, `datasets`: [`income`]}")
                     .arg(QLatin1String(kind));
    writeSteps(QString(QLatin1String("[") + QLatin1String(kImport) + views + QLatin1String("]"))
                   .arg(QStringLiteral(MERIDOR_TEST_SAMPLES)));
    const Outcome outcome =
        run(QStringLiteral(MERIDOR_TEST_DESK),
            {QStringLiteral("--script"), QStringLiteral("steps.json"), QStringLiteral("--picture"),
             QStringLiteral("out.png"), QStringLiteral("--size"), QStringLiteral("800x500"),
             QStringLiteral("--scale"), QStringLiteral("2")});
    QCOMPARE(outcome.errors.section(QStringLiteral("meridor-desk: "), 1), QString());
    QCOMPARE(QImage(path("out.png")).size(), QSize(1600, 1000));
}

void tst_Script::wrongOptionsAreRefused()
{
    for (const char *const option : {"--scale=large", "--scale=0", "--scale=100", "--size=9x9"}) {
        const Outcome outcome =
            run(QStringLiteral(MERIDOR_TEST_DESK),
                {QLatin1String(option), QStringLiteral("--picture"), QStringLiteral("no.png")});
        QVERIFY2(outcome.code == 2 && outcome.errors.contains(QLatin1String(option).left(6)),
                 qPrintable(QLatin1String(option) + ": " + outcome.errors));
        QCOMPARE(QFileInfo::exists(path("no.png")), false);
    }
}

/// They do not depend on what the user left either.
void tst_Script::scriptsLeaveTheSettingsAlone()
{
    const QString import =
        QString(QLatin1String(kImport)).arg(QStringLiteral(MERIDOR_TEST_SAMPLES));
    QCOMPARE(play("[" + import + ", {`do`: `save`, `file`: `work.vorn`}]").code, 0);
    MainWindow &window = static_cast<Application *>(qApp)->window();
    QVERIFY(window.openProject(path("work.vorn")));
    ViewRequest table;
    table.kind = ViewKind::Table;
    table.geography = geographyIds().first();
    QVERIFY(window.openView(table));
    window.findChild<QAction *>(QStringLiteral("fileClose"))->trigger();
    QVERIFY(!keptLayout(path("work.vorn")).isEmpty());
    const QStringList recent = recentProjects();
    QCOMPARE(recent, QStringList{path("work.vorn")});
    const QJsonObject layout = keptLayout(path("work.vorn"));
    QVERIFY(!layout.value(QStringLiteral("views")).toArray().isEmpty());
    const Outcome outcome = play("[{`do`: `open`, `file`: `work.vorn`},"
                                 " {`do`: `view`, `kind`: `map`, `datasets`: [`income`]},"
                                 " {`do`: `save`, `file`: `other.vorn`},"
                                 " {`do`: `open`, `file`: `work.vorn`},"
                                 " {`do`: `zoom`, `view`: 1, `to`: `all`}]");
    QVERIFY2(outcome.errors.contains(QLatin1String("there is no such view")),
             qPrintable(outcome.errors));
    QCOMPARE(recentProjects(), recent);
    QCOMPARE(keptLayout(path("work.vorn")), layout);
    QVERIFY(keptLayout(path("other.vorn")).isEmpty());
}

void tst_Script::helpNeedsNoDisplay()
{
    const QByteArray platform = qgetenv("QT_QPA_PLATFORM");
    const QByteArray display = qgetenv("DISPLAY");
    qunsetenv("QT_QPA_PLATFORM");
    qunsetenv("DISPLAY");
    for (const char *const option : {"--help", "-h", "--help-all", "--version", "-v"})
        QCOMPARE(run(QStringLiteral(MERIDOR_TEST_DESK), {QLatin1String(option)}).code, 0);
    qputenv("QT_QPA_PLATFORM", platform);
    if (!display.isEmpty())
        qputenv("DISPLAY", display);
}

void tst_Script::aKilledSessionLosesNothing()
{
    QSettings(QSettings::IniFormat, QSettings::UserScope, QStringLiteral("meridor"),
              QStringLiteral("meridor-desk"))
        .setValue(QStringLiteral("recoverySeconds"), 1);
    const QString import =
        QString(QLatin1String(kImport)).arg(QStringLiteral(MERIDOR_TEST_SAMPLES));
    const auto killed = [&](const QString &steps) {
        writeSteps(steps);
        QProcess process;
        process.setWorkingDirectory(mFolder->path());
        process.start(QStringLiteral(MERIDOR_TEST_DESK),
                      {QStringLiteral("--script"), QStringLiteral("steps.json")});
        process.waitForStarted();
        const qint64 id = process.processId();
        const QFileInfo file(steps.contains(QLatin1String("work.vorn"))
                                 ? Workspace::recoveryOf(path("work.vorn"))
                                 : Workspace::recoveryOf(QString()));
        const QString names = steps.contains(QLatin1String("work.vorn"))
                                  ? file.fileName()
                                  : QStringLiteral("untitled-*.recovery");
        const auto isThere = [&] {
            return !file.dir().entryList({names}, QDir::Files | QDir::Hidden).isEmpty();
        };
        QTRY_VERIFY_WITH_TIMEOUT(isThere(), kPatience);
        // While the process lives its work is not offered to others.
        QCOMPARE(Workspace::recoveries({path("work.vorn")}).size(), 0);
        ::kill(static_cast<pid_t>(id), SIGKILL);
        process.waitForFinished();
    };
    const QString wait = QLatin1String(kWait);

    killed("[" + import + wait);
    QVector<Recovery> left = Workspace::recoveries({});
    QCOMPARE(left.size(), 1);
    QCOMPARE(left.first().project, QString());
    QVERIFY(workspace().recover(left.first()));
    QVERIFY(workspace().isDirty());
    QCOMPARE(dataTimes(findDataset(QStringLiteral("income"))).size(), 81);
    workspace().close();
    QCOMPARE(Workspace::recoveries({}).size(), 0);

    killed("[" + import + QLatin1String(kRename) + wait);
    left = Workspace::recoveries({path("work.vorn")});
    QCOMPARE(left.size(), 1);
    // Opening the project keeps what was left, and so does another crash before it is looked at.
    QVERIFY(workspace().open(path("work.vorn")));
    QCOMPARE(Workspace::earlierWork(path("work.vorn")).size(), 1);
    workspace().close();
    left = Workspace::recoveries({path("work.vorn")});
    QVERIFY(workspace().recover(left.value(0)));
    QCOMPARE(workspace().path(), path("work.vorn"));
    QVERIFY(findDataset(QStringLiteral("renamed")) >= 0);
    QVERIFY(workspace().save());
    QCOMPARE(Workspace::recoveries({path("work.vorn")}).size(), 0);
    workspace().close();
}

int main(int argc, char **argv)
{
    return runTest<tst_Script>(argc, argv);
}

#include "tst_Script.moc"
