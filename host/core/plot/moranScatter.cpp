// SPDX-License-Identifier: MIT
#include <algorithm>
#include <cmath>
#include "core/analysis/moranOverTime.h"
#include "core/analysis/weightSets.h"
#include "core/plot/plotValues.h"
#include "core/plot/plots.h"
#include "core/project/catalog.h"
#include "core/project/failure.h"
#include "core/project/text.h"
#include "datainterface/AdjacencySet.h"
#include "datainterface/DataAPI.h"

namespace meridor {

MoranPlaces moranPlaces(ShownDataset shown, int weightSet, const Interval &when,
                        const Progress &progress)
{
    const int dataset = shown.id;
    const int geography = VORN_GetGeographyId(dataset);
    if (weightSet >> 16 != geography)
        fail(QStringLiteral("the weight set is not one of %1").arg(geographyName(geography)));
    MoranPlan plan;
    plan.dataset = dataset;
    plan.realization = shown.realization;
    plan.weightSet = weightSet;
    plan.times = {when};
    plan.permutations = 0;
    plan.local = true;
    const QVector<MoranAt> results = moranOverTime(plan, progress);
    if (results.isEmpty() || !std::isfinite(results.first().whole.value))
        fail(QStringLiteral("%1 has no Moran's I at %2")
                 .arg(datasetName(dataset), axisOf(geography).show(when)));
    const MoranAt &found = results.first();
    const auto count = static_cast<size_t>(found.objects.size());
    double sum = 0;
    for (const double z : found.local.z)
        sum += z * z;
    const double deviation = std::sqrt(sum / static_cast<double>(count));
    MoranPlaces moran;
    moran.moran = found.whole.value;
    moran.objects = found.objects;
    for (size_t i = 0; i < count; ++i)
        moran.places.append({found.local.z[i] / deviation, found.local.lags[i] / deviation});
    moran.line = fittedLine(moran.places);
    return moran;
}

Plot moranScatter(ShownDataset shown, int weightSet, const Interval &when, ShownDataset label)
{
    const int dataset = shown.id;
    const Progress progress("Moran scatter", "Calculating...");
    const MoranPlaces moran = moranPlaces(shown, weightSet, when, progress);
    const QVector<QPointF> &all = moran.places;
    constexpr const char *kNames[] = {"high, high neighbours", "low, low neighbours",
                                      "high, low neighbours", "low, high neighbours"};
    QVector<QVector<QPointF>> points(4);
    QVector<QVector<int>> objects(4);
    for (int i = 0; i < all.size(); ++i) {
        const bool high = all[i].x() > 0;
        const int quarter = high == (all[i].y() > 0) ? (high ? 0 : 1) : (high ? 2 : 3);
        points[quarter].append(all[i]);
        objects[quarter].append(moran.objects[i]);
    }
    const auto ends = std::minmax_element(
        all.begin(), all.end(), [](const QPointF &a, const QPointF &b) { return a.x() < b.x(); });
    const auto heights = std::minmax_element(
        all.begin(), all.end(), [](const QPointF &a, const QPointF &b) { return a.y() < b.y(); });
    const double left = ends.first->x();
    const double right = ends.second->x();
    const Line &line = moran.line;

    Plot plot;
    plot.graph.x.title =
        QStringLiteral("%1, standard deviations from the mean").arg(datasetName(dataset));
    plot.graph.y.title = QStringLiteral("weighted sum of the neighbours");
    for (const auto &cross : {QVector<QPointF>{{left, 0}, {right, 0}},
                              QVector<QPointF>{{0, heights.first->y()}, {0, heights.second->y()}}})
        plot.graph.series.append({QString(), cross, GraphSeries::Line, {}, colors::outline, true});
    QJsonObject quarters;
    for (int i = 0; i < 4; ++i) {
        quarters.insert(QLatin1String(kNames[i]), points[i].size());
        plot.graph.series.append(
            {QStringLiteral("%1: %2").arg(QLatin1String(kNames[i])).arg(points[i].size()),
             points[i], GraphSeries::Points, labelsOf(label, instantOf(when), objects[i]),
             lineColor(QVector<int>{5, 0, 1, 2}[i])});
    }
    plot.graph.series.append(
        {QStringLiteral("slope %1").arg(grouped(line.slope, 3)),
         {{left, line.intercept + line.slope * left}, {right, line.intercept + line.slope * right}},
         GraphSeries::Line,
         {},
         colors::ink});
    plot.summary = QStringLiteral("Moran's I %1, slope %2, %3")
                       .arg(shortNumber(moran.moran, 6), shortNumber(line.slope, 6),
                            counted(moran.objects.size(), "object"));
    plot.graph.texts.footnote =
        plot.summary + QStringLiteral("; weight set ") + weightSetOf(weightSet).GetName();
    plot.numbers = {{QStringLiteral("moran"), moran.moran},
                    {QStringLiteral("slope"), line.slope},
                    {QStringLiteral("objects"), moran.objects.size()},
                    {QStringLiteral("quarters"), quarters}};
    return plot;
}

} // namespace meridor
