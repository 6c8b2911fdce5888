// SPDX-License-Identifier: MIT
/// A part of a graph that is neither a curve nor points, such as bars.
#pragma once
#include <QRectF>
#include <QVector>
#include <functional>
#include "core/export.h"
#include "core/render/legend.h"
#include "core/render/theme.h"

class QPainter;

namespace meridor {

/// Maps values to pixels.
struct GraphMap {
    std::function<double(double)> x;
    std::function<double(double)> y;
    QRectF canvas;
    QPointF operator()(double atX, double atY) const { return {x(atX), y(atY)}; }
};

class MERIDOR_EXPORT GraphItem {
public:
    virtual ~GraphItem();
    /// The range of its values on both axes.
    virtual QRectF bounds() const = 0;
    /// Paints on the canvas of the graph.
    virtual void draw(QPainter &painter, const GraphMap &map, const Theme &theme) const = 0;
    /// A block of the legend; without entries there is none.
    virtual LegendBlock legend() const;
};

} // namespace meridor
