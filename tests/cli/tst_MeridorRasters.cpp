// SPDX-License-Identifier: MIT
#include <QJsonArray>
#include <QPointF>
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

using Ring = QVector<QPointF>;

/// What a ring keeps of a half plane: the points whose `distance` is not negative.
template <class Distance> Ring clipped(const Ring &ring, Distance distance)
{
    Ring result;
    for (int i = 0; i < ring.size(); ++i) {
        const QPointF a = ring[i];
        const QPointF b = ring[(i + 1) % ring.size()];
        const double da = distance(a);
        const double db = distance(b);
        if (da >= 0)
            result.append(a);
        if ((da < 0) != (db < 0))
            result.append(a + (b - a) * (da / (da - db)));
    }
    return result;
}

double areaOf(const Ring &ring)
{
    double sum = 0;
    for (int i = 0; i < ring.size(); ++i) {
        const QPointF a = ring[i];
        const QPointF b = ring[(i + 1) % ring.size()];
        sum += a.x() * b.y() - b.x() * a.y();
    }
    return std::abs(sum) / 2;
}

/// What a convex ring shares with a cell.
double sharedArea(const Ring &ring, int column, int row)
{
    const double x = kLeft + column * kCell;
    const double y = kBottom + (kRows - 1 - row) * kCell;
    Ring part = clipped(ring, [=](const QPointF &p) { return p.x() - x; });
    part = clipped(part, [=](const QPointF &p) { return x + kCell - p.x(); });
    part = clipped(part, [=](const QPointF &p) { return p.y() - y; });
    return areaOf(clipped(part, [=](const QPointF &p) { return y + kCell - p.y(); }));
}

QVector<Ring> randomTriangles(int count)
{
    std::mt19937 engine(11);
    // Some lie across the border of the grid, some beside it.
    std::uniform_real_distribution<double> x(kLeft - 4, kLeft + kColumns * kCell + 4);
    std::uniform_real_distribution<double> y(kBottom - 4, kBottom + kRows * kCell + 4);
    QVector<Ring> rings;
    for (int i = 0; i < count; ++i)
        rings.append(Ring{{x(engine), y(engine)}, {x(engine), y(engine)}, {x(engine), y(engine)}});
    return rings;
}

QByteArray asGeoJson(const QVector<Ring> &rings)
{
    QByteArrayList features;
    for (const Ring &ring : rings) {
        QByteArrayList places;
        for (const QPointF &p : ring + Ring{ring.first()})
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
    void zonesWeighCellsByTheirArea();
    void formsComeBack_data();
    void formsComeBack();
    void bandsHoldWhenTheirNamesSay();
    void placesSelectCells_data();
    void placesSelectCells();
    void refusesWhatIsNoGrid_data();
    void refusesWhatIsNoGrid();
};

void TestMeridorRasters::zonesWeighCellsByTheirArea()
{
    const Workplace place;
    const QVector<Ring> rings = randomTriangles(40);
    const QString raster = place.file("g.asc", grid());
    const QString zones = place.file("zones.geojson", asGeoJson(rings));
    QCOMPARE(place.run({"import", raster, "p.vorn"}).code, 0);
    QCOMPARE(place.run({"import", zones, "p.vorn", "--append", "--crs", "EPSG:4326"}).code, 0);
    const Outcome told = place.run(
        {"zonal", "p.vorn", "g", "zones", "--json", "--into", "mean", "--output", "q.vorn"});
    QVERIFY2(told.code == 0, qPrintable(told.err));
    const QJsonArray found = told.json()["times"].toArray()[0].toObject()["zones"].toArray();
    QCOMPARE(found.size(), rings.size());
    for (int i = 0; i < rings.size(); ++i) {
        double area = 0;
        double sum = 0;
        for (int row = 0; row < kRows; ++row) {
            for (int column = 0; column < kColumns; ++column) {
                const double value = valueAt(column, row);
                const double shared = value < 0 ? 0 : sharedArea(rings[i], column, row);
                area += shared;
                sum += shared * value;
            }
        }
        const QJsonObject zone = found[i].toObject();
        const QByteArray which = "triangle " + QByteArray::number(i);
        QVERIFY2(std::abs(zone["area"].toDouble() - area) < 1e-9, which);
        QVERIFY2(area == 0 || std::abs(zone["mean"].toDouble() - sum / area) < 1e-9, which);
    }
    const Outcome kept = place.run({"stats", "q.vorn", "zones/mean", "--json"});
    QVERIFY2(kept.json()["overall"].toObject()["count"].toInt() > 20,
             qPrintable(kept.out + kept.err));
}

void TestMeridorRasters::formsComeBack_data()
{
    QTest::addColumn<QByteArray>("noData");
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<int>("count");
    QTest::newRow("the file's no-data value") << QByteArray("-1") << QStringList() << 34;
    QTest::newRow("another one") << QByteArray("-1") << QStringList{"--no-data", "30.5"} << 34;
    QTest::newRow("none") << QByteArray("-1") << QStringList{"--no-data", "none"} << 35;
    QTest::newRow("not a number") << QByteArray("nan") << QStringList() << 35;
}

void TestMeridorRasters::formsComeBack()
{
    QFETCH(QByteArray, noData);
    QFETCH(QStringList, options);
    QFETCH(int, count);
    const Workplace place;
    const QString raster = place.file("g.asc", grid(noData));
    const Outcome imported = place.run(QStringList{"import", raster, "p.vorn"} + options);
    QVERIFY2(imported.code == 0, qPrintable(imported.err));
    const Outcome before = place.run({"stats", "p.vorn", "g", "--json"});
    QCOMPARE(before.json()["overall"].toObject()["count"].toInt(), count);
    QCOMPARE(place.run({"export", "p.vorn", "back.tif"}).code, 0);
    QCOMPARE(place.run({"import", "back.tif", "q.vorn", "--dataset", "g"}).code, 0);
    QCOMPARE(place.run({"stats", "q.vorn", "g", "--json"}).out, before.out);
    const auto described = [&](const char *project) {
        QJsonObject geography =
            place.run({"info", project, "--json"}).json()["geographies"].toArray()[0].toObject();
        for (const char *own : {"name", "history", "projection"})
            geography.remove(QLatin1String(own));
        return geography;
    };
    QCOMPARE(described("q.vorn"), described("p.vorn"));
}

void TestMeridorRasters::bandsHoldWhenTheirNamesSay()
{
    const Workplace place;
    const QString rain = QStringLiteral(MERIDOR_TEST_SAMPLES "/carolina_climate/pr_1999.tif");
    QCOMPARE(place.run({"import", rain, "months.vorn", "--times", "date"}).code, 0);
    // An end that is the next band's start is not of the band any more.
    QCOMPARE(place
                 .run({"import", rain, "spans.vorn", "--times", "date", "--start", "start", "--end",
                       "end"})
                 .code,
             0);
    const auto times = [&](const char *project) {
        return place.run({"series", project, "pr_1999", "@-80.8,35.2", "--json"})
            .json()["values"]
            .toArray();
    };
    const QJsonArray months = times("months.vorn");
    QCOMPARE(months.size(), 12);
    QCOMPARE(months[8].toObject()["time"].toString(), QStringLiteral("1999-09"));
    QVERIFY(std::abs(months[8].toObject()["value"].toDouble() - 109.3) < 1e-4);
    QCOMPARE(times("spans.vorn")[0].toObject()["start"].toString(), QStringLiteral("1999-01-01"));
    QCOMPARE(times("spans.vorn")[8].toObject()["value"], months[8].toObject()["value"]);
    // Without --times every band is a dataset.
    QCOMPARE(place.run({"import", rain, "bands.vorn", "--fields", "1999-09,1999-01"}).code, 0);
    const Outcome january = place.run({"stats", "bands.vorn", "1999-01", "--json"});
    QVERIFY(std::abs(january.json()["overall"].toObject()["mean"].toDouble() - 155.113) < 0.0006);
    QCOMPARE(place.run({"classes", "bands.vorn", "1999-01", "--method", "quantile"}).code, 0);
}

void TestMeridorRasters::placesSelectCells_data()
{
    QTest::addColumn<QStringList>("place");
    QTest::addColumn<int>("count");
    QTest::addColumn<double>("area");
    QTest::newRow("rectangle") << QStringList{"--rect", "-2,41,1,43"} << 4 << 6.0;
    QTest::newRow("centres of it") << QStringList{"--rect", "-2,41,1,44", "--centers"} << 4 << 0.0;
    QTest::newRow("circle") << QStringList{"--circle", "-1.75,41.25,2.5001"} << 3 << 0.0;
    QTest::newRow("ellipse") << QStringList{"--ellipse", "-1.75,41.25,2.6,0.1,0"} << 2 << 0.0;
    QTest::newRow("polygon") << QStringList{"--polygon", "place.geojson"} << 3 << 12.5;
    QTest::newRow("centres in it")
        << QStringList{"--polygon", "place.geojson", "--centers"} << 3 << 0.0;
    QTest::newRow("nowhere") << QStringList{"--circle", "500,500,1"} << 0 << 0.0;
}

void TestMeridorRasters::placesSelectCells()
{
    QFETCH(QStringList, place);
    QFETCH(int, count);
    QFETCH(double, area);
    const Workplace work;
    QCOMPARE(work.run({"import", work.file("g.asc", grid()), "p.vorn"}).code, 0);
    work.file("place.geojson", asGeoJson({Ring{{-3, 40}, {2, 40}, {-3, 45}}}));
    const Outcome told = work.run(QStringList{"query", "p.vorn", "g", "--json"} + place);
    QVERIFY2(told.code == 0, qPrintable(told.err));
    QCOMPARE(told.json()["count"].toInt(), count);
    double sum = 0;
    for (const QJsonValue &cell : told.json()["cells"].toArray())
        sum += cell.toObject()["area"].toDouble();
    QVERIFY(std::abs(sum - area) < 1e-9);
}

void TestMeridorRasters::refusesWhatIsNoGrid_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<QString>("told");
    const auto vrt = [](const QByteArray &inside,
                        const QByteArray &size =
                            "rasterXSize=\"2\" rasterYSize=\"2\"") -> QByteArray {
        return "<VRTDataset " + size + ">" + inside + "</VRTDataset>";
    };
    const QByteArray floats = "<VRTRasterBand dataType=\"Float32\" band=\"1\"/>";
    QTest::newRow("turned") << QByteArray("g.vrt")
                            << vrt("<GeoTransform>0, 1, 0.5, 0, 0.5, -1</GeoTransform>" + floats)
                            << QStringList() << "turned or sheared";
    QTest::newRow("mirrored") << QByteArray("g.vrt")
                              << vrt("<GeoTransform>0, -1, 0, 0, 0, -1</GeoTransform>" + floats)
                              << QStringList() << "left to right";
    QTest::newRow("complex") << QByteArray("g.vrt")
                             << vrt("<VRTRasterBand dataType=\"CFloat32\" band=\"1\"/>")
                             << QStringList() << "two parts";
    QTest::newRow("no-data that no cell can be")
        << QByteArray("g.vrt")
        << vrt("<VRTRasterBand dataType=\"Int16\" "
               "band=\"1\"><NoDataValue>-99999</NoDataValue></VRTRasterBand>")
        << QStringList() << "-99999 fits no cell of 16 bits";
    QTest::newRow("more cells than an int")
        << QByteArray("g.vrt") << vrt(floats, "rasterXSize=\"100000\" rasterYSize=\"100000\"")
        << QStringList() << "more than a grid can hold";
    QTest::newRow("bands of two types as times")
        << QByteArray("g.vrt") << vrt(floats + "<VRTRasterBand dataType=\"Byte\" band=\"2\"/>")
        << QStringList{"--times", "auto"} << "of another type";
    QTest::newRow("cut short") << QByteArray("g.asc") << grid().left(150) << QStringList()
                               << "broken at row";
    QTest::newRow("a file that is gone")
        << QByteArray("g.vrt")
        << vrt("<VRTRasterBand dataType=\"Byte\" band=\"1\"><SimpleSource>"
               "<SourceFilename>gone.tif</SourceFilename></SimpleSource></VRTRasterBand>")
        << QStringList() << "g.vrt";
    QTest::newRow("options of maps")
        << QByteArray("g.asc") << grid() << QStringList{"--key", "id"} << "--key";
}

void TestMeridorRasters::refusesWhatIsNoGrid()
{
    QFETCH(QByteArray, name);
    QFETCH(QByteArray, content);
    QFETCH(QStringList, options);
    QFETCH(QString, told);
    const Workplace place;
    const QString file = place.file(QString::fromLatin1(name), content);
    const Outcome refused = place.run(QStringList{"import", file, "p.vorn"} + options);
    QCOMPARE(refused.code, options.contains("--key") ? 2 : 1);
    QVERIFY2(refused.err.contains(told), qPrintable(refused.err));
    QCOMPARE(place.files(), QStringList{file}); // nothing half-made
}

QTEST_GUILESS_MAIN(TestMeridorRasters)
#include "tst_MeridorRasters.moc"
