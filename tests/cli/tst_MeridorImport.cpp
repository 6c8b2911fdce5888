// SPDX-License-Identifier: MIT
#include <QJsonArray>
#include <QtTest>
#include "cli/program.h"

namespace {

QJsonArray valuesOf(const Workplace &place, const QString &dataset, const QString &object)
{
    return place.run({"series", "p.vorn", dataset, object, "--json"})
        .json()
        .value("values")
        .toArray();
}

/// "time=value" of each entry, blank-separated.
QString told(const QJsonArray &entries)
{
    QStringList texts;
    for (const QJsonValue &entry : entries) {
        const QJsonValue value = entry.toObject().value("value");
        texts.append(entry.toObject().value("time").toString() + '='
                     + (value.isNull() ? QString("missing") : value.toVariant().toString()));
    }
    return texts.join(' ');
}

} // namespace

class TestMeridorImport : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void readsSeriesOfEveryForm();
    void namesThePlaceOfWhatIsWrong();
    void namesKeysThatDoNotMatch();
    void keepsCodesAndWideNumbersAsTheyAre();
    void makesOneObjectOfTheRowsOfAKey();
    void letsPositionsHoldUntilTheNext();
    void readsHolesAndParts();
    void readsTheProjection();
    void tellsOfVerticesThatNearlyMeet();
    void takesCancelledWorkBack();
};

void TestMeridorImport::readsSeriesOfEveryForm()
{
    const auto check = [](const char *name, const QByteArray &table, const QStringList &options,
                          const char *a, const char *c) {
        const Workplace place;
        place.file("map.geojson", squares());
        place.file("t.csv", table);
        const Outcome outcome =
            place.run(QStringList{"import", "map.geojson", "p.vorn", "--key", "id"} + options);
        QVERIFY2(outcome.code == 0, qPrintable(name + outcome.err));
        QCOMPARE(told(valuesOf(place, "v", "a")), QString(a));
        QCOMPARE(told(valuesOf(place, "v", "c")), QString(c));
    };
    const QByteArray wide = "id,v2000,v2001,v2002\na,1,2.5,\nb,4,5,6\nc,,8,NA\n";
    const QStringList table{"--table", "t.csv", "--missing", "NA", "--series"};
    check("range of columns", wide, table + QStringList{"v=v2000..v2002"},
          "2000=1 2001=2.5 2002=missing", "2000=missing 2001=8 2002=missing");
    check("pattern", wide, table + QStringList{"v=v*"}, "2000=1 2001=2.5 2002=missing",
          "2000=missing 2001=8 2002=missing");
    check("columns and their times", wide,
          table + QStringList{"v=v2001@1990-03,v2000@1980-01-01/1989-12-31"},
          "1980-01-01/1989-12-31=1 1990-03=2.5", "1980-01-01/1989-12-31=missing 1990-03=8");
    check("texts", QByteArray("id,t1,t2\na,x,\"y, z\"\nb,,w\nc,x,\n"),
          QStringList{"--table", "t.csv", "--series", "v=t1..t2"}, "1=x 2=y, z", "1=x 2=missing");
    const QByteArray observations =
        "id,from,to,value\na,2001,2003,7\na,1999,2000,6\nc,2000,2000,5\nb,2000,2001,4\n";
    check("observations with ends", observations,
          QStringList{"--observations", "t.csv", "--observe", "v=value@from/to"},
          "1999/2000=6 2001/2003=7", "2000=5");
    check("observations until the next", observations,
          QStringList{"--observations", "t.csv", "--observe", "v=value@from/next"},
          "1999/2001=6 2001=7", "2000=5");
    check("dates written in another way", QByteArray("id,at,value\na,3.2.2001,7\nc,28.12.1999,5\n"),
          QStringList{"--time-format", "d.M.yyyy", "--observations", "t.csv", "--observe",
                      "v=value@at"},
          "2001-02-03=7", "1999-12-28=5");
    check("times of day", QByteArray("id,at,value\na,6:30,1\na,18:00,2\nc,23:59:59,5\n"),
          QStringList{"--observations", "t.csv", "--observe", "v=value@at/next"},
          "06:30:00/18:00:00=1 18:00:00=2", "23:59:59=5");
}

void TestMeridorImport::namesThePlaceOfWhatIsWrong()
{
    const auto check = [](const QByteArray &map, const QByteArray &table,
                          const QStringList &options, const char *told) {
        const Workplace place;
        place.file("map.geojson", map);
        QStringList arguments{"import", "map.geojson", "p.vorn"};
        if (!options.contains("--key"))
            arguments += QStringList{"--key", "id"};
        if (!table.isEmpty()) {
            place.file("t.csv", table);
            arguments += options.contains("--observe") ? "--observations" : "--table";
            arguments += "t.csv";
        }
        const QStringList before = place.files();
        const Outcome outcome = place.run(arguments + options);
        QVERIFY2(outcome.err.contains(told), qPrintable(QString(told) + '\n' + outcome.err));
        QVERIFY(outcome.code == 1 || outcome.code == 2);
        QCOMPARE(outcome.out, QString());
        QCOMPARE(place.files(), before); // nothing half-made stays
    };
    const QByteArray map = squares();
    check("", "", {}, "map.geojson: not a file that GDAL reads");
    check(map, "", {"--key", "fips"}, "map.geojson: no field fips; there are: id");
    check(map, "id,v1,v2\na,1,2\nb,3,4\nc,5,many\n", {"--series", "v=v1..v2"},
          "t.csv, field v2, row 3: \"many\" is no number");
    check(map, "id,v1\na,1\nb,2.5\n", {"--series", "v=v1", "--type", "v=integer"},
          "t.csv, field v1, row 2: \"2.5\" is no integer");
    check(map, "id,x\na,1\nb,2\na,3\n", {},
          "t.csv, field id, row 3: key a stands in row 1 already");
    check(map, "id,x\n1,1\n2,2\n", {}, "t.csv: no key in field id is one of the map's");
    check(map, "id,born\na,1900\nb,soon\n", {"--start", "born"},
          "t.csv, field born, row 2: \"soon\" is no number");
    check(map, "id,s,e\na,1,2\nb,9,3\nc,1,1\n", {"--start", "s", "--end", "e"},
          "t.csv, field e, row 2: the end 3 lies before the start 9");
    check(map, "id,t,x\na,5,1\na,5,2\n", {"--observe", "v=x@t"},
          "t.csv: object a has two values of v at 5");
    check(map, "id,x,y\na,5,1\n", {"--series", "v=x@1/3,y@3/4"},
          "series v: fields x and y hold at the same time");
    check(map, "id,x,y\na,5,1\n", {"--series", "x=y@3"}, "two datasets would be called x");
    check(squares().replace("\"b\"", "\"a\""), "", {},
          "map.geojson, rows 1 and 2: object a has two shapes at one time");
    const QByteArray feature = "{\"type\":\"Feature\",\"properties\":{},\"geometry\":";
    const QByteArray point = feature + "{\"type\":\"Point\",\"coordinates\":[0,0]}}";
    check(squares().replace("]}}]}", "]}}," + point + "]}"), "", {},
          "map.geojson, row 4: a point among shapes of another kind");
    check("{\"type\":\"FeatureCollection\",\"features\":["
              + QByteArray(feature).replace("{}", "{\"id\":\"a\"}") + "null}]}",
          "", {}, "map.geojson: holds no shapes");
}

void TestMeridorImport::namesKeysThatDoNotMatch()
{
    const Workplace place;
    place.file("map.geojson", squares());
    place.file("t.csv", "id,x\na,1\nz,2\nb,3\ny,4\n");
    const QStringList arguments{"import", "map.geojson", "p.vorn", "--key",
                                "id",     "--table",     "t.csv",  "--json"};
    const Outcome outcome = place.run(arguments);
    QCOMPARE(outcome.code, 0);
    QVERIFY2(outcome.err.contains("2 keys that no object has: z, y"), qPrintable(outcome.err));
    QVERIFY2(outcome.err.contains("1 objects without a row, their values are missing: c"),
             qPrintable(outcome.err));
    const QJsonObject keys = outcome.json().value("unmatched").toArray().first().toObject();
    QCOMPARE(keys.value("tableKeys").toArray(), (QJsonArray{"z", "y"}));
    QCOMPARE(keys.value("objectKeys").toArray(), (QJsonArray{"c"}));
    QCOMPARE(told(valuesOf(place, "x", "b")), QString("always=3"));
    QCOMPARE(told(valuesOf(place, "x", "c")), QString("always=missing"));
    QCOMPARE(place.run(arguments + QStringList{"--overwrite", "--strict"}).code, 1);
}

void TestMeridorImport::keepsCodesAndWideNumbersAsTheyAre()
{
    const Workplace place;
    place.file("map.geojson", squares());
    const auto kept = [&place](const char *a, const char *b, const char *c) {
        place.file("t.csv", QByteArray("id,x\na,") + a + "\nb," + b + "\nc," + c + "\n");
        const Outcome outcome = place.run({"import", "map.geojson", "p.vorn", "--overwrite",
                                           "--key", "id", "--table", "t.csv", "--json"});
        const QJsonObject dataset = outcome.json().value("datasets").toArray().last().toObject();
        return QString(dataset.value("type").toString() + ' ' + told(valuesOf(place, "x", "a")));
    };
    QCOMPARE(kept("1", "-2", "2147483647"), QString("integer always=1"));
    QCOMPARE(kept("0.1", "-2", "1e300"), QString("decimal always=0.1"));
    QCOMPARE(kept("2147483648", "1", "2"), QString("decimal always=2147483648"));
    QCOMPARE(kept("01001", "2", "3"), QString("text always=01001"));
    QCOMPARE(kept("1.5", "007", "3"), QString("text always=1.5"));
    QCOMPARE(kept("1", "two", "3"), QString("text always=1"));
    QCOMPARE(kept("inf", "2", "3"), QString("text always=inf"));
}

void TestMeridorImport::makesOneObjectOfTheRowsOfAKey()
{
    const Workplace place;
    // Row 2 is a later shape of "a"; its end is open.
    place.file("map.geojson", squares().replace("\"b\"", "\"a\""));
    place.file("rows.csv",
               "n,id,from,to,ruler,x,y\n1,a,1800-01-01,1849-12-31,Ann,0,0\n2,b,1820,,Bo,1,1\n"
               "3,a,1850-01-01,1900-06,Cyd,2,2\n");
    const Outcome outcome = place.run({"import", "rows.csv", "p.vorn", "--key", "id", "--x", "x",
                                       "--y", "y", "--start", "from", "--end", "to", "--json"});
    QVERIFY2(outcome.code == 0, qPrintable(outcome.err));
    QCOMPARE(outcome.json().value("objects").toInt(), 2);
    QCOMPARE(outcome.json().value("shapeCount").toInt(), 3);
    QCOMPARE(outcome.json().value("timeFormat").toString(), QString("date"));
    QCOMPARE(told(valuesOf(place, "ruler", "a")),
             QString("1800-01-01/1849-12-31=Ann 1850-01-01/1900-06-30=Cyd"));
    QCOMPARE(told(valuesOf(place, "ruler", "b")),
             QString("always=Bo").replace("always", "1820-01-01/1900-06-30"));
    const auto existing = [&place](const char *time) {
        const QJsonObject info = place.run({"info", "p.vorn", "--at", time, "--json"}).json();
        return info.value("geographies").toArray().first().toObject().value("existing").toArray();
    };
    QCOMPARE(existing("1799-12-31"), QJsonArray());
    QCOMPARE(existing("1819-12-31"), QJsonArray{"a"});
    QCOMPARE(existing("1900-06-30"), (QJsonArray{"a", "b"}));
    QCOMPARE(existing("1900-07-01"), QJsonArray());
}

void TestMeridorImport::letsPositionsHoldUntilTheNext()
{
    const Workplace place;
    place.file("storm.csv", "storm,time,lon,lat,wind\nAda,2005-06-08T18:00Z,-84,17,25\nBob,2005-06-"
                            "08T21:00Z,-60,20,50\n"
                            "Ada,2005-06-09T00:00+01:00,-83,18,30\n");
    const Outcome outcome =
        place.run({"import", "storm.csv", "p.vorn", "--key", "storm", "--x", "lon", "--y", "lat",
                   "--crs", "EPSG:4326", "--start", "time", "--end", "next", "--json"});
    QVERIFY2(outcome.code == 0, qPrintable(outcome.err));
    QCOMPARE(outcome.json().value("timeFormat").toString(), QString("date-time"));
    QCOMPARE(told(valuesOf(place, "wind", "Ada")),
             QString("2005-06-08T18:00:00/2005-06-08T23:00:00=25 2005-06-08T23:00:00=30"));
    QCOMPARE(told(valuesOf(place, "wind", "Bob")), QString("2005-06-08T21:00:00=50"));
}

void TestMeridorImport::readsHolesAndParts()
{
    const Workplace place;
    place.file("map.geojson", "{\"type\":\"FeatureCollection\",\"features\":[{\"type\":\"Feature\","
                              "\"properties\":{\"v\":1},\"geometry\":"
                              "{\"type\":\"MultiPolygon\",\"coordinates\":[[[[0,0],[9,0],[9,9],[0,"
                              "9],[0,0]],[[3,3],[3,6],[6,6],[6,3],[3,3]]],"
                              "[[[20,0],[29,0],[29,9],[20,9],[20,0]]]]}}]}");
    QCOMPARE(place.run({"import", "map.geojson", "p.vorn"}).code, 0);
    QCOMPARE(place.run({"map", "p.vorn", "v", "p.png", "--width", "800", "--height", "500"}).code,
             0);
    // Map coordinates 0..29 by 0..9 fill the width of the map area: the hole and the gap between
    // the parts are paper.
    const QImage picture(place.path("p.png"));
    const auto at = [&picture](double x, double y) {
        const double scale = 563 / 29.0; // 800 wide: margins of 24, a legend of 165
        return QColor(picture.pixel(static_cast<int>(24 + x * scale),
                                    static_cast<int>(268.5 - (y - 4.5) * scale)));
    };
    QCOMPARE(at(4.5, 4.5), QColor(Qt::white));
    QCOMPARE(at(14, 4.5), QColor(Qt::white));
    QVERIFY(at(1.5, 4.5) != QColor(Qt::white));
    QVERIFY(at(24, 4.5) != QColor(Qt::white));
}

void TestMeridorImport::readsTheProjection()
{
    const Workplace place;
    place.file("map.geojson", squares());
    QCOMPARE(place.run({"import", "map.geojson", "p.vorn", "--crs", "EPSG:5070"}).code, 0);
    const QJsonObject info = place.run({"info", "p.vorn", "--json"}).json();
    const QJsonObject geography = info.value("geographies").toArray().first().toObject();
    QVERIFY2(geography.value("projection").toString().contains("Albers"),
             qPrintable(geography.value("projection").toString()));
    QCOMPARE(geography.value("distanceUnit").toString(), QString("metre"));
}

void TestMeridorImport::tellsOfVerticesThatNearlyMeet()
{
    const Workplace place;
    // The lower shared corner of "b" is off by a billionth.
    place.file("map.geojson", squares().replace("[[[1,0],[2,0]", "[[[1.000000001,0],[2,0]"));
    const Outcome plain = place.run({"import", "map.geojson", "p.vorn", "--json"});
    QCOMPARE(plain.json().value("nearVertices").toInt(), 2); // it and the true corner
    QVERIFY2(plain.err.contains("--snap"), qPrintable(plain.err));
    place.file("map.geojson", squares());
    const Outcome exact = place.run({"import", "map.geojson", "p.vorn", "--overwrite", "--json"});
    QCOMPARE(exact.json().value("nearVertices").toInt(), 0);
    QCOMPARE(exact.err, QString());
}

void TestMeridorImport::takesCancelledWorkBack()
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

QTEST_GUILESS_MAIN(TestMeridorImport)
#include "tst_MeridorImport.moc"
