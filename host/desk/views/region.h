// SPDX-License-Identifier: MIT
/// A region that the user drew over a map.
#pragma once
#include <QPainterPath>
#include <QPointF>
#include <QRectF>
#include <QVector>

namespace meridor {

class ViewTransform;

/// Told apart by the elements of the path: no element but the first is a click.
class Region {
public:
    enum Kind { Click, Rectangle, Circle, Polygon };

    /// @param path   in pixels of a widget.
    /// @param ratio  device pixels for one of them. All results are in device pixels.
    Region(const QPainterPath &path, double ratio);
    Kind kind() const { return mKind; }
    QPoint pixel() const;
    QRectF box() const { return mPath.boundingRect(); }
    QPointF center() const { return box().center(); }
    double radius() const { return 0.5 * box().width(); }
    /// In map coordinates.
    QList<QVector<QPointF>> rings(const ViewTransform &view) const;
    /// The objects of a vector geography that have a point in common with the region.
    QVector<unsigned int> objectsOf(int geography, qint64 time, const ViewTransform &view) const;

private:
    QPainterPath mPath;
    Kind mKind;
};

} // namespace meridor
