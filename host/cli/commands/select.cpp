// SPDX-License-Identifier: MIT
#include <QJsonArray>
#include <QJsonObject>
#include <memory>
#include "cli/commands/commands.h"
#include "core/analysis/selection.h"
#include "core/grids/valuesAt.h"
#include "core/project/cancel.h"
#include "core/project/catalog.h"
#include "datainterface/DataAPI.h"

namespace meridor {
namespace {

struct Options {
    QString project;
    ObjectChoice choice;
    int realization = 1;
};

void run(Options options, const Context &context)
{
    Session session(context.session, context.user);
    session.loadPacked(options.project);
    const int dataset = findDataset(options.choice.dataset);
    const int geography = VORN_GetGeographyId(dataset);
    options.choice.realization = realizationIndex(dataset, options.realization);
    const qint64 time = chooseTime(dataset, options.choice.at, options.choice.realization);
    const QStringList names = objectNames(geography, time);
    QJsonArray objects;
    QVector<QPair<QString, TextTable::Align>> columns{{QStringLiteral("object"), TextTable::Left}};
    if (!names.isEmpty())
        columns.append({QStringLiteral("name"), TextTable::Left});
    columns.append({QStringLiteral("value"), TextTable::Right});
    TextTable table(columns);
    const QVector<int> chosen = chosenObjects(geography, options.choice);
    const QStringList keys = objectKeys(geography, chosen);
    for (int i = 0; i < chosen.size(); ++i) {
        stopIfCancelled();
        const int object = chosen[i];
        const auto value =
            valueOf(dataset, options.choice.realization, static_cast<unsigned int>(object), time);
        if (context.console.json) {
            QJsonObject entry{{QStringLiteral("object"), keys[i]},
                              {QStringLiteral("value"), value ? jsonValue(*value) : QJsonValue()}};
            if (!names.isEmpty())
                entry.insert(QStringLiteral("name"), names[object]);
            objects.append(entry);
            continue;
        }
        QStringList cells{keys[i]};
        if (!names.isEmpty())
            cells.append(names[object]);
        table.add(cells << (value ? textOf(*value) : QString()));
    }
    if (context.console.json)
        context.console.print(QJsonObject{{QStringLiteral("dataset"), datasetName(dataset)},
                                          {QStringLiteral("time"), axisOf(geography).show(time)},
                                          {QStringLiteral("objects"), objects}});
    else
        table.print(context.console);
}

} // namespace

void addSelect(const Command &app, Context &context)
{
    auto options = std::make_shared<Options>();
    const Command command = app.verb("select", "List the objects with given values, or in a range");
    projectArgument(command, options->project);
    datasetArgument(command, options->choice.dataset);
    valueOptions(command, options->choice);
    realizationOption(command, options->realization);
    command.footer("Example:\n  meridor select income.vorn income --min 40000 --at 2009");
    command.chosen(
        [options, &context] { context.run = [options](const Context &c) { run(*options, c); }; });
}

} // namespace meridor
