// SPDX-License-Identifier: MIT
/// Graphs with two axes: curves and points, with a legend of those that have a name. Drawn with
/// Qwt.
///
///     Graph graph;
///     graph.texts.title = "Semivariogram of rain";
///     graph.x = {"distance, m", 0};
///     graph.y = {"semivariance", 0};
///     graph.series.append({"pairs", lagMeans, GraphSeries::Points});
///     graph.series.last().labels = pairCounts;
///     graph.series.append({"fitted model", curve, GraphSeries::Line});
///     savePicture(graph, "rain.svg");
#pragma once
#include <QColor>
#include <QPointF>
#include <QString>
#include <QStringList>
#include <QVector>
#include <limits>
#include <memory>
#include "core/export.h"
#include "core/render/theme.h"

class QPainter;

namespace meridor {

struct GraphAxis {
    static constexpr double kOfData = std::numeric_limits<double>::quiet_NaN();

    QString title;
    double low = kOfData; ///< the ends of the scale; kOfData: rounded outwards from the data
    double high = kOfData;
    bool dates = false; ///< values are milliseconds since 1970-01-01, UTC
    bool bare = false;  ///< without ticks and numbers
};

struct GraphSeries {
    enum Look { Line, Points, LineAndPoints, Steps };

    QString name;                 ///< in the legend; empty: not in it
    QVector<QPointF> points = {}; ///< a coordinate that is not finite is a gap
    Look look = Line;
    QStringList labels =
        {};            ///< beside the points, in their order; those that would overlap are omitted
    QColor color = {}; ///< invalid: the next one of the theme
    bool dashed = false;
    bool isBehind = false; ///< drawn below the series that are not
};

class GraphItem;

struct Graph {
    PictureTexts texts;
    PictureSize size;
    GraphAxis x;
    GraphAxis y;
    QVector<std::shared_ptr<const GraphItem>> items; ///< below the series; see graphItem.h
    QVector<GraphSeries> series;                     ///< in the order of drawing
};

/// Draws the graph on a painter of graph.size.pixels. Requires a QApplication.
MERIDOR_EXPORT void drawGraph(QPainter &painter, const Graph &graph);
/// Writes a PNG, SVG or PDF file: see pictureFile.h.
MERIDOR_EXPORT void savePicture(const Graph &graph, const QString &path);

/// Colours for lines and points on a white ground, which they contrast with by at least 3 to 1.
/// They repeat after eight.
MERIDOR_EXPORT QColor lineColor(int index);

} // namespace meridor
