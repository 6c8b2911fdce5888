// SPDX-License-Identifier: MIT
// Counts, statistics and classes.
#include <QtTest>
#include <random>
#include "datasetFixture.h"
#include "datasets/frequencyTally.h"
#include "support/checks.h"
#include "support/support.h"

using namespace datainterface;

class TestFrequencies : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void talliesCountAsOneByOne();
    void aFullTableTakesNothing();
    void textKeysKeepEveryLetter();
    void nansAreOneKeyBehindAllNumbers();
    void uniqueValuesNameObjects();
    void statisticsOfATime();
    void statisticsFollowBulkChanges();
    void widthsHoldTheExtremes();
    void classes();
    void normalScoresAreTold();

private:
    template <class T> void compareTally(int keys, int count, bool up);

    BlockStore mStore;
};

template <class T> void TestFrequencies::compareTally(int keys, int count, bool up)
{
    std::mt19937 engine(walkSeed(static_cast<unsigned>(keys + count)));
    FrequencyTable<T> table;
    const auto draw = [&] {
        const int n = static_cast<int>(engine() % static_cast<unsigned>(keys)) - keys / 2;
        if constexpr (std::is_same_v<T, double>)
            return n == 3 ? qQNaN() : n == 4 ? -0.0 : n == 5 ? 0.0 : n == 6 ? -qInf() : n / 8.0;
        else
            return n;
    };
    for (int i = 0; i < keys / 2; ++i)
        countUp<T>(table, draw());
    if (!up)
        table[T(keys)] = 0; // a key may stand with no count, and be counted below it
    FrequencyTable<T> expected = table;
    FrequencyTally<T> tally(table, count, up ? FrequencyTally<T>::Up : FrequencyTally<T>::Down);
    for (int i = 0; i < count; ++i) {
        const T value = i == 7 ? T(keys) : draw();
        tally.count(value);
        up ? void(countUp<T>(expected, value)) : countDown<T>(expected, value);
    }
    tally.finish();
    QCOMPARE(table.size(), expected.size());
    QVERIFY(table == expected);
}

void TestFrequencies::talliesCountAsOneByOne()
{
    const auto compare = [this](int keys, int count, bool up) {
        compareTally<int>(keys, count, up);
        compareTally<double>(keys, count, up);
    };
    compare(10, 30, true);
    compare(300, 20000, true);
    compare(9000, 30000, true); // over the limit
    compare(300, 2000, false);
    compare(4000, 100, false);
}

void TestFrequencies::aFullTableTakesNothing()
{
    LoneDataset dataset(IntegerType, MVectorDataset::TimeSlice, 1);
    bool capped = false;
    for (int i = 0; i < 5000; ++i)
        QVERIFY(dataset.UpdateFrequencies(i, true));
    QCOMPARE(dataset.UniqueValueCount(&capped), 5000);
    QVERIFY(capped);
    QVERIFY(dataset.UpdateFrequencies(5000, true));
    QCOMPARE(dataset.UniqueValueCount(&capped), 5001);
    QVERIFY(!capped);
    QVERIFY(!dataset.UpdateFrequencies(6000, true));
    QVERIFY(!dataset.UpdateFrequencies(3, true));
    QCOMPARE(dataset.GetDatumFrequency(MDatum(3)), 1);
    QVERIFY(dataset.UpdateFrequencies(3, false));
    QCOMPARE(dataset.GetDatumFrequency(MDatum(3)), 0);
    QCOMPARE(dataset.UniqueValueCount(nullptr), 5000);
}

void TestFrequencies::textKeysKeepEveryLetter()
{
    const QVector<QString> cities{QString::fromUtf8("東京"), QString::fromUtf8("大阪"),
                                  QString::fromUtf8("Köln")};
    for (const auto storage : {MVectorDataset::TimeSlice, MVectorDataset::TimeSeries}) {
        LoneDataset dataset(StringType, storage, cities.size());
        for (int id = 0; id < cities.size(); ++id) {
            dataset.AddDataValue(0, id, stamp("[0, 1]"), MDatum(cities[id]), true, true);
            QCOMPARE(dataset.GetValue(id, 0, true, 0).text(), cities[id]);
            QCOMPARE(dataset.GetDatumFrequency(MDatum(cities[id])), 1);
        }
        QCOMPARE(dataset.GetDataFrequencies().size(), cities.size());
        for (const QString &city : cities)
            QCOMPARE(dataset.GetStringFrequencies()->value(city), 1);
    }
    LoneDataset numbers(IntegerType, MVectorDataset::TimeSlice, 1);
    numbers.AddDataValue(0, 0, stamp("[0, 1]"), MDatum(qint64(1) << 40), true, true);
    QCOMPARE(numbers.GetValue(0, 0, 0), MDatum(std::numeric_limits<int>::max()));
    numbers.UpdateFrequencies(5, true);
    QCOMPARE(numbers.GetDatumFrequency(MDatum((qint64(1) << 32) + 5)), 0);
}

void TestFrequencies::nansAreOneKeyBehindAllNumbers()
{
    LoneDataset dataset(DecimalType, MVectorDataset::TimeSlice, 1);
    for (const double value : {qQNaN(), 2.0, -qQNaN(), -1.0, qInf(), 2.0})
        dataset.UpdateFrequencies(value, true);
    using Counts = QMap<double, int>;
    // The table of plain numbers is without the NaN, and follows each change.
    QCOMPARE(*dataset.GetDoubleFrequencies(), (Counts{{-1.0, 1}, {2.0, 2}, {qInf(), 1}}));
    QCOMPARE(dataset.GetDatumFrequency(MDatum(qQNaN())), 2);
    QCOMPARE(dataset.GetDataFrequencies().values(), (QList<int>{1, 2, 1, 2}));
    QVERIFY(dataset.IsValid());
    for (const double value : {2.0, 2.0, -1.0})
        dataset.UpdateFrequencies(value, false);
    QVERIFY(!dataset.IsValid());
}

void TestFrequencies::uniqueValuesNameObjects()
{
    LoneDataset slices(StringType, MVectorDataset::TimeSlice, 2);
    slices.AddTimeSliceValues(0, stamp("(3, 4]"), QVector<QString>{"a", "b"}, {}, true, true);
    bool capped = true;
    QVERIFY(slices.AllUniqueValues(0, &capped));
    QVERIFY(!capped);
    QCOMPARE(raisedText([&] { slices.AllUniqueValues(3, nullptr); }), QString("ts.size()"));
    slices.AddTimeSliceValues(0, stamp("[8, 9]"), QVector<QString>{"b", "a"}, {}, true, true);
    QVERIFY(!slices.AllUniqueValues(0, nullptr));
    LoneDataset series(IntegerType, MVectorDataset::TimeSeries, 2);
    series.AddTimeSeriesValue(0, 0, stamp("[0, 1]"), MDatum(1), true, true);
    series.AddTimeSeriesValue(0, 0, stamp("[2, 3]"), MDatum(2), true, true);
    QVERIFY(!series.AllUniqueValues(0, nullptr));
}

void TestFrequencies::statisticsOfATime()
{
    LoneDataset dataset(IntegerType, MVectorDataset::TimeSlice, 4);
    dataset.AddTimeSliceValues(0, stamp("[0, 5]"), QVector<int>{1, 2, 3, 99}, {3}, true, true);
    double stdDev = 0.0;
    DataSetStats stats;
    QCOMPARE(answers({dataset.GetStdDev(0, 2, stdDev), dataset.GetDataSetStats(0, 2, stats),
                      stats.meanValid, stats.stdDevValid, dataset.GetStdDev(-1, 2, stdDev)}),
             "yyyyn");
    QCOMPARE(stdDev, std::sqrt(2.0 / 3.0));
    QCOMPARE(stats.mean, 2.0);
    QCOMPARE(stats.minimum, MDatum(1));
    QCOMPARE(stats.maximum, MDatum(3));
    QVERIFY(!dataset.GetDataSetStats(0, 9, stats));
    QVERIFY(!dataset.GetDataSetStats(1, 2, stats));
    dataset.SetMissing(0, 0, stamp("[0, 5]"));
    QVERIFY(dataset.GetDataSetStats(0, 2, stats));
    QCOMPARE(stats.mean, 2.0); // kept until it is asked to be renewed
    QVERIFY(dataset.CalcMinMaxMean(0, 2));
    QVERIFY(dataset.GetDataSetStats(0, 2, stats));
    QCOMPARE(stats.mean, 2.5);
    LoneDataset texts(StringType, MVectorDataset::TimeSlice, 1);
    QCOMPARE(raisedText([&] { texts.CalcMinMaxMean(0); }), QString("Invalid data type"));
}

void TestFrequencies::statisticsFollowBulkChanges()
{
    LoneDataset dataset(DecimalType, MVectorDataset::TimeSlice, 2);
    const auto mean = [&dataset] {
        DataSetStats stats;
        return dataset.GetGlobalDataSetStats(0, stats) ? stats.mean : -1.0;
    };
    QCOMPARE(mean(), -1.0);
    dataset.AddTimeSliceValues(0, stamp("[0, 1]"), QVector<double>{1, 3}, {}, true, true);
    QCOMPARE(mean(), 2.0);
    dataset.AddTimeSliceValue(0, 0, stamp("[0, 1]"), MDatum(7.0), true, true);
    QCOMPARE(mean(), 2.0); // single cells do not announce themselves
    dataset.AddTimeSliceValues(0, stamp("[2, 3]"), QVector<double>{5, 5}, {}, true, true);
    QCOMPARE(mean(), 5.0);
}

void TestFrequencies::widthsHoldTheExtremes()
{
    int width = 0;
    int decimals = 0;
    LoneDataset decimal(DecimalType, MVectorDataset::TimeSlice, 2);
    const QVector<double> values{-1234.1, 1.0 / 3};
    decimal.AddTimeSliceValues(0, stamp("[0, 1]"), values, {}, true, true);
    decimal.GetDataWidths(width, decimals);
    for (const double value : values)
        QVERIFY(QString::number(value, 'f', decimals).size() <= width);
    QCOMPARE(QString::number(-1234.1, 'f', decimals).toDouble(), -1234.1);
    LoneDataset none(IntegerType, MVectorDataset::TimeSlice, 2, 0);
    QCOMPARE(raisedText([&] { none.GetDataWidths(width, decimals); }),
             QString("Data stats not found"));
}

void TestFrequencies::classes()
{
    using Classes = MDataset::ClassificationType;
    using Breaks = QList<double>;
    const auto breaks = [](Classes type, int count, const QVector<double> &values) {
        LoneDataset dataset(DecimalType, MVectorDataset::TimeSlice, 1);
        for (const double value : values)
            dataset.UpdateFrequencies(value, true);
        return dataset.GetIntervalBreaks(0, count, type, false);
    };
    QCOMPARE(breaks(MDataset::EqualIntervals, 4, {0, 3, 8}), (Breaks{0, 2, 4, 8}));
    QCOMPARE(breaks(MDataset::EqualIntervals, 1, {}), Breaks{0});
    QCOMPARE(breaks(MDataset::EqualIntervals, 1, {2, 5}), Breaks{5});
    QCOMPARE(breaks(MDataset::Quantiles, 3, {1, 1, 1, 1, 2}), (Breaks{1, 1, 2}));
    QCOMPARE(breaks(MDataset::Jenks, 3, {1, 1, 1, 9, qQNaN(), qInf()}), (Breaks{1, 5, 9}));
    // A count need not fit into memory unfolded.
    LoneDataset large(IntegerType, MVectorDataset::TimeSlice, 1);
    const_cast<QMap<int, int> &>(*large.GetIntegerFrequencies()) = {
        {1, 0x7fffffff}, {2, 0x7fffffff}, {9, 1}, {10, 0x7fffffff}};
    for (const auto type : {MDataset::EqualIntervals, MDataset::Quantiles, MDataset::Jenks}) {
        const Breaks found = large.GetIntervalBreaks(0, 3, type, false);
        const Breaks expected{1,
                              type == MDataset::EqualIntervals ? 4
                              : type == MDataset::Quantiles    ? 9
                                                               : 5.5,
                              10};
        QCOMPARE(found, expected);
    }
    QCOMPARE(raisedText([&] { breaks(static_cast<Classes>(3), 3, {1}); }),
             QString("Invalid data type"));
    LoneDataset texts(StringType, MVectorDataset::TimeSlice, 1);
    QCOMPARE(raisedText([&] { texts.GetIntervalBreaks(0, 3, MDataset::Jenks, false); }),
             QString("Invalid data type"));
}

void TestFrequencies::normalScoresAreTold()
{
    // Quantiles of the normal distribution at 1/6, 1/2 and 5/6.
    const double outer = 0.967421566101701;
    const auto isNormal = [](const QVector<double> &values) {
        LoneDataset dataset(DecimalType, MVectorDataset::TimeSlice, values.size());
        dataset.AddTimeSliceValues(0, stamp("[0, 1]"), values, {}, true, true);
        return dataset.IsNormalScoreDataset(0, 0);
    };
    QVERIFY(isNormal({outer, 0.0, -outer}));
    QVERIFY(!isNormal({outer, 0.1, -outer - 0.1}));
    QVERIFY(!isNormal({outer, 0.5, -outer}));
    QVERIFY(!LoneDataset(IntegerType, MVectorDataset::TimeSlice, 1).IsNormalScoreDataset(0, 0));
    QVERIFY(!LoneDataset(DecimalType, MVectorDataset::TimeSlice, 1).IsNormalScoreDataset(0, 0));
}

QTEST_GUILESS_MAIN(TestFrequencies)
#include "tst_frequencies.moc"
