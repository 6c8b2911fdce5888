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
#include "core/render/classes.h"
#include "datainterface/DataAPI.h"
#include "datainterface/MDataset.h"

namespace meridor {
namespace {

constexpr double kNone = std::numeric_limits<double>::quiet_NaN();

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
    QVector<History> lines(objects.size(), History(scale));
    QVector<int> counts(objects.size());
    History mean(scale);
    for (const Interval &when : dataTimes(dataset, shown.realization)) {
        stopIfCancelled();
        const ValuesAt values = existingValuesAt(dataset, instantOf(when), shown.realization);
        const auto valueAt = [&values](int object) {
            return values.missing.contains(object) ? kNone : values.numbers.value(object, kNone);
        };
        for (int i = 0; i < objects.size(); ++i) {
            const double value = valueAt(objects[i]);
            lines[i].add(when, value);
            counts[i] += std::isfinite(value);
        }
        double average = 0; // of those so far, since a sum could be beyond the largest double
        int present = 0;
        for (int object = 0; object < values.numbers.size(); ++object)
            if (const double value = valueAt(object); std::isfinite(value))
                average += (value - average) / ++present;
        mean.add(when, present > 0 ? average : kNone);
    }
    QJsonArray series;
    for (int i = 0; i < objects.size(); ++i) {
        plot.graph.series.append({keys.value(objects[i]), lines[i].points()});
        series.append(QJsonObject{{QStringLiteral("object"), keys.value(objects[i])},
                                  {QStringLiteral("values"), counts[i]}});
    }
    GraphSeries all{QStringLiteral("mean of all"), mean.points()};
    all.color = colors::softInk;
    all.dashed = true;
    all.isBehind = true;
    plot.graph.series.append(all);
    plot.numbers = {{QStringLiteral("series"), series}};
    plot.summary = counted(objects.size(), "object");
    return plot;
}

} // namespace meridor
