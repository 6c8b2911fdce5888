// SPDX-License-Identifier: MIT
// Foreign tables and maps as people have them: encodings, separators, texts of missing values, and
// files that are damaged.
#include <QProcess>
#include <QtTest>
#include <random>
#include "core/formats/ogrReader.h"
#include "core/formats/spool.h"
#include "core/import/nearVertices.h"
#include "core/import/objectRows.h"
#include "core/workshop.h"
#include "support/checks.h"

using namespace meridor;

namespace {

/// Imports points of a table; its fields x and y are added.
QString runPoints(Workshop &shop, const QString &name, const QByteArray &content)
{
    shop.options.map = shop.file(name, content);
    shop.options.xColumn = "x";
    shop.options.yColumn = "y";
    return shop.run();
}

QByteArray utf16(const QString &text)
{
    return QByteArray("\xFF\xFE")
           + QByteArray(reinterpret_cast<const char *>(text.utf16()), 2 * text.size());
}

} // namespace

class TestTables : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void keepsEveryLetter_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QByteArray>("cpg");
        QTest::addColumn<QString>("encoding");
        QTest::addColumn<QString>("told"); // the value of "a", or the failure
        QTest::addColumn<QString>("note");
        const QByteArray head = "id,x,y,n\na,1,2,";
        const QByteArray latin = head + "M\xFCller \x80\n";
        const QString name = QString::fromUtf8("Müller €");
        const auto row = [](const char *title, const QByteArray &content, const char *cpg,
                            const char *encoding, const QString &told, const char *note = "") {
            QTest::newRow(title) << content << QByteArray(cpg) << QString(encoding)
                                 << "always=" + told << QString(note);
        };
        row("UTF-8", head + name.toUtf8(), "", "", name);
        row("UTF-8 with a mark", "\xEF\xBB\xBF" + head + name.toUtf8(), "", "", name);
        row("UTF-8 in spite of the .cpg", head + name.toUtf8(), "1252", "", name);
        row("UTF-16", utf16(QString(head) + name + "\n"), "", "", name);
        row("UTF-16 without a mark", utf16(QString(head) + name).mid(2), "", "UTF-16LE", name);
        row("neither", latin, "", "", name, "t.csv: not UTF-8, read as Windows-1252");
        row("as the .cpg says", head + "M\x81ller", "850", "", QString::fromUtf8("Müller"));
        row("a .cpg that is wrong", latin, "UTF-8", "", name, "declares UTF-8 but is not in it");
        row("as stated", head + "\xD6\xD0", "", "GBK", QString(QChar(0x4E2D)));
        QTest::newRow("not as stated") << latin << QByteArray() << "UTF-8"
                                       << "t.csv, field n, row 1: not a text in UTF-8"
                                       << "";
        QTest::newRow("unknown") << latin << QByteArray() << "Klingon"
                                 << "unknown encoding Klingon"
                                 << "";
    }
    void keepsEveryLetter()
    {
        QFETCH(QByteArray, content);
        QFETCH(QByteArray, cpg);
        QFETCH(QString, encoding);
        QFETCH(QString, told);
        QFETCH(QString, note);
        Workshop shop;
        if (!cpg.isEmpty())
            shop.file("t.cpg", cpg);
        shop.options.encoding = encoding;
        const QString failure = runPoints(shop, "t.csv", content);
        if (failure.isEmpty())
            QCOMPARE(shop.told("n", "a"), told);
        else
            QVERIFY2(failure.contains(told), qPrintable(failure));
        const QString notes = shop.notes.join('\n');
        QVERIFY2(notes.isEmpty() == note.isEmpty() && notes.contains(note), qPrintable(notes));
    }

    void readsTheFormsOfTables_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QString>("decimal");
        QTest::addColumn<QString>("told"); // type and value of "a"
        const auto row = [](const char *title, const QByteArray &content, const char *told,
                            const char *decimal = "") {
            QTest::newRow(title) << content << QString(decimal) << QString(told);
        };
        row("semicolons", "id;x;y;n\na;1;2;5\n", "integer always=5");
        row("tabulators", "id\tx\ty\tn\na\t1\t2\t5", "integer always=5");
        row("bars", "id|x|y|n\na|1|2|5,5\n", "text always=5,5");
        row("decimal commas", "id;x;y;n\na;1,5;2;-5,25\n", "decimal always=-5.25", ",");
        row("points among commas", "id;x;y;n\na;1;2;1.500\nb;1;2;1,5\n", "text always=1.500", ",");
        row("old line ends", "id,x,y,n\ra,1,2,5\rb,1,2,6\r", "integer always=5");
        row("quotes", "id,x,y,\"n\"\r\na,1,2,\"say \"\"b,\r\nc\"\"\"\r\n",
            "text always=say \"b,\r\nc\"");
        row("blank lines", "\n\nid,x,y,n\n\na,1,2,5\n\n", "integer always=5");
        row("separators at the end", "id,x,y,n\na,1,2,5,,\n", "integer always=5");
        row("texts of missing values",
            "id,x,y,n\na,1,2,n/a\nb,1,2,NA\nc,1,2, N/A\nd,1,2,NaN\ne,1,2,null\nf,1,2,-\ng,1,2,\n"
            "h,1,2,7\n",
            "integer always=missing");
        row("integers beyond 2^53", "id,x,y,n\na,1,2,9007199254740993\nb,1,2,1\n",
            "text always=9007199254740993");
        row("integers up to 2^53", "id,x,y,n\na,1,2,-9007199254740992\nb,1,2,1\n",
            "decimal always=-9007199254740992");
    }
    void readsTheFormsOfTables()
    {
        QFETCH(QByteArray, content);
        QFETCH(QString, decimal);
        QFETCH(QString, told);
        Workshop shop;
        shop.options.decimal = decimal;
        QCOMPARE(runPoints(shop, "t.txt", content), QString());
        const int id = findDataset("n");
        QCOMPARE(typeText(VORN_GetDatasetProperties(id)) + ' ' + shop.told("n", "a"), told);
    }

    void namesThePlaceOfDamage_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QString>("told");
        const auto row = [](const char *title, const QByteArray &content, const char *told) {
            QTest::newRow(title) << content << QString(told);
        };
        const QByteArray head = "id,x,y,n\na,1,2,k\n";
        row("too few fields", head + "b,1,2\n", "t.csv, row 2: 3 fields, but 4 in the heading");
        row("too many", head + "b,1,2,k,z\n", "t.csv, row 2: 5 fields, but 4 in the heading");
        row("an open quotation mark", head + "b,1,2,\"k\nc,1,2,k\n",
            "t.csv, row 2: a quotation mark opens a field that is not closed");
        row("a zero", head + QByteArray("b,1,2,k\0k\n", 10), "t.csv, row 2: a byte of value 0");
        row("a long line", head + "b,1,2," + QByteArray(40 << 20, 'k'),
            "t.csv, row 2: the row is longer than 32 MiB");
        row("the same name twice", "id,x,y,x\na,1,2,3\n", "t.csv: fields 2 and 4 have the same");
        row("not finite", head + "b,1,inf,k\n", "t.csv, field y, row 2: \"inf\" is no coordinate");
        row("no coordinate", head + "b,,2,k\n", "t.csv, field x, row 2: \"\" is no coordinate");
        row("no key", head + ",1,2,k\n", "t.csv, field id, row 2: no key");
        row("no rows", "id,x,y,n\n", "t.csv: holds no rows");
        row("nothing", "", "t.csv: holds no fields");
    }
    void namesThePlaceOfDamage()
    {
        QFETCH(QByteArray, content);
        QFETCH(QString, told);
        Workshop shop;
        const QString failure = runPoints(shop, "t.csv", content);
        QVERIFY2(failure.contains(told), qPrintable(failure));
        QVERIFY(geographyIds().isEmpty());
    }

    void textsOfMissingValuesAreChosen()
    {
        const auto told = [](const QStringList &missing, const QStringList &also) {
            Workshop shop;
            shop.options.missing = missing;
            shop.options.missingAlso = also;
            // The usual texts are no missing keys: NA is Namibia.
            const QString failure =
                runPoints(shop, "t.csv", "id,x,y,n\na,1,2,-99\nNA,1,2,NA\nc,1,2,5\n");
            return failure.isEmpty() ? shop.told("n", "a") + ' ' + shop.told("n", "NA") : failure;
        };
        QCOMPARE(told({}, {}), QString("always=-99 always=missing"));
        QCOMPARE(told({}, {"-99"}), QString("always=missing always=missing"));
        QCOMPARE(told({""}, {}), QString("always=-99 always=NA"));
        QVERIFY(told({"NA"}, {}).contains("field id, row 2: no key"));
    }

    void tellsWhichCellMakesAFieldText()
    {
        Workshop shop;
        const auto notes = [&shop](const char *cells) {
            const QString failure = runPoints(shop, "t.csv", cells);
            return failure.isEmpty() ? shop.notes.join('\n') : failure;
        };
        const QString one = notes("id,x,y,n\na,1,2,1\nb,1,2,2\nc,1,2,three\n");
        QVERIFY2(one.contains("t.csv, field n, row 3: \"three\" makes the field text; numbers "
                              "among its values: 2 of 3"),
                 qPrintable(one));
        const QString comma = notes("id;x;y;n\na;1;2;1,5\n");
        QVERIFY2(comma.contains("row 1: \"1,5\" was taken for text"), qPrintable(comma));
        QCOMPARE(notes("id,x,y,n\n01,1,2,01\n02,1,2,b\n"), QString());
    }

    void keysStayApart()
    {
        Workshop shop;
        QCOMPARE(
            runPoints(shop, "t.csv", "id,x,y,n\n9007199254740993,1,2,1\n9007199254740992,1,2,2\n"),
            QString());
        QCOMPARE(shop.told("n", "9007199254740993"), QString("always=1"));
        QCOMPARE(shop.told("n", "9007199254740992"), QString("always=2"));
        // Different texts of one number.
        const char *const same = "id,x,y,n\n1,1,2,1\n1.0,1,2,2\n";
        QCOMPARE(runPoints(shop, "t.csv", same), QString());
        QCOMPARE(shop.told("n", "1.0"), QString("always=2"));
        shop.options.types = QStringList{"id=decimal"};
        QVERIFY(runPoints(shop, "t.csv", same).contains("different keys are one number"));
    }

    void readsShapesOfEveryForm_data()
    {
        QTest::addColumn<QByteArray>("shape");
        QTest::addColumn<QString>("told"); // the failure; empty: two polygons
        const auto row = [](const char *title, const char *type, const char *rest,
                            const char *told = "") {
            QTest::newRow(title) << QByteArray("{\"type\":\"") + type + "\"," + rest + "}"
                                 << QString(told);
        };
        row("a collection of polygons", "GeometryCollection",
            "\"geometries\":[{\"type\":\"Polygon\",\"coordinates\":[[[8,0],[9,0],[9,1],[8,0]]]}]");
        row("a collection of kinds", "GeometryCollection",
            "\"geometries\":[{\"type\":\"Polygon\",\"coordinates\":[[[8,0],[9,0],[9,1],[8,0]]]},"
            "{\"type\":\"Point\",\"coordinates\":[8,0]}]",
            "row 4: a geometrycollection cannot be an object");
        row("heights", "Polygon", "\"coordinates\":[[[8,0,5],[9,0,5],[9,1,5],[8,0,5]]]");
        row("a part without area", "MultiPolygon",
            "\"coordinates\":[[[[8,0],[9,0],[9,1],[8,0]]],[[[3,3],[4,4],[5,5],[3,3]]]]");
        row("no area", "Polygon", "\"coordinates\":[[[0.1,0.1],[0.3,0.3],[0.7,0.7],[0.1,0.1]]]",
            "row 4: the polygon has no area");
        row("another kind", "Point", "\"coordinates\":[8,0]", "row 4: a point among shapes");
        row("not finite", "Polygon", "\"coordinates\":[[[8,0],[1e999,0],[9,1],[8,0]]]",
            "row 4: vertex 2 is not finite");
    }
    void readsShapesOfEveryForm()
    {
        QFETCH(QByteArray, shape);
        QFETCH(QString, told);
        QByteArray map = squares();
        map.insert(map.size() - 2,
                   ",{\"type\":\"Feature\",\"properties\":{\"id\":\"d\"},\"geometry\":" + shape
                       + "}");
        Workshop shop(map);
        const QString failure = shop.run();
        QVERIFY2(failure.contains(told) && failure.isEmpty() == told.isEmpty(),
                 qPrintable(failure));
        if (told.isEmpty())
            QCOMPARE(shop.report.shapes, 4);
    }

    void aCutMapIsRefused()
    {
        const QByteArray whole = squares();
        for (int length = 1; length < whole.size() - 1; length += 7) {
            Workshop shop(whole.left(length));
            QVERIFY2(shop.run().contains("map.geojson"), whole.left(length).constData());
        }
    }

    void daysOfValuesLeaveNoHole_data()
    {
        QTest::addColumn<bool>("observed");
        QTest::newRow("series") << false;
        QTest::newRow("observations") << true;
    }
    void daysOfValuesLeaveNoHole()
    {
        QFETCH(bool, observed);
        Workshop shop(squares(), observed ? "id,from,to,value\na,2000-01-01,2000-01-31,1\n"
                                            "a,2000-02-01,2000-03-05,2\n"
                                          : "id,p,q\na,1,2\nb,1,2\nc,1,2\n");
        if (observed) {
            shop.options.observations = shop.table();
            shop.options.observed = QStringList{"v=value@from/to"};
        } else {
            shop.options.tables = QStringList{shop.table()};
            shop.options.series = QStringList{"v=p@2000-01-01/2000-01-31,q@2000-02-01/2000-03-05"};
        }
        QCOMPARE(shop.run(), QString());
        QCOMPARE(shop.told("v", "a"), QString("2000-01=1 2000-02-01/2000-03-05=2"));
        QVector<Interval> intervals;
        QVERIFY(VORN_GetDataIntervals(findDataset("v"), 0, 0, intervals));
        QCOMPARE(intervals.size(), 2);
        QCOMPARE(intervals[0].endTime, intervals[1].startTime);
        QVERIFY(intervals[0].inclusiveEnd != intervals[1].inclusiveStart);
    }

    void passwordsAreNotShown()
    {
        Workshop shop;
        shop.options.map = "PG:host=/nowhere dbname=t user=me password='my secret'";
        const QString failure = shop.run();
        QVERIFY2(failure.contains("cannot be opened"), qPrintable(failure));
        QVERIFY2(!failure.contains("secret"), qPrintable(failure));
    }

    void aSpoolReadsBackWhatItKeeps()
    {
        const quint32 seed = walkSeed();
        std::mt19937 random(seed);
        const auto spool = std::make_shared<Spool>();
        std::vector<Cells> columns(3, Cells(spool, 1 << 12));
        std::vector<std::vector<std::string>> expected(3);
        for (int i = 0; i < 6000; ++i) { // beyond what is kept in memory
            const size_t column = random() % 3;
            const size_t length = random() % 50 == 0 ? random() % 90000 : random() % 200;
            expected[column].emplace_back(length, static_cast<char>('a' + random() % 26));
            columns[column].append(expected[column].back());
            if (random() % 4 != 0)
                continue;
            const size_t known = random() % expected[column].size();
            QVERIFY(columns[column].view(static_cast<int>(known)) == expected[column][known]);
        }
        for (size_t column = 0; column < 3; ++column)
            for (size_t row = 0; row < expected[column].size(); ++row)
                QVERIFY(columns[column].view(static_cast<int>(row)) == expected[column][row]);
    }

    void nearVerticesAreThoseOfAPlainSearch()
    {
        std::mt19937 random(walkSeed());
        for (const double distance : {0.001, 0.3, 40.0}) {
            Shapes shapes(std::make_shared<Spool>());
            std::vector<QPointF> all;
            for (int i = 0; i < 500; ++i) {
                const auto one = [&random] { return static_cast<int>(random() % 1000) / 10.0; };
                const double bend = random() % 3 == 0 ? 0.0005 : 0;
                const QPointF at(random() % 2 ? one() : 50.0, one());
                shapes.append(ShapeParts{{at, at + QPointF(bend, bend / 2)}});
                all.insert(all.end(), {at, at + QPointF(bend, bend / 2)});
            }
            std::sort(all.begin(), all.end(), [](const QPointF &a, const QPointF &b) {
                return std::make_pair(a.x(), a.y()) < std::make_pair(b.x(), b.y());
            });
            const auto same = [](const QPointF &a, const QPointF &b) {
                return a.x() == b.x() && a.y() == b.y();
            };
            all.erase(std::unique(all.begin(), all.end(), same), all.end());
            int expected = 0;
            for (const QPointF &a : all)
                expected += std::any_of(all.begin(), all.end(), [&](const QPointF &b) {
                    return !same(a, b) && std::hypot(a.x() - b.x(), a.y() - b.y()) <= distance;
                });
            QCOMPARE(countNearVertices(shapes, distance).count, expected);
        }
    }

    void nearVerticesOfManyBands()
    {
        // Rows of vertices, each seventh with another one above it, also across bands.
        Shapes shapes(std::make_shared<Spool>());
        int expected = 0;
        for (int y = 0; y < 1000; ++y) {
            QVector<QPointF> line;
            for (int x = 0; x < 1000; ++x) {
                line.append(QPointF(x, y));
                if ((x + y) % 7 == 0)
                    line.append(QPointF(x, y + 1e-6)), expected += 2;
            }
            shapes.append(ShapeParts{line});
        }
        QCOMPARE(countNearVertices(shapes, 0).count, expected);
    }
};

QTEST_GUILESS_MAIN(TestTables)
#include "tst_Tables.moc"
