// SPDX-License-Identifier: MIT
#include "desk/views/pointView.h"
#include <QPainter>
#include <algorithm>
#include <cmath>
#include <limits>
#include <qwt_clipper.h>
#include <qwt_plot.h>
#include <qwt_plot_item.h>
#include <qwt_scale_map.h>
#include "core/project/text.h"
#include "desk/views/pointsItem.h"

namespace meridor {

/// A straight line between two values of x. QwtPlotCurve strokes it as a path, which takes several
/// times as long.
class PointView::LineItem : public QwtPlotItem {
public:
    LineItem(QwtPlot *plot, double z)
    {
        setRenderHint(QwtPlotItem::RenderAntialiased);
        setZ(z);
        attach(plot);
    }
    void show(const QPen &pen, const Line &line, double low, double high)
    {
        mPen = pen;
        mEnds.clear();
        if (std::isfinite(line.slope) && std::isfinite(line.intercept))
            mEnds << QPointF(low, line.intercept + line.slope * low)
                  << QPointF(high, line.intercept + line.slope * high);
    }
    void draw(QPainter *painter, const QwtScaleMap &xMap, const QwtScaleMap &yMap,
              const QRectF &canvas) const override
    {
        QPolygonF seen;
        for (const QPointF &end : mEnds)
            seen << QPointF(xMap.transform(end.x()), yMap.transform(end.y()));
        const double width = mPen.widthF();
        seen = QwtClipper::clipPolygonF(canvas.adjusted(-width, -width, width, width), seen);
        painter->setPen(mPen);
        if (seen.size() > 1)
            painter->drawLine(seen.first(), seen.last());
    }

private:
    QPen mPen;
    QPolygonF mEnds;
};

PointView::PointView(Workspace &workspace, int geography)
    : GraphView(workspace, geography),
      mPoints(new PointsItem()),
      mLineItem(new LineItem(plot(), 30)),
      mSelectedLineItem(new LineItem(plot(), 31))
{
    mPoints->attach(plot());
}

const std::vector<QPointF> &PointView::places() const
{
    return mPoints->places();
}

void PointView::read()
{
    Points points = this->points();
    QVector<QPointF> present;
    double left = std::numeric_limits<double>::infinity();
    double right = -left;
    double low = left;
    double high = -left;
    for (const QPointF &place : points.places) {
        if (!std::isfinite(place.x()) || !std::isfinite(place.y()))
            continue;
        present.append(place);
        left = std::min(left, place.x());
        right = std::max(right, place.x());
        low = std::min(low, place.y());
        high = std::max(high, place.y());
    }
    mCount = present.size();
    mRange = QRectF(QPointF(left, low), QPointF(right, high));
    mLine = fittedLine(present);
    mClasses = points.classes;
    mClassColors = points.classColors;
    mPoints->setPlaces(std::move(points.places));
}

void PointView::recolor()
{
    ColorRule rule;
    rule.plain = colors().plain.rgb();
    rule.ground = colors().ground.rgb();
    rule.selected = colors().selected.rgb();
    rule.missing = mixed(colors().ground.rgb(), colors().ink.rgb(), 0.3);
    for (const QColor &color : std::as_const(mClassColors))
        rule.classes.append(colors().legible(color).rgb());
    mPoints->setColors(rule, colors().grid.rgb(), mClasses);
}

void PointView::setExporting(bool exporting)
{
    mPoints->setExporting(exporting);
}

void PointView::markSelected()
{
    const unsigned char *const selected = selectedFlags();
    mPoints->setSelected(selected);
    QVector<QPointF> chosen;
    double left = std::numeric_limits<double>::infinity();
    double right = -left;
    const std::vector<QPointF> &all = places();
    for (std::size_t i = 0; selected && i < all.size(); ++i) {
        if (!selected[i] || !std::isfinite(all[i].x()) || !std::isfinite(all[i].y()))
            continue;
        chosen.append(all[i]);
        left = std::min(left, all[i].x());
        right = std::max(right, all[i].x());
    }
    mSelectedLine = fittedLine(chosen);
    const double width = plot()->fontMetrics().height() / 8.0;
    mLineItem->show(QPen(colors().ink, width), mLine, mRange.left(), mRange.right());
    mSelectedLineItem->show(QPen(colors().selectedInk, width), mSelectedLine, left, right);
    QString text = counted(mCount, tr("%1 point"), tr("%1 points"));
    if (std::isfinite(mLine.slope))
        text += QStringLiteral(", ") + lineText(mLine);
    QString ofSelected;
    if (!chosen.isEmpty()) {
        ofSelected = tr("%1 selected").arg(chosen.size());
        if (std::isfinite(mSelectedLine.slope))
            ofSelected += QStringLiteral(", ") + lineText(mSelectedLine);
    }
    setSummary(text, ofSelected);
}

int PointView::objectAt(const QPoint &pixel) const
{
    return mPoints->objectAt(pixel);
}

void PointView::drawMark(QPainter &painter, int object)
{
    if (!mPoints->shows(object))
        return;
    const QPointF &place = places()[static_cast<std::size_t>(object)];
    const double radius = mPoints->discSize() / 2 + 2;
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(colors().ink, 2));
    painter.drawEllipse(QPointF(xMap().transform(place.x()), yMap().transform(place.y())), radius,
                        radius);
}

int PointView::objectLimit() const
{
    return static_cast<int>(places().size());
}

bool PointView::shows(int object) const
{
    return mPoints->shows(object);
}

QVector<unsigned int> PointView::objectsWithin(const QPainterPath &region)
{
    return mPoints->objectsIn(region, xMap(), yMap());
}

} // namespace meridor
