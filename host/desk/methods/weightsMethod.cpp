// SPDX-License-Identifier: MIT
#include "core/analysis/distanceSets.h"
#include "core/analysis/weightSets.h"
#include "core/project/catalog.h"
#include "core/project/failure.h"
#include "core/project/text.h"
#include "datainterface/VORN_Progress.h"
#include "desk/methods/fields.h"
#include "desk/methods/method.h"
#include "desk/project/importLine.h"

namespace meridor {
namespace {

WeightSetPlan planOf(const MethodArguments &arguments)
{
    WeightSetPlan plan;
    plan.name = arguments.text(QStringLiteral("name"));
    plan.method = arguments.text(QStringLiteral("method"));
    plan.weights = arguments.text(QStringLiteral("weights"));
    plan.order = arguments.whole(QStringLiteral("order"));
    plan.count = arguments.whole(QStringLiteral("count"));
    plan.range = arguments.number(QStringLiteral("range"));
    plan.greatCircle = arguments.flag(QStringLiteral("great-circle"));
    return plan;
}

bool isByBorder(const WeightSetPlan &plan)
{
    return plan.method == QLatin1String("queen") || plan.method == QLatin1String("rook");
}

void execute(Workspace &workspace, const MethodArguments &arguments, MethodReport &report,
             const Progress &)
{
    const int geography = chosen(arguments, "geography");
    const WeightSetPlan plan = planOf(arguments);
    if (plan.name.isEmpty())
        fail(methodText("a weight set needs a name"));
    VORN_Progress::Close(); // a set by distances opens the bar itself
    const int set = createWeightSet(geography, plan);
    const LinkSummary links = summarize(set, workspace.timeOf(geography));
    workspace.setShownWeights(geography, set);
    report.text =
        methodText("%1: %2, %3, %4 to %5 each, %6 without neighbours")
            .arg(plan.name,
                 counted(links.objects, methodText("%1 object"), methodText("%1 objects")),
                 counted(links.links, methodText("%1 link"), methodText("%1 links")),
                 QString::number(links.least), QString::number(links.most),
                 QString::number(links.islands.size()));
    if (!isByBorder(plan) && !plan.greatCircle && isInDegrees(geography))
        report.text += methodText("; distances are in degrees");
    report.results.append({QStringLiteral("weights"), set});
    report.results.append({QStringLiteral("links"), links.links});
}

QStringList commandLine(Workspace &workspace, const MethodArguments &arguments)
{
    const WeightSetPlan plan = planOf(arguments);
    QStringList line = optionWords(QStringLiteral("--geography"),
                                   geographyName(arguments.id(QStringLiteral("geography"))));
    addOptions(line, arguments, {"method", "weights"});
    if (isByBorder(plan))
        addOptions(line, arguments, {"order"});
    else if (plan.method == QLatin1String("nearest"))
        addOptions(line, arguments, {"count"});
    else
        addOptions(line, arguments, {"range"});
    if (plan.greatCircle && !isByBorder(plan))
        line << QStringLiteral("--great-circle");
    return commandWords({QStringLiteral("weights"), QStringLiteral("create")},
                        {workspace.commandPath(), plan.name}, line);
}

} // namespace

Method weightsMethod()
{
    MethodField weights = choice("weights", methodText("Weights"), {"row"});
    weights.choices = weightNames();
    return {
        QStringLiteral("weights"),
        methodText("New weight set"),
        QStringLiteral("meridor.md#weights"),
        {thing("geography", methodText("Geography"), MethodField::Geography),
         text("name", methodText("Name")),
         choice("method", methodText("Neighbours"), {"queen", "rook", "nearest", "range"}),
         onlyWith("method", {"queen", "rook"},
                  whole("order", methodText("Steps of contiguity"), 1, 1, 100)),
         onlyWith("method", {"nearest"},
                  whole("count", methodText("Nearest objects"), 5, 1, 1000000)),
         onlyWith("method", {"range"}, number("range", methodText("Largest distance"), 0, 0, 1e18)),
         onlyWith("method", {"nearest", "range"},
                  flag("great-circle", methodText("Distances on the earth, in kilometres"))),
         weights},
        execute,
        commandLine,
        [](const MethodArguments &) { return true; }};
}

} // namespace meridor
