// SPDX-License-Identifier: MIT
#include <QJsonArray>
#include <QRegularExpression>
#include <QtTest>
#include <cmath>
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
        place.run({"info", project, "--json"}).at("geographies").toArray();
    for (const QJsonValue &geography : geographies)
        for (const QJsonValue &dataset : geography.toObject().value("datasets").toArray())
            names.append(geography.toObject().value("name").toString() + '/'
                         + dataset.toObject().value("name").toString());
    return names;
}

/// In the middle of the work, by its own progress and on a full disk: what stood there stays.
void checkBrokenOff(const Workplace &place, const QStringList &words)
{
    const InCase inCase(words);
    const QString target = words.filter(QRegularExpression("^t\\.")).first();
    place.file(target, "precious");
    const QStringList files = place.files();
    // New entries: what is written beside the target, or the scratch of the session.
    QDir(place.path("")).mkpath("scratch");
    const bool writesAsItGoes = words.first() == "export";
    const auto entries = [&place] {
        return QDir(place.path("")).entryList(QDir::AllEntries | QDir::Hidden).size();
    };
    const int before = entries();
    const auto begun = [&] {
        return writesAsItGoes
                   ? entries() > before
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

} // namespace

class TestMeridorProjects : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void statisticsLeaveMissingValuesOut()
    {
        const Workplace place;
        makeProject(place);
        const Outcome stats = place.run({"stats", "p.vorn", "v", "--json"});
        const auto number = [&stats](const char *at) { return stats.at(at).toDouble(); };
        QCOMPARE(stats.at("times").toArray().size(), 2);
        QCOMPARE(number("times/0/mean"), 4.0);
        QCOMPARE(number("times/1/count"), 2.0);
        QCOMPARE(number("times/1/mean"), 3.75);
        QCOMPARE(number("times/1/stddev"), 1.25);
        QCOMPARE(number("overall/count"), 5.0);
        QCOMPARE(number("overall/mean"), 3.9);
        QCOMPARE(number("overall/max"), 7.0);
        const QStringList nowhere{"stats", "p.vorn", "v", "--at", "1900", "--json"};
        QVERIFY(place.run(nowhere).at("times/0/mean").isNull());
    }

    // Verbs that only look leave values packed, so damage shows in the verb that needs the value. The
    // last block is followed by eight bytes for the models of variograms.
    void damageShowsWhereItIsRead()
    {
        const Workplace place;
        makeProject(place);
        const QByteArray whole = place.bytes("p.vorn");
        const QStringList names = datasetNames(place, "p.vorn");
        QByteArray damaged = whole;
        damaged[whole.size() - 9] = static_cast<char>(~damaged[whole.size() - 9]);
        place.file("p.vorn", damaged);
        QCOMPARE(place.run({"info", "p.vorn"}).code, 0);
        int failed = 0;
        for (const QString &name : names) {
            const Outcome outcome = place.run({"stats", "p.vorn", name});
            QVERIFY2(outcome.code == 0 || outcome.err.contains("p.vorn: values could not be read"),
                     qPrintable(name + ": " + outcome.err));
            failed += outcome.code == 1;
        }
        QCOMPARE(failed, 1);
        place.file("v.csv", "precious"); // is not replaced by a table that lacks values
        QCOMPARE(place.run({"export", "p.vorn", "v.csv", "--overwrite"}).code, 1);
        QCOMPARE(place.bytes("v.csv"), QByteArray("precious"));
    }

    void classesCountEveryValueOnce()
    {
        const Workplace place;
        makeProject(place);
        const auto check = [&place](const QStringList &options, const QJsonArray &breaks,
                                    const QJsonArray &counts) {
            const QJsonObject classes =
                place.run(QStringList{"classes", "p.vorn", "v", "--json"} + options).json();
            QCOMPARE(classes.value("breaks").toArray(), breaks);
            QCOMPARE(classes.value("counts").toArray(), counts);
        };
        check({"--count", "2"}, {1, 3.25, 7}, {2, 3});
        check({"--count", "2", "--at", "2000"}, {1, 2.5, 7}, {1, 2});
        check({"--count", "9", "--at", "2001"}, {2.5, 3.75, 5}, {1, 1}); // more than values
        check({"--method", "equal", "--count", "2"}, {1, 3, 7}, {2, 3});
        check({"--method", "quantile", "--count", "5"}, {1, 1, 2.5, 4, 5, 7}, {1, 1, 1, 1, 1});
    }

    void exportsReadBack()
    {
        const auto check = [](const QString &file, const QStringList &options, const char *line) {
            const Workplace place;
            makeProject(place);
            const QStringList words =
                QStringList{"export", "p.vorn", file, "--datasets", "v"} + options;
            const Outcome outcome = place.run(words);
            QVERIFY2(outcome.code == 0, qPrintable(outcome.err));
            const QByteArray content = place.bytes(file).replace("\r\n", "\n");
            QVERIFY2(content.contains(line), content.constData());
            QCOMPARE(content.contains("2000"), !options.contains("--from"));
            QStringList expected{file, "map.geojson", "p.vorn", "t.csv"};
            if (file.endsWith(".dbf"))
                expected.append("t.cpg"); // the code page belongs to the table
            expected.sort();
            QCOMPARE(place.files(), expected);
            QCOMPARE(place.run(words).code, 1); // it is there
        };
        check("t.csv2.csv", {"--missing", "?"}, "c,2001,2001,?\n");
        check("e.csv", {}, "c,2001,2001,\n");
        check("t.dat", {}, "c 2001 2001 -999\n");
        check("y.csv", {"--from", "2001"}, "a,2001,2001,2.5\n");
        check("t.dbf", {}, "2001");
    }

    void countsOfOneReadRight()
    {
        const Workplace place;
        place.file("one.csv", "id,x,y,v\na,1,2,3.5\n");
        place.file("two.csv", "id,x,y,v\na,1,2,3\nb,2,2,4\n");
        place.file("d.csv", "id,from,to,x,y,v\na,2000,2003,1,2,3.5\nb,2001,2002,2,2,4\n");
        place.file("t.csv", "id,w2000\na,1\nz,2\n");
        place.file("o.csv", "from,to,weight\na,b,1\ny,a,1\n");
        const QRegularExpression wrong("(^|[^0-9.,-])1 (?!exists)[a-z]*[^s ]s\\b");
        for (const QStringList &words :
             {QStringList{"import", "one.csv", "p.vorn", "--x", "x", "--y", "y", "--key", "id",
                          "--table", "t.csv", "--series", "w=w2000..w2000"},
              {"info", "p.vorn", "--at", "2000"},
              {"info", "p.vorn", "--at", "1999"},
              {"plot", "histogram", "p.vorn", "v", "h.svg"},
              {"plot", "boxes", "p.vorn", "w", "b.svg"},
              {"plot", "scatter", "p.vorn", "v", "w", "s.svg"},
              {"plot", "time", "p.vorn", "w", "t.svg", "--object", "a"},
              {"map", "p.vorn", "v", "m.svg"},
              {"export", "p.vorn", "o2.csv"},
              {"convert", "p.vorn", "v", "v2", "--type", "integer"},
              {"report", "p.vorn", "r.html"},
              {"import", "d.csv", "d.vorn", "--x", "x", "--y", "y", "--key", "id", "--start",
               "from", "--end", "to"},
              {"plot", "boxes", "d.vorn", "v", "d.svg"}, // values that hold while objects exist
              {"subset", "p.vorn", "s", "--objects", "a"},
              {"import", "two.csv", "q.vorn", "--x", "x", "--y", "y", "--key", "id"},
              {"weights", "import", "q.vorn", "o.csv", "set"},
              {"weights", "export", "q.vorn", "set", "o3.csv"}}) {
            const Outcome outcome = place.run(words);
            QVERIFY2(outcome.code == 0, qPrintable(words.join(' ') + outcome.err));
            for (const QString &line : QString(outcome.out + outcome.err).split('\n')) {
                QVERIFY2(!line.contains(wrong), qPrintable(line));
                QVERIFY2(!line.endsWith(' '), qPrintable(line));
            }
        }
    }

    void layersHaveSettings()
    {
        const Workplace place;
        makeProject(place);
        QCOMPARE(place.run({"rename", "p.vorn", "v", "v: of a, b"}).code, 0);
        /// @param fills  colours that the picture has, and after "!" those that it has not.
        const auto draws = [&place](const QStringList &options, const QStringList &fills) {
            const Outcome outcome =
                place.run(QStringList{"map", "p.vorn", "id", "m.svg", "--overwrite", "--at", "2000"}
                          + options);
            QVERIFY2(outcome.code == 0, qPrintable(outcome.err));
            for (const QString &fill : fills) {
                const bool isIn = !fill.startsWith('!');
                QVERIFY2(place.bytes("m.svg").contains(fill.mid(isIn ? 0 : 1).toUtf8()) == isIn,
                         qPrintable(fill + options.join(' ')));
            }
        };
        const auto refuses = [&place](const QStringList &options, int code, const char *told) {
            const Outcome outcome =
                place.run(QStringList{"map", "p.vorn", "id", "m.svg", "--overwrite"} + options);
            QCOMPARE(outcome.code, code);
            QVERIFY2(outcome.err.contains(told), qPrintable(outcome.err));
        };
        const QString light("#ebf2c4"); // the ends of the palette lagoon
        const QString dark("#173a6b");
        const QString red("#6e1423"); // of ember, the first palette of layers
        draws({"--layer", "v: of a, b"}, {red, '!' + dark});
        draws({"--layer", "v: of a, b:method=equal,count=3"}, {dark, light, '!' + red});
        draws({"--layer", "land/v: of a, b:breaks=1,2,5,palette=ember,reverse,all-times"}, {red});
        draws({"--layer", "v: of a, b:breaks=7,8,at=2000,palette=slate"}, {"#22303c", '!' + dark});
        draws({"--layer", "land:below", "--mark", "b"}, {"#ff9500", ">selected<"});
        draws({}, {});
        const int shapes = place.bytes("m.svg").count("<path");
        draws({"--extent", "0.1,0.1,0.2,0.2"}, {}); // the other squares are outside
        QVERIFY2(place.bytes("m.svg").count("<path") < shapes, qPrintable(QString::number(shapes)));
        refuses({"--layer", "v:count=3,colour=red"}, 1, "v");
        refuses({"--layer", "v: of a, b:colour=red"}, 2, "no setting colour=red");
        refuses({"--layer", "v: of a, b:method=box,count=3"}, 2, "count: the number of classes");
        refuses({"--layer", "v: of a, b:count=0"}, 2, "count=0 is no number from 1 to 64");
        refuses({"--layer", "v: of a, b:breaks=1,x"}, 2, "x is no number");
        refuses({"--layer", "land:method=equal"}, 2, "outlines have no classes");
        refuses({"--mark", "z"}, 1, "z");
    }

    void refusesOptionsWithoutEffect()
    {
        const Workplace place;
        makeProject(place);
        const auto check = [&place](const char *file, const QStringList &options) {
            const Outcome outcome = place.run(QStringList{"export", "p.vorn", file} + options);
            QCOMPARE(outcome.code, 2);
            QVERIFY2(outcome.err.contains(options.first()), qPrintable(outcome.err));
        };
        check("g.tif", {"--from", "2000"});
        check("g.tif", {"--layout", "wide"});
        check("g.gpkg", {"--missing", "-"});
        check("g.csv", {"--layer", "x"});
    }

    void streamsAreWrittenDirectly()
    {
        const Workplace place;
        makeProject(place);
        const QString table("id,v\na,2.5\nb,5\nc,\n");
        const auto words = [](const QString &target) {
            return QStringList{"export", "p.vorn", target, "--at", "2001"};
        };
        QCOMPARE(place.run(words("-")).out, table);
        QCOMPARE(place.run(words("/dev/stdout")).out, table);
        QCOMPARE(place.run(words("-") + QStringList{"--json"}).out, table);
        QCOMPARE(place.run(words("-") + QStringList{"--format", "gpkg"}).out.left(6),
                 QString("SQLite"));
        QCOMPARE(place.run(words("-") + QStringList{"--format", "shapefile"}).code, 2);
        const QString shell = "mkfifo pipe; cat pipe > got & \"$0\" export p.vorn pipe --format "
                              "csv --at 2001 && test -p pipe; echo $?; wait";
        QCOMPARE(place.run("/bin/sh", {"-c", shell, MERIDOR_PROGRAM}).out, QString("0\n"));
        QCOMPARE(place.bytes("got"), table.toUtf8());
        // Nobody reads, nobody will: a message and 1, or the end by Ctrl-C.
        const QString broken = "\"$0\" export p.vorn - --at 2001 2>message | true; "
                               "\"$0\" export p.vorn - > /dev/full 2>full; echo $?";
        QCOMPARE(place.run("/bin/sh", {"-c", broken, MERIDOR_PROGRAM}).out, QString("1\n"));
        QVERIFY2(place.bytes("full").contains("/dev/stdout: "), place.bytes("full").constData());
        const Outcome waiting =
            place.interrupt(words("pipe") + QStringList{"--format", "csv", "--scratch", "s"},
                            [&place] { return QDir(place.path("s")).exists(); });
        QCOMPARE(waiting.code, 130);
    }

    void renamesAndRemoves()
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
        QCOMPARE(place.run({"import", "map.geojson", "p.vorn", "--append", "--name", "air"}).code,
                 0);
        const Outcome ambiguous = place.run({"series", "p.vorn", "id", "a"});
        QCOMPARE(ambiguous.code, 1);
        QVERIFY2(ambiguous.err.contains("water/id"), qPrintable(ambiguous.err));
        QCOMPARE(place.run({"series", "p.vorn", "water/id", "a"}).code, 0);
        QCOMPARE(place.run({"remove", "p.vorn", "water", "--geography"}).code, 0);
        QCOMPARE(place.run({"rename", "p.vorn", "id", "id", "--smallest"}).code, 0);
        QCOMPARE(place.run({"rename", "p.vorn", "id", "id", "--output", "r.vorn"}).code, 0);
        QCOMPARE(place.bytes("r.vorn"), place.bytes("p.vorn")); // values are copied as packed
        QCOMPARE(datasetNames(place, "p.vorn"), QStringList{"air/id"});
    }

    void changesWeightSetsModelsAndDescriptions()
    {
        const Workplace place;
        QByteArray wells("id,x,y,v\n");
        for (int i = 0; i < 60; ++i)
            wells += QStringLiteral("%1,%2,%3,%4\n")
                         .arg(i)
                         .arg(i % 10)
                         .arg(i / 10)
                         .arg(std::sin(i % 10) + std::cos(i / 10))
                         .toLatin1();
        place.file("wells.csv", wells);
        const auto check = [&place](const QStringList &words, int code, const char *told) {
            const InCase inCase(words);
            const Outcome outcome = place.run(words);
            QCOMPARE(outcome.code, code);
            QVERIFY2(QString(outcome.out + outcome.err).contains(told), qPrintable(outcome.err));
        };
        check({"import", "wells.csv", "p.vorn", "--key", "id", "--x", "x", "--y", "y"}, 0, "");
        check({"weights", "create", "p.vorn", "w", "--method", "nearest"}, 0, "");
        check({"variogram", "p.vorn", "v", "--model", "spherical", "--save", "m"}, 0, "");
        check({"rename", "p.vorn", "w", "near", "--weights"}, 0, "renamed w");
        check({"duplicate", "p.vorn", "wells/near", "far", "--weights"}, 0, "duplicated");
        check({"rename", "p.vorn", "far", "near", "--weights"}, 1, "a weight set near already");
        check({"duplicate", "p.vorn", "near", "far", "--weights"}, 1, "a weight set far already");
        check({"remove", "p.vorn", "near", "--weights"}, 0, "");
        check({"rename", "p.vorn", "m", "n", "--model", "--dataset", "v"}, 0, "");
        check({"duplicate", "p.vorn", "n", "o", "--model", "--dataset", "v"}, 0, "");
        check({"rename", "p.vorn", "o", "n", "--model", "--dataset", "v"}, 1,
              "a variogram model n");
        check({"rename", "p.vorn", "o", "n", "--model"}, 1, "the project has no variogram models");
        check({"remove", "p.vorn", "n", "m", "--model", "--dataset", "v"}, 1, "there are: n, o");
        check({"remove", "p.vorn", "n", "--model", "--dataset", "v"}, 0, "");
        check({"remove", "p.vorn", "v", "--dataset", "v"}, 2, "see --model");
        check({"remove", "p.vorn", "v", "--weights", "--geography"}, 2, "exclude each other");
        check({"duplicate", "p.vorn", "v", "-v", "--dataset", "v"}, 2, "-v");
        check({"duplicate", "p.vorn", "v", "u"}, 0, "duplicated v");
        check({"duplicate", "p.vorn", "v", "u"}, 1, "a dataset u already");
        check({"duplicate", "p.vorn", "wells", "wells", "--geography"}, 1, "a geography wells");
        check({"duplicate", "p.vorn", "wells", "w2", "--geography"}, 0, "duplicated wells");
        check({"info", "p.vorn"}, 0, "cut from wells");
        check({"remove", "p.vorn", "w2", "--geography"}, 0, "");
        check({"describe", "p.vorn", "u", "--summary", "one", "--history", "two\nthree"}, 0, "");
        check({"describe", "p.vorn", "u", "--summary", ""}, 0, "three");
        check({"describe", "p.vorn", "u"}, 0, "summary: \nhistory: two\nthree\n");
        check({"describe", "p.vorn", "wells", "--geography", "--history", "drilled"}, 0, "drilled");
        check({"describe", "p.vorn", "wells", "--geography", "--summary", "s"}, 2, "history alone");
        const Outcome info = place.run({"info", "p.vorn", "--json"});
        QCOMPARE(info.at("geographies/0/weightSets").toArray(), QJsonArray{"far"});
        QCOMPARE(info.at("geographies/0/history").toString(), QString("drilled"));
        QCOMPARE(info.at("geographies/0/datasets/2/history").toString(), QString("two\nthree"));
        QCOMPARE(info.at("variogramModels").toArray().size(), 1);
        QCOMPARE(info.at("variogramModels/0/name").toString(), QString("o"));
        QCOMPARE(info.at("variogramModels/0/dataset").toString(), QString("wells/v"));
    }

    void cancelsAndFailuresLeaveNothing()
    {
        const Workplace place;
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
        for (const char *table : {"t.csv", "t.dat", "t.dbf"})
            checkBrokenOff(place, {"export", "big.vorn", table, "--overwrite"});
        checkBrokenOff(place, {"weights", "export", "big.vorn", "near", "t.gwt", "--overwrite"});
        checkBrokenOff(place, {"convert", "big.vorn", "v", "n", "--type", "text", "--output",
                               "t.vorn", "--overwrite"});
    }

    void theDemoChecksItsFigures()
    {
        const Workplace place;
        const Outcome good = place.run({"demo", "out", "--samples", MERIDOR_TEST_SAMPLES});
        QVERIFY2(good.code == 0, qPrintable(good.out + good.err));
        QVERIFY2(good.out.contains("every figure is right"), qPrintable(good.out));
        for (const char *name : {"demo.vorn", "report.html", "then_and_now.png", "income_2009.png",
                                 "rain_1999_09.png", "moran_2009.svg", "level_above_41.png"})
            QVERIFY2(QFileInfo(place.path(QString("out/") + name)).size() > 0, name);

        // One income changed by a dollar: means and classes are off.
        for (const char *folder :
             {"us_income", "us_states_history", "nc_sids", "carolina_climate", "wells"}) {
            const QString copy = QStringLiteral("samples/") + folder;
            QDir(place.path("")).mkpath(copy);
            for (const QFileInfo &file :
                 QDir(QString(MERIDOR_TEST_SAMPLES) + "/" + folder).entryInfoList(QDir::Files))
                QVERIFY(QFile::copy(file.filePath(), place.path(copy + "/") + file.fileName()));
        }
        QByteArray table = place.bytes("samples/us_income/income_1929_2009.csv");
        QVERIFY(table.contains(",52736\n"));
        place.file("samples/us_income/income_1929_2009.csv", table.replace(",52736\n", ",52737\n"));
        const Outcome bad =
            place.run({"demo", "out", "--samples", "samples", "--overwrite", "--json"});
        QCOMPARE(bad.code, 1);
        QVERIFY(bad.json().value("wrong").toInt() >= 1);
        // One level changed by a metre: the model and all that follows from it is off.
        table = place.bytes("samples/wells/wells.csv");
        QVERIFY(table.contains("W050,"));
        const int level = table.indexOf('\n', table.indexOf("W050,")) - 4;
        table[level] = table[level] == '9' ? '8' : '9';
        place.file("samples/wells/wells.csv", table);
        QStringList wrong;
        for (const QJsonValue &step :
             place.run({"demo", "out", "--samples", "samples", "--overwrite", "--json"})
                 .json()["steps"]
                 .toArray())
            if (step["chapter"] == "Levels between wells" && !step["right"].toBool())
                wrong.append(step["step"].toString());
        QCOMPARE(wrong.join(' '), QString("variogram krige compare validate simulate"));
    }
};

QTEST_GUILESS_MAIN(TestMeridorProjects)
#include "tst_MeridorProjects.moc"
