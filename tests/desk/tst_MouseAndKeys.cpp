// SPDX-License-Identifier: MIT
// Mouse and keys in the views of one window: what is selected, hovered, classified, linked, dropped and
// taken away, looked at in the library's flags and in the other views.
#include <QAction>
#include <QClipboard>
#include <QDockWidget>
#include <QImage>
#include <QLabel>
#include <QLayout>
#include <QMenuBar>
#include <QMimeData>
#include <QPushButton>
#include <QSignalSpy>
#include <QSplitter>
#include <algorithm>
#include <cmath>
#include "core/import/importOptions.h"
#include "core/import/samples.h"
#include "core/plot/plotValues.h"
#include "core/project/catalog.h"
#include "datainterface/DataAPI.h"
#include "datainterface/MAttributes.h"
#include "datainterface/MGeoData.h"
#include "desk/dialogs/methodDialog.h"
#include "desk/models/contentsModel.h"
#include "desk/models/valueTable.h"
#include "desk/person.h"
#include "desk/project/things.h"
#include "desk/views/canvas.h"
#include "desk/views/classPanel.h"
#include "desk/views/graphWindow.h"
#include "desk/views/histogramView.h"
#include "desk/views/mapLayerView.h"
#include "desk/views/mapWindow.h"
#include "desk/views/pointView.h"
#include "desk/views/tableView.h"
#include "desk/views/tableWindow.h"
#include "desk/views/valueHistory.h"
#include "desk/window/contentsPanel.h"
#include "desk/window/mainWindow.h"
#include "desk/window/viewArea.h"

using namespace meridor;
using Ids = QVector<unsigned int>;
Q_DECLARE_METATYPE(meridor::ViewKind)
Q_DECLARE_METATYPE(Qt::KeyboardModifiers)

namespace {

/// Each key with the tool that it chooses, and a drag for it, in parts of the widget.
struct Stroke {
    const char *name;
    Qt::Key tool;
    QVector<QPointF> places;
};

const Stroke kRectangle{"rectangle", Qt::Key_S, {{0.35, 0.3}, {0.5, 0.4}, {0.6, 0.6}}};
const Stroke kLate{"rectangle", Qt::Key_S, {{0.8, 0.2}, {0.9, 0.3}, {0.99, 0.4}}};
const Stroke kLasso{"lasso", Qt::Key_L, {{0.3, 0.3}, {0.7, 0.35}, {0.6, 0.7}, {0.45, 0.5}}};
const Stroke kCircle{"circle", Qt::Key_C, {{0.5, 0.5}, {0.55, 0.5}, {0.62, 0.55}}};

QPainterPath regionOf(Qt::Key tool, const QVector<QPointF> &places)
{
    QPainterPath region;
    if (tool == Qt::Key_L) {
        region.addPolygon(QPolygonF(places));
        region.closeSubpath();
    } else if (tool == Qt::Key_C) {
        const double radius = QLineF(places.first(), places.last()).length();
        region.addEllipse(places.first(), radius, radius);
    } else {
        region.addRect(QRectF(places.first(), places.last()).normalized());
    }
    return region;
}

int sum(const QVector<int> &counts)
{
    return std::accumulate(counts.begin(), counts.end(), 0);
}

} // namespace

class tst_MouseAndKeys : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void dragsSelectInAllViews_data();
    void dragsSelectInAllViews();
    void limitsFollowTheMouse_data();
    void limitsFollowTheMouse();
    void wheelAndDragMoveThePicture_data();
    void wheelAndDragMoveThePicture();
    void theMouseNamesAnObject_data();
    void theMouseNamesAnObject();
    void menusSelect();
    void methodsOpenOverEveryView();
    void inversesAreOfTheTime();
    void datasetsAreDropped();
    void groupsOfViewsGoTheirOwnWay();
    void viewsAreTakenAway_data();
    void viewsAreTakenAway();
    void keysReachEverything();

private:
    Application &application() { return *static_cast<Application *>(qApp); }
    Workspace &workspace() { return application().workspace(); }
    MainWindow &window() { return application().window(); }
    Selection &selection() { return workspace().selection(); }
    ViewWindow *open(ViewKind kind, const QStringList &datasets = {QStringLiteral("income")});
    QAction *action(const char *name, QWidget *of = nullptr)
    {
        return (of ? of : &window())->findChild<QAction *>(QLatin1String(name));
    }
    /// The flags of the library: 1 selected, 2 hovered.
    QString flagged(int attribute)
    {
        return text(geographyOf(mStates)->GetAttributes(0)->GetIdsByState(attribute, true));
    }
    QString readout(const ViewWindow &view)
    {
        return view.findChild<QLabel *>(QStringLiteral("readout"))->text();
    }
    static QVector<QPointF> placesOf(const QWidget &widget, const QVector<QPointF> &parts);
    static const HistogramView &bars(const ViewWindow *view)
    {
        return *static_cast<const HistogramView *>(view->views().first());
    }
    QPointF placeOf(const MapLayerView &layer, unsigned int object);

    QTemporaryDir mFolder;
    int mStates = -1;
    int mIncome = -1;
    int mQueen = -1;
};

void tst_MouseAndKeys::initTestCase()
{
    muteSizeHints();
}

void tst_MouseAndKeys::init()
{
    const QString samples = QStringLiteral(MERIDOR_TEST_SAMPLES);
    mStates = workspace().import(sampleImport(Sample::Income, samples));
    QVERIFY(mStates >= 0);
    mIncome = findDataset(QStringLiteral("income"));
    mQueen = makeQueen(workspace(), mStates);
    QVERIFY(mQueen >= 0);
    window().askUnsaved = [] { return MainWindow::Unsaved::Discard; };
    window().resize(1400, 1000);
    window().show();
    QVERIFY(activate(window()));
}

void tst_MouseAndKeys::cleanup()
{
    while (auto *const dialog = window().findChild<QDialog *>())
        delete dialog;
    workspace().close();
}

ViewWindow *tst_MouseAndKeys::open(ViewKind kind, const QStringList &datasets)
{
    ViewRequest request;
    request.kind = kind;
    for (const QString &name : datasets) {
        const int ofStates = VORN_GetDatasetByName(mStates, name);
        request.datasets.append(ofStates >= 0 ? ofStates : findDataset(name));
    }
    request.geography = VORN_GetGeographyId(request.datasets.first());
    request.weights = mQueen;
    ViewWindow *const view = window().openView(request);
    window().area().tile();
    settle();
    window().grab();
    if (auto *const map = qobject_cast<MapWindow *>(view))
        map->canvas().finish();
    return view;
}

QVector<QPointF> tst_MouseAndKeys::placesOf(const QWidget &widget, const QVector<QPointF> &parts)
{
    QVector<QPointF> places;
    for (const QPointF &part : parts)
        places.append(QPoint(static_cast<int>(part.x() * widget.width()),
                             static_cast<int>(part.y() * widget.height())));
    return places;
}

QPointF tst_MouseAndKeys::placeOf(const MapLayerView &layer, unsigned int object)
{
    for (int y = 0; y < layer.widget()->height(); ++y)
        for (int x = 0; x < layer.widget()->width(); ++x)
            if (layer.objectAt(QPoint(x, y)) == static_cast<int>(object))
                return {double(x), double(y)};
    return {-1, -1};
}

void tst_MouseAndKeys::dragsSelectInAllViews_data()
{
    QTest::addColumn<ViewKind>("kind");
    QTest::addColumn<Qt::Key>("tool");
    QTest::addColumn<QVector<QPointF>>("parts");
    QTest::addColumn<Qt::KeyboardModifiers>("keys");
    const std::pair<const char *, Qt::KeyboardModifiers> modes[] = {
        {"", Qt::NoModifier}, {", shift", Qt::ShiftModifier}, {", control", Qt::ControlModifier}};
    const auto rows = [&](const char *view, ViewKind kind, const Stroke &stroke) {
        for (const auto &[name, keys] : modes)
            QTest::addRow("%s, %s%s", view, stroke.name, name)
                << kind << stroke.tool << stroke.places << keys;
    };
    for (const Stroke &stroke : {kRectangle, kLasso, kCircle})
        rows("map", ViewKind::Map, stroke);
    for (const Stroke &stroke : {kRectangle, kLasso})
        rows("scatter", ViewKind::Scatter, stroke);
    rows("moran", ViewKind::Moran, kLasso);
    rows("time", ViewKind::TimePlot, kLate);
    rows("boxes", ViewKind::BoxPlot, kLate);
    rows("histogram", ViewKind::Histogram, kRectangle);
}

void tst_MouseAndKeys::dragsSelectInAllViews()
{
    QFETCH(ViewKind, kind);
    QFETCH(Qt::Key, tool);
    QFETCH(QVector<QPointF>, parts);
    QFETCH(Qt::KeyboardModifiers, keys);
    const auto *const table = static_cast<TableWindow *>(open(ViewKind::Table));
    const ViewWindow *const histogram = open(ViewKind::Histogram);
    const ViewWindow *const view =
        open(kind, kind == ViewKind::Scatter
                       ? QStringList{QStringLiteral("fips"), QStringLiteral("income")}
                       : QStringList{QStringLiteral("income")});
    QWidget &canvas = *view->currentView()->widget();
    const Ids before{3, 12, 20, 40};
    selection().select(mStates, before);
    type(canvas, tool);
    const QVector<QPointF> places = placesOf(canvas, parts);
    Ids found;
    QVERIFY(
        workspace().look([&] { found = view->currentView()->objectsIn(regionOf(tool, places)); }));
    QVERIFY2(found.size() > 1 && found.size() < 48, qPrintable(text(found)));
    Ids expected;
    for (unsigned int object = 0; object < 48; ++object) {
        const bool was = before.contains(object);
        const bool is = found.contains(object);
        if (keys == Qt::ShiftModifier ? was || is : keys == Qt::ControlModifier ? was != is : is)
            expected.append(object);
    }
    // What Escape interrupts selects nothing, and keeps what was selected.
    const auto send = [&canvas](QEvent::Type type, const QPointF &at, Qt::MouseButtons held) {
        QMouseEvent event(type, at, type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton, held,
                          Qt::NoModifier);
        QApplication::sendEvent(&canvas, &event);
    };
    send(QEvent::MouseButtonPress, places.first(), Qt::LeftButton);
    send(QEvent::MouseMove, places.last(), Qt::LeftButton);
    type(canvas, Qt::Key_Escape);
    send(QEvent::MouseButtonRelease, places.last(), Qt::NoButton);
    QCOMPARE(flagged(attribute::kSelected), text(before));

    drag(canvas, places, keys);
    QCOMPARE(flagged(attribute::kSelected), text(expected));
    QCOMPARE(sum(bars(histogram).selectedCounts()), expected.size());
    Ids marked;
    const ValueTable &rows = table->table()->model();
    for (int row = 0; row < rows.rowCount(); ++row)
        if (rows.index(row, 0).data(Qt::ForegroundRole).isValid())
            marked.append(static_cast<unsigned int>(rows.objectOf(row)));
    std::sort(marked.begin(), marked.end());
    QCOMPARE(text(marked), text(expected));
    type(canvas, Qt::Key_Left, Qt::AltModifier);
    QCOMPARE(flagged(attribute::kSelected), text(before));
    QCOMPARE(sum(bars(histogram).selectedCounts()), before.size());
    type(canvas, Qt::Key_Right, Qt::AltModifier);
    QCOMPARE(flagged(attribute::kSelected), text(expected));
    type(canvas, Qt::Key_Escape);
    QCOMPARE(flagged(attribute::kSelected), QString());
    QCOMPARE(sum(bars(histogram).selectedCounts()), 0);
}

void tst_MouseAndKeys::limitsFollowTheMouse_data()
{
    QTest::addColumn<double>("from"); // the limit, counted from 0, and pixels beside it
    QTest::addColumn<int>("limit");
    QTest::addColumn<double>("to"); // pixels from the limit; huge: beyond the end
    QTest::addColumn<bool>("isGivenUp");
    QTest::newRow("up") << 0.0 << 1 << 6.0 << false;
    QTest::newRow("down, held beside it") << 2.0 << 1 << -4.0 << false;
    QTest::newRow("beyond the next") << 0.0 << 1 << 1e4 << false;
    QTest::newRow("below the one before") << 0.0 << 2 << -1e4 << false;
    QTest::newRow("below the lowest value") << 0.0 << 0 << -1e4 << false;
    QTest::newRow("a click") << 2.0 << 1 << 0.0 << false;
    QTest::newRow("Escape") << 0.0 << 1 << 9.0 << true;
}

void tst_MouseAndKeys::limitsFollowTheMouse()
{
    QFETCH(double, from);
    QFETCH(int, limit);
    QFETCH(double, to);
    QFETCH(bool, isGivenUp);
    auto *const map = static_cast<MapWindow *>(open(ViewKind::Map));
    selection().select(mStates, {5, 6});
    MapLayerView &layer = *map->activeLayer();
    type(map->canvas(), Qt::Key_E);
    settle();
    auto *const histogram = map->findChild<LimitsHistogram *>();
    const QVector<double> before = layer.classes()->limits();
    const QString method = layer.rule().method;
    QCOMPARE(histogram->inner(), before.mid(1, before.size() - 2));
    // The plot has a margin of half a line at its sides, and reaches over all limits.
    const double margin = histogram->fontMetrics().height() / 2.0;
    const double width = histogram->width() - 2 * margin;
    const double pixel = (before.last() - before.first()) / width;
    const double x =
        margin + (before[limit + 1] - before.first()) / pixel + from; // the first is not dragged
    const double y = histogram->height() / 2.0;
    const auto send = [&](QEvent::Type type, double at, Qt::MouseButtons held) {
        QMouseEvent event(type, QPointF(at, y),
                          type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton, held,
                          Qt::NoModifier);
        QApplication::sendEvent(histogram, &event);
    };
    send(QEvent::MouseButtonPress, x, Qt::LeftButton);
    if (to != 0.0) {
        send(QEvent::MouseMove, x + to / 2, Qt::LeftButton);
        send(QEvent::MouseMove, x + to, Qt::LeftButton);
        QVERIFY(layer.classes()->limits() != before); // the map follows at once
    }
    if (isGivenUp)
        type(*histogram, Qt::Key_Escape);
    send(QEvent::MouseButtonRelease, x + to, Qt::NoButton);
    QCOMPARE(flagged(attribute::kSelected), QStringLiteral("5 6"));
    const QVector<double> after = layer.classes()->limits();
    QCOMPARE(histogram->inner(), after.mid(1, after.size() - 2));
    if (isGivenUp || to == 0.0) {
        QCOMPARE(after, before);
        QCOMPARE(layer.rule().method, method);
        QVERIFY(layer.rule().limits.isEmpty());
        return;
    }
    QCOMPARE(layer.rule().limits, histogram->inner());
    const double low = limit == 0 ? before.first() : before[limit];
    const double wanted =
        std::clamp(before[limit + 1] + to * pixel, low + pixel, before[limit + 2] - pixel);
    QVERIFY2(std::abs(after[limit + 1] - wanted) < pixel / 10,
             qPrintable(QStringLiteral("%1, not %2").arg(after[limit + 1]).arg(wanted)));
    for (int i = 1; i + 1 < before.size(); ++i)
        if (i != limit + 1)
            QCOMPARE(after[i], before[i]);
    // Each class of the map has the objects of its values in the library.
    const QVector<double> values = numbersAt(mIncome, workspace().timeOf(mStates));
    for (int i = 0; i + 1 < after.size(); ++i) {
        Ids expected;
        for (int object = 0; object < values.size(); ++object)
            if ((values[object] > after[i] || (i == 0 && values[object] == after[i]))
                && values[object] <= after[i + 1])
                expected.append(static_cast<unsigned int>(object));
        Ids found;
        QVERIFY(workspace().look([&] { found = layer.objectsOfClass(i); }));
        std::sort(found.begin(), found.end());
        QCOMPARE(text(found), text(expected));
    }
}

void tst_MouseAndKeys::wheelAndDragMoveThePicture_data()
{
    QTest::addColumn<ViewKind>("kind");
    QTest::newRow("map") << ViewKind::Map;
    QTest::newRow("scatter") << ViewKind::Scatter;
    QTest::newRow("time") << ViewKind::TimePlot;
}

void tst_MouseAndKeys::wheelAndDragMoveThePicture()
{
    QFETCH(ViewKind, kind);
    const ViewWindow *const view =
        open(kind, kind == ViewKind::Scatter
                       ? QStringList{QStringLiteral("fips"), QStringLiteral("income")}
                       : QStringList{QStringLiteral("income")});
    selection().select(mStates, {7});
    QWidget &canvas = *view->currentView()->widget();
    const auto unitsAt = [&](const QPointF &pixel) {
        return kind == ViewKind::Map
                   ? static_cast<const MapWindow *>(view)->canvas().view().toMap(pixel)
                   : static_cast<const GraphView *>(view->currentView())->valueAt(pixel);
    };
    const auto pixelOf = [&](const QPointF &units) {
        return kind == ViewKind::Map
                   ? static_cast<const MapWindow *>(view)->canvas().view().toPixel(units)
                   : static_cast<const GraphView *>(view->currentView())->pixelOf(units);
    };
    const QPointF at(canvas.width() / 3, canvas.height() / 4);
    const QPointF beside = at + QPointF(20, 10);
    const auto isAt = [&](const QPointF &units, const QPointF &pixel) {
        const QPointF found = pixelOf(units);
        // Numbers at the axes of a graph can become longer, and move the canvas.
        return QLineF(found, pixel).length() < (kind == ViewKind::Map ? 0.01 : 12);
    };
    QPointF held = unitsAt(at);
    const QPointF other = unitsAt(beside);
    turnWheel(canvas, at, 2);
    QVERIFY(isAt(held, at));
    const double factor = QLineF(at, pixelOf(other)).length() / QLineF(at, beside).length();
    QVERIFY2(factor > 1.3 && factor < 3, qPrintable(QString::number(factor)));
    turnWheel(canvas, at, -2);
    QVERIFY(isAt(other, beside));
    held = unitsAt(at);
    drag(canvas, {at, at + QPointF(9, 4), at + QPointF(31, -7)}, {}, Qt::MiddleButton);
    QVERIFY(isAt(held, at + QPointF(31, -7)));
    type(canvas, Qt::Key_M);
    drag(canvas, {at + QPointF(31, -7), at});
    QVERIFY(isAt(held, at));
    QCOMPARE(flagged(attribute::kSelected), QStringLiteral("7"));
    // The arrows move as well, and back.
    for (const auto &[there, back] :
         {std::make_pair(Qt::Key_Left, Qt::Key_Right), std::make_pair(Qt::Key_Up, Qt::Key_Down)}) {
        type(canvas, there);
        QVERIFY(!isAt(held, at));
        type(canvas, back);
        QVERIFY(isAt(held, at));
    }
}

void tst_MouseAndKeys::theMouseNamesAnObject_data()
{
    QTest::addColumn<ViewKind>("kind");
    QTest::newRow("map") << ViewKind::Map;
    QTest::newRow("scatter") << ViewKind::Scatter;
    QTest::newRow("table") << ViewKind::Table;
}

void tst_MouseAndKeys::theMouseNamesAnObject()
{
    QFETCH(ViewKind, kind);
    constexpr unsigned int kIndiana = 20;
    const ViewWindow *const histogram = open(ViewKind::Histogram);
    auto *const map = static_cast<MapWindow *>(open(ViewKind::Map));
    const ViewWindow *const view =
        kind == ViewKind::Map     ? map
        : kind == ViewKind::Table ? open(kind)
                                  : open(kind, {QStringLiteral("fips"), QStringLiteral("income")});
    workspace().setShownWeights(mStates, mQueen);
    QWidget &canvas = *view->currentView()->widget();
    const auto place = [&]() -> QPointF {
        window().grab();
        map->canvas().finish();
        if (kind == ViewKind::Map)
            return placeOf(*map->activeLayer(), kIndiana);
        if (kind == ViewKind::Scatter) {
            const auto *const points = static_cast<const PointView *>(view->currentView());
            return points->pixelOf(points->places()[kIndiana]);
        }
        const auto *const table = static_cast<const TableView *>(view->currentView());
        const QModelIndex cell =
            table->model().index(table->model().rowOf(static_cast<int>(kIndiana)), 0);
        table->table()->scrollTo(cell);
        return table->table()->visualRect(cell).center();
    };
    pointAt(canvas, place());
    QCOMPARE(flagged(attribute::kHovered), QString::number(kIndiana));
    QVERIFY2(readout(*view).contains(QLatin1String("Indiana")), qPrintable(readout(*view)));
    QCOMPARE(map->activeLayer()->hoveredNeighbors().size(), 4);
    const QString other = readout(*histogram);
    QVERIFY2(other.startsWith(QLatin1String("Indiana")), qPrintable(other));
    // Another time has another value; so has another weight set other neighbours.
    const QString before = readout(*map);
    map->goTo(instantOf(dataTimes(mIncome)[3]));
    const QString value =
        textOf(numbersAt(mIncome, workspace().timeOf(mStates))[static_cast<int>(kIndiana)]);
    QVERIFY2(readout(*histogram).endsWith(value), qPrintable(readout(*histogram)));
    if (kind == ViewKind::Map) {
        QVERIFY2(before.contains(QLatin1String("4 neighbours")), qPrintable(before));
        QVERIFY2(readout(*map).contains(value), qPrintable(readout(*map)));
        workspace().setShownWeights(mStates, -1);
        QVERIFY2(!readout(*map).contains(QLatin1String("neighbours")), qPrintable(readout(*map)));
    }
    map->goTo(workspace().stepsOf(mStates).first()); // without any income
    QCOMPARE(readout(*histogram), QString());
    map->goTo(workspace().stepsOf(mStates).last());
    QEvent leave(QEvent::Leave);
    QApplication::sendEvent(kind == ViewKind::Table ? canvas.parentWidget() : &canvas, &leave);
    QCOMPARE(flagged(attribute::kHovered), QString());
    QCOMPARE(readout(*view), QString());
    // What another view hovers is named too when the mouse comes to it.
    selection().hover(mStates, static_cast<int>(kIndiana));
    pointAt(canvas, place());
    QVERIFY2(readout(*view).contains(QLatin1String("Indiana")), qPrintable(readout(*view)));
}

void tst_MouseAndKeys::menusSelect()
{
    const ViewWindow *const histogram = open(ViewKind::Histogram);
    open(ViewKind::Map);
    workspace().setShownWeights(mStates, mQueen);
    const auto run = [&](const char *method, const QString &field, const QVariant &value) {
        action(method)->trigger();
        auto *const dialog = window().findChild<MethodDialog *>(QLatin1String(method));
        QVERIFY(dialog);
        dialog->form().setParameters({{field, value},
                                      {QStringLiteral("min"), QStringLiteral("36000")},
                                      {QStringLiteral("max"), QStringLiteral("40000")}});
        QTest::mouseClick(dialog->findChild<QPushButton *>(QStringLiteral("run")), Qt::LeftButton);
        delete dialog;
    };
    run("method select", QStringLiteral("dataset"), mIncome);
    Ids rich;
    const QVector<double> values = numbersAt(mIncome, workspace().timeOf(mStates));
    for (int i = 0; i < values.size(); ++i)
        if (values[i] >= 36000 && values[i] <= 40000)
            rich.append(static_cast<unsigned int>(i));
    QVERIFY2(rich.size() > 2, qPrintable(text(rich)));
    QCOMPARE(flagged(attribute::kSelected), text(rich));
    QCOMPARE(sum(bars(histogram).selectedCounts()), rich.size());
    // Both ways to the neighbours find the same.
    Ids around = rich;
    for (const unsigned int object : rich)
        around += neighborsOf(mQueen, object, workspace().timeOf(mStates));
    std::sort(around.begin(), around.end());
    around.erase(std::unique(around.begin(), around.end()), around.end());
    action("editNeighbors")->trigger();
    QCOMPARE(flagged(attribute::kSelected), text(around));
    action("editBack")->trigger();
    QCOMPARE(flagged(attribute::kSelected), text(rich));
    run("method select-neighbors", QStringLiteral("weights"), mQueen);
    QCOMPARE(flagged(attribute::kSelected), text(around));
    action("editInvert")->trigger();
    QCOMPARE(selection().count(mStates), 48 - around.size());
    QVERIFY(!selection().isSelected(mStates, rich.first()));
    for (const char *const name : {"editClear", "editBack", "editForward"})
        action(name)->trigger();
    QCOMPARE(flagged(attribute::kSelected), QString());
    QCOMPARE(sum(bars(histogram).selectedCounts()), 0);
}

/// The form is filled from the active view, as far as it asks for what the view shows.
void tst_MouseAndKeys::methodsOpenOverEveryView()
{
    workspace().import(sampleImport(Sample::Rain, QStringLiteral(MERIDOR_TEST_SAMPLES)));
    const QString grid = datasetName(datasetIds(geographyIds().last()).first());
    for (const QString &shown :
         {QString(), QStringLiteral("income"), QStringLiteral("abbr"), grid}) {
        if (!shown.isEmpty())
            open(ViewKind::Map, {shown});
        for (const Method &method : application().methods().all()) {
            const QByteArray name = "method " + method.name.toUtf8();
            action(name.constData())->trigger();
            const std::unique_ptr<MethodDialog> dialog(
                window().findChild<MethodDialog *>(QLatin1String(name)));
            QVERIFY2(dialog, qPrintable(shown + QStringLiteral(": ") + method.name));
        }
    }
    action("method select")->trigger();
    auto *const dialog = window().findChild<MethodDialog *>();
    QCOMPARE(
        datasetName(MethodArguments(dialog->form().parameters()).id(QStringLiteral("dataset"))),
        grid);
}

void tst_MouseAndKeys::inversesAreOfTheTime()
{
    const int history =
        workspace().import(sampleImport(Sample::History, QStringLiteral(MERIDOR_TEST_SAMPLES)));
    ViewWindow *const map = open(ViewKind::Map, {QStringLiteral("area_sqmi")});
    map->goTo(axisOf(history).span(QStringLiteral("1790-08-02"))->startTime);
    const QVector<int> existing = objectsAt(history, workspace().timeOf(history));
    QCOMPARE(existing.size(), 17);
    const auto first = static_cast<unsigned int>(existing[0]);
    selection().select(history, {first});
    type(*map->currentView()->widget(), Qt::Key_I, Qt::ControlModifier);
    QCOMPARE(selection().count(history), 16);
    for (const unsigned int object : selection().selected(history))
        QVERIFY2(existing.contains(static_cast<int>(object)) && object != first,
                 qPrintable(QString::number(object)));
    type(*map->currentView()->widget(), Qt::Key_I, Qt::ControlModifier);
    QCOMPARE(text(selection().selected(history)), text(Ids{first}));
}

void tst_MouseAndKeys::datasetsAreDropped()
{
    ImportOptions options = sampleImport(Sample::Counties, QStringLiteral(MERIDOR_TEST_SAMPLES));
    options.fields.append(QStringLiteral("BIR74"));
    const int counties = workspace().import(options);
    const int births = findDataset(counties, QStringLiteral("BIR74"));
    const auto *const map = static_cast<MapWindow *>(open(ViewKind::Map));
    const auto *const scatter = static_cast<GraphWindow *>(
        open(ViewKind::Scatter, {QStringLiteral("fips"), QStringLiteral("income")}));
    const auto *const histogram = static_cast<GraphWindow *>(open(ViewKind::Histogram));
    const auto *const table = static_cast<TableWindow *>(open(ViewKind::Table));
    const auto *const model = window().contents().findChild<ContentsModel *>();
    QSignalSpy told(&workspace(), &Workspace::told);
    const auto dropOn = [&](const ViewWindow *view, int dataset) {
        const std::unique_ptr<QMimeData> data(
            model->mimeData({model->indexOf({Thing::Dataset, dataset, -1})}));
        told.clear();
        QVERIFY(drop(*view->currentView()->widget(), *data));
    };
    const int names = findDataset(mStates, QStringLiteral("abbr"));
    struct Refused {
        const ViewWindow *view;
        int dataset;
        const char *text;
    };
    for (const Refused &each : {Refused{scatter, births, "BIR74 belong to different geographies"},
                                Refused{scatter, names, "abbr holds texts"},
                                Refused{histogram, names, "abbr holds texts"},
                                Refused{table, births, "cannot be dropped"}}) {
        const QJsonObject before = each.view->state();
        dropOn(each.view, each.dataset);
        QCOMPARE(told.size(), 1);
        const QString sentence = told.last().at(0).toString();
        QVERIFY2(sentence.contains(QLatin1String(each.text)), qPrintable(sentence));
        QCOMPARE(each.view->state(), before);
        QCOMPARE(window().area().windows().size(), 4);
    }
    dropOn(map, births);
    QCOMPARE(map->layers().size(), 2);
    QCOMPARE(map->activeLayer()->dataset(), births);
    dropOn(scatter, findDataset(mStates, QStringLiteral("fips")));
    QCOMPARE(scatter->graph()->datasets()[1], findDataset(mStates, QStringLiteral("fips")));
    dropOn(histogram, births);
    QCOMPARE(histogram->graph()->datasets(), QVector<int>{births});
    QCOMPARE(histogram->graph()->geography(), counties);
    QCOMPARE(told.size(), 0);
    // On the window itself it opens a map.
    const std::unique_ptr<QMimeData> data(
        model->mimeData({model->indexOf({Thing::Dataset, mIncome, -1})}));
    QVERIFY(drop(window(), *data));
    QCOMPARE(window().area().windows().size(), 5);
}

void tst_MouseAndKeys::groupsOfViewsGoTheirOwnWay()
{
    ViewWindow *const map = open(ViewKind::Map);
    ViewWindow *const mapA = open(ViewKind::Map);
    ViewWindow *const bars0 = open(ViewKind::Histogram);
    ViewWindow *const barsA = open(ViewKind::Histogram);
    for (ViewWindow *const view : {mapA, barsA})
        action("linkGroup1", view)->trigger();
    const qint64 late = workspace().timeOf(mStates);
    const qint64 early = instantOf(dataTimes(mIncome).first());
    const auto marked = [](const ViewWindow *view) { return sum(bars(view).selectedCounts()); };
    const auto times = [&] {
        QVector<qint64> shown;
        for (const ViewWindow *const view : {map, bars0, mapA, barsA})
            shown.append(view->currentView()->time());
        return shown;
    };
    map->goTo(early);
    QCOMPARE(times(), (QVector<qint64>{early, early, late, late}));
    QWidget &canvasA = *mapA->currentView()->widget();
    drag(canvasA, placesOf(canvasA, kRectangle.places));
    const int count = selection().count(mStates);
    QVERIFY(count > 1);
    QCOMPARE(marked(barsA), count);
    QCOMPARE(marked(bars0), 0);
    QCOMPARE(times(), (QVector<qint64>{early, early, early, early}));
    const qint64 middle = instantOf(dataTimes(mIncome)[9]);
    mapA->goTo(middle);
    QCOMPARE(times(), (QVector<qint64>{early, early, middle, middle}));
    // A member that is linked again joins at once; the other one is a group of its own.
    action("linkGroup0", barsA)->trigger();
    QCOMPARE(times(), (QVector<qint64>{middle, middle, middle, middle}));
    QCOMPARE(marked(bars0), count);
    bars0->currentView()->choose({1}, SelectionMode::Replace);
    QCOMPARE(marked(barsA), 1);
    // Groups outlive their members.
    action("linkGroup1", barsA)->trigger();
    window().area().activate(mapA);
    action("viewClose")->trigger();
    settle();
    barsA->currentView()->choose({1, 2}, SelectionMode::Replace);
    QCOMPARE(marked(barsA), 2);
    QCOMPARE(marked(bars0), 1);
    // The layout of the project has the groups.
    const QString file = mFolder.filePath(QStringLiteral("groups.vorn"));
    QVERIFY(window().saveAs(file));
    QVERIFY(window().openProject(file));
    QVector<int> groups;
    for (const ViewWindow *const view : window().area().windows())
        groups.append(view->group());
    QCOMPARE(groups, (QVector<int>{ViewWindow::Main, ViewWindow::Main, ViewWindow::GroupA}));
}

void tst_MouseAndKeys::viewsAreTakenAway_data()
{
    QTest::addColumn<ViewKind>("kind");
    QTest::newRow("map") << ViewKind::Map;
    QTest::newRow("scatter") << ViewKind::Scatter;
    QTest::newRow("histogram") << ViewKind::Histogram;
    QTest::newRow("boxes") << ViewKind::BoxPlot;
    QTest::newRow("time") << ViewKind::TimePlot;
    QTest::newRow("moran") << ViewKind::Moran;
    QTest::newRow("table") << ViewKind::Table;
}

void tst_MouseAndKeys::viewsAreTakenAway()
{
    QFETCH(ViewKind, kind);
    ViewWindow *const view =
        open(kind, kind == ViewKind::Scatter
                       ? QStringList{QStringLiteral("fips"), QStringLiteral("income")}
                       : QStringList{QStringLiteral("income")});
    const QSize size = kind == ViewKind::Map ? view->currentView()->widget()->size()
                                             : view->layout()->itemAt(1)->geometry().size();
    QGuiApplication::clipboard()->clear();
    type(*view->currentView()->widget(), Qt::Key_C, Qt::ControlModifier);
    if (kind == ViewKind::Table)
        QCOMPARE(QGuiApplication::clipboard()->text().count(QLatin1Char('\n')), 49);
    else
        QCOMPARE(QGuiApplication::clipboard()->image().size(), size * view->devicePixelRatioF());
    const QString folder = mFolder.filePath(QString::fromLatin1(QTest::currentDataTag()));
    QVERIFY(QDir().mkpath(folder));
    QSignalSpy told(&workspace(), &Workspace::told);
    const auto exported = [&](const QString &file, QAction *by) {
        told.clear();
        return withFileName(file, [by] { by->trigger(); }) ? told.last().at(0).toString()
                                                           : QStringLiteral("not asked");
    };
    const std::pair<const char *, QByteArray> forms[] = {
        {"png", "\x89PNG"}, {"svg", "<?xml"}, {"pdf", "%PDF"}};
    for (const auto &[suffix, begins] : forms) {
        const QString file = folder + QStringLiteral("/a.") + QLatin1String(suffix);
        QCOMPARE(exported(file, action("exportPicture", view)), QStringLiteral("Saved as ") + file);
        QFile written(file);
        QVERIFY(written.open(QIODevice::ReadOnly));
        QCOMPARE(written.read(begins.size()), begins);
    }
    QCOMPARE(QImage(folder + QStringLiteral("/a.png")).size(), size * view->devicePixelRatioF());
    // The menu of the window exports, too, and a name without an extension gets one.
    QCOMPARE(exported(folder + QStringLiteral("/b"), action("editExport")),
             QStringLiteral("Saved as %1/b.png").arg(folder));
    // A folder that cannot be written to is a file here.
    const QString barred = folder + QStringLiteral("/a.svg/c.png");
    const QString sentence = exported(barred, action("editExport"));
    QVERIFY2(sentence.contains(barred) && told.last().at(1).toBool(), qPrintable(sentence));
}

void tst_MouseAndKeys::keysReachEverything()
{
    const QStringList datasets{QStringLiteral("income")};
    const QVector<ViewWindow *> views{open(ViewKind::Map), open(ViewKind::Histogram),
                                      open(ViewKind::Table)};
    for (int i = 0; i < 4; ++i) {
        type(window(), Qt::Key_F6);
        ViewWindow *const active = window().area().active();
        QCOMPARE(views.indexOf(active), i % 3);
        QVERIFY(active->isAncestorOf(QApplication::focusWidget()));
    }
    // Each menu and each of its actions has a letter of its own.
    QStringList faults;
    const std::function<void(const QList<QAction *> &, const QString &)> check =
        [&](const QList<QAction *> &actions, const QString &path) {
            QHash<QChar, QString> letters;
            for (const QAction *const each : actions) {
                if (each->isSeparator())
                    continue;
                const int mark = each->text().indexOf(QLatin1Char('&'));
                const QChar letter = mark < 0 ? QChar() : each->text()[mark + 1].toLower();
                const QString name = path + each->text();
                if (mark < 0)
                    faults.append(name + QStringLiteral(" has none"));
                else if (letters.contains(letter))
                    faults.append(name + QStringLiteral(" and ") + letters[letter]);
                letters.insert(letter, each->text());
                if (each->menu() && each->objectName().isEmpty())
                    check(each->menu()->actions(), name + QLatin1Char('/'));
            }
        };
    check(window().menuBar()->actions(), QString());
    QCOMPARE(faults.join(QStringLiteral("; ")), QString());
}

int main(int argc, char **argv)
{
    return runTest<tst_MouseAndKeys>(argc, argv);
}

#include "tst_MouseAndKeys.moc"
