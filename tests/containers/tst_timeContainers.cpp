// SPDX-License-Identifier: MIT
#include <QTemporaryDir>
#include <random>
#include "Common/DataManager.h"
#include "Common/detail/streams.h"
#include "datainterface/DataBlocks.h"
#include "datainterface/TimeContainers.h"
#include "support/checks.h"
#include "support/support.h"

using datainterface::BytesWriter;

namespace {

template <class T> T value(int i);
template <> int value<int>(int i)
{
    return i * 3 - 5;
}
template <> double value<double>(int i)
{
    return i / 4.0;
}
template <> QString value<QString>(int i)
{
    return i % 5 ? QString(i % 7, QChar(0x3b1 + i)) : QString();
}

template <class T> QVector<T> values(int count)
{
    QVector<T> list;
    for (int i = 0; i < count; ++i)
        list.append(value<T>(i));
    return list;
}

template <class T> QMap<TimeStamp, T> history(const QString &intervals)
{
    QMap<TimeStamp, T> map;
    const QList<TimeStamp> list = stamps(intervals);
    for (const TimeStamp &interval : list)
        map.insert(interval, value<T>(map.size()));
    return map;
}

QByteArray imageOf(int blockId)
{
    QByteArray bytes;
    return ReadDataBlock(blockId, bytes) ? bytes : QByteArray("unknown");
}

QByteArray hex(const char *text)
{
    return QByteArray::fromHex(text);
}

} // namespace

class TestTimeContainers : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void init() { InitializeDataManager(mDir.path(), 1 << 20); }
    void cleanup() { ClearDataManager(); }

    void imagesOfSlicesAreFixed();
    void imagesOfSeriesAreFixed();
    void imagesOfOtherWritersAreRead();
    void sliceWalkAgreesWithAModel();
    void seriesAnswersByInstant();
    void checkOutsCount();
    void readingWritesNothingBack();
    void copiesStandAlone();
    void changesSurviveAFailedWriteBack();
    void changesCanWait();
    void stringSlicesCannotBeEmpty();
    void unknownBlocks();
    void imagesCutShortAreEmptyOrRefused();
    void imagesWithAbsurdCountsAreEmptyOrRefused();

private:
    template <class T> void walkSlice(unsigned seed);
    template <class Container> void checkCuts(const Container &whole);

    QTemporaryDir mDir;
};

void TestTimeContainers::imagesOfSlicesAreFixed()
{
    const auto image = [](const auto &slice) { return imageOf(slice.BlockId()); };
    QCOMPARE(image(TimeSliceData<int>({1, -2}, {1, 300, -1})),
             hex("00000002 01000000 feffffff 00000003 ffffffff 00000001 0000012c"));
    QCOMPARE(image(TimeSliceData<double>({1.0, -0.5}, {})),
             hex("00000002 000000000000f03f 000000000000e0bf 00000000"));
    QCOMPARE(image(TimeSliceData<double>({}, {})), hex("00000000 00000000"));
    QCOMPARE(image(TimeSliceData<QString>({"aß", QString(), ""}, {1})),
             hex("00000003 00000004 0061 00df ffffffff 00000000 00000001 00000001"));
}

void TestTimeContainers::imagesOfSeriesAreFixed()
{
    const TimeSeriesData<int> integers(history<int>("[1, 258) [258, 300]"));
    QCOMPARE(imageOf(integers.BlockId()),
             hex("00000002 0100000000000000 0201000000000000 0100000000000000 fbffffff00000000"
                 "0201000000000000 2c01000000000000 0101000000000000 feffffff00000000"));
    const TimeSeriesData<double> decimals(history<double>("(1, 2] (3, 4]"));
    QCOMPARE(imageOf(decimals.BlockId()),
             hex("00000002 0100000000000000 0200000000000000 0001000000000000 0000000000000000"
                 "0300000000000000 0400000000000000 0001000000000000 000000000000d03f"));
    TimeSeriesData<QString> texts;
    QCOMPARE(imageOf(texts.BlockId()), hex("00000000"));
    texts.AddValue(stamp("[1, 2)"), "a");
    QCOMPARE(imageOf(texts.BlockId()),
             hex("00000001 0000000000000001 0000000000000002 00000001 00000000 00000002 0061"));
}

// Missing ids in the order of a hash, dirt in the gaps, flags that are no clean booleans.
void TestTimeContainers::imagesOfOtherWritersAreRead()
{
    TimeSliceData<int> slice(
        SaveDataBlock(hex("00000003 01000000 02000000 03000000 00000002 00000002 00000000")));
    QCOMPARE(answers({slice.IsMissing(2), slice.IsMissing(0), slice.IsMissing(1)}), "yyn");
    QCOMPARE(slice.GetMissingIds(), (QSet<int>{0, 2}));
    int value = 0;
    QCOMPARE(
        answers({slice.GetValue(0, value), slice.GetValue(2, value), slice.GetValue(1, value)}),
        "nny");
    QCOMPARE(value, 2);
    slice.SetMissing(1);
    QCOMPARE(imageOf(slice.BlockId()).right(16), hex("00000003 00000000 00000001 00000002"));

    TimeSeriesData<int> series(SaveDataBlock(
        hex("00000001 0100000000000000 0500000000000000 8001aabbccddeeff 0700000012345678")));
    int found = 0;
    QVERIFY(series.GetValue(1, found));
    QCOMPARE(found, 7);
    QCOMPARE(text(series.GetIntervals()), QString("[1, 5]"));
    series.AddValue(stamp("[7, 8]"), 9);
    QCOMPARE(imageOf(series.BlockId()).mid(4, 32),
             hex("0100000000000000 0500000000000000 0101000000000000 0700000000000000"));
}

template <class T> void TestTimeContainers::walkSlice(unsigned seed)
{
    std::mt19937 random(seed);
    const auto below = [&random](int end) {
        return std::uniform_int_distribution<int>(0, end - 1)(random);
    };
    QVector<T> model = values<T>(20);
    QSet<int> missing{3};
    TimeSliceData<T> slice(model, missing);
    for (int step = 0; step < 500; ++step) {
        const int object = below(model.size());
        switch (below(6)) {
        case 0:
            slice.CheckOut();
            break;
        case 1:
            slice.CheckIn();
            break;
        case 2:
            slice.SetValue(object, value<T>(step));
            model[object] = value<T>(step);
            missing.remove(object);
            break;
        case 3:
            slice.SetMissing(object);
            missing.insert(object);
            break;
        case 4: {
            const int count = 5 + below(40);
            for (int id = 0; id < 50; ++id)
                if (id >= model.size() && id < count)
                    missing.insert(id);
                else if (id >= count)
                    missing.remove(id);
            slice.Resize(count);
            model.resize(count);
            break;
        }
        default:
            if (model.size() < 2)
                break;
            slice.RemoveObjects({object, -3, 1000});
            model.removeAt(object);
            missing.remove(object);
            QSet<int> moved;
            for (const int id : std::as_const(missing))
                moved.insert(id - (id > object));
            missing = moved;
        }
        QCOMPARE(slice.GetCount(), model.size());
        for (const int one : {below(model.size()), below(model.size()), model.size(), -1}) {
            T found{};
            const bool isInside = one >= 0 && one < model.size();
            const bool isThere = isInside && !missing.contains(one);
            QCOMPARE(slice.GetValue(one, found), isThere);
            QCOMPARE(found, isThere ? model[one] : T());
            QCOMPARE(slice.GetValue(one), isInside ? model[one] : T());
            QCOMPARE(slice.IsMissing(one), isInside && missing.contains(one));
        }
    }
    slice.SetValue(model.size(), value<T>(1)); // no such object
    QCOMPARE(slice.GetValues(), model);
    QCOMPARE(slice.GetMissingIds(), missing);
    QCOMPARE(slice.GetMissingCount(), missing.size());
    slice.CheckOut();
    QVERIFY(std::equal(model.constBegin(), model.constEnd(), slice.Data()));
    QCOMPARE(slice.MissingIds(), missing);
}

void TestTimeContainers::sliceWalkAgreesWithAModel()
{
    const unsigned seed = walkSeed();
    for (const int cacheBytes : {1 << 20, 300, 0}) { // all, one slice at times, nothing
        const InCase inCache(cacheBytes);
        InitializeDataManager(mDir.path(), cacheBytes);
        walkSlice<int>(seed);
        walkSlice<double>(seed);
        walkSlice<QString>(seed);
    }
}

void TestTimeContainers::seriesAnswersByInstant()
{
    const auto entryAt = [](const char *intervals, qint64 time) {
        const TimeSeriesData<double> decimals(history<double>(intervals));
        const TimeSeriesData<QString> texts(history<QString>(intervals));
        const auto entry = [time](const auto &series, auto found) {
            const auto all = series.GetValues().values();
            return series.GetValue(time, found) ? all.indexOf(found) : -1;
        };
        const int stored = entry(decimals, 0.0);
        const CheckedOut<TimeSeriesData<double>> hold(decimals);
        decimals.Data();
        const bool agree = entry(decimals, 0.0) == stored && entry(texts, QString()) == stored;
        return agree ? stored : -2;
    };
    const auto entries = [&entryAt](const char *intervals, std::initializer_list<qint64> times) {
        QVector<int> found;
        for (const qint64 time : times)
            found.append(entryAt(intervals, time));
        return found;
    };
    QCOMPARE(entries("[10, 20)", {10, 20}), (QVector<int>{0, -1}));
    QCOMPARE(entries("(10, 20]", {10, 20}), (QVector<int>{-1, 0}));
    QCOMPARE(entries("[1, 2] [5, 6]", {0, 3, 7}), (QVector<int>{-1, -1, -1}));
    QCOMPARE(entryAt("[1, 5) [5, 6]", 5), 1); // a shared end belongs to the closed one
    QCOMPARE(entryAt("[1, 5] (5, 6]", 5), 0);
    QCOMPARE(entryAt("[1, 5) (5, 6]", 5), -1);
    QCOMPARE(entryAt("[1, 1] [2, 2] [3, 3]", 2), 1);
    QCOMPARE(entryAt("", 2), -1);
}

void TestTimeContainers::checkOutsCount()
{
    TimeSliceData<int> slice({1, 2}, {});
    slice.CheckIn(); // one too many is ignored
    slice.CheckOut();
    slice.CheckOut();
    slice.SetValue(0, 7);
    slice.CheckIn();
    QCOMPARE(imageOf(slice.BlockId()).mid(4, 4), hex("01000000"));
    QCOMPARE(slice.Data()[0], 7); // still held once
    slice.CheckIn();
    QCOMPARE(imageOf(slice.BlockId()).mid(4, 4), hex("07000000"));
    QCOMPARE(raisedText([&] { slice.Data(); }), QString("not checked out"));
}

void TestTimeContainers::readingWritesNothingBack()
{
    TimeSliceData<double> slice(values<double>(10), {1});
    const int block = slice.BlockId();
    slice.CheckOut();
    slice.Data();
    slice.MissingIds();
    ReplaceDataBlock(block, hex("00000000 00000000")); // a write-back would undo this
    slice.CheckIn();
    QCOMPARE(slice.GetCount(), 0);
}

void TestTimeContainers::copiesStandAlone()
{
    auto slice = std::make_unique<TimeSliceData<QString>>(values<QString>(4), QSet<int>{2});
    slice->CheckOut();
    slice->SetValue(0, "new"); // not written back yet
    const TimeSliceData<QString> copy(*slice);
    QVERIFY(copy.BlockId() != slice->BlockId());
    slice->CheckIn();
    slice.reset();
    QCOMPARE(copy.GetValue(0), QString("new"));
    QCOMPARE(copy.GetMissingIds(), (QSet<int>{2}));

    auto series = std::make_unique<TimeSeriesData<int>>(history<int>("[1, 2] [5, 6]"));
    TimeSeriesData<int> other(*series);
    const int block = series->BlockId();
    series.reset();
    QCOMPARE(imageOf(block), QByteArray("unknown"));
    other.AddValue(stamp("(2, 4]"), 1);
    QCOMPARE(text(other.GetIntervals()), QString("[1, 2] (2, 4] [5, 6]"));
    {
        const CheckedOut<TimeSeriesData<int>> hold(other);
        other.SetEntries({{stamp("[3, 4]"), 6}});
    }
    int found = 1;
    QVERIFY(!other.GetValue(5, found));
    QVERIFY(other.GetValue(4, found));
    QCOMPARE(found, 6);
}

// Without a scratch file nothing that outgrows the cache can be written back.
void TestTimeContainers::changesSurviveAFailedWriteBack()
{
    TimeSliceData<int> slice(values<int>(10), {});
    ClearDataManager();
    slice.CheckOut();
    slice.Resize(1 << 19);
    QCOMPARE(raisedText([&] { slice.CheckIn(); }), QString("result"));
    QCOMPARE(slice.CheckOutCount(), 0);
    ResetDataManager();
    slice.CheckOut(); // pages nothing in over what is newer
    QVERIFY(slice.IsMissing(1000));
    slice.CheckIn();
    QCOMPARE(slice.GetCount(), 1 << 19);
    QVERIFY(slice.IsMissing(1000));
}

void TestTimeContainers::changesCanWait()
{
    TimeSliceData<int> first({1, 2}, {1});
    TimeSliceData<int> second({3, 4}, {});
    const QByteArray before = imageOf(first.BlockId());
    first.WriteLater();
    first.SetValue(1, 7);
    int value = 0;
    QVERIFY(first.GetValue(1, value));
    QCOMPARE(first.GetCount(), 2);
    QCOMPARE(value, 7);
    QCOMPARE(imageOf(first.BlockId()), before);
    QCOMPARE(TimeSliceData<int>(first).GetValues(), (QVector<int>{1, 7}));
    second.WriteLater();
    second.SetValue(0, 8);
    QCOMPARE(imageOf(first.BlockId()), before); // both wait
    const int count = static_cast<int>(blockStore().CacheLimit() / 4);
    const TimeSliceData<int> large(QVector<int>(count), {});
    large.WriteLater(); // there is no memory for others beside it
    QVERIFY(imageOf(first.BlockId()) != before);
    QByteArray project;
    BytesWriter out(&project);
    QVERIFY(SaveProjectData(out, false));
    QCOMPARE(imageOf(second.BlockId()), hex("00000002 08000000 04000000 00000000"));
    {
        TimeSliceData<int> dying({5}, {});
        dying.WriteLater();
        dying.SetValue(0, 6);
    }
    first.WriteLater(); // the dead one is not asked
    QCOMPARE(first.GetValues(), (QVector<int>{1, 7}));
}

void TestTimeContainers::stringSlicesCannotBeEmpty()
{
    QCOMPARE(raisedText([] { TimeSliceData<QString> slice({}, {}); }), QString("empty dataset"));
    const TimeSliceData<QString> loaded(SaveDataBlock(hex("00000000 00000000")));
    QCOMPARE(raisedText([&] { loaded.CheckOut(); }), QString("size"));
    QCOMPARE(loaded.CheckOutCount(), 0);
}

void TestTimeContainers::unknownBlocks()
{
    for (const int id : {-1, 77}) {
        const InCase inId(id);
        QCOMPARE(TimeSliceData<int>(id).GetCount(), 0);
        QCOMPARE(TimeSliceData<double>(id).GetValue(3), 0.0);
        QCOMPARE(TimeSeriesData<double>(id).GetCount(), 0);
        QCOMPARE(raisedText([id] { TimeSliceData<QString>(id).GetCount(); }),
                 QString("Invalid block id"));
        QCOMPARE(raisedText([id] { TimeSeriesData<QString>(id).GetCount(); }),
                 QString("Invalid block id"));
    }
}

template <class Container> void TestTimeContainers::checkCuts(const Container &whole)
{
    const QByteArray image = imageOf(whole.BlockId());
    for (int length = 0; length < image.size(); ++length) {
        const Container cut(SaveDataBlock(image.left(length)));
        int count = -1;
        const QString raised = raisedText([&] { count = cut.GetCount(); });
        QVERIFY2(count == 0 || raised == "Invalid block id", QByteArray::number(length));
    }
}

void TestTimeContainers::imagesCutShortAreEmptyOrRefused()
{
    checkCuts(TimeSliceData<int>(values<int>(4), {0, 2}));
    checkCuts(TimeSliceData<double>(values<double>(4), {0, 2}));
    checkCuts(TimeSliceData<QString>(values<QString>(4), {0, 2}));
    checkCuts(TimeSeriesData<int>(history<int>("[1, 2] [3, 4]")));
    checkCuts(TimeSeriesData<double>(history<double>("[1, 2] [3, 4]")));
    checkCuts(TimeSeriesData<QString>(history<QString>("[1, 2] [3, 4]")));
}

void TestTimeContainers::imagesWithAbsurdCountsAreEmptyOrRefused()
{
    for (const char *text :
         {"ffffffff00000000", "7fffffff00000000", "80000000000000000000000000000000",
          "00000000ffffffff", "000000007fffffff",
          // A text whose length is odd, or larger than what follows.
          "00000001 00000003 006100 00000000", "00000001 fffffffe 0061 00000000"}) {
        const QByteArray image = hex(text);
        QCOMPARE(TimeSliceData<int>(SaveDataBlock(image)).GetMissingIds(), QSet<int>());
        QCOMPARE(TimeSliceData<double>(SaveDataBlock(image)).GetValues(), QVector<double>());
        QCOMPARE(TimeSeriesData<double>(SaveDataBlock(image)).GetEntries().size(), 0);
        QVERIFY2(
            !raisedText([&] { TimeSliceData<QString>(SaveDataBlock(image)).GetValues(); }).isNull(),
            text);
    }
}

QTEST_GUILESS_MAIN(TestTimeContainers)
#include "tst_timeContainers.moc"
