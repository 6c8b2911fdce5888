// SPDX-License-Identifier: MIT
// Variogram models, predictions and realizations in a project, of wells in a field that is known
// everywhere.
#include <QLineF>
#include <QtTest>
#include <cmath>
#include <numeric>
#include "core/analysis/describe.h"
#include "core/analysis/moranOverTime.h"
#include "core/analysis/statistics.h"
#include "core/analysis/tables.h"
#include "core/analysis/weightSets.h"
#include "core/geostatistics/covariance.h"
#include "core/geostatistics/krigeDataset.h"
#include "core/geostatistics/normalScores.h"
#include "core/geostatistics/realizations.h"
#include "core/geostatistics/samples.h"
#include "core/geostatistics/simulateDataset.h"
#include "core/geostatistics/storedValues.h"
#include "core/geostatistics/variogramModels.h"
#include "core/grids/gridValues.h"
#include "core/plot/plots.h"
#include "core/project/shapeAccess.h"
#include "core/render/choropleth.h"
#include "core/workshop.h"
#include "datainterface/RasterAPI.h"
#include "datainterface/TimeAPI.h"
#include "datainterface/VariogramAPI.h"

using namespace meridor;

namespace {

constexpr int kWells = 80;

double truth(double x, double y)
{
    return 40 + 3 * std::sin(x / 120) + 2 * std::cos(y / 90);
}
QPointF place(int well)
{
    const auto part = [](double v) { return v - std::floor(v); };
    return {1000 * part((well + 1) * 0.7548776662466927),
            600 * part((well + 1) * 0.5698402909980532)};
}

/// The wells as points; the last two are at the same place.
QByteArray wells()
{
    QStringList features;
    for (int i = 0; i < kWells; ++i) {
        const QPointF at = place(std::min(i, kWells - 2));
        features.append(QString(R"({"type":"Feature","properties":{"id":"w%1","level":%2},)"
                                R"("geometry":{"type":"Point","coordinates":[%3,%4]}})")
                            .arg(i)
                            .arg(truth(at.x(), at.y()) + (i == kWells - 1), 0, 'g', 17)
                            .arg(at.x(), 0, 'g', 17)
                            .arg(at.y(), 0, 'g', 17));
    }
    return ("{\"type\":\"FeatureCollection\",\"features\":[" + features.join(",") + "]}").toUtf8();
}

std::vector<double> cellsOf(int dataset, int realization)
{
    QVector<double> values;
    MissingFlag flag;
    if (!VORN_GetRasterDataAsDecimal(dataset, realization, 0, values, flag))
        return {};
    return std::vector<double>(values.begin(), values.end());
}

} // namespace

class TestGeostatisticsProject : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void init();
    void cleanup();
    void answersTheLibrarysRequest();
    void predictsOnAGrid();
    void leavesOutCellsWithoutDrift();
    void predictsMeansOfPolygons();
    void predictsAtEachTime();
    void predictsStaticValuesAtTheirPlaces();
    void staticResultsHaveTheTimesOfTheirGrid();
    void crossValidates();
    void storesOneModelOfAName();
    void keepsGivenStructuresAndNuggetsAlone();
    void simulatesAndAnswers();
    void countsNoTableOfManyRealizations();
    void transformsScoresBack();
    void leavesNothingAfterAFailure();
    void readsTheRealizationThatIsAskedFor_data();
    void readsTheRealizationThatIsAskedFor();
    void fitsSillsBelowZeroToACrossVariogram();

private:
    KrigeRequest request() const
    {
        KrigeRequest request;
        request.dataset = mLevel;
        request.times = dataTimes(mLevel);
        request.model = "nugget:0.01,gaussian:8:300";
        request.name = "predicted";
        return request;
    }
    std::unique_ptr<Workshop> mWorkshop;
    int mLevel = -1;
};

void TestGeostatisticsProject::init()
{
    mWorkshop = std::make_unique<Workshop>(wells());
    QCOMPARE(mWorkshop->run(), QString());
    mLevel = findDataset("level");
}

void TestGeostatisticsProject::cleanup()
{
    mWorkshop.reset();
}

void TestGeostatisticsProject::answersTheLibrarysRequest()
{
    const Interval always = dataTimes(mLevel).first();
    const VariogramModelProps props =
        VORN_GenerateVariogramModel("m", mLevel, always, 1, -1, 12, true, 250, false, false);
    QCOMPARE(props.name, QString("m"));
    QCOMPARE(props.estimator, 1);
    QCOMPARE(props.lagCount, 12);
    const VariogramModel model = findModel(mLevel, "m");
    QCOMPARE(model.id, props.id);
    QCOMPARE(model.empiricalResults.first().size(), 10); // two classes have no pairs
    const VariogramModelAtT structures = structuresAt(model, 12345);
    QCOMPARE(structures.structures.size(), 2);
    // An unknown estimator and a dataset of texts are noted, not raised.
    QCOMPARE(VORN_GenerateVariogramModel("n", findDataset("id"), always, 0, -1, 0, false, 0, false,
                                         false)
                 .id,
             -1);
    QCOMPARE(VORN_GenerateVariogramModel("n", mLevel, always, 7, -1, 0, false, 0, false, false).id,
             -1);
    QCOMPARE(mWorkshop->notes.last(), QString("there is no variogram estimator 7"));
    QVERIFY2(mWorkshop->notes.join('\n').contains("id holds texts"),
             qPrintable(mWorkshop->notes.join('\n')));
    // A model goes with the values that it was fitted to.
    QVector<double> others(kWells);
    std::iota(others.begin(), others.end(), 0.0);
    QVERIFY(VORN_AddDataValues(mLevel, 0, always, others, {}, true, false));
    VORN_DatasetChanged(mLevel);
    QVERIFY_EXCEPTION_THROWN(findModel(mLevel, "m"), Failure);
}

void TestGeostatisticsProject::predictsOnAGrid()
{
    const Progress progress("Kriging", "Predicting...");
    KrigeRequest asked = request();
    asked.target = makeGrid("field", 20, QRectF(100, 100, 800, 400), mLevel);
    const QString system = projectionText(asked.target);
    QCOMPARE(system, projectionText(VORN_GetGeographyId(mLevel)));
    QVERIFY2(system.startsWith("GEOGCS["), qPrintable(system));
    const Kriged found = krigeDataset(asked, progress);
    QCOMPARE(found.times.size(), 1);
    QCOMPARE(found.times[0].merged, 1);
    QCOMPARE(found.times[0].predictions, 40 * 20);
    QVERIFY(!found.times[0].apart);
    const std::vector<double> predicted = cellsOf(found.prediction, 0);
    const SimulationGrid grid = gridOf(asked.target);
    double squares = 0;
    for (int i = 0; i < 800; ++i)
        squares += std::pow(predicted[size_t(i)] - truth(grid.x(i % 40), grid.y(i / 40)), 2) / 800;
    QVERIFY2(std::sqrt(squares) < 0.3, qPrintable(QString::number(std::sqrt(squares))));
    KrigeRequest beyond = asked;
    beyond.target = makeGrid("elsewhere", 20, QRectF(5000, 100, 40, 40), mLevel);
    beyond.name = "beyond";
    QVERIFY(krigeDataset(beyond, progress).times[0].apart);
    // The prediction as the drift of another one: it explains the values.
    asked.external = found.prediction;
    asked.name = "drifted";
    const Kriged drifted = krigeDataset(asked, progress);
    QVERIFY(drifted.times[0].withoutDrift > 0); // wells beyond the grid
    QCOMPARE(drifted.times[0].predictions, 800);
    QVERIFY(drifted.times[0].meanVariance > 0);
}

void TestGeostatisticsProject::leavesOutCellsWithoutDrift()
{
    const Progress progress("Kriging", "Predicting...");
    KrigeRequest asked = request();
    asked.target = makeGrid("field", 50, QRectF(0, 0, 1000, 600), mLevel);
    std::vector<double> drift;
    for (int cell = 0; cell < 240; ++cell)
        drift.push_back(cell % 7 == 3 ? std::nan("") : std::sin(cell % 20 / 6.0));
    StoredValues values(asked.target, "drift", 1, true);
    values.add(0, dataTimes(mLevel).first(), drift);
    asked.external = values.finish("made");
    const Kriged found = krigeDataset(asked, progress);
    QCOMPARE(found.times[0].missing, 34);
    QCOMPARE(found.times[0].predictions, 240 - 34);
    QVERIFY(found.times[0].withoutDrift > 0);
    const QVector<double> cells = gridValues(found.prediction, 0);
    for (int cell = 0; cell < 240; ++cell)
        QCOMPARE(std::isfinite(cells[cell]), cell % 7 != 3);
}

/// A polygon with the outline of a cell is the same block as the cell.
void TestGeostatisticsProject::predictsMeansOfPolygons()
{
    const Progress progress("Kriging", "Predicting...");
    QStringList squares;
    for (const int left : {0, 300, 700})
        squares.append(QString(R"({"type":"Feature","properties":{"id":"s%1"},"geometry":{"type":)"
                               R"("Polygon","coordinates":[[[%1,200],[%2,200],[%2,300],[%1,300],)"
                               R"([%1,200]]]}})")
                           .arg(left)
                           .arg(left + 100));
    mWorkshop->options.map = mWorkshop->file(
        "zones.geojson",
        ("{\"type\":\"FeatureCollection\",\"features\":[" + squares.join(",") + "]}").toUtf8());
    KrigeRequest asked = request();
    asked.block = 5;
    asked.target = importMap(mWorkshop->options, *mWorkshop, progress).geography;
    const Kriged polygons = krigeDataset(asked, progress);
    asked.target = makeGrid("field", 100, QRectF(0, 0, 1000, 600), mLevel);
    const Kriged cells = krigeDataset(asked, progress);
    QCOMPARE(polygons.times[0].predictions, 3);
    for (const auto &[polygon, cell] : {qMakePair(polygons.prediction, cells.prediction),
                                        qMakePair(polygons.variance, cells.variance)}) {
        const QVector<double> means = valuesAt(polygon, 0).numbers;
        const QVector<double> expected = gridValues(cell, 0);
        for (int i = 0; i < 3; ++i) {
            const int columns[] = {0, 3, 7};
            QCOMPARE(means[i], expected[3 * 10 + columns[i]]); // in the fourth row
        }
    }
}

/// Half of the wells are drilled later; their values hold for good.
void TestGeostatisticsProject::predictsStaticValuesAtTheirPlaces()
{
    QByteArray map = wells();
    for (int i = 0; i < kWells; ++i)
        map.replace(QString(R"({"id":"w%1",)").arg(i).toUtf8(),
                    QString(R"({"id":"w%1","start":%2,"end":2010,)")
                        .arg(i)
                        .arg(i % 2 == 0 ? 2000 : 2005)
                        .toUtf8());
    mWorkshop.reset();
    mWorkshop = std::make_unique<Workshop>(map);
    mWorkshop->options.start = "start";
    mWorkshop->options.end = "end";
    QCOMPARE(mWorkshop->run(), QString());
    mLevel = findDataset("level");
    const Progress progress("Kriging", "Predicting...");
    for (const auto &[time, count] : {std::pair("", kWells), std::pair("2002", kWells / 2)}) {
        KrigeRequest asked = request();
        const QString text = QLatin1String(time);
        asked.times = sampleTimes(mLevel, text.isEmpty() ? QStringList() : QStringList{text});
        asked.name += text;
        asked.target = makeGrid("grid" + text, 50, QRectF(0, 0, 1000, 600), mLevel);
        QCOMPARE(asked.times.size(), 1);
        QCOMPARE(TimeStamp(sampleTime(mLevel, text)), TimeStamp(asked.times.first()));
        const auto found = krigeDataset(asked, progress);
        QCOMPARE(found.times.first().samples + found.times.first().merged, count);
    }
    QVERIFY_EXCEPTION_THROWN(sampleTimes(mLevel, {"2002", "2007"}), Failure);
}

// The times of values that always hold say nothing about those of a grid with dates.
void TestGeostatisticsProject::staticResultsHaveTheTimesOfTheirGrid()
{
    const Progress progress("Kriging", "Predicting...");
    const qint64 day = VORN_ConstructTime(TF_Date, 1999, 1, 1, 0, 0, 0);
    const Interval year{day, day + 365 * 86400, true, false};
    KrigeRequest asked = request();
    asked.times = sampleTimes(mLevel, {});
    asked.target = VORN_CreateNewRasterGeography("dated", 6, 10, QRectF(0, 0, 1000, 600), year,
                                                 TF_Date, QString(), QString());
    SimulateRequest drawn;
    drawn.dataset = mLevel;
    drawn.when = asked.times.first();
    drawn.grid = asked.target;
    drawn.name = "drawn";
    const int dated[] = {krigeDataset(asked, progress).prediction,
                         simulateDataset(drawn, progress).dataset};
    const TimeStamp bounds = geographyOf(asked.target)->GetTimeBounds();
    QCOMPARE(bounds, TimeStamp(year));
    for (const int id : dated) {
        QCOMPARE(gridValues(id, day + 86400).size(), 60);
        QVERIFY(std::isfinite(gridValues(id, day + 86400).first()));
        QCOMPARE(TimeStamp(dataTimes(id).first()), TimeStamp(year));
    }
}

void TestGeostatisticsProject::predictsAtEachTime()
{
    const Progress progress("Kriging", "Predicting...");
    std::vector<double> level, doubled;
    for (const double value : valuesAt(mLevel, 0).numbers) {
        level.push_back(value);
        doubled.push_back(2 * value);
    }
    StoredValues values(VORN_GetGeographyId(mLevel), "two years", 1, false);
    values.add(0, {2000, 2000, true, true}, level);
    values.add(0, {2001, 2001, true, true}, doubled);
    KrigeRequest asked = request();
    asked.dataset = values.finish("made");
    asked.times = dataTimes(asked.dataset);
    asked.target = makeGrid("field", 100, QRectF(0, 0, 1000, 600), asked.dataset);
    const Kriged found = krigeDataset(asked, progress);
    QCOMPARE(dataTimes(found.prediction).size(), 2);
    const QVector<double> first = gridValues(found.prediction, 2000);
    const QVector<double> second = gridValues(found.prediction, 2001);
    for (int cell = 0; cell < 60; ++cell)
        QCOMPARE(second[cell], 2 * first[cell]);
    QCOMPARE(gridValues(found.variance, 2001), gridValues(found.variance, 2000));
    // A model of two of three years.
    const Interval third{2002, 2002, true, true};
    QVERIFY(VORN_AddDataValues(asked.dataset, 0, third, QVector<double>(level.begin(), level.end()),
                               {}, true, false));
    VariogramPlan plan;
    plan.dataset = asked.dataset;
    plan.times = asked.times;
    storeModel(modelOf(plan, variogramsOf(plan, [](int) {}), "m"));
    asked.model = "m";
    asked.name = "again";
    asked.times = {third};
    QString text;
    try {
        krigeDataset(asked, progress);
    } catch (const Failure &failure) {
        text = failure.text();
    }
    QCOMPARE(text, QString("the variogram model m has no structures at 2002, but at 2000, 2001"));
}

void TestGeostatisticsProject::crossValidates()
{
    const Progress progress("Kriging", "Predicting...");
    KrigeRequest asked = request();
    asked.target = VORN_GetGeographyId(mLevel);
    asked.name = "check";
    const Validation single = crossValidate(asked, 0, 1, progress);
    QCOMPARE(single.times[0].predictions, kWells - 1);
    QVERIFY2(single.correlation > 0.95, qPrintable(QString::number(single.correlation)));
    QVector<double> residuals;
    QSet<int> missing;
    QVERIFY(VORN_GetNumericValues(single.residuals, 0, 0, residuals, missing));
    QCOMPARE(missing, QSet<int>{kWells - 1}); // joined with the one before
    double square = 0;
    for (int i = 0; i < kWells - 1; ++i)
        square += residuals[i] * residuals[i] / (kWells - 1);
    QVERIFY(std::fabs(square - single.meanSquare) < 1e-12);
    asked.name.clear();
    const Validation folds = crossValidate(asked, 5, 1, progress);
    QCOMPARE(folds.times[0].predictions, kWells - 1);
    QVERIFY(folds.meanSquare > single.meanSquare / 2);
}

void TestGeostatisticsProject::keepsGivenStructuresAndNuggetsAlone()
{
    VariogramPlan plan;
    plan.dataset = mLevel;
    plan.times = dataTimes(mLevel);
    plan.given = parseStructures("nugget:0.5,spherical:8:300");
    const auto run = [&plan] { return variogramsOf(plan, [](int) {}).first(); };
    const VariogramAt given = run();
    double squares = 0;
    double weights = 0;
    double sum = 0;
    for (const LagBin &bin : given.bins) {
        const double weight = double(bin.pairs) / (bin.lag * bin.lag);
        squares += weight * std::pow(bin.value - plan.given.GetModelValue(bin.lag, 0), 2);
        weights += weight;
        sum += weight * bin.value;
    }
    QCOMPARE(given.fitted->squares, squares);
    storeModel(projectModel("free", plan.given));
    QCOMPARE(structuresText(structuresAt(findModel(mLevel, "free"), 0)),
             QString("nugget:0.5,spherical:8:300"));
    QCOMPARE(modelNames(-1), QStringList{"free"});
    plan.given = parseStructures("spherical:8:300:500:30"); // has a direction
    QCOMPARE(structuresText(plan.given), QString("spherical:8:300:500:30"));

    plan.given = {};
    plan.fit.structures = {VariogramBasicModel::Nugget};
    const VariogramModelAtT alone = run().fitted->model;
    QCOMPARE(alone.structures.size(), 1);
    QCOMPARE(alone.structures[0].sill, sum / weights);

    // Near wells differ most, which no structure can follow.
    QVector<double> opposite{0};
    for (int i = 1; i < kWells; ++i) {
        int nearest = 0;
        for (int j = 1; j < i; ++j)
            if (QLineF(place(i), place(j)).length() < QLineF(place(i), place(nearest)).length())
                nearest = j;
        opposite.append(1 - opposite[nearest]);
    }
    plan.dataset = VORN_NewVectorDataset(VORN_GetGeographyId(mLevel), "opposite", TimeSlice,
                                         DecimalType, 1, QString());
    QVERIFY(VORN_AddDataValues(plan.dataset, 0, plan.times.first(), opposite, {}, true, true));
    plan.fit.structures.clear();
    const VariogramAt alike = run();
    QCOMPARE(alike.fitted->model.structures.size(), 1);
    QCOMPARE(alike.fitted->remark,
             QString("no structure has a share: the model is a nugget alone"));
}

void TestGeostatisticsProject::simulatesAndAnswers()
{
    const Progress progress("Simulation", "Drawing...");
    SimulateRequest asked;
    asked.dataset = mLevel;
    asked.when = dataTimes(mLevel).first();
    asked.grid = makeGrid("field", 25, QRectF(0, 0, 1000, 600), mLevel);
    asked.name = "simulated";
    asked.count = 30;
    asked.seed = 4;
    const Simulated found = simulateDataset(asked, progress);
    QCOMPARE(VORN_GetDatasetProperties(found.dataset).realizationCount, 30);
    asked.name = "again";
    const Simulated again = simulateDataset(asked, progress);
    QCOMPARE(cellsOf(again.dataset, 29), cellsOf(found.dataset, 29));

    RealizationQuestions questions;
    questions.mean = questions.deviation = true;
    questions.quantiles = {0, 0.25, 1};
    questions.above = {41};
    const Interval when = dataTimes(found.dataset).first();
    const auto answers = askRealizations(found.dataset, when, questions, [](int) {});
    QStringList names;
    for (const RealizationAnswer &answer : answers)
        names.append(answer.name);
    QCOMPARE(names, QStringList({"mean", "deviation", "quantile 0", "quantile 0.25", "quantile 1",
                                 "above 41"}));
    for (const size_t cell : {size_t(0), size_t(777)}) {
        QVector<double> values;
        double sum = 0, squares = 0, above = 0;
        for (int r = 0; r < 30; ++r) {
            values.append(cellsOf(found.dataset, r)[cell]);
            sum += values.last();
            above += values.last() > 41;
        }
        std::sort(values.begin(), values.end());
        for (const double value : values)
            squares += std::pow(value - sum / 30, 2);
        const double expected[] = {sum / 30,   std::sqrt(squares / 29),
                                   values[0],  values[7] + 0.25 * (values[8] - values[7]),
                                   values[29], above / 30};
        for (int k = 0; k < 6; ++k)
            QVERIFY2(std::fabs(answers[k].values[cell] - expected[k]) < 1e-9,
                     qPrintable(answers[k].name));
    }
    QCOMPARE(storeAnswers(found.dataset, {when}, {answers}, "asked").size(), 6);
    QCOMPARE(cellsOf(findDataset("asked above 41"), 0), answers[5].values);
}

void TestGeostatisticsProject::storesOneModelOfAName()
{
    VariogramPlan plan;
    plan.dataset = mLevel;
    plan.times = dataTimes(mLevel);
    const auto found = variogramsOf(plan, [](int) {});
    for (const char *name : {"a", "b"})
        storeModel(modelOf(plan, found, name));
    QString setting;
    try {
        storeModel(modelOf(plan, found, "a"));
    } catch (const Failure &failure) {
        setting = failure.setting();
    }
    QCOMPARE(setting, QString("replace"));
    const int id = findModel(mLevel, "a").id;
    plan.lags.cutoff = 200;
    storeModel(modelOf(plan, variogramsOf(plan, [](int) {}), "a"), true);
    QCOMPARE(findModel(mLevel, "a").fit.doubles[0], 200.0);
    QCOMPARE(findModel(mLevel, "a").id, id);
    QVERIFY(findModel(mLevel, "b").fit.doubles[0] != 200.0);
    const QJsonObject described = describeGeography(VORN_GetGeographyId(mLevel));
    QCOMPARE(described["variogramModels"].toVariant().toStringList(),
             QStringList({"a of level", "b of level"}));
}

/// A table with an entry for almost every cell of every realization would be most of the memory.
void TestGeostatisticsProject::countsNoTableOfManyRealizations()
{
    const int grid = makeGrid("field", 2, QRectF(0, 0, 1000, 600), mLevel);
    std::vector<double> values(150000);
    std::iota(values.begin(), values.end(), 0.0);
    for (const int realizations : {1, 2}) {
        StoredValues stored(grid, QString("drawn %1").arg(realizations), realizations, true);
        for (int r = 0; r < realizations; ++r)
            stored.add(r, dataTimes(mLevel).first(), values);
        const int id = stored.finish("drawn");
        bool capped = false;
        QCOMPARE(VORN_GetUniqueDataCount(id, capped), realizations > 1 ? 0 : 150000);
        QCOMPARE(describeDataset(id)["uniqueValues"],
                 realizations > 1 ? QJsonValue() : QJsonValue(150000));
        QCOMPARE(describeDataset(id)["missing"], QJsonValue(false));
        QCOMPARE(statisticsOfAll(id, realizations - 1).maximum, 149999.0);
    }
}

/// Realizations of normal scores take the values of the same ranks; what cannot be transformed is
/// refused, since the library would answer with the realization itself.
void TestGeostatisticsProject::transformsScoresBack()
{
    const int geography = VORN_GetGeographyId(mLevel);
    const Interval always = dataTimes(mLevel).first();
    QVector<double> levels;
    QSet<int> missing;
    QVERIFY(VORN_GetNumericValues(mLevel, 0, 0, levels, missing));
    StoredValues stored(geography, "scores", 1, true);
    stored.add(0, always, NormalScores({levels.begin(), levels.end()}).scores());
    const int scores = stored.finish("scores");
    const int grid = makeGrid("field", 100, QRectF(0, 0, 1000, 600), mLevel);
    StoredValues cells(grid, "cells", 1, true);
    cells.add(0, always, std::vector<double>(60, 1));
    const int other = cells.finish("cells");
    const auto mean = [&](int dataset, int reference) {
        RealizationQuestions questions;
        questions.mean = true;
        questions.reference = reference;
        return askRealizations(dataset, always, questions, [](int) {}).first().values;
    };
    QCOMPARE(mean(scores, mLevel), std::vector<double>(levels.begin(), levels.end()));
    const struct {
        int dataset, reference;
        const char *text;
    } refused[] = {{mLevel, scores, "level holds no normal scores"},
                   {scores, findDataset("id"), "id holds texts"},
                   {scores, other, "scores and cells are of different geographies"}};
    for (const auto &one : refused) {
        QString text;
        try {
            mean(one.dataset, one.reference);
        } catch (const Failure &failure) {
            text = failure.text();
        }
        QCOMPARE(text, QString(one.text));
    }
}

void TestGeostatisticsProject::leavesNothingAfterAFailure()
{
    const Progress progress("Kriging", "Predicting...");
    const int grid = makeGrid("field", 20, QRectF(0, 0, 100, 100), mLevel);
    KrigeRequest asked = request();
    asked.target = grid;
    asked.model = "no such model";
    QVERIFY_EXCEPTION_THROWN(krigeDataset(asked, progress), Failure);
    asked.model = "power:1:1";
    asked.plan.mean = 40;
    QVERIFY_EXCEPTION_THROWN(krigeDataset(asked, progress), Failure);
    SimulateRequest simulated;
    simulated.dataset = mLevel;
    simulated.when = dataTimes(mLevel).first();
    simulated.grid = grid;
    simulated.name = "s";
    simulated.model = "power:1:1";
    QVERIFY_EXCEPTION_THROWN(simulateDataset(simulated, progress), Failure);
    QCOMPARE(datasetIds(grid), QVector<int>());
}

void TestGeostatisticsProject::readsTheRealizationThatIsAskedFor_data()
{
    QTest::addColumn<bool>("isGrid");
    QTest::newRow("points") << false;
    QTest::newRow("grid") << true;
}

/// A dataset of two realizations, and one that equals its second: all that reads values must agree.
void TestGeostatisticsProject::readsTheRealizationThatIsAskedFor()
{
    QFETCH(bool, isGrid);
    const int geography = isGrid ? makeGrid("field", 100, QRectF(0, 0, 1000, 600), mLevel)
                                 : VORN_GetGeographyId(mLevel);
    const Interval always = dataTimes(mLevel).first();
    std::vector<double> first, second;
    for (int i = 0; i < (isGrid ? 60 : kWells); ++i) {
        first.push_back(100 + std::sin(i));
        second.push_back(i == 5 ? std::nan("") : std::floor(10 * std::cos(1.3 * i)));
    }
    StoredValues both(geography, "both", 2, true), alone(geography, "alone", 1, true);
    both.add(0, always, first);
    both.add(1, always, second);
    alone.add(0, always, second);
    const int two = both.finish("two"), one = alone.finish("one");
    QCOMPARE(realizationIndex(two, 2), 1);
    for (const int number : {-1, 0, 3})
        QVERIFY_EXCEPTION_THROWN(realizationIndex(two, number), Failure);

    const qint64 time = instantOf(always);
    const auto told = [](const Statistics &s) {
        return QVector<double>{double(s.count), s.mean, s.deviation, s.minimum, s.maximum};
    };
    QCOMPARE(told(statisticsOfAll(two, 1)), told(statisticsOfAll(one)));
    QCOMPARE(told(statisticsAt(two, time, 1)), told(statisticsAt(one, time)));
    QVERIFY(statisticsOfAll(two).minimum >= 99);
    QCOMPARE(frequenciesOf(two, 1).values(), frequenciesOf(one, 0).values());
    QCOMPARE(frequenciesOf(two, 1).firstKey().toDouble(), -10.0);
    for (const char *method : {"jenks", "equal", "quantile", "box", "unique"}) {
        for (const QVector<qint64> &times : {QVector<qint64>(), QVector<qint64>{time}}) {
            ClassRule rule;
            rule.method = method;
            const Classification found(two, times, rule, 1), expected(one, times, rule);
            QCOMPARE(found.limits(), expected.limits());
            QCOMPARE(found.entries().size(), expected.entries().size());
        }
    }
    const auto shown = [&](int dataset, int realization) -> QString {
        MapStyle style;
        style.realization = realization;
        MapLayerStyle layer;
        layer.geography = geography;
        layer.dataset = dataset;
        layer.palette = "Blues";
        layer.realization = realization;
        style.layers = {layer};
        style.labelField = isGrid ? -1 : dataset;
        style.labelRealization = realization;
        const MapPicture map = MapMaker(dataset, {time}, "map", style).picture({time});
        const MapPanel &panel = map.panels[0];
        QStringList texts;
        for (const qint64 count : panel.counts + QVector<qint64>{panel.missing})
            texts.append(QString::number(count));
        const QString named = QString("realization %1 of 2").arg(realization + 1);
        if (map.texts.footnote.contains(named) != (dataset == two))
            texts.append(map.texts.footnote);
        for (const LegendEntry &entry : map.legend[1].entries)
            texts.append(entry.text + QString::number(entry.count));
        for (const MapLabel &label : panel.labels)
            texts.append(label.text);
        const Plot bars = histogram({dataset, realization}, time, {});
        texts.append(QString::fromUtf8(QJsonDocument(bars.numbers).toJson()));
        return texts.join(' ');
    };
    QCOMPARE(shown(two, 1), shown(one, 0));
    QVERIFY(shown(two, 1) != shown(two, 0));
    QCOMPARE(realizationIndex(one, 2, {one, two}), 0);
    QVERIFY_EXCEPTION_THROWN(realizationIndex(one, 2, {one}), Failure);
    QVERIFY_EXCEPTION_THROWN(realizationIndex(two, 3, {one, two}), Failure);
    if (isGrid)
        return;
    const auto table = [&](int dataset, int realization) {
        RowPlan plan;
        plan.geography = geography;
        plan.datasets = {dataset};
        plan.realization = realization;
        const QString path = mWorkshop->file("out.csv", QByteArray());
        exportTable(path, TableFormat::Csv, plan, "-", [](const QString &) {});
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll().replace("both", "alone")
                                              : QByteArray();
    };
    QCOMPARE(table(two, 1), table(one, 0));
    WeightSetPlan neighbors;
    neighbors.name = "near";
    neighbors.method = "nearest";
    neighbors.count = 4;
    neighbors.weights = "row";
    const auto moranOf = [&, set = createWeightSet(geography, neighbors)](int dataset, int index) {
        MoranPlan plan;
        plan.dataset = dataset;
        plan.realization = index;
        plan.weightSet = set;
        plan.times = {always};
        plan.permutations = 9;
        return moranOverTime(plan, Progress("Moran", "Permuting...")).first().whole.value;
    };
    QCOMPARE(moranOf(two, 1), moranOf(one, 0));
    const auto line = [&](const ShownDataset &dataset) {
        return scatter(dataset, mLevel, time, dataset).numbers;
    };
    QCOMPARE(line({two, 1}), line(one));
}

void TestGeostatisticsProject::fitsSillsBelowZeroToACrossVariogram()
{
    const Interval always = dataTimes(mLevel).first();
    std::vector<double> falling;
    for (const double value : valuesAt(mLevel, 0).numbers)
        falling.push_back(-2 * value);
    StoredValues values(VORN_GetGeographyId(mLevel), "falling", 1, true);
    values.add(0, always, falling);
    VariogramPlan plan;
    plan.dataset = mLevel;
    plan.times = {always};
    plan.fit.structures = {VariogramBasicModel::Exponential};
    plan.fit.nugget = 0; // else that of the values themselves would be bounded, and the other not
    const auto fitted = [&] { return *variogramsOf(plan, [](int) {}).first().fitted; };
    const FittedModel own = fitted();
    plan.other = values.finish("less");
    plan.lags.estimator = Estimator::Cross;
    const FittedModel cross = fitted();
    QVERIFY(own.model.structures[1].sill > 1);
    const double ratio = cross.model.structures[1].sill / own.model.structures[1].sill;
    QVERIFY2(std::fabs(ratio + 2) < 1e-4, qPrintable(QString::number(ratio)));
    const double squares = cross.squares / own.squares;
    QVERIFY2(std::fabs(squares - 4) < 1e-4, qPrintable(QString::number(squares)));
}

QTEST_GUILESS_MAIN(TestGeostatisticsProject)
#include "tst_GeostatisticsProject.moc"
