// SPDX-License-Identifier: MIT
#include "core/analysis/zonal.h"
#include <QJsonArray>
#include <QJsonObject>
#include <memory>
#include "cli/commands/projectEdit.h"
#include "core/project/catalog.h"
#include "core/project/failure.h"
#include "datainterface/DataAPI.h"
#include "datainterface/MRasterDataset.h"

namespace meridor {

namespace {

struct Options {
    EditTarget target;
    QString dataset;
    QString polygons;
    QString at;
    QString into;
    int realization = 1;
    QString statistic = QStringLiteral("mean");
};

QJsonObject toJson(const QString &key, const ZoneStatistics &zone)
{
    QJsonObject object{{QStringLiteral("object"), key}, {QStringLiteral("cells"), zone.cells}};
    for (const ZoneStatistic &statistic : zoneStatistics())
        object.insert(QLatin1String(statistic.name), zone.cells > 0
                                                         ? jsonNumber(zone.*statistic.field)
                                                         : QJsonValue(QJsonValue::Null));
    return object;
}

QStringList toCells(const QString &time, const QString &key, const ZoneStatistics &zone)
{
    QStringList cells{time, key, QString::number(zone.cells)};
    for (const ZoneStatistic &statistic : zoneStatistics())
        cells.append(zone.cells > 0 ? shortNumber(zone.*statistic.field, 6) : QStringLiteral("-"));
    return cells;
}

void print(const QVector<ZonesAtTime> &times, int dataset, int polygons, const Console &console)
{
    const TimeAxis axis = axisOf(VORN_GetGeographyId(dataset));
    const bool always = rasterOf(dataset)->IsStatic();
    const QStringList keys = objectKeys(polygons);
    QJsonArray json;
    QVector<QPair<QString, TextTable::Align>> columns{{QStringLiteral("time"), TextTable::Left},
                                                      {QStringLiteral("object"), TextTable::Left},
                                                      {QStringLiteral("cells"), TextTable::Right}};
    for (const ZoneStatistic &statistic : zoneStatistics())
        columns.append({QLatin1String(statistic.name), TextTable::Right});
    TextTable table(columns);
    for (const ZonesAtTime &at : times) {
        const QString when = always ? QStringLiteral("always") : axis.show(at.when);
        QJsonArray zones;
        for (int i = 0; i < at.zones.size(); ++i) {
            if (console.json)
                zones.append(toJson(keys[i], at.zones[i]));
            else
                table.add(toCells(when, keys[i], at.zones[i]));
        }
        json.append(QJsonObject{{QStringLiteral("time"), when}, {QStringLiteral("zones"), zones}});
    }
    if (console.json)
        console.print(QJsonObject{{QStringLiteral("dataset"), datasetName(dataset)},
                                  {QStringLiteral("polygons"), geographyName(polygons)},
                                  {QStringLiteral("times"), json}});
    else
        table.print(console);
}

void run(const Options &options, const Context &context)
{
    editOrLook(!options.into.isEmpty(), "--into", options.target, context, [&]() -> Tell {
        const int dataset = findDataset(options.dataset);
        const int realization = realizationIndex(dataset, options.realization);
        const int polygons = findGeography(options.polygons);
        if (!options.into.isEmpty())
            requireNewDatasetName(polygons, options.into);
        QVector<ZonesAtTime> times;
        {
            const Progress progress("Zonal statistics", "Cutting cells...");
            times = zonalStatistics(
                dataset, polygons,
                dataTimesAt(dataset, options.at.isEmpty() ? QStringList() : QStringList{options.at},
                            realization),
                progress, realization);
        }
        if (!options.into.isEmpty())
            keepZonal(times, dataset, polygons, options.into, options.statistic);
        return [=, &context] { print(times, dataset, polygons, context.console); };
    });
}

} // namespace

void addZonal(const Command &app, Context &context)
{
    auto options = std::make_shared<Options>();
    const Command command =
        app.verb("zonal", "Statistics of a grid over polygons, cells weighted by shared area");
    projectArgument(command, options->target.project);
    command.text("DATASET", options->dataset, "The raster dataset").required();
    command.text("POLYGONS", options->polygons, "The geography of the polygons").required();
    command.text("--at", options->at, "One time (default: all)");
    command.text("--into", options->into,
                 "Store the statistic as a dataset of the polygons with this name");
    QStringList names;
    for (const ZoneStatistic &statistic : zoneStatistics())
        names.append(QLatin1String(statistic.name));
    command.text("--statistic", options->statistic, "The statistic to store")
        .shown("mean")
        .oneOf(names);
    realizationOption(command, options->realization);
    targetOptions(command, options->target, context);
    command.footer("Example:\n  meridor zonal rain.vorn pr_1999 counties --into \"mean rain\"");
    command.chosen(
        [options, &context] { context.run = [options](const Context &c) { run(*options, c); }; });
}

} // namespace meridor
