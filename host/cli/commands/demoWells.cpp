// SPDX-License-Identifier: MIT
// Levels between 120 wells, with their error. The field is made by samples/wells/makeWells.py, so
// what is predicted can be compared with what is there. Expected figures of the variogram, the
// predictions and the cross-validation were computed with R's gstat 2.1.
#include "cli/commands/demoWells.h"
#include <QFileInfo>
#include <cmath>
#include "core/geostatistics/covariance.h"
#include "core/geostatistics/krigeDataset.h"
#include "core/geostatistics/realizations.h"
#include "core/geostatistics/simulateDataset.h"
#include "core/geostatistics/variogramModels.h"
#include "core/grids/gridValues.h"
#include "core/import/mapImporter.h"
#include "core/import/rasterImporter.h"
#include "core/plot/plots.h"
#include "core/project/catalog.h"
#include "core/project/text.h"
#include "core/render/choropleth.h"
#include "core/render/pictureFile.h"
#include "datainterface/DataAPI.h"

namespace meridor {
namespace {

constexpr int kWells = 120;
constexpr int kCells = 40 * 60;
constexpr int kRealizations = 100;
constexpr int kSeed = 41;
constexpr double kLimit = 41;      // metres
constexpr double kOfFile = 0.5e-4; // metres: cells are read as floats
const QString kModel = QStringLiteral("level");

constexpr int kPairs = 3202;
constexpr double kNugget = 0.745978;
constexpr double kSill = 8.268853;
constexpr double kRange =
    3 * 914.4370; // gstat's range is that at which 1 - 1/e of the sill is reached
constexpr double kMeanPrediction = 38.812630;
constexpr double kMeanVariance = 2.186271;
constexpr double kValidated[] = {0.015439, 1.495440, 0.999275, 0.785689};

bool near(double a, double b, double relative)
{
    return std::abs(a - b) <= relative * std::abs(b);
}

QVector<double> cellsOf(int dataset, int realization = 0)
{
    return gridValues(dataset, instantOf(dataTimes(dataset).first()), realization);
}

double meanOf(const QVector<double> &values)
{
    double sum = 0;
    for (const double value : values)
        sum += value;
    return sum / values.size();
}

double rootMeanSquare(const QVector<double> &a, const QVector<double> &b)
{
    double sum = 0;
    for (int i = 0; i < a.size(); ++i)
        sum += (a[i] - b[i]) * (a[i] - b[i]);
    return std::sqrt(sum / a.size());
}

RealizationQuestions questions()
{
    RealizationQuestions questions;
    questions.mean = questions.deviation = true;
    questions.above = {kLimit};
    return questions;
}

QVector<RealizationAnswer> ask(int dataset)
{
    const Progress progress("Realizations", "Reading...");
    return askRealizations(dataset, dataTimes(dataset).first(), questions(), progress.part(0, 100));
}

/// Every place from all wells.
KrigeRequest requestOf(int level, int target)
{
    KrigeRequest request;
    request.dataset = level;
    request.times = dataTimes(level);
    request.model = kModel;
    request.plan.neighborhood.most = 0;
    request.target = target;
    return request;
}

} // namespace

void WellsDemo::levelsBetweenWells()
{
    mSteps.step("import", [this] { return import(); });
    mSteps.step("variogram", [this] { return variogram(); });
    mSteps.step("krige", [this] { return prediction(); });
    mSteps.step("compare", [this] { return errors(); });
    mSteps.step("validate", [this] { return validation(); });
    mSteps.step("simulate", [this] { return simulation(); });
    mSteps.step("ask", [this] { return answers(); });
    mSteps.step("compare", [this] { return reliability(); });
    mSteps.step("map", [this] { return map(); });
}

QString WellsDemo::import()
{
    ImportOptions field;
    field.map = mPlace.sample("wells/truth.asc");
    field.name = QStringLiteral("field");
    ImportOptions wells;
    wells.map = mPlace.sample("wells/wells.csv");
    wells.key = QStringLiteral("well");
    wells.xColumn = QStringLiteral("x");
    wells.yColumn = QStringLiteral("y");
    const Progress progress("Import", "Importing...");
    mTruth = importRaster(field, mPlace.context.console, progress).datasets.value(0, -1);
    const ImportReport report = importMap(wells, mPlace.context.console, progress);
    mLevel = findDataset(report.geography, QStringLiteral("level"));
    const int cells = cellsOf(mTruth).size();
    mSteps.expect(report.objects == kWells && cells == kCells);
    return QStringLiteral("groundwater levels of %1 wells, and of the %2 cells of the field "
                          "that they measure")
        .arg(report.objects)
        .arg(cells);
}

QString WellsDemo::variogram()
{
    VariogramPlan plan;
    plan.dataset = mLevel;
    plan.times = dataTimes(mLevel);
    plan.fit.structures = {VariogramBasicModel::Exponential};
    const Progress progress("Variogram", "Counting pairs...");
    const QVector<VariogramAt> found = variogramsOf(plan, progress.part(0, 100));
    storeModel(modelOf(plan, found, kModel));
    const VariogramAt &at = found.first();
    qint64 pairs = 0;
    for (const LagBin &bin : at.bins)
        pairs += bin.pairs;
    Graph graph = variogramGraph(at, QStringLiteral("groundwater levels"),
                                 QStringLiteral("metres, of %1 wells").arg(at.samples));
    savePicture(graph, mPlace.result("level_variogram.svg"));
    const QList<VariogramBasicModel> structures = at.fitted->model.structures.toList();
    mSteps.expect(
        pairs == kPairs && structures.size() == 2 && near(structures[0].sill, kNugget, 1e-3)
        && near(structures[1].sill, kSill, 1e-3) && near(structures[1].minorRange, kRange, 1e-3)
        && QFileInfo(mPlace.result("level_variogram.svg")).size() > 0);
    return QStringLiteral("%1 pairs in %2 classes; nugget %3, exponential %4 with range %5 m")
        .arg(QString::number(pairs), QString::number(at.bins.size()),
             shortNumber(structures[0].sill), shortNumber(structures[1].sill),
             shortNumber(structures[1].minorRange, 0));
}

QString WellsDemo::prediction()
{
    KrigeRequest request = requestOf(mLevel, VORN_GetGeographyId(mTruth));
    request.name = QStringLiteral("predicted");
    const Progress progress("Kriging", "Predicting...");
    const Kriged found = krigeDataset(request, progress);
    mPredicted = found.prediction;
    mVariance = found.variance;
    const double mean = meanOf(cellsOf(mPredicted));
    mSteps.expect(near(mean, kMeanPrediction, 1e-4)
                  && near(found.times.first().meanVariance, kMeanVariance, 1e-3));
    return QStringLiteral("ordinary kriging of %1 cells: mean %2 m, mean variance %3")
        .arg(QString::number(found.times.first().predictions), shortNumber(mean),
             shortNumber(found.times.first().meanVariance));
}

QString WellsDemo::errors() const
{
    const QVector<double> truth = cellsOf(mTruth);
    const QVector<double> predicted = cellsOf(mPredicted);
    const QVector<double> variance = cellsOf(mVariance);
    int exact = 0;
    int within = 0;
    for (int i = 0; i < truth.size(); ++i) {
        exact += variance[i] == 0 && std::abs(predicted[i] - truth[i]) < kOfFile;
        within += std::abs(predicted[i] - truth[i]) <= 1.96 * std::sqrt(variance[i]);
    }
    const double error = rootMeanSquare(predicted, truth);
    const double flat = rootMeanSquare(QVector<double>(truth.size(), meanOf(truth)), truth);
    const double share = 100.0 * within / truth.size();
    mSteps.expect(exact == kWells && error < 0.6 * flat && share > 90 && share < 99);
    return QStringLiteral("error %1 m, of a constant %2 m; %3 % within 1.96 deviations; exact at "
                          "%4 wells")
        .arg(shortNumber(error), shortNumber(flat), QString::number(share, 'f', 1),
             QString::number(exact));
}

QString WellsDemo::validation()
{
    const Progress progress("Kriging", "Predicting...");
    const Validation found =
        crossValidate(requestOf(mLevel, VORN_GetGeographyId(mLevel)), 0, 1, progress);
    const double figures[] = {found.meanError, std::sqrt(found.meanSquare), found.meanRatio,
                              found.correlation};
    for (size_t i = 0; i < std::size(figures); ++i)
        mSteps.expect(near(figures[i], kValidated[i], 1e-3));
    return QStringLiteral("each well from the others: error %1 m, squared error / variance %2, "
                          "correlation %3")
        .arg(shortNumber(figures[1]), shortNumber(figures[2]), shortNumber(figures[3]));
}

QString WellsDemo::simulation()
{
    SimulateRequest request;
    request.dataset = mLevel;
    request.when = dataTimes(mLevel).first();
    request.grid = VORN_GetGeographyId(mTruth);
    request.name = QStringLiteral("simulated");
    request.count = kRealizations;
    request.seed = kSeed;
    const Progress progress("Simulation", "Finding neighbours...");
    const Simulated found = simulateDataset(request, progress);
    mSimulated = found.dataset;
    const QVector<double> variance = cellsOf(mVariance);
    const QVector<double> truth = cellsOf(mTruth);
    bool honoured = true;
    for (const int realization : {0, kRealizations / 2, kRealizations - 1}) {
        const QVector<double> drawn = cellsOf(mSimulated, realization);
        for (int i = 0; i < drawn.size(); ++i)
            honoured = honoured && (variance[i] > 0 || std::abs(drawn[i] - truth[i]) < kOfFile);
    }
    mSteps.expect(honoured && found.samples == kWells);
    return QStringLiteral("%1 realizations from normal scores, seed %2; each has the levels of "
                          "the wells")
        .arg(request.count)
        .arg(request.seed);
}

QString WellsDemo::answers()
{
    const QVector<RealizationAnswer> found = ask(mSimulated);
    storeAnswers(mSimulated, dataTimes(mSimulated), {found}, datasetName(mSimulated));
    const QVector<double> mean(found[0].values.begin(), found[0].values.end());
    const QVector<double> above(found[2].values.begin(), found[2].values.end());
    const double apart = rootMeanSquare(mean, cellsOf(mPredicted));
    const QVector<double> truth = cellsOf(mTruth);
    const auto there =
        std::count_if(truth.begin(), truth.end(), [](double v) { return v > kLimit; });
    const double expected = meanOf(above) * above.size();
    mSteps.expect(apart < 0.5 && there == 402 && near(expected, double(there), 0.25));
    return QStringLiteral(
               "above %1 m: %2 cells are expected, %3 are; mean and prediction differ by "
               "%4 m")
        .arg(QString::number(kLimit), QString::number(expected, 'f', 0), QString::number(there),
             shortNumber(apart));
}

QString WellsDemo::reliability() const
{
    const QVector<double> truth = cellsOf(mTruth);
    const QVector<double> above =
        cellsOf(findDataset(VORN_GetGeographyId(mTruth), QStringLiteral("simulated above 41")));
    constexpr int kBands = 3; // of probability: below a third, below two thirds, and the rest
    double count[kBands] = {};
    double right[kBands] = {};
    for (int i = 0; i < truth.size(); ++i) {
        const int band = std::min(kBands - 1, static_cast<int>(above[i] * kBands));
        count[band] += 1;
        right[band] += truth[i] > kLimit;
    }
    QStringList shares;
    for (int band = 0; band < kBands; ++band)
        shares.append(QString::number(100 * right[band] / count[band], 'f', 0)
                      + QStringLiteral(" %"));
    mSteps.expect(right[0] < 0.15 * count[0] && right[1] > 0.3 * count[1]
                  && right[1] < 0.7 * count[1] && right[2] > 0.75 * count[2]);
    return QStringLiteral("of cells with a low, middle and high probability, above %1 m are %2")
        .arg(QString::number(kLimit), shares.join(QStringLiteral(", ")));
}

QString WellsDemo::map() const
{
    const int grid = VORN_GetGeographyId(mTruth);
    MapStyle style;
    style.rule.limits = {0, 0.05, 0.2, 0.4, 0.6, 0.8, 0.95, 1};
    style.rule.palette = QStringLiteral("PuBu");
    style.subtitle = QStringLiteral("share of %1 realizations above 41 m").arg(kRealizations);
    MapLayerStyle wells;
    wells.geography = VORN_GetGeographyId(mLevel);
    style.layers = {wells};
    const MapView view{findDataset(grid, QStringLiteral("simulated above 41")),
                       0,
                       QStringLiteral("Where the water stands above 41 m"),
                       {}};
    savePicture(choropleth(view, style), mPlace.result("level_above_41.png"));
    mSteps.expect(QFileInfo(mPlace.result("level_above_41.png")).size() > 0);
    return QStringLiteral("the probability with the wells: level_above_41.png");
}

void WellsDemo::askedAgain()
{
    mSteps.step("ask", [this] {
        const int grid = findGeography(QStringLiteral("field"));
        const QVector<RealizationAnswer> found =
            ask(findDataset(grid, QStringLiteral("simulated")));
        for (const RealizationAnswer &answer : found) {
            const QVector<double> stored =
                cellsOf(findDataset(grid, QStringLiteral("simulated ") + answer.name));
            mSteps.expect(std::equal(stored.begin(), stored.end(), answer.values.begin()));
        }
        return QStringLiteral("%1 realizations give the same mean, deviation and probability")
            .arg(kRealizations);
    });
}

} // namespace meridor
