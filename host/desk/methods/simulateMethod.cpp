// SPDX-License-Identifier: MIT
#include "core/geostatistics/samples.h"
#include "core/geostatistics/simulateDataset.h"
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
    SimulateRequest request;
    request.dataset = chosen(arguments, "dataset");
    request.grid = chosen(arguments, "to");
    request.when = sampleTime(request.dataset, QString());
    request.model = arguments.text(QStringLiteral("model"));
    request.count = arguments.whole(QStringLiteral("realizations"));
    request.neighbors = arguments.whole(QStringLiteral("neighbors"));
    request.seed = arguments.whole(QStringLiteral("seed"));
    request.name = arguments.text(QStringLiteral("into"));
    requireNewDatasetName(request.grid, request.name);
    const Simulated found = simulateDataset(request, progress);
    report.text = methodText("%1: %2 from %3, model %4")
                      .arg(request.name,
                           counted(request.count, methodText("%1 realization"),
                                   methodText("%1 realizations")),
                           counted(found.samples, methodText("%1 value"), methodText("%1 values")),
                           found.structures);
    report.results.append({QStringLiteral("dataset"), found.dataset});
}

QStringList commandLine(Workspace &workspace, const MethodArguments &arguments)
{
    QStringList line{QStringLiteral("simulate"), workspace.commandPath(),
                     datasetWord(arguments.id(QStringLiteral("dataset"))), QStringLiteral("--to"),
                     geographyName(arguments.id(QStringLiteral("to")))};
    addOptions(line, arguments, {"model", "into", "realizations", "neighbors", "seed"});
    return line;
}

} // namespace

Method simulateMethod()
{
    return {QStringLiteral("simulate"),
            methodText("Simulation"),
            QStringLiteral("geostatistics.md"),
            {thing("dataset", methodText("Dataset"), MethodField::Numbers),
             maybe(thing("model", methodText("Model of normal scores; none: the best"),
                         MethodField::Model, "dataset")),
             thing("to", methodText("Grid"), MethodField::Geography),
             whole("realizations", methodText("Realizations"), 10, 1, 100000),
             whole("neighbors", methodText("Nearest values and cells"), 20, 1, 1000),
             whole("seed", methodText("Seed"), 1, 0, 2147483647),
             text("into", methodText("Name of the realizations"))},
            execute,
            commandLine,
            [](const MethodArguments &) { return true; }};
}

} // namespace meridor
