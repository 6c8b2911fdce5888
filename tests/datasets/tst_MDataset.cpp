// SPDX-License-Identifier: MIT
#include <QSignalSpy>
#include <QtTest>
#include "datainterface/DatasetProps.h"
#include "datainterface/MVectorDataSource.h"
#include "datasetFixture.h"
#include "support/streamed.h"
#include "support/support.h"

Q_DECLARE_METATYPE(DataId)

using datainterface::BytesReader;
using datainterface::BytesWriter;

namespace {

QStringList levels(const MDataset &dataset)
{
    QStringList texts;
    for (const MDataset::pathLevel &level : dataset.GetHierarchyPath())
        texts.append(level.name.isNull() ? "#" + QString::number(level.id) : level.name);
    return texts;
}

QByteArray saved(MDataset &dataset)
{
    QByteArray bytes;
    BytesWriter writer(&bytes);
    dataset.SaveToStream(writer);
    return bytes;
}

/// As a data source reads: the kind, then the rest.
bool restore(const QByteArray &bytes, MDataset &dataset, int version = serializationVersionNumber)
{
    const LoadingVersion loading(version);
    BytesReader reader(bytes);
    qint32 kind = 0;
    reader >> kind;
    return dataset.RestoreFromStream(reader);
}

VariogramModel modelOf(int dataset, const char *name)
{
    VariogramModel model{DataId(dataset)};
    model.name = name;
    return model;
}

} // namespace

class TestMDataset : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() { qRegisterMetaType<DataId>("DataId"); }
    void parsesPaths();
    void modelsComeAndGoWithSignals();
    void aMovedModelGetsANewIdElsewhere();
    void addingValuesRemovesModels();
    void streamHoldsTheStatedFields();
    void typeCodesFollowTheVersion();

private:
    BlockStore mStore;
};

void TestMDataset::parsesPaths()
{
    LoneDataset dataset(IntegerType, MVectorDataset::TimeSlice, 1);
    const auto parsed = [&dataset](const char *path) {
        dataset.SetHierarchyPath(QString(path));
        return QString(levels(dataset).join(' ') + " = " + dataset.GetHierarchyPathAsString());
    };
    QCOMPARE(parsed("/"), QString(" = "));
    QCOMPARE(parsed("a/b/"), QString("a b = /a/b"));
    QCOMPARE(parsed("/a//b/<7>"), QString("a/b #7 = /a/b/<7>"));
    QCOMPARE(parsed("/<1>/<-2>"), QString("#1 #-2 = /<1>/<-2>"));
    QCOMPARE(parsed("/<x>/a"), QString("#0 a = /<0>/a"));
    QCOMPARE(parsed("/a/<"), QString("a = /a"));
    QCOMPARE(parsed("/<7>a/b"), QString("#7 = /<7>"));
    QCOMPARE(parsed("/<<a"), QString("<<a = /<<<a")); // grows
    dataset.SetHierarchyPath(QList<MDataset::pathLevel>{{QString(""), 3}});
    QCOMPARE(raisedText([&] { dataset.GetHierarchyPathAsString(); }),
             QString("Dataset path is empty"));
}

void TestMDataset::modelsComeAndGoWithSignals()
{
    MVectorDataSource source(QString(), 1, 7);
    auto *dataset =
        new MVectorDataset(&source, MVectorDataset::TimeSlice, 7, DecimalType, "d", "/", 1, 1);
    const std::unique_ptr<QObject> owner(dataset);
    QSignalSpy added(&source, SIGNAL(VariogramModelAddedSignal(DataId, qint32)));
    QSignalSpy removed(&source, SIGNAL(VariogramModelRemovedSignal(DataId, qint32)));
    VariogramModel foreign = modelOf(8, "x");
    QVERIFY(!dataset->AddVariogramModel(foreign, true));
    VariogramModel model = modelOf(7, "m");
    QVERIFY(dataset->AddVariogramModel(model, true));
    QCOMPARE(model.id, 0); // the refused one took no id
    QVERIFY(dataset->DuplicateVariogramModel(0));
    QCOMPARE(dataset->GetVariogramModelNames(), (QList<QString>{"m", "m copy"}));
    QVERIFY(!dataset->RemoveVariogramModel(5));
    dataset->RemoveAllVariogramModels();
    QCOMPARE(added.count(), 2);
    QCOMPARE(removed.count(), 2);
    QVERIFY(dataset->GetVariogramModelIds().isEmpty());
}

void TestMDataset::aMovedModelGetsANewIdElsewhere()
{
    MVectorDataSource source(QString(), 1, 0);
    const int a = source.NewVectorDataset("a", DecimalType, MVectorDataset::TimeSlice, 1, "/");
    const int b = source.NewVectorDataset("b", DecimalType, MVectorDataset::TimeSlice, 1, "/");
    VariogramModel first = modelOf(a, "m");
    VariogramModel second = modelOf(a, "n");
    source.GetDataset(a)->AddVariogramModel(first, true);
    source.GetDataset(a)->AddVariogramModel(second, true);
    second.dataset = DataId(b);
    QVERIFY(source.GetDataset(a)->ReplaceVariogramModel(&source, second));
    QCOMPARE(source.GetDataset(a)->GetVariogramModelIds(), QList<int>{0});
    QCOMPARE(source.GetDataset(b)->GetVariogramModelIds(), QList<int>{0});
    first.dataset = DataId(99);
    QCOMPARE(raisedText([&] { source.GetDataset(a)->ReplaceVariogramModel(&source, first); }),
             QString("dataset"));
}

void TestMDataset::addingValuesRemovesModels()
{
    LoneDataset dataset(IntegerType, MVectorDataset::TimeSlice, 1);
    const auto hasModelAfter = [&dataset](auto change) {
        VariogramModel model = modelOf(7, "m");
        dataset.AddVariogramModel(model, true);
        change();
        return !dataset.GetVariogramModelIds().isEmpty();
    };
    const TimeStamp t = stamp("[0, 1]");
    for (const bool overwrite : {true, false}) // which changes nothing
        QVERIFY(!hasModelAfter(
            [&] { dataset.AddTimeSliceValues(0, t, QVector<int>{1}, {}, overwrite, true); }));
    QVERIFY(hasModelAfter([&] { dataset.AddTimeSliceValue(0, 0, t, MDatum(2), true, true); }));
    QVERIFY(!hasModelAfter([&] { dataset.SetMissing(0, 0, t); }));
    QVERIFY(!hasModelAfter([&] { dataset.Resize(2); }));
}

void TestMDataset::streamHoldsTheStatedFields()
{
    LoneDataset dataset(IntegerType, MVectorDataset::TimeSlice, 2);
    dataset.SetMetaData(MMetaData());
    dataset.SetMetaData("k", 5);
    dataset.AddTimeSliceValues(0, stamp("[1, 2)"), QVector<int>{3, 4}, {}, true, true);
    const int block = dataset.GetTimeSliceIntegerData(0)->first()->BlockId();
    const QByteArray when = "0000000000000001 0000000000000002 00000001 00000000 ";
    const QByteArray noDatum = "00000003 00 0000000000000000 0000000000000000 ffffffff ";
    const QByteArray expected =
        "00000001 00000007 00000002 00 "               // kind, id, type, static
        "00000001 00000002 006b 00000002 00 00000005 " // metadata
        + when
        + "00000001 00000008 0068006500720065 00000000 "                  // path
          "00000001 00000001 00000000 0000000000000000 0000000000000000 " // statistics
        + noDatum + noDatum
        + "0000 00000000 00000000 " // models
          "00000001 00000002 0000001c 00000002 00000004 00000001 00000003 00000001 "
          "00000000 00000000 "                   // storage, objects, frequencies
          "00000001 00000000 00000034 00000001 " // one realization
        + when + QByteArray::number(block, 16).rightJustified(8, '0') + QByteArray(40, '0');
    QCOMPARE(saved(dataset).toHex(), QByteArray::fromHex(expected).toHex());
}

void TestMDataset::typeCodesFollowTheVersion()
{
    const auto read = [](int version, int written) {
        LoneDataset dataset(static_cast<DataType>(written), MVectorDataset::TimeSlice, 1);
        LoneDataset copy;
        const bool isRestored = restore(saved(dataset), copy, version);
        return qMakePair(static_cast<int>(copy.GetDataType()), isRestored);
    };
    // Vectors know no raster codes.
    QCOMPARE(read(306013, 16), qMakePair(0x100, false));
    QCOMPARE(read(306014, 16), qMakePair(16, false));
    QCOMPARE(read(201001, 128), qMakePair(0x1000, false));
    QCOMPARE(read(201001, 4), qMakePair(4, true));
}

QTEST_GUILESS_MAIN(TestMDataset)
#include "tst_MDataset.moc"
