// SPDX-License-Identifier: MIT
// Pick buffers: which object each pixel shows, however the picture came about.
#include <QtTest>
#include <cmath>
#include <limits>
#include <random>
#include "core/workshop.h"
#include "desk/draw/flatGeometry.h"
#include "desk/draw/pickBuffer.h"

using namespace meridor;

namespace {

using Ring = QList<QPointF>;

/// The corners and the bent edges of a mesh of cells, so that neighbours share their borders.
class Mesh {
public:
    Mesh(unsigned seed, int cells, int bends) : mRandom(seed), mCells(cells), mBends(bends)
    {
        for (int i = 0; i < (cells + 1) * (cells + 1); ++i)
            mCorners.append(QPointF(i % (cells + 1) + jitter(0.3), i / (cells + 1) + jitter(0.3)));
        for (int i = 0; i < 2 * mCorners.size(); ++i)
            mEdges.append(Ring());
    }
    Ring cell(int column, int row)
    {
        Ring ring = edge(column, row, true);
        ring += edge(column + 1, row, false);
        ring += reversed(edge(column, row + 1, true));
        ring += reversed(edge(column, row, false));
        return ring;
    }
    double jitter(double size)
    {
        return std::uniform_real_distribution<double>(-size, size)(mRandom);
    }

private:
    static Ring reversed(Ring ring)
    {
        std::reverse(ring.begin(), ring.end());
        return ring;
    }
    /// From a corner to the next one, without drawing the bends twice.
    Ring edge(int column, int row, bool across)
    {
        const int corner = row * (mCells + 1) + column;
        Ring &ring = mEdges[2 * corner + across];
        if (ring.isEmpty()) {
            const QPointF from = mCorners[corner];
            const QPointF to = mCorners[corner + (across ? 1 : mCells + 1)];
            for (int i = 0; i <= mBends + 1; ++i)
                ring.append(
                    from + (to - from) * i / (mBends + 1)
                    + (i % (mBends + 1) == 0 ? QPointF() : QPointF(jitter(0.05), jitter(0.05))));
        }
        return ring;
    }

    std::mt19937 mRandom;
    int mCells;
    int mBends;
    QVector<QPointF> mCorners;
    QVector<Ring> mEdges;
};

void addChain(const QList<Ring> &rings)
{
    VORN_AddPolygonToChain(unsigned(VORN_CreateNewObjectChain()), rings, {0, 10, true, true});
}

/// A mesh in which some cells have a hole, some holes hold an object of their own, and some objects
/// have two cells that do not touch.
int addMesh(unsigned seed, int cells, int bends)
{
    Mesh mesh(seed, cells, bends);
    VORN_StartNewVectorGeography(QRectF(-1, -1, cells + 2, cells + 2), 0, 10, -1);
    for (int row = 0; row < cells; ++row) {
        for (int column = 0; column < cells; ++column) {
            if (row % 3 == 2 && column % 4 == 3) // the second part of the first object of its row
                continue;
            QList<Ring> rings{mesh.cell(column, row)};
            const QPointF middle(column + 0.5 + mesh.jitter(0.03), row + 0.5 + mesh.jitter(0.03));
            const Ring hole{middle + QPointF(-0.15, -0.14), middle + QPointF(0.15, -0.12),
                            middle + QPointF(0.02, 0.15)};
            if ((row + column) % 3 == 0)
                rings.append(hole);
            if (row % 3 == 2 && column == 0 && cells > 3)
                rings.append(mesh.cell(3, row));
            addChain(rings);
            if ((row + column) % 6 == 0)
                addChain({hole});
        }
    }
    return VORN_FinishVectorGeography("mesh", QString(), TF_Integer);
}

/// Lines of two parts, bent and crossing.
int addLines(unsigned seed)
{
    Mesh mesh(seed, 4, 6);
    VORN_StartNewVectorGeography(QRectF(-1, -1, 6, 6), 0, 10, -1);
    for (int i = 0; i < 4; ++i)
        VORN_AddLineToChain(unsigned(VORN_CreateNewObjectChain()),
                            {mesh.cell(i, i), mesh.cell(3 - i, i).mid(0, 9)}, {0, 10, true, true});
    return VORN_FinishVectorGeography("lines", QString(), TF_Integer);
}

std::vector<QPointF> randomPlaces(unsigned seed, int count)
{
    Mesh mesh(seed, 1, 0);
    std::vector<QPointF> places;
    for (int i = 0; i < count; ++i)
        places.emplace_back(mesh.jitter(3), mesh.jitter(2));
    return places;
}

/// Where two buffers differ first; empty when they are equal.
QString difference(const PickBuffer &a, const PickBuffer &b)
{
    if (a.width() != b.width() || a.height() != b.height())
        return QString("%1 x %2, %3 x %4")
            .arg(a.width())
            .arg(a.height())
            .arg(b.width())
            .arg(b.height());
    for (int y = 0; y < a.height(); ++y) {
        for (int x = 0; x < a.width(); ++x) {
            if (a.row(y)[x] != b.row(y)[x])
                return QString("(%1, %2): %3, %4").arg(x).arg(y).arg(a.row(y)[x]).arg(b.row(y)[x]);
        }
    }
    return QString();
}

int pixelsOf(const PickBuffer &buffer, int object)
{
    int count = 0;
    for (int y = 0; y < buffer.height(); ++y)
        for (int x = 0; x < buffer.width(); ++x)
            count += buffer.objectAt({x, y}) == object;
    return count;
}

} // namespace

class tst_DrawMaps : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void pixelsShowTheObjectAtTheirCentre_data()
    {
        QTest::addColumn<int>("cells");
        QTest::addColumn<int>("bends");
        QTest::addColumn<double>("zoom");
        QTest::newRow("few large") << 3 << 12 << 1.0;
        QTest::newRow("many small") << 24 << 1 << 1.0;
        QTest::newRow("rows of many crossings") << 5 << 40 << 1.0;
        QTest::newRow("larger than the window") << 4 << 8 << 9.0;
    }
    void pixelsShowTheObjectAtTheirCentre()
    {
        QFETCH(int, cells);
        QFETCH(int, bends);
        QFETCH(double, zoom);
        const Workshop workshop;
        const int id = addMesh(unsigned(cells), cells, bends);
        FlatGeometry geometry;
        QVERIFY(geometry.load(id, 5));
        ViewTransform view = ViewTransform::fit(geometry.bounds(), QSize(331, 270), 7, 1.1);
        view.zoom(QPointF(120.25, 99.5), zoom);
        QVERIFY(geometry.meanEdge(view) >= 0.5); // vertices are not snapped
        PickBuffer buffer;
        QVERIFY(buffer.draw(geometry, view, PickStyle()));
        int shown = 0;
        for (int y = 0; y < buffer.height(); ++y) {
            for (int x = 0; x < buffer.width(); ++x) {
                const QPointF centre = view.toMap(QPointF(x + 0.5, y + 0.5));
                QVector<unsigned int> located;
                VORN_CircleQuery(id, centre, 0.0, 5, located);
                const int object = buffer.objectAt({x, y});
                shown += object >= 0;
                const bool isRight =
                    object < 0 ? located.isEmpty() : located.contains(unsigned(object));
                QVERIFY2(isRight, qPrintable(QString("(%1, %2) shows %3, %4 objects are there")
                                                 .arg(x)
                                                 .arg(y)
                                                 .arg(object)
                                                 .arg(located.size())));
            }
        }
        QVERIFY2(shown > 20000, qPrintable(QString::number(shown)));
    }

    void movedPicturesAreThoseDrawnAnew_data()
    {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<int>("placeSize");
        QTest::addColumn<double>("lineWidth");
        QTest::newRow("areas") << "areas" << 1 << 1.0;
        QTest::newRow("thin lines") << "lines" << 1 << 1.0;
        QTest::newRow("wide lines") << "lines" << 1 << 7.0;
        QTest::newRow("pixels") << "places" << 1 << 1.0;
        QTest::newRow("discs") << "places" << 6 << 1.0;
    }
    void movedPicturesAreThoseDrawnAnew()
    {
        QFETCH(QString, kind);
        QFETCH(int, placeSize);
        QFETCH(double, lineWidth);
        const Workshop workshop;
        FlatGeometry geometry;
        if (kind == "places")
            geometry.setPlaces(randomPlaces(5, 3000));
        else
            QVERIFY(geometry.load(kind == "areas" ? addMesh(7, 9, 3) : addLines(7), 5));
        PickStyle style;
        style.placeSize = placeSize;
        style.lineWidth = lineWidth;
        ViewTransform view = ViewTransform::fit(geometry.bounds(), QSize(301, 210));
        view.zoom(QPointF(150, 100), 1.7);
        PickBuffer moved;
        PickBuffer anew(1); // without further threads
        moved.draw(geometry, view, style);
        const auto check = [&](const char *what) {
            moved.follow(geometry, view, style);
            anew.draw(geometry, view, style);
            QVERIFY2(difference(moved, anew).isEmpty(),
                     qPrintable(QString("%1 %2").arg(what, difference(moved, anew))));
        };
        for (const QPoint &step :
             {QPoint(64, 0), QPoint(-13, 7), QPoint(5, -60), QPoint(-250, 3), QPoint(1, 1),
              QPoint(0, 400), QPoint(190, -390), QPoint(0, 60)}) {
            view.pan(step.x(), step.y());
            check("after a pan");
        }
        view.resize(QSize(411, 190));
        check("in another window");
        view.zoom(QPointF(77.3, 31.9), 0.6);
        check("after a zoom");
        view.pan(1 << 26, 0); // the anchor moves
        view.pan(-(1 << 26), 5);
        check("far away and back");
        QVERIFY(pixelsOf(moved, -1) < moved.width() * moved.height()); // not all have left
        // Twice as many pixels: slices and bands make no difference either.
        PickBuffer sliced;
        sliced.begin(view.doubled(), style.doubled());
        while (!sliced.isComplete())
            sliced.drawSlice(geometry, 37);
        anew.draw(geometry, view.doubled(), style.doubled());
        QCOMPARE(difference(sliced, anew), QString());
        // A part of the objects has no pixel of the others.
        std::vector<unsigned char> flags(std::size_t(geometry.objectLimit()), 0);
        flags[1] = 1;
        style.only = flags.data();
        moved.follow(geometry, ViewTransform::fit(geometry.bounds(), QSize(90, 70)), style);
        QVERIFY(pixelsOf(moved, 1) > 0);
        QCOMPARE(pixelsOf(moved, 1) + pixelsOf(moved, -1), moved.width() * moved.height());
    }

    void drawingStopsBetweenSlices()
    {
        const Workshop workshop;
        FlatGeometry geometry;
        QVERIFY(geometry.load(addMesh(3, 4, 2), 5));
        const ViewTransform view = ViewTransform::fit(geometry.bounds(), QSize(300, 800));
        PickBuffer stopped;
        PickBuffer whole;
        int asked = 0;
        QVERIFY(!stopped.draw(geometry, view, PickStyle(), [&asked] { return ++asked > 4; }));
        QVERIFY(!stopped.isComplete());
        whole.draw(geometry, view, PickStyle());
        QVERIFY(pixelsOf(stopped, 0) < pixelsOf(whole, 0));
        QCOMPARE(stopped.objectAt({150, 799}), -1);
        // What is left undone is not moved along.
        QVERIFY(stopped.follow(geometry, view, PickStyle()));
        QCOMPARE(difference(stopped, whole), QString());
    }

    // With vertices on half pixels neighbours must still share every pixel of their border.
    void snappedNeighboursLeaveNoGaps()
    {
        const Workshop workshop;
        VORN_StartNewVectorGeography(QRectF(-1, -1, 8, 8), 0, 10, -1);
        Mesh mesh(11, 6, 200);
        for (int i = 0; i < 36; ++i)
            addChain({mesh.cell(i % 6, i / 6)});
        FlatGeometry geometry;
        QVERIFY(geometry.load(VORN_FinishVectorGeography("m", QString(), TF_Integer), 5));
        const ViewTransform view = ViewTransform::fit(QRectF(0, 0, 6, 6), QSize(180, 180));
        QVERIFY(geometry.meanEdge(view) < 0.5);
        PickBuffer buffer;
        buffer.draw(geometry, view, PickStyle());
        for (int y = 20; y < 160; ++y)
            for (int x = 20; x < 160; ++x)
                QVERIFY2(buffer.objectAt({x, y}) >= 0,
                         qPrintable(QString("(%1, %2)").arg(x).arg(y)));
        ViewTransform moved = view;
        moved.pan(9, -31);
        PickBuffer anew;
        buffer.follow(geometry, moved, PickStyle());
        anew.draw(geometry, moved, PickStyle());
        QCOMPARE(difference(buffer, anew), QString());
    }

    void smallAndThinObjectsKeepAPixel()
    {
        const Workshop workshop;
        VORN_StartNewVectorGeography(QRectF(0, 0, 60, 60), 0, 10, -1);
        for (int i = 0; i < 50; ++i) { // between the centres, wider and higher in turns
            const QSizeF size = i % 3 == 0 ? QSizeF(9.5, 0.4) : QSizeF(0.4, i % 3 == 1 ? 9.5 : 0.3);
            const QRectF box(QPointF(i % 7 * 8 + 0.55, i / 7 * 7 + 1.55), size);
            addChain({{box.topLeft(), box.topRight(), box.bottomRight(), box.bottomLeft()}});
        }
        FlatGeometry geometry;
        QVERIFY(geometry.load(VORN_FinishVectorGeography("thin", QString(), TF_Integer), 5));
        const ViewTransform view = ViewTransform::fit(QRectF(0, 0, 60, 60), QSize(60, 60));
        PickBuffer buffer;
        buffer.draw(geometry, view, PickStyle());
        PickBuffer strips(1);
        strips.begin(view, PickStyle());
        while (!strips.isComplete())
            strips.drawSlice(geometry, 1);
        QCOMPARE(difference(buffer, strips), QString());
        for (int i = 0; i < 50; ++i)
            QVERIFY2(pixelsOf(buffer, i) == 1, qPrintable(QString("object %1").arg(i)));
    }

    void extremeViewsAreDrawn()
    {
        const Workshop workshop;
        const double huge = std::numeric_limits<double>::max();
        const int id = addMesh(2, 1, 0);
        FlatGeometry areas;
        QVERIFY(areas.load(id, 5));
        ViewTransform view = ViewTransform::fit(areas.bounds(), QSize(100, 80));
        PickBuffer buffer;
        view.zoom(QPointF(5, 5), 1e-300);
        buffer.draw(areas, view, PickStyle()); // smaller than a pixel, but not lost
        QCOMPARE(pixelsOf(buffer, 0) + pixelsOf(buffer, 1), 1);
        view = ViewTransform::fit(areas.bounds(), QSize(100, 80));
        view.zoom(view.toPixel(QPointF(0.1, 0.5)), 1e300);
        buffer.draw(areas, view, PickStyle());
        QCOMPARE(pixelsOf(buffer, 0), 8000);
        view.zoom(QPointF(std::numeric_limits<double>::quiet_NaN(), 0), 2.0);
        QVERIFY(std::isfinite(view.xScale()) && std::isfinite(view.anchor().x()));
        for (const QSize &none : {QSize(), QSize(0, 50), QSize(-3, 9), QSize(50, 0)}) {
            QVERIFY(buffer.draw(areas, ViewTransform::fit(areas.bounds(), none), PickStyle()));
            QCOMPARE(buffer.objectAt({0, 0}), -1);
        }
        FlatGeometry lines;
        QVERIFY(lines.load(addLines(2), 5));
        FlatGeometry places;
        const double nan = std::numeric_limits<double>::quiet_NaN();
        places.setPlaces({{nan, 1}, {3, 4}, {1, huge * 2}, {huge, -huge}});
        QCOMPARE(places.count(), std::size_t(2)); // the finite ones
        for (const FlatGeometry *geometry : {&areas, &lines, &places}) {
            for (const QRectF &map :
                 {QRectF(), QRectF(3, 4, 0, 0), QRectF(-huge, -huge, huge, huge),
                  QRectF(0, nan, 1, 1), QRectF(1e300, 1e300, 1e290, 1),
                  QRectF(0.5, 0.5, 1e-300, 1e-300)}) {
                view = ViewTransform::fit(map, QSize(40, 30), 50);
                for (const double factor : {1.0, 1e12, 1e-20}) {
                    view.zoom(QPointF(13.7, 2.2), factor);
                    buffer.draw(*geometry, view, PickStyle{255, 255.0, nullptr});
                    buffer.draw(*geometry, view.doubled(), PickStyle{1, 0.0, nullptr});
                }
            }
        }
        buffer.draw(FlatGeometry(), view, PickStyle());
        QCOMPARE(buffer.objectLimit(), 0);
        QVERIFY(!areas.load(99, 5));
        QVERIFY(areas.load(id, 50)); // nothing exists then
        QCOMPARE(areas.count(), std::size_t(0));
        QVERIFY(areas.bounds().isNull());
    }

    void discsAndLinesHaveTheirWidth()
    {
        FlatGeometry places;
        places.setPlaces({{10.3, -10.6}});
        const ViewTransform unit = ViewTransform::fit(QRectF(0, -21, 21, 21), QSize(21, 21));
        PickBuffer buffer;
        for (const auto &expected : {qMakePair(1, 1), {2, 4}, {3, 9}, {4, 12}, {5, 21}, {7, 37}}) {
            buffer.draw(places, unit, PickStyle{expected.first, 1.0, nullptr});
            QCOMPARE(pixelsOf(buffer, 0), expected.second);
            QPointF sum;
            for (int y = 0; y < 21; ++y)
                for (int x = 0; x < 21; ++x)
                    sum += buffer.objectAt({x, y}) == 0 ? QPointF(x + 0.5, y + 0.5) : QPointF();
            const QPointF offset = sum / expected.second - QPointF(10.3, 10.6);
            QVERIFY2(
                std::max(std::fabs(offset.x()), std::fabs(offset.y())) <= 0.5,
                qPrintable(
                    QString("%1: %2, %3").arg(expected.first).arg(offset.x()).arg(offset.y())));
        }
        QCOMPARE(buffer.objectNear({2, 10}, 4), -1);
        QCOMPARE(buffer.objectNear({2, 10}, 5), 0);

        const Workshop workshop;
        VORN_StartNewVectorGeography(QRectF(0, 0, 40, 40), 0, 10, -1);
        const QPointF from(4.3, 7.1);
        const QPointF to(33.2, 24.9);
        VORN_AddLineToChain(unsigned(VORN_CreateNewObjectChain()), {{from, to}},
                            {0, 10, true, true});
        FlatGeometry line;
        QVERIFY(line.load(VORN_FinishVectorGeography("l", QString(), TF_Integer), 5));
        const ViewTransform view = ViewTransform::fit(QRectF(0, 0, 40, 40), QSize(40, 40));
        for (const double width : {1.0, 4.0}) {
            buffer.draw(line, view, PickStyle{1, width, nullptr});
            const QPointF along = (to - from) / std::hypot(to.x() - from.x(), to.y() - from.y());
            for (int y = 0; y < 40; ++y) {
                for (int x = 0; x < 40; ++x) {
                    const QPointF offset = view.toMap(QPointF(x + 0.5, y + 0.5)) - from;
                    const double past = QPointF::dotProduct(offset, along);
                    const double away = std::fabs(offset.x() * along.y() - offset.y() * along.x());
                    const QString where = QString("(%1, %2) %3 away").arg(x).arg(y).arg(away);
                    if (away < 0.5 * width - 0.15 && past > width && past < 33.9 - width)
                        QVERIFY2(buffer.objectAt({x, y}) == 0 || width < 2, qPrintable(where));
                    if (away > 0.5 * width + 0.5 || past < -width || past > 33.95 + width)
                        QVERIFY2(buffer.objectAt({x, y}) == -1, qPrintable(where));
                }
            }
            QVERIFY2(pixelsOf(buffer, 0) >= 29, qPrintable(QString::number(pixelsOf(buffer, 0))));
        }
    }

    void viewsKeepThePlaceThatIsZoomedAbout()
    {
        ViewTransform view = ViewTransform::fitAxes(QRectF(10, -5, 4, 900), QSize(200, 300), 10);
        QCOMPARE(view.toPixel(QPointF(10, 895)), QPointF(10, 10));
        QCOMPARE(view.toPixel(QPointF(14, -5)), QPointF(190, 290));
        for (const double factor : {2.0, 0.3, 7.7}) {
            const QPointF pixel(31.25, 200.75);
            const QPointF place = view.toMap(pixel);
            view.zoom(pixel, factor);
            QCOMPARE(view.toMap(pixel), place);
            QCOMPARE(view.toPixel(place), pixel);
        }
        const QPointF place = view.toMap(QPointF(50, 60));
        view.pan(7, -9);
        QCOMPARE(view.toPixel(place), QPointF(57, 51));
        QCOMPARE(view.doubled().toPixel(place), QPointF(114, 102));
        QCOMPARE(view.visible().bottomLeft(), view.toMap(QPointF(0, 0))); // the largest y
    }
};

QTEST_GUILESS_MAIN(tst_DrawMaps)
#include "tst_DrawMaps.moc"
