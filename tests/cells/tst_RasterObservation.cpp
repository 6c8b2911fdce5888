// SPDX-License-Identifier: MIT
#include <cmath>
#include "cells/binary16.h"
#include "cells/cellFlag.h"
#include "cells/cellForms.h"
#include "datainterface/HeldGrid.h"
#include "datainterface/MRasterObservation.h"
#include "datasets/datasetFixture.h"
#include "support/checks.h"
#include "support/streamed.h"
#include "support/support.h"

using namespace datainterface;

namespace {

const MissingFlag kNoFlag;

template <class T> MRasterBand bandOf(int columns, int rows, DataType type, const QVector<T> &cells)
{
    return MRasterBand(columns, rows, type, static_cast<int>(8 * sizeof(T)), cells.constData(), {});
}

/// A grid of 3 by 2 cells of a form with the values 0 to 5, the third of them missing, through
/// every reader.
template <class Form> void readEveryForm(Form form, int type)
{
    using T = CellOf<Form>;
    QVector<T> cells;
    for (int i = 0; i < 6; ++i)
        cells.append(T(static_cast<float>(i)));
    const MRasterObservation grid(bandOf(3, 2, static_cast<DataType>(type), cells));
    const MissingFlag flag(cells.at(2));
    QVERIFY(form.holds(grid.Type(), grid.BitDepth()));
    double value = -1.0;
    QVERIFY(grid.GetValueAsDecimal(2, 1, value, flag));
    QCOMPARE(value, 5.0);
    QVERIFY(!grid.GetValueAsDecimal(2, 0, value, flag));
    QVERIFY(!grid.GetValueAsDecimal(3, 0, value, flag));
    QVERIFY(!grid.GetValueAsDecimal(0, 2, value, flag));
    QVERIFY(!grid.GetValueAsDecimal(-1, value, flag));
    QCOMPARE(value, 5.0);
    QVERIFY(grid.GetValue(2, flag).isEmpty());
    QCOMPARE(grid.GetValue(4, flag).toDouble(), 4.0);
    QVector<double> all;
    MissingFlag out;
    QVERIFY(grid.GetValuesAsDecimal(all, flag, out));
    QCOMPARE(all, QVector<double>({0, 1, -HUGE_VAL, 3, 4, 5}));
    QCOMPARE(out.type, qint32(MissingFlag::Double));
    QCOMPARE(grid.TallyValue(qint64(3)), 1);
    QCOMPARE(grid.TallyValue(quint64(2)), 1);
    QCOMPARE(grid.TallyValue(2.5), 0);
    QCOMPARE(grid.TallyValue(qint64(-1)), 0);
    QCOMPARE(grid.CheckOutCount(), 0);
    QVERIFY(grid.GetData().isEmpty());
}

} // namespace

class TestRasterObservation : public QObject {
    Q_OBJECT
    BlockStore mStore;

private Q_SLOTS:
    void cellsTakeTheirBytes();
    void gridsThatCannotBeAreRefused();
    void everyFormIsRead();
    void numbersBecomeHalves();
    void setValueLastsAndSetDataDoesNot();
    void writersActOnTheirDepths();
    void oneBitCellsLookAtTheColumnCount();
    void copiesHaveTheirOwnBlocks();
    void unreadableBlocksRaise();
    void pointersStayGoodWhileCheckedOut();
    void headersReadOldTypeCodes();
    void flagsOfAnotherWidth();
};

void TestRasterObservation::cellsTakeTheirBytes()
{
    const auto bytes = [](int columns, int rows, int depth) {
        const MRasterBand band(columns, rows, RasterUnsignedType, depth);
        return band.GetData().size() == band.GetByteLength() ? band.GetByteLength() : -1;
    };
    QCOMPARE(bytes(8, 1, 1), 2);
    QCOMPARE(bytes(9, 1, 1), 2);
    QCOMPARE(bytes(3, 3, 8), 9);
    QCOMPARE(bytes(3, 3, 16), 18);
    QCOMPARE(bytes(2, 3, 64), 48);
}

void TestRasterObservation::gridsThatCannotBeAreRefused()
{
    const QString text = QStringLiteral("int(byteLength) > 0");
    const auto raised = [](int columns, int rows) {
        return raisedText([=] { MRasterBand(columns, rows, RasterDecimalType, 64); });
    };
    QCOMPARE(raised(0, 5), text);
    QCOMPARE(raised(-3, -3), text);
    QCOMPARE(raised(65536, 65536), text); // 2^32 cells, 0 as an int
    QCOMPARE(raised(1 << 30, 1 << 30), text);
}

void TestRasterObservation::everyFormIsRead()
{
    readEveryForm(CellForm<RasterDecimalType, 16, half>{}, 0x100);
    readEveryForm(CellForm<RasterDecimalType, 32, float>{}, 0x100);
    readEveryForm(CellForm<RasterDecimalType, 64, double>{}, 0x100);
    readEveryForm(CellForm<RasterIntegerType, 8, qint8>{}, 0x200);
    readEveryForm(CellForm<RasterIntegerType, 16, qint16>{}, 0x200);
    readEveryForm(CellForm<RasterIntegerType, 32, qint32>{}, 0x200);
    readEveryForm(CellForm<RasterIntegerType, 64, qint64>{}, 0x200);
    for (const int type : {0x400, 0x800}) {
        readEveryForm(CellForm<kUnsignedCells, 8, quint8>{}, type);
        readEveryForm(CellForm<kUnsignedCells, 16, quint16>{}, type);
        readEveryForm(CellForm<kUnsignedCells, 32, quint32>{}, type);
        readEveryForm(CellForm<kUnsignedCells, 64, quint64>{}, type);
    }
    readEveryForm(CellForm<RasterColorType, 8, quint8>{}, 0x1000);
    QVERIFY(!isCellForm(0x1000, 16));
    QVERIFY(!isCellForm(0x100, 8));
    QVERIFY(!isCellForm(0x500, 8)); // two codes at once

    const MRasterObservation bytes(bandOf<qint8>(2, 1, RasterIntegerType, {-2, 7}));
    qint64 integer = 0;
    quint64 whole = 0;
    QCOMPARE(answers({bytes.GetIntegerValue(0, integer, kNoFlag),
                      bytes.GetUnsignedIntegerValue(0, whole, kNoFlag)}),
             "yy");
    QCOMPARE(integer, qint64(-2));
    QCOMPARE(whole, quint64(254));
    QCOMPARE(bytes.TallyValue(-2.0), 1);
    QCOMPARE(bytes.TallyValue(quint64(254)), 0);
    const MRasterObservation large(bandOf<quint64>(1, 1, RasterUnsignedType, {~quint64(0)}));
    double decimal = 0.0;
    QVERIFY(large.GetValueAsDecimal(0, decimal, kNoFlag));
    QCOMPARE(decimal, 18446744073709551616.0);
    QCOMPARE(large.TallyValue(qint64(-1)), 0);
}

void TestRasterObservation::numbersBecomeHalves()
{
    const auto bits = [](double number) { return int(halfFromDouble(number).bits); };
    // Patterns from the table of IEEE 754 binary16.
    QCOMPARE(bits(1.0), 0x3C00);
    QCOMPARE(bits(-2.0), 0xC000);
    QCOMPARE(bits(65504.0), 0x7BFF);
    QCOMPARE(bits(65520.0), 0x7C00); // rounded beyond the largest
    QCOMPARE(bits(-1e10), 0xFC00);
    QCOMPARE(bits(std::ldexp(1.0, -14)), 0x0400);
    QCOMPARE(bits(std::ldexp(1.0, -24)), 0x0001);
    QCOMPARE(bits(std::ldexp(1.0, -25)), 0x0001); // half the smallest, away from zero
    QCOMPARE(bits(std::ldexp(1.0, -27)), 0x0000);
    QCOMPARE(bits(-0.0), 0x8000);
    QCOMPARE(bits(HUGE_VAL), 0x7C00);
    QCOMPARE(bits(std::nan("")), 0xFE00);
    QCOMPARE(bits(1.0 + std::ldexp(1.0, -11)), 0x3C01); // a tie goes up
}

void TestRasterObservation::setValueLastsAndSetDataDoesNot()
{
    MRasterObservation grid(bandOf<double>(2, 1, RasterDecimalType, {1, 2}));
    double fresh[] = {8, 9};
    double value = 0.0;
    grid.CheckOutObservation();
    grid.SetData(static_cast<void *>(fresh));
    QVERIFY(grid.GetDecimalValue(0, value, kNoFlag));
    QCOMPARE(value, 8.0);
    grid.CheckInObservation();
    QVERIFY(grid.GetDecimalValue(0, value, kNoFlag));
    QCOMPARE(value, 1.0);
    QVERIFY(grid.SetValue(5.0, 1, 0));
    QVERIFY(grid.GetDecimalValue(1, value, kNoFlag));
    QCOMPARE(value, 5.0);
}

void TestRasterObservation::writersActOnTheirDepths()
{
    MRasterObservation bytes(bandOf<quint8>(2, 1, RasterUnsignedType, {1, 2}));
    QVERIFY(!bytes.SetValue(3.0, 0, 0));
    QVERIFY(bytes.SetValue(quint64(0x1FF), 0, 0)); // cut to the width
    QCOMPARE(bytes.TallyValue(quint64(255)), 1);
    QVERIFY(!bytes.SetValue(quint64(1), 2, 0));
    MRasterObservation halves(bandOf<half>(1, 1, RasterDecimalType, {half()}));
    QVERIFY(halves.SetValue(1.5, 0, 0));
    double value = 0.0;
    QVERIFY(halves.GetDecimalValue(0, value, kNoFlag));
    QCOMPARE(value, 1.5);
    MRasterObservation bits(MRasterBand(10, 1, RasterUnsignedType, 1));
    QVERIFY(!bits.SetValue(qint64(1), 0, 0));
    QVERIFY(!bits.SetValue(1.0, 0, 0));
}

void TestRasterObservation::oneBitCellsLookAtTheColumnCount()
{
    MRasterObservation grid(MRasterBand(10, 1, RasterUnsignedType, 1));
    quint64 value = 7;
    QVERIFY(grid.SetValue(quint64(1), 0, 0)); // sets bit 0
    QVERIFY(grid.GetUnsignedIntegerValue(0, value, kNoFlag));
    QCOMPARE(value, quint64(0)); // and bit 10 % 8 = 2 is read
    QVERIFY(grid.SetValue(quint64(1), 2, 0));
    for (int index = 0; index < 8; ++index) {
        QVERIFY(grid.GetUnsignedIntegerValue(index, value, MissingFlag(quint8(1))));
        QCOMPARE(value, quint64(1));
    }
    QVERIFY(grid.GetUnsignedIntegerValue(8, value, kNoFlag));
    QCOMPARE(value, quint64(0));
    QVERIFY(grid.SetValue(quint64(0), 2, 0)); // never clears
    QVERIFY(grid.GetUnsignedIntegerValue(2, value, kNoFlag));
    QCOMPARE(value, quint64(1));
}

void TestRasterObservation::copiesHaveTheirOwnBlocks()
{
    MRasterObservation grid(bandOf<int>(2, 1, RasterIntegerType, {1, 2}));
    const auto copy = grid.clone();
    MRasterObservation assigned(bandOf<int>(1, 1, RasterIntegerType, {9}));
    const int block = assigned.BlockId();
    assigned = grid;
    QVERIFY(copy->BlockId() != grid.BlockId());
    QCOMPARE(assigned.BlockId(), block);
    QVERIFY(grid.SetValue(qint64(7), 0, 0));
    QCOMPARE(copy->TallyValue(qint64(1)), 1);
    QCOMPARE(assigned.TallyValue(qint64(1)), 1);
    QCOMPARE(assigned.Columns(), 2);
}

void TestRasterObservation::unreadableBlocksRaise()
{
    const QString text = QStringLiteral("Can't load raster data block");
    MRasterObservation grid(bandOf<int>(2, 1, RasterIntegerType, {1, 2}));
    DeleteDataBlock(grid.BlockId());
    QCOMPARE(raisedText([&] { grid.CheckOutObservation(); }), text);
    QCOMPARE(grid.CheckOutCount(), 1);
    grid.CheckInObservation();
    qint64 value = 0;
    QCOMPARE(raisedText([&] { grid.GetIntegerValue(0, value, kNoFlag); }), text);
    QCOMPARE(grid.CheckOutCount(), 0);
    QVERIFY(!grid.GetIntegerValue(2, value, kNoFlag)); // not there: no block is read
    // A block that is shorter than the grid of its header.
    QByteArray bytes;
    BytesWriter out(&bytes);
    out << qint32(100) << qint32(100) << qint32(0x200) << qint32(32) << qint32(0)
        << SaveDataBlock("short");
    BytesReader in(bytes);
    const MRasterObservation foreign(in);
    QCOMPARE(raisedText([&] { foreign.TallyValue(qint64(0)); }), text);
}

// A first write used to leave earlier pointers to bytes that only the store's cache kept alive.
void TestRasterObservation::pointersStayGoodWhileCheckedOut()
{
    MRasterObservation grid(bandOf<int>(2, 1, RasterIntegerType, {1, 2}));
    const HeldGrid hold(grid);
    const int *cells = grid.cells<int>();
    QVERIFY(grid.SetValue(qint64(7), 0, 0));
    DeleteDataBlock(SaveDataBlock(QByteArray(1 << 22, 'x'))); // empties the cache
    QCOMPARE(cells[1], 2);
    QCOMPARE(grid.cells<int>()[0], 7);
}

void TestRasterObservation::headersReadOldTypeCodes()
{
    QByteArray bytes;
    BytesWriter out(&bytes);
    out << qint32(2) << qint32(3) << qint32(3) << qint32(8) << QVector<unsigned int>{5, 6}
        << qint32(-1);
    QCOMPARE(bytes.size(), 7 * 4 + 4);
    const auto read = [&bytes](int version) {
        const LoadingVersion loading(version);
        BytesReader in(bytes);
        return std::make_unique<MRasterObservation>(in);
    };
    QCOMPARE(int(read(201000)->Type()), 4096);
    const auto grid = read(201001);
    QCOMPARE(int(grid->Type()), 3);
    QCOMPARE(grid->Rows(), 2);
    QCOMPARE(grid->Columns(), 3);
    QCOMPARE(grid->GetColorMap(), QVector<unsigned int>({5, 6}));
}

void TestRasterObservation::flagsOfAnotherWidth()
{
    const auto flag = [](auto value, int type, int depth) {
        return cellFlag(MissingFlag(value), type, depth);
    };
    QVERIFY(flag(~quint64(0), 0x400, 8).matches(quint8(255)));
    QVERIFY(flag(quint64(255), 0x400, 8).matches(quint8(255)));
    QVERIFY(!flag(quint64(255), 0x400, 8).matches(quint8(0)));
    QCOMPARE(flag(quint64(256), 0x400, 8).type, qint32(MissingFlag::None));
    QVERIFY(flag(-9999.0, 0x200, 16).matches(qint16(-9999)));
    QCOMPARE(flag(-9999.0, 0x400, 16).type, qint32(MissingFlag::None));
    QCOMPARE(flag(0.5, 0x200, 32).type, qint32(MissingFlag::None));
    QVERIFY(flag(0.1, 0x100, 32).matches(0.1f));
}

QTEST_GUILESS_MAIN(TestRasterObservation)
#include "tst_RasterObservation.moc"
