// SPDX-License-Identifier: MIT
#include <algorithm>
#include <map>
#include <numeric>
#include <random>
#include <set>
#include "datainterface/StatisticsAPI.h"
#include "datainterface/randomizationIt.h"
#include "support/checks.h"
#include "support/support.h"

namespace {

template <class Iterator> QString walk(Iterator it)
{
    QStringList steps;
    for (; !it.done(); it++) {
        QString step;
        for (int i = 0; i < it.nIndices(); ++i)
            step += QString::number(it.indices()[i]);
        steps.append(step);
    }
    it++; // at the end nothing happens
    return steps.join(' ');
}

} // namespace

class TestRandomization : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void exhaustiveWalksAreLexical_data()
    {
        QTest::addColumn<int>("n");
        QTest::addColumn<int>("k");
        QTest::addColumn<QString>("combinations");
        QTest::addColumn<QString>("permutations");
        const auto check = [](int n, int k, const QString &combinations,
                              const QString &permutations) {
            QTest::newRow(qPrintable(QString("%1 of %2").arg(k).arg(n)))
                << n << k << combinations << permutations;
        };
        check(4, 2, "01 02 03 12 13 23", "01 02 03 10 12 13 20 21 23 30 31 32");
        check(3, 3, "012", "012 021 102 120 201 210");
        check(3, 1, "0 1 2", "0 1 2");
        check(3, 0, "", "");
    }
    void exhaustiveWalksAreLexical()
    {
        QFETCH(int, n);
        QFETCH(int, k);
        QFETCH(QString, combinations);
        QFETCH(QString, permutations);
        QCOMPARE(walk(combinationIt(n, k)), combinations);
        QCOMPARE(walk(permutationIt(n, k)), permutations);
        permutationIt again(n, k);
        again++;
        again.reset();
        QCOMPARE(walk(again), permutations);
        if (k > 0) {
            QCOMPARE(combinationIt(n, k).nRandomizations(), combinations.count(' ') + 1);
            QCOMPARE(permutationIt(n, k).nRandomizations(), permutations.count(' ') + 1);
        }
    }

    // The loop of the header's example.
    void loopsTakeEachRearrangementOnce()
    {
        const auto taken = [](randomizationIt &&it) {
            QStringList steps;
            for (int i = 0; i < it.nRandomizations(); ++i, it++)
                steps.append(QString("%1%2").arg(it.indices()[0]).arg(it.indices()[1]));
            return steps.join(' ');
        };
        QCOMPARE(taken(combinationIt(3, 2)), QString("01 02 12"));
        QCOMPARE(taken(permutationIt(3, 2)), QString("01 02 10 12 20 21"));
        QCOMPARE(taken(shuffleIt(2, 5)).count(' '), 4);
    }

    void countsAreClampedAndImpossibleSizesRaise()
    {
        QCOMPARE(combinationIt(40, 20).nRandomizations(), std::numeric_limits<int>::max());
        QCOMPARE(permutationIt(500, 400).nRandomizations(), std::numeric_limits<int>::max());
        QCOMPARE(combinationIt(30, 15).nRandomizations(), 155117520);
        QCOMPARE(raisedText([] { combinationIt(2, 3); }), QString("N >= K"));
        QCOMPARE(raisedText([] { permutationIt(2, 3); }), QString("N >= K"));
        QCOMPARE(raisedText([] {
                     weightedShuffleIt(3, {1, 1}, 1);
                 }),
                 QString("K <= weights.size()"));
    }

    void shufflesFollowTheStatedExchanges()
    {
        // The walk over the published generator: position i changes places with trunc(u (n - i) +
        // i).
        constexpr int n = 50;
        std::mt19937 generator(walkSeed(99));
        VORN_SetRandomSeed(99);
        shuffleIt it(n, 3);
        for (int step = 0; step < 3; ++step, it++) {
            std::vector<int> expected(n);
            std::iota(expected.begin(), expected.end(), 0);
            for (int i = 0; i < n - 1; ++i)
                std::swap(expected[size_t(i)],
                          expected[size_t(quint32(generator()) * 0x1p-32 * (n - i) + i)]);
            QVERIFY(std::equal(expected.begin(), expected.end(), it.indices()));
            QCOMPARE(it.done(), step == 2); // the last one stands ready while the walk is done
        }
        QVERIFY(VORN_ShuffleIds(0).isEmpty());
        QCOMPARE(VORN_ShuffleIds(1), QVector<int>{0});
    }

    void copiesWalkOnTheirOwn()
    {
        combinationIt it(4, 2);
        combinationIt copy(it);
        it++;
        QCOMPARE(copy.indices()[1], 1);
        copy = it;
        it++;
        QCOMPARE(copy.indices()[1], 2);
        QCOMPARE(it.indices()[1], 3);
    }

    void weightsDecideTheSample()
    {
        VORN_SetRandomSeed(6);
        const std::vector<double> weights{1, 0, 2, 5};
        constexpr int draws = 40000;
        weightedShuffleIt it(2, weights, draws);
        std::map<std::pair<int, int>, int> counts;
        for (int i = 0; i < draws; ++i, it++)
            ++counts[{it.indices()[0], it.indices()[1]}];
        double chi = 0.0;
        int total = 0;
        for (int a : {0, 2, 3}) {
            for (int b : {0, 2, 3}) {
                if (a == b)
                    continue;
                const double wa = weights[size_t(a)];
                const double expected = draws * wa / 8.0 * weights[size_t(b)] / (8.0 - wa);
                const int count = counts[{a, b}];
                chi += (count - expected) * (count - expected) / expected;
                total += count;
            }
        }
        QCOMPARE(total, draws); // the position without weight is never picked, and none twice
        QVERIFY(chi < 5 + 6.0 * std::sqrt(10.0));
    }

    void missingIdsKeepTheirPlaces()
    {
        VORN_SetRandomSeed(7);
        const QSet<int> missing{0, 3, 7};
        std::set<QVector<int>> seen;
        for (int i = 0; i < 200; ++i) {
            QVector<int> ids = VORN_ShuffleIds(8, VORN_MissingData(missing));
            for (int id : missing)
                QCOMPARE(ids[id], id);
            seen.insert(ids);
            std::sort(ids.begin(), ids.end());
            for (int k = 0; k < 8; ++k)
                QCOMPARE(ids[k], k);
        }
        QVERIFY(seen.size() > 60); // of 120 orders
        QCOMPARE(VORN_ShuffleIds(8, VORN_MissingData()).size(), 8);
    }

    void picksOfRandomIds()
    {
        QVERIFY(VORN_ChooseRandomIds(3, {1, 1}).isEmpty());
        QVERIFY(VORN_ChooseRandomIds(-1, {1, 1}).isEmpty());
        QCOMPARE(raisedText([] { VORN_ChooseRandomIds(1, {0, 0}); }), QString("weightSum"));
        VORN_SetRandomSeed(8);
        QVector<int> all = VORN_ChooseRandomIds(4, {3, 1, 4, 1});
        std::sort(all.begin(), all.end());
        QCOMPARE(all, (QVector<int>{0, 1, 2, 3}));
        // More picks than positions with weight: what rounding leaves must not pick one twice.
        const QVector<double> weights{0, 0.1, 0.2, 0.3, 0};
        for (int seed = 0; seed < 200; ++seed) {
            VORN_SetRandomSeed(seed);
            weightedShuffleIt it(5, std::vector<double>(weights.begin(), weights.end()), 1);
            for (QVector<int> picks :
                 {VORN_ChooseRandomIds(5, weights), QVector<int>(it.indices(), it.indices() + 5)}) {
                std::sort(picks.begin(), picks.end());
                picks.erase(picks.begin(), std::lower_bound(picks.begin(), picks.end(), 0));
                QSet<int> distinct(picks.begin(), picks.end());
                QCOMPARE(distinct.size(), picks.size());
                QVERIFY2(distinct.contains({1, 2, 3}), qPrintable(QString::number(seed)));
            }
        }
    }
};

QTEST_GUILESS_MAIN(TestRandomization)
#include "tst_Randomization.moc"
