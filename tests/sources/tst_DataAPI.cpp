// SPDX-License-Identifier: MIT
// The public dataset functions as hosts see them: ids in, values out, every road through the call frame.
#include <QtTest>
#include <functional>
#include "datainterface/DataAPI.h"
#include "datainterface/FrameAPI.h"
#include "datainterface/GeographyAPI.h"
#include "datainterface/MVectorData.h"
#include "datainterface/MVectorDataSource.h"
#include "datainterface/dataContainer.h"
#include "datainterface/datum.h"
#include "support/model.h"
#include "support/support.h"

namespace {

const Interval kSpan{0, 10, true, false};

// True when the function gives, for a dataset id that leads nowhere, the result that is stated for it, and leaves its
// outputs alone.
using Miss = std::function<bool(int id)>;

template <class T> T preset();
template <> double preset() { return 1.5; }
template <> int preset() { return 7; }
template <> QString preset() { return QStringLiteral("kept"); }

template <class T, class Read> bool vectorMiss(Read read)
{
    QVector<T> values{preset<T>()};
    QSet<int> missing{3};
    return !read(values, missing) && values == QVector<T>{preset<T>()} && missing == QSet<int>{3};
}

template <class T> QVector<QPair<const char *, Miss>> typedMisses()
{
    return {
        {"GetDataValues", [](int id) {
             return vectorMiss<T>([id](auto &v, auto &m) { return VORN_GetDataValues(id, 0, 5, v, m); });
         }},
        {"GetTimeSliceData", [](int id) {
             return vectorMiss<T>([id](auto &v, auto &m) { return VORN_GetTimeSliceData(id, 0, 5, v, m); });
         }},
        {"GetTimeSeriesData", [](int id) {
             QMap<Interval, T> values{{kSpan, preset<T>()}};
             return !VORN_GetTimeSeriesData(id, 0, 0, values) && values.size() == 1;
         }},
        {"SetTimeSeriesData", [](int id) {
             return !VORN_SetTimeSeriesData(id, 0, 0, QMap<Interval, T>{{kSpan, preset<T>()}});
         }},
        {"AddDataValues slice", [](int id) {
             return !VORN_AddDataValues(id, 0, kSpan, QVector<T>{preset<T>()}, {}, true, true);
         }},
        {"AddDataValues series", [](int id) {
             return !VORN_AddDataValues(id, 0, 0U, QVector<QPair<Interval, T>>{{kSpan, preset<T>()}}, true, true);
         }},
        {"AddDataValue", [](int id) { return !VORN_AddDataValue(id, 0, 0, kSpan, preset<T>(), true, true); }},
    };
}

template <class Read> bool intervalMiss(Read read)
{
    QVector<Interval> intervals{kSpan};
    return !read(intervals) && intervals.size() == 1;
}

template <class Query> bool objectMiss(Query query)
{
    QVector<unsigned int> objects{7};
    return !query(objects) && objects.size() == 1;
}

template <class Read> bool numberMiss(Read read)
{
    double value = 1.5;
    return !read(value) && value == 1.5;
}

QVector<QPair<const char *, Miss>> untypedMisses()
{
    const QString key = QStringLiteral("Name");
    return {
        {"GetDatasetProperties", [](int id) { return VORN_GetDatasetProperties(id).id == -1; }},
        {"GetAllDatasetTimes",
         [](int id) { return intervalMiss([id](auto &t) { return VORN_GetAllDatasetTimes(id, 0, t); }); }},
        {"GetDataIntervals",
         [](int id) { return intervalMiss([id](auto &t) { return VORN_GetDataIntervals(id, 0, 0, t); }); }},
        {"GetTimeSliceDataIntervals",
         [](int id) { return intervalMiss([id](auto &t) { return VORN_GetTimeSliceDataIntervals(id, 0, t); }); }},
        {"GetDataValues datum", [](int id) {
             QVector<datum> values{datum(1)};
             QSet<int> missing{3};
             return !VORN_GetDataValues(id, 0, 5, values, missing) && values.size() == 1 && missing.size() == 1;
         }},
        {"GetNumericValues", [](int id) {
             return vectorMiss<double>([id](auto &v, auto &m) { return VORN_GetNumericValues(id, 0, 5, v, m); });
         }},
        {"GetObjectDataValues", [](int id) {
             QVector<datum> values{datum(1)};
             return intervalMiss([&](auto &t) { return VORN_GetObjectDataValues(id, 0, 0, t, values); })
                 && values.size() == 1;
         }},
        {"GetDataValue datum", [](int id) {
             datum value(7);
             return !VORN_GetDataValue(id, 0, 0, 5, value) && value.integerValue == 7;
         }},
        {"GetDataValue double",
         [](int id) { return numberMiss([id](double &v) { return VORN_GetDataValue(id, 0, 0, 5, v); }); }},
        {"GetDataValue int", [](int id) {
             int value = 7;
             return !VORN_GetDataValue(id, 0, 0, 5, value) && value == 7;
         }},
        {"GetDataValue text", [](int id) {
             char buffer[] = "kept";
             return !VORN_GetDataValue(id, 0, 0, 5, 4, buffer) && qstrcmp(buffer, "kept") == 0;
         }},
        {"AddDataValues container", [](int id) {
             VORN_DataContainer values(VORN_DataContainer::DoubleData, 3);
             return !VORN_AddDataValues(id, 0, kSpan, values, true, true);
         }},
        {"MigrateDataset", [](int id) { return VORN_MigrateDataset(id, 0, true) == -1; }},
        {"GetDatasetAttribute", [key](int id) {
             QVariant value(7);
             return !VORN_GetDatasetAttribute(id, key, value) && value == 7;
         }},
        {"SetDatasetAttribute", [key](int id) { return !VORN_SetDatasetAttribute(id, key, 7); }},
        {"GetDatasetMetaData", [key](int id) { return VORN_GetDatasetMetaData(id, key).isEmpty(); }},
        {"SetDatasetMetaData", [key](int id) { return !VORN_SetDatasetMetaData(id, key, key); }},
        {"SetShortDescription", [key](int id) { return !VORN_SetShortDescription(id, key); }},
        {"GetLongDescription", [](int id) {
             QString text = QStringLiteral("kept");
             return !VORN_GetLongDescription(id, text) && text == QLatin1String("kept");
         }},
        {"SetLongDescription", [key](int id) { return !VORN_SetLongDescription(id, key); }},
        {"AppendToLongDescription", [key](int id) { return !VORN_AppendToLongDescription(id, key); }},
        {"RecalculateDataFrequencies", [](int id) { return !VORN_RecalculateDataFrequencies(id); }},
        {"GetUniqueDataCount", [](int id) {
             bool isCapped = true;
             return VORN_GetUniqueDataCount(id, isCapped) == 0 && isCapped;
         }},
        {"GetUniqueDataValues", [](int id) {
             QList<datum> values{datum(1)};
             return !VORN_GetUniqueDataValues(id, values) && values.size() == 1;
         }},
        {"GetMean", [](int id) { return numberMiss([id](double &v) { return VORN_GetMean(id, 0, 5, v); }); }},
        {"GetStddev", [](int id) { return numberMiss([id](double &v) { return VORN_GetStddev(id, 0, 5, v); }); }},
        {"GetMax at", [](int id) { return numberMiss([id](double &v) { return VORN_GetMax(id, 0, 5, v); }); }},
        {"GetMin at", [](int id) { return numberMiss([id](double &v) { return VORN_GetMin(id, 0, 5, v); }); }},
        {"GetMax", [](int id) { return numberMiss([id](double &v) { return VORN_GetMax(id, 0, v); }); }},
        {"GetMin", [](int id) { return numberMiss([id](double &v) { return VORN_GetMin(id, 0, v); }); }},
        {"GetDataCount", [](int id) { return VORN_GetDataCount(id, 5) == 0; }},
        {"HasDataAtTime", [](int id) { return !VORN_HasDataAtTime(id, 5); }},
        {"IsNormalScoreDataset", [](int id) { return !VORN_IsNormalScoreDataset(id, 5); }},
        {"GetRealizationValues", [](int id) {
             VORN_DataContainer result(VORN_DataContainer::Int32Data, 2);
             return !VORN_GetRealizationValues(id, 0, 5, VORN_DataContainer(), result) && result.count() == 2;
         }},
        {"IsVectorDataMissing", [](int id) { return !VORN_IsVectorDataMissing(id, 0, 0, 5); }},
        {"GetMissingVectorIds", [](int id) {
             QSet<int> missing{3};
             return !VORN_GetMissingVectorIds(id, 0, 5, missing) && missing == QSet<int>{3};
         }},
        {"SetMissingVectorId", [](int id) { return !VORN_SetMissingVectorId(id, 0, 0, kSpan); }},
        {"GetAllMissingRealizationLocations", [](int id) {
             VORN_MissingData missing;
             return raisedText([&] { VORN_GetAllMissingRealizationLocations(id, 5, missing); })
                 == QLatin1String("Invalid dataset id");
         }},
    };
}

// Those that look for the geography alone.
QVector<QPair<const char *, Miss>> geographyMisses()
{
    const QString name = QStringLiteral("n");
    const QRectF all(-9, -9, 99, 99);
    return {
        {"GetDatasetByName", [name](int id) { return VORN_GetDatasetByName(id >> 16, name) == -1; }},
        {"NewVectorDataset", [name](int id) {
             return VORN_NewVectorDataset(id >> 16, name, TimeSlice, DecimalType, 1, QString()) == -1;
         }},
        {"NewDatasetCreated", [](int id) { return !VORN_NewDatasetCreated(id); }},
        {"NewDatasetsCreated", [](int id) { return !VORN_NewDatasetsCreated({id}); }},
        {"DatasetChanged", [](int id) { return !VORN_DatasetChanged(id); }},
        {"DatasetsChanged", [](int id) { return !VORN_DatasetsChanged({id}); }},
        {"RemoveDataset", [](int id) { return !VORN_RemoveDataset(id); }},
        {"RemoveDatasets",
         [](int id) { return raisedText([id] { VORN_RemoveDatasets({id}); }) == QLatin1String("gd"); }},
        {"GetUniqueDatasetName", [name](int id) { return VORN_GetUniqueDatasetName(id >> 16, name) == name; }},
        {"SuggestUniqueDatasetName", [name](int id) { return VORN_SuggestUniqueDatasetName(id >> 16, name) == name; }},
        {"GetGeographyProperties", [](int id) { return VORN_GetGeographyProperties(id >> 16).id == -1; }},
        {"GetGeography", [](int id) { return !VORN_GetGeography(id >> 16); }},
        {"RemoveGeography", [](int id) { return !VORN_RemoveGeography(id >> 16); }},
        {"GetObjectCount", [](int id) { return VORN_GetObjectCount(id >> 16, 5) == 0; }},
        {"GetObservationTimes",
         [](int id) { return intervalMiss([id](auto &t) { return VORN_GetObservationTimes(id >> 16, 0, t); }); }},
        {"GetAllObjectTimes",
         [](int id) { return intervalMiss([id](auto &t) { return VORN_GetAllObjectTimes(id >> 16, t); }); }},
        {"ObjectExistsAtTime", [](int id) { return !VORN_ObjectExistsAtTime(id >> 16, 0, 5); }},
        {"GetObject", [](int id) {
             const VORN_Object object = VORN_GetObject(id >> 16, 0, 5);
             return !object.tree && !object.record;
         }},
        {"GetPointVertex", [](int id) {
             QPointF point(1, 2);
             return !VORN_GetPointVertex(id >> 16, 0, 5, point) && point == QPointF(1, 2);
         }},
        {"GetLineVertices", [](int id) {
             QList<QVector<QPointF>> parts{{}};
             return !VORN_GetLineVertices(id >> 16, 0, 5, parts) && parts.size() == 1;
         }},
        {"GetObjectBounds", [](int id) {
             QRectF bounds(1, 2, 3, 4);
             return !VORN_GetObjectBounds(id >> 16, 0, 5, bounds) && bounds == QRectF(1, 2, 3, 4);
         }},
        {"Rect, MBR and RectTimeQuery", [all](int id) {
             return objectMiss([&](auto &o) { return VORN_RectQuery(id >> 16, all, 5, o); })
                 && objectMiss([&](auto &o) { return VORN_MBRQuery(id >> 16, all, 5, o); })
                 && objectMiss([&](auto &o) { return VORN_RectTimeQuery(id >> 16, all, 0, 9, o); });
         }},
        {"CircleQuery", [](int id) {
             return objectMiss([&](auto &o) { return VORN_CircleQuery(id >> 16, QPointF(0, 0), 9, 5, o); });
         }},
        {"ObjectQuery", [](int id) {
             const int there = VORN_GetGeographyIds().first();
             return objectMiss([&](auto &o) { return VORN_ObjectQuery(id >> 16, 0, there, 5, o); })
                 && objectMiss([&](auto &o) { return VORN_ObjectQuery(there, 0, id >> 16, 5, o); });
         }},
        {"NearestNeighborQuery", [](int id) {
             QVector<neighborDatum> neighbors(1);
             return !VORN_NearestNeighborQuery(id >> 16, QPointF(0, 0), 5, 1, neighbors) && neighbors.size() == 1;
         }},
        {"Nearest and RangeObjectQuery", [](int id) {
             const int there = VORN_GetGeographyIds().first();
             QVector<QVector<neighborDatum>> neighbors(1);
             return !VORN_NearestNeighborObjectQuery(id >> 16, there, 5, 1, neighbors, false)
                 && !VORN_NearestNeighborObjectQuery(there, id >> 16, 5, 1, neighbors, false)
                 && !VORN_RangeObjectQuery(id >> 16, there, 5, 1, neighbors, false)
                 && !VORN_RangeObjectQuery(there, id >> 16, 5, 1, neighbors, false) && neighbors.size() == 1;
         }},
        {"GetPolygonNeighborRings", [](int id) {
             QVector<QVector<unsigned int>> rings(1);
             return !VORN_GetPolygonNeighborRings(id >> 16, 0, 5, 1, true, rings) && rings.size() == 1;
         }},
        {"StartNewVectorGeography", [](int id) {
             return !VORN_StartNewVectorGeography(id >> 16)
                 && (id < 0 || !VORN_StartNewVectorGeography(QRectF(0, 0, 1, 1), 0, 1, id >> 16));
         }},
    };
}

int addDataset(int geographyId, DataType type, StorageType storage = TimeSlice, int realizations = 1)
{
    return VORN_NewVectorDataset(geographyId, QStringLiteral("values"), storage, type, realizations,
                                 QStringLiteral("/a/b"));
}

QVector<double> sequence(int count, double first)
{
    QVector<double> values;
    for (int i = 0; i < count; ++i)
        values.append(first + i);
    return values;
}

} // namespace

Q_DECLARE_METATYPE(Miss)

class TestDataAPI : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void idsOfNothingGiveTheStatedResult_data();
    void idsOfNothingGiveTheStatedResult();
    void geographyIdIsTheSignedUpperHalf();
    void valuesOfEachTypeComeBack();
    void failedReadLeavesTheOutputs();
    void objectOutOfRangeIsAMiss();
    void objectValuesSkipItsHoles();
    void longTextIsNotTerminated();
    void seriesComeBackByInterval();
    void manyIdsAreAnnouncedByGeography();
    void migratedDatasetIsACopy();
    void missingIdsCountObjectsThatDoNotExist();
    void missingAnywhereIsMissing();
    void normalScoresTurnBackByRank();
};

void TestDataAPI::idsOfNothingGiveTheStatedResult_data()
{
    QTest::addColumn<Miss>("isMiss");
    QTest::addColumn<bool>("withGeography");
    const auto add = [](const char *suffix, const QVector<QPair<const char *, Miss>> &misses, bool withGeography) {
        for (const auto &miss : misses)
            QTest::addRow("%s %s", miss.first, suffix) << miss.second << withGeography;
    };
    add("double", typedMisses<double>(), true);
    add("int", typedMisses<int>(), true);
    add("text", typedMisses<QString>(), true);
    add("", untypedMisses(), true);
    add("", geographyMisses(), false);
}

void TestDataAPI::idsOfNothingGiveTheStatedResult()
{
    QFETCH(Miss, isMiss);
    QFETCH(bool, withGeography);
    TestModel model;
    const int geography = addPoints(3);
    QVERIFY(geography >= 0);
    QVERIFY(isMiss((geography + 1) << 16));
    QVERIFY(isMiss(-1));
    if (withGeography)
        QVERIFY(isMiss((geography << 16) + 5));
    QVERIFY(VORN_GetGeographyProperties(geography).datasetIds.isEmpty());
}

void TestDataAPI::geographyIdIsTheSignedUpperHalf()
{
    QCOMPARE(VORN_GetGeographyId(-1), -1);
    QCOMPARE(VORN_GetGeographyId(0x00050003), 5);
    QCOMPARE(VORN_GetGeographyId(static_cast<int>(0x80000001U)), -32768);
    QCOMPARE(DataId(static_cast<int>(0x80000001U)).GeoId(), -32768);
}

template <class T>
static void checkValues(int geography, DataType type, const QVector<T> &values, const datum &second)
{
    const int id = addDataset(geography, type);
    QVERIFY(VORN_AddDataValues(id, 0, kSpan, values, QSet<int>{2}, true, true));
    QVector<T> read;
    QSet<int> missing;
    QVERIFY(VORN_GetDataValues(id, 0, 9, read, missing));
    QCOMPARE(missing, QSet<int>{2});
    QCOMPARE(read.mid(0, 2), values.mid(0, 2));
    QVERIFY(!VORN_HasDataAtTime(id, 10));
    QCOMPARE(VORN_GetDataCount(id, 0), 2U);
    datum one;
    QVERIFY(VORN_GetDataValue(id, 0, 1, 0, one));
    QCOMPARE(one.type, second.type);
    QCOMPARE(one.decimalValue, second.decimalValue);
    QCOMPARE(one.integerValue, second.integerValue);
    QCOMPARE(one.stringValue, second.stringValue);
    QVERIFY(!VORN_GetDataValue(id, 0, 2, 0, one));
    QVERIFY(VORN_IsVectorDataMissing(id, 0, 2, 0));
    QVector<datum> wrapped;
    QVERIFY(VORN_GetDataValues(id, 0, 0, wrapped, missing));
    QCOMPARE(wrapped.size(), 3);
    QCOMPARE(wrapped[1].type, second.type);
    QList<datum> unique;
    QVERIFY(VORN_GetUniqueDataValues(id, unique));
    QCOMPARE(unique.size(), 2);
    QVERIFY(std::any_of(unique.cbegin(), unique.cend(), [&one](const datum &value) {
        return value.type == one.type && value.decimalValue == one.decimalValue && value.integerValue == one.integerValue
            && value.stringValue == one.stringValue;
    }));
    const DatasetProps props = VORN_GetDatasetProperties(id);
    QCOMPARE(props.dataType, static_cast<int>(type));
    QCOMPARE(props.path, QStringLiteral("/a/b"));
    QVERIFY(VORN_GetGeographyProperties(geography).datasetIds.contains(id));
}

void TestDataAPI::valuesOfEachTypeComeBack()
{
    TestModel model;
    const int geography = addPoints(3);
    checkValues<double>(geography, DecimalType, {1.5, 2.5, 0}, datum(2.5));
    checkValues<int>(geography, IntegerType, {1, -2, 0}, datum(-2));
    checkValues<QString>(geography, StringType, {"a", QString::fromUtf8("größe"), ""},
                         datum(QString::fromUtf8("größe")));
}

void TestDataAPI::failedReadLeavesTheOutputs()
{
    TestModel model;
    const int id = addDataset(addPoints(3), IntegerType);
    QVERIFY(VORN_AddDataValues(id, 0, kSpan, QVector<int>{1, 2, 3}, {}, true, true));
    QVector<double> values{9.0};
    QSet<int> missing{7};
    QVERIFY(!VORN_GetDataValues(id, 0, 5, values, missing)); // another type
    QVERIFY(!VORN_GetDataValues(id, 1, 5, values, missing)); // no such realization
    QCOMPARE(values, QVector<double>{9.0});
    QCOMPARE(missing, QSet<int>{7});
    QVERIFY(VORN_GetNumericValues(id, 0, 5, values, missing));
    QCOMPARE(values, (QVector<double>{1.0, 2.0, 3.0}));
}

void TestDataAPI::objectOutOfRangeIsAMiss()
{
    TestModel model;
    const int geography = addPoints(3);
    for (const StorageType storage : {TimeSlice, TimeSeries}) {
        const int id = addDataset(geography, DecimalType, storage);
        QVERIFY(VORN_AddDataValue(id, 0, 2, kSpan, 1.5, true, true));
        for (const unsigned int object : {3U, 0x7FFFFFFFU, 0xFFFFFFFFU}) {
            datum value;
            QVector<Interval> intervals;
            QVector<datum> values;
            QMap<Interval, double> series{{kSpan, 1.0}};
            QVERIFY(!VORN_GetDataValue(id, 0, object, 5, value));
            QVERIFY(!VORN_AddDataValue(id, 0, object, kSpan, 1.5, true, true));
            QVERIFY(!VORN_AddDataValues(id, 0, object, QVector<QPair<Interval, double>>{{kSpan, 1.0}}, true, true));
            QVERIFY(!VORN_SetTimeSeriesData(id, 0, object, series));
            QVERIFY(!VORN_GetTimeSeriesData(id, 0, object, series));
            QVERIFY(!VORN_GetObjectDataValues(id, 0, object, intervals, values));
            QVERIFY(!VORN_GetDataIntervals(id, 0, static_cast<int>(object), intervals));
            QVERIFY(!VORN_IsVectorDataMissing(id, 0, object, 5));
            QVERIFY(!VORN_SetMissingVectorId(id, 0, object, kSpan));
        }
    }
    QCOMPARE(VORN_NewVectorDataset(geography, QString(), static_cast<StorageType>(2), DecimalType, 1, QString()), -1);
    QCOMPARE(VORN_NewVectorDataset(geography, QString(), TimeSlice, RasterDecimalType, 1, QString()), -1);
    QCOMPARE(VORN_NewVectorDataset(geography, QString(), TimeSlice, DecimalType, -1, QString()), -1);
}

void TestDataAPI::objectValuesSkipItsHoles()
{
    TestModel model;
    const int id = addDataset(addPoints(2), DecimalType);
    QVERIFY(VORN_AddDataValues(id, 0, {0, 10, true, false}, QVector<double>{1, 2}, {}, true, true));
    QVERIFY(VORN_AddDataValues(id, 0, {10, 20, true, false}, QVector<double>{3, 4}, {0}, true, true));
    QVERIFY(VORN_AddDataValues(id, 0, {20, 30, true, false}, QVector<double>{5, 6}, {}, true, true));
    QVector<Interval> intervals;
    QVector<datum> values;
    QVERIFY(VORN_GetObjectDataValues(id, 0, 0, intervals, values));
    QCOMPARE(values.size(), 2);
    QCOMPARE(values[1].decimalValue, 5.0);
    QCOMPARE(intervals[1], interval("[20, 30)"));
}

void TestDataAPI::longTextIsNotTerminated()
{
    TestModel model;
    const int id = addDataset(addPoints(1), StringType);
    QVERIFY(VORN_AddDataValue(id, 0, 0, kSpan, QStringLiteral("abcdef"), true, true));
    char buffer[] = "########";
    QVERIFY(VORN_GetDataValue(id, 0, 0, 5, 4, buffer));
    QCOMPARE(buffer, "abcd####");
    QVERIFY(!VORN_GetDataValue(id, 0, 0, 5, -1, buffer));
    QVERIFY(VORN_GetDataValue(id, 0, 0, 5, 8, buffer));
    QCOMPARE(buffer, "abcdef");
}

void TestDataAPI::seriesComeBackByInterval()
{
    TestModel model;
    const int id = addDataset(addPoints(3), IntegerType, TimeSeries);
    const QMap<Interval, int> written{{interval("[0, 5)"), 4}, {interval("[5, 9]"), 6}};
    QVERIFY(VORN_SetTimeSeriesData(id, 0, 1, written));
    QMap<Interval, int> read;
    QVERIFY(VORN_GetTimeSeriesData(id, 0, 1, read));
    QCOMPARE(read, written);
    QVERIFY(!VORN_GetTimeSeriesData(id, 0, 0, read));
    QVERIFY(!VORN_SetTimeSeriesData(id, 1, 1, written));
    QVERIFY(!VORN_SetTimeSeriesData(id, 0, 1, QMap<Interval, double>{{kSpan, 1.0}})); // another type
    QVERIFY(VORN_AddDataValues(id, 0, 1U, QVector<QPair<Interval, int>>{{interval("[7, 8]"), 1}}, true, true));
    QVERIFY(VORN_GetTimeSeriesData(id, 0, 1, read));
    QCOMPARE(read.size(), 4);
    int value = 0;
    QVERIFY(VORN_GetDataValue(id, 0, 1, 9, value));
    QCOMPARE(value, 6);
}

void TestDataAPI::manyIdsAreAnnouncedByGeography()
{
    TestModel model;
    const int first = addPoints(2, QStringLiteral("first"));
    const int second = addPoints(2, QStringLiteral("second"));
    Listener listener;
    QVERIFY(model.vectorData(first).AddListener(&listener));
    QVERIFY(model.vectorData(second).AddListener(&listener));
    const int a = addDataset(first, DecimalType);
    const int b = addDataset(second, DecimalType);
    const int c = addDataset(first, DecimalType);
    QCOMPARE(listener.calls, QStringList());
    QVERIFY(VORN_NewDatasetsCreated({b, c, a}));
    QVERIFY(VORN_DatasetsChanged({b, a}));
    const QString textA = QString::number(a);
    const QString textB = QString::number(b);
    const QString textC = QString::number(c);
    QCOMPARE(listener.calls, (QStringList{"added " + textC + ',' + textA + " true", "added " + textB + " true",
                                          "changed " + textA, "changed " + textB}));
    listener.calls.clear();
    listener.source = model.vectorData(first).GetDataSource();
    QCOMPARE(raisedText([&] { VORN_RemoveDatasets({a, (second + 1) << 16}); }), QStringLiteral("gd"));
    QCOMPARE(VORN_GetDatasetProperties(a).id, a); // nothing was removed
    QVERIFY(VORN_RemoveDatasets({a, c}));
    QCOMPARE(listener.calls, QStringList{"dying " + textA + " alive," + textC + " alive"});
    QCOMPARE(VORN_GetDatasetProperties(a).id, -1);
    QVERIFY(addDataset(first, DecimalType) > c); // ids are not used twice
}

void TestDataAPI::migratedDatasetIsACopy()
{
    TestModel model;
    const int from = addPoints(3);
    const int to = addPoints(3);
    const int other = addPoints(4);
    Listener listener;
    QVERIFY(model.vectorData(to).AddListener(&listener));
    for (const StorageType storage : {TimeSlice, TimeSeries}) {
        const int id = addDataset(from, StringType, storage, 2);
        for (int realization = 0; realization < 2; ++realization)
            QVERIFY(VORN_AddDataValue(id, realization, 1, kSpan, QString::number(realization), true, true));
        QCOMPARE(VORN_MigrateDataset(id, other, true), -1);
        QVERIFY(VORN_GetGeographyProperties(other).datasetIds.isEmpty());
        const int copy = VORN_MigrateDataset(id, to, storage == TimeSeries);
        QCOMPARE(VORN_GetGeographyId(copy), to);
        QVERIFY(VORN_AddDataValue(id, 1, 1, kSpan, QStringLiteral("changed"), true, true));
        datum value;
        QVERIFY(VORN_GetDataValue(copy, 1, 1, 5, value));
        QCOMPARE(value.stringValue, QStringLiteral("1"));
        QVERIFY(!VORN_GetDatasetProperties(copy).isInvalid);
        QCOMPARE(VORN_GetDatasetProperties(copy).path, QStringLiteral("/a/b"));
    }
    QCOMPARE(listener.calls.size(), 1);
    QVERIFY(listener.calls[0].endsWith(" false"));
}

void TestDataAPI::missingIdsCountObjectsThatDoNotExist()
{
    TestModel model;
    QVERIFY(VORN_StartNewVectorGeography(QRectF(0, 0, 3, 3), 0, 100, -1));
    for (int i = 0; i < 3; ++i) {
        const int chain = VORN_CreateNewObjectChain();
        QVERIFY(VORN_AddPointToChain(static_cast<unsigned int>(chain), QPointF(i, i), {0, i == 1 ? 40 : 100, true, true}));
    }
    const int geography = VORN_FinishVectorGeography(QStringLiteral("brief"), QString(), TF_Integer);
    const int id = addDataset(geography, DecimalType);
    QVERIFY(VORN_AddDataValues(id, 0, {0, 100, true, true}, sequence(3, 1.0), {2}, true, true));
    QSet<int> missing;
    QVERIFY(VORN_GetMissingVectorIds(id, 0, 10, missing));
    QCOMPARE(missing, (QSet<int>{2}));
    QVERIFY(VORN_GetMissingVectorIds(id, 0, 50, missing));
    QCOMPARE(missing, (QSet<int>{1, 2}));
    QVERIFY(VORN_SetMissingVectorId(id, 0, 0, {0, 20, true, true}));
    QVERIFY(VORN_GetMissingVectorIds(id, 0, 10, missing));
    QCOMPARE(missing, (QSet<int>{0, 2}));
}

void TestDataAPI::missingAnywhereIsMissing()
{
    TestModel model;
    const int id = addDataset(addPoints(4), DecimalType, TimeSlice, 3);
    const QSet<int> holes[] = {{0}, {2}, {}};
    for (int realization = 0; realization < 3; ++realization)
        QVERIFY(VORN_AddDataValues(id, realization, kSpan, sequence(4, 1.0), holes[realization], true, true));
    VORN_MissingData missing;
    QVERIFY(VORN_GetAllMissingRealizationLocations(id, 5, missing));
    QCOMPARE(missing.missingIds(), (QSet<int>{0, 2}));
}

void TestDataAPI::normalScoresTurnBackByRank()
{
    TestModel model;
    const int geography = addPoints(3);
    // The values of three objects whose mean is 0 and whose middle value is the median of the normal distribution.
    const int scores = addDataset(geography, DecimalType);
    QVERIFY(VORN_AddDataValues(scores, 0, kSpan, QVector<double>{0.5, 0.0, -0.5}, {}, true, true));
    QVERIFY(VORN_IsNormalScoreDataset(scores, 5));
    const VORN_DataContainer data(VORN_DataContainer::DoubleData, QVector<double>{30, 10, 20}, VORN_MissingData());
    VORN_DataContainer result;
    QVERIFY(VORN_GetRealizationValues(scores, 0, 5, data, result));
    QCOMPARE(result.value(0), 30.0);
    QCOMPARE(result.value(1), 20.0);
    QCOMPARE(result.value(2), 10.0);

    const int plain = addDataset(geography, DecimalType);
    QVERIFY(VORN_AddDataValues(plain, 0, kSpan, QVector<double>{3, 4, 5}, {}, true, true));
    QVERIFY(VORN_GetRealizationValues(plain, 0, 5, data, result));
    QCOMPARE(result.value(0), 3.0);
    QVariant isNormal;
    QVERIFY(VORN_GetDatasetAttribute(plain, QStringLiteral("Normal scores"), isNormal));
    QCOMPARE(isNormal, QVariant(0));
}

QTEST_GUILESS_MAIN(TestDataAPI)
#include "tst_DataAPI.moc"
