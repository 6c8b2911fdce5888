// SPDX-License-Identifier: MIT
// Vector geographies: object numbers, removal, listeners, the stream form and the forms of older
// files.
#include <QtTest>
#include <memory>
#include "Common/detail/streams.h"
#include "datainterface/MVectorData.h"
#include "datainterface/MVectorDataSource.h"
#include "datainterface/VersionAPI.h"
#include "fennimark/FMProjectionInfo.h"
#include "fennimark/geographies.h"
#include "support/checks.h"
#include "support/model.h"
#include "support/support.h"

using datainterface::BytesReader;
using datainterface::BytesWriter;

namespace {

// One point a chain, each with its own id and span.
struct Chain {
    int id;
    double start;
    double end;
};

Fennims *newFennims(const QVector<Chain> &chains)
{
    VORNBuilder builder(RectInT(), nullptr, nullptr);
    for (const Chain &chain : chains) {
        const timeRange range = span(chain.start, chain.end);
        builder.CreateChain({new FMPoint(QPointF(chain.id, 0))}, {range}, chain.id);
    }
    return opened(builder).release();
}

struct Fixture {
    Fixture() : geography(new MVectorData(QString::fromUtf8("größe"), TF_Integer, QString()))
    {
        dataInterfaceVersionLoading = serializationVersionNumber;
        model.controller.GetGeoData().insert(geography->GetId(), geography);
        geography->Initialize(newFennims({{17, 0, 100}, {4, 0, 100}, {9, 20, 40}}), false);
    }
    QByteArray bytes() const
    {
        QByteArray result;
        BytesWriter out(&result);
        geography->SaveToStream(out);
        return result;
    }
    TestModel model;
    MVectorData *geography;
};

// Reads only what MGeoData holds.
class BareGeography : public MVectorData {
public:
    BareGeography() : MVectorData(QStringLiteral("bare"), TF_Date, QString()) {}
    bool restoreBase(QDataStream &in) { return MGeoData::RestoreFromStream(in); }
};

} // namespace

class TestVectorData : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void objectsAreNumberedByChainId()
    {
        Fixture fixture;
        QCOMPARE(fixture.geography->GetFennimIdMap(), (QVector<int>{4, 9, 17}));
        QCOMPARE(fixture.geography->GetObjectId(17), 2);
        QCOMPARE(fixture.geography->GetObjectId(5), -1);
        QCOMPARE(fixture.geography->GetFennimId(1), 9);
        QVERIFY(!raisedText([&] { fixture.geography->GetFennimId(3); }).isEmpty());
        QVERIFY(fixture.geography->IsValid());
        QCOMPARE(fixture.geography->GetDataSource()->GetNewDatasetId(), fixture.geography->GetId()
                                                                            << 16);
        QVERIFY(!fixture.geography->CreateFromSubset(QString(), true, {1}));
        QCOMPARE(
            answers({fixture.geography->ExistsAtTime(0), fixture.geography->ExistsAtTime(101)}),
            "yn");
        QCOMPARE(text(fixture.geography->GetMergedObjectTimes()),
                 QStringLiteral("[0, 20) [20, 40] (40, 100]"));
        QCOMPARE(fixture.geography->GetTimeBounds(), stamp("[0, 100]"));
    }

    void removalMovesObjectsDown()
    {
        Fixture fixture;
        MVectorDataSource &source = *fixture.geography->GetVectorDataSource();
        const int id = source.NewVectorDataset(QString(), IntegerType, MVectorDataset::TimeSlice, 1,
                                               QString());
        QVERIFY(source.AddTimeSliceValues(id, 0, stamp("[0, 50]"), QVector<int>{40, 90, 170}, {},
                                          true, true));
        Listener listener;
        QVERIFY(fixture.geography->AddListener(&listener));
        fixture.geography->RemoveObjects({1, 44});
        QCOMPARE(fixture.geography->GetFennimIdMap(), (QVector<int>{4, 17}));
        QCOMPARE(fixture.geography->GetObjectId(17), 1);
        QCOMPARE(fixture.geography->GetObjectId(9), -1);
        QCOMPARE(fixture.geography->GetObjectCount(), 2U);
        QCOMPARE(source.GetVectorDataValue(id, 0, 1, 5, false), MDatum(170));
        const QString geographyId = QString::number(fixture.geography->GetId());
        QCOMPARE(listener.calls, (QStringList{"will remove " + geographyId + ": 1,44",
                                              "removed " + geographyId + ": 1,44",
                                              "changed " + QString::number(id)}));
        BytesReader in(fixture.bytes());
        MVectorData loaded(QString(), TF_Date, QString());
        QVERIFY(loaded.RestoreFromStream(in));
        QCOMPARE(loaded.GetFennimIdMap(), (QVector<int>{4, 17}));
    }

    void listenersOfTheGeography()
    {
        Fixture fixture;
        Listener listener;
        QVERIFY(fixture.geography->AddListener(&listener));
        fixture.geography->SetName(QString::fromUtf8("größer"));
        QCOMPARE(listener.calls, QStringList{QString::fromUtf8("geography größer")});
        QCOMPARE(fixture.geography->GetFennims()->GetName(), QString::fromUtf8("größer"));
        fixture.geography->RemoveListener(&listener);
        fixture.geography->SetName(QStringLiteral("other"));
        QCOMPARE(listener.calls.size(), 1);
        QObject plain;
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("No such slot")));
        QCOMPARE(raisedText([&] { fixture.geography->AddVariogramModelListener(&plain); }),
                 QStringLiteral("Can't connect signals"));
    }

    void objectsBeyondTheDataAreMissing()
    {
        Fixture fixture;
        MVectorDataSource &source = *fixture.geography->GetVectorDataSource();
        const auto add = [&](MVectorDataset::StorageType storage) {
            return source.NewVectorDataset(QString(), IntegerType, storage, 1, QString());
        };
        const int slices = add(MVectorDataset::TimeSlice);
        QVERIFY(source.AddTimeSliceValues(slices, 0, stamp("[0, 50]"), QVector<int>{1, 2, 3}, {},
                                          true, true));
        QVERIFY(fixture.geography->HasObjectsWithMissingData(slices));
        QVERIFY(source.AddTimeSliceValues(slices, 0, stamp("(50, 100]"), QVector<int>{1, 2, 3}, {},
                                          true, true));
        QVERIFY(!fixture.geography->HasObjectsWithMissingData(slices));
        const int series = add(MVectorDataset::TimeSeries);
        for (unsigned int object : {0U, 2U})
            QVERIFY(
                source.AddDataValue(series, 0, object, stamp("[0, 100]"), MDatum(1), true, true));
        QVERIFY(fixture.geography->HasObjectsWithMissingData(series));
        QVERIFY(source.AddDataValue(series, 0, 1, stamp("[20, 40)"), MDatum(1), true, true));
        QVERIFY(fixture.geography->HasObjectsWithMissingData(series)); // one instant is left
        QVERIFY(source.AddDataValue(series, 0, 1, stamp("[30, 40]"), MDatum(1), true, true));
        QVERIFY(!fixture.geography->HasObjectsWithMissingData(series));
        QVERIFY(!fixture.geography->HasObjectsWithMissingData(series + 1));
    }

    void replacementNeedsAsManyChains()
    {
        Fixture fixture;
        MVectorDataSource &source = *fixture.geography->GetVectorDataSource();
        const int id = source.NewVectorDataset(QString(), DecimalType, MVectorDataset::TimeSlice, 1,
                                               QString());
        VariogramModel variogram{DataId(id)};
        QVERIFY(source.AddVariogramModel(id, variogram));
        const std::unique_ptr<Fennims> fewer(newFennims({{1, 0, 1}}));
        QVERIFY(!fixture.geography->ReplaceVORN(fewer.get()));
        QVERIFY(source.HasAssociatedVariogramModels(id));
        QVERIFY(fixture.geography->ReplaceVORN(newFennims({{1, 0, 1}, {2, 0, 1}, {30, 0, 1}})));
        QCOMPARE(fixture.geography->GetFennimIdMap(), (QVector<int>{1, 2, 30}));
        QCOMPARE(fixture.geography->GetFennims()->GetName(), fixture.geography->GetName());
        QVERIFY(!source.HasAssociatedVariogramModels(id));
    }

    void streamGivesTheSameBytesAgain()
    {
        Fixture fixture;
        MVectorDataSource &source = *fixture.geography->GetVectorDataSource();
        source.NewVectorDataset(QStringLiteral("d"), DecimalType, MVectorDataset::TimeSlice, 1,
                                QString());
        fixture.geography->SetParentId(12);
        fixture.geography->SetParentObjectIds({7, 8, 9});
        const QByteArray bytes = fixture.bytes();
        MVectorData loaded(QString(), TF_Date, QString());
        BytesReader in(bytes);
        QVERIFY(loaded.RestoreFromStream(in));
        QVERIFY(in.atEnd());
        QCOMPARE(loaded.GetParentObjectIds(), (QVector<int>{7, 8, 9}));
        QByteArray again;
        BytesWriter out(&again);
        QVERIFY(loaded.SaveToStream(out));
        QVERIFY(again == bytes);
        for (int length = 0; length < bytes.size(); ++length) {
            MVectorData cut(QString(), TF_Date, QString());
            BytesReader shorter(bytes.left(length));
            bool isRestored = false;
            raisedText([&] { isRestored = cut.RestoreFromStream(shorter); });
            QVERIFY2(!isRestored, qPrintable(QString::number(length)));
        }
    }

    // The maps stand behind the geometry: 3 pairs, then 3 ids.
    void numbersThatDoNotFitAreRefused_data()
    {
        QTest::addColumn<QVector<int>>("ids");
        QTest::newRow("any ids") << QVector<int>{4, 9, 17};
        QTest::newRow("ids that are the indices") << QVector<int>{0, 1, 2};
    }

    void numbersThatDoNotFitAreRefused()
    {
        QFETCH(QVector<int>, ids);
        Fixture fixture;
        QVERIFY(fixture.geography->ReplaceVORN(
            newFennims({{ids[0], 0, 1}, {ids[1], 0, 1}, {ids[2], 0, 1}})));
        for (int object = 0; object < 3; ++object)
            QCOMPARE(fixture.geography->GetObjectId(ids[object]), object);
        QCOMPARE(fixture.geography->GetObjectId(ids[2] + 1), -1);
        QCOMPARE(fixture.geography->GetObjectId(-1), -1);
        const QByteArray bytes = fixture.bytes();
        QByteArray maps;
        BytesWriter out(&maps);
        out << qint32(3) << qint32(ids[0]) << qint32(0) << qint32(ids[1]) << qint32(1)
            << qint32(ids[2]) << qint32(2) << ids;
        MVectorData whole(QString(), TF_Date, QString());
        BytesReader all(bytes);
        QVERIFY(whole.RestoreFromStream(all));
        QCOMPARE(whole.GetFennimIdMap(), ids);
        const int at = bytes.indexOf(maps);
        QVERIFY(at > 0);
        for (int word = 0; word < maps.size() / 4; ++word) {
            QByteArray changed = bytes;
            const int last = at + 4 * word + 3;
            changed[last] = static_cast<char>(changed[last] ^ 1);
            MVectorData loaded(QString(), TF_Date, QString());
            BytesReader in(changed);
            QVERIFY2(!loaded.RestoreFromStream(in), qPrintable(QString::number(word)));
        }
    }

    void oldTimeFormats()
    {
        dataInterfaceVersionLoading = 106999;
        // Date and time, date, time, time whatever follows.
        for (const auto &[first, second, format] :
             {std::make_tuple(1, 1, 2), {1, 0, 0}, {0, 0, 1}, {0, 1, 1}}) {
            QByteArray bytes; // the part before the geometry
            BytesWriter(&bytes) << qint32(3) << qint32(8) << qint8(first) << qint8(second)
                                << qint32(2) << QVector<int>{5, 6} << qint32(0);
            BareGeography geography;
            BytesReader in(bytes);
            QVERIFY(geography.restoreBase(in));
            QCOMPARE(static_cast<int>(geography.GetTheTimeFormat()), format);
            QCOMPARE(geography.GetParentId(), 2);
        }
        dataInterfaceVersionLoading = serializationVersionNumber;
    }
};

QTEST_GUILESS_MAIN(TestVectorData)
#include "tst_VectorData.moc"
