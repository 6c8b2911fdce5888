// SPDX-License-Identifier: MIT
// Variograms, kriging and simulation against their definitions, written out plainly, and against
// figures of R's gstat 2.1-0 on fields that are generated here.
#include <QtTest>
#include <cmath>
#include <random>
#include "core/geostatistics/empiricalVariogram.h"
#include "core/geostatistics/kriging.h"
#include "core/geostatistics/normalScores.h"
#include "core/geostatistics/simulation.h"
#include "core/geostatistics/variogramFit.h"
#include "core/project/failure.h"
#include "datainterface/StatisticsAPI.h"

using namespace meridor;

namespace {

using Type = VariogramBasicModel;
constexpr double kPi = 3.14159265358979323846;
const Meter kSilent = [](int) {};

Samples randomSamples(int count, unsigned seed, double extent = 1000)
{
    std::mt19937 generator(seed);
    std::uniform_real_distribution<double> place(0, extent);
    std::normal_distribution<double> normal;
    Samples samples;
    for (int i = 0; i < count; ++i) {
        const QPointF at(place(generator), place(generator));
        samples.add(at, std::sin(at.x() / 150) + at.y() / 400 + 0.3 * normal(generator), i);
    }
    return samples;
}

/// The text of the Failure that `call` raises; empty if it raises none.
template <class Call> QString failureOf(Call call)
{
    try {
        call();
    } catch (const Failure &failure) {
        return failure.text();
    }
    return QString();
}

/// Where two numbers differ by more than `slack` relative to the larger; else empty.
QString difference(double found, double expected, double slack, const QString &what)
{
    const double scale = std::max({std::fabs(found), std::fabs(expected), 1e-300});
    if (std::fabs(found - expected) <= slack * scale)
        return QString();
    return QString("%1: %2 instead of %3")
        .arg(what)
        .arg(found, 0, 'g', 12)
        .arg(expected, 0, 'g', 12);
}

/// A solution by elimination with row pivots.
std::vector<double> plainSolve(std::vector<std::vector<double>> a, std::vector<double> b)
{
    const size_t n = b.size();
    for (size_t j = 0; j < n; ++j) {
        size_t pivot = j;
        for (size_t i = j; i < n; ++i)
            if (std::fabs(a[i][j]) > std::fabs(a[pivot][j]))
                pivot = i;
        std::swap(a[j], a[pivot]);
        std::swap(b[j], b[pivot]);
        for (size_t i = j + 1; i < n; ++i) {
            const double factor = a[i][j] / a[j][j];
            for (size_t k = j; k < n; ++k)
                a[i][k] -= factor * a[j][k];
            b[i] -= factor * b[j];
        }
    }
    for (size_t j = n; j-- > 0;) {
        for (size_t k = j + 1; k < n; ++k)
            b[j] -= a[j][k] * b[k];
        b[j] /= a[j][j];
    }
    return b;
}

} // namespace

Q_DECLARE_METATYPE(std::function<void()>)

class TestGeostatistics : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void countsEveryPairOnce_data();
    void countsEveryPairOnce();
    void countsPairsOfCellsAsOfPoints();
    void agreesWithFiguresFromOutside();
    void fitsWhatWasPutIn_data();
    void fitsWhatWasPutIn();
    void endsWhereTheGaussianRangeIsDefined_data();
    void endsWhereTheGaussianRangeIsDefined();
    void equalsThePlainSystem_data();
    void equalsThePlainSystem();
    void returnsTheDatumAtItsPlace();
    void dropsNeighborsThatDependOnOthers();
    void isConstantAlongAnEndlessRange();
    void scoresAreUndone();
    void realizationsHaveTheModel();
    void givesTheSameRealizationsForASeed();
    void refusesWhatHasNoAnswer_data();
    void refusesWhatHasNoAnswer();
};

void TestGeostatistics::countsEveryPairOnce_data()
{
    QTest::addColumn<int>("estimator");
    QTest::addColumn<QVector<double>>("directions");
    QTest::addColumn<double>("extent"); // places on a lattice have ties and pairs on limits
    QTest::addColumn<double>("parts");  // widths of a class along the extent
    const QVector<double> four{0, kPi / 4, kPi / 2, 3 * kPi / 4};
    QTest::newRow("classical") << 0 << QVector<double>() << 1000.0 << 12.0;
    QTest::newRow("robust, four directions") << 1 << four << 1000.0 << 12.0;
    QTest::newRow("cross") << 2 << QVector<double>() << 1000.0 << 12.0;
    QTest::newRow("lattice, co-located points") << 0 << four << 12.0 << 12.0;
    QTest::newRow("thousands of classes") << 0 << QVector<double>() << 12.0 << 28000.0;
}

void TestGeostatistics::countsEveryPairOnce()
{
    QFETCH(int, estimator);
    QFETCH(QVector<double>, directions);
    QFETCH(double, extent);
    QFETCH(double, parts);
    Samples samples = randomSamples(300, 3, extent);
    if (extent < 100) {
        for (size_t i = 0; i < samples.size(); ++i) {
            samples.x[i] = std::floor(samples.x[i]);
            samples.y[i] = std::floor(samples.y[i]);
        }
    }
    const std::vector<double> others = randomSamples(300, 4).values;
    LagPlan plan;
    plan.estimator = static_cast<Estimator>(estimator);
    plan.cutoff = extent / 3;
    plan.width = extent / parts;
    plan.directions.assign(directions.begin(), directions.end());
    plan.tolerance = kPi / 8;
    LagSums sums(plan);
    if (plan.estimator == Estimator::Cross)
        sums.add(samples, others, kSilent);
    else
        sums.add(samples, kSilent);

    struct Plain {
        double value = 0, lag = 0;
        qint64 pairs = 0;
    };
    std::map<std::pair<int, int>, Plain> classes; // direction, class; class -1: co-located
    for (size_t i = 0; i < samples.size(); ++i) {
        for (size_t j = 0; j < i; ++j) {
            const double dx = samples.x[i] - samples.x[j];
            const double dy = samples.y[i] - samples.y[j];
            const double h = std::hypot(dx, dy);
            if (h > plan.cutoff)
                continue;
            const double dz = samples.values[i] - samples.values[j];
            const double term = estimator == 0   ? dz * dz
                                : estimator == 1 ? std::sqrt(std::fabs(dz))
                                                 : dz * (others[i] - others[j]);
            const int index = h == 0 ? -1 : static_cast<int>(std::ceil(h / plan.width)) - 1;
            for (int d = 0; d < qMax(1, directions.size()); ++d) {
                if (index >= 0 && !directions.isEmpty()
                    && std::fabs(std::sin(std::atan2(dy, dx) - directions[d]))
                           > std::sin(plan.tolerance) + 1e-9)
                    continue;
                Plain &plain = classes[{index < 0 ? -1 : d, index}];
                plain.value += term;
                plain.lag += h;
                ++plain.pairs;
                if (index < 0)
                    break;
            }
        }
    }
    const auto valueOf = [&](const Plain &plain) {
        const auto n = static_cast<double>(plain.pairs);
        return estimator == 1 ? std::pow(plain.value / n, 4) / (2 * (0.457 + 0.494 / n))
                              : plain.value / (2 * n);
    };
    std::vector<LagBin> bins = sums.bins();
    const qint64 colocated = classes[std::make_pair(-1, -1)].pairs;
    QCOMPARE(sums.colocated().pairs, colocated);
    QCOMPARE(sums.colocated().pairs > 0, extent < 100);
    classes.erase({-1, -1});
    QCOMPARE(bins.size(), classes.size());
    size_t i = 0;
    for (const auto &[key, plain] : classes) {
        QCOMPARE(bins[i].pairs, plain.pairs);
        QCOMPARE(bins[i].direction, directions.isEmpty() ? 0.0 : directions[key.first]);
        QCOMPARE(bins[i].lag, plain.lag / double(plain.pairs));
        QCOMPARE(bins[i++].value, valueOf(plain));
    }
}

void TestGeostatistics::countsPairsOfCellsAsOfPoints()
{
    constexpr int kColumns = 13;
    constexpr int kRows = 9;
    const double wide = 3, high = 2, nan = std::nan("");
    std::vector<double> values = randomSamples(kColumns * kRows, 8).values;
    values[17] = values[40] = nan;
    Samples samples;
    for (int cell = 0; cell < kColumns * kRows; ++cell)
        if (!std::isnan(values[size_t(cell)]))
            samples.add({wide * (cell % kColumns), -high * (cell / kColumns)}, values[size_t(cell)],
                        cell);
    LagPlan plan;
    plan.cutoff = 12;
    plan.width = 2.5;
    plan.directions = {0, 1.2};
    plan.tolerance = 0.6;
    LagSums points(plan), cells(plan);
    points.add(samples, kSilent);
    QCOMPARE(cells.addGrid(values, {}, kColumns, wide, high, kSilent), 1.0);
    const std::vector<LagBin> expected = points.bins();
    const std::vector<LagBin> found = cells.bins();
    QCOMPARE(found.size(), expected.size());
    for (size_t i = 0; i < found.size(); ++i) {
        QCOMPARE(found[i].pairs, expected[i].pairs);
        QCOMPARE(found[i].value, expected[i].value);
    }
}

/// R's gstat 2.1-0 on the same 120 points: variogram(), fit.variogram() and krige(). Predictions
/// are printed to 12 digits.
void TestGeostatistics::agreesWithFiguresFromOutside()
{
    const auto part = [](double v) { return v - std::floor(v); };
    Samples samples;
    for (int i = 1; i <= 120; ++i) {
        const QPointF at(1000 * part(i * 0.7548776662466927), 1000 * part(i * 0.5698402909980532));
        samples.add(at,
                    std::sin(at.x() / 150) + std::cos(at.y() / 200)
                        + 0.5 * part(i * 0.6180339887498949),
                    i);
    }
    LagPlan plan;
    completeLags(plan, diagonalOf(samples));
    LagSums sums(plan);
    sums.add(samples, kSilent);
    const LagBin fifth = sums.bins()[4];
    QCOMPARE(fifth.pairs, 206);
    QCOMPARE(difference(fifth.lag, 206.0968694886, 1e-11, "lag"), QString());
    QCOMPARE(difference(fifth.value, 0.3474570302347, 1e-11, "gamma"), QString());

    // A field with a sill, for the fits. The sums of squares are flat around their minima, at which
    // gstat ends within 2e-3 of the range.
    Samples rough = samples;
    for (size_t i = 0; i < rough.size(); ++i)
        rough.values[i] = std::sin(rough.x[i] / 60) + std::cos(rough.y[i] / 70)
                          + 0.5 * part(double(i + 1) * 0.6180339887498949);
    LagSums roughSums(plan);
    roughSums.add(rough, kSilent);
    for (const auto &[type, squares, range] :
         {std::make_tuple(Type::Spherical, 0.002246214066, 270.263171),
          std::make_tuple(Type::Exponential, 0.003590380379, 3 * 148.849486)}) {
        FitPlan fit;
        fit.structures = {type};
        const FittedModel fitted = fitVariogram(roughSums.bins(), fit);
        QCOMPARE(fitted.model.structures[0].sill, 0.0);
        QCOMPARE(difference(fitted.squares, squares, 1e-5, "squares"), QString());
        QCOMPARE(difference(fitted.model.structures[1].majorRange, range, 2e-3, "range"),
                 QString());
    }

    struct Row {
        const char *model;
        int degree, most;
        std::optional<double> mean;
        double value, variance; // at 10, 990
    };
    const Row rows[] = {
        {"nugget:0.1,spherical:0.8:350", 0, 0, {}, 0.489754508775, 0.473134226011},
        {"nugget:0.1,spherical:0.8:350", 1, 0, {}, 0.466736185740, 0.501178115822},
        {"nugget:0.1,spherical:0.8:350", 0, 16, {}, 0.570377563474, 0.496524144688},
        {"nugget:0.1,spherical:0.8:350", 0, 0, 0.2, 0.482666770946, 0.467647946406},
        {"nugget:0.1,exponential:0.8:144:360:150", 0, 0, {}, 0.331759974703, 0.836920046878},
        {"nugget:0.05,power:0.01:0.8", 0, 0, {}, 0.658184343745, 0.531847660255}};
    for (const Row &row : rows) {
        KrigingPlan kriging;
        kriging.model = parseStructures(row.model);
        kriging.degree = row.degree;
        kriging.neighborhood.most = row.most;
        kriging.mean = row.mean;
        Targets targets;
        targets.x = {10};
        targets.y = {990};
        const Estimate found = Kriging(samples, kriging).predict(targets, kSilent)[0];
        QCOMPARE(difference(found.value, row.value, 1e-10, row.model), QString());
        QCOMPARE(difference(found.variance, row.variance, 1e-10, row.model), QString());
    }
}

void TestGeostatistics::fitsWhatWasPutIn_data()
{
    QTest::addColumn<QString>("model"); // the nugget first
    QTest::addColumn<QString>("structures");
    QTest::addColumn<int>("weights");
    const QString anisotropic("nugget:0.1,spherical:2:150:400:30");
    QTest::newRow("spherical") << "nugget:0.1,spherical:2:300"
                               << "spherical" << 0;
    QTest::newRow("exponential, no nugget") << "nugget:0,exponential:0.7:250"
                                            << "exponential" << 1;
    QTest::newRow("gaussian, Cressie") << "nugget:0.2,gaussian:3:200"
                                       << "gaussian" << 2;
    QTest::newRow("cubic") << "nugget:0.1,cubic:2:350"
                           << "cubic" << 3;
    QTest::newRow("power") << "nugget:0.3,power:0.02:1.3"
                           << "power" << 0;
    QTest::newRow("nested") << "nugget:0.1,spherical:1:60,spherical:2:380"
                            << "spherical,spherical" << 0;
    QTest::newRow("anisotropic") << anisotropic << "spherical" << 0;
    QTest::newRow("anisotropic, Cressie") << anisotropic << "spherical" << 2;
}

void TestGeostatistics::fitsWhatWasPutIn()
{
    QFETCH(QString, model);
    QFETCH(QString, structures);
    QFETCH(int, weights);
    const VariogramModelAtT truth = parseStructures(model);
    FitPlan plan;
    plan.structures.clear();
    for (const QString &name : structures.split(','))
        plan.structures.append(structureNamed(name));
    plan.weights = static_cast<FitWeights>(weights);
    plan.anisotropic = model.count(':') > 4 && plan.structures.size() == 1;
    std::vector<LagBin> bins;
    for (int d = 0; d < (plan.anisotropic ? 6 : 1); ++d)
        for (int i = 1; i <= 15; ++i)
            bins.push_back(
                {27.0 * i, d * kPi / 6, truth.GetModelValue(27.0 * i, d * kPi / 6), 100 + 10 * i});
    const FittedModel fitted = fitVariogram(bins, plan);
    QCOMPARE(fitted.remark, QString());
    QVERIFY(fitted.converged);
    QVector<VariogramBasicModel> found = fitted.model.structures;
    std::sort(found.begin() + 1, found.end(),
              [](const auto &a, const auto &b) { return a.minorRange < b.minorRange; });
    QCOMPARE(found.size(), truth.structures.size());
    for (int i = 0; i < found.size(); ++i) {
        const VariogramBasicModel &expected = truth.structures[i];
        QCOMPARE(found[i].type, expected.type);
        QVERIFY2(std::fabs(found[i].sill - expected.sill) < 1e-4, qPrintable(model));
        QCOMPARE(difference(found[i].minorRange, expected.minorRange, 1e-4, "range"), QString());
        QCOMPARE(difference(found[i].majorRange, expected.majorRange, 1e-4, "major"), QString());
        QVERIFY(std::fabs(std::remainder(found[i].angle - expected.angle, kPi)) < 1e-4);
    }
}

void TestGeostatistics::endsWhereTheGaussianRangeIsDefined_data()
{
    QTest::addColumn<bool>("exact");
    QTest::addColumn<int>("power"); // of the separation, by which residuals are weighed
    QTest::newRow("default") << false << 1;
    QTest::newRow("exact minimum") << true << 2;
}

/// A variogram that is not Gaussian, so that the two definitions of the range differ.
void TestGeostatistics::endsWhereTheGaussianRangeIsDefined()
{
    QFETCH(bool, exact);
    QFETCH(int, power);
    const VariogramModelAtT truth = parseStructures("nugget:0.2,spherical:3:300");
    std::vector<LagBin> bins;
    for (int i = 1; i <= 15; ++i)
        bins.push_back({27.0 * i, 0,
                        truth.GetModelValue(27.0 * i, 0) * (1 + 0.05 * std::sin(7 * i)),
                        100 + 10 * i});
    FitPlan plan;
    plan.structures = {Type::Gaussian};
    plan.exactMinimum = exact;
    const FittedModel fitted = fitVariogram(bins, plan);
    QCOMPARE(fitted.remark, QString());
    // Sums of weighted residuals: with 1 and the shape for the sills, with u^power for the range.
    double sums[3] = {}, sizes[3] = {}, squares = 0;
    for (const LagBin &bin : bins) {
        const double u = bin.lag / fitted.model.structures[1].majorRange;
        const double weight = double(bin.pairs) / (bin.lag * bin.lag);
        const double residual = bin.value - fitted.model.GetModelValue(bin.lag, 0);
        const double tail = std::exp(-3 * u * u);
        const double factors[3] = {1, 1 - tail, std::pow(u, power) * tail};
        for (int k = 0; k < 3; ++k) {
            sums[k] += weight * residual * factors[k];
            sizes[k] += std::fabs(weight * residual * factors[k]);
        }
        squares += weight * residual * residual;
    }
    for (int k = 0; k < 3; ++k)
        QVERIFY2(std::fabs(sums[k]) < 1e-5 * sizes[k],
                 qPrintable(QString("sum %1: %2 of %3").arg(k).arg(sums[k]).arg(sizes[k])));
    QCOMPARE(fitted.squares, squares);
}

void TestGeostatistics::equalsThePlainSystem_data()
{
    QTest::addColumn<QString>("model");
    QTest::addColumn<int>("most");
    QTest::addColumn<int>("perQuadrant");
    QTest::addColumn<double>("radius");
    QTest::addColumn<QString>("drift"); // mean, 0, 1, 2, external
    QTest::addColumn<bool>("blocks");
    const QString spherical("nugget:0.1,spherical:0.9:400");
    const QString nested("nugget:0.05,exponential:0.5:200,cubic:0.4:600:300:40");
    const double far = std::numeric_limits<double>::infinity();
    QTest::newRow("ordinary, all") << spherical << 0 << 0 << far << "0" << false;
    QTest::newRow("ordinary, nearest") << nested << 12 << 0 << far << "0" << false;
    QTest::newRow("simple, radius") << nested << 0 << 0 << 260.0 << "mean" << false;
    QTest::newRow("plane, nearest") << spherical << 15 << 0 << far << "1" << false;
    QTest::newRow("parabola, all") << "gaussian:1:150" << 0 << 0 << far << "2" << false;
    QTest::newRow("quadrants") << spherical << 10 << 3 << 400.0 << "0" << false;
    QTest::newRow("external drift") << nested << 18 << 0 << far << "external" << false;
    QTest::newRow("power") << "nugget:0.1,power:0.01:0.9" << 12 << 0 << far << "1" << false;
    QTest::newRow("blocks") << nested << 14 << 0 << far << "1" << true;
}

void TestGeostatistics::equalsThePlainSystem()
{
    QFETCH(QString, model);
    QFETCH(int, most);
    QFETCH(int, perQuadrant);
    QFETCH(double, radius);
    QFETCH(QString, drift);
    QFETCH(bool, blocks);
    const Samples samples = randomSamples(140, 21);
    const auto external = [](double x, double y) { return std::cos(x / 90) + y / 300; };
    KrigingPlan plan;
    plan.model = parseStructures(model);
    plan.neighborhood.most = most;
    plan.neighborhood.perQuadrant = perQuadrant;
    plan.neighborhood.radius = radius;
    if (drift == "mean")
        plan.mean = 0.7;
    plan.degree = drift.toInt();
    Targets targets;
    for (int i = 0; i < 400; ++i) {
        targets.x.push_back(25 + 50 * (i % 20));
        targets.y.push_back(1000 - 50 * (i / 20));
    }
    if (drift == "external") {
        for (size_t i = 0; i < samples.size(); ++i)
            plan.sampleDrift.push_back(external(samples.x[i], samples.y[i]));
        for (size_t i = 0; i < targets.size(); ++i)
            targets.drift.push_back(external(targets.x[i], targets.y[i]));
    }
    if (blocks)
        targets.block = {{-10, -10}, {10, -10}, {-10, 10}, {10, 10}, {0, 3}};
    const std::vector<QPointF> offsets =
        blocks ? targets.block : std::vector<QPointF>{QPointF(0, 0)};
    Kriging kriging(samples, plan);
    const std::vector<Estimate> found = kriging.predict(targets, kSilent);

    const auto gamma = [&](double dx, double dy, bool smooth) {
        double sum = 0;
        for (const VariogramBasicModel &structure : plan.model.structures)
            if (!smooth || structure.type != Type::Nugget)
                sum += structure.GetBasicModelValue(std::hypot(dx, dy), std::atan2(dy, dx));
            else
                sum += structure.sill; // a block meets a sample at a distance above 0
        return sum;
    };
    for (size_t t = 0; t < targets.size(); t += 7) {
        const double x = targets.x[t], y = targets.y[t];
        // The neighbours.
        std::vector<std::pair<double, size_t>> order;
        for (size_t i = 0; i < samples.size(); ++i)
            order.emplace_back(std::hypot(samples.x[i] - x, samples.y[i] - y), i);
        std::sort(order.begin(), order.end());
        std::vector<size_t> rows;
        int counts[4] = {};
        for (const auto &[h, i] : order) {
            const int quadrant = (samples.x[i] > x) + 2 * (samples.y[i] > y);
            if (h <= radius && (perQuadrant == 0 || counts[quadrant]++ < perQuadrant)
                && (most == 0 || rows.size() < size_t(most)))
                rows.push_back(i);
        }
        // The system of the variogram, and of the covariance with a known mean.
        const auto functions = [&](double px, double py, double e) {
            if (drift == "mean")
                return std::vector<double>();
            std::vector<double> f{1};
            if (plan.degree > 0)
                f.insert(f.end(), {px / 1000, py / 1000});
            if (plan.degree > 1)
                f.insert(f.end(), {px * px / 1e6, px * py / 1e6, py * py / 1e6});
            if (drift == "external")
                f.push_back(e);
            return f;
        };
        const double sill = plan.model.GetSill();
        const double base = drift == "mean" ? sill : 0;
        const size_t n = rows.size();
        const size_t p = functions(0, 0, 0).size();
        std::vector<std::vector<double>> a(n + p, std::vector<double>(n + p));
        std::vector<double> b(n + p);
        double inside = 0;
        for (const QPointF &u : offsets)
            for (const QPointF &v : offsets)
                inside += gamma(u.x() - v.x(), u.y() - v.y(), blocks)
                          / double(offsets.size() * offsets.size());
        for (size_t i = 0; i < n; ++i) {
            const double xi = samples.x[rows[i]], yi = samples.y[rows[i]];
            for (size_t j = 0; j < n; ++j)
                a[i][j] = base - gamma(xi - samples.x[rows[j]], yi - samples.y[rows[j]], false);
            const auto f = functions(xi, yi, external(xi, yi));
            for (size_t k = 0; k < p; ++k)
                a[i][n + k] = a[n + k][i] = f[k];
            for (const QPointF &u : offsets) {
                b[i] +=
                    (base - gamma(xi - x - u.x(), yi - y - u.y(), blocks)) / double(offsets.size());
            }
        }
        for (const QPointF &u : offsets) {
            const auto f = functions(x + u.x(), y + u.y(), external(x, y));
            for (size_t k = 0; k < p; ++k)
                b[n + k] += f[k] / double(offsets.size());
        }
        const std::vector<double> solved = plainSolve(a, b);
        double value = plan.mean.value_or(0), variance = base - inside, sum = 0;
        for (size_t i = 0; i < n; ++i)
            value += solved[i] * (samples.values[rows[i]] - plan.mean.value_or(0));
        for (size_t i = 0; i < n + p; ++i)
            variance -= solved[i] * b[i];
        const QString where = QString("target %1").arg(t);
        QVERIFY2(std::fabs(found[t].value - value) < 1e-8, qPrintable(where));
        QVERIFY2(std::fabs(found[t].variance - variance) < 1e-8, qPrintable(where));

        std::vector<int> used;
        std::vector<double> weights;
        kriging.weights(targets, t, used, weights);
        for (const double weight : weights)
            sum += weight;
        QCOMPARE(used.size(), n);
        if (drift != "mean")
            QVERIFY2(std::fabs(sum - 1) < 1e-9, qPrintable(where));
    }
}

void TestGeostatistics::returnsTheDatumAtItsPlace()
{
    const Samples samples = randomSamples(90, 5);
    KrigingPlan plan;
    plan.model = parseStructures("spherical:1:300");
    Targets targets;
    targets.x = samples.x;
    targets.y = samples.y;
    const std::vector<Estimate> exact = Kriging(samples, plan).predict(targets, kSilent);
    for (double &x : targets.x)
        x += 1e-9; // the system itself, as close as the distance
    const std::vector<Estimate> close = Kriging(samples, plan).predict(targets, kSilent);
    for (size_t i = 0; i < samples.size(); ++i) {
        QCOMPARE(exact[i].value, samples.values[i]);
        QCOMPARE(exact[i].variance, 0.0);
        QVERIFY(std::fabs(close[i].value - samples.values[i]) < 1e-8);
        QVERIFY(close[i].variance < 1e-8);
    }
    // Left out, a datum has no influence on the prediction at its place.
    targets.x = samples.x;
    for (size_t i = 0; i < samples.size(); ++i)
        targets.leftOut.push_back(int(i));
    const std::vector<Estimate> without = Kriging(samples, plan).predict(targets, kSilent);
    Samples changed = samples;
    changed.values[11] = 1e6;
    QCOMPARE(Kriging(changed, plan).predict(targets, kSilent)[11].value, without[11].value);
}

void TestGeostatistics::dropsNeighborsThatDependOnOthers()
{
    // A Gaussian model without a nugget: two samples a millimetre apart in a field of kilometres.
    Samples samples = randomSamples(40, 6);
    samples.add({samples.x[7] + 1e-3, samples.y[7]}, samples.values[7], 40);
    KrigingPlan plan;
    plan.model = parseStructures("gaussian:1:500");
    Targets targets;
    targets.x = {samples.x[7] + 20, 500};
    targets.y = {samples.y[7], 500};
    Kriging kriging(samples, plan);
    const std::vector<Estimate> found = kriging.predict(targets, kSilent);
    QVERIFY(kriging.remarks().dropped > 0);
    for (const Estimate &estimate : found) {
        QVERIFY2(std::fabs(estimate.value) < 10, qPrintable(QString::number(estimate.value)));
        QVERIFY2(estimate.variance >= 0, qPrintable(QString::number(estimate.variance)));
        QVERIFY2(estimate.variance <= 1, qPrintable(QString::number(estimate.variance)));
    }
    // Samples on a line do not determine a plane.
    Samples line;
    for (int i = 0; i < 12; ++i)
        line.add({10.0 * i, 5}, i % 3, i);
    plan.model = parseStructures("spherical:1:50");
    plan.degree = 1;
    Kriging tilted(line, plan);
    QVERIFY(std::isnan(tilted.predict(targets, kSilent)[0].value));
    QCOMPARE(tilted.remarks().undetermined, 2);
}

/// Along a range of 1e10 map units the covariance is the sill, though rounding leaves squares of
/// separations below 0 in about a third of the directions.
void TestGeostatistics::isConstantAlongAnEndlessRange()
{
    for (const char *type : {"spherical", "exponential", "gaussian", "cubic"}) {
        for (int degrees = 1; degrees < 180; ++degrees) {
            const Covariance model(
                parseStructures(QString("%1:1:10:1e10:%2").arg(type).arg(degrees)));
            const double angle = degrees * 3.14159265358979323846 / 180;
            const double value = model.at(-1000 * std::sin(angle), 1000 * std::cos(angle));
            QVERIFY2(std::fabs(value - 1) < 1e-3,
                     qPrintable(QString("%1 %2: %3").arg(type).arg(degrees).arg(value)));
        }
    }
}

void TestGeostatistics::scoresAreUndone()
{
    std::vector<double> values = randomSamples(101, 9).values;
    values[3] = values[50] = values[77]; // a tie
    const NormalScores scores(values);
    double sum = 0;
    for (size_t i = 0; i < values.size(); ++i) {
        QCOMPARE(scores.valueOf(scores.scores()[i]), values[i]);
        sum += scores.scores()[i];
    }
    QVERIFY(std::fabs(sum) < 1e-9);
    QCOMPARE(scores.scores()[3], scores.scores()[77]);
    QCOMPARE(scores.valueOf(9), *std::max_element(values.begin(), values.end()));
    QCOMPARE(scores.valueOf(-9), *std::min_element(values.begin(), values.end()));
}

/// 200 realizations of 100 by 100 cells, conditional on 30 samples in cells and not conditional. A
/// mean over the grid of one realization has the deviation 0.13 under this model, so that the mean
/// of 200 has 0.009; the bands are four deviations wide. The band of the variogram, 6 %, allows for
/// the neighbours that a simulation does not use; with 40 neighbours 3 % are met.
void TestGeostatistics::realizationsHaveTheModel()
{
    constexpr int kSide = 100;
    constexpr int kCount = 200;
    SimulationPlan plan;
    plan.model = parseStructures("nugget:0.1,spherical:0.9:20");
    plan.mean = 2;
    plan.seed = 12;
    const SimulationGrid grid{kSide, kSide, 0, kSide, 1, 1};
    GridSimulation simulation({}, grid, plan, kSilent);
    QVERIFY2(simulation.keptBytes() <= 200 * grid.cells(),
             qPrintable(QString::number(simulation.keptBytes())));
    double mean = 0, square = 0;
    const int lags[] = {1, 5, 10, 15, 30};
    double gamma[5] = {};
    int below[5] = {}; // the histogram: quantiles of the normal distribution
    const double quantiles[] = {-1.2816, -0.5244, 0, 0.5244, 1.2816};
    std::vector<double> values;
    for (int r = 0; r < kCount; ++r) {
        simulation.next(values);
        for (size_t i = 0; i < values.size(); ++i) {
            const double v = values[i] - plan.mean;
            mean += v;
            square += v * v;
            for (int q = 0; q < 5; ++q)
                below[q] += v <= quantiles[q];
        }
        for (int k = 0; k < 5; ++k)
            for (int row = 0; row < kSide; ++row)
                for (int column = 0; column + lags[k] < kSide; ++column) {
                    const double d = values[size_t(row * kSide + column)]
                                     - values[size_t(row * kSide + column + lags[k])];
                    gamma[k] += d * d / (2.0 * kSide * (kSide - lags[k]) * kCount);
                }
    }
    const double n = double(kCount) * kSide * kSide;
    QVERIFY2(std::fabs(mean / n) < 0.04, qPrintable(QString::number(mean / n)));
    QVERIFY2(std::fabs(square / n - 1) < 0.05, qPrintable(QString::number(square / n)));
    for (int k = 0; k < 5; ++k)
        QCOMPARE(difference(gamma[k], plan.model.GetModelValue(lags[k], 0), 0.06,
                            QString("lag %1").arg(lags[k])),
                 QString());
    const double shares[] = {0.1, 0.3, 0.5, 0.7, 0.9};
    for (int q = 0; q < 5; ++q)
        QVERIFY2(std::fabs(below[q] / n - shares[q]) < 0.02,
                 qPrintable(QString::number(below[q] / n)));

    // Conditional: the mean of the realizations approaches simple kriging from all samples.
    Samples samples;
    for (int i = 0; i < 30; ++i)
        samples.add({(i * 37) % 100 + 0.5, (i * 61) % 100 + 0.5}, 2 + std::sin(i), i);
    GridSimulation given(samples, grid, plan, kSilent);
    std::vector<double> sums(values.size());
    for (int r = 0; r < kCount; ++r) {
        given.next(values);
        for (size_t i = 0; i < samples.size(); ++i)
            QCOMPARE(values[size_t(99.5 - samples.y[i]) * kSide + size_t(samples.x[i])],
                     samples.values[i]);
        for (size_t i = 0; i < values.size(); ++i)
            sums[i] += values[i] / kCount;
    }
    KrigingPlan kriging;
    kriging.model = plan.model;
    kriging.mean = plan.mean;
    kriging.neighborhood.most = 0;
    Targets targets;
    for (int i = 0; i < kSide * kSide; ++i) {
        targets.x.push_back(grid.x(i % kSide));
        targets.y.push_back(grid.y(i / kSide));
    }
    const std::vector<Estimate> expected = Kriging(samples, kriging).predict(targets, kSilent);
    double far = 0; // in deviations of the mean of 200; the expectation of the square is 1
    int counted = 0;
    for (size_t i = 0; i < expected.size(); ++i) {
        if (expected[i].variance == 0)
            continue;
        const double d = sums[i] - expected[i].value;
        far += d * d / (expected[i].variance / kCount);
        ++counted;
    }
    QVERIFY2(std::fabs(far / counted - 1) < 0.3, qPrintable(QString::number(far / counted)));
}

void TestGeostatistics::givesTheSameRealizationsForASeed()
{
    const Samples samples = randomSamples(50, 31, 40);
    const SimulationGrid grid{40, 23, 0, 40, 1, 1.7}; // uneven, and partly beyond the samples
    SimulationPlan plan;
    plan.model = parseStructures("exponential:1:25:10:70");
    plan.seed = 5;
    std::vector<double> first, second, other;
    GridSimulation(samples, grid, plan, kSilent).next(first);
    GridSimulation(samples, grid, plan, kSilent).next(second);
    plan.seed = 6;
    GridSimulation(samples, grid, plan, kSilent).next(other);
    QCOMPARE(first, second);
    QVERIFY(first != other);
}

void TestGeostatistics::refusesWhatHasNoAnswer_data()
{
    QTest::addColumn<std::function<void()>>("call");
    QTest::addColumn<QString>("text");
    const auto row = [](const char *name, const char *text, std::function<void()> call) {
        QTest::newRow(name) << call << QString(text);
    };
    Samples same;
    same.add({1, 1}, 2, 0);
    same.add({1, 1}, 3, 1);
    const std::vector<LagBin> flat{{1, 0, 0, 9}, {2, 0, 0, 9}, {3, 0, 0, 9}};
    const auto krige = [](const Samples &samples, const char *model, std::optional<double> mean) {
        KrigingPlan plan;
        plan.model = parseStructures(model);
        plan.mean = mean;
        Kriging(samples, plan);
    };
    row("no separation", "all places are the same; there are no separations", [=] {
        LagPlan plan;
        completeLags(plan, diagonalOf(same));
        LagSums{plan};
    });
    row("all values equal", "all values are equal; there is no variogram to fit",
        [=] { fitVariogram(flat, FitPlan()); });
    row("too few classes", "2 classes of pairs are too few for 3 parameters", [=] {
        fitVariogram({flat[0], flat[1]}, FitPlan());
    });
    row("one class", "1 class of pairs is too few for 3 parameters",
        [=] { fitVariogram({flat[0]}, FitPlan()); });
    // No sum of squares is finite, so that no search may begin.
    row("a nugget beyond numbers", "the semivariances or the nugget are too large for a fit", [=] {
        FitPlan plan;
        plan.nugget = 1e308;
        fitVariogram({{1, 0, 1, 9}, {2, 0, 2, 9}, {3, 0, 2, 9}}, plan);
    });
    row("an empty structure", "spherical:1:5,: a structure is empty",
        [] { parseStructures("spherical:1:5,"); });
    row("co-located", "several samples have the same place",
        [=] { krige(same, "spherical:1:9", {}); });
    row("no values", "there are no values to predict from",
        [=] { krige(Samples(), "spherical:1:9", {}); });
    row("range of 0", "the range of a spherical structure is 0",
        [] { parseStructures("spherical:1:0"); });
    row("range whose square is 0", "the range of a spherical structure is 1e-200",
        [] { parseStructures("spherical:1:1e-200"); });
    row("range whose square is infinite", "the range of a cubic structure is 1e+200",
        [] { parseStructures("cubic:1:5:1e200:30"); });
    row("sill below 0", "the sill of a cubic structure is -1",
        [] { parseStructures("cubic:-1:5"); });
    row("exponent of 2", "the exponent of a power structure is 2; it must be below 2",
        [] { parseStructures("power:1:2"); });
    row("simple kriging with a power",
        "a power structure has no covariance, which simple kriging needs",
        [=] { krige(randomSamples(9, 1), "power:1:1", 0.5); });
    row("simulation with a power", "a power structure has no covariance, which a simulation needs",
        [] {
            SimulationPlan plan;
            plan.model = parseStructures("power:1:1");
            GridSimulation({}, {4, 4, 0, 4, 1, 1}, plan, kSilent);
        });
    row("scores of equal values", "normal scores need two different values", [] {
        NormalScores({3, 3, 3});
    });
}

void TestGeostatistics::refusesWhatHasNoAnswer()
{
    QFETCH(std::function<void()>, call);
    QFETCH(QString, text);
    QCOMPARE(failureOf(call), text);
}

QTEST_GUILESS_MAIN(TestGeostatistics)
#include "tst_Geostatistics.moc"
