// SPDX-License-Identifier: MIT
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonObject>
#include <memory>
#include "cli/commands/commands.h"
#include "core/formats/cubeReader.h"
#include "core/formats/rasterReader.h"
#include "core/formats/sourceFile.h"
#include "core/import/cubeImporter.h"
#include "core/import/rasterImporter.h"
#include "core/project/catalog.h"
#include "core/project/failure.h"
#include "core/project/outputFile.h"
#include "core/project/safeFile.h"
#include "core/project/text.h"
#include "datainterface/DataAPI.h"
#include "datainterface/GeographyAPI.h"

namespace meridor {
namespace {

struct Options {
    ImportOptions import;
    QString project;
    bool append = false;
    bool raster = false; ///< read the file as bands even if it has layers or is a cube
};

QJsonObject toJson(const ImportReport &report)
{
    QJsonArray datasets;
    for (const int id : report.datasets) {
        const DatasetProps props = VORN_GetDatasetProperties(id);
        QJsonObject dataset{{QStringLiteral("name"), datasetName(id)},
                            {QStringLiteral("type"),
                             QLatin1String(typeName(static_cast<DataType>(props.dataType)))},
                            {QStringLiteral("static"), props.isStatic},
                            {QStringLiteral("times"), props.isStatic ? 0 : dataTimes(id).size()}};
        if (props.bitDepth > 0)
            dataset.insert(QStringLiteral("bits"), props.bitDepth);
        datasets.append(dataset);
    }
    QJsonArray unmatched;
    for (const Unmatched &keys : report.unmatched)
        unmatched.append(QJsonObject{
            {QStringLiteral("table"), keys.table},
            {QStringLiteral("tableKeys"), QJsonArray::fromStringList(keys.tableKeys)},
            {QStringLiteral("objectKeys"), QJsonArray::fromStringList(keys.objectKeys)}});
    const GeoProps props = VORN_GetGeographyProperties(report.geography);
    return {{QStringLiteral("geography"), geographyName(report.geography)},
            {QStringLiteral("shapes"), QLatin1String(shapeName(props.type))},
            {QStringLiteral("objects"), report.objects},
            {QStringLiteral("shapeCount"), report.shapes},
            {QStringLiteral("timeFormat"), QLatin1String(timeFormatName(props.timeFormat))},
            {QStringLiteral("static"), props.isStatic},
            {QStringLiteral("datasets"), datasets},
            {QStringLiteral("unmatched"), unmatched},
            {QStringLiteral("nearVertices"), report.nearVertices.count}};
}

void print(const ImportReport &report, const Console &console)
{
    const GeoProps props = VORN_GetGeographyProperties(report.geography);
    if (props.type == GeoProps::Raster)
        console.print(
            QStringLiteral("%1: %2").arg(geographyName(report.geography), gridText(props)));
    else
        console.print(QStringLiteral("%1: %2, %3")
                          .arg(geographyName(report.geography), counted(report.objects, "object"),
                               counted(report.shapes,
                                       QByteArray(shapeName(props.type)).chopped(1).constData())));
    TextTable table({{QStringLiteral("dataset"), TextTable::Left},
                     {QStringLiteral("type"), TextTable::Left},
                     {QStringLiteral("times"), TextTable::Right}});
    for (const int id : report.datasets) {
        const DatasetProps dataset = VORN_GetDatasetProperties(id);
        table.add(
            {datasetName(id), typeText(dataset),
             dataset.isStatic ? QStringLiteral("always") : QString::number(dataTimes(id).size())});
    }
    table.print(console);
}

/// Raises a Failure for options that do not apply to grids.
void refuseMapOptions(const ImportOptions &import, bool isCube)
{
    const QPair<const char *, bool> given[] = {
        {"--key", !import.key.isEmpty()},
        {"--layer", !import.layer.isEmpty()},
        {"--x", !import.xColumn.isEmpty()},
        {"--table", !import.tables.isEmpty()},
        {"--series", !import.series.isEmpty()},
        {"--observations", !import.observations.isEmpty()},
        {"--type", !import.types.isEmpty()},
        {"--missing", !import.missing.isEmpty()},
        {"--missing-also", !import.missingAlso.isEmpty()},
        {"--decimal", !import.decimal.isEmpty()},
        {"--encoding", !import.encoding.isEmpty()},
        {"--snap", import.snap > 0},
        {"--start", !import.start.isEmpty() && isCube},
        {"--start without --times", !import.start.isEmpty() && !import.bandsAreTimes},
        {"--end without \"next\"",
         isCube && !import.end.isEmpty() && import.end != QLatin1String("next")},
        {"--fields with --times", !import.fields.isEmpty() && import.bandsAreTimes && !isCube}};
    for (const auto &[option, isGiven] : given)
        if (isGiven)
            failUsage(QStringLiteral("%1 does not apply to a grid").arg(QLatin1String(option)));
}

void run(const Options &options, const Context &context)
{
    // A pipe is read once, as a map.
    const bool isPipe = isStream(options.import.map);
    const bool isCube = !options.raster && !isPipe && isCubeFile(options.import.map);
    const bool isRaster =
        !isCube && (options.raster || (!isPipe && isRasterFile(options.import.map)));
    if (isCube || isRaster)
        refuseMapOptions(options.import, isCube);
    if (!isCube && (options.import.packed || !options.import.realizations.isEmpty()))
        failUsage(QStringLiteral("--packed and --realizations apply to cubes, such as NetCDF"));
    const bool there = QFileInfo::exists(options.project);
    if (options.append && !there)
        fail(QStringLiteral("%1: no such file to append to").arg(options.project));
    refuseStandardOutput(options.project, "a project");
    requireWritable(options.project, context.overwrite || options.append);
    refuseInput(options.project, QStringList{options.import.map, options.import.observations}
                                     + options.import.tables);
    Session session(context.session, context.user);
    session.reserve(options.project);
    if (options.append)
        session.load(options.project);
    ImportReport report;
    {
        const Progress progress("Import", "Importing...");
        report = isCube     ? importCube(options.import, context.console, progress)
                 : isRaster ? importRaster(options.import, context.console, progress)
                            : importMap(options.import, context.console, progress);
    }
    session.save(options.project);
    if (context.console.json)
        context.console.print(toJson(report));
    else
        print(report, context.console);
}

void addInputs(const Command &command, Options &options)
{
    ImportOptions &import = options.import;
    command
        .text("MAP", import.map, "A vector file, a database, a table with --x and --y, or a raster")
        .required();
    command.text("PROJECT", options.project, "The project to write").required();
    command.flag("--append", options.append, "Add the geography to an existing project");
    command.text("--layer", import.layer, "Layer of the map, if it has several");
    command.text("--name", import.name, "Name of the geography (default: the layer's)");
    command.text("--key", import.key, "Field of the keys; rows with the same key are one object");
    command.text("--x", import.xColumn, "Field of the x coordinate of a table of points");
    command.text("--y", import.yColumn, "Field of the y coordinate");
    command.text("--crs", import.projection,
                 "Coordinate system, such as EPSG:4326, in place of the file's");
    command
        .number("--snap", import.snap,
                "Vertices within this distance, in map units, coincide for common borders")
        .notNegative();
}

Setting addTimes(const Command &command, ImportOptions &import)
{
    command.text("--start", import.start,
                 "Field with the start of a row's existence; item of a raster's bands");
    command.text("--end", import.end,
                 "Field with its end, or \"next\": up to the object's next row or the next band");
    Setting times = command
                        .text("--times", import.times,
                              "Format of times; a raster's bands are then times of one dataset")
                        .shown("auto")
                        .oneOf({"auto", "number", "date", "date-time", "time"});
    command.text("--time-format", import.timePattern,
                 "Pattern of times in files, such as d.M.yyyy or yyyyMMdd HH:mm");
    return times;
}

void addValues(const Command &command, ImportOptions &import)
{
    command.list("--fields", import.fields, "Fields that become datasets (default: all others)");
    command.flag("!--no-fields", import.attributes, "Import no other fields as datasets");
    command.texts("--table", import.tables, "A table whose fields are joined by key; repeatable");
    command.texts("--series", import.series,
                  "A dataset over time: NAME=FIRST..LAST, NAME=PREFIX* or "
                  "NAME=FIELD@TIME,FIELD@START/END,...; repeatable");
    command.text("--observations", import.observations,
                 "A table with one row for each key and time");
    command.texts("--observe", import.observed,
                  "A dataset of that table: NAME=VALUE@START, NAME=VALUE@START/END or "
                  "NAME=VALUE@START/next, all fields");
    command.texts("--type", import.types,
                  "NAME=decimal, integer or text, instead of the recognised type");
    command.texts("--missing", import.missing,
                  "Text of a missing value, in place of n/a, NA, N/A, NaN, null and -; repeatable");
    command.texts("--missing-also", import.missingAlso, "A further text; repeatable");
    command.text("--decimal", import.decimal, "Decimal separator of texts, a point or a comma")
        .oneOf({".", ","});
    command.text("--encoding", import.encoding,
                 "Encoding of texts, such as Windows-1252 (default: UTF-8 if they are)");
    command.flag("--strict", import.strict, "Fail if keys of a table and of the map do not match");
}

void addRasters(const Command &command, Options &options)
{
    command.text("--dataset", options.import.dataset,
                 "Name of a raster's dataset (default: the file's)");
    command.text("--no-data", options.import.noData,
                 "The cell of a raster that means no data, or \"none\", in place of the file's");
    command.flag("--raster", options.raster,
                 "Read a file that holds a map and a raster, or a cube, as bands of a raster");
    command.text("--realizations", options.import.realizations,
                 "The dimension of a cube whose places are realizations of a dataset");
    command.flag("--packed", options.import.packed,
                 "Keep the cells of a cube as they are stored, without scale and offset");
}

} // namespace

void addImport(const Command &app, Context &context)
{
    auto options = std::make_shared<Options>();
    options->import.times = QStringLiteral("auto");
    const Command command = app.verb("import", "Make a project from a map and its values");
    addInputs(command, *options);
    const Setting times = addTimes(command, options->import);
    addValues(command, options->import);
    addRasters(command, *options);
    overwriteOption(command, context);
    command.footer("Example:\n  meridor import states48.geojson income.vorn --key fips \\\n"
                   "      --table income_1929_2009.csv --series income=1929..2009\n"
                   "  meridor import pr_1999.tif rain.vorn --times date");
    command.chosen([options, times, &context] {
        options->import.bandsAreTimes = times.isGiven();
        context.run = [options](const Context &c) { run(*options, c); };
    });
}

} // namespace meridor
