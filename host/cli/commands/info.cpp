// SPDX-License-Identifier: MIT
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonObject>
#include <algorithm>
#include <memory>
#include "cli/commands/commands.h"
#include "datainterface/DataAPI.h"
#include "datainterface/GeographyAPI.h"
#include "datainterface/MGeoData.h"
#include "datainterface/MRasterDataset.h"
#include "core/project/catalog.h"
#include "cli/terminalProgress.h"

namespace meridor {
namespace {

struct Options {
    QString project;
    QString at;
};

QJsonObject span(const TimeAxis &axis, const TimeStamp &bounds)
{
    if (bounds.endTime < bounds.startTime)
        return {};
    return {{QStringLiteral("start"), axis.show(bounds.startTime)},
            {QStringLiteral("end"), axis.show(bounds.endTime)}};
}

/// Coordinates that are angles come with the unit's EPSG code in place of its name.
QString unitName(const QVariant &unit)
{
    switch (unit.type() == QVariant::Int ? unit.toInt() : 0) {
    case 9101:
        return QStringLiteral("radian");
    case 9102:
        return QStringLiteral("degree");
    case 9105:
        return QStringLiteral("grad");
    default:
        return unit.toString();
    }
}

/// A grid's table of values holds none of its missing cells: they are counted.
bool hasMissing(int id)
{
    if (!rasterOf(id))
        return datasetOf(id)->HasMissing(0);
    const int cells = VORN_GetGeographyProperties(VORN_GetGeographyId(id)).objectCount;
    const QVector<Interval> times = dataTimes(id);
    return std::any_of(times.begin(), times.end(), [&](const Interval &when) {
        return static_cast<int>(VORN_GetDataCount(id, instantOf(when))) < cells;
    });
}

QJsonObject describeDataset(int id, const TimeAxis &axis)
{
    const DatasetProps props = VORN_GetDatasetProperties(id);
    bool complete = true;
    QJsonObject object{
        {QStringLiteral("name"), datasetName(id)},
        {QStringLiteral("type"), QLatin1String(typeName(static_cast<DataType>(props.dataType)))},
        {QStringLiteral("storage"),
         props.bitDepth > 0 ? QStringLiteral("grids")
                            : QString(QLatin1String(storageName(
                                static_cast<MVectorDataset::StorageType>(props.storageType))))},
        {QStringLiteral("static"), props.isStatic},
        {QStringLiteral("realizations"), props.realizationCount},
        {QStringLiteral("times"), props.isStatic ? 0 : dataTimes(id).size()},
        {QStringLiteral("missing"), hasMissing(id)},
        {QStringLiteral("uniqueValues"), VORN_GetUniqueDataCount(id, complete)},
        {QStringLiteral("key"), keyDataset(VORN_GetGeographyId(id)) == id}};
    if (props.bitDepth > 0)
        object.insert(QStringLiteral("bits"), props.bitDepth);
    if (!props.isStatic)
        object.insert(QStringLiteral("time"), span(axis, props.timeBounds));
    return object;
}

QJsonObject describeGeography(int id, const QString &at)
{
    const GeoProps props = VORN_GetGeographyProperties(id);
    const TimeAxis axis(props.timeFormat);
    QJsonArray datasets;
    for (const int dataset : datasetIds(id))
        datasets.append(describeDataset(dataset, axis));
    QJsonObject object{
        {QStringLiteral("name"), geographyName(id)},
        {QStringLiteral("shapes"), QLatin1String(shapeName(props.type))},
        {QStringLiteral("objects"), props.objectCount},
        {QStringLiteral("projection"),
         props.metaData.value(QStringLiteral("Projection")).toString()},
        {QStringLiteral("distanceUnit"),
         unitName(props.metaData.value(QStringLiteral("Distance unit")))},
        {QStringLiteral("history"), props.metaData.value(QStringLiteral("History")).toString()},
        {QStringLiteral("bounds"), QJsonArray{props.bounds.left(), props.bounds.top(),
                                              props.bounds.left() + props.bounds.width(),
                                              props.bounds.top() + props.bounds.height()}},
        {QStringLiteral("static"), props.isStatic},
        {QStringLiteral("timeFormat"), QLatin1String(timeFormatName(props.timeFormat))},
        {QStringLiteral("datasets"), datasets}};
    if (!props.isStatic)
        object.insert(QStringLiteral("time"), span(axis, props.timeBounds));
    if (const int parent = geographyOf(id)->GetParentId(); geographyOf(parent))
        object.insert(QStringLiteral("parent"), geographyName(parent));
    if (props.type == GeoProps::Raster) {
        object.insert(QStringLiteral("rows"), props.rows);
        object.insert(QStringLiteral("columns"), props.columns);
        object.insert(QStringLiteral("cellSize"), QJsonArray{props.pixelWidth, props.pixelHeight});
    }
    const QStringList sets = geographyOf(id)->GetSpatialWeightsNames();
    if (!sets.isEmpty())
        object.insert(QStringLiteral("weightSets"), QJsonArray::fromStringList(sets));
    if (!at.isEmpty()) {
        QStringList keys;
        const QStringList all = objectKeys(id);
        if (const auto when = axis.span(at))
            for (const int index : objectsAt(id, when->startTime))
                keys.append(all[index]);
        object.insert(QStringLiteral("existing"), QJsonArray::fromStringList(keys));
    }
    return object;
}

/// The name at the head of a WKT text; other texts as they are.
QString projectionName(const QString &text)
{
    const int open = text.indexOf(QLatin1String("[\""));
    return open > 0 && !text.left(open).contains(QLatin1Char(' '))
               ? text.section(QLatin1Char('"'), 1, 1)
               : text;
}

QString timeText(const QJsonObject &object)
{
    if (object.value(QStringLiteral("static")).toBool())
        return QStringLiteral("always");
    const QJsonObject time = object.value(QStringLiteral("time")).toObject();
    return time.isEmpty()
               ? QStringLiteral("-")
               : QString(time.value(QStringLiteral("start")).toString() + QStringLiteral(" to ")
                         + time.value(QStringLiteral("end")).toString());
}

QStringList texts(const QJsonObject &object, const char *key)
{
    return object.value(QLatin1String(key)).toVariant().toStringList();
}

void print(const QJsonObject &geography, const Console &console)
{
    const auto text = [&geography](const char *key) {
        return geography.value(QLatin1String(key)).toVariant().toString();
    };
    const QString shapes =
        geography.contains(QStringLiteral("rows"))
            ? QStringLiteral("%1 rows, %2 columns").arg(text("rows"), text("columns"))
            : QStringLiteral("%1 objects, %2").arg(text("objects"), text("shapes"));
    const QString unit = text("distanceUnit").isEmpty()
                             ? QString()
                             : QStringLiteral(" (%1)").arg(text("distanceUnit"));
    console.print(QStringLiteral("%1: %2; %3%4; %5")
                      .arg(text("name"), shapes, projectionName(text("projection")), unit,
                           timeText(geography)));
    if (geography.contains(QStringLiteral("parent")))
        console.print(QStringLiteral("cut from %1").arg(text("parent")));
    if (geography.contains(QStringLiteral("existing"))) {
        const QStringList keys = texts(geography, "existing");
        console.print(
            QStringLiteral("%1 exist: %2").arg(keys.size()).arg(keys.join(QStringLiteral(", "))));
    }
    if (geography.contains(QStringLiteral("weightSets")))
        console.print(
            QStringLiteral("weight sets: %1").arg(someOf(texts(geography, "weightSets"))));
    TextTable table({{QStringLiteral("dataset"), TextTable::Left},
                     {QStringLiteral("type"), TextTable::Left},
                     {QStringLiteral("times"), TextTable::Right},
                     {QStringLiteral("time"), TextTable::Left},
                     {QStringLiteral("unique"), TextTable::Right},
                     {QStringLiteral("missing"), TextTable::Left}});
    for (const QJsonValue &value : geography.value(QStringLiteral("datasets")).toArray()) {
        const QJsonObject dataset = value.toObject();
        const bool key = dataset.value(QStringLiteral("key")).toBool();
        table.add(
            {dataset.value(QStringLiteral("name")).toString()
                 + QString(key ? QStringLiteral(" (key)") : QString()),
             dataset.value(QStringLiteral("type")).toString()
                 + QString(dataset.contains(QStringLiteral("bits")) ? QStringLiteral(" %1").arg(
                               dataset.value(QStringLiteral("bits")).toInt())
                                                                    : QString()),
             QString::number(dataset.value(QStringLiteral("times")).toInt()), timeText(dataset),
             QString::number(dataset.value(QStringLiteral("uniqueValues")).toInt()),
             dataset.value(QStringLiteral("missing")).toBool() ? QStringLiteral("some")
                                                               : QStringLiteral("none")});
    }
    table.print(console);
}

void run(const Options &options, const Context &context)
{
    Session session(context.session, context.console);
    session.load(options.project);
    QJsonArray geographies;
    for (const int id : geographyIds())
        geographies.append(describeGeography(id, options.at));
    if (context.console.json) {
        context.console.print(
            QJsonObject{{QStringLiteral("project"), options.project},
                        {QStringLiteral("bytes"), QFileInfo(options.project).size()},
                        {QStringLiteral("geographies"), geographies}});
        return;
    }
    for (const QJsonValue &geography : geographies)
        print(geography.toObject(), context.console);
    if (geographies.isEmpty())
        context.console.print(QStringLiteral("no geography"));
}

} // namespace

void addInfo(CLI::App &app, Context &context)
{
    auto options = std::make_shared<Options>();
    CLI::App &command = *app.add_subcommand("info", "Tell what a project holds");
    projectArgument(command, options->project);
    textOption(command, "--at", options->at, "Also name the objects that exist at this time");
    command.footer("Example:\n  meridor info income.vorn --at 1850-12-31");
    command.callback(
        [options, &context] { context.run = [options](const Context &c) { run(*options, c); }; });
}

} // namespace meridor
