// SPDX-License-Identifier: MIT
// The verbs rename and remove.
#include "core/project/edit.h"
#include <QJsonArray>
#include <QJsonObject>
#include <memory>
#include "cli/commands/projectEdit.h"
#include "core/project/catalog.h"

namespace meridor {
namespace {

struct Options {
    EditTarget target;
    QStringList names;
    QString newName;
    bool geography = false;
};

void rename(const Options &options)
{
    if (options.geography)
        renameGeography(findGeography(options.names.first()), options.newName);
    else
        renameDataset(findDataset(options.names.first()), options.newName);
}

void remove(const Options &options, const Console &console)
{
    QVector<int> ids;
    for (const QString &name : options.names)
        ids.append(options.geography ? findGeography(name) : findDataset(name));
    if (options.geography)
        removeGeographies(ids);
    else
        removeDatasets(ids, console);
}

template <class Change>
void edit(const Options &options, const Context &context, const char *done, Change change)
{
    editProject(
        options.target, context, [&change](Session &) { change(); }, Values::Packed);
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

void addTarget(const Command &command, Options &options, Context &context)
{
    targetOptions(command, options.target, context);
    command.flag("--geography", options.geography, "A geography, not a dataset");
}

} // namespace

void addRename(const Command &app, Context &context)
{
    auto options = std::make_shared<Options>();
    const Command command = app.verb("rename", "Give a dataset or a geography another name");
    projectArgument(command, options->target.project);
    command.texts("NAME", options->names, "The present name").values(1, 1).required();
    command.text("NEW", options->newName, "The new name").required();
    addTarget(command, *options, context);
    command.footer("Example:\n  meridor rename income.vorn income \"income per head\"");
    command.chosen([options, &context] {
        context.run = [options](const Context &c) {
            edit(*options, c, "renamed", [&options] { rename(*options); });
        };
    });
}

void addRemove(const Command &app, Context &context)
{
    auto options = std::make_shared<Options>();
    const Command command = app.verb("remove", "Remove datasets or geographies");
    projectArgument(command, options->target.project);
    command.texts("NAME", options->names, "Datasets, or geographies with --geography")
        .required()
        .values(1, 1000);
    addTarget(command, *options, context);
    command.footer("Example:\n  meridor remove income.vorn abbr sub_region");
    command.chosen([options, &context] {
        context.run = [options](const Context &c) {
            options->names.removeDuplicates();
            edit(*options, c, "removed", [&] { remove(*options, c.console); });
        };
    });
}

} // namespace meridor
