// SPDX-License-Identifier: MIT
// The geometry file: a written file reads back the same, and any other file is refused.
#include <QtEndian>
#include "base/timeRules.h"
#include "fennimark/FMProjectionInfo.h"
#include "fennimark/geographies.h"
#include "file/crc32c.h"
#include "support/checks.h"

namespace {

constexpr int kHeader = 256;

/// A file split into header and sections, so that a forged one can get the right checksums.
struct Sections {
    QByteArray header;
    QVector<QPair<QByteArray, QByteArray>> parts; // the head of each section and its data

    explicit Sections(const QByteArray &file) : header(file.left(kHeader))
    {
        for (int at = kHeader; at < file.size();) {
            const QByteArray head = file.mid(at, 16);
            const auto length = int(qFromLittleEndian<quint64>(head.constData() + 8));
            parts.append({head, file.mid(at + 16, length)});
            at += 16 + length + (length > 0 ? 4 : 0); // small files: one chunk a section
        }
    }
    QByteArray &section(const char *tag)
    {
        for (auto &part : parts) {
            if (part.first.startsWith(tag))
                return part.second;
        }
        qFatal("no such section");
    }
    QByteArray file() const
    {
        QByteArray bytes = header.left(kHeader - 4);
        appendCrc(bytes, bytes);
        for (const auto &part : parts) {
            QByteArray length(8, '\0');
            qToLittleEndian(quint64(part.second.size()), length.data());
            bytes += part.first.left(8) + length + part.second;
            if (!part.second.isEmpty())
                appendCrc(bytes, part.second);
        }
        return bytes;
    }
    template <class T> void setHeader(int at, T value)
    {
        qToLittleEndian(value, header.data() + at);
    }

    static void appendCrc(QByteArray &bytes, const QByteArray &of)
    {
        QByteArray crc(4, '\0');
        qToLittleEndian(fennimark::crc32c(0, of.constData(), std::size_t(of.size())), crc.data());
        bytes += crc;
    }
};

template <class T> void set(QByteArray &bytes, int at, T value)
{
    qToLittleEndian(value, bytes.data() + at);
}

/// Two chains of three squares: one that changes, one that does not.
QByteArray smallFile()
{
    VORNBuilder builder(extent(10), nullptr, nullptr);
    builder.CreateChain({square(0, 0), square(4, 4)}, {span(0, 10, 0xF0), span(10, 20)}, -1);
    builder.CreateChain({square(8, 8)}, {span(0, 20)}, -1);
    return saved(*opened(builder));
}

/// A device that fails after a given number of bytes.
class FillingDevice : public QIODevice {
public:
    explicit FillingDevice(qint64 room) : mRoom(room) { open(WriteOnly | Unbuffered); }

protected:
    qint64 readData(char *, qint64) override { return -1; }
    qint64 writeData(const char *, qint64 size) override
    {
        if (size > mRoom)
            return -1;
        mRoom -= size;
        return size;
    }

private:
    qint64 mRoom;
};

} // namespace

class TestGeometryFile : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void savedAndOpenedIsTheSame_data()
    {
        QTest::addColumn<int>("kind");
        QTest::addColumn<int>("chains");
        QTest::addColumn<int>("observations");
        for (const int kind :
             {RandomGeography::Points, RandomGeography::Lines, RandomGeography::Polygons}) {
            QTest::addRow("kind %d, one shape each", kind) << kind << 3000 << 1;
            QTest::addRow("kind %d, shapes over time", kind) << kind << 40 << 9;
        }
    }
    void savedAndOpenedIsTheSame()
    {
        QFETCH(int, kind);
        QFETCH(int, chains);
        QFETCH(int, observations);
        RandomGeography geography(3, RandomGeography::Kind(kind), chains, observations, 0, 0);
        QVERIFY(geography.fennims);
        geography.fennims->SetName("Caf\xc3\xa9");
        for (int round = 0; round < 2; ++round) {
            const QByteArray bytes = saved(*geography.fennims);
            Fennims again;
            QVERIFY(open(again, bytes));
            QCOMPARE(again.GetName(), QString::fromLocal8Bit("Caf\xc3\xa9"));
            QVERIFY(saved(again) == bytes);
            geography.fennims->RemoveChain(geography.fennims->GetChainById(chains / 2));
        }
        // Vertices are the same to the last bit.
        for (const Given &one : geography.given) {
            if (!geography.holds(one))
                continue;
            HilbertTree *tree = geography.fennims->mTree;
            HilbertTreeRecord *held = tree->CheckOutRecord(one.record, false);
            const auto bytesOf = [](TreeObject *object) {
                QByteArray bytes;
                QDataStream out(&bytes, QIODevice::WriteOnly);
                object->SaveToStream(out);
                return bytes;
            };
            QVERIFY(bytesOf(one.object.get()) == bytesOf(held->GetTreeObject(tree)));
            held->ReturnTreeObject(tree);
            tree->CheckInRecord(one.record);
        }
    }
    // Long pieces are read in lanes, short ones in order, and both must make the same file.
    void checksumsAreTheSameInPieces()
    {
        QCOMPARE(fennimark::crc32c(0, "123456789", 9), 0xe3069283U);
        std::mt19937 random(walkSeed(5));
        QByteArray bytes(100003, '\0');
        std::generate(bytes.begin(), bytes.end(), [&random] { return char(random()); });
        quint32 inPieces = 0;
        for (int at = 0; at < bytes.size(); at += 997)
            inPieces = fennimark::crc32c(inPieces, bytes.constData() + at,
                                         std::size_t(qMin(997, bytes.size() - at)));
        QCOMPARE(fennimark::crc32c(0, bytes.constData(), std::size_t(bytes.size())), inPieces);
    }

    void isLaidOutAsTold()
    {
        const QByteArray bytes = smallFile();
        QVERIFY(bytes.startsWith(QByteArray("FNMK\r\n\x1a\0\1\0\0\0\0\1\0\0\2\0\0\0\0\0\0\0", 24)));
        Sections file(bytes);
        QStringList tags;
        for (const auto &part : file.parts)
            tags.append(QString::fromLatin1(part.first.left(4)));
        QCOMPARE(tags.join(QLatin1Char(' ')),
                 QStringLiteral("NAME PROJ TIME CHAI OBSV RECS GEOM END."));
        QCOMPARE(file.section("TIME").size(), 3 * 24); // [0, 10), [0, 20], [10, 20]
        QCOMPARE(file.section("CHAI"), QByteArray("\0\0\0\0\2\0\0\0\1\0\0\0\1\0\0\0", 16));
        QCOMPARE(file.section("GEOM").size(), 3 * (8 + 4 * 16));
        QCOMPARE(file.file(), bytes);
    }

    void nothingBehindTheEndIsRead()
    {
        QByteArray bytes = smallFile();
        const int size = bytes.size();
        bytes += "next";
        QBuffer buffer(&bytes);
        buffer.open(QIODevice::ReadOnly);
        QDataStream in(&buffer);
        in.setVersion(QDataStream::Qt_4_6); // raw bytes: neither this nor the byte order matters
        in.setByteOrder(QDataStream::LittleEndian);
        Fennims fennims;
        QVERIFY(fennims.Open(in, nullptr));
        QCOMPARE(buffer.pos(), qint64(size));
    }

    void cutAndFlippedFilesAreRefused()
    {
        const QByteArray bytes = smallFile();
        for (int at = 0; at < bytes.size(); ++at) {
            QByteArray flipped = bytes;
            flipped[at] = char(flipped[at] ^ (1 << (at % 8)));
            Fennims fennims;
            QVERIFY2(!open(fennims, bytes.left(at)), qPrintable(QString::number(at)));
            QCOMPARE(fennims.GetChainCount(), 0);
            QVERIFY2(!open(fennims, flipped), qPrintable(QString::number(at)));
        }
        // A long file, cut at every chunk.
        RandomGeography geography(5, RandomGeography::Polygons, 12000, 1, 0, 0);
        const QByteArray longFile = saved(*geography.fennims);
        QVERIFY(longFile.size() > 2 << 20);
        for (int size = 1 << 19; size < longFile.size(); size += 1 << 19) {
            QVERIFY(!open(*geography.fennims, longFile.left(size)));
            QCOMPARE(geography.fennims->GetChainCount(), 0);
            QCOMPARE(geography.fennims->GetBoundingRect().end, -1.0);
        }
        QVERIFY(open(*geography.fennims, longFile));
    }

    void forgedFilesAreRefused()
    {
        const QByteArray bytes = smallFile();
        const auto row = [&bytes](const char *name, auto forge) {
            const InCase inCase(name);
            Sections file(bytes);
            forge(file);
            QByteArray forged = file.file();
            QVERIFY(forged != bytes);
            QDataStream in(&forged, QIODevice::ReadOnly);
            Fennims fennims;
            QVERIFY(!fennims.Open(in, nullptr));
            QVERIFY(in.status() != QDataStream::Ok);
            QCOMPARE(fennims.GetChainCount(), 0);
            QVERIFY(!fennims.mTree->CheckOutRecord(1, true));
        };
        row("major", [](Sections &f) { f.setHeader<quint16>(8, 2); });
        row("header size", [](Sections &f) { f.setHeader<quint32>(12, 512); });
        row("type 0", [](Sections &f) { f.setHeader<quint32>(16, 0); });
        row("another type", [](Sections &f) { f.setHeader<quint32>(16, 3); });
        row("fewer chains", [](Sections &f) { f.setHeader<quint64>(24, 1); });
        row("very many chains", [](Sections &f) { f.setHeader<quint64>(24, ~quint64(0)); });
        row("very many records", [](Sections &f) { f.setHeader<quint64>(32, ~quint64(0)); });
        row("as many records as there may be", [](Sections &f) {
            f.setHeader<quint64>(32, 0x7ffffffe);
            f.setHeader<quint64>(48, 0x7ffffffe);
            f.setHeader<quint64>(56, 12);
            f.setHeader<quint64>(64, quint64(0x7ffffffe) * 8 + 12 * 16);
        });
        row("very many parts", [](Sections &f) { f.setHeader<quint64>(48, quint64(1) << 62); });
        row("payload bytes", [](Sections &f) { f.setHeader<quint64>(64, 3 * 72 + 16); });
        row("hull", [](Sections &f) { f.setHeader<double>(80, 10.0); });
        row("hull's time", [](Sections &f) { f.setHeader<double>(112, 21.0); });
        row("negative tolerance", [](Sections &f) { f.setHeader<double>(128, -1.0); });
        row("times out of order", [](Sections &f) { set(f.section("TIME"), 24, 30.0); });
        row("times crossed", [](Sections &f) { set(f.section("TIME"), 8, -1.0); });
        row("time not a number", [](Sections &f) { set(f.section("TIME"), 8, qQNaN()); });
        row("time flags", [](Sections &f) { set<quint64>(f.section("TIME"), 16, 0x10); });
        row("chain ids alike", [](Sections &f) { set<qint32>(f.section("CHAI"), 8, 0); });
        row("negative chain id", [](Sections &f) { set<qint32>(f.section("CHAI"), 0, -5); });
        row("too many observations", [](Sections &f) { set<quint32>(f.section("CHAI"), 4, 3); });
        row("observations that wrap", [](Sections &f) {
            set<quint32>(f.section("CHAI"), 4, 0xfffffffe);
            set<quint32>(f.section("CHAI"), 12, 5);
        });
        row("record in two observations",
            [](Sections &f) { set<quint32>(f.section("OBSV"), 8, 1); });
        row("record 0", [](Sections &f) { set<quint32>(f.section("OBSV"), 0, 0); });
        row("record above all", [](Sections &f) { set<quint32>(f.section("OBSV"), 0, 4); });
        row("observations out of order", [](Sections &f) {
            QByteArray &ids = f.section("OBSV");
            ids = ids.mid(4, 4) + ids.left(4) + ids.mid(8);
        });
        row("observations that overlap",
            [](Sections &f) { set<quint64>(f.section("TIME"), 16, 0xff); });
        row("time index", [](Sections &f) { set<quint32>(f.section("RECS"), 5, 3); });
        row("record of another type", [](Sections &f) { f.section("RECS")[4] = 1; });
        row("no part", [](Sections &f) { set<quint32>(f.section("GEOM"), 0, 0); });
        row("very many parts of one",
            [](Sections &f) { set<quint32>(f.section("GEOM"), 0, 0xffffffff); });
        row("very long ring", [](Sections &f) { set<quint32>(f.section("GEOM"), 4, 0x7fffffff); });
        row("ring of two", [](Sections &f) { set<quint32>(f.section("GEOM"), 4, 2); });
        row("ring sizes", [](Sections &f) { set<quint32>(f.section("GEOM"), 4, 5); });
        row("three places alike", [](Sections &f) {
            QByteArray &geometry = f.section("GEOM");
            for (int vertex = 1; vertex < 4; ++vertex)
                geometry.replace(8 + 16 * vertex, 16, geometry.mid(8 + 16 * (vertex % 2), 16));
        });
        row("coordinate not a number", [](Sections &f) { set(f.section("GEOM"), 8, qQNaN()); });
        row("infinite coordinate", [](Sections &f) { set(f.section("GEOM"), 24, HUGE_VAL); });
        row("section missing", [](Sections &f) { f.parts.remove(2); });
        row("unknown section", [](Sections &f) {
            f.parts.insert(2, {QByteArray("SPAM\1\0\0\0", 8), "data"});
        });
        row("no end", [](Sections &f) { f.parts.removeLast(); });
    }

    void sectionsOfALaterMinorAreSkipped()
    {
        Sections file(smallFile());
        file.setHeader<quint16>(10, 1);
        file.parts.insert(2, {QByteArray("SPAM\1\0\0\0", 8), QByteArray(1000, 'x')});
        file.parts.insert(file.parts.size() - 1, {QByteArray("SPAM\1\0\0\0", 8), QByteArray()});
        Fennims fennims;
        QVERIFY(open(fennims, file.file()));
        QCOMPARE(saved(fennims), smallFile());
    }

    void failedWritesLeaveNothing()
    {
        Fennims fennims;
        QVERIFY(open(fennims, smallFile()));
        for (qint64 room = 0; room < smallFile().size(); ++room) {
            FillingDevice device(room);
            QDataStream out(&device);
            QVERIFY(!fennims.Save(out, nullptr));
        }
        FillingDevice full(0);
        QDataStream out(&full);
        FMPolygon triangle(QVector<QPointF>{{0, 0}, {1, 0}, {0, 1}});
        QVERIFY(!triangle.SaveToStream(out));
        VORNBuilder builder(extent(10), nullptr, nullptr);
        builder.CreateChain({square(0, 0)}, {span(0, 1)}, -1);
        QVERIFY(!builder.Finish("/nowhere/at/all", nullptr));
        QTemporaryDir directory;
        const QByteArray path = directory.filePath(QStringLiteral("x")).toLocal8Bit();
        QVERIFY(!fennims.CreateSubsetFromIds(QByteArray(path + "/none"), {0}, nullptr));
        QVERIFY(!fennims.CreateSubsetFromIds(path, {0, 2}, nullptr));
        callsLeft = 1;
        QVERIFY(!builder.Finish(path, &countDown));
        QVERIFY(QDir(directory.path()).isEmpty());
    }

    void callbacksStopWork()
    {
        const QByteArray bytes = smallFile();
        int calls = 0;
        for (bool done = false; !done; ++calls) {
            QVERIFY(calls < 1000);
            QByteArray copy;
            QDataStream out(&copy, QIODevice::WriteOnly);
            QDataStream in(bytes);
            Fennims fennims;
            callsLeft = calls + 1;
            done = fennims.Open(in, &countDown);
            QCOMPARE(fennims.GetChainCount(), done ? 2 : 0);
            QVERIFY(open(fennims, bytes));
            callsLeft = calls + 1;
            QCOMPARE(fennims.Save(out, &countDown), done);
        }
        QVERIFY(calls > 3);
    }

    void subsetsKeepTheirChains()
    {
        RandomGeography geography(9, RandomGeography::Polygons, 30, 3, 0, 0);
        QTemporaryDir directory;
        const QString path = directory.filePath(QStringLiteral("subset"));
        QFile earlier(path);
        QCOMPARE(answers({earlier.open(QIODevice::WriteOnly),
                          earlier.write("what stood there before") > 0}),
                 "yy");
        earlier.close();
        QVERIFY(
            geography.fennims->CreateSubsetFromIds(path.toLocal8Bit(), {17, 4, 17, 9}, nullptr));
        QFile file(path);
        QVERIFY(file.open(QIODevice::ReadOnly));
        QDataStream in(&file);
        Fennims subset;
        QVERIFY(subset.Open(in, nullptr));
        QVERIFY(file.atEnd());
        QCOMPARE(subset.mChains.keys(), (QList<int>{4, 9, 17}));
        for (const int id : {4, 9, 17}) {
            const InCase inId(id);
            const auto part = subset.GetChainById(id)->GetObservations();
            const auto whole = geography.fennims->GetChainById(id)->GetObservations();
            QCOMPARE(part.size(), whole.size());
            for (int i = 0; i < part.size(); ++i)
                QVERIFY(fennimark::sameRange(part[i].first, whole[i].first));
        }
        QCOMPARE(QDir(directory.path()).entryList(QDir::Files),
                 QStringList{QStringLiteral("subset")});
    }
};

QTEST_GUILESS_MAIN(TestGeometryFile)
#include "tst_GeometryFile.moc"
