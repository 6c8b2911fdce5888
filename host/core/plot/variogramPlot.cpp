// SPDX-License-Identifier: MIT
#include "core/geostatistics/covariance.h"
#include "core/plot/plots.h"
#include "core/project/text.h"

namespace meridor {
namespace {

constexpr int kSteps = 200; // of the line of a model
constexpr double kDegree = 3.14159265358979323846 / 180;

/// The classes of a direction, each with its number of pairs.
GraphSeries classesOf(const VariogramAt &at, double direction)
{
    GraphSeries points;
    points.look = GraphSeries::Points;
    for (const LagBin &bin : at.bins) {
        if (bin.direction != direction)
            continue;
        points.points.append({bin.lag, bin.value});
        points.labels.append(QString::number(bin.pairs));
    }
    return points;
}

GraphSeries modelIn(const VariogramAt &at, double direction)
{
    GraphSeries line;
    for (int i = 1; i <= kSteps; ++i) {
        const double h = at.lags.cutoff * i / kSteps;
        line.points.append({h, at.fitted->model.GetModelValue(h, direction)});
    }
    return line;
}

/// "nugget 0.746; exponential 8.2689, range 2743.3", and what is doubtful about a fit
QString legible(const FittedModel &fitted)
{
    const auto rounded = [](double value) { return QString::number(value, 'g', 5); };
    QStringList parts;
    for (const VariogramBasicModel &structure : fitted.model.structures) {
        QString part = QLatin1String(structureName(structure.type)) + QLatin1Char(' ')
                       + rounded(structure.sill);
        if (structure.type == VariogramBasicModel::Power)
            part += QStringLiteral(", exponent ") + rounded(structure.minorRange);
        else if (structure.type != VariogramBasicModel::Nugget)
            part += QStringLiteral(", range ") + rounded(structure.minorRange);
        if (structure.majorRange != structure.minorRange)
            part += QStringLiteral(" along %1 degrees, %2 across")
                        .arg(rounded(structure.angle / kDegree), rounded(structure.majorRange));
        parts.append(part);
    }
    if (!fitted.remark.isEmpty())
        parts.append(fitted.remark);
    return parts.join(QStringLiteral("; "));
}

} // namespace

Graph variogramGraph(const VariogramAt &at, const QString &dataset, const QString &when)
{
    Graph graph;
    graph.texts = {QStringLiteral("Variogram of ") + dataset, when,
                   at.fitted ? legible(*at.fitted) : QString()};
    graph.x = {QStringLiteral("separation"), 0};
    graph.y = {QStringLiteral("semivariance"), 0};
    for (const LagBin &bin : at.bins)
        if (bin.value < 0)
            graph.y.low = GraphAxis::kOfData; // a cross variogram
    const bool all = at.lags.directions.empty();
    for (const double direction : all ? std::vector<double>{0} : at.lags.directions) {
        GraphSeries points = classesOf(at, direction);
        points.name = all ? QStringLiteral("pairs")
                          : shortNumber(direction / kDegree) + QStringLiteral(" degrees");
        points.color = lineColor(graph.series.size());
        graph.series.append(points);
        if (!at.fitted)
            continue;
        GraphSeries line = modelIn(at, direction);
        if (all)
            line.name = QStringLiteral("model");
        line.color = all ? lineColor(1) : points.color;
        graph.series.append(line);
    }
    return graph;
}

} // namespace meridor
