// SPDX-License-Identifier: MIT
#include <QJsonArray>
#include <QJsonObject>
#include <memory>
#include "cli/commands/commands.h"
#include "core/grids/gridValues.h"
#include "core/project/catalog.h"
#include "core/project/failure.h"
#include "datainterface/DataAPI.h"
#include "datainterface/RasterAPI.h"

namespace meridor {
namespace {

struct Options {
    QString project;
    QString dataset;
    QString object;
    int realization = 1;
};

void run(const Options &options, const Context &context)
{
    Session session(context.session, context.user);
    session.loadPacked(options.project);
    const int dataset = findDataset(options.dataset);
    const int realization = realizationIndex(dataset, options.realization);
    const int geography = VORN_GetGeographyId(dataset);
    const bool isGrid = rasterOf(dataset);
    const auto cell = isGrid ? findCell(geography, options.object) : qMakePair(0u, 0u);
    const int object = isGrid ? 0 : findObject(geography, options.object);
    const TimeAxis axis = axisOf(geography);
    const bool always = VORN_GetDatasetProperties(dataset).isStatic;

    const QString name = isGrid ? QString() : objectNames(geography).value(object);
    QJsonArray entries;
    // The heading of the values tells which object was found.
    const QString heading = name.isNull() ? QStringLiteral("value") : name;
    TextTable table({{QStringLiteral("time"), TextTable::Left}, {heading, TextTable::Right}});
    QVector<Interval> intervals;
    VORN_GetDataIntervals(dataset, realization, object, intervals);
    for (const Interval &interval : intervals) {
        datum value;
        // Slices have the same intervals for all objects, so this object may have no value in one.
        const qint64 time = instantOf(interval);
        const bool there =
            isGrid ? VORN_GetRasterValue(dataset, realization, cell.first, cell.second, time, value)
                   : VORN_GetDataValue(dataset, realization, static_cast<unsigned int>(object),
                                       time, value);
        const QString when = always ? QStringLiteral("always") : axis.show(interval);
        QJsonObject entry{
            {QStringLiteral("time"), when},
            {QStringLiteral("value"), there ? jsonValue(value) : QJsonValue(QJsonValue::Null)}};
        if (!always) {
            entry.insert(QStringLiteral("start"), axis.show(interval.startTime));
            entry.insert(QStringLiteral("end"), axis.showEnd(interval));
        }
        entries.append(entry);
        const bool isDecimal = isGrid && value.type == 0;
        table.add({when, !there      ? QStringLiteral("-")
                         : isDecimal ? cellText(dataset, value.decimalValue)
                                     : textOf(value)});
    }
    const QString key = isGrid ? QStringLiteral("%1,%2").arg(cell.first).arg(cell.second)
                               : objectKeys(geography, {object}).first();
    if (!context.console.json) {
        table.print(context.console);
        return;
    }
    QJsonObject result{{QStringLiteral("dataset"), datasetName(dataset)},
                       {QStringLiteral("object"), key},
                       {QStringLiteral("values"), entries}};
    if (!name.isNull())
        result.insert(QStringLiteral("name"), name);
    context.console.print(result);
}

} // namespace

void addSeries(const Command &app, Context &context)
{
    auto options = std::make_shared<Options>();
    const Command command = app.verb("series", "One object's or one cell's values over time");
    projectArgument(command, options->project);
    datasetArgument(command, options->dataset);
    command
        .text("OBJECT", options->object,
              "The object's key, or its name in a text dataset; of a grid COLUMN,ROW from 0 at the "
              "top left, or the place @X,Y")
        .required();
    realizationOption(command, options->realization);
    command.footer("Example:\n  meridor series income.vorn income Virginia");
    command.chosen(
        [options, &context] { context.run = [options](const Context &c) { run(*options, c); }; });
}

} // namespace meridor
