// SPDX-License-Identifier: MIT
// Map windows, driven by mouse and keys: what is selected in the library and in other maps, classes,
// times, layers that lose their data, and pictures.
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QPointer>
#include <QProcess>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>
#include <algorithm>
#include <cmath>
#include <memory>
#include "core/analysis/weightSets.h"
#include "core/import/importOptions.h"
#include "core/import/samples.h"
#include "core/project/catalog.h"
#include "datainterface/DataAPI.h"
#include "datainterface/GeographyAPI.h"
#include "datainterface/MDataset.h"
#include "datainterface/MGeoData.h"
#include "datainterface/MVectorDataset.h"
#include "datainterface/RasterAPI.h"
#include "desk/models/datasetMime.h"
#include "desk/person.h"
#include "desk/views/canvas.h"
#include "desk/views/classPanel.h"
#include "desk/views/graphWindow.h"
#include "desk/views/histogramView.h"
#include "desk/views/legendPanel.h"
#include "desk/views/mapLayerView.h"
#include "desk/views/mapWindow.h"
#include "desk/views/viewFactory.h"

using namespace meridor;
using Ids = QVector<unsigned int>;

namespace {

Ids sorted(Ids ids)
{
    std::sort(ids.begin(), ids.end());
    return ids;
}

} // namespace

Q_DECLARE_METATYPE(std::function<void(meridor::MapWindow &, int, int)>)

class tst_MapWindow : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void mouseSelectsInAllMaps();
    void regionsSelectWhatTheQueriesFind_data();
    void regionsSelectWhatTheQueriesFind();
    void keysMoveAndStep();
    void wheelKeepsThePlaceUnderTheMouse();
    void classesFollowTheRule();
    void draggedLimitsBecomeOwnLimits();
    void aHistogramSharesTheClasses();
    void timesChangeShapesAndValues();
    void hoveringShowsNeighbors();
    void gridsSelectCells();
    void extentsOutliveTheSize();
    void layersStandOverEachOther();
    void groupsOfLinks();
    void removedDataTakeTheirLayersAlong();
    void picturesAndStatesShowTheSame();
    void commandLinesDrawTheSamePicture_data();
    void commandLinesDrawTheSamePicture();
    void schemesOfTheLibrary();
    void oddGeographies_data();
    void oddGeographies();

private:
    Workspace &workspace() { return static_cast<Application *>(qApp)->workspace(); }
    Ids selected(int geography) { return workspace().selection().selected(geography); }
    int import(const char *file, const std::function<void(ImportOptions &)> &set = {});
    int importSample(Sample sample)
    {
        return workspace().import(sampleImport(sample, QStringLiteral(MERIDOR_TEST_SAMPLES)));
    }
    int importText(const QByteArray &geojson);
    void drag(MapWindow &map, const QVector<QPoint> &places, Qt::KeyboardModifiers keys = {})
    {
        meridor::drag(map.canvas(), QVector<QPointF>(places.begin(), places.end()), keys);
    }
    void click(MapWindow &map, const QPoint &place, Qt::KeyboardModifiers keys = {})
    {
        meridor::click(map.canvas(), place, keys);
    }
    void key(MapWindow &map, Qt::Key code, Qt::KeyboardModifiers keys = {})
    {
        type(map.canvas(), code, keys);
    }
    /// A pixel that shows an object.
    QPoint placeOf(const MapWindow &map, unsigned int object);
    MapWindow *show(int dataset);

    QTemporaryDir mFolder;
    int mStates = -1;
    int mIncome = -1;
    std::vector<QPointer<MapWindow>> mOpen;
};

int tst_MapWindow::import(const char *file, const std::function<void(ImportOptions &)> &set)
{
    ImportOptions options;
    options.map = QStringLiteral(MERIDOR_TEST_SAMPLES "/") + QLatin1String(file);
    if (set)
        set(options);
    return workspace().import(options);
}

int tst_MapWindow::importText(const QByteArray &geojson)
{
    QFile file(mFolder.filePath(QStringLiteral("odd.geojson")));
    if (!file.open(QIODevice::WriteOnly) || file.write(geojson) != geojson.size())
        return -1;
    file.close();
    ImportOptions options;
    options.map = file.fileName();
    return workspace().import(options);
}

void tst_MapWindow::initTestCase()
{
    muteSizeHints();
    QVERIFY(mFolder.isValid());
}

void tst_MapWindow::init()
{
    mStates = import("us_income/states48.geojson", [](ImportOptions &options) {
        options.key = QStringLiteral("fips");
        options.tables.append(
            QStringLiteral(MERIDOR_TEST_SAMPLES "/us_income/income_1929_2009.csv"));
        options.series.append(QStringLiteral("income=1929..2009"));
    });
    QVERIFY(mStates >= 0);
    mIncome = findDataset(mStates, QStringLiteral("income"));
}

void tst_MapWindow::cleanup()
{
    for (const QPointer<MapWindow> &map : mOpen)
        delete map.data();
    mOpen.clear();
    workspace().close();
}

MapWindow *tst_MapWindow::show(int dataset)
{
    MapWindow *const map = openMap(workspace(), dataset);
    if (!map)
        return nullptr;
    mOpen.push_back(map);
    map->resize(900, 600);
    map->show();
    map->canvas().finish();
    return map;
}

QPoint tst_MapWindow::placeOf(const MapWindow &map, unsigned int object)
{
    for (int y = 0; y < map.canvas().height(); y += 2)
        for (int x = 0; x < map.canvas().width(); x += 2)
            if (map.activeLayer()->objectAt(QPoint(x, y)) == static_cast<int>(object))
                return {x, y};
    return {-1, -1};
}

void tst_MapWindow::mouseSelectsInAllMaps()
{
    MapWindow *const map = show(mIncome);
    MapWindow *const other = show(findDataset(mStates, QStringLiteral("sub_region")));
    QVERIFY(map && other);
    const auto selection = [&] { return selected(mStates); };
    QSignalSpy changes(&workspace().selection(), &Selection::changed);
    click(*map, placeOf(*map, 20));
    QCOMPARE(selection(), (Ids{20}));
    QVERIFY(other->layers()[0]->isStale()); // it will be painted anew
    click(*other, placeOf(*other, 7), Qt::ShiftModifier);
    QCOMPARE(selection(), (Ids{7, 20}));
    click(*map, placeOf(*map, 20), Qt::ControlModifier);
    QCOMPARE(selection(), (Ids{7}));
    QCOMPARE(changes.size(), 3);
    key(*map, Qt::Key_Left, Qt::AltModifier);
    QCOMPARE(selection(), (Ids{7, 20}));
    key(*other, Qt::Key_Right, Qt::AltModifier);
    QCOMPARE(selection(), (Ids{7}));
    key(*map, Qt::Key_I, Qt::ControlModifier);
    QCOMPARE(selection().size(), 47);
    key(*map, Qt::Key_Escape);
    QCOMPARE(selection(), Ids());
    click(*map, placeOf(*map, 20));
    click(*map, QPoint(2, 2)); // the ground
    QCOMPARE(selection(), Ids());
}

void tst_MapWindow::regionsSelectWhatTheQueriesFind_data()
{
    QTest::addColumn<int>("tool");
    QTest::addColumn<QVector<QPoint>>("places");
    QTest::newRow("rectangle") << int(ViewWindow::Tool::Rectangle)
                               << QVector<QPoint>{{200, 150}, {250, 220}, {380, 300}};
    QTest::newRow("rectangle, backwards")
        << int(ViewWindow::Tool::Rectangle) << QVector<QPoint>{{380, 300}, {200, 150}};
    QTest::newRow("circle") << int(ViewWindow::Tool::Circle)
                            << QVector<QPoint>{{250, 220}, {300, 220}, {320, 240}};
    QTest::newRow("polygon") << int(ViewWindow::Tool::Lasso)
                             << QVector<QPoint>{{150, 150}, {400, 180}, {300, 350}, {280, 240}};
}

/// The objects that have a pixel in the region are found, and those that are found touch it.
void tst_MapWindow::regionsSelectWhatTheQueriesFind()
{
    QFETCH(int, tool);
    QFETCH(QVector<QPoint>, places);
    MapWindow *const map = show(mIncome);
    map->setTool(static_cast<ViewWindow::Tool>(tool));
    drag(*map, places);
    QPainterPath region;
    if (tool == int(ViewWindow::Tool::Rectangle))
        region.addRect(QRectF(places.first(), places.last()).normalized());
    else if (tool == int(ViewWindow::Tool::Circle))
        region.addEllipse(QPointF(places.first()), QLineF(places.first(), places.last()).length(),
                          QLineF(places.first(), places.last()).length());
    else
        region.addPolygon(QPolygon(places));
    const MapLayerView &layer = *map->layers()[0];
    const Ids found = selected(mStates);
    Ids seen;
    for (int y = 0; y < 500; ++y)
        for (int x = 0; x < 600; ++x)
            if (region.contains(QRectF(x, y, 1, 1)) && layer.objectAt({x, y}) >= 0
                && !seen.contains(unsigned(layer.objectAt({x, y}))))
                seen.append(unsigned(layer.objectAt({x, y})));
    QVERIFY2(seen.size() > 3 && seen.size() < 40, qPrintable(QString::number(seen.size())));
    for (const unsigned int object : std::as_const(seen))
        QVERIFY2(found.contains(object), qPrintable(QString::number(object)));
    for (const unsigned int object : found)
        QVERIFY2(layer.shapeOf(object, map->canvas().view()).intersects(region),
                 qPrintable(QString::number(object)));
}

void tst_MapWindow::keysMoveAndStep()
{
    MapWindow *const map = show(mIncome);
    MapCanvas &canvas = map->canvas();
    const QRectF whole = canvas.view().visible();
    key(*map, Qt::Key_Right);
    QCOMPARE(std::lround((canvas.view().visible().left() - whole.left()) * canvas.view().xScale()),
             64L);
    key(*map, Qt::Key_Plus);
    QVERIFY(canvas.view().visible().width() < 0.7 * whole.width());
    key(*map, Qt::Key_Home);
    QCOMPARE(canvas.view().visible(), whole);
    canvas.finish();
    // Page keys go through the objects that exist; space selects.
    key(*map, Qt::Key_PageDown);
    key(*map, Qt::Key_Space);
    key(*map, Qt::Key_PageUp);
    key(*map, Qt::Key_Space);
    QCOMPARE(selected(mStates), (Ids{0, 47}));
    key(*map, Qt::Key_Z);
    QVERIFY(canvas.view().visible().contains(map->layers()[0]->extentOf({0, 47})));
    workspace().selection().clear(mStates);
    QSignalSpy told(&workspace(), &Workspace::told);
    key(*map, Qt::Key_Z);
    QCOMPARE(told.size(), 1);
}

void tst_MapWindow::wheelKeepsThePlaceUnderTheMouse()
{
    MapWindow *const map = show(mIncome);
    MapCanvas &canvas = map->canvas();
    const QPointF place(210, 130);
    const QPointF before = canvas.view().toMap(place);
    turnWheel(canvas, place, 2);
    const QPointF after = canvas.view().toMap(place);
    QVERIFY2(QLineF(before, after).length() < 1e-6 / canvas.view().xScale() + 1e-6,
             qPrintable(QString::number(QLineF(before, after).length())));
    QTRY_VERIFY_WITH_TIMEOUT(canvas.isSharp(), kPatience); // at rest, without further events
    QPoint seen = placeOf(*map, 20);
    click(*map, seen);
    QCOMPARE(selected(mStates), seen.x() < 0 ? Ids() : Ids{20});
}

void tst_MapWindow::classesFollowTheRule()
{
    MapWindow *const map = show(mIncome);
    MapLayerView &layer = *map->layers()[0];
    QSignalSpy told(&workspace(), &Workspace::told);
    ClassRule rule;
    for (const int count : {1'000'000, 0, -3}) {
        rule.count = count;
        QVERIFY(!layer.setRule(rule, true));
        QVERIFY2(told.last().at(0).toString().contains(QString::number(count)),
                 qPrintable(told.last().at(0).toString()));
    }
    QCOMPARE(layer.rule().count, 5);
    // One legend for all times, and each its own.
    QCOMPARE(layer.legend().entries.size(), 5);
    QCOMPARE(layer.legend().entries[4].count, 0); // nobody earns so little in 2009
    rule.count = 4;
    rule.method = QStringLiteral("jenks");
    QVERIFY(layer.setRule(rule, false));
    const auto isUsed = [&] { // no class of a time is without objects
        const QVector<LegendEntry> entries = layer.legend().entries;
        return entries.size() == 4
               && std::all_of(entries.begin(), entries.end(),
                              [](const LegendEntry &entry) { return entry.count > 0; });
    };
    QVERIFY(isUsed());
    const QVector<double> limits = layer.classes()->limits();
    map->goTo(workspace().stepsOf(mStates).first());
    QVERIFY(isUsed());
    QVERIFY(layer.classes()->limits().last() < limits.first());
    // Each class of the legend selects its objects.
    auto *const legend = map->findChild<LegendPanel *>();
    Q_EMIT legend->classChosen(&layer, layer.classOfEntry(0), Qt::NoModifier);
    QCOMPARE(selected(mStates).size(), int(layer.legend().entries[0].count));
    // Refused by the data: the present classes remain.
    const int names = findDataset(mStates, QStringLiteral("abbr"));
    MapLayerView *const texts = map->addLayer(names);
    QVERIFY(!texts->setRule(rule, true));
    QVERIFY(texts->classes()->entries().size() > 1);
}

void tst_MapWindow::draggedLimitsBecomeOwnLimits()
{
    MapWindow *const map = show(mIncome);
    MapLayerView &layer = *map->layers()[0];
    key(*map, Qt::Key_E);
    auto *const histogram = map->findChild<LimitsHistogram *>();
    const QVector<double> before = histogram->inner();
    QCOMPARE(before.size(), 4);
    histogram->setFocus();
    QTest::keyClick(histogram, Qt::Key_Right);
    QCOMPARE(layer.rule().limits.size(), 4);
    QVERIFY(layer.rule().limits[0] > before[0]);
    QCOMPARE(layer.rule().limits.mid(1), before.mid(1));
    QTest::keyClick(histogram, Qt::Key_Delete);
    QCOMPARE(layer.classes()->entries().size(), 4);
    QTest::keyClick(histogram, Qt::Key_Insert);
    QCOMPARE(layer.classes()->entries().size(), 5);
    QCOMPARE(map->findChild<QComboBox *>(QStringLiteral("classMethod"))->currentData().toString(),
             QStringLiteral("own"));
    qint64 sum = 0;
    for (const LegendEntry &entry : layer.legend().entries)
        sum += entry.count;
    QCOMPARE(sum, 48);
}

/// A limit that is dragged in the histogram moves in the map, and the other way round.
void tst_MapWindow::aHistogramSharesTheClasses()
{
    const std::unique_ptr<GraphWindow> bars(
        openGraph(workspace(), GraphKind::Histogram, {mIncome}));
    bars->resize(700, 500);
    bars->QWidget::show();
    auto &histogram = static_cast<HistogramView &>(*bars->graph());
    auto *const choice = bars->findChild<QCheckBox *>(QStringLiteral("mapClasses"));
    choice->setChecked(true);
    QCOMPARE(histogram.mapLayer(), static_cast<MapLayerView *>(nullptr));
    MapWindow *const map = show(mIncome);
    MapLayerView *const layer = map->layers().first();
    QTRY_COMPARE(histogram.mapLayer(), layer);
    ClassRule rule;
    rule.limits = {30000, 40000};
    QVERIFY(layer->setRule(rule, false));
    QCOMPARE(histogram.valueAt(QPointF(histogram.limitAt(0), 0)).x(), 30000.0);
    QWidget &canvas = *histogram.widget();
    const QPointF from(std::round(histogram.limitAt(0)), canvas.height() / 2);
    const QPointF to(from.x() + 40, from.y());
    const double value = histogram.valueAt(to).x();
    meridor::drag(canvas, {from, to});
    QCOMPARE(layer->rule().limits, (QVector<double>{value, 40000}));
    QCOMPARE(layer->classes()->limits()[1], value);
    QCOMPARE(workspace().selection().count(mStates), 0); // no region was drawn
    meridor::drag(canvas, {to, QPointF(canvas.width() - 1, to.y())});
    QVERIFY2(layer->rule().limits[0] < 40000, qPrintable(QString::number(layer->rule().limits[0])));
    QVERIFY(layer->setRule(rule, false));
    const double step =
        (layer->classes()->limits().last() - layer->classes()->limits().first()) / 100;
    const QRectF range = histogram.shownRange();
    QTest::keyClick(&canvas, Qt::Key_Up, Qt::ControlModifier);
    QTest::keyClick(&canvas, Qt::Key_Left, Qt::ControlModifier);
    QCOMPARE(layer->rule().limits, (QVector<double>{30000, 40000 - step}));
    QTest::keyClick(&canvas, Qt::Key_Down, Qt::ControlModifier);
    QTest::keyClick(&canvas, Qt::Key_Right, Qt::ControlModifier);
    QCOMPARE(layer->rule().limits, (QVector<double>{30000 + step, 40000 - step}));
    QCOMPARE(histogram.shownRange(), range); // arrows alone move the graph
    QVERIFY(bars->state().value(QStringLiteral("mapClasses")).toBool());
    const QStringList line = bars->commandLine(QStringLiteral("a.png"));
    QVERIFY2(line.contains(QStringLiteral("--breaks")), qPrintable(line.join(QLatin1Char(' '))));
    delete map;
    QTRY_COMPARE(histogram.mapLayer(), static_cast<MapLayerView *>(nullptr));
}

void tst_MapWindow::timesChangeShapesAndValues()
{
    const int history = importSample(Sample::History);
    MapWindow *const map = show(findDataset(history, QStringLiteral("area_sqmi")));
    MapWindow *const other = show(findDataset(history, QStringLiteral("terr_type")));
    const auto existing = [](const MapWindow &window) {
        qint64 sum = 0;
        for (const LegendEntry &entry : window.layers()[0]->legend().entries)
            sum += entry.count;
        return sum;
    };
    const TimeAxis axis = axisOf(history);
    const std::pair<const char *, int> known[] = {
        {"1860-06-01", 41}, {"1790-08-02", 17}, {"1900-06-01", 50}};
    for (const auto &[when, count] : known) {
        map->goTo(axis.span(QString::fromLatin1(when))->startTime);
        QCOMPARE(existing(*map), count);
        QCOMPARE(existing(*other), count);
        QVERIFY2(other->title().contains(QLatin1String(when)), qPrintable(other->title()));
    }
    // No object exists, and back again.
    map->goTo(axis.span(QStringLiteral("1500-01-01"))->startTime);
    QVERIFY2(map->layers()[0]->trouble().contains(QStringLiteral("1500-01-01")),
             qPrintable(map->layers()[0]->trouble()));
    map->canvas().finish();
    QVERIFY(!map->grab().isNull());
    map->goTo(axis.span(QStringLiteral("1900-06-01"))->startTime);
    QCOMPARE(map->layers()[0]->trouble(), QString());
}

void tst_MapWindow::hoveringShowsNeighbors()
{
    const int set = makeQueen(workspace(), mStates);
    QVERIFY(set >= 0);
    MapWindow *const map = show(mIncome);
    auto *const box = map->findChild<QComboBox *>(QStringLiteral("weights"));
    QCOMPARE(box->count(), 2);
    box->setCurrentIndex(1);
    Q_EMIT box->activated(1);
    QCOMPARE(workspace().shownWeights(mStates), set);
    const unsigned int object = 20; // Indiana
    const QPoint place = placeOf(*map, object);
    pointAt(map->canvas(), place);
    QCOMPARE(workspace().selection().hovered(mStates), int(object));
    const Ids neighbors = neighborsOf(set, object, workspace().timeOf(mStates));
    QCOMPARE(map->layers()[0]->hoveredNeighbors(), neighbors);
    QCOMPARE(neighbors.size(), 4);
    const QString text = map->findChild<QLabel *>(QStringLiteral("readout"))->text();
    for (const char *part : {"Indiana", "income 33174", "4 neighbours", "Kentucky", "Ohio"})
        QVERIFY2(text.contains(QLatin1String(part)), qPrintable(text));
    click(*map, place);
    key(*map, Qt::Key_N);
    QCOMPARE(selected(mStates), sorted(Ids(neighbors) << object));
    QVERIFY(map->showWeights(set, -1));
    QCOMPARE(map->canvas().links().size(), 214);
    VORN_RemoveClusterSet(set);
    QCOMPARE(workspace().shownWeights(mStates), -1);
    QCOMPARE(box->count(), 1);
    QVERIFY(!map->showWeights(set, 0));
}

void tst_MapWindow::extentsOutliveTheSize()
{
    const int rain = importSample(Sample::Rain);
    MapWindow *const map = show(datasetIds(rain).first());
    MapCanvas &canvas = map->canvas();
    const QSize size = map->size();
    const QRectF part(QPointF(-84, 34.5), QPointF(-82, 36));
    map->resize(map->minimumSizeHint());
    canvas.show(part, 0);
    map->resize(size);
    QTRY_VERIFY(canvas.height() > canvas.minimumHeight() + 50);
    const auto excess = [&] {
        const QRectF seen = canvas.shown();
        return std::min(seen.width() - part.width(), seen.height() - part.height());
    };
    QVERIFY2(std::abs(excess()) < 0.02, qPrintable(QString::number(excess())));
    // The user's own zoom stays as it is.
    key(*map, Qt::Key_Plus);
    const double scale = canvas.view().xScale();
    map->resize(size + QSize(60, 40));
    QCOMPARE(canvas.view().xScale(), scale);
    map->resize(size);
}

void tst_MapWindow::gridsSelectCells()
{
    const int rain = importSample(Sample::Rain);
    MapWindow *const map = show(datasetIds(rain).first());
    MapLayerView &layer = *map->layers()[0];
    // All 33 by 81 cells, of which the sea is missing.
    qint64 sum = 0;
    for (const LegendEntry &entry : layer.legend().entries)
        sum += entry.count;
    QCOMPARE(sum, 33 * 81);
    QCOMPARE(layer.legend().entries.last().count, 593);
    const QPoint place = map->canvas().view().toPixel(QPointF(-84.9, 37.1)).toPoint();
    click(*map, place);
    QCOMPARE(selected(rain), (Ids{0}));
    double value = 0;
    QVERIFY(VORN_GetRasterValue(datasetIds(rain).first(), 0, 40, 12, layer.time(), value));
    QCOMPARE(layer.describe(12 * 81 + 40),
             QStringLiteral("column 40, row 12: pr_1999 %1").arg(QString::number(value, 'g', 6)));
    // Four by three cells, by their centres.
    const auto pixel = [&](double column, double row) {
        return map->canvas()
            .view()
            .toPixel(QPointF(-85 + 0.125 * column, 37.125 - 0.125 * row))
            .toPoint();
    };
    drag(*map, {pixel(10, 5), pixel(12, 7), pixel(14, 8)});
    Ids expected;
    for (unsigned int row = 5; row < 8; ++row)
        for (unsigned int column = 10; column < 14; ++column)
            expected.append(row * 81 + column);
    QCOMPARE(selected(rain), expected);
    map->setTool(ViewWindow::Tool::Lasso);
    drag(*map, {pixel(10, 5), pixel(14, 5), pixel(14, 8), pixel(10, 8)});
    QCOMPARE(selected(rain), expected);
    key(*map, Qt::Key_Z);
    QVERIFY(map->canvas().view().visible().width() < 2);
    map->canvas().finish();
    QVERIFY(!map->grab().isNull());
}

void tst_MapWindow::layersStandOverEachOther()
{
    const int rain = import("carolina_climate/pr_1999.tif");
    const int counties = import("nc_sids/nc_counties.geojson");
    MapWindow *const map = show(datasetIds(rain).first());
    // A dataset is dropped as the contents offer it.
    const std::unique_ptr<QMimeData> data(mimeOf(findDataset(counties, QStringLiteral("BIR74"))));
    QVERIFY(drop(*map, *data));
    QCOMPARE(map->layers().size(), 2);
    map->canvas().finish();
    const QPoint place = placeOf(*map, 40);
    click(*map, place);
    QCOMPARE(selected(counties), (Ids{40}));
    QCOMPARE(selected(rain), Ids());
    map->layers()[1]->setVisible(false);
    click(*map, place); // what is seen now is a cell
    QCOMPARE(selected(rain).size(), 1);
    QCOMPARE(map->activeLayer(), map->layers()[0]);
    map->moveLayer(map->layers()[0], 1);
    QCOMPARE(map->layers()[0]->geography(), counties);
    key(*map, Qt::Key_Escape);
    QCOMPARE(selected(counties).size() + selected(rain).size(), 0);
    QVERIFY(!map->addLayer(-5));
    QTest::keyClick(map->findChild<LegendPanel *>(), Qt::Key_Delete); // the active layer
    QTRY_COMPARE_WITH_TIMEOUT(map->layers().size(), 1, kPatience);
    QCOMPARE(map->layers()[0]->geography(), counties);
    QCOMPARE(map->activeLayer(), map->layers()[0]);
}

void tst_MapWindow::groupsOfLinks()
{
    MapWindow *const map = show(mIncome);
    MapWindow *const alone = show(mIncome);
    alone->setGroup(ViewWindow::Alone);
    MapWindow *const third = show(mIncome);
    const qint64 first = workspace().stepsOf(mStates).first();
    third->goTo(first);
    QCOMPARE(map->layers()[0]->time(), first);
    QVERIFY(alone->layers()[0]->time() != first);
    alone->setGroup(ViewWindow::Main);
    QCOMPARE(alone->layers()[0]->time(), first);
    map->setGroup(ViewWindow::GroupB);
    third->setGroup(ViewWindow::GroupB);
    const qint64 last = workspace().stepsOf(mStates).last();
    map->goTo(last);
    QCOMPARE(third->layers()[0]->time(), last);
    QCOMPARE(alone->layers()[0]->time(), first);
}

void tst_MapWindow::removedDataTakeTheirLayersAlong()
{
    const int counties = import("nc_sids/nc_counties.geojson");
    const int births = findDataset(counties, QStringLiteral("BIR74"));
    QPointer<MapWindow> map = show(mIncome);
    map->addLayer(births);
    map->addLayer(findDataset(counties, QStringLiteral("name")));
    QPointer<MapWindow> other = show(births);
    map->setActiveLayer(map->layers()[1]);
    QVERIFY(VORN_RemoveDataset(births));
    QCOMPARE(map->layers().size(), 2);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY(other.isNull());
    map->layers()[0]->hover(3);
    QVERIFY(VORN_RemoveGeography(mStates));
    QCOMPARE(map->layers().size(), 1);
    QCOMPARE(map->layers()[0]->geography(), counties);
    map->canvas().finish();
    QVERIFY(!map->grab().isNull());
    workspace().close();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY(map.isNull());
}

void tst_MapWindow::picturesAndStatesShowTheSame()
{
    MapWindow *const map = show(mIncome);
    ClassRule rule;
    rule.limits = {30000, 40000};
    rule.palette = QStringLiteral("ember");
    QVERIFY(map->layers()[0]->setRule(rule, true));
    map->addOutlines(mStates);
    map->canvas().show(QRectF(-500000, 1500000, 900000, 700000), 0);
    workspace().selection().select(mStates, {20, 21});
    for (const char *name : {"map.png", "map.svg", "map.pdf"})
        QVERIFY2(map->exportTo(mFolder.filePath(QLatin1String(name))), name);
    QSignalSpy told(&workspace(), &Workspace::told);
    QVERIFY(!map->exportTo(mFolder.filePath(QStringLiteral("map.bmp"))));
    QVERIFY(!map->exportTo(mFolder.filePath(QStringLiteral("no/such/map.png"))));
    QCOMPARE(told.size(), 2);
    QFile svg(mFolder.filePath(QStringLiteral("map.svg")));
    QVERIFY(svg.open(QIODevice::ReadOnly));
    const QByteArray drawn = svg.readAll();
    for (const char *part : {">selected<", ">30 000", "#ff9500"})
        QVERIFY2(QString::fromUtf8(drawn).replace(QChar(0x2009), ' ').contains(QLatin1String(part)),
                 part);
    const QStringList line = map->commandLine(QStringLiteral("a.png"));
    for (const char *word : {"map", "--breaks", "30000,40000", "--palette", "ember", "--layer",
                             "states48", "--extent", "--all-times", "2009"})
        QVERIFY2(line.contains(QLatin1String(word)), qPrintable(line.join(' ')));
    MapWindow *const again = show(mIncome);
    again->restore(map->state());
    QJsonObject states[] = {map->state(), again->state()};
    for (int i = 0; i < 4; ++i) {
        const double difference = states[0]["extent"].toArray()[i].toDouble()
                                  - states[1]["extent"].toArray()[i].toDouble();
        QVERIFY2(std::abs(difference) * map->canvas().view().xScale() < 0.01,
                 qPrintable(QString::number(difference)));
    }
    for (QJsonObject &state : states)
        state.remove(QStringLiteral("extent"));
    QCOMPARE(states[0], states[1]);
    QCOMPARE(again->layers().size(), 2);
    QJsonObject strange = map->state();
    strange.insert(QStringLiteral("layers"),
                   QJsonArray{QJsonObject{{"geography", "absent"}, {"dataset", "income"}}});
    again->restore(strange);
    QCOMPARE(again->layers().size(), 2);
}

namespace {

/// How many shapes have each colour in an SVG file.
QMap<QString, int> fillsOf(const QString &path)
{
    QFile file(path);
    QMap<QString, int> fills;
    if (!file.open(QIODevice::ReadOnly))
        return fills;
    const QRegularExpression fill(QStringLiteral("^[^>]*fill=\"([^\"]+)\""));
    for (const QString &group : QString::fromUtf8(file.readAll()).split(QStringLiteral("<g ")))
        if (const int shapes = group.count(QStringLiteral("<path")); shapes > 0)
            fills[fill.match(group).captured(1)] += shapes;
    return fills;
}

/// The texts of an SVG file, in the order in which they are drawn.
QStringList textsOf(const QString &path)
{
    QFile file(path);
    QStringList texts;
    if (!file.open(QIODevice::ReadOnly))
        return texts;
    const QRegularExpression text(QStringLiteral("<text([^>]*)>([^<]*)<"));
    const QRegularExpression place(QStringLiteral(" ([xy])=\"([^\"]+)\""));
    auto each = text.globalMatch(QString::fromUtf8(file.readAll()));
    while (each.hasNext()) {
        const QRegularExpressionMatch found = each.next();
        QString told = found.captured(2);
        auto side = place.globalMatch(found.captured(1));
        while (side.hasNext())
            told += QStringLiteral(" %1").arg(side.next().captured(2).toDouble(), 0, 'f', 0);
        texts.append(told);
    }
    return texts;
}

QString textOf(const QMap<QString, int> &fills)
{
    QStringList texts;
    for (auto each = fills.begin(); each != fills.end(); ++each)
        texts.append(QStringLiteral("%1 %2").arg(each.key()).arg(each.value()));
    return texts.join(QStringLiteral(", "));
}

} // namespace

void tst_MapWindow::commandLinesDrawTheSamePicture_data()
{
    QTest::addColumn<std::function<void(MapWindow &, int, int)>>("make");
    using Make = std::function<void(MapWindow &, int, int)>;
    const auto rule = [](const char *method, int count, const char *palette, bool reversed) {
        ClassRule made;
        made.method = QLatin1String(method);
        made.count = count;
        made.palette = QLatin1String(palette);
        made.reversed = reversed;
        return made;
    };
    QTest::newRow("classes of a time") << Make([=](MapWindow &map, int income, int) {
        map.goTo(map.workspace().stepsOf(VORN_GetGeographyId(income)).at(21));
        map.addLayer(income)->setRule(rule("quantile", 4, "YlGnBu", true), false);
    });
    QTest::newRow("layers and marks") << Make([=](MapWindow &map, int income, int) {
        const int states = VORN_GetGeographyId(income);
        map.addOutlines(states);
        map.addLayer(income)->setRule(rule("stddev", 5, "", true), true);
        map.addLayer(findDataset(states, QStringLiteral("sub_region")));
        map.addLayer(findDataset(states, QStringLiteral("abbr")))->setVisible(false);
        map.addOutlines(states);
        map.workspace().selection().select(states, {3, 20, 21});
    });
    QTest::newRow("limits, a part") << Make([](MapWindow &map, int income, int) {
        ClassRule own;
        own.limits = {500, 30000, 40000.5};
        map.addLayer(findDataset(VORN_GetGeographyId(income), QStringLiteral("fips")));
        map.addLayer(income)->setRule(own, true);
        map.canvas().show(QRectF(-500000, 1500000, 900000, 700000), 0);
    });
    QTest::newRow("values over time in static shapes") << Make([](MapWindow &map, int, int) {
        ImportOptions options;
        options.map = QStringLiteral(MERIDOR_TEST_SAMPLES "/us_income/states48.geojson");
        const int fixed = map.workspace().import(options);
        const int dataset =
            VORN_NewVectorDataset(fixed, QStringLiteral("v"), TimeSlice, DecimalType, 1, {});
        for (const int time : {90000, 90010}) {
            QVector<double> values;
            for (int i = 0; i < 48; ++i)
                values.append(i * (time - 89995));
            VORN_AddDataValues(dataset, 0, {time, time + 10, true, false}, values, {}, true, true);
        }
        VORN_NewDatasetCreated(dataset);
        map.addLayer(dataset);
        map.workspace().setTime(fixed, 90000);
    });
    QTest::newRow("a time of another geography")
        << Make([=](MapWindow &map, int income, int other) {
               map.addLayer(income);
               MapLayerView *const layer = map.addLayer(other);
               layer->setRule(rule("equal", 3, "ember", false), false);
               map.workspace().setTime(layer->geography(),
                                       map.workspace().stepsOf(layer->geography()).first());
               map.workspace().selection().select(layer->geography(), {7});
           });
}

/// What a window exports, and what its command line draws, have the same colours and texts.
void tst_MapWindow::commandLinesDrawTheSamePicture()
{
    using Make = std::function<void(MapWindow &, int, int)>;
    QFETCH(Make, make);
    const int again = import("us_income/states48.geojson", [](ImportOptions &options) {
        options.name = QStringLiteral("again: once more");
        options.key = QStringLiteral("fips");
        options.tables =
            QStringList{QStringLiteral(MERIDOR_TEST_SAMPLES "/us_income/income_1929_2009.csv")};
        options.series = QStringList{QStringLiteral("income=1929..2009")};
    });
    MapWindow map(workspace());
    map.resize(700, 500);
    map.show();
    make(map, mIncome, findDataset(again, QStringLiteral("income")));
    settle();
    QVERIFY(workspace().save(mFolder.filePath(QStringLiteral("same.vorn"))));
    const QString exported = mFolder.filePath(QStringLiteral("exported.svg"));
    const QString drawn = mFolder.filePath(QStringLiteral("drawn.svg"));
    QVERIFY(map.exportTo(exported));
    QProcess meridor;
    meridor.start(QStringLiteral(MERIDOR_DIRECTORY "/meridor"),
                  map.commandLine(drawn) + QStringList{QStringLiteral("--overwrite")});
    QVERIFY(meridor.waitForFinished(kPatience));
    const QString line = map.commandLine(drawn).join(QLatin1Char(' '));
    QVERIFY2(meridor.exitCode() == 0, qPrintable(line + meridor.readAllStandardError()));
    const QMap<QString, int> fills = fillsOf(exported);
    QVERIFY2(fills.size() > 2, qPrintable(textOf(fills)));
    if (textOf(fillsOf(drawn)) != textOf(fills))
        qWarning("%s", qPrintable(line));
    QCOMPARE(textOf(fillsOf(drawn)), textOf(fills));
    QCOMPARE(textsOf(drawn), textsOf(exported));
}

void tst_MapWindow::schemesOfTheLibrary()
{
    MapWindow map(workspace());
    ColorSchemeInfo fill;
    fill.classLimits = {0, 30000, 40000, 100000};
    fill.classColors = {0x112233, 0x445566, 0x778899};
    fill.missingColor = 0x010203;
    QVERIFY(map.addLayer(mIncome, fill, {}, {}));
    const LegendBlock legend = map.layers()[0]->legend();
    QCOMPARE(legend.entries.size(), 3);
    QCOMPARE(legend.entries[2].color, QColor(0x11, 0x22, 0x33));
    fill = {};
    fill.classCount = 1'000'000;
    QVERIFY(map.addLayer(mIncome, fill, {}, {}));
    QCOMPARE(map.layers()[1]->legend().entries.size(), 5);
    QVERIFY(!map.addLayer(-1, fill, {}, {}));
}

void tst_MapWindow::oddGeographies_data()
{
    QTest::addColumn<QByteArray>("features");
    QTest::addColumn<int>("classes");
    QTest::addColumn<QString>("trouble");
    const auto point = [](const char *x, const char *y, const char *value) -> QByteArray {
        return QByteArray("{\"type\":\"Feature\",\"properties\":{\"v\":") + value
               + "},\"geometry\":{\"type\":\"Point\",\"coordinates\":[" + x + ',' + y + "]}}";
    };
    const auto line = [](const char *places, const char *value) -> QByteArray {
        return QByteArray("{\"type\":\"Feature\",\"properties\":{\"v\":") + value
               + "},\"geometry\":{\"type\":\"LineString\",\"coordinates\":[" + places + "]}}";
    };
    QTest::newRow("one point") << point("3", "4", "1.5") << 1 << "";
    QTest::newRow("equal values") << point("3", "4", "1.5") + ',' + point("5", "6", "1.5") << 1
                                  << "";
    QTest::newRow("large coordinates")
        << point("1e15", "-1e15", "1.5") + ',' + point("1.0000001e15", "-1e15", "2.5") << 2 << "";
    QTest::newRow("a level line") << line("[7,7],[8,7]", "1.5") << 1 << "";
    QTest::newRow("texts") << point("3", "4", "\"a\"") + ',' + point("5", "6", "\"b\"") << 2 << "";
    QTest::newRow("all missing") << point("3", "4", "null") + ',' + point("5", "6", "null") << 0
                                 << "value";
}

void tst_MapWindow::oddGeographies()
{
    QFETCH(QByteArray, features);
    QFETCH(int, classes);
    QFETCH(QString, trouble);
    const int odd = importText("{\"type\":\"FeatureCollection\",\"features\":[" + features + "]}");
    QVERIFY(odd >= 0);
    MapWindow *const map = show(findDataset(odd, QStringLiteral("v")));
    QVERIFY(map);
    const MapLayerView &layer = *map->layers()[0];
    QCOMPARE(layer.classes() ? layer.classes()->entries().size() : 0, classes);
    QVERIFY2(trouble.isEmpty() == layer.trouble().isEmpty() && layer.trouble().contains(trouble),
             qPrintable(layer.trouble()));
    if (classes > 0) {
        const QPoint place = placeOf(*map, 0);
        QVERIFY(place.x() >= 0);
        click(*map, place);
        QCOMPARE(selected(odd), (Ids{0}));
    }
    key(*map, Qt::Key_Z);
    for (int i = 0; i < 40; ++i)
        key(*map, Qt::Key_Plus);
    QVERIFY(std::isfinite(map->canvas().view().visible().left()));
    map->canvas().finish();
    QVERIFY(!map->grab().isNull());
    QVERIFY(map->exportTo(mFolder.filePath(QStringLiteral("odd.png"))));
}

int main(int argc, char **argv)
{
    return runTest<tst_MapWindow>(argc, argv);
}

#include "tst_MapWindow.moc"
