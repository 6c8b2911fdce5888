// SPDX-License-Identifier: MIT
#include "core/analysis/moranOverTime.h"
#include "core/project/catalog.h"
#include "core/project/failure.h"
#include "core/project/text.h"
#include "datainterface/DataAPI.h"
#include "desk/methods/fields.h"
#include "desk/methods/method.h"

namespace meridor {
namespace {

MoranPlan planOf(const MethodArguments &arguments)
{
    MoranPlan plan;
    plan.dataset = chosen(arguments, "dataset");
    plan.weightSet = chosen(arguments, "weights");
    plan.times = shapeTimesAt(plan.dataset, {});
    plan.permutations = arguments.whole(QStringLiteral("permutations"));
    plan.seed = arguments.whole(QStringLiteral("seed"));
    plan.local = arguments.flag(QStringLiteral("local"));
    plan.correction = arguments.text(QStringLiteral("correction"));
    plan.alpha = arguments.number(QStringLiteral("alpha"));
    return plan;
}

/// "3 high-high, 45 not significant"
QString clustersOf(const MoranAt &result)
{
    QMap<QString, int> counts;
    for (int i = 0; i < result.objects.size(); ++i)
        ++counts[clusterName(result, i)];
    QStringList texts;
    for (auto each = counts.begin(); each != counts.end(); ++each)
        texts.append(QStringLiteral("%1 %2").arg(each.value()).arg(each.key()));
    return texts.join(QStringLiteral(", "));
}

void execute(Workspace &, const MethodArguments &arguments, MethodReport &report,
             const Progress &progress)
{
    const MoranPlan plan = planOf(arguments);
    const QVector<MoranAt> results = moranOverTime(plan, progress);
    if (results.isEmpty())
        fail(methodText("the dataset has no values"));
    const QString saved = arguments.text(QStringLiteral("save"));
    if (!saved.isEmpty())
        for (const int id : storeMoran(plan, results, saved))
            report.results.append({QStringLiteral("dataset"), id});
    const MoranAt &last = results.last();
    report.text =
        methodText("Moran's I of %1 at %2: %3, p %4, %5")
            .arg(datasetName(plan.dataset),
                 axisOf(VORN_GetGeographyId(plan.dataset)).show(last.when),
                 QString::number(last.whole.value, 'g', 6), QString::number(last.whole.p, 'g', 4),
                 counted(last.objects.size(), methodText("%1 object"), methodText("%1 objects")));
    if (plan.local)
        report.text += QStringLiteral("; ") + clustersOf(last);
    report.results.append({QStringLiteral("I"), last.whole.value});
    report.results.append({QStringLiteral("p"), last.whole.p});
}

QStringList commandLine(Workspace &workspace, const MethodArguments &arguments)
{
    QStringList line{QStringLiteral("moran"), workspace.commandPath(),
                     datasetWord(arguments.id(QStringLiteral("dataset"))),
                     weightSetWord(arguments.id(QStringLiteral("weights")))};
    addOptions(line, arguments, {"permutations", "seed"});
    if (arguments.flag(QStringLiteral("local"))) {
        line << QStringLiteral("--local");
        addOptions(line, arguments, {"correction", "alpha"});
    }
    addOptions(line, arguments, {"save"});
    return line;
}

} // namespace

Method moranMethod()
{
    return {QStringLiteral("moran"),
            methodText("Moran's I"),
            QStringLiteral("meridor.md#moran"),
            {thing("dataset", methodText("Dataset"), MethodField::Numbers),
             thing("weights", methodText("Weight set"), MethodField::WeightSet, "dataset"),
             whole("permutations", methodText("Permutations"), 999, 0, 1000000),
             whole("seed", methodText("Seed"), 1, 0, 2147483647),
             flag("local", methodText("Of each object, with clusters")),
             onlyWith("local", {"true"},
                      choice("correction", methodText("Correction of local tests"),
                             {"none", "bonferroni", "holm", "simes", "fdr", "jef"})),
             onlyWith("local", {"true"},
                      number("alpha", methodText("Level of local tests"), 0.05, 0, 1)),
             text("save", methodText("Name of the results"),
                  methodText("Empty: the results are told, not kept"))},
            execute,
            commandLine,
            [](const MethodArguments &arguments) {
                return !arguments.text(QStringLiteral("save")).isEmpty();
            }};
}

} // namespace meridor
