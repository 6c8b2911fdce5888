// SPDX-License-Identifier: MIT
// The main window: pages, time, layout, closing, and what every control has.
#include <QAbstractButton>
#include <QAccessible>
#include <QAction>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QMimeData>
#include <QPlainTextEdit>
#include <QSignalSpy>
#include <QSlider>
#include <QTemporaryDir>
#include <QTreeView>
#include <QtTest>
#include <sys/stat.h>
#include "core/import/samples.h"
#include "core/project/catalog.h"
#include "core/project/failure.h"
#include "core/project/fileLock.h"
#include "datainterface/DataAPI.h"
#include "desk/dialogs/importDialog.h"
#include "desk/dialogs/methodDialog.h"
#include "desk/dialogs/propertiesDialog.h"
#include "desk/person.h"
#include "desk/project/workspace.h"
#include "desk/views/mapLayerView.h"
#include "desk/views/mapWindow.h"
#include "desk/views/viewWindow.h"
#include "desk/window/contentsPanel.h"
#include "desk/window/mainWindow.h"
#include "desk/window/timeBar.h"
#include "desk/window/viewArea.h"

using namespace meridor;

class tst_Window : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() { muteSizeHints(); }
    void init();
    void cleanup();
    void troubleStandsOnTheStartPage_data();
    void troubleStandsOnTheStartPage();
    void droppedFilesOpenTheForm();
    void theBarMovesThroughTheTimes();
    void theBarFollowsTheLayer();
    void geographiesGoInStep();
    void unsavedChangesAreAskedForOnce();
    void heldProjectsAreLookedAt();
    void layoutsAreKeptByProject();
    void viewsEndInEveryOrder_data();
    void viewsEndInEveryOrder();
    void everyControlHasAName();
    void noKeyMeansTwoThings();

private:
    Application &application() { return *static_cast<Application *>(qApp); }
    Workspace &workspace() { return application().workspace(); }
    MainWindow &window() { return application().window(); }
    int import(Sample sample)
    {
        return workspace().import(sampleImport(sample, QStringLiteral(MERIDOR_TEST_SAMPLES)));
    }
    ViewWindow *open(ViewKind kind, const char *dataset)
    {
        ViewRequest request;
        request.kind = kind;
        request.datasets = {findDataset(QLatin1String(dataset))};
        request.geography = VORN_GetGeographyId(request.datasets.first());
        return window().openView(request);
    }
    void dropFile(const QString &file)
    {
        QMimeData data;
        data.setUrls({QUrl::fromLocalFile(file)});
        QVERIFY(drop(window(), data));
    }
    template <class Child> Child *find(const char *name)
    {
        return window().findChild<Child *>(QLatin1String(name));
    }

    QTemporaryDir mFolder;
};

void tst_Window::init()
{
    window().askUnsaved = [] { return MainWindow::Unsaved::Discard; };
    window().show();
    QVERIFY(activate(window()));
}

void tst_Window::cleanup()
{
    while (auto *const dialog = window().findChild<QDialog *>())
        delete dialog;
    workspace().close();
    workspace().setInStep(false);
    QCOMPARE(window().area().windows().size(), 0);
}

void tst_Window::troubleStandsOnTheStartPage_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("text");
    QTest::newRow("rubbish as a project") << "a.vorn" << QByteArray("rubbish") << "not a project";
    QTest::newRow("empty project") << "b.vorn" << QByteArray() << "not a project";
    QTest::newRow("rubbish") << "c.xyz" << QByteArray("\0\1\2rubbish", 10) << "c.xyz";
    QTest::newRow("no shapes") << "d.geojson" << QByteArray("{\"type\": \"Feature") << "d.geojson";
    QTest::newRow("locked") << "locked.vorn" << QByteArray("x") << "is changing it";
    QTest::newRow("pipe") << "pipe.csv" << QByteArray() << "is a pipe or a device";
}

void tst_Window::troubleStandsOnTheStartPage()
{
    QFETCH(QString, name);
    QFETCH(QByteArray, content);
    QFETCH(QString, text);
    QFile file(mFolder.filePath(name));
    if (name == QLatin1String("pipe.csv")) {
        QCOMPARE(::mkfifo(QFile::encodeName(file.fileName()).constData(), 0600), 0);
    } else {
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(content);
        file.close();
    }
    const FileLock lock(mFolder.filePath(QStringLiteral("locked.vorn")));
    dropFile(file.fileName());
    const auto *const trouble = find<QLabel>("startTrouble");
    QVERIFY(trouble->isVisible());
    QVERIFY2(trouble->text().contains(text), qPrintable(trouble->text()));
    QCOMPARE(window().findChildren<QDialog *>().size(), 0);
}

void tst_Window::droppedFilesOpenTheForm()
{
    dropFile(QStringLiteral(MERIDOR_TEST_SAMPLES "/us_income/states48.geojson"));
    auto *const dialog = find<ImportDialog>("importDialog");
    QVERIFY(dialog);
    const QString line =
        dialog->findChild<QLineEdit *>(QStringLiteral("importCommandLine"))->text();
    QTest::mouseClick(dialog->findChild<QAbstractButton *>(QStringLiteral("importRun")),
                      Qt::LeftButton);
    QCOMPARE(geographyIds().size(), 1);
    QVERIFY(workspace().log().lines().contains(line));
    QVERIFY(window().isWindowModified());
    QCOMPARE(window().contents().selected().value(0).kind, Thing::Geography);
}

void tst_Window::theBarMovesThroughTheTimes()
{
    const int states = import(Sample::Income);
    window().contents().select({Thing::Geography, states, -1});
    TimeBar &bar = window().timeBar();
    QCOMPARE(bar.geography(), states);
    const QVector<qint64> steps = workspace().stepsOf(states);
    QVERIFY(steps.size() > 80);
    auto *const slider = find<QSlider>("timeSlider");
    QCOMPARE(slider->maximum(), steps.size() - 1);
    QTest::keyClick(slider, Qt::Key_Home);
    QCOMPARE(workspace().timeOf(states), steps.first());
    QTest::keyClick(slider, Qt::Key_Right);
    QCOMPARE(workspace().timeOf(states), steps[1]);
    QCOMPARE(find<QLabel>("timeText")->text(), axisOf(states).show(steps[1]));
    find<QAction>("timeLast")->trigger();
    QCOMPARE(workspace().timeOf(states), steps.last());
    type(window(), Qt::Key_Comma, Qt::ControlModifier);
    QCOMPARE(workspace().timeOf(states), steps[steps.size() - 2]);
    type(window(), Qt::Key_Period, Qt::ControlModifier);
    QCOMPARE(workspace().timeOf(states), steps.last());
    // Playing from the end starts at the beginning, and stops at the end.
    find<QComboBox>("timeSpeed")->setCurrentIndex(5);
    QVector<qint64> played;
    const auto note = connect(&workspace(), &Workspace::timeChanged, this,
                              [&](int, qint64 time) { played.append(time); });
    find<QAction>("timePlay")->toggle();
    QTRY_VERIFY_WITH_TIMEOUT(played.size() >= 3, kPatience);
    disconnect(note);
    QCOMPARE(played.mid(0, 3), steps.mid(0, 3));
    slider->setValue(steps.size() - 2);
    QTRY_COMPARE_WITH_TIMEOUT(bar.isPlaying(), false, kPatience);
    QCOMPARE(workspace().timeOf(states), steps.last());
    workspace().close();
    QCOMPARE(bar.geography(), -1);
    QCOMPARE(bar.isEnabled(), false);
}

void tst_Window::theBarFollowsTheLayer()
{
    const int states = import(Sample::Income);
    const int history = import(Sample::History);
    auto *const map = static_cast<MapWindow *>(open(ViewKind::Map, "income"));
    settle();
    QCOMPARE(window().timeBar().geography(), states);
    map->addLayer(findDataset(QStringLiteral("terr_type")));
    settle();
    QCOMPARE(window().timeBar().geography(), history);
    QCOMPARE(find<QSlider>("timeSlider")->maximum(), workspace().stepsOf(history).size() - 1);
    window().timeBar().first();
    QVERIFY2(map->title().endsWith(axisOf(history).show(workspace().stepsOf(history).first())),
             qPrintable(map->title()));
    QSignalSpy titled(map, &ViewWindow::titleChanged);
    map->setActiveLayer(map->layers().first());
    settle();
    QCOMPARE(window().timeBar().geography(), states);
    QCOMPARE(titled.value(0).value(0).toString(), map->title());
    QVERIFY(removeThings(workspace(), {{Thing::Geography, states, -1}}));
    settle();
    QCOMPARE(window().timeBar().geography(), history);
}

void tst_Window::geographiesGoInStep()
{
    const int rain = import(Sample::Rain);
    const int history = import(Sample::History);
    window().contents().select({Thing::Geography, rain, -1});
    QCOMPARE(find<QSlider>("timeSlider")->maximum(), 11);
    const qint64 before = workspace().timeOf(history);
    window().timeBar().first();
    QCOMPARE(workspace().timeOf(history), before);
    window().timeBar().setInStep(true);
    QCOMPARE(workspace().timeOf(history), workspace().timeOf(rain));
    QSignalSpy changed(&workspace(), &Workspace::timeChanged);
    window().timeBar().last();
    QCOMPARE(changed.size(), 2);
}

void tst_Window::unsavedChangesAreAskedForOnce()
{
    using Unsaved = MainWindow::Unsaved;
    const QString file = mFolder.filePath(QStringLiteral("asked.vorn"));
    import(Sample::Counties);
    QVERIFY(window().saveAs(file));
    int asked = 0;
    Unsaved answer = Unsaved::Stay;
    window().askUnsaved = [&] {
        ++asked;
        return answer;
    };
    QVERIFY(window().openProject(file)); // nothing to ask
    QCOMPARE(asked, 0);
    QVERIFY(renameThing(workspace(), {Thing::Geography, geographyIds().value(0), -1},
                        QStringLiteral("kept")));
    QVERIFY(!window().close());
    QVERIFY(!window().openProject(file));
    QCOMPARE(asked, 2);
    QCOMPARE(geographyName(geographyIds().value(0)), QStringLiteral("kept"));
    answer = Unsaved::Save;
    QVERIFY(window().close());
    QCOMPARE(asked, 3);
    QCOMPARE(geographyIds().size(), 0);
    window().show();
    QVERIFY(window().openProject(file));
    QCOMPARE(geographyName(geographyIds().value(0)), QStringLiteral("kept"));
    find<QAction>("fileRevert")->trigger();
    QCOMPARE(window().isWindowModified(), false);
}

/// The files of the process that works on a project are left alone.
void tst_Window::heldProjectsAreLookedAt()
{
    const QString file = mFolder.filePath(QStringLiteral("held.vorn"));
    const QString other = mFolder.filePath(QStringLiteral("other.vorn"));
    const int states = import(Sample::Income);
    QVERIFY(window().saveAs(file));
    workspace().close();
    const FileLock lock(file);
    QVERIFY(QFile::copy(file, Workspace::recoveryOf(file)));
    QVERIFY(!window().openProject(file));
    auto *const look = find<QAbstractButton>("startUnlocked");
    QVERIFY(look->isVisible());
    QTest::mouseClick(look, Qt::LeftButton);
    QCOMPARE(geographyIds(), QVector<int>{states});
    QVERIFY2(find<QLabel>("message")->text().contains(QLatin1String("under another name")),
             qPrintable(find<QLabel>("message")->text()));
    QVERIFY(renameThing(workspace(), {Thing::Geography, states, -1}, QStringLiteral("mine")));
    QVERIFY(workspace().saveRecovery());
    QVERIFY(QFileInfo::exists(Workspace::recoveryOf(QString())));
    QVERIFY(!workspace().save());
    QVERIFY(find<QLabel>("message")->text().contains(QLatin1String("is changing it")));
    QVERIFY(window().saveAs(other));
    QVERIFY(!QFileInfo::exists(Workspace::recoveryOf(QString())));
    QCOMPARE(QFileInfo(Workspace::recoveryOf(file)).size(), QFileInfo(file).size());
    QVERIFY_EXCEPTION_THROWN(FileLock{other}, Failure);
    QVERIFY(!window().openProject(mFolder.filePath(QStringLiteral("absent.vorn"))));
    workspace().close();
    QVERIFY(!look->isVisible());
}

void tst_Window::layoutsAreKeptByProject()
{
    const QString file = mFolder.filePath(QStringLiteral("layout.vorn"));
    import(Sample::Income);
    QVERIFY(window().saveAs(file));
    const QByteArray saved = [&] {
        QFile project(file);
        return project.open(QIODevice::ReadOnly) ? project.readAll() : QByteArray();
    }();
    QVERIFY(open(ViewKind::Map, "income"));
    QVERIFY(open(ViewKind::Map, "sub_region"));
    QVERIFY(open(ViewKind::Histogram, "income"));
    QVERIFY(open(ViewKind::Table, "income"));
    window().area().tile();
    QStringList titles;
    for (const ViewWindow *const view : window().area().windows())
        titles.append(view->title());
    find<QAction>("fileClose")->trigger();
    QCOMPARE(window().area().windows().size(), 0);
    QVERIFY(window().openProject(file));
    QStringList restored;
    for (const ViewWindow *const view : window().area().windows())
        restored.append(view->title());
    QCOMPARE(restored, titles);
    QCOMPARE(workspace().isDirty(), false);
    QFile project(file);
    QVERIFY(project.open(QIODevice::ReadOnly));
    QVERIFY(project.readAll() == saved);
    // What is shown can be gone by then.
    QVERIFY(
        removeThings(workspace(), {{Thing::Dataset, findDataset(QStringLiteral("income")), -1}}));
    QTRY_COMPARE_WITH_TIMEOUT(window().area().windows().size(), 2, kPatience);
    for (int i = 0; i < 2; ++i)
        type(window(), Qt::Key_W, Qt::ControlModifier);
    QCOMPARE(window().area().windows().size(), 0);
}

void tst_Window::viewsEndInEveryOrder_data()
{
    QTest::addColumn<int>("first");
    QTest::addColumn<QString>("end");
    for (int first = 0; first < 6; ++first)
        QTest::addRow("view %d first", first) << first << QString();
    for (const char *const end : {"dataset", "geography", "revert", "close"})
        QTest::addRow("by %s", end) << -1 << QString(QLatin1String(end));
}

/// Views go while others select, also by what they show.
void tst_Window::viewsEndInEveryOrder()
{
    QFETCH(int, first);
    QFETCH(QString, end);
    int states = import(Sample::Income);
    QVERIFY(window().saveAs(mFolder.filePath(QStringLiteral("order.vorn"))));
    for (const ViewKind kind : {ViewKind::Map, ViewKind::Table, ViewKind::Histogram,
                                ViewKind::BoxPlot, ViewKind::TimePlot, ViewKind::Map})
        QVERIFY(open(kind, "income"));
    QCOMPARE(window().area().windows().size(), 6);
    const auto select = [&](unsigned int object) {
        for (ViewWindow *const window : window().area().windows())
            if (View *const view = window->currentView())
                view->choose({object, object + 1}, SelectionMode::Toggle);
        settle();
    };
    select(3);
    if (end == QLatin1String("dataset"))
        QVERIFY(removeThings(workspace(),
                             {{Thing::Dataset, findDataset(QStringLiteral("income")), -1}}));
    else if (end == QLatin1String("geography"))
        QVERIFY(removeThings(workspace(), {{Thing::Geography, states, -1}}));
    else if (end == QLatin1String("revert"))
        find<QAction>("fileRevert")->trigger();
    else if (end == QLatin1String("close"))
        find<QAction>("fileClose")->trigger();
    if (end == QLatin1String("revert"))
        QCOMPARE(window().area().windows().size(), 6);
    for (int left = 6; first >= 0 && left > 0; --left) {
        window().area().activate(window().area().windows()[first % left]);
        find<QAction>("viewClose")->trigger();
        QCOMPARE(window().area().windows().size(), left - 1);
        select(static_cast<unsigned int>(left));
    }
    settle();
    if (end == QLatin1String("geography") || end == QLatin1String("close"))
        QCOMPARE(window().area().windows().size(), 0);
    if (states = geographyIds().value(0, -1); states >= 0)
        workspace().selection().select(states, {1}); // reaches what is left
}

void tst_Window::everyControlHasAName()
{
    import(Sample::Income);
    QVERIFY(open(ViewKind::Map, "income"));
    window().showProperties({Thing::Dataset, findDataset(QStringLiteral("income")), -1});
    QVERIFY(window().importFile(QStringLiteral(MERIDOR_TEST_SAMPLES "/wells/wells.csv")));
    for (const Method &method : application().methods().all())
        window().showMethod(method, {});
    QStringList nameless;
    for (const QWidget *const widget : window().findChildren<QWidget *>()) {
        if (widget->focusPolicy() == Qt::NoFocus || widget->visibleRegion().isEmpty())
            continue;
        const QAccessibleInterface *const told =
            QAccessible::queryAccessibleInterface(const_cast<QWidget *>(widget));
        const bool isPart = widget->parentWidget()->inherits("QAbstractSpinBox")
                            || widget->parentWidget()->inherits("QComboBox")
                            || widget->objectName().startsWith(QLatin1String("qt_"));
        if (!isPart && told && told->text(QAccessible::Name).isEmpty())
            nameless.append(QStringLiteral("%1 %2 in %3")
                                .arg(QLatin1String(widget->metaObject()->className()),
                                     widget->objectName(), widget->window()->objectName()));
    }
    QCOMPARE(nameless.join(QStringLiteral("; ")), QString());
}

void tst_Window::noKeyMeansTwoThings()
{
    QHash<QString, QString> meanings;
    for (const QAction *const action : window().actions()) {
        for (const QKeySequence &keys : action->shortcuts()) {
            const QString other = meanings.value(keys.toString());
            QVERIFY2(other.isEmpty(),
                     qPrintable(keys.toString() + QStringLiteral(": ") + action->objectName()
                                + QStringLiteral(", ") + other));
            meanings.insert(keys.toString(), action->objectName());
        }
    }
    QVERIFY(meanings.size() > 20);
}

int main(int argc, char **argv)
{
    return runTest<tst_Window>(argc, argv);
}

#include "tst_Window.moc"
