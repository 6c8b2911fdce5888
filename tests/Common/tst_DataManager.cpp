// SPDX-License-Identifier: MIT
#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>
#include <random>
#include "Common/DataManager.h"
#include "datainterface/DataBlocks.h"
#include "support/checks.h"
#include "support/memoryFile.h"
#include "support/support.h"

using Extent = datainterface::ExtentMap::Extent;
using Model = QMap<int, QByteArray>;

namespace {

QString describe(const QVector<Extent> &extents)
{
    QStringList parts;
    for (const Extent &extent : extents) {
        const QString owner = extent.inUse ? QString::number(extent.id) : QStringLiteral("free");
        parts.append(QStringLiteral("%1:%2+%3").arg(owner).arg(extent.position).arg(extent.size));
    }
    return parts.join(' ');
}

QByteArray bytesOf(int size, int seed)
{
    QByteArray bytes(size, '\0');
    for (int i = 0; i < size; ++i)
        bytes[i] = static_cast<char>(seed * 31 + i * 7);
    return bytes;
}

// "s10" saves 10 bytes, "r2=5" gives block 2 five bytes, "d3" deletes block 3.
void run(DataManager &store, const QString &script)
{
    const QStringList steps = script.split(' ', Qt::SkipEmptyParts);
    for (const QString &step : steps) {
        const int id = step.mid(1).section('=', 0, 0).toInt();
        if (step.startsWith('s'))
            store.SaveDataBlock(bytesOf(id, id));
        else if (step.startsWith('d'))
            store.DeleteDataBlock(id);
        else
            store.ReplaceDataBlock(id, bytesOf(step.section('=', 1).toInt(), id));
    }
}

// What must hold of the books whatever has happened; empty when it does.
QString faultsOf(const DataManager::State &state)
{
    qint64 end = 0;
    QStringList freeInChain;
    for (const Extent &extent : state.extents) {
        if (extent.position != end)
            return QStringLiteral("gap before ") + describe({extent});
        end += extent.size;
        if (!extent.inUse)
            freeInChain.append(describe({extent}));
    }
    QStringList freeInList;
    for (int i = 0; i < state.freeList.size(); ++i) {
        if (i > 0 && state.freeList[i].size < state.freeList[i - 1].size)
            return QStringLiteral("free list out of order");
        freeInList.append(describe({state.freeList[i]}));
    }
    std::sort(freeInChain.begin(), freeInChain.end());
    std::sort(freeInList.begin(), freeInList.end());
    return freeInChain == freeInList ? QString() : QStringLiteral("free list and chain differ");
}

QString differences(DataManager &store, const Model &model)
{
    for (auto block = model.begin(); block != model.end(); ++block) {
        QByteArray bytes;
        if (!store.ReadDataBlock(block.key(), bytes))
            return QStringLiteral("block %1 is gone").arg(block.key());
        if (bytes != block.value())
            return QStringLiteral("block %1 has other contents").arg(block.key());
    }
    return QString();
}

} // namespace

class TestDataManager : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void init();
    void extentsArePlacedAndJoined();
    void cacheEvictsTheLeastRecentlyUsed();
    void entryThatCostsTheWholeLimitIsKept();
    void unknownIdsLeaveTheArrayAlone();
    void walkAgreesWithAMap();
    void failedWriteLosesNothing();
    void failedReadIsFalseAndEmpty();
    void diskThatFillsUpShowsBeforeTheTailIsFull();
    void scratchFileComesAndGoes();
    void directoryThatCannotBeMadeRaises();

private:
    std::unique_ptr<DataManager> makeStore(int cacheBytes);

    QTemporaryDir mDir;
    MemoryDisk mDisk;
};

void TestDataManager::init()
{
    mDisk = MemoryDisk();
}

std::unique_ptr<DataManager> TestDataManager::makeStore(int cacheBytes)
{
    auto store = std::make_unique<DataManager>(std::make_unique<MemoryFile>(&mDisk));
    store->Initialize(mDir.path(), cacheBytes);
    return store;
}

void TestDataManager::extentsArePlacedAndJoined()
{
    const QVector<QPair<const char *, QString>> cases{
        {"s10 s20 d1 s30", "0:0+10 free:10+20 2:30+30"}, // the end stays free
        {"s10 s20 d0 d1", "free:0+30"},                  // and joins backwards
        {"s10 s20 s30 d1 s20", "0:0+10 3:10+20 2:30+30"},
        {"s10 s20 s30 d1 s7", "0:0+10 3:10+7 free:17+13 2:30+30"},
        {"s50 s1 s20 s1 s30 s1 d0 d2 d4 s15", // the smallest hole that fits
         "free:0+50 1:50+1 6:51+15 free:66+5 3:71+1 free:72+30 5:102+1"},
        {"s10 s20 r0=10", "0:0+10 1:10+20"},
        {"s10 s50 s20 d1 r0=30", "free:0+60 2:60+20 0:80+30"},      // grows at the end past a hole
        {"s10 s20 r1=25", "0:0+10 free:10+20 1:30+25"},             // behind its own place
        {"s10 r0=4 s8", "0:0+4 free:4+6 1:10+8"},                   // the tail of the last is last
        {"s10 s20 s5 d1 r0=4", "0:0+4 free:4+6 free:10+20 2:30+5"}, // does not join what is behind
        {"s10 s20 s5 r0=4 d1", "0:0+4 free:4+26 2:30+5"},           // until that is freed
        {"s10 s20 s5 d1 r0=4 d0", "free:0+10 free:10+20 2:30+5"},   // direct neighbours alone
        {"s10 s5 d0 s0", "2:0+0 free:0+10 1:10+5"},                 // empty blocks split nothing
        {"s10 s5 r0=0", "0:0+0 free:0+10 1:10+5"}};
    for (const auto &[script, extents] : cases) {
        const auto store = makeStore(0); // every block goes through
        run(*store, script);
        QCOMPARE(describe(store->Inspect().extents), extents);
        QCOMPARE(faultsOf(store->Inspect()), QString());
    }
    for (const char *freed : {"d0 d1 d2", "d0 d2 d1", "d1 d0 d2", "d2 d0 d1", "d2 d1 d0"}) {
        const auto store = makeStore(0);
        run(*store, QString("s10 s20 s30 s5 ") + freed);
        QCOMPARE(describe(store->Inspect().extents), QString("free:0+60 3:60+5"));
    }
    const auto store = makeStore(0); // among equal holes the last freed is taken
    run(*store, "s10 s1 s10 s1 s10 s1 d2 d0 d4");
    QCOMPARE(describe(store->Inspect().freeList), QString("free:22+10 free:0+10 free:11+10"));
    run(*store, "s9");
    QCOMPARE(describe(store->Inspect().freeList), QString("free:31+1 free:0+10 free:11+10"));
}

void TestDataManager::cacheEvictsTheLeastRecentlyUsed()
{
    const auto store = makeStore(3 * 26);
    run(*store, "s10 s10 s10");
    QByteArray bytes;
    QVERIFY(store->ReadDataBlock(0, bytes));
    QCOMPARE(store->Inspect().cachedIds, (QVector<int>{0, 2, 1}));
    QCOMPARE(store->Inspect().extents.size(), 0);
    run(*store, "s10");
    QCOMPARE(store->Inspect().cachedIds, (QVector<int>{3, 0, 2}));
    QCOMPARE(describe(store->Inspect().extents), QString("1:0+10"));
    run(*store, "r0=36"); // costs two entries: its own place and that of the oldest
    QCOMPARE(store->Inspect().cachedIds, (QVector<int>{0, 3}));
    QCOMPARE(describe(store->Inspect().extents), QString("1:0+10 2:10+10"));
    QVERIFY(store->ReadDataBlock(1, bytes)); // a clean copy, which pushes out the oldest again
    QCOMPARE(store->Inspect().cachedIds, (QVector<int>{1, 0}));
    QCOMPARE(bytes, bytesOf(10, 10));
}

void TestDataManager::entryThatCostsTheWholeLimitIsKept()
{
    const auto store = makeStore(100);
    run(*store, "s84 d0"); // what lives and dies in the cache never reaches the file
    QVERIFY(store->Inspect().extents.isEmpty());
    run(*store, "s84");
    QCOMPARE(store->Inspect().cacheCost, qint64(100));
    QCOMPARE(mDisk.writes, 0);
    run(*store, "r1=85"); // one byte more is on the disk when the call returns
    QCOMPARE(store->Inspect().cacheCost, qint64(0));
    QCOMPARE(mDisk.bytes, bytesOf(85, 1));
}

void TestDataManager::unknownIdsLeaveTheArrayAlone()
{
    const auto store = makeStore(1000);
    QByteArray bytes("kept");
    for (const int id :
         {-1, 0, 255, 256, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()}) {
        const InCase inId(id);
        QVERIFY(!store->ReadDataBlock(id, bytes));
        QVERIFY(!store->DeleteDataBlock(id));
    }
    QCOMPARE(bytes, QByteArray("kept"));
    char foreign[] = "here"; // copied, as it may go
    store->SaveDataBlock(QByteArray::fromRawData(foreign, 4));
    foreign[0] = 'w';
    QVERIFY(store->ReadDataBlock(0, bytes));
    QCOMPARE(bytes, "here");
}

void TestDataManager::walkAgreesWithAMap()
{
    const unsigned seed = walkSeed();
    std::mt19937 random(seed);
    const auto below = [&random](int end) {
        return std::uniform_int_distribution<int>(0, end - 1)(random);
    };
    // Bytes of the cache and of the largest block, which once goes beyond the cache and the tail.
    for (const auto &[cacheBytes, largest] :
         {QPair<int, int>(2000, 120), {0, 60}, {100000, 300000}, {10000000, 100}}) {
        const InCase inCache(cacheBytes);
        DataManager store; // over a real file
        store.Initialize(mDir.path(), cacheBytes);
        Model model;
        for (int step = 0; step < 3000; ++step) {
            const QByteArray bytes = bytesOf(below(largest), step);
            const int what = below(10);
            const int at = model.isEmpty() ? 0 : below(model.size());
            const int id = model.isEmpty() ? -1 : std::next(model.begin(), at).key();
            if (what < 3 || model.isEmpty()) {
                model.insert(store.SaveDataBlock(bytes), bytes);
            } else if (what < 6) {
                store.ReplaceDataBlock(id, bytes);
                model.insert(id, bytes);
            } else if (what < 8) {
                QByteArray found;
                QVERIFY(store.ReadDataBlock(id, found));
                QCOMPARE(found, model.value(id));
            } else if (model.size() > 40) {
                store.DeleteDataBlock(id);
                model.remove(id);
            }
            if (step % 100 == 0)
                QCOMPARE(faultsOf(store.Inspect()), QString());
        }
        QVERIFY(store.Inspect().cacheCost <= cacheBytes);
        QCOMPARE(differences(store, model), QString());
    }
}

// The same walk with a disk that fails from its nth write on, for every n: the failing call changes
// nothing, can be made again when there is room, and no block is lost.
void TestDataManager::failedWriteLosesNothing()
{
    bool failed[] = {true, true}; // by whether the disk says when it is full
    int failures = 0;
    for (int n = 0; failed[0] || failed[1]; ++n) {
        const bool reserves = n % 2 == 1;
        mDisk = MemoryDisk();
        mDisk.reserves = reserves;
        mDisk.writesUntilFailure = n / 2;
        const auto store = makeStore(100);
        Model model;
        failed[reserves] = false;
        for (int step = 0; step < 40; ++step) {
            const int size = step % 5 == 4 ? 40000 : (step * 37) % 120;
            const QByteArray bytes = bytesOf(size, step);
            const bool isNew = step < 10 || step % 3 == 0;
            const int id = isNew ? model.size() : step % model.size();
            const auto call = [&] {
                if (isNew)
                    QCOMPARE(store->SaveDataBlock(bytes), id);
                else
                    store->ReplaceDataBlock(id, bytes);
            };
            if (raisedText(call) == "result") {
                failed[reserves] = true;
                ++failures;
                QCOMPARE(faultsOf(store->Inspect()), QString());
                QCOMPARE(differences(*store, model), QString()); // on the disk that is full
                mDisk.writesUntilFailure = -1;
                call();
            }
            model.insert(id, bytes);
        }
        QCOMPARE(differences(*store, model), QString());
    }
    QVERIFY(failures > 20);
}

void TestDataManager::failedReadIsFalseAndEmpty()
{
    const auto store = makeStore(0);
    run(*store, "s40000");
    mDisk.readsFail = true;
    QByteArray bytes("gone");
    QVERIFY(!store->ReadDataBlock(0, bytes));
    QVERIFY(bytes.isEmpty());
    mDisk.readsFail = false;
    QVERIFY(store->ReadDataBlock(0, bytes));
}

void TestDataManager::diskThatFillsUpShowsBeforeTheTailIsFull()
{
    mDisk.room = 1000;
    const auto store = makeStore(116);
    int saved = 0;
    const auto fill = [&] {
        for (; saved < 20; ++saved)
            store->SaveDataBlock(bytesOf(100, saved));
    };
    QCOMPARE(raisedText(fill), QString("result"));
    QCOMPARE(saved, 11); // ten in the file, one in the cache
    QCOMPARE(differences(*store, {{10, bytesOf(100, 10)}}), QString());
}

void TestDataManager::scratchFileComesAndGoes()
{
    QTemporaryDir parent;
    const QDir directory(parent.filePath("made/for it"));
    InitializeDataManager(directory.path(), 100);
    const QFileInfoList files = directory.entryInfoList(QDir::Files);
    QCOMPARE(files.size(), 1);
    QVERIFY(files.first().fileName().startsWith("DM"));
    QVERIFY(!(files.first().permissions()
              & (QFile::ReadGroup | QFile::ReadOther | QFile::WriteGroup | QFile::WriteOther)));
    for (int id : {0, 1})
        QCOMPARE(SaveDataBlock("a"), id);
    ResetDataManager();
    QByteArray bytes;
    QVERIFY(!ReadDataBlock(0, bytes));
    QCOMPARE(SaveDataBlock("c"), 0);
    QCOMPARE(directory.entryList(QDir::Files).size(), 1);
    ClearDataManager();
    QVERIFY(directory.entryList(QDir::Files).isEmpty());
}

void TestDataManager::directoryThatCannotBeMadeRaises()
{
    DataManager store; // without a file only the cache holds
    QCOMPARE(store.SaveDataBlock(QByteArray(84, 'a')), 0);
    QCOMPARE(raisedText([&] { store.SaveDataBlock("b"); }), QString("result"));
    QByteArray bytes;
    QVERIFY(store.ReadDataBlock(0, bytes));
    QCOMPARE(bytes, QByteArray(84, 'a'));
    QCOMPARE(raisedText([&] { store.Initialize("/proc/nowhere", 100); }), QString("opened"));
    QCOMPARE(raisedText([&] { store.Reset(); }), QString("opened"));
}

QTEST_GUILESS_MAIN(TestDataManager)
#include "tst_DataManager.moc"
