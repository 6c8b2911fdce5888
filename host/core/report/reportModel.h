// SPDX-License-Identifier: MIT
/// The content of a report as plain records, which do not refer to the project.
#pragma once
#include <QPoint>
#include <QSize>
#include <QString>
#include <QStringList>
#include <QVector>
#include "datainterface/TimeStamp.h"

namespace meridor {

/// One position of a time slider.
struct ReportStep {
    Interval when;
    qint64 instant; ///< an instant inside `when`
    QString text;
};

/// Classes of a layer, the same at all times.
struct LayerView {
    QString name;
    bool relative = false;  ///< values are percentages of the mean of their time
    QVector<double> breaks; ///< one more than colours; empty for texts
    QStringList colors;
};

/// A dataset on the map. Rows are in the order of `steps`; a static dataset has one row and no
/// steps.
struct ReportLayer {
    QString name;
    QString type;
    bool isText = false;
    bool always = false;
    int realization = 1;           ///< the one that is shown
    QVector<int> steps;            ///< indices of the geography's steps
    QVector<QVector<double>> rows; ///< by object; NaN: missing; for texts an index of `words`
    QStringList words;
    QVector<LayerView> views;
    int view = 0;      ///< index of the view that is shown first
    QString classesOf; ///< the layer whose classes it has; empty: its own
};

/// The shape of an object from a step on; -1: it does not exist.
struct ShapeChange {
    int step;
    int shape;
};

/// Shapes in page units: whole numbers from 0 to 10,000 along the longer side, y downwards.
struct ReportShapes {
    QSize size;
    QVector<QVector<int>> arcs;            ///< x, y of the first vertex, then differences
    QVector<QVector<QVector<int>>> shapes; ///< rings or parts of arcs; ~n: arc n reversed
    QVector<QPoint> places;                ///< points have these only
    QVector<QVector<ShapeChange>> objects;
    qint64 given = 0; ///< number of vertices of the project's shapes
    qint64 kept = 0;  ///< number of vertices of the arcs
};

/// The lists of a weight set from a step on, until the next state.
struct LinkState {
    int step;
    int objects = 0;
    qint64 links = 0;
    int least = 0;
    int most = 0;
    QVector<int> islands;
    QVector<QVector<int>> neighbors; ///< by object
};
struct ReportLinks {
    QString name;
    QString definition;
    QVector<LinkState> states;
};

struct MoranRow {
    int step; ///< -1: static
    QString text;
    int objects;
    double value, expectation, deviate, p, low, high;
};
struct ReportMoran {
    QString layer;
    QString set;
    int permutations;
    int seed;
    QVector<MoranRow> rows;
};

/// One of the small maps side by side above the map of a geography.
struct SideMap {
    int step;
    QString text;
    int layer = -1; ///< an index of the layers; -1: the layer of the large map
};

/// A line that prints what a report shows, for the program that made it.
struct ReportCommand {
    QString what;
    QString line;
};

struct ReportGeography {
    QString name;
    QString kind; ///< polygons, points, lines or raster
    int objects = 0;
    QString projection;
    QString history;
    QStringList keys;
    QStringList labels;
    QVector<ReportStep> steps;
    QVector<int> existence; ///< steps at which the objects or their shapes change
    QVector<SideMap> sideMaps;
    int first = -1; ///< index of the layer that the page opens on
    int rows = 0;   ///< of a grid: the rows shown
    int columns = 0;
    int every = 1;        ///< n if every n-th row and column is shown
    double cellRatio = 1; ///< width of a cell / height
    ReportShapes shapes;
    QVector<ReportLayer> layers;
    QVector<ReportLinks> links;
    QVector<ReportMoran> moran;
    QVector<ReportCommand> commands;
};

struct ReportProject {
    QString title;
    QString file;
    qint64 bytes = 0;
    QVector<ReportGeography> geographies;
    QVector<ReportCommand> commands;
};

} // namespace meridor
