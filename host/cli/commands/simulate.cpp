// SPDX-License-Identifier: MIT
#include <QJsonObject>
#include <QRandomGenerator>
#include <cmath>
#include <limits>
#include <memory>
#include "cli/commands/gridChoice.h"
#include "cli/commands/projectEdit.h"
#include "core/geostatistics/samples.h"
#include "core/geostatistics/simulateDataset.h"
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
    GridChoice grid;
    QString into;
    QString model;
    QString at;
    bool unconditional = false;
    bool raw = false;
    int realization = 1;
    double mean = std::numeric_limits<double>::quiet_NaN();
    int count = 1;
    int neighbors = 20;
    double radius = 0;
    int seed = 1;
};

SimulateRequest requestOf(const Options &options)
{
    SimulateRequest request;
    const int like = options.dataset.isEmpty() ? -1 : findDataset(options.dataset);
    if (options.unconditional != (like < 0))
        failUsage(QStringLiteral("a simulation has either a dataset or --unconditional"));
    if (like < 0 && options.grid.to.isEmpty())
        failUsage(QStringLiteral("an unconditional simulation needs an existing grid"), "to");
    request.dataset = like;
    if (like >= 0) {
        request.realization = realizationIndex(like, options.realization);
        request.when = sampleTime(like, options.at, request.realization);
    }
    request.grid = options.grid.find(like);
    request.name = options.into;
    request.model = options.model;
    request.scores = !options.raw && like >= 0;
    if (!std::isnan(options.mean)) {
        if (request.scores)
            failUsage(QStringLiteral("normal scores have the mean 0"), "raw");
        request.mean = options.mean;
    }
    request.count = options.count;
    request.neighbors = options.neighbors;
    if (options.radius > 0)
        request.radius = options.radius;
    request.seed = options.seed;
    return request;
}

void run(const Options &options, const Context &context)
{
    editAndTell(options.target, context, [&]() -> Tell {
        const SimulateRequest request = requestOf(options);
        Simulated found;
        {
            const Progress progress("Simulation", "Finding neighbours...");
            found = simulateDataset(request, progress);
        }
        const Console &console = context.console;
        return [=, &console] {
            if (request.dataset >= 0)
                noteDegrees(VORN_GetGeographyId(request.dataset), console);
            if (found.apart)
                console.note(QString::fromLatin1(kApart));
            if (found.merged > 0)
                console.note(QStringLiteral("%1 at the place of another; their mean is used")
                                 .arg(counted(found.merged, "sample")));
            if (request.scores && std::fabs(found.scale - 1) > 1e-9)
                console.note(
                    QStringLiteral("the sills of the model were multiplied by %1, since normal "
                                   "scores have the variance 1")
                        .arg(shortNumber(found.scale, 6)));
            if (console.json)
                console.print(QJsonObject{{QStringLiteral("dataset"), datasetName(found.dataset)},
                                          {QStringLiteral("grid"), geographyName(request.grid)},
                                          {QStringLiteral("realizations"), request.count},
                                          {QStringLiteral("samples"), found.samples},
                                          {QStringLiteral("scores"), request.scores},
                                          {QStringLiteral("model"), found.structures},
                                          {QStringLiteral("seed"), request.seed}});
            else
                console.print(QStringLiteral("%1: %2 from %3, model %4, seed %5")
                                  .arg(datasetName(found.dataset))
                                  .arg(counted(request.count, "realization"))
                                  .arg(counted(found.samples, "value"))
                                  .arg(found.structures)
                                  .arg(request.seed));
        };
    });
}

} // namespace

void addSimulate(const Command &app, Context &context)
{
    auto options = std::make_shared<Options>();
    options->seed = QRandomGenerator::system()->bounded(1, std::numeric_limits<int>::max());
    const Command command = app.verb(
        "simulate", "Draw realizations of a dataset on a grid (sequential Gaussian simulation)");
    projectArgument(command, options->target.project);
    command.text("DATASET", options->dataset,
                 "The dataset, as DATASET or GEOGRAPHY/DATASET; none with --unconditional");
    options->grid.declare(command);
    command.text("--into", options->into, "Name of the dataset of realizations").required();
    command.text("--model", options->model,
                 "A variogram model of the project, or structures such as "
                 "nugget:0.1,spherical:0.9:300 (default: the best fit)");
    command.text("--at", options->at, "The time (default: the last)");
    command.flag("--unconditional", options->unconditional, "Without values");
    command.flag("--raw", options->raw, "Simulate the values themselves, not their normal scores");
    realizationOption(command, options->realization);
    command.number("--mean", options->mean,
                   "Mean of the simulated values, with --raw or without "
                   "values (default: the mean of the values, else 0)");
    command.number("--realizations", options->count, "Number of realizations")
        .shown()
        .range(1, 100000);
    command.number("--neighbors", options->neighbors, "Values and cells that are used for a cell")
        .shown()
        .range(1, 1000);
    command
        .number("--radius", options->radius, "Largest distance of a neighbour (default: no limit)")
        .positive();
    command.number("--seed", options->seed, "Seed of the simulation (default: differs in each run)")
        .range(0, std::numeric_limits<int>::max());
    targetOptions(command, options->target, context);
    command.footer("Example:\n"
                   "  meridor simulate wells.vorn level --grid field --cell 50 --realizations 20 "
                   "--seed 1 --into simulated");
    command.chosen(
        [options, &context] { context.run = [options](const Context &c) { run(*options, c); }; });
}

} // namespace meridor
