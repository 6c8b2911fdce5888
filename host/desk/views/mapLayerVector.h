// SPDX-License-Identifier: MIT
/// The layer of polygons, lines or points.
#pragma once
#include <vector>
#include "desk/draw/colorTable.h"
#include "desk/draw/flatGeometry.h"
#include "desk/draw/pickBuffer.h"
#include "desk/draw/pickSpans.h"
#include "desk/views/mapLayerView.h"

namespace meridor {

/// Draws through images of object numbers: geometry is read once for each span of time in which no
/// object changes, and drawn when the view changes; classes and selection only colour the image.
class VectorLayerView final : public MapLayerView {
    Q_OBJECT
public:
    VectorLayerView(Workspace &workspace, int geography, int dataset, QWidget &canvas);

    QVector<unsigned int> objectsIn(const QPainterPath &region) override;
    QVector<unsigned int> objectsOfClass(int classIndex) override;
    QVector<double> valueSample() override;
    QRectF extentOf(const QVector<unsigned int> &objects) const override;
    void drawQuick(const ViewTransform &view) override;
    bool drawSharp(const ViewTransform &view) override;
    bool isSharp(const ViewTransform &view) const override;
    void paint(const ViewTransform &view, const MapColors &colors, bool isHurried,
               QImage &image) override;
    void paintLowest(const ViewTransform &view, const MapColors &colors, bool isHurried,
                     QImage &image) override;
    int objectAt(const QPoint &pixel) const override;
    int nextObject(int object, int step) const override;
    QPainterPath shapeOf(unsigned int object, const ViewTransform &view) const override;
    MapLayer pictureLayer(const ViewTransform &view) override;

protected:
    void readShapes() override;
    void readValues() override;
    void forgetShapes() override;
    void colorsChanged() override;

private:
    PickStyle style() const;
    int reach() const;
    bool isDrawn(const ViewTransform &view) const;
    bool isQuickDrawn(const ViewTransform &view) const;
    bool hasColors(const PickBuffer &buffer) const;
    void buildTable(const MapColors &colors, bool fillGround);
    void paintObjects(const ViewTransform &view, const MapColors &colors, bool isHurried,
                      QImage &image);
    void paintChosen(const PickBuffer &buffer, PickStyle style, QImage &image);
    /// The position of an object's shape; -1 if it does not exist at the time.
    int shapeIndex(unsigned int object) const;
    QVector<unsigned int> seenAt(const QPoint &pixel);

    FlatGeometry mGeometry;
    bool mHasShapes = false;
    bool mIsQuickStale = true;
    bool mIsSharpStale = true;
    PickStyle mStyle; ///< of both pictures
    PickBuffer mQuick;
    PickBuffer mSharp;
    PickSpans mQuickSpans;
    PickSpans mSharpSpans;
    bool mDoesSharpFollow = true;
    PickBuffer mChosen; ///< the selected places or lines
    bool mIsChosenStale = true;
    bool mIsAnySelected = false;
    int mObjectCount = 0;
    QVector<int> mClassOf; ///< by object; empty without classes
    ColorTable mTable;
    bool mIsTableStale = true;
    QRgb mTableGround = 0;             ///< of the colours that the table was built with
    bool mFillsGround = false;         ///< of the table: it also colours pixels without an object
    mutable std::vector<int> mShapeOf; ///< by object, made when it is first asked for
};

} // namespace meridor
