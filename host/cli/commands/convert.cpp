// SPDX-License-Identifier: MIT
#include <QJsonObject>
#include <memory>
#include "cli/commands/projectEdit.h"
#include "core/analysis/convertDataset.h"
#include "core/project/catalog.h"
#include "core/project/failure.h"
#include "core/project/text.h"
#include "datainterface/DataAPI.h"

namespace meridor {
namespace {

struct Options {
    EditTarget target;
    QString dataset;
    QString type;
    QString storage;
    Conversion conversion;
};

Conversion conversionOf(const Options &options)
{
    Conversion conversion = options.conversion;
    for (const DataType type : {DecimalType, IntegerType, StringType})
        if (options.type == QLatin1String(typeName(type)))
            conversion.type = type;
    for (const auto storage : {MVectorDataset::TimeSlice, MVectorDataset::TimeSeries})
        if (options.storage == QLatin1String(storageName(storage)))
            conversion.storage = storage;
    return conversion;
}

void tell(const ConversionLoss &loss, const Console &console)
{
    for (const auto &[count, what] : {std::make_pair(loss.notNumbers, "without a number, now 0"),
                                      {loss.fractions, "lost the places after the point"},
                                      {loss.outside, "beyond 32 bits, now the nearest integer"}})
        if (count > 0)
            console.note(QStringLiteral("%1 of %2 %3")
                             .arg(QString::number(count), counted(loss.values, "value"),
                                  QLatin1String(what)));
}

void run(const Options &options, const Context &context)
{
    const Conversion conversion = conversionOf(options);
    DatasetProps props;
    ConversionLoss loss;
    editProject(options.target, context, [&](Session &) {
        const int dataset = findDataset(options.dataset);
        requireNewDatasetName(VORN_GetGeographyId(dataset), conversion.name);
        if (conversion.type)
            loss = lossOf(dataset, *conversion.type);
        const bool isCopy = !conversion.type && !conversion.storage;
        props = VORN_GetDatasetProperties(isCopy ? copyDataset(dataset, conversion.name)
                                                 : convertDataset(dataset, conversion));
    });
    tell(loss, context.console);
    const QString type = QLatin1String(typeName(static_cast<DataType>(props.dataType)));
    const QString storage =
        QLatin1String(storageName(static_cast<MVectorDataset::StorageType>(props.storageType)));
    if (context.console.json)
        context.console.print(
            QJsonObject{{QStringLiteral("project"), options.target.file()},
                        {QStringLiteral("dataset"), conversion.name},
                        {QStringLiteral("type"), type},
                        {QStringLiteral("storage"), storage},
                        {QStringLiteral("notNumbers"), loss.notNumbers},
                        {QStringLiteral("fractions"), loss.fractions},
                        {QStringLiteral("outside"), loss.outside},
                        {QStringLiteral("realizations"), props.realizationCount}});
    else
        context.console.print(QStringLiteral("%1: %2, %3 values in %4")
                                  .arg(options.target.file(), conversion.name, type, storage));
}

} // namespace

void addConvert(const Command &app, Context &context)
{
    auto options = std::make_shared<Options>();
    const Command command =
        app.verb("convert", "Add a copy of a dataset, also of another type or storage");
    projectArgument(command, options->target.project);
    datasetArgument(command, options->dataset);
    command.text("NEW", options->conversion.name, "The new dataset's name").required();
    command.text("--type", options->type, "decimal, integer or text")
        .oneOf({"decimal", "integer", "text"});
    command
        .text("--storage", options->storage,
              "slices (all objects at a time) or series (all times of an object)")
        .oneOf({"slices", "series"});
    command
        .number("--decimals", options->conversion.decimals,
                "Decimal places of numbers that become text")
        .shown()
        .range(0, 17);
    targetOptions(command, options->target, context);
    command.footer("Example:\n  meridor convert income.vorn income \"income as text\" --type text "
                   "--decimals 0");
    command.chosen(
        [options, &context] { context.run = [options](const Context &c) { run(*options, c); }; });
}

} // namespace meridor
