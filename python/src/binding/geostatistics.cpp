// SPDX-License-Identifier: MIT
#include <algorithm>
#include <cmath>
#include <pybind11/stl.h>
#include "call.h"
#include "core/geostatistics/covariance.h"
#include "core/geostatistics/krigeDataset.h"
#include "core/geostatistics/realizations.h"
#include "core/geostatistics/samples.h"
#include "core/geostatistics/simulateDataset.h"
#include "core/geostatistics/storedValues.h"
#include "core/geostatistics/variogramModels.h"
#include "core/project/catalog.h"
#include "datainterface/DataAPI.h"
#include "datainterface/GeographyAPI.h"
#include "datainterface/MDataset.h"
#include "datainterface/VariogramAPI.h"
#include "intervals.h"
#include "nouns.h"

namespace meridor::python {
namespace {

using Numbers = py::array_t<double, py::array::c_style | py::array::forcecast>;

constexpr double kFarthest = 1e60;

/// (type, sill, range along the direction, range across it, direction in radians) for each.
py::list structuresOf(const VariogramModelAtT &model)
{
    py::list list;
    for (const VariogramBasicModel &structure : model.structures)
        list.append(py::make_tuple(structureName(structure.type), structure.sill,
                                   structure.minorRange, structure.majorRange, structure.angle));
    return list;
}

py::tuple binOf(const LagBin &bin)
{
    return py::make_tuple(bin.direction, bin.lag, bin.value, bin.pairs);
}

VariogramPlan planOf(int dataset, int realization, const py::dict &given)
{
    VariogramPlan plan;
    plan.dataset = dataset;
    plan.realization = realization;
    plan.other = given["other"].cast<int>();
    plan.pooled = given["pooled"].cast<bool>();
    plan.scores = given["scores"].cast<bool>();
    plan.lags.estimator = plan.other >= 0                ? Estimator::Cross
                          : given["robust"].cast<bool>() ? Estimator::Robust
                                                         : Estimator::Classical;
    plan.lags.cutoff = given["cutoff"].cast<double>();
    plan.lags.width = given["width"].cast<double>();
    plan.lags.directions = given["directions"].cast<std::vector<double>>();
    plan.lags.tolerance = given["tolerance"].cast<double>();
    const auto model = given["model"].cast<QString>();
    plan.fits = model != QLatin1String("none");
    plan.fit.structures.clear();
    if (plan.fits && model != QLatin1String("auto"))
        for (const QString &name : model.split(QLatin1Char(',')))
            plan.fit.structures.append(structureNamed(name));
    if (!given["nugget"].is_none())
        plan.fit.nugget = given["nugget"].cast<double>();
    plan.fit.anisotropic = given["anisotropic"].cast<bool>();
    plan.fit.exactMinimum = given["exact_minimum"].cast<bool>();
    plan.fit.weights = static_cast<FitWeights>(given["weights"].cast<int>());
    return plan;
}

/// A tuple for each time: interval, number of values, classes, pairs at the same place, and the
/// model as (text, structures, squares, whether the fit converged, remark) or None.
py::list variogramOf(int dataset, int realization, const py::iterable &times, const py::dict &given,
                     const QString &store, const py::object &progress)
{
    VariogramPlan plan = planOf(dataset, realization, given);
    const QStringList wanted = textsOf(times);
    const QVector<VariogramAt> found = atLength(progress, [&] {
        requireDataset(dataset);
        if (plan.other >= 0)
            requireDataset(plan.other);
        plan.times = shapeTimesAt(dataset, wanted, realization);
        const Progress bar("Variogram", "Counting pairs...");
        const QVector<VariogramAt> all = variogramsOf(plan, bar.part(0, 100));
        if (!store.isEmpty()) {
            if (!plan.fits)
                failUsage(QStringLiteral("there is no model to store"), "model");
            storeModel(modelOf(plan, all, store));
        }
        return all;
    });
    py::list list;
    for (const VariogramAt &at : found) {
        py::list bins;
        for (const LagBin &bin : at.bins)
            bins.append(binOf(bin));
        list.append(
            py::make_tuple(intervalRows({at.when}), at.samples, bins, binOf(at.colocated),
                           at.fitted ? py::object(py::make_tuple(
                               structuresText(at.fitted->model), structuresOf(at.fitted->model),
                               at.fitted->squares, at.fitted->converged, at.fitted->remark))
                                     : py::none()));
    }
    return list;
}

py::tuple timeOf(const KrigedAt &at)
{
    return py::make_tuple(intervalRows({at.when}), at.samples, at.merged, at.withoutDrift,
                          at.predictions, at.missing, at.meanVariance);
}

KrigeRequest requestOf(int dataset, int realization, const QStringList &times,
                       const py::dict &given)
{
    requireDataset(dataset);
    KrigeRequest request;
    request.dataset = dataset;
    request.realization = realization;
    request.times = sampleTimes(dataset, times, realization);
    request.model = given["model"].cast<QString>();
    if (!given["mean"].is_none())
        request.plan.mean = given["mean"].cast<double>();
    request.plan.degree = given["drift"].cast<int>();
    request.plan.neighborhood.most = given["neighbors"].cast<int>();
    request.plan.neighborhood.least = given["least"].cast<int>();
    request.plan.neighborhood.perQuadrant = given["quadrants"].cast<int>();
    if (!given["radius"].is_none())
        request.plan.neighborhood.radius = given["radius"].cast<double>();
    request.external = given["external"].cast<int>();
    if (request.external >= 0)
        requireDataset(request.external);
    request.block = given["block"].cast<int>();
    request.target = given["target"].cast<int>();
    requireGeography(request.target);
    request.name = given["name"].cast<QString>();
    return request;
}

/// (prediction, variance, what was done at each time)
py::tuple krige(int dataset, int realization, const py::iterable &times, const py::dict &given,
                const py::object &progress)
{
    const KrigeRequest request =
        inTurn([&] { return requestOf(dataset, realization, textsOf(times), given); });
    const Kriged found = atLength(progress, [&] {
        const Progress bar("Kriging", "Predicting...");
        return krigeDataset(request, bar);
    });
    py::list rows;
    for (const KrigedAt &at : found.times)
        rows.append(timeOf(at));
    return py::make_tuple(found.prediction, found.variance, rows);
}

/// (mean error, mean square, mean ratio, correlation)
py::tuple validate(int dataset, int realization, const py::iterable &times, const py::dict &given,
                   int folds, int seed, const py::object &progress)
{
    KrigeRequest request =
        inTurn([&] { return requestOf(dataset, realization, textsOf(times), given); });
    const Validation found = atLength(progress, [&] {
        request.target = VORN_GetGeographyId(dataset);
        const Progress bar("Kriging", "Predicting...");
        return crossValidate(request, folds, seed, bar);
    });
    return py::make_tuple(found.meanError, found.meanSquare, found.meanRatio, found.correlation);
}

/// (dataset, samples, merged, structures, scale)
py::tuple simulate(int dataset, int realization, const QString &at, int grid, const py::dict &given,
                   const py::object &progress)
{
    SimulateRequest request;
    request.dataset = dataset;
    request.realization = realization;
    request.grid = grid;
    request.name = given["name"].cast<QString>();
    request.model = given["model"].cast<QString>();
    request.scores = given["scores"].cast<bool>();
    if (!given["mean"].is_none())
        request.mean = given["mean"].cast<double>();
    request.count = given["count"].cast<int>();
    request.neighbors = given["neighbors"].cast<int>();
    if (!given["radius"].is_none())
        request.radius = given["radius"].cast<double>();
    request.seed = given["seed"].cast<int>();
    const Simulated found = atLength(progress, [&] {
        requireGeography(grid);
        if (dataset >= 0) {
            requireDataset(dataset);
            request.when = sampleTime(dataset, at, realization);
        }
        const Progress bar("Simulation", "Finding neighbours...");
        return simulateDataset(request, bar);
    });
    return py::make_tuple(found.dataset, found.samples, found.merged, found.structures,
                          found.scale);
}

/// A list of (name, values by object or cell) at one time.
py::list ask(int dataset, const QString &at, bool mean, bool deviation,
             const std::vector<double> &quantiles, const std::vector<double> &above, int reference,
             const QString &store, const py::object &progress)
{
    RealizationQuestions questions;
    questions.mean = mean;
    questions.deviation = deviation;
    questions.quantiles = QVector<double>(quantiles.begin(), quantiles.end());
    questions.above = QVector<double>(above.begin(), above.end());
    questions.reference = reference;
    QVector<RealizationAnswer> answers = atLength(progress, [&] {
        requireDataset(dataset);
        if (reference >= 0)
            requireDataset(reference);
        const QVector<Interval> times = dataTimesAt(dataset, {at});
        const Progress bar("Realizations", "Reading...");
        const auto found = askRealizations(dataset, times.first(), questions, bar.part(0, 100));
        if (!store.isEmpty())
            storeAnswers(dataset, {times.first()}, {found}, store);
        return found;
    });
    py::list list;
    for (RealizationAnswer &answer : answers)
        list.append(py::make_tuple(answer.name, arrayOf(std::move(answer.values))));
    return list;
}

/// The values of a model at separations and directions in radians. A separation has no sign; NaN
/// gives NaN.
py::array valuesOf(const QString &text, const Numbers &separations, const Numbers &directions)
{
    const VariogramModelAtT model = parseStructures(text);
    std::vector<double> values(static_cast<size_t>(separations.size()));
    for (size_t i = 0; i < values.size(); ++i)
        if (const double h = std::abs(separations.data()[i]); std::isnan(h))
            values[i] = h;
        else // far beyond every range, and finite, since the cubic structure has powers of it
            values[i] = model.GetModelValue(std::min(h, kFarthest), directions.data()[i]);
    return arrayOf(std::move(values));
}

/// The text of a stored model at a time, its name and whether it is of normal scores.
py::tuple storedModel(int dataset, const QString &name, qint64 time)
{
    const VariogramModel model = byName([&] { return findModel(dataset, name); });
    return py::make_tuple(structuresText(structuresAt(model, time)), isOfScores(model));
}

QStringList modelNames(int dataset)
{
    requireDataset(dataset);
    QStringList names;
    for (const int id : VORN_GetVariogramModelIds(dataset))
        names.append(VORN_GetVariogramModelProperties(dataset, id).name);
    return names;
}

} // namespace

void addGeostatistics(py::module_ &module)
{
    module.def("variogram", &variogramOf, py::arg("dataset"), py::arg("realization"),
               py::arg("times"), py::arg("plan"), py::arg("store"), py::arg("progress"));
    module.def("krige", &krige, py::arg("dataset"), py::arg("realization"), py::arg("times"),
               py::arg("plan"), py::arg("progress"));
    module.def("cross_validate", &validate, py::arg("dataset"), py::arg("realization"),
               py::arg("times"), py::arg("plan"), py::arg("folds"), py::arg("seed"),
               py::arg("progress"));
    module.def("simulate", &simulate, py::arg("dataset"), py::arg("realization"), py::arg("at"),
               py::arg("grid"), py::arg("plan"), py::arg("progress"));
    module.def("ask_realizations", &ask, py::arg("dataset"), py::arg("at"), py::arg("mean"),
               py::arg("deviation"), py::arg("quantiles"), py::arg("above"), py::arg("reference"),
               py::arg("store"), py::arg("progress"));
    module.def("make_grid", [](const QString &name, double cell, double left, double bottom,
                               double right, double top, int like) {
        return inTurn([&] {
            requireDataset(like);
            return makeGrid(name, cell, QRectF(left, bottom, right - left, top - bottom), like);
        });
    });
    module.def("model_structures",
               [](const QString &text) { return structuresOf(parseStructures(text)); });
    module.def("model_text",
               [](const QString &text) { return structuresText(parseStructures(text)); });
    module.def("model_values", &valuesOf);
    module.def("model_names",
               [](int dataset) { return inTurn([&] { return listOf(modelNames(dataset)); }); });
    module.def("stored_model", [](int dataset, const QString &name, qint64 time) {
        return inTurn([&] { return requireDataset(dataset), storedModel(dataset, name, time); });
    });
}

} // namespace meridor::python
