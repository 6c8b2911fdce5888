// SPDX-License-Identifier: MIT
#include <algorithm>
#include <cmath>
#include <random>
#include "datainterface/StatisticsAPI.h"
#include "support/support.h"

namespace {

const double kNaN = std::nan("");

QVector<double> randomP(int count, unsigned seed)
{
    std::mt19937 generator(seed);
    std::uniform_int_distribution<int> uniform(0, 400); // with ties
    QVector<double> p(count);
    for (double &value : p)
        value = std::pow(uniform(generator) / 400.0, 6);
    return p;
}

// Values of the indices: what must agree when ties may come in any order.
QVector<double> valuesOf(const QVector<double> &p, const QVector<int> &indices)
{
    QVector<double> values;
    for (int i : indices)
        values.append(p[i]);
    return values;
}

using Correction = QVector<int> (*)(const QVector<double> &, const VORN_MissingData &, double);

} // namespace

Q_DECLARE_METATYPE(VORN_MissingData)

class TestCorrections : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void knownCases_data()
    {
        QTest::addColumn<QVector<double>>("p");
        QTest::addColumn<VORN_MissingData>("missing");
        QTest::addColumn<double>("alpha");
        QTest::addColumn<QVector<int>>("bonferroni");
        QTest::addColumn<QVector<int>>("holm");
        QTest::addColumn<QVector<int>>("simes");
        QTest::addColumn<QVector<int>>("fdr");
        using I = QVector<int>;
        const auto check = [](const char *name, const QVector<double> &p,
                              const VORN_MissingData &missing, double alpha, const I &bonferroni,
                              const I &holm, const I &simes, const I &fdr) {
            QTest::newRow(name) << p << missing << alpha << bonferroni << holm << simes << fdr;
        };
        using P = QVector<double>;
        const VORN_MissingData none;
        VORN_MissingData all(QSet<int>{0});
        all.setAllMissing(2);
        check("strict and not strict", P{0.01, 0.02}, none, 0.04, I{0}, I{0, 1}, I{}, I{1, 0});
        check("equality passes Holm", P{0.01, 0.04}, none, 0.05, I{0}, I{0, 1}, I{}, I{1, 0});
        check("each at its own rank", P{0.01, 0.03, 0.9}, none, 0.05, I{0}, I{0}, I{2, 1}, I{1, 0});
        check("one misses its own threshold", P{0.02, 0.03, 0.04}, none, 0.05, I{}, I{}, I{},
              I{2, 1});
        check("a missing object is tested by one alone", P{0.001, 0.02, 0.5},
              VORN_MissingData(QSet<int>{0}), 0.05, I{0, 1}, I{1}, I{2}, I{1});
        check("missing ids that name no object", P{0.02, 0.9},
              VORN_MissingData(QSet<int>{7, 8, -1}), 0.05, I{0}, I{0}, I{1}, I{0});
        check("all missing", P{0.001, 0.002}, all, 0.05, I{}, I{}, I{}, I{});
        check("empty", P{}, none, 0.05, I{}, I{}, I{}, I{});
        check("a NaN never passes", P{kNaN, 0.001}, none, 0.05, I{1}, I{1}, I{0}, I{1});
    }
    void knownCases()
    {
        QFETCH(QVector<double>, p);
        QFETCH(VORN_MissingData, missing);
        QFETCH(double, alpha);
        QFETCH(QVector<int>, bonferroni);
        QFETCH(QVector<int>, holm);
        QFETCH(QVector<int>, simes);
        QFETCH(QVector<int>, fdr);
        QCOMPARE(VORN_PerformBonferroniCorrection(p, missing, alpha), bonferroni);
        QCOMPARE(VORN_PerformHolmCorrection(p, missing, alpha), holm);
        QCOMPARE(VORN_PerformSimesCorrection(p, missing, alpha), simes);
        QCOMPARE(VORN_PerformFDRCorrection(p, missing, alpha), fdr);
    }

    void sortedWalksEqualThePlainOnes()
    {
        for (unsigned seed = 0; seed < 40; ++seed) {
            const QVector<double> p = randomP(300, seed);
            const double alpha = 0.001 * (seed + 1);
            QVector<double> ascending(p);
            std::sort(ascending.begin(), ascending.end());
            const int m = p.size();
            QVector<double> holm, simes, fdr;
            for (int i = 0; i < m && ascending[i] <= alpha / (m - i); ++i)
                holm.append(ascending[i]);
            for (int i = 0; i < m && !(ascending[m - 1 - i] < alpha / (i + 1)); ++i)
                simes.append(ascending[m - 1 - i]);
            for (int i = 0; i < m; ++i) {
                if (ascending[m - 1 - i] < (m - i) * alpha / m)
                    fdr.append(ascending[m - 1 - i]);
            }
            QCOMPARE(valuesOf(p, VORN_PerformHolmCorrection(p, VORN_MissingData(), alpha)), holm);
            QCOMPARE(valuesOf(p, VORN_PerformSimesCorrection(p, VORN_MissingData(), alpha)), simes);
            QCOMPARE(valuesOf(p, VORN_PerformFDRCorrection(p, VORN_MissingData(), alpha)), fdr);
        }
    }

    void familiesGrowUntilChanceFillsThem()
    {
        const VORN_MissingData none;
        const QVector<QVector<bool>> quiet{{false, false, false}};
        QCOMPARE(VORN_PerformJEFCorrection(quiet, none, 0.5, 0.1), (QVector<int>{0, 1, 2}));
        QVERIFY(VORN_PerformJEFCorrection(quiet, none, 0.05, 0.1).isEmpty());
        QCOMPARE(VORN_PerformJEFCorrection(quiet, VORN_MissingData(QSet<int>{1}), 0.5, 0.1),
                 (QVector<int>{0, 2}));
        QCOMPARE(raisedText([&] { VORN_PerformJEFCorrection({}, none, 0.05, 0.1); }),
                 QString("numRandomizations"));
        // Rows of unequal length: what is not there is not flagged.
        QCOMPARE(VORN_PerformJEFCorrection({{false, true}, {}}, none, 0.7, 0.0),
                 (QVector<int>{0, 1}));
        QVERIFY(VORN_PerformJEFCorrection({{}}, none, 0.9, 0.0).isEmpty());
    }

    void familiesEqualTheWalkOverEveryFamily()
    {
        for (unsigned seed = 0; seed < 60; ++seed) {
            std::mt19937 generator(seed);
            const int objects = 1 + int(generator() % 40);
            QVector<QVector<bool>> randomizations(1 + int(generator() % 60),
                                                  QVector<bool>(objects));
            // Each object at a rate of its own, all counts different where it matters.
            for (auto &flags : randomizations) {
                for (int i = 0; i < objects; ++i)
                    flags[i] = generator() % 100 < unsigned(2 * i);
            }
            const double alpha = 0.02 + 0.3 * int(generator() % 1000) / 1000.0;
            const double fraction = 0.3 * int(generator() % 1000) / 1000.0;
            QVector<QPair<int, int>> order;
            for (int i = 0; i < objects; ++i) {
                int count = 0;
                for (const auto &flags : randomizations)
                    count += flags[i];
                order.append({count, i});
            }
            std::sort(order.begin(), order.end());
            const double increment = 1.0 / (randomizations.size() + 1);
            QVector<int> expected;
            for (int k = 1; k <= objects; ++k) {
                const int tolerated = int(k * fraction);
                double p = increment;
                for (const auto &flags : randomizations) {
                    int count = 0;
                    for (int i = 0; i < k; ++i)
                        count += flags[order[i].second];
                    if (count > tolerated)
                        p += increment;
                }
                if (p > alpha)
                    break;
                expected.append(order[k - 1].second);
            }
            QCOMPARE(VORN_PerformJEFCorrection(randomizations, VORN_MissingData(), alpha, fraction),
                     expected);
        }
    }
};

QTEST_GUILESS_MAIN(TestCorrections)
#include "tst_Corrections.moc"
