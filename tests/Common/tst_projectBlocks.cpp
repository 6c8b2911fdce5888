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
    void absurdFormsAreRefused();
    void counterGoesOnFromTheFile();
    void savingReportsEveryThousandthAndLoadingEveryBlock();
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

void TestProjectBlocks::absurdFormsAreRefused()
{
    for (const char *hex : {"ffffffff 00000000", // counter
                            "00000001 ffffffff", // counts
                            "00000001 7fffffff",
                            "00000001 00000001 ffffffff 00000004 00000000", // ids
                            "00000001 00000001 7fffffff 00000004 00000000",
                            "00000001 00000001 00000000 70000000",              // beyond the file
                            "00000001 00000001 00000000 00000006 0000000a6162", // not packed
                            // Unpacked lengths: out of all proportion, too short.
                            "00000001 00000001 00000000 0000000c 7fffff00789c030000000001",
                            "00000001 00000001 00000000 0000000c 00000001789c030000000001"})
        QVERIFY2(!restore(QByteArray::fromHex(hex), true), hex);
}

void TestProjectBlocks::counterGoesOnFromTheFile()
{
    // Of a store that was not reset, the further one of both counters.
    for (int i = 0; i < 10; ++i)
        QCOMPARE(mStore->SaveDataBlock("old"), i);
    BytesReader behind(QByteArray::fromHex("00000002 00000001 00000001 00000001 61"));
    QVERIFY(mStore->RestoreProjectData(behind, false, nullptr));
    QCOMPARE(mStore->SaveDataBlock("new"), 10);

    QVERIFY(restore(QByteArray::fromHex("00000064 00000002 00000005 00000003 616263"
                                        "00000002 00000001 64"),
                    false));
    QCOMPARE(mDisk.bytes, QByteArray("abcd")); // in the order of the stream
    QCOMPARE(mStore->Inspect().extents[0].id, 5);
    QVERIFY(mStore->Inspect().cachedIds.isEmpty());
    QCOMPARE(mStore->SaveDataBlock("b"), 100);
    QVERIFY(restore(QByteArray::fromHex("00000001 00000002 00000000 00000001 61"
                                        "00000000 00000002 6263"),
                    false));
    QByteArray bytes;
    QVERIFY(mStore->ReadDataBlock(0, bytes));
    QCOMPARE(bytes, QByteArray("bc")); // the later block of an id
    // A counter behind the ids would give one of them out again.
    QVERIFY(restore(QByteArray::fromHex("00000000 00000001 00000005 00000001 61"), false));
    QCOMPARE(mStore->SaveDataBlock("b"), 6);
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
