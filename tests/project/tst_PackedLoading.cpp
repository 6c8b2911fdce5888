// SPDX-License-Identifier: MIT
// Projects whose blocks stay packed in the file: what happens when the file is damaged or changed.
// That packed and whole loading give the same values is checked by tst_ProjectWalk.
#include <QtEndian>
#include <QtTest>
#include <cstdio>
#include "Common/detail/streams.h"
#include "datainterface/DataAPI.h"
#include "datainterface/DataBlocks.h"
#include "datainterface/ProjectAPI.h"
#include "datainterface/RasterAPI.h"
#include "datainterface/WeightsAPI.h"
#include "support/checks.h"
#include "support/model.h"
#include "support/support.h"

using namespace datainterface;

namespace {

const QString kUnread = QStringLiteral("not read");

bool loadPacked(const QString &path)
{
    VORN_SetProjectLoading(true);
    const bool isLoaded = VORN_LoadProject(path);
    VORN_SetProjectLoading(false);
    return isLoaded;
}

void writeFile(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
}

/// A project with values of every kind of container, and what its public calls return.
class Sample {
public:
    explicit Sample(const TestModel &model) : path(model.path(QStringLiteral("project")))
    {
        const int points = addPoints(40);
        const auto add = [&](StorageType storage, DataType type) {
            return VORN_NewVectorDataset(points, QStringLiteral("a"), storage, type, 1, QString());
        };
        for (const StorageType storage : {TimeSlice, TimeSeries})
            for (const DataType type : {IntegerType, DecimalType, StringType})
                datasets.append(add(storage, type));
        for (unsigned int object = 0; object < 40; ++object) {
            for (const qint64 start : {0, 10}) {
                const Interval span{start, start + 10, true, false};
                const int value = static_cast<int>(object * object) + static_cast<int>(start);
                for (int i = 0; i < datasets.size(); i += 3) {
                    VORN_AddDataValue(datasets[i], 0, object, span, value, true, true);
                    VORN_AddDataValue(datasets[i + 1], 0, object, span, value / 8.0, true, true);
                    VORN_AddDataValue(datasets[i + 2], 0, object, span,
                                      QStringLiteral("text %1").arg(value), true, true);
                }
            }
        }
        grid = VORN_NewRasterDataset(addGrid(20, 30), QStringLiteral("b"), RasterIntegerType, 1, 32,
                                     QString());
        QVector<int> cells(600);
        for (int i = 0; i < cells.size(); ++i)
            cells[i] = i * i;
        VORN_AddRasterValues(grid, 0, {0, 100, true, true}, cells, 2, true, true);
        weights = VORN_CreateNearestNeighborWeightSet(points, QStringLiteral("nearest"), QString(),
                                                      3, ConstantWeight, false, 1, 1);
        VORN_PrecalculateSpatialWeights(weights, 5, false);
        QVERIFY(VORN_SaveProject(path));
        bytes = fileBytes(path);
    }

    /// One text for each call; kUnread for one that returned false or raised.
    QStringList read() const
    {
        QStringList values;
        for (const int id : datasets)
            for (const qint64 time : {5, 15})
                values.append(outcome([&] { return valuesAt(id, time); }));
        values.append(outcome([&] {
            qint64 cell = 0;
            return VORN_GetRasterValue(grid, 0, 29, 19, 5, cell) ? QString::number(cell) : kUnread;
        }));
        for (int object = 0; object < 40; ++object)
            values.append(outcome([&] {
                QVector<neighborDatum> neighbors;
                if (!VORN_GetSpatialWeights(weights, static_cast<unsigned>(object), 5, neighbors,
                                            VORN_MissingData()))
                    return kUnread;
                QString text;
                for (const neighborDatum &neighbor : neighbors)
                    text += QString::number(neighbor.id) + QLatin1Char(' ');
                return text;
            }));
        return values;
    }

    QString path;
    QByteArray bytes;

private:
    template <class Call> static QString outcome(Call call)
    {
        QString text;
        return raisedText([&] { text = call(); }).isEmpty() ? text : kUnread;
    }
    static QString valuesAt(int id, qint64 time)
    {
        QVector<QString> texts;
        QVector<double> numbers;
        QSet<int> missing;
        const bool isText = VORN_GetDatasetProperties(id).dataType == StringType;
        if (!(isText ? VORN_GetDataValues(id, 0, time, texts, missing)
                     : VORN_GetNumericValues(id, 0, time, numbers, missing)))
            return kUnread;
        QString all;
        QDebug(&all) << texts << numbers << missing.size();
        return all;
    }

    QVector<int> datasets;
    int grid = -1;
    int weights = -1;
};

struct Stored {
    int id;
    int position; ///< in the project, of the packed bytes
    int size;
};

/// The blocks of the saved model.
QVector<Stored> blocksOf(const QByteArray &project)
{
    QByteArray section;
    BytesWriter out(&section);
    SaveProjectData(out, true);
    const int start = project.indexOf(section);
    QVector<Stored> blocks;
    for (int at = start + 8; start >= 0 && at < start + section.size();) {
        const auto id = qFromBigEndian<qint32>(project.constData() + at);
        const auto size = qFromBigEndian<qint32>(project.constData() + at + 4);
        blocks.append({id, at + 8, size});
        at += 8 + size;
    }
    return blocks;
}

} // namespace

class TestPackedLoading : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void damageShowsInTheBlockThatHasIt();
    void changedFilesAreNotRead_data();
    void changedFilesAreNotRead();
    void damagedFilesAreNotSavedOver();
    void unreadBlocksAreCopiedAsTheyAre();
    void blocksReadOftenMoveToTheScratchFile();
    void cellsOfLargeGridsAreReadAlone();
};

// Any byte of a block may be wrong: its length, the zlib head, the data, the checksum.
void TestPackedLoading::damageShowsInTheBlockThatHasIt()
{
    TestModel model;
    const Sample sample(model);
    const QStringList whole = sample.read();
    QVERIFY(!whole.contains(kUnread));
    const QVector<Stored> blocks = blocksOf(sample.bytes);
    QVERIFY(blocks.size() > 10);
    QRandomGenerator random(walkSeed());
    for (const Stored &block : blocks) {
        const InCase inCase(block.id);
        QByteArray damaged = sample.bytes;
        const int at = block.position + static_cast<int>(random.bounded(block.size));
        damaged[at] = static_cast<char>(~damaged[at]);
        writeFile(sample.path, damaged);
        QVERIFY(loadPacked(sample.path));
        for (const Stored &other : blocks) {
            QByteArray contents;
            QCOMPARE(ReadDataBlock(other.id, contents), other.id != block.id);
        }
        QCOMPARE(VORN_GetUnreadableProjectFile(), sample.path);
        const QStringList values = sample.read();
        int unread = 0;
        for (int i = 0; i < values.size(); ++i) {
            unread += values[i] == kUnread;
            QCOMPARE(values[i], values[i] == kUnread ? kUnread : whole[i]);
        }
        QVERIFY2(unread > 0, QByteArray::number(block.id));
    }
}

void TestPackedLoading::changedFilesAreNotRead_data()
{
    QTest::addColumn<QString>("change");
    QTest::addColumn<bool>("isReadable");
    for (const char *change : {"cut", "emptied", "appended", "rewritten"})
        QTest::newRow(change) << QString::fromLatin1(change) << false;
    for (const char *change : {"replaced", "removed"})
        QTest::newRow(change) << QString::fromLatin1(change) << true;
}

void TestPackedLoading::changedFilesAreNotRead()
{
    QFETCH(QString, change);
    QFETCH(bool, isReadable);
    TestModel model;
    const Sample sample(model);
    const QStringList whole = sample.read();
    QVERIFY(loadPacked(sample.path));
    QTest::qSleep(20); // the file system's clock ticks
    if (change == QLatin1String("cut"))
        QVERIFY(QFile::resize(sample.path, sample.bytes.size() / 2));
    else if (change == QLatin1String("emptied"))
        writeFile(sample.path, QByteArray());
    else if (change == QLatin1String("appended"))
        writeFile(sample.path, sample.bytes + "x");
    else if (change == QLatin1String("rewritten"))
        writeFile(sample.path, sample.bytes);
    else if (change == QLatin1String("removed"))
        QVERIFY(QFile::remove(sample.path));
    else {
        const QString other = model.path(QStringLiteral("other"));
        writeFile(other, "another file");
        QCOMPARE(std::rename(qPrintable(other), qPrintable(sample.path)), 0);
    }
    const QByteArray found = fileBytes(sample.path);
    const QStringList values = sample.read();
    for (int i = 0; i < values.size(); ++i)
        QCOMPARE(values[i], isReadable ? whole[i] : kUnread);
    QCOMPARE(VORN_GetUnreadableProjectFile(), isReadable ? QString() : sample.path);
    QCOMPARE(VORN_SaveProject(sample.path), isReadable);
    QCOMPARE(fileBytes(sample.path), isReadable ? sample.bytes : found);
}

void TestPackedLoading::damagedFilesAreNotSavedOver()
{
    TestModel model;
    const Sample sample(model);
    const Stored block = blocksOf(sample.bytes).last();
    QByteArray damaged = sample.bytes;
    damaged[block.position + block.size - 1] =
        static_cast<char>(~damaged[block.position + block.size - 1]);
    writeFile(sample.path, damaged);
    QVERIFY(loadPacked(sample.path));
    const QString link = model.path(QStringLiteral("link"));
    QVERIFY(QFile::link(sample.path, link));
    QCOMPARE(VORN_SaveProject(link), false);
    QCOMPARE(fileBytes(sample.path), damaged);
}

// The source is packed at level 1 and the copy asks for level 12, which would give other bytes.
void TestPackedLoading::unreadBlocksAreCopiedAsTheyAre()
{
    TestModel model;
    const Sample sample(model);
    const QString fast = model.path(QStringLiteral("fast"));
    const QString copy = model.path(QStringLiteral("copy"));
    VORN_SetProjectCompression(1);
    QVERIFY(VORN_SaveProject(fast));
    QVERIFY(loadPacked(fast));
    VORN_SetProjectCompression(12);
    const QStringList whole = sample.read();
    QVERIFY(VORN_SaveProject(copy));
    QVERIFY(fileBytes(copy) == fileBytes(fast));
    VORN_SetProjectCompression(0);
    QVERIFY(VORN_SaveProject(copy));
    QVERIFY(fileBytes(copy) == sample.bytes);
    QVERIFY(VORN_LoadProject(copy));
    QCOMPARE(sample.read(), whole);
}

// A cache of 100 bytes holds none of the blocks, so each read unpacks again; the second one moves the
// block to the scratch file, from which it is read when the project is gone.
void TestPackedLoading::blocksReadOftenMoveToTheScratchFile()
{
    TestModel model(100);
    const Sample sample(model);
    const QStringList whole = sample.read();
    QVERIFY(loadPacked(sample.path));
    QCOMPARE(sample.read(), whole);
    QCOMPARE(sample.read(), whole);
    QVERIFY(QFile::resize(sample.path, 10));
    int kept = 0;
    for (const QString &value : sample.read())
        kept += value != kUnread;
    QVERIFY2(kept > 10, QByteArray::number(kept));
}

// 2.2 MB in nine segments, each packed by itself. Damage in one of them is found by the cells that are
// in it and by no other.
void TestPackedLoading::cellsOfLargeGridsAreReadAlone()
{
    constexpr int kRows = 700;
    constexpr int kColumns = 800;
    constexpr int kCellsOfSegment = 256 * 1024 / 4;
    TestModel model(100000);
    const int grid = VORN_NewRasterDataset(addGrid(kRows, kColumns), QStringLiteral("b"),
                                           RasterIntegerType, 1, 32, QString());
    QVector<int> cells(kRows * kColumns);
    for (int i = 0; i < cells.size(); ++i)
        cells[i] = i * 7 % 100003;
    VORN_AddRasterValues(grid, 0, {0, 100, true, true}, cells, 2, true, false);
    const auto readCell = [grid](int index) {
        qint64 value = -1;
        const auto column = static_cast<unsigned>(index % kColumns);
        const auto row = static_cast<unsigned>(index / kColumns);
        const QString raised =
            raisedText([&] { VORN_GetRasterValue(grid, 0, column, row, 5, value); });
        return raised.isEmpty() ? QString::number(value) : raised;
    };
    const QString path = model.path(QStringLiteral("project"));
    VORN_SetProjectCompression(1);
    QVERIFY(VORN_SaveProject(path));
    const QByteArray bytes = fileBytes(path);
    const Stored block = blocksOf(bytes).first();
    QByteArray contents;
    QVERIFY(ReadDataBlock(block.id, contents));
    QVERIFY(qUncompress(bytes.mid(block.position, block.size)) == contents);

    QByteArray damaged = bytes;
    damaged[block.position + 100] = static_cast<char>(~damaged[block.position + 100]);
    for (const QByteArray &file : {bytes, damaged}) {
        writeFile(path, file);
        QVERIFY(loadPacked(path));
        for (int i = 0; i < 200; ++i) {
            const int index = cells.size() - 1 - i * 2417 % (cells.size() - kCellsOfSegment);
            QCOMPARE(readCell(index), QString::number(cells[index]));
        }
        QCOMPARE(VORN_GetUnreadableProjectFile(), QString());
        const bool isWhole = file == bytes;
        QCOMPARE(readCell(5), isWhole ? QString::number(cells[5])
                                      : QStringLiteral("Can't load raster data block"));
        QCOMPARE(VORN_GetUnreadableProjectFile(), isWhole ? QString() : path);
        QByteArray unpacked;
        QCOMPARE(ReadDataBlock(block.id, unpacked), isWhole);
        QVERIFY(!isWhole || unpacked == contents);
        QCOMPARE(VORN_LoadProject(path), isWhole);
    }
    VORN_SetProjectCompression(0);
}

QTEST_MAIN(TestPackedLoading)
#include "tst_PackedLoading.moc"
