// SPDX-License-Identifier: MIT
// The verbs "weights create", "list", "show" and "remove".
#include <QHash>
#include <QJsonArray>
#include <QJsonObject>
#include <memory>
#include "cli/commands/projectEdit.h"
#include "cli/commands/weightsFiles.h"
#include "core/analysis/describe.h"
#include "core/analysis/distanceSets.h"
#include "core/analysis/weightSets.h"
#include "core/project/catalog.h"
#include "core/project/failure.h"
#include "datainterface/MGeoData.h"

namespace meridor {
namespace {

struct Options {
    EditTarget target;
    QString geography;
    QStringList sets;
    QStringList at;
    WeightSetPlan plan;
    QVector<QPair<const char *, Setting>> settings; ///< that only some methods and weights have
};

void print(const QJsonObject &set, const Console &console)
{
    if (console.json) {
        console.print(set);
        return;
    }
    const auto text = [&set](const char *key) { return set.value(QLatin1String(key)).toString(); };
    console.print(
        QStringLiteral("%1 of %2: %3").arg(text("name"), text("geography"), text("definition")));
    if (!text("information").isEmpty())
        console.print(text("information"));
    TextTable table({{QStringLiteral("time"), TextTable::Left},
                     {QStringLiteral("objects"), TextTable::Right},
                     {QStringLiteral("links"), TextTable::Right},
                     {QStringLiteral("least"), TextTable::Right},
                     {QStringLiteral("most"), TextTable::Right},
                     {QStringLiteral("mean"), TextTable::Right},
                     {QStringLiteral("islands"), TextTable::Left}});
    const QJsonArray times = set.value(QStringLiteral("times")).toArray();
    for (const QJsonValue &value : times) {
        const QJsonObject row = value.toObject();
        const auto number = [&row](const char *key) {
            return QString::number(row.value(QLatin1String(key)).toDouble(), 'f', 0);
        };
        QStringList islands;
        for (const QJsonValue &island : row.value(QStringLiteral("islands")).toArray())
            islands.append(island.toString());
        table.add({row.value(QStringLiteral("time")).toString(), number("objects"), number("links"),
                   number("least"), number("most"),
                   shortNumber(row.value(QStringLiteral("mean")).toDouble()),
                   islands.isEmpty() ? QStringLiteral("-") : someOf(islands)});
    }
    if (!times.isEmpty())
        table.print(console);
}

/// Options without meaning for the method or the weights are wrong usage.
void refuseUnused(const Options &options)
{
    const QString &method = options.plan.method;
    const bool byBorder = method == QLatin1String("queen") || method == QLatin1String("rook");
    const bool inverse = options.plan.weights == QLatin1String("inverse");
    const QHash<QString, bool> used{{QStringLiteral("order"), byBorder},
                                    {QStringLiteral("count"), method == QLatin1String("nearest")},
                                    {QStringLiteral("range"), method == QLatin1String("range")},
                                    {QStringLiteral("great-circle"), !byBorder},
                                    {QStringLiteral("numerator"), inverse},
                                    {QStringLiteral("power"), inverse}};
    for (const auto &[name, setting] : options.settings) {
        const bool ofWeights = qstrcmp(name, "numerator") == 0 || qstrcmp(name, "power") == 0;
        if (setting.isGiven() && !used[QLatin1String(name)])
            failUsage(QStringLiteral("--%1 does not apply to --%2 %3")
                          .arg(QLatin1String(name),
                               ofWeights ? QStringLiteral("weights") : QStringLiteral("method"),
                               ofWeights ? options.plan.weights : method));
    }
}

void create(const Options &options, const Context &context)
{
    refuseUnused(options);
    QJsonObject result;
    editProject(options.target, context, [&](Session &) {
        const int geography = findGeography(options.geography);
        const bool byDistance = options.plan.method == QLatin1String("nearest")
                                || options.plan.method == QLatin1String("range");
        if (byDistance && !options.plan.greatCircle && isInDegrees(geography))
            context.console.note(
                QStringLiteral("distances are in degrees; --great-circle gives kilometres"));
        const int set = createWeightSet(geography, options.plan);
        const QJsonArray times =
            options.at.isEmpty() ? QJsonArray() : describeLinks(set, options.at);
        result = describeWeightSet(set);
        result.insert(QStringLiteral("times"), times);
    });
    print(result, context.console);
}

void list(const Options &options, const Context &context)
{
    Session session(context.session, context.user);
    session.loadPacked(options.target.project);
    QJsonArray sets;
    TextTable table({{QStringLiteral("set"), TextTable::Left},
                     {QStringLiteral("geography"), TextTable::Left},
                     {QStringLiteral("neighbours"), TextTable::Left},
                     {QStringLiteral("times stored"), TextTable::Right}});
    for (const int geography : geographyIds()) {
        for (const int id : geographyOf(geography)->GetSpatialWeightsIds()) {
            const AdjacencySet &set = weightSetOf(id);
            sets.append(describeWeightSet(id));
            table.add({set.GetName(), geographyName(geography), describe(set),
                       QString::number(set.GetAdjacencyTimes().size())});
        }
    }
    if (context.console.json)
        context.console.print(QJsonObject{{QStringLiteral("sets"), sets}});
    else if (sets.isEmpty())
        context.console.print(QStringLiteral("no weight set"));
    else
        table.print(context.console);
}

void show(const Options &options, const Context &context)
{
    Session session(context.session, context.user);
    session.loadPacked(options.target.project);
    const int set = findWeightSet(options.sets.first());
    QJsonObject result = describeWeightSet(set);
    result.insert(QStringLiteral("times"), describeLinks(set, options.at));
    print(result, context.console);
}

void remove(const Options &options, const Context &context)
{
    editProject(options.target, context, [&options](Session &) {
        QVector<int> ids;
        for (const QString &name : options.sets)
            ids.append(findWeightSet(name));
        for (const int id : ids)
            geographyOf(id >> 16)->RemoveSpatialWeightSet(id);
    });
    if (context.console.json)
        context.console.print(
            QJsonObject{{QStringLiteral("project"), options.target.file()},
                        {QStringLiteral("removed"), QJsonArray::fromStringList(options.sets)}});
    else
        context.console.print(
            QStringLiteral("%1: removed %2")
                .arg(options.target.file(), options.sets.join(QStringLiteral(", "))));
}

void addMethod(const Command &command, Options &options)
{
    WeightSetPlan &plan = options.plan;
    const auto limited = [&options](const char *name, const Setting &setting) {
        options.settings.append({name, setting});
        return setting;
    };
    plan.method = QStringLiteral("queen");
    plan.weights = QStringLiteral("row");
    command
        .text("--method", plan.method,
              "queen or rook (polygons and grids), nearest (points and polygons, by their "
              "centroids) or range (also grids)")
        .shown("queen")
        .oneOf({"queen", "rook", "nearest", "range"});
    limited("order", command.number("--order", plan.order, "Steps of contiguity between polygons"))
        .shown()
        .range(1, 1000);
    limited("count", command.number("--count", plan.count,
                                    "Number of nearest neighbours; more if there are ties"))
        .shown()
        .range(1, 1000000);
    limited("range", command.number("--range", plan.range,
                                    "Distance, in map units; in kilometres with --great-circle"));
    limited("great-circle", command.flag("--great-circle", plan.greatCircle,
                                         "Kilometres along geodesics, for maps in degrees"));
    command
        .text("--weights", plan.weights,
              "constant, row (sum to 1), rank or inverse (of distances), border or border-share")
        .shown("row")
        .oneOf({"constant", "row", "rank", "inverse", "border", "border-share"});
    limited("numerator",
            command.number("--numerator", plan.numerator, "Numerator of inverse distances"))
        .shown();
    limited("power", command.number("--power", plan.power, "Power of inverse distances")).shown();
    command.flag("--ego", plan.includeEgo, "Make each object a neighbour of itself");
    command.text("--information", plan.information, "Description of the set");
}

using Run = void (*)(const Options &, const Context &);

Command addVerb(const Command &weights, const char *name, const char *help,
                const std::shared_ptr<Options> &options, Context &context, Run run)
{
    const Command command = weights.verb(name, help);
    projectArgument(command, options->target.project);
    command.chosen([options, run, &context] {
        context.run = [options, run](const Context &c) { run(*options, c); };
    });
    return command;
}

void addCreate(const Command &weights, Context &context)
{
    auto options = std::make_shared<Options>();
    const Command command =
        addVerb(weights, "create", "Define who is whose neighbour", options, context, &create);
    command.text("NAME", options->plan.name, "The set's name").required();
    command.text("--geography", options->geography, "The geography, if there are several");
    addMethod(command, *options);
    command.texts("--at", options->at, "Calculate and store the lists of this time; repeatable");
    targetOptions(command, options->target, context);
    command.footer("Example:\n  meridor weights create income.vorn queen --method queen --at 2009");
}

void addList(const Command &weights, Context &context)
{
    auto options = std::make_shared<Options>();
    addVerb(weights, "list", "Name the sets of a project", options, context, &list)
        .footer("Example:\n  meridor weights list income.vorn");
}

void addShow(const Command &weights, Context &context)
{
    auto options = std::make_shared<Options>();
    const Command command =
        addVerb(weights, "show", "Tell a set's definition and how many links it has", options,
                context, &show);
    command.texts("SET", options->sets, "The set, as SET or GEOGRAPHY/SET").required().values(1, 1);
    command.texts("--at", options->at, "The time (default: the last); repeatable");
    command.footer("Example:\n  meridor weights show income.vorn queen --at 1929 --at 2009");
}

void addRemoveSets(const Command &weights, Context &context)
{
    auto options = std::make_shared<Options>();
    const Command command = addVerb(weights, "remove", "Remove sets", options, context, &remove);
    command.texts("SET", options->sets, "The sets").required().values(1, 1000);
    targetOptions(command, options->target, context);
    command.footer("Example:\n  meridor weights remove income.vorn queen");
}

} // namespace

void addWeights(const Command &app, Context &context)
{
    const Command weights =
        app.verb("weights", "Spatial weights: lists of neighbours and their weights");
    weights.needsVerb();
    weights.footer("Example:\n  meridor weights create income.vorn queen --method queen");
    addCreate(weights, context);
    addList(weights, context);
    addShow(weights, context);
    addRemoveSets(weights, context);
    addWeightsExport(weights, context);
    addWeightsImport(weights, context);
}

} // namespace meridor
