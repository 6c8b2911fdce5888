// SPDX-License-Identifier: MIT
// Predicates against exact integer arithmetic and against GEOS, on data with many touches, overlaps
// and collinear edges.
#include <QtTest>
#include "base/orientation.h"
#include "fennimark/FMPoint.h"
#include "fennimark/shape/geometryCases.h"
#include "support/checks.h"

namespace {

using cases::Random;
__extension__ using Wide = __int128;

int wholeOrientation(const QPointF &a, const QPointF &b, const QPointF &c, double unit)
{
    const auto number = [unit](double value) {
        return static_cast<Wide>(static_cast<qint64>(value / unit));
    };
    const Wide left = (number(a.x()) - number(c.x())) * (number(b.y()) - number(c.y()));
    const Wide right = (number(a.y()) - number(c.y())) * (number(b.x()) - number(c.x()));
    return (left > right) - (left < right);
}

/// Even-odd by a plain ray, on whole coordinates, boundary included.
bool plainlyContains(const QList<QPolygonF> &rings, const QPointF &p)
{
    bool inside = false;
    for (const QPolygonF &ring : rings) {
        for (int i = 0; i < ring.size(); ++i) {
            const QPointF a = ring[i];
            const QPointF b = ring[(i + 1) % ring.size()];
            const int side = wholeOrientation(a, b, p, 1.0);
            if (side == 0 && QRectF(a, b).normalized().adjusted(-0.1, -0.1, 0.1, 0.1).contains(p))
                return true;
            if ((a.y() > p.y()) != (b.y() > p.y()))
                inside ^= (side > 0) == (b.y() > a.y());
        }
    }
    return inside;
}

double plainDistance(const QPointF &p, const QPointF &a, const QPointF &b)
{
    const QPointF d = b - a;
    const double length = QPointF::dotProduct(d, d);
    const double t =
        length > 0.0 ? std::min(1.0, std::max(0.0, QPointF::dotProduct(p - a, d) / length)) : 0.0;
    const QPointF gap = a + d * t - p;
    return std::hypot(gap.x(), gap.y());
}

} // namespace

class TestPredicates : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void orientationIsExact_data()
    {
        QTest::addColumn<double>("unit");
        QTest::addColumn<double>("offset");
        QTest::newRow("whole numbers") << 1.0 << 0.0;
        QTest::newRow("last bits of numbers near 1") << std::ldexp(1.0, -52) << 1.0;
        QTest::newRow("beside a power of 2") << std::ldexp(1.0, -30) << 4194304.0;
    }
    void orientationIsExact()
    {
        QFETCH(double, unit);
        QFETCH(double, offset);
        Random random(walkSeed(7));
        int onLine = 0;
        for (int i = 0; i < 200000; ++i) {
            const auto place = [&] {
                return QPointF(offset + unit * cases::whole(random, 0, 15),
                               offset + unit * cases::whole(random, 0, 15));
            };
            const QPointF a = place();
            const QPointF b = i % 2 ? place() : QPointF(2.0, 2.0) + 3.0 * (a - QPointF(1.0, 1.0));
            const QPointF c = place();
            if (i % 2 == 0 && unit < 1.0)
                continue; // b is not on the lattice that the reference requires
            QCOMPARE(fennimark::orientation(a, b, c), wholeOrientation(a, b, c, unit));
            onLine += fennimark::orientation(a, b, c) == 0;
        }
        QVERIFY(onLine > 1000);
    }

    void orientationOfInexactDifferences()
    {
        // (0.5, 0.5) + k ulp against the line through (12, 12) and (24, 24): y = x, decided by the
        // last bits alone (L. Kettner et al., "Classroom examples of robustness problems in
        // geometric computations", 2008).
        for (int i = 0; i < 64; ++i) {
            for (int k = 0; k < 64; ++k) {
                const QPointF p(0.5 + i * std::ldexp(1.0, -53), 0.5 + k * std::ldexp(1.0, -53));
                const int expected = (p.y() > p.x()) - (p.y() < p.x());
                QCOMPARE(fennimark::orientation({12.0, 12.0}, {24.0, 24.0}, p), expected);
                QCOMPARE(fennimark::orientation({-1.0e30, -1.0e30}, {1.0e-3, 1.0e-3}, p), expected);
            }
        }
    }

    void containsPointAgreesWithAPlainRay_data()
    {
        QTest::addColumn<int>("vertices");
        QTest::addColumn<int>("rings");
        QTest::addColumn<int>("extent");
        QTest::newRow("a triangle") << 3 << 1 << 6;
        QTest::newRow("a run and one more") << 9 << 1 << 8;
        QTest::newRow("three levels of boxes") << 700 << 1 << 40;
        QTest::newRow("some rings") << 12 << 7 << 20;
        QTest::newRow("many rings") << 4 << 120 << 30;
    }
    void containsPointAgreesWithAPlainRay()
    {
        QFETCH(int, vertices);
        QFETCH(int, rings);
        QFETCH(int, extent);
        Random random(walkSeed(11));
        for (int round = 0; round < 60; ++round) {
            QList<QPolygonF> list;
            for (int i = 0; i < rings; ++i)
                list.append(cases::tangle(random, vertices, extent));
            if (round % 3 == 0)
                list.last().append(list.last().first());
            const FMPolygon polygon(list);
            for (int i = 0; i < 150; ++i) {
                const QPointF p(cases::whole(random, -1, extent + 1),
                                cases::whole(random, -1, extent + 1));
                const QString told =
                    QStringLiteral("round %1, (%2, %3)").arg(round).arg(p.x()).arg(p.y());
                QVERIFY2(polygon.ContainsPoint(p) == plainlyContains(list, p), qPrintable(told));
            }
        }
    }

    void relationsAgreeWithGeos_data()
    {
        QTest::addColumn<bool>("firstIsArea");
        QTest::addColumn<bool>("secondIsArea");
        QTest::addColumn<int>("vertices");
        QTest::newRow("areas") << true << true << 5;
        QTest::newRow("areas with runs") << true << true << 14;
        QTest::newRow("areas and lines") << true << false << 5;
        QTest::newRow("lines") << false << false << 4;
    }
    void relationsAgreeWithGeos()
    {
        QFETCH(bool, firstIsArea);
        QFETCH(bool, secondIsArea);
        QFETCH(int, vertices);
        const cases::Geos geos;
        Random random(walkSeed(23));
        int counts[4] = {};
        for (int round = 0; round < 6000; ++round) {
            const auto first = draw(geos, random, firstIsArea, vertices, counts[3]);
            const auto second =
                draw(geos, random, secondIsArea, round % 2 ? vertices : 4, counts[3]);
            const FMObject &a = *first.object;
            const FMObject &b = *second.object;
            const GEOSGeometry *ga = first.geometry.get();
            const GEOSGeometry *gb = second.geometry.get();
            const bool overlap = GEOSIntersects_r(geos, ga, gb) == 1;
            const bool covers = GEOSCovers_r(geos, ga, gb) == 1;
            const bool covered = GEOSCoveredBy_r(geos, ga, gb) == 1;
            const bool cross =
                !covers && !covered && GEOSRelatePattern_r(geos, ga, gb, "T********") == 1;
            const QByteArray told = text(geos, ga) + " / " + text(geos, gb);
            QVERIFY2(a.Overlaps(b) == overlap, told);
            QVERIFY2(b.Overlaps(a) == overlap, told);
            QVERIFY2(a.Crosses(b) == cross, told);
            QVERIFY2(b.Crosses(a) == cross, told);
            if (firstIsArea)
                QVERIFY2(static_cast<const FMPolygon &>(a).Contains(b) == covers, told);
            if (secondIsArea)
                QVERIFY2(a.ContainedByPolygon(static_cast<const FMPolygon &>(b)) == covered, told);
            counts[0] += overlap;
            counts[1] += covers || covered;
            counts[2] += cross;
        }
        QCOMPARE(answers({counts[0] > 500, counts[1] > 20, counts[2] > 200}), "yyy");
    }

    void containmentMindsHolesAndSeams()
    {
        using cases::rectangle;
        const FMPolygon frame(QList<QPolygonF>{rectangle(0, 0, 10, 10), rectangle(2, 2, 8, 8)});
        const FMPolygon across(rectangle(1, 1, 9, 9));
        QVERIFY(!frame.ContainsPolygon(across)); // its boundary lies in the frame, the hole in it
        QCOMPARE(answers({frame.Overlaps(across), frame.Crosses(across)}), "yy");
        QVERIFY(!frame.Overlaps(FMPolygon(rectangle(3, 3, 7, 7))));
        const FMPolygon plug(rectangle(2, 2, 8, 8)); // touches all around
        QCOMPARE(answers({frame.OverlapsPolygon(plug, nullptr), frame.Crosses(plug)}), "yn");

        // Two rings that share an edge: no point of that edge is outside.
        const FMPolygon pair(QList<QPolygonF>{rectangle(0, 0, 4, 4), rectangle(4, 0, 8, 4)});
        QVERIFY(pair.ContainsPolygon(FMPolygon(rectangle(1, 1, 7, 3))));
        QVERIFY(pair.ContainsLine(FMLine({{{1.0, 1.0}, {7.0, 2.0}}})));
        QVERIFY(!pair.ContainsLine(FMLine({{{1.0, 1.0}, {9.0, 2.0}}})));
        // Two crossings that differ in the last bits: the notch's tip is 1 ulp wide there.
        const double tip = 1.0 + std::ldexp(1.0, -52);
        const FMPolygon notched(
            QVector<QPointF>{{0, 0}, {1, 1}, {tip, 1}, {2, 0}, {3, 0}, {3, 3}, {-1, 3}, {-1, 0}});
        const auto level = [](double y) { return FMLine({{{-0.5, y}, {2.5, y}}}); };
        QVERIFY(notched.ContainsLine(level(1.0)));
        QVERIFY(!notched.ContainsLine(level(1.0 - std::ldexp(1.0, -53))));
    }

    void distancesAgreeWithAPlainLoop()
    {
        Random random(walkSeed(31));
        for (int round = 0; round < 300; ++round) {
            const QPolygonF first = cases::star(random, cases::whole(random, 3, 90), {0, 0}, 10.0);
            const QPolygonF second =
                cases::star(random, cases::whole(random, 3, 90),
                            {cases::real(random, -30, 30), cases::real(random, -30, 30)}, 8.0);
            const FMPolygon a(first);
            const FMPolygon b(second);
            double least = qInf();
            for (int i = 0; i < first.size(); ++i) {
                const QPointF a1 = first[(i + 1) % first.size()];
                for (int k = 0; k < second.size(); ++k) {
                    const QPointF b1 = second[(k + 1) % second.size()];
                    least = std::min({least, plainDistance(first[i], second[k], b1),
                                      plainDistance(second[k], first[i], a1)});
                }
            }
            if (a.Overlaps(b))
                least = 0.0;
            QVERIFY(std::abs(std::sqrt(a.SqrPolygonDistance(b)) - least) < 1e-12);
            QCOMPARE(a.SqrDistance(static_cast<const TreeObject *>(&b)), b.SqrPolygonDistance(a));
            const QPointF place(cases::real(random, -20, 20), cases::real(random, -20, 20));
            const FMPoint point(place);
            QCOMPARE(a.SqrDistance(place), point.SqrDistance(static_cast<const TreeObject *>(&a)));
            QCOMPARE(a.SqrDistance(place) == 0.0, a.ContainsPoint(place));
            QVERIFY(a.OverlapsCircle(place, std::sqrt(a.SqrDistance(place)) + 1e-9));
            const Rect2D rect{place.x(), place.x() + 3.0, place.y(), place.y() + 2.0};
            const FMPolygon box(cases::rectangle(rect.xMin, rect.yMin, rect.xMax, rect.yMax));
            QCOMPARE(a.SqrDistance(rect), a.SqrPolygonDistance(box));
            QCOMPARE(a.OverlapsRect(rect), a.Overlaps(box));
        }
    }

    void emptyAndUnusableObjectsAreEmptySets_data()
    {
        QTest::addColumn<QVector<QPointF>>("ring");
        const auto with = [](double bad) {
            return QVector<QPointF>{{0, 0}, {bad, 0}, {1, 1}, {0, 1}};
        };
        QTest::newRow("no vertex") << QVector<QPointF>();
        QTest::newRow("no number") << with(qQNaN());
        QTest::newRow("infinite") << with(qInf());
        QTest::newRow("beyond reach") << with(1e300);
    }
    void emptyAndUnusableObjectsAreEmptySets()
    {
        QFETCH(QVector<QPointF>, ring);
        FMPolygon polygon(ring);
        const FMPolygon square(cases::rectangle(0, 0, 1, 1));
        QCOMPARE(polygon.GetVertices().first().size(), ring.size());
        QVERIFY(!polygon.IsSimple());
        QCOMPARE(polygon.GetArea(), 0.0);
        QCOMPARE(answers({polygon.ContainsPoint(0.5, 0.5), polygon.Overlaps(square),
                          square.Contains(polygon), polygon.Crosses(square),
                          polygon.BordersPolygon(square, true)}),
                 "nnnnn");
        QCOMPARE(answers({std::isinf(polygon.SqrDistance(0.0, 0.0)),
                          std::isinf(square.SqrPolygonDistance(polygon))}),
                 "yy");
        double x = 0.0;
        QVERIFY(!polygon.GetCentroid(x, x));
        QVector<const FMPolygon *> pieces;
        QCOMPARE(answers({polygon.Decompose(pieces), pieces.isEmpty()}), "ny");
        QVector<FMCellArea> cells;
        polygon.CellAreas({0, 0, 1, 0.1, 0.1}, {0, 0, 9, 9}, cells);
        QVERIFY(cells.isEmpty());
        QCOMPARE(polygon.GetObjectBounds().xMax, 0.0);
    }

private:
    struct Drawn {
        std::unique_ptr<FMObject> object;
        cases::Geos::Geometry geometry;
    };
    static QByteArray text(const cases::Geos &geos, const GEOSGeometry *geometry)
    {
        char *told = GEOSGeomToWKT_r(geos, geometry);
        const QByteArray result(told);
        GEOSFree_r(geos, told);
        return result;
    }
    /// On a small lattice, so that contacts of every kind are frequent. Areas are redrawn until
    /// they are simple.
    static Drawn draw(const cases::Geos &geos, Random &random, bool area, int vertices,
                      int &redrawn)
    {
        for (;; ++redrawn) {
            const QPolygonF ring = cases::tangle(
                random, cases::whole(random, area ? 3 : 2, vertices), vertices > 8 ? 30 : 4);
            if (!area) {
                if (std::count(ring.cbegin(), ring.cend(), ring.front()) == ring.size())
                    continue;
                auto line = geos.line(ring);
                if (GEOSisSimple_r(geos, line.get()) == 1)
                    return {std::make_unique<FMLine>(QList<QVector<QPointF>>{ring}),
                            std::move(line)};
                continue;
            }
            QPolygonF made = vertices > 8 ? QPolygonF() : ring;
            if (vertices > 8) { // a star rounded to the lattice
                for (const QPointF &p :
                     cases::star(random, vertices, {15, 15}, cases::real(random, 2, 15)))
                    made.append(QPointF(std::round(p.x()), std::round(p.y())));
            }
            auto polygon = geos.polygon({made});
            if (polygon && GEOSisValid_r(geos, polygon.get()) == 1)
                return {std::make_unique<FMPolygon>(made), std::move(polygon)};
        }
    }
};

QTEST_GUILESS_MAIN(TestPredicates)
#include "tst_Predicates.moc"
