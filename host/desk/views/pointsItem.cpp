// SPDX-License-Identifier: MIT
#include "desk/views/pointsItem.h"
#include <QPaintEngine>
#include <QPainter>
#include <algorithm>
#include <cmath>
#include <qwt_plot.h>
#include <qwt_scale_div.h>
#include <qwt_scale_map.h>
#include "desk/draw/colorPass.h"

namespace meridor {
namespace {

/// Up to here discs are drawn at twice the pixels, which smooths their edges.
constexpr std::size_t kMostSmooth = 200000;
/// Up to here a drawing has one shape for each disc instead of an image.
constexpr std::size_t kMostShapes = 20000;
constexpr int kReach = 4; ///< of the pointer, in pixels of the canvas

} // namespace

PointsItem::PointsItem()
{
    setItemAttribute(QwtPlotItem::AutoScale, false);
    setZ(20);
}

void PointsItem::setPlaces(std::vector<QPointF> places)
{
    mPlaces = std::move(places);
    mAll.geometry.setPlaces(mPlaces);
    mAll.isDrawn = false;
    mAll.colors.build(static_cast<int>(mPlaces.size()), mRule, nullptr, nullptr, nullptr);
    mPicture = QImage();
    setSelected(nullptr);
}

void PointsItem::setColors(const ColorRule &rule, QRgb grid, const QVector<int> &classes)
{
    mRule = rule;
    mGrid = grid;
    const bool hasClasses = classes.size() == static_cast<int>(mPlaces.size());
    mAll.colors.build(static_cast<int>(mPlaces.size()), rule,
                      hasClasses ? classes.constData() : nullptr, nullptr, nullptr);
    mPicture = QImage();
    itemChanged();
}

void PointsItem::setSelected(const unsigned char *selected)
{
    std::vector<QPointF> above;
    for (std::size_t i = 0; selected && i < mPlaces.size(); ++i)
        if (selected[i])
            above.push_back(mPlaces[i]);
    ColorRule marked;
    marked.plain = mRule.selected;
    mSelected.colors.build(static_cast<int>(above.size()), marked, nullptr, nullptr, nullptr);
    mSelected.geometry.setPlaces(above);
    mSelected.isDrawn = false;
    itemChanged();
}

bool PointsItem::shows(int object) const
{
    return object >= 0 && static_cast<std::size_t>(object) < mPlaces.size()
           && std::isfinite(mPlaces[static_cast<std::size_t>(object)].x())
           && std::isfinite(mPlaces[static_cast<std::size_t>(object)].y());
}

double PointsItem::discSize() const
{
    const double crowd = std::max(1.0, static_cast<double>(count()) / 400.0);
    return std::max(3.0, 9.0 / std::pow(crowd, 0.2));
}

int PointsItem::objectAt(const QPoint &pixel) const
{
    const QPointF center = (QPointF(pixel) + QPointF(0.5, 0.5)) * mRatio;
    return mAll.isDrawn ? mAll.buffer.objectNear(center.toPoint(), qRound(kReach * mRatio)) : -1;
}

QVector<unsigned int> PointsItem::objectsIn(const QPainterPath &region, const QwtScaleMap &xMap,
                                            const QwtScaleMap &yMap) const
{
    QVector<unsigned int> found;
    const QRectF box = region.boundingRect();
    if (box.isEmpty()) {
        const int object =
            region.elementCount() > 0 ? objectAt(QPointF(region.elementAt(0)).toPoint()) : -1;
        if (object >= 0)
            found.append(static_cast<unsigned int>(object));
        return found;
    }
    // A rectangle is compared with the values; of other regions a mask tells which pixels they hold.
    QPainterPath rectangle;
    rectangle.addRect(box);
    const bool isRectangle = region == rectangle;
    QImage mask;
    const QPoint corner = box.topLeft().toPoint() - QPoint(1, 1);
    if (!isRectangle) {
        mask = QImage(box.size().toSize() + QSize(3, 3), QImage::Format_Grayscale8);
        mask.fill(0);
        QPainter painter(&mask);
        painter.translate(-corner);
        painter.fillPath(region, Qt::white);
    }
    const double x0 = xMap.invTransform(box.left());
    const double x1 = xMap.invTransform(box.right());
    const double y0 = yMap.invTransform(box.bottom());
    const double y1 = yMap.invTransform(box.top());
    for (std::size_t i = 0; i < mPlaces.size(); ++i) {
        const QPointF &place = mPlaces[i];
        if (!(place.x() >= x0 && place.x() <= x1 && place.y() >= y0 && place.y() <= y1))
            continue;
        if (!isRectangle) {
            const QPoint at(static_cast<int>(std::floor(xMap.transform(place.x()))),
                            static_cast<int>(std::floor(yMap.transform(place.y()))));
            const QPoint inMask = at - corner;
            if (!mask.rect().contains(inMask) || mask.constScanLine(inMask.y())[inMask.x()] == 0)
                continue;
        }
        found.append(static_cast<unsigned int>(i));
    }
    return found;
}

QRectF PointsItem::boundingRect() const
{
    return mAll.geometry.bounds();
}

void PointsItem::Layer::paint(const ViewTransform &view, const PickStyle &style, QImage &image)
{
    if (geometry.count() == 0)
        return;
    if (!isAt(view))
        buffer.draw(geometry, view, style);
    isDrawn = true;
    colorPass(buffer, colors, PassStyle(), image);
}

void PointsItem::paintImage(QPainter &painter, const ViewTransform &view, const QRectF &canvas,
                            double ratio) const
{
    const bool smooth = count() <= kMostSmooth;
    const int disc = std::clamp(qRound(discSize() * ratio), 1, 100);
    PickStyle style;
    style.placeSize = disc;
    const ViewTransform drawn = smooth ? view.doubled() : view;
    if (smooth)
        style = style.doubled();
    mRatio = smooth ? 2 * ratio : ratio;
    if (mPicture.isNull() || !mAll.isAt(drawn)) {
        mPicture = QImage(view.size(), QImage::Format_RGB32);
        mPicture.fill(mRule.ground);
        paintGrid(canvas, view);
        mAll.paint(drawn, style, mPicture);
    }
    QImage image = mPicture;
    mSelected.paint(drawn, style, image);
    painter.drawImage(canvas, image);
}

void PointsItem::paintGrid(const QRectF &canvas, const ViewTransform &view) const
{
    QPainter painter(&mPicture);
    painter.setPen(QPen(QColor(mGrid), std::max(1.0, mPicture.width() / canvas.width())));
    const QSizeF size(mPicture.size());
    for (const double tick : plot()->axisScaleDiv(QwtPlot::xBottom).ticks(QwtScaleDiv::MajorTick)) {
        const double x = view.toPixel(QPointF(tick, 0)).x();
        painter.drawLine(QPointF(x, 0), QPointF(x, size.height()));
    }
    for (const double tick : plot()->axisScaleDiv(QwtPlot::yLeft).ticks(QwtScaleDiv::MajorTick)) {
        const double y = view.toPixel(QPointF(0, tick)).y();
        painter.drawLine(QPointF(0, y), QPointF(size.width(), y));
    }
}

void PointsItem::paintDiscs(QPainter &painter, const QwtScaleMap &xMap,
                            const QwtScaleMap &yMap) const
{
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    const double radius = discSize() / 2;
    const auto drawOne = [&](const QPointF &place, QRgb color) {
        painter.setBrush(QColor(color | 0xff000000U));
        painter.drawEllipse(QPointF(xMap.transform(place.x()), yMap.transform(place.y())), radius,
                            radius);
    };
    for (std::size_t i = 0; i < mPlaces.size(); ++i)
        if (shows(static_cast<int>(i)))
            drawOne(mPlaces[i], colorOf(i));
    for (const QPointF &place : mSelected.geometry.shapes().vertices)
        drawOne(place, mRule.selected);
}

void PointsItem::draw(QPainter *painter, const QwtScaleMap &xMap, const QwtScaleMap &yMap,
                      const QRectF &canvas) const
{
    if (count() == 0 || canvas.isEmpty())
        return;
    if (mIsExporting && count() <= kMostShapes) {
        paintDiscs(*painter, xMap, yMap);
        return;
    }
    const double ratio = painter->device()->devicePixelRatioF()
                         * std::max(1.0, std::abs(painter->transform().m11()));
    const QRectF shown(
        QPointF(xMap.invTransform(canvas.left()), yMap.invTransform(canvas.bottom())),
        QPointF(xMap.invTransform(canvas.right()), yMap.invTransform(canvas.top())));
    const QSize size = (canvas.size() * ratio).toSize();
    const ViewTransform view = ViewTransform::fitAxes(shown, size);
    if (!mIsExporting) {
        paintImage(*painter, view, canvas, ratio);
        return;
    }
    const double kept = mRatio;
    const Layer all = mAll;
    const Layer selected = mSelected;
    const QImage picture = mPicture;
    mPicture = QImage();
    paintImage(*painter, view, canvas, ratio);
    mAll = all;
    mSelected = selected;
    mPicture = picture;
    mRatio = kept;
}

} // namespace meridor
