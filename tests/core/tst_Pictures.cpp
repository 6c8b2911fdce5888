// SPDX-License-Identifier: MIT
#include <QImage>
#include <QJsonArray>
#include <QXmlStreamReader>
#include <QtTest>
#include <cmath>
#include "core/analysis/weightSets.h"
#include "core/plot/plotValues.h"
#include "core/plot/plots.h"
#include "core/render/choropleth.h"
#include "core/render/graph.h"
#include "core/render/mapGeometry.h"
#include "core/render/palette.h"
#include "core/render/pictureFile.h"
#include "core/workshop.h"
#include "datainterface/RasterAPI.h"

using namespace meridor;

class TestPictures : public QObject {
    Q_OBJECT
private Q_SLOTS:
    /// Three squares with values of two years, "c" without one in the second.
    void showWhatIsMissing()
    {
        Workshop shop(squares(), "id,v2000,v2001\na,1,2.5\nb,4,5\nc,7,\n");
        const int dataset = imported(shop);
        MapStyle style;
        style.rule.count = 2;
        const MapPicture map = choropleth({dataset, chooseTime(dataset, "2001"), "v", {}}, style);
        QCOMPARE(legendText(map), QString("3.75 \u2013 5.00 1, 2.50 \u2013 3.75 1, no value 1"));
        // Each colour of the legend is in the map as well, and the ground of hatching.
        const QMap<QString, int> pixels = colorsIn(draw(map), 1240);
        for (const QColor &color :
             {colors::missing, map.legend[0].entries[0].color, map.legend[0].entries[1].color})
            QVERIFY2(pixels.value(color.name()) > 100, qPrintable(color.name()));
    }

    void barsHoldAllValues()
    {
        const QVector<QVector<double>> cases{{5, 5, 5},           {0, 1e-320}, {-1e308, 1e308},
                                             {1e15, 1e15 + 0.25}, {3, 1, 2},   {-1e-12, 0, 1e300}};
        for (const QVector<double> &values : cases) {
            const Bins bins = binsOf(values);
            QVERIFY2(bins.count >= 1 && bins.count <= 600, qPrintable(QString::number(bins.count)));
            for (const double value : values)
                QVERIFY2(
                    std::abs(bins.start / 4 + (bins.of(value) + 0.5) * (bins.width / 4) - value / 4)
                        <= bins.width / 4 * 1.001 + std::abs(value) * 1e-15,
                    qPrintable(QString::number(value)));
        }
        QCOMPARE(binsOf({}).count, 0);
    }

    /// The library finds limits of many values in a sample of them.
    void everyValueHasAClass()
    {
        constexpr int kCount = 30000;
        QByteArray table = "id,v2000\n";
        for (int i = 0; i < kCount; ++i)
            table +=
                QByteArray::number(i) + ',' + QByteArray::number(i * 7919LL % 30011 * 1000) + '\n';
        Workshop shop(points(kCount), table);
        const int dataset = imported(shop);
        const MapPicture map = choropleth({dataset, chooseTime(dataset, "2000"), "v", {}}, {});
        QCOMPARE(map.panels[0].missing, 0);
        qint64 sum = 0;
        for (const qint64 count : map.panels[0].counts)
            sum += count;
        QCOMPARE(sum, kCount);
    }

    void leaveHolesAndGapsBlank()
    {
        Workshop shop(
            "{\"type\":\"FeatureCollection\",\"features\":[{\"type\":\"Feature\","
            "\"properties\":{\"id\":1},\"geometry\":{\"type\":\"MultiPolygon\","
            "\"coordinates\":[[[[0,0],[9,0],[9,9],[0,9],[0,0]],"
            "[[3,3],[3,6],[6,6],[6,3],[3,3]]],[[[20,0],[29,0],[29,9],[20,9],[20,0]]]]}}]}");
        QCOMPARE(shop.run(), QString());
        MapStyle style;
        style.size.pixels = QSize(800, 500);
        const MapPicture map = choropleth({findDataset("id"), 0, "id", {}}, style);
        const QImage picture = draw(map);
        const QRgb fill = map.legend[0].entries[0].color.rgb();
        QRect box; // of the shape; the legend has the same colour in the right fifth
        for (int y = 0; y < 500; ++y)
            for (int x = 0; x < 640; ++x)
                if (picture.pixel(x, y) == fill)
                    box = box.united(QRect(x, y, 1, 1));
        const auto at = [&](double x, double y) {
            return picture.pixel(qRound(box.left() + x / 29 * box.width()),
                                 qRound(box.bottom() - y / 9 * box.height()))
                   == fill;
        };
        QCOMPARE((QVector<bool>{at(4.5, 4.5), at(14, 4.5), at(1.5, 4.5), at(24, 4.5)}),
                 (QVector<bool>{false, false, true, true}));
        // A part inside the right square is filled; the counts remain those of the whole.
        style.extent = QRectF(21, 1, 7, 7);
        const MapPicture part = choropleth({findDataset("id"), 0, "id", {}}, style);
        QCOMPARE(part.panels[0].drawn, map.panels[0].drawn);
        const auto filled = [&](const QImage &image) {
            return colorsIn(image, 640).value(QColor::fromRgb(fill).name());
        };
        QVERIFY2(filled(draw(part)) > 1.2 * filled(picture),
                 qPrintable(QString::number(filled(draw(part)))));
    }

    /// Panels of several times have one legend without counts; captions and labels are texts.
    void drawSmallMultiples()
    {
        QTemporaryDir directory;
        Workshop shop(squares(), "id,v2000,v2001\na,1,2.5\nb,4,5\nc,7,\n");
        const int dataset = imported(shop);
        MapStyle style;
        style.rule.limits = {0, 3, 10};
        style.labelField = findDataset("id");
        const QVector<qint64> times{chooseTime(dataset, "2000"), chooseTime(dataset, "2001")};
        const MapMaker maker(dataset, times, "v", style);
        const MapPicture map = maker.picture(times, {"then", "now"});
        QCOMPARE(legendText(map), QString("3 \u2013 10 -1, 0 \u2013 3 -1, no value -1"));
        QCOMPARE(map.panels[0].counts, (QVector<qint64>{1, 2}));
        QCOMPARE(map.panels[1].counts, (QVector<qint64>{1, 1}));
        const MapDrawing drawing = savePicture(map, directory.filePath("m.svg"));
        QCOMPARE(drawing.labelsDrawn, 6);
        const QString svg = content(directory.filePath("m.svg"));
        for (const char *text : {">then<", ">now<", ">no value<", "1 without a value<"})
            QVERIFY2(svg.contains(text), text);
        QCOMPARE(svg.count(">a</text>") + svg.count(">c</text>"), 4);
        savePicture(map, directory.filePath("m.pdf"));
        QFile pdf(directory.filePath("m.pdf"));
        QVERIFY(pdf.open(QIODevice::ReadOnly));
        QCOMPARE(pdf.read(5), QByteArray("%PDF-"));
        QCOMPARE(QDir(directory.path()).entryList(QDir::Files | QDir::Hidden).size(), 2);
    }

    void classify_data()
    {
        QTest::addColumn<QString>("method");
        QTest::addColumn<QVector<double>>("own");
        QTest::addColumn<QString>("expected");
        // Of 1, 2, 3, 4, 10: quartiles 2, 3, 4, so fences at -1 and 7; mean 4, deviation sqrt(10).
        const QVector<double> none;
        QTest::newRow("box") << "box" << none
                             << "up to \u22121 0, \u22121 \u2013 2 2, 2 \u2013 3 1, "
                                "3 \u2013 4 1, 4 \u2013 7 0, above 7 1";
        QTest::newRow("stddev") << "stddev" << none
                                << "up to \u22122.32 0, \u22122.32 \u2013 0.84 0, "
                                   "0.84 \u2013 4.00 4, 4.00 \u2013 7.16 0, 7.16 \u2013 10.32 1, "
                                   "above 10.32 0";
        QTest::newRow("own, widened")
            << QString() << QVector<double>{2, 4} << "1 \u2013 2 2, 2 \u2013 4 2, 4 \u2013 10 1";
        QTest::newRow("own, beyond the values")
            << QString() << QVector<double>{0, 5, 20} << "0 \u2013 5 4, 5 \u2013 20 1";
        QTest::newRow("unique") << "unique" << none << "1 1, 2 1, 3 1, 4 1, 10 1";
    }
    void classify()
    {
        QFETCH(QString, method);
        QFETCH(QVector<double>, own);
        QFETCH(QString, expected);
        Workshop shop(points(5), "id,v2000\n0,1\n1,2\n2,3\n3,4\n4,10\n");
        const int dataset = imported(shop);
        ClassRule rule;
        rule.method = method;
        rule.limits = own;
        const qint64 time = chooseTime(dataset, "2000");
        const Classification classes(dataset, {time}, rule);
        const ValuesAt values = valuesAt(dataset, time);
        QVector<int> counts(classes.entries().size());
        for (int i = 0; i < 5; ++i)
            ++counts[classes.of(values, i)];
        QStringList found;
        for (int i = 0; i < counts.size(); ++i)
            found.append(classes.entries()[i].text + ' ' + QString::number(counts[i]));
        QCOMPARE(found.join(", "), expected);
    }

    /// ColorBrewer's own colours for a number of classes, and the ends of a ramp.
    void knowPalettes()
    {
        const auto names = [](const QVector<QColor> &list) {
            QStringList texts;
            for (const QColor &color : list)
                texts.append(color.name());
            return texts.join(' ');
        };
        QCOMPARE(names(sequentialColors("Blues", 5)),
                 QString("#eff3ff #bdd7e7 #6baed6 #3182bd #08519c"));
        QCOMPARE(names(sequentialColors("rdylbu", 3)), QString("#fc8d59 #ffffbf #91bfdb"));
        QCOMPARE(names(sequentialColors("viridis", 2)), QString("#440154 #fde725"));
        QCOMPARE(names(categoricalColors(3, "Set2")), QString("#66c2a5 #fc8d62 #8da0cb"));
        QCOMPARE(sequentialColors("Blues", 40).size(), 40);
    }

    /// A grid of more cells than are counted one by one, with extremes between those of the sample.
    void classesOfLargeGrids()
    {
        constexpr int kSide = 2100;
        Workshop shop(squares());
        QCOMPARE(shop.run(), QString());
        const int grid =
            VORN_CreateNewRasterGeography("grid", kSide, kSide, QRectF(0, 0, 1, 1),
                                          Interval{0, 0, true, true}, TF_Integer, "", "");
        const int dataset = VORN_NewRasterDataset(grid, "height", RasterDecimalType, 1, 64, "");
        QVector<double> values(kSide * kSide);
        for (int i = 0; i < values.size(); ++i)
            values[i] = i;
        values[kSide + 1] = -5e6;
        values[3 * kSide + 5] = 9e6;
        VORN_AddRasterValues(dataset, 0, Interval{0, 0, true, true}, values, -1, true, true);
        const int before = geographyIds().size();
        for (const char *const method : {"quantile", "box"}) {
            ClassRule rule;
            rule.method = QLatin1String(method);
            rule.count = 4;
            const QVector<double> limits = Classification(dataset, {0}, rule).limits();
            QCOMPARE(limits.first(), -5e6);
            QCOMPARE(limits.last(), 9e6);
            const double median = limits[limits.size() / 2];
            QVERIFY2(std::abs(median / values.size() - 0.5) < 0.01,
                     qPrintable(QString::number(median)));
        }
        QCOMPARE(geographyIds().size(), before);
    }

    /// The grid below, its missing cells counted; a layer of squares above it, clipped at its extent.
    void drawLayersOverGrids()
    {
        Workshop shop(squares());
        QCOMPARE(shop.run(), QString());
        const int grid = VORN_CreateNewRasterGeography(
            "grid", 2, 2, QRectF(-1, 0, 4, 2), Interval{0, 0, true, true}, TF_Integer, "", "");
        const int dataset = VORN_NewRasterDataset(grid, "height", RasterDecimalType, 1, 64, "");
        VORN_AddRasterValues(dataset, 0, Interval{0, 0, true, true},
                             QVector<double>{10, 20, 30, -9}, -9, true, true);
        MapStyle style;
        style.rule.limits = {0, 15, 40};
        MapLayerStyle outlines;
        outlines.geography = shop.report.geography;
        style.layers = {outlines};
        const MapPicture map = choropleth({dataset, 0, "height", {}}, style);
        QCOMPARE(legendText(map), QString("15 \u2013 40 2, 0 \u2013 15 1, no value 1"));
        QCOMPARE(map.legend.size(), 2);
        // Three cells of equal size, of which two have one colour. The squares are outlines only,
        // and the one beyond the grid is not drawn.
        const QMap<QString, int> pixels = colorsIn(draw(map), 1240);
        const double low = pixels.value(map.legend[0].entries[1].color.name());
        const double high = pixels.value(map.legend[0].entries[0].color.name());
        QVERIFY2(std::abs(high / low - 2) < 0.3, qPrintable(QString::number(high / low)));
    }

    void clipAndHatch()
    {
        const QRectF frame(0, 0, 10, 10);
        QCOMPARE(clippedRing({{-5, 2}, {5, 2}, {5, 4}, {-5, 4}}, frame),
                 (QVector<QPointF>{{0, 2}, {5, 2}, {5, 4}, {0, 4}}));
        QCOMPARE(clippedRing({{-5, 2}, {-1, 2}, {-1, 4}}, frame), QVector<QPointF>());
        // A line that leaves the frame and comes back is two pieces.
        QCOMPARE(clippedLine({{1, 1}, {1, 20}, {5, 20}, {5, 5}}, frame),
                 (QVector<QVector<QPointF>>{{{1, 1}, {1, 10}}, {{5, 10}, {5, 5}}}));
        // Lines one apart have the length of the area, also around a hole.
        double length = 0;
        for (const QLineF &line : hatchLines({{{0, 0}, {100, 0}, {100, 100}, {0, 100}},
                                              {{40, 40}, {60, 40}, {60, 60}, {40, 60}}},
                                             1))
            length += line.length();
        QVERIFY2(std::abs(length - 9600) < 50, qPrintable(QString::number(length)));
        double width = 0;
        const QPointF place = labelPlace(
            {{{0, 0}, {100, 0}, {100, 100}, {0, 100}}, {{10, 10}, {70, 10}, {70, 90}, {10, 90}}},
            width);
        QVERIFY2(place.x() > 70, qPrintable(QString::number(place.x()))); // not in the hole
    }

    /// Numbers of the graphs, computed by hand or by R (lm, cor, fivenum of type 7).
    void plotNumbers()
    {
        Workshop shop(squares(), "id,v2000,v2001\na,1,2\nb,4,5\nc,10,8\n");
        const int dataset = imported(shop);
        const qint64 time = chooseTime(dataset, "2000");
        const QJsonObject box =
            boxesOverTime(dataset, dataTimes(dataset)).numbers["boxes"].toArray()[0].toObject();
        QCOMPARE(box["q1"].toDouble(), 2.5);
        QCOMPARE(box["median"].toDouble(), 4.0);
        QCOMPARE(box["high"].toDouble(), 10.0);
        ClassRule rule;
        rule.limits = {0, 4, 10};
        const QJsonObject bars = histogram(dataset, time, rule).numbers;
        int total = 0;
        for (const QJsonValue &count : bars["counts"].toArray())
            total += count.toInt();
        QCOMPARE(total, 3);
        const Plot same = scatter(dataset, dataset, time, -1);
        QCOMPARE(same.numbers["r"].toDouble(), 1.0);
        QCOMPARE(same.numbers["slope"].toDouble(), 1.0);
        const Plot lines = timePlot(dataset, {2});
        QCOMPARE(lines.graph.series.first().points, (QVector<QPointF>{{2000, 10}, {2001, 8}}));
        QCOMPARE(lines.graph.series.last().points, (QVector<QPointF>{{2000, 5}, {2001, 5}}));
        // a and b are neighbours and c is an island: with z = -4, -1, 5 the cross product is 8.
        WeightSetPlan plan;
        plan.name = "queen";
        plan.method = "queen";
        plan.weights = "row";
        const int set = createWeightSet(shop.report.geography, plan);
        const Plot moran = moranScatter(dataset, set, dataTimes(dataset).first(), -1);
        QCOMPARE(moran.numbers["moran"].toDouble(), 3.0 / 2 * 8 / 42);
        QCOMPARE(moran.numbers["quarters"].toObject()["low, low neighbours"].toInt(), 2);
    }

    /// Years in which an object has no value are gaps of its line.
    void plotsGapsOfLines()
    {
        Workshop gaps(squares(), "id,v2000,v2001,v2002,v2003\na,1,,3,4\nb,4,5,,\nc,10,8,,9\n");
        const Plot broken = timePlot(imported(gaps), {0, 1, 2});
        const auto text = [](const QVector<QPointF> &points) {
            QStringList texts;
            for (const QPointF &point : points)
                texts.append(std::isfinite(point.y()) ? QString::number(point.y()) : "gap");
            return texts.join(' ');
        };
        QCOMPARE(text(broken.graph.series[0].points), QString("1 gap 3 4"));
        QCOMPARE(text(broken.graph.series[1].points), QString("4 5"));
        QCOMPARE(text(broken.graph.series[2].points), QString("10 8 gap 9"));
        QCOMPARE(text(broken.graph.series[3].points), QString("5 6.5 3 6.5"));
        QCOMPARE(broken.numbers["series"].toArray()[2].toObject()["values"].toInt(), 3);
    }

    /// Of a grid, its cells are the objects; those without a value count neither as such nor in the mean.
    void plotsCellsOverTime()
    {
        Workshop shop(squares());
        QCOMPARE(shop.run(), QString());
        const int grid = VORN_CreateNewRasterGeography(
            "grid", 2, 2, QRectF(0, 0, 2, 2), Interval{0, 2, true, true}, TF_Integer, "", "");
        const int dataset = VORN_NewRasterDataset(grid, "height", RasterDecimalType, 1, 64, "");
        VORN_AddRasterValues(dataset, 0, Interval{0, 1, true, false}, QVector<double>{1, 2, 3, 6},
                             -1.0, true, true);
        VORN_AddRasterValues(dataset, 0, Interval{1, 2, true, true}, QVector<double>{5, -1, 3, 7},
                             -1.0, true, true);
        VORN_NewDatasetCreated(dataset);
        const Plot lines = timePlot(dataset, {findObject(grid, "1"), findObject(grid, "2")});
        QCOMPARE(lines.graph.series[0].name, QString("1"));
        QCOMPARE(lines.graph.series[0].points.last().y(), 5.0);
        QCOMPARE(lines.numbers["series"].toArray()[1].toObject()["values"].toInt(), 1);
        QCOMPARE(lines.graph.series.last().points.first().y(), 3.0);
        QCOMPARE(lines.graph.series.last().points.last().y(), 5.0);
        for (const char *none : {"0", "5", "01", "-1", ""})
            QVERIFY_EXCEPTION_THROWN(findObject(grid, none), Failure);
    }

    /// Days of a year are dots, also in a dashed line, in whose gaps most of them would be.
    void showShortSpans()
    {
        GraphSeries series;
        series.color = Qt::red;
        series.dashed = true;
        for (int month = 0; month < 24; ++month)
            series.points += {{30.0 * month, 5}, {30.0 * month + 1, 5}, {qQNaN(), qQNaN()}};
        Graph graph;
        graph.size.pixels = QSize(500, 300); // a day is a fraction of a pixel
        graph.series.append(series);
        QTemporaryDir directory;
        const QString path = directory.filePath("d.png");
        savePicture(graph, path);
        const QImage image(path);
        int dots = 0;
        bool wasRed = false;
        for (int x = 0; x < image.width(); ++x) {
            bool isRed = false;
            for (int y = 0; y < image.height(); ++y)
                isRed = isRed || image.pixelColor(x, y).hsvSaturation() > 200;
            dots += isRed && !wasRed;
            wasRed = isRed;
        }
        QCOMPARE(dots, 24);
    }

    /// Boxes that are nearer to each other than a pixel are drawn, and a correlation that does not
    /// exist is no number.
    void showNarrowBoxes()
    {
        Workshop shop(squares(), "id,v1000,v1001,v9000\na,1,2,5\nb,4,5,5\nc,10,8,5\n");
        const int dataset = imported(shop);
        QTemporaryDir directory;
        const QString path = directory.filePath("b.png");
        savePicture(boxesOverTime(dataset, dataTimes(dataset)).graph, path);
        const QImage image(path);
        int colored = 0;
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x)
                colored += image.pixelColor(x, y).hsvSaturation() > 80;
        QVERIFY2(colored > 100, qPrintable(QString::number(colored)));
        const Plot flat = scatter(dataset, dataset, chooseTime(dataset, "9000"), -1);
        for (const GraphSeries &series : flat.graph.series)
            QVERIFY2(!series.name.contains("nan"), qPrintable(series.name));
    }

    /// A graph as SVG contains its texts as texts, also those with markup, and no picture of pixels.
    void keepTextsInGraphs()
    {
        QTemporaryDir directory;
        const QString path = directory.filePath("g.svg");
        Graph graph;
        graph.texts = {"Rain & <b>wind</b>", "two gauges", "a note"};
        graph.x = {"distance, m", 0};
        graph.y = {"semivariance", 0};
        graph.series.append({"pairs", {{1000, 0.5}, {2000, qQNaN()}, {3000, 1.5}}});
        graph.series.last().look = GraphSeries::Points;
        graph.series.last().labels = QStringList{"n=17", "n=18", "n=19"};
        graph.series.append({"model", {{0, 0}, {3000, 1.4}}});
        savePicture(graph, path);
        const QString svg = content(path);
        QStringList absent;
        for (const char *text : {"Rain &amp; &lt;b&gt;wind&lt;/b&gt;</text>", ">two gauges<",
                                 ">a note<", ">distance, m<", ">semivariance<", ">pairs<",
                                 ">model<", ">n=17<", ">n=19<", ">1.6<", ">2000<"})
            if (!svg.contains(text))
                absent.append(text);
        QCOMPARE(absent.join(QString(", ")), QString());
        for (const char *other : {">n=18<", "<image", "<b>"})
            QVERIFY2(!svg.contains(other), other);
        // Characters that XML cannot hold would make the picture unreadable.
        graph.texts.title =
            QString::fromUtf8("nul ") + QChar(0) + QChar(0x1F) + QChar(0xFFFF) + '.';
        savePicture(graph, path);
        QXmlStreamReader reader(content(path));
        while (!reader.atEnd())
            reader.readNext();
        QCOMPARE(reader.errorString(), QString());
        for (int i = 0; i < 8; ++i)
            QVERIFY2(contrast(lineColor(i), Qt::white) >= 3, qPrintable(lineColor(i).name()));
    }

    void refuseOtherFormats()
    {
        try {
            requirePictureName("map.bmp");
            QFAIL("map.bmp was accepted");
        } catch (const Failure &failure) {
            QCOMPARE(failure.kind(), FailureKind::Misused);
        }
    }

private:
    static int imported(Workshop &shop)
    {
        shop.options.tables = QStringList{shop.table()};
        shop.options.series = QStringList{"v=v*"};
        const QString failure = shop.run();
        if (!failure.isEmpty())
            qWarning("%s", qPrintable(failure));
        return findDataset("v");
    }
    /// Points 0, 1 and so on.
    static QByteArray points(int count)
    {
        QByteArray features;
        for (int i = 0; i < count; ++i)
            features += (i ? "," : "") + QByteArray("{\"type\":\"Feature\",\"properties\":{\"id\":")
                        + QByteArray::number(i)
                        + "},\"geometry\":{\"type\":\"Point\",\"coordinates\":["
                        + QByteArray::number(i) + ",0]}}";
        return "{\"type\":\"FeatureCollection\",\"features\":[" + features + "]}";
    }
    /// The first block: "TEXT COUNT, ..." from top to bottom.
    static QString legendText(const MapPicture &map)
    {
        QStringList texts;
        for (const LegendEntry &entry : map.legend.first().entries)
            texts.append(entry.text + ' ' + QString::number(entry.count));
        return texts.join(", ");
    }
    /// The number of pixels of each colour left of `right`.
    static QMap<QString, int> colorsIn(const QImage &picture, int right)
    {
        QMap<QRgb, int> counts;
        for (int y = 0; y < picture.height(); ++y)
            for (int x = 0; x < right; ++x)
                ++counts[picture.pixel(x, y)];
        QMap<QString, int> named;
        for (auto it = counts.begin(); it != counts.end(); ++it)
            named.insert(QColor(it.key()).name(), it.value());
        return named;
    }
    static QString content(const QString &path)
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
    }
    /// The contrast ratio of the Web Content Accessibility Guidelines 2, 1 to 21.
    static double contrast(const QColor &a, const QColor &b)
    {
        const auto luminance = [](const QColor &color) {
            const auto linear = [](double c) {
                return c <= 0.04045 ? c / 12.92 : std::pow((c + 0.055) / 1.055, 2.4);
            };
            return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF())
                   + 0.0722 * linear(color.blueF());
        };
        const double first = luminance(a) + 0.05;
        const double second = luminance(b) + 0.05;
        return std::max(first / second, second / first);
    }
};

QTEST_MAIN(TestPictures)
#include "tst_Pictures.moc"
