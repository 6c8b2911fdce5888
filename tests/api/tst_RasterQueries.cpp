// SPDX-License-Identifier: MIT
#include <cmath>
#include <limits>
#include <numeric>
#include "datainterface/GeographyAPI.h"
#include "datainterface/MRasterDataSource.h"
#include "datainterface/RasterAPI.h"
#include "support/checks.h"
#include "support/model.h"
#include "support/support.h"

namespace {

QString text(const RasterPixels &pixels)
{
    QStringList parts;
    for (const auto &pixel : pixels)
        parts.append(QString("%1,%2").arg(pixel.first).arg(pixel.second));
    return parts.join(' ');
}

} // namespace

class TestRasterQueries : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void rowsCountFromTheTopAndBoundsFromTheBottom()
    {
        const MRasterDataSource grid(QString(), 10, 10, QRectF(0, 0, 10, 10), 0);
        QPointF center;
        QRectF bounds(7, 7, 7, 7);
        unsigned int id = 99;
        QVERIFY(grid.GetPixelCenter(0, 0, center));
        QCOMPARE(center, QPointF(0.5, 9.5));
        QVERIFY(grid.PointQuery(0.5, 9.5, id));
        QCOMPARE(id, 0u);
        QVERIFY(!grid.GetPixelCenter(10, 0, center));
        QCOMPARE(center, QPointF(10.5, 9.5));
        QVERIFY(!grid.GetPixelBounds(10, 0, bounds));
        QCOMPARE(bounds, QRectF(7, 7, 7, 7));
        QVERIFY(grid.GetPixelBounds(0, 0, bounds));
        QCOMPARE(bounds, QRectF(0, 0, 1, 1));
        QVERIFY(!grid.PointQuery(10.0, 5.0, id));
        unsigned int column = 0;
        unsigned int row = 0;
        QVERIFY(grid.PointQuery(10.0, 5.0, column, row, true));
        QCOMPARE(column, 9u);
        QCOMPARE(row, 5u);
        QVERIFY(!grid.PointQuery(-3.0, 50.0, column, row, true));
        QCOMPARE(column, 0u);
        QVERIFY(grid.PointQuery(-0.5, 5.0, id)); // truncation is toward zero
        QVERIFY(grid.ColRowFromIndex(37, column, row));
        QCOMPARE(column, 7);
        QCOMPARE(row, 3);
        QCOMPARE(answers({grid.ColRowFromIndex(100, column, row),
                          grid.ColRowFromIndex(-1, column, row)}),
                 "nn");
    }

    void rectanglesSelect()
    {
        const MRasterDataSource grid(QString(), 4, 4, QRectF(0, 0, 4, 4), 0);
        const auto selected = [&grid](const QRectF &rect, bool centers) {
            RasterPixels pixels{{9, 9}};
            return text(grid.RectQuery(rect, centers, pixels) ? pixels
                                                              : pixels << qMakePair(7u, 7u));
        };
        const QString untouched("9,9 7,7"); // refused
        QCOMPARE(selected({0.6, 0.6, 1.0, 0.5}, false), QString("0,2 0,3 1,2 1,3"));
        QCOMPARE(selected({0.4, 0.4, 1.2, 1.2}, true), QString("0,2 0,3 1,2 1,3"));
        QCOMPARE(selected({0.6, 0.6, 1.2, 1.2}, true), QString("1,2"));
        QCOMPARE(selected({1.75, 1.75, 0.2, 0.2}, true), QString("1,2")); // half a cell stays
        QCOMPARE(selected({1, 1, 1, 1}, false), QString("1,2 1,3 2,2 2,3"));
        QCOMPARE(selected({10, 0, 1, 1}, false), untouched);
        QCOMPARE(selected({4, 0, 1, 1}, false), untouched); // touches only
        QCOMPARE(selected({std::numeric_limits<double>::quiet_NaN(), 0, 1, 1}, false), untouched);
        QCOMPARE(selected({-9, -9, 99, 99}, true).count(','), 16);
    }

    void circlesAndEllipsesHoldCentres()
    {
        const MRasterDataSource grid(QString(), 20, 20, QRectF(-10, -10, 20, 20), 0);
        RasterPixels pixels;
        QVERIFY(grid.CircleQuery(QPointF(0.5, 0.5), 0.0, pixels));
        QCOMPARE(text(pixels), QStringLiteral("10,9"));
        QVERIFY(grid.CircleQuery(QPointF(0.5, 0.5), 1.0, pixels));
        // Centres that lie exactly on the left or upper side of the disc's box are out of its
        // window.
        QCOMPARE(text(pixels), QStringLiteral("10,9 10,10 11,9"));
        QVERIFY(grid.CircleQuery(QPointF(0.5, 0.5), 1.01, pixels));
        QCOMPARE(text(pixels), QStringLiteral("9,9 10,8 10,9 10,10 11,9"));
        QVERIFY(!grid.CircleQuery(QPointF(0.5, 0.5), -1.0, pixels));
        QVERIFY(!grid.CircleQuery(QPointF(50, 50), 3.0, pixels));
        // Against the definition, turned by a third of a circle.
        const QPointF center(1.3, -2.1);
        const double a = 6.2;
        const double b = 2.7;
        const double angle = 2.0943951023931953;
        RasterPixels expected;
        for (unsigned int row = 0; row < 20; ++row) {
            for (unsigned int column = 0; column < 20; ++column) {
                QPointF p;
                grid.GetPixelCenter(column, row, p);
                p -= center;
                const double along = (p.x() * std::cos(angle) + p.y() * std::sin(angle)) / a;
                const double across = (p.y() * std::cos(angle) - p.x() * std::sin(angle)) / b;
                if (along * along + across * across <= 1.0)
                    expected.append({column, row});
            }
        }
        QVERIFY(grid.EllipseQuery(center, a, b, angle, false, pixels));
        QCOMPARE(text(pixels), text(expected));
        QVERIFY(grid.EllipseQuery(center, a, b, angle, true, pixels));
        QCOMPARE(pixels.size(), expected.size());
        double last = 0.0;
        for (const auto &pixel : qAsConst(pixels)) {
            QPointF p;
            grid.GetPixelCenter(pixel.first, pixel.second, p);
            p -= center;
            QVERIFY(std::hypot(p.x(), p.y()) >= last - 1e-12);
            last = std::hypot(p.x(), p.y());
        }
        QVERIFY(!grid.EllipseQuery(center, 0.0, b, angle, false, pixels));
    }

    void displaysAreSized()
    {
        const auto size = [](unsigned int columns, unsigned int rows) {
            const MRasterDataSource grid(QString(), columns, rows, QRectF(0, 0, 8, 8), 0);
            unsigned int width = 0;
            unsigned int height = 0;
            grid.GetDisplayDims(width, height);
            // A walk over the display stays in the grid and ends where the rows do.
            double index = 0.0;
            double row = 0.0;
            double column = 0.0;
            for (unsigned int shown = 0; shown < width * height; ++shown) {
                if (!(index < double(columns) * rows))
                    return QSize(-1, int(shown));
                grid.IncDisplayIndex(index, row, column);
            }
            const bool isAtEnd = int(row) == int(rows) && int(column) == 0;
            return isAtEnd ? QSize(int(width), int(height)) : QSize(int(column), int(row));
        };
        QCOMPARE(size(3, 2), QSize(3, 2));
        QCOMPARE(size(4000, 1000), QSize(2000, 500));
        QCOMPARE(size(1000, 4000), QSize(500, 2000));
    }

    void sharedAreasAddUp()
    {
        TestModel model;
        const int grid = addGrid(10, 10, QRectF(0, 0, 10, 10));
        RasterPixels pixels;
        QVector<double> areas;
        QVERIFY(VORN_QueryRasterWithRect(grid, QRectF(2.5, 3.25, 4, 3), pixels, &areas));
        QCOMPARE(text(pixels).left(11), QStringLiteral("2,3 3,3 4,3"));
        QCOMPARE(std::accumulate(areas.begin(), areas.end(), 0.0), 12.0);
        // A place in the middle, where the mirror image of the rows is the place itself.
        const QList<QVector<QPointF>> bowTie{{{2, 4}, {8, 6}, {8, 4}, {2, 6}}};
        QVERIFY(VORN_QueryRasterWithPolygon(grid, bowTie, pixels, &areas));
        QVERIFY(std::fabs(std::accumulate(areas.begin(), areas.end(), 0.0) - 6.0) < 1e-12);
        // Each cell once, in order.
        QVERIFY(std::is_sorted(pixels.begin(), pixels.end(),
                               std::less_equal<RasterPixels::value_type>()));
    }

    void polygonsAgreeWithTheirObjects()
    {
        TestModel model;
        const int grid = addGrid(10, 10, QRectF(0, 0, 10, 10));
        const QVector<QPointF> ring{{1, 1}, {9, 2}, {7, 9}, {2, 7}};
        const int polygons = addPolygons({ring});
        RasterPixels byRings;
        RasterPixels byObject;
        QVERIFY(VORN_GetPixelCentersInPolygon(grid, {ring}, byRings));
        QVERIFY(VORN_GetPixelCentersInPolygon(grid, polygons, 0, 5, byObject));
        QCOMPARE(byRings, byObject);
        QCOMPARE(answers({byRings.contains({5, 4}), byRings.contains({0, 0})}), "yn");
        QVector<double> a;
        QVector<double> b;
        QVERIFY(VORN_QueryRasterWithPolygon(grid, {ring}, byRings, &a));
        QVERIFY(VORN_QueryRasterWithPolygon(grid, polygons, 0, 5, byObject, &b));
        QCOMPARE(byRings, byObject);
        QCOMPARE(a, b);
        const int points = addPoints(3, "points", TF_Integer, 0, 9);
        QCOMPARE(answers({VORN_GetPixelCentersInPolygon(grid, polygons, 1, 5, byObject),
                          VORN_GetPixelCentersInPolygon(grid, polygons, 0, 50, byObject),
                          VORN_GetPixelCentersInPolygon(grid, grid, 0, 5, byObject),
                          VORN_QueryRasterWithPolygon(polygons, polygons, 0, 5, byObject, &b),
                          VORN_QueryRasterWithPolygon(grid, points, 0, 5, byObject, &b)}),
                 "nnnnn");
    }

    void badPlacesGiveFalse()
    {
        TestModel model;
        const int grid = addGrid(3, 5, QRectF(0, 0, 5, 3));
        QCOMPARE(VORN_GetGeographyProperties(grid).rows, 3);
        QCOMPARE(VORN_GetGeographyProperties(grid).columns, 5);
        const double nan = std::numeric_limits<double>::quiet_NaN();
        const double huge = std::numeric_limits<double>::infinity();
        RasterPixels pixels{{9, 9}};
        QVector<double> areas{7};
        QCOMPARE(
            answers(
                {VORN_QueryRasterWithRect(grid, QRectF(50, 50, 1, 1), pixels, &areas),
                 VORN_QueryRasterWithRect(grid + 1, QRectF(0, 0, 1, 1), pixels, &areas),
                 VORN_QueryRasterWithRect(grid, QRectF(-huge, 0, huge, 1), pixels, &areas),
                 VORN_QueryRasterWithCircle(grid, QPointF(nan, 0), 1, pixels),
                 VORN_QueryRasterWithCircle(grid, QPointF(1, 1), huge, pixels),
                 VORN_QueryRasterWithEllipse(grid, QPointF(1, 1), nan, 1, 0, false, pixels),
                 VORN_QueryRasterWithPolygon(grid, {}, pixels, &areas),
                 VORN_QueryRasterWithPolygon(grid, {{{0, 0}, {1, 1}}}, pixels, &areas),
                 VORN_QueryRasterWithPolygon(grid, {{{nan, 0}, {1, 1}, {0, 1}}}, pixels, &areas)}),
            "nnnnnnnnn");
        QCOMPARE(text(pixels), QStringLiteral("9,9"));
        QCOMPARE(areas, QVector<double>{7});
        QCOMPARE(addGrid(3, 5, QRectF(0, 0, 0, 3)), -1);
        QCOMPARE(addGrid(3, 5, QRectF(0, 0, nan, 3)), -1);
        QCOMPARE(addGrid(0x80000000u, 1, QRectF(0, 0, 5, 3)), -1);
    }

    void windowsShowTheNearestCellOrTheMean_data()
    {
        QTest::addColumn<QRectF>("window");
        QTest::addColumn<QSize>("size");
        QTest::newRow("a pixel for a cell") << QRectF(10, 20, 14, 18) << QSize(7, 6);
        QTest::newRow("several cells a pixel") << QRectF(10, 20, 14, 18) << QSize(3, 2);
        QTest::newRow("several pixels a cell") << QRectF(13, 24, 3, 5) << QSize(9, 8);
        QTest::newRow("beyond all sides") << QRectF(0.3, 0.2, 41, 61) << QSize(11, 5);
        QTest::newRow("one pixel of all") << QRectF(-90, -90, 400, 400) << QSize(1, 1);
        QTest::newRow("outside") << QRectF(100, 100, 5, 5) << QSize(2, 2);
        QTest::newRow("far outside") << QRectF(1e300, -1e300, 1e299, 1e290) << QSize(2, 2);
    }
    void windowsShowTheNearestCellOrTheMean()
    {
        QFETCH(QRectF, window);
        QFETCH(QSize, size);
        TestModel model;
        const int rows = 6;
        const int columns = 7;
        const QRectF bounds(10, 20, 2.0 * columns, 3.0 * rows);
        const int id = VORN_NewRasterDataset(addGrid(rows, columns, bounds), "values",
                                             RasterDecimalType, 1, 32, QString());
        QVector<float> cells(rows * columns);
        for (int i = 0; i < cells.size(); ++i)
            cells[i] = i % 5 == 0 ? -1.0f : float(i * i % 17);
        cells[8] = std::numeric_limits<float>::quiet_NaN();
        QVERIFY(VORN_AddRasterValues(id, 0, Interval{0, 9, true, true}, cells, -1.0f, true, false));
        const auto cellAt = [&](int column, int row) {
            const bool isCell = column >= 0 && column < columns && row >= 0 && row < rows;
            const float value = isCell ? cells[row * columns + column] : -1.0f;
            return value == -1.0f ? std::numeric_limits<double>::quiet_NaN() : double(value);
        };
        QVector<double> nearest;
        QVector<double> means;
        QVERIFY(VORN_GetRasterWindow(id, 0, 5, window, size.width(), size.height(),
                                     RasterSampling::Nearest, nearest));
        QVERIFY(VORN_GetRasterWindow(id, 0, 5, window, size.width(), size.height(),
                                     RasterSampling::Mean, means));
        const double width = window.width() / size.width();
        const double height = window.height() / size.height();
        for (int i = 0; i < nearest.size(); ++i) {
            const InCase inPixel(i);
            const QRectF pixel(window.left() + i % size.width() * width,
                               window.bottom() - (i / size.width() + 1) * height, width, height);
            const auto column = std::floor((pixel.center().x() - bounds.left()) / 2.0);
            const auto row = std::floor((bounds.bottom() - pixel.center().y()) / 3.0);
            const bool isFar = std::fabs(column) > 1e6 || std::fabs(row) > 1e6;
            const double cell = isFar ? cellAt(-1, -1) : cellAt(int(column), int(row));
            QCOMPARE(nearest[i], cell);
            double sum = 0.0;
            int count = 0;
            int centres = 0;
            for (int c = 0; c < columns; ++c) {
                for (int r = 0; r < rows; ++r) {
                    const QPointF centre(bounds.left() + 2.0 * c + 1,
                                         bounds.bottom() - 3.0 * r - 1.5);
                    if (!pixel.contains(centre))
                        continue;
                    ++centres;
                    if (!std::isnan(cellAt(c, r))) {
                        sum += cellAt(c, r);
                        ++count;
                    }
                }
            }
            if (centres > 0)
                QCOMPARE(means[i], sum / count); // NaN when all of them are missing
            else if (size == QSize(9, 8))
                QCOMPARE(means[i], cell);
        }
        QVERIFY(!VORN_GetRasterWindow(id, 0, 50, window, 2, 2, RasterSampling::Mean, means));
        for (const QRectF &wrong : {QRectF(0, 0, 0, 5), QRectF(0, 0, -1, 5),
                                    QRectF(0, 0, std::numeric_limits<double>::infinity(), 1)})
            QVERIFY(!VORN_GetRasterWindow(id, 0, 5, wrong, 2, 2, RasterSampling::Nearest, means));
        QVERIFY(!VORN_GetRasterWindow(id, 0, 5, window, 1 << 16, 1 << 15, RasterSampling::Nearest,
                                      means));
        QCOMPARE(means.size(), nearest.size());
    }
};

QTEST_GUILESS_MAIN(TestRasterQueries)
#include "tst_RasterQueries.moc"
