// SPDX-License-Identifier: MIT
#include "cli/commands/zonal.h"
#include <QJsonArray>
#include <QJsonObject>
#include <limits>
#include <memory>
#include "cli/commands/projectEdit.h"
#include "datainterface/DataAPI.h"
#include "datainterface/GeographyAPI.h"
#include "datainterface/MRasterDataset.h"
#include "datainterface/MVectorData.h"
#include "core/project/failure.h"
#include "core/project/projectHost.h"
#include "core/project/catalog.h"
#include "core/grids/gridValues.h"

namespace meridor {

QVector<ZonesAtTime> zonalStatistics(int dataset, int polygons, const QVector<Interval> &times,
                                     const Progress &progress)
{
    if (!rasterOf(dataset))
        fail(QStringLiteral("%1 is no grid").arg(datasetName(dataset)));
    const int columns = VORN_GetGeographyProperties(VORN_GetGeographyId(dataset)).columns;
    Zones zones(VORN_GetGeographyId(dataset), polygons);
    QVector<ZonesAtTime> result;
    for (const Interval &interval : times) {
        const qint64 time = instantOf(interval);
        const QVector<double> values = gridValues(dataset, time);
        ZonesAtTime at{interval, {}};
        for (const QVector<CellShare> &shares : zones.at(time, progress))
            at.zones.append(statisticsOf(shares, values, columns));
        result.append(at);
        progress.report(100 * result.size() / times.size(), "Summing up...");
    }
    return result;
}

namespace {

struct Statistic {
    const char *name;
    double ZoneStatistics::*field;
};
constexpr Statistic kStatistics[] = {
    {"mean", &ZoneStatistics::mean},   {"stddev", &ZoneStatistics::deviation},
    {"min", &ZoneStatistics::minimum}, {"max", &ZoneStatistics::maximum},
    {"sum", &ZoneStatistics::sum},     {"area", &ZoneStatistics::area}};

/// Times of one geography mean the same in the other when their formats agree; shapes that hold for
/// good take over the grid's.
void alignTimes(int dataset, int polygons)
{
    const TimeFormat format = axisOf(VORN_GetGeographyId(dataset)).format();
    const GeoProps zones = VORN_GetGeographyProperties(polygons);
    if (zones.timeFormat == format || rasterOf(dataset)->IsStatic())
        return;
    for (const int id : datasetIds(polygons))
        if (!zones.isStatic || !datasetOf(id)->IsStatic())
            fail(QStringLiteral("%1 tells its times as %2, %3 as %4")
                     .arg(datasetName(dataset), QLatin1String(timeFormatName(format)), zones.name,
                          QLatin1String(timeFormatName(zones.timeFormat))));
    if (zones.isStatic)
        geographyOf(polygons)->SetTimeFormat(format);
}

} // namespace

int keepZonal(const QVector<ZonesAtTime> &times, int dataset, int polygons, const QString &name,
              const QString &statistic)
{
    if (VORN_GetDatasetByName(polygons, name) >= 0)
        fail(QStringLiteral("%1 has a dataset %2 already").arg(geographyName(polygons), name));
    alignTimes(dataset, polygons);
    double ZoneStatistics::*field = &ZoneStatistics::mean;
    for (const Statistic &known : kStatistics)
        if (statistic == QLatin1String(known.name))
            field = known.field;
    const int id = VORN_NewVectorDataset(polygons, name, TimeSlice, DecimalType, 1, QString());
    for (const ZonesAtTime &at : times) {
        QVector<double> values;
        QSet<int> missing;
        for (int i = 0; i < at.zones.size(); ++i) {
            values.append(at.zones[i].*field);
            if (at.zones[i].cells == 0)
                missing.insert(i);
        }
        if (missing.size() < values.size()
            && !VORN_AddDataValues(id, 0, at.when, values, missing, true, false))
            fail(QStringLiteral("dataset %1 does not take its values").arg(name));
    }
    if (rasterOf(dataset)->IsStatic())
        datasetOf(id)->SetStatic(true);
    VORN_RecalculateDataFrequencies(id);
    VORN_NewDatasetCreated(id);
    return id;
}

namespace {

struct Options {
    EditTarget target;
    QString dataset;
    QString polygons;
    QString at;
    QString into;
    QString statistic = QStringLiteral("mean");
};

QVector<Interval> chosenTimes(int dataset, const QString &at)
{
    if (at.isEmpty())
        return dataTimes(dataset);
    const qint64 time = chooseTime(dataset, at);
    for (const Interval &interval : dataTimes(dataset))
        if (TimeStamp(interval).contains(time))
            return {interval};
    fail(QStringLiteral("%1 holds no grid at %2").arg(datasetName(dataset), at));
}

QJsonObject toJson(const QString &key, const ZoneStatistics &zone)
{
    QJsonObject object{{QStringLiteral("object"), key}, {QStringLiteral("cells"), zone.cells}};
    for (const Statistic &statistic : kStatistics)
        object.insert(QLatin1String(statistic.name), zone.cells > 0
                                                         ? jsonNumber(zone.*statistic.field)
                                                         : QJsonValue(QJsonValue::Null));
    return object;
}

QStringList toCells(const QString &time, const QString &key, const ZoneStatistics &zone)
{
    QStringList cells{time, key, QString::number(zone.cells)};
    for (const Statistic &statistic : kStatistics)
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
    for (const Statistic &statistic : kStatistics)
        columns.append({QLatin1String(statistic.name), TextTable::Right});
    TextTable table(columns);
    for (const ZonesAtTime &at : times) {
        const QString when = always ? QStringLiteral("always") : axis.show(at.when);
        QJsonArray zones;
        for (int i = 0; i < at.zones.size(); ++i) {
            zones.append(toJson(keys[i], at.zones[i]));
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
    if (options.into.isEmpty() && !options.target.output.isEmpty())
        failUsage(QStringLiteral("--output goes with --into"));
    const auto work = [&](Session &) {
        const int dataset = findDataset(options.dataset);
        const int polygons = findGeography(options.polygons);
        QVector<ZonesAtTime> times;
        {
            const Progress progress("Zonal statistics", "Cutting cells...");
            times = zonalStatistics(dataset, polygons, chosenTimes(dataset, options.at), progress);
        }
        if (!options.into.isEmpty())
            keepZonal(times, dataset, polygons, options.into, options.statistic);
        print(times, dataset, polygons, context.console);
    };
    if (!options.into.isEmpty()) {
        editProject(options.target, context, work);
        return;
    }
    Session session(context.session, context.console);
    session.load(options.target.project);
    work(session);
}

} // namespace

void addZonal(CLI::App &app, Context &context)
{
    auto options = std::make_shared<Options>();
    CLI::App &command = *app.add_subcommand(
        "zonal", "Statistics of a grid over polygons, each cell by the area it shares with them");
    projectArgument(command, options->target.project);
    textOption(command, "DATASET", options->dataset, "The raster dataset")->required();
    textOption(command, "POLYGONS", options->polygons, "The geography of the polygons")->required();
    textOption(command, "--at", options->at, "One time (default: all)");
    textOption(command, "--into", options->into,
               "Keep the statistic as a dataset of the polygons, of this name");
    std::vector<std::string> names;
    for (const Statistic &statistic : kStatistics)
        names.emplace_back(statistic.name);
    textOption(command, "--statistic", options->statistic, "What is kept")
        ->default_str("mean")
        ->check(CLI::IsMember(names));
    targetOptions(command, options->target, context);
    command.footer("Example:\n  meridor zonal rain.vorn pr_1999 counties --into \"mean rain\"");
    command.callback(
        [options, &context] { context.run = [options](const Context &c) { run(*options, c); }; });
}

} // namespace meridor
