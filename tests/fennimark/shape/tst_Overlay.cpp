// SPDX-License-Identifier: MIT
// Polygons as areas: simplicity, measures, overlay and random points.
#include <QtTest>
#include "fennimark/FMPoint.h"
#include "fennimark/shape/geometryCases.h"
#include "support/checks.h"

namespace {

using Rings = QList<QPolygonF>;
using Ring = QVector<QPointF>;

const Ring kBowTie{{0, 0}, {4, 4}, {4, 0}, {0, 4}};
const Ring kLine{{0, 0}, {4, 4}, {8, 8}};

double signedArea(const QPolygonF &ring)
{
    double area = 0.0;
    for (int i = 0; i < ring.size(); ++i) {
        const QPointF a = ring[i];
        const QPointF b = ring[(i + 1) % ring.size()];
        area += (a.x() * b.y() - a.y() * b.x()) / 2.0;
    }
    return area;
}

cases::Random generator(1);
int drawn = 0;
double deviate()
{
    ++drawn;
    return cases::real(generator, 0.0, 1.0);
}

} // namespace

class TestOverlay : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void ringsMakeTheirEvenOddSet_data()
    {
        QTest::addColumn<Rings>("rings");
        QTest::addColumn<bool>("simple");
        QTest::addColumn<double>("area");
        QTest::addColumn<int>("pieces");
        const QPolygonF big = cases::rectangle(0, 0, 10, 10);
        const QPolygonF middle = cases::rectangle(2, 2, 8, 8);
        const QPolygonF small = cases::rectangle(4, 4, 6, 6);
        const Ring diamond{{5, 0}, {10, 5}, {5, 10}, {0, 5}};
        const Ring tooth{{0, 5}, {3, 4}, {3, 6}};
        const Ring spike{{0, 0}, {4, 0}, {4, 4}, {4, 9}, {4, 4}, {0, 4}};
        QPolygonF closed = big;
        closed.append(closed.first());
        const auto row = [](const char *name, const Rings &rings, bool simple, double area,
                            int pieces) {
            QTest::newRow(name) << rings << simple << area << pieces;
        };
        row("closed as given", {closed}, true, 100, 1);
        row("hole, any direction", {big, middle}, true, 64, 1);
        row("hole first", {middle, big}, true, 64, 1);
        row("island in the hole", {small, big, middle}, true, 68, 2);
        row("two that touch", {big, cases::rectangle(10, 10, 11, 11)}, true, 101, 2);
        row("hole that touches at a vertex", {big, tooth}, true, 97, 1);
        row("hole that touches with every vertex", {big, diamond}, false, 50, 4);
        row("two that overlap", {middle, cases::rectangle(5, 5, 10, 10)}, false, 43, -1);
        row("two with a common edge", {big, cases::rectangle(10, 0, 12, 10)}, false, 120, 1);
        row("bow tie", {kBowTie}, false, 8, 2);
        row("no area", {kLine}, false, 0, 0);
        row("two vertices", {Ring{{0, 0}, {4, 4}}}, false, 0, 0);
        row("a ring without vertices beside", {big, QPolygonF()}, false, 100, 1);
        row("hole along the shell", {big, cases::rectangle(0, 0, 5, 10)}, false, 50, 1);
        row("the same ring twice", {big, big}, false, 0, 0);
        row("spike", {spike}, false, 16, 1);
    }
    void ringsMakeTheirEvenOddSet()
    {
        QFETCH(Rings, rings);
        QFETCH(bool, simple);
        QFETCH(double, area);
        QFETCH(int, pieces);
        const FMPolygon polygon(rings);
        QCOMPARE(polygon.IsSimple(), simple);
        QCOMPARE(polygon.GetArea(), area);
        QCOMPARE(polygon.GetVertices(), rings); // exactly as given
        QVector<const FMPolygon *> parts;
        QCOMPARE(polygon.Decompose(parts), area > 0.0);
        double sum = 0.0;
        for (const FMPolygon *part : qAsConst(parts)) {
            QCOMPARE(answers({part->IsSimple(), FMPolygon(part->GetVertices()).IsSimple()}), "yy");
            sum += part->GetArea();
        }
        QCOMPARE(sum, area);
        if (!simple && pieces >= 0)
            QCOMPARE(parts.size(), pieces);
        qDeleteAll(parts);
    }

    void centroidsAreThoseOfTheArea()
    {
        const QPointF far(5.0e5, 5.0e6);
        double x = 0.0;
        double y = 0.0;
        const auto shifted = [&far](QPolygonF ring) { return ring.translated(far); };
        const FMPolygon holed(
            Rings{shifted(cases::rectangle(0, 0, 10, 10)), shifted(cases::rectangle(0, 0, 5, 10))});
        QVERIFY(FMPolygon(shifted(cases::rectangle(0, 0, 3, 1))).GetCentroid(x, y));
        QCOMPARE(QPointF(x, y), far + QPointF(1.5, 0.5));
        QVERIFY(holed.GetCentroid(x, y)); // the hole shares an edge: repaired first
        QCOMPARE(QPointF(x, y), far + QPointF(7.5, 5.0));
        QVERIFY(FMPolygon(Rings{shifted(cases::rectangle(0, 0, 2, 2)),
                                shifted(cases::rectangle(10, 0, 12, 4))})
                    .GetCentroid(x, y));
        const QPointF expected(far + QPointF((1.0 * 4 + 11.0 * 8) / 12, (1.0 * 4 + 2.0 * 8) / 12));
        QCOMPARE(answers({std::abs(x - expected.x()) < 1e-8, std::abs(y - expected.y()) < 1e-8}),
                 "yy");
        QVERIFY(FMLine({{far, far + QPointF(4, 0), far + QPointF(4, 4)}}).GetCentroid(x, y));
        QCOMPARE(QPointF(x, y), far + QPointF(3, 1));
        x = 77.0;
        QCOMPARE(
            answers({FMLine({{far, far}}).GetCentroid(x, y), FMPolygon(kLine).GetCentroid(x, y)}),
            "nn");
        QCOMPARE(x, 77.0);
    }

    void resultsAreClosedRingsInCanonicalOrder()
    {
        const FMPolygon frame(Rings{cases::rectangle(2, 2, 8, 8), cases::rectangle(0, 0, 10, 10)});
        const FMPolygon band(cases::rectangle(-1, 4, 11, 5));
        const FMPolygon whole(cases::rectangle(-5, -5, 15, 15));
        QVector<const FMPolygon *> pair{&frame, &band};
        std::unique_ptr<FMPolygon> cut(FMPolygon::GetIntersection(pair));
        QVERIFY(cut);
        QCOMPARE(cut->GetVertices().size(), 2);
        QCOMPARE(cut->GetArea(), 4.0);
        pair = {&whole, &frame};
        cut.reset(FMPolygon::GetIntersection(pair));
        const Rings rings = cut->GetVertices();
        QCOMPARE(rings.size(), 2);
        QCOMPARE(signedArea(rings[0]), 100.0);
        QCOMPARE(signedArea(rings[1]), -36.0);
        for (const QPolygonF &ring : rings)
            QVERIFY(ring.isClosed());
        double area = -1.0;
        QVERIFY(band.OverlapsPolygon(frame, &area));
        QCOMPARE(area, 4.0);
        QVERIFY(frame.OverlapsPolygon(FMPolygon(cases::rectangle(10, 0, 12, 2)), &area));
        QCOMPARE(area, 0.0);
        QVERIFY(!frame.OverlapsPolygon(FMPolygon(cases::rectangle(3, 3, 7, 7)), &area));
        const FMPolygon bowTie(kBowTie);
        QVERIFY(bowTie.OverlapsPolygon(FMPolygon(cases::rectangle(-1, 0, 5, 2)), &area));
        QCOMPARE(area, 4.0);
        QVERIFY(FMPoint({0, 0}).OverlapsPolygon(frame, &area));
        QCOMPARE(area, 0.0);
    }

    void refusedInputsGiveNull()
    {
        const FMPolygon square(cases::rectangle(0, 0, 2, 2));
        const FMPolygon beside(cases::rectangle(2, 0, 4, 2));
        const FMPolygon away(cases::rectangle(5, 5, 6, 6));
        const FMPolygon bowTie(kBowTie);
        using List = QVector<const FMPolygon *>;
        for (List list : {List{}, List{nullptr}, List{&square, nullptr}, List{&bowTie},
                          List{&square, &bowTie}}) {
            QVERIFY(!FMPolygon::GetUnion(list));
            QVERIFY(!FMPolygon::GetIntersection(list));
        }
        for (List list : {List{&square, &beside}, List{&square, &square, &away}})
            QVERIFY(!FMPolygon::GetIntersection(list));
        List alone{&square};
        const std::unique_ptr<FMPolygon> copy(FMPolygon::GetUnion(alone));
        QCOMPARE(answers({copy != nullptr, copy.get() != &square}), "yy");
        QCOMPARE(copy->GetArea(), 4.0);
    }

    void unionsOfManyAreRight_data()
    {
        QTest::addColumn<double>("shift");
        QTest::addColumn<double>("width");
        QTest::addColumn<double>("degrees");
        QTest::newRow("in rows and columns") << 0.0 << 1.0 << 0.0;
        QTest::newRow("vertices inside edges") << 0.5 << 1.0 << 0.0;
        QTest::newRow("overlaps") << 0.0 << 1.25 << 0.0;
        QTest::newRow("turned") << 0.5 << 1.0 << 30.0;
    }
    /// @param shift  of every other row.
    void unionsOfManyAreRight()
    {
        QFETCH(double, shift);
        QFETCH(double, width);
        QFETCH(double, degrees);
        std::vector<std::unique_ptr<FMPolygon>> owners;
        QVector<const FMPolygon *> list;
        for (int row = 0; row < 6; ++row) {
            for (int column = 0; column < 6; ++column) {
                const double x = column + (row % 2) * shift;
                owners.push_back(std::make_unique<FMPolygon>(cases::turned(
                    cases::rectangle(x, row, x + width, row + 1.0), degrees, {0, 0})));
                list.append(owners.back().get());
            }
        }
        const std::unique_ptr<FMPolygon> all(FMPolygon::GetUnion(list));
        QCOMPARE(answers({all != nullptr, FMPolygon(all->GetVertices()).IsSimple()}), "yy");
        QVERIFY(std::abs(all->GetArea() - 6.0 * (5.0 + width)) < 1e-9);
    }

    void randomPointsAreUniform()
    {
        // A sliver, a hole and an island; the island has a tenth of the area.
        const FMPolygon polygon(Rings{
            QPolygonF(QVector<QPointF>{{0, 0}, {100, 100}, {100, 101.8}, {0, 1.8}}),
            cases::rectangle(200, 0, 205, 5), cases::rectangle(201, 1, 204, 3.0 - 1.0 / 3.0)});
        const double island = 25.0 - 3.0 * (2.0 - 1.0 / 3.0);
        QVERIFY(std::abs(polygon.GetArea() - 180.0 - island) < 1e-9);
        constexpr int kCount = 20000;
        drawn = 0;
        const QVector<QPointF> points = polygon.GetRandomPoints(deviate, kCount);
        QCOMPARE(points.size(), kCount);
        QVERIFY(drawn < 40 * kCount); // the sliver fills a hundredth of its box
        int low = 0;
        int onIsland = 0;
        for (const QPointF &point : points) {
            QVERIFY(polygon.ContainsPoint(point));
            onIsland += point.x() >= 200.0;
            low += point.x() < 50.0;
        }
        const auto near = [](int count, double share) {
            return std::abs(count - kCount * share)
                   < 5.0 * std::sqrt(kCount * share * (1.0 - share));
        };
        QVERIFY(near(onIsland, island / (180.0 + island)));
        QVERIFY(near(low, 90.0 / (180.0 + island)));

        QVERIFY(polygon.GetRandomPoints(nullptr, 5).isEmpty());
        QVERIFY(polygon.GetRandomPoints(deviate, -3).isEmpty());
        QVERIFY(FMPolygon(kLine).GetRandomPoints(deviate, 5).isEmpty());
    }
};

QTEST_GUILESS_MAIN(TestOverlay)
#include "tst_Overlay.moc"
