// SPDX-License-Identifier: MIT
// Against Boost.Math, which is good to a few units in the last place, over a grid from the centre
// far into both tails.
#include <boost/math/distributions.hpp>
#include <cmath>
#include "datainterface/StatisticsAPI.h"
#include "support/checks.h"
#include "support/support.h"

namespace math = boost::math;

namespace {

constexpr double kError = 1e-9; // absolute: what the log-gamma series carries
const double kNaN = std::nan("");

// A domain that raises nothing: infinities and zeros come back as values.
using Quiet = math::policies::policy<math::policies::overflow_error<math::policies::ignore_error>>;

class Worst {
public:
    void add(double ours, double reference, const QString &where)
    {
        const double error = std::fabs(ours - reference);
        if (!(error <= mError)) {
            mError = error;
            mWhere = where;
        }
    }
    bool within(double limit) const { return mError <= limit; }
    QByteArray text() const { return (mWhere + QString(": off by %1").arg(mError)).toUtf8(); }

private:
    double mError = 0.0;
    QString mWhere = "nowhere";
};

} // namespace

class TestDistributions : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void normalAgreesAndInverts()
    {
        Worst worst;
        Worst inverse;
        for (double x = -38.0; x <= 38.0; x += 0.01) {
            double p = kNaN;
            QVERIFY(VORN_GetNormalP(x, p));
            worst.add(p, math::cdf(math::normal(), x), QString::number(x));
        }
        for (double p = 1e-300; p < 1.0; p = p < 0.01 ? p * 1.5 : p + 0.0007) {
            double x = kNaN;
            QVERIFY(VORN_GetNormalQuantile(p, x));
            const double reference = math::quantile(math::normal(), p);
            inverse.add(x / reference, std::fabs(reference) < 1e-3 ? x / reference : 1.0,
                        QString::number(p));
        }
        QVERIFY2(worst.within(kError), worst.text());
        QVERIFY2(inverse.within(1.16e-9),
                 inverse.text()); // the published bound of the approximation
    }

    void poissonAgrees()
    {
        Worst worst;
        for (const double mean : {1e-6, 0.1, 1.0, 7.3, 12.0, 100.0, 900.0, 12345.6}) {
            for (int k = 1; k < mean * 3 + 50; k += 1 + k / 20) {
                double p = kNaN;
                QVERIFY(VORN_GetPoissonP(k, mean, p));
                worst.add(p, math::cdf(math::poisson(mean), k - 1),
                          QString("%1 of %2").arg(k).arg(mean));
            }
        }
        QVERIFY2(worst.within(kError), worst.text());
    }

    void binomialAgrees()
    {
        Worst exact;
        Worst approximate;
        Worst cumulative;
        for (const int n : {1, 5, 39, 41, 100, 1000, 30000}) {
            for (const double p : {1e-7, 0.001, 0.02, 0.3, 0.5, 0.77, 0.99}) {
                const math::binomial reference(n, p);
                const bool normal = n * p > 20 && n * (1 - p) > 20;
                for (int k = 0; k <= n; k += 1 + k / 15) {
                    double value = kNaN;
                    const QString where = QString("%1 of %2 at %3").arg(k).arg(n).arg(p);
                    QVERIFY(VORN_GetBinomialP(n, k, p, value));
                    const double mass = math::pdf(reference, k);
                    if (normal)
                        approximate.add(value * n * p * (1 - p), mass * n * p * (1 - p), where);
                    else
                        exact.add(value, mass, where);
                    QVERIFY(VORN_GetCumBinomialP(n, k, p, value));
                    cumulative.add(value, k ? math::cdf(math::complement(reference, k - 1)) : 1.0,
                                   where);
                }
            }
        }
        QVERIFY2(exact.within(kError), exact.text());
        QVERIFY2(cumulative.within(kError), cumulative.text());
        // The skewness term that the approximation leaves out, phi(z) |z^3 - 3 z| |1 - 2p| / (6 n p
        // (1 - p)), is below 0.092 / (n p (1 - p)); terms of higher order add a little.
        QVERIFY2(approximate.within(0.1), approximate.text());
    }

    void studentAndFisherAgree()
    {
        Worst worst;
        double p = kNaN;
        for (const int df : {1, 2, 3, 7, 30, 200, 5000, 1000000}) {
            for (double t = 1e-4; t < 1e6; t *= 1.3) {
                QVERIFY(VORN_GetTDistP(-t, df, p));
                worst.add(p, 1.0 - 2.0 * math::cdf(math::complement(math::students_t(df), t)),
                          QString("%1 with %2").arg(t).arg(df));
            }
        }
        for (const int df1 : {1, 2, 9, 120, 4000}) {
            for (const int df2 : {1, 2, 9, 120, 4000}) {
                for (double f = 1e-4; f < 1e5; f *= 1.4) {
                    QVERIFY(VORN_GetFDistP(f, df1, df2, p));
                    worst.add(p, math::cdf(math::complement(math::fisher_f(df1, df2), f)),
                              QString("%1 with %2, %3").arg(f).arg(df1).arg(df2));
                }
            }
        }
        QVERIFY2(worst.within(kError), worst.text());
    }

    void chiSquareAgrees()
    {
        Worst worst;
        for (const int df : {1, 2, 5, 50, 1000, 100000}) {
            for (double x = 1e-5; x < 1e6; x *= 1.25) {
                double lower = kNaN;
                double upper = kNaN;
                QVERIFY(VORN_GetChiDistP(x, df, true, lower));
                QVERIFY(VORN_GetChiDistP(x, df, false, upper));
                const math::chi_squared reference(df);
                worst.add(lower, math::cdf(reference, x),
                          QString("lower %1 with %2").arg(x).arg(df));
                worst.add(upper, math::cdf(math::complement(reference, x)),
                          QString("upper %1 with %2").arg(x).arg(df));
            }
        }
        QVERIFY2(worst.within(kError), worst.text());
    }

    void argumentsOutsideTheDomainAreRefused()
    {
        double p = 0.25;
        for (const double bad : {kNaN, HUGE_VAL, -HUGE_VAL}) {
            const InCase inBad(bad);
            QCOMPARE(answers({VORN_GetNormalP(bad, p), VORN_GetNormalQuantile(bad, p),
                              VORN_GetPoissonP(1, bad, p), VORN_GetBinomialP(5, 1, bad, p),
                              VORN_GetCumBinomialP(5, 1, bad, p), VORN_GetTDistP(bad, 3, p),
                              VORN_GetFDistP(bad, 3, 3, p), VORN_GetChiDistP(bad, 3, true, p)}),
                     "nnnnnnnn");
        }
        QCOMPARE(answers({VORN_GetNormalQuantile(0.0, p), VORN_GetNormalQuantile(1.0, p),
                          VORN_GetPoissonP(-1, 1.0, p), VORN_GetPoissonP(1, -1.0, p),
                          VORN_GetBinomialP(5, 6, 0.5, p), VORN_GetBinomialP(5, -1, 0.5, p),
                          VORN_GetBinomialP(5, 1, 1.1, p), VORN_GetCumBinomialP(5, 6, 0.5, p),
                          VORN_GetTDistP(1.0, 0, p), VORN_GetFDistP(1.0, 3, 0, p),
                          VORN_GetFDistP(-1.0, 3, 3, p), VORN_GetChiDistP(1.0, 0, true, p),
                          VORN_GetChiDistP(-1.0, 3, false, p)}),
                 QByteArray(13, 'n'));
        QCOMPARE(p, 0.25);
    }

    void limitsAndShortcuts()
    {
        const auto value = [](auto call, auto... arguments) {
            double p = kNaN;
            return call(arguments..., p) ? p : kNaN;
        };
        QCOMPARE(value(VORN_GetNormalP, 0.0), 0.5);
        QCOMPARE(value(VORN_GetNormalP, 1e200), 1.0);
        QCOMPARE(value(VORN_GetPoissonP, 0, 3.0), 0.0);
        QCOMPARE(value(VORN_GetPoissonP, 3, 0.0), 1.0);
        QCOMPARE(value(VORN_GetCumBinomialP, 9, 0, 0.3), 1.0);
        QCOMPARE(value(VORN_GetBinomialP, 10, 0, 0.0), 0.0);
        QCOMPARE(value(VORN_GetBinomialP, 10, 3, 1.0), 1.0);
        QCOMPARE(value(VORN_GetChiDistP, 0.0, 4, false), 1.0);
        QCOMPARE(value(VORN_GetFDistP, 0.0, 2, 3), 1.0);
        QCOMPARE(value(VORN_GetTDistP, 0.0, 2), 0.0);
        QCOMPARE(value(VORN_GetTDistP, 1e200, 2), 1.0);
        // 40 trials of a half: a mean of exactly 20 is still exact; the next even count is not.
        const double exact = value(VORN_GetBinomialP, 40, 20, 0.5);
        QVERIFY2(std::fabs(exact - 0.12537068761957) < 1e-13, QByteArray::number(exact, 'g', 17));
        QVERIFY(std::fabs(value(VORN_GetBinomialP, 42, 21, 0.5)
                          - math::pdf(math::binomial(42, 0.5), 21))
                > 1e-6);
        // A long tail is 0 at once, not a sum over half a billion logarithms.
        QCOMPARE(value(VORN_GetBinomialP, 1000000000, 500000000, 1e-9), 0.0);
    }
};

QTEST_GUILESS_MAIN(TestDistributions)
#include "tst_Distributions.moc"
