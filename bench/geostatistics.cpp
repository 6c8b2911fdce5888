// SPDX-License-Identifier: MIT
// Variograms, kriging and simulation, compared with plain loops, with LAPACK, and with R's gstat if
// it is installed. R measures its own time, without its start and the transfer of the data.
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <cmath>
#include <random>
#include <vector>
#include "core/geostatistics/empiricalVariogram.h"
#include "core/geostatistics/kriging.h"
#include "core/geostatistics/simulation.h"
#include "ratios.h"

extern "C" void dposv_(const char *uplo, const int *n, const int *columns, double *a,
                       const int *lda, double *b, const int *ldb, int *info);

using namespace meridor;

namespace {

constexpr double kExtent = 1000;
const Meter kSilent = [](int) {};
const char *const kModel = "nugget:0.1,spherical:0.9:120";
const char *const kModelOfR = "vgm(0.9, 'Sph', 120, 0.1)";

Samples points(int count)
{
    std::mt19937 generator(5);
    std::uniform_real_distribution<double> place(0, kExtent);
    std::normal_distribution<double> normal;
    Samples samples;
    for (int i = 0; i < count; ++i) {
        const QPointF at(place(generator), place(generator));
        samples.add(at, std::sin(at.x() / 90) + 0.3 * normal(generator), i);
    }
    return samples;
}

/// Seconds that R needs for `work` on the samples d (x, y, z); below 0 without gstat.
double secondsOfR(const Samples &samples, const QString &prepare, const QString &work)
{
    const QTemporaryDir directory;
    QFile table(directory.filePath("d.txt"));
    QFile script(directory.filePath("s.R"));
    if (!table.open(QIODevice::WriteOnly) || !script.open(QIODevice::WriteOnly))
        return -1;
    for (size_t i = 0; i < samples.size(); ++i)
        table.write(QByteArray::number(samples.x[i], 'g', 17) + ' '
                    + QByteArray::number(samples.y[i], 'g', 17) + ' '
                    + QByteArray::number(samples.values[i], 'g', 17) + '\n');
    table.close();
    script.write(QString("suppressMessages({library(sp); library(gstat)})\n"
                         "d <- read.table('%1', col.names = c('x', 'y', 'z'))\n"
                         "coordinates(d) <- ~x+y\n%2\n"
                         "t <- system.time(%3)\ncat('seconds', t[['elapsed']], '\\n')\n")
                     .arg(table.fileName(), prepare, work)
                     .toUtf8());
    script.close();
    QProcess r;
    r.start("Rscript", {script.fileName()});
    if (!r.waitForStarted() || !r.waitForFinished(-1) || r.exitCode() != 0)
        return -1;
    const QList<QByteArray> words = r.readAllStandardOutput().simplified().split(' ');
    const int at = words.lastIndexOf("seconds");
    return at < 0 ? -1 : words[at + 1].toDouble();
}

/// Ours and R's in turns; the best of the rounds.
template <class Work>
void againstR(const char *name, double count, double target, Work ours, const Samples &samples,
              const QString &prepare, const QString &work, int rounds = 2)
{
    double best = 1e300;
    double bestOfR = 1e300;
    for (int round = 0; round < rounds; ++round) {
        best = std::min(best, ratios::secondsOf(ours));
        const double seconds = secondsOfR(samples, prepare, work);
        if (seconds <= 0) {
            std::printf("%-52s (R's gstat is not installed)\n", name);
            return;
        }
        bestOfR = std::min(bestOfR, seconds);
    }
    ratios::row(name, 1e6 * best / count, "gstat", 1e6 * bestOfR / count, target, "us");
}

LagPlan lags()
{
    LagPlan plan;
    plan.cutoff = kExtent / 10;
    plan.width = plan.cutoff / 15;
    return plan;
}

void variogramOf(const Samples &samples)
{
    LagSums sums(lags());
    sums.add(samples, kSilent);
    benchmark::DoNotOptimize(sums.bins());
}

struct Pair {
    int a;
    int b;
};

/// Pairs within the cutoff, at most `most`, and the number of all of them.
std::vector<Pair> pairsOf(const Samples &samples, size_t most, double &all)
{
    LagSums sums(lags());
    sums.add(samples, kSilent);
    all = 0;
    for (const LagBin &bin : sums.bins())
        all += double(bin.pairs);
    std::vector<Pair> pairs;
    const double reach = lags().cutoff * lags().cutoff;
    for (size_t i = 0; i < samples.size() && pairs.size() < most; ++i)
        for (size_t j = 0; j < i && pairs.size() < most; ++j) {
            const double dx = samples.x[i] - samples.x[j];
            const double dy = samples.y[i] - samples.y[j];
            if (dx * dx + dy * dy <= reach)
                pairs.push_back({int(i), int(j)});
        }
    return pairs;
}

void plainVariogram(const Samples &samples, const std::vector<Pair> &pairs)
{
    struct Sum {
        double value = 0, lag = 0;
        qint64 pairs = 0;
    };
    Sum sums[16];
    const double width = lags().width;
    for (const Pair &pair : pairs) {
        const auto a = size_t(pair.a);
        const auto b = size_t(pair.b);
        const double dx = samples.x[a] - samples.x[b];
        const double dy = samples.y[a] - samples.y[b];
        const double h = std::sqrt(dx * dx + dy * dy);
        const double dz = samples.values[a] - samples.values[b];
        Sum &sum = sums[static_cast<int>(h / width)];
        sum.value += dz * dz;
        sum.lag += h;
        ++sum.pairs;
    }
    benchmark::DoNotOptimize(sums);
}

/// The same from the samples alone: sorted by cells as wide as the cutoff, each is compared with those
/// after it in its cell and in the next four cells.
void plainSweep(const Samples &given)
{
    const double width = lags().width;
    const double cutoff = lags().cutoff;
    const auto cell = [&](double at) { return size_t(at / cutoff); };
    const size_t columns = cell(kExtent) + 1;
    std::vector<std::vector<size_t>> rowsOf(columns * columns);
    for (size_t i = 0; i < given.size(); ++i)
        rowsOf[cell(given.y[i]) * columns + cell(given.x[i])].push_back(i);
    Samples sorted;
    std::vector<size_t> starts{0};
    for (const std::vector<size_t> &rows : rowsOf) {
        for (const size_t i : rows)
            sorted.add({given.x[i], given.y[i]}, given.values[i], int(i));
        starts.push_back(sorted.size());
    }
    struct Sum {
        double value = 0, lag = 0;
        qint64 pairs = 0;
    };
    Sum sums[16];
    const auto compare = [&](size_t i, size_t from, size_t to) {
        for (size_t j = from; j < to; ++j) {
            const double dx = sorted.x[i] - sorted.x[j];
            const double dy = sorted.y[i] - sorted.y[j];
            const double square = dx * dx + dy * dy;
            if (square > cutoff * cutoff)
                continue;
            const double h = std::sqrt(square);
            const double dz = sorted.values[i] - sorted.values[j];
            Sum &sum = sums[static_cast<int>(h / width)];
            sum.value += dz * dz;
            sum.lag += h;
            ++sum.pairs;
        }
    };
    for (size_t row = 0; row < columns; ++row) {
        for (size_t column = 0; column < columns; ++column) {
            const size_t own = row * columns + column;
            const size_t last = std::min(column + 1, columns - 1) - column;
            const size_t first = column > 0 ? own - 1 : own;
            for (size_t i = starts[own]; i < starts[own + 1]; ++i) {
                compare(i, i + 1, starts[own + last + 1]);
                if (row + 1 < columns)
                    compare(i, starts[first + columns], starts[own + last + 1 + columns]);
            }
        }
    }
    benchmark::DoNotOptimize(sums);
}

Targets cells(int side)
{
    Targets targets;
    for (int i = 0; i < side * side; ++i) {
        targets.x.push_back((i % side + 0.5) * kExtent / side);
        targets.y.push_back(kExtent - (i / side + 0.5) * kExtent / side);
    }
    return targets;
}

void benchVariograms()
{
    for (const int count : {20000, 100000}) {
        const Samples samples = points(count);
        double all = 0;
        const std::vector<Pair> pairs = pairsOf(samples, 5000000, all);
        const auto [ours, plain] = ratios::bestInTurns(
            3, 1, [&] { variogramOf(samples); }, [&] { plainVariogram(samples, pairs); });
        const char *const name = count == 20000 ? "variogram, 20,000 points, a pair"
                                                : "variogram, 100,000 points, a pair";
        ratios::row(name, ours / all, "plain loop over a list of the pairs",
                    plain / double(pairs.size()), 1.5);
        const auto [again, sweep] = ratios::bestInTurns(
            3, 1, [&] { variogramOf(samples); }, [&] { plainSweep(samples); });
        ratios::row(name, again / all, "plain loop that finds the pairs", sweep / all, 1.5);
    }
    for (const int count : {20000, 100000}) {
        const Samples samples = points(count);
        againstR(
            count == 20000 ? "variogram, 20,000 points, a point"
                           : "variogram, 100,000 points, a point",
            count, 0.05, [&] { variogramOf(samples); }, samples, "",
            "variogram(z ~ 1, d, cutoff = 100, width = 100 / 15)", count == 20000 ? 2 : 1);
    }
}

void benchKriging()
{
    const Samples samples = points(10000);
    KrigingPlan plan;
    plan.model = parseStructures(kModel);
    const Targets targets = cells(1000);
    againstR(
        "ordinary kriging, 10,000 points, 1,000,000 cells", 1e6, 0.4,
        [&] { benchmark::DoNotOptimize(Kriging(samples, plan).predict(targets, kSilent)); },
        samples, "g <- expand.grid(x = 1:1000 - 0.5, y = 1:1000 - 0.5); coordinates(g) <- ~x+y",
        QString("krige(z ~ 1, d, g, %1, nmax = 20, debug.level = 0)").arg(kModelOfR));
}

void benchSimulation()
{
    const Samples samples = points(155);
    const SimulationGrid grid{200, 200, 0, kExtent, 5, 5};
    SimulationPlan plan;
    plan.model = parseStructures(kModel);
    againstR(
        "100 realizations of 40,000 cells, a cell", 4e6, 0.2,
        [&] {
            GridSimulation simulation(samples, grid, plan, kSilent);
            std::vector<double> values;
            for (int i = 0; i < 100; ++i)
                simulation.next(values);
            benchmark::DoNotOptimize(values.data());
        },
        samples,
        "g <- expand.grid(x = 5 * (1:200) - 2.5, y = 5 * (1:200) - 2.5); coordinates(g) <- ~x+y; "
        "gridded(g) <- TRUE",
        QString("krige(z ~ 1, d, g, %1, nmax = 20, nsim = 100, beta = 0, debug.level = 0)")
            .arg(kModelOfR));
}

void benchSolve()
{
    constexpr int kSize = 20;
    constexpr int kRounds = 20000;
    const Samples samples = points(kSize);
    const Covariance model(parseStructures("nugget:0.1,spherical:0.9:900"));
    double matrix[kSize * kSize];
    for (int j = 0; j < kSize; ++j)
        model.fill(samples.x[size_t(j)], samples.y[size_t(j)], samples.x.data(), samples.y.data(),
                   kSize, matrix + j * kSize);
    CholeskyFactor factor;
    std::vector<double> b(kSize, 1.0);
    const auto ours = [&] {
        for (int round = 0; round < kRounds; ++round) {
            factor.resize(kSize);
            std::copy(matrix, matrix + kSize * kSize, &factor.element(0, 0));
            factor.factor();
            b.assign(kSize, 1.0);
            factor.forward(b.data());
            factor.backward(b.data());
            benchmark::DoNotOptimize(b.data());
        }
    };
    const auto lapack = [&] {
        double a[kSize * kSize];
        const int one = 1;
        int info = 0;
        for (int round = 0; round < kRounds; ++round) {
            std::copy(matrix, matrix + kSize * kSize, a);
            b.assign(kSize, 1.0);
            dposv_("L", &kSize, &one, a, &kSize, b.data(), &kSize, &info);
            benchmark::DoNotOptimize(b.data());
        }
    };
    const auto [mine, theirs] = ratios::bestInTurns(5, kRounds, ours, lapack);
    ratios::row("solve of 20 by 20", mine, "LAPACK dposv", theirs, 2);
}

} // namespace

int main()
{
    ratios::head("geostatistics");
    benchSolve();
    benchVariograms();
    benchKriging();
    benchSimulation();
    return ratios::missed > 0;
}
