// SPDX-License-Identifier: MIT
// The pass from object numbers to colours, and the colours of grids.
#include <QtTest>
#include <cmath>
#include <limits>
#include "core/render/classes.h"
#include "core/workshop.h"
#include "datainterface/MRasterAttributes.h"
#include "datainterface/RasterAPI.h"
#include "desk/draw/colorPass.h"
#include "desk/draw/colorTable.h"
#include "desk/draw/discs.h"
#include "desk/draw/flatGeometry.h"
#include "desk/draw/gridColors.h"
#include "desk/draw/gridImage.h"
#include "desk/draw/pickBuffer.h"
#include "desk/draw/pickSpans.h"
#include "support/checks.h"

using namespace meridor;

namespace {

constexpr QRgb kRed = 0xffff0000U;
constexpr QRgb kBlue = 0xff0000ffU;
constexpr QRgb kGround = 0xffffffffU;
constexpr QRgb kOrange = 0xffff8800U;
constexpr QRgb kGrey = 0xffe0e0e0U;
constexpr QRgb kLine = 0xff202020U;

ColorRule rule()
{
    ColorRule rule;
    rule.classes = {kRed, kBlue};
    rule.missing = kGrey;
    rule.selected = kOrange;
    return rule;
}

QImage canvas(int width, int height, QRgb color = kGround)
{
    QImage image(width, height, QImage::Format_RGB32);
    image.fill(color);
    return image;
}

/// Places at pixels of a view of 8 x 4: number i is at (i, 1).
FlatGeometry rowOfPlaces(int count)
{
    std::vector<QPointF> places;
    for (int i = 0; i < count; ++i)
        places.emplace_back(i + 0.5, 2.5);
    FlatGeometry geometry;
    geometry.setPlaces(places);
    return geometry;
}
const ViewTransform kView = ViewTransform::fit(QRectF(0, 0, 8, 4), QSize(8, 4));

QStringList rowOf(const QImage &image, int y)
{
    QStringList colors;
    for (int x = 0; x < image.width(); ++x)
        colors.append(QString::number(image.pixel(x, y), 16));
    return colors;
}
QStringList texts(const QVector<QRgb> &colors)
{
    QStringList all;
    for (const QRgb color : colors)
        all.append(QString::number(color, 16));
    return all;
}

} // namespace

class tst_DrawColors : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void tablesFollowClassesAndStates()
    {
        const int classes[] = {0, 1, -1, 7, 1};
        const unsigned char shown[] = {1, 1, 1, 1, 0};
        const unsigned char selected[] = {0, 3, 0, 0, 1};
        ColorTable table;
        const auto told = [&table] {
            return texts(QVector<QRgb>(table.data(), table.data() + table.size()));
        };
        const QRgb hatched = (unsigned(ColorTable::Hatched) << 24) | (kGrey & 0xffffffU);
        table.build(5, rule(), classes, nullptr, nullptr);
        QCOMPARE(told(), texts({0, kRed, kBlue, hatched, hatched, kBlue}));
        table.build(5, rule(), classes, shown, selected);
        QCOMPARE(told(), texts({0, kRed, kOrange, hatched, hatched, 0}));
        ColorRule fading = rule();
        fading.fadeOthers = true;
        fading.ground = kRed;
        table.build(2, fading, classes, nullptr, selected);
        QCOMPARE(told(), texts({0, kRed, kBlue}));
        fading.ground = kGround;
        table.build(2, fading, classes, nullptr, selected);
        QCOMPARE(told(), texts({0, qRgb(255, 191, 191), kBlue}));
        const unsigned char none[] = {0, 0};
        table.build(2, fading, classes, nullptr, none);
        QCOMPARE(told(), texts({0, kRed, kBlue}));
        table.build(2, rule(), nullptr, nullptr, nullptr);
        QCOMPARE(told(), texts({0, rule().plain, rule().plain}));
        QVERIFY(!table.isPlain());
        ColorRule lowest = rule();
        lowest.fillGround = true;
        table.build(2, lowest, classes, shown + 3, nullptr);
        QCOMPARE(told(), texts({0xfeffffffU, kRed, 0xfeffffffU}));
        QVERIFY(table.isPlain());
        table.build(-1, rule(), nullptr, nullptr, nullptr);
        QCOMPARE(table.size(), std::size_t(1));
    }

    void layersLeaveVisibleWhatTheyDoNotCover()
    {
        const FlatGeometry geometry = rowOfPlaces(4);
        PickBuffer buffer;
        buffer.draw(geometry, kView, PickStyle{1, 1, nullptr});
        const int classes[] = {0, 1, -1, 1};
        const unsigned char shown[] = {1, 1, 1, 0};
        ColorTable table;
        table.build(4, rule(), classes, shown, nullptr);
        QImage image = canvas(8, 4, kBlue);
        PassStyle style;
        style.outline = kLine;
        QVERIFY(colorPass(buffer, table, style, image));
        QCOMPARE(rowOf(image, 1), texts({kRed, kBlue, kGrey, kBlue, kBlue, kBlue, kBlue, kBlue}));
        QCOMPARE(rowOf(image, 0), texts(QVector<QRgb>(8, kBlue)));
        // Outlines: where a number differs from the next one or the one below. An object that is
        // not shown has none.
        style.outlines = true;
        image = canvas(8, 4);
        QVERIFY(colorPass(buffer, table, style, image));
        QCOMPARE(rowOf(image, 1),
                 texts({kLine, kLine, kLine, kGround, kGround, kGround, kGround, kGround}));
        QCOMPARE(rowOf(image, 0),
                 texts({kLine, kLine, kLine, kGround, kGround, kGround, kGround, kGround}));
        // The ground of the lowest layer replaces the image, but is no object.
        ColorRule lowest = rule();
        lowest.fillGround = true;
        for (const bool hatched : {false, true}) {
            table.build(4, lowest, hatched ? classes : nullptr, shown, nullptr);
            QCOMPARE(table.isPlain(), !hatched);
            QImage other = canvas(8, 4, kBlue);
            QVERIFY(colorPass(buffer, table, style, other));
            QCOMPARE(rowOf(other, 1), rowOf(image, 1));
            QCOMPARE(rowOf(other, 2), rowOf(image, 2));
        }
        // Wrong images and short tables change nothing.
        for (QImage wrong : {QImage(8, 5, QImage::Format_RGB32), QImage(3, 2, QImage::Format_RGB32),
                             QImage(8, 4, QImage::Format_ARGB32), QImage()})
            QVERIFY(!colorPass(buffer, table, style, wrong));
        table.build(3, rule(), classes, nullptr, nullptr);
        QVERIFY(!colorPass(buffer, table, style, image));
    }

    void strokesCrossObjectsWithoutAClass()
    {
        FlatGeometry geometry;
        geometry.setPlaces({{4, 2}});
        PickBuffer buffer;
        buffer.draw(geometry, kView, PickStyle{60, 1, nullptr}); // all pixels
        const int classes[] = {-1};
        ColorTable table;
        table.build(1, rule(), classes, nullptr, nullptr);
        PassStyle style;
        style.hatch = kLine;
        QImage image = canvas(8, 4);
        QVERIFY(colorPass(buffer, table, style, image));
        for (int y = 0; y < 4; ++y)
            for (int x = 0; x < 8; ++x)
                QCOMPARE(image.pixel(x, y), (x + y) % 6 == 0 ? kLine : kGrey);
        buffer.draw(geometry, kView.doubled(), PickStyle{120, 1, nullptr});
        QImage reduced = canvas(8, 4);
        QVERIFY(colorPass(buffer, table, style, reduced));
        QCOMPARE(reduced, image);
    }

    // Spans are found at the second pass over a buffer and used from then on, until it changes.
    void keptSpansGiveTheSamePicture()
    {
        std::vector<QPointF> places;
        for (int i = 0; i < 40; ++i)
            places.emplace_back(i * 37 % 101, i * 53 % 97);
        FlatGeometry geometry;
        geometry.setPlaces(places);
        ViewTransform view = ViewTransform::fit(geometry.bounds(), QSize(120, 90));
        QVector<int> classes;
        std::vector<unsigned char> hidden(40, 1);
        for (int i = 0; i < 40; ++i)
            classes.append(i % 4 - 1); // -1 is hatched
        hidden[7] = hidden[20] = 0;
        for (const bool reduced : {false, true}) {
            PickBuffer buffer;
            PickSpans spans;
            for (const int shift : {0, 0, 3}) { // drawn, drawn again, moved
                view.pan(shift, -shift);
                buffer.follow(geometry, reduced ? view.doubled() : view,
                              PickStyle{reduced ? 60 : 30, 1, nullptr});
                for (int kind = 0; kind < 16; ++kind) {
                    const InCase inCase(kind);
                    ColorRule four = rule();
                    four.classes.append(kOrange);
                    four.fillGround = kind & 1;
                    ColorTable table;
                    table.build(40, four, kind & 2 ? classes.constData() : nullptr,
                                kind & 4 ? hidden.data() : nullptr, nullptr);
                    PassStyle style;
                    style.outlines = kind & 8;
                    QImage expected = canvas(120, 90, kBlue);
                    QVERIFY(colorPass(buffer, table, style, expected, 1));
                    for (int pass = 0; pass < 3; ++pass) {
                        QImage image = canvas(120, 90, kBlue);
                        QVERIFY(colorPass(buffer, table, style, image, 1 + pass % 2, &spans));
                        QCOMPARE(image, expected);
                    }
                    QVERIFY(spans.follow(buffer, reduced, style.outlines, 1));
                }
            }
        }
        // Objects of a pixel have no spans.
        PickBuffer small;
        PickSpans none;
        small.draw(rowOfPlaces(8), kView, PickStyle{1, 1, nullptr});
        for (int pass = 0; pass < 3; ++pass)
            QVERIFY(!none.follow(small, false, false, 1));
    }

    // The reduced pass against the definition of it, on many small discs and with any threads.
    void reducedPixelsAreMeansOfFour()
    {
        std::vector<QPointF> places;
        for (int i = 0; i < 400; ++i)
            places.emplace_back(i * 37 % 101, i * 53 % 97);
        FlatGeometry geometry;
        geometry.setPlaces(places);
        const ViewTransform view = ViewTransform::fit(geometry.bounds(), QSize(120, 90));
        PickBuffer buffer;
        buffer.draw(geometry, view.doubled(), PickStyle{9, 1, nullptr});
        QVector<int> classes;
        for (int i = 0; i < 400; ++i)
            classes.append(i % 3);
        ColorTable table;
        ColorRule three = rule();
        three.classes.append(kOrange);
        table.build(400, three, classes.constData(), nullptr, nullptr);
        for (const bool outlines : {false, true}) {
            PassStyle style;
            style.outlines = outlines;
            style.outline = kLine;
            QImage large = canvas(240, 180);
            QVERIFY(colorPass(buffer, table, style, large));
            for (const int threads : {1, 3}) {
                QImage image = canvas(120, 90);
                QVERIFY(colorPass(buffer, table, style, image, threads));
                for (int y = 0; y < 90; ++y) {
                    for (int x = 0; x < 120; ++x) {
                        int red = 2;
                        int green = 2;
                        int blue = 2;
                        for (int i = 0; i < 4; ++i) {
                            const QRgb part = large.pixel(2 * x + i % 2, 2 * y + i / 2);
                            red += qRed(part);
                            green += qGreen(part);
                            blue += qBlue(part);
                        }
                        QCOMPARE(image.pixel(x, y), qRgb(red / 4, green / 4, blue / 4));
                    }
                }
            }
        }
    }

    void discsAreThoseOfAPickBuffer_data()
    {
        QTest::addColumn<bool>("smooth");
        QTest::addColumn<int>("diameter");
        for (const int diameter : {1, 2, 5, 9, 30})
            for (const bool smooth : {false, true})
                QTest::addRow("%d%s", diameter, smooth ? ", smooth" : "") << smooth << diameter;
    }
    // Discs that do not overlap, some of them cut off by the window or by the border of two bands.
    void discsAreThoseOfAPickBuffer()
    {
        QFETCH(bool, smooth);
        QFETCH(int, diameter);
        const double step = diameter + 3.37; // so that places lie in every quarter of a pixel
        std::vector<QPointF> places{{std::nan(""), 2}, {2, INFINITY}, {1e300, -1e300}};
        std::vector<QRgb> colors(places.size(), kOrange);
        for (double y = -step; y < 90 + 2 * step; y += step) {
            for (double x = -step; x < 120 + 2 * step; x += step) {
                places.emplace_back(x, y);
                colors.push_back(colors.size() % 2 == 0 ? kOrange : kLine);
            }
        }
        ViewTransform view = ViewTransform::fitAxes(QRectF(0, 0, 120, 90), QSize(120, 90));
        view.pan(-7, 5);
        FlatGeometry geometry;
        geometry.setPlaces(places);
        PickStyle style;
        style.placeSize = diameter;
        PickBuffer buffer;
        buffer.draw(geometry, smooth ? view.doubled() : view, smooth ? style.doubled() : style);
        ColorRule two = rule();
        two.classes = {kOrange, kLine};
        QVector<int> classes;
        for (const QRgb color : colors)
            classes.append(color == kOrange ? 0 : 1);
        ColorTable table;
        table.build(classes.size(), two, classes.constData(), nullptr, nullptr);
        QImage expected = canvas(120, 90);
        QVERIFY(colorPass(buffer, table, PassStyle(), expected));
        for (const int threads : {1, 2, 5}) {
            QImage image = canvas(120, 90);
            paintDiscs(places, view, diameter, smooth, colors, image, threads);
            QCOMPARE(image, expected);
        }
        // The last one is on top, and one colour is that of all.
        const QPointF middle = view.toMap(QPointF(60, 45));
        QImage image = canvas(120, 90);
        paintDiscs({middle, middle}, view, std::max(diameter, 3), smooth, {kLine, kOrange}, image);
        QCOMPARE(image.pixel(60, 45), kOrange);
        paintDiscs({middle, middle}, view, std::max(diameter, 3), smooth, {kLine}, image);
        QCOMPARE(image.pixel(60, 45), kLine);
    }

    void gridClassesAreExact_data()
    {
        QTest::addColumn<QVector<double>>("breaks");
        QTest::newRow("plain") << QVector<double>{0, 1, 2.5, 10};
        QTest::newRow("narrow beside wide") << QVector<double>{-1e9, 0, 1e-9, 2e-9, 1e9};
        QTest::newRow("equal limits") << QVector<double>{1, 3, 3, 4};
        QTest::newRow("one value") << QVector<double>{5, 5};
        QTest::newRow("all there is") << QVector<double>{-std::numeric_limits<double>::max(), 0,
                                                         std::numeric_limits<double>::max()};
    }
    void gridClassesAreExact()
    {
        QFETCH(QVector<double>, breaks);
        QVector<QRgb> palette;
        for (int i = 1; i < breaks.size(); ++i)
            palette.append(qRgb(i, i, i));
        const GridColors colors = GridColors::ofClasses(breaks, palette, kOrange);
        const double infinite = std::numeric_limits<double>::infinity();
        QVector<double> values{-infinite, infinite, std::nan(""), -0.0};
        for (const double limit : breaks)
            values << limit << std::nextafter(limit, infinite) << std::nextafter(limit, -infinite);
        for (int i = 0; i <= 5000; ++i)
            values.append(breaks.first() * (1 - i / 5000.0) + breaks.last() * (i / 5000.0));
        for (const double value : values) {
            const int number = classOf(value, breaks);
            QVERIFY2(colors.of(value) == (number < 0 ? kOrange : palette[number]),
                     qPrintable(QString::number(value, 'g', 17)));
        }
    }

    void scalesAndMapsOfColors()
    {
        const GridColors scale = GridColors::ofRange(10, 20, {kRed, kBlue}, kOrange);
        QCOMPARE(texts({scale.of(9), scale.of(10.001), scale.of(20), scale.of(99),
                        scale.of(std::nan(""))}),
                 texts({kRed, kRed, kBlue, kBlue, kOrange}));
        QVERIFY(std::abs(qRed(scale.of(15)) - 127) <= 1);
        const GridColors flat = GridColors::ofRange(3, 3, {kRed, kBlue}, kOrange);
        QCOMPARE(flat.of(std::nan("")), kOrange);
        const GridColors map = GridColors::ofMap({0x00ff0000U, 0xff0000ffU}, kOrange);
        QCOMPARE(texts({map.of(0), map.of(1), map.of(2), map.of(-1), map.of(5000)}),
                 texts({kRed, kBlue, kOrange, kOrange, kOrange}));
    }

    void gridsAreShownWithTheirSelection()
    {
        const Workshop workshop;
        const Interval when{0, 10, true, true};
        const int geography = VORN_CreateNewRasterGeography("g", 3, 5, QRectF(0, 0, 5, 3), when,
                                                            TF_Integer, QString(), QString());
        const int id = VORN_NewRasterDataset(geography, "v", RasterDecimalType, 1, 64, QString());
        QVector<double> cells;
        for (int i = 0; i < 15; ++i)
            cells.append(i == 7 ? -1 : i % 2);
        QVERIFY(VORN_AddRasterValues(id, 0, when, cells, -1.0, true, false));
        // A pixel for a cell, one column beyond the grid on each side and a row above and below.
        const ViewTransform view = ViewTransform::fit(QRectF(-1, -1, 7, 5), QSize(7, 5));
        GridImage grid;
        QVERIFY(grid.load(id, 0, 5, view, RasterSampling::Nearest));
        const GridColors colors = GridColors::ofClasses({-0.5, 0.5, 1.5}, {kRed, kBlue}, kGrey);
        QImage image = canvas(7, 5);
        QVERIFY(grid.paint(colors, image));
        MRasterAttributes attributes(5, 3);
        attributes.AddAttribute();
        attributes.AddAttribute();
        attributes.SetAttribute(1, 9, true);
        QVERIFY(grid.paintSelected(attributes, 1, kOrange, image));
        QCOMPARE(rowOf(image, 0), texts(QVector<QRgb>(7, kGround)));
        QCOMPARE(rowOf(image, 1), texts({kGround, kRed, kBlue, kRed, kBlue, kRed, kGround}));
        QCOMPARE(rowOf(image, 2), texts({kGround, kBlue, kRed, kGrey, kRed, kOrange, kGround}));
        QCOMPARE(grid.cellAt(5, 2), 9);
        QCOMPARE(grid.cellAt(6, 2), -1);
        QCOMPARE(grid.cellAt(-1, 2), -1);
        QCOMPARE(grid.valueAt(5, 2), 1.0);
        MRasterAttributes other(9, 3);
        other.AddAttribute();
        QImage wrong = canvas(7, 6);
        QVERIFY(!grid.paint(colors, wrong));
        QVERIFY(!grid.paintSelected(other, 0, kOrange, image));
        QVERIFY(!grid.load(id, 0, 50, view, RasterSampling::Mean));
        QVERIFY(!grid.load(id, 0, 5, ViewTransform::fit(QRectF(), QSize()), RasterSampling::Mean));
        QVERIFY(grid.view() == view);
    }
};

QTEST_GUILESS_MAIN(tst_DrawColors)
#include "tst_DrawColors.moc"
