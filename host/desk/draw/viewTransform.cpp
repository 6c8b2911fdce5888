// SPDX-License-Identifier: MIT
#include "desk/draw/viewTransform.h"
#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace meridor {
namespace {

// Beyond this distance from the anchor a pan moves the anchor, so that sums of pixels stay exact.
constexpr int kFarOrigin = 1 << 26;

QRectF usable(const QRectF &map)
{
    const bool finite = std::isfinite(map.left()) && std::isfinite(map.right())
                        && std::isfinite(map.top()) && std::isfinite(map.bottom());
    if (!finite || !(map.width() >= 0.0) || !(map.height() >= 0.0))
        return {0.0, 0.0, 1.0, 1.0};
    if (map.width() > 0.0 || map.height() > 0.0)
        return map;
    // Large coordinates would swallow a single unit.
    const double half = 0.5 * std::max({1.0, std::fabs(map.x()) * 1e-9, std::fabs(map.y()) * 1e-9});
    return map.adjusted(-half, -half, half, half);
}

double scaleOf(double extent, int pixels, int margin)
{
    return std::max(1, pixels - 2 * margin) / extent; // infinite without an extent
}

double finiteScale(double scale)
{
    return std::isfinite(scale) && scale > 0.0 ? scale : 1.0;
}

} // namespace

ViewTransform ViewTransform::fit(const QRectF &map, const QSize &size, int margin, double stretch)
{
    const QRectF extent = usable(map);
    ViewTransform view;
    view.mSize = size;
    if (!(stretch > 0.0) || !std::isfinite(stretch))
        stretch = 1.0;
    view.mYScale = finiteScale(std::min(scaleOf(extent.width() * stretch, size.width(), margin),
                                        scaleOf(extent.height(), size.height(), margin)));
    view.mXScale = view.mYScale * stretch;
    view.center(extent);
    return view;
}

ViewTransform ViewTransform::fitAxes(const QRectF &map, const QSize &size, int margin)
{
    const QRectF extent = usable(map);
    ViewTransform view;
    view.mSize = size;
    view.mXScale = finiteScale(scaleOf(extent.width(), size.width(), margin));
    view.mYScale = finiteScale(scaleOf(extent.height(), size.height(), margin));
    view.center(extent);
    return view;
}

void ViewTransform::center(const QRectF &map)
{
    // The middle of a window of odd size is the middle of a pixel.
    mAnchor = map.center()
              - QPointF(0.5 * std::abs(mSize.width() % 2) / mXScale,
                        -0.5 * std::abs(mSize.height() % 2) / mYScale);
    mOrigin = QPoint(-(mSize.width() / 2), -(mSize.height() / 2));
}

QPointF ViewTransform::toPixel(const QPointF &map) const
{
    return {(map.x() - mAnchor.x()) * mXScale - mOrigin.x(),
            (mAnchor.y() - map.y()) * mYScale - mOrigin.y()};
}

QPointF ViewTransform::toMap(const QPointF &pixel) const
{
    return {mAnchor.x() + (pixel.x() + mOrigin.x()) / mXScale,
            mAnchor.y() - (pixel.y() + mOrigin.y()) / mYScale};
}

QRectF ViewTransform::toMap(const QRectF &pixels) const
{
    const QPointF topLeft = toMap(pixels.topLeft());
    const QPointF bottomRight = toMap(pixels.bottomRight());
    return QRectF(QPointF(topLeft.x(), bottomRight.y()), QPointF(bottomRight.x(), topLeft.y()));
}

void ViewTransform::anchorAt(const QPointF &pixel)
{
    mAnchor = toMap(pixel);
    mOrigin = QPoint(-static_cast<int>(pixel.x()), -static_cast<int>(pixel.y()));
}

void ViewTransform::pan(int dx, int dy)
{
    mOrigin -= QPoint(dx, dy);
    if (std::abs(mOrigin.x()) > kFarOrigin || std::abs(mOrigin.y()) > kFarOrigin)
        anchorAt(QPointF(mSize.width() / 2, mSize.height() / 2));
}

void ViewTransform::zoom(const QPointF &pixel, double factor)
{
    if (!(factor > 0.0) || !std::isfinite(pixel.x()) || !std::isfinite(pixel.y()))
        return;
    const double zoomed = std::clamp(mZoom * factor, std::ldexp(1.0, -20), std::ldexp(1.0, 36));
    const double change = zoomed / mZoom;
    // The anchor goes to a corner of the pixel, so that the origin remains whole.
    const QPointF corner(std::floor(pixel.x()), std::floor(pixel.y()));
    const QPointF place = toMap(pixel);
    anchorAt(corner);
    mXScale *= change;
    mYScale *= change;
    mZoom = zoomed;
    mAnchor = QPointF(place.x() - (pixel.x() - corner.x()) / mXScale,
                      place.y() + (pixel.y() - corner.y()) / mYScale);
}

ViewTransform ViewTransform::doubled() const
{
    ViewTransform view = *this;
    view.mXScale *= 2.0;
    view.mYScale *= 2.0;
    view.mOrigin *= 2;
    view.mSize *= 2;
    return view;
}

bool ViewTransform::sharesLattice(const ViewTransform &other) const
{
    return mAnchor.x() == other.mAnchor.x() && mAnchor.y() == other.mAnchor.y()
           && mXScale == other.mXScale && mYScale == other.mYScale;
}

} // namespace meridor
