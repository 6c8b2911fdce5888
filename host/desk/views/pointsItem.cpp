// SPDX-License-Identifier: MIT
#include "desk/views/pointsItem.h"
#include <QPaintEngine>
#include <QPainter>
#include <algorithm>
#include <cmath>
#include <limits>
#include <qwt_plot.h>
#include <qwt_scale_div.h>
#include <qwt_scale_map.h>
#include "desk/draw/discs.h"
#include "desk/draw/flatGeometry.h"

namespace meridor {
namespace {

/// Up to here the edges of discs are smooth.
constexpr std::size_t kMostSmooth = 200000;
/// Up to here a drawing has one shape for each disc instead of an image.
constexpr std::size_t kMostShapes = 20000;
constexpr int kReach = 4; ///< of the pointer, in pixels of the canvas

bool isFinite(const QPointF &place)
{
    return std::isfinite(place.x()) && std::isfinite(place.y());
}

} // namespace

PointsItem::PointsItem()
{
    setItemAttribute(QwtPlotItem::AutoScale, false);
    setZ(20);
}

void PointsItem::setPlaces(std::vector<QPointF> places)
{
    mPlaces = std::move(places);
    mCount = 0;
    QPointF low(std::numeric_limits<double>::infinity(), std::numeric_limits<double>::infinity());
    QPointF high = -low;
    for (const QPointF &place : mPlaces) {
        if (!isFinite(place))
            continue;
        ++mCount;
        low = QPointF(std::min(low.x(), place.x()), std::min(low.y(), place.y()));
        high = QPointF(std::max(high.x(), place.x()), std::max(high.y(), place.y()));
    }
    mBounds = mCount > 0 ? QRectF(low, high) : QRectF();
    mColors.clear();
    mSelected.clear();
    mIsStale = true;
    mHasNumbers = false;
}

void PointsItem::setColors(const ColorRule &rule, QRgb grid, const QVector<int> &classes)
{
    mGround = rule.ground;
    mSelectedColor = rule.selected;
    mGrid = grid;
    mColors.assign(1, rule.plain);
    if (classes.size() == static_cast<int>(mPlaces.size())) {
        mColors.clear();
        for (const int number : classes)
            mColors.push_back(rule.classes.value(number, rule.missing));
    }
    mIsStale = true;
    itemChanged();
}

void PointsItem::setSelected(const unsigned char *selected)
{
    mSelected.clear();
    for (std::size_t i = 0; selected && i < mPlaces.size(); ++i)
        if (selected[i])
            mSelected.push_back(mPlaces[i]);
    itemChanged();
}

bool PointsItem::shows(int object) const
{
    return object >= 0 && static_cast<std::size_t>(object) < mPlaces.size()
           && isFinite(mPlaces[static_cast<std::size_t>(object)]);
}

double PointsItem::discSize() const
{
    const double crowd = std::max(1.0, static_cast<double>(count()) / 400.0);
    return std::max(3.0, 9.0 / std::pow(crowd, 0.2));
}

/// Pixels of the picture.
int PointsItem::diameter(double ratio) const
{
    return std::clamp(qRound(discSize() * ratio), 1, 100);
}

int PointsItem::objectAt(const QPoint &pixel) const
{
    if (mIsStale)
        return -1;
    if (!mHasNumbers) {
        FlatGeometry geometry;
        geometry.setPlaces(mPlaces);
        PickStyle style;
        style.placeSize = diameter(mRatio);
        mNumbers.draw(geometry, mView, style);
        mHasNumbers = true;
    }
    const QPointF center = (QPointF(pixel) + QPointF(0.5, 0.5)) * mRatio;
    return mNumbers.objectNear(center.toPoint(), qRound(kReach * mRatio));
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

void PointsItem::paintImage(QPainter &painter, const ViewTransform &view, const QRectF &canvas,
                            double ratio) const
{
    const bool smooth = count() <= kMostSmooth;
    if (mIsStale || mView != view) {
        mView = view;
        mRatio = ratio;
        mHasNumbers = mIsStale = false;
        if (mPicture.size() != view.size())
            mPicture = QImage(view.size(), QImage::Format_RGB32);
        mPicture.fill(mGround);
        paintGrid(canvas, view);
        paintDiscs(mPlaces, view, diameter(ratio), smooth, mColors, mPicture);
    }
    if (mSelected.empty()) {
        painter.drawImage(canvas, mPicture);
        return;
    }
    if (mMarked.size() != view.size())
        mMarked = QImage(view.size(), QImage::Format_RGB32);
    std::copy_n(mPicture.constBits(), mPicture.sizeInBytes(), mMarked.bits());
    paintDiscs(mSelected, view, diameter(ratio), smooth, {mSelectedColor}, mMarked);
    painter.drawImage(canvas, mMarked);
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

void PointsItem::paintShapes(QPainter &painter, const QwtScaleMap &xMap,
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
            drawOne(mPlaces[i], mColors[mColors.size() == 1 ? 0 : i]);
    for (const QPointF &place : mSelected)
        if (isFinite(place))
            drawOne(place, mSelectedColor);
}

void PointsItem::draw(QPainter *painter, const QwtScaleMap &xMap, const QwtScaleMap &yMap,
                      const QRectF &canvas) const
{
    if (count() == 0 || mColors.empty() || canvas.isEmpty())
        return;
    if (mIsExporting && count() <= kMostShapes) {
        paintShapes(*painter, xMap, yMap);
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
    const double keptRatio = mRatio;
    const ViewTransform keptView = mView;
    const bool wasStale = mIsStale;
    const bool hadNumbers = mHasNumbers;
    QImage kept;
    kept.swap(mPicture);
    mIsStale = true;
    paintImage(*painter, view, canvas, ratio);
    kept.swap(mPicture);
    mMarked = QImage();
    mIsStale = wasStale;
    mView = keptView;
    mRatio = keptRatio;
    mHasNumbers = hadNumbers;
}

} // namespace meridor
