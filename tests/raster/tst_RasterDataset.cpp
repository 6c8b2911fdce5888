// SPDX-License-Identifier: MIT
#include <cmath>
#include "cells/cellForms.h"
#include "datainterface/DataAPI.h"
#include "datainterface/DataBlocks.h"
#include "datainterface/DatasetProps.h"
#include "datainterface/MRasterData.h"
#include "datainterface/MRasterDataSource.h"
#include "datainterface/ProjectAPI.h"
#include "datainterface/RasterAPI.h"
#include "datainterface/dataContainer.h"
#include "support/checks.h"
#include "support/model.h"
#include "support/streamed.h"
#include "support/support.h"

using namespace datainterface;

namespace {

int addGrid(int rows, int columns)
{
    return VORN_CreateNewRasterGeography(
        "grid", static_cast<unsigned int>(rows), static_cast<unsigned int>(columns),
        QRectF(0, 0, columns, rows), interval("[0, 100]"), TF_Integer, "made", "none");
}

MRasterDataset &rasterOf(TestModel &model, int id)
{
    return *dynamic_cast<MRasterDataSource &>(
                *model.controller.GetGeoData().value(id >> 16)->GetDataSource())
                .GetRasterDataset(id);
}

MRasterBand filled(int value)
{
    return MRasterBand(3, 2, RasterIntegerType, 32, QVector<int>(6, value).constData(), {});
}

/// What stands when, as "[0, 10) 1 [10, 20] 2".
QString grids(const MRasterDataset &dataset)
{
    QStringList parts;
    for (const TimeStamp &stamp : dataset.GetRasterIntervals(0)) {
        qint64 value = -1;
        dataset.GetValue(0, 1, 1, stamp.timeInInterval(), value);
        parts.append(text(stamp) + ' ' + QString::number(value));
    }
    return parts.join(' ');
}

} // namespace

class TestRasterDataset : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void intervalsAreCutOrFilled();
    void bandsThatDoNotFitChangeNothing();
    void everyFormGoesAllTheWay();
    void flagsHoldForEveryReadingOfTheWidth();
    void valuesAreCountedAndSummed();
    void notANumberIsOneKey();
    void signedClassesAscend();
    void setValueCountsTheNewValue();
    void staticDatasetsKeepTheirFirstGrid();
    void containersBorrowAndReturn();
    void containersFillTheirMissingCells();
    void unsupportedStatisticsRaise();
    void recordsOfOtherTimesGiveWay();
    void unsignedCellsStayUnsigned();
    void projectsComeBackByteForByte();
    void shortStreamsAreRefused();
    void oldFrequenciesAndFlagsAreRead();
    void datasetsMigrate();
};

void TestRasterDataset::intervalsAreCutOrFilled()
{
    TestModel model;
    const int geography = addGrid(2, 3);
    const auto merged = [&](const char *present, const char *added, bool overwrite) {
        const int id = VORN_NewRasterDataset(geography, "d", RasterIntegerType, 1, 32, "/a");
        MRasterDataset &dataset = rasterOf(model, id);
        for (const TimeStamp &when : stamps(present))
            dataset.AddRasterValues(0, when, filled(1), true, false);
        const bool isChanged = dataset.AddRasterValues(0, stamp(added), filled(2), overwrite, true);
        const QString result = grids(dataset);
        // The pieces are independent.
        dataset.SetValue(0, qint64(9), 1, 1, dataset.GetRasterIntervals(0).first());
        const int changed = grids(dataset).count('9') - result.count('9');
        return isChanged == result.contains('2') && changed == 1 ? result : QString("not told");
    };
    QCOMPARE(merged("[0, 30]", "[10, 20]", true), QString("[0, 10) 1 [10, 20] 2 (20, 30] 1"));
    QCOMPARE(merged("[0, 15]", "(10, 20]", true), QString("[0, 10] 1 (10, 20] 2"));
    QCOMPARE(merged("[12, 15]", "[10, 20]", true), QString("[10, 20] 2"));
    QCOMPARE(merged("[0, 5] [20, 30]", "[3, 25]", true), QString("[0, 3) 1 [3, 25] 2 (25, 30] 1"));
    QCOMPARE(merged("[0, 15]", "[10, 20]", false), QString("[0, 15] 1 (15, 20] 2"));
    QCOMPARE(merged("[0, 5] [8, 9]", "[0, 20]", false),
             QString("[0, 5] 1 (5, 8) 2 [8, 9] 1 (9, 20] 2"));
    QCOMPARE(merged("[0, 30]", "[10, 20]", false), QString("[0, 30] 1"));
}

void TestRasterDataset::bandsThatDoNotFitChangeNothing()
{
    TestModel model;
    const int geography = addGrid(2, 3);
    const int id = VORN_NewRasterDataset(geography, "d", RasterIntegerType, 1, 32, "/a");
    MRasterDataset &dataset = rasterOf(model, id);
    QVERIFY(!dataset.AddRasterValues(0, stamp("[0, 5]"), MRasterBand(2, 3, RasterIntegerType, 32),
                                     true, true));
    QVERIFY(!dataset.AddRasterValues(0, stamp("[0, 5]"), MRasterBand(3, 2, RasterIntegerType, 16),
                                     true, true));
    QVERIFY(!dataset.AddRasterValues(0, stamp("[0, 5]"), MRasterBand(3, 2, RasterDecimalType, 32),
                                     true, true));
    QVERIFY(!dataset.AddRasterValues(1, stamp("[0, 5]"), filled(1), true, true));
    QVERIFY(!dataset.AddRasterValues(0, TimeStamp(5, 0, true, true), filled(1), true, true));
    QVERIFY(dataset.GetRasterIntervals(0).isEmpty());
    QVERIFY(
        !VORN_AddRasterValues(id, 0, interval("[0, 5]"), QVector<float>(6, 1), -1.0f, true, true));
    QVERIFY(!VORN_AddRasterValues(id, 0, interval("[0, 5]"), QVector<int>(5, 1), -1, true, true));
    QCOMPARE(VORN_NewRasterDataset(geography, "x", RasterDecimalType, 1, 8, "/a"), -1);
    QCOMPARE(VORN_NewRasterDataset(geography, "x", RasterCellType, 1, 8, "/a"), -1);
    QCOMPARE(VORN_NewRasterDataset(geography, "x", DecimalType, 1, 64, "/a"), -1);
    QCOMPARE(VORN_NewRasterDataset(geography, "x", RasterIntegerType, 0, 8, "/a"), -1);
    QCOMPARE(VORN_NewRasterDataset(geography + 1, "x", RasterIntegerType, 1, 8, "/a"), -1);
    QCOMPARE(addGrid(0, 5), -1);
    QCOMPARE(addGrid(65536, 65536), -1);
    QVERIFY(raisedText([&] { dataset.CheckInRealization(3, 0); }) == "Invalid realization index");
}

void TestRasterDataset::flagsHoldForEveryReadingOfTheWidth()
{
    TestModel model;
    const int id = VORN_NewRasterDataset(addGrid(1, 2), "d", RasterIntegerType, 1, 32, "");
    QVERIFY(VORN_AddRasterValues(id, 0, interval("[0, 9]"), QVector<int>{-1, 0}, -1, true, true));
    quint64 bits = 7;
    QVERIFY(!VORN_GetRasterValue(id, 0, 0, 0, 5, bits)); // the pattern of -1
    QCOMPARE(bits, quint64(7));
    QVERIFY(VORN_GetRasterValue(id, 0, 1, 0, 5, bits));
    QCOMPARE(bits, quint64(0));
}

// Values in, then out through containers, counts, statistics and a project.
void TestRasterDataset::everyFormGoesAllTheWay()
{
    TestModel model;
    const int geography = addGrid(2, 3);
    QVector<int> ids;
    const auto fill = [&](auto form, DataType type) {
        using T = CellOf<decltype(form)>;
        const int id =
            VORN_NewRasterDataset(geography, "d", type, 1, static_cast<int>(8 * sizeof(T)), "/a");
        QVERIFY(id >= 0);
        QVector<T> cells;
        for (const int value : {1, 1, 2, 3, 100, 5})
            cells.append(T(static_cast<float>(value)));
        const MRasterBand band(3, 2, type, static_cast<int>(8 * sizeof(T)), cells.constData(),
                               {0xFF010203u});
        MRasterDataset &dataset = rasterOf(model, id);
        QVERIFY(dataset.AddRasterValues(0, stamp("[3, 7]"), band, true, false));
        dataset.SetMissingFlag(MissingFlag(cells.at(4)));
        QVERIFY(dataset.RecalculateFrequencies());
        ids.append(id);
    };
    fill(CellForm<0x100, 16, half>{}, RasterDecimalType);
    fill(CellForm<0x100, 32, float>{}, RasterDecimalType);
    fill(CellForm<0x100, 64, double>{}, RasterDecimalType);
    fill(CellForm<0x200, 8, qint8>{}, RasterIntegerType);
    fill(CellForm<0x200, 16, qint16>{}, RasterIntegerType);
    fill(CellForm<0x200, 32, qint32>{}, RasterIntegerType);
    fill(CellForm<0x200, 64, qint64>{}, RasterIntegerType);
    fill(CellForm<0x400, 8, quint8>{}, RasterUnsignedType);
    fill(CellForm<0x400, 16, quint16>{}, RasterUnsignedType);
    fill(CellForm<0x400, 32, quint32>{}, RasterUnsignedType);
    fill(CellForm<0x400, 64, quint64>{}, RasterUnsignedType);
    QVERIFY(VORN_SaveProject(model.path("all.prj")));
    VORN_UnloadProject();
    QVERIFY(VORN_LoadProject(model.path("all.prj")));
    for (const int id : qAsConst(ids)) {
        MRasterDataset &dataset = rasterOf(model, id);
        const QByteArray what = QByteArray::number(dataset.GetDataType(), 16) + ' '
                                + QByteArray::number(dataset.GetRasterBitDepth());
        double value = 0.0;
        QVERIFY2(VORN_GetMean(id, 0, 5, value), what.constData());
        QCOMPARE(value, 12.0 / 5.0);
        QVERIFY(VORN_GetMin(id, 0, 5, value));
        QCOMPARE(value, 1.0);
        QVERIFY(VORN_GetMax(id, 0, value));
        QCOMPARE(value, 5.0);
        QVERIFY(VORN_GetStddev(id, 0, 5, value));
        QVERIFY2(std::fabs(value - std::sqrt(40.0 / 5 - 2.4 * 2.4)) < 1e-12, what.constData());
        QCOMPARE(dataset.GetDataFrequencies().values(), QList<int>({2, 1, 1, 1}));
        const MDatum one = dataset.GetDataType() == RasterDecimalType ? MDatum(1.0) : MDatum(1);
        QCOMPARE(dataset.GetDatumFrequency(one), 2);
        QCOMPARE(dataset.GetDataCount(0, 5), 5);
        QCOMPARE(dataset.GetDataCount(0, 8), 0);
        QCOMPARE(dataset.GetIntervalBreaks(0, 2, MDataset::Quantiles, false).last(), 5.0);
        QCOMPARE(answers({dataset.IsValid(), dataset.IsPixelMissing(0, 1, 1, 5),
                          dataset.IsPixelMissing(0, 0, 0, 5)}),
                 "yyn");
        const VORN_ConstDataContainer view(id, 5, 0, false);
        QCOMPARE(view.count(), 6);
        QCOMPARE(view.value(3), 3.0);
        QCOMPARE(view.validCount(), 5);
        QVERIFY(view.isMissing(4));
        QCOMPARE(view.getColorTable(), QVector<unsigned int>({0xFF010203u}));
        datum found;
        QVERIFY(VORN_GetRasterValue(id, 0, 2, 1, 5, found));
        QCOMPARE(found.type == 0 ? found.decimalValue : static_cast<double>(found.integerValue),
                 5.0);
        QCOMPARE(answers({VORN_GetRasterValue(id, 0, 1, 1, 5, found),
                          VORN_GetRasterValue(id, 0, 3, 1, 5, found)}),
                 "nn");
        QSet<int> missing;
        QVERIFY(VORN_GetMissingPixels(id, 0, 5, missing));
        QCOMPARE(missing, QSet<int>({4}));
    }
}

void TestRasterDataset::valuesAreCountedAndSummed()
{
    TestModel model;
    const int id = VORN_NewRasterDataset(addGrid(30, 7), "d", RasterDecimalType, 1, 32, "/a");
    QVector<float> cells;
    double sum = 0.0;
    for (int i = 0; i < 210; ++i) {
        cells.append(static_cast<float>(i % 13) - 4.5f);
        sum += static_cast<double>(cells.last());
    }
    cells[17] = std::nanf("");
    cells[100] = HUGE_VALF;
    sum -= (17 % 13 - 4.5) + (100 % 13 - 4.5);
    QVERIFY(VORN_AddRasterValues(id, 0, interval("[0, 1]"), cells, -9999.0f, true, true));
    QVERIFY(!rasterOf(model, id).HasMissing(0));
    double mean = 0.0;
    QVERIFY(VORN_GetMean(id, 0, 0, mean));
    QVERIFY(std::fabs(mean - sum / 208) < 1e-13);
    QVERIFY(!VORN_GetMean(id, 0, 2, mean));
    // The flag is set after the count: its value stands in the table until the next one.
    cells[3] = -9999.0f;
    QVERIFY(VORN_AddRasterValues(id, 0, interval("[5, 6]"), cells, -8888.0f, true, true));
    rasterOf(model, id).SetMissingFlag(MissingFlag(-4.5f));
    QVERIFY(rasterOf(model, id).HasMissing(0));
    QVERIFY(VORN_RecalculateDataFrequencies(id));
    QVERIFY(!rasterOf(model, id).HasMissing(0));
}

void TestRasterDataset::notANumberIsOneKey()
{
    TestModel model;
    const int id = VORN_NewRasterDataset(addGrid(1, 6), "d", RasterDecimalType, 1, 32, "/a");
    const float nan = std::nanf("");
    QVERIFY(VORN_AddRasterValues(id, 0, interval("[0, 1]"),
                                 QVector<float>({nan, 2, -nan, 0.0f, -0.0f, 2}), 9.0f, true, true));
    QCOMPARE(*rasterOf(model, id).GetFloatFrequencies(), (QMap<float, int>{{0.0f, 2}, {2.0f, 2}}));
    QCOMPARE(rasterOf(model, id).GetDataFrequencies().values(), QList<int>({2, 2, 2}));
    QCOMPARE(rasterOf(model, id).GetIntervalBreaks(0, 2, MDataset::Jenks, false),
             QList<double>({0, 2}));
}

void TestRasterDataset::signedClassesAscend()
{
    TestModel model;
    const int id = VORN_NewRasterDataset(addGrid(1, 4), "d", RasterIntegerType, 1, 32, "/a");
    QVERIFY(VORN_AddRasterValues(id, 0, interval("[0, 1]"), QVector<int>({5, -3, 5, -9}), 99, true,
                                 true));
    MRasterDataset &dataset = rasterOf(model, id);
    QCOMPARE(dataset.GetIntervalBreaks(0, 2, MDataset::EqualIntervals, false),
             QList<double>({-9, 5}));
    QCOMPARE(dataset.GetDatumFrequency(MDatum(-3)), 1);
    QCOMPARE(dataset.GetDatumFrequency(MDatum(qint64(4294967293))), 0);
    QVERIFY(dataset.GetInt32Frequencies()->contains(0xFFFFFFFDu));
}

void TestRasterDataset::setValueCountsTheNewValue()
{
    TestModel model;
    const int id = VORN_NewRasterDataset(addGrid(2, 3), "d", RasterIntegerType, 1, 32, "/a");
    QVERIFY(VORN_AddRasterValues(id, 0, interval("[0, 5]"), QVector<int>(6, 1), -1, true, true));
    double mean = 0.0;
    QVERIFY(VORN_GetMean(id, 0, 3, mean));
    QVERIFY(VORN_SetRasterValue(id, 0, 2, 1, interval("[0, 5]"), qint64(7)));
    QVERIFY(!VORN_SetRasterValue(id, 0, 2, 1, interval("[0, 5]"), 7.0));
    QVERIFY(!VORN_SetRasterValue(id, 0, 2, 2, interval("[0, 5]"), qint64(7)));
    QVERIFY(!VORN_SetRasterValue(id, 0, 2, 1, interval("[8, 9]"), qint64(7)));
    QCOMPARE(raisedText([&] { VORN_SetRasterValue(id, 0, 2, 1, interval("[0, 4]"), qint64(7)); }),
             QStringLiteral("Time stamp mismatch"));
    QCOMPARE(rasterOf(model, id).GetDatumFrequency(MDatum(7)), 1);
    QVERIFY(VORN_GetMean(id, 0, 3, mean));
    QCOMPARE(mean, 2.0);
    qint64 value = 0;
    QVERIFY(VORN_GetRasterValue(id, 0, 2, 1, 4, value));
    QCOMPARE(value, qint64(7));
    QCOMPARE(raisedText([&] { rasterOf(model, id).GetValue(0, 0, true, 0); }),
             QStringLiteral("Raster interpolation not yet implemented"));
}

void TestRasterDataset::staticDatasetsKeepTheirFirstGrid()
{
    TestModel model;
    const int id = VORN_NewRasterDataset(addGrid(2, 3), "d", RasterIntegerType, 1, 32, "/a");
    MRasterDataset &dataset = rasterOf(model, id);
    dataset.AddRasterValues(0, stamp("[5, 9]"), filled(1), true, true);
    dataset.AddRasterValues(0, stamp("[10, 19]"), filled(2), true, true);
    dataset.SetStatic(true);
    QCOMPARE(grids(dataset), QStringLiteral("[0, 0] 1").replace("[0, 0]", text(TimeStamp(0))));
    qint64 value = 0;
    QVERIFY(dataset.GetValue(0, 0, 0, 12345, value));
    QCOMPARE(value, qint64(1));
    QCOMPARE(dataset.UniqueValueCount(nullptr), 1);
    QVERIFY(dataset.AddRasterValues(0, stamp("[50, 60]"), filled(3), true, true));
    QVERIFY(dataset.GetValue(0, 0, 0, 7, value));
    QCOMPARE(value, qint64(3));
}

void TestRasterDataset::containersBorrowAndReturn()
{
    TestModel model;
    const int id = VORN_NewRasterDataset(addGrid(2, 3), "d", RasterDecimalType, 1, 64, "/a");
    QVERIFY(VORN_AddRasterValues(id, 0, interval("[0, 5]"), QVector<double>({1, 2, 3, 4, 5, 6}),
                                 4.0, true, true));
    const double *cells = nullptr;
    MissingFlag flag;
    QVERIFY(!VORN_GetRasterData(id, 0, 3, cells, flag)); // nobody has it checked out
    {
        const VORN_ConstDataContainer view(id, 3, 0, false);
        QCOMPARE(int(view.type()), int(VORN_DataContainer::DoubleCells));
        QVERIFY(VORN_GetRasterData(id, 0, 3, cells, flag));
        QCOMPARE(cells[5], 6.0);
        const quint64 *other = nullptr;
        QVERIFY(!VORN_GetRasterData(id, 0, 3, other, flag));
        const VORN_DataContainer copy(view);
        QCOMPARE(int(copy.type()), int(VORN_DataContainer::DoubleData));
        QCOMPARE(copy.value(5), 6.0);
        QVERIFY(copy.isMissing(3));
        QVector<int> order;
        view.getSortedIndices(order);
        QCOMPARE(order, QVector<int>({0, 1, 2, 4, 5}));
        // The grid goes while the view looks at it.
        QVERIFY(VORN_AddRasterValues(id, 0, interval("[0, 5]"), QVector<double>(6, 0.0), 4.0, true,
                                     true));
        QCOMPARE(view.value(5), 6.0);
    }
    QVERIFY(!VORN_GetRasterData(id, 0, 3, cells, flag));
    const VORN_ConstDataContainer nothing(id, 77, 0, false);
    QVERIFY(nothing.isMissing(0));
    QCOMPARE(nothing.validCount(), 0);
    QCOMPARE(VORN_DataContainer(nothing).count(), 6);
    QCOMPARE(raisedText([&] { VORN_ConstDataContainer(id, 3, 0, true); }),
             QStringLiteral("!(interp and rds)"));
}

void TestRasterDataset::containersFillTheirMissingCells()
{
    TestModel model;
    const int geography = addGrid(1, 3);
    const int id = VORN_NewRasterDataset(geography, "d", RasterIntegerType, 1, 16, "/a");
    VORN_MissingData missing(MissingData::Raster, 3);
    missing.setMissing(1);
    VORN_DataContainer values(VORN_DataContainer::Int16Data, QVector<short>({4, 5, 6}), missing);
    QVERIFY(VORN_AddDataValues(id, 0, interval("[0, 5]"), values, true, true));
    QCOMPARE(int(rasterOf(model, id).GetMissingFlag().type), int(MissingFlag::Int16));
    QCOMPARE(
        answers({VORN_IsRasterDataMissing(id, 1, 0, 2), VORN_IsRasterDataMissing(id, 0, 0, 2)}),
        "yn");
    QVERIFY(VORN_IsRasterDataMissing(id, 0, 0, 9));
    QCOMPARE(VORN_GetDataCount(id, 2), 2u);
    VORN_DataContainer wide(VORN_DataContainer::Int32Data, 3);
    QVERIFY(!VORN_AddDataValues(id, 0, interval("[6, 7]"), wide, true, true));
    VORN_DataContainer halves(VORN_DataContainer::HalfData, QVector<unsigned short>({1, 2, 3}),
                              missing);
    const int decimal = VORN_NewRasterDataset(geography, "h", RasterDecimalType, 1, 16, "/a");
    QVERIFY(VORN_AddDataValues(decimal, 0, interval("[0, 5]"), halves, true, true));
    QCOMPARE(rasterOf(model, decimal).GetMissingFlag().halfValue.bits,
             quint16(0x7BFF));
    QVERIFY(VORN_IsRasterDataMissing(decimal, 1, 0, 2));
    const int colors = VORN_NewRasterDataset(geography, "c", RasterColorType, 1, 8, "/a");
    VORN_DataContainer indices(QVector<unsigned char>({0, 1, 0}), QVector<unsigned int>({7, 8}),
                               VORN_MissingData());
    QVERIFY(VORN_AddDataValues(colors, 0, interval("[0, 5]"), indices, true, true));
    QCOMPARE(rasterOf(model, colors).GetConstRasterInfo(0, 2)->GetColorMap(),
             QVector<unsigned int>({7, 8}));
}

void TestRasterDataset::unsupportedStatisticsRaise()
{
    TestModel model;
    const int geography = addGrid(2, 3);
    const int colors = VORN_NewRasterDataset(geography, "c", RasterColorType, 1, 8, "/a");
    QVERIFY(VORN_AddRasterValues(colors, 0, interval("[0, 5]"), QVector<unsigned char>(6, 1), 9,
                                 {1, 2}, true, true));
    MRasterDataset &dataset = rasterOf(model, colors);
    double value = 0.0;
    QCOMPARE(raisedText([&] { dataset.CalcMinMaxMean(0); }),
             QStringLiteral("Invalid raster data type"));
    QCOMPARE(raisedText([&] { dataset.GetStdDev(0, 3, value); }),
             QStringLiteral("Invalid raster type"));
    QCOMPARE(raisedText([&] { dataset.GetIntervalBreaks(0, 3, MDataset::Quantiles, false); }),
             QStringLiteral("Invalid dataset type"));
    QVERIFY(!VORN_GetStddev(colors, 0, 3, value)); // a host is told no
    QVERIFY(!VORN_GetMean(colors, 0, 3, value));
    QVERIFY(!VORN_GetMin(colors, 0, value) && !VORN_GetMax(colors, 0, value));
    const int bits = VORN_NewRasterDataset(geography, "b", RasterUnsignedType, 1, 1, "/a");
    MRasterDataset &mask = rasterOf(model, bits);
    QVERIFY(mask.AddRasterValues(0, stamp("[0, 5]"), MRasterBand(3, 2, RasterUnsignedType, 1), true,
                                 true));
    QCOMPARE(raisedText([&] { mask.CalcMinMaxMean(0, 3); }), QStringLiteral("Invalid bit depth"));
    QCOMPARE(mask.GetDataCount(0, 3), 6);
    QCOMPARE(mask.GetDatumFrequency(MDatum(0)), 6);
    QCOMPARE(raisedText([&] { VORN_ConstDataContainer(bits, 3, 0, false); }),
             QStringLiteral("Invalid bit depth"));
}

// Files hold records of instants inside a grid's interval.
void TestRasterDataset::recordsOfOtherTimesGiveWay()
{
    struct Opened : MRasterDataset {
        static auto statistics() { return &Opened::mStatistics; }
    };
    TestModel model;
    const int id = VORN_NewRasterDataset(addGrid(1, 2), "d", RasterIntegerType, 1, 32, "");
    QVERIFY(VORN_AddRasterValues(id, 0, interval("[0, 9]"), QVector<int>{1, 3}, -1, true, true));
    DataSetStats stray;
    stray.meanValid = true;
    stray.mean = 42.0;
    (rasterOf(model, id).*Opened::statistics())[0].perTime.insert(stamp("[5, 5]"), stray);
    QVERIFY(VORN_SaveProject(model.path("stray.prj")));
    double value = 0.0;
    QVERIFY(VORN_GetMean(id, 0, 7, value));
    QCOMPARE(value, 2.0);
    for (const qint64 time : {5, 7}) {
        VORN_UnloadProject();
        QVERIFY(VORN_LoadProject(model.path("stray.prj")));
        QVERIFY(VORN_GetStddev(id, 0, time, value));
        QCOMPARE(value, 1.0);
        QVERIFY(VORN_GetMean(id, 0, time, value));
        QCOMPARE(value, 2.0);
    }
}

void TestRasterDataset::unsignedCellsStayUnsigned()
{
    TestModel model;
    const int geography = addGrid(1, 3);
    const quint64 half = quint64(1) << 63;
    const int id = VORN_NewRasterDataset(geography, "u", RasterUnsignedType, 1, 64, "");
    QVERIFY(VORN_AddRasterValues(id, 0, interval("[0, 9]"), QVector<quint64>{half, 5, ~half}, 1,
                                 true, true));
    double value = 0.0;
    QVERIFY(VORN_GetMean(id, 0, 5, value) && VORN_GetMin(id, 0, value));
    QVERIFY(VORN_SaveProject(model.path("u.prj")));
    for (const bool isLoaded : {false, true}) {
        if (isLoaded) {
            VORN_UnloadProject();
            QVERIFY(VORN_LoadProject(model.path("u.prj")));
        }
        QVERIFY(VORN_GetMin(id, 0, 5, value));
        QCOMPARE(value, 5.0);
        QVERIFY(VORN_GetMax(id, 0, 5, value));
        QCOMPARE(value, std::ldexp(1.0, 63));
        QVERIFY(VORN_GetMax(id, 0, value));
        QCOMPARE(value, std::ldexp(1.0, 63));
        const MDatum last = rasterOf(model, id).GetDataFrequencies().lastKey();
        QCOMPARE(last, MDatum(half));
        QCOMPARE(rasterOf(model, id).GetDatumFrequency(last), 1);
    }

    // The flag of 32 bits means the same number in cells of 64.
    const int wide = VORN_NewRasterDataset(geography, "s", RasterIntegerType, 1, 64, "");
    MRasterDataset &dataset = rasterOf(model, wide);
    const qint64 cells[] = {-7, 2, 3};
    const MRasterBand band(3, 1, RasterIntegerType, 64, cells, {});
    QVERIFY(dataset.AddRasterValues(0, stamp("[0, 9]"), band, true, true));
    dataset.SetMissingFlag(MissingFlag(qint32(-7)));
    dataset.CheckOutRealization(0, 0);
    const qint64 *data = nullptr;
    QSet<quint64> missing;
    MissingFlag flag;
    QVERIFY(VORN_GetRasterData(wide, 0, 5, data, missing, flag));
    QCOMPARE(missing, QSet<quint64>{static_cast<quint64>(-7)});
    dataset.CheckInRealization(0, 0);
}

void TestRasterDataset::projectsComeBackByteForByte()
{
    TestModel model;
    const int geography = addGrid(2, 3);
    const int id = VORN_NewRasterDataset(geography, "d", RasterDecimalType, 2, 32, "/a");
    for (const char *when : {"[0, 5]", "(5, 9]"})
        QVERIFY(VORN_AddRasterValues(id, 1, interval(when), QVector<float>({1, 2, 3, 4, 5, 6}),
                                     2.0f, true, true));
    QVERIFY(VORN_SaveProject(model.path("a.prj")));
    VORN_UnloadProject();
    QVERIFY(VORN_LoadProject(model.path("a.prj")));
    QVERIFY(VORN_SaveProject(model.path("b.prj")));
    QFile a(model.path("a.prj"));
    QFile b(model.path("b.prj"));
    QCOMPARE(answers({a.open(QIODevice::ReadOnly), b.open(QIODevice::ReadOnly)}), "yy");
    QVERIFY(a.readAll() == b.readAll());
    QVector<double> values;
    MissingFlag flag;
    QVERIFY(VORN_GetRasterDataAsDecimal(id, 1, 7, values, flag));
    QCOMPARE(values, QVector<double>({1, -HUGE_VAL, 3, 4, 5, 6}));
    auto &raster = dynamic_cast<MRasterData &>(*model.controller.GetGeoData().value(geography));
    QCOMPARE(raster.GetProjectionName(), QStringLiteral("none"));
    QCOMPARE(raster.GetTimeBounds(), stamp("[0, 100]"));
    const GeoProps props = raster.GetProperties();
    QCOMPARE(props.rows, 2);
    QCOMPARE(props.columns, 3);
    QCOMPARE(props.bounds, QRectF(0, 0, 3, 2));
    QCOMPARE(VORN_GetDatasetProperties(id).bitDepth, 32);
    // A dataset that is made now gets an id of its own.
    QVERIFY(VORN_NewRasterDataset(geography, "e", RasterDecimalType, 1, 32, "/a") != id);
}

void TestRasterDataset::shortStreamsAreRefused()
{
    TestModel model;
    const int id = VORN_NewRasterDataset(addGrid(2, 3), "d", RasterIntegerType, 1, 32, "/a");
    QVERIFY(VORN_AddRasterValues(id, 0, interval("[0, 5]"), QVector<int>({1, 2, 3, 4, 5, 6}), 2,
                                 true, true));
    MDataSource &source = *model.controller.GetGeoData().value(id >> 16)->GetDataSource();
    QByteArray bytes;
    BytesWriter out(&bytes);
    QVERIFY(source.SaveToStream(out));
    const LoadingVersion loading(serializationVersionNumber);
    for (int length = 0; length < bytes.size(); ++length) {
        BytesReader in(bytes.left(length));
        MRasterDataSource cut((QString()));
        bool isRestored = false;
        raisedText([&] { isRestored = cut.RestoreFromStream(in); });
        QVERIFY2(!isRestored, QByteArray::number(length).constData());
        SaveDataBlock(
            "x"); // ids of the cut forms are deleted: they must not be those of later blocks
    }
}

void TestRasterDataset::oldFrequenciesAndFlagsAreRead()
{
    const LoadingVersion loading(180082);
    QMap<quint8, int> small{{1, 2}};
    QMap<quint16, int> none;
    QMap<quint32, int> large;
    for (int i = 0; i < 10001; ++i)
        large.insert(static_cast<quint32>(i), 1);
    QByteArray bytes;
    BytesWriter out(&bytes);
    out << qint32(3);
    const auto writeTables = [&](const QMap<quint32, int> &middle) {
        out << small << none << middle << QMap<quint64, int>() << QMap<double, int>();
    };
    writeTables({});
    writeTables(large);
    writeTables({});
    out << qint32(77);
    BytesReader in(bytes);
    RealizationRasterDataFrequencies frequencies;
    in >> frequencies;
    QCOMPARE(frequencies.mapOf<quint8>().value(1), 4); // the third is read and left out
    QCOMPARE(frequencies.mapOf<quint32>().size(), 10001);
    qint32 next = 0;
    in >> next;
    QCOMPARE(next, 77);
}

void TestRasterDataset::datasetsMigrate()
{
    TestModel model;
    const int from = addGrid(2, 3);
    const int to = addGrid(2, 3);
    const int id = VORN_NewRasterDataset(from, "d", RasterIntegerType, 1, 32, "/a");
    QVERIFY(VORN_AddRasterValues(id, 0, interval("[0, 5]"), QVector<int>({1, 2, 3, 4, 5, 6}), 2,
                                 true, true));
    const int copy = VORN_MigrateDataset(id, to, false);
    QCOMPARE(copy >> 16, to);
    qint64 value = 0;
    QVERIFY(VORN_GetRasterValue(copy, 0, 2, 1, 3, value));
    QCOMPARE(value, 6);
    QVERIFY(VORN_IsRasterDataMissing(copy, 1, 0, 3));
    QCOMPARE(VORN_MigrateDataset(id, addGrid(3, 2), false), -1);
    const int empty = VORN_NewRasterDataset(from, "no grids", RasterUnsignedType, 1, 64, "");
    QCOMPARE(VORN_MigrateDataset(empty, addGrid(3, 3), false), -1);
    QVERIFY(VORN_AddRasterValues(empty, 0, interval("[0, 5]"), QVector<quint64>(6, 5000000000), 2,
                                 true, true));
    datum low; // half of the integer; the whole one comes from the other forms
    QVERIFY(VORN_GetRasterValue(empty, 0, 0, 0, 3, low));
    QCOMPARE(low.integerValue, 5000000000 - (qint64(1) << 32));
    QCOMPARE(VORN_MigrateDataset(id, addPoints(6), false), -1);
    QVector<Interval> intervals;
    QVERIFY(VORN_GetTimeSliceDataIntervals(copy, 0, intervals));
    QCOMPARE(intervals.size(), 1);
}

QTEST_GUILESS_MAIN(TestRasterDataset)
#include "tst_RasterDataset.moc"
