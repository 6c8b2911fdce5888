// SPDX-License-Identifier: MIT
// How values enter: worked cases, and random walks against a model that knows every tick of every
// object.
#include <QtTest>
#include <random>
#include "datasetFixture.h"
#include "support/checks.h"
#include "support/support.h"

namespace {

constexpr int kTicks = 26;
constexpr int kObjects = 3;
constexpr int kKinds = 5; ///< different values

/// Value numbers by tick and object, -1 for none; slices also cover ticks on which nobody has a
/// value.
struct TickModel {
    int values[kTicks][kObjects];
    bool covered[kTicks] = {};

    TickModel() { std::fill(&values[0][0], &values[0][0] + kTicks * kObjects, -1); }

    void add(const TimeStamp &t, int object, int value, bool overwrite)
    {
        for (int tick = 0; tick < kTicks; ++tick) {
            int &cell = values[tick][object];
            if (t.contains(tick) && value >= 0 && (overwrite || cell < 0))
                cell = value;
        }
    }
    void remove(const TimeStamp &t, int object)
    {
        for (int tick = 0; tick < kTicks; ++tick) {
            if (t.contains(tick))
                values[tick][object] = -1;
        }
    }
    /// Whether a slice without `overwrite` has anything to do.
    bool hasRoomFor(const TimeStamp &t, const int (&added)[kObjects]) const
    {
        for (int tick = 0; tick < kTicks; ++tick) {
            if (!t.contains(tick))
                continue;
            if (!covered[tick])
                return true;
            for (int object = 0; object < kObjects; ++object) {
                if (added[object] >= 0 && values[tick][object] < 0)
                    return true;
            }
        }
        return false;
    }
    void cover(const TimeStamp &t)
    {
        for (int tick = 0; tick < kTicks; ++tick)
            covered[tick] = covered[tick] || t.contains(tick);
    }
};

class Dice {
public:
    explicit Dice(unsigned seed) : mEngine(seed) {}
    int below(int n) { return static_cast<int>(mEngine() % static_cast<unsigned>(n)); }
    bool coin() { return below(2) != 0; }
    /// Inside the model's ticks, holding at least one.
    TimeStamp stamp()
    {
        for (;;) {
            const int start = below(kTicks - 6);
            const TimeStamp stamp(start, start + below(7), coin(), coin());
            if (stamp.isValid())
                return stamp;
        }
    }

private:
    std::mt19937 mEngine;
};

template <class T> MDatum datumOf(int n)
{
    return n < 0 ? MDatum() : MDatum(Sample<T>::value(n));
}

/// Whether an object's history, read in one pass, is what its single values tell.
bool isHistoryRight(MVectorDataset &dataset, int object)
{
    QVector<Interval> intervals;
    QVector<datum> values;
    dataset.GetObjectValues(0, object, intervals, values);
    int at = 0;
    const QList<TimeStamp> stamps = dataset.GetDataIntervals(0, object);
    for (const TimeStamp &stamp : stamps) {
        const MDatum value = dataset.GetValue(object, stamp.timeInInterval(), 0);
        if (value.isEmpty())
            continue;
        if (at == values.size() || TimeStamp(intervals[at]) != stamp)
            return false;
        const datum &found = values[at++];
        const MDatum kinds[] = {found.decimalValue, found.integerValue, found.stringValue};
        if (kinds[found.type] != value)
            return false;
    }
    return at == values.size() && at == intervals.size();
}

/// The first cell that differs, as a text; empty when none does.
template <class T> QString difference(MVectorDataset &dataset, const TickModel &model)
{
    for (int tick = 0; tick < kTicks; ++tick) {
        for (int object = 0; object < kObjects; ++object) {
            const int n = model.values[tick][object];
            if (dataset.GetValue(object, tick, 0) != datumOf<T>(n))
                return QString("object %1 at %2 is not %3").arg(object).arg(tick).arg(n);
        }
    }
    for (int object = 0; object < kObjects; ++object) {
        if (!isHistoryRight(dataset, object))
            return QString("history of object %1").arg(object);
    }
    return QString();
}

/// Keys that are counted; a count of 0 may stay in the table.
template <class Table> Table counted(Table table)
{
    for (auto it = table.begin(); it != table.end();)
        it = *it == 0 ? table.erase(it) : std::next(it);
    return table;
}

/// Whether the table kept on the way is what a recount gives. Leaves the recount behind.
template <class T> bool isCountedRight(MVectorDataset &dataset)
{
    const auto kept = counted(Sample<T>::table(dataset));
    dataset.RecalculateFrequencies();
    return kept == Sample<T>::table(dataset);
}

/// What is wrong with the values, the intervals or the counts; empty when nothing is.
template <class T>
QString fault(MVectorDataset &dataset, const TickModel &model, const QList<TimeStamp> &intervals,
              const QByteArray &where)
{
    QString wrong = difference<T>(dataset, model);
    for (int i = 0; i < intervals.size(); ++i) {
        if (!intervals[i].isValid() || (i > 0 && !(intervals[i - 1] < intervals[i])))
            wrong += text(intervals);
    }
    if (!isCountedRight<T>(dataset))
        wrong += "counts";
    return wrong.isEmpty() ? wrong : where + ": " + wrong;
}

} // namespace

class TestVectorValues : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void slicesMerge();
    void entriesMerge();
    void walksFollowTheModel();
    void aReplacedCellKeepsItsKeyInTheTable();
    void wrongUseIsRefused();
    void decimalsThatAreNotFiniteAreMissing();
    void interpolates();
    void farTimesAreTold();

private:
    template <class T> void walkOfSlices(unsigned seed);
    template <class T> void walkOfSeries(unsigned seed);

    BlockStore mStore;
};

void TestVectorValues::slicesMerge()
{
    // Values are numbers, "-" is missing; slices stand as "interval values".
    const auto merged = [](const QString &present, const QString &added, bool overwrite) {
        LoneDataset dataset(IntegerType, MVectorDataset::TimeSlice, 2);
        const QString all = present + "; " + added;
        for (const QString &slice : all.split("; ", Qt::SkipEmptyParts)) {
            const QStringList numbers = slice.section(' ', 2).split(' ');
            const QVector<int> values{numbers[0].toInt(), numbers[1].toInt()};
            const QSet<int> missing = numbers[1] == "-" ? QSet<int>{1} : QSet<int>{};
            dataset.AddTimeSliceValues(0, stamp(slice.section(' ', 0, 1)), values, missing,
                                       overwrite, true);
        }
        QStringList result;
        const auto &slices = *dataset.GetTimeSliceIntegerData(0);
        for (auto it = slices.begin(); it != slices.end(); ++it) {
            QString one = text(it.key());
            for (int id = 0; id < 2; ++id)
                one += ' ' + ((*it)->IsMissing(id) ? "-" : QString::number((*it)->GetValue(id)));
            result.append(one);
        }
        TimeStamp bounds;
        const bool isBounded =
            dataset.GetTimeBounds(bounds)
            && bounds == dataset.CalculateTimeBounds(MVectorDataRealization()) + bounds;
        return isBounded ? result.join("; ") : "not told";
    };
    const QString whole("[0, 10] 1 2");
    const QString pair("[2, 3] 1 2; [5, 6] 3 4");
    QCOMPARE(merged(whole, "[5, 15] 9 -", true), QString("[0, 5) 1 2; [5, 10] 9 2; (10, 15] 9 -"));
    QCOMPARE(merged(pair, "[0, 10] 8 9", true), QString("[0, 10] 8 9"));
    QCOMPARE(merged("[0, 10] 1 -", "[4, 12] 8 9", false),
             QString("[0, 4) 1 -; [4, 10] 1 9; (10, 12] 8 9")); // a hole filled
    QCOMPARE(merged(pair, "[0, 10) 8 9", false),
             QString("[0, 2) 8 9; [2, 3] 1 2; (3, 5) 8 9; [5, 6] 3 4; (6, 10) 8 9"));
    const QString close("[2, 3] 1 2; [4, 6] 3 4"); // no tick between
    QCOMPARE(merged(close, "[2, 6] 8 9", false), close);
    QCOMPARE(merged(whole, "[5, 5] 9 -", true), QString("[0, 5) 1 2; [5, 5] 9 2; (5, 10] 1 2"));
}

void TestVectorValues::entriesMerge()
{
    const auto merged = [](const char *present, const char *added, bool overwrite) {
        LoneDataset dataset(DecimalType, MVectorDataset::TimeSeries, 1);
        for (const TimeStamp &t : stamps(present))
            dataset.AddTimeSeriesValue(0, 0, t, MDatum(1.0), false, true);
        dataset.AddTimeSeriesValue(0, 0, stamp(added), MDatum(2.0), overwrite, true);
        return text(dataset.GetTimeSeriesIntervals(0, 0));
    };
    QCOMPARE(merged("[0, 4] [6, 9]", "[3, 7)", true), QString("[0, 3) [3, 7) [7, 9]"));
    QCOMPARE(merged("[2, 4] [6, 8]", "[0, 9]", true), QString("[0, 9]"));
    QCOMPARE(merged("[0, 5] [6, 10]", "[0, 10]", false), QString("[0, 5] [6, 10]")); // no tick
    QCOMPARE(merged("[3, 4] [6, 7)", "(0, 10)", false),
             QString("(0, 3) [3, 4] (4, 6) [6, 7) [7, 10)"));
}

template <class T> void TestVectorValues::walkOfSlices(unsigned seed)
{
    Dice dice(seed);
    TickModel model;
    LoneDataset dataset(Sample<T>::type, MVectorDataset::TimeSlice, kObjects);
    for (int step = 0; step < 60; ++step) {
        const TimeStamp t = dice.stamp();
        const QByteArray where = QByteArray::number(seed) + ", step " + QByteArray::number(step);
        const bool overwrite = dice.coin();
        const int object = dice.below(kObjects);
        const int n = dice.below(kKinds);
        switch (dice.below(4)) {
        case 0:
            // Without overwrite the table comes out one short, which another test tells.
            QVERIFY2(dataset.AddDataValue(0, object, t, datumOf<T>(n), true, true), where);
            model.add(t, object, n, true);
            model.cover(t);
            break;
        case 1:
            dataset.SetMissing(0, object, t);
            model.remove(t, object);
            break;
        default: {
            QVector<T> values;
            QSet<int> missing;
            int added[kObjects];
            for (int id = 0; id < kObjects; ++id) {
                added[id] = id != object && dice.below(3) == 0 ? -1 : dice.below(kKinds);
                values.append(Sample<T>::value(qMax(added[id], 0)));
                if (added[id] < 0)
                    missing.insert(id);
            }
            const bool expected = overwrite || model.hasRoomFor(t, added);
            QVERIFY2(dataset.AddTimeSliceValues(0, t, values, missing, overwrite, true) == expected,
                     where);
            for (int id = 0; id < kObjects; ++id)
                model.add(t, id, added[id], overwrite);
            model.cover(t);
        }
        }
        QCOMPARE(fault<T>(dataset, model, dataset.GetTimeSliceIntervals(0), where), QString());
    }
}

void TestVectorValues::walksFollowTheModel()
{
    const unsigned first = walkSeed(1);
    for (unsigned seed = first; seed - first < 40; ++seed) {
        walkOfSlices<int>(seed);
        walkOfSlices<double>(seed);
        walkOfSlices<QString>(seed);
        walkOfSeries<int>(seed);
        walkOfSeries<double>(seed);
        walkOfSeries<QString>(seed);
    }
}

template <class T> void TestVectorValues::walkOfSeries(unsigned seed)
{
    Dice dice(seed);
    TickModel model;
    LoneDataset dataset(Sample<T>::type, MVectorDataset::TimeSeries, kObjects);
    for (int step = 0; step < 80; ++step) {
        const QByteArray where = QByteArray::number(seed) + ", step " + QByteArray::number(step);
        const bool overwrite = dice.coin();
        const int object = dice.below(kObjects);
        if (dice.below(4) == 0) {
            const TimeStamp t = dice.stamp();
            dataset.SetMissing(0, object, t);
            model.remove(t, object);
        } else {
            QVector<QPair<TimeStamp, T>> values;
            for (int i = dice.below(3); i >= 0; --i) {
                const TimeStamp t = dice.stamp();
                const int n = dice.below(kKinds);
                values.append({t, Sample<T>::value(n)});
                model.add(t, object, n, overwrite);
            }
            QVERIFY2(dataset.AddTimeSeriesValues(0, object, values, overwrite, true), where);
        }
        QCOMPARE(fault<T>(dataset, model, dataset.GetTimeSeriesIntervals(0, object), where),
                 QString());
    }
}

void TestVectorValues::aReplacedCellKeepsItsKeyInTheTable()
{
    LoneDataset dataset(IntegerType, MVectorDataset::TimeSlice, 2);
    dataset.AddTimeSliceValues(0, stamp("[0, 10]"), QVector<int>{1, 2}, {}, true, true);
    QVERIFY(dataset.AddTimeSliceValue(0, 0, stamp("[0, 10]"), MDatum(5), true, true));
    QCOMPARE(*dataset.GetIntegerFrequencies(), (QMap<int, int>{{1, 0}, {2, 1}, {5, 1}}));
    dataset.AddTimeSliceValues(0, stamp("[0, 10]"), QVector<int>{7, 8}, {}, true, false);
    const auto replaceUncounted = [&] {
        dataset.AddTimeSliceValue(0, 0, stamp("[0, 10]"), MDatum(5), true, true);
    };
    QCOMPARE(raisedText(replaceUncounted), QString("frequencies.contains(oldValue)"));
    QCOMPARE(raisedLabel(replaceUncounted), QString("MVectorDataset"));

    LoneDataset kept(IntegerType, MVectorDataset::TimeSlice, 2);
    kept.AddTimeSliceValues(0, stamp("[0, 10]"), QVector<int>{1, 2}, {}, true, true);
    QVERIFY(kept.AddTimeSliceValue(0, 0, stamp("[0, 10]"), MDatum(5), false, true));
    QCOMPARE(kept.GetValue(0, 3, 0), MDatum(1)); // refused, and counted down all the same
    QCOMPARE(*kept.GetIntegerFrequencies(), (QMap<int, int>{{1, 0}, {2, 1}}));
}

void TestVectorValues::wrongUseIsRefused()
{
    LoneDataset slices(DecimalType, MVectorDataset::TimeSlice, 2);
    LoneDataset series(DecimalType, MVectorDataset::TimeSeries, 2);
    const TimeStamp t = stamp("[0, 1]");
    const QVector<double> pair{1, 2};
    const QVector<QPair<TimeStamp, int>> whole{{t, 1}};
    QCOMPARE(answers({slices.AddTimeSliceValues(1, t, pair, {}, true, true),
                      slices.AddTimeSliceValues(0, t, QVector<int>{1, 2}, {}, true, true),
                      series.AddTimeSliceValues(0, t, pair, {}, true, true),
                      slices.AddTimeSliceValues(0, TimeStamp(), pair, {}, true, true),
                      slices.AddTimeSliceValues(0, stamp("(1, 2)"), pair, {}, true, true),
                      slices.AddTimeSliceValue(0, 2, t, MDatum(1.0), true, true),
                      slices.AddTimeSliceValue(0, 0, t, MDatum(), true, true),
                      slices.AddTimeSeriesValue(0, 0, t, MDatum(1.0), true, true),
                      series.AddTimeSeriesValue(0, 0, t, MDatum(), true, true),
                      series.AddTimeSeriesValue(-1, 0, t, MDatum(1.0), true, true),
                      series.AddTimeSeriesValues(0, 0, whole, true, true), slices.IsValid()}),
             "nnnnnnnnnnnn");
    QCOMPARE(
        raisedText([&] { slices.AddTimeSliceValues(0, t, QVector<double>{1}, {}, true, true); }),
        QString("Invalid object count"));
    QCOMPARE(raisedText([&] { slices.IsMissing(3, 0, 0); }), QString("Invalid realization index"));
    QCOMPARE(raisedText([&] { slices.GetDataCount(3, 0); }), QString("Invalid realization index"));
    QCOMPARE(raisedText([&] { slices.SetMissing(3, 0, t); }), QString("Invalid realization index"));
    QVERIFY(slices.GetValue(0, 0, 3).isEmpty());
    QVERIFY(slices.GetValue(-1, 0, 0).isEmpty());
    // A value of another kind enters the slices of its kind, which the dataset's own reads do not
    // look at.
    QVERIFY(slices.AddTimeSliceValue(0, 0, t, MDatum(4), true, false));
    QVERIFY(slices.GetValue(0, 0, 0).isEmpty());
    QCOMPARE(slices.GetTimeSliceIntegerData(0)->size(), 1);
}

void TestVectorValues::decimalsThatAreNotFiniteAreMissing()
{
    LoneDataset dataset(DecimalType, MVectorDataset::TimeSlice, 2);
    const double nan = qQNaN();
    QVERIFY(dataset.AddTimeSliceValues(0, stamp("[0, 1]"), QVector<double>{nan, qInf()}, {}, true,
                                       true));
    QVERIFY(dataset.GetTimeSliceIntervals(0).isEmpty());
    QVERIFY(
        dataset.AddTimeSliceValues(0, stamp("[0, 1]"), QVector<double>{nan, 2.0}, {}, true, true));
    QVERIFY(dataset.IsMissing(0, 0, 0));
    QCOMPARE(dataset.GetDataCount(0, 0), 1);
    // A single cell is taken as it is.
    QVERIFY(dataset.AddTimeSliceValue(0, 0, stamp("[0, 1]"), MDatum(nan), true, true));
    QVERIFY(!dataset.IsMissing(0, 0, 0));
    QCOMPARE(dataset.UniqueValueCount(nullptr), 2);
    QCOMPARE(dataset.GetDatumFrequency(MDatum(nan)), 1);
    DataSetStats stats;
    QVERIFY(dataset.GetDataSetStats(0, 1, stats));
    QCOMPARE(stats.mean, 2.0);
}

void TestVectorValues::interpolates()
{
    LoneDataset slices(IntegerType, MVectorDataset::TimeSlice, 2);
    LoneDataset series(IntegerType, MVectorDataset::TimeSeries, 2);
    const QVector<QPair<TimeStamp, int>> values{{stamp("[0, 10]"), 10},
                                                {stamp("[20, 30)"), 30},
                                                {stamp("[40, 50]"), -1},
                                                {stamp("[60, 60]"), 70}};
    for (const auto &[t, n] : values) {
        slices.AddTimeSliceValues(0, t, QVector<int>{n, 0}, n < 0 ? QSet<int>{0} : QSet<int>{},
                                  true, false);
        if (n >= 0)
            series.AddTimeSeriesValue(0, 0, t, MDatum(n), true, false);
    }
    for (LoneDataset *dataset : {&slices, &series}) {
        const auto at = [dataset](qint64 time) { return dataset->GetValue(0, time, true, 0); };
        QCOMPARE(at(-1), MDatum());
        QCOMPARE(at(2), MDatum(10.0)); // the first half has no neighbour
        QCOMPARE(at(5), MDatum(10.0));
        QCOMPARE(at(8), MDatum(10.0 + 20.0 * 3 / 15));
        QCOMPARE(at(15), MDatum(10.0 + 20.0 * 15 / 20)); // in a gap
        QCOMPARE(at(21), MDatum(10.0 + 20.0 * 21 / 25)); // before the middle
        QCOMPARE(at(45), MDatum(30.0 + 40.0 * 25 / 40)); // missing there
        QCOMPARE(at(60), MDatum(70.0));
        QCOMPARE(at(61), MDatum());
        for (qint64 time = -1; time <= 61; ++time) {
            QVector<int> all;
            QSet<int> missing;
            QVERIFY(dataset->GetValues(0, time, all, missing, true));
            for (int id = 0; id < 2; ++id) {
                const MDatum one = dataset->GetValue(id, time, true, 0);
                QCOMPARE(missing.contains(id), one.isEmpty());
                QCOMPARE(all[id], static_cast<int>(one.decimalValue()));
            }
        }
    }
}

void TestVectorValues::farTimesAreTold()
{
    const qint64 last = std::numeric_limits<qint64>::max();
    const qint64 first = std::numeric_limits<qint64>::min();
    LoneDataset dataset(IntegerType, MVectorDataset::TimeSlice, 1);
    QVERIFY(dataset.AddTimeSliceValues(0, TimeStamp(first, last, true, true), QVector<int>{1}, {},
                                       true, true));
    QVERIFY(dataset.AddTimeSliceValues(0, TimeStamp(last), QVector<int>{2}, {}, true, true));
    QVERIFY(!dataset.AddTimeSliceValues(0, TimeStamp(first, last, true, true), QVector<int>{3}, {},
                                        false, true));
    QCOMPARE(dataset.GetValue(0, last - 1, 0), MDatum(1));
    QCOMPARE(dataset.GetValue(0, last, 0), MDatum(2));
    QCOMPARE(dataset.GetTimeSliceIntervals(0).size(), 2);
    QVERIFY(isCountedRight<int>(dataset));
}

QTEST_GUILESS_MAIN(TestVectorValues)
#include "tst_vectorValues.moc"
