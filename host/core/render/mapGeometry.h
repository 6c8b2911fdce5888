// SPDX-License-Identifier: MIT
/// Planar geometry of drawing: clipping, thinning, hatching, and places for labels.
#pragma once
#include <QLineF>
#include <QPointF>
#include <QRectF>
#include <QString>
#include <QVector>
#include "core/export.h"

class QTransform;

namespace meridor {

/// The points mapped to pixels. Points that are less than `step` pixels from the last one that is
/// kept are left out, except the last.
QVector<QPointF> mapped(const QVector<QPointF> &points, const QTransform &transform, double step);
/// The part of a ring inside the rectangle (I. E. Sutherland and G. W. Hodgman 1974, CACM 17);
/// parts may be connected along its edges. Empty if there is none.
MERIDOR_EXPORT QVector<QPointF> clippedRing(const QVector<QPointF> &ring, const QRectF &frame);
/// The pieces of a line inside the rectangle (Y.-D. Liang and B. A. Barsky 1984, ACM TOG 3).
MERIDOR_EXPORT QVector<QVector<QPointF>> clippedLine(const QVector<QPointF> &line,
                                                     const QRectF &frame);
/// Lines at 45 degrees, `step` apart, inside the rings (even-odd rule). Lines of neighbouring
/// shapes continue each other. Painters of some formats have neither patterns nor clipping.
MERIDOR_EXPORT QVector<QLineF> hatchLines(const QVector<QVector<QPointF>> &rings, double step);
/// A place inside the rings (even-odd rule) for a text: the middle of the widest of some horizontal
/// sections. @param width  receives the width of that section.
MERIDOR_EXPORT QPointF labelPlace(const QVector<QVector<QPointF>> &rings, double &width);
QRectF boundsOf(const QVector<QVector<QPointF>> &parts);

} // namespace meridor
