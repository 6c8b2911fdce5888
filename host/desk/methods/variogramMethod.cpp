// SPDX-License-Identifier: MIT
#include "core/geostatistics/covariance.h"
#include "core/geostatistics/variogramModels.h"
#include "core/project/catalog.h"
#include "core/project/failure.h"
#include "desk/methods/fields.h"
#include "desk/methods/method.h"
#include "desk/methods/variogramPlan.h"

namespace meridor {
VariogramPlan variogramPlanOf(const MethodArguments &arguments)
{
    VariogramPlan plan;
    plan.dataset = chosen(arguments, "dataset");
    plan.times = dataTimes(plan.dataset);
    plan.pooled = arguments.flag(QStringLiteral("pooled"));
    plan.scores = arguments.flag(QStringLiteral("scores"));
    plan.lags.cutoff = arguments.number(QStringLiteral("cutoff"));
    plan.lags.width = arguments.number(QStringLiteral("width"));
    if (arguments.text(QStringLiteral("estimator")) == QLatin1String("robust"))
        plan.lags.estimator = Estimator::Robust;
    plan.fit.structures.clear();
    const QString model = arguments.text(QStringLiteral("model"));
    if (model != QLatin1String("auto"))
        plan.fit.structures.append(structureNamed(model));
    return plan;
}

namespace {

void execute(Workspace &, const MethodArguments &arguments, MethodReport &report,
             const Progress &progress)
{
    const VariogramPlan plan = variogramPlanOf(arguments);
    const QVector<VariogramAt> found = variogramsOf(plan, progress.part(0, 100));
    if (found.isEmpty() || !found.last().fitted)
        fail(methodText("no model could be fitted"));
    const QString name = arguments.text(QStringLiteral("save"));
    if (!name.isEmpty())
        storeModel(modelOf(plan, found, name));
    const FittedModel &last = *found.last().fitted;
    report.text =
        methodText("Model of %1: %2").arg(datasetName(plan.dataset), structuresText(last.model));
    if (!last.remark.isEmpty())
        report.text += QStringLiteral("; ") + last.remark;
    report.results.append({QStringLiteral("model"), structuresText(last.model)});
}

QStringList commandLine(Workspace &workspace, const MethodArguments &arguments)
{
    QStringList line{QStringLiteral("variogram"), workspace.commandPath(),
                     datasetWord(arguments.id(QStringLiteral("dataset")))};
    addOptions(line, arguments, {"model", "estimator"});
    for (const char *const name : {"cutoff", "width"})
        if (arguments.number(QLatin1String(name)) > 0)
            addOptions(line, arguments, {name});
    for (const char *const name : {"pooled", "scores"})
        if (arguments.flag(QLatin1String(name)))
            line << QLatin1String("--") + QLatin1String(name);
    addOptions(line, arguments, {"save"});
    return line;
}

} // namespace

Method variogramMethod()
{
    return {
        QStringLiteral("variogram"),
        methodText("Variogram model"),
        QStringLiteral("geostatistics.md"),
        {thing("dataset", methodText("Dataset"), MethodField::Numbers),
         choice("model", methodText("Model"),
                {"auto", "spherical", "exponential", "gaussian", "power"}),
         choice("estimator", methodText("Estimator"), {"classical", "robust"}),
         number("cutoff", methodText("Largest separation; 0: a third of the diagonal"), 0, 0, 1e18),
         number("width", methodText("Width of a class; 0: a fifteenth of that"), 0, 0, 1e18),
         flag("pooled", methodText("One model of the pairs of all times")),
         flag("scores", methodText("Of normal scores, for simulation")),
         text("save", methodText("Name of the model"),
              methodText("Empty: the model is told, not kept"))},
        execute,
        commandLine,
        [](const MethodArguments &arguments) {
            return !arguments.text(QStringLiteral("save")).isEmpty();
        }};
}

} // namespace meridor
