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
#include "desk/models/valueTable.h"
#include "desk/project/workspace.h"
#include "desk/views/graphWindow.h"
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

} // namespace

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    Application application(argc, argv);
    Workspace &workspace = application.workspace();
    const int many = addPoints(workspace, QStringLiteral("many"), kCount);
    const int few = addPoints(workspace, QStringLiteral("few"), 1000);
    tableRows(workspace, many, few);
    scatterRows(workspace, many);
    workspace.close();
    return ratios::missed > 0;
}
