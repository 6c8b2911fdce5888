// SPDX-License-Identifier: MIT
/// The points of a graph, drawn from an image of object numbers.
#pragma once
#include <QImage>
#include <QPainterPath>
#include <QPointF>
#include <QVector>
#include <qwt_plot_item.h>
#include <vector>
#include "desk/draw/colorTable.h"
#include "desk/draw/flatGeometry.h"
#include "desk/draw/pickBuffer.h"

namespace meridor {

/// A disc for each object. A zoom draws the discs anew; a selection only colours the picture and
/// draws the discs of selected objects over it, so that none of them is hidden.
class PointsItem : public QwtPlotItem {
public:
    PointsItem();
    /// @param places  by object; a coordinate that is not finite leaves the object out.
    void setPlaces(std::vector<QPointF> places);
    /// @param rule     the colours; its `selected` is that of the discs above.
    /// @param classes  by object; empty: all are plain.
    /// @param grid     the colour of the lines at the ticks, below the discs.
    void setColors(const ColorRule &rule, QRgb grid, const QVector<int> &classes = {});
    /// @param selected  one flag for each object, or null.
    void setSelected(const unsigned char *selected);
    const std::vector<QPointF> &places() const { return mPlaces; }
    bool shows(int object) const;
    /// The number of objects that are shown.
    std::size_t count() const { return mAll.geometry.count(); }
    /// Diameter of a disc in pixels that do not depend on the scale of the screen.
    double discSize() const;

    /// The object of the topmost disc at a place of the canvas; -1: none.
    int objectAt(const QPoint &pixel) const;
    /// The objects whose places are within a region of the canvas, ascending; those of an empty
    /// region are the one at its first point.
    QVector<unsigned int> objectsIn(const QPainterPath &region, const QwtScaleMap &xMap,
                                    const QwtScaleMap &yMap) const;

    QRectF boundingRect() const override;
    /// While a picture for a file is drawn, the picture of the screen is kept.
    void setExporting(bool exporting) { mIsExporting = exporting; }
    void draw(QPainter *painter, const QwtScaleMap &xMap, const QwtScaleMap &yMap,
              const QRectF &canvas) const override;

private:
    struct Layer {
        FlatGeometry geometry;
        PickBuffer buffer;
        ColorTable colors;
        bool isDrawn = false; ///< the buffer is that of the geometry
        bool isAt(const ViewTransform &view) const { return isDrawn && buffer.view() == view; }
        void paint(const ViewTransform &view, const PickStyle &style, QImage &image);
    };
    void paintImage(QPainter &painter, const ViewTransform &view, const QRectF &canvas,
                    double ratio) const;
    void paintGrid(const QRectF &canvas, const ViewTransform &view) const;
    void paintDiscs(QPainter &painter, const QwtScaleMap &xMap, const QwtScaleMap &yMap) const;
    QRgb colorOf(std::size_t object) const { return mAll.colors.data()[object + 1]; }

    std::vector<QPointF> mPlaces;
    ColorRule mRule;
    QRgb mGrid = 0xff000000U;
    mutable Layer mAll;
    mutable QImage mPicture; ///< of mAll; null: to be made
    mutable Layer mSelected;
    mutable double mRatio = 1; ///< pixels of the buffer for one of the canvas
    bool mIsExporting = false;
};

} // namespace meridor
