// SPDX-License-Identifier: MIT
// The verbs rename and remove.
#include <QJsonArray>
#include <QJsonObject>
#include <memory>
#include "cli/commands/projectEdit.h"
#include "core/project/catalog.h"
#include "core/project/failure.h"
#include "datainterface/DataAPI.h"
#include "datainterface/MDataSource.h"
#include "datainterface/MGeoData.h"

namespace meridor {
namespace {

struct Options {
    EditTarget target;
    QStringList names;
    QString newName;
    bool geography = false;
};

void renameDataset(const Options &options)
{
    const int id = findDataset(options.names.first());
    const int geography = VORN_GetGeographyId(id);
    const int other = VORN_GetDatasetByName(geography, options.newName);
    if (other >= 0 && other != id)
        fail(QStringLiteral("%1 has a dataset %2 already")
                 .arg(geographyName(geography), options.newName));
    geographyOf(geography)->GetDataSource()->SetDisplayName(
        id, options.newName.toLocal8Bit().constData());
}

void renameGeography(const Options &options)
{
    const int id = findGeography(options.names.first());
    for (const int other : geographyIds())
        if (other != id && geographyName(other) == options.newName)
            fail(QStringLiteral("the project has a geography %1 already").arg(options.newName));
    geographyOf(id)->SetName(options.newName);
}

void removeDatasets(const Options &options, const Console &console)
{
    QVector<int> ids;
    for (const QString &name : options.names)
        ids.append(findDataset(name));
    for (const int id : ids)
        if (keyDataset(VORN_GetGeographyId(id)) == id)
            console.note(QStringLiteral("%1 held the objects' keys; from now on they are numbers")
                             .arg(datasetName(id)));
    VORN_RemoveDatasets(ids);
}

void removeGeographies(const Options &options)
{
    QVector<int> ids;
    for (const QString &name : options.names)
        ids.append(findGeography(name));
    for (const int id : ids)
        controller().RemoveGeography(id);
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
            if (options->newName.isEmpty())
                failUsage(QStringLiteral("a name is not empty"));
            edit(*options, c, "renamed", [&options] {
                options->geography ? renameGeography(*options) : renameDataset(*options);
            });
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
            edit(*options, c, "removed", [&] {
                options->geography ? removeGeographies(*options)
                                   : removeDatasets(*options, c.console);
            });
        };
    });
}

} // namespace meridor
