// SPDX-License-Identifier: MIT
// Projects of every age open with all that they hold, are saved in the present form and open again;
// what contradicts itself is refused.
#include <QtTest>
#include "Common/detail/streams.h"
#include "datainterface/AdjacencySet.h"
#include "datainterface/DataAPI.h"
#include "datainterface/DataBlocks.h"
#include "datainterface/GeographyAPI.h"
#include "datainterface/MRasterData.h"
#include "datainterface/MRasterDataSource.h"
#include "datainterface/MVectorData.h"
#include "datainterface/MVectorDataSource.h"
#include "datainterface/ProjectAPI.h"
#include "datainterface/VersionAPI.h"
#include "support/model.h"
#include "support/oldProject.h"
#include "support/support.h"

Q_DECLARE_METATYPE(oldProject::Fault)
Q_DECLARE_METATYPE(oldProject::Dataset)

using namespace oldProject;

namespace {

constexpr int kLostValues = 180004; // block ids without blocks

template <class... Parts> QString line(const Parts &...parts)
{
    QString all;
    QTextStream out(&all);
    (void(out << parts << " | "), ...);
    return all;
}

QString shown(const QMap<MDatum, int> &counts)
{
    QString all;
    for (auto it = counts.cbegin(); it != counts.cend(); ++it)
        all += line(it.key().text(), it.key().toDouble(), it.value());
    return all;
}

MDatum datumOf(Type type, int number)
{
    return type == Integer   ? MDatum(number)
           : type == Decimal ? MDatum(number / 100.0)
                             : MDatum(text(number));
}

void checkModel(const VariogramModel &model, int version)
{
    QCOMPARE(line(model.name, model.modelVersion, model.parameterSet, model.lagCount,
                  model.fit.doubles.back(), model.empiricalResults.first().first().value,
                  model.centroidModels.first().structures.first().majorRange),
             line("model", version >= 170005 ? 17 : 0, version >= 160002 ? 18 : 0, 12, 3.5, 3, 30));
}

void checkGeography(const MGeoData &geography, int version, const QString &name, int objects)
{
    const GeoProps props = VORN_GetGeographyProperties(geography.GetId());
    const bool isRaster = props.id == kRasterId;
    QCOMPARE(line(props.name, props.objectCount, props.timeFormat,
                  geography.GetParentObjectIds().size(), props.isStatic,
                  props.metaData.value("Source").toString()),
             line(isRaster && version < 130000 ? QString() : name, objects,
                  version < 103000   ? 2
                  : version < 107000 ? 0
                                     : 3,
                  version < 103000 ? 0 : 2, version >= 170006 && isRaster,
                  version >= 170004 ? name : QString()));
}

QStringList weights(const MGeoData &geography)
{
    QStringList sets;
    for (const int id : geography.GetSpatialWeightsIds()) {
        const AdjacencySet *set = geography.GetSpatialWeightSet(id);
        sets.append(line(set->GetName(), set->WeightType(), set->IncludeEgo(), set->NeighborCount(),
                         set->RingCount(), set->QueenNeighbor(), set->Range(),
                         set->InverseDistanceNumerator(), set->InverseDistancePower(),
                         set->GetInformation()));
    }
    sets.sort();
    return sets;
}

bool hasOldSets(int version)
{
    return version <= 102000 || version >= 103000;
}

// Sets of the host's own are given up before 400002; there are none yet from 102001 to 102999.
QStringList expectedWeights(int version)
{
    const auto set = [version](const char *name, int type, bool ego) {
        return line(name, type, int(ego), 3, 0, 1, 0.5, version >= 107000 ? 2 : 1, 1.5,
                    version >= 105000 ? "information" : "");
    };
    QStringList sets;
    if (hasOldSets(version))
        sets.append(set("near", version < 105000 ? 3 : 2, version >= 104000 || version == 103000));
    if (version >= 400002)
        sets.append(set("own", 99, true));
    return sets;
}

QStringList expectedNotes(int version)
{
    const QString note = "Note: the custom spatial-weight set, own, was deleted because of "
                         "incompatibility with Meridor 4.  You'll need to re-import it.";
    return version < 400002 && hasOldSets(version) ? QStringList{note} : QStringList();
}

// What every dataset has.
void checkDataset(MDataset &dataset, int version, int number, const char *expectedBounds)
{
    DataSetStats whole;
    DataSetStats timed;
    dataset.GetGlobalDataSetStats(0, whole);
    dataset.GetDataSetStats(0, 5, timed);
    TimeStamp bounds;
    dataset.GetTimeBounds(bounds);
    const auto tag = [&dataset](const char *key) {
        const QVariant value = dataset.GetMetaData(key);
        return line(value.typeName(), value.toString());
    };
    VariogramModel model;
    const bool hasModel = dataset.GetVariogramModel(0, model);
    QCOMPARE(line(dataset.GetDisplayName(), dataset.GetHierarchyPathAsString(),
                  dataset.GetShortDescription(), dataset.GetLongDescription(), tag("Text"),
                  tag("Integer"), tag("Decimal"), dataset.GetMetaData().tagExists("Empty"),
                  text(bounds), dataset.GetRealizationCount(), whole.mean, whole.minimum.toDouble(),
                  whole.maximum.toDouble(), timed.mean, hasModel),
             line(QStringLiteral("set %1").arg(number), version >= 120000 ? "/folder/<3>" : "",
                  "short", "long", line("QString", QString::fromLatin1("\xE9t\xE9")),
                  line("int", 7), line("double", 2.5), 0, expectedBounds, realizations(version),
                  number + 0.125, -1.5, 8, 0.5, version >= 130000));
    if (hasModel)
        checkModel(model, version);
}

void checkVector(MVectorDataset &dataset, const Sample &sample, int number)
{
    constexpr int kTypes[] = {IntegerType, DecimalType, StringType};
    const Dataset &form = sample.datasets.at(number);
    checkDataset(dataset, sample.version, number, "[0, 20]");
    QCOMPARE(line(dataset.GetDataType(), dataset.GetStorageType()),
             line(kTypes[form.type], form.isSliced));
    QMap<MDatum, int> counts;
    for (int realization = 0; realization < realizations(sample.version); ++realization) {
        QString found;
        QString expected;
        for (int time = 0; time < sample.times; ++time) {
            for (int object = 0; object < sample.objects; ++object) {
                MDatum value = dataset.GetValue(object, start(time) + 5, realization);
                found += line(value.type(), value.text(), value.toDouble());
                value = MDatum();
                if (sample.version != kLostValues && isPresent(realization, object, time)) {
                    value =
                        datumOf(form.type, oldProject::number(number, realization, object, time));
                    ++counts[value];
                }
                expected += line(value.type(), value.text(), value.toDouble());
            }
        }
        QCOMPARE(found, expected);
    }
    QCOMPARE(shown(dataset.GetDataFrequencies()), shown(counts));
}

void checkRaster(MRasterDataset &dataset, int version, int number)
{
    checkDataset(dataset, version, number, "[3, 8]");
    QCOMPARE(line(dataset.GetDataType(), dataset.GetRasterBitDepth()),
             number == 0 ? line(1024, 8) : line(256, 32));
    if (number == 0)
        QCOMPARE(dataset.GetDataFrequencies().values(), QList<int>({2, 2, 2, 2, 2}));
    for (int realization = 0; realization < realizations(version); ++realization) {
        for (int cell = 0; cell < kRows * kColumns; ++cell) {
            const MDatum value = dataset.GetValue(cell, 5, realization);
            QCOMPARE(value.isEmpty() ? 0.0 : value.toDouble(), cell == 2 ? 0.0 : kCells[cell]);
        }
    }
}

void checkGrid(MGeoData &grid, int version)
{
    checkGeography(grid, version, "grid", kRows * kColumns);
    const GeoProps props = VORN_GetGeographyProperties(grid.GetId());
    const auto tag = [&](const char *key) { return props.metaData.value(key).toString(); };
    const bool hasTexts = version < 170004;
    QCOMPARE(line(props.rows, props.columns, text(props.timeBounds), tag("History"),
                  tag("Projection"), tag("Distance unit")),
             line(2, 3,
                  version < 160000   ? text(TimeStamp::Invalid)
                  : version < 180005 ? "[3, 8)"
                                     : "[3, 8]",
                  hasTexts ? "history" : "", hasTexts && version >= 111001 ? "projection" : "",
                  hasTexts && version >= 160000 ? "metre" : ""));
    MDataSource &source = *grid.GetDataSource();
    QCOMPARE(source.GetDatasetIds().size(), version >= 180005 ? 3 : 0);
    for (int i = 0; i < source.GetDatasetIds().size(); ++i)
        checkRaster(dynamic_cast<MRasterDataset &>(*source.GetDataset(kFirstRaster + i)), version,
                    i);
}

void check(TestModel &model, const Sample &sample)
{
    const int version = sample.version;
    MVectorData &points = model.vectorData(kVectorId);
    checkGeography(points, version, "points", sample.objects);
    if (QTest::currentTestFailed())
        return;
    QCOMPARE(weights(points), expectedWeights(version));
    MVectorDataSource &source = *points.GetVectorDataSource();
    QCOMPARE(source.GetDatasetIds().size(), sample.datasets.size());
    for (int i = 0; i < sample.datasets.size(); ++i)
        checkVector(*source.GetVectorDataset(kFirstDataset + i), sample, i);
    MGeoData *grid = model.controller.GetGeoData().value(kRasterId);
    QCOMPARE(grid != nullptr, version >= 103000);
    if (grid)
        checkGrid(*grid, version);
    VariogramModel variogram;
    QCOMPARE(model.controller.GetNonConVariogramModel(0, variogram), version >= 150000);
    if (version >= 150000)
        checkModel(variogram, version);
}

bool hasStrays(TestModel &model)
{
    const auto *dataset =
        model.vectorData(kVectorId).GetVectorDataSource()->GetVectorDataset(kFirstDataset + 3);
    return dataset->GetTimeSeriesIntegerData(0)->contains(4);
}

} // namespace

class TestOldProjects : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void everyAgeOpens_data();
    void everyAgeOpens();
    void damagedFilesAreRefused_data();
    void damagedFilesAreRefused();
    void contradictionsAreRefused_data();
    void contradictionsAreRefused();
    void crossedStampsThatMeetGiveTheirBlocksBack();
    void standardStringsAreLengthAndBytes();
};

void TestOldProjects::everyAgeOpens_data()
{
    QTest::addColumn<int>("version");
    for (const int version : versions())
        QTest::newRow(qPrintable(versionText(version))) << version;
}

void TestOldProjects::everyAgeOpens()
{
    QFETCH(int, version);
    TestModel model;
    const Sample sample{version};
    const QByteArray bytes = write(sample);
    QVERIFY(model.load(bytes));
    check(model, sample);
    if (QTest::currentTestFailed())
        return;
    QCOMPARE(hasStrays(model), version >= 201044);
    QCOMPARE(model.controller.log, expectedNotes(version));
    // Once more over itself: the values that go have the block ids of those that come.
    QVERIFY(model.load(bytes));
    check(model, sample);
    if (QTest::currentTestFailed())
        return;
    QCOMPARE(model.ownerlessBlocks(), 0); // weight lists that a load drops left theirs

    const QString path = model.path(QStringLiteral("present"));
    QVERIFY(VORN_SaveProject(path));
    VORN_UnloadProject();
    QVERIFY(VORN_LoadProject(path));
    QCOMPARE(dataInterfaceVersionLoading, serializationVersionNumber);
    check(model, sample);
    if (QTest::currentTestFailed())
        return;
    // The next model takes up the ids where the old project left them.
    QCOMPARE(model.controller.AddNonConVariogramModel(VariogramModel()), int(version >= 150000));
}

// A version of every form.
void TestOldProjects::damagedFilesAreRefused_data()
{
    QTest::addColumn<int>("version");
    for (const int version : {100000, 101500, 102500, 104500, 115000, 125000, 165000, 170500,
                              180003, 180004, 180020, 180070, 200000, 306013})
        QTest::newRow(qPrintable(versionText(version))) << version;
}

void TestOldProjects::damagedFilesAreRefused()
{
    QFETCH(int, version);
    TestModel model;
    const Sample sample{version, 4, 2, {{Decimal, true}, {Text, false}}};
    const QByteArray bytes = write(sample);
    QVERIFY(model.load(bytes));
    for (int length = 0; length < bytes.size(); length += 1 + length % 29) {
        QVERIFY2(!model.load(bytes.left(length)), qPrintable(QString::number(length)));
        VORN_UnloadProject();
    }
    model.loadFlipped(bytes, 120, [&model] { contents(model); });
}

void TestOldProjects::contradictionsAreRefused_data()
{
    QTest::addColumn<int>("version");
    QTest::addColumn<Fault>("fault");
    QTest::addColumn<Dataset>("dataset");
    QTest::addColumn<QString>("text");
    const auto add = [](const char *name, Fault fault, QVector<int> versions,
                        const Dataset &dataset = {Decimal, true}, const QString &text = QString()) {
        for (const int version : versions)
            QTest::newRow(qPrintable(QLatin1String(name) + ' ' + versionText(version)))
                << version << fault << dataset << text;
    };
    const Dataset series{Integer, false};
    const Dataset texts{Text, false};
    add("a dataset's object count", Fault::DatasetObjectCount,
        {100000, 125000, 165000, 180003, 180070, 400021});
    add("a huge object count", Fault::SourceObjectCount,
        {100000, 125000, 165000, 180003, 180070, 400021});
    add("a slice twice", Fault::RepeatedSlice, {100000, 180003});
    add("a slice with crossed ends", Fault::CrossedSlice, {100000, 180003});
    add("an id beyond the objects", Fault::SliceIdTooLarge, {100000, 180003});
    add("a value without an object", Fault::SliceIdMissing, {100000, 180003});
    add("an interval twice", Fault::RepeatedHistory, {100000, 180003}, series);
    add("a text's interval twice", Fault::RepeatedHistory, {100000, 180003}, texts);
    add("an interval with crossed ends", Fault::CrossedHistory, {100000, 180003}, series);
    add("an unknown type", Fault::UnknownType, {100000, 125000, 180003, 180070, 200000}, series,
        QStringLiteral("Invalid data type"));
    add("no name", Fault::UnnamedDataset, {100000, 125000}, series,
        QStringLiteral("Can't find dataset name"));
    add("slices and series", Fault::BothStorages, {100000, 165000, 180003});
    add("too few tables", Fault::FewerFrequencies, {165000, 180003, 180070}, series,
        QStringLiteral("Invalid realization count"));
    add("too few realizations", Fault::FewerRealizations, {180070, 200000, 400021}, series,
        QStringLiteral("Invalid realization count"));
    add("a realization beyond the file", Fault::LongRealization, {165000, 180003});
    add("a realization cut short", Fault::ShortRealization, {165000, 180003});
}

void TestOldProjects::contradictionsAreRefused()
{
    QFETCH(int, version);
    QFETCH(Fault, fault);
    QFETCH(Dataset, dataset);
    QFETCH(QString, text);
    TestModel model;
    const Sample sound{version, 4, 2, {dataset}};
    QVERIFY(model.load(write(sound)));
    VORN_UnloadProject();
    const Sample sample{version, 4, 2, {dataset}, fault};
    QVERIFY(!model.load(write(sample)));

    // The failure that a project's load keeps to itself.
    const QByteArray bytes = writeVectorGeography(sample);
    datainterface::BytesReader in(bytes);
    in.setVersion(streamVersion(version));
    MVectorData geography(QString(), TF_DateTime, QString());
    QCOMPARE(raisedText([&] { QVERIFY(!geography.RestoreFromStream(in)); }), text);
}

// Keys that overlap are one key, but crossed ends have no order: stamps that one map kept apart can
// meet in the next.
void TestOldProjects::crossedStampsThatMeetGiveTheirBlocksBack()
{
    const TestModel model;
    TimeStamp crossed;
    crossed.startTime = 3;
    crossed.endTime = 1;
    const QVector<TimeStamp> stamps{crossed, stamp("[0, 2]"), stamp("[2, 2]")};
    QByteArray maps;
    datainterface::BytesWriter out(&maps);
    out << qint32(stamps.size());
    QVector<int> blocks;
    for (const TimeStamp &stamp : stamps) {
        blocks.append(SaveDataBlock(QByteArray(8, '\0')));
        out << stamp << qint32(blocks.last());
    }
    for (int map = 1; map < 6; ++map)
        out << qint32(0);
    QByteArray bytes;
    datainterface::BytesWriter array(&bytes);
    array << maps;
    datainterface::BytesReader in(bytes);
    MVectorDataRealization realization;
    in >> realization;
    QCOMPARE(in.status(), QDataStream::Ok);
    auto &slices = realization.slicesOf<int>();
    QVERIFY(slices.size() < stamps.size());
    qDeleteAll(slices);
    QByteArray left;
    for (const int block : blocks)
        QVERIFY2(!ReadDataBlock(block, left), qPrintable(QString::number(block)));
}

void TestOldProjects::standardStringsAreLengthAndBytes()
{
    std::string text;
    datainterface::BytesReader in(QByteArray("\0\0\0\3a\0b\x7F\xFF\xFF\xF0huge", 15));
    in >> text;
    QCOMPARE(text, std::string("a\0b", 3));
    in >> text;
    QVERIFY(in.status() != QDataStream::Ok);
    QCOMPARE(text, std::string());
}

QTEST_GUILESS_MAIN(TestOldProjects)
#include "tst_OldProjects.moc"
