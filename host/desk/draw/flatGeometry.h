// SPDX-License-Identifier: MIT
/// The shapes of a geography over a static span of time, as arrays that are read at every redraw.
#pragma once
#include <QPointF>
#include <QRectF>
#include <vector>
#include "datainterface/TimeStamp.h"
#include "fennimark/FMShapes.h"

namespace meridor {

class ViewTransform;

/// The first of the layers of a picture; the pick buffer is drawn from it without the library. Made
/// anew when the geography changes and when the time leaves span().
class FlatGeometry {
public:
    enum Kind { Places, Lines, Areas };
    /// Shapes of consecutive numbers share a box, which is tested before theirs.
    static constexpr std::size_t kBlock = 64;

    FlatGeometry() = default;
    /// The objects of a vector geography that exist at a time. False, with nothing changed, for an
    /// unknown id, for a raster, when memory does not hold them, and when a shape belongs to no object.
    bool load(int geography, qint64 time);
    /// The places of a scatter plot: place i is that of object i. Places that are not finite are
    /// left out.
    void setPlaces(const std::vector<QPointF> &places);

    Kind kind() const { return mKind; }
    /// Without shapes there is nothing to draw.
    std::size_t count() const { return mShapes.ids.size(); }
    /// `ids` are object indices.
    const FMShapes &shapes() const { return mShapes; }
    /// The hull of shapes i * kBlock to (i + 1) * kBlock - 1.
    const std::vector<Rect2D> &blocks() const { return mBlocks; }
    /// All object indices are below; 0 without shapes.
    int objectLimit() const { return mObjectLimit; }
    /// The hull of all shapes; null without shapes.
    QRectF bounds() const;
    /// The times at which the shapes are those of the geography.
    const Interval &span() const { return mSpan; }

    /// The mean width and height of the boxes of lines and areas on the screen, in pixels; 0 for
    /// places. Outlines are drawn from 8 pixels on: at 4 they would hide half of the map.
    double meanSize(const ViewTransform &view) const;
    /// The mean length of an edge in pixels, estimated from the boxes. It depends on the scale
    /// alone, not on the window.
    double meanEdge(const ViewTransform &view) const;

private:
    void setShapes(Kind kind, FMShapes &&shapes);

    Kind mKind = Places;
    FMShapes mShapes;
    std::vector<Rect2D> mBlocks;
    Rect2D mHull;
    double mWidths = 0.0; ///< of all boxes, added up
    double mHeights = 0.0;
    int mObjectLimit = 0;
    Interval mSpan;
};

} // namespace meridor
