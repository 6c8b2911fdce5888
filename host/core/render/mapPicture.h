// SPDX-License-Identifier: MIT
/// Draws a choropleth map: a title, shapes filled by class, and a legend. It does not access the
/// project.
#pragma once
#include <QColor>
#include <QImage>
#include <QPointF>
#include <QRectF>
#include <QString>
#include <QVector>
#include "core/export.h"
#include "core/render/legend.h"

namespace meridor {

struct MapShape {
    enum Kind { Area, Line, Place };
    Kind kind = Area;
    QVector<QVector<QPointF>> parts; ///< map coordinates, y upwards
    int classIndex = -1;             ///< -1: no value
};

struct MapPicture {
    QString title;
    QString subtitle;
    QString legendTitle;
    QString footnote;
    QVector<MapShape> shapes;
    QVector<LegendEntry> legend; ///< by class index
    int missingCount = 0;
    QRectF frame;            ///< extent in map coordinates; empty: that of the shapes
    bool geographic = false; ///< degrees: x is scaled by the cosine of the middle latitude
    QSize size{1600, 1000};
};

extern MERIDOR_EXPORT const QColor kMissingColor;

MERIDOR_EXPORT QImage draw(const MapPicture &picture);

} // namespace meridor
