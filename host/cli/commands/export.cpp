// SPDX-License-Identifier: MIT
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonObject>
#include <memory>
#include "cli/commands/commands.h"
#include "core/analysis/tables.h"
#include "core/formats/cubeWriter.h"
#include "core/formats/rasterWriter.h"
#include "core/formats/sourceFile.h"
#include "core/project/catalog.h"
#include "core/project/failure.h"
#include "core/project/outputFile.h"
#include "core/project/safeFile.h"
#include "core/project/text.h"
#include "datainterface/DataAPI.h"
#include "datainterface/MDataset.h"

namespace meridor {
namespace {

struct Options {
    QString project;
    QString output;
    QString format;
    QString layer;
    QString geography;
    QStringList datasets;
    QStringList columns;
    QString layout;
    QString from;
    QString to;
    QString at;
    QString missing;
    int realization = 0; ///< from 1, if given; else all, or the first where there can be only one
    bool realizationGiven = false;
    bool missingGiven = false;
};

enum class Kind { Grid, Table, Shapes };

struct Format {
    const char *name;
    QStringList suffixes;
    Kind kind;
    TableFormat table;
    FeatureFormat shapes;
};

const QVector<Format> &formats()
{
    using T = TableFormat;
    using F = FeatureFormat;
    static const QVector<Format> all{
        {"csv", {"csv"}, Kind::Table, T::Csv, F::Dbf},
        {"geoeas", {"dat", "eas"}, Kind::Table, T::GeoEas, F::Dbf},
        {"dbf", {"dbf"}, Kind::Table, T::Dbf, F::Dbf},
        {"gpkg", {"gpkg"}, Kind::Shapes, T::Csv, F::GeoPackage},
        {"geojson", {"geojson", "json"}, Kind::Shapes, T::Csv, F::GeoJson},
        {"fgb", {"fgb"}, Kind::Shapes, T::Csv, F::FlatGeobuf},
        {"shapefile", {"shp"}, Kind::Shapes, T::Csv, F::Shapefile},
        {"database", {}, Kind::Shapes, T::Csv, F::Database},
        {"geotiff", {"tif", "tiff"}, Kind::Grid, T::Csv, F::Dbf},
    };
    return all;
}

/// The names of all formats, with those of the cubes, which have no row in the table above.
QStringList formatNames()
{
    QStringList names;
    for (const Format &format : formats())
        names.append(QLatin1String(format.name));
    return names + QStringList{QStringLiteral("netcdf"), QStringLiteral("zarr")};
}

const Format &formatOf(const Options &options)
{
    const QString suffix = QFileInfo(options.output).suffix().toLower();
    const bool isServer = isDatabase(options.output);
    for (const Format &format : formats()) {
        const bool bySuffix = format.suffixes.contains(suffix);
        const bool database = format.shapes == FeatureFormat::Database;
        if (!options.format.isEmpty() ? options.format != QLatin1String(format.name)
            : isServer                ? !database
                                      : !bySuffix)
            continue;
        const bool named = format.shapes == FeatureFormat::Shapefile
                           || (format.kind == Kind::Table && format.table == TableFormat::Dbf);
        if (isServer != database || (named && !bySuffix))
            failUsage(QStringLiteral("%1: %2").arg(
                options.output,
                database   ? QStringLiteral("a database is named by a connection text, "
                                              "such as PG:dbname=survey")
                : isServer ? QStringLiteral("a database has no other format")
                           : QStringLiteral("the name ends in .%1").arg(format.suffixes.first())));
        return format;
    }
    if (options.format.isEmpty() && isStream(options.output))
        return formats().first();
    failUsage(QStringLiteral("%1: the format is one of %2")
                  .arg(options.output, formatNames().join(QStringLiteral(", "))),
              "format");
}

QVector<int> chosenDatasets(const Options &options)
{
    QVector<int> ids;
    for (const QString &name : options.datasets)
        ids.append(options.geography.isEmpty()
                       ? findDataset(name)
                       : findDataset(findGeography(options.geography), name));
    for (const int id : ids)
        if (VORN_GetGeographyId(id) != VORN_GetGeographyId(ids.first()))
            fail(QStringLiteral("%1 and %2 are of different geographies")
                     .arg(datasetName(ids.first()), datasetName(id)));
    return ids;
}

/// The index of the realization that is written. Datasets of a single one are written as they are
/// beside one that has several.
std::optional<int> realizationOf(const Options &options, const QVector<int> &datasets)
{
    if (!options.realizationGiven || datasets.isEmpty())
        return std::nullopt;
    int index = 0;
    for (const int id : datasets)
        index = std::max(index, realizationIndex(id, options.realization, datasets));
    return index;
}

/// The summary goes to standard error if the table itself goes to standard output.
void tell(const Options &options, const QVector<int> &datasets, const QString &what, qint64 rows,
          const Console &console)
{
    QStringList names;
    for (const int id : datasets)
        names.append(datasetName(id));
    const QString target = withoutPassword(options.output);
    QString text = QStringLiteral("%1: %2").arg(target, what);
    if (!names.isEmpty())
        text += QStringLiteral(" of ") + someOf(names);
    if (isStream(options.output)) {
        console.note(text);
        return;
    }
    if (!console.json) {
        console.print(text);
        return;
    }
    QJsonObject object{{QStringLiteral("file"), target},
                       {QStringLiteral("bytes"), QFileInfo(options.output).size()},
                       {QStringLiteral("datasets"), QJsonArray::fromStringList(names)}};
    if (rows >= 0)
        object.insert(QStringLiteral("rows"), static_cast<double>(rows));
    console.print(object);
}

void runGrid(const Options &options, const Context &context)
{
    QVector<int> ids = chosenDatasets(options);
    if (ids.isEmpty())
        ids = datasetIds(findGeography(options.geography));
    if (ids.size() != 1)
        failUsage(QStringLiteral("a GeoTIFF holds one dataset"), "datasets");
    const int realization = realizationOf(options, ids).value_or(0);
    const qint64 time = chooseTime(ids.first(), options.at, realization);
    exportGrid(options.output, ids.first(), time, realization);
    const TimeAxis axis = axisOf(VORN_GetGeographyId(ids.first()));
    tell(options, ids,
         datasetOf(ids.first())->IsStatic() ? QStringLiteral("the grid")
                                            : QStringLiteral("the grid at ") + axis.show(time),
         -1, context.console);
}

/// The datasets over all their times, or those within --from and --to or at --at.
void runCube(const Options &options, const Context &context)
{
    if (options.missingGiven)
        failUsage(QStringLiteral("--missing does not apply to a cube"));
    requireCubeWritable(options.output, options.format, context.overwrite);
    refuseInput(options.output, {options.project});
    Session session(context.session, context.user);
    session.loadPacked(options.project);
    QVector<int> ids = chosenDatasets(options);
    if (ids.isEmpty())
        ids = datasetIds(findGeography(options.geography));
    if (ids.isEmpty())
        fail(QStringLiteral("the geography has no datasets"));
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
    exportCube(options.output, options.format, ids, times.first, times.second,
               realizationOf(options, ids));
    bool isStatic = true;
    for (const int id : ids)
        isStatic = isStatic && datasetOf(id)->IsStatic();
    tell(options, ids,
         isStatic ? QStringLiteral("always")
                  : QStringLiteral("%1 to %2").arg(axis.show(times.first), axis.show(times.second)),
         -1, context.console);
}

/// Options that would have no effect are wrong usage.
void refuseUnused(const Options &options, const Format &format)
{
    const bool rows = format.kind != Kind::Grid;
    const bool text = format.kind == Kind::Table && format.table != TableFormat::Dbf;
    const bool layer = format.kind == Kind::Shapes && format.shapes != FeatureFormat::Shapefile;
    const QVector<QPair<const char *, bool>> unused{
        {"from", !rows && !options.from.isEmpty()},
        {"to", !rows && !options.to.isEmpty()},
        {"columns", !rows && !options.columns.isEmpty()},
        {"layout", !rows && options.layout == QLatin1String("wide")},
        {"missing", !text && options.missingGiven},
        {"layer", !layer && !options.layer.isEmpty()}};
    for (const auto &option : unused)
        if (option.second)
            failUsage(QStringLiteral("--%1 does not apply to %2")
                          .arg(QLatin1String(option.first), QLatin1String(format.name)));
}

RowPlan planOf(const Options &options)
{
    RowPlan plan;
    plan.datasets = chosenDatasets(options);
    plan.geography = plan.datasets.isEmpty() ? findGeography(options.geography)
                                             : VORN_GetGeographyId(plan.datasets.first());
    plan.realization = realizationOf(options, plan.datasets.isEmpty() ? datasetIds(plan.geography)
                                                                      : plan.datasets);
    plan.parts = options.columns;
    plan.wide = options.layout == QLatin1String("wide");
    const TimeAxis axis = axisOf(plan.geography);
    if (!options.from.isEmpty() || !options.to.isEmpty()) {
        constexpr qint64 kFar = std::numeric_limits<qint64>::max();
        plan.within =
            qMakePair(options.from.isEmpty() ? -kFar : requireSpan(axis, options.from).startTime,
                      options.to.isEmpty() ? kFar : lastInstantOf(requireSpan(axis, options.to)));
        if (plan.within->second < plan.within->first)
            failUsage(QStringLiteral("the last time is before the first"), "to");
    }
    if (!options.at.isEmpty())
        plan.at = requireSpan(axis, options.at).startTime;
    return plan;
}

void run(Options options, const Context &context)
{
    options.output = outputName(options.output);
    if (isCube(options.output, options.format)) {
        runCube(options, context);
        return;
    }
    const Format &format = formatOf(options);
    refuseUnused(options, format);
    FeatureTarget target;
    target.path = options.output;
    target.format = format.shapes;
    target.layer = options.layer;
    target.overwrite = context.overwrite;
    const QStringList files =
        format.kind == Kind::Grid ? QStringList{options.output} : filesOf(target);
    for (const QString &file : files) {
        requireWritable(file, context.overwrite);
        refuseInput(file, {options.project});
    }
    Session session(context.session, context.user);
    session.loadPacked(options.project);
    if (format.kind == Kind::Grid) {
        runGrid(options, context);
        return;
    }
    const RowPlan plan = planOf(options);
    // GeoEAS readers split rows at blanks: an empty field would shift the rest of the row.
    const QString missing = options.missingGiven || format.table != TableFormat::GeoEas
                                ? options.missing
                                : QStringLiteral("-999");
    const auto note = [&context](const QString &text) { context.console.note(text); };
    const WrittenTable written =
        format.kind == Kind::Table ? exportTable(options.output, format.table, plan, missing, note)
                                   : exportShapes(target, plan, note);
    const char *const noun = format.kind == Kind::Table ? "row" : "feature";
    tell(options, written.datasets, counted(written.rows, noun), written.rows, context.console);
}

} // namespace

void addExport(const Command &app, Context &context)
{
    auto options = std::make_shared<Options>();
    options->layout = QStringLiteral("long");
    const Command command =
        app.verb("export",
                 "Write datasets as a table, shapes with their values, a cube (NetCDF, Zarr), or a "
                 "grid as GeoTIFF");
    projectArgument(command, options->project);
    command
        .text("OUTPUT", options->output,
              "The file, whose suffix determines the format; - for standard output; or the "
              "connection text of a database, such as PG:dbname=survey")
        .required();
    command.list("--datasets", options->datasets, "Datasets, separated by commas (default: all)");
    command
        .texts("--columns", options->columns,
               "Of key, name, start, end, realization, datasets (default: those with content)")
        .partedBy(',')
        .oneOf(rowParts());
    command.text("--layout", options->layout, "long: a row a time; wide: a column a time")
        .shown("long")
        .oneOf({"long", "wide"});
    command.text("--geography", options->geography, "The geography, if there are several");
    command
        .text(
            "--format", options->format,
            "csv, geoeas or dbf; with shapes gpkg, geojson, fgb, shapefile or database; netcdf or "
            "zarr; geotiff")
        .oneOf(formatNames());
    command.text("--layer", options->layer,
                 "The layer, or the table of a database (default: the geography's name)");
    command.text("--at", options->at, "One row an object, at this time; the time of a grid");
    command.text("--from", options->from, "First time");
    command.text("--to", options->to, "Last time");
    const Setting realization =
        command.number("--realization", options->realization,
                       "Only this realization, from 1 (default: all; of a GeoTIFF the first)");
    const Setting missing = command.text(
        "--missing", options->missing, "Text of a missing value (default: empty, -999 in GeoEAS)");
    overwriteOption(command, context);
    command.footer("Example:\n  meridor export income.vorn income.csv --datasets income --from "
                   "2000 --to 2009\n  meridor export income.vorn income.gpkg --at 2009");
    command.chosen([options, missing, realization, &context] {
        options->missingGiven = missing.isGiven();
        options->realizationGiven = realization.isGiven();
        context.run = [options](const Context &c) { run(*options, c); };
    });
}

} // namespace meridor
