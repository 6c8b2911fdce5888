// SPDX-License-Identifier: MIT
#include "desk/views/timePlotView.h"
#include <QPainter>
#include <algorithm>
#include <cmath>
#include <limits>
#include <qwt_plot.h>
#include <qwt_plot_item.h>
#include <qwt_scale_map.h>
#include "core/project/catalog.h"
#include "core/project/failure.h"
#include "core/project/text.h"
#include "core/render/graph.h"
#include "datainterface/DataAPI.h"
#include "datainterface/GeographyAPI.h"
#include "datainterface/MDataset.h"
#include "desk/methods/fields.h"
#include "desk/views/graphCanvas.h"

namespace meridor {
namespace {

constexpr int kMostLines = 200; ///< more selected objects are summarized
constexpr int kMostNames = 8;   ///< more lines have the same colour and no names
constexpr double kReach = 5;    ///< of the pointer, in pixels
constexpr double kLeastDot = 2; ///< radius in pixels

QPolygonF onCanvas(const QVector<QPointF> &points, const QwtScaleMap &xMap, const QwtScaleMap &yMap)
{
    QPolygonF line;
    for (const QPointF &point : points)
        line.append(QPointF(xMap.transform(point.x()), yMap.transform(point.y())));
    return line;
}

/// Draws the parts of a line between the points that are not finite. What is shorter than a dot, such as
/// a day in a century, is a dot.
void drawRuns(QPainter &painter, const QPolygonF &line)
{
    const double radius = std::max(kLeastDot, 1.2 * painter.pen().widthF());
    QPolygonF run;
    const auto drawRun = [&] {
        const QRectF box = run.boundingRect();
        if (run.isEmpty())
            return;
        if (std::max(box.width(), box.height()) < 2 * radius) {
            painter.save();
            painter.setBrush(painter.pen().color());
            painter.setPen(Qt::NoPen);
            painter.drawEllipse(box.center(), radius, radius);
            painter.restore();
        } else {
            painter.drawPolyline(run);
        }
        run.clear();
    };
    for (const QPointF &point : line) {
        if (std::isfinite(point.y()))
            run.append(point);
        else
            drawRun();
    }
    drawRun();
}

double distance(const QPointF &p, const QPointF &a, const QPointF &b)
{
    const QPointF d = b - a;
    const double length = QPointF::dotProduct(d, d);
    const double share =
        length > 0 ? std::clamp(QPointF::dotProduct(p - a, d) / length, 0.0, 1.0) : 0.0;
    const QPointF away = p - (a + share * d);
    return std::hypot(away.x(), away.y());
}

} // namespace

class TimePlotView::Lines : public QwtPlotItem {
public:
    explicit Lines(const TimePlotView &view) : mView(view)
    {
        setZ(20);
        setRenderHint(QwtPlotItem::RenderAntialiased);
    }

    void draw(QPainter *painter, const QwtScaleMap &xMap, const QwtScaleMap &yMap,
              const QRectF &canvas) const override
    {
        const GraphColors &colors = mView.colors();
        if (mView.mIsExporting)
            mView.drawNow(*painter, xMap, canvas);
        painter->setBrush(Qt::NoBrush);
        painter->setPen(QPen(colors.softInk, 2, Qt::DashLine));
        drawRuns(*painter, onCanvas(mView.mMean, xMap, yMap));
        drawBand(*painter, xMap, yMap);
        const bool hasNames = !mView.mNames.isEmpty();
        const QFontMetricsF metrics(painter->font());
        QVector<double> taken;
        for (int i = 0; i < mView.mPoints.size(); ++i) {
            QColor color = !mView.mHasSelected ? colors.plain
                           : hasNames          ? colors.legible(lineColor(i))
                                               : colors.selectedInk;
            if (!hasNames)
                color.setAlphaF(mView.mHasSelected ? 0.6 : 0.35);
            painter->setPen(QPen(color, hasNames ? 2.5 : 1.2));
            painter->setBrush(Qt::NoBrush);
            const QPolygonF line = onCanvas(mView.mPoints[i], xMap, yMap);
            drawRuns(*painter, line);
            if (!hasNames || line.isEmpty() || !std::isfinite(line.last().y()))
                continue;
            // The name above the end of the line, unless another one stands there.
            const double y = line.last().y() - metrics.descent() - 2;
            if (std::any_of(taken.begin(), taken.end(),
                            [&](double other) { return std::abs(other - y) < metrics.height(); }))
                continue;
            taken.append(y);
            const double width = metrics.horizontalAdvance(mView.mNames[i]);
            painter->drawText(QPointF(std::min(line.last().x(), canvas.right() - 4) - width, y),
                              mView.mNames[i]);
        }
    }

private:
    void drawBand(QPainter &painter, const QwtScaleMap &xMap, const QwtScaleMap &yMap) const
    {
        const GraphColors &colors = mView.colors();
        QColor fill = colors.selected;
        fill.setAlphaF(0.3);
        painter.setPen(Qt::NoPen);
        painter.setBrush(fill);
        QPolygonF above;
        QPolygonF below;
        const auto drawPart = [&] {
            std::reverse(below.begin(), below.end());
            const QPolygonF part = above + below;
            const QRectF box = part.boundingRect();
            if (!part.isEmpty() && box.width() < 2 * kLeastDot)
                painter.drawRect(
                    QRectF(box.center().x() - kLeastDot, box.top(), 2 * kLeastDot, box.height()));
            else
                painter.drawPolygon(part);
            above.clear();
            below.clear();
        };
        for (int i = 0; i < mView.mSelectedMean.size(); ++i) {
            const QPointF &point = mView.mSelectedMean[i];
            const double deviation = mView.mDeviations.value(i);
            if (!std::isfinite(point.y())) {
                drawPart();
                continue;
            }
            const double x = xMap.transform(point.x());
            above.append(QPointF(x, yMap.transform(point.y() + deviation)));
            below.append(QPointF(x, yMap.transform(point.y() - deviation)));
        }
        drawPart();
        painter.setBrush(Qt::NoBrush);
        painter.setPen(QPen(colors.selectedInk, 2.5));
        drawRuns(painter, onCanvas(mView.mSelectedMean, xMap, yMap));
    }

    const TimePlotView &mView;
};

TimePlotView::TimePlotView(Workspace &workspace, int dataset)
    : HistoryView(workspace, dataset), mScale(VORN_GetGeographyId(dataset))
{
    (new Lines(*this))->attach(plot());
    join();
}

QString TimePlotView::title() const
{
    return tr("%1 over time").arg(datasetName(dataset()));
}

void TimePlotView::timePassed()
{
    if (mNames.isEmpty())
        static_cast<GraphCanvas *>(widget())->refreshMarks();
    else
        selectionChanged(); // objects can have other names
}

void TimePlotView::load()
{
    if (meridor::datasetOf(dataset())->IsStatic())
        fail(tr("%1 does not change over time").arg(datasetName(dataset())));
    History mean(mScale);
    loadHistory([&](int step, const QVector<double> &values) {
        double average = 0;
        int count = 0;
        for (const double value : values)
            if (std::isfinite(value))
                average += (value - average) / ++count; // a sum could be beyond the largest double
        if (count > 0)
            mean.add(history().when(step), average);
    });
    if (mean.points().isEmpty())
        fail(tr("%1 holds no values").arg(datasetName(dataset())));
    mMean = mean.points();
}

QVector<QPointF> TimePlotView::pointsOf(int object) const
{
    History line(mScale);
    for (int step = 0; step < history().steps(); ++step)
        line.add(history().when(step), history().value(step, object));
    return line.points();
}

TimePlotView::Summary TimePlotView::summarize(const unsigned char *flags) const
{
    Summary summary{History(mScale), {}};
    for (int step = 0; step < history().steps(); ++step) {
        const QVector<double> values = history().values(step);
        double mean = 0;
        double squares = 0; // of the deviations: B. P. Welford 1962 (Technometrics 4)
        int count = 0;
        for (int i = 0; i < values.size(); ++i) {
            if (!flags[i] || !std::isfinite(values[i]))
                continue;
            const double away = values[i] - mean;
            mean += away / ++count;
            squares += away * (values[i] - mean);
        }
        if (count == 0)
            continue;
        summary.mean.add(history().when(step), mean);
        const double deviation = std::sqrt(squares / count);
        while (summary.deviations.size() < summary.mean.points().size())
            summary.deviations.append(deviation);
    }
    return summary;
}

void TimePlotView::markSelected()
{
    const QVector<int> chosen = selectedObjects();
    mHasSelected = !chosen.isEmpty();
    mSelectedMean.clear();
    mDeviations.clear();
    mLines.clear();
    mPoints.clear();
    mNames.clear();
    if (chosen.size() > kMostLines && history().isKept()) {
        const Summary summary = summarize(selectedFlags());
        mSelectedMean = summary.mean.points();
        mDeviations = summary.deviations;
    } else if (mHasSelected) {
        mLines = chosen;
    } else if (objectLimit() <= kMostLines) {
        for (int i = 0; i < objectLimit(); ++i)
            mLines.append(i);
    }
    if (!history().isKept())
        mLines.clear();
    for (const int object : std::as_const(mLines))
        mPoints.append(pointsOf(object));
    if (mHasSelected && mLines.size() <= kMostNames)
        for (const int object : std::as_const(mLines))
            mNames.append(nameOf(object));
    QString ofSelected;
    if (!mSelectedMean.isEmpty())
        ofSelected =
            tr("mean of %1 selected objects, and one standard deviation").arg(chosen.size());
    else if (mHasSelected)
        ofSelected = tr("%1 selected").arg(chosen.size());
    if (mHasSelected && !history().isKept())
        ofSelected += QStringLiteral("; ") + tr("too many values to draw those of objects");
    setSummary(tr("dashed: mean of all objects"), ofSelected);
}

QPointF TimePlotView::placeOf(int step, double value) const
{
    return {xMap().transform(mScale.middleOf(history().when(step))), yMap().transform(value)};
}

int TimePlotView::objectAt(const QPoint &pixel) const
{
    const QwtScaleMap x = xMap();
    const QwtScaleMap y = yMap();
    int nearest = -1;
    double least = kReach;
    for (int i = 0; i < mLines.size(); ++i) {
        const QPolygonF line = onCanvas(mPoints[i], x, y);
        for (int k = 0; k < line.size(); ++k) {
            const QPointF &before = line[std::max(0, k - 1)];
            if (!std::isfinite(line[k].y()))
                continue;
            const double away =
                distance(pixel, std::isfinite(before.y()) ? before : line[k], line[k]);
            if (away < least) {
                least = away;
                nearest = mLines[i];
            }
        }
    }
    return nearest;
}

void TimePlotView::drawNow(QPainter &painter, const QwtScaleMap &xMap, const QRectF &canvas) const
{
    const double now = xMap.transform(mScale.at(time()));
    painter.setPen(QPen(colors().softInk, 1, Qt::DotLine));
    painter.drawLine(QPointF(now, canvas.top()), QPointF(now, canvas.bottom()));
}

/// The present time is a mark, too: a step of time does not draw the lines anew.
void TimePlotView::drawMark(QPainter &painter, int object)
{
    drawNow(painter, xMap(), widget()->rect());
    if (object < 0)
        return;
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(colors().ink, 3));
    drawRuns(painter, onCanvas(pointsOf(object), xMap(), yMap()));
}

bool TimePlotView::openAt(const QPoint &pixel)
{
    const double at = xMap().invTransform(pixel.x());
    int nearest = -1;
    double least = HUGE_VAL;
    for (int step = 0; step < history().steps(); ++step) {
        const double start = mScale.at(history().when(step).startTime);
        const double end = mScale.at(history().when(step).endTime);
        const double away = std::max({0.0, start - at, at - end});
        if (away < least) {
            least = away;
            nearest = step;
        }
    }
    if (nearest >= 0)
        goTo(instantOf(history().when(nearest)));
    return true;
}

bool TimePlotView::shows(int object) const
{
    return mLines.contains(object);
}

QVector<unsigned int> TimePlotView::objectsWithin(const QPainterPath &region)
{
    const QwtScaleMap x = xMap();
    if (region.boundingRect().isEmpty()) {
        const int object =
            region.elementCount() > 0 ? objectAt(QPointF(region.elementAt(0)).toPoint()) : -1;
        return object >= 0 ? QVector<unsigned int>{static_cast<unsigned int>(object)}
                           : QVector<unsigned int>();
    }
    return objectsWhere(region, [&](int step) {
        const Interval &when = history().when(step);
        return Span{x.transform(mScale.at(when.startTime)), x.transform(mScale.at(when.endTime))};
    });
}

GraphScale TimePlotView::xScale() const
{
    const double margin = (mMean.last().x() - mMean.first().x()) / 100; // for dots at the ends
    return {QString(), mMean.first().x() - margin, mMean.last().x() + margin, mScale.axis().dates,
            true};
}

QStringList TimePlotView::commandLine(const QString &picture) const
{
    QStringList line{QStringLiteral("plot"), QStringLiteral("time"), workspace().commandPath(),
                     datasetWord(dataset()), picture};
    if (mHasSelected)
        for (const QString &key : objectKeys(geography(), mLines))
            line << QStringLiteral("--object") << key;
    return line;
}

} // namespace meridor
