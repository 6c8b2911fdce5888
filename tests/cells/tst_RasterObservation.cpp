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

} // namespace

class TestRasterObservation : public QObject {
    Q_OBJECT
    BlockStore mStore;

private Q_SLOTS:
    void cellsTakeTheirBytes();
    void wholeNumbersKeepTheirSign();
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
    QCOMPARE(bytes(3, 3, 16), 18);
    // The last but one has 2^32 cells, 0 as an int.
    for (const QSize &size :
         {QSize(0, 5), QSize(-3, -3), QSize(65536, 65536), QSize(1 << 30, 1 << 30)})
        QCOMPARE(raisedText([&] { bytes(size.width(), size.height(), 64); }),
                 QString("int(byteLength) > 0"));
}

void TestRasterObservation::wholeNumbersKeepTheirSign()
{
    QCOMPARE(answers({isCellForm(0x1000, 8), isCellForm(0x800, 64), isCellForm(0x1000, 16),
                      isCellForm(0x100, 8), isCellForm(0x500, 8)}), // two codes at once
             "yynnn");
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
    QCOMPARE(large.GetValue(0, kNoFlag).toDouble(), 18446744073709551616.0);
    QCOMPARE(large.TallyValue(qint64(-1)), 0);
}

void TestRasterObservation::numbersBecomeHalves()
{
    // Patterns from the table of IEEE 754 binary16; ties go away from zero.
    const QVector<QPair<double, int>> patterns{{1.0, 0x3C00},
                                               {-2.0, 0xC000},
                                               {65504.0, 0x7BFF},
                                               {65520.0, 0x7C00},
                                               {-1e10, 0xFC00},
                                               {std::ldexp(1.0, -14), 0x0400},
                                               {std::ldexp(1.0, -24), 0x0001},
                                               {std::ldexp(1.0, -25), 0x0001},
                                               {std::ldexp(1.0, -27), 0x0000},
                                               {-0.0, 0x8000},
                                               {HUGE_VAL, 0x7C00},
                                               {std::nan(""), 0xFE00},
                                               {1.0 + std::ldexp(1.0, -11), 0x3C01}};
    for (const auto &[number, bits] : patterns) {
        const InCase inNumber(number);
        QCOMPARE(int(halfFromDouble(number).bits), bits);
    }
}

void TestRasterObservation::setValueLastsAndSetDataDoesNot()
{
    MRasterObservation grid(bandOf<double>(2, 1, RasterDecimalType, {1, 2}));
    const auto valueAt = [&grid](int index) { return grid.GetValue(index, kNoFlag).toDouble(); };
    double fresh[] = {8, 9};
    grid.CheckOutObservation();
    grid.SetData(static_cast<void *>(fresh));
    QCOMPARE(valueAt(0), 8.0);
    grid.CheckInObservation();
    QCOMPARE(valueAt(0), 1.0);
    QVERIFY(grid.SetValue(5.0, 1, 0));
    QCOMPARE(valueAt(1), 5.0);
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
    const auto read = [&grid] {
        QByteArray bits;
        for (int index = 0; index < 9; ++index) {
            quint64 value = 7;
            grid.GetUnsignedIntegerValue(index, value, MissingFlag(quint8(1)));
            bits += QByteArray::number(value);
        }
        return bits;
    };
    QVERIFY(grid.SetValue(quint64(1), 0, 0)); // sets bit 0
    QCOMPARE(read(), "000000000");            // and bit 10 % 8 = 2 is read
    QVERIFY(grid.SetValue(quint64(1), 2, 0));
    QCOMPARE(read(), "111111110");
    QVERIFY(grid.SetValue(quint64(0), 2, 0)); // never clears
    QCOMPARE(read(), "111111110");
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
    QCOMPARE(answers({flag(~quint64(0), 0x400, 8).matches(quint8(255)),
                      flag(quint64(255), 0x400, 8).matches(quint8(255)),
                      flag(quint64(255), 0x400, 8).matches(quint8(0)),
                      flag(-9999.0, 0x200, 16).matches(qint16(-9999)),
                      flag(0.1, 0x100, 32).matches(0.1f)}),
             "yynyy");
    QCOMPARE(flag(quint64(256), 0x400, 8).type, qint32(MissingFlag::None));
    QCOMPARE(flag(-9999.0, 0x400, 16).type, qint32(MissingFlag::None));
    QCOMPARE(flag(0.5, 0x200, 32).type, qint32(MissingFlag::None));
}

QTEST_GUILESS_MAIN(TestRasterObservation)
#include "tst_RasterObservation.moc"
