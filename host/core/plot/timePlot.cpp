// SPDX-License-Identifier: MIT
#include <QJsonArray>
#include <cmath>
#include <limits>
#include "core/grids/gridValues.h"
#include "core/plot/plotValues.h"
#include "core/plot/plots.h"
#include "core/project/cancel.h"
#include "core/project/catalog.h"
#include "core/project/failure.h"
#include "core/project/text.h"
#include "core/render/classes.h"
#include "datainterface/DataAPI.h"
#include "datainterface/GeographyAPI.h"
#include "datainterface/MDataset.h"

namespace meridor {
namespace {

constexpr double kNone = std::numeric_limits<double>::quiet_NaN();

/// The values of some objects or cells at one time, and the mean of all.
struct ValuesOf {
    QVector<double> ofObjects;
    double mean = kNone;
};

ValuesOf valuesOf(ShownDataset shown, qint64 time, const QVector<int> &objects)
{
    ValuesOf found;
    double average = 0; // of those so far, since a sum could be beyond the largest double
    qint64 present = 0;
    const auto count = [&](double value) {
        average += (value - average) / static_cast<double>(++present);
    };
    if (rasterOf(shown.id)) {
        visitCells(shown.id, time, shown.realization,
                   [&](int, int, double value) { count(value); });
        CellReader cells(shown.id, time, shown.realization);
        const unsigned columns = VORN_GetGeographyProperties(VORN_GetGeographyId(shown.id)).columns;
        for (const int object : objects)
            found.ofObjects.append(cells.at(static_cast<unsigned>(object) % columns,
                                            static_cast<unsigned>(object) / columns));
    } else {
        const ValuesAt values = existingValuesAt(shown.id, time, shown.realization);
        const auto valueAt = [&values](int object) {
            return values.missing.contains(object) ? kNone : values.numbers.value(object, kNone);
        };
        for (const int object : objects)
            found.ofObjects.append(valueAt(object));
        for (int object = 0; object < values.numbers.size(); ++object)
            if (const double value = valueAt(object); std::isfinite(value))
                count(value);
    }
    if (present > 0)
        found.mean = average;
    return found;
}

} // namespace

Plot timePlot(ShownDataset shown, const QVector<int> &objects)
{
    const int dataset = shown.id;
    requireNumbers(dataset);
    if (datasetOf(dataset)->IsStatic())
        fail(QStringLiteral("%1 does not change over time").arg(datasetName(dataset)));
    const int geography = VORN_GetGeographyId(dataset);
    const TimeScale scale(geography);
    Plot plot;
    plot.graph.x = scale.axis();
    plot.graph.y.title = datasetName(dataset);
    QVector<History> lines(objects.size(), History(scale));
    QVector<int> counts(objects.size());
    History mean(scale);
    for (const Interval &when : dataTimes(dataset, shown.realization)) {
        stopIfCancelled();
        const ValuesOf values = valuesOf(shown, instantOf(when), objects);
        for (int i = 0; i < objects.size(); ++i) {
            lines[i].add(when, values.ofObjects[i]);
            counts[i] += std::isfinite(values.ofObjects[i]);
        }
        mean.add(when, values.mean);
    }
    QJsonArray series;
    const QStringList keys = objectKeys(geography, objects);
    for (int i = 0; i < objects.size(); ++i) {
        plot.graph.series.append({keys[i], lines[i].points()});
        series.append(QJsonObject{{QStringLiteral("object"), keys[i]},
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
