// SPDX-License-Identifier: MIT
#include <QBuffer>
#include <QTemporaryDir>
#include "Common/DataManager.h"
#include "Common/detail/streams.h"
#include "datainterface/DataBlocks.h"
#include "support/checks.h"
#include "support/memoryFile.h"
#include "support/support.h"

using namespace datainterface;

namespace {

QVector<int> gReports;
int gReportsUntilCancel = -1;

bool report(int percent, const char *text)
{
    gReports.append(text ? -1 : percent);
    return gReports.size() != gReportsUntilCancel;
}

QByteArray text(int i)
{
    return QByteArray("block ") + QByteArray::number(i) + QByteArray(i % 50, 'x');
}

} // namespace

class TestProjectBlocks : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void init();
    void plainFormIsFixed();
    void everyLevelIsReadBack();
    void cutFormsAreRefused();
    void absurdFormsAreRefused_data();
    void absurdFormsAreRefused();
    void counterGoesOnFromTheFile();
    void blocksStandInTheOrderOfTheStream();
    void savingReportsEveryThousandthAndLoadingEveryBlock();
    void emptyStoreReportsNothing();
    void cancelEndsBoth();
    void devicesThatFail();

private:
    QByteArray saved(bool compress);
    bool restore(const QByteArray &bytes, bool compressed);

    QTemporaryDir mDir;
    MemoryDisk mDisk;
    std::unique_ptr<DataManager> mStore;
};

void TestProjectBlocks::init()
{
    gReports.clear();
    gReportsUntilCancel = -1;
    mDisk = MemoryDisk();
    mStore = std::make_unique<DataManager>(std::make_unique<MemoryFile>(&mDisk));
    mStore->Initialize(mDir.path(), 1000);
}

QByteArray TestProjectBlocks::saved(bool compress)
{
    QByteArray bytes;
    BytesWriter out(&bytes);
    return mStore->SaveProjectData(out, compress, nullptr) ? bytes : QByteArray("failed");
}

bool TestProjectBlocks::restore(const QByteArray &bytes, bool compressed)
{
    mStore->Reset();
    BytesReader in(bytes);
    return mStore->RestoreProjectData(in, compressed, &report);
}

void TestProjectBlocks::plainFormIsFixed()
{
    mStore->SaveDataBlock("ab");
    mStore->SaveDataBlock("gone");
    mStore->SaveDataBlock(QByteArray());
    mStore->DeleteDataBlock(1);
    QCOMPARE(saved(false).toHex(' '), QByteArray("00 00 00 03 00 00 00 02 "
                                                 "00 00 00 00 00 00 00 02 61 62 "
                                                 "00 00 00 02 00 00 00 00"));
    QVERIFY(mStore->Inspect().cachedIds == (QVector<int>{2, 0})); // saving fills the cache again
}

void TestProjectBlocks::everyLevelIsReadBack()
{
    const QList<QByteArray> blocks{QByteArray(), "a", QByteArray(100000, 'z'),
                                   text(7).repeated(50)};
    for (const int level : {0, 1, 6, 9, 12}) {
        const InCase inLevel(level);
        mStore->Reset();
        mStore->SetPackLevel(level);
        mStore->SetPackLevel(13);
        mStore->SetPackLevel(-1);
        for (const QByteArray &block : blocks)
            mStore->SaveDataBlock(block);
        const QByteArray bytes = saved(true);
        BytesReader in(bytes);
        qint32 number = 0;
        in >> number >> number;
        for (const QByteArray &block : blocks) {
            QByteArray packed;
            in >> number >> packed;
            QCOMPARE(qUncompress(packed), block);
            QVERIFY(packed == qCompress(block, 9) || level > 0);
        }
        QVERIFY(restore(bytes, true));
        for (int i = 0; i < blocks.size(); ++i) {
            QByteArray block;
            QVERIFY(mStore->ReadDataBlock(i, block));
            QCOMPARE(block, blocks[i]);
        }
        QCOMPARE(saved(true), bytes); // a project loaded and saved again is the same file
    }
}

void TestProjectBlocks::cutFormsAreRefused()
{
    for (const bool compress : {false, true}) {
        mStore->Reset();
        for (int i = 0; i < 3; ++i)
            mStore->SaveDataBlock(text(i));
        const QByteArray bytes = saved(compress);
        for (int length = 0; length < bytes.size(); ++length)
            QVERIFY2(!restore(bytes.left(length), compress), QByteArray::number(length));
        QVERIFY(restore(bytes, compress));
    }
}

void TestProjectBlocks::absurdFormsAreRefused_data()
{
    QTest::addColumn<QByteArray>("hex");
    QTest::newRow("negative counter") << QByteArray("ffffffff00000000");
    QTest::newRow("negative count") << QByteArray("00000001ffffffff");
    QTest::newRow("count beyond the file") << QByteArray("000000017fffffff");
    QTest::newRow("negative id") << QByteArray("0000000100000001ffffffff0000000400000000");
    QTest::newRow("last id of all") << QByteArray("00000001000000017fffffff0000000400000000");
    QTest::newRow("contents beyond the file") << QByteArray("00000001000000010000000070000000");
    QTest::newRow("not packed") << QByteArray("000000010000000100000000000000060000000a6162");
    QTest::newRow("unpacked length out of all proportion")
        << QByteArray("0000000100000001000000000000000c7fffff00789c030000000001");
    QTest::newRow("unpacked length too short")
        << QByteArray("0000000100000001000000000000000c00000001789c030000000001");
}

void TestProjectBlocks::absurdFormsAreRefused()
{
    QFETCH(QByteArray, hex);
    QVERIFY(!restore(QByteArray::fromHex(hex), true));
}

void TestProjectBlocks::counterGoesOnFromTheFile()
{
    // Of a store that was not reset, the further one of both counters.
    for (int i = 0; i < 10; ++i)
        QCOMPARE(mStore->SaveDataBlock("old"), i);
    BytesReader behind(QByteArray::fromHex("00000002 00000001 00000001 00000001 61"));
    QVERIFY(mStore->RestoreProjectData(behind, false, nullptr));
    QCOMPARE(mStore->SaveDataBlock("new"), 10);
    mStore->Reset();

    QVERIFY(restore(QByteArray::fromHex("0000006400000001000000050000000161"), false));
    QCOMPARE(mStore->SaveDataBlock("b"), 100);
    QByteArray bytes;
    QVERIFY(mStore->ReadDataBlock(5, bytes));
    QCOMPARE(bytes, QByteArray("a"));
    QVERIFY(restore(QByteArray::fromHex("00000001000000020000000000000001610000000000000002"
                                        "6263"),
                    false));
    QVERIFY(mStore->ReadDataBlock(0, bytes));
    QCOMPARE(bytes, QByteArray("bc")); // the later block of an id
    // A counter behind the ids would give one of them out again.
    QVERIFY(restore(QByteArray::fromHex("0000000000000001000000050000000161"), false));
    QCOMPARE(mStore->SaveDataBlock("b"), 6);
}

void TestProjectBlocks::blocksStandInTheOrderOfTheStream()
{
    QVERIFY(restore(QByteArray::fromHex("00000009000000020000000700000003616263000000020000000164"),
                    false));
    const auto extents = mStore->Inspect().extents;
    QCOMPARE(extents.size(), 2);
    QCOMPARE(extents[0].id, 7);
    QCOMPARE(extents[1].id, 2);
    QCOMPARE(extents[1].position, qint64(3));
    QCOMPARE(mDisk.bytes, QByteArray("abcd"));
    QVERIFY(mStore->Inspect().cachedIds.isEmpty());
}

void TestProjectBlocks::savingReportsEveryThousandthAndLoadingEveryBlock()
{
    for (int i = 0; i < 5000; ++i)
        mStore->SaveDataBlock(text(i));
    QByteArray bytes;
    BytesWriter out(&bytes);
    QVERIFY(mStore->SaveProjectData(out, false, &report));
    QCOMPARE(gReports.size(), 1000);
    QCOMPARE(gReports.first(), 0);
    QCOMPARE(gReports[10], 1); // block 50 of 5000
    QCOMPARE(gReports.last(), 99);
    gReports.clear();
    QVERIFY(restore(bytes, false));
    QCOMPARE(gReports.size(), 5000);
    QCOMPARE(gReports.last(), 99);
}

void TestProjectBlocks::emptyStoreReportsNothing()
{
    mStore->SaveDataBlock("a");
    mStore->DeleteDataBlock(0);
    QByteArray bytes;
    BytesWriter out(&bytes);
    QVERIFY(mStore->SaveProjectData(out, true, &report));
    QCOMPARE(bytes.toHex(), QByteArray("0000000100000000"));
    QVERIFY(restore(bytes, true));
    QVERIFY(gReports.isEmpty());
}

void TestProjectBlocks::cancelEndsBoth()
{
    for (int i = 0; i < 10; ++i)
        mStore->SaveDataBlock(text(i));
    const QByteArray bytes = saved(true);
    gReportsUntilCancel = 3;
    QByteArray partial;
    BytesWriter out(&partial);
    QVERIFY(!mStore->SaveProjectData(out, true, &report));
    QCOMPARE(gReports.size(), 3);
    gReports.clear();
    QVERIFY(!restore(bytes, true));
    QCOMPARE(gReports.size(), 3);
}

void TestProjectBlocks::devicesThatFail()
{
    for (int i = 0; i < 10; ++i)
        mStore->SaveDataBlock(text(i));
    QBuffer closed;
    QDataStream out(&closed);
    QTest::ignoreMessage(QtWarningMsg, "QIODevice::write (QBuffer): device not open");
    QVERIFY(!mStore->SaveProjectData(out, true, nullptr));
    const QByteArray bytes = saved(false);
    DataManager store; // without a scratch file
    BytesReader in(bytes);
    QCOMPARE(raisedText([&] { store.RestoreProjectData(in, false, nullptr); }),
             QString("File stream not open"));
    mDisk.reserves = false; // shows only when the last of it is written
    mDisk.room = 50;
    QVERIFY(!restore(bytes, false));
}

QTEST_GUILESS_MAIN(TestProjectBlocks)
#include "tst_projectBlocks.moc"
