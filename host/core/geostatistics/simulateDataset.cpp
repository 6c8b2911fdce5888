// SPDX-License-Identifier: MIT
#include "core/geostatistics/simulateDataset.h"
#include <cmath>
#include <numeric>
#include <optional>
#include "core/geostatistics/normalScores.h"
#include "core/geostatistics/storedValues.h"
#include "core/geostatistics/variogramModels.h"
#include "core/project/cancel.h"
#include "core/project/catalog.h"
#include "core/project/failure.h"

namespace meridor {
namespace {

constexpr int kMostRealizations = 100000;

/// The best model of the values or normal scores, without an anisotropy.
VariogramModelAtT fittedModel(const SimulateRequest &request)
{
    VariogramPlan plan;
    plan.dataset = request.dataset;
    plan.realization = request.realization;
    plan.times = {request.when};
    plan.scores = request.scores;
    plan.fit.structures.clear();
    const VariogramAt found = variogramsOf(plan, [](int) { stopIfCancelled(); }).first();
    if (!found.fitted->converged)
        fail(QStringLiteral("no model fits the values of %1: %2")
                 .arg(datasetName(request.dataset), found.fitted->remark),
             "model");
    return found.fitted->model;
}

VariogramModelAtT modelFor(const SimulateRequest &request)
{
    if (request.model.isEmpty()) {
        if (request.dataset < 0)
            failUsage(QStringLiteral("an unconditional simulation needs a model"), "model");
        return fittedModel(request);
    }
    if (request.model.contains(QLatin1Char(':')))
        return parseStructures(request.model);
    const VariogramModel model = findModel(request.dataset, request.model);
    const bool ofValues = !isOfScores(model) && model.dataset.isValid();
    if (request.scores && request.dataset >= 0 && ofValues)
        fail(QStringLiteral("the variogram model %1 is of values, not of normal scores")
                 .arg(model.name),
             "model");
    if (!request.scores && isOfScores(model))
        fail(QStringLiteral("the variogram model %1 is of normal scores, not of values")
                 .arg(model.name),
             "model");
    return structuresAt(model, instantOf(request.when));
}

/// Scales the sills to the sum 1. @return the factor.
double standardise(VariogramModelAtT &model)
{
    const Covariance covariance(model);
    if (!covariance.isBounded())
        return 1; // refused by the simulation
    const double factor = 1 / covariance.sill();
    for (VariogramBasicModel &structure : model.structures)
        structure.sill *= factor;
    return factor;
}

} // namespace

Simulated simulateDataset(const SimulateRequest &request, const Progress &progress)
{
    if (request.count < 1 || request.count > kMostRealizations)
        failUsage(QStringLiteral("a simulation has 1 to %1 realizations").arg(kMostRealizations),
                  "realizations");
    if (request.mean && !std::isfinite(*request.mean))
        failUsage(QStringLiteral("the mean is no number"), "mean");
    if (request.seed < 0)
        failUsage(QStringLiteral("a seed is 0 to 2147483647"), "seed");
    const SimulationGrid grid = gridOf(request.grid);
    Simulated result;
    Samples samples;
    std::optional<NormalScores> scores;
    SimulationPlan plan;
    plan.model = modelFor(request);
    plan.mean = request.mean.value_or(0);
    plan.neighbors = request.neighbors;
    plan.radius = request.radius;
    plan.seed = request.seed;
    if (request.dataset >= 0) {
        samples = withoutColocated(
            samplesAt(request.dataset, instantOf(request.when), request.realization),
            result.merged);
        requireTwo(samples.size(), request.dataset, request.when, "a simulation");
        if (request.scores) {
            scores.emplace(samples.values);
            samples.values = scores->scores();
            plan.mean = 0;
            result.scale = standardise(plan.model);
        } else if (!request.mean) {
            plan.mean = std::accumulate(samples.values.begin(), samples.values.end(), 0.0)
                        / static_cast<double>(samples.size());
        }
        alignTimeFormat(request.dataset, request.grid);
    }
    result.samples = static_cast<int>(samples.size());
    result.apart = isApart(samples, request.grid);
    result.structures = structuresText(plan.model);

    const bool always = request.dataset < 0 || datasetOf(request.dataset)->IsStatic();
    progress.report(0, "Finding neighbours...");
    GridSimulation simulation(samples, grid, plan, progress.part(0, 30));
    StoredValues stored(request.grid, request.name, request.count, always);
    std::vector<double> values;
    for (int r = 0; r < request.count; ++r) {
        progress.report(30 + 70 * r / request.count, "Drawing realizations...");
        simulation.next(values);
        if (scores)
            for (double &value : values)
                value = scores->valueOf(value);
        stored.add(r, request.when, values);
    }
    result.keptBytes = simulation.keptBytes();
    result.dataset = stored.finish(
        QStringLiteral("Sequential Gaussian simulation%1, model %2, seed %3")
            .arg(request.dataset < 0 ? QString()
                                     : QStringLiteral(" of ") + datasetName(request.dataset),
                 result.structures)
            .arg(request.seed));
    return result;
}

} // namespace meridor
