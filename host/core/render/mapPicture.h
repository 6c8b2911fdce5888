// SPDX-License-Identifier: MIT
/// Draws maps: a title, one or several panels of layers, and a legend. It does not access the
/// project.
#pragma once
#include <QColor>
#include <QImage>
#include <QLineF>
#include <QPointF>
#include <QRectF>
#include <QString>
#include <QVector>
#include "core/export.h"
#include "core/render/legend.h"
#include "core/render/theme.h"

namespace meridor {

struct MapShape {
    enum Kind { Area, Line, Place };
    Kind kind = Area;
    QVector<QVector<QPointF>> parts; ///< map coordinates, y upwards
    int classIndex = -1;             ///< -1: no value
    bool isMarked = false;           ///< has the colour of selected objects, whatever its class
};

/// A grid, possibly with fewer cells than that of the project.
struct MapGrid {
    static constexpr quint8 kMissing = 255;
    static constexpr quint8 kMarked = 254; ///< a selected cell

    QRectF bounds; ///< map coordinates
    int rows = 0;
    int columns = 0;
    QVector<quint8> classes; ///< by row from the largest y, then column
};

struct MapLayer {
    QVector<MapShape> shapes;
    MapGrid grid;
    QVector<QColor> colors; ///< by class index; empty: outlines without classes
};

struct MapLabel {
    QString text;
    QVector<QVector<QPointF>> parts; ///< of the object
    bool isArea = false;
};

struct MapPanel {
    QString caption;
    QString note; ///< beside the caption
    QVector<MapLayer> layers;
    QVector<QLineF> links;
    QVector<QPointF> islands; ///< objects without links
    QVector<MapLabel> labels;
    // Of the base layer:
    qint64 drawn = 0; ///< objects or cells
    qint64 missing = 0;
    QVector<qint64> counts; ///< by class index
    qint64 linkCount = 0;   ///< each direction of a link counted
};

struct MapPicture {
    PictureTexts texts;
    PictureSize size;
    QVector<LegendBlock> legend;
    QVector<MapPanel> panels;
    int base = 0;             ///< the layer of each panel that the figures and the extent are of
    QRectF frame;             ///< extent in map coordinates; empty: that of the base layers
    bool isFramed = false;    ///< whether the frame has a ground and a border
    bool geographic = false;  ///< degrees: x is scaled by the cosine of the middle latitude
    double metresPerUnit = 0; ///< of map coordinates; 0: unknown
};

/// How much shorter a degree of longitude is than one of latitude in the middle of a frame; 1 unless
/// the coordinates are degrees. Files without a stated projection may hold others.
MERIDOR_EXPORT double squeezeOf(bool geographic, const QRectF &frame);

/// What drawing decided.
struct MapDrawing {
    int labelsDrawn = 0;
    int labelsOmitted = 0; ///< because they would overlap others
};

/// Draws on a painter of picture.size.pixels. Raises a Failure on a cancel.
MERIDOR_EXPORT MapDrawing drawMap(QPainter &painter, const MapPicture &picture);
MERIDOR_EXPORT QImage draw(const MapPicture &picture);
/// Writes a PNG, SVG or PDF file: see pictureFile.h.
MERIDOR_EXPORT MapDrawing savePicture(const MapPicture &picture, const QString &path);

} // namespace meridor
