// SPDX-License-Identifier: MIT
// Graphs: what is drawn, brushed with the mouse and the keys, linked, and told where nothing can be.
#include <QComboBox>
#include <QFile>
#include <QPointer>
#include <QTemporaryDir>
#include <QtTest>
#include <cmath>
#include "core/import/importOptions.h"
#include "core/plot/plotValues.h"
#include "core/project/catalog.h"
#include "datainterface/DataAPI.h"
#include "datainterface/GeographyAPI.h"
#include "datainterface/MAttributes.h"
#include "datainterface/MGeoData.h"
#include "datainterface/RasterAPI.h"
#include "desk/person.h"
#include "desk/project/workspace.h"
#include "desk/views/boxPlotView.h"
#include "desk/views/graphWindow.h"
#include "desk/views/histogramView.h"
#include "desk/views/moranScatterView.h"
#include "desk/views/scatterView.h"
#include "desk/views/timePlotView.h"
#include "desk/views/valueHistory.h"

using namespace meridor;
using Ids = QVector<unsigned int>;
Q_DECLARE_METATYPE(meridor::GraphKind)

class tst_Graphs : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() { muteSizeHints(); }
    void init();
    void cleanup();
    void regionsSelectObjects_data();
    void regionsSelectObjects();
    void selectionsFollowModifiersAndKeys();
    void linesAreThoseOfTheSelection();
    void viewsFollowTimeAndGroups();
    void canvasesKeepTheirSize();
    void troublesAreSentences_data();
    void troublesAreSentences();
    void datasetsAndGeographiesGo();
    void hookShowsWhatItIsAskedFor();
    void exportsAndLogsCommandLines();
    void cellsOfGridsAreObjects();
    void fewTimesAreSeenAndNamed();

private:
    Workspace &workspace() { return static_cast<Application *>(qApp)->workspace(); }
    Ids selected() { return workspace().selection().selected(mStates); }
    GraphWindow *open(GraphKind kind, QVector<int> datasets = {});
    void drag(GraphWindow &window, const QPointF &from, const QPointF &to,
              Qt::KeyboardModifiers keys = {})
    {
        meridor::drag(*window.graph()->widget(), {from, to}, keys);
    }
    int import(const QByteArray &table);

    QTemporaryDir mFolder;
    int mStates = -1;
    int mIncome = -1;
    int mCode = -1;
    int mQueen = -1;
    QVector<QPointer<GraphWindow>> mWindows;
};

void tst_Graphs::init()
{
    ImportOptions options;
    options.map = QStringLiteral(MERIDOR_TEST_SAMPLES "/us_income/states48.geojson");
    options.name = QStringLiteral("states");
    options.key = QStringLiteral("fips");
    options.tables =
        QStringList{QStringLiteral(MERIDOR_TEST_SAMPLES "/us_income/income_1929_2009.csv")};
    options.series = QStringList{QStringLiteral("income=1929..2009")};
    mStates = workspace().import(options);
    QVERIFY(mStates >= 0);
    mIncome = findDataset(mStates, QStringLiteral("income"));
    mCode = findDataset(mStates, QStringLiteral("fips"));
    mQueen = makeQueen(workspace(), mStates);
    QVERIFY(mQueen >= 0);
}

void tst_Graphs::cleanup()
{
    for (const auto &window : std::as_const(mWindows))
        delete window.data();
    mWindows.clear();
    workspace().close();
}

GraphWindow *tst_Graphs::open(GraphKind kind, QVector<int> datasets)
{
    if (datasets.isEmpty())
        datasets =
            kind == GraphKind::Scatter ? QVector<int>{mCode, mIncome} : QVector<int>{mIncome};
    GraphWindow *const window = openGraph(workspace(), kind, datasets, mQueen);
    if (!window)
        return nullptr;
    mWindows.append(window);
    window->resize(700, 500);
    window->QWidget::show();
    QCoreApplication::processEvents();
    window->grab(); // the picture that is brushed
    return window;
}

/// The rectangle from a quarter to three quarters of the canvas, against the values in it.
void tst_Graphs::regionsSelectObjects_data()
{
    QTest::addColumn<GraphKind>("kind");
    QTest::newRow("scatter") << GraphKind::Scatter;
    QTest::newRow("moran") << GraphKind::Moran;
    QTest::newRow("histogram") << GraphKind::Histogram;
    QTest::newRow("boxes") << GraphKind::BoxPlot;
    QTest::newRow("time") << GraphKind::TimePlot;
}

void tst_Graphs::regionsSelectObjects()
{
    QFETCH(GraphKind, kind);
    GraphWindow *const window = open(kind);
    GraphWindow *const bars = open(GraphKind::Histogram);
    QWidget *const canvas = window->graph()->widget();
    const QRectF shown = window->graph()->shownRange();
    const QRectF part(QRect(canvas->width() / 4, canvas->height() / 4, canvas->width() / 2,
                            canvas->height() / 2));
    drag(*window, part.topLeft(), part.bottomRight());
    const double left = window->graph()->valueAt(part.topLeft()).x();
    const double right = window->graph()->valueAt(part.bottomRight()).x();
    const double low = window->graph()->valueAt(part.bottomRight()).y();
    const double high = window->graph()->valueAt(part.topLeft()).y();
    Ids expected;
    const QVector<double> income = numbersAt(mIncome, workspace().timeOf(mStates));
    for (int i = 0; i < income.size(); ++i) {
        bool inside = false;
        if (kind == GraphKind::Scatter || kind == GraphKind::Moran) {
            const QPointF at = static_cast<PointView *>(window->graph())->places()[size_t(i)];
            inside = at.x() >= left && at.x() <= right && at.y() >= low && at.y() <= high;
        } else if (kind == GraphKind::Histogram) {
            const auto *const view = static_cast<HistogramView *>(window->graph());
            const QRectF bar = view->barRect(view->bins().of(income[i]));
            inside =
                bar.right() > part.left() && bar.left() < part.right() && bar.top() < part.bottom();
        } else {
            // Dates are milliseconds on the axis: the years of the middle half of the canvas.
            for (const Interval &when : dataTimes(mIncome)) {
                const TimeScale scale(mStates);
                const bool isBox = kind == GraphKind::BoxPlot;
                const double half =
                    isBox ? shown.width() * static_cast<BoxPlotView *>(window->graph())->boxWidth()
                                / canvas->width() / 2
                          : 0;
                const double start = isBox ? scale.middleOf(when) - half : scale.at(when.startTime);
                const double end = isBox ? scale.middleOf(when) + half : scale.at(when.endTime);
                const double value = numbersAt(mIncome, instantOf(when))[i];
                inside = inside || (end >= left && start <= right && value >= low && value <= high);
            }
        }
        if (inside)
            expected.append(static_cast<unsigned int>(i));
    }
    QVERIFY2(expected.size() > 2 && expected.size() < 48,
             qPrintable(QString::number(expected.size())));
    QCOMPARE(text(selected()), text(expected));
    int marked = 0;
    for (const int count : static_cast<HistogramView *>(bars->graph())->selectedCounts())
        marked += count;
    QCOMPARE(marked, expected.size()); // the linked view has the same objects
}

void tst_Graphs::selectionsFollowModifiersAndKeys()
{
    GraphWindow *const window = open(GraphKind::Scatter);
    auto *const view = static_cast<ScatterView *>(window->graph());
    const auto pixel = [&](unsigned int object) { return view->pixelOf(view->places()[object]); };
    drag(*window, pixel(3), pixel(3));
    QCOMPARE(text(selected()), text((Ids{3})));
    drag(*window, pixel(9), pixel(9), Qt::ShiftModifier);
    drag(*window, pixel(20), pixel(20), Qt::ShiftModifier);
    drag(*window, pixel(3), pixel(3), Qt::ControlModifier);
    QCOMPARE(text(selected()), text((Ids{9, 20})));
    // The mouse names what is below it, and the mark is the project's.
    pointAt(*view->widget(), pixel(5));
    QCOMPARE(workspace().selection().hovered(mStates), 5);
    QVERIFY2(view->textOf(5).startsWith(objectNames(mStates)[5]), qPrintable(view->textOf(5)));
    QTest::keyClick(view->widget(), Qt::Key_PageDown);
    QTest::keyClick(view->widget(), Qt::Key_Space, Qt::ShiftModifier);
    QCOMPARE(text(selected()), text((Ids{6, 9, 20})));
    // A zoom keeps the selection; all is shown again on demand.
    const QRectF whole = view->shownRange();
    QTest::keyClick(view->widget(), Qt::Key_Plus);
    QVERIFY(view->shownRange().width() < whole.width());
    QTest::keyClick(view->widget(), Qt::Key_0);
    QCOMPARE(view->shownRange(), whole);
    window->clearSelection();
    QCOMPARE(text(selected()), text(Ids()));
    // A triangle: the lasso holds what its area holds, not what its box does.
    QPainterPath triangle;
    triangle.addPolygon(QPolygonF(
        {{0, 0}, {0, double(view->widget()->height())}, {double(view->widget()->width()), 0}}));
    triangle.closeSubpath();
    view->brush(triangle, SelectionMode::Replace);
    QVERIFY(!selected().isEmpty());
    for (unsigned int object = 0; object < 48; ++object) {
        const QPointF at = pixel(object);
        const double side =
            at.x() / view->widget()->width() + at.y() / view->widget()->height() - 1;
        if (std::abs(side) > 0.02)
            QCOMPARE(selected().contains(object), side < 0);
    }
}

void tst_Graphs::linesAreThoseOfTheSelection()
{
    GraphWindow *const window = open(GraphKind::Scatter);
    const auto *const view = static_cast<ScatterView *>(window->graph());
    QVector<QPointF> all;
    for (const QPointF &place : view->places())
        all.append(place);
    QCOMPARE(view->line().slope, fittedLine(all).slope);
    window->graph()->choose({1, 4, 8}, SelectionMode::Replace);
    const Line line = fittedLine({all[1], all[4], all[8]});
    QCOMPARE(view->selectedLine().slope, line.slope);
    QCOMPARE(view->selectedLine().r, line.r);
    window->graph()->choose({1}, SelectionMode::Replace); // one point has no line
    QVERIFY(std::isnan(view->selectedLine().slope));
    QVERIFY2(!view->summary().contains(QLatin1String("nan"), Qt::CaseInsensitive),
             qPrintable(view->summary()));
    const auto *const moran = static_cast<MoranScatterView *>(open(GraphKind::Moran)->graph());
    // With weights that sum to one in each row the slope is Moran's I.
    QVERIFY2(moran->summary().contains(
                 QStringLiteral("Moran's I %1").arg(moran->line().slope, 0, 'f', 3)),
             qPrintable(moran->summary()));
}

void tst_Graphs::viewsFollowTimeAndGroups()
{
    GraphWindow *const first = open(GraphKind::Histogram);
    GraphWindow *const second = open(GraphKind::Histogram);
    GraphWindow *const alone = open(GraphKind::Histogram);
    const auto bars = [](GraphWindow *window) {
        return static_cast<HistogramView *>(window->graph());
    };
    alone->setGroup(ViewWindow::Alone);
    const qint64 early = instantOf(dataTimes(mIncome).first());
    first->graph()->goTo(early);
    const QVector<double> values = numbersAt(mIncome, early);
    const Bins expected = binsOf(values);
    QCOMPARE(bars(second)->bins().width, expected.width);
    QVERIFY(bars(alone)->bins().width != expected.width);
    first->graph()->choose({0, 1, 2}, SelectionMode::Replace);
    const auto total = [&](GraphWindow *window) {
        int sum = 0;
        for (const int count : bars(window)->selectedCounts())
            sum += count;
        return sum;
    };
    QCOMPARE(total(second), 3);
    QCOMPARE(total(alone), 0);
    alone->setGroup(ViewWindow::Main);
    QCOMPARE(total(alone), 3);
    // A double click in a time plot shows the time there in all linked views.
    GraphWindow *const lines = open(GraphKind::TimePlot);
    const auto names = [&] { return static_cast<TimePlotView *>(lines->graph())->names(); };
    const QStringList expectedNames = objectNames(mStates).mid(0, 3);
    QCOMPARE(names(), expectedNames);
    lines->graph()->openAt(QPoint(lines->graph()->widget()->width() - 1, 5));
    QCOMPARE(bars(second)->bins().width,
             binsOf(numbersAt(mIncome, workspace().stepsOf(mStates).last())).width);
    QCOMPARE(names(), expectedNames);
}

int tst_Graphs::import(const QByteArray &table)
{
    const bool isGrid = table.startsWith("ncols");
    QFile file(mFolder.filePath(isGrid ? QStringLiteral("v.asc") : QStringLiteral("points.csv")));
    if (!file.open(QIODevice::WriteOnly))
        return -1;
    file.write(table);
    file.close();
    ImportOptions options;
    options.map = file.fileName();
    if (!isGrid) {
        options.xColumn = QStringLiteral("x");
        options.yColumn = QStringLiteral("y");
    }
    return workspace().import(options);
}

/// A canvas that is another one at each time makes a played graph shake. In the second run the labels
/// have the room of the widest ones.
void tst_Graphs::canvasesKeepTheirSize()
{
    for (const GraphKind kind : {GraphKind::Scatter, GraphKind::Histogram, GraphKind::Moran}) {
        const GraphWindow *const window = open(kind);
        const QWidget *const canvas = window->graph()->widget();
        QSize size;
        for (const bool isFirst : {true, false}) {
            for (const qint64 time : workspace().stepsOf(mStates)) {
                workspace().setTime(mStates, time);
                QCoreApplication::processEvents();
                if (!isFirst)
                    QCOMPARE(canvas->size(), size);
            }
            size = canvas->size();
        }
    }
}

void tst_Graphs::troublesAreSentences_data()
{
    QTest::addColumn<QByteArray>("table");
    QTest::addColumn<GraphKind>("kind");
    QTest::addColumn<QString>("sentence"); // empty: there is a graph
    const QByteArray texts = "x,y,v\n0,0,a\n1,0,b\n";
    const QByteArray missing = "ncols 2\nnrows 2\nxllcorner 0\nyllcorner 0\ncellsize 1\n"
                               "NODATA_value -9\n-9 -9\n-9 -9\n";
    const QByteArray one = "x,y,v\n0,0,5\n";
    const QByteArray equal = "x,y,v\n0,0,5\n1,0,5\n2,0,5\n";
    const QByteArray vast = "x,y,v\n0,0,-1e308\n1,0,1e308\n2,0,1e15\n";
    QTest::newRow("texts, scatter") << texts << GraphKind::Scatter << "holds texts";
    QTest::newRow("texts, histogram") << texts << GraphKind::Histogram << "holds texts";
    QTest::newRow("texts, boxes") << texts << GraphKind::BoxPlot << "holds texts";
    QTest::newRow("missing, scatter") << missing << GraphKind::Scatter << "of both v and v.";
    QTest::newRow("missing, histogram") << missing << GraphKind::Histogram << "v holds no values.";
    QTest::newRow("missing, boxes") << missing << GraphKind::BoxPlot << "v holds no values.";
    QTest::newRow("static, time") << equal << GraphKind::TimePlot << "does not change over time";
    QTest::newRow("no weight set") << equal << GraphKind::Moran << "weight set";
    for (const auto &[name, table] :
         {std::make_pair("one", one), std::make_pair("equal", equal), std::make_pair("vast", vast)})
        for (const GraphKind kind : {GraphKind::Scatter, GraphKind::Histogram, GraphKind::BoxPlot})
            QTest::addRow("%s, %s", name, qPrintable(graphKindName(kind))) << table << kind << "";
}

void tst_Graphs::troublesAreSentences()
{
    QFETCH(QByteArray, table);
    QFETCH(GraphKind, kind);
    QFETCH(QString, sentence);
    const int points = import(table);
    QVERIFY(points >= 0);
    int values = -1;
    for (const int dataset : datasetIds(points))
        if (datasetName(dataset) == QLatin1String("v"))
            values = dataset;
    QVERIFY(values >= 0);
    mQueen = -1;
    GraphWindow *const window = open(kind, kind == GraphKind::Scatter ? QVector<int>{values, values}
                                                                      : QVector<int>{values});
    QVERIFY(window);
    const GraphView &graph = *window->graph();
    if (sentence.isEmpty())
        QCOMPARE(graph.trouble(), QString());
    QVERIFY2(graph.trouble().contains(sentence), qPrintable(graph.trouble()));
    QVERIFY2(!graph.summary().contains(QLatin1String("nan")), qPrintable(graph.summary()));
    // Nothing that a person does to it does harm.
    drag(*window, {1, 1}, {300, 300});
    for (const int key : {Qt::Key_Plus, Qt::Key_Left, Qt::Key_PageDown, Qt::Key_Space, Qt::Key_0})
        QTest::keyClick(graph.widget(), static_cast<Qt::Key>(key));
    window->grab();
    const QRectF shown = graph.shownRange();
    QVERIFY(std::isfinite(shown.width()) && std::isfinite(shown.height()));
}

void tst_Graphs::datasetsAndGeographiesGo()
{
    GraphWindow *const lines = open(GraphKind::TimePlot);
    GraphWindow *const scatter = open(GraphKind::Scatter);
    GraphWindow *const moran = open(GraphKind::Moran);
    GraphWindow *const codes = open(GraphKind::Histogram, {mCode});
    QPointer<GraphWindow> gone(lines);
    // Values that change are shown at once.
    QVector<double> values = numbersAt(mCode, workspace().timeOf(mStates));
    const auto *const bars = static_cast<HistogramView *>(codes->graph());
    const double width = bars->bins().width;
    QVERIFY(workspace().run(QStringLiteral("work"), [&](const Progress &) {
        QVector<int> numbers;
        for (const double value : std::as_const(values))
            numbers.append(static_cast<int>(value) * 1000);
        QVERIFY(VORN_AddDataValues(mCode, 0, dataTimes(mCode).value(0), numbers, {}, true, true));
        VORN_DatasetChanged(mCode);
    }));
    QCOMPARE(bars->bins().width, width * 1000);
    QVERIFY(workspace().run(QStringLiteral("work"), [&](const Progress &) {
        geographyOf(mStates)->RemoveSpatialWeightSet(mQueen);
    }));
    QVERIFY2(moran->graph()->trouble().contains(QLatin1String("weight set")),
             qPrintable(moran->graph()->trouble()));
    QVERIFY(workspace().run(QStringLiteral("work"),
                            [&](const Progress &) { VORN_RemoveDataset(mIncome); }));
    QCOMPARE(codes->findChild<QComboBox *>(QStringLiteral("dataset"))->count(), 1);
    QCOMPARE(lines->graph(), nullptr);
    QCOMPARE(scatter->graph(), nullptr);
    codes->graph()->choose({1, 2}, SelectionMode::Replace);
    QCOMPARE(text(selected()), text((Ids{1, 2})));
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY(!gone);
    workspace().close();
    QCOMPARE(codes->graph(), nullptr);
}

void tst_Graphs::hookShowsWhatItIsAskedFor()
{
    ColorSchemeInfo colors;
    colors.classLimits = {0, 30000, 60000};
    colors.classColors = {0x112233, 0x445566};
    const QPointF mark(30, 30000);
    const QRectF bounds(10, 20000, 40, 30000);
    const qint64 early = instantOf(dataTimes(mIncome).first());
    GraphWindow *window = openGraph(workspace(), GT_ScatterPlot, {mCode, mIncome}, early,
                                    QStringLiteral("wages"), colors, &mark, &bounds);
    mWindows.append(window);
    QCOMPARE(window->title(), QStringLiteral("wages"));
    QCOMPARE(window->graph()->time(), early);
    QCOMPARE(window->graph()->shownRange(), bounds);
    const QJsonObject state = window->state();
    GraphWindow *const copy = open(GraphKind::Scatter, {mCode, mCode});
    copy->restore(state);
    QCOMPARE(copy->state(), state);
    QCOMPARE(openGraph(workspace(), GT_ScatterPlot, {mCode}, 0, QString(), {}, nullptr, nullptr),
             nullptr);
    QCOMPARE(openGraph(workspace(), GT_BoxPlot, {99999}, 0, QString(), {}, nullptr, nullptr),
             nullptr);
    // Datasets are chosen in the window, or dropped on it.
    auto *const choice = copy->findChild<QComboBox *>(QStringLiteral("yDataset"));
    choice->setCurrentIndex(choice->findData(mCode));
    Q_EMIT choice->activated(choice->currentIndex());
    QCOMPARE(copy->graph()->datasets(), (QVector<int>{mCode, mCode}));
    copy->addDataset(mIncome);
    QCOMPARE(copy->graph()->datasets(), (QVector<int>{mCode, mIncome}));
}

void tst_Graphs::exportsAndLogsCommandLines()
{
    for (const GraphKind kind : {GraphKind::Scatter, GraphKind::BoxPlot, GraphKind::Histogram,
                                 GraphKind::TimePlot, GraphKind::Moran}) {
        GraphWindow *const window = open(kind);
        window->graph()->choose({2, 7}, SelectionMode::Replace);
        for (const char *const suffix : {"png", "svg", "pdf"}) {
            const QString file =
                mFolder.filePath(QStringLiteral("graph.%1").arg(QLatin1String(suffix)));
            QVERIFY(window->exportTo(file));
            QVERIFY(QFileInfo(file).size() > 1000);
        }
        QVERIFY(!window->commandLine(QStringLiteral("a.png")).isEmpty());
        QCOMPARE(window->commandLine(QStringLiteral("a.png")).value(1), graphKindName(kind));
    }
    const QString line = workspace().log().lines().filter(QStringLiteral("plot time")).last();
    QVERIFY2(line.contains(QStringLiteral("--object %1").arg(objectKeys(mStates)[2])),
             qPrintable(line));
}

void tst_Graphs::cellsOfGridsAreObjects()
{
    const Interval always{0, 10, true, true};
    const int grid =
        VORN_CreateNewRasterGeography(QStringLiteral("grid"), 20, 30, QRectF(0, 0, 30, 20), always,
                                      TF_Integer, QString(), QString());
    QVERIFY(grid >= 0);
    const int a =
        VORN_NewRasterDataset(grid, QStringLiteral("a"), RasterDecimalType, 1, 32, QString());
    const int b =
        VORN_NewRasterDataset(grid, QStringLiteral("b"), RasterDecimalType, 1, 32, QString());
    QVERIFY(a >= 0 && b >= 0);
    QVector<float> rising;
    QVector<float> falling;
    for (int i = 0; i < 600; ++i) {
        rising.append(static_cast<float>(i));
        falling.append(static_cast<float>(600 - i));
    }
    QVERIFY(VORN_AddRasterValues(a, 0, always, rising, -1.0F, true, true));
    QVERIFY(VORN_AddRasterValues(b, 0, always, falling, -1.0F, true, true));
    workspace().look([] {}); // meets the geography
    workspace().setTime(grid, 5);
    GraphWindow *const scatter = open(GraphKind::Scatter, {a, b});
    GraphWindow *const bars = open(GraphKind::Histogram, {a});
    QCOMPARE(scatter->graph()->trouble(), QString());
    QCOMPARE(static_cast<ScatterView *>(scatter->graph())->line().r, -1.0);
    QPainterPath left;
    left.addRect(QRectF(0, 0, scatter->graph()->widget()->width() / 2.0,
                        scatter->graph()->widget()->height()));
    scatter->graph()->brush(left, SelectionMode::Replace);
    const Ids cells = workspace().selection().selected(grid);
    QVERIFY2(cells.size() > 200 && cells.size() < 400, qPrintable(QString::number(cells.size())));
    QCOMPARE(cells.first(), 0U);
    QCOMPARE(cells.last() + 1, static_cast<unsigned int>(cells.size()));
    int marked = 0;
    for (const int count : static_cast<HistogramView *>(bars->graph())->selectedCounts())
        marked += count;
    QCOMPARE(marked, cells.size());
    QVERIFY2(scatter->graph()->textOf(31).startsWith(QLatin1String("column 1, row 1")),
             qPrintable(scatter->graph()->textOf(31)));
}

void tst_Graphs::fewTimesAreSeenAndNamed()
{
    const auto texts = [this](GraphWindow *window) {
        QFile file(mFolder.filePath(QStringLiteral("texts.svg")));
        if (!window->exportTo(file.fileName()) || !file.open(QIODevice::ReadOnly))
            return QStringList();
        QStringList found;
        const QRegularExpression text(QStringLiteral("<text[^>]*>([^<]*)</text>"));
        for (auto each = text.globalMatch(QString::fromUtf8(file.readAll())); each.hasNext();)
            found += each.next().captured(1);
        return found;
    };
    const int points = import("x,y,v\n0,0,2\n1,0,3\n2,0,7\n");
    const int fixed = findDataset(points, QStringLiteral("v"));
    int days = -1;
    const auto add = [&](qint64 day) {
        workspace().run(QStringLiteral("add"), [&](const Progress &) {
            const bool isNew = days < 0;
            if (isNew)
                days = VORN_NewVectorDataset(points, QStringLiteral("days"), TimeSlice, DecimalType,
                                             1, QString());
            VORN_AddDataValues(days, 0, Interval{day, day + 1, true, true},
                               QVector<double>{2, 3, 7}, {}, true, true);
            isNew ? VORN_NewDatasetCreated(days) : VORN_DatasetChanged(days);
        });
    };
    add(1000);
    GraphWindow *const box = open(GraphKind::BoxPlot, {days});
    GraphWindow *const still = open(GraphKind::BoxPlot, {fixed});
    for (int i = 0; i < 2; ++i) {
        QCOMPARE(texts(box).last(), axisOf(points).show(dataTimes(days).first()));
        QCOMPARE(texts(still).last(), QStringLiteral("does not change over time"));
        QVERIFY(!texts(still).contains(QStringLiteral("-1")));
        QVERIFY2(still->graph()->summary().startsWith(QLatin1String("3 values, median 3,")),
                 qPrintable(still->graph()->summary()));
        for (GraphWindow *const each : {box, still})
            QTest::keyClick(each->graph()->widget(), Qt::Key_Plus);
    }
    add(2000);
    box->graph()->showAll();
    QVERIFY2(texts(box).contains(QStringLiteral("1500")),
             qPrintable(texts(box).join(QLatin1Char(' '))));
    // A day in a thousand is a dot.
    add(1500);
    const auto *const lines =
        static_cast<TimePlotView *>(open(GraphKind::TimePlot, {days})->graph());
    const QImage picture = lines->widget()->grab().toImage();
    for (int step = 0; step < 3; ++step) {
        const QPoint middle = lines->placeOf(step, 3).toPoint();
        int drawn = 0;
        for (int i = 0; i < 25; ++i) {
            const QPoint place = middle + QPoint(i % 5 - 2, i / 5 - 2);
            drawn += picture.rect().contains(place) && picture.pixelColor(place).lightness() < 220;
        }
        QVERIFY2(drawn >= 9, qPrintable(QStringLiteral("%1: %2 pixels").arg(step).arg(drawn)));
    }
}

int main(int argc, char **argv)
{
    return runTest<tst_Graphs>(argc, argv);
}

#include "tst_Graphs.moc"
