// SPDX-License-Identifier: MIT
#include <algorithm>
#include <cmath>
#include "core/plot/plotValues.h"
#include "core/plot/plots.h"
#include "core/project/catalog.h"
#include "core/project/failure.h"
#include "core/project/text.h"
#include "core/render/classes.h"
#include "datainterface/DataAPI.h"

namespace meridor {

Plot scatter(ShownDataset xShown, ShownDataset yShown, qint64 time, ShownDataset label)
{
    const int xDataset = xShown.id;
    const int yDataset = yShown.id;
    requireNumbers(xDataset);
    requireNumbers(yDataset);
    if (VORN_GetGeographyId(xDataset) != VORN_GetGeographyId(yDataset))
        fail(QStringLiteral("%1 and %2 belong to different geographies")
                 .arg(datasetName(xDataset), datasetName(yDataset)));
    const ValuesAt x = existingValuesAt(xDataset, time, xShown.realization);
    const ValuesAt y = existingValuesAt(yDataset, time, yShown.realization);
    QVector<QPointF> points;
    QVector<int> objects;
    for (int i = 0; i < std::min(x.numbers.size(), y.numbers.size()); ++i) {
        if (x.missing.contains(i) || y.missing.contains(i) || !std::isfinite(x.numbers[i])
            || !std::isfinite(y.numbers[i]))
            continue;
        points.append({x.numbers[i], y.numbers[i]});
        objects.append(i);
    }
    if (points.isEmpty())
        fail(QStringLiteral("no object has a value of both %1 and %2")
                 .arg(datasetName(xDataset), datasetName(yDataset)));
    const Line line = fittedLine(points);
    Plot plot;
    plot.graph.x.title = datasetName(xDataset);
    plot.graph.y.title = datasetName(yDataset);
    plot.graph.series.append(
        {QString(), points, GraphSeries::Points, labelsOf(label, time, objects)});
    plot.summary = counted(points.size(), "point");
    if (std::isfinite(line.slope)) {
        const auto ends =
            std::minmax_element(points.begin(), points.end(),
                                [](const QPointF &a, const QPointF &b) { return a.x() < b.x(); });
        QVector<QPointF> drawn;
        for (const double at : {ends.first->x(), ends.second->x()})
            drawn.append({at, line.intercept + line.slope * at});
        const QString name = QStringLiteral("r = %1").arg(grouped(line.r, 3));
        plot.graph.series.append({name, drawn, GraphSeries::Line});
        plot.summary += QStringLiteral(", r = %1, slope %2, intercept %3")
                            .arg(shortNumber(line.r, 4), QString::number(line.slope, 'g', 6),
                                 QString::number(line.intercept, 'g', 6));
    }
    plot.graph.texts.footnote = plot.summary;
    plot.numbers = {{QStringLiteral("points"), points.size()},
                    {QStringLiteral("r"), jsonNumber(line.r)},
                    {QStringLiteral("slope"), jsonNumber(line.slope)},
                    {QStringLiteral("intercept"), jsonNumber(line.intercept)}};
    return plot;
}

} // namespace meridor
