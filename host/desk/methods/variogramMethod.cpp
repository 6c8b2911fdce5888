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
    const QString at = arguments.text(QStringLiteral("at"));
    plan.times = shapeTimesAt(plan.dataset, at.isEmpty() ? QStringList() : QStringList{at});
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
    if (const QString given = arguments.text(QStringLiteral("structures")); !given.isEmpty())
        plan.given = parseStructures(given);
    completeDirections(plan);
    return plan;
}

namespace {

/// Stores a model that belongs to no dataset.
void storeForProject(const MethodArguments &arguments, MethodReport &report)
{
    const VariogramModelAtT model = parseStructures(arguments.text(QStringLiteral("structures")));
    const QString name = arguments.text(QStringLiteral("save"));
    storeModel(projectModel(name, model), arguments.flag(QStringLiteral("replace")));
    report.text = methodText("Model %1: %2").arg(name, structuresText(model));
    report.results.append({QStringLiteral("model"), structuresText(model)});
}

bool isOfProject(const MethodArguments &arguments)
{
    return arguments.id(QStringLiteral("dataset")) < 0
           && !arguments.text(QStringLiteral("structures")).isEmpty();
}

void execute(Workspace &, const MethodArguments &arguments, MethodReport &report,
             const Progress &progress)
{
    if (isOfProject(arguments)) {
        storeForProject(arguments, report);
        return;
    }
    const VariogramPlan plan = variogramPlanOf(arguments);
    const QVector<VariogramAt> found = variogramsOf(plan, progress.part(0, 100));
    if (found.isEmpty() || !found.last().fitted)
        fail(methodText("no model could be fitted"));
    const QString name = arguments.text(QStringLiteral("save"));
    if (!name.isEmpty())
        storeModel(modelOf(plan, found, name), arguments.flag(QStringLiteral("replace")));
    const FittedModel &last = *found.last().fitted;
    report.text =
        methodText("Model of %1: %2").arg(datasetName(plan.dataset), structuresText(last.model));
    if (!last.remark.isEmpty())
        report.text += QStringLiteral("; ") + last.remark;
    report.results.append({QStringLiteral("model"), structuresText(last.model)});
}

QStringList commandLine(Workspace &workspace, const MethodArguments &arguments)
{
    QStringList line{QStringLiteral("variogram"), workspace.commandPath()};
    const QString given = arguments.text(QStringLiteral("structures"));
    for (const QString &structure : given.split(QLatin1Char(','), Qt::SkipEmptyParts))
        line << QStringLiteral("--structure") << structure.trimmed();
    if (isOfProject(arguments)) {
        addOptions(line, arguments, {"save"});
        if (arguments.flag(QStringLiteral("replace")))
            line << QStringLiteral("--replace");
        return line;
    }
    line.insert(2, datasetWord(arguments.id(QStringLiteral("dataset"))));
    if (given.isEmpty())
        addOptions(line, arguments, {"model"});
    addOptions(line, arguments, {"estimator", "at"});
    for (const char *const name : {"cutoff", "width"})
        if (arguments.number(QLatin1String(name)) > 0)
            addOptions(line, arguments, {name});
    addOptions(line, arguments, {"save"});
    const bool isSaved = !arguments.text(QStringLiteral("save")).isEmpty();
    for (const char *const name : {"pooled", "scores", "replace"})
        if (arguments.flag(QLatin1String(name)) && (isSaved || qstrcmp(name, "replace") != 0))
            line << QLatin1String("--") + QLatin1String(name);
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
                {"auto", "spherical", "exponential", "gaussian", "power", "cubic", "nugget"}),
         text("structures", methodText("Structures in place of a fit"),
              methodText("Such as nugget:0.1,spherical:0.9:300")),
         maybe(thing("at", methodText("Time"), MethodField::Time, "dataset")),
         choice("estimator", methodText("Estimator"), {"classical", "robust"}),
         number("cutoff", methodText("Largest separation; 0: a third of the diagonal"), 0, 0, 1e18),
         number("width", methodText("Width of a class; 0: a fifteenth of that"), 0, 0, 1e18),
         onlyWith("at", {QString()},
                  flag("pooled", methodText("One model of the pairs of all times"))),
         flag("scores", methodText("Of normal scores, for simulation")),
         text("save", methodText("Name of the model"),
              methodText("Empty: the model is told, not kept")),
         flag("replace", methodText("Replace a model of this name"))},
        execute,
        commandLine,
        [](const MethodArguments &arguments) {
            return !arguments.text(QStringLiteral("save")).isEmpty();
        }};
}

} // namespace meridor
