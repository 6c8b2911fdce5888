// SPDX-License-Identifier: MIT
#include <cmath>
#include "cells/cellForms.h"
#include "datainterface/DataAPI.h"
#include "datainterface/DataBlocks.h"
#include "datainterface/DatasetProps.h"
#include "datainterface/MGeoData.h"
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

// A dataset of one band on a grid of its own.
int addRaster(int rows, int columns, DataType type, int bits)
{
    return VORN_NewRasterDataset(addGrid(rows, columns), "d", type, 1, bits, "/a");
}

} // namespace

class TestRasterDataset : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void intervalsAreCutOrFilled();
    void bandsThatDoNotFitChangeNothing();
    void everyFormGoesAllTheWay();
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
    QCOMPARE(merged("[12, 15]", "[10, 20]", true), QString("[10, 20] 2"));
    QCOMPARE(merged("[0, 5] [20, 30]", "[3, 25]", true), QString("[0, 3) 1 [3, 25] 2 (25, 30] 1"));
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
    const TimeStamp when = stamp("[0, 5]");
    const auto isAdded = [&](int realization, const TimeStamp &time, const MRasterBand &band) {
        return dataset.AddRasterValues(realization, time, band, true, true);
    };
    QVERIFY(!isAdded(0, when, MRasterBand(2, 3, RasterIntegerType, 32)));
    QVERIFY(!isAdded(0, when, MRasterBand(3, 2, RasterIntegerType, 16)));
    QVERIFY(!isAdded(0, when, MRasterBand(3, 2, RasterDecimalType, 32)));
    QVERIFY(!isAdded(1, when, filled(1)));
    QVERIFY(!isAdded(0, TimeStamp(5, 0, true, true), filled(1)));
    QVERIFY(!VORN_AddRasterValues(id, 0, when, QVector<float>(6, 1), -1.0f, true, true));
    QVERIFY(!VORN_AddRasterValues(id, 0, when, QVector<int>(5, 1), -1, true, true));
    QVERIFY(dataset.GetRasterIntervals(0).isEmpty());
    const auto made = [](int grid, DataType type, int count, int bits) {
        return VORN_NewRasterDataset(grid, "x", type, count, bits, "/a");
    };
    QCOMPARE(made(geography, RasterDecimalType, 1, 8), -1);
    QCOMPARE(made(geography, RasterCellType, 1, 8), -1);
    QCOMPARE(made(geography, DecimalType, 1, 64), -1);
    QCOMPARE(made(geography, RasterIntegerType, 0, 8), -1);
    QCOMPARE(made(geography + 1, RasterIntegerType, 1, 8), -1);
    QCOMPARE(addGrid(0, 5), -1);
    QCOMPARE(addGrid(65536, 65536), -1);
    QCOMPARE(raisedText([&] { dataset.CheckInRealization(3, 0); }),
             QString("Invalid realization index"));
}

// Values in, then out through containers, counts, statistics and a project.
void TestRasterDataset::everyFormGoesAllTheWay()
{
    TestModel model;
    const int geography = addGrid(2, 3);
    QVector<int> ids;
    const auto fill = [&](auto form, DataType type) {
        using T = CellOf<decltype(form)>;
        const int bits = static_cast<int>(8 * sizeof(T));
        ids.append(VORN_NewRasterDataset(geography, "d", type, 1, bits, "/a"));
        QVector<T> cells;
        for (const int value : {1, 1, 2, 3, 100, 5})
            cells.append(T(static_cast<float>(value)));
        const MRasterBand band(3, 2, type, bits, cells.constData(), {0xFF010203u});
        MRasterDataset &dataset = rasterOf(model, ids.last());
        QVERIFY(dataset.AddRasterValues(0, stamp("[3, 7]"), band, true, false));
        dataset.SetMissingFlag(MissingFlag(cells.at(4)));
        QVERIFY(dataset.RecalculateFrequencies());
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
        const InCase inForm(id);
        double mean = 0.0;
        double least = 0.0;
        double most = 0.0;
        double spread = 0.0;
        QCOMPARE(answers({VORN_GetMean(id, 0, 5, mean), VORN_GetMin(id, 0, 5, least),
                          VORN_GetMax(id, 0, most), VORN_GetStddev(id, 0, 5, spread)}),
                 "yyyy");
        QCOMPARE(QVector<double>({mean, least, most}), QVector<double>({12.0 / 5.0, 1, 5}));
        QCOMPARE(spread, std::sqrt(40.0 / 5 - 2.4 * 2.4));
        QCOMPARE(dataset.GetDataFrequencies().values(), QList<int>({2, 1, 1, 1}));
        const MDatum one = dataset.GetDataType() == RasterDecimalType ? MDatum(1.0) : MDatum(1);
        QCOMPARE(dataset.GetDatumFrequency(one), 2);
        QCOMPARE(dataset.GetDataCount(0, 5), 5);
        QCOMPARE(dataset.GetDataCount(0, 8), 0);
        QCOMPARE(dataset.GetIntervalBreaks(0, 2, MDataset::Quantiles, false).last(), 5.0);
        const VORN_ConstDataContainer view(id, 5, 0, false);
        QCOMPARE(view.count(), 6);
        QCOMPARE(view.value(3), 3.0);
        QCOMPARE(view.validCount(), 5);
        QCOMPARE(view.getColorTable(), QVector<unsigned int>({0xFF010203u}));
        datum found;
        QCOMPARE(answers({dataset.IsValid(), dataset.IsPixelMissing(0, 1, 1, 5),
                          dataset.IsPixelMissing(0, 0, 0, 5), view.isMissing(4),
                          VORN_GetRasterValue(id, 0, 1, 1, 5, found),
                          VORN_GetRasterValue(id, 0, 3, 1, 5, found),
                          VORN_GetRasterValue(id, 0, 2, 1, 5, found)}),
                 "yynynny");
        QCOMPARE(found.type == 0 ? found.decimalValue : double(found.integerValue), 5.0);
        QSet<int> missing;
        QVERIFY(VORN_GetMissingPixels(id, 0, 5, missing));
        QCOMPARE(missing, QSet<int>({4}));
        QVector<double> values;
        MissingFlag flag;
        QVERIFY(VORN_GetRasterDataAsDecimal(id, 0, 5, values, flag));
        QCOMPARE(values, QVector<double>({1, 1, 2, 3, -HUGE_VAL, 5}));
        QCOMPARE(flag.type, qint32(MissingFlag::Double));
        const MRasterObservation &grid = *dataset.GetConstRasterInfo(0, 5);
        QCOMPARE(QVector<int>({grid.TallyValue(qint64(3)), grid.TallyValue(quint64(2)),
                               grid.TallyValue(2.5), grid.TallyValue(qint64(-1))}),
                 QVector<int>({1, 1, 0, 0}));
        double value = 0.0; // no such cells
        QCOMPARE(answers({grid.GetValueAsDecimal(0, 2, value, {}),
                          grid.GetValueAsDecimal(-1, value, {})}),
                 "nn");
    }
}

void TestRasterDataset::valuesAreCountedAndSummed()
{
    TestModel model;
    const int id = addRaster(30, 7, RasterDecimalType, 32);
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
    const int id = addRaster(1, 6, RasterDecimalType, 32);
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
    const int id = addRaster(1, 4, RasterIntegerType, 32);
    VORN_AddRasterValues(id, 0, interval("[0, 1]"), QVector<int>({5, -3, 5, -9}), 99, true, true);
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
    const int id = addRaster(2, 3, RasterIntegerType, 32);
    const Interval span = interval("[0, 5]");
    QVERIFY(VORN_AddRasterValues(id, 0, span, QVector<int>(6, 1), -1, true, true));
    double mean = 0.0;
    QVERIFY(VORN_GetMean(id, 0, 3, mean));
    const qint64 seven = 7;
    QCOMPARE(answers({VORN_SetRasterValue(id, 0, 2, 1, span, seven),
                      VORN_SetRasterValue(id, 0, 2, 1, span, 7.0),
                      VORN_SetRasterValue(id, 0, 2, 2, span, seven),
                      VORN_SetRasterValue(id, 0, 2, 1, interval("[8, 9]"), seven)}),
             "ynnn");
    QCOMPARE(raisedText([&] { VORN_SetRasterValue(id, 0, 2, 1, interval("[0, 4]"), seven); }),
             QString("Time stamp mismatch"));
    QCOMPARE(rasterOf(model, id).GetDatumFrequency(MDatum(7)), 1);
    QVERIFY(VORN_GetMean(id, 0, 3, mean));
    QCOMPARE(mean, 2.0);
    qint64 value = 0;
    QVERIFY(VORN_GetRasterValue(id, 0, 2, 1, 4, value));
    QCOMPARE(value, seven);
    QCOMPARE(raisedText([&] { rasterOf(model, id).GetValue(0, 0, true, 0); }),
             QString("Raster interpolation not yet implemented"));
}

void TestRasterDataset::staticDatasetsKeepTheirFirstGrid()
{
    TestModel model;
    const int id = addRaster(2, 3, RasterIntegerType, 32);
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
    const int id = addRaster(2, 3, RasterDecimalType, 64);
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
    const Interval span = interval("[0, 5]");
    VORN_MissingData missing(MissingData::Raster, 3);
    missing.setMissing(1);
    const auto add = [&](DataType type, int bits, VORN_DataContainer values) {
        const int id = VORN_NewRasterDataset(geography, "d", type, 1, bits, "/a");
        return VORN_AddDataValues(id, 0, span, values, true, true) ? id : -1;
    };
    using Container = VORN_DataContainer;
    const QVector<short> shorts{4, 5, 6};
    const int id = add(RasterIntegerType, 16, Container(Container::Int16Data, shorts, missing));
    QCOMPARE(int(rasterOf(model, id).GetMissingFlag().type), int(MissingFlag::Int16));
    QCOMPARE(answers({VORN_IsRasterDataMissing(id, 1, 0, 2), VORN_IsRasterDataMissing(id, 0, 0, 2),
                      VORN_IsRasterDataMissing(id, 0, 0, 9)}),
             "yny");
    QCOMPARE(VORN_GetDataCount(id, 2), 2u);
    QCOMPARE(add(RasterIntegerType, 16, Container(Container::Int32Data, 3)), -1);
    const QVector<unsigned short> halves{1, 2, 3};
    const int decimal = add(RasterDecimalType, 16, Container(Container::HalfData, halves, missing));
    QCOMPARE(rasterOf(model, decimal).GetMissingFlag().halfValue.bits, quint16(0x7BFF));
    QVERIFY(VORN_IsRasterDataMissing(decimal, 1, 0, 2));
    const QVector<unsigned char> indices{0, 1, 0};
    const QVector<unsigned int> table{7, 8};
    const int colors = add(RasterColorType, 8, Container(indices, table, VORN_MissingData()));
    QCOMPARE(rasterOf(model, colors).GetConstRasterInfo(0, 2)->GetColorMap(), table);
}

void TestRasterDataset::unsupportedStatisticsRaise()
{
    TestModel model;
    const int colors = addRaster(2, 3, RasterColorType, 8);
    QVERIFY(VORN_AddRasterValues(colors, 0, interval("[0, 5]"), QVector<unsigned char>(6, 1), 9,
                                 {1, 2}, true, true));
    MRasterDataset &dataset = rasterOf(model, colors);
    double value = 0.0;
    QCOMPARE(raisedText([&] { dataset.CalcMinMaxMean(0); }), QString("Invalid raster data type"));
    QCOMPARE(raisedText([&] { dataset.GetStdDev(0, 3, value); }), QString("Invalid raster type"));
    QCOMPARE(raisedText([&] { dataset.GetIntervalBreaks(0, 3, MDataset::Quantiles, false); }),
             QString("Invalid dataset type"));
    QCOMPARE(answers({VORN_GetStddev(colors, 0, 3, value), VORN_GetMean(colors, 0, 3, value),
                      VORN_GetMin(colors, 0, value), VORN_GetMax(colors, 0, value)}),
             "nnnn"); // a host is told no
    const int bits = addRaster(2, 3, RasterUnsignedType, 1);
    MRasterDataset &mask = rasterOf(model, bits);
    mask.AddRasterValues(0, stamp("[0, 5]"), MRasterBand(3, 2, RasterUnsignedType, 1), true, true);
    QCOMPARE(raisedText([&] { mask.CalcMinMaxMean(0, 3); }), QString("Invalid bit depth"));
    QCOMPARE(mask.GetDataCount(0, 3), 6);
    QCOMPARE(mask.GetDatumFrequency(MDatum(0)), 6);
    QCOMPARE(raisedText([&] { VORN_ConstDataContainer(bits, 3, 0, false); }),
             QString("Invalid bit depth"));
}

// Files hold records of instants inside a grid's interval.
void TestRasterDataset::recordsOfOtherTimesGiveWay()
{
    struct Opened : MRasterDataset {
        static auto statistics() { return &Opened::mStatistics; }
    };
    TestModel model;
    const int id = addRaster(1, 2, RasterIntegerType, 32);
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
    const quint64 half = quint64(1) << 63;
    const int id = addRaster(1, 3, RasterUnsignedType, 64);
    QVERIFY(VORN_AddRasterValues(id, 0, interval("[0, 9]"), QVector<quint64>{half, 5, ~half}, 1,
                                 true, true));
    double value = 0.0;
    double whole = 0.0;
    double least = 0.0;
    QVERIFY(VORN_GetMean(id, 0, 5, value));
    QVERIFY(VORN_GetMin(id, 0, value));
    QVERIFY(VORN_SaveProject(model.path("u.prj")));
    for (const bool isLoaded : {false, true}) {
        if (isLoaded)
            QVERIFY(VORN_LoadProject(model.path("u.prj")));
        QCOMPARE(answers({VORN_GetMin(id, 0, 5, least), VORN_GetMax(id, 0, 5, value),
                          VORN_GetMax(id, 0, whole)}),
                 "yyy");
        QCOMPARE(QVector<double>({least, value, whole}),
                 QVector<double>({5.0, std::ldexp(1.0, 63), std::ldexp(1.0, 63)}));
        const MDatum last = rasterOf(model, id).GetDataFrequencies().lastKey();
        QCOMPARE(last, MDatum(half));
        QCOMPARE(rasterOf(model, id).GetDatumFrequency(last), 1);
    }

    // The flag of 32 bits means the same number in cells of 64 and of no sign.
    const int wide = addRaster(1, 3, RasterIntegerType, 64);
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
    quint64 bits = 7;
    QVERIFY(!VORN_GetRasterValue(wide, 0, 0, 0, 5, bits));
    QCOMPARE(bits, quint64(7));
}

void TestRasterDataset::oldFrequenciesAndFlagsAreRead()
{
    const LoadingVersion loading(180082);
    const QMap<quint8, int> small{{1, 2}};
    QMap<quint32, int> large;
    for (quint32 i = 0; i < 10001; ++i)
        large.insert(i, 1);
    QByteArray bytes;
    BytesWriter out(&bytes);
    out << qint32(3);
    for (const QMap<quint32, int> &middle : {QMap<quint32, int>(), large, QMap<quint32, int>()})
        out << small << QMap<quint16, int>() << middle << QMap<quint64, int>()
            << QMap<double, int>();
    RealizationRasterDataFrequencies frequencies;
    QVERIFY(isRead(bytes, frequencies));
    QCOMPARE(frequencies.mapOf<quint8>().value(1), 4); // the third is read and left out
    QCOMPARE(frequencies.mapOf<quint32>().size(), 10001);
}

void TestRasterDataset::datasetsMigrate()
{
    TestModel model;
    const int id = addRaster(2, 3, RasterIntegerType, 32);
    const int to = addGrid(2, 3);
    QVERIFY(VORN_AddRasterValues(id, 0, interval("[0, 5]"), QVector<int>({1, 2, 3, 4, 5, 6}), 2,
                                 true, true));
    const int copy = VORN_MigrateDataset(id, to, false);
    QCOMPARE(copy >> 16, to);
    qint64 value = 0;
    QVERIFY(VORN_GetRasterValue(copy, 0, 2, 1, 3, value));
    QCOMPARE(value, 6);
    QVERIFY(VORN_IsRasterDataMissing(copy, 1, 0, 3));
    QCOMPARE(VORN_MigrateDataset(id, addGrid(3, 2), false), -1);
    QCOMPARE(VORN_MigrateDataset(id, addPoints(6), false), -1);
    const int empty = addRaster(2, 3, RasterUnsignedType, 64);
    QCOMPARE(VORN_MigrateDataset(empty, addGrid(3, 3), false), -1);
    QVERIFY(VORN_AddRasterValues(empty, 0, interval("[0, 5]"), QVector<quint64>(6, 5000000000), 2,
                                 true, true));
    datum low; // half of the integer; the whole one comes from the other forms
    QVERIFY(VORN_GetRasterValue(empty, 0, 0, 0, 3, low));
    QCOMPARE(low.integerValue, 5000000000 - (qint64(1) << 32));
}

QTEST_GUILESS_MAIN(TestRasterDataset)
#include "tst_RasterDataset.moc"
