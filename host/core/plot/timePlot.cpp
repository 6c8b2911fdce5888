// SPDX-License-Identifier: MIT
#include <QJsonArray>
#include <cmath>
#include <limits>
#include "core/plot/plotValues.h"
#include "core/plot/plots.h"
#include "core/project/cancel.h"
#include "core/project/catalog.h"
#include "core/project/failure.h"
#include "core/project/text.h"
#include "datainterface/DataAPI.h"
#include "datainterface/MDataset.h"

namespace meridor {
namespace {

double meanOf(const QVector<double> &values)
{
    double mean = 0;
    for (int i = 0; i < values.size(); ++i)
        mean += (values[i] - mean) / (i + 1);
    return values.isEmpty() ? std::numeric_limits<double>::quiet_NaN() : mean;
}

} // namespace

Plot timePlot(ShownDataset shown, const QVector<int> &objects)
{
    const int dataset = shown.id;
    requireNumbers(dataset);
    if (rasterOf(dataset))
        fail(QStringLiteral("%1 is a grid; this graph is of objects").arg(datasetName(dataset)));
    if (datasetOf(dataset)->IsStatic())
        fail(QStringLiteral("%1 does not change over time").arg(datasetName(dataset)));
    const int geography = VORN_GetGeographyId(dataset);
    const TimeScale scale(geography);
    const QStringList keys = objectKeys(geography);
    Plot plot;
    plot.graph.x = scale.axis();
    plot.graph.y.title = datasetName(dataset);
    QJsonArray series;
    for (const int object : objects) {
        QVector<Interval> intervals;
        QVector<datum> values;
        VORN_GetObjectDataValues(dataset, shown.realization, static_cast<unsigned>(object),
                                 intervals, values);
        History history(scale);
        for (int i = 0; i < values.size(); ++i)
            history.add(intervals[i], values[i].type == 1
                                          ? static_cast<double>(values[i].integerValue)
                                          : values[i].decimalValue);
        plot.graph.series.append({keys.value(object), history.points()});
        series.append(QJsonObject{{QStringLiteral("object"), keys.value(object)},
                                  {QStringLiteral("values"), values.size()}});
    }
    History mean(scale);
    for (const Interval &when : dataTimes(dataset, shown.realization)) {
        stopIfCancelled();
        mean.add(when, meanOf(presentValues(shown, instantOf(when))));
    }
    plot.graph.series.append({QStringLiteral("mean of all"),
                              mean.points(),
                              GraphSeries::Line,
                              {},
                              colors::softInk,
                              true});
    plot.numbers = {{QStringLiteral("series"), series}};
    plot.summary = counted(objects.size(), "object");
    return plot;
}

} // namespace meridor
