// SPDX-License-Identifier: MIT
#include "desk/views/boxPlotView.h"
#include <QPainter>
#include <algorithm>
#include <cmath>
#include <limits>
#include <qwt_plot.h>
#include <qwt_plot_item.h>
#include <qwt_scale_engine.h>
#include <qwt_scale_map.h>
#include "core/project/catalog.h"
#include "core/project/failure.h"
#include "core/project/text.h"
#include "datainterface/DataAPI.h"
#include "datainterface/GeographyAPI.h"
#include "datainterface/MDataset.h"
#include "desk/methods/fields.h"

namespace meridor {
namespace {

constexpr int kMostDots = 12;      ///< selected values that are drawn one by one
constexpr double kWidest = 60;     ///< of a box, in pixels
constexpr double kReach = 5;       ///< of the pointer, in pixels
constexpr int kMostBeyond = 20000; ///< outliers of a box that are drawn

QVector<double> finite(const QVector<double> &values)
{
    QVector<double> found;
    std::copy_if(values.begin(), values.end(), std::back_inserter(found),
                 [](double value) { return std::isfinite(value); });
    return found;
}

/// The axis below a single box, which has a title in place of numbers.
class NoTicks : public QwtLinearScaleEngine {
public:
    QwtScaleDiv divideScale(double low, double high, int, int, double) const override
    {
        return QwtScaleDiv(low, high);
    }
};

} // namespace

class BoxPlotView::Boxes : public QwtPlotItem {
public:
    explicit Boxes(const BoxPlotView &view) : mView(view)
    {
        setZ(20);
        setRenderHint(QwtPlotItem::RenderAntialiased);
    }

    void draw(QPainter *painter, const QwtScaleMap &xMap, const QwtScaleMap &yMap,
              const QRectF &) const override
    {
        const GraphColors &colors = mView.colors();
        const int present = mView.history().stepAt(mView.time());
        for (const Box &box : mView.mBoxes) {
            const double x = xMap.transform(box.at);
            const double half =
                std::min(kWidest / 2, std::abs(xMap.transform(box.at + mView.mHalf) - x));
            drawBox(*painter, box.figures, x, half, yMap, colors.plain, colors.fill,
                    box.step == present ? 2.5 : 1.2);
            const double radius = std::clamp(half / 3, 1.0, 3.0);
            painter->setBrush(Qt::NoBrush);
            const int beyond = box.figures.beyond.size();
            const int stride = beyond / kMostBeyond + 1;
            for (int i = 0; i < beyond; i += stride)
                painter->drawEllipse(QPointF(x, yMap.transform(box.figures.beyond[i])), radius,
                                     radius);
            if (!box.hasSelected)
                continue;
            painter->setPen(QPen(colors.selectedInk, 1));
            painter->setBrush(colors.selected);
            for (const double value : box.few)
                painter->drawEllipse(QPointF(x, yMap.transform(value)), radius + 1, radius + 1);
            if (box.few.isEmpty())
                drawBox(*painter, box.selected, x, half / 2.5, yMap, colors.selectedInk,
                        colors.selected, 1.2);
        }
    }

private:
    static void drawBox(QPainter &painter, const BoxFigures &box, double x, double half,
                        const QwtScaleMap &yMap, const QColor &line, const QColor &fill,
                        double width)
    {
        const auto y = [&yMap](double value) { return yMap.transform(value); };
        painter.setPen(QPen(line, width));
        painter.setBrush(fill);
        painter.drawLine(QPointF(x, y(box.low)), QPointF(x, y(box.firstQuartile)));
        painter.drawLine(QPointF(x, y(box.thirdQuartile)), QPointF(x, y(box.high)));
        painter.drawRect(QRectF(QPointF(x - half, y(box.thirdQuartile)),
                                QPointF(x + half, y(box.firstQuartile))));
        painter.setPen(QPen(line, 2 * width));
        painter.drawLine(QPointF(x - half, y(box.median)), QPointF(x + half, y(box.median)));
        painter.setPen(QPen(line, width));
    }

    const BoxPlotView &mView;
};

BoxPlotView::BoxPlotView(Workspace &workspace, int dataset) : HistoryView(workspace, dataset)
{
    (new Boxes(*this))->attach(plot());
    join();
}

QString BoxPlotView::title() const
{
    return tr("Boxes of %1").arg(datasetName(dataset()));
}

void BoxPlotView::load()
{
    mBoxes.clear();
    const TimeScale scale(geography());
    double nearest = HUGE_VAL;
    loadHistory([&](int step, const QVector<double> &all) {
        const QVector<double> values = finite(all);
        if (values.isEmpty())
            return;
        const double at = scale.middleOf(history().when(step));
        if (!mBoxes.isEmpty())
            nearest = std::min(nearest, at - mBoxes.last().at);
        mBoxes.append({step, at, boxOf(values), values.size(), false, {}, {}});
    });
    if (mBoxes.isEmpty())
        meridor::datasetOf(dataset())->IsStatic()
            ? failWithoutValues(dataset())
            : fail(tr("%1 holds no values").arg(datasetName(dataset())));
    mHalf = std::isfinite(nearest) ? nearest * 0.32 : 0.5;
    mOneTime.clear();
    if (mBoxes.size() > 1)
        return;
    mBoxes.first().at = 0;
    mOneTime = meridor::datasetOf(dataset())->IsStatic()
                   ? tr("does not change over time")
                   : axisOf(geography()).show(history().when(mBoxes.first().step));
}

void BoxPlotView::chooseTicks()
{
    const bool hasNone = dynamic_cast<NoTicks *>(plot()->axisScaleEngine(QwtPlot::xBottom));
    if (hasNone == !mOneTime.isEmpty())
        return;
    plot()->setAxisScaleEngine(QwtPlot::xBottom,
                               hasNone ? new QwtLinearScaleEngine() : new NoTicks());
    fitTicks();
}

void BoxPlotView::markSelected()
{
    const QVector<int> chosen = selectedObjects();
    // Values that are not kept would have to be read for each selection.
    for (Box &box : mBoxes) {
        QVector<double> values;
        if (history().isKept()) {
            const QVector<double> all = history().values(box.step);
            for (const int object : std::as_const(chosen))
                if (object < all.size() && std::isfinite(all[object]))
                    values.append(all[object]);
        }
        box.hasSelected = !values.isEmpty();
        box.few = values.size() <= kMostDots ? values : QVector<double>();
        box.selected = values.size() > kMostDots ? boxOf(values) : BoxFigures();
    }
    const auto figures = [](const Box &box) {
        return counted(box.count, tr("%1 value, median %2, quartiles %3 and %4"),
                       tr("%1 values, median %2, quartiles %3 and %4"))
            .arg(shortNumber(box.figures.median, 6), shortNumber(box.figures.firstQuartile, 6),
                 shortNumber(box.figures.thirdQuartile, 6));
    };
    QString text = counted(mBoxes.size(), tr("%1 box"), tr("%1 boxes"));
    const int present = history().stepAt(time());
    for (const Box &box : std::as_const(mBoxes))
        if (box.step == present)
            text += tr("; now %1").arg(figures(box));
    if (mBoxes.size() == 1)
        text = figures(mBoxes.first());
    setSummary(text, chosen.isEmpty() ? QString() : tr("%1 selected").arg(chosen.size()));
    chooseTicks();
}

double BoxPlotView::xOf(const Box &box) const
{
    return xMap().transform(box.at);
}

double BoxPlotView::boxWidth() const
{
    const QwtScaleMap x = xMap();
    return 2 * std::min(kWidest / 2, std::abs(x.transform(mHalf) - x.transform(0)));
}

int BoxPlotView::objectAt(const QPoint &pixel) const
{
    const QwtScaleMap y = yMap();
    const double low = y.invTransform(pixel.y() + kReach);
    const double high = y.invTransform(pixel.y() - kReach);
    const double middle = y.invTransform(pixel.y());
    int nearest = -1;
    double least = HUGE_VAL;
    for (const Box &box : mBoxes) {
        if (!history().isKept() || std::abs(xOf(box) - pixel.x()) > kReach)
            continue;
        const QVector<double> values = history().values(box.step);
        for (int i = 0; i < values.size(); ++i) {
            if (!(values[i] >= low && values[i] <= high) || std::abs(values[i] - middle) >= least)
                continue;
            least = std::abs(values[i] - middle);
            nearest = i;
        }
    }
    return nearest;
}

void BoxPlotView::drawMark(QPainter &painter, int object)
{
    if (object < 0)
        return;
    const QwtScaleMap y = yMap();
    painter.setPen(QPen(colors().ink, 1.5));
    painter.setBrush(Qt::NoBrush);
    QPolygonF path;
    for (const Box &box : std::as_const(mBoxes)) {
        const double value = history().value(box.step, object);
        if (std::isfinite(value))
            path.append(QPointF(xOf(box), y.transform(value)));
    }
    painter.drawPolyline(path);
    for (const QPointF &point : std::as_const(path))
        painter.drawEllipse(point, 4, 4);
}

bool BoxPlotView::shows(int object) const
{
    return std::any_of(mBoxes.begin(), mBoxes.end(), [&](const Box &box) {
        return std::isfinite(history().value(box.step, object));
    });
}

QVector<unsigned int> BoxPlotView::objectsWithin(const QPainterPath &region)
{
    const QwtScaleMap y = yMap();
    const QRectF area = region.boundingRect();
    const double half = boxWidth() / 2;
    if (area.isEmpty()) {
        // A click on a box selects what lies between its quartiles; beside a value, that one.
        const QPointF at =
            region.elementCount() > 0 ? QPointF(region.elementAt(0)) : QPointF(-1e9, -1e9);
        const int object = objectAt(at.toPoint());
        if (object >= 0)
            return {static_cast<unsigned int>(object)};
        for (const Box &box : std::as_const(mBoxes)) {
            const QRectF middle(QPointF(xOf(box) - half, y.transform(box.figures.thirdQuartile)),
                                QPointF(xOf(box) + half, y.transform(box.figures.firstQuartile)));
            if (middle.adjusted(0, -1, 0, 1).contains(at)) {
                QPainterPath whole;
                whole.addRect(middle);
                return objectsWithin(whole);
            }
        }
        return {};
    }
    return objectsWhere(region, [this, half](int step) {
        const auto box = std::find_if(mBoxes.begin(), mBoxes.end(),
                                      [step](const Box &each) { return each.step == step; });
        return box == mBoxes.end() ? Span{1, -1} : Span{xOf(*box) - half, xOf(*box) + half};
    });
}

GraphScale BoxPlotView::xScale() const
{
    const TimeScale scale(geography());
    return {mOneTime, mBoxes.first().at - 2 * mHalf, mBoxes.last().at + 2 * mHalf,
            mOneTime.isEmpty() && scale.axis().dates, true};
}

QStringList BoxPlotView::commandLine(const QString &picture) const
{
    QStringList line{QStringLiteral("plot"), QStringLiteral("boxes"), workspace().commandPath(),
                     datasetWord(dataset()), picture};
    if (meridor::datasetOf(dataset())->IsStatic() && workspace().stepsOf(geography()).size() > 1)
        line << QStringLiteral("--times") << axisOf(geography()).show(time());
    return line;
}

} // namespace meridor
