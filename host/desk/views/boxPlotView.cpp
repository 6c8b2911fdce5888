// SPDX-License-Identifier: MIT
#include "desk/views/boxPlotView.h"
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
        const int present = mView.mHistory.stepAt(mView.time());
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

BoxPlotView::BoxPlotView(Workspace &workspace, int dataset)
    : GraphView(workspace, VORN_GetGeographyId(dataset)), mDataset(dataset)
{
    (new Boxes(*this))->attach(plot());
    join();
}

QString BoxPlotView::title() const
{
    return tr("Boxes of %1").arg(datasetName(mDataset));
}

void BoxPlotView::valuesChanged()
{
    mIsLoaded = false;
    GraphView::valuesChanged();
}

void BoxPlotView::read()
{
    const bool isStatic = meridor::datasetOf(mDataset)->IsStatic();
    if (mIsLoaded && !isStatic)
        return; // another time only marks another box
    mBoxes.clear();
    mObjects = VORN_GetGeographyProperties(geography()).objectCount;
    const TimeScale scale(geography());
    mLow = std::numeric_limits<double>::infinity();
    mHigh = -mLow;
    double nearest = HUGE_VAL;
    mHistory.load(shown(mDataset), time(), [&](int step, const QVector<double> &all) {
        const QVector<double> values = finite(all);
        if (values.isEmpty())
            return;
        const double at = scale.middleOf(mHistory.when(step));
        if (!mBoxes.isEmpty())
            nearest = std::min(nearest, at - mBoxes.last().at);
        mLow = std::min(mLow, *std::min_element(values.begin(), values.end()));
        mHigh = std::max(mHigh, *std::max_element(values.begin(), values.end()));
        mBoxes.append({step, at, boxOf(values), values.size(), false, {}, {}});
    });
    if (mBoxes.isEmpty())
        fail(tr("%1 holds no values").arg(datasetName(mDataset)));
    mHalf = std::isfinite(nearest) ? nearest * 0.32 : scale.axis().dates ? 43200000.0 : 0.5;
    mIsLoaded = true;
}

void BoxPlotView::markSelected()
{
    const unsigned char *const selected = selectedFlags();
    QVector<int> chosen;
    for (int i = 0; selected && i < mObjects; ++i)
        if (selected[i])
            chosen.append(i);
    // Values that are not kept would have to be read for each selection.
    for (Box &box : mBoxes) {
        QVector<double> values;
        if (mHistory.isKept()) {
            const QVector<double> all = mHistory.values(box.step);
            for (const int object : std::as_const(chosen))
                if (object < all.size() && std::isfinite(all[object]))
                    values.append(all[object]);
        }
        box.hasSelected = !values.isEmpty();
        box.few = values.size() <= kMostDots ? values : QVector<double>();
        box.selected = values.size() > kMostDots ? boxOf(values) : BoxFigures();
    }
    QString text = tr("%n boxes", nullptr, mBoxes.size());
    const int present = mHistory.stepAt(time());
    for (const Box &box : std::as_const(mBoxes))
        if (box.step == present)
            text += QStringLiteral("; ")
                    + tr("now %1 values, median %2, quartiles %3 and %4")
                          .arg(box.count)
                          .arg(shortNumber(box.figures.median, 6),
                               shortNumber(box.figures.firstQuartile, 6),
                               shortNumber(box.figures.thirdQuartile, 6));
    setSummary(text, chosen.isEmpty() ? QString() : tr("%n selected", nullptr, chosen.size()));
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
        if (!mHistory.isKept() || std::abs(xOf(box) - pixel.x()) > kReach)
            continue;
        const QVector<double> values = mHistory.values(box.step);
        for (int i = 0; i < values.size(); ++i) {
            if (!(values[i] >= low && values[i] <= high) || std::abs(values[i] - middle) >= least)
                continue;
            least = std::abs(values[i] - middle);
            nearest = i;
        }
    }
    return nearest;
}

QString BoxPlotView::textOf(int object)
{
    const int step = mHistory.stepAt(time());
    return step < 0 || !mHistory.isKept()
               ? nameOf(object)
               : QStringLiteral("%1 \u2014 %2")
                     .arg(nameOf(object), valueText(mDataset, mHistory.value(step, object)));
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
        const double value = mHistory.value(box.step, object);
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
        return std::isfinite(mHistory.value(box.step, object));
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
    QVector<bool> found(mObjects);
    for (const Box &box : std::as_const(mBoxes)) {
        const double x = xOf(box);
        if (x + half < area.left() || x - half > area.right())
            continue;
        const QVector<double> values = mHistory.values(box.step);
        const double low = y.invTransform(area.bottom());
        const double high = y.invTransform(area.top());
        const double across = std::clamp(x, area.left(), area.right());
        QPainterPath rectangle;
        rectangle.addRect(area);
        const bool isRectangle = region == rectangle;
        for (int i = 0; i < std::min(mObjects, values.size()); ++i)
            if (values[i] >= low && values[i] <= high
                && (isRectangle || region.contains(QPointF(across, y.transform(values[i])))))
                found[i] = true;
    }
    QVector<unsigned int> objects;
    for (int i = 0; i < mObjects; ++i)
        if (found[i])
            objects.append(static_cast<unsigned int>(i));
    return objects;
}

GraphScale BoxPlotView::xScale() const
{
    const TimeScale scale(geography());
    return {QString(), mBoxes.first().at - 2 * mHalf, mBoxes.last().at + 2 * mHalf,
            scale.axis().dates, true};
}

GraphScale BoxPlotView::yScale() const
{
    return {datasetName(mDataset), mLow, mHigh};
}

QStringList BoxPlotView::commandLine(const QString &picture) const
{
    return {QStringLiteral("plot"), QStringLiteral("boxes"), workspace().commandPath(),
            datasetWord(mDataset), picture};
}

} // namespace meridor
