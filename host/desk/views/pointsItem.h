// SPDX-License-Identifier: MIT
/// The points of a graph.
#pragma once
#include <QImage>
#include <QPainterPath>
#include <QPointF>
#include <QVector>
#include <qwt_plot_item.h>
#include <vector>
#include "desk/draw/colorTable.h"
#include "desk/draw/pickBuffer.h"

namespace meridor {

/// A disc for each object. The picture of all is kept: a selection only paints the discs of selected
/// objects over it, so that none of them is hidden. The image of object numbers, which tells what the
/// mouse points at, is made when it is asked for.
class PointsItem : public QwtPlotItem {
public:
    PointsItem();
    /// @param places  by object; a coordinate that is not finite leaves the object out.
    void setPlaces(std::vector<QPointF> places);
    /// @param rule     the colours of the classes, of the discs without one, and of the discs above.
    /// @param classes  by object; empty: all are plain.
    /// @param grid     the colour of the lines at the ticks, below the discs.
    void setColors(const ColorRule &rule, QRgb grid, const QVector<int> &classes = {});
    /// @param selected  one flag for each object, or null.
    void setSelected(const unsigned char *selected);
    const std::vector<QPointF> &places() const { return mPlaces; }
    bool shows(int object) const;
    /// The number of objects that are shown.
    std::size_t count() const { return mCount; }
    /// Diameter of a disc in pixels that do not depend on the scale of the screen.
    double discSize() const;

    /// The object of the topmost disc at a place of the canvas; -1: none.
    int objectAt(const QPoint &pixel) const;
    /// The objects whose places are within a region of the canvas, ascending; those of an empty
    /// region are the one at its first point.
    QVector<unsigned int> objectsIn(const QPainterPath &region, const QwtScaleMap &xMap,
                                    const QwtScaleMap &yMap) const;

    QRectF boundingRect() const override { return mBounds; }
    /// While a picture for a file is drawn, the picture of the screen is kept.
    void setExporting(bool exporting) { mIsExporting = exporting; }
    void draw(QPainter *painter, const QwtScaleMap &xMap, const QwtScaleMap &yMap,
              const QRectF &canvas) const override;

private:
    int diameter(double ratio) const;
    void paintImage(QPainter &painter, const ViewTransform &view, const QRectF &canvas,
                    double ratio) const;
    void paintGrid(const QRectF &canvas, const ViewTransform &view) const;
    void paintShapes(QPainter &painter, const QwtScaleMap &xMap, const QwtScaleMap &yMap) const;

    std::vector<QPointF> mPlaces;
    std::size_t mCount = 0; ///< of the places that are shown
    QRectF mBounds;         ///< of the same
    std::vector<QRgb> mColors;
    std::vector<QPointF> mSelected;
    QRgb mGround = 0;
    QRgb mSelectedColor = 0;
    QRgb mGrid = 0;
    mutable QImage mPicture;      ///< of all discs
    mutable QImage mMarked;       ///< the same with the selected ones
    mutable ViewTransform mView;  ///< of the picture
    mutable bool mIsStale = true; ///< the picture is to be made
    mutable double mRatio = 1;    ///< pixels of the picture for one of the canvas
    mutable PickBuffer mNumbers;
    mutable bool mHasNumbers = false; ///< those of the picture
    bool mIsExporting = false;
};

} // namespace meridor
