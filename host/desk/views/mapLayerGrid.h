// SPDX-License-Identifier: MIT
/// The layer of a grid.
#pragma once
#include "datainterface/GeoProps.h"
#include "desk/draw/gridColors.h"
#include "desk/draw/gridImage.h"
#include "desk/views/mapLayerView.h"

namespace meridor {

/// Keeps the values behind the pixels of the view: the nearest cells while the map moves, means at
/// rest. Selected objects are cells, row * columns + column.
class GridLayerView final : public MapLayerView {
    Q_OBJECT
public:
    GridLayerView(Workspace &workspace, int geography, int dataset, QWidget &canvas);

    QVector<unsigned int> objectsIn(const QPainterPath &region) override;
    QVector<unsigned int> objectsOfClass(int classIndex) override;
    QVector<double> valueSample() override;
    QRectF extentOf(const QVector<unsigned int> &objects) const override;
    void drawQuick(const ViewTransform &view) override;
    bool drawSharp(const ViewTransform &view) override;
    bool isSharp(const ViewTransform &view) const override;
    bool readsLibrary() const override { return true; }
    void paint(const ViewTransform &view, const MapColors &colors, bool isHurried,
               QImage &image) override;
    int objectAt(const QPoint &pixel) const override { return mImage.cellAt(pixel.x(), pixel.y()); }
    int nextObject(int object, int step) const override;
    QPainterPath shapeOf(unsigned int object, const ViewTransform &view) const override;
    MapLayer pictureLayer(const ViewTransform &view) override;

protected:
    void readShapes() override {}
    void readValues() override;
    void forgetShapes() override {}
    void colorsChanged() override;

private:
    bool load(const ViewTransform &view, RasterSampling sampling);
    bool countRows();
    /// Calls visit(cell, value) for rows of the grid at the present time; NaN is a missing value.
    template <class Visit> bool visitRows(int first, int end, Visit visit) const;
    QRectF cellBox(unsigned int cell) const;

    GeoProps mGrid;
    GridImage mImage;
    bool mHasImage = false;
    RasterSampling mSampling = RasterSampling::Nearest;
    GridColors mColors;
    bool mAreColorsStale = true;
    QRgb mMissingColor = 0;
    int mCountedRows = 0;
};

} // namespace meridor
