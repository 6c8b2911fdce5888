// SPDX-License-Identifier: MIT
#include <QtTest>
#include "cli/program.h"

/// The conventions that every verb keeps: codes, help, quietness, refusals before work.
class TestMeridorUsage : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void endsWithTheStatedCode_data();
    void endsWithTheStatedCode();
    void everyVerbHasHelpWithAnExample_data();
    void everyVerbHasHelpWithAnExample();
    void neverReplacesAFileUnasked();
    void runsWithoutHomeInAPathWithBlanks();
    void refusesToWriteOverItsInput_data();
    void refusesToWriteOverItsInput();
    void tellsWhenTheResultCannotBeWritten();
    void takesCancelledWorkBack();
};

void TestMeridorUsage::endsWithTheStatedCode_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("told");
    QTest::newRow("nothing") << QStringList{} << 2 << "subcommand is required";
    QTest::newRow("unknown verb") << QStringList{"paint"} << 2 << "";
    QTest::newRow("unknown option") << QStringList{"info", "p.vorn", "--colour"} << 2 << "--colour";
    QTest::newRow("argument left out") << QStringList{"stats", "p.vorn"} << 2 << "DATASET";
    QTest::newRow("number out of range")
        << QStringList{"classes", "p.vorn", "x", "--count", "0"} << 2 << "--count";
    QTest::newRow("unknown method")
        << QStringList{"classes", "p.vorn", "x", "--method", "best"} << 2 << "--method";
    QTest::newRow("picture of another kind")
        << QStringList{"map", "p.vorn", "x", "x.jpg"} << 2 << "x.jpg";
    QTest::newRow("table of another kind")
        << QStringList{"export", "p.vorn", "x.xml"} << 2 << "x.xml";
    QTest::newRow("no such project")
        << QStringList{"info", "p.vorn"} << 1 << "p.vorn: no such file";
    QTest::newRow("help") << QStringList{"--help"} << 0 << "";
    QTest::newRow("version") << QStringList{"--version"} << 0 << "";
}

void TestMeridorUsage::endsWithTheStatedCode()
{
    QFETCH(QStringList, arguments);
    QFETCH(int, code);
    QFETCH(QString, told);
    const Outcome outcome = Workplace().run(arguments);
    QCOMPARE(outcome.code, code);
    QVERIFY2(outcome.err.contains(told), qPrintable(outcome.err));
    QCOMPARE(outcome.out.isEmpty(), code != 0);
}

void TestMeridorUsage::everyVerbHasHelpWithAnExample_data()
{
    QTest::addColumn<QString>("verb");
    for (const char *verb :
         {"import",  "info",    "stats",     "series",  "classes", "map",    "export",
          "query",   "zonal",   "rename",    "remove",  "convert", "subset", "select",
          "upgrade", "weights", "neighbors", "nearest", "moran",   "demo"})
        QTest::newRow(verb) << QString::fromLatin1(verb);
}

void TestMeridorUsage::everyVerbHasHelpWithAnExample()
{
    QFETCH(QString, verb);
    const Outcome outcome = Workplace().run({verb, QStringLiteral("--help")});
    QCOMPARE(outcome.code, 0);
    QVERIFY2(outcome.out.contains(QStringLiteral("Example:\n  meridor ") + verb),
             qPrintable(outcome.out));
}

void TestMeridorUsage::neverReplacesAFileUnasked()
{
    const Workplace place;
    const QString map = place.file(QStringLiteral("map.geojson"), squares());
    place.file(QStringLiteral("p.vorn"), "precious");
    const Outcome refused = place.run({QStringLiteral("import"), map, QStringLiteral("p.vorn")});
    QCOMPARE(refused.code, 1);
    QVERIFY2(refused.err.contains(QStringLiteral("--overwrite")), qPrintable(refused.err));
    QCOMPARE(place.bytes(QStringLiteral("p.vorn")), QByteArray("precious"));
    QCOMPARE(place
                 .run({QStringLiteral("import"), map, QStringLiteral("p.vorn"),
                       QStringLiteral("--overwrite")})
                 .code,
             0);
    QVERIFY(place.bytes(QStringLiteral("p.vorn")) != QByteArray("precious"));
}

void TestMeridorUsage::runsWithoutHomeInAPathWithBlanks()
{
    Workplace place(QStringLiteral("a place with blanks"));
    place.environment = QProcessEnvironment(); // no HOME, no display, no locale, nothing
    for (const char *kept : {"LD_LIBRARY_PATH", "LSAN_OPTIONS"})
        place.environment.insert(QLatin1String(kept), qEnvironmentVariable(kept));
    const QString map =
        place.file(QStringLiteral("my map.geojson"), squares().replace("\"a\"", "\"\xc3\xa4\""));
    const Outcome imported = place.run(
        {QStringLiteral("import"), map, QStringLiteral("my project.vorn"), QStringLiteral("--key"),
         QStringLiteral("id"), QStringLiteral("--name"), QStringLiteral("Stra\u00dfen")});
    QVERIFY2(imported.code == 0, qPrintable(imported.err));
    QCOMPARE(imported.err, QString());
    const Outcome info = place.run({QStringLiteral("info"), QStringLiteral("my project.vorn")});
    QVERIFY2(info.out.startsWith(QStringLiteral("Stra\u00dfen: 3 objects")), qPrintable(info.out));
    const Outcome drawn = place.run({QStringLiteral("map"), QStringLiteral("my project.vorn"),
                                     QStringLiteral("id"), QStringLiteral("a map.png")});
    QVERIFY2(drawn.code == 0, qPrintable(drawn.err));
    const Outcome series =
        place.run({QStringLiteral("series"), QStringLiteral("my project.vorn"),
                   QStringLiteral("id"), QStringLiteral("\u00e4"), QStringLiteral("--json")});
    QCOMPARE(series.json().value(QStringLiteral("object")).toString(), QStringLiteral("\u00e4"));
}

void TestMeridorUsage::refusesToWriteOverItsInput_data()
{
    QTest::addColumn<QStringList>("words");
    QTest::newRow("import") << QStringList{"import", "map.geojson", "link.geojson"};
    QTest::newRow("export") << QStringList{"export", "p.vorn", "p.vorn", "--format", "csv"};
    QTest::newRow("upgrade") << QStringList{"upgrade", "p.vorn", "./p.vorn"};
}

void TestMeridorUsage::refusesToWriteOverItsInput()
{
    QFETCH(QStringList, words);
    const Workplace place;
    place.file("map.geojson", squares());
    QCOMPARE(place.run({"import", "map.geojson", "p.vorn"}).code, 0);
    QVERIFY(QFile::link(place.path("map.geojson"), place.path("link.geojson")));
    const QByteArray map = place.bytes("map.geojson");
    const QByteArray project = place.bytes("p.vorn");
    const Outcome refused = place.run(words + QStringList{"--overwrite"});
    QCOMPARE(refused.code, 1);
    QVERIFY2(refused.err.contains("cannot be the output"), qPrintable(refused.err));
    QCOMPARE(place.bytes("map.geojson"), map);
    QCOMPARE(place.bytes("p.vorn"), project);
}

void TestMeridorUsage::tellsWhenTheResultCannotBeWritten()
{
    const Workplace place;
    place.file("map.geojson", squares());
    QCOMPARE(place.run({"import", "map.geojson", "p.vorn"}).code, 0);
    const Outcome full =
        place.run("/bin/sh", {"-c", "exec \"$0\" info p.vorn >/dev/full", MERIDOR_PROGRAM});
    QCOMPARE(full.code, 1);
    QVERIFY2(full.err.contains("standard output"), qPrintable(full.err));
}

void TestMeridorUsage::takesCancelledWorkBack()
{
    const Workplace place;
    QByteArray rows = "id,x,y\n";
    for (int i = 0; i < 400000; ++i)
        rows += QByteArray::number(i) + ',' + QByteArray::number(i % 1000) + ','
                + QByteArray::number(i / 1000) + '\n';
    place.file("points.csv", rows);
    place.file("p.vorn", "precious");
    QDir(place.path("")).mkdir("scratch");
    // The scratch directory appears right before the work begins.
    const Outcome outcome = place.interrupt(
        {"import", "points.csv", "p.vorn", "--x", "x", "--y", "y", "--key", "id", "--overwrite",
         "--scratch", "scratch"},
        [&place] {
            return QDir(place.path("scratch")).entryList(QDir::Dirs | QDir::NoDotAndDotDot).size()
                   == 1;
        });
    QCOMPARE(outcome.code, 130);
    QCOMPARE(place.bytes("p.vorn"), QByteArray("precious"));
    QCOMPARE(place.files(), (QStringList{"p.vorn", "points.csv"}));
    QCOMPARE(QDir(place.path("scratch")).entryList(QDir::Dirs | QDir::NoDotAndDotDot).size(), 0);
}

QTEST_GUILESS_MAIN(TestMeridorUsage)
#include "tst_MeridorUsage.moc"
