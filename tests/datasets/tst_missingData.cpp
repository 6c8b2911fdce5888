// SPDX-License-Identifier: MIT
#include <QtTest>
#include "datainterface/GeoProps.h"
#include "datainterface/MissingData.h"
#include "datainterface/MissingFlag.h"
#include "datainterface/dataContainer.h"
#include "support/checks.h"
#include "support/streamed.h"
#include "support/support.h"

namespace {

VORN_MissingData raster(int cells, std::initializer_list<int> missing)
{
    VORN_MissingData result(MissingData::Raster, cells);
    for (const int cell : missing)
        result.setMissing(cell);
    return result;
}

QByteArray pixels(const VORN_MissingData &missing, int bytes)
{
    return QByteArray(reinterpret_cast<const char *>(missing.missingPixels()), bytes).toHex();
}

} // namespace

class TestMissingData : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void nothingIsMissingFromNothing();
    void setsAndUnsets();
    void allMissingIsAShortcut();
    void unionsOfTheSameForm();
    void unionsWithNothingAndWithAll();
    void checkersAddUpContainers();
    void flagsMatchTheirOwnWidth();
    void flagsStream();
};

void TestMissingData::nothingIsMissingFromNothing()
{
    VORN_MissingData missing;
    QCOMPARE(answers({missing.isValid(), missing.noneMissing(), missing.isMissing(3)}), "nyn");
    const QStringList texts{
        raisedText([&] { missing.setMissing(0); }), raisedText([&] { missing.unsetMissing(0, 1); }),
        raisedText([&] { missing.missingIds(); }), raisedText([&] { missing.missingPixels(); })};
    QCOMPARE(texts.join('|'), QString("isValid()|isValid()|md->type == MissingData::Vector|"
                                      "md->type == MissingData::Raster"));
    GeoProps grid;
    grid.type = GeoProps::Raster;
    grid.rows = 3;
    grid.columns = 5;
    QCOMPARE(pixels(VORN_MissingData(grid), 2), QByteArray("0000"));
}

void TestMissingData::setsAndUnsets()
{
    for (const auto form : {MissingData::Raster, MissingData::Vector}) {
        VORN_MissingData missing(form, 12);
        for (const int id : {3, 11, 3})
            missing.setMissing(id);
        QCOMPARE(missing.missingCount(), 2);
        QCOMPARE(answers({missing.isMissing(3), missing.isMissing(11), missing.isMissing(4)}),
                 "yyn");
        missing.unsetMissing(3, 12);
        missing.unsetMissing(3, 12);
        QCOMPARE(missing.missingCount(), 1);
        QCOMPARE(answers({missing.isMissing(3), missing.isMissing(11)}), "ny");
        if (form == MissingData::Raster) {
            missing.setMissing(16);
            missing.setMissing(-1);
            QCOMPARE(answers({missing.isMissing(16), missing.isMissing(-1)}), "nn");
            QCOMPARE(pixels(missing, 2), QByteArray("0008"));
        }
        missing.clearMissing();
        QCOMPARE(answers({missing.noneMissing(), missing.isMissing(11)}), "yn");
    }
}

void TestMissingData::allMissingIsAShortcut()
{
    VORN_MissingData vector(MissingData::Vector, 5);
    vector.setAllMissing(5);
    QCOMPARE(answers({vector.isAllMissing(), vector.isMissing(4)}), "yy");
    QVERIFY(vector.missingIds().isEmpty());
    vector.setMissing(2);
    QCOMPARE(vector.missingCount(), 5);
    vector.unsetMissing(2, 5);
    QCOMPARE(vector.missingIds(), (QSet<int>{0, 1, 3, 4}));
    QCOMPARE(vector.missingCount(), 4);

    VORN_MissingData cells = raster(12, {});
    cells.setAllMissing(12);
    QCOMPARE(pixels(cells, 2), QByteArray("0000"));
    cells.unsetMissing(0, 12);
    QCOMPARE(pixels(cells, 2), QByteArray("feff"));
    QCOMPARE(cells.missingCount(), 11);

    cells.setAllMissing(12);
    cells.clearMissing();
    QVERIFY(cells.isAllMissing());
    QCOMPARE(cells.missingCount(), 0);
}

void TestMissingData::unionsOfTheSameForm()
{
    const VORN_MissingData sum =
        VORN_MissingData(QSet<int>{1, 2}) + VORN_MissingData(QSet<int>{2, 5});
    QCOMPARE(sum.missingIds(), (QSet<int>{1, 2, 5}));
    QCOMPARE(sum.missingCount(), 3);
    const VORN_MissingData cells = raster(12, {0, 1}) + raster(12, {1, 11});
    QCOMPARE(pixels(cells, 2), QByteArray("0308"));
    QCOMPARE(cells.missingCount(), 3);
    QCOMPARE(pixels(raster(12, {0}) + raster(40, {1}), 2), QByteArray("0100")); // unchanged
    // Copies detach.
    VORN_MissingData first(QSet<int>{1});
    VORN_MissingData second = first;
    second.setMissing(2);
    VORN_MissingData third = raster(8, {1});
    const VORN_MissingData fourth = third;
    third.clearMissing();
    QCOMPARE(answers({first.isMissing(2), second.isMissing(2), fourth.isMissing(1)}), "nyy");
}

void TestMissingData::unionsWithNothingAndWithAll()
{
    VORN_MissingData all(MissingData::Vector, 4);
    all.setAllMissing(4);
    VORN_MissingData sum;
    sum += VORN_MissingData(QSet<int>{3});
    QCOMPARE(sum.missingIds(), QSet<int>{3});
    sum += VORN_MissingData();
    QCOMPARE(sum.missingCount(), 1);
    sum += all;
    QVERIFY(sum.isAllMissing());
    QCOMPARE(sum.missingCount(), 4);
    QVERIFY(sum.missingIds().isEmpty());
    sum += raster(8, {1}); // nothing can be added to all, whatever its form
    QVERIFY(sum.isAllMissing());
    VORN_MissingData fresh;
    fresh += all;
    fresh.unsetMissing(0, 4);
    QCOMPARE(fresh.missingIds(), (QSet<int>{1, 2, 3}));
    QCOMPARE(raisedText([] { VORN_MissingData(QSet<int>{1}) + raster(8, {}); }),
             QString("md->type != MissingData::Vector"));
    QCOMPARE(raisedText([] { raster(8, {}) + VORN_MissingData(QSet<int>{1}); }),
             QString("md->type != MissingData::Raster"));
}

void TestMissingData::checkersAddUpContainers()
{
    const VORN_DataContainer first(VORN_DataContainer::DoubleData, QVector<double>{1, 2, 3},
                                   QSet<int>{0});
    const VORN_DataContainer second(VORN_DataContainer::Int32Data, QVector<int>{1, 2, 3},
                                    QSet<int>{2});
    VORN_MissingValueChecker checker(first);
    QVERIFY(checker.addDataset(second));
    QCOMPARE(answers({checker.checkId(0), checker.checkId(1), checker.checkId(2)}), "yny");
    QVERIFY(!checker.addDataset(VORN_DataContainer()));
    QVERIFY(!checker.addDataset(VORN_ConstDataContainer()));
    VORN_MissingValueChecker cells;
    cells.addMissingData(raster(8, {1}));
    QVERIFY(!cells.addDataset(
        VORN_DataContainer(VORN_DataContainer::DoubleData, QVector<double>(40), raster(40, {2}))));
    QVERIFY(!cells.checkId(2));
}

void TestMissingData::flagsMatchTheirOwnWidth()
{
    const MissingFlag flag(qint16(-1));
    const half nan = half::fromBits(0x7E00);
    QCOMPARE(answers({flag.matches(qint16(-1)), flag.matches(qint16(0)),
                      flag.matches(quint16(0xFFFF)), MissingFlag().matches(0.0),
                      MissingFlag(qQNaN()).matches(qQNaN()), MissingFlag(nan).matches(nan)}),
             "ynnnny");
    QCOMPARE(float(half::fromBits(0x3C00)), 1.0f);
}

void TestMissingData::flagsStream()
{
    const QVector<QPair<MissingFlag, const char *>> forms{
        {MissingFlag(), "00000000"},
        {MissingFlag(-2.0), "00000100c000000000000000"},
        {MissingFlag(half::fromBits(0x7BFF)), "000003007bff"},
        {MissingFlag(qint8(-2)), "00001000fe"},
        {MissingFlag(quint8(255)), "00001400ff"},
        {MissingFlag(qint16(-2)), "00002000fffe"},
        {MissingFlag(quint16(0xFFFE)), "00002400fffe"},
        {MissingFlag(qint32(-2)), "00003000fffffffe"},
        {MissingFlag(quint32(7)), "0000340000000007"},
        {MissingFlag(qint64(-2)), "00004000fffffffffffffffe"},
        {MissingFlag(quint64(7)), "000044000000000000000007"}};
    MissingFlag read;
    for (const auto &[flag, hex] : forms) {
        QCOMPARE(streamed(flag).toHex(), QByteArray(hex));
        QVERIFY2(isRead(streamed(flag), read), hex);
        QCOMPARE(streamed(read).toHex(), QByteArray(hex));
    }
    QCOMPARE(raisedText([&] { isRead(QByteArray::fromHex("00000500"), read); }),
             QString("Invalid data type"));
    QCOMPARE(raisedText([&] { streamed(read); }), QString("Invalid data type"));
}

QTEST_GUILESS_MAIN(TestMissingData)
#include "tst_missingData.moc"
