// SPDX-License-Identifier: MIT
#include <QtTest>
#include "cli/program.h"

/// The conventions that every verb keeps: codes, help, quietness, refusals before work.
class TestMeridorUsage : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void endsWithTheStatedCode()
    {
        const auto check = [](const QStringList &arguments, int code, const char *told) {
            const InCase inCase(arguments);
            const Outcome outcome = Workplace().run(arguments);
            QCOMPARE(outcome.code, code);
            QVERIFY2(outcome.err.contains(told), qPrintable(outcome.err));
            QCOMPARE(outcome.out.isEmpty(), code != 0);
        };
        check({}, 2, "a verb is required");
        check({"paint"}, 2, "no verb paint\n"); // nothing is near it
        check({"exprot", "--help"}, 2, "no verb exprot; did you mean export?");
        check({"--cache", "5", "weights", "crate", "--help"}, 2, "did you mean create?");
        check({"map", "--hlep"}, 2, "no option --hlep; did you mean --help?");
        check({"info", "p.vorn", "q.vorn"}, 2, "q.vorn: one argument too many");
        check({"info", "p.vorn", "--colour"}, 2, "--colour");
        check({"stats", "p.vorn"}, 2, "DATASET");
        check({"classes", "p.vorn", "x", "--count", "0"}, 2, "--count");
        check({"classes", "p.vorn", "x", "--method", "best"}, 2, "--method");
        check({"map", "p.vorn", "x", "x.jpg"}, 2, "x.jpg");
        check({"export", "p.vorn", "x.xml"}, 2, "x.xml");
        check({"info", "p.vorn"}, 1, "p.vorn: no such file");
        check({"--help"}, 0, "");
        check({"--version"}, 0, "");
    }

    void everyVerbHasHelpWithAnExample()
    {
        for (const QString verb :
             {"import",  "info",    "stats",     "series",  "classes", "map",    "export",
              "query",   "zonal",   "rename",    "remove",  "convert", "subset", "select",
              "upgrade", "weights", "neighbors", "nearest", "moran",   "demo"}) {
            const Outcome outcome = Workplace().run({verb, "--help"});
            QCOMPARE(outcome.code, 0);
            QVERIFY2(outcome.out.contains("Example:\n  meridor " + verb), qPrintable(outcome.out));
        }
    }

    void neverReplacesAFileUnasked()
    {
        const Workplace place;
        const QString map = place.file("map.geojson", squares());
        place.file("p.vorn", "precious");
        const Outcome refused = place.run({"import", map, "p.vorn"});
        QCOMPARE(refused.code, 1);
        QVERIFY2(refused.err.contains("--overwrite"), qPrintable(refused.err));
        QCOMPARE(place.bytes("p.vorn"), QByteArray("precious"));
        QCOMPARE(place.run({"import", map, "p.vorn", "--overwrite"}).code, 0);
        QVERIFY(place.bytes("p.vorn") != QByteArray("precious"));
    }

    void runsWithoutHomeInAPathWithBlanks()
    {
        Workplace place("a place with blanks");
        place.environment = QProcessEnvironment(); // no HOME, no display, no locale, nothing
        for (const char *kept : {"LD_LIBRARY_PATH", "LSAN_OPTIONS"})
            place.environment.insert(QLatin1String(kept), qEnvironmentVariable(kept));
        const QString map =
            place.file("my map.geojson", squares().replace("\"a\"", "\"\xc3\xa4\""));
        const Outcome imported = place.run({"import", map, "my project.vorn", "--key", "id",
                                            "--name", QStringLiteral("Stra\u00dfen")});
        QVERIFY2(imported.code == 0, qPrintable(imported.err));
        QCOMPARE(imported.err, QString());
        const Outcome info = place.run({"info", "my project.vorn"});
        QVERIFY2(info.out.startsWith(QStringLiteral("Stra\u00dfen: 3 objects")),
                 qPrintable(info.out));
        const Outcome drawn = place.run({"map", "my project.vorn", "id", "a map.png"});
        QVERIFY2(drawn.code == 0, qPrintable(drawn.err));
        const Outcome series =
            place.run({"series", "my project.vorn", "id", QStringLiteral("\u00e4"), "--json"});
        QCOMPARE(series.json().value("object").toString(), QStringLiteral("\u00e4"));
    }

    void refusesToWriteOverItsInput()
    {
        const Workplace place;
        place.file("map.geojson", squares());
        QCOMPARE(place.run({"import", "map.geojson", "p.vorn"}).code, 0);
        QVERIFY(QFile::link(place.path("map.geojson"), place.path("link.geojson")));
        const QByteArray project = place.bytes("p.vorn");
        for (const QStringList &words : {QStringList{"import", "map.geojson", "link.geojson"},
                                         {"export", "p.vorn", "p.vorn", "--format", "csv"},
                                         {"upgrade", "p.vorn", "./p.vorn"}}) {
            const InCase inCase(words);
            const Outcome refused = place.run(words + QStringList{"--overwrite"});
            QCOMPARE(refused.code, 1);
            QVERIFY2(refused.err.contains("cannot be the output"), qPrintable(refused.err));
            QCOMPARE(place.bytes("map.geojson"), squares());
            QCOMPARE(place.bytes("p.vorn"), project);
        }
    }

    void tellsWhenTheResultCannotBeWritten()
    {
        const Workplace place;
        place.file("map.geojson", squares());
        QCOMPARE(place.run({"import", "map.geojson", "p.vorn"}).code, 0);
        const Outcome full =
            place.run("/bin/sh", {"-c", "exec \"$0\" info p.vorn >/dev/full", MERIDOR_PROGRAM});
        QCOMPARE(full.code, 1);
        QVERIFY2(full.err.contains("standard output"), qPrintable(full.err));
    }
};

QTEST_GUILESS_MAIN(TestMeridorUsage)
#include "tst_MeridorUsage.moc"
