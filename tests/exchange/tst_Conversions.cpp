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
    void everyValueFollowsTheRule();
    void cancelLeavesNothing();
    void gridsAreImportedByCell();
    void otherDatasetsAreNotImported();

private:
    void convert(DataType from, DataType to, MVectorDataset::StorageType storage,
                 std::mt19937 &random);
    template <class T> void importCells(DataType cells, DataType to);
};

// Also imported back through a map that turns the objects round and leaves the last one out.
void TestConversions::everyValueFollowsTheRule()
{
    std::mt19937 random(walkSeed());
    for (const DataType from : {DecimalType, IntegerType, StringType})
        for (const DataType to : {DecimalType, IntegerType, StringType})
            for (const auto storage : {MVectorDataset::TimeSlice, MVectorDataset::TimeSeries})
                if (from != to)
                    convert(from, to, storage, random);
}

void TestConversions::convert(DataType from, DataType to, MVectorDataset::StorageType storage,
                              std::mt19937 &random)
{
    TestModel model;
    MVectorDataSource &source = *model.vectorData(addPoints(kObjects)).GetVectorDataSource();
    MVectorDataSource &other = *model.vectorData(addPoints(kObjects)).GetVectorDataSource();
    Values values;
    const int id = fill(source, from, storage, values, random);
    const int precision = static_cast<int>(random() % 4);
    const InCase inCase(QVector<int>{from, to, storage, precision});
    const int copy = source.ConvertDataset(id, "new", to, precision);
    QVector<int> turned;
    for (int object = 0; object + 1 < kObjects; ++object)
        turned.append(kObjects - 1 - object);
    const int imported = other.ImportDatasetFromDataSource(&source, copy, turned, true);
    QMap<MDatum, int> counts;
    for (int place = 0; place < values.size(); ++place) {
        const int object = place % kObjects;
        const int time = place / kObjects % kTimes.size();
        const int realization = place / kObjects / kTimes.size();
        const InCase inPlace(place);
        const MDatum expected = converted(values[place], to, precision);
        QCOMPARE(valueAt(source, copy, realization, time, object), expected);
        QCOMPARE(valueAt(other, imported, realization, time, kObjects - 1 - object),
                 object == 0 ? MDatum() : expected);
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

void TestConversions::gridsAreImportedByCell()
{
    for (const DataType to : {DecimalType, IntegerType, StringType}) {
        importCells<double>(RasterDecimalType, to);
        importCells<float>(RasterDecimalType, to);
        importCells<int>(RasterIntegerType, to);
        importCells<quint64>(RasterUnsignedType, to);
    }
}

// Two realizations, two times, a cell that is missing, one that an int cannot hold where T can, an
// object without a cell.
template <class T> void TestConversions::importCells(DataType cells, DataType to)
{
    TestModel model;
    const InCase inTypes(QVector<int>{cells, sizeof(T), to});
    const int grid = addGrid(2, 3);
    const int raster = VORN_NewRasterDataset(grid, "cells", cells, 2, int(8 * sizeof(T)), "");
    constexpr int kMissing = 2;
    const auto cellAt = [](int realization, int time, int cell) {
        if (cell == 4)
            return !std::is_integral_v<T> ? -1e12 : sizeof(T) == 8 ? 5e9 : 1e6;
        return realization * 100 + time * 10 + cell + (std::is_integral_v<T> ? 0 : 0.75);
    };
    for (int place = 0; place < 4; ++place) {
        QVector<T> values;
        for (int cell = 0; cell < 6; ++cell)
            values.append(static_cast<T>(cellAt(place / 2, place % 2, cell)));
        values[kMissing] = T(99);
        const Interval when = interval(place % 2 == 0 ? "[0, 10)" : "[10, 20]");
        QVERIFY(VORN_AddRasterValues(raster, place / 2, when, values, T(99), true, true));
    }
    MVectorDataSource &target = *model.vectorData(addPoints(4)).GetVectorDataSource();
    const MDataset *source =
        model.controller.GetGeoData().value(grid)->GetDataSource()->GetDataset(raster);
    const QVector<int> map{5, kMissing, 4, 6}; // the last one is no cell
    for (const auto storage : {MVectorDataset::TimeSlice, MVectorDataset::TimeSeries}) {
        const int id = target.NewVectorDataset("imported", to, storage, 2, QString());
        QVERIFY(target.GetVectorDataset(id)->ImportDataset(source, map));
        for (int place = 0; place < 16; ++place) {
            const int object = place % 4;
            const int time = place / 4 % 2;
            const MDatum found = target.GetVectorDataValue(
                id, place / 8, static_cast<unsigned>(object), 5 + 10 * time, false);
            QCOMPARE(found.isEmpty(), object % 2 == 1);
            if (found.isEmpty())
                continue;
            double expected = cellAt(place / 8, time, map[object]);
            if (to == IntegerType)
                expected = std::trunc(qBound(-2147483648.0, expected, 2147483647.0));
            if (std::is_same_v<T, float>) // to the digits that it has
                QCOMPARE(float(found.toDouble()), float(expected));
            else
                QCOMPARE(found.toDouble(), expected);
        }
        QVERIFY(target.GetLongDescription(id).startsWith(
            QLatin1String("Subsetted from dataset (\"cells\") on ")));
        QVERIFY(target.GetUniqueCount(id) > 1);
    }
}

void TestConversions::otherDatasetsAreNotImported()
{
    TestModel model;
    const int grid = addGrid(1, 1);
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
