// SPDX-License-Identifier: MIT
// Whatever a host does to a project through public functions, what is saved loads, is the same, and
// is the same file when it is saved again. DATAINTERFACE_TEST_SEED chooses another walk.
#include <QBitArray>
#include <QColor>
#include <QFont>
#include <QJsonArray>
#include <QJsonObject>
#include <QLocale>
#include <QPolygonF>
#include <QRandomGenerator>
#include <QRegularExpression>
#include <QVector2D>
#include <QtTest>
#include <csignal>
#include <numeric>
#include <sys/resource.h>
#include "datainterface/DataAPI.h"
#include "datainterface/GeographyAPI.h"
#include "datainterface/MRasterDataSource.h"
#include "datainterface/MVectorData.h"
#include "datainterface/MVectorDataSource.h"
#include "datainterface/ProjectAPI.h"
#include "datainterface/RasterAPI.h"
#include "datainterface/VariogramAPI.h"
#include "datainterface/WeightsAPI.h"
#include "support/checks.h"
#include "support/model.h"
#include "support/oldProject.h"
#include "support/support.h"

namespace {

QVariant nestedLists(int depth)
{
    QVariant value(7);
    for (int i = 0; i < depth; ++i)
        value = QVariantList{value};
    return value;
}

struct Attribute {
    QVariant value;
    bool isKept;
};

QVector<Attribute> attributes()
{
    QVector<Attribute> list;
    for (const QVariant &value :
         {QVariant(QVariantHash{{"b", 1}, {"a", QVariantHash{{"d", 2}, {"c", 3}}}}),
          QVariant(QBitArray(11, true)), QVariant(QPolygonF(QRectF(0, 1, 2, 3))),
          QVariant(QLocale(QStringLiteral("de_CH"))), QVariant(QRegularExpression("a+")),
          QVariant(QJsonObject{{"k", QJsonArray{1, "x"}}}), QVariant(QVector2D(1, 2)),
          QVariant(QRect(5, 5, 0, 0)), QVariant(QColor(Qt::red)), QVariant(QVariant::Int),
          QVariant(QVariant::Map), QVariant(QString()), QVariant(QLine(3, 3, 3, 3)),
          QVariant::fromValue(QByteArrayList{"a", "b"}), QVariant(QUrl("http://a.b/c d")),
          nestedLists(31), QVariant()})
        list.append({value, true});
    QJsonArray deep;
    for (int i = 0; i < 1200; ++i)
        deep = QJsonArray{deep};
    QMultiHash<QString, QVariant> twice{{"a", 1}, {"a", 2}};
    for (const QVariant &value :
         {QVariant(QVariantHash(twice)), QVariant(QFont()), QVariant::fromValue(QList<int>{1}),
          QVariant::fromValue(QVector<double>{1.0}), nestedLists(32), nestedLists(40),
          QVariant(deep), QVariant(QVariantHash{{"a", QFont()}})})
        list.append({value, false});
    return list;
}

QString shown(const QVariant &value)
{
    QString text;
    QDebug(&text) << value << value.isNull();
    return text;
}

/// A host that does things at random. Each step is one of a table, on a geography and a dataset
/// that are chosen anew.
class Walk {
public:
    Walk(TestModel &model, quint32 seed) : mModel(model), mRandom(seed) {}

    void step()
    {
        const int geography = pick(mModel.controller.GetGeoData().keys());
        if (geography < 0 || (below(12) == 0 && mModel.controller.GetGeoData().size() < 5))
            return addGeography();
        auto *vector = dynamic_cast<MVectorData *>(mModel.controller.GetGeoData()[geography]);
        const QSet<int> ids = VORN_GetGeographyProperties(geography).datasetIds;
        const int dataset = pick(QList<int>(ids.begin(), ids.end()));
        if (dataset < 0 || below(8) == 0)
            addDataset(geography, vector != nullptr);
        else if (below(3) > 0)
            changeDataset(dataset, geography, vector);
        else
            changeGeography(geography, vector);
    }

private:
    int below(int limit) { return static_cast<int>(mRandom.bounded(limit)); }
    int pick(QList<int> list)
    {
        std::sort(list.begin(), list.end());
        return list.isEmpty() ? -1 : list[below(list.size())];
    }
    Interval span()
    {
        const qint64 start = below(5) * 5;
        return {start, start + 5 + below(2) * 5, true, false};
    }

    void addGeography()
    {
        if (below(3) > 0)
            addPoints(1 + below(5), QStringLiteral("points"), TF_Integer, 0, 30);
        else
            addGrid(2, 3, QRectF(), 30);
    }
    void addDataset(int geography, bool isVector)
    {
        const int realizations = 1 + below(2);
        if (!isVector) {
            VORN_NewRasterDataset(geography, QStringLiteral("cells"), RasterIntegerType,
                                  realizations, 32, QString());
            return;
        }
        const DataType types[] = {IntegerType, DecimalType, StringType};
        VORN_NewVectorDataset(geography, QStringLiteral("values"),
                              below(2) == 0 ? TimeSlice : TimeSeries, types[below(3)], realizations,
                              QStringLiteral("/path"));
    }
    void changeDataset(int id, int geography, MVectorData *vector)
    {
        switch (below(8)) {
        case 0:
            VORN_SetDatasetAttribute(id, QStringLiteral("key %1").arg(below(3)),
                                     mAttributes[below(mAttributes.size())].value);
            break;
        case 1:
            VORN_RemoveDataset(id);
            break;
        case 2: {
            VariogramModel variogram{DataId(id)};
            mModel.controller.GetGeoData()[geography]->GetDataSource()->AddVariogramModel(
                id, variogram);
            break;
        }
        case 3:
            VORN_MigrateDataset(id, geography, false);
            break;
        default:
            addValues(id, vector);
        }
    }
    void addValues(int id, MVectorData *vector)
    {
        const int realization = below(VORN_GetDatasetProperties(id).realizationCount);
        const int number = below(7);
        if (!vector) {
            const QVector<int> cells{number, 1, 2, 3, 4, 5};
            VORN_AddRasterValues(id, realization, span(), cells, 2, below(2) == 0, true);
            return;
        }
        if (vector->GetObjectCount() == 0)
            return;
        const auto object = static_cast<unsigned int>(below(int(vector->GetObjectCount())));
        const auto add = [&](auto value) {
            VORN_AddDataValue(id, realization, object, span(), value, below(2) == 0, true);
        };
        switch (VORN_GetDatasetProperties(id).dataType) {
        case IntegerType:
            return add(number);
        case DecimalType:
            return add(number / 4.0);
        default:
            return add(QStringLiteral("text %1 \u6771").arg(number));
        }
    }
    void changeGeography(int id, MVectorData *vector)
    {
        switch (below(vector ? 9 : 5)) {
        case 0:
            VORN_RemoveGeography(id);
            break;
        case 1:
            mModel.controller.GetGeoData()[id]->SetStatic(below(2) == 0);
            break;
        case 2: {
            const int set = VORN_CreateClusterSet(id, QStringLiteral("clusters"), QString());
            VORN_AddToClusterSet(set, 0, span(), {{0, 0.5F, 0.0F, 1.0F}});
            break;
        }
        case 3:
            mModel.controller.AddNonConVariogramModel(VariogramModel());
            break;
        case 4: {
            const QList<int> sets = VORN_GetGeographyProperties(id).weightSets.keys();
            if (!sets.isEmpty())
                mModel.controller.GetGeoData()[id]->RemoveSpatialWeightSet(pick(sets));
            break;
        }
        case 5: {
            const int set = VORN_CreateNearestNeighborWeightSet(
                id, QStringLiteral("nearest"), QString(), 2, RowStandardizedWeight, false, 1, 1);
            if (vector->GetObjectCount() > 0)
                VORN_PrecalculateSpatialWeights(set, 5, false);
            break;
        }
        case 6: { // the datasets alone, and back
            const unsigned int count = vector->GetObjectCount();
            const auto other = static_cast<unsigned int>(below(3));
            vector->GetVectorDataSource()->Resize(other);
            // Two counts that differ would make a file that cannot be loaded.
            QCOMPARE(VORN_SaveProject(mModel.path("resized")), other == count);
            vector->GetVectorDataSource()->Resize(count);
            break;
        }
        default:
            removeObjects(*vector);
        }
    }
    void removeObjects(MVectorData &vector)
    {
        QSet<int> objects;
        const bool all = below(2) == 0;
        for (int object = 0; object < int(vector.GetObjectCount()); ++object)
            if (all || below(3) == 0)
                objects.insert(object);
        vector.RemoveObjects(objects);
    }

    TestModel &mModel;
    QRandomGenerator mRandom;
    const QVector<Attribute> mAttributes = attributes();
};

/// Without the times at which datasets were made.
QStringList undated(QStringList contents)
{
    contents.erase(std::remove_if(contents.begin(), contents.end(),
                                  [](const QString &line) {
                                      return line.startsWith(QLatin1String("Creation date"));
                                  }),
                   contents.end());
    return contents;
}

} // namespace

class TestProjectWalk : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void whatIsSavedCanBeLoaded_data();
    void whatIsSavedCanBeLoaded();
    void packedLoadingChangesNothing_data() { whatIsSavedCanBeLoaded_data(); }
    void packedLoadingChangesNothing();
    void attributesAreKeptOrRefused();
    void objectsInUseAreNotRemovedByHalves();
    void whatStaysBehindOwnsNothing();
    void copiesThatFailLeaveNothing();
};

void TestProjectWalk::whatIsSavedCanBeLoaded_data()
{
    QTest::addColumn<quint32>("seed");
    const quint32 first = walkSeed(1);
    for (quint32 i = 0; i < 12; ++i) {
        const quint32 seed = first + i;
        QTest::newRow(QByteArray::number(seed).constData()) << seed;
    }
}

void TestProjectWalk::whatIsSavedCanBeLoaded()
{
    QFETCH(quint32, seed);
    TestModel model(20000);
    Walk walk(model, seed);
    for (int round = 0; round < 20; ++round) {
        for (int step = 0; step < 12; ++step)
            walk.step();
        const QStringList before = contents(model);
        const QString first = model.path(QStringLiteral("first"));
        const QString second = model.path(QStringLiteral("second"));
        QVERIFY2(VORN_SaveProject(first), QByteArray::number(round));
        if (round % 3 > 0)
            VORN_UnloadProject();
        if (round % 3 == 1) {
            QVERIFY(model.load(oldProject::write({round % 2 == 0 ? 170500 : 201000})));
            VORN_UnloadProject();
        }
        QVERIFY2(VORN_LoadProject(first), QByteArray::number(round));
        QCOMPARE(model.ownerlessBlocks(), 0);
        QCOMPARE(contents(model), before);
        QVERIFY(VORN_SaveProject(second));
        QVERIFY2(fileBytes(first) == fileBytes(second), QByteArray::number(round));
    }
}

// The same walk is made over a project that is loaded whole and over one that stays packed. Every
// other round is saved over the file in which the blocks are packed.
void TestProjectWalk::packedLoadingChangesNothing()
{
    QFETCH(quint32, seed);
    TestModel model(2000);
    Walk builder(model, seed);
    const QString path = model.path(QStringLiteral("project"));
    const QString saved = model.path(QStringLiteral("saved"));
    for (int round = 0; round < 6; ++round) {
        for (int step = 0; step < 24; ++step)
            builder.step();
        QVERIFY2(VORN_SaveProject(saved), QByteArray::number(round));
        QVector<QStringList> found;
        QVector<QStringList> reloaded;
        for (const bool keepPacked : {false, true}) {
            QFile::remove(path);
            QVERIFY(QFile::copy(saved, path));
            VORN_UnloadProject();
            VORN_SetProjectLoading(keepPacked);
            const bool isLoaded = VORN_LoadProject(path);
            VORN_SetProjectLoading(false);
            QVERIFY(isLoaded);
            Walk walk(model, seed + 100);
            for (int step = 0; step < 6; ++step)
                walk.step();
            const QString target = round % 2 == 0 ? path : model.path(QStringLiteral("other"));
            QVERIFY2(VORN_SaveProject(target), QByteArray::number(round));
            found.append(undated(contents(model)));
            QCOMPARE(VORN_GetUnreadableProjectFile(), QString());
            QVERIFY(VORN_LoadProject(target));
            reloaded.append(undated(contents(model)));
        }
        QCOMPARE(found[1], found[0]);
        QCOMPARE(reloaded, QVector<QStringList>(2, found[0]));
    }
}

// What the loader refuses would cost the whole project, so it is refused when it is set.
void TestProjectWalk::attributesAreKeptOrRefused()
{
    for (const Attribute &attribute : attributes()) {
        TestModel model;
        const int id = VORN_NewVectorDataset(addPoints(1), QStringLiteral("a"), TimeSlice,
                                             DecimalType, 1, QString());
        const QByteArray type = attribute.value.typeName();
        const QString key = QStringLiteral("key");
        VORN_SetDatasetAttribute(id, key, 1);
        QVERIFY2(VORN_SetDatasetAttribute(id, key, attribute.value) == attribute.isKept, type);
        const QVariant expected = attribute.isKept ? attribute.value : QVariant(1);
        const QString path = model.path(QStringLiteral("project"));
        QVERIFY2(VORN_SaveProject(path), type);
        QVERIFY2(VORN_LoadProject(path), type);
        QVariant found;
        VORN_GetDatasetAttribute(id, key, found);
        QCOMPARE(shown(found), shown(expected));
    }
}

// The second dataset refused, when the geometry and the first had changed.
void TestProjectWalk::objectsInUseAreNotRemovedByHalves()
{
    TestModel model;
    const int geography = addPoints(3);
    MVectorData &vector = model.vectorData(geography);
    const auto add = [&](StorageType storage, DataType type) {
        return VORN_NewVectorDataset(geography, QStringLiteral("a"), storage, type, 1, QString());
    };
    const int slices = add(TimeSlice, IntegerType);
    const int texts = add(TimeSlice, StringType);
    const int series = add(TimeSeries, IntegerType);
    const Interval span{0, 10, true, true};
    VORN_AddDataValue(slices, 0, 1, span, 4, true, true);
    VORN_AddDataValue(texts, 0, 1, span, QStringLiteral("a"), true, true);
    VORN_AddDataValue(series, 0, 1, span, 5, true, true);
    const MVectorDataset &held = *vector.GetVectorDataSource()->GetVectorDataset(series);
    const QStringList before = contents(model);
    held.CheckOutTimeSeries(0, 1, 0);
    QCOMPARE(raisedText([&] {
                 vector.RemoveObjects({0, 1, 2});
             }),
             QStringLiteral("Time series still in use"));
    held.CheckInTimeSeries(0, 1, 0);
    QCOMPARE(contents(model), before);
    vector.RemoveObjects({0, 1, 2});
    QCOMPARE(vector.GetVectorDataSource()->GetVectorDataset(texts)->GetTimeSliceIntervals(0).size(),
             0);
    const QString path = model.path(QStringLiteral("project"));
    QVERIFY(VORN_SaveProject(path));
    QVERIFY(VORN_LoadProject(path));
}

// A host may remove the project before only after the load: its containers must not give back the
// blocks that are the new ones' by then.
void TestProjectWalk::whatStaysBehindOwnsNothing()
{
    TestModel model;
    QVERIFY(model.load(oldProject::write({400021})));
    const QStringList alone = contents(model);
    const QString path = model.path(QStringLiteral("project"));
    QVERIFY(VORN_SaveProject(path));
    VORN_UnloadProject();
    while (addPoints(2) <= oldProject::kRasterId) {
    }
    const int other = addPoints(2);
    for (const StorageType storage : {TimeSlice, TimeSeries}) {
        const int id =
            VORN_NewVectorDataset(other, QStringLiteral("a"), storage, StringType, 1, QString());
        for (unsigned int object = 0; object < 2; ++object)
            VORN_AddDataValue(id, 0, object, {0, 10, true, true}, QStringLiteral("a"), true, true);
    }
    QVERIFY(VORN_LoadProject(path));
    contents(model);
    for (int geography : model.controller.GetGeoData().keys())
        if (geography != oldProject::kVectorId && geography != oldProject::kRasterId)
            VORN_RemoveGeography(geography);
    QCOMPARE(contents(model), alone);
}

// Without room in the block store an exception passes the function that would remove the copy.
void TestProjectWalk::copiesThatFailLeaveNothing()
{
    TestModel model(100);
    const int geography = addPoints(500);
    const int other = addPoints(500);
    const int grid = addGrid(20, 25);
    const Interval span{0, 10, true, true};
    const QVector<int> sevens(500, 7);
    const int values = VORN_NewVectorDataset(geography, "a", TimeSlice, IntegerType, 1, QString());
    QVERIFY(VORN_AddDataValues(values, 0, span, sevens, QSet<int>(), true, true));
    const int cells = VORN_NewRasterDataset(grid, "b", RasterIntegerType, 1, 32, QString());
    QVERIFY(VORN_AddRasterValues(cells, 0, span, sevens, 2, true, true));
    MVectorDataSource &source = *model.vectorData(geography).GetVectorDataSource();
    MVectorDataSource &target = *model.vectorData(other).GetVectorDataSource();
    QVector<int> objects(500);
    std::iota(objects.begin(), objects.end(), 0);

    const QStringList before = contents(model);
    rlimit room{};
    getrlimit(RLIMIT_FSIZE, &room);
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    const rlimit none{0, room.rlim_max};
    setrlimit(RLIMIT_FSIZE, &none);
    const QStringList raised{
        raisedText([&] { source.ConvertDataset(values, "c", DecimalType, 0); }),
        raisedText([&] { target.ImportDatasetFromDataSource(&source, values, objects, false); }),
        raisedText([&] { VORN_MigrateDataset(values, other, false); }),
        raisedText([&] { VORN_MigrateDataset(cells, grid, false); })};
    setrlimit(RLIMIT_FSIZE, &room);
    std::signal(SIGXFSZ, handler);
    QCOMPARE(raised, QStringList({"result", "result", "result", "result"}));
    QCOMPARE(contents(model), before);
}

QTEST_MAIN(TestProjectWalk)
#include "tst_ProjectWalk.moc"
