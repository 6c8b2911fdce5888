// SPDX-License-Identifier: MIT
// How containers are held, moved and renumbered.
#include <QtTest>
#include "datasetFixture.h"
#include "support/checks.h"
#include "support/support.h"

namespace {

template <class T>
void addSlice(MVectorDataset &dataset, const char *t, std::initializer_list<int> numbers)
{
    QVERIFY(dataset.AddTimeSliceValues(0, stamp(t), samples<T>(numbers), {}, true, true));
}

template <class T> QVector<T> valuesAt(const MVectorDataset &dataset, qint64 time)
{
    QVector<T> values;
    QSet<int> missing;
    if constexpr (std::is_same_v<T, QString>)
        dataset.GetValues(0, time, values, missing);
    else
        dataset.GetValues(0, time, values, missing, false);
    return values;
}

} // namespace

class TestVectorDataset : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void checkOutsArePaired();
    void checkOutsOfARealization();
    void aSeriesIsMadeForACheckOut();
    void becomingStaticKeepsTheEarliestSlice();
    void seriesDoNotBecomeStatic();
    void resizingMarksAndCutsOff();
    void removingRenumbers();
    void containersAreTakenOver();
    void missingOfSlicesAndSeries();
    void intervalsInCommon();
    void firstValues();

private:
    template <class T> void removing();

    BlockStore mStore;
};

void TestVectorDataset::checkOutsArePaired()
{
    LoneDataset dataset(DecimalType, MVectorDataset::TimeSlice, 2);
    addSlice<double>(dataset, "[0, 9]", {1, 2});
    const TimeSliceData<double> *slice = nullptr;
    QVERIFY(dataset.GetTimeSliceData(0, 5, slice));
    QCOMPARE(answers({dataset.CheckOutTimeSlice(0, 5, 0), dataset.CheckOutTimeSlice(0, 9, 0),
                      dataset.CheckOutTimeSlice(0, 10, 0)}),
             "yyn");
    QCOMPARE(slice->CheckOutCount(), 2);
    for (int i = 0; i < 3; ++i) // one too many is ignored
        QVERIFY(dataset.CheckInTimeSlice(0, 0, 0));
    QCOMPARE(slice->CheckOutCount(), 0);
    QCOMPARE(raisedText([&] { dataset.CheckInTimeSlice(1, 0, 0); }),
             QString("Invalid realization index"));
    QCOMPARE(raisedText([&] { dataset.CheckOutTimeSeries(0, 0, 0); }),
             QString("mStorageType == TimeSeries"));
}

void TestVectorDataset::checkOutsOfARealization()
{
    LoneDataset dataset(IntegerType, MVectorDataset::TimeSlice, 1, 2);
    QVERIFY(!dataset.CheckOutRealization(0, 0));
    QVERIFY(dataset.CheckInRealization(0, 0));
    QCOMPARE(raisedText([&] { dataset.CheckInRealization(2, 0); }),
             QString("Invalid realization index"));
    addSlice<int>(dataset, "[0, 1]", {1});
    QVERIFY(!dataset.CheckOutAllRealizations(0)); // the second is empty
    QCOMPARE(dataset.GetTimeSliceIntegerData(0)->first()->CheckOutCount(), 1);
    QVERIFY(dataset.CheckInAllRealizations(0));
    QCOMPARE(dataset.GetTimeSliceIntegerData(0)->first()->CheckOutCount(), 0);
}

void TestVectorDataset::aSeriesIsMadeForACheckOut()
{
    LoneDataset dataset(StringType, MVectorDataset::TimeSeries, 2);
    QVERIFY(!dataset.CheckInTimeSeries(0, 1, 0));
    QVERIFY(dataset.CheckOutTimeSeries(0, 1, 0));
    QVERIFY(dataset.AddTimeSeriesValue(0, 1, stamp("[0, 1]"), MDatum("x"), true, true));
    QVERIFY(dataset.CheckInTimeSeries(0, 1, 0));
    QCOMPARE(dataset.GetValue(1, 1, 0), MDatum("x"));
    QCOMPARE(raisedText([&] { dataset.CheckOutTimeSeries(0, 2, 0); }),
             QString("id < mObjectCount"));
}

void TestVectorDataset::becomingStaticKeepsTheEarliestSlice()
{
    LoneDataset dataset(IntegerType, MVectorDataset::TimeSlice, 2);
    const auto bounds = [&dataset]() -> QString {
        TimeStamp stamp;
        dataset.GetTimeBounds(stamp);
        return text(stamp) + " of " + text(dataset.GetTimeSliceIntervals(0));
    };
    addSlice<int>(dataset, "[5, 9]", {1, 2});
    addSlice<int>(dataset, "[10, 12]", {3, 4});
    dataset.SetStatic(false);
    QCOMPARE(bounds(), QString("[5, 12] of [5, 9] [10, 12]"));
    dataset.SetStatic(true);
    QCOMPARE(bounds(), QString("[0, 0] of [0, 0]"));
    QCOMPARE(dataset.GetValue(1, 77, 0), MDatum(2));
    QCOMPARE(*dataset.GetIntegerFrequencies(), (QMap<int, int>{{1, 1}, {2, 1}}));
    addSlice<int>(dataset, "[5, 9]", {8, 9});
    QCOMPARE(bounds(), QString("[0, 0] of [0, 0]"));
    DataSetStats stats;
    QVERIFY(dataset.GetDataSetStats(0, 55, stats));
    QCOMPARE(stats.mean, 8.5);
    dataset.SetStatic(false);
    QVERIFY(dataset.GetTimeSliceIntervals(0).isEmpty());
    QVERIFY(dataset.GetIntegerFrequencies()->isEmpty());
}

void TestVectorDataset::seriesDoNotBecomeStatic()
{
    LoneDataset dataset(IntegerType, MVectorDataset::TimeSeries, 1);
    dataset.AddTimeSeriesValue(0, 0, stamp("[0, 1]"), MDatum(1), true, true);
    dataset.SetStatic(true);
    QVERIFY(dataset.GetTimeSeriesIntegerData(0)->isEmpty());
    QVERIFY(dataset.AddTimeSeriesValue(0, 0, stamp("[5, 6]"), MDatum(2), true, true));
    QCOMPARE(dataset.GetValue(0, 99, 0), MDatum(2));
    QVERIFY(!dataset.AddTimeSeriesValues(0, 0, QVector<QPair<TimeStamp, int>>{}, true, true));
}

void TestVectorDataset::resizingMarksAndCutsOff()
{
    LoneDataset slices(IntegerType, MVectorDataset::TimeSlice, 3);
    addSlice<int>(slices, "[0, 1]", {1, 2, 3});
    QVERIFY(slices.Resize(5));
    QCOMPARE(answers({slices.IsMissing(0, 4, 0), slices.IsMissing(0, 2, 0)}), "yn");
    QVERIFY(slices.Resize(2));
    QCOMPARE(slices.GetDataCount(0, 0), 2);

    LoneDataset series(IntegerType, MVectorDataset::TimeSeries, 3);
    series.AddTimeSeriesValue(0, 2, stamp("[0, 1]"), MDatum(1), true, true);
    series.Resize(2);
    QVERIFY(series.GetTimeSeriesIntegerData(0)->contains(2)); // out of reach, but saved
    TimeStamp common;
    DataSetStats stats;
    QCOMPARE(series.GetDataCount(0, 0), 0);
    QCOMPARE(answers({series.GetValue(2, 0, 0).isEmpty(), series.GetCommonTimeStamps(0).isEmpty(),
                      series.GetCommonTimeStamp(0, 0, common), series.GetDataSetStats(0, 0, stats),
                      stats.minimum.isEmpty()}),
             "yynyy");
    series.CleanPre201044Data();
    QVERIFY(!series.GetTimeSeriesIntegerData(0)->contains(2));
}

template <class T> void TestVectorDataset::removing()
{
    LoneDataset slices(Sample<T>::type, MVectorDataset::TimeSlice, 5);
    QVERIFY(slices.AddTimeSliceValues(0, stamp("[0, 1]"), samples<T>({0, 1, 2, 3, 4}), {3, 4}, true,
                                      true));
    slices.RemoveObjects({1, 3, 17});
    QCOMPARE(slices.GetObjectCount(), 3);
    QCOMPARE(valuesAt<T>(slices, 0).mid(0, 2), samples<T>({0, 2}));
    QVERIFY(slices.IsMissing(0, 2, 0));
    QCOMPARE(Sample<T>::table(slices).size(), 2);

    LoneDataset series(Sample<T>::type, MVectorDataset::TimeSeries, 5);
    for (int id = 0; id < 5; ++id)
        series.AddTimeSeriesValue(0, id, stamp("[0, 1]"), MDatum(Sample<T>::value(id)), true, true);
    series.RemoveObjects({1, 3});
    QCOMPARE(valuesAt<T>(series, 0), samples<T>({0, 2, 4}));
}

void TestVectorDataset::removingRenumbers()
{
    removing<int>();
    removing<double>();
    removing<QString>();
}

void TestVectorDataset::containersAreTakenOver()
{
    LoneDataset slices(DecimalType, MVectorDataset::TimeSlice, 2);
    addSlice<double>(slices, "[0, 1]", {8, 9});
    const QMap<TimeStamp, TimeSliceData<double> *> map{
        {stamp("[3, 4]"), new TimeSliceData<double>({1.0, 2.0}, {})}};
    QVERIFY(slices.SetTimeSliceData(0, map, true));
    QCOMPARE(text(slices.GetTimeSliceIntervals(0)), QString("[3, 4]"));
    TimeStamp bounds;
    slices.GetTimeBounds(bounds);
    QCOMPARE(bounds, stamp("[0, 4]"));
    QVERIFY(slices.SetTimeSliceData(0, map, true)); // its own map: nothing is freed under it
    QCOMPARE(slices.GetValue(1, 3, 0), MDatum(2.0));
    QVERIFY(!slices.SetTimeSliceData(0, QMap<TimeStamp, TimeSliceData<int> *>(), true));
    QVERIFY(!slices.SetTimeSliceData(4, QMap<TimeStamp, TimeSliceData<double> *>(), true));

    LoneDataset series(DecimalType, MVectorDataset::TimeSeries, 2);
    const auto set = [](MVectorDataset &dataset, int object, const char *when) {
        return dataset.SetTimeSeriesData(object, 0, QMap<TimeStamp, double>{{stamp(when), 4.0}},
                                         true);
    };
    QCOMPARE(answers({set(series, 1, "[2, 3]"), set(series, 1, "[5, 6]"), set(series, 2, "[5, 6]"),
                      set(slices, 0, "[5, 6]")}),
             "yynn");
    QCOMPARE(text(series.GetTimeSeriesIntervals(0, 1)), QString("[5, 6]"));
    series.CheckOutTimeSeries(0, 1, 0);
    const auto setHeld = [&] { set(series, 1, "[7, 8]"); };
    QCOMPARE(raisedText(setHeld), QString("Time series still in use"));
    QCOMPARE(raisedLabel(setHeld), QString("MVectorDataset"));
    series.CheckInTimeSeries(0, 1, 0);
}

void TestVectorDataset::missingOfSlicesAndSeries()
{
    LoneDataset slices(IntegerType, MVectorDataset::TimeSlice, 2);
    QVERIFY(!slices.HasMissing(0));
    slices.AddTimeSliceValues(0, stamp("[0, 5]"), QVector<int>{1, 1}, {}, true, true);
    QVERIFY(!slices.HasMissing(0));
    slices.AddTimeSliceValues(0, stamp("[6, 9]"), QVector<int>{1, 1}, {1}, true, true);
    QVERIFY(slices.HasMissing(0));
    // The same value on another interval has changed.
    QCOMPARE(
        answers({slices.ObjectValueChanged(0, 0, 1, 5), slices.ObjectValueChanged(0, 0, 5, 6),
                 slices.ObjectValueChanged(0, 1, 5, 6), slices.ObjectValueChanged(0, 1, 6, 20)}),
        "nyyn");
    LoneDataset series(IntegerType, MVectorDataset::TimeSeries, 1);
    QVERIFY(!series.ObjectValueChanged(0, 0, 0, 1));
    QVERIFY(series.HasMissing(0));
    series.AddTimeSeriesValue(0, 0, stamp("[0, 1]"), MDatum(1), true, true);
    QVERIFY(!series.HasMissing(0));
    series.SetMissing(0, 0, stamp("[0, 5]"));
    QVERIFY(series.HasMissing(0));
}

void TestVectorDataset::intervalsInCommon()
{
    LoneDataset dataset(IntegerType, MVectorDataset::TimeSeries, 3);
    dataset.AddTimeSeriesValue(0, 0, stamp("[0, 5]"), MDatum(1), true, true);
    dataset.AddTimeSeriesValue(0, 1, stamp("[3, 8]"), MDatum(1), true, true);
    QCOMPARE(text(dataset.GetCommonTimeStamps(0)), QString("[0, 3) [3, 5] (5, 8]"));
    TimeStamp common;
    QVERIFY(dataset.GetCommonTimeStamp(0, 4, common));
    QCOMPARE(common, stamp("[3, 5]"));
    QVERIFY(dataset.GetCommonTimeStamp(0, 7, common));
    QCOMPARE(common, stamp("[3, 8]"));
    QVERIFY(!dataset.GetCommonTimeStamp(0, 9, common));
    QVERIFY(dataset.GetTimeSliceIntervals(0).isEmpty());
}

void TestVectorDataset::firstValues()
{
    LoneDataset slices(StringType, MVectorDataset::TimeSlice, 2);
    QVERIFY(slices.GetIdValue(0, 0).isEmpty());
    slices.AddTimeSliceValues(0, stamp("[5, 9]"), QVector<QString>{"a", "b"}, {1}, true, true);
    QCOMPARE(slices.GetIdValue(0, 0), MDatum("a"));
    QVERIFY(slices.GetIdValue(0, 1).isEmpty());
    QVERIFY(slices.GetIdValue(0, 0xFFFFFFFFu).isEmpty());
}

QTEST_GUILESS_MAIN(TestVectorDataset)
#include "tst_vectorDataset.moc"
