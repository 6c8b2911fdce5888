// SPDX-License-Identifier: MIT
#include <QJsonArray>
#include <QPolygonF>
#include <QtTest>
#include <cmath>
#include <random>
#include "cli/program.h"

namespace {

constexpr int kColumns = 7;
constexpr int kRows = 5;
constexpr double kCell = 2.5;
constexpr double kLeft = -3;
constexpr double kBottom = 40;

/// The value of a cell; -1 has none.
double valueAt(int column, int row)
{
    return column == 2 && row == 3 ? -1 : 10.0 * row + column + 0.5;
}

/// An ESRI ASCII grid.
QByteArray grid(const QByteArray &noData = "-1")
{
    QByteArray text =
        "ncols 7\nnrows 5\nxllcorner -3\nyllcorner 40\ncellsize 2.5\nNODATA_value " + noData + "\n";
    for (int row = 0; row < kRows; ++row) {
        for (int column = 0; column < kColumns; ++column)
            text += QByteArray::number(valueAt(column, row)) + ' ';
        text += '\n';
    }
    return text;
}

/// What an area shares with a cell.
double sharedArea(const QRectF &area, int column, int row)
{
    const QPointF corner(kLeft + column * kCell, kBottom + (kRows - 1 - row) * kCell);
    const QRectF shared = area & QRectF(corner, QSizeF(kCell, kCell));
    return shared.width() * shared.height();
}

/// Some lie across the border of the grid, some beside it.
QVector<QRectF> randomRectangles(int count)
{
    std::mt19937 engine(walkSeed(11));
    std::uniform_real_distribution<double> x(kLeft - 4, kLeft + kColumns * kCell + 4);
    std::uniform_real_distribution<double> y(kBottom - 4, kBottom + kRows * kCell + 4);
    QVector<QRectF> rectangles;
    for (int i = 0; i < count; ++i)
        rectangles.append(
            QRectF({x(engine), y(engine)}, QPointF(x(engine), y(engine))).normalized());
    return rectangles;
}

QByteArray asGeoJson(const QVector<QPolygonF> &rings)
{
    QByteArrayList features;
    for (const QPolygonF &ring : rings) {
        QByteArrayList places;
        for (const QPointF &p : ring)
            places.append('[' + QByteArray::number(p.x(), 'g', 17) + ','
                          + QByteArray::number(p.y(), 'g', 17) + ']');
        features.append("{\"type\":\"Feature\",\"properties\":{},\"geometry\":{\"type\":"
                        "\"Polygon\",\"coordinates\":[["
                        + places.join(',') + "]]}}");
    }
    return "{\"type\":\"FeatureCollection\",\"features\":[" + features.join(',') + "]}";
}

} // namespace

/// Grids from their files to statistics over polygons, and files that are no grids of ours.
class TestMeridorRasters : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void zonesWeighCellsByTheirArea()
    {
        const Workplace place;
        const QVector<QRectF> areas = randomRectangles(40);
        QVector<QPolygonF> rings;
        for (const QRectF &area : areas)
            rings.append(QPolygonF(area));
        const QString raster = place.file("g.asc", grid());
        const QString zones = place.file("zones.geojson", asGeoJson(rings));
        QCOMPARE(place.run({"import", raster, "p.vorn"}).code, 0);
        QCOMPARE(place.run({"import", zones, "p.vorn", "--append", "--crs", "EPSG:4326"}).code, 0);
        const Outcome told = place.run(
            {"zonal", "p.vorn", "g", "zones", "--json", "--into", "mean", "--output", "q.vorn"});
        QVERIFY2(told.code == 0, qPrintable(told.err));
        const QJsonArray found = told.at("times/0/zones").toArray();
        QCOMPARE(found.size(), rings.size());
        for (int i = 0; i < rings.size(); ++i) {
            double area = 0;
            double sum = 0;
            for (int row = 0; row < kRows; ++row) {
                for (int column = 0; column < kColumns; ++column) {
                    const double value = valueAt(column, row);
                    const double shared = value < 0 ? 0 : sharedArea(areas[i], column, row);
                    area += shared;
                    sum += shared * value;
                }
            }
            const QJsonObject zone = found[i].toObject();
            const QByteArray which = "rectangle " + QByteArray::number(i);
            QVERIFY2(std::abs(zone["area"].toDouble() - area) < 1e-9, which);
            QVERIFY2(area == 0 || std::abs(zone["mean"].toDouble() - sum / area) < 1e-9, which);
        }
        const Outcome kept = place.run({"stats", "q.vorn", "zones/mean", "--json"});
        QVERIFY2(kept.at("overall/count").toInt() > 20, qPrintable(kept.out + kept.err));
        place.file("far.geojson", asGeoJson({QPolygonF(QRectF(5e5, 4e6, 1000, 1000))}));
        QCOMPARE(place.run({"import", "far.geojson", "p.vorn", "--append"}).code, 0);
        const QString refusal = place.run({"zonal", "p.vorn", "g", "far"}).err;
        QVERIFY2(refusal.contains("far and g have no area in common"), qPrintable(refusal));
    }

    void formsComeBack_data()
    {
        QTest::addColumn<QByteArray>("noData");
        QTest::addColumn<QStringList>("options");
        QTest::addColumn<int>("count");
        const auto check = [](const char *noData, const QStringList &options, int count) {
            QTest::newRow(qPrintable(QString(QString(noData) + " with " + options.join(' '))))
                << QByteArray(noData) << options << count;
        };
        check("-1", {}, 34);
        check("-1", {"--no-data", "30.5"}, 34);
        check("-1", {"--no-data", "none"}, 35);
        check("nan", {}, 35);
    }
    void formsComeBack()
    {
        QFETCH(QByteArray, noData);
        QFETCH(QStringList, options);
        QFETCH(int, count);
        const Workplace place;
        const QString raster = place.file("g.asc", grid(noData));
        const Outcome imported = place.run(QStringList{"import", raster, "p.vorn"} + options);
        QVERIFY2(imported.code == 0, qPrintable(imported.err));
        const Outcome before = place.run({"stats", "p.vorn", "g", "--json"});
        QCOMPARE(before.at("overall/count").toInt(), count);
        QCOMPARE(place.run({"export", "p.vorn", "back.tif"}).code, 0);
        QCOMPARE(place.run({"import", "back.tif", "q.vorn", "--dataset", "g"}).code, 0);
        QCOMPARE(place.run({"stats", "q.vorn", "g", "--json"}).out, before.out);
        const auto described = [&](const char *project) {
            QJsonObject geography = place.run({"info", project, "--json"})
                                        .json()["geographies"]
                                        .toArray()[0]
                                        .toObject();
            for (const char *own : {"name", "history", "projection"})
                geography.remove(QLatin1String(own));
            return geography;
        };
        QCOMPARE(described("q.vorn"), described("p.vorn"));
    }

    void bandsHoldWhenTheirNamesSay()
    {
        const Workplace place;
        const QString rain = QStringLiteral(MERIDOR_TEST_SAMPLES "/carolina_climate/pr_1999.tif");
        QCOMPARE(place.run({"import", rain, "months.vorn", "--times", "date"}).code, 0);
        // An end that is the next band's start is not of the band any more.
        QCOMPARE(place
                     .run({"import", rain, "spans.vorn", "--times", "date", "--start", "start",
                           "--end", "end"})
                     .code,
                 0);
        const auto times = [&](const char *project) {
            return place.run({"series", project, "pr_1999", "@-80.8,35.2", "--json"})
                .at("values")
                .toArray();
        };
        const QJsonArray months = times("months.vorn");
        QCOMPARE(months.size(), 12);
        QCOMPARE(months[8].toObject()["time"].toString(), QStringLiteral("1999-09"));
        QVERIFY(std::abs(months[8].toObject()["value"].toDouble() - 109.3) < 1e-4);
        QCOMPARE(times("spans.vorn")[0].toObject()["start"].toString(),
                 QStringLiteral("1999-01-01"));
        QCOMPARE(times("spans.vorn")[8].toObject()["value"], months[8].toObject()["value"]);
        // Without --times every band is a dataset.
        QCOMPARE(place.run({"import", rain, "bands.vorn", "--fields", "1999-09,1999-01"}).code, 0);
        const Outcome january = place.run({"stats", "bands.vorn", "1999-01", "--json"});
        QVERIFY(std::abs(january.at("overall/mean").toDouble() - 155.113) < 0.0006);
        QCOMPARE(place.run({"classes", "bands.vorn", "1999-01", "--method", "quantile"}).code, 0);
    }

    void placesSelectCells()
    {
        const Workplace work;
        QCOMPARE(work.run({"import", work.file("g.asc", grid()), "p.vorn"}).code, 0);
        const QVector<QPointF> triangle{{-3, 40}, {2, 40}, {-3, 45}, {-3, 40}};
        work.file("place.geojson", asGeoJson({triangle}));
        const auto check = [&work](const QStringList &place, int count, double area) {
            const Outcome told = work.run(QStringList{"query", "p.vorn", "g", "--json"} + place);
            QVERIFY2(told.code == 0, qPrintable(told.err));
            QCOMPARE(told.json()["count"].toInt(), count);
            double sum = 0;
            for (const QJsonValue &cell : told.json()["cells"].toArray())
                sum += cell.toObject()["area"].toDouble();
            QVERIFY2(std::abs(sum - area) < 1e-9, qPrintable(told.out));
        };
        check({"--rect", "-2,41,1,43"}, 4, 6.0);
        check({"--rect", "-2,41,1,44", "--centers"}, 4, 0.0);
        check({"--circle", "-1.75,41.25,2.5001"}, 3, 0.0);
        check({"--ellipse", "-1.75,41.25,2.6,0.1,0"}, 2, 0.0);
        check({"--polygon", "place.geojson"}, 3, 12.5);
        check({"--polygon", "place.geojson", "--centers"}, 3, 0.0);
        check({"--circle", "500,500,1"}, 0, 0.0);
        // A rectangle whose limits are on borders of cells, on centres, or between.
        const auto number = [](double value) { return QString::number(value, 'g', 17); };
        for (QRectF area : randomRectangles(5)) {
            area.setTop(std::round(area.top() * 2 / kCell) * kCell / 2);
            area.setRight(std::round(area.right() * 2 / kCell) * kCell / 2);
            const QRectF rect = area.normalized();
            int met = 0, inside = 0;
            double shared = 0;
            for (int row = 0; row < kRows; ++row)
                for (int column = 0; column < kColumns; ++column) {
                    const double common = sharedArea(rect, column, row);
                    met += common > 0;
                    shared += common;
                    const QPointF center(kLeft + (column + 0.5) * kCell,
                                         kBottom + (kRows - row - 0.5) * kCell);
                    inside += center.x() >= rect.left() && center.x() <= rect.right()
                              && center.y() >= rect.top() && center.y() <= rect.bottom();
                }
            const QString text = QStringList{number(rect.left()), number(rect.top()),
                                             number(rect.right()), number(rect.bottom())}
                                     .join(',');
            check({"--rect", text}, met, shared);
            check({"--rect", text, "--centers"}, inside, 0.0);
        }
    }

    void selectsCellsWithTheirValues()
    {
        const Workplace place;
        place.file("g.asc", grid());
        QCOMPARE(place.run({"import", "g.asc", "p.vorn"}).code, 0);
        const Outcome told = place.run({"select", "p.vorn", "g", "--min", "44", "--json"});
        QVector<double> values;
        for (const QJsonValue &cell : told.json()["objects"].toArray())
            values.append(cell.toObject()["value"].toDouble());
        QCOMPARE(values, (QVector<double>{44.5, 45.5, 46.5}));
    }

    void readsOneOfSeveralRealizations_data()
    {
        QTest::addColumn<QStringList>("verb");
        QTest::addColumn<QString>("result"); // empty: a file
        const auto row = [](const QStringList &verb, const char *result) {
            QTest::newRow(qPrintable(verb.first())) << verb << result;
        };
        row({"stats", "p.vorn", "drawn"}, "overall/mean");
        row({"series", "p.vorn", "drawn", "3,2"}, "values/0/value");
        row({"classes", "p.vorn", "drawn"}, "breaks");
        row({"zonal", "p.vorn", "drawn", "zones"}, "times/0/zones");
        row({"query", "p.vorn", "drawn", "--rect", "-2,41,1,43"}, "cells/0/value");
        row({"export", "p.vorn", "out.tif", "--datasets", "drawn"}, "");
        row({"map", "p.vorn", "drawn", "out.svg"}, "");
        row({"report", "p.vorn", "out.html"}, "");
    }
    void readsOneOfSeveralRealizations()
    {
        QFETCH(QStringList, verb);
        QFETCH(QString, result);
        const Workplace place;
        place.file("g.asc", grid());
        place.file("zones.geojson", asGeoJson({QPolygonF(QRectF(-3, 40, 10, 10))}));
        QCOMPARE(place.run({"import", "g.asc", "p.vorn"}).code, 0);
        QCOMPARE(
            place.run({"import", "zones.geojson", "p.vorn", "--append", "--crs", "EPSG:4326"}).code,
            0);
        const Outcome drawn =
            place.run({"simulate", "p.vorn", "--unconditional", "--to", "g", "--model",
                       "spherical:1:9", "--realizations", "3", "--seed", "1", "--into", "drawn"});
        QVERIFY2(drawn.code == 0, qPrintable(drawn.err));
        const QStringList form{result.isEmpty() ? "--overwrite" : "--json"};
        const auto told = [&](const QStringList &options) -> QVariant {
            const Outcome outcome = place.run(verb + form + options);
            if (outcome.code != 0)
                qWarning("%s", qPrintable(outcome.err));
            return result.isEmpty() ? QVariant(place.bytes(verb[verb[0] == "map" ? 3 : 2]))
                                    : outcome.at(result).toVariant();
        };
        const QVariant first = told({});
        QVERIFY(!first.toString().isEmpty() || !first.toList().isEmpty());
        QCOMPARE(told({"--realization", "1"}), first);
        QVERIFY(told({"--realization", "3"}) != first);
        for (const QString number : {"4", "0", "-1"}) {
            const Outcome refused = place.run(verb + form + QStringList{"--realization", number});
            QCOMPARE(refused.code, 1);
            QVERIFY2(refused.err.contains("drawn has no realization " + number + "; it has 3"),
                     qPrintable(refused.err));
        }
    }

    void refusesWhatIsNoGrid_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QStringList>("options");
        QTest::addColumn<QByteArray>("told");
        const auto check = [](const char *name, const QByteArray &content,
                              const QStringList &options, const char *told) {
            QTest::newRow(told) << name << content << options << QByteArray(told);
        };
        const auto vrt = [&check](const QByteArray &inside, const char *told, int size = 2,
                                  const QStringList &options = {}) {
            const QByteArray count = QByteArray::number(size);
            check("g.vrt",
                  "<VRTDataset rasterXSize=\"" + count + "\" rasterYSize=\"" + count + "\">"
                      + inside + "</VRTDataset>",
                  options, told);
        };
        const auto band = [](const char *type, const QByteArray &inside = "",
                             int number = 1) -> QByteArray {
            return QByteArray("<VRTRasterBand dataType=\"") + type + "\" band=\""
                   + QByteArray::number(number) + "\">" + inside + "</VRTRasterBand>";
        };
        const QByteArray floats = band("Float32");
        vrt("<GeoTransform>0, 1, 0.5, 0, 0.5, -1</GeoTransform>" + floats, "turned or sheared");
        vrt("<GeoTransform>0, -1, 0, 0, 0, -1</GeoTransform>" + floats, "left to right");
        vrt(band("CFloat32"), "two parts");
        vrt(band("Int16", "<NoDataValue>-99999</NoDataValue>"), "-99999 fits no cell of 16 bits");
        vrt(floats, "more than a grid can hold", 100000);
        vrt(floats + band("Byte", "", 2), "of another type", 2, {"--times", "auto"});
        vrt(band("Byte", "<SimpleSource><SourceFilename>gone.tif</SourceFilename></SimpleSource>"),
            "g.vrt");
        check("g.asc", grid().left(150), {}, "broken at row");
        // GDAL reads zeros behind the end of raw cells.
        const Workplace raw;
        raw.file("g.hdr", "ENVI\nsamples = 9\nlines = 9\nbands = 1\ndata type = 4\ninterleave = "
                          "bsq\nbyte order = 0\n");
        raw.file("g.dat", QByteArray(9 * 9 * 4 - 1, 1));
        const Outcome cut = raw.run({"import", "g.dat", "p.vorn"});
        QCOMPARE(cut.code, 1);
        QVERIFY2(cut.err.contains("g.dat: ends after 323 of at least 324 bytes"),
                 qPrintable(cut.err));
        check("g.asc", grid(), {"--key", "id"}, "--key");
    }
    void refusesWhatIsNoGrid()
    {
        QFETCH(QString, name);
        QFETCH(QByteArray, content);
        QFETCH(QStringList, options);
        QFETCH(QByteArray, told);
        const Workplace place;
        place.file(name, content);
        const Outcome refused = place.run(QStringList{"import", name, "p.vorn"} + options);
        QCOMPARE(refused.code, options.contains("--key") ? 2 : 1);
        QVERIFY2(refused.err.contains(told), qPrintable(refused.err));
        QCOMPARE(place.files(), QStringList{name}); // nothing half-made
    }
};

QTEST_GUILESS_MAIN(TestMeridorRasters)
#include "tst_MeridorRasters.moc"
