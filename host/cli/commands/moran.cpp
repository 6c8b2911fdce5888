// SPDX-License-Identifier: MIT
#include <QJsonArray>
#include <QJsonObject>
#include <QMap>
#include <QRandomGenerator>
#include <limits>
#include <memory>
#include "cli/commands/projectEdit.h"
#include "core/analysis/moranOverTime.h"
#include "core/analysis/weightSets.h"
#include "core/project/catalog.h"
#include "core/project/failure.h"
#include "core/project/text.h"
#include "datainterface/DataAPI.h"
#include "datainterface/GeographyAPI.h"

namespace meridor {
namespace {

struct Options {
    EditTarget target;
    QString dataset;
    QString set;
    QStringList at;
    int realization = 1;
    QString save; ///< empty: nothing is stored in the project
    QString islands;
    MoranPlan plan;
};

QJsonObject objectToJson(const MoranAt &result, int i, const QStringList &keys,
                         const QStringList &names)
{
    const auto at = static_cast<size_t>(i);
    QJsonObject object{{QStringLiteral("object"), keys[result.objects[i]]},
                       {QStringLiteral("I"), jsonNumber(result.local.values[at])},
                       {QStringLiteral("z"), jsonNumber(result.local.deviates[at])},
                       {QStringLiteral("p"), jsonNumber(result.local.p[at])},
                       {QStringLiteral("cluster"), clusterName(result, i)}};
    if (!names.isEmpty())
        object.insert(QStringLiteral("name"), names[result.objects[i]]);
    return object;
}

QJsonObject toJson(const MoranAt &result, const QString &when, const QStringList &keys,
                   const QStringList &names)
{
    QJsonArray islands;
    for (const int island : result.islands)
        islands.append(keys[island]);
    QJsonObject object{{QStringLiteral("time"), when},
                       {QStringLiteral("objects"), result.objects.size()},
                       {QStringLiteral("islands"), islands},
                       {QStringLiteral("I"), jsonNumber(result.whole.value)},
                       {QStringLiteral("expected"), jsonNumber(result.whole.expectation)},
                       {QStringLiteral("z"), jsonNumber(result.whole.deviate)},
                       {QStringLiteral("p"), jsonNumber(result.whole.p)}};
    if (result.local.values.empty())
        return object;
    QJsonArray local;
    for (int i = 0; i < result.objects.size(); ++i)
        local.append(objectToJson(result, i, keys, names));
    object.insert(QStringLiteral("local"), local);
    return object;
}

void printLocal(const QJsonObject &result, const Console &console)
{
    const QJsonArray rows = result.value(QStringLiteral("local")).toArray();
    const bool names = rows.first().toObject().contains(QStringLiteral("name"));
    QVector<QPair<QString, TextTable::Align>> columns{{QStringLiteral("object"), TextTable::Left}};
    if (names)
        columns.append({QStringLiteral("name"), TextTable::Left});
    columns += {{QStringLiteral("I"), TextTable::Right},
                {QStringLiteral("z"), TextTable::Right},
                {QStringLiteral("p"), TextTable::Right},
                {QStringLiteral("cluster"), TextTable::Left}};
    TextTable table(columns);
    const auto number = [](const QJsonValue &value) {
        return shortNumber(value.toDouble(std::numeric_limits<double>::quiet_NaN()), 4);
    };
    for (const QJsonValue &value : rows) {
        const QJsonObject row = value.toObject();
        QStringList cells{row.value(QStringLiteral("object")).toString()};
        if (names)
            cells.append(row.value(QStringLiteral("name")).toString());
        cells << number(row.value(QStringLiteral("I"))) << number(row.value(QStringLiteral("z")))
              << number(row.value(QStringLiteral("p")))
              << row.value(QStringLiteral("cluster")).toString();
        table.add(cells);
    }
    table.print(console);
}

/// A summary of the clusters: "5 high-high, 3 low-low".
QString clusters(const QJsonObject &result)
{
    QMap<QString, int> counts;
    for (const QJsonValue &value : result.value(QStringLiteral("local")).toArray())
        ++counts[value.toObject().value(QStringLiteral("cluster")).toString()];
    counts.remove(QStringLiteral("not significant"));
    QStringList texts;
    for (auto it = counts.begin(); it != counts.end(); ++it)
        texts.append(QStringLiteral("%1 %2").arg(it.value()).arg(it.key()));
    return texts.isEmpty() ? QStringLiteral("-") : texts.join(QStringLiteral(", "));
}

void print(const QJsonArray &results, const Options &options, const Console &console)
{
    const bool local = options.plan.local;
    QVector<QPair<QString, TextTable::Align>> columns{
        {QStringLiteral("time"), TextTable::Left}, {QStringLiteral("objects"), TextTable::Right},
        {QStringLiteral("I"), TextTable::Right},   {QStringLiteral("expected"), TextTable::Right},
        {QStringLiteral("z"), TextTable::Right},   {QStringLiteral("p"), TextTable::Right}};
    if (local)
        columns.append({QStringLiteral("clusters"), TextTable::Left});
    TextTable table(columns);
    for (const QJsonValue &value : results) {
        const QJsonObject row = value.toObject();
        QStringList cells{row.value(QStringLiteral("time")).toString(),
                          QString::number(row.value(QStringLiteral("objects")).toInt())};
        for (const char *name : {"I", "expected", "z", "p"})
            cells.append(shortNumber(
                row.value(QLatin1String(name)).toDouble(std::numeric_limits<double>::quiet_NaN()),
                6));
        if (local)
            cells.append(clusters(row));
        table.add(cells);
    }
    table.print(console);
    if (local && results.size() == 1)
        printLocal(results.first().toObject(), console);
    console.print(QStringLiteral("%1, seed %2")
                      .arg(counted(options.plan.permutations, "permutation"))
                      .arg(options.plan.seed));
}

/// Names the objects that have no neighbours at any of the times.
void tellIslands(const QVector<MoranAt> &results, const QStringList &keys, const Console &console)
{
    QStringList named;
    int times = 0;
    for (const MoranAt &result : results) {
        times += !result.islands.isEmpty();
        for (const int island : result.islands)
            if (!named.contains(keys[island]))
                named.append(keys[island]);
    }
    if (times > 0)
        console.note(QStringLiteral("objects without neighbours at %1 of %2: %3")
                         .arg(times)
                         .arg(counted(results.size(), "time"))
                         .arg(someOf(named)));
}

QJsonArray compute(const Options &options, MoranPlan plan, const Console &console)
{
    plan.dataset = findDataset(options.dataset);
    const int geography = VORN_GetGeographyId(plan.dataset);
    plan.weightSet = findWeightSet(options.set);
    if (plan.weightSet >> 16 != geography)
        fail(QStringLiteral("weight set %1 is of %2, %3 of %4")
                 .arg(options.set, geographyName(plan.weightSet >> 16), options.dataset,
                      geographyName(geography)));
    plan.realization = realizationIndex(plan.dataset, options.realization);
    plan.times = shapeTimesAt(plan.dataset, options.at, plan.realization);
    plan.islands = options.islands == QLatin1String("drop") ? Islands::Drop : Islands::Keep;
    QVector<MoranAt> found;
    {
        const Progress progress("Moran", "Permuting...");
        found = moranOverTime(plan, progress);
    }
    if (!options.save.isEmpty())
        storeMoran(plan, found, options.save);
    const TimeAxis axis = axisOf(geography);
    const bool always =
        datasetOf(plan.dataset)->IsStatic() && VORN_GetGeographyProperties(geography).isStatic;
    const QStringList keys = objectKeys(geography);
    tellIslands(found, keys, console);
    const QStringList names = plan.local ? objectNames(geography) : QStringList();
    QJsonArray results;
    for (const MoranAt &result : found)
        results.append(toJson(result, always ? QStringLiteral("always") : axis.show(result.when),
                              keys, names));
    return results;
}

void tell(const QJsonArray &results, const Options &options, const Console &console)
{
    if (console.json)
        console.print(QJsonObject{{QStringLiteral("dataset"), options.dataset},
                                  {QStringLiteral("weights"), options.set},
                                  {QStringLiteral("permutations"), options.plan.permutations},
                                  {QStringLiteral("seed"), options.plan.seed},
                                  {QStringLiteral("times"), results}});
    else
        print(results, options, console);
}

void run(const Options &options, const Context &context)
{
    editOrLook(!options.save.isEmpty(), "--save", options.target, context, [&]() -> Tell {
        const QJsonArray results = compute(options, options.plan, context.console);
        return [results, &options, &context] { tell(results, options, context.console); };
    });
}

void addTests(const Command &command, MoranPlan &plan, QString &islands)
{
    islands = QStringLiteral("keep");
    plan.correction = QStringLiteral("none");
    plan.seed = QRandomGenerator::system()->bounded(1, std::numeric_limits<int>::max());
    command.number("--permutations", plan.permutations, "Number of permutations; 0 for none")
        .shown()
        .range(0, 1000000);
    command.number("--seed", plan.seed, "Seed of the permutations (default: differs in each run)")
        .range(0, std::numeric_limits<int>::max());
    command.flag("--local", plan.local, "Also calculate the statistic of each object");
    command
        .text("--correction", plan.correction,
              "Correction of local tests: none, bonferroni, holm, simes, fdr or jef")
        .shown("none")
        .oneOf({"none", "bonferroni", "holm", "simes", "fdr", "jef"});
    command
        .text("--islands", islands,
              "keep: objects without neighbours count; drop: they do not, as in spdep")
        .shown("keep")
        .oneOf({"keep", "drop"});
    command.number("--alpha", plan.alpha, "Level of local tests").shown().range(0.0, 1.0);
}

} // namespace

void addMoran(const Command &app, Context &context)
{
    auto options = std::make_shared<Options>();
    const Command command =
        app.verb("moran", "Moran's I over time: the spatial autocorrelation of a dataset");
    projectArgument(command, options->target.project);
    datasetArgument(command, options->dataset);
    command.text("SET", options->set, "The weight set, as SET or GEOGRAPHY/SET").required();
    command.texts("--at", options->at, "A time, instead of all; repeatable");
    realizationOption(command, options->realization);
    addTests(command, options->plan, options->islands);
    command.text("--save", options->save, "Store the results as datasets of this name");
    targetOptions(command, options->target, context);
    command.footer("Example:\n  meridor moran income.vorn income queen --at 1929 --local --seed 1");
    command.chosen(
        [options, &context] { context.run = [options](const Context &c) { run(*options, c); }; });
}

} // namespace meridor
