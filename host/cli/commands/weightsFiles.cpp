// SPDX-License-Identifier: MIT
#include "cli/commands/weightsFiles.h"
#include <QJsonArray>
#include <QJsonObject>
#include <memory>
#include "cli/commands/projectEdit.h"
#include "core/analysis/weightsExchange.h"
#include "core/project/catalog.h"
#include "core/project/outputFile.h"
#include "core/project/safeFile.h"
#include "core/project/text.h"

namespace meridor {
namespace {

struct Options {
    EditTarget target;
    QString geography;
    QString set;
    QString file;
    QString format;
    WeightsImport how;
};

void writeSet(Options options, const Context &context)
{
    options.file = outputName(options.file);
    weightsFormatOf(options.file,
                    options.format); // raises a Failure for an unknown format before any work
    requireWritable(options.file, context.overwrite);
    refuseInput(options.file, {options.target.project});
    Session session(context.session, context.user);
    session.loadPacked(options.target.project);
    const int set = findWeightSet(options.set);
    const WrittenWeights written =
        exportWeights(set, options.file, options.how.key, options.how.at, options.format);
    if (written.losesWeights)
        context.console.note(
            QStringLiteral("%1: neighbours alone, the form holds no weights").arg(options.file));
    const QString when = axisOf(set >> 16).show(written.time);
    const QString summary = QStringLiteral("%1: %2, %3, at %4")
                                .arg(options.file, counted(written.objects, "object"),
                                     counted(written.links, "link"), when);
    if (isStream(options.file))
        context.console.note(summary);
    else if (context.console.json)
        context.console.print(
            QJsonObject{{QStringLiteral("file"), options.file},
                        {QStringLiteral("time"), when},
                        {QStringLiteral("objects"), written.objects},
                        {QStringLiteral("links"), static_cast<double>(written.links)}});
    else
        context.console.print(summary);
}

void tell(const WeightsMatch &match, const Options &options, const Console &console)
{
    if (!match.unknown.isEmpty())
        console.note(
            QStringLiteral("%1: %2 that no object has, whose links are left out: %3")
                .arg(options.file, counted(match.unknown.size(), "id"), someOf(match.unknown)));
    if (!match.unnamed.isEmpty())
        console.note(
            QStringLiteral("%1: %2 that it does not name, without neighbours: %3")
                .arg(options.file, counted(match.unnamed.size(), "object"), someOf(match.unnamed)));
}

void readSet(const Options &options, const Context &context)
{
    refuseInput(options.target.file(), {options.file});
    WeightsMatch match;
    editProject(options.target, context, [&](Session &) {
        const WeightsFile file = readWeights(options.file, options.format);
        const int geography = findGeography(options.geography);
        match = importWeights(geography, options.set, file, options.file, options.how);
    });
    tell(match, options, context.console);
    if (context.console.json)
        context.console.print(
            QJsonObject{{QStringLiteral("name"), options.set},
                        {QStringLiteral("links"), static_cast<double>(match.links)},
                        {QStringLiteral("unknown"), QJsonArray::fromStringList(match.unknown)},
                        {QStringLiteral("unnamed"), QJsonArray::fromStringList(match.unnamed)}});
    else
        context.console.print(
            QStringLiteral("%1: %2").arg(options.set, counted(match.links, "link")));
}

} // namespace

void addWeightsExport(const Command &weights, Context &context)
{
    auto options = std::make_shared<Options>();
    const Command command = weights.verb(
        "export", "Write a set at a time: .gal (neighbours), .gwt, .kwt or .csv (with weights)");
    projectArgument(command, options->target.project);
    command.text("SET", options->set, "The set, as SET or GEOGRAPHY/SET").required();
    command
        .text("FILE", options->file,
              "The file, whose suffix determines the format; - for standard output")
        .required();
    command.text("--format", options->format, "gal, gwt, kwt or csv, instead of the suffix")
        .oneOf(weightsFormatNames());
    command.text("--key", options->how.key,
                 "Dataset whose values identify the objects (default: their keys)");
    command.text("--at", options->how.at, "The time (default: the last)");
    overwriteOption(command, context);
    command.footer("Example:\n  meridor weights export income.vorn queen queen.gal --at 2009");
    command.chosen([options, &context] {
        context.run = [options](const Context &c) { writeSet(*options, c); };
    });
}

void addWeightsImport(const Command &weights, Context &context)
{
    auto options = std::make_shared<Options>();
    const Command command = weights.verb("import", "Make a set of a .gal, .gwt, .kwt or .csv file");
    projectArgument(command, options->target.project);
    command.text("FILE", options->file, "The file; its ids are keys, not positions").required();
    command.text("SET", options->set, "The new set's name").required();
    command.text("--format", options->format, "gal, gwt, kwt or csv, instead of the suffix")
        .oneOf(weightsFormatNames());
    command.text("--geography", options->geography, "The geography, if there are several");
    command.text("--key", options->how.key,
                 "Dataset whose values identify the objects (default: their keys)");
    command.text("--at", options->how.at,
                 "Times of the lists: TIME or START/END (default: all times)");
    command.flag("--standardize", options->how.standardize,
                 "Divide each object's weights by their sum");
    command.flag("--strict", options->how.strict, "Fail if ids of the file and of the map differ");
    targetOptions(command, options->target, context);
    command.footer("Example:\n  meridor weights import counties.vorn ncCR85.gal cressie --key fips "
                   "--standardize");
    command.chosen([options, &context] {
        context.run = [options](const Context &c) { readSet(*options, c); };
    });
}

} // namespace meridor
