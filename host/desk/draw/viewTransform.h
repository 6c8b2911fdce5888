// SPDX-License-Identifier: MIT
/// Map coordinates and the pixels of a window.
#pragma once
#include <QPoint>
#include <QPointF>
#include <QRectF>
#include <QSize>

namespace meridor {

/// The map (y up) is laid over an endless lattice of pixels (y down), of which the window shows a
/// part. A pan by whole pixels moves only the window: what was drawn keeps its lattice coordinates,
/// bit for bit, so that a moved picture and one that is drawn anew are equal.
///
///     lattice x = (map x - anchor x) * x scale       window x = lattice x - origin x
///     lattice y = (anchor y - map y) * y scale       window y = lattice y - origin y
///
/// Windows are in device pixels. A plain value.
class ViewTransform {
public:
    ViewTransform() = default;
    /// The largest view of `map` that fits into a window, centred. A rectangle without an extent is
    /// shown as a point of one map unit; one that is not finite as the unit square.
    /// @param margin   pixels that stay free on each side.
    /// @param stretch  x scale divided by y scale, such as the cosine of the latitude for degrees.
    static ViewTransform fit(const QRectF &map, const QSize &size, int margin = 0,
                             double stretch = 1.0);
    /// The same with each axis scaled on its own, as in a scatter plot.
    static ViewTransform fitAxes(const QRectF &map, const QSize &size, int margin = 0);

    QSize size() const { return mSize; }
    double xScale() const { return mXScale; } ///< pixels for a map unit
    double yScale() const { return mYScale; }
    QPointF anchor() const { return mAnchor; }
    QPoint origin() const { return mOrigin; } ///< lattice coordinates of the window's first pixel

    QPointF toPixel(const QPointF &map) const;
    QPointF toMap(const QPointF &pixel) const;
    /// The part of the map behind pixels of the window; top left is the smallest x and y.
    QRectF toMap(const QRectF &pixels) const;
    QRectF visible() const { return toMap(QRectF(QPointF(), QSizeF(mSize))); }

    /// Moves the map by pixels: a positive dy moves it down.
    void pan(int dx, int dy);
    /// Scales by `factor` about a pixel, which keeps its place on the map. The scale stays between
    /// 2^-20 and 2^36 times that of the fit.
    void zoom(const QPointF &pixel, double factor);
    /// A window of another size that begins at the same pixel of the lattice.
    void resize(const QSize &size) { mSize = size; }
    /// The same view at twice as many pixels in each direction.
    ViewTransform doubled() const;
    /// Whether both lay the map over the lattice alike, so that one is the other one moved.
    bool sharesLattice(const ViewTransform &other) const;
    bool operator==(const ViewTransform &other) const
    {
        return sharesLattice(other) && mOrigin == other.mOrigin && mSize == other.mSize;
    }
    bool operator!=(const ViewTransform &other) const { return !(*this == other); }

private:
    void center(const QRectF &map);
    void anchorAt(const QPointF &pixel);

    QPointF mAnchor;
    double mXScale = 1.0;
    double mYScale = 1.0;
    double mZoom = 1.0; ///< the scale divided by that of the fit
    QPoint mOrigin;
    QSize mSize;
};

} // namespace meridor
