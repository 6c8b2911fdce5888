// SPDX-License-Identifier: MIT
#include <QLockFile>
#include <QtTest>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include "cli/program.h"

/// What the program does beside other processes, and on disks that refuse.
class TestMeridorSafety : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void initTestCase()
    {
        mPlace.file("map.geojson", squares());
        const Outcome outcome =
            mPlace.run({"import", "map.geojson", "p.vorn", "--key", "id", "--name", "land"});
        QVERIFY2(outcome.code == 0, qPrintable(outcome.err));
        mProject = mPlace.bytes("p.vorn");
    }

    void changesNothingThatAnotherProcessIsChanging()
    {
        QVERIFY(QFile::link(mPlace.path("p.vorn"), mPlace.path("link.vorn")));
        const QStringList names = mPlace.files();
        QLockFile lock(mPlace.path(".p.vorn.lock"));
        QVERIFY(lock.tryLock(0));
        const QString holder =
            QStringLiteral("process %1 ").arg(QCoreApplication::applicationPid());
        for (const QStringList &words :
             {QStringList{"rename", "p.vorn", "id", "x"},
              {"rename", "link.vorn", "id", "x"},
              {"import", "map.geojson", "p.vorn", "--overwrite"},
              {"import", "map.geojson", "p.vorn", "--append", "--name", "more"},
              {"upgrade", "q.vorn", "p.vorn", "--overwrite"}}) {
            const InCase inCase(words);
            mPlace.file("q.vorn", mProject);
            const Outcome refused = mPlace.run(words);
            QCOMPARE(refused.code, 1);
            QVERIFY2(refused.err.contains(holder), qPrintable(refused.err));
            QCOMPARE(mPlace.bytes("p.vorn"), mProject);
        }
        // Readers, and writers of other files, need no lock.
        QCOMPARE(mPlace.run({"info", "p.vorn"}).code, 0);
        QCOMPARE(mPlace.run({"rename", "p.vorn", "id", "x", "--output", "q.vorn"}).code, 1);
        QCOMPARE(
            mPlace.run({"rename", "p.vorn", "id", "x", "--output", "q.vorn", "--overwrite"}).code,
            0);
        const QByteArray ours = mPlace.bytes(".p.vorn.lock");
        lock.unlock();
        // The lock of a process that has ended, with the number of one that lives.
        mPlace.file(".p.vorn.lock", ours);
        QCOMPARE(mPlace.run({"rename", "p.vorn", "id", "id"}).code, 0);
        // With a number that no process has.
        mPlace.file(".p.vorn.lock", "7\nmeridor\nanother machine\n");
        QVERIFY(mPlace.run({"rename", "p.vorn", "id", "x"}).err.contains("has ended, remove"));
        mPlace.file(".p.vorn.lock",
                    "99999999\nmeridor\n" + QSysInfo::machineHostName().toUtf8() + "\n");
        QCOMPARE(mPlace.run({"rename", "p.vorn", "id", "id"}).code, 0);
        QVERIFY(QFile::remove(mPlace.path("q.vorn")));
        QCOMPARE(mPlace.files(), names);
    }

    void removesTheScratchOfKilledProcessesOnly()
    {
        QDir(mPlace.path("")).mkpath("scratch");
        const auto leave = [this](const char *name, bool withLock) {
            QDir(mPlace.path("scratch")).mkpath(name);
            mPlace.file(QStringLiteral("scratch/%1/DM").arg(name), "values");
            QFile::link(mPlace.path("map.geojson"),
                        mPlace.path(QStringLiteral("scratch/%1/link").arg(name)));
            if (withLock)
                mPlace.file(QStringLiteral("scratch/%1.lock").arg(name), "");
        };
        leave("meridor-0000dead", true);
        leave("meridor-0000live", true);
        leave("meridor-withoutlock", false);
        leave("other-program", true);
        mPlace.file("scratch/meridor-0000gone.lock", "");
        const QByteArray held = QFile::encodeName(mPlace.path("scratch/meridor-0000live.lock"));
        const int handle = ::open(held.constData(), O_RDWR | O_CLOEXEC);
        QCOMPARE(::flock(handle, LOCK_EX | LOCK_NB), 0);
        QCOMPARE(mPlace.run({"info", "p.vorn", "--scratch", "scratch"}).code, 0);
        ::close(handle);
        QCOMPARE(QDir(mPlace.path("scratch")).entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
                 (QStringList{"meridor-0000live", "meridor-0000live.lock", "meridor-withoutlock",
                              "other-program", "other-program.lock"}));
        QCOMPARE(mPlace.bytes("map.geojson"), squares()); // links are not followed
    }

    void tellsWhyAProjectDoesNotOpen()
    {
        QByteArray newer = mProject;
        newer[5] = '9'; // the first digit of the version
        mPlace.file("none.vorn", "");
        mPlace.file("text.vorn", "no project, but longer than a version");
        mPlace.file("newer.vorn", newer);
        mPlace.file("head.vorn", mProject.left(60));
        mPlace.file("half.vorn", mProject.left(mProject.size() / 2));
        QDir(mPlace.path("")).mkpath("folder.vorn");
        QCOMPARE(::mkfifo(QFile::encodeName(mPlace.path("pipe.vorn")).constData(), 0600), 0);
        for (const auto &[name, told] : {std::make_pair("none.vorn", "not a project that"),
                                         {"text.vorn", "not a project that"},
                                         {"newer.vorn", "newer than"},
                                         {"head.vorn", "damaged or cut off"},
                                         {"half.vorn", "damaged or cut off"},
                                         {"folder.vorn", "is a directory"},
                                         {"pipe.vorn", "is a pipe"},
                                         {"missing.vorn", "no such file"},
                                         {"text.vorn/x.vorn", "Not a directory"}}) {
            const Outcome outcome = mPlace.run({"info", name});
            QCOMPARE(outcome.code, 1);
            QVERIFY2(outcome.err.contains(name + QStringLiteral(": ")), qPrintable(outcome.err));
            QVERIFY2(outcome.err.contains(told), qPrintable(outcome.err));
        }
    }

    void aCancelEndsTheWaitForAPipe()
    {
        QCOMPARE(::mkfifo(QFile::encodeName(mPlace.path("wait.csv")).constData(), 0600), 0);
        const QByteArray before = mPlace.bytes("p.vorn");
        for (const QStringList &words :
             {QStringList{"weights", "import", "p.vorn", "wait.csv", "w"},
              {"import", "wait.csv", "new.vorn", "--x", "x", "--y", "y"},
              {"import", "map.geojson", "new.vorn", "--key", "id", "--table", "wait.csv"}}) {
            const InCase inCase(words);
            const QString lock = words.contains("new.vorn") ? ".new.vorn.lock" : ".p.vorn.lock";
            const Outcome outcome =
                mPlace.interrupt(words, [&] { return QFile::exists(mPlace.path(lock)); });
            QCOMPARE(outcome.code, 130);
            QCOMPARE(outcome.err, QString("meridor: cancelled\n"));
            QCOMPARE(mPlace.bytes("p.vorn"), before);
        }
        QVERIFY(!mPlace.files().contains("new.vorn"));
    }

    void leavesAWriteProtectedProjectAlone()
    {
        const QByteArray name = QFile::encodeName(mPlace.path("p.vorn"));
        QCOMPARE(::chmod(name.constData(), 0444), 0);
        const Outcome refused = mPlace.run({"rename", "p.vorn", "id", "x"});
        QCOMPARE(::chmod(name.constData(), 0640), 0);
        QCOMPARE(refused.code, 1);
        QVERIFY2(refused.err.contains("write-protected"), qPrintable(refused.err));
        QCOMPARE(mPlace.run({"rename", "p.vorn", "id", "id"}).code, 0);
        struct stat info = {};
        QCOMPARE(::stat(name.constData(), &info), 0);
        QCOMPARE(info.st_mode & 07777, 0640U); // a replaced file keeps its rights

        // A Shapefile is replaced with all its files or not at all.
        const QStringList words{"export", "p.vorn", "s.shp", "--overwrite"};
        QCOMPARE(mPlace.run(words).code, 0);
        const QByteArray shapes = mPlace.bytes("s.shp");
        const QByteArray table = QFile::encodeName(mPlace.path("s.dbf"));
        QCOMPARE(::chmod(table.constData(), 0444), 0);
        const Outcome kept = mPlace.run(words + QStringList{"--columns", "key"});
        QCOMPARE(::chmod(table.constData(), 0644), 0);
        QCOMPARE(kept.code, 1);
        QVERIFY2(kept.err.contains("s.dbf: is write-protected"), qPrintable(kept.err));
        QCOMPARE(mPlace.bytes("s.shp"), shapes);
    }

    void tellsOfADiskThatIsFull()
    {
        // The limit of the size of files stands for a full disk: a load needs a scratch file.
        QByteArray table("x,y");
        for (int i = 0; i < 40; ++i)
            table += ",v" + QByteArray::number(i);
        for (int row = 0; row < 3000; ++row) {
            table += '\n' + QByteArray::number(row) + ',' + QByteArray::number(row);
            for (int i = 0; i < 40; ++i)
                table += ',' + QByteArray::number(row * 7919 % 10007 * (i + 1));
        }
        mPlace.file("points.csv", table + '\n');
        QCOMPARE(mPlace.run({"import", "points.csv", "big.vorn", "--x", "x", "--y", "y"}).code, 0);
        QDir(mPlace.path("")).mkpath("tight");
        const Outcome scratch =
            limited(40, {"rename", "big.vorn", "v0", "w", "--cache", "1", "--scratch", "tight"});
        QCOMPARE(scratch.code, 1);
        QVERIFY2(scratch.err.contains("scratch directory"), qPrintable(scratch.err));
        QVERIFY2(scratch.err.contains("File too large; see --scratch"), qPrintable(scratch.err));
        QVERIFY(QDir(mPlace.path("tight")).isEmpty());

        // Outputs are whole or not there, and what stood there stays.
        QCOMPARE(mPlace.run({"weights", "create", "p.vorn", "w"}).code, 0);
        for (const QStringList &words : {QStringList{"map", "p.vorn", "id", "out.png"},
                                         {"map", "p.vorn", "id", "out.svg"},
                                         {"map", "p.vorn", "id", "out.pdf"},
                                         {"plot", "histogram", "big.vorn", "v1", "out.svg"},
                                         {"report", "p.vorn", "out.html"},
                                         {"export", "big.vorn", "out.csv"},
                                         {"export", "big.vorn", "out.dbf"},
                                         {"export", "big.vorn", "out.shp"},
                                         {"export", "big.vorn", "out.gpkg"},
                                         {"export", "big.vorn", "out.geojson"},
                                         {"export", "big.vorn", "out.fgb"},
                                         {"export", "big.vorn", "out.nc"},
                                         {"export", "big.vorn", "out.zarr"},
                                         {"weights", "export", "p.vorn", "w", "out.gal"}}) {
            const InCase inCase(words);
            const QString target = words.last();
            const bool isDirectory = target.endsWith("zarr");
            if (!isDirectory)
                mPlace.file(target, "precious");
            const QStringList names = mPlace.files();
            const Outcome full = limited(0, words + QStringList{"--overwrite"});
            QCOMPARE(full.code, 1);
            QVERIFY2(full.err.contains(target + ": File too large"), qPrintable(full.err));
            QVERIFY2(!full.err.contains("error"), qPrintable(full.err));
            QCOMPARE(mPlace.bytes(target), QByteArray(isDirectory ? "" : "precious"));
            QCOMPARE(mPlace.files(), names);
            QVERIFY(isDirectory != QFileInfo::exists(mPlace.path(target)));
        }
    }

    void tellsNothingOfAChangeThatIsNotKept()
    {
        QCOMPARE(mPlace.run({"weights", "create", "big.vorn", "w", "--method", "nearest"}).code, 0);
        const QByteArray before = mPlace.bytes("big.vorn");
        for (const QStringList &words :
             {QStringList{"variogram", "big.vorn", "v0", "--save", "m"},
              {"realizations", "big.vorn", "v0", "--mean", "--into", "m"},
              {"krige", "big.vorn", "v0", "--model", "spherical:1:5", "--grid", "g", "--cell",
               "500", "--into", "k"},
              {"simulate", "big.vorn", "v0", "--grid", "g", "--cell", "500", "--into", "s"},
              {"moran", "big.vorn", "v0", "w", "--save", "I"},
              {"rename", "big.vorn", "v0", "w0"}}) {
            const InCase inCase(words);
            const Outcome full = limited(2000, words);
            QCOMPARE(full.code, 1);
            QVERIFY2(full.err.contains("big.vorn: File too large"), qPrintable(full.err));
            QCOMPARE(full.out, QString());
            QCOMPARE(mPlace.bytes("big.vorn"), before);
        }
    }

private:
    /// Runs the program with a limit of the size of files, in blocks of 512 bytes.
    Outcome limited(int blocks, const QStringList &words) const
    {
        const QString limit = QStringLiteral("ulimit -f %1; exec \"$0\" \"$@\"").arg(blocks);
        return mPlace.run("/bin/sh", QStringList{"-c", limit, MERIDOR_PROGRAM} + words);
    }

    Workplace mPlace;
    QByteArray mProject;
};

QTEST_GUILESS_MAIN(TestMeridorSafety)
#include "tst_MeridorSafety.moc"
