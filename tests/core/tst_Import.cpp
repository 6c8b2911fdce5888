// SPDX-License-Identifier: MIT
#include <QTemporaryDir>
#include <QtTest>
#include <memory>
#include <stdexcept>
#include "core/import/guessImport.h"
#include "core/project/shapeAccess.h"
#include "core/workshop.h"
#include "datainterface/RasterAPI.h"
#include "support/checks.h"

using namespace meridor;

class TestImport : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void proposesImports_data()
    {
        QTest::addColumn<QByteArray>("table");
        QTest::addColumn<QString>("proposed");
        const auto row = [](const char *name, const char *table, const char *proposed) {
            QTest::newRow(name) << QByteArray(table) << proposed;
        };
        row("moving points",
            "storm,time,lon,lat,status\nA,2005-06-08T18:00Z,-84,16.9,low\n"
            "A,2005-06-09T00:00Z,-83.9,17,high\nB,2005-06-09T00:00Z,-60,20,high\n"
            "C,2005-06-09T00:00Z,-61,21,high\n",
            "key=storm start=time end=next x=lon y=lat crs=EPSG:4326");
        row("one series has no key",
            "time,lon,lat,status\n2005-06-08,-84,16.9,low\n2005-06-09,-83.9,17,high\n"
            "2005-06-10,-83.9,17,high\n",
            "x=lon y=lat crs=EPSG:4326");
        row("years of regions",
            "NUTS_ID,Year,pop,lon,lat\nDE1,2001,1.5,9,48\nDE1,2002,1.6,9,48\n"
            "DE2,2001,1.5,8,47\n",
            "key=NUTS_ID start=Year end=Year x=lon y=lat crs=EPSG:4326");
        row("year and month in two fields",
            "station,year,month,t,x,y\nA,2001,1,3,0,0\nA,2001,2,4,0,0\nB,2001,1,3,1,1\n",
            "x=x y=y");
        row("days of a station",
            "Station ID;Datum;x;y\n01;31.12.2001;1,5;2,5\n01;1.1.2002;1,5;2,5\n"
            "02;1.1.2002;3,5;2\n",
            "key=Station ID start=Datum end=next x=x y=y decimal=, pattern=d.M.yyyy");
        row("timestamps without separators",
            "site,timestamp,easting,northing\na,20010228,400000,5500000\n"
            "a,20010301,400001,5500000\n",
            "key=site start=timestamp end=next x=easting y=northing pattern=yyyyMMdd");
        row("day or month first", "site,date,x,y\na,1/2/2001,1,1\na,2/2/2001,1,1\n", "x=x y=y");
        row("day first", "site,date,x,y\na,1/2/2001,1,1\na,22/2/2001,1,1\n",
            "key=site start=date end=next x=x y=y pattern=d/M/yyyy");
        row("spans",
            "gid,Valid from,validTo,longitude,latitude\n1,1990-01-01,1999-12-31,1,2\n"
            "1,2000-01-01,2009-12-31,1,2\n",
            "key=gid start=Valid from end=validTo x=longitude y=latitude crs=EPSG:4326");
        row("begin and end of different rows",
            "id,begin,end,x,y\n1,1990,1999,1,2\n2,1980,2009,3,4\n",
            "key=id start=begin end=end x=x y=y");
        row("links between numbers", "id,from,to,x,y\n1,1,2,1,2\n2,2,3,3,4\n", "key=id x=x y=y");
        row("codes", "name,GEOID20,ISO3166-2,x,y\na,01001,US-AL,1,2\na,01003,US-AL,3,4\n",
            "key=GEOID20 x=x y=y");
        row("names without a code", "Name,pop,x,y\na,1,1,2\nb,2,3,4\n", "key=Name x=x y=y");
        row("a measurement that ends in id", "humid,isolation,x,y\n1,2,1,2\n3,5,3,4\n", "x=x y=y");
        row("metres called latitude",
            "lon,lat,x,y,code\n400000,5500000,1,2,a\n400001,5500000,2,3,b\n",
            "key=code x=lon y=lat");
        row("no places", "lon,lat,code\nwest,north,a\nwest,south,b\n", "key=code");
        row("other languages",
            "\xc3\x85r,Vardagsv\xc3\xa4rde,\xe5\x80\xa4,x,y\n2001,1,2,3,4\n2002,1,2,5,6\n",
            "x=x y=y");
        row("series", "fips,v2000,v2001,v2002,x,y\n1,1,2,3,4,5\n2,1,2,3,6,7\n",
            "key=fips x=x y=y series=v=v*");
        row("heading alone", "id,time,lon,lat\n", "key=id x=lon y=lat crs=EPSG:4326");
    }
    void proposesImports()
    {
        QFETCH(QByteArray, table);
        QFETCH(QString, proposed);
        Workshop shop;
        const ImportGuess guess = guessImport(shop.file("strange.csv", table));
        const ImportOptions &options = guess.options;
        QStringList told;
        const std::pair<const char *, QString> all[] = {{"key", options.key},
                                                        {"start", options.start},
                                                        {"end", options.end},
                                                        {"x", options.xColumn},
                                                        {"y", options.yColumn},
                                                        {"crs", options.projection},
                                                        {"decimal", options.decimal},
                                                        {"pattern", options.timePattern},
                                                        {"series", options.series.join(' ')}};
        for (const auto &[name, value] : all)
            if (!value.isEmpty())
                told.append(QString(name) + '=' + value);
        QCOMPARE(told.join(' '), proposed);
        // What is proposed can be imported.
        shop.options = options;
        if (!options.xColumn.isEmpty() && table.count('\n') > 1)
            QCOMPARE(shop.run(), QString());
    }

    void proposesPlacesOfEveryTable()
    {
        // A dBASE table: its head, three fields of eight digits, two rows.
        QByteArray table("\x03\x7a\x01\x01\x02\0\0\0\x81\0\x19\0", 12);
        table.append(20, '\0');
        for (const char *const field : {"id", "lon", "lat"})
            table.append(QByteArray(field).leftJustified(11, '\0') + "N"
                         + QByteArray("\0\0\0\0\x08\x03", 6) + QByteArray(14, '\0'));
        table.append("\r    1.000   7.500  50.250     2.000   8.500  51.250\x1a");
        Workshop shop;
        const ImportGuess guess = guessImport(shop.file("strange.dbf", table));
        QCOMPARE(guess.form == SourceForm::Table, true);
        QCOMPARE(guess.options.xColumn + ' ' + guess.options.yColumn, QString("lon lat"));
        shop.options = guess.options;
        QCOMPARE(shop.run(), QString());
        QCOMPARE(
            guessImport(shop.file("map.geojson", "{\"type\":\"Point\",\"coordinates\":[1,2]}")).form
                == SourceForm::Shapes,
            true);
    }

    void refusesToLookAtDevices()
    {
        for (const char *const path : {"/dev/zero", "/dev/null"}) {
            const InCase inCase(path);
            QString told;
            try {
                guessImport(path);
            } catch (const Failure &failure) {
                told = failure.text();
            }
            QCOMPARE(told, QString(path) + ": is a pipe or a device and no file");
            Workshop shop;
            shop.options = ImportOptions();
            shop.options.map = path;
            shop.options.times = "auto";
            QCOMPARE(shop.run(), QString(path) + ": is a device and no file");
        }
    }

    void readsSeriesOfEveryForm_data()
    {
        QTest::addColumn<QByteArray>("table");
        QTest::addColumn<QString>("series");
        QTest::addColumn<QString>("a");
        QTest::addColumn<QString>("c");
        QTest::addColumn<QString>("pattern");
        const auto check = [](const QByteArray &table, const char *series, const char *a,
                              const char *c, const char *pattern = "") {
            QTest::newRow(series) << table << series << a << c << pattern;
        };
        const QByteArray wide = "id,v2000,v2001,v2002\na,1,2.5,\nb,4,5,6\nc,,8,NA\n";
        for (const char *columns : {"v=v2000..v2002", "v=v*"})
            check(wide, columns, "2000=1 2001=2.5 2002=missing",
                  "2000=missing 2001=8 2002=missing");
        check(wide, "v=v2001@1990-03,v2000@1980-01-01/1989-12-31",
              "1980-01-01/1989-12-31=1 1990-03=2.5", "1980-01-01/1989-12-31=missing 1990-03=8");
        check("id,t1,t2\na,x,\"y, z\"\nb,,w\nc,x,\n", "v=t1..t2", "1=x 2=y, z", "1=x 2=missing");
        const QByteArray spans =
            "id,from,to,value\na,2001,2003,7\na,1999,2000,6\nc,2000,2000,5\nb,2000,2001,4\n";
        check(spans, "v=value@from/to", "1999/2000=6 2001/2003=7", "2000=5");
        check(spans, "v=value@from/next", "1999/2001=6 2001=7", "2000=5");
        check("id,at,value\na,3.2.2001,7\nc,28.12.1999,5\n", "v=value@at", "2001-02-03=7",
              "1999-12-28=5", "d.M.yyyy");
        check("id,at,value\na,6:30,1\na,18:00,2\nc,23:59:59,5\n", "v=value@at/next",
              "06:30:00/18:00:00=1 18:00:00=2", "23:59:59=5");
    }
    void readsSeriesOfEveryForm()
    {
        QFETCH(QByteArray, table);
        QFETCH(QString, series);
        QFETCH(QString, a);
        QFETCH(QString, c);
        QFETCH(QString, pattern);
        Workshop shop(squares(), table);
        shop.options.timePattern = pattern;
        if (table.contains("value")) { // observations
            shop.options.observations = shop.table();
            shop.options.observed = QStringList{series};
        } else {
            shop.options.tables = QStringList{shop.table()};
            shop.options.missing = QStringList{"NA"};
            shop.options.series = QStringList{series};
        }
        QCOMPARE(shop.run(), QString());
        QCOMPARE(shop.told("v", "a"), a);
        QCOMPARE(shop.told("v", "c"), c);
    }

    void namesThePlaceOfWhatIsWrong_data()
    {
        QTest::addColumn<QByteArray>("map");
        QTest::addColumn<QByteArray>("table");
        QTest::addColumn<QStringList>("words");
        QTest::addColumn<QByteArray>("told");
        // The words are names of options and what they are given.
        const auto row = [](const QByteArray &map, const QByteArray &table,
                            const QStringList &words, const char *told) {
            QTest::newRow(told) << map << table << words << QByteArray(told);
        };
        const QByteArray map = squares();
        row("", "", {}, "map.geojson: not a file that GDAL reads");
        row(map, "", {"key", "fips"}, "map.geojson: no field fips; there are: id");
        row(map, "id,v1,v2\na,1,2\nb,3,4\nc,5,many\n", {"series", "v=v1..v2"},
            "t.csv, field v2, row 3: \"many\" is no number");
        row(map, "id,v1\na,1\nb,2.5\n", {"series", "v=v1", "type", "v=integer"},
            "t.csv, field v1, row 2: \"2.5\" is no integer");
        row(map, "id,x\na,1\nb,2\na,3\n", {},
            "t.csv, field id, row 3: key a stands in row 1 already");
        row(map, "id,x\n1,1\n2,2\n", {}, "t.csv: no key in field id is one of the map's");
        row(map, "id,born\na,1900\nb,soon\n", {"start", "born"},
            "t.csv, field born, row 2: \"soon\" is no number");
        row(map, "id,s,e\na,1,2\nb,9,3\nc,1,1\n", {"start", "s", "end", "e"},
            "t.csv, field e, row 2: the end 3 lies before the start 9");
        row(map, "id,t,x\na,5,1\na,5,2\n", {"observe", "v=x@t"},
            "t.csv: object a has two values of v at 5");
        row(map, "id,x,y\na,5,1\n", {"series", "v=x@1/3,y@3/4"},
            "series v: fields x and y hold at the same time");
        row(map, "id,x,y\na,5,1\n", {"series", "x=y@3"}, "two datasets would be called x");
        row(squares().replace("\"b\"", "\"a\""), "", {},
            "map.geojson, rows 1 and 2: object a has two shapes at one time");
        const QByteArray feature = "{\"type\":\"Feature\",\"properties\":{},\"geometry\":";
        const QByteArray point = feature + "{\"type\":\"Point\",\"coordinates\":[0,0]}}";
        row(squares().replace("]}}]}", "]}}," + point + "]}"), "", {},
            "map.geojson, row 4: a point among shapes of another kind");
        row("{\"type\":\"FeatureCollection\",\"features\":["
                + QByteArray(feature).replace("{}", "{\"id\":\"a\"}") + "null}]}",
            "", {}, "map.geojson: holds no shapes");
    }
    void namesThePlaceOfWhatIsWrong()
    {
        QFETCH(QByteArray, map);
        QFETCH(QByteArray, table);
        QFETCH(QStringList, words);
        QFETCH(QByteArray, told);
        Workshop shop(map, table);
        ImportOptions &options = shop.options;
        const QHash<QString, QString *> texts{
            {"key", &options.key}, {"start", &options.start}, {"end", &options.end}};
        const QHash<QString, QStringList *> lists{
            {"series", &options.series}, {"type", &options.types}, {"observe", &options.observed}};
        for (int i = 0; i < words.size(); i += 2) {
            if (QString *text = texts.value(words[i]))
                *text = words[i + 1];
            else
                *lists[words[i]] = QStringList{words[i + 1]};
        }
        if (!table.isEmpty() && words.contains("observe"))
            options.observations = shop.table();
        else if (!table.isEmpty())
            options.tables = QStringList{shop.table()};
        const QString failure = shop.run();
        QVERIFY2(failure.contains(told), qPrintable(failure));
        QVERIFY(geographyIds().isEmpty()); // nothing half-made stays
    }

    void namesKeysThatDoNotMatch()
    {
        Workshop shop(squares(), "id,x\na,1\nz,2\nb,3\ny,4\n");
        shop.options.tables = QStringList{shop.table()};
        QCOMPARE(shop.run(), QString());
        const QString notes = shop.notes.join('\n');
        QVERIFY2(notes.contains("2 keys that no object has: z, y"), qPrintable(notes));
        QVERIFY2(notes.contains("1 object without a row, whose values are missing: c"),
                 qPrintable(notes));
        QCOMPARE(shop.report.unmatched.first().tableKeys, (QStringList{"z", "y"}));
        QCOMPARE(shop.report.unmatched.first().objectKeys, QStringList{"c"});
        QCOMPARE(shop.told("x", "b"), QString("always=3"));
        QCOMPARE(shop.told("x", "c"), QString("always=missing"));
        shop.options.strict = true;
        const QString failure = shop.run();
        QVERIFY2(failure.endsWith("keys do not match: no object has z, y; no row has c"),
                 qPrintable(failure));
    }

    void keepsCodesAndWideNumbersAsTheyAre()
    {
        const auto kept = [](const char *a, const char *b, const char *c) {
            Workshop shop(squares(), QByteArray("id,x\na,") + a + "\nb," + b + "\nc," + c + "\n");
            shop.options.tables = QStringList{shop.table()};
            const QString failure = shop.run();
            if (!failure.isEmpty())
                return failure;
            const DatasetProps props = VORN_GetDatasetProperties(shop.report.datasets.last());
            return QString(typeText(props) + ' ' + shop.told("x", "a"));
        };
        QCOMPARE(kept("1", "-2", "2147483647"), QString("integer always=1"));
        QCOMPARE(kept("0.1", "-2", "1e300"), QString("decimal always=0.1"));
        QCOMPARE(kept("2147483648", "1", "2"), QString("decimal always=2147483648"));
        QCOMPARE(kept("01001", "2", "3"), QString("text always=01001"));
        QCOMPARE(kept("1.5", "007", "3"), QString("text always=1.5"));
        QCOMPARE(kept("1", "two", "3"), QString("text always=1"));
        QCOMPARE(kept("inf", "2", "3"), QString("text always=inf"));
    }

    void makesOneObjectOfTheRowsOfAKey()
    {
        // Row 3 is a later shape of "a"; the end of "b" is open.
        Workshop shop;
        shop.options.map = shop.file(
            "rows.csv",
            "n,id,from,to,ruler,x,y\n1,a,1800-01-01,1849-12-31,Ann,0,0\n2,b,1820,,Bo,1,1\n"
            "3,a,1850-01-01,1900-06,Cyd,2,2\n");
        shop.options.xColumn = "x";
        shop.options.yColumn = "y";
        shop.options.start = "from";
        shop.options.end = "to";
        QCOMPARE(shop.run(), QString());
        QCOMPARE(shop.report.objects, 2);
        QCOMPARE(shop.report.shapes, 3);
        QCOMPARE(axisOf(shop.report.geography).format(), TF_Date);
        QCOMPARE(shop.told("ruler", "a"),
                 QString("1800-01-01/1849-12-31=Ann 1850-01-01/1900-06-30=Cyd"));
        QCOMPARE(shop.told("ruler", "b"), QString("1820-01-01/1900-06-30=Bo"));
        const auto existing = [&shop](const char *time) {
            return objectsAt(shop.report.geography, chooseTimeOf(shop.report.geography, time));
        };
        QCOMPARE(existing("1799-12-31"), QVector<int>());
        QCOMPARE(existing("1819-12-31"), QVector<int>{0});
        QCOMPARE(existing("1900-06-30"), (QVector<int>{0, 1}));
        QCOMPARE(existing("1900-07-01"), QVector<int>());
        // One shape follows another on the next day: no instant lies between them.
        QVector<Interval> times;
        QVERIFY(VORN_GetObservationTimes(shop.report.geography, 0, times));
        QCOMPARE(times.size(), 2);
        QCOMPARE(times[0].endTime, times[1].startTime);
        QVERIFY(times[0].inclusiveEnd != times[1].inclusiveStart);
        QCOMPARE(objectsAt(shop.report.geography, times[0].endTime - 43200), (QVector<int>{0, 1}));
        // Spans of projects that were made with closed days read as they did.
        QCOMPARE(axisOf(shop.report.geography)
                     .show(Interval{times[0].startTime, times[1].startTime - 86400, true, true}),
                 QString("1800-01-01/1849-12-31"));
    }

    void letsPositionsHoldUntilTheNext()
    {
        Workshop shop;
        shop.options = ImportOptions();
        shop.options.map = shop.file("storm.csv", "storm,time,lon,lat,wind\n"
                                                  "Ada,2005-06-08T18:00Z,-84,17,25\n"
                                                  "Bob,2005-06-08T21:00Z,-60,20,50\n"
                                                  "Ada,2005-06-09T00:00+01:00,-83,18,30\n");
        shop.options.key = "storm";
        shop.options.xColumn = "lon";
        shop.options.yColumn = "lat";
        shop.options.projection = "EPSG:4326";
        shop.options.start = "time";
        shop.options.end = "next";
        shop.options.times = "auto";
        QCOMPARE(shop.run(), QString());
        QCOMPARE(shop.told("wind", "Ada"),
                 QString("2005-06-08T18:00:00/2005-06-08T23:00:00=25 2005-06-08T23:00:00=30"));
        QCOMPARE(shop.told("wind", "Bob"), QString("2005-06-08T21:00:00=50"));
    }

    void readsTheProjection()
    {
        Workshop shop;
        shop.options.projection = "EPSG:5070";
        QCOMPARE(shop.run(), QString());
        const GeoProps props = VORN_GetGeographyProperties(shop.report.geography);
        const QString projection = props.metaData.value("Projection").toString();
        QVERIFY2(projection.contains("Albers"), qPrintable(projection));
        QCOMPARE(props.metaData.value("Distance unit").toString(), QString("metre"));
        shop.options.projection = "EPSG:0";
        QVERIFY(shop.run().startsWith("unknown projection EPSG:0"));
    }

    void tellsOfVerticesThatNearlyMeet()
    {
        // The lower shared corner of "b" is off by a billionth.
        Workshop off(squares().replace("[[[1,0],[2,0]", "[[[1.000000001,0],[2,0]"));
        QCOMPARE(off.run(), QString());
        QCOMPARE(off.report.nearVertices.count, 2); // it and the true corner
        QVERIFY2(off.notes.join('\n').contains("snap distance"), qPrintable(off.notes.join('\n')));
    }

    void aCancelLeavesNoGeography()
    {
        const QTemporaryDir directory;
        int asked = 0;
        int most = 0;
        for (int stopAt = 1;; stopAt += 3) {
            asked = 0;
            SessionUser user;
            user.cancel = [&asked, stopAt] { return ++asked >= stopAt; };
            const Session session({directory.path()}, user);
            ImportOptions options;
            options.map = QString(MERIDOR_TEST_SAMPLES) + "/us_income/states48.geojson";
            options.times = "auto";
            try {
                const Progress progress("Import", "Importing...");
                importMap(options, NoNotes(), progress);
                break;
            } catch (const Failure &failure) {
                QCOMPARE(failure.text(), QString("cancelled"));
                QCOMPARE(geographyIds(), QVector<int>());
            }
            most = qMax(most, asked);
        }
        QVERIFY(most > 10); // it was asked all along
    }

    // A report that throws, and a bar that outlives its session.
    void theEndOfASessionNeverThrows()
    {
        const QTemporaryDir directory;
        int ended = 0;
        SessionUser user;
        user.progress = [&ended](int percent, const QString &) {
            if (percent < 0 && ++ended > 0)
                throw std::runtime_error("no more");
        };
        auto session = std::make_unique<Session>(SessionOptions{directory.path()}, user);
        {
            const Progress done("a", "b");
        }
        QCOMPARE(ended, 1);
        const Progress open("a", "b");
        session.reset();
        QCOMPARE(ended, 2);
    }

    void keepsAProjectThatChangedMeanwhile()
    {
        const QTemporaryDir directory;
        const QString path = directory.filePath("p.vorn");
        const auto content = [&path] {
            QFile file(path);
            return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
        };
        Session session({directory.path()});
        QVERIFY_EXCEPTION_THROWN(Session second({directory.path()}), Failure);
        session.save(path);
        session.load(path);
        session.save(path); // its own writing is no change
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        QCOMPARE(file.write("another's"), qint64(9));
        file.close();
        QVERIFY_EXCEPTION_THROWN(session.save(path), Failure);
        QCOMPARE(content(), QByteArray("another's"));
    }

    void aBarThatTheHostLeftOpenIsAMisuse()
    {
        const QTemporaryDir directory;
        const QString path = directory.filePath("p.vorn");
        Session session({directory.path()});
        session.save(path);
        const auto outcome = [](auto step) {
            try {
                step();
            } catch (const Failure &failure) {
                return QPair(static_cast<int>(failure.kind()), failure.text());
            }
            return QPair(-1, QString());
        };
        const QPair misused(static_cast<int>(FailureKind::Misused),
                            QString("a progress bar is open; there is one at a time"));
        {
            const VORN_Progress open("a", "b", "Cancel");
            QCOMPARE(outcome([&] { session.load(path); }), misused);
            QCOMPARE(outcome([&] { session.save(path); }), misused);
        }
        QCOMPARE(outcome([&] { session.load(path); }), QPair(-1, QString()));
    }

    void aCancelledLoadLeavesNothing()
    {
        const QTemporaryDir directory;
        const QString path = directory.filePath("p.vorn");
        bool stops = false;
        SessionUser user;
        user.cancel = [&stops] { return stops; };
        Session session({directory.filePath("scratch")}, user);
        const int grid = VORN_CreateNewRasterGeography("g", 2, 3, QRectF(0, 0, 3, 2), Interval(),
                                                       TF_Integer, "", "");
        const int cells = VORN_NewRasterDataset(grid, "d", RasterDecimalType, 1, 64, "");
        QVERIFY(
            VORN_AddRasterValues(cells, 0, Interval(), QVector<double>(6, 1.5), -1.0, true, true));
        session.save(path);
        stops = true;
        QVERIFY_EXCEPTION_THROWN(session.load(path), Failure);
        QCOMPARE(geographyIds(), QVector<int>());
    }

    void centresOfShapes_data()
    {
        QTest::addColumn<QByteArray>("geometry");
        QTest::addColumn<QPointF>("expected");
        QTest::newRow("polygon") << QByteArray(
            "Polygon\",\"coordinates\":[[[0,0],[3,0],[0,3],[0,0]]]")
                                 << QPointF(1, 1);
        QTest::newRow("line") << QByteArray("LineString\",\"coordinates\":[[0,0],[0,4],[6,4]]")
                              << QPointF(3, 2);
        QTest::newRow("point") << QByteArray("Point\",\"coordinates\":[7,-8]") << QPointF(7, -8);
    }
    void centresOfShapes()
    {
        QFETCH(QByteArray, geometry);
        QFETCH(QPointF, expected);
        Workshop place("{\"type\":\"FeatureCollection\",\"features\":[{\"type\":\"Feature\","
                       "\"properties\":{\"id\":\"a\"},\"geometry\":{\"type\":\""
                       + geometry + "}}]}");
        QCOMPARE(place.run(), QString());
        const auto *shapes = dynamic_cast<MVectorData *>(geographyOf(place.report.geography));
        QVERIFY(shapes);
        QCOMPARE(centreOf(*shapes, 0, shapeTime(place.report.geography, 0)),
                 std::optional(expected));
    }

    void aSessionSurvivesItsScratchDirectory()
    {
        QTemporaryDir directory;
        {
            Session session({directory.path()});
            QVERIFY(directory.remove());
            QFile inItsPlace(directory.path()); // no scratch file can be made there any more
            QVERIFY(inItsPlace.open(QIODevice::WriteOnly));
            QVERIFY_EXCEPTION_THROWN(session.unload(), Failure);
        }
        QVERIFY(!VORN_GetController());
    }
};

QTEST_GUILESS_MAIN(TestImport)
#include "tst_Import.moc"
