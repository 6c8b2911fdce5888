// SPDX-License-Identifier: MIT
#include <QJsonArray>
#include <QJsonObject>
#include <cmath>
#include <limits>
#include <memory>
#include "cli/commands/gridChoice.h"
#include "cli/commands/projectEdit.h"
#include "core/geostatistics/covariance.h"
#include "core/geostatistics/variogramModels.h"
#include "core/plot/plots.h"
#include "core/project/catalog.h"
#include "core/project/failure.h"
#include "core/project/safeFile.h"
#include "core/project/text.h"
#include "core/render/pictureFile.h"
#include "datainterface/DataAPI.h"
#include "datainterface/MDataset.h"

namespace meridor {
namespace {

constexpr double kDegree = 3.14159265358979323846 / 180;

struct Options {
    EditTarget target;
    QString dataset;
    QString cross;
    QStringList at;
    bool pooled = false;
    bool scores = false;
    int realization = 1;
    double cutoff = 0;
    double width = 0;
    QVector<double> directions; ///< degrees
    double tolerance = 22.5;    ///< degrees
    QString estimator = QStringLiteral("classical");
    QString model = QStringLiteral("auto");
    QStringList structures; ///< given, not fitted
    QString weights = QStringLiteral("pairs/distance");
    double nugget = std::numeric_limits<double>::quiet_NaN(); ///< NaN: fitted
    bool anisotropic = false;
    bool exactMinimum = false;
    QString save;
    bool replaces = false;                        ///< a model of the same name
    QString plot;                                 ///< empty: no picture
    QVector<QPair<const char *, Setting>> ofFits; ///< without meaning for given structures
    QVector<QPair<const char *, Setting>>
        ofDatasets; ///< without meaning for a model of the project
};

void refuseGiven(const QVector<QPair<const char *, Setting>> &settings, const char *why)
{
    for (const auto &[name, setting] : settings)
        if (setting.isGiven())
            failUsage(QStringLiteral("--%1 does not apply %2")
                          .arg(QLatin1String(name), QLatin1String(why)));
}

VariogramModelAtT structuresOf(const Options &options)
{
    if (options.structures.isEmpty())
        return {};
    refuseGiven(options.ofFits, "to given structures, which are not fitted");
    return parseStructures(options.structures.join(QLatin1Char(',')));
}

struct Word {
    const char *name;
    int code;
};
constexpr Word kWeights[] = {{"pairs/distance", int(FitWeights::PairsByDistance)},
                             {"pairs", int(FitWeights::Pairs)},
                             {"cressie", int(FitWeights::Cressie)},
                             {"equal", int(FitWeights::Equal)}};

VariogramPlan planOf(const Options &options)
{
    VariogramPlan plan;
    plan.dataset = findDataset(options.dataset);
    if (!options.cross.isEmpty() && options.estimator == QLatin1String("robust"))
        failUsage(QStringLiteral("there is no robust cross variogram"), "estimator");
    if (!options.cross.isEmpty()) {
        plan.other = findDataset(VORN_GetGeographyId(plan.dataset), options.cross);
        plan.lags.estimator = Estimator::Cross;
    } else if (options.estimator == QLatin1String("robust")) {
        plan.lags.estimator = Estimator::Robust;
    }
    plan.realization = realizationIndex(plan.dataset, options.realization);
    plan.times = shapeTimesAt(plan.dataset, options.at, plan.realization);
    plan.pooled = options.pooled;
    plan.scores = options.scores;
    plan.lags.cutoff = options.cutoff;
    plan.lags.width = options.width;
    plan.lags.tolerance = options.tolerance * kDegree;
    for (const double direction : options.directions)
        plan.lags.directions.push_back(direction * kDegree);
    plan.given = structuresOf(options);
    plan.fits = options.model != QLatin1String("none");
    plan.fit.structures.clear();
    if (plan.fits && options.model != QLatin1String("auto"))
        for (const QString &name : options.model.split(QLatin1Char(',')))
            plan.fit.structures.append(structureNamed(name));
    if (!std::isnan(options.nugget))
        plan.fit.nugget = options.nugget;
    plan.fit.anisotropic = options.anisotropic;
    plan.fit.exactMinimum = options.exactMinimum;
    for (const Word &word : kWeights)
        if (options.weights == QLatin1String(word.name))
            plan.fit.weights = static_cast<FitWeights>(word.code);
    completeDirections(plan);
    return plan;
}

QJsonObject toJson(const LagBin &bin)
{
    return {{QStringLiteral("lag"), bin.lag},
            {QStringLiteral("direction"), bin.direction / kDegree},
            {QStringLiteral("value"), bin.value},
            {QStringLiteral("pairs"), double(bin.pairs)}};
}

QJsonArray toJson(const VariogramModelAtT &model)
{
    QJsonArray structures;
    for (const VariogramBasicModel &structure : model.structures) {
        QJsonObject object{{QStringLiteral("type"), QLatin1String(structureName(structure.type))},
                           {QStringLiteral("sill"), structure.sill}};
        if (structure.type != VariogramBasicModel::Nugget)
            object.insert(QStringLiteral("range"), structure.minorRange);
        if (structure.majorRange != structure.minorRange) {
            object.insert(QStringLiteral("major"), structure.majorRange);
            object.insert(QStringLiteral("direction"), structure.angle / kDegree);
        }
        structures.append(object);
    }
    return structures;
}

QJsonObject toJson(const VariogramAt &at, const QString &when)
{
    QJsonArray bins;
    for (const LagBin &bin : at.bins)
        bins.append(toJson(bin));
    QJsonObject object{{QStringLiteral("time"), when},
                       {QStringLiteral("samples"), at.samples},
                       {QStringLiteral("cutoff"), at.lags.cutoff},
                       {QStringLiteral("width"), at.lags.width},
                       {QStringLiteral("colocated"), toJson(at.colocated)},
                       {QStringLiteral("classes"), bins}};
    if (at.fitted) {
        object.insert(QStringLiteral("structures"), toJson(at.fitted->model));
        object.insert(QStringLiteral("model"), structuresText(at.fitted->model));
        object.insert(QStringLiteral("squares"), at.fitted->squares);
        object.insert(QStringLiteral("converged"), at.fitted->converged);
        object.insert(QStringLiteral("remark"), at.fitted->remark);
    }
    return object;
}

void print(const VariogramAt &at, const QString &when, const Console &console)
{
    console.print(QStringLiteral("%1: %2, cutoff %3, width %4")
                      .arg(when, counted(at.samples, "value"), shortNumber(at.lags.cutoff, 6),
                           shortNumber(at.lags.width, 6)));
    TextTable table({{QStringLiteral("direction"), TextTable::Right},
                     {QStringLiteral("lag"), TextTable::Right},
                     {QStringLiteral("value"), TextTable::Right},
                     {QStringLiteral("model"), TextTable::Right},
                     {QStringLiteral("pairs"), TextTable::Right}});
    for (const LagBin &bin : at.bins)
        table.add({at.lags.directions.empty() ? QStringLiteral("all")
                                              : shortNumber(bin.direction / kDegree),
                   shortNumber(bin.lag, 4), shortNumber(bin.value, 6),
                   at.fitted
                       ? shortNumber(at.fitted->model.GetModelValue(bin.lag, bin.direction), 6)
                       : QStringLiteral("-"),
                   QString::number(bin.pairs)});
    table.print(console);
    if (at.colocated.pairs > 0)
        console.print(
            QStringLiteral("at the same place: %1, %2")
                .arg(counted(at.colocated.pairs, "pair"), shortNumber(at.colocated.value, 6)));
    if (!at.fitted)
        return;
    console.print(QStringLiteral("model: %1").arg(structuresText(at.fitted->model)));
    if (!at.fitted->remark.isEmpty())
        console.print(at.fitted->remark);
}

/// Stores a model that belongs to no dataset.
void storeForProject(const Options &options, const Context &context)
{
    if (options.structures.isEmpty() || options.save.isEmpty())
        failUsage(
            QStringLiteral("a dataset is needed, or the structures and the name of a model of "
                           "the project: see --structure and --save"));
    refuseGiven(options.ofDatasets, "without a dataset");
    const VariogramModelAtT structures = structuresOf(options);
    editProject(
        options.target, context,
        [&](Session &) { storeModel(projectModel(options.save, structures), options.replaces); },
        Values::Packed);
    const QString text = structuresText(structures);
    if (context.console.json)
        context.console.print(QJsonObject{{QStringLiteral("name"), options.save},
                                          {QStringLiteral("model"), text},
                                          {QStringLiteral("structures"), toJson(structures)}});
    else
        context.console.print(QStringLiteral("%1: %2").arg(options.save, text));
}

void tell(const QVector<VariogramAt> &found, const Options &options, bool always,
          const TimeAxis &axis, const Console &console)
{
    QJsonArray json;
    for (const VariogramAt &at : found) {
        const QString when = always ? QStringLiteral("always") : axis.show(at.when);
        if (console.json)
            json.append(toJson(at, when));
        else
            print(at, when, console);
    }
    if (console.json)
        console.print(QJsonObject{{QStringLiteral("dataset"), options.dataset},
                                  {QStringLiteral("times"), json}});
}

void run(const Options &options, const Context &context)
{
    if (options.dataset.isEmpty()) {
        storeForProject(options, context);
        return;
    }
    if (!options.plot.isEmpty()) {
        requirePictureName(options.plot);
        requireWritable(options.plot, context.overwrite);
        refuseInput(options.plot, {options.target.project, options.target.file()});
    }
    editOrLook(!options.save.isEmpty(), "--save", options.target, context, [&]() -> Tell {
        const VariogramPlan plan = planOf(options);
        QVector<VariogramAt> found;
        {
            const Progress progress("Variogram", "Counting pairs...");
            found = variogramsOf(plan, progress.part(0, 100));
        }
        noteDegrees(VORN_GetGeographyId(plan.dataset), context.console);
        if (!options.save.isEmpty()) {
            if (!plan.fits && plan.given.structures.isEmpty())
                failUsage(QStringLiteral("there is no model to store"), "model");
            storeModel(modelOf(plan, found, options.save), options.replaces);
        }
        const TimeAxis axis = axisOf(VORN_GetGeographyId(plan.dataset));
        const bool always = datasetOf(plan.dataset)->IsStatic();
        if (!options.plot.isEmpty()) {
            if (found.size() > 1)
                failUsage(QStringLiteral("a plot shows one time; see --at and --pooled"), "plot");
            savePicture(variogramGraph(found.first(), datasetName(plan.dataset),
                                       always ? QString() : axis.show(found.first().when)),
                        options.plot);
        }
        return [=, &options, &context] { tell(found, options, always, axis, context.console); };
    });
}

void addLags(const Command &command, Options &options)
{
    const auto limited = [&options](const char *name, const Setting &setting) {
        options.ofDatasets.append({name, setting});
        return setting;
    };
    limited("cross",
            command.text("--cross", options.cross, "A second dataset, for the cross variogram"));
    limited("at", command.texts("--at", options.at, "A time, instead of all; repeatable"));
    limited("pooled",
            command.flag("--pooled", options.pooled, "One variogram of the pairs of all times"));
    limited("scores",
            command.flag("--scores", options.scores, "Of the normal scores of the values"));
    realizationOption(command, options.realization);
    limited("cutoff", command.number("--cutoff", options.cutoff,
                                     "Largest separation (default: a third of the diagonal)"))
        .positive();
    limited("width", command.number("--width", options.width,
                                    "Width of a class of separations (default: cutoff / 15)"))
        .positive();
    limited("directions", command.numbers("--directions", options.directions,
                                          "Directions, degrees counter-clockwise from the x axis"))
        .partedBy(',');
    limited("tolerance", command.number("--tolerance", options.tolerance,
                                        "Largest angle to a direction, degrees"))
        .shown()
        .range(0.0, 90.0);
    limited("estimator",
            command.text("--estimator", options.estimator, "Estimator: classical or robust"))
        .shown("classical")
        .oneOf({"classical", "robust"});
}

} // namespace

void addVariogram(const Command &app, Context &context)
{
    auto options = std::make_shared<Options>();
    const Command command =
        app.verb("variogram", "The empirical variogram of a dataset, and a model fitted to it");
    projectArgument(command, options->target.project);
    command.text("DATASET", options->dataset,
                 "The dataset; without one the structures and the name are those of a model of the "
                 "project");
    addLags(command, *options);
    const auto ofFit = [&options](const char *name, const Setting &setting) {
        options->ofFits.append({name, setting});
        return setting;
    };
    ofFit("model",
          command.text("--model", options->model,
                       "Structures besides the nugget, separated by commas (spherical, "
                       "exponential, gaussian, power, cubic); nugget for a nugget alone, auto for "
                       "the best one, none for no fit"))
        .shown("auto");
    command.texts("--structure", options->structures,
                  "A structure that is not fitted, as nugget:SILL, TYPE:SILL:RANGE or "
                  "TYPE:SILL:RANGE:MAJOR:DEGREES; repeatable");
    QStringList weights;
    for (const Word &word : kWeights)
        weights.append(QLatin1String(word.name));
    command.text("--weights", options->weights, "Weights of the classes in the fit")
        .shown("pairs/distance")
        .oneOf(weights);
    ofFit(
        "nugget",
        command.number("--nugget", options->nugget, "Fix the nugget at this value").notNegative());
    ofFit("anisotropic",
          command.flag("--anisotropic", options->anisotropic, "Fit two ranges and a direction"));
    ofFit("exact-minimum",
          command.flag("--exact-minimum", options->exactMinimum,
                       "The least sum of squares also for a single Gaussian structure"));
    command.text("--save", options->save, "Store the model in the project under this name");
    command.flag("--replace", options->replaces, "Replace a stored model of the same name");
    options->ofDatasets.append({"plot", command.text("--plot", options->plot,
                                                     "Draw the variogram as FILE.svg, .png or "
                                                     ".pdf")});
    targetOptions(command, options->target, context);
    command.footer("Example:\n"
                   "  meridor variogram wells.vorn level --plot level.svg\n"
                   "  meridor variogram wells.vorn level --model exponential --save level\n"
                   "  meridor variogram wells.vorn --structure nugget:0.1 "
                   "--structure spherical:0.9:300 --save scores");
    command.chosen(
        [options, &context] { context.run = [options](const Context &c) { run(*options, c); }; });
}

} // namespace meridor
