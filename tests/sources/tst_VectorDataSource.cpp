// SPDX-License-Identifier: MIT
// The registry of datasets: who is told what and when, conversions and imports, the stream form.
#include <QtTest>
#include "Common/detail/streams.h"
#include "datainterface/DataAPI.h"
#include "datainterface/DataBlocks.h"
#include "datainterface/DatasetLoader.h"
#include "datainterface/MVectorData.h"
#include "datainterface/MVectorDataSource.h"
#include "datainterface/VersionAPI.h"
#include "support/model.h"
#include "support/support.h"

using datainterface::BytesReader;
using datainterface::BytesWriter;

namespace {

const TimeStamp kSpan(0, 10, true, true);

struct Fixture {
    explicit Fixture(int objects = 3)
        : geography(addPoints(objects)), source(*model.vectorData(geography).GetVectorDataSource())
    {
        dataInterfaceVersionLoading = serializationVersionNumber;
    }
    int add(DataType type, MVectorDataset::StorageType storage = MVectorDataset::TimeSlice,
            int realizations = 1)
    {
        return source.NewVectorDataset(QStringLiteral("values"), type, storage, realizations,
                                       QStringLiteral("/a/<7>"));
    }
    TestModel model;
    int geography;
    MVectorDataSource &source;
};

QByteArray bytesOf(MVectorDataSource &source)
{
    QByteArray bytes;
    BytesWriter out(&bytes);
    source.SaveToStream(out);
    return bytes;
}

bool restore(const QByteArray &bytes)
{
    MVectorDataSource source{QString()};
    BytesReader in(bytes);
    bool isRestored = false;
    // A frequency table that ends early raises, which a load takes for false.
    raisedText([&] { isRestored = source.RestoreFromStream(in); });
    return isRestored;
}

// A listener that lacks one slot.
class HalfListener : public QObject {
    Q_OBJECT
public Q_SLOTS:
    void DatasetsDyingSlot(const QList<DataId> &) {}
    void DatasetsAddedSlot(const QList<DataId> &, bool) {}
};

} // namespace

class TestVectorDataSource : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void listenerHearsEverySignal();
    void listenerWithoutSlotsRaises();
    void removalTakesModelsAlong();
    void unknownDatasetIsValid();
    void loaderHoldsARealization();
    void resizeAndRemoveReachEveryDataset();
    void convertedDatasetIsAnnounced();
    void conversionRefusals();
    void importFollowsTheObjectMap();
    void copiesThatFailLeaveNothing();
    void streamGivesTheSameBytesAgain();
    void foreignStreamsAreRefused();
};

void TestVectorDataSource::listenerHearsEverySignal()
{
    Fixture fixture;
    Listener listener;
    QVERIFY(fixture.source.AddListener(&listener));
    listener.source = &fixture.source;
    const int id = fixture.add(DecimalType);
    const QString text = QString::number(id);
    fixture.source.AnnounceNewDataset(id, false);
    fixture.source.AnnounceChangedDataset(id);
    QVERIFY(fixture.source.SetDisplayName(id, "values")); // the present name
    QVERIFY(fixture.source.SetDisplayName(id, "others"));
    QVERIFY(!fixture.source.SetDisplayName(id + 1, "others"));
    fixture.source.SuspendDataUsage();
    fixture.source.ResumeDataUsage();
    QVERIFY(fixture.source.RemoveDataset(id + 1)); // unknown: nothing is said
    QVERIFY(fixture.source.RemoveDatasets({id + 1, id}));
    QCOMPARE(listener.calls,
             (QStringList{"added " + text + " false", "changed " + text,
                          "renamed " + text + " others", "suspend", "resume",
                          "dying " + QString::number(id + 1) + ',' + text + " alive"}));
    QVERIFY(!fixture.source.GetDataset(id));
    listener.calls.clear();
    fixture.source.RemoveListener(&listener); // which still hears suspension
    fixture.source.AnnounceChangedDataset(fixture.add(DecimalType));
    fixture.source.SuspendDataUsage();
    QCOMPARE(listener.calls, QStringList{"suspend"});
}

void TestVectorDataSource::listenerWithoutSlotsRaises()
{
    Fixture fixture;
    HalfListener listener;
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("No such slot")));
    QCOMPARE(raisedText([&] { fixture.source.AddListener(&listener); }),
             QStringLiteral("Can't connect signals"));
    QCOMPARE(raisedText([&] { fixture.source.AddListener(nullptr); }),
             QStringLiteral("Can't connect signals"));
}

void TestVectorDataSource::removalTakesModelsAlong()
{
    Fixture fixture;
    const int a = fixture.add(DecimalType);
    const int b = fixture.add(DecimalType);
    VariogramModel onA{DataId(a)};
    onA.locations = b;
    VariogramModel plain{DataId(a)};
    QVERIFY(fixture.source.AddVariogramModel(a, onA));
    QVERIFY(fixture.source.AddVariogramModel(a, plain));
    QVERIFY(!fixture.source.AddVariogramModel(b, plain)); // of another dataset
    QVERIFY(fixture.source.HasAssociatedVariogramModels(b));
    Listener listener;
    QVERIFY(fixture.model.vectorData(fixture.geography).AddVariogramModelListener(&listener));
    QVERIFY(fixture.source.RemoveDataset(b));
    QCOMPARE(listener.calls,
             QStringList{"model removed " + QString::number(a) + '/' + QString::number(onA.id)});
    QList<int> ids;
    QVERIFY(fixture.source.GetVariogramModelIds(a, ids));
    QCOMPARE(ids, QList<int>{plain.id});
    QVERIFY(!fixture.source.GetVariogramModelIds(b, ids));
}

void TestVectorDataSource::unknownDatasetIsValid()
{
    Fixture fixture;
    QVERIFY(fixture.source.IsEmpty());
    const int id = fixture.add(DecimalType);
    QVERIFY(fixture.source.IsEmpty()); // one without a value is not valid
    QVERIFY(!fixture.source.IsValid(id));
    QVERIFY(fixture.source.IsValid(id + 1));
    QVERIFY(fixture.source.AddDataValue(id, 0, 0, kSpan, MDatum(1.5), true, true));
    QVERIFY(!fixture.source.IsEmpty());
    TimeStamp bounds;
    QVERIFY(fixture.source.GetTimeBounds(id, bounds));
    QCOMPARE(bounds, kSpan);
    QCOMPARE(fixture.source.GetTimeBounds(), kSpan);
}

void TestVectorDataSource::loaderHoldsARealization()
{
    Fixture fixture;
    const int id = fixture.add(DecimalType);
    QVERIFY(fixture.source.AddDataValue(id, 0, 0, kSpan, MDatum(1.5), true, true));
    const TimeSliceData<double> *slice = nullptr;
    QVERIFY(fixture.source.GetVectorDataset(id)->GetTimeSliceData(0, 5, slice));
    {
        const DatasetLoader loader(&fixture.source, id, 0);
        const DatasetLoader ofNothing(&fixture.source, id + 1, 0);
        QCOMPARE(slice->CheckOutCount(), 1);
        QVERIFY(fixture.source.CheckOutDataset(id, 0, -1));
        QCOMPARE(slice->CheckOutCount(), 2);
        QVERIFY(fixture.source.CheckInDataset(id, 0, 0));
    }
    QCOMPARE(slice->CheckOutCount(), 0);
}

void TestVectorDataSource::resizeAndRemoveReachEveryDataset()
{
    Fixture fixture(4);
    for (const auto storage : {MVectorDataset::TimeSlice, MVectorDataset::TimeSeries}) {
        const int id = fixture.add(IntegerType, storage);
        for (unsigned int object = 0; object < 4; ++object)
            fixture.source.AddDataValue(id, 0, object, kSpan, MDatum(int(object)), true, true);
    }
    QVERIFY(fixture.source.Resize(5));
    fixture.source.RemoveObjects({1, 3, 77, -1});
    QCOMPARE(fixture.source.GetObjectCount(), 3U);
    for (const DataId &id : fixture.source.GetDatasetIds()) {
        QVector<int> values;
        QSet<int> missing;
        QVERIFY(fixture.source.GetDataValues(id, 0, 5, values, missing));
        QCOMPARE(values.mid(0, 2), (QVector<int>{0, 2}));
        QCOMPARE(missing, QSet<int>{2});
    }
}

// Values of all kinds are converted elsewhere.
void TestVectorDataSource::convertedDatasetIsAnnounced()
{
    struct Case {
        DataType from;
        const char *word;
        MDatum value;
        DataType to;
        MDatum expected;
    };
    for (const Case &one :
         {Case{StringType, "string", MDatum("abc"), DecimalType, MDatum(0.0)},
          {IntegerType, "integer", MDatum(-4), StringType, MDatum("-4")},
          {DecimalType, "decimal", MDatum(1e300), IntegerType, MDatum(2147483647)}}) {
        Fixture fixture;
        const int id = fixture.add(one.from, MVectorDataset::TimeSlice, 2);
        QVERIFY(fixture.source.AddDataValue(id, 1, 2, kSpan, one.value, true, true));
        Listener listener;
        QVERIFY(fixture.source.AddListener(&listener));
        const int converted = fixture.source.ConvertDataset(id, QStringLiteral("new"), one.to, 3);
        QCOMPARE(listener.calls, QStringList{"added " + QString::number(converted) + " true"});
        QCOMPARE(fixture.source.GetVectorDataValue(converted, 1, 2, 5, false), one.expected);
        QVERIFY(fixture.source.IsMissing(converted, 1, 1, 5));
        QCOMPARE(fixture.source.GetVectorDataValue(id, 1, 2, 5, false), one.value);
        QVERIFY(fixture.source.GetLongDescription(converted).startsWith(
            QStringLiteral("Converted from %1 dataset (\"values\") on ").arg(one.word)));
        QCOMPARE(fixture.source.GetVectorDataset(converted)->GetHierarchyPathAsString(),
                 QStringLiteral("/a/<7>"));
    }
}

void TestVectorDataSource::conversionRefusals()
{
    Fixture fixture;
    const int id = fixture.add(DecimalType);
    const auto convert = [&](int from, DataType type) {
        return raisedText([&] { fixture.source.ConvertDataset(from, QString(), type, 0); });
    };
    QCOMPARE(convert(id + 1, IntegerType), QStringLiteral("Invalid dataset id"));
    QCOMPARE(convert(id, DecimalType), QStringLiteral("Invalid dataset type"));
    QCOMPARE(convert(id, RasterDecimalType), QStringLiteral("Invalid dataset type"));
    QCOMPARE(fixture.source.GetDatasetIds().size(), 1);
    QCOMPARE(raisedText([&] {
                 fixture.source.ImportDatasetFromDataSource(&fixture.source, id + 1, {}, true);
             }),
             QStringLiteral("Invalid dataset id"));
}

void TestVectorDataSource::importFollowsTheObjectMap()
{
    Fixture fixture(4);
    MVectorDataSource &target = *fixture.model.vectorData(addPoints(3)).GetVectorDataSource();
    for (const auto storage : {MVectorDataset::TimeSlice, MVectorDataset::TimeSeries}) {
        const int id = fixture.add(StringType, storage);
        for (unsigned int object = 0; object < 4; ++object)
            QVERIFY(fixture.source.AddDataValue(id, 0, object, kSpan,
                                                MDatum(QString::number(object)), true, true));
    }
    Listener listener;
    QVERIFY(target.AddListener(&listener));
    QVERIFY(fixture.source.Resize(5) && fixture.source.Resize(4));
    const int shrunk = fixture.add(StringType, MVectorDataset::TimeSeries);
    QVERIFY(fixture.source.Resize(10)
            && fixture.source.AddDataValue(shrunk, 0, 9, kSpan, MDatum("gone"), true, true)
            && fixture.source.Resize(4)); // the series of 9 stays in the map
    for (const unsigned int object : {1u, 3u})
        QVERIFY(fixture.source.AddDataValue(shrunk, 0, object, kSpan,
                                            MDatum(QString::number(object)), true, true));
    target.ImportFromDataSource(&fixture.source, {3, 9, 1});
    const QList<DataId> ids = target.GetDatasetIds();
    QCOMPARE(ids.size(), 3);
    QCOMPARE(listener.calls.size(), 1); // together, at the end
    for (const DataId &id : ids) {
        QVector<QString> values;
        QSet<int> missing;
        QVERIFY(target.GetDataValues(id, 0, 5, values, missing));
        QCOMPARE(missing, QSet<int>{1});
        QCOMPARE(values[0], "3");
        QCOMPARE(values[2], "1"); // 9 is not there
    }
}

void TestVectorDataSource::copiesThatFailLeaveNothing()
{
    Fixture fixture(2);
    const int target = addPoints(2);
    MVectorDataSource &other = *fixture.model.vectorData(target).GetVectorDataSource();
    const int id = fixture.add(StringType);
    QVERIFY(fixture.source.AddTimeSliceValues(id, 0, kSpan, QVector<QString>{"1", "2"}, {}, true,
                                              true));
    const auto &slices = *fixture.source.GetVectorDataset(id)->GetTimeSliceStringData(0);
    DeleteDataBlock(slices.first()->BlockId());
    const QString unreadable = QStringLiteral("Invalid block id");
    QCOMPARE(raisedText([&] { fixture.source.ConvertDataset(id, "new", DecimalType, 0); }),
             unreadable);
    QCOMPARE(raisedText([&] {
                 other.ImportDatasetFromDataSource(&fixture.source, id, {0, 1}, true);
             }),
             unreadable);
    QCOMPARE(raisedText([&] { VORN_MigrateDataset(id, target, true); }), unreadable);
    QCOMPARE(fixture.source.GetDatasetIds().size(), 1);
    QCOMPARE(other.GetDatasetIds().size(), 0);
}

void TestVectorDataSource::streamGivesTheSameBytesAgain()
{
    Fixture fixture;
    const int id = fixture.add(DecimalType);
    const int removed = fixture.add(StringType, MVectorDataset::TimeSeries);
    QVERIFY(fixture.source.AddDataValue(id, 0, 1, kSpan, MDatum(2.5), true, true));
    QVERIFY(fixture.source.RemoveDataset(removed));
    const QByteArray bytes = bytesOf(fixture.source);
    // The kind, the next id, one dataset with the vector tag.
    QByteArray head;
    BytesWriter(&head) << qint32(1) << qint32(removed + 1) << qint32(1) << qint32(1) << qint32(id);
    QCOMPARE(bytes.left(head.size()).toHex(), head.toHex());
    QCOMPARE(bytes.right(4).toHex(), QByteArray("00000003")); // the object count
    MVectorDataSource loaded{QString()};
    BytesReader in(bytes);
    QVERIFY(loaded.RestoreFromStream(in));
    QVERIFY(in.atEnd());
    QCOMPARE(bytesOf(loaded), bytes);
    QVERIFY(loaded.NewVectorDataset(QString(), DecimalType, MVectorDataset::TimeSlice, 1, QString())
            > removed);
}

void TestVectorDataSource::foreignStreamsAreRefused()
{
    Fixture fixture;
    fixture.add(DecimalType);
    const QByteArray bytes = bytesOf(fixture.source);
    QVERIFY(restore(bytes));
    for (int length = 0; length < bytes.size(); ++length)
        QVERIFY2(!restore(bytes.left(length)), qPrintable(QString::number(length)));
    const auto with = [&bytes](int word, quint32 value) {
        QByteArray changed = bytes;
        for (int i = 0; i < 4; ++i)
            changed[4 * word + i] = static_cast<char>(value >> (24 - 8 * i));
        return changed;
    };
    QVERIFY(!restore(with(0, 0)));          // the kind of a raster source
    QVERIFY(!restore(with(3, 2)));          // a raster dataset's tag
    QVERIFY(!restore(with(3, 3)));          // no tag
    QVERIFY(!restore(with(2, 2)));          // more datasets than there are
    QVERIFY(!restore(with(2, 0x7FFFFFFF))); // more than there can be
    const int lastWord = bytes.size() - 4;
    QVERIFY(!restore(bytes.left(lastWord)
                     + QByteArray("\0\0\0\4", 4))); // an object count that no dataset has
}

QTEST_GUILESS_MAIN(TestVectorDataSource)
#include "tst_VectorDataSource.moc"
