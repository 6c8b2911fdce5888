// SPDX-License-Identifier: MIT
#include <QJsonArray>
#include <QRegularExpression>
#include <QtTest>
#include <random>
#include "cli/program.h"

namespace {

/// Three squares with values of two years, "c" without one in the second.
void makeProject(const Workplace &place)
{
    place.file("map.geojson", squares());
    place.file("t.csv", "id,v2000,v2001\na,1,2.5\nb,4,5\nc,7,\n");
    const Outcome outcome = place.run({"import", "map.geojson", "p.vorn", "--key", "id", "--name",
                                       "land", "--table", "t.csv", "--series", "v=v2000..v2001"});
    QVERIFY2(outcome.code == 0, qPrintable(outcome.err));
}

QStringList datasetNames(const Workplace &place, const QString &project)
{
    QStringList names;
    const QJsonArray geographies =
        place.run({"info", project, "--json"}).json().value("geographies").toArray();
    for (const QJsonValue &geography : geographies)
        for (const QJsonValue &dataset : geography.toObject().value("datasets").toArray())
            names.append(geography.toObject().value("name").toString() + '/'
                         + dataset.toObject().value("name").toString());
    return names;
}

} // namespace

class TestMeridorProjects : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void statisticsLeaveMissingValuesOut();
    void classesCountEveryValueOnce_data();
    void classesCountEveryValueOnce();
    void exportsReadBack_data();
    void exportsReadBack();
    void renamesAndRemoves();
    void refusesWhatWouldBeAmbiguous();
    void savingAgainGivesTheSameBytes();
    void aFullDiskLeavesTheOldProject();
    void cancelsAndFailuresLeaveNothing_data();
    void cancelsAndFailuresLeaveNothing();
    void refusesDamagedProjects_data();
    void refusesDamagedProjects();
    void theDemoChecksItsFigures();
};

void TestMeridorProjects::statisticsLeaveMissingValuesOut()
{
    const Workplace place;
    makeProject(place);
    const QJsonObject stats = place.run({"stats", "p.vorn", "v", "--json"}).json();
    const QJsonArray times = stats.value("times").toArray();
    QCOMPARE(times.size(), 2);
    QCOMPARE(times[0].toObject().value("mean").toDouble(), 4.0);
    QCOMPARE(times[1].toObject().value("count").toInt(), 2);
    QCOMPARE(times[1].toObject().value("mean").toDouble(), 3.75);
    QCOMPARE(times[1].toObject().value("stddev").toDouble(), 1.25);
    const QJsonObject overall = stats.value("overall").toObject();
    QCOMPARE(overall.value("count").toInt(), 5);
    QCOMPARE(overall.value("mean").toDouble(), 3.9);
    QCOMPARE(overall.value("max").toDouble(), 7.0);
    const QJsonObject nowhere =
        place.run({"stats", "p.vorn", "v", "--at", "1900", "--json"}).json();
    QVERIFY(nowhere.value("times").toArray()[0].toObject().value("mean").isNull());
}

void TestMeridorProjects::classesCountEveryValueOnce_data()
{
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<QJsonArray>("breaks");
    QTest::addColumn<QJsonArray>("counts");
    QTest::newRow("jenks of all") << QStringList{"--count", "2"} << QJsonArray{1, 3.25, 7}
                                  << QJsonArray{2, 3};
    QTest::newRow("jenks of one year")
        << QStringList{"--count", "2", "--at", "2000"} << QJsonArray{1, 2.5, 7} << QJsonArray{1, 2};
    QTest::newRow("more classes than values") << QStringList{"--count", "9", "--at", "2001"}
                                              << QJsonArray{2.5, 3.75, 5} << QJsonArray{1, 1};
    QTest::newRow("equal intervals") << QStringList{"--method", "equal", "--count", "2"}
                                     << QJsonArray{1, 3, 7} << QJsonArray{2, 3};
    QTest::newRow("quantiles") << QStringList{"--method", "quantile", "--count", "5"}
                               << QJsonArray{1, 1, 2.5, 4, 5, 7} << QJsonArray{1, 1, 1, 1, 1};
}

void TestMeridorProjects::classesCountEveryValueOnce()
{
    QFETCH(QStringList, options);
    QFETCH(QJsonArray, breaks);
    QFETCH(QJsonArray, counts);
    const Workplace place;
    makeProject(place);
    const QJsonObject classes =
        place.run(QStringList{"classes", "p.vorn", "v", "--json"} + options).json();
    QCOMPARE(classes.value("breaks").toArray(), breaks);
    QCOMPARE(classes.value("counts").toArray(), counts);
}

void TestMeridorProjects::exportsReadBack_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<QByteArray>("line");
    QTest::newRow("csv") << "t.csv2.csv" << QStringList{"--missing", "?"}
                         << QByteArray("2,2001,2001,?");
    QTest::newRow("csv, missing empty") << "e.csv" << QStringList{} << QByteArray("2,2001,2001,");
    QTest::newRow("geoeas") << "t.dat" << QStringList{} << QByteArray("2 2001 2001 -999");
    QTest::newRow("one year alone")
        << "y.csv" << QStringList{"--from", "2001"} << QByteArray("0,2001,2001,2.5");
    QTest::newRow("dbf") << "t.dbf" << QStringList{"--missing", "-1"} << QByteArray("2001");
}

void TestMeridorProjects::exportsReadBack()
{
    QFETCH(QString, file);
    QFETCH(QStringList, options);
    QFETCH(QByteArray, line);
    const Workplace place;
    makeProject(place);
    const Outcome outcome =
        place.run(QStringList{"export", "p.vorn", file, "--datasets", "v"} + options);
    QVERIFY2(outcome.code == 0, qPrintable(outcome.err));
    const QByteArray content = place.bytes(file).replace("\r\n", "\n");
    QVERIFY2(content.contains(line), content.constData());
    QCOMPARE(content.contains("2000"), !options.contains("--from"));
    QStringList expected{file, "map.geojson", "p.vorn", "t.csv"};
    if (file.endsWith(".dbf"))
        expected.append("t.cpg"); // the code page belongs to the table
    QStringList found = place.files();
    expected.sort();
    found.sort();
    QCOMPARE(found, expected);
    QCOMPARE(place.run(QStringList{"export", "p.vorn", file, "--datasets", "v"} + options).code,
             1); // it is there
}

void TestMeridorProjects::renamesAndRemoves()
{
    const Workplace place;
    makeProject(place);
    QCOMPARE(datasetNames(place, "p.vorn"), (QStringList{"land/id", "land/v"}));
    QCOMPARE(place.run({"rename", "p.vorn", "v", "w"}).code, 0);
    QCOMPARE(place.run({"rename", "p.vorn", "land", "water", "--geography"}).code, 0);
    QCOMPARE(datasetNames(place, "p.vorn"), (QStringList{"water/id", "water/w"}));
    QCOMPARE(place.run({"rename", "p.vorn", "w", "id"}).code, 1);
    QCOMPARE(place.run({"remove", "p.vorn", "w", "--output", "q.vorn"}).code, 0);
    QCOMPARE(datasetNames(place, "q.vorn"), QStringList{"water/id"});
    QCOMPARE(datasetNames(place, "p.vorn").size(), 2);
    QCOMPARE(place.run({"remove", "p.vorn", "nothing"}).code, 1);
    QCOMPARE(place.run({"import", "map.geojson", "p.vorn", "--append", "--name", "air"}).code, 0);
    QCOMPARE(place.run({"remove", "p.vorn", "water", "--geography"}).code, 0);
    QCOMPARE(datasetNames(place, "p.vorn"), QStringList{"air/id"});
}

void TestMeridorProjects::refusesWhatWouldBeAmbiguous()
{
    const Workplace place;
    makeProject(place);
    QCOMPARE(place.run({"import", "map.geojson", "p.vorn", "--append", "--name", "air"}).code, 0);
    const Outcome outcome = place.run({"series", "p.vorn", "id", "a"});
    QCOMPARE(outcome.code, 1);
    QVERIFY2(outcome.err.contains("land/id"), qPrintable(outcome.err));
    QCOMPARE(place.run({"series", "p.vorn", "land/id", "a"}).code, 0);
}

void TestMeridorProjects::savingAgainGivesTheSameBytes()
{
    const Workplace place;
    makeProject(place);
    QCOMPARE(place.run({"rename", "p.vorn", "v", "v", "--output", "q.vorn"}).code, 0);
    QCOMPARE(place.run({"rename", "q.vorn", "v", "v", "--output", "r.vorn"}).code, 0);
    QVERIFY(!place.bytes("q.vorn").isEmpty());
    QCOMPARE(place.bytes("q.vorn"), place.bytes("p.vorn"));
    QCOMPARE(place.bytes("r.vorn"), place.bytes("q.vorn"));
    QCOMPARE(place.run({"rename", "p.vorn", "v", "v", "--smallest"}).code, 0);
    QCOMPARE(place.run({"stats", "p.vorn", "v", "--json"}).out,
             place.run({"stats", "q.vorn", "v", "--json"}).out);
}

void TestMeridorProjects::aFullDiskLeavesTheOldProject()
{
    const Workplace place;
    makeProject(place);
    const QByteArray before = place.bytes("p.vorn");
    const QStringList files = place.files();
    // No file may grow beyond 1 KiB: the save breaks off in the middle, as on a full disk.
    const Outcome outcome =
        place.run("/bin/sh", {"-c", "ulimit -f 2; exec \"$0\" rename p.vorn v w", MERIDOR_PROGRAM});
    QCOMPARE(outcome.code, 1);
    QCOMPARE(place.bytes("p.vorn"), before);
    QCOMPARE(place.files(), files);
}

void TestMeridorProjects::cancelsAndFailuresLeaveNothing_data()
{
    QTest::addColumn<QStringList>("words");
    for (const char *table : {"t.csv", "t.dat", "t.dbf"})
        QTest::newRow(table) << QStringList{"export", "big.vorn", table, "--overwrite"};
    QTest::newRow("convert") << QStringList{"convert", "big.vorn", "v",      "n",          "--type",
                                            "text",    "--output", "t.vorn", "--overwrite"};
    QTest::newRow("weights") << QStringList{"weights", "export", "big.vorn",
                                            "near",    "t.gwt",  "--overwrite"};
}

/// In the middle of the work, by its own progress and on a full disk: what stood there stays.
void TestMeridorProjects::cancelsAndFailuresLeaveNothing()
{
    static const Workplace place;
    if (!QFile::exists(place.path("big.vorn"))) {
        // Few objects with many values and many neighbours: what is written is large, while the
        // scratch files of a load, which the limit holds for as well, are small.
        constexpr int kObjects = 800;
        constexpr int kTimes = 400;
        QByteArray rows;
        rows.reserve(kObjects * kTimes * 12); // appended to without a copy
        rows.append("id,x,y");
        for (int time = 0; time < kTimes; ++time)
            rows.append(",v").append(QByteArray::number(time));
        std::minstd_rand engine(3);
        for (int i = 0; i < kObjects; ++i) {
            rows.append('\n').append(QByteArray::number(i));
            for (int value = 0; value < kTimes + 2; ++value)
                rows.append(',').append(QByteArray::number(static_cast<int>(engine() % 100000000)));
        }
        place.file("points.csv", rows.append('\n'));
        const Outcome imported =
            place.run({"import", "points.csv", "big.vorn", "--x", "x", "--y", "y", "--key", "id",
                       "--no-fields", "--series", "v=v0..v399"});
        QVERIFY2(imported.code == 0, qPrintable(imported.err));
        QCOMPARE(place
                     .run({"weights", "create", "big.vorn", "near", "--method", "nearest",
                           "--count", "300"})
                     .code,
                 0);
    }
    QFETCH(QStringList, words);
    const QString target = words.filter(QRegularExpression("^t\\.")).first();
    place.file(target, "precious");
    const QStringList files = place.files();
    // New files: the table beside its target, or the scratch of the session.
    QDir(place.path("")).mkpath("scratch");
    const bool writesAsItGoes = words.first() == "export";
    const auto begun = [&] {
        return writesAsItGoes
                   ? place.files().size() > files.size()
                   : !QDir(place.path("scratch")).isEmpty(QDir::Dirs | QDir::NoDotAndDotDot);
    };
    const Outcome cancelled = place.interrupt(words + QStringList{"--scratch", "scratch"}, begun);
    QVERIFY2(cancelled.code == 130, qPrintable(cancelled.out + cancelled.err));
    QVERIFY2(cancelled.err.contains("cancelled"), qPrintable(cancelled.err));
    QCOMPARE(place.bytes(target), QByteArray("precious"));
    QCOMPARE(place.files(), files);
    QVERIFY(QDir(place.path("scratch")).isEmpty());

    // No file may grow beyond 4 MiB: the load keeps below that, the output does not.
    const QStringList limited{"-c", "ulimit -f 8192; exec \"$0\" \"$@\"", MERIDOR_PROGRAM};
    const Outcome loaded = place.run("/bin/sh", limited + QStringList{"info", "big.vorn"});
    QVERIFY2(loaded.code == 0, qPrintable(loaded.err));
    const Outcome full = place.run("/bin/sh", limited + words);
    QCOMPARE(full.code, 1);
    QVERIFY2(!writesAsItGoes || full.err.contains(target), qPrintable(full.err));
    QCOMPARE(place.bytes(target), QByteArray("precious"));
    QCOMPARE(place.files(), files);
    QVERIFY(QFile::remove(place.path(target)));
}

void TestMeridorProjects::refusesDamagedProjects_data()
{
    QTest::addColumn<int>("keep");
    QTest::newRow("empty") << 0;
    QTest::newRow("header alone") << 60;
    QTest::newRow("half") << -2;
}

void TestMeridorProjects::refusesDamagedProjects()
{
    QFETCH(int, keep);
    const Workplace place;
    makeProject(place);
    const QByteArray whole = place.bytes("p.vorn");
    place.file("cut.vorn", whole.left(keep < 0 ? whole.size() / 2 : keep));
    const Outcome outcome = place.run({"info", "cut.vorn"});
    QCOMPARE(outcome.code, 1);
    QVERIFY2(outcome.err.contains("cut.vorn: not a project"), qPrintable(outcome.err));
}

void TestMeridorProjects::theDemoChecksItsFigures()
{
    const Workplace place;
    const Outcome good = place.run({"demo", "out", "--samples", MERIDOR_TEST_SAMPLES});
    QVERIFY2(good.code == 0, qPrintable(good.out + good.err));
    QVERIFY2(good.out.contains("every figure is right"), qPrintable(good.out));
    for (const char *name : {"income.vorn", "income_2009.png", "income_moran.csv", "income.csv",
                             "income.dat", "income.dbf"})
        QVERIFY2(QFileInfo(place.path(QString("out/") + name)).size() > 0, name);

    // One income changed by a dollar: means and classes are off.
    for (const char *folder : {"us_income", "nc_sids", "carolina_climate"}) {
        const QString copy = QStringLiteral("samples/") + folder;
        QDir(place.path("")).mkpath(copy);
        for (const QFileInfo &file :
             QDir(QString(MERIDOR_TEST_SAMPLES) + "/" + folder).entryInfoList(QDir::Files))
            QVERIFY(QFile::copy(file.filePath(), place.path(copy + "/") + file.fileName()));
    }
    QByteArray table = place.bytes("samples/us_income/income_1929_2009.csv");
    QVERIFY(table.contains(",52736\n"));
    place.file("samples/us_income/income_1929_2009.csv", table.replace(",52736\n", ",52737\n"));
    const Outcome bad = place.run({"demo", "out", "--samples", "samples", "--overwrite", "--json"});
    QCOMPARE(bad.code, 1);
    QVERIFY(bad.json().value("wrong").toInt() >= 1);
}

QTEST_GUILESS_MAIN(TestMeridorProjects)
#include "tst_MeridorProjects.moc"
