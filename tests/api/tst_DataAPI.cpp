// SPDX-License-Identifier: MIT
// The public dataset functions as hosts see them: ids in, values out, every road through the call
// frame.
#include <QtTest>
#include <limits>
#include "datainterface/DataAPI.h"
#include "datainterface/FrameAPI.h"
#include "datainterface/GeographyAPI.h"
#include "datainterface/MVectorData.h"
#include "datainterface/MVectorDataSource.h"
#include "datainterface/RasterAPI.h"
#include "datainterface/dataContainer.h"
#include "datainterface/datum.h"
#include "support/checks.h"
#include "support/model.h"
#include "support/support.h"

namespace {

const Interval kSpan{0, 10, true, false};

// The results that are stated for an id of nothing; outputs stay as they were.
template <class T> void checkTypedMisses(int id, const T &kept)
{
    QVector<T> values{kept};
    QSet<int> missing{3};
    QMap<Interval, T> series{{kSpan, kept}};
    const QVector<QPair<Interval, T>> pairs{{kSpan, kept}};
    QCOMPARE(
        answers({VORN_GetDataValues(id, 0, 5, values, missing),
                 VORN_GetTimeSliceData(id, 0, 5, values, missing),
                 VORN_GetTimeSeriesData(id, 0, 0, series), VORN_SetTimeSeriesData(id, 0, 0, series),
                 VORN_AddDataValues(id, 0, kSpan, values, {}, true, true),
                 VORN_AddDataValues(id, 0, 0U, pairs, true, true),
                 VORN_AddDataValue(id, 0, 0, kSpan, kept, true, true)}),
        "nnnnnnn");
    QCOMPARE(values, QVector<T>{kept});
    QCOMPARE(missing, QSet<int>{3});
    QCOMPARE(series.size(), 1);
}

void checkDatasetReads(int id)
{
    QVector<Interval> times{kSpan};
    QVector<double> numbers{1.5};
    QVector<datum> values{datum(1)};
    QList<datum> unique{datum(1)};
    QSet<int> missing{3};
    datum value(7);
    double number = 1.5;
    int whole = 7;
    char buffer[] = "kept";
    bool isCapped = true;
    const QByteArray found = answers({VORN_GetAllDatasetTimes(id, 0, times),
                                      VORN_GetDataIntervals(id, 0, 0, times),
                                      VORN_GetTimeSliceDataIntervals(id, 0, times),
                                      VORN_GetDataValues(id, 0, 5, values, missing),
                                      VORN_GetNumericValues(id, 0, 5, numbers, missing),
                                      VORN_GetObjectDataValues(id, 0, 0, times, values),
                                      VORN_GetDataValue(id, 0, 0, 5, value),
                                      VORN_GetDataValue(id, 0, 0, 5, number),
                                      VORN_GetDataValue(id, 0, 0, 5, whole),
                                      VORN_GetDataValue(id, 0, 0, 5, 4, buffer),
                                      VORN_GetUniqueDataCount(id, isCapped),
                                      VORN_GetUniqueDataValues(id, unique),
                                      VORN_GetMean(id, 0, 5, number),
                                      VORN_GetStddev(id, 0, 5, number),
                                      VORN_GetMax(id, 0, 5, number),
                                      VORN_GetMin(id, 0, 5, number),
                                      VORN_GetMax(id, 0, number),
                                      VORN_GetMin(id, 0, number),
                                      VORN_GetDataCount(id, 5),
                                      VORN_HasDataAtTime(id, 5),
                                      VORN_IsNormalScoreDataset(id, 5),
                                      VORN_IsVectorDataMissing(id, 0, 0, 5),
                                      VORN_GetMissingVectorIds(id, 0, 5, missing)});
    QCOMPARE(found, QByteArray(23, 'n'));
    QCOMPARE(
        QVector<int>({times.size(), values.size(), unique.size(), whole, int(value.integerValue)}),
        QVector<int>({1, 1, 1, 7, 7}));
    QCOMPARE(missing, QSet<int>{3});
    QCOMPARE(numbers << number, (QVector<double>{1.5, 1.5}));
    QVERIFY(isCapped);
    QCOMPARE(qstrcmp(buffer, "kept"), 0);
    VORN_DataContainer result(VORN_DataContainer::Int32Data, 2);
    QVERIFY(!VORN_GetRealizationValues(id, 0, 5, VORN_DataContainer(), result));
    QCOMPARE(result.count(), 2);
    VORN_MissingData nowhere;
    QCOMPARE(raisedText([&] { VORN_GetAllMissingRealizationLocations(id, 5, nowhere); }),
             QStringLiteral("Invalid dataset id"));
}

void checkDatasetDescriptions(int id)
{
    const QString key = QStringLiteral("Name");
    QVariant attribute(7);
    QString text = key;
    VORN_DataContainer values(VORN_DataContainer::DoubleData, 3);
    QCOMPARE(VORN_GetDatasetProperties(id).id, -1);
    QCOMPARE(VORN_MigrateDataset(id, 0, true), -1);
    QVERIFY(VORN_GetDatasetMetaData(id, key).isEmpty());
    QCOMPARE(
        answers({VORN_AddDataValues(id, 0, kSpan, values, true, true),
                 VORN_GetDatasetAttribute(id, key, attribute), VORN_SetDatasetAttribute(id, key, 7),
                 VORN_SetDatasetMetaData(id, key, key), VORN_GetLongDescription(id, text),
                 VORN_SetShortDescription(id, key), VORN_SetLongDescription(id, key),
                 VORN_AppendToLongDescription(id, key), VORN_RecalculateDataFrequencies(id),
                 VORN_SetMissingVectorId(id, 0, 0, kSpan)}),
        "nnnnnnnnnn");
    QCOMPARE(attribute, 7);
    QCOMPARE(text, key);
}

// Those that look for the geography alone.
void checkGeographyMisses(int dataset, int there)
{
    const int id = dataset >> 16;
    const QString name = QStringLiteral("n");
    QCOMPARE(VORN_GetDatasetByName(id, name), -1);
    QCOMPARE(VORN_NewVectorDataset(id, name, TimeSlice, DecimalType, 1, QString()), -1);
    QCOMPARE(raisedText([=] { VORN_RemoveDatasets({dataset}); }), QStringLiteral("gd"));
    QCOMPARE(VORN_GetUniqueDatasetName(id, name), name);
    QCOMPARE(VORN_SuggestUniqueDatasetName(id, name), name);
    QCOMPARE(VORN_GetGeographyProperties(id).id, -1);
    QVERIFY(id < 0 || !VORN_StartNewVectorGeography(QRectF(0, 0, 1, 1), 0, 1, id));
    const VORN_Object object = VORN_GetObject(id, 0, 5);
    QVector<Interval> times{kSpan};
    QPointF point(1, 2);
    QList<QVector<QPointF>> parts{{}};
    QRectF bounds(1, 2, 3, 4);
    const QRectF all(-9, -9, 99, 99);
    QVector<unsigned int> found{7};
    QVector<QVector<unsigned int>> rings(1);
    QVector<neighborDatum> near(1);
    QVector<QVector<neighborDatum>> neighbors(1);
    const QByteArray answered =
        answers({VORN_NewDatasetCreated(dataset),
                 VORN_NewDatasetsCreated({dataset}),
                 VORN_DatasetChanged(dataset),
                 VORN_DatasetsChanged({dataset}),
                 VORN_RemoveDataset(dataset),
                 VORN_GetGeography(id),
                 VORN_RemoveGeography(id),
                 VORN_StartNewVectorGeography(id),
                 VORN_GetObjectCount(id, 5),
                 VORN_ObjectExistsAtTime(id, 0, 5),
                 object.tree,
                 object.record,
                 VORN_GetObservationTimes(id, 0, times),
                 VORN_GetAllObjectTimes(id, times),
                 VORN_GetPointVertex(id, 0, 5, point),
                 VORN_GetLineVertices(id, 0, 5, parts),
                 VORN_GetObjectBounds(id, 0, 5, bounds),
                 VORN_RectQuery(id, all, 5, found),
                 VORN_MBRQuery(id, all, 5, found),
                 VORN_RectTimeQuery(id, all, 0, 9, found),
                 VORN_CircleQuery(id, QPointF(0, 0), 9, 5, found),
                 VORN_ObjectQuery(id, 0, there, 5, found),
                 VORN_ObjectQuery(there, 0, id, 5, found),
                 VORN_GetPolygonNeighborRings(id, 0, 5, 1, true, rings),
                 VORN_NearestNeighborQuery(id, QPointF(0, 0), 5, 1, near),
                 VORN_NearestNeighborObjectQuery(id, there, 5, 1, neighbors, false),
                 VORN_NearestNeighborObjectQuery(there, id, 5, 1, neighbors, false),
                 VORN_RangeObjectQuery(id, there, 5, 1, neighbors, false),
                 VORN_RangeObjectQuery(there, id, 5, 1, neighbors, false)});
    QCOMPARE(answered, QByteArray(29, 'n'));
    QCOMPARE(bounds, QRectF(1, 2, 3, 4));
    QCOMPARE(point, QPointF(1, 2));
    QCOMPARE(QVector<int>({times.size(), parts.size(), found.size(), rings.size(), near.size(),
                           neighbors.size()}),
             QVector<int>(6, 1));
}

int addDataset(int geographyId, DataType type, StorageType storage = TimeSlice,
               int realizations = 1)
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

template <class T>
void checkValues(int geography, DataType type, const QVector<T> &values, const datum &second)
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
    const auto told = [](const datum &value) {
        return QString("%1 %2 %3 %4")
            .arg(int(value.type))
            .arg(value.decimalValue)
            .arg(value.integerValue)
            .arg(value.stringValue);
    };
    QCOMPARE(told(one), told(second));
    QVERIFY(!VORN_GetDataValue(id, 0, 2, 0, one));
    QVERIFY(VORN_IsVectorDataMissing(id, 0, 2, 0));
    QVector<datum> wrapped;
    QVERIFY(VORN_GetDataValues(id, 0, 0, wrapped, missing));
    QCOMPARE(wrapped.size(), 3);
    QCOMPARE(wrapped[1].type, second.type);
    QList<datum> unique;
    QVERIFY(VORN_GetUniqueDataValues(id, unique));
    QCOMPARE(unique.size(), 2);
    QVERIFY(told(unique[0]) == told(second) || told(unique[1]) == told(second));
    QCOMPARE(VORN_GetDatasetProperties(id).dataType, static_cast<int>(type));
    QVERIFY(VORN_GetGeographyProperties(geography).datasetIds.contains(id));
}

} // namespace

class TestDataAPI : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void realizationsBeyondMemoryAreRefused()
    {
        TestModel model;
        const int geography = addPoints(1);
        const int grid =
            VORN_CreateNewRasterGeography(QStringLiteral("grid"), 1, 1, QRectF(0, 0, 1, 1),
                                          {0, 9, true, true}, TF_Integer, QString(), QString());
        constexpr int kMost = std::numeric_limits<int>::max();
        QCOMPARE(VORN_NewVectorDataset(geography, "v", TimeSlice, DecimalType, kMost, QString()),
                 -1);
        QCOMPARE(VORN_NewRasterDataset(grid, "r", RasterDecimalType, kMost, 32, QString()), -1);
        QVERIFY(VORN_NewVectorDataset(geography, "v", TimeSlice, DecimalType, 1, QString()) >= 0);
    }

    void idsOfNothingGiveTheStatedResult()
    {
        TestModel model;
        const int geography = addPoints(3);
        QVERIFY(geography >= 0);
        for (const int id : {(geography + 1) << 16, -1, (geography << 16) + 5}) {
            const InCase inId(id);
            checkTypedMisses(id, 1.5);
            checkTypedMisses(id, 7);
            checkTypedMisses(id, QStringLiteral("kept"));
            checkDatasetReads(id);
            checkDatasetDescriptions(id);
            if (id >> 16 != geography)
                checkGeographyMisses(id, geography);
        }
        QVERIFY(VORN_GetGeographyProperties(geography).datasetIds.isEmpty());
    }

    void geographyIdIsTheSignedUpperHalf()
    {
        QCOMPARE(VORN_GetGeographyId(-1), -1);
        QCOMPARE(VORN_GetGeographyId(0x00050003), 5);
        QCOMPARE(VORN_GetGeographyId(static_cast<int>(0x80000001U)), -32768);
        QCOMPARE(DataId(static_cast<int>(0x80000001U)).GeoId(), -32768);
    }

    void valuesOfEachTypeComeBack()
    {
        TestModel model;
        const int geography = addPoints(3);
        checkValues<double>(geography, DecimalType, {1.5, 2.5, 0}, datum(2.5));
        checkValues<int>(geography, IntegerType, {1, -2, 0}, datum(-2));
        checkValues<QString>(geography, StringType, {"a", QString::fromUtf8("größe"), ""},
                             datum(QString::fromUtf8("größe")));
    }

    void failedReadLeavesTheOutputs()
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

    void objectOutOfRangeIsAMiss()
    {
        TestModel model;
        const int geography = addPoints(3);
        for (const StorageType storage : {TimeSlice, TimeSeries}) {
            const int id = addDataset(geography, DecimalType, storage);
            QVERIFY(VORN_AddDataValue(id, 0, 2, kSpan, 1.5, true, true));
            for (const unsigned int object : {3U, 0x7FFFFFFFU, 0xFFFFFFFFU}) {
                const InCase inObject(object);
                datum value;
                QVector<Interval> intervals;
                QVector<datum> values;
                QMap<Interval, double> series{{kSpan, 1.0}};
                const QVector<QPair<Interval, double>> pairs{{kSpan, 1.0}};
                QCOMPARE(answers({VORN_GetDataValue(id, 0, object, 5, value),
                                  VORN_AddDataValue(id, 0, object, kSpan, 1.5, true, true),
                                  VORN_AddDataValues(id, 0, object, pairs, true, true),
                                  VORN_SetTimeSeriesData(id, 0, object, series),
                                  VORN_GetTimeSeriesData(id, 0, object, series),
                                  VORN_GetObjectDataValues(id, 0, object, intervals, values),
                                  VORN_GetDataIntervals(id, 0, static_cast<int>(object), intervals),
                                  VORN_IsVectorDataMissing(id, 0, object, 5),
                                  VORN_SetMissingVectorId(id, 0, object, kSpan)}),
                         "nnnnnnnnn");
            }
        }
        const auto create = [geography](int storage, DataType type, int realizations) {
            return VORN_NewVectorDataset(geography, QString(), static_cast<StorageType>(storage),
                                         type, realizations, QString());
        };
        QCOMPARE(create(2, DecimalType, 1), -1);
        QCOMPARE(create(TimeSlice, RasterDecimalType, 1), -1);
        QCOMPARE(create(TimeSlice, DecimalType, -1), -1);
    }

    void objectValuesSkipItsHoles()
    {
        TestModel model;
        const int id = addDataset(addPoints(2), DecimalType);
        for (const int start : {0, 10, 20})
            QVERIFY(VORN_AddDataValues(id, 0, {start, start + 10, true, false}, sequence(2, start),
                                       start == 10 ? QSet<int>{0} : QSet<int>(), true, true));
        QVector<Interval> intervals;
        QVector<datum> values;
        QVERIFY(VORN_GetObjectDataValues(id, 0, 0, intervals, values));
        QCOMPARE(values.size(), 2);
        QCOMPARE(values[1].decimalValue, 20.0);
        QCOMPARE(intervals[1], interval("[20, 30)"));
    }

    void longTextIsNotTerminated()
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

    void seriesComeBackByInterval()
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
        QVERIFY(!VORN_SetTimeSeriesData(id, 0, 1,
                                        QMap<Interval, double>{{kSpan, 1.0}})); // another type
        QVERIFY(VORN_AddDataValues(
            id, 0, 1U, QVector<QPair<Interval, int>>{{interval("[7, 8]"), 1}}, true, true));
        QVERIFY(VORN_GetTimeSeriesData(id, 0, 1, read));
        QCOMPARE(read.size(), 4);
        int value = 0;
        QVERIFY(VORN_GetDataValue(id, 0, 1, 9, value));
        QCOMPARE(value, 6);
    }

    void manyIdsAreAnnouncedByGeography()
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
        QCOMPARE(listener.calls,
                 (QStringList{"added " + textC + ',' + textA + " true", "added " + textB + " true",
                              "changed " + textA, "changed " + textB}));
        listener.calls.clear();
        listener.source = model.vectorData(first).GetDataSource();
        QCOMPARE(raisedText([&] {
                     VORN_RemoveDatasets({a, (second + 1) << 16});
                 }),
                 QStringLiteral("gd"));
        QCOMPARE(VORN_GetDatasetProperties(a).id, a); // nothing was removed
        QVERIFY(VORN_RemoveDatasets({a, c}));
        QCOMPARE(listener.calls, QStringList{"dying " + textA + " alive," + textC + " alive"});
        QCOMPARE(VORN_GetDatasetProperties(a).id, -1);
        QVERIFY(addDataset(first, DecimalType) > c); // ids are not used twice
    }

    void migratedDatasetIsACopy()
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
                QVERIFY(VORN_AddDataValue(id, realization, 1, kSpan, QString::number(realization),
                                          true, true));
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

    void missingIdsCountObjectsThatDoNotExist()
    {
        TestModel model;
        QVERIFY(VORN_StartNewVectorGeography(QRectF(0, 0, 3, 3), 0, 100, -1));
        for (int i = 0; i < 3; ++i) {
            const int chain = VORN_CreateNewObjectChain();
            QVERIFY(VORN_AddPointToChain(static_cast<unsigned int>(chain), QPointF(i, i),
                                         {0, i == 1 ? 40 : 100, true, true}));
        }
        const int geography =
            VORN_FinishVectorGeography(QStringLiteral("brief"), QString(), TF_Integer);
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

    void normalScoresTurnBackByRank()
    {
        TestModel model;
        const int geography = addPoints(3);
        // The values of three objects whose mean is 0 and whose middle value is the median of the
        // normal distribution.
        const int scores = addDataset(geography, DecimalType);
        QVERIFY(
            VORN_AddDataValues(scores, 0, kSpan, QVector<double>{0.5, 0.0, -0.5}, {}, true, true));
        QVERIFY(VORN_IsNormalScoreDataset(scores, 5));
        const VORN_DataContainer data(VORN_DataContainer::DoubleData, QVector<double>{30, 10, 20},
                                      VORN_MissingData());
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

    void classesIncludeTheirUpperLimits()
    {
        TestModel model;
        const double nan = std::numeric_limits<double>::quiet_NaN();
        const int geography = addPoints(9);
        const int id = addDataset(geography, DecimalType);
        const QVector<double> values{0, 1, 1.5, 2, 3, 3.5, -1, nan, 2};
        QVERIFY(VORN_AddDataValues(id, 0, kSpan, values, {8}, true, true));
        QVector<int> classes;
        QVERIFY(VORN_GetClassNumbers(id, 0, 5, {0, 1, 2, 3}, classes));
        QCOMPARE(classes, (QVector<int>{0, 0, 1, 1, 2, -1, -1, -1, -1}));
        QVector<double> many; // as many limits as are searched instead of counted
        for (int i = 0; i <= 60; ++i)
            many.append(i * 0.05);
        QVERIFY(VORN_GetClassNumbers(id, 0, 5, many, classes));
        for (int i = 0; i < values.size() - 1; ++i) {
            const InCase inCase(i);
            int expected = -1;
            for (int k = 0; k < 60 && expected < 0; ++k)
                expected = values[i] <= many[k + 1] && values[i] >= many[0] ? k : -1;
            QCOMPARE(classes[i], expected);
        }
        QVERIFY(VORN_GetClassNumbers(id, 0, 5, {1}, classes));
        QCOMPARE(classes, QVector<int>(9, -1));
        QVERIFY(!VORN_GetClassNumbers(addDataset(geography, StringType), 0, 5, {0, 1}, classes));
        QVERIFY(!VORN_GetClassNumbers(-1, 0, 5, {0, 1}, classes));
        QCOMPARE(classes.size(), 9);
    }
};
QTEST_GUILESS_MAIN(TestDataAPI)
#include "tst_DataAPI.moc"
