// SPDX-License-Identifier: MIT
// What views of all kinds have in common: the realization that they show.
#include <QLabel>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QSpinBox>
#include <cmath>
#include "core/analysis/selection.h"
#include "core/import/importOptions.h"
#include "core/import/samples.h"
#include "core/project/catalog.h"
#include "datainterface/DataAPI.h"
#include "datainterface/GeographyAPI.h"
#include "datainterface/MDataset.h"
#include "desk/person.h"
#include "desk/project/workspace.h"
#include "desk/views/graphView.h"
#include "desk/views/mapLayerView.h"
#include "desk/views/tableView.h"
#include "desk/views/viewWindow.h"
#include "desk/window/mainWindow.h"
#include "desk/window/viewArea.h"

using namespace meridor;

Q_DECLARE_METATYPE(meridor::ViewKind)

class tst_EveryView : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() { muteSizeHints(); }
    void init();
    void cleanup() { workspace().close(); }
    void theChosenRealizationIsShown_data();
    void theChosenRealizationIsShown();
    void viewsShareTheWindow_data();
    void viewsShareTheWindow();
    void oneObjectIsNoPlural();

private:
    Workspace &workspace() { return static_cast<Application *>(qApp)->workspace(); }
    MainWindow &window() { return static_cast<Application *>(qApp)->window(); }
    ViewWindow *open(ViewKind kind, const QVector<int> &datasets);
    /// All kinds of views, as rows.
    void addKinds();

    QTemporaryDir mFolder;
    int mStates = -1;
    int mIncome = -1;
    int mQueen = -1;
};

void tst_EveryView::init()
{
    window().askUnsaved = [] { return MainWindow::Unsaved::Discard; };
    window().show();
    mStates =
        workspace().import(sampleImport(Sample::Income, QStringLiteral(MERIDOR_TEST_SAMPLES)));
    QVERIFY(mStates >= 0);
    mIncome = findDataset(mStates, QStringLiteral("income"));
    mQueen = makeQueen(workspace(), mStates);
    QVERIFY(mQueen >= 0);
}

ViewWindow *tst_EveryView::open(ViewKind kind, const QVector<int> &datasets)
{
    ViewRequest request;
    request.kind = kind;
    request.datasets = datasets;
    if (kind == ViewKind::Scatter)
        request.datasets.append(mIncome);
    request.geography = mStates;
    request.weights = mQueen;
    return window().openView(request);
}

void tst_EveryView::addKinds()
{
    QTest::addColumn<ViewKind>("kind");
    for (const ViewKind kind :
         {ViewKind::Map, ViewKind::Table, ViewKind::Histogram, ViewKind::BoxPlot, ViewKind::Scatter,
          ViewKind::TimePlot, ViewKind::Moran})
        QTest::addRow("%s", qPrintable(viewKindName(kind))) << kind;
}

void tst_EveryView::theChosenRealizationIsShown_data()
{
    addKinds();
}

void tst_EveryView::theChosenRealizationIsShown()
{
    QFETCH(ViewKind, kind);
    // The second object has 100.5, 2001 and 30001.5 in the three realizations of 2008 and 2009.
    const int drawn = VORN_NewVectorDataset(mStates, QStringLiteral("drawn"), TimeSlice,
                                            DecimalType, 3, QString());
    const int objects = VORN_GetGeographyProperties(mStates).objectCount;
    const QVector<Interval> times = dataTimes(mIncome);
    for (int realization = 0; realization < 3; ++realization) {
        QVector<double> values;
        for (int i = 0; i < objects; ++i)
            values.append(std::pow(10, realization + 2) * std::pow(i % 7, realization + 1)
                              * (realization + 1)
                          + 0.5 * (realization + 1));
        for (const Interval &when : times.mid(times.size() - 2))
            VORN_AddDataValues(drawn, realization, when, values, {}, true, true);
    }
    VORN_NewDatasetCreated(drawn);
    ViewWindow *const view = open(kind, {drawn});
    QVERIFY(view);
    auto *const choice = view->findChild<QSpinBox *>(QStringLiteral("realization"));
    QCOMPARE(choice->maximum(), 3);
    const auto told = [&]() -> QString {
        if (kind == ViewKind::Table) {
            const auto &table = static_cast<TableView &>(*view->currentView());
            const QAbstractItemModel &model = *table.table()->model();
            for (int column = 0; column < model.columnCount(); ++column)
                if (model.headerData(column, Qt::Horizontal) == QLatin1String("drawn"))
                    return model.index(1, column).data().toString();
        }
        view->currentView()->hover(-1);
        view->currentView()->hover(1);
        return kind == ViewKind::Map ? static_cast<MapLayerView &>(*view->currentView()).describe(1)
                                     : view->findChild<QLabel *>(QStringLiteral("readout"))->text();
    };
    const QString first = told();
    choice->setValue(3);
    const QString third = told();
    QVERIFY2(third != first, qPrintable(third));
    if (kind != ViewKind::Moran) { // which tells standard deviations
        QVERIFY2(first.contains(QLatin1String("100.5")), qPrintable(first));
        QVERIFY2(third.contains(QLatin1String("30001.5")), qPrintable(third));
    }
    QVERIFY2(view->title().contains(QLatin1String("realization 3 of 3")),
             qPrintable(view->title()));
    if (kind == ViewKind::Map) {
        auto &layer = static_cast<MapLayerView &>(*view->currentView());
        QCOMPARE(layer.classes()->limits().last(), 6480001.5);
        const QVector<unsigned int> highest =
            layer.objectsOfClass(layer.classes()->entries().size() - 1);
        QVERIFY(highest.contains(6));
        QVERIFY(!highest.contains(1));
    }
    const QString picture = mFolder.filePath(QStringLiteral("view.csv"));
    const QStringList line = kind == ViewKind::Table && view->exportTo(picture)
                                 ? workspace()
                                       .log()
                                       .lines()
                                       .value(workspace().log().lines().size() - 2)
                                       .split(QLatin1Char(' '))
                                 : view->commandLine(picture);
    const int option = line.indexOf(QStringLiteral("--realization"));
    QVERIFY2(option > 0, qPrintable(line.join(QLatin1Char(' '))));
    QCOMPARE(line.value(option + 1), QStringLiteral("3"));
    if (kind == ViewKind::Table) {
        QFile table(picture);
        QVERIFY(table.open(QIODevice::ReadOnly));
        const QByteArray rows = table.readAll();
        QVERIFY2(rows.contains(",30001.5") && !rows.contains(",100.5"), rows.left(400).constData());
    }
    // The layout keeps it, also where the range is smaller by then.
    const QJsonObject kept = window().area().state();
    window().area().closeAll();
    window().area().restore(kept);
    QCOMPARE(window().area().windows().size(), 1);
    QCOMPARE(window().area().windows().first()->realization(), 2);

    ObjectChoice byValue;
    byValue.dataset = QStringLiteral("drawn");
    byValue.low = QStringLiteral("30001");
    byValue.high = QStringLiteral("30002");
    QCOMPARE(chosenObjects(mStates, byValue), QVector<int>());
    byValue.realization = 2;
    QCOMPARE(chosenObjects(mStates, byValue).mid(0, 2), (QVector<int>{1, 8}));
}

void tst_EveryView::viewsShareTheWindow_data()
{
    QTest::addColumn<QSize>("size");
    QTest::addColumn<int>("places"); // at least; the others are in tabs
    QTest::newRow("1280x800") << QSize(1280, 800) << 12;
    QTest::newRow("1024x768") << QSize(1024, 768) << 6;
    QTest::newRow("tiny") << QSize(300, 200) << 0;
}

/// However many views there are, the window keeps its size, and each view has room.
void tst_EveryView::viewsShareTheWindow()
{
    QFETCH(QSize, size);
    QFETCH(int, places);
    window().resize(size);
    const ViewKind kinds[] = {ViewKind::Map,     ViewKind::Table,    ViewKind::Histogram,
                              ViewKind::BoxPlot, ViewKind::TimePlot, ViewKind::Moran};
    for (int i = 0; i < 12; ++i)
        QVERIFY(open(kinds[i % 6], {mIncome}));
    for (int round = 0; round < 2; ++round) {
        settle();
        QCOMPARE(window().size(), size);
        int seen = 0;
        for (const ViewWindow *const view : window().area().windows()) {
            if (view->visibleRegion().isEmpty())
                continue;
            ++seen;
            const QWidget *const canvas = view->currentView()->widget();
            QVERIFY2(places == 0 || (canvas->width() > 100 && canvas->height() > 20),
                     qPrintable(QStringLiteral("%1: %2 by %3")
                                    .arg(view->title())
                                    .arg(canvas->width())
                                    .arg(canvas->height())));
        }
        QVERIFY2(round == 0 || seen >= places, qPrintable(QString::number(seen)));
        window().area().tile();
    }
    window().area().closeAll();
}

void tst_EveryView::oneObjectIsNoPlural()
{
    QFile table(mFolder.filePath(QStringLiteral("one.csv")));
    QVERIFY(table.open(QIODevice::WriteOnly));
    table.write("x,y,v\n1,2,3.5\n");
    table.close();
    ImportOptions options;
    options.map = table.fileName();
    options.xColumn = QStringLiteral("x");
    options.yColumn = QStringLiteral("y");
    const int one = workspace().import(options);
    const int value = findDataset(one, QStringLiteral("v"));
    const QRegularExpression wrong(QStringLiteral("(^|[^0-9.])1 [a-z]*[^s ]s\\b"));
    const std::pair<ViewKind, const char *> texts[] = {{ViewKind::Histogram, "1 value in bars"},
                                                       {ViewKind::BoxPlot, "1 value, median"}};
    for (const auto &[kind, text] : texts) {
        ViewWindow *const view = open(kind, {value});
        const QString told = static_cast<GraphView &>(*view->currentView()).summary();
        QVERIFY2(told.contains(QLatin1String(text)) && !told.contains(wrong), qPrintable(told));
    }
    workspace().selection().select(one, {0});
    ViewWindow *const map = open(ViewKind::Map, {value});
    QSignalSpy told(&workspace(), &Workspace::told);
    open(ViewKind::Table, {value})->copyToClipboard();
    for (const QList<QVariant> &each : told)
        QVERIFY2(!each.first().toString().contains(wrong), qPrintable(each.first().toString()));
    QVERIFY(map);
}

int main(int argc, char **argv)
{
    return runTest<tst_EveryView>(argc, argv);
}

#include "tst_EveryView.moc"
