// SPDX-License-Identifier: MIT
#include <QtTest>
#include <random>
#include "Common/quantiles.h"
#include "support/checks.h"

using Classes = QMap<int, QPair<double, double>>;

namespace {

QVector<double> repeated(std::initializer_list<int> sizes)
{
    QVector<double> values;
    double value = 0.0;
    for (const int size : sizes)
        values += QVector<double>(size, value += 1.0);
    return values;
}

// The rule with one list that is searched anew for each fusion.
Classes naiveQuantiles(const QVector<double> &values, int count)
{
    struct Run {
        int first, last, size;
    };
    QList<Run> runs;
    for (int i = 0; i < values.size(); ++i) {
        if (i > 0 && values[i] == values[i - 1])
            runs.last() = {runs.last().first, i, runs.last().size + 1};
        else
            runs.append({i, i, 1});
    }
    const auto fuse = [&runs](int at) {
        runs[at] = {runs[at].first, runs[at + 1].last, runs[at].size + runs[at + 1].size};
        runs.removeAt(at + 1);
    };
    int excess = runs.size() - count;
    int smallCount = 0, smallSum = 0;
    for (const Run &run : runs) {
        if (run.size < values.size() / count) {
            ++smallCount;
            smallSum += run.size;
        }
    }
    const int left = smallCount + count - runs.size();
    const int target = left > 0 ? smallSum / left + 1 : 0;
    for (int i = 0; i < runs.size() && excess > 0; ++i) {
        if (runs[i].size >= target)
            continue;
        while (excess > 0 && i + 1 < runs.size() && runs[i].size + runs[i + 1].size < target) {
            fuse(i);
            --excess;
        }
        if (excess > 0 && i + 1 < runs.size() && double(runs[i + 1].size) / runs[i].size < 0.2) {
            fuse(i);
            --excess;
        }
    }
    for (; excess > 0; --excess) {
        int best = 0;
        for (int i = 1; i + 1 < runs.size(); ++i) {
            if (runs[i].size + runs[i + 1].size < runs[best].size + runs[best + 1].size)
                best = i;
        }
        fuse(best);
    }
    Classes result;
    for (const Run &run : runs)
        result.insert(result.size(), {values[run.first], values[run.last]});
    return result;
}

} // namespace

class TestQuantiles : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void cases();
    void agreesWithANaiveSearch();
};

void TestQuantiles::cases()
{
    const auto classesOf = [](const QVector<double> &values, int count) {
        Classes result{{0, {77, 78}}};
        const bool isGiven = quantiles(values, count, result);
        QString all = isGiven ? "" : "fewer ";
        for (const auto &one : result)
            all += QStringLiteral("%1-%2 ").arg(one.first).arg(one.second);
        return all;
    };
    QCOMPARE(classesOf(repeated({4, 1}), 3), QString("fewer 1-1 2-2 "));
    QCOMPARE(classesOf(repeated({8, 1, 12, 11}), 3), QString("1-2 3-3 4-4 ")); // a tiny neighbour
    QCOMPARE(classesOf({1, 3, 2}, 2), QString("fewer "));
    QCOMPARE(classesOf({1, qQNaN(), 2}, 2), QString("fewer "));
    QCOMPARE(classesOf(repeated({1, 2}), 0), QString("fewer "));
    QCOMPARE(classesOf({}, 2), QString("fewer "));
}

void TestQuantiles::agreesWithANaiveSearch()
{
    std::mt19937 random(walkSeed(7));
    for (int i = 0; i < 5000; ++i) {
        QVector<double> values;
        const int runs = 3 + static_cast<int>(random() % 40);
        const int largest = 1 + static_cast<int>(random() % 30);
        for (int run = 0; run < runs; ++run)
            values += QVector<double>(1 + static_cast<int>(random() % unsigned(largest)), run);
        const int count = 1 + static_cast<int>(random() % unsigned(runs));
        Classes result;
        QVERIFY(quantiles(values, count, result));
        QCOMPARE(result.size(), count);
        QVERIFY2(result == naiveQuantiles(values, count), qPrintable(QString("case %1").arg(i)));
    }
}

QTEST_GUILESS_MAIN(TestQuantiles)
#include "tst_quantiles.moc"
