// SPDX-License-Identifier: MIT
// Contiguity and shared borders on walls whose contacts are known by construction, straight and
// turned.
#include "geometryCases.h"
#include "geometryView.h"
#include <QtTest>

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
                const auto row = [&](const char *where) -> QTestData & {
                    return QTest::newRow(
                        qPrintable(QStringLiteral("%1 %2 %3").arg(pieces).arg(degrees).arg(where)));
                };
                row("near 0") << pieces << degrees << QPointF(0.0, 0.0);
                row("projected") << pieces << degrees << QPointF(512345.678, 5432109.876);
            }
        }
    }
    void everyContactOfATurnedWallIsFound()
    {
        QFETCH(int, pieces);
        QFETCH(double, degrees);
        QFETCH(QPointF, offset);
        const QVector<Brick> bricks = wall(11, 9, pieces, degrees, offset);
        std::vector<std::unique_ptr<FMPolygon>> polygons;
        for (const Brick &brick : bricks)
            polygons.push_back(std::make_unique<FMPolygon>(brick.ring));
        for (int i = 0; i < bricks.size(); ++i) {
            for (int k = 0; k < bricks.size(); ++k) {
                if (i == k)
                    continue;
                const double expected = commonLength(bricks[i].place, bricks[k].place);
                const FMPolygon &a = *polygons[static_cast<std::size_t>(i)];
                const FMPolygon &b = *polygons[static_cast<std::size_t>(k)];
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
        QTest::addColumn<QVector<QPointF>>("other");
        QTest::addColumn<double>("tolerance");
        QTest::addColumn<int>("expected");
        QTest::addColumn<double>("border");
        const auto row = [](const char *name, const QVector<QPointF> &other, double tolerance,
                            Contact contact, double border) {
            QTest::newRow(name) << other << tolerance << int(contact) << border;
        };
        // against the square (0, 0) (10, 10)
        row("apart", cases::rectangle(11, 0, 12, 10), 0.0, Contact::None, 0.0);
        row("inside without contact", cases::rectangle(2, 2, 8, 8), 0.0, Contact::None, 0.0);
        row("inside along an edge", cases::rectangle(2, 0, 8, 8), 0.0, Contact::Piece, 6.0);
        row("corner to corner", cases::rectangle(10, 10, 12, 12), 0.0, Contact::Place, 0.0);
        row("corner inside an edge", {{10, 5}, {14, 3}, {14, 7}}, 0.0, Contact::Place, 0.0);
        row("crossing", cases::rectangle(5, 5, 15, 6), 0.0, Contact::Place, 0.0);
        row("diverging at a small angle", {{10, 0}, {10.001, 10}, {12, 10}}, 0.0, Contact::Place,
            0.0);
        row("part of an edge", cases::rectangle(10, 4, 12, 30), 0.0, Contact::Piece, 6.0);
        row("around a corner", {{10, 4}, {12, 4}, {12, 12}, {4, 12}, {4, 10}, {10, 10}}, 0.0,
            Contact::Piece, 12.0);
        row("a gap within the tolerance", cases::rectangle(10.01, 4, 12, 8), 0.02, Contact::Piece,
            4.0);
        row("a gap above the tolerance", cases::rectangle(10.03, 4, 12, 8), 0.02, Contact::None,
            0.0);
        row("shorter than four tolerances", cases::rectangle(10, 4, 12, 4.07), 0.02, Contact::Place,
            0.0);
        row("a coast of short edges under a wide tolerance",
            cases::refined(cases::rectangle(10.01, 4, 12, 8), 200), 0.02, Contact::Piece, 4.0);
        row("over the first vertex", {{10, 5}, {10, 5.07}, {12, 5.07}, {12, 4.93}, {10, 4.93}},
            0.02, Contact::Piece, 0.14);
    }
    void contactsAreTold()
    {
        QFETCH(QVector<QPointF>, other);
        QFETCH(double, tolerance);
        QFETCH(int, expected);
        QFETCH(double, border);
        for (const int pieces : {1, 7}) {
            const FMPolygon square(cases::refined(cases::rectangle(0, 0, 10, 10), pieces));
            const FMPolygon polygon(other);
            const auto &a = ObjectAccess::view(square);
            const auto &b = ObjectAccess::view(polygon);
            QCOMPARE(int(fennimark::contact(a, b, tolerance)), expected);
            QCOMPARE(int(fennimark::contact(b, a, tolerance)), expected);
            QVERIFY(std::abs(fennimark::sharedBorder(a, b, tolerance) - border)
                    <= 2.0 * tolerance + 1e-9);
            QVERIFY(std::abs(fennimark::sharedBorder(b, a, tolerance) - border)
                    <= 2.0 * tolerance + 1e-9);
        }
    }

    void theBorderWithItselfIsThePerimeter()
    {
        cases::Random random(3);
        for (const int vertices : {3, 8, 9, 300}) {
            const QPolygonF ring = cases::star(random, vertices, {4.0e5, 6.0e6}, 1000.0);
            const FMPolygon polygon(QList<QPolygonF>{
                ring, cases::rectangle(4.0e5 + 5000, 6.0e6, 4.0e5 + 5100, 6.0e6 + 50)});
            QList<QLineF> edges;
            QVERIFY(std::abs(polygon.GetBorderEdges(polygon, &edges) / polygon.Length() - 1.0)
                    < 1e-12);
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
