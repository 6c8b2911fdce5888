// SPDX-License-Identifier: MIT
// Variogram models, predictions and realizations in a project, of wells in a field that is known
// everywhere.
#include <QtTest>
#include <cmath>
#include <numeric>
#include "core/geostatistics/krigeDataset.h"
#include "core/geostatistics/realizations.h"
#include "core/geostatistics/simulateDataset.h"
#include "core/geostatistics/storedValues.h"
#include "core/geostatistics/variogramModels.h"
#include "core/grids/gridValues.h"
#include "core/workshop.h"
#include "datainterface/RasterAPI.h"
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
    void crossValidates();
    void simulatesAndAnswers();
    void leavesNothingAfterAFailure();

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
    auto &host = dynamic_cast<ProjectHost &>(controller());
    const Interval always = dataTimes(mLevel).first();
    QCOMPARE(VORN_GenerateVariogramModel("m", mLevel, always, 0, -1, 0, false, 0, false, false).id,
             -1); // nobody answers
    answerVariogramRequests(host);
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
    const Kriged found = krigeDataset(asked, progress);
    QCOMPARE(found.times.size(), 1);
    QCOMPARE(found.times[0].merged, 1);
    QCOMPARE(found.times[0].predictions, 40 * 20);
    const std::vector<double> predicted = cellsOf(found.prediction, 0);
    const SimulationGrid grid = gridOf(asked.target);
    double squares = 0;
    for (int i = 0; i < 800; ++i)
        squares += std::pow(predicted[size_t(i)] - truth(grid.x(i % 40), grid.y(i / 40)), 2) / 800;
    QVERIFY2(std::sqrt(squares) < 0.3, qPrintable(QString::number(std::sqrt(squares))));
    // The prediction as the drift of another one: it explains the values.
    asked.external = found.prediction;
    asked.name = "drifted";
    const Kriged drifted = krigeDataset(asked, progress);
    QVERIFY(drifted.times[0].withoutDrift > 0); // wells beyond the grid
    QCOMPARE(drifted.times[0].predictions, 800);
    QVERIFY(drifted.times[0].meanVariance > 0);
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

QTEST_GUILESS_MAIN(TestGeostatisticsProject)
#include "tst_GeostatisticsProject.moc"
