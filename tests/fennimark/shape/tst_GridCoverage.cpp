// SPDX-License-Identifier: MIT
// Cells of a grid against the point test of every centre and GEOS's intersection with every cell.
#include <QtTest>
#include "fennimark/shape/geometryCases.h"
#include "support/checks.h"

namespace {

using Cells = QVector<QPair<unsigned int, unsigned int>>;

Cells plainCenters(const FMPolygon &polygon, const FMGrid &grid, const FMGridWindow &window)
{
    Cells cells;
    for (unsigned int column = window.firstColumn; column <= window.lastColumn; ++column) {
        for (unsigned int row = window.firstRow; row <= window.lastRow; ++row) {
            const double x = (column + 0.5) * grid.cellWidth + grid.left;
            if (polygon.ContainsPoint(x, grid.top - (row + 0.5) * grid.cellHeight))
                cells.append({column, row});
        }
    }
    return cells;
}

double areaOfCells(const QVector<FMCellArea> &cells)
{
    double area = 0.0;
    for (const FMCellArea &cell : cells)
        area += cell.area;
    return area;
}

} // namespace

class TestGridCoverage : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void centersAgreeWithThePointTest_data()
    {
        QTest::addColumn<bool>("lattice");
        QTest::addColumn<int>("vertices");
        QTest::addColumn<QPointF>("offset");
        QTest::addColumn<double>("cell");
        // A lattice has vertices on centres, edges along columns and rows of centres.
        QTest::newRow("lattice") << true << 7 << QPointF(0, 0) << 1.0;
        QTest::newRow("lattice of tenths") << true << 7 << QPointF(0, 0) << 0.1;
        QTest::newRow("lattice far out") << true << 20 << QPointF(512345.6, 5432109.8) << 0.1;
        QTest::newRow("star") << false << 40 << QPointF(0, 0) << 1.0;
        QTest::newRow("cells of the size of the rounding")
            << false << 9 << QPointF(4.0e9, 4.0e9) << 1.0e-6;
    }
    void centersAgreeWithThePointTest()
    {
        QFETCH(bool, lattice);
        QFETCH(int, vertices);
        QFETCH(QPointF, offset);
        QFETCH(double, cell);
        cases::Random random(walkSeed(5));
        const FMGrid grid{offset.x(), offset.y(), offset.y() + 24 * cell, cell, cell};
        int found = 0;
        for (int round = 0; round < 200; ++round) {
            QPolygonF ring;
            for (const QPointF &p : lattice ? cases::tangle(random, vertices, 26)
                                            : cases::star(random, vertices, {12, 12}, 14))
                ring.append(lattice ? QPointF((p.x() - 1 + 0.5) * cell + grid.left,
                                              grid.top - (p.y() - 1 + 0.5) * cell)
                                    : offset + p * cell);
            const FMPolygon polygon(ring);
            const FMGridWindow window =
                round % 3 ? FMGridWindow{0, 0, 23, 23} : FMGridWindow{5, 7, 15, 20};
            Cells cells{{99U, 99U}};
            polygon.ContainedCenters(grid, window, cells);
            QVERIFY2(cells == plainCenters(polygon, grid, window),
                     qPrintable(QString::number(round)));
            found += cells.size();
        }
        QVERIFY(found > 1000);
    }

    void areasAgreeWithGeos_data()
    {
        QTest::addColumn<int>("vertices");
        QTest::addColumn<QPointF>("offset");
        QTest::addColumn<double>("cell");
        QTest::newRow("four vertices") << 4 << QPointF(0, 0) << 1.0;
        QTest::newRow("vertices on grid lines") << -12 << QPointF(0, 0) << 1.0;
        QTest::newRow("many vertices") << 900 << QPointF(0, 0) << 1.0;
        QTest::newRow("far out") << 60 << QPointF(512345.5, 5432109.25) << 30.0;
    }
    void areasAgreeWithGeos()
    {
        QFETCH(int, vertices);
        QFETCH(QPointF, offset);
        QFETCH(double, cell);
        const cases::Geos geos;
        cases::Random random(walkSeed(17));
        const FMGrid grid{offset.x(), offset.y(), offset.y() + 20 * cell, cell, cell};
        const FMGridWindow window{0, 0, 19, 19};
        for (int round = 0; round < 3; ++round) {
            QPolygonF ring;
            for (const QPointF &p : cases::star(random, std::abs(vertices), {10, 10}, 12)) {
                const QPointF place =
                    vertices < 0 ? QPointF(std::round(p.x()), std::round(2 * p.y()) / 2) : p;
                ring.append(offset + place * cell);
            }
            const FMPolygon polygon(ring);
            if (!polygon.IsSimple())
                continue;
            QVector<FMCellArea> cells;
            polygon.CellAreas(grid, window, cells);
            const auto whole = geos.polygon({ring});
            int next = 0;
            for (unsigned int column = 0; column < 20; ++column) {
                for (unsigned int row = 0; row < 20; ++row) {
                    const double x = column * cell + grid.left;
                    const double y = row * cell + grid.bottom;
                    const auto square = geos.polygon({cases::rectangle(x, y, x + cell, y + cell)});
                    const auto common =
                        geos.own(GEOSIntersection_r(geos, whole.get(), square.get()));
                    const double expected = geos.area(common.get());
                    const bool listed = next < cells.size() && cells[next].column == column
                                        && cells[next].row == row;
                    QVERIFY(std::abs((listed ? cells[next].area : 0.0) - expected)
                            < 1e-8 * cell * cell);
                    if (GEOSContains_r(geos, whole.get(), square.get()) == 1
                        && GEOSDisjoint_r(geos, GEOSGetExteriorRing_r(geos, whole.get()),
                                          square.get())
                               == 1)
                        QCOMPARE(cells[next].area - cell * cell, 0.0);
                    next += listed;
                }
            }
            QCOMPARE(next, cells.size()); // and in that order
        }
    }

    void areasSumUpToTheArea()
    {
        cases::Random random(walkSeed(29));
        const FMGrid grid{4.99e5, 4.999e6, 5.001e6, 7.3, 11.1};
        for (int round = 0; round < 100; ++round) {
            const QPolygonF shell =
                cases::star(random, cases::whole(random, 3, 400), {5.0e5, 5.0e6}, 900.0);
            QPolygonF hole;
            for (const QPointF &p : shell)
                hole.append(QPointF(5.0e5, 5.0e6) + (p - QPointF(5.0e5, 5.0e6)) * 0.5);
            if (round % 2)
                std::reverse(hole.begin(), hole.end());
            const FMPolygon polygon(QList<QPolygonF>{shell, hole});
            QVERIFY(polygon.IsSimple());
            QVector<FMCellArea> cells;
            polygon.CellAreas(grid, {0, 0, 300, 200}, cells);
            QVERIFY(std::abs(areaOfCells(cells) / polygon.GetArea() - 1.0) < 1e-9);

            // Windows that cut the polygon: the parts below and beside them must have no effect.
            QVector<FMCellArea> part;
            polygon.CellAreas(grid, {120, 60, 160, 100}, part);
            QVector<FMCellArea> expected;
            for (const FMCellArea &cell : cells) {
                if (cell.column >= 120 && cell.column <= 160 && cell.row >= 60 && cell.row <= 100)
                    expected.append(cell);
            }
            QCOMPARE(part.size(), expected.size());
            for (int i = 0; i < part.size(); ++i) {
                QCOMPARE(part[i].row, expected[i].row);
                QVERIFY(std::abs(part[i].area - expected[i].area) < 1e-9 * 7.3 * 11.1);
            }
        }
    }

    void edgesAlongGridLinesEnterNoCell()
    {
        const FMGrid grid{0.3, -7.7, 100.0, 0.1, 0.7};
        QPolygonF ring;
        for (const QPoint &p : {QPoint(1, 1), {6, 1}, {6, 4}, {4, 4}, {4, 7}, {1, 7}})
            ring.append(
                {p.x() * grid.cellWidth + grid.left, p.y() * grid.cellHeight + grid.bottom});
        for (int direction = 0; direction < 2; ++direction) {
            std::reverse(ring.begin(), ring.end());
            QVector<FMCellArea> cells;
            FMPolygon(ring).CellAreas(grid, {0, 0, 9, 9}, cells);
            QCOMPARE(cells.size(), 5 * 3 + 3 * 3);
            for (const FMCellArea &cell : cells)
                QVERIFY(cell.area == grid.cellWidth * grid.cellHeight);
        }
    }

    void unusableGridsGiveNothing()
    {
        const struct {
            double cell;
            unsigned int first, last;
        } grids[] = {{0.0, 0, 9},
                     {-1.0, 0, 9},
                     {qQNaN(), 0, 9},
                     {1.0, 9, 0},                      // turned round
                     {1.0, 4000000000U, 4294967295U}}; // beyond the polygon
        const FMPolygon square(cases::rectangle(0, 0, 5, 5));
        for (const auto &[cell, first, last] : grids) {
            Cells centers{{1U, 1U}};
            QVector<FMCellArea> cells(1);
            square.ContainedCenters({0, 0, 10, cell, 1}, {first, 0, last, 9}, centers);
            square.CellAreas({0, 0, 10, cell, 1}, {first, 0, last, 9}, cells);
            QCOMPARE(answers({centers.isEmpty(), cells.isEmpty()}), "yy");
        }
    }
};

QTEST_GUILESS_MAIN(TestGridCoverage)
#include "tst_GridCoverage.moc"
