// SPDX-License-Identifier: MIT
#include <QDir>
#include <QtTest>
#include "cli/program.h"

/// The conventions that every verb keeps: codes, help, quietness, refusals before work.
class TestMeridorUsage : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void initTestCase()
    {
        mExamples = examples(QString());
        QVERIFY(mExamples.size() > 25);
    }

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
        check({"map", "p.vorn", "x", "x.png", "--frames", "d"}, 2, "--frames");
        check({"map", "p.vorn", "x", "x.png", "--palette", "mud"}, 2, "YlGnBu");
        check({"map", "p.vorn", "x", "x.png", "--breaks", "3,2"}, 2, "ascend");
        check({"map", "p.vorn", "x", "x.png", "--breaks", "3", "--count", "4"}, 2, "--count");
        check({"map", "p.vorn", "x", "x.png", "--extent", "5,0,5,9"}, 2, "LEFT,BOTTOM,RIGHT,TOP");
        check({"map", "p.vorn", "x", "x.png", "--extent", "1,2,3,nan"}, 2, "nan is no number");
        check({"export", "p.vorn", "x.xml"}, 2, "x.xml");
        check({"info", "p.vorn"}, 1, "p.vorn: no such file");
        check({"info", ""}, 2, "the name of a file is empty");
        check({"query", "p.vorn", "x", "--circle", "1,1,1", "--centers"}, 2, "--centers");
        check({"--help"}, 0, "");
        check({"--version"}, 0, "");
    }

    void everyExampleOfTheHelpRuns()
    {
        const Workplace place;
        const auto shell = [&place](const QString &folder, const QString &line) {
            const QString script =
                QStringLiteral("cd '%1' && PATH=\"${0%/*}:$PATH\" && %2").arg(folder, line);
            return place.run("/bin/sh", {"-c", script, MERIDOR_PROGRAM});
        };
        const auto prepare = [&shell](const QString &folder, const QString &line) {
            const Outcome outcome = shell(folder, line);
            QVERIFY2(outcome.code == 0, qPrintable(line + outcome.err));
        };
        // Three folders for the examples: with the samples, with projects made of them by the
        // examples of import, and with weight sets in these.
        prepare(".",
                "mkdir files && for f in '" MERIDOR_TEST_SAMPLES "'/*/*; do cp \"$f\" files; done");
        prepare(".", "cp -r files maps");
        for (const QString &line : mExamples.value("import"))
            prepare("maps", line);
        prepare("maps", "meridor import nc_counties.geojson counties.vorn && "
                        "meridor import nc_counties.geojson rain.vorn --append --key fips "
                        "--name counties && cp income.vorn survey1998.vorn");
        prepare("maps", "meridor import wells.csv wells.vorn --key well --x x --y y && "
                        "meridor simulate wells.vorn level --grid drawn --cell 50 --seed 1 "
                        "--realizations 5 --into simulated");
        prepare(".", "cp -r maps sets");
        prepare("sets", "meridor weights create income.vorn queen --method queen");

        for (auto verb = mExamples.begin(); verb != mExamples.end(); ++verb) {
            const QString folder = verb.key() == "import"                ? "files"
                                   : verb.key().startsWith("weights cr") ? "maps"
                                   : verb.key() == "weights"             ? "maps"
                                                                         : "sets";
            prepare(".", QStringLiteral("rm -rf work && cp -r %1 work").arg(folder));
            QVERIFY2(!verb->isEmpty(), qPrintable(verb.key()));
            for (const QString &line : verb.value()) {
                const Outcome outcome = shell("work", line);
                QVERIFY2(outcome.code == 0, qPrintable(line + '\n' + outcome.err));
            }
        }
    }

    void completesInBash()
    {
        const Workplace place;
        place.file("map.geojson", squares());
        QCOMPARE(place.run({"import", "map.geojson", "p.vorn", "--key", "id"}).code, 0);
        QCOMPARE(place.run({"rename", "p.vorn", "id", "the id"}).code, 0);
        QCOMPARE(place.run({"completion", "script"}).code, 0);
        place.file("trial", ". ./script; PATH=\"${0%/*}:$PATH\"\n"
                            "COMP_WORDS=(\"$@\") COMP_CWORD=$(($# - 1))\n"
                            "_meridor; printf '%s\\n' \"${COMPREPLY[@]}\"");
        const auto completed = [&place](const QStringList &words) {
            const QStringList start{"-c", "trial=$1; shift; . ./trial", MERIDOR_PROGRAM, "trial",
                                    "meridor"};
            return place.run("/bin/bash", start + words).out.trimmed().split('\n').join(' ');
        };
        QCOMPARE(completed({"expo"}), QString("export"));
        QCOMPARE(completed({"-q", "weights", "sh"}), QString("show"));
        QCOMPARE(completed({"classes", "--metho"}), QString("--method"));
        QCOMPARE(completed({"classes", "--method", "jen"}), QString("jenks"));
        QCOMPARE(completed({"stats", "--scra"}), QString("--scratch"));
        QCOMPARE(completed({"stats", "--at", "1", "p.v"}), QString("p.vorn"));
        QCOMPARE(completed({"stats", "p.vorn", "the"}), QString("the\\ id"));
    }

    void writesAManualPageOfEveryVerb()
    {
        const Workplace place;
        QCOMPARE(place.run({"man", "pages"}).code, 0);
        QCOMPARE(QDir(place.path("pages")).entryList(QDir::Files).size(), mExamples.size());
        for (auto verb = mExamples.begin(); verb != mExamples.end(); ++verb) {
            const QString name = QString("meridor " + verb.key()).trimmed();
            const QString page =
                QString::fromUtf8(place.bytes("pages/" + QString(name).replace(' ', '-') + ".1"));
            QVERIFY2(page.contains(".SH EXAMPLES\n.nf\nmeridor "), qPrintable(name));
            QVERIFY2(page.contains("\\fB\\-\\-scratch\\fR \\fITEXT\\fR\n"), qPrintable(name));
        }
    }

    void refusesWhatHasNoMeaning()
    {
        const Workplace place;
        place.file("map.geojson", squares());
        place.file("t.csv", "id,v2000,v2001\na,1,2.5\nb,4,5\nc,7,\n");
        QCOMPARE(place
                     .run({"import", "map.geojson", "p.vorn", "--key", "id", "--table", "t.csv",
                           "--series", "v=v2000..v2001"})
                     .code,
                 0);
        QCOMPARE(place.run({"weights", "create", "p.vorn", "w", "--method", "queen"}).code, 0);
        const auto check = [&place](const QStringList &words, const char *told) {
            const InCase inCase(words);
            const Outcome outcome = place.run(words);
            QCOMPARE(outcome.code, 2);
            QVERIFY2(outcome.err.contains(told), qPrintable(outcome.err));
            QVERIFY2(!outcome.err.contains("stack"), qPrintable(outcome.err));
        };
        check({"info", "p.vorn", "--at", "yesterday"}, "yesterday is no number");
        check({"info", "p.vorn", "--at", "2001/2000"}, "ends before it starts");
        check({"stats", "p.vorn", "v", "--at", "2001/2000"}, "ends before it starts");
        check({"stats", "p.vorn", "v", "--at", "2000/2001"}, "is a span");
        check({"report", "p.vorn", "r.html", "--times", "2001/2000"}, "ends before it starts");
        check({"select", "p.vorn", "v", "--min", "5", "--max", "1"}, "ends before it starts");
        check({"export", "p.vorn", "v.csv", "--from", "2001", "--to", "2000"}, "before the first");
        check({"moran", "p.vorn", "v", "w", "--output", "q.vorn"}, "--save");
        check({"krige", "p.vorn", "v", "--model", "spherical:1:5", "--validate", "0", "--output",
               "q"},
              "--output does not apply without --into");
        check({"krige", "p.vorn", "v", "--model", "spherical:1:5", "--mean", "nan", "--into", "p"},
              "--mean: nan is no finite number");
        check({"krige", "p.vorn", "v", "--model", "spherical:1:5", "--grid", "map", "--cell", "1",
               "--into", "k"},
              "has a geography map already; see --to");
        check({"variogram", "p.vorn", "v", "--directions", "0,inf"}, "inf is no finite number");
        check({"variogram", "p.vorn", "v", "--cutoff", "-1"}, "--cutoff: -1 is not above 0");
        check({"variogram", "p.vorn", "v", "--cross", "v", "--estimator", "robust"},
              "no robust cross variogram");
        check({"weights", "create", "p.vorn", "x", "--range", "5"}, "--range does not apply");
        check({"weights", "create", "p.vorn", "x", "--method", "nearest", "--order", "2"},
              "--order does not apply to --method nearest");
        check({"weights", "create", "p.vorn", "x", "--power", "2"}, "apply to --weights row");
        check({"import", "map.geojson", "q.vorn", "--key", "id", "--table", "t.csv", "--series",
               "v=v2001..v2000"},
              "t.csv: field v2001 is behind field v2000");
        const Outcome classes = place.run({"classes", "p.vorn", "v", "--at", "1900"});
        QCOMPARE(classes.code, 1);
        QVERIFY2(classes.err.contains("v holds no values at 1900"), qPrintable(classes.err));
        QCOMPARE(place.files(), (QStringList{"map.geojson", "p.vorn", "t.csv"}));
    }

    // Names may look like the places of a message.
    void repeatsNamesLetterByLetter()
    {
        const Workplace place;
        const char *const rows = "a %1 %2 b,x,y,v %2 %3,t\n"
                                 "\"k %3 %2 %1\",1,2,3,2000\n\"k %3 %2 %1\",2,3,4,2000\n"
                                 "l,2,3,w %2 %1,2000\n";
        const QString file = place.file("f %1 %2.csv", rows);
        const auto check = [&](const QStringList &options, const char *told) {
            const InCase inCase(options);
            const Outcome outcome = place.run(
                QStringList{"import", file, "p.vorn", "--x", "x", "--y", "y", "--overwrite"}
                + options);
            QVERIFY2(outcome.err.contains(told), qPrintable(outcome.err));
        };
        check({"--key", "a %1 %2 b"}, "f %1 %2.csv, rows 1 and 2: object k %3 %2 %1 has");
        check({}, "f %1 %2.csv, field v %2 %3, row 3: \"w %2 %1\" makes the field text; numbers "
                  "among its");
        check({"--type", "v %2 %3=integer"}, "f %1 %2.csv, field v %2 %3, row 3: \"w %2 %1\"");
        check({"--start", "a %1 %2 b"}, "f %1 %2.csv, field a %1 %2 b, row 1: \"k %3 %2 %1\"");
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

    void aDashIsStandardOutputOrRefused()
    {
        const Workplace place;
        place.file("map.geojson", squares());
        QCOMPARE(place.run({"import", "map.geojson", "p.vorn", "--key", "id"}).code, 0);
        QCOMPARE(place.run({"weights", "create", "p.vorn", "w"}).code, 0);
        const QStringList names = place.files();
        const auto check = [&](const QStringList &words, int code, const char *out,
                               const char *told) {
            const InCase inCase(words);
            const Outcome outcome = place.run(words);
            QCOMPARE(outcome.code, code);
            QVERIFY2(outcome.out.contains(out), qPrintable(outcome.out.left(100)));
            QVERIFY2(outcome.err.contains(told), qPrintable(outcome.err));
            QCOMPARE(place.files(), names);
            QVERIFY(!QFileInfo::exists(place.path("-")));
        };
        check({"report", "p.vorn", "-"}, 0, "<!DOCTYPE html>", "note: /dev/stdout: 1 geography");
        check({"export", "p.vorn", "-", "--format", "csv"}, 0, "id\n", "/dev/stdout");
        check({"export", "p.vorn", "-", "--format", "netcdf"}, 0, "HDF", "/dev/stdout");
        check({"export", "p.vorn", "-", "--format", "zarr"}, 2, "", "is a directory");
        check({"weights", "export", "p.vorn", "w", "-", "--format", "gal"}, 0, "0 ", "");
        check({"map", "p.vorn", "id", "-"}, 2, "", "-: the name of a picture");
        check({"plot", "histogram", "p.vorn", "id", "-"}, 2, "", "-: the name of a picture");
        check({"variogram", "p.vorn", "id", "--plot", "-"}, 2, "", "-: the name of a picture");
        check({"map", "p.vorn", "id", "--frames", "-"}, 2, "", "a directory of pictures is not");
        check({"demo", "-"}, 2, "", "a directory of results is not written to standard output");
        check({"import", "map.geojson", "-"}, 2, "", "a project is not written to standard output");
        check({"upgrade", "p.vorn", "-"}, 2, "", "a project is not");
        check({"rename", "p.vorn", "id", "x", "--output", "-"}, 2, "", "a project is not");
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

private:
    /// The examples of a verb and of all below it, by the words that call the verb; each ends in
    /// one line. The help of each lists the common options.
    static QMap<QString, QStringList> examples(const QString &verb)
    {
        const QStringList words = verb.split(' ', Qt::SkipEmptyParts);
        const Outcome help = Workplace().run(words + QStringList{"--help"});
        if (help.code != 0 || !help.out.contains("--scratch"))
            return {};
        QMap<QString, QStringList> lines;
        QStringList below;
        QString part;
        for (const QString &line : help.out.split('\n')) {
            if (!line.startsWith(' '))
                part = line;
            else if (part == "Subcommands:" && line.at(2) != ' ')
                below.append(line.simplified().section(' ', 0, 0));
            else if (part == "Example:" && line.startsWith("  meridor"))
                lines[verb].append(line.trimmed());
            else if (part == "Example:")
                lines[verb].last() += '\n' + line;
        }
        if (!lines.contains(verb))
            lines.insert(verb, {});
        for (const QString &name : below)
            lines.insert(examples(QString(verb + ' ' + name).trimmed()));
        return lines;
    }

    QMap<QString, QStringList> mExamples;
};

QTEST_GUILESS_MAIN(TestMeridorUsage)
#include "tst_MeridorUsage.moc"
