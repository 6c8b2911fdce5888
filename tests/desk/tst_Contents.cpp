// SPDX-License-Identifier: MIT
// The contents of a project as a tree, and what a user does to them.
#include <QAbstractItemModelTester>
#include <QAction>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLabel>
#include <QLineEdit>
#include <QMimeData>
#include <QTemporaryDir>
#include <QTreeView>
#include <QtTest>
#include "core/analysis/describe.h"
#include "core/import/samples.h"
#include "core/project/catalog.h"
#include "datainterface/ControllerBase.h"
#include "datainterface/DataAPI.h"
#include "datainterface/MDataSource.h"
#include "datainterface/MGeoData.h"
#include "desk/dialogs/importDialog.h"
#include "desk/dialogs/propertiesDialog.h"
#include "desk/models/contentsModel.h"
#include "desk/models/datasetMime.h"
#include "desk/person.h"
#include "desk/project/importLine.h"
#include "desk/project/workspace.h"
#include "desk/views/viewWindow.h"
#include "desk/window/contentsPanel.h"
#include "desk/window/mainWindow.h"
#include "desk/window/viewArea.h"

using namespace meridor;

class tst_Contents : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() { muteSizeHints(); }
    void init();
    void cleanup() { workspace().close(); }
    void theTreeFollowsTheProject();
    void namesAreEditedInTheTree();
    void copiesHaveTheSameValues();
    void keysActOnTheCopyAlone();
    void gridsOpenInGraphs();
    void removalsTakeWhatDependsOnThem();
    void descriptionsAreKept();
    void datasetsAreDragged();
    void formsProposeWhatTheFileTells_data();
    void formsProposeWhatTheFileTells();
    void formsTellWhyAnImportFails();

private:
    Application &application() { return *static_cast<Application *>(qApp); }
    Workspace &workspace() { return application().workspace(); }
    MainWindow &window() { return application().window(); }
    QString lastLine() { return workspace().log().lines().last(); }
    QStringList names(const QModelIndex &parent)
    {
        QStringList names;
        const ContentsModel &tree = model();
        for (int row = 0; row < tree.rowCount(parent); ++row)
            names.append(tree.index(row, 0, parent).data().toString());
        return names;
    }
    ContentsModel &model() { return *window().contents().findChild<ContentsModel *>(); }
    Thing dataset(const char *name)
    {
        return {Thing::Dataset, findDataset(QLatin1String(name)), -1};
    }

    int mStates = -1;
    int mQueen = -1;
};

void tst_Contents::init()
{
    mStates =
        workspace().import(sampleImport(Sample::Income, QStringLiteral(MERIDOR_TEST_SAMPLES)));
    QVERIFY(mStates >= 0);
    mQueen = makeQueen(workspace(), mStates);
    QVERIFY(mQueen >= 0);
}

void tst_Contents::theTreeFollowsTheProject()
{
    const QAbstractItemModelTester tester(&model());
    const QModelIndex states = model().index(0, 0);
    const QStringList all{QStringLiteral("fips"),   QStringLiteral("name"),
                          QStringLiteral("abbr"),   QStringLiteral("sub_region"),
                          QStringLiteral("income"), QStringLiteral("queen")};
    QCOMPARE(names({}), QStringList{QStringLiteral("states")});
    QCOMPARE(names(states), all);
    VariogramModel variogram{DataId(dataset("income").id)};
    variogram.name = QStringLiteral("exponential");
    geographyOf(mStates)->GetDataSource()->AddVariogramModel(variogram.dataset, variogram);
    VariogramModel free;
    free.name = QStringLiteral("free");
    controller().AddNonConVariogramModel(free);
    QCOMPARE(names({}), (QStringList{QStringLiteral("states"), QStringLiteral("free")}));
    QCOMPARE(names(model().indexOf(dataset("income"))), QStringList{QStringLiteral("exponential")});
    const int counties =
        workspace().import(sampleImport(Sample::Counties, QStringLiteral(MERIDOR_TEST_SAMPLES)));
    QCOMPARE(names({}), (QStringList{QStringLiteral("states"), QStringLiteral("counties"),
                                     QStringLiteral("free")}));
    QVERIFY(removeThings(workspace(),
                         {{Thing::Geography, counties, -1},
                          {Thing::WeightSet, mQueen, -1},
                          dataset("abbr"),
                          {Thing::Model, controller().GetNonConVariogramModelIds()[0], -1}}));
    QCOMPARE(names({}), QStringList{QStringLiteral("states")});
    QCOMPARE(names(states), (QStringList{all[0], all[1], all[3], all[4]}));
    workspace().close();
    QCOMPARE(names({}), QStringList());
}

void tst_Contents::namesAreEditedInTheTree()
{
    window().show();
    QVERIFY(activate(window()));
    ContentsPanel &contents = window().contents();
    contents.select(dataset("income"));
    contents.action("rename")->trigger();
    auto *const editor = contents.tree().findChild<QLineEdit *>();
    QVERIFY(editor);
    editor->setText(QStringLiteral("Einkommen €"));
    QTest::keyClick(editor, Qt::Key_Return);
    QTRY_VERIFY_WITH_TIMEOUT(VORN_GetDatasetByName(mStates, QStringLiteral("Einkommen €")) >= 0,
                             kPatience);
    QCOMPARE(lastLine(), QStringLiteral("meridor rename untitled.vorn states/income "
                                        "'Einkommen €'"));
    QVERIFY(window().isWindowModified());
    // Taken and empty names are refused with a sentence, and the old name stays.
    for (const char *const name : {"abbr", ""}) {
        QCOMPARE(renameThing(workspace(), dataset("name"), QLatin1String(name)), false);
        QVERIFY(lastLine().startsWith(QLatin1String("# ")));
        QVERIFY(dataset("name").id >= 0);
    }
    QVERIFY(renameThing(workspace(), {Thing::WeightSet, mQueen, -1}, QStringLiteral("Königin")));
    QVERIFY(renameThing(workspace(), {Thing::Geography, mStates, -1}, QStringLiteral("Länder")));
    QCOMPARE(lastLine(),
             QStringLiteral("meridor rename untitled.vorn states 'Länder' --geography"));
    QVERIFY(names(model().index(0, 0)).contains(QStringLiteral("Königin")));
}

void tst_Contents::copiesHaveTheSameValues()
{
    for (const Thing &thing : {dataset("income"), dataset("abbr")}) {
        const Thing copy = duplicateThing(workspace(), thing);
        QCOMPARE(nameOf(copy), QString(nameOf(thing) + QStringLiteral(" 2")));
        for (const Interval &when : dataTimes(thing.id)) {
            QVector<datum> values;
            QVector<datum> copied;
            QSet<int> missing;
            QSet<int> alsoMissing;
            QVERIFY(VORN_GetDataValues(thing.id, 0, instantOf(when), values, missing));
            QVERIFY(VORN_GetDataValues(copy.id, 0, instantOf(when), copied, alsoMissing));
            QCOMPARE(missing, alsoMissing);
            for (int i = 0; i < values.size(); ++i)
                QCOMPARE(textOf(copied[i]), textOf(values[i]));
        }
    }
    QCOMPARE(geographyOfThing(duplicateThing(workspace(), {Thing::WeightSet, mQueen, -1})),
             mStates);
    const auto told = [](int geography) {
        QJsonObject object = describeGeography(geography);
        for (const char *const own : {"name", "parent", "history", "weightSets"})
            object.remove(QLatin1String(own));
        QJsonArray datasets;
        for (const QJsonValue &each : object[QStringLiteral("datasets")].toArray()) {
            QJsonObject dataset = each.toObject();
            dataset.remove(QStringLiteral("history"));
            datasets.append(dataset);
        }
        object[QStringLiteral("datasets")] = datasets;
        return QString::fromUtf8(QJsonDocument(object).toJson()).split(QLatin1Char('\n'));
    };
    const int rain =
        workspace().import(sampleImport(Sample::Rain, QStringLiteral(MERIDOR_TEST_SAMPLES)));
    for (const int geography : {mStates, rain}) {
        const Thing copy = duplicateThing(workspace(), {Thing::Geography, geography, -1});
        QVERIFY2(lastLine().endsWith(QLatin1String(" --geography")), qPrintable(lastLine()));
        QCOMPARE(told(copy.id), told(geography));
    }
}

void tst_Contents::keysActOnTheCopyAlone()
{
    window().show();
    QVERIFY(activate(window()));
    ContentsPanel &contents = window().contents();
    contents.select(dataset("income"));
    contents.tree().setFocus();
    // Through the window, so that the application knows the keys that are held.
    QTest::keyClick(window().windowHandle(), Qt::Key_D, Qt::ControlModifier);
    QCOMPARE(contents.selected().size(), 1);
    QCOMPARE(nameOf(contents.selected().first()), QStringLiteral("income 2"));
    QTest::keyClick(window().windowHandle(), Qt::Key_Delete);
    QCOMPARE(lastLine(), QStringLiteral("meridor remove untitled.vorn 'states/income 2'"));
    QVERIFY(names(model().index(0, 0)).contains(QStringLiteral("income")));
}

/// And are drawn by the lines of these.
void tst_Contents::gridsOpenInGraphs()
{
    const int rain =
        workspace().import(sampleImport(Sample::Rain, QStringLiteral(MERIDOR_TEST_SAMPLES)));
    window().contents().select({Thing::Dataset, datasetIds(rain).first(), -1});
    for (const char *const name : {"openHistogram", "openBoxPlot", "openTimePlot"}) {
        QVERIFY2(window().contents().action(name)->isEnabled(), name);
        window().contents().action(name)->trigger();
        const ViewWindow *const view = window().area().windows().value(0);
        QVERIFY2(view && !view->commandLine(QStringLiteral("a.png")).isEmpty(), name);
        window().area().closeAll();
    }
}

void tst_Contents::removalsTakeWhatDependsOnThem()
{
    auto *const open = new PropertiesDialog(workspace(), dataset("income"), &window());
    const QPointer<PropertiesDialog> guard(open);
    open->show();
    workspace().setShownWeights(mStates, mQueen);
    // The geography goes first; what it held is no longer there to be removed.
    QVERIFY(removeThings(
        workspace(),
        {{Thing::Geography, mStates, -1}, dataset("income"), {Thing::WeightSet, mQueen, -1}}));
    QCOMPARE(lastLine(), QStringLiteral("meridor remove untitled.vorn states --geography"));
    QCOMPARE(workspace().shownWeights(mStates), -1);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY(!guard);
}

void tst_Contents::descriptionsAreKept()
{
    const QTemporaryDir folder;
    const QString file = folder.filePath(QStringLiteral("a.vorn"));
    PropertiesDialog dialog(workspace(), dataset("income"));
    dialog.setAttribute(Qt::WA_DeleteOnClose, false);
    dialog.findChild<QLineEdit *>(QStringLiteral("propertiesSummary"))
        ->setText(QStringLiteral("in $, jährlich"));
    QVERIFY(dialog.apply());
    QVERIFY(workspace().save(file));
    QVERIFY(workspace().open(file));
    QCOMPARE(descriptionOf(dataset("income")).summary, QStringLiteral("in $, jährlich"));
    workspace().close(); // before its folder goes
}

void tst_Contents::datasetsAreDragged()
{
    const auto dragged = [&](const Thing &thing) {
        return std::unique_ptr<QMimeData>(model().mimeData({model().indexOf(thing)}));
    };
    QCOMPARE(datasetOf(dragged(dataset("income")).get()), dataset("income").id);
    QVERIFY(!dragged({Thing::Geography, mStates, -1}));
    for (const char *const text : {"", "income", "4000000", "-1"}) {
        QMimeData other;
        other.setData(QLatin1String(kDatasetMime), text);
        QCOMPARE(datasetOf(&other), -1);
    }
}

void tst_Contents::formsProposeWhatTheFileTells_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("words");
    QTest::newRow("shapes that change") << "us_states_history/states_1783_2000.geojson"
                                        << "--key id --start start_date --end end_date";
    QTest::newRow("shapes") << "us_income/states48.geojson"
                            << "--key fips";
    QTest::newRow("table without places") << "us_income/income_1929_2009.csv"
                                          << "--key fips --series values=1929..2009";
    QTest::newRow("points") << "wells/wells.csv"
                            << "--x x --y y";
    QTest::newRow("grid") << "carolina_climate/pr_1999.tif"
                          << "--times auto";
    QTest::newRow("grid of one band") << "wells/truth.asc"
                                      << "";
}

void tst_Contents::formsProposeWhatTheFileTells()
{
    QFETCH(QString, file);
    QFETCH(QString, words);
    ImportDialog dialog(workspace());
    dialog.setAttribute(Qt::WA_DeleteOnClose, false);
    QVERIFY(dialog.load(QStringLiteral(MERIDOR_TEST_SAMPLES "/") + file));
    QStringList line = importLine(dialog.options(), QStringLiteral("p"), true).mid(4);
    QString found = line.join(QLatin1Char(' '));
    const bool begins = found.startsWith(words) || found.contains(words);
    QVERIFY2(begins, qPrintable(found));
    QCOMPARE(words.isEmpty() && !found.isEmpty(), false);
}

void tst_Contents::formsTellWhyAnImportFails()
{
    ImportDialog dialog(workspace());
    dialog.setAttribute(Qt::WA_DeleteOnClose, false);
    QVERIFY(dialog.load(QStringLiteral(MERIDOR_TEST_SAMPLES "/us_income/states48.geojson")));
    dialog.findChild<QLineEdit *>(QStringLiteral("importTables"))
        ->setText(QStringLiteral("absent.csv"));
    QCOMPARE(dialog.import(), -1);
    const QString trouble = dialog.findChild<QLabel *>(QStringLiteral("importTrouble"))->text();
    QVERIFY2(trouble.contains(QStringLiteral("absent.csv")), qPrintable(trouble));
    QCOMPARE(geographyIds().size(), 1);
    QVERIFY(!dialog.load(QStringLiteral(MERIDOR_TEST_SAMPLES "/us_income/README.md")));
}

int main(int argc, char **argv)
{
    return runTest<tst_Contents>(argc, argv);
}

#include "tst_Contents.moc"
