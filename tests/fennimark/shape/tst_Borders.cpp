// SPDX-License-Identifier: MIT
// Contiguity and shared borders on walls whose contacts are known by construction, straight and
// turned.
#include <QtTest>
#include <numeric>
#include <set>
#include <tuple>
#include "fennimark/shape/geometryCases.h"
#include "shape/border.h"
#include "support/checks.h"

using fennimark::Contact;
using fennimark::ObjectAccess;

namespace {

struct Brick {
    QRectF place; // before turning
    QPolygonF ring;
};

/// Bricks of two by one, every other row moved by half a brick, so that each long edge has a vertex
/// of another inside.
QVector<Brick> wall(int rows, int columns, int pieces, double degrees, const QPointF &offset)
{
    QVector<Brick> bricks;
    for (int row = 0; row < rows; ++row) {
        for (int column = 0; column < columns; ++column) {
            const double x = 2.0 * column + (row % 2);
            const QPolygonF ring =
                cases::refined(cases::rectangle(x, row, x + 2.0, row + 1.0), pieces);
            bricks.append({QRectF(x, row, 2.0, 1.0), cases::turned(ring, degrees, offset)});
        }
    }
    return bricks;
}

double commonLength(const QRectF &a, const QRectF &b)
{
    const double width = std::min(a.right(), b.right()) - std::max(a.left(), b.left());
    const double height = std::min(a.bottom(), b.bottom()) - std::max(a.top(), b.top());
    return width < 0.0 || height < 0.0 ? -1.0 : std::max(width, height);
}

double lengthOf(const QList<QLineF> &lines)
{
    double length = 0.0;
    for (const QLineF &line : lines)
        length += line.length();
    return length;
}

using Step = std::pair<int, int>;

/// The steps between neighbouring lattice places on each edge of a ring, independent of direction.
void addSteps(const QPolygonF &ring, std::set<std::pair<Step, Step>> &steps)
{
    for (int i = 0; i < ring.size(); ++i) {
        const QPoint from = ring[i].toPoint();
        const QPoint edge = ring[(i + 1) % ring.size()].toPoint() - from;
        const int count = std::gcd(edge.x(), edge.y());
        for (int k = 0; k < count; ++k) {
            const QPoint begin = from + edge * k / count;
            const QPoint end = begin + edge / count;
            steps.insert(std::minmax(Step(begin.x(), begin.y()), Step(end.x(), end.y())));
        }
    }
}

using Place = std::pair<double, double>;

std::multiset<std::pair<Place, Place>> undirected(const QList<QLineF> &lines)
{
    std::multiset<std::pair<Place, Place>> result;
    for (const QLineF &line : lines)
        result.insert(std::minmax(Place(line.x1(), line.y1()), Place(line.x2(), line.y2())));
    return result;
}

} // namespace

class TestBorders : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void everyContactOfATurnedWallIsFound_data()
    {
        QTest::addColumn<int>("pieces");
        QTest::addColumn<double>("degrees");
        QTest::addColumn<QPointF>("offset");
        for (const int pieces : {1, 3, 16}) {
            for (const double degrees : {0.0, 30.0, 73.1}) {
                for (const auto &offset : {QPointF(0.0, 0.0), QPointF(512345.678, 5432109.876)})
                    QTest::addRow("%d pieces, %g degrees, from %g", pieces, degrees, offset.x())
                        << pieces << degrees << offset;
            }
        }
    }
    void everyContactOfATurnedWallIsFound()
    {
        QFETCH(int, pieces);
        QFETCH(double, degrees);
        QFETCH(QPointF, offset);
        std::vector<std::pair<QRectF, std::unique_ptr<FMPolygon>>> bricks;
        for (const Brick &brick : wall(11, 9, pieces, degrees, offset))
            bricks.emplace_back(brick.place, std::make_unique<FMPolygon>(brick.ring));
        for (const auto &one : bricks) {
            for (const auto &other : bricks) {
                if (&one == &other)
                    continue;
                const double expected = commonLength(one.first, other.first);
                const FMPolygon &a = *one.second;
                const FMPolygon &b = *other.second;
                QCOMPARE(a.BordersPolygon(b, true), expected >= 0.0);
                QCOMPARE(a.BordersPolygon(b, false), expected > 0.0);
                QList<QLineF> edges;
                const double length = a.GetBorderEdges(b, &edges);
                QVERIFY(std::abs(length - std::max(expected, 0.0)) < 1e-7);
                QVERIFY(std::abs(lengthOf(edges) - length) < 1e-7);
            }
        }
    }

    void contactsAreTold_data()
    {
        using cases::rectangle;
        using Ring = QVector<QPointF>;
        QTest::addColumn<int>("expected");
        QTest::addColumn<double>("border");
        QTest::addColumn<Ring>("other");
        QTest::addColumn<double>("tolerance");
        const auto row = [](const char *name, Contact expected, double border, const Ring &other,
                            double tolerance = 0.0) {
            QTest::newRow(name) << int(expected) << border << other << tolerance;
        };
        // against the square (0, 0) (10, 10)
        const Ring wedge{{10, 0}, {10.001, 10}, {12, 10}};
        const Ring hook{{10, 4}, {12, 4}, {12, 12}, {4, 12}, {4, 10}, {10, 10}};
        const Ring overStart{{10, 5}, {10, 5.07}, {12, 5.07}, {12, 4.93}, {10, 4.93}};
        const Ring coast = cases::refined(rectangle(10.01, 4, 12, 8), 200);
        row("apart", Contact::None, 0, rectangle(11, 0, 12, 10));
        row("inside without contact", Contact::None, 0, rectangle(2, 2, 8, 8));
        row("inside along an edge", Contact::Piece, 6, rectangle(2, 0, 8, 8));
        row("corner to corner", Contact::Place, 0, rectangle(10, 10, 12, 12));
        row("corner inside an edge", Contact::Place, 0, {{10, 5}, {14, 3}, {14, 7}});
        row("crossing", Contact::Place, 0, rectangle(5, 5, 15, 6));
        row("diverging at a small angle", Contact::Place, 0, wedge);
        row("part of an edge", Contact::Piece, 6, rectangle(10, 4, 12, 30));
        row("around a corner", Contact::Piece, 12, hook);
        row("a gap within the tolerance", Contact::Piece, 4, rectangle(10.01, 4, 12, 8), 0.02);
        row("a gap above the tolerance", Contact::None, 0, rectangle(10.03, 4, 12, 8), 0.02);
        row("shorter than four tolerances", Contact::Place, 0, rectangle(10, 4, 12, 4.07), 0.02);
        row("short edges under a wide tolerance", Contact::Piece, 4, coast, 0.02);
        row("over the first vertex", Contact::Piece, 0.14, overStart, 0.02);
        // Rings that run along one stretch more than once.
        const Ring spike{{10, 2}, {10, 9}, {10, 5}, {12, 5}, {12, 2}};
        const Ring cut{{10, 2},           {10, 9},         {10 + 4e-15, 9}, {10 + 4e-15, 6.5},
                       {10 + 8e-15, 6.5}, {10 + 8e-15, 9}, {12, 9},         {12, 2}};
        const Ring shortSpike{{10, 5}, {10, 5.07}, {10, 5}, {12, 5}, {12, 4}};
        row("a spike along the border", Contact::Piece, 7, spike);
        row("a narrow cut along the border", Contact::Piece, 7, cut);
        row("a doubled stretch shorter than four tolerances", Contact::Place, 0, shortSpike, 0.02);
    }
    void contactsAreTold()
    {
        using cases::rectangle;
        using Ring = QVector<QPointF>;
        QFETCH(int, expected);
        QFETCH(double, border);
        QFETCH(Ring, other);
        QFETCH(double, tolerance);
        for (const int pieces : {1, 7}) {
            const InCase inPieces(pieces);
            const FMPolygon square(cases::refined(rectangle(0, 0, 10, 10), pieces));
            const FMPolygon polygon(other);
            const auto &a = ObjectAccess::view(square);
            const auto &b = ObjectAccess::view(polygon);
            for (const auto &[one, two] : {std::tie(a, b), std::tie(b, a)}) {
                QCOMPARE(int(fennimark::contact(one, two, tolerance)), expected);
                const double length = fennimark::sharedBorder(one, two, tolerance);
                QVERIFY2(std::abs(length - border) <= 2.0 * tolerance + 1e-9,
                         QByteArray::number(length, 'g', 17));
            }
        }
    }
    // Rings on whole coordinates with spikes, doubled edges and crossings, against the set of
    // shortest lattice steps that both boundaries contain.
    void degenerateRingsShareEachStretchOnce_data()
    {
        QTest::addColumn<double>("degrees");
        QTest::addColumn<QPointF>("offset");
        QTest::newRow("as drawn") << 0.0 << QPointF();
        QTest::newRow("turned") << 30.0 << QPointF(5.0, -3.0);
        QTest::newRow("far out") << 73.1 << QPointF(512345.678, 5432109.876);
    }
    void degenerateRingsShareEachStretchOnce()
    {
        QFETCH(double, degrees);
        QFETCH(QPointF, offset);
        cases::Random random(20);
        for (int round = 0; round < 4000; ++round) {
            QList<QPolygonF> rings[2], placed[2];
            std::set<std::pair<Step, Step>> steps[2];
            for (int i = 0; i < 2; ++i) {
                for (int parts = cases::whole(random, 1, 2); parts > 0; --parts) {
                    rings[i].append(cases::tangle(random, cases::whole(random, 3, 8), 3));
                    addSteps(rings[i].last(), steps[i]);
                    placed[i].append(cases::turned(rings[i].last(), degrees, offset));
                }
            }
            double expected = 0.0;
            for (const auto &step : steps[0]) {
                if (steps[1].count(step))
                    expected += std::hypot(step.second.first - step.first.first,
                                           step.second.second - step.first.second);
            }
            const FMPolygon a(placed[0], 0);
            const FMPolygon b(placed[1], 0);
            QList<QLineF> edges[2];
            const double lengths[2] = {a.GetBorderEdges(b, &edges[0]),
                                       b.GetBorderEdges(a, &edges[1])};
            QString text;
            QDebug(&text) << "round" << round << rings[0] << rings[1] << edges[0] << edges[1]
                          << lengths[0] << lengths[1] << expected;
            const QByteArray story = text.toLatin1();
            QVERIFY2(std::abs(lengths[0] - expected) < 1e-7, story);
            QVERIFY2(lengths[1] == lengths[0], story);
            QVERIFY2(std::abs(lengthOf(edges[0]) - expected) < 1e-7, story);
            QVERIFY2(undirected(edges[0]) == undirected(edges[1]), story);
            QVERIFY2(a.BordersPolygon(b, false) == (expected > 0.0), story);
            QVERIFY2(a.BordersPolygon(b, true) == b.BordersPolygon(a, true), story);
        }
    }

    void theBorderWithItselfIsThePerimeter()
    {
        cases::Random random(walkSeed(3));
        for (const int vertices : {3, 8, 9, 300}) {
            const InCase inVertices(vertices);
            const QPolygonF ring = cases::star(random, vertices, {4.0e5, 6.0e6}, 1000.0);
            const FMPolygon polygon(QList<QPolygonF>{
                ring, cases::rectangle(4.0e5 + 5000, 6.0e6, 4.0e5 + 5100, 6.0e6 + 50)});
            QList<QLineF> edges;
            const double length = polygon.GetBorderEdges(polygon, &edges);
            QVERIFY(std::abs(length / polygon.Length() - 1.0) < 1e-12);
            QCOMPARE(edges.size(), vertices + 4);
            QVERIFY(polygon.BordersPolygon(polygon, false));
        }
    }

    void piecesRunInThisPolygonsDirection()
    {
        const FMPolygon low(cases::rectangle(0, 0, 10, 10));
        const FMPolygon high(cases::rectangle(2, 10, 7, 12));
        QList<QLineF> edges;
        QCOMPARE(low.GetBorderEdges(high, &edges), 5.0);
        QCOMPARE(edges, QList<QLineF>{QLineF(7, 10, 2, 10)});
        edges.clear();
        QCOMPARE(high.GetBorderEdges(low, &edges), 5.0);
        QCOMPARE(edges, QList<QLineF>{QLineF(2, 10, 7, 10)});
    }
};

QTEST_GUILESS_MAIN(TestBorders)
#include "tst_Borders.moc"
