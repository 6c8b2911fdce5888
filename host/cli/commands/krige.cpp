// SPDX-License-Identifier: MIT
#include <QJsonArray>
#include <QJsonObject>
#include <QRandomGenerator>
#include <cmath>
#include <limits>
#include <memory>
#include "cli/commands/gridChoice.h"
#include "cli/commands/projectEdit.h"
#include "core/geostatistics/krigeDataset.h"
#include "core/geostatistics/samples.h"
#include "core/project/catalog.h"
#include "core/project/failure.h"
#include "core/project/text.h"
#include "datainterface/DataAPI.h"
#include "datainterface/MDataset.h"

namespace meridor {
namespace {

constexpr double kNone = std::numeric_limits<double>::quiet_NaN();

struct Options {
    EditTarget target;
    QString dataset;
    QString model;
    GridChoice grid;
    QString into;
    QStringList at;
    int realization = 1;
    double mean = kNone; ///< NaN: estimated
    int drift = 0;
    QString external;
    int neighbors = 20;
    int least = 1;
    int quadrants = 0;
    double radius = 0; ///< 0: no limit
    int block = 0;
    int folds = -1; ///< below 0: no cross-validation
    int seed = 1;
};

KrigeRequest requestOf(const Options &options)
{
    KrigeRequest request;
    request.dataset = findDataset(options.dataset);
    request.realization = realizationIndex(request.dataset, options.realization);
    request.times = sampleTimes(request.dataset, options.at, request.realization);
    request.model = options.model;
    if (!std::isnan(options.mean))
        request.plan.mean = options.mean;
    request.plan.degree = options.drift;
    request.plan.neighborhood.most = options.neighbors;
    request.plan.neighborhood.least = options.least;
    request.plan.neighborhood.perQuadrant = options.quadrants;
    if (options.radius > 0)
        request.plan.neighborhood.radius = options.radius;
    if (!options.external.isEmpty())
        request.external = findDataset(options.external);
    request.block = options.block;
    request.name = options.into;
    return request;
}

QJsonObject toJson(const KrigedAt &at, const QString &when)
{
    return {{QStringLiteral("time"), when},
            {QStringLiteral("samples"), at.samples},
            {QStringLiteral("merged"), at.merged},
            {QStringLiteral("withoutDrift"), at.withoutDrift},
            {QStringLiteral("apart"), at.apart},
            {QStringLiteral("predictions"), at.predictions},
            {QStringLiteral("missing"), at.missing},
            {QStringLiteral("fewNeighbors"), at.remarks.alone},
            {QStringLiteral("undetermined"), at.remarks.undetermined},
            {QStringLiteral("systemsWithDropped"), at.remarks.dropped},
            {QStringLiteral("meanVariance"), jsonNumber(at.meanVariance)}};
}

void noteOn(const KrigedAt &at, const Console &console)
{
    const auto tell = [&](int count, const char *noun, const char *text) {
        if (count > 0)
            console.note(QString::fromLatin1(text).arg(counted(count, noun)));
    };
    if (at.apart)
        console.note(QString::fromLatin1(kApart));
    tell(at.merged, "sample", "%1 at the place of another; their mean is used");
    tell(at.withoutDrift, "sample", "%1 left out, since the drift has no value there");
    tell(at.remarks.alone, "missing prediction", "%1: too few neighbours");
    tell(at.remarks.undetermined, "missing prediction",
         "%1: the neighbours do not determine the drift");
    tell(at.remarks.dropped, "system", "in %1 a neighbour depends on the others and is not used");
}

QJsonArray tell(const QVector<KrigedAt> &times, int dataset, const Console &console)
{
    const TimeAxis axis = axisOf(VORN_GetGeographyId(dataset));
    const bool always = datasetOf(dataset)->IsStatic();
    QJsonArray json;
    TextTable table({{QStringLiteral("time"), TextTable::Left},
                     {QStringLiteral("values"), TextTable::Right},
                     {QStringLiteral("predictions"), TextTable::Right},
                     {QStringLiteral("missing"), TextTable::Right},
                     {QStringLiteral("mean variance"), TextTable::Right}});
    for (const KrigedAt &at : times) {
        const QString when = always ? QStringLiteral("always") : axis.show(at.when);
        json.append(toJson(at, when));
        noteOn(at, console);
        table.add({when, QString::number(at.samples), QString::number(at.predictions),
                   QString::number(at.missing), shortNumber(at.meanVariance, 6)});
    }
    if (!console.json)
        table.print(console);
    return json;
}

Tell validate(const Options &options, KrigeRequest request, const Console &console)
{
    request.target = VORN_GetGeographyId(request.dataset);
    Validation found;
    {
        const Progress progress("Kriging", "Predicting...");
        found = crossValidate(request, options.folds, options.seed, progress);
    }
    return [=, &options, &console] {
        for (const KrigedAt &at : found.times)
            noteOn(at, console);
        const std::pair<const char *, double> rows[] = {
            {"meanError", found.meanError},
            {"rootMeanSquare", std::sqrt(found.meanSquare)},
            {"meanSquaredRatio", found.meanRatio},
            {"correlation", found.correlation}};
        QJsonObject json{{QStringLiteral("dataset"), options.dataset},
                         {QStringLiteral("folds"), options.folds}};
        for (const auto &[name, value] : rows) {
            json.insert(QLatin1String(name), jsonNumber(value));
            if (!console.json)
                console.print(
                    QStringLiteral("%1: %2").arg(QLatin1String(name), shortNumber(value, 6)));
        }
        if (console.json)
            console.print(json);
    };
}

Tell predict(const Options &options, KrigeRequest request, const Console &console)
{
    request.target = options.grid.find(request.dataset);
    noteDegrees(VORN_GetGeographyId(request.dataset), console);
    Kriged found;
    {
        const Progress progress("Kriging", "Predicting...");
        found = krigeDataset(request, progress);
    }
    return [=, &options, &console] {
        const QJsonArray times = tell(found.times, request.dataset, console);
        if (console.json)
            console.print(QJsonObject{{QStringLiteral("dataset"), options.dataset},
                                      {QStringLiteral("geography"), geographyName(request.target)},
                                      {QStringLiteral("prediction"), datasetName(found.prediction)},
                                      {QStringLiteral("variance"), datasetName(found.variance)},
                                      {QStringLiteral("times"), times}});
    };
}

void run(const Options &options, const Context &context)
{
    const bool validates = options.folds >= 0;
    if (!validates && options.into.isEmpty())
        failUsage(QStringLiteral("a prediction needs a name"), "into");
    editOrLook(!options.into.isEmpty(), "--into", options.target, context, [&]() -> Tell {
        const KrigeRequest request = requestOf(options);
        return validates ? validate(options, request, context.console)
                         : predict(options, request, context.console);
    });
}

void addNeighborhood(const Command &command, Options &options)
{
    command.number("--neighbors", options.neighbors, "Nearest values that are used; 0 for all")
        .shown()
        .range(0, 6000);
    command.number("--least", options.least, "Fewest neighbours of a prediction")
        .shown()
        .range(1, 6000);
    command.number("--quadrants", options.quadrants, "Most neighbours in each quadrant")
        .range(0, 6000);
    command
        .number("--radius", options.radius, "Largest distance of a neighbour (default: no limit)")
        .positive();
}

} // namespace

void addKrige(const Command &app, Context &context)
{
    auto options = std::make_shared<Options>();
    const Command command =
        app.verb("krige", "Predict a dataset on a grid or at the objects of a geography");
    projectArgument(command, options->target.project);
    datasetArgument(command, options->dataset);
    command
        .text("--model", options->model,
              "A variogram model of the project, or structures such as "
              "nugget:0.1,spherical:0.9:300")
        .required();
    options->grid.declare(command);
    command.text("--into", options->into, "Name of the prediction");
    command.texts("--at", options->at, "A time, instead of all; repeatable");
    realizationOption(command, options->realization);
    command.number("--mean", options->mean, "The known mean (simple kriging)");
    command.number("--drift", options->drift, "Degree of the drift in x and y (universal kriging)")
        .range(0, 2);
    command.text("--external", options->external, "A raster dataset as external drift");
    addNeighborhood(command, *options);
    command
        .number("--block", options->block,
                "Predict means of cells or polygons, with so many points along a side")
        .range(0, 100);
    command
        .number("--validate", options->folds,
                "Cross-validate with so many folds instead; 0 leaves out one value at a time")
        .range(0, std::numeric_limits<int>::max());
    command.number("--seed", options->seed, "Seed of the folds").shown();
    targetOptions(command, options->target, context);
    command.footer("Example:\n"
                   "  meridor krige wells.vorn level --model nugget:0.7,exponential:8.3:2700 "
                   "--grid field --cell 50 --into level");
    command.chosen(
        [options, &context] { context.run = [options](const Context &c) { run(*options, c); }; });
}

} // namespace meridor
