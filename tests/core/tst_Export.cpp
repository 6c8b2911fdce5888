// SPDX-License-Identifier: MIT
#include <QBuffer>
#include <QFile>
#include <QtTest>
#include <cmath>
#include "core/analysis/tables.h"
#include "core/analysis/weightSets.h"
#include "core/analysis/weightsExchange.h"
#include "core/formats/ogrReader.h"
#include "core/formats/sourceFile.h"
#include "core/formats/textTable.h"
#include "core/project/text.h"
#include "core/workshop.h"
#include "support/checks.h"

using namespace meridor;

Q_DECLARE_METATYPE(meridor::TableCell)

namespace {

/// Two objects with dated shapes: "a" is a square with a hole and an island in the hole, then two
/// squares apart; "b" is a square until 1850, and again from 1860 on.
QByteArray datedShapes()
{
    const auto feature = [](const char *key, const char *from, const char *to, const char *parts) {
        return QStringLiteral("{\"type\":\"Feature\",\"properties\":{\"id\":\"%1\",\"from\":\"%2\","
                              "\"to\":\"%3\"},\"geometry\":{\"type\":\"MultiPolygon\","
                              "\"coordinates\":[%4]}}")
            .arg(key, from, to, parts);
    };
    const char *const square = "[[[20,0],[21,0],[21,1],[20,1],[20,0]]]";
    const QStringList features{
        feature("a", "1800-01-01", "1829-12-31",
                "[[[0,0],[10,0],[10,10],[0,10],[0,0]],[[1,1],[9,1],[9,9],[1,9],[1,1]]],"
                "[[[4,4],[6,4],[6,6],[4,6],[4,4]]]"),
        feature("a", "1830-01-01", "1899-12-31",
                "[[[0,0],[1,0],[1,1],[0,1],[0,0]]],[[[3,0],[5,0],[5,1],[3,1],[3,0]]]"),
        feature("b", "1800-01-01", "1850-06-30", square),
        feature("b", "1860-01-01", "1899-12-31", square)};
    return QString("{\"type\":\"FeatureCollection\",\"crs\":{\"type\":\"name\",\"properties\":"
                   "{\"name\":\"urn:ogc:def:crs:EPSG::5070\"}},\"features\":["
                   + features.join(',') + "]}")
        .toUtf8();
}

double areaOf(const ShapeParts &rings)
{
    double twice = 0; // GDAL orders shells against holes, so the signed areas add up
    for (const QVector<QPointF> &ring : rings)
        for (int i = 0; i + 1 < ring.size(); ++i)
            twice += ring[i].x() * ring[i + 1].y() - ring[i + 1].x() * ring[i].y();
    return std::abs(twice) / 2;
}

} // namespace

class TestExport : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void readsAListAsItWasWritten()
    {
        const QStringList items{"a,b", "", " c", "\"d\"", "e\"f", "g"};
        QCOMPARE(listText(items), QString("\"a,b\",\"\",\" c\",\"\"\"d\"\"\",e\"f,g"));
        QCOMPARE(listItems(listText(items)), items);
    }

    /// The shapes of a map without times are at the time zero, but lists of it may be of a span.
    void neighborsAreThoseOfTheShownTime()
    {
        Workshop shop;
        QCOMPARE(shop.run(), QString());
        const int geography = shop.report.geography;
        WeightSetPlan plan;
        plan.name = "queen";
        plan.method = "queen";
        plan.weights = "row";
        plan.includeEgo = true;
        const int queen = createWeightSet(geography, plan);
        WeightsFile file;
        file.egos = {{"a", {{"c", 1}}}, {"b", {}}, {"c", {{"a", 1}, {"b", 1}}}};
        WeightsImport how;
        how.at = "2001";
        importWeights(geography, "lists", file, "lists.gal", how);
        const int lists = findWeightSet("lists");
        const auto found = [](int set, const QVector<unsigned int> &objects, qint64 time) {
            QStringList texts;
            try {
                for (const unsigned int object : neighborsAt(set, objects, time))
                    texts.append(QString::number(object));
            } catch (const Failure &failure) {
                return failure.text();
            }
            return texts.join(' ');
        };
        for (const qint64 time : {0, 2000, 2001}) {
            QCOMPARE(found(queen, {0, 1, 2}, time), QString("1 0"));
            QStringList all;
            visitNeighbors(queen, time, [&](int object, const QVector<neighborDatum> &list) {
                all.append(QString("%1:%2").arg(object).arg(list.size()));
            });
            QCOMPARE(all.join(' '), QString("0:2 1:2 2:1")); // with themselves
        }
        QCOMPARE(found(lists, {0, 2}, 2001), QString("2 0 1"));
        QCOMPARE(found(lists, {0}, 2000), QString("weight set lists has nothing at 2000"));
    }

    void writesTheRowsOfExistingObjects()
    {
        Workshop shop(
            datedShapes(),
            "id,name,v1,v2\na,\"A, \"\"the\nfirst\"\"\",0.1,\nb, B,1e-300,12345678901234.5\n");
        shop.options.start = "from";
        shop.options.end = "to";
        shop.options.fields = QStringList{"name"};
        shop.options.tables = QStringList{shop.table()};
        shop.options.series = QStringList{"v=v1@1800-01-01/1839-12-31,v2@1845-01-01/1869-12-31"};
        QCOMPARE(shop.run(), QString());
        const auto check = [&shop](const QByteArray &expected, const QStringList &parts,
                                   const QString &at = QString(), bool wide = false) {
            const InCase inCase(expected);
            RowPlan plan;
            plan.geography = shop.report.geography;
            plan.datasets = QVector<int>{findDataset("v")};
            plan.parts = parts;
            plan.wide = wide;
            if (!at.isEmpty())
                plan.at = requireSpan(axisOf(plan.geography), at).startTime;
            const QString path = shop.file("out.csv", "old");
            exportTable(path, TableFormat::Csv, plan, QString(), [](const QString &) {});
            QFile file(path);
            QVERIFY(file.open(QIODevice::ReadOnly));
            QCOMPARE(file.readAll(), expected);
        };
        const QByteArray a = "a,\"A, \"\"the\nfirst\"\"\",";
        const QByteArray b = "b,\" B\",";
        // Spans of values are cut where the object ends; there is no row in the gap of the values.
        check("id,name,start,end,v\n" + a + "1800-01-01,1839-12-31,0.1\n" + a
                  + "1845-01-01,1869-12-31,\n" + b + "1800-01-01,1839-12-31,1e-300\n" + b
                  + "1845-01-01,1850-06-30,12345678901234.5\n" + b
                  + "1860-01-01,1869-12-31,12345678901234.5\n",
              {});
        check("v,id\n0.1,a\n1e-300,b\n", {"datasets", "key"}, "1835");
        check("v,id\n,a\n", {"datasets", "key"}, "1855"); // only one of them exists
        check("id,1800-01-01/1839-12-31,1845-01-01/1869-12-31\na,0.1,\nb,1e-300,12345678901234.5\n",
              {"key", "datasets"}, QString(), true);
    }

    void shapesReadBack()
    {
        Workshop shop(datedShapes(), "id,what is this,v\na,x,0.1\nb,,\n");
        shop.options.start = "from";
        shop.options.end = "to";
        shop.options.tables = QStringList{shop.table()};
        QCOMPARE(shop.run(), QString());
        const auto check = [&shop](const char *name, FeatureFormat format, const QString &at,
                                   const QList<double> &areas) {
            const InCase inCase(name);
            FeatureTarget target;
            target.path = shop.file(name, "old");
            target.format = format;
            RowPlan plan;
            plan.geography = shop.report.geography;
            if (!at.isEmpty())
                plan.at = requireSpan(axisOf(plan.geography), at).startTime;
            QStringList notes;
            exportShapes(target, plan, [&notes](const QString &text) { notes.append(text); });
            QCOMPARE(notes.size(), format == FeatureFormat::Shapefile ? 1 : 0); // a long name
            ReadOptions options;
            const FeatureTable table = readFeatures(target.path, options);
            QCOMPARE(table.rows, areas.size());
            QVERIFY2(table.projection.contains("5070"), qPrintable(table.projection));
            QList<double> found;
            for (int row = 0; row < table.rows; ++row)
                found.append(areaOf(table.shapes->parts(row)));
            std::sort(found.begin(), found.end()); // FlatGeobuf orders by place
            QCOMPARE(found, areas);
            const int v = table.indexOf("v");
            const int key = table.indexOf("id");
            QCOMPARE(table.indexOf("start") >= 0, at.isEmpty());
            for (int row = 0; row < table.rows; ++row)
                QCOMPARE(table.columns[v].text(row),
                         table.columns[key].text(row) == "a" ? QString("0.1") : QString());
        };
        for (const auto &[name, format] : {std::make_pair("o.gpkg", FeatureFormat::GeoPackage),
                                           {"o.geojson", FeatureFormat::GeoJson},
                                           {"o.fgb", FeatureFormat::FlatGeobuf},
                                           {"o.shp", FeatureFormat::Shapefile}}) {
            check(name, format, QString(), {1, 1, 3, 40});
            check(name, format, "1855", {3});
        }
    }

    void passwordsAreNotShown()
    {
        QCOMPARE(withoutPassword("PG:dbname=t password=s3 user=u"),
                 QString("PG:dbname=t password=*** user=u"));
        QCOMPARE(withoutPassword("PG:password = 'a b\\' c' port=1"),
                 QString("PG:password = *** port=1"));
        QCOMPARE(withoutPassword("postgresql://u:s3@h/t"), QString("postgresql://u:***@h/t"));
        QCOMPARE(withoutPassword("password=x.csv"), QString("password=x.csv"));
    }

    void numbersOfATextTableAreExact_data()
    {
        QTest::addColumn<TableCell>("cell");
        QTest::addColumn<QByteArray>("text");
        QTest::newRow("missing") << TableCell() << QByteArray("?");
        QTest::newRow("empty text") << TableCell(QString("")) << QByteArray("\"\"");
        QTest::newRow("line break") << TableCell(QString("a\nb")) << QByteArray("\"a\nb\"");
        QTest::newRow("a third") << TableCell(1.0 / 3) << QByteArray("0.3333333333333333");
        QTest::newRow("small") << TableCell(5e-324) << QByteArray("5e-324");
        QTest::newRow("infinite") << TableCell(-HUGE_VAL) << QByteArray("-Inf");
        QTest::newRow("large") << TableCell(qint64(9007199254740993))
                               << QByteArray("9007199254740993");
    }
    void numbersOfATextTableAreExact()
    {
        QFETCH(TableCell, cell);
        QFETCH(QByteArray, text);
        QBuffer buffer;
        QVERIFY(buffer.open(QIODevice::WriteOnly));
        CsvSink sink(buffer, "buffer", "?");
        sink.begin({{"x", CellKind::Text}});
        sink.row({cell}, nullptr);
        sink.end();
        QCOMPARE(buffer.data(), "x\n" + text + '\n');
    }
};

QTEST_GUILESS_MAIN(TestExport)
#include "tst_Export.moc"
