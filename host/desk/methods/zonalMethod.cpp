// SPDX-License-Identifier: MIT
#include "core/analysis/zonal.h"
#include "core/project/catalog.h"
#include "core/project/failure.h"
#include "core/project/text.h"
#include "desk/methods/fields.h"
#include "desk/methods/method.h"

namespace meridor {
namespace {

void execute(Workspace &, const MethodArguments &arguments, MethodReport &report,
             const Progress &progress)
{
    const int dataset = chosen(arguments, "dataset");
    const int polygons = chosen(arguments, "polygons");
    const QString name = arguments.text(QStringLiteral("into"));
    requireNewDatasetName(polygons, name);
    const QVector<ZonesAtTime> zones =
        zonalStatistics(dataset, polygons, dataTimes(dataset), progress);
    const int made =
        keepZonal(zones, dataset, polygons, name, arguments.text(QStringLiteral("statistic")));
    qint64 values = 0;
    for (const ZonesAtTime &at : zones)
        for (const ZoneStatistics &zone : at.zones)
            values += zone.cells > 0;
    report.text = methodText("%1: %2 of %3 at %4")
                      .arg(name, counted(values, methodText("%1 value"), methodText("%1 values")),
                           geographyName(polygons),
                           counted(zones.size(), methodText("%1 time"), methodText("%1 times")));
    report.results.append({QStringLiteral("dataset"), made});
}

QStringList commandLine(Workspace &workspace, const MethodArguments &arguments)
{
    QStringList line{QStringLiteral("zonal"), workspace.commandPath(),
                     datasetWord(arguments.id(QStringLiteral("dataset"))),
                     geographyName(arguments.id(QStringLiteral("polygons")))};
    addOptions(line, arguments, {"into", "statistic"});
    return line;
}

} // namespace

Method zonalMethod()
{
    MethodField statistic = choice("statistic", methodText("Statistic"), {"mean"});
    statistic.choices.clear();
    for (const ZoneStatistic &each : zoneStatistics())
        statistic.choices.append(QLatin1String(each.name));
    return {QStringLiteral("zonal"),
            methodText("Zonal statistics"),
            QStringLiteral("meridor.md#zonal"),
            {thing("dataset", methodText("Grid"), MethodField::Grids),
             thing("polygons", methodText("Polygons"), MethodField::Polygons), statistic,
             text("into", methodText("Name of the result"))},
            execute,
            commandLine,
            [](const MethodArguments &) { return true; }};
}

} // namespace meridor
