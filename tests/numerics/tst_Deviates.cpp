// SPDX-License-Identifier: MIT
#include <algorithm>
#include <cmath>
#include <functional>
#include <random>
#include "datainterface/StatisticsAPI.h"
#include "numerics/deviates.h"
#include "support/checks.h"
#include "support/support.h"

namespace {

constexpr int kDraws = 100000;

// The largest distance between the empirical and the stated distribution function, times sqrt(n).
// Above 2.5 with probability 7e-6 (A. N. Kolmogorov 1933); the seeds are fixed, so a run that
// passes always passes.
double kolmogorov(QVector<double> values, const std::function<double(double)> &distribution)
{
    std::sort(values.begin(), values.end());
    double largest = 0.0;
    for (int i = 0; i < values.size(); ++i) {
        const double f = distribution(values[i]);
        largest = std::max({largest, std::fabs(f - double(i) / values.size()),
                            std::fabs(f - double(i + 1) / values.size())});
    }
    return largest * std::sqrt(double(values.size()));
}

double normal(double x)
{
    return 0.5 * std::erfc(-x / std::sqrt(2.0));
}

} // namespace

class TestDeviates : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void theGeneratorGivesThePublishedOutputs()
    {
        datainterface::MersenneTwister own; // unseeded: the default seed, 5489
        QCOMPARE(own.draw(), 3499211612U);
        QCOMPARE(own.draw(), 581869302U);
        QCOMPARE(own.draw(), 3890346734U);
        // The 10,000th output of the default seed, as the C++ standard states it.
        for (int i = 4; i < 10000; ++i)
            own.draw();
        QCOMPARE(own.draw(), 4123659995U);
        for (const quint32 seed : {0U, 1U, 4357U, 0xffffffffU}) {
            datainterface::MersenneTwister generator;
            generator.seed(seed);
            std::mt19937 reference(seed);
            for (int i = 0; i < 2000; ++i)
                QCOMPARE(generator.draw(), quint32(reference()));
        }
    }

    void equalSeedsGiveEqualSequences()
    {
        VORN_SetRandomSeed(-7);
        const double uniform = VORN_GetUniformDeviate();
        const QVector<double> normals = VORN_GetNormalDeviates(5);
        QCOMPARE(VORN_GetNormalDeviates(0).size() + VORN_GetNormalDeviates(-3).size(), 0);
        VORN_SetRandomSeed(-7);
        QCOMPARE(VORN_GetUniformDeviate(), uniform);
        // One by one, and across the pairs of the transform, the stream is the same.
        QCOMPARE(VORN_GetNormalDeviate(), normals[0]);
        const QVector<double> rest = VORN_GetNormalDeviates(4);
        for (int i = 0; i < 4; ++i)
            QCOMPARE(rest[i], normals[i + 1]);
    }

    void continuousDeviatesFollowTheirDistribution()
    {
        const auto check = [](const char *name, const std::function<double()> &draw,
                              const std::function<double(double)> &distribution) {
            VORN_SetRandomSeed(20261121);
            QVector<double> values(kDraws);
            std::generate(values.begin(), values.end(), draw);
            const double distance = kolmogorov(values, distribution);
            QVERIFY2(distance < 2.5, qPrintable(QString("%1: %2").arg(name).arg(distance)));
        };
        check("uniform", &VORN_GetUniformDeviate, [](double x) { return x; });
        check("normal", &VORN_GetNormalDeviate, &normal);
        check(
            "exponential", [] { return VORN_GetExponentialDeviate(2.0); },
            [](double x) { return 1.0 - std::exp(-x / 2.0); });
        check(
            "triangular", [] { return VORN_GetTriangularDeviate(10.0, 4.0); },
            [](double x) {
                const double u = (x - 8.0) / 4.0;
                return u < 0.5 ? 2.0 * u * u : 1.0 - 2.0 * (1.0 - u) * (1.0 - u);
            });
    }

    void countsFollowTheirDistribution_data()
    {
        QTest::addColumn<int>("n");
        QTest::addColumn<double>("parameter");
        const auto check = [](const char *name, int n, double parameter) {
            QTest::newRow(name) << n << parameter;
        };
        check("Poisson by multiplication", 0, 3.7);
        check("Poisson by rejection", 0, 45.5);
        check("binomial of few trials", 20, 0.7);
        check("binomial, few expected", 200, 0.004);
        check("binomial, few failures", 200, 0.998);
        check("binomial by rejection", 300, 0.35);
        check("binomial by rejection, likely", 60, 0.9);
    }
    void countsFollowTheirDistribution()
    {
        QFETCH(int, n);
        QFETCH(double, parameter);
        VORN_SetRandomSeed(4711);
        QVector<int> counts(400, 0);
        for (int i = 0; i < kDraws; ++i) {
            const int count =
                n ? VORN_GetBinomialDeviate(parameter, n) : VORN_GetPoissonDeviate(parameter);
            QCOMPARE(answers({count >= 0, (n == 0 || count <= n), count < counts.size()}), "yyy");
            ++counts[count];
        }
        // Chi-square over the values that are expected 10 times and more, against mean + 6
        // deviations of its distribution.
        double chi = 0.0;
        int cells = 0;
        for (int k = 0; k < counts.size() && (n == 0 || k <= n); ++k) {
            const double logP = n ? std::lgamma(n + 1.0) - std::lgamma(k + 1.0)
                                        - std::lgamma(n - k + 1.0) + k * std::log(parameter)
                                        + (n - k) * std::log1p(-parameter)
                                  : k * std::log(parameter) - parameter - std::lgamma(k + 1.0);
            const double expected = kDraws * std::exp(logP);
            if (expected < 10.0)
                continue;
            chi += (counts[k] - expected) * (counts[k] - expected) / expected;
            ++cells;
        }
        QVERIFY(cells > 3);
        QVERIFY2(chi < cells + 6.0 * std::sqrt(2.0 * cells),
                 qPrintable(QString("%1 in %2 cells").arg(chi).arg(cells)));
    }

    void absurdParametersGiveZero()
    {
        for (const double mean : {0.0, -1.0, std::nan(""), HUGE_VAL})
            QCOMPARE(VORN_GetPoissonDeviate(mean), 0);
        QCOMPARE(VORN_GetBinomialDeviate(std::nan(""), 10), 0);
        QCOMPARE(VORN_GetBinomialDeviate(0.5, 0), 0);
        QCOMPARE(VORN_GetBinomialDeviate(1.0, 1000), 1000);
        QCOMPARE(VORN_GetBinomialDeviate(0.0, 1000), 0);
    }
};

QTEST_GUILESS_MAIN(TestDeviates)
#include "tst_Deviates.moc"
