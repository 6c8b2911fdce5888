// SPDX-License-Identifier: MIT
/// Statistical graphs of datasets. Each function returns the graph and the numbers that it shows,
/// as JSON, and raises a Failure if the data do not allow it.
#pragma once
#include <QJsonObject>
#include <QString>
#include <QVector>
#include "core/export.h"
#include "core/geostatistics/variogramModels.h"
#include "core/render/classification.h"
#include "core/render/graph.h"
#include "datainterface/TimeStamp.h"

namespace meridor {

struct Plot {
    Graph graph;
    QJsonObject numbers;
    QString summary; ///< one line
};

/// A dataset, and the realization of it that is shown.
struct ShownDataset {
    ShownDataset(int dataset, int index = 0) : id(dataset), realization(index) {}
    int id; ///< -1: none
    int realization;
};

/// Values of the objects that exist at a time, in bars of equal width, coloured by class, with the
/// limits of the classes.
MERIDOR_EXPORT Plot histogram(ShownDataset dataset, qint64 time, const ClassRule &rule);
/// A box for each time: quartiles, and whiskers to the farthest values within one and a half
/// interquartile ranges of them (J. W. Tukey 1977). Values beyond are points.
MERIDOR_EXPORT Plot boxesOverTime(ShownDataset dataset, const QVector<Interval> &times);
/// Two datasets of one geography at a time, with the least-squares line and the correlation r.
/// @param label  a dataset whose values are written beside the points.
MERIDOR_EXPORT Plot scatter(ShownDataset x, ShownDataset y, qint64 time, ShownDataset label);
/// The values of objects over time, beside the mean of all objects.
MERIDOR_EXPORT Plot timePlot(ShownDataset dataset, const QVector<int> &objects);
/// Values and weighted sums of the neighbours' values, both as deviations from the mean in standard
/// deviations (L. Anselin 1996, in Spatial analytical perspectives on GIS).
MERIDOR_EXPORT Plot moranScatter(ShownDataset dataset, int weightSet, const Interval &when,
                                 ShownDataset label);
/// The classes of a variogram with their numbers of pairs, and the model as a line, by direction.
/// @param when  the time as a text; empty: always.
MERIDOR_EXPORT Graph variogramGraph(const VariogramAt &at, const QString &dataset,
                                    const QString &when);

} // namespace meridor
