// SPDX-License-Identifier: MIT
#include "core/render/graph.h"
#include <QDateTime>
#include <QFontMetricsF>
#include <QPainter>
#include <QPalette>
#include <algorithm>
#include <cmath>
#include <qwt_date_scale_engine.h>
#include <qwt_plot_curve.h>
#include <qwt_scale_draw.h>
#include <qwt_scale_engine.h>
#include <qwt_scale_map.h>
#include <qwt_symbol.h>
#include "core/project/cancel.h"
#include "core/render/graphItem.h"
#include "core/render/graphScale.h"
#include "core/render/legend.h"
#include "core/render/pictureFile.h"

namespace meridor {
namespace {

constexpr double kTick = 8;
constexpr double kSpacing = 6; ///< from a tick to its label

/// One axis: its scale, and the ticks and labels that Qwt draws.
class Axis {
public:
    Axis(const GraphAxis &axis, double low, double high, QwtScaleDraw::Alignment alignment,
         const Theme &theme)
        : mAxis(axis), mTheme(theme), mDraw(graphScaleDraw(axis.dates))
    {
        mDraw->setAlignment(alignment);
        mDraw->enableComponent(QwtScaleDraw::Backbone, false);
        mDraw->setTickLength(QwtScaleDiv::MajorTick, theme.unit(kTick));
        mDraw->setTickLength(QwtScaleDiv::MediumTick, 0);
        mDraw->setTickLength(QwtScaleDiv::MinorTick, 0);
        mDraw->setSpacing(theme.unit(kSpacing));
        mDraw->setPenWidth(std::max(1, qRound(theme.unit(1.2))));
        mLow = std::isfinite(axis.low) ? axis.low : low;
        mHigh = std::isfinite(axis.high) ? axis.high : high;
        if (!(mHigh > mLow)) {
            const double room = axis.dates ? 86400000.0 : std::max(1e-12, std::abs(mLow) * 0.05);
            mLow -= mLow == axis.low ? 0 : room;
            mHigh = std::max(mHigh, mLow) + room;
        }
    }
    /// Chooses as many ticks as there is room for along `length` pixels.
    void layOut(double length, bool across)
    {
        const QFont font = mTheme.textFont();
        for (int most = 10; most >= 1; --most) {
            mDraw->setScaleDiv(divided(most));
            mDraw->setLength(length);
            const double least =
                across ? widest() + mTheme.unit(18) : QFontMetricsF(font).height() * 1.6;
            const int ticks = mDraw->scaleDiv().ticks(QwtScaleDiv::MajorTick).size();
            if (ticks < 2 || length / (ticks - 1) >= least)
                break;
        }
    }
    double thickness() const { return mDraw->extent(mTheme.textFont()); }
    /// How far the last label reaches beyond the end of a horizontal axis.
    double widest() const
    {
        double width = 0;
        const QFontMetricsF metrics(mTheme.textFont());
        for (const double tick : mDraw->scaleDiv().ticks(QwtScaleDiv::MajorTick))
            width = std::max(width, metrics.size(0, mDraw->label(tick).text()).width());
        return width;
    }
    const QwtScaleDiv &division() const { return mDraw->scaleDiv(); }
    void draw(QPainter &painter, const QPointF &position, double length)
    {
        mDraw->move(position);
        mDraw->setLength(length);
        QPalette palette;
        palette.setColor(QPalette::WindowText, colors::outline);
        palette.setColor(QPalette::Text, colors::ink);
        painter.setFont(mTheme.textFont());
        painter.setPen(Qt::SolidLine); // Qwt takes over the style of the pen
        mDraw->draw(&painter, palette);
    }

private:
    QwtScaleDiv divided(int most) const
    {
        double low = mLow;
        double high = mHigh;
        double step = 0;
        if (mAxis.bare)
            return QwtScaleDiv(low, high);
        if (mAxis.dates) {
            QwtDateScaleEngine engine(Qt::UTC);
            return engine.divideScale(low, high, most, 0, 0);
        }
        QwtLinearScaleEngine engine;
        engine.autoScale(most, low, high, step);
        return engine.divideScale(std::isfinite(mAxis.low) ? mLow : low,
                                  std::isfinite(mAxis.high) ? mHigh : high, most, 0, step);
    }

    const GraphAxis &mAxis;
    const Theme &mTheme;
    std::unique_ptr<QwtScaleDraw> mDraw;
    double mLow;
    double mHigh;
};

bool isFinite(const QPointF &point)
{
    return std::isfinite(point.x()) && std::isfinite(point.y());
}

/// The range of everything in the graph; 0 to 1 if there is nothing.
QRectF rangeOf(const Graph &graph)
{
    double left = HUGE_VAL;
    double right = -HUGE_VAL;
    double low = HUGE_VAL;
    double high = -HUGE_VAL;
    const auto include = [&](const QPointF &point) {
        left = std::min(left, point.x());
        right = std::max(right, point.x());
        low = std::min(low, point.y());
        high = std::max(high, point.y());
    };
    for (const auto &item : graph.items) {
        include(item->bounds().topLeft());
        include(item->bounds().bottomRight());
    }
    for (const GraphSeries &series : graph.series)
        for (const QPointF &point : series.points)
            if (isFinite(point))
                include(point);
    return left <= right ? QRectF(QPointF(left, low), QPointF(right, high)) : QRectF(0, 0, 1, 1);
}

QColor colorOf(const Graph &graph, int series)
{
    return graph.series[series].color.isValid() ? graph.series[series].color : lineColor(series);
}

void drawSeries(QPainter &painter, const GraphSeries &series, const QColor &color,
                const QwtScaleMap &xMap, const QwtScaleMap &yMap, const QRectF &canvas,
                const Theme &theme)
{
    QwtPlotCurve curve;
    const bool hasPoints =
        series.look == GraphSeries::Points || series.look == GraphSeries::LineAndPoints;
    curve.setStyle(series.look == GraphSeries::Points  ? QwtPlotCurve::NoCurve
                   : series.look == GraphSeries::Steps ? QwtPlotCurve::Steps
                                                       : QwtPlotCurve::Lines);
    curve.setPen(QPen(color, theme.unit(3), series.dashed ? Qt::DashLine : Qt::SolidLine,
                      Qt::RoundCap, Qt::RoundJoin));
    curve.setPaintAttribute(QwtPlotCurve::ClipPolygons, true);
    if (hasPoints) {
        // Points become smaller and more transparent the more there are, but remain visible alone.
        const double crowd = std::max(1.0, series.points.size() / 400.0);
        const double side = std::max(theme.unit(5), theme.unit(12) / std::pow(crowd, 0.35));
        QColor fill = color;
        fill.setAlphaF(std::max(0.25, 0.8 / std::pow(crowd, 0.5)));
        auto *symbol = new QwtSymbol(QwtSymbol::Ellipse, fill, QPen(color, theme.unit(1)),
                                     QSizeF(side, side).toSize()); // the curve owns it
        symbol->setCachePolicy(QwtSymbol::NoCache); // a cached symbol would be a picture in SVG
        curve.setSymbol(symbol);
    }
    QVector<QPointF> run;
    const auto drawRun = [&] {
        QRectF box;
        if (!run.isEmpty())
            box = QRectF(QPointF(xMap.transform(run.first().x()), yMap.transform(run.first().y())),
                         QPointF(xMap.transform(run.last().x()), yMap.transform(run.last().y())))
                      .normalized();
        const double dot = theme.unit(6);
        const bool isLine = series.look == GraphSeries::Line;
        if (isLine && (run.size() == 1 || run.size() == 2) && box.width() < dot
            && box.height() < dot) {
            // A value between two gaps has no line, and one of a short span no dash.
            painter.setPen(QPen(color, dot, Qt::SolidLine, Qt::RoundCap));
            if (canvas.contains(box.center()))
                painter.drawPoint(box.center());
        } else if (!run.isEmpty()) {
            curve.setSamples(run);
            curve.draw(&painter, xMap, yMap, canvas);
        }
        run.clear();
    };
    for (const QPointF &point : series.points) {
        if (isFinite(point))
            run.append(point);
        else
            drawRun();
    }
    drawRun();
    stopIfCancelled();
}

/// Draws the labels of points to the right above them, or where else there is room.
void drawLabels(QPainter &painter, const GraphSeries &series, const QwtScaleMap &xMap,
                const QwtScaleMap &yMap, const QRectF &canvas, const Theme &theme,
                QVector<QRectF> &taken)
{
    const QFont font = theme.smallFont();
    const QFontMetricsF metrics(font);
    const double away = theme.unit(9);
    for (int i = 0; i < std::min(series.labels.size(), series.points.size()); ++i) {
        if (!isFinite(series.points[i]) || series.labels[i].isEmpty())
            continue;
        const QPointF at(xMap.transform(series.points[i].x()),
                         yMap.transform(series.points[i].y()));
        const QSizeF size(metrics.horizontalAdvance(series.labels[i]), metrics.height());
        const QPointF places[] = {{away, -size.height() - away / 3},
                                  {-size.width() - away, -size.height() - away / 3},
                                  {away, away / 3},
                                  {-size.width() - away, away / 3}};
        for (const QPointF &place : places) {
            const QRectF box(at + place, size);
            if (!canvas.contains(box)
                || std::any_of(taken.begin(), taken.end(),
                               [&](const QRectF &other) { return other.intersects(box); }))
                continue;
            drawText(painter, font, colors::ink, box.topLeft(), size.width() + 1, series.labels[i]);
            taken.append(box);
            break;
        }
    }
}

QVector<LegendBlock> legendOf(const Graph &graph)
{
    QVector<LegendBlock> blocks;
    for (const auto &item : graph.items)
        if (!item->legend().entries.isEmpty())
            blocks.append(item->legend());
    LegendBlock names;
    for (int i = 0; i < graph.series.size(); ++i) {
        const GraphSeries &series = graph.series[i];
        if (!series.name.isEmpty())
            names.entries.append({colorOf(graph, i), series.name, -1,
                                  series.look == GraphSeries::Points ? LegendEntry::Dot
                                  : series.dashed                    ? LegendEntry::Dashes
                                                                     : LegendEntry::Line});
    }
    if (!names.entries.isEmpty())
        blocks.append(names);
    return blocks;
}

/// The name of the vertical axis stands above it, so that it is read without turning the head.
void drawAxisTitles(QPainter &painter, const Graph &graph, const Theme &theme, const QRectF &canvas,
                    double left, double below)
{
    const QFont font = theme.textFont();
    const double height = QFontMetricsF(font).height();
    drawText(painter, font, colors::ink, QPointF(left, canvas.top() - height - theme.unit(14)),
             canvas.right() - left, graph.y.title);
    drawText(painter, font, colors::ink, QPointF(canvas.left(), below), canvas.width(),
             graph.x.title, Qt::AlignRight);
}

void drawGrid(QPainter &painter, const Theme &theme, const QRectF &canvas, const Axis &x,
              const Axis &y, const GraphMap &map)
{
    painter.setPen(QPen(colors::grid, theme.unit(1.2)));
    for (const double tick : y.division().ticks(QwtScaleDiv::MajorTick))
        painter.drawLine(QPointF(canvas.left(), map.y(tick)), QPointF(canvas.right(), map.y(tick)));
    for (const double tick : x.division().ticks(QwtScaleDiv::MajorTick))
        painter.drawLine(QPointF(map.x(tick), canvas.top()), QPointF(map.x(tick), canvas.bottom()));
    painter.setPen(QPen(colors::outline, theme.unit(1.6)));
    painter.drawLine(canvas.bottomLeft(), canvas.bottomRight());
}

} // namespace

GraphItem::~GraphItem() = default;

LegendBlock GraphItem::legend() const
{
    return {};
}

QColor lineColor(int index)
{
    static const QColor list[] = {{0x0b, 0x6e, 0x8f}, {0xc4, 0x4e, 0x1b}, {0x4b, 0x7f, 0x1d},
                                  {0x86, 0x3f, 0x9c}, {0x9a, 0x6a, 0x00}, {0xb3, 0x2a, 0x5c},
                                  {0x3a, 0x55, 0xb4}, {0x5f, 0x66, 0x6b}};
    return list[index % 8];
}

void drawGraph(QPainter &painter, const Graph &graph)
{
    const Theme theme(graph.size);
    QRectF space = theme.drawTexts(painter, graph.texts);
    const Legend legend(legendOf(graph), theme, theme.legendSpace(space.size()));
    if (!legend.isEmpty()) {
        legend.draw(painter, QPointF(space.right() - legend.width(), space.top()));
        space.setRight(space.right() - legend.width() - theme.unit(36));
    }
    const QRectF range = rangeOf(graph);
    Axis x(graph.x, range.left(), range.right(), QwtScaleDraw::BottomScale, theme);
    Axis y(graph.y, range.top(), range.bottom(), QwtScaleDraw::LeftScale, theme);
    const double line = QFontMetricsF(theme.textFont()).height();
    x.layOut(space.width(), true);
    QRectF canvas = space.adjusted(
        0, graph.y.title.isEmpty() ? line / 2 : line + theme.unit(16), 0,
        -x.thickness() - (graph.x.title.isEmpty() ? theme.unit(8) : line + theme.unit(8)));
    canvas.setHeight(std::max(canvas.height(), 1.0));
    y.layOut(canvas.height(), false);
    canvas.setLeft(std::min(space.left() + y.thickness(), canvas.right() - 1));
    canvas.setRight(std::max(canvas.left() + 1, canvas.right() - x.widest() / 2));
    x.layOut(canvas.width(), true);

    QwtScaleMap xMap;
    xMap.setScaleInterval(x.division().lowerBound(), x.division().upperBound());
    xMap.setPaintInterval(canvas.left(), canvas.right());
    QwtScaleMap yMap;
    yMap.setScaleInterval(y.division().lowerBound(), y.division().upperBound());
    yMap.setPaintInterval(canvas.bottom(), canvas.top());
    const GraphMap map{[&](double value) { return xMap.transform(value); },
                       [&](double value) { return yMap.transform(value); }, canvas};

    drawGrid(painter, theme, canvas, x, y, map);
    for (const auto &item : graph.items)
        item->draw(painter, map, theme);
    for (const bool isBehind : {true, false})
        for (int i = 0; i < graph.series.size(); ++i)
            if (graph.series[i].isBehind == isBehind)
                drawSeries(painter, graph.series[i], colorOf(graph, i), xMap, yMap, canvas, theme);
    QVector<QRectF> taken;
    const double dot = theme.unit(10);
    for (const GraphSeries &series : graph.series)
        for (const QPointF &point : series.points)
            if (!series.labels.isEmpty() && isFinite(point))
                taken.append(
                    QRectF(map(point.x(), point.y()) - QPointF(dot, dot) / 2, QSizeF(dot, dot)));
    for (const GraphSeries &series : graph.series)
        drawLabels(painter, series, xMap, yMap, canvas, theme, taken);
    x.draw(painter, canvas.bottomLeft(), canvas.width());
    y.draw(painter, canvas.topLeft(), canvas.height());
    drawAxisTitles(painter, graph, theme, canvas, space.left(),
                   canvas.bottom() + x.thickness() + theme.unit(4));
}

void savePicture(const Graph &graph, const QString &path)
{
    savePicture(path, graph.size.pixels, graph.texts.title,
                [&graph](QPainter &painter) { drawGraph(painter, graph); });
}

} // namespace meridor
