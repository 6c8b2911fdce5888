// SPDX-License-Identifier: MIT
#include <QImage>
#include <QtTest>
#include <cmath>
#include "core/render/choropleth.h"
#include "core/render/graph.h"
#include "core/render/pictureFile.h"
#include "core/workshop.h"

using namespace meridor;

class TestPictures : public QObject {
    Q_OBJECT
private Q_SLOTS:
    /// Three squares with values of two years, "c" without one in the second.
    void showWhatIsMissing()
    {
        Workshop shop(squares(), "id,v2000,v2001\na,1,2.5\nb,4,5\nc,7,\n");
        shop.options.tables = QStringList{shop.table()};
        shop.options.series = QStringList{"v=v2000..v2001"};
        QCOMPARE(shop.run(), QString());
        const int dataset = findDataset("v");
        MapStyle style;
        style.classes = 2;
        const MapPicture map = choropleth({dataset, chooseTime(dataset, "2001"), "v", {}}, style);
        QCOMPARE(map.missingCount, 1);
        QCOMPARE(map.legend.size(), 2);
        const QImage picture = draw(map);
        QCOMPARE(picture.size(), QSize(1600, 1000));
        // Each colour of the legend is in the map as well, and the grey of "c", the rightmost
        // square.
        QMap<QString, int> pixels;
        for (int x = 0; x < 1200; ++x)
            ++pixels[QColor(picture.pixel(x, 537)).name()];
        for (const QColor &color : {kMissingColor, map.legend[0].color, map.legend[1].color})
            QVERIFY2(pixels.value(color.name()) > 100, qPrintable(color.name()));
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
        style.size = QSize(800, 500);
        const QImage picture = draw(choropleth({findDataset("id"), 0, "id", {}}, style));
        // Map coordinates 0..29 by 0..9 fill the width of the map area: margins of 24, a legend of
        // 165.
        const auto at = [&picture](double x, double y) {
            const double scale = 563 / 29.0;
            return QColor(picture.pixel(static_cast<int>(24 + x * scale),
                                        static_cast<int>(268.5 - (y - 4.5) * scale)));
        };
        QCOMPARE(at(4.5, 4.5), QColor(Qt::white));
        QCOMPARE(at(14, 4.5), QColor(Qt::white));
        QVERIFY(at(1.5, 4.5) != QColor(Qt::white));
        QVERIFY(at(24, 4.5) != QColor(Qt::white));
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
        QFile file(path);
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QString svg = QString::fromUtf8(file.readAll());
        QStringList absent;
        for (const char *text : {"Rain &amp; &lt;b&gt;wind&lt;/b&gt;</text>", ">two gauges<",
                                 ">a note<", ">distance, m<", ">semivariance<", ">pairs<",
                                 ">model<", ">n=17<", ">n=19<", ">1.6<", ">2\u2009000<"})
            if (!svg.contains(text))
                absent.append(text);
        QCOMPARE(absent.join(QString(", ")), QString());
        for (const char *other : {">n=18<", "<image", "<b>"})
            QVERIFY2(!svg.contains(other), other);
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
