// SPDX-License-Identifier: MIT
#include "core/geostatistics/krigeDataset.h"
#include "core/geostatistics/samples.h"
#include "core/project/catalog.h"
#include "core/project/failure.h"
#include "core/project/text.h"
#include "desk/methods/fields.h"
#include "desk/methods/method.h"

namespace meridor {
namespace {

void execute(Workspace &, const MethodArguments &arguments, MethodReport &report,
             const Progress &progress)
{
    KrigeRequest request;
    request.dataset = chosen(arguments, "dataset");
    request.target = chosen(arguments, "to");
    request.times = sampleTimes(request.dataset, {});
    request.model = arguments.text(QStringLiteral("model"));
    request.plan.neighborhood.most = arguments.whole(QStringLiteral("neighbors"));
    request.plan.degree = arguments.whole(QStringLiteral("drift"));
    request.block = arguments.whole(QStringLiteral("block"));
    request.name = arguments.text(QStringLiteral("into"));
    requireNewDatasetName(request.target, request.name);
    const Kriged found = krigeDataset(request, progress);
    const KrigedAt &last = found.times.last();
    report.text = methodText("%1: %2 from %3, mean variance %4")
                      .arg(request.name,
                           counted(last.predictions, methodText("%1 prediction"),
                                   methodText("%1 predictions")),
                           counted(last.samples, methodText("%1 value"), methodText("%1 values")),
                           QString::number(last.meanVariance, 'g', 6));
    if (last.missing > 0)
        report.text += methodText("; missing: %1").arg(last.missing);
    report.results.append({QStringLiteral("dataset"), found.prediction});
    report.results.append({QStringLiteral("dataset"), found.variance});
}

QStringList commandLine(Workspace &workspace, const MethodArguments &arguments)
{
    QStringList line{QStringLiteral("krige"), workspace.commandPath(),
                     datasetWord(arguments.id(QStringLiteral("dataset"))), QStringLiteral("--to"),
                     geographyName(arguments.id(QStringLiteral("to")))};
    addOptions(line, arguments, {"model", "into", "neighbors"});
    for (const char *const name : {"drift", "block"})
        if (arguments.whole(QLatin1String(name)) > 0)
            addOptions(line, arguments, {name});
    return line;
}

} // namespace

Method krigeMethod()
{
    return {QStringLiteral("krige"),
            methodText("Kriging"),
            QStringLiteral("geostatistics.md"),
            {thing("dataset", methodText("Dataset"), MethodField::Numbers),
             thing("model", methodText("Variogram model"), MethodField::Model, "dataset"),
             thing("to", methodText("Predict at"), MethodField::Geography),
             whole("neighbors", methodText("Nearest values; 0: all"), 20, 0, 6000),
             whole("drift", methodText("Degree of the drift"), 0, 0, 2),
             whole("block", methodText("Points along a side of a block; 0: no blocks"), 0, 0, 100),
             text("into", methodText("Name of the prediction"))},
            execute,
            commandLine,
            [](const MethodArguments &) { return true; }};
}

} // namespace meridor
