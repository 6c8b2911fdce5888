// SPDX-License-Identifier: MIT
#include <QImage>
#include <QtTest>
#include "core/render/choropleth.h"
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
};

QTEST_MAIN(TestPictures)
#include "tst_Pictures.moc"
