// SPDX-License-Identifier: MIT
#include <QJsonArray>
#include <QPainter>
#include <algorithm>
#include <cmath>
#include "core/plot/plotValues.h"
#include "core/plot/plots.h"
#include "core/project/cancel.h"
#include "core/project/catalog.h"
#include "core/project/failure.h"
#include "core/project/text.h"
#include "core/render/classes.h"
#include "core/render/graphItem.h"
#include "datainterface/DataAPI.h"
#include "datainterface/MDataset.h"

namespace meridor {
namespace {

struct Box : BoxFigures {
    double at = 0;
};

class Boxes : public GraphItem {
public:
    explicit Boxes(const QVector<Box> &boxes) : mBoxes(boxes)
    {
        double nearest = HUGE_VAL;
        for (int i = 1; i < boxes.size(); ++i)
            nearest = std::min(nearest, boxes[i].at - boxes[i - 1].at);
        mHalf = std::isfinite(nearest) ? nearest * 0.32 : 0.5;
    }
    QRectF bounds() const override
    {
        double low = HUGE_VAL;
        double high = -HUGE_VAL;
        for (const Box &box : mBoxes) {
            low = std::min(low, box.low);
            high = std::max(high, box.high);
            for (const double value : box.beyond) {
                low = std::min(low, value);
                high = std::max(high, value);
            }
        }
        return QRectF(QPointF(mBoxes.first().at - 2 * mHalf, low),
                      QPointF(mBoxes.last().at + 2 * mHalf, high));
    }
    void draw(QPainter &painter, const GraphMap &map, const Theme &theme) const override
    {
        const QColor line = lineColor(0);
        for (const Box &box : mBoxes) {
            const double x = map.x(box.at);
            // Boxes of thousands of times would be too narrow to be seen, so they cover each other.
            const double half =
                std::clamp(map.x(box.at + mHalf) - x, theme.unit(0.8), theme.unit(40));
            const double left = x - half;
            const double right = x + half;
            const double pen = std::min(theme.unit(1.6), half / 2);
            painter.setPen(QPen(line, pen));
            painter.setBrush(QColor(0xcf, 0xe3, 0xea));
            painter.drawLine(QPointF(x, map.y(box.low)), QPointF(x, map.y(box.firstQuartile)));
            painter.drawLine(QPointF(x, map.y(box.thirdQuartile)), QPointF(x, map.y(box.high)));
            painter.drawRect(QRectF(QPointF(left, map.y(box.thirdQuartile)),
                                    QPointF(right, map.y(box.firstQuartile))));
            painter.setPen(QPen(colors::ink, 1.8 * pen));
            painter.drawLine(QPointF(left, map.y(box.median)), QPointF(right, map.y(box.median)));
            painter.setPen(QPen(line, pen));
            painter.setBrush(Qt::NoBrush);
            const double radius = std::min(theme.unit(4), (right - left) / 2.5);
            for (const double value : box.beyond)
                painter.drawEllipse(QPointF(x, map.y(value)), radius, radius);
        }
    }

private:
    QVector<Box> mBoxes;
    double mHalf; ///< half of the width of a box, in the unit of the axis
};

} // namespace

Plot boxesOverTime(ShownDataset shown, const QVector<Interval> &times)
{
    const int dataset = shown.id;
    requireNumbers(dataset);
    const int geography = VORN_GetGeographyId(dataset);
    const TimeScale scale(geography);
    const TimeAxis axis = axisOf(geography);
    QVector<Box> boxes;
    QJsonArray rows;
    for (const Interval &when : times) {
        stopIfCancelled();
        const QVector<double> values = presentValues(shown, instantOf(when));
        if (values.isEmpty())
            continue;
        boxes.append({boxOf(values), scale.middleOf(when)});
        const Box &box = boxes.last();
        rows.append(QJsonObject{{QStringLiteral("time"), axis.show(when)},
                                {QStringLiteral("values"), values.size()},
                                {QStringLiteral("low"), box.low},
                                {QStringLiteral("q1"), box.firstQuartile},
                                {QStringLiteral("median"), box.median},
                                {QStringLiteral("q3"), box.thirdQuartile},
                                {QStringLiteral("high"), box.high},
                                {QStringLiteral("beyond"), box.beyond.size()}});
    }
    if (boxes.isEmpty())
        fail(QStringLiteral("%1 holds no values at these times").arg(datasetName(dataset)));
    Plot plot;
    plot.graph.items.append(std::make_shared<Boxes>(boxes));
    plot.graph.x = scale.axis();
    plot.graph.x.low = plot.graph.items.first()->bounds().left();
    plot.graph.x.high = plot.graph.items.first()->bounds().right();
    if (boxes.size() == 1) { // it has a name in place of numbers
        plot.graph.x.bare = true;
        plot.graph.x.title = datasetOf(dataset)->IsStatic()
                                 ? QStringLiteral("does not change over time")
                                 : rows.first().toObject()[QStringLiteral("time")].toString();
    }
    plot.graph.y.title = datasetName(dataset);
    plot.graph.texts.footnote = QStringLiteral(
        "Boxes: quartiles and median; whiskers: values within 1.5 interquartile ranges of the box");
    plot.numbers = {{QStringLiteral("boxes"), rows}};
    plot.summary = counted(boxes.size(), "box");
    return plot;
}

} // namespace meridor
