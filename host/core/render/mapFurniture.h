// SPDX-License-Identifier: MIT
/// What tells places and distances on a map: a graticule for degrees, a scale bar for lengths.
#pragma once
#include <QRectF>
#include <QTransform>
#include "core/render/theme.h"

class QPainter;

namespace meridor {

/// The room beside a map for the labels of its graticule: at the left and below.
QSizeF graticuleRoom(const Theme &theme);
/// Draws meridians and parallels inside the frame.
/// @param frame      in degrees.
/// @param transform  from degrees to pixels.
/// @param isLabelled whether labels are drawn left of the frame and below it.
void drawGraticule(QPainter &painter, const Theme &theme, const QRectF &frame,
                   const QTransform &transform, bool isLabelled);

double scaleBarHeight(const Theme &theme);
/// Draws a bar of a round length, at most `width` pixels long, with its length to the right.
void drawScaleBar(QPainter &painter, const Theme &theme, const QPointF &topLeft, double width,
                  double metresPerPixel);

} // namespace meridor
