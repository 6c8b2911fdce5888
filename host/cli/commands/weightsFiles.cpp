// SPDX-License-Identifier: MIT
#include "cli/commands/weightsFiles.h"
#include <QJsonArray>
#include <QJsonObject>
#include <memory>
#include "cli/commands/projectEdit.h"
#include "datainterface/GeographyAPI.h"
#include "core/project/failure.h"
#include "core/project/catalog.h"
#include "cli/terminalProgress.h"
#include "core/project/safeFile.h"
#include "core/analysis/weightSets.h"

namespace meridor {
namespace {

struct Options {
    EditTarget target;
    QString geography;
    QString set;
    QString file;
    QString key;
    QString at;
    bool standardize = false;
    bool strict = false;
};

/// A dataset whose values name the objects. Positions are no names: a table that was sorted anew
/// would link other objects without a word.
int idDataset(int geography, const QString &key)
{
    const int dataset = key.isEmpty() ? keyDataset(geography) : findDataset(geography, key);
    if (dataset < 0)
        fail(QStringLiteral("the objects of %1 have no keys; --key names a dataset that tells them "
                            "apart")
                 .arg(geographyName(geography)));
    return dataset;
}

bool isLossless(const WeightsFile &weights)
{
    for (const WeightsFile::Ego &ego : weights.egos)
        for (const WeightsFile::Link &link : ego.links)
            if (link.weight != 1)
                return false;
    return true;
}

qint64 linksOf(const WeightsFile &weights)
{
    qint64 links = 0;
    for (const WeightsFile::Ego &ego : weights.egos)
        links += ego.links.size();
    return links;
}

void writeSet(const Options &options, const Context &context)
{
    const WeightsFormat format = weightsFormatOf(options.file);
    requireWritable(options.file, context.overwrite);
    Session session(context.session, context.console);
    session.load(options.target.project);
    const int set = findWeightSet(options.set);
    const int geography = set >> 16;
    const int ids = idDataset(geography, options.key);
    const qint64 time = chooseTimeOf(geography, options.at);
    WeightsFile weights;
    {
        const Progress progress("Export", "Reading the weights...");
        weights = weightsAt(set, time, uniqueTexts(ids));
    }
    weights.key = datasetName(ids);
    if (format == WeightsFormat::Gal && !isLossless(weights))
        context.console.note(
            QStringLiteral("%1: neighbours alone, the form holds no weights").arg(options.file));
    writeWeights(options.file, weights);
    const QString when = axisOf(geography).show(time);
    if (context.console.json)
        context.console.print(
            QJsonObject{{QStringLiteral("file"), options.file},
                        {QStringLiteral("time"), when},
                        {QStringLiteral("objects"), weights.egos.size()},
                        {QStringLiteral("links"), static_cast<double>(linksOf(weights))}});
    else
        context.console.print(QStringLiteral("%1: %2 objects, %3 links, at %4")
                                  .arg(options.file)
                                  .arg(weights.egos.size())
                                  .arg(linksOf(weights))
                                  .arg(when));
}

/// Without a time the lists hold as long as there are objects.
Interval spanOf(int geography, const QString &text)
{
    if (text.isEmpty())
        return VORN_GetGeographyProperties(geography).timeBounds;
    const TimeAxis axis = axisOf(geography);
    const auto span = axis.range(text);
    return span ? *span : timeOption(axis, "--at", text);
}

void tell(const WeightsMatch &match, const Options &options, const Console &console)
{
    if (!match.unknown.isEmpty())
        console.note(QStringLiteral("%1: %2 ids that no object has, their links are left out: %3")
                         .arg(options.file)
                         .arg(match.unknown.size())
                         .arg(someOf(match.unknown)));
    if (!match.unnamed.isEmpty())
        console.note(QStringLiteral("%1: %2 objects that it does not name have no neighbours: %3")
                         .arg(options.file)
                         .arg(match.unnamed.size())
                         .arg(someOf(match.unnamed)));
}

void readSet(const Options &options, const Context &context)
{
    const WeightsFile file = readWeights(options.file);
    WeightsMatch match;
    editProject(options.target, context, [&](Session &) {
        const int geography = findGeography(options.geography);
        match = adoptWeights(geography, options.set, file,
                             uniqueTexts(idDataset(geography, options.key)),
                             spanOf(geography, options.at), options.standardize);
        if (options.strict && (!match.unknown.isEmpty() || !match.unnamed.isEmpty()))
            fail(QStringLiteral("%1: ids do not match: %2")
                     .arg(options.file, someOf(match.unknown + match.unnamed)));
        weightSetOf(match.set).AddInformation(QStringLiteral("Imported from %1").arg(options.file));
    });
    tell(match, options, context.console);
    if (context.console.json)
        context.console.print(
            QJsonObject{{QStringLiteral("name"), options.set},
                        {QStringLiteral("links"), static_cast<double>(match.links)},
                        {QStringLiteral("unknown"), QJsonArray::fromStringList(match.unknown)},
                        {QStringLiteral("unnamed"), QJsonArray::fromStringList(match.unnamed)}});
    else
        context.console.print(QStringLiteral("%1: %2 links").arg(options.set).arg(match.links));
}

} // namespace

void addWeightsExport(CLI::App &weights, Context &context)
{
    auto options = std::make_shared<Options>();
    CLI::App &command = *weights.add_subcommand(
        "export", "Write a set at a time: .gal (neighbours), .gwt, .kwt or .csv (with weights)");
    projectArgument(command, options->target.project);
    textOption(command, "SET", options->set, "The set, as SET or GEOGRAPHY/SET")->required();
    textOption(command, "FILE", options->file, "The file to write; its ending tells the format")
        ->required();
    textOption(command, "--key", options->key,
               "Dataset whose values name the objects (default: their keys)");
    textOption(command, "--at", options->at, "The time (default: the last)");
    overwriteOption(command, context);
    command.footer("Example:\n  meridor weights export income.vorn queen queen.gal --at 2009");
    command.callback([options, &context] {
        context.run = [options](const Context &c) { writeSet(*options, c); };
    });
}

void addWeightsImport(CLI::App &weights, Context &context)
{
    auto options = std::make_shared<Options>();
    CLI::App &command =
        *weights.add_subcommand("import", "Make a set of a .gal, .gwt, .kwt or .csv file");
    projectArgument(command, options->target.project);
    textOption(command, "FILE", options->file, "The file; its ids are keys, never positions")
        ->required();
    textOption(command, "SET", options->set, "The new set's name")->required();
    textOption(command, "--geography", options->geography, "The geography, when there are several");
    textOption(command, "--key", options->key,
               "Dataset whose values name the objects (default: their keys)");
    textOption(command, "--at", options->at,
               "The span that the lists hold for, TIME or START/END (default: all of it)");
    command.add_flag("--standardize", options->standardize,
                     "Divide each object's weights by their sum");
    command.add_flag("--strict", options->strict,
                     "Fail when ids of the file and of the map differ");
    targetOptions(command, options->target, context);
    command.footer("Example:\n  meridor weights import counties.vorn ncCR85.gal cressie --key fips "
                   "--standardize");
    command.callback([options, &context] {
        context.run = [options](const Context &c) { readSet(*options, c); };
    });
}

} // namespace meridor
