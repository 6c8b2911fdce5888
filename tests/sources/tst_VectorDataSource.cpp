// SPDX-License-Identifier: MIT
// The registry of datasets: who is told what and when, conversions and imports, the stream form.
#include <QtEndian>
#include <QtTest>
#include "Common/detail/streams.h"
#include "datainterface/DatasetLoader.h"
#include "datainterface/MVectorData.h"
#include "datainterface/MVectorDataSource.h"
#include "datainterface/VersionAPI.h"
#include "support/checks.h"
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
    void removalTakesModelsAlong();
    void loaderHoldsARealization();
    void convertedDatasetIsAnnounced();
    void importFollowsTheObjectMap();
    void foreignStreamsAreRefused();
};

void TestVectorDataSource::listenerHearsEverySignal()
{
    Fixture fixture;
    Listener listener;
    QVERIFY(fixture.source.AddListener(&listener));
    listener.source = &fixture.source;
    const int id = fixture.add(DecimalType);
    fixture.source.AnnounceNewDataset(id, false);
    fixture.source.AnnounceChangedDataset(id);
    QVERIFY(fixture.source.SetDisplayName(id, "values")); // the present name
    QVERIFY(fixture.source.SetDisplayName(id, "others"));
    QVERIFY(!fixture.source.SetDisplayName(id + 1, "others"));
    fixture.source.SuspendDataUsage();
    fixture.source.ResumeDataUsage();
    QVERIFY(fixture.source.RemoveDataset(id + 1)); // unknown: nothing is said
    QVERIFY(fixture.source.RemoveDatasets({id + 1, id}));
    QCOMPARE(listener.calls.join('|'), QString("added %1 false|changed %1|renamed %1 others|"
                                               "suspend|resume|dying %2,%1 alive")
                                           .arg(id)
                                           .arg(id + 1));
    QVERIFY(!fixture.source.GetDataset(id));
    listener.calls.clear();
    fixture.source.RemoveListener(&listener); // which still hears suspension
    fixture.source.AnnounceChangedDataset(fixture.add(DecimalType));
    fixture.source.SuspendDataUsage();
    QCOMPARE(listener.calls, QStringList{"suspend"});

    HalfListener half;
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression("No such slot"));
    for (QObject *one : {static_cast<QObject *>(&half), static_cast<QObject *>(nullptr)})
        QCOMPARE(raisedText([&] { fixture.source.AddListener(one); }),
                 QString("Can't connect signals"));
}

void TestVectorDataSource::removalTakesModelsAlong()
{
    Fixture fixture;
    QVERIFY(fixture.source.IsEmpty());
    const int a = fixture.add(DecimalType);
    const int b = fixture.add(DecimalType);
    QVERIFY(fixture.source.IsEmpty()); // those without a value are not valid
    QCOMPARE(answers({fixture.source.IsValid(a), fixture.source.IsValid(b + 1)}), "ny");
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
    QCOMPARE(listener.calls, QStringList{QStringLiteral("model removed %1/%2").arg(a).arg(onA.id)});
    QList<int> ids;
    QVERIFY(fixture.source.GetVariogramModelIds(a, ids));
    QCOMPARE(ids, QList<int>{plain.id});
    QVERIFY(!fixture.source.GetVariogramModelIds(b, ids));
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

// Values of all kinds are converted elsewhere.
void TestVectorDataSource::convertedDatasetIsAnnounced()
{
    Fixture fixture;
    const int id = fixture.add(DecimalType, MVectorDataset::TimeSlice, 2);
    Listener listener;
    QVERIFY(fixture.source.AddListener(&listener));
    const int converted = fixture.source.ConvertDataset(id, "new", IntegerType, 3);
    QCOMPARE(listener.calls, QStringList{QStringLiteral("added %1 true").arg(converted)});
    QVERIFY(fixture.source.GetLongDescription(converted).startsWith(
        "Converted from decimal dataset (\"values\") on "));
    QCOMPARE(fixture.source.GetVectorDataset(converted)->GetHierarchyPathAsString(),
             QString("/a/<7>"));
    const auto convert = [&](int from, DataType type) {
        return raisedText([&] { fixture.source.ConvertDataset(from, QString(), type, 0); });
    };
    QCOMPARE(convert(id + 7, IntegerType), QString("Invalid dataset id"));
    QCOMPARE(convert(id, DecimalType), QString("Invalid dataset type"));
    QCOMPARE(convert(id, RasterDecimalType), QString("Invalid dataset type"));
    QCOMPARE(fixture.source.GetDatasetIds().size(), 2);
    QCOMPARE(raisedText([&] {
                 fixture.source.ImportDatasetFromDataSource(&fixture.source, id + 7, {}, true);
             }),
             QString("Invalid dataset id"));
}

void TestVectorDataSource::importFollowsTheObjectMap()
{
    Fixture fixture(4);
    MVectorDataSource &target = *fixture.model.vectorData(addPoints(3)).GetVectorDataSource();
    Listener listener;
    QVERIFY(target.AddListener(&listener));
    fixture.source.Resize(10);
    for (const auto storage : {MVectorDataset::TimeSlice, MVectorDataset::TimeSeries}) {
        const int id = fixture.add(StringType, storage);
        for (const unsigned int object : {1u, 3u, 9u}) // the series of 9 stays in the map
            fixture.source.AddDataValue(id, 0, object, kSpan, MDatum(QString::number(object)), true,
                                        true);
    }
    fixture.source.Resize(4);
    target.ImportFromDataSource(&fixture.source, {3, 9, 1});
    const QList<DataId> ids = target.GetDatasetIds();
    QCOMPARE(ids.size(), 2);
    QCOMPARE(listener.calls.size(), 1); // together, at the end
    for (const DataId &id : ids) {
        QVector<QString> values;
        QSet<int> missing;
        QVERIFY(target.GetDataValues(id, 0, 5, values, missing));
        QCOMPARE(missing, QSet<int>{1}); // 9 is not there
        QCOMPARE(values[0] + ' ' + values[2], QString("3 1"));
    }
}

void TestVectorDataSource::foreignStreamsAreRefused()
{
    Fixture fixture;
    fixture.add(DecimalType);
    const QByteArray bytes = bytesOf(fixture.source);
    QVERIFY(restore(bytes));
    const auto isRead = [&bytes](int word, int value) {
        QByteArray changed = bytes;
        qToBigEndian(value, changed.data() + 4 * word);
        return restore(changed);
    };
    QVERIFY(!isRead(0, 0));          // the kind of a raster source
    QVERIFY(!isRead(3, 2));          // a raster dataset's tag
    QVERIFY(!isRead(3, 3));          // no tag
    QVERIFY(!isRead(2, 2));          // more datasets than there are
    QVERIFY(!isRead(2, 0x7FFFFFFF)); // more than there can be
    QByteArray wrong = bytes;
    wrong[wrong.size() - 1] = 4; // an object count that no dataset has
    QVERIFY(!restore(wrong));
}

QTEST_GUILESS_MAIN(TestVectorDataSource)
#include "tst_VectorDataSource.moc"
