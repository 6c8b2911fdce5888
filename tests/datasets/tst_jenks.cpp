// SPDX-License-Identifier: MIT
#include <QProgressDialog>
#include <QtTest>
#include <cmath>
#include <random>
#include "datainterface/VORN_Progress.h"
#include "datasets/jenks.h"
#include "support/checks.h"
#include "support/model.h"

using datainterface::jenksBreaks;

namespace {

// Per-capita income of the 48 contiguous states of the USA in 2009, dollars (Bureau of Economic
// Analysis).
const QVector<double> kIncome2009{
    29318, 30107, 30835, 30987, 31250, 31493, 31843, 32077, 32197, 32274, 32699, 33086,
    33174, 33512, 33564, 33708, 34280, 35018, 35106, 35151, 35210, 35268, 35674, 35676,
    35983, 36499, 36565, 36752, 37036, 37057, 38009, 38672, 38827, 40093, 40135, 40619,
    40902, 40920, 40933, 41283, 41882, 42504, 43211, 46844, 47159, 48123, 49590, 52736};

// The recurrence as it is written down, with its square matrix of costs.
QList<double> plainBreaks(int breakCount, const QVector<double> &data)
{
    const int n = data.size();
    const int classes = breakCount - 1;
    if (classes < 2)
        return {data.first(), data.last()};
    QVector<QVector<double>> cost(n + 1, QVector<double>(n + 1));
    for (int i = 1; i <= n; ++i) {
        double sum = 0.0, squares = 0.0;
        for (int j = i; j <= n; ++j) {
            sum += data[j - 1];
            squares += data[j - 1] * data[j - 1];
            cost[i][j] = squares - (sum * sum) / (j - i + 1);
        }
    }
    QVector<QVector<double>> best(classes + 1, QVector<double>(n + 1));
    QVector<QVector<int>> back(classes + 1, QVector<int>(n + 1, 1));
    for (int j = 1; j <= n; ++j)
        best[1][j] = cost[1][j];
    for (int c = 2; c <= classes; ++c) {
        for (int j = 2; j <= n; ++j) {
            best[c][j] = HUGE_VAL;
            for (int i = 1; i < j; ++i) {
                const double value = best[c - 1][i] + cost[i + 1][j];
                if (value < best[c][j]) {
                    best[c][j] = value;
                    back[c][j] = i;
                }
            }
        }
    }
    QList<double> breaks{data.last()};
    for (int c = classes, j = n; c > 1; --c) {
        j = back[c][j];
        breaks.prepend((data[j - 1] + data[j]) * 0.5);
    }
    breaks.prepend(data.first());
    return breaks;
}

} // namespace

class TestJenks : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void smallLists();
    void agreesWithThePlainRecurrence_data();
    void agreesWithThePlainRecurrence();
    void hugeValuesDoNotOverflow();
    void moreClassesThanValuesOfALongList();
    void aCancelGivesNoBreaks();
};

void TestJenks::smallLists()
{
    using Values = QVector<double>;
    using Breaks = QList<double>;
    QCOMPARE(jenksBreaks(4, Values{}), Breaks{});
    QCOMPARE(jenksBreaks(2, Values{1, 2, 9}), (Breaks{1, 9}));
    QCOMPARE(jenksBreaks(4, Values{7}), (Breaks{7, 7, 7, 7}));
    // Equal costs: the last class begins first.
    QCOMPARE(jenksBreaks(3, Values{1, 2, 3}), (Breaks{1, 1.5, 3}));
    // Found by the published implementations in R too, which report class maxima instead of
    // midpoints.
    QCOMPARE(jenksBreaks(6, kIncome2009), (Breaks{29318, 32892.5, 35829.5, 39460, 45027.5, 52736}));
}

void TestJenks::agreesWithThePlainRecurrence_data()
{
    QTest::addColumn<int>("cases");
    QTest::addColumn<int>("longest");
    QTest::addColumn<int>("levels"); // different values, 0 for reals
    QTest::addColumn<double>("step");
    QTest::addColumn<double>("offset");
    QTest::newRow("many ties") << 3000 << 30 << 6 << 1.0 << 0.0;
    QTest::newRow("some ties, negative") << 3000 << 40 << 40 << 1.0 << -20.0;
    QTest::newRow("long lists") << 60 << 250 << 200 << 1.0 << 0.0;
    QTest::newRow("tenths") << 2000 << 40 << 30 << 0.1 << 0.0;
    QTest::newRow("long lists of reals") << 30 << 400 << 0 << 1.0 << 0.0;
    QTest::newRow("all rounding") << 500 << 60 << 0 << 1.0 << 1e8;
}

void TestJenks::agreesWithThePlainRecurrence()
{
    QFETCH(int, cases);
    QFETCH(int, longest);
    QFETCH(int, levels);
    QFETCH(double, step);
    QFETCH(double, offset);
    std::mt19937 random(walkSeed(4711));
    for (int i = 0; i < cases; ++i) {
        QVector<double> values(2 + int(random() % unsigned(longest - 1)));
        for (double &value : values)
            value = offset
                    + step
                          * (levels > 0 ? double(random() % unsigned(levels))
                                        : double(random()) / 4294967296.0);
        std::sort(values.begin(), values.end());
        const int count = 2 + static_cast<int>(random() % 8);
        QCOMPARE(jenksBreaks(count, values), plainBreaks(count, values));
    }
}

void TestJenks::hugeValuesDoNotOverflow()
{
    const QVector<double> values{1e300, 1.1e300, 2e300, 2.1e300, 5e300};
    QCOMPARE(jenksBreaks(4, values),
             (QList<double>{1e300, (1.1e300 + 2e300) * 0.5, (2.1e300 + 5e300) * 0.5, 5e300}));
}

void TestJenks::moreClassesThanValuesOfALongList()
{
    // The closed form of long lists against the recurrence on short ones of the same make.
    const auto list = [](int repeats) {
        QVector<double> values;
        for (const double value : {1.0, 3.0, 8.0})
            values += QVector<double>(repeats, value);
        return values;
    };
    for (const int count : {4, 5, 6, 9})
        QCOMPARE(jenksBreaks(count, list(100000)), plainBreaks(count, list(2)));
    QVector<double> lone = list(5000);
    lone.prepend(0.0);
    QVector<double> loneShort = list(3);
    loneShort.prepend(0.0);
    for (const int count : {5, 6, 8})
        QCOMPARE(jenksBreaks(count, lone), plainBreaks(count, loneShort));
}

void TestJenks::aCancelGivesNoBreaks()
{
    const VORN_Progress progress("Jenks classes", "Creating Jenks classes...", "Cancel");
    QCOMPARE(jenksBreaks(6, kIncome2009).size(), 6);
    progressBar()->cancel();
    QVERIFY(jenksBreaks(6, kIncome2009).isEmpty());
}

QTEST_MAIN(TestJenks)
#include "tst_jenks.moc"
