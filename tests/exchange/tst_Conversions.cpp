// SPDX-License-Identifier: MIT
// Datasets in another type, and through a map of objects or cells: every value against the rule for
// one value.
#include <QProgressDialog>
#include <QTimer>
#include <QtTest>
#include <cmath>
#include <random>
#include "datainterface/DataAPI.h"
#include "datainterface/MRasterData.h"
#include "datainterface/MRasterDataSource.h"
#include "datainterface/MVectorData.h"
#include "datainterface/MVectorDataSource.h"
#include "datainterface/RasterAPI.h"
#include "support/checks.h"
#include "support/model.h"
#include "support/support.h"

namespace {

constexpr int kObjects = 101;
constexpr int kRealizations = 3;
const QList<TimeStamp> kTimes = stamps(QStringLiteral("[0, 10) [10, 20] [30, 40]"));

// Values of a type; a null text, an empty datum, is missing.
MDatum randomValue(DataType type, std::mt19937 &random)
{
    const int number = static_cast<int>(random() % 2000) - 1000;
    if (random() % 5 == 0)
        return MDatum();
    switch (type) {
    case DecimalType:
        return MDatum(number / 64.0);
    case IntegerType:
        return MDatum(number);
    default:
        return random() % 4 == 0 ? MDatum("no number") : MDatum(QString::number(number / 64.0));
    }
}

// The rule for one value, told plainly.
MDatum converted(const MDatum &value, DataType type, int precision)
{
    if (value.isEmpty())
        return value;
    const double number = QByteArray(value.charstr()) == "no number" ? 0.0 : value.toDouble();
    switch (type) {
    case DecimalType:
        return MDatum(number);
    case IntegerType:
        return MDatum(static_cast<int>(number));
    default:
        return value.type() == MDatum::Integer || precision == 0
                   ? MDatum(QString::number(static_cast<int>(number)))
                   : MDatum(QString::number(number, 'f', precision));
    }
}

using Values = QVector<MDatum>; // by realization, time and object

int placeOf(int realization, int time, int object)
{
    return (realization * kTimes.size() + time) * kObjects + object;
}

int fill(MVectorDataSource &source, DataType type, MVectorDataset::StorageType storage,
         Values &values, std::mt19937 &random)
{
    const int id = source.NewVectorDataset("values", type, storage, kRealizations, QString("/a"));
    values.resize(kRealizations * kTimes.size() * kObjects);
    for (int realization = 0; realization < kRealizations; ++realization)
        for (int time = 0; time < kTimes.size(); ++time)
            for (int object = 0; object < kObjects; ++object) {
                MDatum &value = values[placeOf(realization, time, object)];
                value = randomValue(type, random);
                if (!value.isEmpty())
                    source.AddDataValue(id, realization, static_cast<unsigned int>(object),
                                        kTimes[time], value, true, true);
            }
    return id;
}

MDatum valueAt(MVectorDataSource &source, int id, int realization, int time, int object)
{
    return source.GetVectorDataValue(id, realization, static_cast<unsigned int>(object),
                                     kTimes[time].timeInInterval(), false);
}

} // namespace

class TestConversions : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void everyValueFollowsTheRule_data();
    void everyValueFollowsTheRule();
    void cancelLeavesNothing();
    void gridsAreImportedByCell_data();
    void gridsAreImportedByCell();
    void otherDatasetsAreNotImported();
};

void TestConversions::everyValueFollowsTheRule_data()
{
    QTest::addColumn<int>("from");
    QTest::addColumn<int>("to");
    QTest::addColumn<int>("storage");
    const QMap<int, const char *> names{
        {DecimalType, "decimal"}, {IntegerType, "integer"}, {StringType, "text"}};
    for (int from : names.keys())
        for (int to : names.keys())
            for (int storage : {TimeSlice, TimeSeries})
                if (from != to)
                    QTest::addRow("%s to %s, %s", names[from], names[to],
                                  storage == TimeSlice ? "slices" : "series")
                        << from << to << storage;
}

// Also imported back through a map that turns the objects round and leaves the last one out.
void TestConversions::everyValueFollowsTheRule()
{
    QFETCH(int, from);
    QFETCH(int, to);
    QFETCH(int, storage);
    const unsigned seed = walkSeed();
    std::mt19937 random(seed);
    TestModel model;
    MVectorDataSource &source = *model.vectorData(addPoints(kObjects)).GetVectorDataSource();
    MVectorDataSource &other = *model.vectorData(addPoints(kObjects)).GetVectorDataSource();
    Values values;
    const int id = fill(source, static_cast<DataType>(from),
                        static_cast<MVectorDataset::StorageType>(storage), values, random);
    const int precision = static_cast<int>(random() % 4);
    const int copy = source.ConvertDataset(id, "new", static_cast<DataType>(to), precision);
    QVector<int> turned;
    for (int object = 0; object + 1 < kObjects; ++object)
        turned.append(kObjects - 1 - object);
    const int imported = other.ImportDatasetFromDataSource(&source, copy, turned, true);
    QMap<MDatum, int> counts;
    for (int realization = 0; realization < kRealizations; ++realization)
        for (int time = 0; time < kTimes.size(); ++time)
            for (int object = 0; object < kObjects; ++object) {
                const MDatum expected = converted(values[placeOf(realization, time, object)],
                                                  static_cast<DataType>(to), precision);
                const MDatum found = valueAt(source, copy, realization, time, object);
                const MDatum there =
                    valueAt(other, imported, realization, time, kObjects - 1 - object);
                const QString where =
                    QStringLiteral("seed %1, precision %2, place %3 %4 %5: %6, not %7")
                        .arg(seed)
                        .arg(precision)
                        .arg(realization)
                        .arg(time)
                        .arg(object)
                        .arg(found.toDouble())
                        .arg(expected.toDouble());
                QVERIFY2(found == expected, qPrintable(where));
                QVERIFY2(there == (object == 0 ? MDatum() : expected), qPrintable(where));
                if (!expected.isEmpty())
                    ++counts[expected];
            }
    QCOMPARE(source.GetDataFrequencies(copy), counts);
}

void TestConversions::cancelLeavesNothing()
{
    TestModel model;
    MVectorDataSource &source = *model.vectorData(addPoints(kObjects)).GetVectorDataSource();
    std::mt19937 random(walkSeed(1));
    Values values;
    Listener listener;
    source.AddListener(&listener);
    for (const auto storage : {MVectorDataset::TimeSlice, MVectorDataset::TimeSeries}) {
        const int id = fill(source, StringType, storage, values, random);
        for (int reports : {1, 3}) {
            const InCase inReports(reports);
            int left = reports; // each report delivers events once
            QTimer timer;
            connect(&timer, &QTimer::timeout, &timer, [&left] {
                if (--left == 0 && progressBar())
                    progressBar()->cancel();
            });
            timer.start(0);
            QCOMPARE(source.ConvertDataset(id, "new", DecimalType, 0), -1);
            timer.stop();
            QVERIFY(!progressBar());
            QCOMPARE(source.GetDatasetIds().size(), storage == MVectorDataset::TimeSlice ? 1 : 2);
        }
        QVERIFY(source.ConvertDataset(id, "new", DecimalType, 0)
                > 0); // the next one is not cancelled
        source.RemoveDataset(source.GetDatasetIds().last());
    }
    QCOMPARE(listener.calls.filter("added").size(), 2);
}

void TestConversions::gridsAreImportedByCell_data()
{
    QTest::addColumn<int>("cells");
    QTest::addColumn<int>("bits");
    QTest::addColumn<int>("to");
    for (int to : {DecimalType, IntegerType, StringType}) {
        QTest::addRow("doubles to %d", to) << int(RasterDecimalType) << 64 << to;
        QTest::addRow("floats to %d", to) << int(RasterDecimalType) << 32 << to;
        QTest::addRow("integers to %d", to) << int(RasterIntegerType) << 32 << to;
        QTest::addRow("unsigned of 64 bits to %d", to) << int(RasterUnsignedType) << 64 << to;
    }
}

// Two realizations, two times, a cell that is missing, one that an int cannot hold, an object
// without a cell.
void TestConversions::gridsAreImportedByCell()
{
    QFETCH(int, cells);
    QFETCH(int, bits);
    QFETCH(int, to);
    TestModel model;
    const int grid = VORN_CreateNewRasterGeography("grid", 2, 3, QRectF(0, 0, 3, 2),
                                                   interval("[0, 100]"), TF_Integer, "", "");
    const int raster =
        VORN_NewRasterDataset(grid, "cells", static_cast<DataType>(cells), 2, bits, "");
    const bool isWhole = cells != RasterDecimalType;
    constexpr int kMissing = 2;
    constexpr int kFlag = 99;
    const auto cellAt = [&](int realization, int time, int cell) {
        if (cell == 4) // beyond an int where the cells can hold it
            return isWhole ? (bits == 64 ? 5e9 : 1e6) : -1e12;
        return realization * 100 + time * 10 + cell + (isWhole ? 0 : 0.75);
    };
    const auto add = [&](int realization, int time, auto zero) {
        using T = decltype(zero);
        QVector<T> values;
        for (int cell = 0; cell < 6; ++cell)
            values.append(
                static_cast<T>(cell == kMissing ? kFlag : cellAt(realization, time, cell)));
        const Interval when = interval(time == 0 ? "[0, 10)" : "[10, 20]");
        return VORN_AddRasterValues(raster, realization, when, values, T(kFlag), true, true);
    };
    for (int realization = 0; realization < 2; ++realization)
        for (int time = 0; time < 2; ++time)
            if (isWhole)
                QVERIFY(bits == 64 ? add(realization, time, quint64())
                                   : add(realization, time, int()));
            else
                QVERIFY(bits == 64 ? add(realization, time, double())
                                   : add(realization, time, float()));
    MVectorDataSource &target = *model.vectorData(addPoints(4)).GetVectorDataSource();
    const MDataset *source =
        model.controller.GetGeoData().value(grid)->GetDataSource()->GetDataset(raster);
    const QVector<int> map{5, kMissing, 4, 6}; // the last one is no cell
    for (const auto storage : {MVectorDataset::TimeSlice, MVectorDataset::TimeSeries}) {
        const int id =
            target.NewVectorDataset("imported", static_cast<DataType>(to), storage, 2, QString());
        QVERIFY(target.GetVectorDataset(id)->ImportDataset(source, map));
        for (int realization = 0; realization < 2; ++realization)
            for (int time = 0; time < 2; ++time)
                for (unsigned int object = 0; object < 4; ++object) {
                    const MDatum found =
                        target.GetVectorDataValue(id, realization, object, 5 + 10 * time, false);
                    if (object % 2 == 1) {
                        QVERIFY(found.isEmpty());
                        continue;
                    }
                    const double cell = cellAt(realization, time, map[static_cast<int>(object)]);
                    const double expected =
                        to != IntegerType ? cell
                                          : std::trunc(qBound(-2147483648.0, cell, 2147483647.0));
                    const double tolerance = bits == 32 && !isWhole ? std::abs(cell) * 1e-7 : 0;
                    QVERIFY2(std::abs(found.toDouble() - expected)
                                 <= (to == IntegerType ? 0 : tolerance),
                             qPrintable(
                                 QStringLiteral("%1, not %2").arg(found.toDouble()).arg(expected)));
                }
        QVERIFY(target.GetLongDescription(id).startsWith(
            QLatin1String("Subsetted from dataset (\"cells\") on ")));
        QVERIFY(target.GetUniqueCount(id) > 1);
    }
}

void TestConversions::otherDatasetsAreNotImported()
{
    TestModel model;
    const int grid = VORN_CreateNewRasterGeography("grid", 1, 1, QRectF(0, 0, 1, 1),
                                                   interval("[0, 1]"), TF_Integer, "", "");
    const int raster = VORN_NewRasterDataset(grid, "cells", RasterDecimalType, 3, 64, "");
    MDataSource *cells = model.controller.GetGeoData().value(grid)->GetDataSource();
    MVectorDataSource &target = *model.vectorData(addPoints(2)).GetVectorDataSource();
    const int id =
        target.NewVectorDataset("new", DecimalType, MVectorDataset::TimeSlice, 1, QString());
    const auto import = [&] { target.ImportDatasetFromDataSource(cells, raster, {0, 0}, true); };
    QCOMPARE(raisedText(import), QStringLiteral("bad dataset type"));
    QCOMPARE(raisedText([&] { target.GetVectorDataset(id)->ImportDataset(nullptr, {}); }),
             QStringLiteral("Invalid data type"));
    QCOMPARE(raisedText([&] {
                 target.GetVectorDataset(id)->ConvertDataset(target.GetVectorDataset(id), 0);
             }),
             QStringLiteral("Invalid data type")); // of the same type
    VORN_AddRasterValues(raster, 2, interval("[0, 1]"), QVector<double>{1}, 0.0, true, true);
    QVERIFY(!target.GetVectorDataset(id)->ImportDataset(cells->GetDataset(raster),
                                                        {0, 0})); // realization 2
}

QTEST_MAIN(TestConversions)
#include "tst_Conversions.moc"
