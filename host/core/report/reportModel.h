// SPDX-License-Identifier: MIT
/// What a report shows, gathered from a project: plain records, without a geography or a dataset
/// behind them.
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
    qint64 instant; ///< inside
    QString text;
};

/// Classes of a layer, the same at all times.
struct LayerView {
    QString name;
    bool relative = false;  ///< values are parts of 100 of the mean of their time
    QVector<double> breaks; ///< one more than colours; of texts empty
    QStringList colors;
};

/// A dataset on the map. Rows are in the order of `steps`; a dataset that holds for good has one
/// row and no steps.
struct ReportLayer {
    QString name;
    QString type;
    bool isText = false;
    bool always = false;
    QVector<int> steps;            ///< positions among the geography's
    QVector<QVector<double>> rows; ///< by object; NaN is missing; of texts the number of the word
    QStringList words;
    QVector<LayerView> views;
    int view = 0; ///< which one is shown first
};

/// What an object is from a step on; -1: it does not exist.
struct ShapeChange {
    int step;
    int shape;
};

/// Shapes in page units: whole numbers from 0 to 10,000 along the longer side, y downwards.
struct ReportShapes {
    QSize size;
    QVector<QVector<int>> arcs;            ///< x, y, then the steps to the next vertices
    QVector<QVector<QVector<int>>> shapes; ///< rings or parts of arcs; ~n is arc n backwards
    QVector<QPoint> places;                ///< of points, in place of arcs and shapes
    QVector<QVector<ShapeChange>> objects;
    qint64 given = 0; ///< vertices of the project's shapes
    qint64 kept = 0;  ///< of the arcs
};

/// A weight set from a step on, as long as its lists stay the same.
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
    int step; ///< -1: for good
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
    int rows = 0;           ///< of a grid, as shown
    int columns = 0;
    int every = 1;        ///< each how manieth row and column is shown
    double cellRatio = 1; ///< width of a cell by its height
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
