// SPDX-License-Identifier: MIT
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonObject>
#include <memory>
#include "cli/commands/commands.h"
#include "core/analysis/tables.h"
#include "core/formats/cubeWriter.h"
#include "core/formats/rasterWriter.h"
#include "core/project/catalog.h"
#include "core/project/failure.h"
#include "core/project/safeFile.h"
#include "datainterface/DataAPI.h"
#include "datainterface/MDataset.h"

namespace meridor {
namespace {

struct Options {
    QString project;
    QString output;
    QString format;
    QString geography;
    QStringList datasets;
    QString from;
    QString to;
    QString at;
    QString missing;
    bool missingGiven = false;
};

QString suffixOf(const Options &options)
{
    return QFileInfo(options.output).suffix().toLower();
}

bool isGrid(const Options &options)
{
    const QString suffix = suffixOf(options);
    const QString name = options.format.isEmpty() ? suffix : options.format;
    return name == QLatin1String("geotiff") || name == QLatin1String("tif")
           || name == QLatin1String("tiff");
}

TableFormat formatOf(const Options &options)
{
    const QString suffix = suffixOf(options);
    const QString name = options.format.isEmpty() ? suffix : options.format;
    if (name == QLatin1String("csv"))
        return TableFormat::Csv;
    if (name == QLatin1String("dbf")) {
        if (suffix != QLatin1String("dbf"))
            failUsage(
                QStringLiteral("%1: the name of a DBF table ends in .dbf").arg(options.output));
        return TableFormat::Dbf;
    }
    if (name == QLatin1String("geoeas") || name == QLatin1String("dat")
        || name == QLatin1String("eas"))
        return TableFormat::GeoEas;
    failUsage(QStringLiteral("%1: --format csv, geoeas, dbf, geotiff, netcdf or zarr")
                  .arg(options.output));
}

QVector<int> chooseDatasets(const Options &options)
{
    QVector<int> ids;
    for (const QString &name : options.datasets)
        ids.append(options.geography.isEmpty()
                       ? findDataset(name)
                       : findDataset(findGeography(options.geography), name));
    if (ids.isEmpty())
        ids = datasetIds(findGeography(options.geography));
    if (ids.isEmpty())
        fail(QStringLiteral("no dataset to export"));
    for (const int id : ids)
        if (VORN_GetGeographyId(id) != VORN_GetGeographyId(ids.first()))
            fail(QStringLiteral("%1 and %2 are of different geographies")
                     .arg(datasetName(ids.first()), datasetName(id)));
    return ids;
}

void tell(const Options &options, const QStringList &names, const QString &times,
          const Console &console)
{
    if (console.json)
        console.print(QJsonObject{{QStringLiteral("file"), options.output},
                                  {QStringLiteral("bytes"), QFileInfo(options.output).size()},
                                  {QStringLiteral("datasets"), QJsonArray::fromStringList(names)}});
    else
        console.print(QStringLiteral("%1: %2, %3").arg(options.output, someOf(names), times));
}

void runGrid(const Options &options, const Context &context)
{
    requireWritable(options.output, context.overwrite);
    refuseInput(options.output, {options.project});
    Session session(context.session, context.user);
    session.loadPacked(options.project);
    const QVector<int> ids = chooseDatasets(options);
    if (ids.size() != 1)
        failUsage(QStringLiteral("a GeoTIFF holds one dataset; --datasets names it"));
    const qint64 time = chooseTime(ids.first(), options.at);
    exportGrid(options.output, ids.first(), time);
    const TimeAxis axis = axisOf(VORN_GetGeographyId(ids.first()));
    tell(options, {datasetName(ids.first())},
         datasetOf(ids.first())->IsStatic() ? QStringLiteral("always") : axis.show(time),
         context.console);
}

/// The datasets over all their times, or those within --from and --to or at --at.
void runCube(const Options &options, const Context &context)
{
    if (options.missingGiven)
        failUsage(QStringLiteral("--missing does not apply to a cube"));
    requireCubeWritable(options.output, options.format, context.overwrite);
    refuseInput(options.output, {options.project});
    Session session(context.session, context.user);
    session.load(options.project);
    const QVector<int> ids = chooseDatasets(options);
    const TimeAxis axis = axisOf(VORN_GetGeographyId(ids.first()));
    auto times = timesOf(ids);
    const QString from = options.at.isEmpty() ? options.from : options.at;
    const QString to = options.at.isEmpty() ? options.to : options.at;
    if (!from.isEmpty())
        times.first = requireSpan(axis, from).startTime;
    if (!to.isEmpty())
        times.second = lastInstantOf(requireSpan(axis, to));
    if (times.second < times.first)
        failUsage(QStringLiteral("the last time is before the first"), "to");
    exportCube(options.output, options.format, ids, times.first, times.second);
    QStringList names;
    for (const int id : ids)
        names.append(datasetName(id));
    tell(options, names,
         QStringLiteral("%1 to %2").arg(axis.show(times.first), axis.show(times.second)),
         context.console);
}

void run(const Options &options, const Context &context)
{
    if (isCube(options.output, options.format)) {
        runCube(options, context);
        return;
    }
    if (isGrid(options)) {
        runGrid(options, context);
        return;
    }
    const TableFormat format = formatOf(options);
    requireWritable(options.output, context.overwrite);
    refuseInput(options.output, {options.project});
    Session session(context.session, context.user);
    session.loadPacked(options.project);
    const QVector<int> ids = chooseDatasets(options);
    const TimeAxis axis = axisOf(VORN_GetGeographyId(ids.first()));
    auto times = timesOf(ids);
    if (!options.from.isEmpty())
        times.first = requireSpan(axis, options.from).startTime;
    if (!options.to.isEmpty())
        times.second = lastInstantOf(requireSpan(axis, options.to));
    if (times.second < times.first)
        failUsage(QStringLiteral("the last time is before the first"), "to");
    // GeoEAS readers split rows at blanks: an empty field would shift the rest of the row.
    const QString missing = options.missingGiven || format != TableFormat::GeoEas
                                ? options.missing
                                : QStringLiteral("-999");
    exportTable(options.output, format, ids, times.first, times.second, missing);
    QStringList names;
    for (const int id : ids)
        names.append(datasetName(id));
    tell(options, names,
         QStringLiteral("%1 to %2").arg(axis.show(times.first), axis.show(times.second)),
         context.console);
}

} // namespace

void addExport(const Command &app, Context &context)
{
    auto options = std::make_shared<Options>();
    const Command command = app.verb(
        "export", "Write datasets as a table (CSV, GeoEAS, DBF) or a cube (NetCDF, Zarr), or a "
                  "grid as GeoTIFF");
    projectArgument(command, options->project);
    command.text("TABLE", options->output, "The file to write; its suffix determines the format")
        .required();
    command.texts("--datasets", options->datasets, "Datasets, separated by commas (default: all)")
        .partedBy(',');
    command.text("--geography", options->geography, "The geography, if there are several");
    command.text("--format", options->format, "csv, geoeas, dbf, geotiff, netcdf or zarr")
        .oneOf({"csv", "geoeas", "dbf", "geotiff", "netcdf", "zarr"});
    command.text("--at", options->at, "The time of a grid (default: its last)");
    command.text("--from", options->from, "First time");
    command.text("--to", options->to, "Last time");
    const Setting missing = command.text(
        "--missing", options->missing, "Text of a missing value (default: empty, -999 in GeoEAS)");
    overwriteOption(command, context);
    command.footer("Example:\n  meridor export income.vorn income.csv --datasets income --from "
                   "2000 --to 2009");
    command.chosen([options, missing, &context] {
        options->missingGiven = missing.isGiven();
        context.run = [options](const Context &c) { run(*options, c); };
    });
}

} // namespace meridor
