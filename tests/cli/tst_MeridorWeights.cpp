// SPDX-License-Identifier: MIT
#include <QJsonArray>
#include <QtTest>
#include "cli/program.h"

namespace {

/// Four squares in a row, "d" from 2001 on; keys have a blank in their other name.
QByteArray row()
{
    QByteArray map = squares();
    map.replace("\"coordinates\":[[[5,0],[6,0],[6,1],[5,1],[5,0]]]",
                "\"coordinates\":[[[2,0],[3,0],[3,1],[2,1],[2,0]]]");
    const int c = map.lastIndexOf("{\"type\":\"Feature\",");
    QByteArray d = map.mid(c, map.lastIndexOf("]}") - c);
    d.replace("\"c\"", "\"d\"").replace("[3,", "[4,").replace("[2,", "[3,");
    return map.insert(map.lastIndexOf("]}"), ',' + d);
}

} // namespace

/// Spatial weights and what rests on them, by the commands alone.
class TestMeridorWeights : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void initTestCase()
    {
        mPlace.file("map.geojson", row());
        mPlace.file("t.csv", "id,name,from,v2000,v2001,u2001\na,A 1,2000,1,1,\nb,B 2,2000,2,3,1\n"
                             "c,C 3,2000,4,5,5\nd,D 4,2001,,7,7\n");
        const Outcome outcome = mPlace.run(
            {"import", "map.geojson", "p.vorn", "--key", "id", "--name", "land", "--table", "t.csv",
             "--series", "v=v2000..v2001", "--series", "u=u2001..u2001", "--start", "from"});
        QVERIFY2(outcome.code == 0, qPrintable(outcome.err));
        const Outcome made = mPlace.run({"weights", "create", "p.vorn", "queen", "--at", "2000"});
        QVERIFY2(made.code == 0, qPrintable(made.err));
    }

    void followsTheObjectsThroughTime()
    {
        QCOMPARE(summary({"p.vorn", "queen", "--at", "2000"}).value("links").toInt(), 4);
        const QJsonObject later = summary({"p.vorn", "queen", "--at", "2001"});
        QCOMPARE(later.value("links").toInt(), 6);
        QCOMPARE(later.value("mean").toDouble(), 1.5);
        QCOMPARE(later.value("least").toInt(), 1);
        const QJsonArray neighbors = neighborsOf({"p.vorn", "queen", "C 3", "--at", "2001"});
        QCOMPARE(neighbors.size(), 2);
        QCOMPARE(neighbors[0].toObject().value("weight").toDouble(), 0.5);
        QCOMPARE(neighbors[0].toObject().value("name").toString(), QString("B 2"));
        const Outcome selected = mPlace.run({"select", "p.vorn", "v", "--min", "5"});
        QCOMPARE(selected.out.simplified(), QString("object name value c C 3 5 d D 4 7"));
        QCOMPARE(mPlace.run({"neighbors", "p.vorn", "queen", "d", "--at", "2000"}).code,
                 1); // not yet there
        QCOMPARE(mPlace.run({"weights", "show", "p.vorn", "queen", "--at", "1900"}).code,
                 1); // nothing is

        QCOMPARE(mPlace.run({"weights", "remove", "p.vorn", "queen", "--output", "bare.vorn"}).code,
                 0);
        const auto listed = [this](const char *project, const char *at) {
            return mPlace.run({"weights", "list", project, "--json"}).at(at).toArray().size();
        };
        QCOMPARE(listed("bare.vorn", "sets"), 0);
        QCOMPARE(listed("p.vorn", "sets/0/stored"), 1); // what was asked for is kept
    }

    void filesBringTheSameSetBack()
    {
        const auto check = [this](const QString &file, const char *key, const char *content,
                                  double weight) {
            const InCase inCase(file);
            const Outcome written = mPlace.run(
                {"weights", "export", "p.vorn", "queen", file, "--key", key, "--at", "2000"});
            QVERIFY2(written.code == 0, qPrintable(written.err));
            QCOMPARE(written.err.contains("no weights"), file.endsWith(".gal"));
            QCOMPARE(mPlace.bytes(file), content);
            const Outcome read =
                mPlace.run({"weights", "import", "p.vorn", file, "back", "--key", key, "--at",
                            "2000", "--output", "q.vorn", "--overwrite", "--json"});
            QVERIFY2(read.code == 0, qPrintable(read.err));
            QCOMPARE(read.json().value("links").toInt(), 4);
            QCOMPARE(read.json().value("unnamed").toArray().size(), 1); // "d" is not yet there
            const QJsonArray neighbors = neighborsOf({"q.vorn", "back", "b", "--at", "2000"});
            QCOMPARE(neighbors.size(), 2);
            for (const QJsonValue &neighbor : neighbors)
                QCOMPARE(neighbor.toObject().value("weight").toDouble(), weight);
            QCOMPARE(mPlace.run({"weights", "export", "p.vorn", "queen", file}).code,
                     1); // it is there
        };
        const char *const lines = "0 3 land id\na b 1\nb a 0.5\nb c 0.5\nc b 1\n";
        check("s.gal", "id", "0 3 land id\na 1\nb\nb 2\na c\nc 1\nb\n", 1.0);
        check("s.gwt", "id", lines, 0.5);
        check("s.kwt", "id", lines, 0.5);
        // Names with blanks.
        check("s.csv", "name", "from,to,weight\nA 1,B 2,1\nB 2,A 1,0.5\nB 2,C 3,0.5\nC 3,B 2,1\n",
              0.5);
    }

    void idsAreMatchedNeverPositions()
    {
        mPlace.file("other.gal", "3\nc 2\nx\n d\n\nd 0\n\ny 1\na\n");
        const QStringList words{"weights", "import",   "p.vorn", "other.gal",
                                "o",       "--output", "o.vorn", "--json"};
        const Outcome outcome = mPlace.run(words);
        QVERIFY2(outcome.code == 0, qPrintable(outcome.err));
        QCOMPARE(outcome.json().value("unknown").toArray(), (QJsonArray{"x", "y"}));
        QCOMPARE(outcome.json().value("unnamed").toArray(), (QJsonArray{"a", "b"}));
        QVERIFY2(outcome.err.contains("x, y"), qPrintable(outcome.err));
        const QJsonObject now = summary({"o.vorn", "o"});
        QCOMPARE(now.value("links").toInt(), 1);
        QCOMPARE(now.value("islands").toArray(), (QJsonArray{"a", "b", "d"}));
        QCOMPARE(mPlace.run(words + QStringList{"--strict", "--overwrite"}).code, 1);
        // Rows without keys have no names to match.
        QCOMPARE(mPlace.run({"import", "map.geojson", "nokey.vorn", "--no-fields"}).code, 0);
        const Outcome nameless = mPlace.run({"weights", "import", "nokey.vorn", "other.gal", "o"});
        QCOMPARE(nameless.code, 1);
        QVERIFY2(nameless.err.contains("--key"), qPrintable(nameless.err));
    }

    /// Each key is written so that it reads back as it is, or refused by its name.
    void keysSurviveOrAreRefused()
    {
        const QStringList keys{"a b",  " a",  "say \"x\"", "two\nlines",
                               "cr\r", "x,y", "\"",        "plain\"q"};
        QByteArray table("id,key\n");
        QByteArray points("id,x,y\n");
        for (int i = 0; i < keys.size(); ++i) {
            QString quoted = keys[i];
            table += QString("%1,\"%2\"\n").arg(i).arg(quoted.replace('"', "\"\"")).toUtf8();
            points += QString("%1,%1,0\n").arg(i).toUtf8();
        }
        mPlace.file("odd.csv", table);
        mPlace.file("odd_points.csv", points);
        QCOMPARE(mPlace
                     .run({"import", "odd_points.csv", "odd.vorn", "--key", "id", "--x", "x", "--y",
                           "y", "--table", "odd.csv"})
                     .code,
                 0);
        QCOMPARE(mPlace
                     .run({"weights", "create", "odd.vorn", "near", "--method", "nearest",
                           "--count", "1"})
                     .code,
                 0);
        const QStringList words{"weights",     "export", "odd.vorn", "near",
                                "odd_set.csv", "--key",  "key"};
        const Outcome written = mPlace.run(words);
        QVERIFY2(written.code == 0, qPrintable(written.err));
        const Outcome read = mPlace.run({"weights", "import", "odd.vorn", "odd_set.csv", "back",
                                         "--key", "key", "--strict", "--json"});
        QVERIFY2(read.code == 0, qPrintable(read.err));
        QCOMPARE(read.json().value("links").toInt(), 14); // two at each but the ends
        for (const char *format : {"gal", "gwt", "kwt"}) {
            const Outcome refused =
                mPlace.run(words + QStringList{"--format", format, "--overwrite"});
            QCOMPARE(refused.code, 1);
            QVERIFY2(refused.err.contains("\"a b\""), qPrintable(refused.err));
        }
        const Outcome streamed = mPlace.run({"weights", "export", "odd.vorn", "near", "-"});
        QVERIFY2(streamed.out.startsWith("from,to,weight\n0,1,1\n"), qPrintable(streamed.out));
    }

    void refusesDamagedFiles()
    {
        const auto check = [this](const char *file, const QByteArray &content, const char *told) {
            mPlace.file(file, content);
            const QByteArray before = mPlace.bytes("p.vorn");
            const Outcome outcome = mPlace.run({"weights", "import", "p.vorn", file, "x"});
            QCOMPARE(outcome.code, 1);
            QVERIFY2(outcome.err.contains(told), qPrintable(content + outcome.err));
            QCOMPARE(mPlace.bytes("p.vorn"), before);
        };
        check("x.gal", QByteArray(), "heading");
        check("x.gal", "a b c\n", "heading"); // no count
        check("x.gal", "0 2 m k\na 0\n", "1 object, the heading");
        check("x.gal", "0 1 m k\na 2\nb\n", "fewer neighbours"); // cut short
        check("x.gal", "0 1 m k\na 1\nb c\n", "line 3");
        check("x.gal", "0 2 m k\na 1\nb\na 1\nb\n", "a is there already");
        check("x.gal", "0 1 m k\na -1\n", "line 2");
        check("x.gwt", "0 2 m k\na b\n", "FROM TO WEIGHT");
        check("x.gwt", "0 2 m k\na b nan\n", "nan is no number");
        check("x.gwt", "0 2 m k\na b -1e300\n", "-1e300 is beyond");
        check("x.kwt", "0 2 m k\na b 1\na b 2\n", "line 3"); // a link twice
        check("x.csv", "a,b\n1,2\n", "from, to and weight");
        check("x.csv", "from,to,weight\n\"a,b,1\n", "line 2: a quote");
        check("x.csv", "from,to,weight\n\"a\nb\",c,x\n", "line 3: the weight x");
        check("x.gal", "1\nM\xFCnchen 0\n", "line 2: is not UTF-8");
        check("x.csv", "from,to,weight\n1,2,1\n", "no id of the file"); // ids of another map
    }

    void refusesSetsThatCannotBe()
    {
        const auto code = [this](const QStringList &words) {
            return mPlace.run(QStringList{"weights", "create", "p.vorn"} + words).code;
        };
        QCOMPARE(code({"n", "--great-circle"}), 2); // contiguity has no distances
        QCOMPARE(code({"n", "--method", "nearest", "--weights", "border"}), 1);
        QCOMPARE(code({"n", "--weights", "inverse"}), 1);
        QCOMPARE(code({"queen"}), 1); // in use
        QCOMPARE(code({"n", "--method", "king"}), 2);
        QCOMPARE(code({"n", "--order", "0"}), 2);
    }

    void findsTheNearest()
    {
        mPlace.file("points.csv", "id,x,y\na,0,0\nb,3,4\nc,-6,-8\n");
        QCOMPARE(
            mPlace.run({"import", "points.csv", "n.vorn", "--key", "id", "--x", "x", "--y", "y"})
                .code,
            0);
        const auto nearest = [this](const QStringList &words) {
            QStringList found;
            for (const QJsonValue &value :
                 mPlace.run(QStringList{"nearest", "n.vorn", "--json"} + words)
                     .at("neighbors")
                     .toArray())
                found.append(value["object"].toString() + '='
                             + QString::number(value["distance"].toDouble()));
            return found.join(' ');
        };
        QCOMPARE(nearest({"--count", "2", "--", "-6", "-8"}), QString("c=0 a=10"));
        QCOMPARE(nearest({"--object", "a"}), QString("b=5 c=10"));
        QCOMPARE(mPlace.run({"nearest", "n.vorn"}).code, 2);
        const Outcome made =
            mPlace.run({"weights", "create", "n.vorn", "near", "--method", "range", "--range", "5",
                        "--weights", "inverse", "--power", "2", "--numerator", "13"});
        QVERIFY2(made.code == 0, qPrintable(made.err));
        const QJsonObject b = neighborsOf({"n.vorn", "near", "a"})[0].toObject();
        QCOMPARE(b.value("distance").toDouble(), 5.0);
        QCOMPARE(b.value("weight").toDouble(), 0.5);
    }

    /// Squares in a row, of which the last appears later: lists follow the time, ties share a place.
    void centroidsAreNeighbours()
    {
        const auto created = [this](const QStringList &words) {
            const Outcome made = mPlace.run(QStringList{"weights", "create", "p.vorn", "near",
                                                        "--output", "c.vorn", "--overwrite"}
                                            + words);
            return made.code == 0 ? made.out.section('\n', 0, 0) : made.err;
        };
        const auto near = [this](const char *object, const char *at) {
            QStringList found;
            for (const QJsonValue &value : neighborsOf({"c.vorn", "near", object, "--at", at}))
                found.append(value["object"].toString() + '='
                             + QString::number(value["weight"].toDouble()) + '@'
                             + QString::number(value["distance"].toDouble(), 'f', 1));
            return found.join(' ');
        };
        QVERIFY(created({"--method", "nearest", "--count", "1"})
                    .contains("nearest 1 by centroids, distances in map units, weights row"));
        QCOMPARE(near("c", "2000"), QString("b=1@1.0"));
        QCOMPARE(near("c", "2001"), QString("b=0.5@1.0 d=0.5@1.0"));
        // A degree on the equator is 111.3 km; the squares reach half a degree north.
        created({"--method", "range", "--range", "112", "--great-circle", "--weights", "constant"});
        QCOMPARE(near("a", "2001"), QString("b=1@111.3"));
        // "a" has no value of u, so "c" alone is left to "b", with the weight 1 instead of 0.5:
        // z = -10 2 8 (thirds), sum w z z = -20 - 2 + 16, sum z z = 168.
        created({"--method", "range", "--range", "1"});
        const Outcome moran =
            mPlace.run({"moran", "c.vorn", "u", "near", "--permutations", "0", "--json"});
        QCOMPARE(QString::number(moran.at("times/0/I").toDouble(), 'f', 12),
                 QString::number(-6.0 / 168, 'f', 12));
        const Outcome nearest =
            mPlace.run({"nearest", "p.vorn", "--object", "a", "--count", "1", "--great-circle"});
        QVERIFY2(nearest.out.contains("111.3"), qPrintable(nearest.out + nearest.err));
    }

    void moranGoesBackIntoTheProject()
    {
        const QStringList words{"moran", "p.vorn",         "v",      "queen",   "--seed",
                                "3",     "--permutations", "99",     "--local", "--save",
                                "m",     "--output",       "m.vorn", "--json"};
        const Outcome outcome = mPlace.run(words);
        QVERIFY2(outcome.code == 0, qPrintable(outcome.err));
        QCOMPARE(outcome.at("seed").toInt(), 3);
        QCOMPARE(outcome.at("times").toArray().size(), 2);
        QCOMPARE(outcome.at("times/1/objects").toInt(), 4);
        // z = -3 -1 1 3: sum w z z = -3*-1 + -1*(-3+1)/2 + 1*(-1+3)/2 + 3*1 = 8, over 20.
        QVERIFY(qAbs(outcome.at("times/1/I").toDouble() - 0.4) < 1e-12);
        QCOMPARE(outcome.at("times/1/local/3/name").toString(), QString("D 4"));
        QCOMPARE(mPlace.run(words + QStringList{"--overwrite"}).out,
                 outcome.out); // equal seeds, equal results
        const Outcome stats = mPlace.run({"stats", "m.vorn", "m I", "--json"});
        QCOMPARE(stats.at("overall/count").toInt(), 7);
        QVERIFY(qAbs(stats.at("times/1/mean").toDouble() - 0.4) < 1e-12);
        const Outcome cluster = mPlace.run({"series", "m.vorn", "m cluster", "d", "--json"});
        QCOMPARE(cluster.at("values").toArray().last()["value"].toString(),
                 QString("not significant"));
        for (const char *correction : {"bonferroni", "holm", "simes", "fdr", "jef"})
            QCOMPARE(
                mPlace.run({"moran", "p.vorn", "v", "queen", "--local", "--correction", correction})
                    .code,
                0);
        QCOMPARE(mPlace.run({"moran", "p.vorn", "id", "queen"}).code, 1);
        QCOMPARE(mPlace.run({"moran", "p.vorn", "v", "queen", "--at", "1900"}).code, 1);
    }

    void moranOfStaticValuesFollowsTheShapes()
    {
        const Workplace place;
        place.file("map.geojson", row());
        place.file("t.csv", "id,from,s\na,2000,1\nb,2000,3\nc,2000,5\nd,2001,7\n");
        place.run({"import", "map.geojson", "p.vorn", "--key", "id", "--table", "t.csv", "--start",
                   "from"});
        place.run({"weights", "create", "p.vorn", "queen"});
        const Outcome all = place.run({"moran", "p.vorn", "s", "queen", "--save", "m", "--json"});
        QVERIFY2(all.code == 0, qPrintable(all.err));
        QCOMPARE(all.at("times").toArray().size(), 2);
        QCOMPARE(all.at("times/0/objects").toInt(), 3);
        QVERIFY(qAbs(all.at("times/1/I").toDouble() - 0.4) < 1e-12);
        const Outcome one =
            place.run({"moran", "p.vorn", "s", "queen", "--at", "2001", "--json", "--seed", "1"});
        QCOMPARE(one.at("times/0/time").toString(), QString("2001"));
        QCOMPARE(one.at("times/0/I").toDouble(), all.at("times/1/I").toDouble());
        QCOMPARE(place.run({"stats", "p.vorn", "m I", "--json"}).at("overall/count").toInt(), 7);
    }

    /// N. Cressie (1993), Statistics for Spatial Data, and spdep on the same maps.
    void countsOfThePublishedLists()
    {
        const QString sids = QString(MERIDOR_TEST_SAMPLES) + "/nc_sids/";
        QCOMPARE(
            mPlace.run({"import", sids + "nc_counties.geojson", "nc.vorn", "--key", "fips"}).code,
            0);
        for (const char *name : {"ncCR85", "ncCC89"})
            QCOMPARE(
                mPlace.run({"weights", "import", "nc.vorn", sids + name + ".gal", name, "--strict"})
                    .code,
                0);
        for (const char *method : {"queen", "rook"})
            QCOMPARE(mPlace.run({"weights", "create", "nc.vorn", method, "--method", method}).code,
                     0);
        for (const auto &[set, links] :
             {std::make_pair("ncCR85", 492), {"ncCC89", 394}, {"queen", 490}, {"rook", 462}})
            QCOMPARE(summary({"nc.vorn", set}).value("links").toInt(), links);
        QCOMPARE(summary({"nc.vorn", "ncCC89"}).value("islands").toArray(),
                 (QJsonArray{"37055", "37095"}));
    }

private:
    QJsonArray neighborsOf(const QStringList &words) const
    {
        return mPlace.run(QStringList{"neighbors", "--json"} + words).at("neighbors").toArray();
    }
    QJsonObject summary(const QStringList &words) const
    {
        return mPlace.run(QStringList{"weights", "show", "--json"} + words)
            .at("times/0")
            .toObject();
    }

    Workplace mPlace;
};

QTEST_GUILESS_MAIN(TestMeridorWeights)
#include "tst_MeridorWeights.moc"
