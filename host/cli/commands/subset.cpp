// SPDX-License-Identifier: MIT
#include <QJsonArray>
#include <QJsonObject>
#include <memory>
#include "cli/commands/commands.h"
#include "cli/commands/projectEdit.h"
#include "core/analysis/selection.h"
#include "core/analysis/subsetGeography.h"
#include "core/project/catalog.h"
#include "core/project/failure.h"
#include "core/project/progress.h"
#include "core/project/text.h"
#include "datainterface/FrameAPI.h"

namespace meridor {
namespace {

struct Options {
    EditTarget target;
    QString name;
    ObjectChoice choice;
    int realization = 1;
};

void run(Options options, const Context &context)
{
    QString parent;
    QStringList keys;
    int datasets = 0;
    editProject(options.target, context, [&](Session &) {
        const int geography = geographyOf(options.choice);
        requireNewGeographyName(options.name);
        if (!options.choice.dataset.isEmpty())
            options.choice.realization = realizationIndex(
                options.choice.geography.isEmpty() ? findDataset(options.choice.dataset)
                                                   : findDataset(geography, options.choice.dataset),
                options.realization);
        const QVector<int> objects = chosenObjects(geography, options.choice);
        if (objects.isEmpty())
            fail(QStringLiteral("no object of %1 is like that").arg(geographyName(geography)));
        const Progress progress("Subset", "Cutting the geography...");
        const int id = subsetGeography(geography, objects, options.name);
        parent = geographyName(geography);
        keys = objectKeys(id);
        datasets = datasetIds(id).size();
    });
    if (context.console.json)
        context.console.print(
            QJsonObject{{QStringLiteral("project"), options.target.file()},
                        {QStringLiteral("geography"), options.name},
                        {QStringLiteral("parent"), parent},
                        {QStringLiteral("datasets"), datasets},
                        {QStringLiteral("objects"), QJsonArray::fromStringList(keys)}});
    else
        context.console.print(QStringLiteral("%1: %2 of %3 with %4: %5")
                                  .arg(options.name, counted(keys.size(), "object"), parent,
                                       counted(datasets, "dataset"), someOf(keys)));
}

} // namespace

void addSubset(const Command &app, Context &context)
{
    auto options = std::make_shared<Options>();
    const Command command = app.verb("subset", "Add a geography of some objects of another");
    projectArgument(command, options->target.project);
    command.text("NAME", options->name, "The new geography's name").required();
    command.text("--geography", options->choice.geography,
                 "The parent geography, if there are several");
    command.list("--objects", options->choice.keys, "Objects by key or name, separated by commas");
    command.text("--where", options->choice.dataset, "Objects by their value in this dataset");
    valueOptions(command, options->choice);
    realizationOption(command, options->realization);
    command.flag("--existing", options->choice.existing, "Objects that exist at --at");
    targetOptions(command, options->target, context);
    command.footer("Example:\n  meridor subset income.vorn \"rich states\" --where income --min "
                   "40000 --at 2009");
    command.chosen([options, &context] {
        context.run = [options](const Context &c) {
            if (options->name.isEmpty())
                failUsage(QStringLiteral("a name is not empty"));
            run(*options, c);
        };
    });
}

} // namespace meridor
