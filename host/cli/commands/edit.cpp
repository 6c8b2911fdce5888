// SPDX-License-Identifier: MIT
// The verbs rename, duplicate, remove and describe.
#include "core/project/edit.h"
#include <QJsonArray>
#include <QJsonObject>
#include <memory>
#include <optional>
#include "cli/commands/projectEdit.h"
#include "core/analysis/convertDataset.h"
#include "core/analysis/subsetGeography.h"
#include "core/analysis/weightSets.h"
#include "core/geostatistics/variogramModels.h"
#include "core/project/catalog.h"
#include "core/project/failure.h"
#include "core/project/progress.h"
#include "datainterface/DataAPI.h"

namespace meridor {
namespace {

/// A dataset, unless one of the flags names another kind.
struct Options {
    EditTarget target;
    QStringList names;
    QString newName;
    bool geography = false;
    bool weights = false;
    bool model = false;
    QString dataset; ///< of a model; empty: the project
    QString summary;
    QString history;
    std::optional<Setting> givenSummary;
    std::optional<Setting> givenHistory;
};

void requireOneKind(const Options &options)
{
    if (options.geography + options.weights + options.model > 1)
        failUsage(QStringLiteral("--geography, --weights and --model exclude each other"));
    if (!options.model && !options.dataset.isEmpty())
        failUsage(QStringLiteral("--dataset is that of a model; see --model"), "model");
}

QVector<ModelPlace> modelsOf(const Options &options)
{
    const int dataset = options.dataset.isEmpty() ? -1 : findDataset(options.dataset);
    QVector<ModelPlace> places;
    for (const QString &name : options.names)
        places.append(placeOfModel(dataset, name));
    return places;
}

/// The ids of the things named, in the order of the names.
QVector<int> idsOf(const Options &options, int (*find)(const QString &))
{
    QVector<int> ids;
    for (const QString &name : options.names)
        ids.append(find(name));
    return ids;
}

int dataset(const QString &name)
{
    return findDataset(name);
}

void rename(const Options &options)
{
    const QString &name = options.names.first();
    if (options.geography)
        renameGeography(findGeography(name), options.newName);
    else if (options.weights)
        renameWeightSet(findWeightSet(name), options.newName);
    else if (options.model)
        renameModel(modelsOf(options).first(), options.newName);
    else
        renameDataset(findDataset(name), options.newName);
}

void duplicate(const Options &options)
{
    const QString &name = options.names.first();
    if (options.newName.isEmpty())
        failUsage(QStringLiteral("a name is not empty"));
    if (options.geography) {
        const Progress progress("Duplicate", "Copying the geography...");
        copyGeography(findGeography(name), options.newName);
    } else if (options.weights) {
        duplicateWeightSet(findWeightSet(name), options.newName);
    } else if (options.model) {
        duplicateModel(modelsOf(options).first(), options.newName);
    } else {
        const int copied = findDataset(name);
        requireNewDatasetName(VORN_GetGeographyId(copied), options.newName);
        copyDataset(copied, options.newName);
    }
}

void remove(const Options &options, const Console &console)
{
    if (options.geography)
        removeGeographies(idsOf(options, &findGeography));
    else if (options.weights)
        removeWeightSets(idsOf(options, &findWeightSet));
    else if (options.model)
        removeModels(modelsOf(options));
    else
        removeDatasets(idsOf(options, &dataset), console);
}

template <class Change>
void edit(const Options &options, const Context &context, const char *done, Values values,
          Change change)
{
    requireOneKind(options);
    editProject(
        options.target, context, [&change](Session &) { change(); }, values);
    const QString file = options.target.file();
    if (context.console.json)
        context.console.print(
            QJsonObject{{QStringLiteral("project"), file},
                        {QLatin1String(done), QJsonArray::fromStringList(options.names)}});
    else
        context.console.print(
            QStringLiteral("%1: %2 %3")
                .arg(file, QLatin1String(done), options.names.join(QStringLiteral(", "))));
}

/// Shows what is written about a thing, or replaces what is given.
void showOrDescribe(const Options &options, const Context &context)
{
    const bool changesSummary = options.givenSummary->isGiven();
    const bool changesHistory = options.givenHistory->isGiven();
    if (options.geography && changesSummary)
        failUsage(QStringLiteral("a geography has a history alone"), "history");
    Description found;
    const auto look = [&] {
        const QString &name = options.names.first();
        const int id = options.geography ? findGeography(name) : findDataset(name);
        found = options.geography ? Description{QString(), historyOf(id)} : descriptionOf(id);
        if (changesSummary)
            found.summary = options.summary;
        if (changesHistory)
            found.history = options.history;
        if (options.geography && changesHistory)
            setHistory(id, found.history);
        else if (changesSummary || changesHistory)
            setDescription(id, found);
    };
    if (changesSummary || changesHistory) {
        editProject(
            options.target, context, [&look](Session &) { look(); }, Values::Packed);
    } else {
        if (!options.target.output.isEmpty())
            failUsage(QStringLiteral("--output does not apply, since nothing is changed"));
        Session session(context.session, context.user);
        session.loadPacked(options.target.project);
        look();
    }
    if (context.console.json) {
        QJsonObject json{{QStringLiteral("name"), options.names.first()},
                         {QStringLiteral("history"), found.history}};
        if (!options.geography)
            json.insert(QStringLiteral("summary"), found.summary);
        context.console.print(json);
        return;
    }
    if (!options.geography)
        context.console.print(QStringLiteral("summary: ") + found.summary);
    context.console.print(QStringLiteral("history: ") + found.history);
}

void addGeography(const Command &command, Options &options)
{
    command.flag("--geography", options.geography, "A geography, not a dataset");
}

void addOtherKinds(const Command &command, Options &options)
{
    command.flag("--weights", options.weights, "A weight set, as SET or GEOGRAPHY/SET");
    command.flag("--model", options.model,
                 "A variogram model, of the project or of the dataset in --dataset");
    command.text("--dataset", options.dataset, "The dataset of the model");
}

/// @param work  the verb with the options that were parsed.
void addVerb(const Command &command, const std::shared_ptr<Options> &options, Context &context,
             const std::function<void(Options &, const Context &)> &work)
{
    targetOptions(command, options->target, context);
    command.chosen([options, &context, work] {
        context.run = [options, work](const Context &c) { work(*options, c); };
    });
}

void oneName(const Command &command, Options &options, const char *help)
{
    command.texts("NAME", options.names, help).values(1, 1).required();
}

} // namespace

void addRename(const Command &app, Context &context)
{
    auto options = std::make_shared<Options>();
    const Command command =
        app.verb("rename", "Give a dataset, geography, weight set or variogram model another name");
    projectArgument(command, options->target.project);
    oneName(command, *options, "The present name");
    command.text("NEW", options->newName, "The new name").required();
    addGeography(command, *options);
    addOtherKinds(command, *options);
    command.footer("Example:\n  meridor rename income.vorn income \"income per head\"");
    addVerb(command, options, context, [](Options &given, const Context &c) {
        edit(given, c, "renamed", Values::Packed, [&given] { rename(given); });
    });
}

void addDuplicate(const Command &app, Context &context)
{
    auto options = std::make_shared<Options>();
    const Command command =
        app.verb("duplicate", "Add a copy of a dataset, geography, weight set or variogram model");
    projectArgument(command, options->target.project);
    oneName(command, *options, "What is copied");
    command.text("NEW", options->newName, "The name of the copy").required();
    addGeography(command, *options);
    addOtherKinds(command, *options);
    command.footer("Example:\n  meridor duplicate income.vorn queen \"queen of 1929\" --weights");
    addVerb(command, options, context, [](Options &given, const Context &c) {
        edit(given, c, "duplicated", Values::Loaded, [&given] { duplicate(given); });
    });
}

void addRemove(const Command &app, Context &context)
{
    auto options = std::make_shared<Options>();
    const Command command =
        app.verb("remove", "Remove datasets, geographies, weight sets or variogram models");
    projectArgument(command, options->target.project);
    command.texts("NAME", options->names, "What is removed: things of one kind")
        .required()
        .values(1, 1000);
    addGeography(command, *options);
    addOtherKinds(command, *options);
    command.footer("Example:\n  meridor remove income.vorn abbr sub_region");
    addVerb(command, options, context, [](Options &given, const Context &c) {
        given.names.removeDuplicates();
        edit(given, c, "removed", Values::Packed, [&] { remove(given, c.console); });
    });
}

void addDescribe(const Command &app, Context &context)
{
    auto options = std::make_shared<Options>();
    const Command command =
        app.verb("describe", "Show or change what is written about a dataset or a geography");
    projectArgument(command, options->target.project);
    oneName(command, *options, "A dataset, or a geography with --geography");
    addGeography(command, *options);
    options->givenSummary =
        command.text("--summary", options->summary, "What a dataset is, in one line");
    options->givenHistory =
        command.text("--history", options->history, "Where it is from and how it came to be");
    command.footer("Example:\n"
                   "  meridor describe income.vorn income --summary \"Income per head, dollars\"\n"
                   "  meridor describe income.vorn income");
    addVerb(command, options, context, &showOrDescribe);
}

} // namespace meridor
