// SPDX-License-Identifier: MIT
#include "core/analysis/convertDataset.h"
#include "core/project/catalog.h"
#include "datainterface/DataAPI.h"
#include "datainterface/VORN_Progress.h"
#include "desk/methods/fields.h"
#include "desk/methods/method.h"
#include "desk/project/importLine.h"

namespace meridor {
namespace {

void execute(Workspace &, const MethodArguments &arguments, MethodReport &report, const Progress &)
{
    const int dataset = chosen(arguments, "dataset");
    Conversion conversion;
    conversion.name = arguments.text(QStringLiteral("new"));
    conversion.decimals = arguments.whole(QStringLiteral("decimals"));
    requireNewDatasetName(VORN_GetGeographyId(dataset), conversion.name);
    const QString type = arguments.text(QStringLiteral("type"));
    for (const DataType each : {DecimalType, IntegerType, StringType})
        if (type == QLatin1String(typeName(each)))
            conversion.type = each;
    const QString storage = arguments.text(QStringLiteral("storage"));
    if (storage == QLatin1String("slices"))
        conversion.storage = MVectorDataset::TimeSlice;
    else if (storage == QLatin1String("series"))
        conversion.storage = MVectorDataset::TimeSeries;
    VORN_Progress::Close(); // a conversion opens the bar itself
    const int made = convertDataset(dataset, conversion);
    report.text = methodText("%1 was made from %2").arg(conversion.name, datasetName(dataset));
    if (conversion.type) {
        const ConversionLoss loss = lossOf(dataset, *conversion.type);
        if (loss.notNumbers + loss.fractions + loss.outside > 0)
            report.text += methodText("; not kept exactly: %1 of %2")
                               .arg(loss.notNumbers + loss.fractions + loss.outside)
                               .arg(loss.values);
    }
    report.results.append({QStringLiteral("dataset"), made});
}

QStringList commandLine(Workspace &workspace, const MethodArguments &arguments)
{
    QStringList options;
    for (const char *const name : {"type", "storage"})
        if (arguments.text(QLatin1String(name)) != QLatin1String("same"))
            addOptions(options, arguments, {name});
    addOptions(options, arguments, {"decimals"});
    return commandWords({QStringLiteral("convert")},
                        {workspace.commandPath(),
                         datasetWord(arguments.id(QStringLiteral("dataset"))),
                         arguments.text(QStringLiteral("new"))},
                        options);
}

} // namespace

Method convertMethod()
{
    return {QStringLiteral("convert"),
            methodText("Convert"),
            QStringLiteral("meridor.md#convert"),
            {thing("dataset", methodText("Dataset"), MethodField::Dataset),
             text("new", methodText("New name")),
             choice("type", methodText("Type"), {"same", "decimal", "integer", "text"}),
             choice("storage", methodText("Storage"), {"same", "slices", "series"}),
             whole("decimals", methodText("Decimal places of texts"), 6, 0, 17)},
            execute,
            commandLine,
            [](const MethodArguments &) { return true; }};
}

} // namespace meridor
