// SPDX-License-Identifier: MIT
// How fast are the windows of the desktop with 1,000,000 objects? The table against one of 1,000 rows
// and a sort of indices, the scatter plot against curves of Qwt.
#include <QScrollBar>
#include <QTableView>
#include <algorithm>
#include <cmath>
#include <memory>
#include <numeric>
#include <qwt_plot.h>
#include <qwt_plot_curve.h>
#include <random>
#include "core/project/catalog.h"
#include "datainterface/DataAPI.h"
#include "datainterface/GeographyAPI.h"
#include "datainterface/MAttributes.h"
#include "desk/models/valueTable.h"
#include "desk/project/workspace.h"
#include "desk/scenes.h"
#include "desk/views/canvas.h"
#include "desk/views/graphWindow.h"
#include "desk/views/mapWindow.h"
#include "desk/views/scatterView.h"
#include "desk/views/tableView.h"
#include "desk/views/tableWindow.h"
#include "desk/window/application.h"
#include "ratios.h"

namespace {

using namespace meridor;

constexpr int kCount = 1000000;
constexpr QSize kWindow(1600, 1000);

/// A geography of points with two datasets, "x" and "y", whose values are correlated.
int addPoints(Workspace &workspace, const QString &name, int count)
{
    int id = -1;
    workspace.run(name, [&](const Progress &) {
        std::mt19937 random(3);
        std::normal_distribution<double> normal;
        const Interval always{0, 10, true, true};
        QVector<double> x;
        QVector<double> y;
        VORN_StartNewVectorGeography(QRectF(-9, -9, 18, 18), 0, 10, -1);
        for (int i = 0; i < count; ++i) {
            x.append(normal(random));
            y.append(0.6 * x.last() + 0.8 * normal(random));
            VORN_AddPointToChain(static_cast<unsigned>(VORN_CreateNewObjectChain()),
                                 QPointF(x[i], y[i]), always);
        }
        id = VORN_FinishVectorGeography(name, QString(), TF_Integer);
        for (const auto &[field, values] : {std::make_pair("x", x), std::make_pair("y", y)}) {
            const int dataset = VORN_NewVectorDataset(id, QLatin1String(field), TimeSlice,
                                                      DecimalType, 1, QString());
            VORN_AddDataValues(dataset, 0, always, values, {}, true, false);
            VORN_NewDatasetCreated(dataset);
        }
    });
    workspace.setTime(id, 5);
    return id;
}

/// Shows another part of a table each time.
class Pages {
public:
    Pages(Workspace &workspace, int geography) : mWindow(openTable(workspace, geography))
    {
        mWindow->resize(kWindow);
        mWindow->QWidget::show();
        turn();
    }
    void turn()
    {
        QTableView *const table = mWindow->table()->table();
        QScrollBar *const bar = table->verticalScrollBar();
        mAt = (mAt + 7919) % std::max(1, bar->maximum());
        bar->setValue(mAt);
        benchmark::DoNotOptimize(table->viewport()->grab());
    }
    TableView &view() { return *mWindow->table(); }

private:
    std::unique_ptr<TableWindow> mWindow;
    int mAt = 0;
};

void tableRows(Workspace &workspace, int many, int few)
{
    ratios::head("tables");
    Pages large(workspace, many);
    Pages small(workspace, few);
    const auto pages = ratios::bestInTurns(
        15, 1, [&] { large.turn(); }, [&] { small.turn(); });
    ratios::row("a page of 1,000,000 rows", pages.first / 1e6, "a page of 1,000 rows",
                pages.second / 1e6, 2, "ms");

    QVector<double> values;
    QSet<int> missing;
    VORN_GetNumericValues(findDataset(many, QStringLiteral("y")), 0, 5, values, missing);
    ValueTable &model = large.view().model();
    const int column = model.columnOf(findDataset(many, QStringLiteral("y")));
    Qt::SortOrder order = Qt::AscendingOrder;
    const auto sorts = ratios::bestInTurns(
        5, 1,
        [&] {
            order = order == Qt::AscendingOrder ? Qt::DescendingOrder : Qt::AscendingOrder;
            model.sort(column, order);
        },
        [&] {
            std::vector<int> rows(kCount);
            std::iota(rows.begin(), rows.end(), 0);
            const double *const data = values.constData();
            std::sort(rows.begin(), rows.end(), [data](int a, int b) { return data[a] < data[b]; });
            benchmark::DoNotOptimize(rows.data());
        });
    ratios::row("1,000,000 rows sorted by a column", sorts.first / 1e6, "a sort of indices",
                sorts.second / 1e6, 1, "ms");
}

/// Two curves of dots, one for each state, as Qwt's users draw a selection.
class TwoCurves {
public:
    TwoCurves()
    {
        mPlot.resize(kWindow);
        mPlot.setAxisScale(QwtPlot::xBottom, -5, 5);
        mPlot.setAxisScale(QwtPlot::yLeft, -5, 5);
        for (int state = 0; state < 2; ++state) {
            mCurves[state] = new QwtPlotCurve();
            mCurves[state]->setStyle(QwtPlotCurve::Dots);
            QPen pen(state == 1 ? Qt::red : Qt::gray, 5);
            pen.setCapStyle(Qt::RoundCap);
            mCurves[state]->setPen(pen);
            mCurves[state]->attach(&mPlot);
        }
        mPlot.show();
    }
    void setAttribute(QwtPlotCurve::PaintAttribute attribute, bool on)
    {
        for (QwtPlotCurve *const curve : mCurves)
            curve->setPaintAttribute(attribute, on);
    }
    void show(const std::vector<QPointF> &places, const std::vector<unsigned char> &flags)
    {
        QVector<QPointF> parts[2];
        for (std::size_t i = 0; i < places.size(); ++i)
            parts[flags[i]].append(places[i]);
        for (int state = 0; state < 2; ++state)
            mCurves[state]->setSamples(parts[state]);
        mPlot.replot();
        benchmark::DoNotOptimize(mPlot.canvas()->grab());
    }

private:
    QwtPlot mPlot;
    QwtPlotCurve *mCurves[2];
};

void scatterRows(Workspace &workspace, int many)
{
    ratios::head("scatter plot of 1,000,000 points, in its window");
    const std::unique_ptr<GraphWindow> window(openGraph(
        workspace, GraphKind::Scatter,
        {findDataset(many, QStringLiteral("x")), findDataset(many, QStringLiteral("y"))}));
    window->resize(kWindow);
    window->QWidget::show();
    auto &view = static_cast<ScatterView &>(*window->graph());
    view.widget()->grab();
    TwoCurves curves;
    const std::vector<QPointF> places = view.places();
    std::vector<unsigned char> flags(places.size());
    double least = INFINITY;
    double peer = INFINITY;
    double edge = 1;
    for (const bool filters : {false, true}) {
        for (const bool buffers : {false, true}) {
            curves.setAttribute(QwtPlotCurve::FilterPoints, filters);
            curves.setAttribute(QwtPlotCurve::ImageBuffer, buffers);
            const auto times = ratios::bestInTurns(
                3, 1,
                [&] { // from the rectangle to the picture, with both lines
                    edge += 0.01;
                    QPainterPath right;
                    right.addRect(
                        QRectF(view.pixelOf(QPointF(edge, 6)), view.pixelOf(QPointF(6, -6))));
                    view.brush(right, SelectionMode::Replace);
                    benchmark::DoNotOptimize(view.widget()->grab());
                },
                [&] {
                    for (std::size_t i = 0; i < places.size(); ++i)
                        flags[i] = places[i].x() > edge ? 1 : 0;
                    curves.show(places, flags);
                });
            least = std::min(least, times.first);
            peer = std::min(peer, times.second);
        }
    }
    ratios::row("a brush over 1,000,000 points", least / 1e6, "two curves, best attributes",
                peer / 1e6, 0.25, "ms");
}

/// The pictures of a map that are timed: the coarse one is shown at once, the sharp one at rest or,
/// when it is fast, at once, too.
enum class Map { Coarse, Sharp };

/// The five views of a geography with the datasets "x", "y" and "z", of which the last one changes.
class FiveViews {
public:
    FiveViews(Workspace &workspace, int geography, Map kind = Map::Coarse) : mMap(kind)
    {
        const int x = findDataset(geography, QStringLiteral("x"));
        const int y = findDataset(geography, QStringLiteral("y"));
        const int z = findDataset(geography, QStringLiteral("z"));
        add(openMap(workspace, z), kWindow);
        add(openGraph(workspace, GraphKind::Scatter, {x, z}), kPart);
        add(openGraph(workspace, GraphKind::Histogram, {y}), kPart);
        add(openGraph(workspace, GraphKind::TimePlot, {z}), kPart);
        add(openTable(workspace, geography), kPart);
        paint();
    }
    void paint()
    {
        QCoreApplication::sendPostedEvents(nullptr,
                                           QEvent::LayoutRequest); // labels have their room
        if (mMap == Map::Sharp)
            static_cast<MapWindow &>(*mWindows.front()).canvas().finish();
        for (const auto &window : mWindows)
            benchmark::DoNotOptimize(window->views().first()->widget()->grab());
    }
    View &map() { return *mWindows.front()->views().first(); }

private:
    static constexpr QSize kPart{800, 500};
    void add(ViewWindow *window, const QSize &size)
    {
        mWindows.emplace_back(window);
        window->resize(size);
        window->show();
    }
    Map mMap;
    std::vector<std::unique_ptr<ViewWindow>> mWindows;
};

/// Datasets for FiveViews; "z" has five slices of two units of time.
void addValues(Workspace &workspace, int geography, int count)
{
    workspace.run(QStringLiteral("values"), [&](const Progress &) {
        std::mt19937 random(5);
        std::normal_distribution<double> normal;
        QVector<double> values(count);
        for (const char *const field : {"x", "y", "z"}) {
            const int dataset = VORN_NewVectorDataset(geography, QLatin1String(field), TimeSlice,
                                                      DecimalType, 1, QString());
            const int slices = *field == 'z' ? 5 : 1;
            for (int slice = 0; slice < slices; ++slice) {
                for (double &value : values)
                    value = normal(random) + slice;
                VORN_AddDataValues(dataset, 0,
                                   {slice * 10 / slices, (slice + 1) * 10 / slices, true, false},
                                   values, {}, true, false);
            }
            VORN_RecalculateDataFrequencies(dataset); // the classes are made from them
            VORN_NewDatasetCreated(dataset);
        }
    });
    workspace.setTime(geography, scenes::kTime);
}

void linkedRows(Workspace &workspace)
{
    ratios::head("five linked views: map, scatter plot, histogram, time plot, table");
    constexpr int kSide = 316;
    int districts = -1;
    workspace.run(QStringLiteral("districts"),
                  [&](const Progress &) { districts = scenes::addDistricts(kSide, kSide); });
    addValues(workspace, districts, kSide * kSide);
    {
        FiveViews views(workspace, districts);
        const ViewTransform view =
            ViewTransform::fit(QRectF(0, 0, kSide, kSide), scenes::kWindow, 0);
        const ColorRule rule = scenes::sevenClasses();
        const QVector<int> classes(kSide * kSide, 3);
        QImage cached = scenes::canvas();
        scenes::drawPlainly(districts, view, classes, rule, false, nullptr, cached);
        bool isRight = false;
        const auto times = ratios::bestInTurns(
            7, 1,
            [&] { // the other half each time, so that the flags of all objects change
                isRight = !isRight;
                const double half = views.map().widget()->width() / 2.0;
                QPainterPath left;
                left.addRect(QRectF(isRight ? half : 0, 0, half, views.map().widget()->height()));
                views.map().brush(left, SelectionMode::Replace);
                views.paint();
            },
            [&] {
                const unsigned char *const flags =
                    workspace.selection().attributes(districts)->GetAttributeVector(
                        attribute::kSelected);
                QImage image = cached;
                scenes::drawPlainly(districts, view, classes, rule, false, flags, image);
                benchmark::DoNotOptimize(image);
            });
        std::printf("(%d selected)\n", workspace.selection().count(districts));
        ratios::row("a rectangle selects 50,000 of 100,000", times.first / 1e6,
                    "the selected over a cached map", times.second / 1e6, 0.5, "ms");
    }
    int few = -1;
    workspace.run(QStringLiteral("few"),
                  [&](const Progress &) { few = scenes::addDistricts(60, 50); });
    addValues(workspace, few, 3000);
    for (const Map map : {Map::Coarse, Map::Sharp}) {
        FiveViews views(workspace, few, map);
        qint64 time = 0;
        const auto steps = ratios::bestInTurns(
            15, 1,
            [&] {
                time = (time + 2) % 10;
                workspace.setTime(few, time + 1);
                views.paint();
            },
            [&] { const FiveViews first(workspace, few, map); });
        ratios::row(map == Map::Coarse ? "a step of time, 3,000 objects, coarse map"
                                       : "the same, sharp map",
                    steps.first / 1e6, "first pictures of the five", steps.second / 1e6,
                    map == Map::Coarse ? 0.1 : 0.2, "ms");
    }
}

} // namespace

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    Application application(argc, argv);
    Workspace &workspace = application.workspace();
    const QString wanted = QString::fromLocal8Bit(argc > 1 ? argv[1] : ""); // "linked": these alone
    if (wanted != QLatin1String("linked")) {
        const int many = addPoints(workspace, QStringLiteral("many"), kCount);
        const int few = addPoints(workspace, QStringLiteral("few"), 1000);
        tableRows(workspace, many, few);
        scatterRows(workspace, many);
    }
    linkedRows(workspace);
    workspace.close();
    return ratios::missed > 0;
}
