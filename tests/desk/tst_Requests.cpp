// SPDX-License-Identifier: MIT
// What the library asks of the desktop, through its own functions, and what other code does to the
// project while every kind of view shows it.
#include <QComboBox>
#include <QDesktopServices>
#include <QFile>
#include <QLineEdit>
#include <QRegularExpression>
#include <QTreeView>
#include <QtTest>
#include <functional>
#include "core/import/samples.h"
#include "core/plot/plotValues.h"
#include "core/project/catalog.h"
#include "datainterface/AdjacencySet.h"
#include "datainterface/DataAPI.h"
#include "datainterface/DiagnosticsAPI.h"
#include "datainterface/FrameAPI.h"
#include "datainterface/GeographyAPI.h"
#include "datainterface/MAttributes.h"
#include "datainterface/MDataSource.h"
#include "datainterface/MGeoData.h"
#include "datainterface/RasterAPI.h"
#include "datainterface/VariogramAPI.h"
#include "datainterface/WeightsAPI.h"
#include "desk/dialogs/methodDialog.h"
#include "desk/models/contentsModel.h"
#include "desk/person.h"
#include "desk/project/things.h"
#include "desk/views/graphWindow.h"
#include "desk/views/histogramView.h"
#include "desk/views/mapLayerView.h"
#include "desk/views/mapWindow.h"
#include "desk/views/valueHistory.h"
#include "desk/window/contentsPanel.h"
#include "desk/window/mainWindow.h"
#include "desk/window/viewArea.h"

using namespace meridor;

using Act = std::function<void()>;
Q_DECLARE_METATYPE(Act)
using Ids = QVector<unsigned int>;

class tst_Requests : public QObject {
    Q_OBJECT
public Q_SLOTS:
    void noteUrl(const QUrl &url) { mShown.append(url); }

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void requestsAreAnswered_data();
    void requestsAreAnswered();
    void noRequestIsForgotten();
    void otherHandsChangeTheProject_data();
    void otherHandsChangeTheProject();

private:
    Application &application() { return *static_cast<Application *>(qApp); }
    Workspace &workspace() { return application().workspace(); }
    MainWindow &window() { return application().window(); }
    int dataset(const char *name) { return findDataset(mStates, QLatin1String(name)); }
    template <class View = ViewWindow> View *shown(int number)
    {
        return qobject_cast<View *>(application().viewWindow(number));
    }
    MethodDialog *dialog(const char *name)
    {
        return window().findChild<MethodDialog *>(QLatin1String(name));
    }
    int displayMap()
    {
        return VORN_DisplayMap(mIncome, mEarly, QStringLiteral("Asked for"), {}, {}, {});
    }
    int newGrid()
    {
        return VORN_CreateNewRasterGeography(QStringLiteral("grid"), 4, 5, QRectF(0, 0, 5, 4),
                                             Interval{0, 10, true, true}, TF_Integer, QString(),
                                             QString());
    }
    QStringList contents()
    {
        const auto *const model = window().contents().findChild<ContentsModel *>();
        QStringList names;
        for (int row = 0; row < model->rowCount(); ++row)
            names.append(model->index(row, 0).data().toString());
        return names;
    }
    void fillRequests();

    QVector<QUrl> mShown;
    QVector<std::pair<const char *, Act>> mRequests;
    QTemporaryDir mFolder;
    int mStates = -1;
    int mIncome = -1;
    int mQueen = -1;
    qint64 mEarly = 0;
    qint64 mLate = 0;
};

void tst_Requests::initTestCase()
{
    muteSizeHints();
    QDesktopServices::setUrlHandler(QStringLiteral("file"), this, "noteUrl");
    fillRequests();
}

void tst_Requests::init()
{
    mStates =
        workspace().import(sampleImport(Sample::Income, QStringLiteral(MERIDOR_TEST_SAMPLES)));
    QVERIFY(mStates >= 0);
    mIncome = dataset("income");
    mQueen = makeQueen(workspace(), mStates);
    QVERIFY(mQueen >= 0);
    mEarly = instantOf(dataTimes(mIncome)[3]);
    mLate = instantOf(dataTimes(mIncome)[60]);
    mShown.clear();
    window().askUnsaved = [] { return MainWindow::Unsaved::Discard; };
    window().show();
}

void tst_Requests::cleanup()
{
    while (auto *const dialog = window().findChild<QDialog *>())
        delete dialog;
    workspace().close();
    QCOMPARE(window().area().windows().size(), 0);
}

/// One row for each operation of the controller.
void tst_Requests::fillRequests()
{
    const auto add = [this](const char *name, Act act) { mRequests.append({name, act}); };
    const auto parameters = [this] {
        return QVector<MethodParameter>{{QStringLiteral("dataset"), mIncome},
                                        {QStringLiteral("weights"), mQueen},
                                        {QStringLiteral("permutations"), 49}};
    };
    add("HasGUI", [] { QVERIFY(VORN_GetController()->HasGUI()); });
    add("CreateMapWindow", [this] {
        ColorSchemeInfo fill;
        fill.classLimits = {0, 20000, 30000, 90000};
        fill.classColors = {0x112233, 0x445566, 0x778899};
        const int map = VORN_DisplayMap(mIncome, mEarly, QStringLiteral("Asked for"), fill, {}, {});
        QVERIFY(shown<MapWindow>(map));
        QCOMPARE(shown(map)->title(), QStringLiteral("Asked for"));
        QCOMPARE(shown(map)->currentView()->time(), mEarly);
        QCOMPARE(workspace().timeOf(mStates), mEarly);
        const MapLayerView &layer = *shown<MapWindow>(map)->activeLayer();
        QCOMPARE(layer.rule().limits, (QVector<double>{20000, 30000}));
        QCOMPARE(layer.colorOf(2), QColor(0x77, 0x88, 0x99));
        QCOMPARE(VORN_DisplayMap(-1, mEarly, QString(), {}, {}, {}), 0);
    });
    add("CreateMapLayer", [this] {
        const int map = displayMap();
        QVERIFY(VORN_DisplayMapLayer(map, dataset("sub_region"), {}, {}, {}));
        QCOMPARE(shown<MapWindow>(map)->activeLayer()->dataset(), dataset("sub_region"));
        const int bars = VORN_DisplayHistogram(mIncome, mEarly, QString());
        QVERIFY(!VORN_DisplayMapLayer(bars, mIncome, {}, {}, {}));
        delete shown(map);
        QVERIFY(!VORN_DisplayMapLayer(map, mIncome, {}, {}, {}));
    });
    add("CreateGraphWindow", [this] {
        const struct {
            int number;
            const char *kind;
        } graphs[] = {{VORN_DisplayHistogram(mIncome, mEarly, QStringLiteral("one")), "histogram"},
                      {VORN_DisplayTimePlot(mIncome, QStringLiteral("one")), "time"},
                      {VORN_DisplayBoxplot(mIncome, mEarly, QStringLiteral("one")), "boxes"},
                      {VORN_DisplayScatterplot(dataset("fips"), mIncome, mEarly,
                                               QStringLiteral("one"), {}, nullptr, nullptr),
                       "scatter"}};
        for (const auto &[number, kind] : graphs) {
            QVERIFY2(shown<GraphWindow>(number), kind);
            QCOMPARE(shown(number)->state().value(QStringLiteral("graph")).toString(),
                     QLatin1String(kind));
            QCOMPARE(shown(number)->title(), QStringLiteral("one"));
            QCOMPARE(shown(number)->currentView()->time(), mEarly);
        }
        QCOMPARE(VORN_DisplayScatterplot(mIncome, -1, mEarly, QString(), {}, nullptr, nullptr), 0);
    });
    add("SyncViews", [this] {
        const int map = displayMap();
        const int bars = VORN_DisplayHistogram(mIncome, mEarly, QString());
        const int alone = VORN_DisplayHistogram(mIncome, mEarly, QString());
        shown(alone)->setGroup(ViewWindow::Alone);
        VORN_TimeSyncWindows({map, 77}, mLate);
        QCOMPARE(shown(map)->currentView()->time(), mLate);
        QCOMPARE(shown(bars)->currentView()->time(), mLate); // linked with the map
        QCOMPARE(shown(alone)->currentView()->time(), mEarly);
    });
    add("ShowSpatialWeightsInMap", [this] {
        const int map = displayMap();
        QVERIFY(VORN_ShowClusterSetInLayer(map, mQueen));
        QCOMPARE(workspace().shownWeights(mStates), mQueen);
        QVERIFY(VORN_GetController()->ShowSpatialWeightsInMap(map, mQueen, 20));
        QCOMPARE(
            text(geographyOf(mStates)->GetAttributes(0)->GetIdsByState(attribute::kHovered, true)),
            QStringLiteral("20"));
        QCOMPARE(shown<MapWindow>(map)->activeLayer()->hoveredNeighbors().size(), 4);
        QVERIFY(!VORN_ShowClusterSetInLayer(map, mQueen + 1));
        QVERIFY(!VORN_ShowClusterSetInLayer(map + 1, mQueen));
    });
    add("ShowMethod", [=] {
        QVERIFY(VORN_ShowMethod(0, QStringLiteral("moran"), parameters()) > 0);
        QVERIFY(dialog("method moran"));
        const MethodArguments shown(dialog("method moran")->form().parameters());
        QCOMPARE(shown.id(QStringLiteral("dataset")), mIncome);
        QCOMPARE(shown.whole(QStringLiteral("permutations")), 49);
        QCOMPARE(VORN_ShowMethod(0, QStringLiteral("none"), {}), -1);
    });
    add("GetMethodName", [this] {
        const int number = application().methods().numberOf(QStringLiteral("moran"));
        QCOMPARE(VORN_GetMethodName(number, QString()), QStringLiteral("Moran's I"));
        QCOMPARE(VORN_GetMethodName(1000, QStringLiteral("none")), QString());
    });
    add("ExecuteMethod", [=] {
        MethodReport report;
        QVERIFY(VORN_ExecuteMethod(0, QStringLiteral("moran"), parameters(), report));
        QVERIFY2(report.text.contains(QLatin1String("Moran")), qPrintable(report.text));
        QCOMPARE(workspace().log().lines().filter(QStringLiteral("meridor moran")).size(), 1);
        QVERIFY(!VORN_ExecuteMethod(0, QStringLiteral("none"), {}, report));
    });
    add("GetInvocationStringForMethod", [=] {
        const QString line = VORN_GetInvocationString(0, QStringLiteral("moran"), parameters());
        QVERIFY2(line.startsWith(QLatin1String("meridor moran untitled.vorn states/income"))
                     && line.contains(QLatin1String("--permutations 49")),
                 qPrintable(line));
    });
    add("GetDatasetPropertiesStringForCurrentMethod", [=] {
        QCOMPARE(VORN_GetController()->GetDatasetPropertiesStringForCurrentMethod(), QString());
        VORN_ShowMethod(0, QStringLiteral("moran"), parameters());
        const QString told = VORN_GetController()->GetDatasetPropertiesStringForCurrentMethod();
        QVERIFY2(told.startsWith(QLatin1String("income: ")), qPrintable(told));
    });
    add("ShowSpatialWeightSetDialog", [this] {
        VORN_ShowSpatialWeightSetDialog(mStates, false, false);
        QVERIFY(dialog("method weights"));
        QCOMPARE(dialog("method weights")->form().parameters().first().value.toInt(), mStates);
    });
    add("ShowVariogramModelDialog", [this] {
        VORN_ShowVariogramModelDialog(QStringLiteral("model"), mIncome, -1, 0, -1, 10, 0, 0, -1, 0,
                                      0, false, false);
        const auto *const shown = window().findChild<QDialog *>(QStringLiteral("modelDialog"));
        QVERIFY(shown);
        QCOMPARE(shown->findChild<QComboBox *>(QStringLiteral("modelDataset"))->currentText(),
                 QStringLiteral("states/income"));
        QCOMPARE(shown->findChild<QLineEdit *>(QStringLiteral("modelName"))->text(),
                 QStringLiteral("model"));
    });
    add("GenerateVariogramModel", [this] {
        const VariogramModelProps made =
            VORN_GenerateVariogramModel(QStringLiteral("fitted"), mIncome, dataTimes(mIncome)[0], 0,
                                        -1, 10, false, 0, false, false);
        QCOMPARE(made.name, QStringLiteral("fitted"));
        QVERIFY(VORN_GetVariogramModelIds(mIncome).contains(made.id));
        QVERIFY(workspace().isDirty());
    });
    add("AddToLog", [this] {
        VORN_AddToLog(QStringLiteral("a note\nof two lines"));
        const QStringList lines = workspace().log().lines();
        QCOMPARE(lines.mid(lines.size() - 2),
                 (QStringList{QStringLiteral("# a note"), QStringLiteral("# of two lines")}));
    });
    add("ShowHelpTopic", [this] {
        VORN_ShowHelpTopic("meridor.md#moran");
        VORN_ShowHelpTopic("keys"); // a heading of the page about the desktop
        VORN_ShowHelpTopic("../secret.md");
        QCOMPARE(mShown.size(), 2);
        QCOMPARE(mShown[0].fileName() + mShown[0].fragment(), QStringLiteral("meridor.mdmoran"));
        QCOMPARE(mShown[1].fileName() + mShown[1].fragment(), QStringLiteral("desk.mdkeys"));
    });
    add("MarkProjectDirty", [this] {
        QVERIFY(window().saveAs(mFolder.filePath(QStringLiteral("marked.vorn"))));
        QVERIFY(!window().isWindowModified());
        VORN_GetController()->MarkProjectDirty();
        QVERIFY(window().isWindowModified());
        QVERIFY(workspace().saveRecovery());
    });
    add("MarkProjectClean", [this] {
        const QString file = mFolder.filePath(QStringLiteral("clean.vorn"));
        QVERIFY(window().saveAs(file));
        VORN_GetController()->MarkProjectDirty();
        QVERIFY(workspace().saveRecovery());
        VORN_GetController()->MarkProjectClean();
        QVERIFY(!window().isWindowModified());
        QCOMPARE(QFile::exists(Workspace::recoveryOf(file)), false);
    });
    add("GetUniqueGeographyName", [] {
        QCOMPARE(VORN_GetUniqueGeographyName(QStringLiteral("states")), QStringLiteral("states 2"));
        QCOMPARE(VORN_GetUniqueGeographyName(QStringLiteral("new")), QStringLiteral("new"));
    });
    add("GetUniqueDatasetName", [this] {
        QCOMPARE(VORN_GetUniqueDatasetName(mStates, QStringLiteral("income")),
                 QStringLiteral("income 2"));
    });
    add("AddNewVectorGeography", [this] {
        const QString file = mFolder.filePath(QStringLiteral("rubbish"));
        QFile(file).open(QIODevice::WriteOnly);
        QCOMPARE(VORN_GetController()->AddNewVectorGeography(file, QStringLiteral("none"),
                                                             QString(), TF_Integer, -1, nullptr),
                 -1);
        settle();
        QCOMPARE(contents(), QStringList{QStringLiteral("states")});
        workspace().import(sampleImport(Sample::Counties, QStringLiteral(MERIDOR_TEST_SAMPLES)));
        QCOMPARE(contents().size(), 2);
    });
    add("AddNewRasterGeography", [this] {
        const int grid = newGrid();
        QVERIFY(grid >= 0);
        QTRY_COMPARE_WITH_TIMEOUT(
            contents(), (QStringList{QStringLiteral("states"), QStringLiteral("grid")}), kPatience);
        QVERIFY(VORN_RemoveGeography(grid));
        QCOMPARE(contents(), QStringList{QStringLiteral("states")});
    });
    add("RemoveGeography", [this] {
        const QPointer<ViewWindow> map = shown(displayMap());
        QVERIFY(VORN_RemoveGeography(mStates));
        QTRY_COMPARE_WITH_TIMEOUT(window().area().windows().size(), 0, kPatience);
        QVERIFY(!map);
        QCOMPARE(contents(), QStringList());
    });
}

void tst_Requests::requestsAreAnswered_data()
{
    QTest::addColumn<Act>("ask");
    for (const auto &[name, ask] : mRequests)
        QTest::newRow(name) << ask;
}

void tst_Requests::requestsAreAnswered()
{
    QFETCH(Act, ask);
    ask();
}

/// The operations of the library's header, the rows above and the table of the documentation agree.
void tst_Requests::noRequestIsForgotten()
{
    const auto namesIn = [](const char *path, const char *pattern) {
        QFile file(QStringLiteral(MERIDOR_TEST_SAMPLES "/../") + QLatin1String(path));
        QStringList names;
        if (!file.open(QIODevice::ReadOnly))
            return names;
        auto matches = QRegularExpression(QLatin1String(pattern))
                           .globalMatch(QString::fromUtf8(file.readAll()));
        while (matches.hasNext())
            names.append(matches.next().captured(1));
        names.sort();
        return names;
    };
    QStringList mine;
    for (const auto &[name, ask] : mRequests)
        mine.append(QLatin1String(name));
    mine.sort();
    QCOMPARE(mine, namesIn("include/datainterface/ControllerBase.h",
                           "virtual \\w+[\\s*]+(?!~)(\\w+)\\("));
    QStringList told = namesIn("docs/desk.md", "`([A-Z]\\w+)`(?=[^\\n|]*\\|[^\\n]*\\|\\n)");
    told.removeDuplicates();
    for (const QString &name : std::as_const(mine))
        QVERIFY2(told.contains(name), qPrintable(name));
}

void tst_Requests::otherHandsChangeTheProject_data()
{
    QTest::addColumn<Act>("change");
    QTest::addColumn<int>("views"); // that are left of seven
    const auto row = [](const char *name, int views, const Act &act) {
        QTest::newRow(name) << act << views;
    };
    row("values", 7, [this] {
        QVector<double> values = numbersAt(mIncome, workspace().timeOf(mStates));
        for (double &value : values)
            value *= 1000;
        const Interval last = dataTimes(mIncome).last();
        if (VORN_GetDatasetProperties(mIncome).dataType == DecimalType) {
            QVERIFY(VORN_AddDataValues(mIncome, 0, last, values, {}, true, true));
        } else {
            QVector<int> whole;
            for (const double value : values)
                whole.append(static_cast<int>(value));
            QVERIFY(VORN_AddDataValues(mIncome, 0, last, whole, {}, true, true));
        }
        VORN_DatasetChanged(mIncome);
    });
    row("a dataset gets another name", 7,
        [this] { geographyOf(mStates)->GetDataSource()->SetDisplayName(mIncome, "wages"); });
    row("the geography gets another name", 7,
        [this] { geographyOf(mStates)->SetName(QStringLiteral("wages")); });
    row("a weight set goes", 7, [this] { VORN_RemoveClusterSet(mQueen); });
    row("a weight set comes", 7, [this] {
        VORN_CreatePolygonWeightSet(mStates, QStringLiteral("rook"), QString(), 1, false,
                                    RowStandardizedWeight, false, 1, 1);
    });
    row("another dataset goes", 7, [this] { VORN_RemoveDataset(dataset("abbr")); });
    row("the dataset goes", 1, [this] { VORN_RemoveDataset(mIncome); });
    row("the geography goes", 0, [this] { VORN_RemoveGeography(mStates); });
    row("another geography comes and goes", 7, [this] { VORN_RemoveGeography(newGrid()); });
    row("the project is opened again", 7,
        [this] { QVERIFY(window().openProject(workspace().path())); });
}

void tst_Requests::otherHandsChangeTheProject()
{
    QFETCH(Act, change);
    QFETCH(int, views);
    for (const ViewKind kind :
         {ViewKind::Map, ViewKind::Table, ViewKind::Histogram, ViewKind::BoxPlot,
          ViewKind::TimePlot, ViewKind::Moran, ViewKind::Scatter}) {
        ViewRequest request;
        request.kind = kind;
        request.datasets = {mIncome};
        if (kind == ViewKind::Scatter)
            request.datasets.prepend(dataset("fips"));
        request.geography = mStates;
        request.weights = mQueen;
        QVERIFY(window().openView(request));
    }
    QVERIFY(window().saveAs(mFolder.filePath(QStringLiteral("others.vorn"))));
    workspace().selection().select(mStates, {1, 2, 3});
    workspace().selection().hover(mStates, 4);
    change();
    settle();
    QTRY_COMPARE_WITH_TIMEOUT(window().area().windows().size(), views, kPatience);
    const int geography = geographyIds().value(0, -1);
    mStates = geography;
    mIncome = views > 0 ? VORN_GetDatasetByName(geography, QStringLiteral("income")) : -1;
    QVector<double> wanted;
    const bool isRenamed = geography >= 0 && mIncome < 0 && views == 7;
    if (isRenamed)
        mIncome = VORN_GetDatasetByName(geography, QStringLiteral("wages"));
    if (mIncome >= 0)
        wanted = numbersAt(mIncome, workspace().timeOf(geography));
    for (ViewWindow *const view : window().area().windows()) {
        view->grab();
        QVERIFY(view->currentView());
        QCOMPARE(view->currentView()->geography(), geography);
        if (isRenamed && !qobject_cast<MapWindow *>(view) && qobject_cast<GraphWindow *>(view))
            QVERIFY2(view->title().contains(QLatin1String("wages")), qPrintable(view->title()));
        if (const auto *const graph = qobject_cast<HistogramView *>(view->currentView()))
            QCOMPARE(graph->bins().width, binsOf(wanted).width);
        // Each still selects for all.
        view->currentView()->choose({5, 9}, SelectionMode::Replace);
        QCOMPARE(text(geographyOf(geography)->GetAttributes(0)->GetIdsByState(attribute::kSelected,
                                                                              true)),
                 QStringLiteral("5 9"));
        view->currentView()->chooseNothing();
        view->currentView()->hover(6);
        view->currentView()->goTo(workspace().stepsOf(geography).first());
        view->currentView()->goTo(workspace().stepsOf(geography).last());
    }
}

int main(int argc, char **argv)
{
    return runTest<tst_Requests>(argc, argv);
}

#include "tst_Requests.moc"
