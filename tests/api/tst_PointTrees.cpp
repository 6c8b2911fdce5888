// SPDX-License-Identifier: MIT
// Point trees by handle: what goes in, and that queries are passed on. How they answer is tested
// where the trees live.
#include <algorithm>
#include <limits>
#include "datainterface/GeographyAPI.h"
#include "datainterface/MVectorData.h"
#include "datainterface/PointTreeAPI.h"
#include "support/checks.h"
#include "support/model.h"
#include "support/support.h"

namespace {

using Points = QVector<QPair<QPointF, int>>;
using Hits = QVector<ptTreeQueryResult>;
constexpr PT_RotationMatrix kNone{1, 0, 0, 1};
constexpr PT_RotationMatrix kSkewed{0.6, -0.8, 0.8, 0.7};

QString ids(const Hits &hits)
{
    QStringList all;
    for (const ptTreeQueryResult &hit : hits)
        all.append(QString::number(hit.id));
    return all.join(' ');
}

/// Everything in a tree, as "id: x y" in order of id; the tree is deleted.
QStringList takeContents(int tree)
{
    Hits hits;
    VORN_QueryPointTreeWithRect(tree, QRectF(-1e6, -1e6, 2e6, 2e6), hits);
    QStringList lines;
    for (const ptTreeQueryResult &hit : qAsConst(hits))
        lines.append(QStringLiteral("%1: %2 %3").arg(hit.id).arg(hit.point.x()).arg(hit.point.y()));
    return VORN_DeletePointTree(tree) ? lines : QStringList{"no tree"};
}

QStringList contents(const Points &points)
{
    return takeContents(VORN_CreatePointTreeFromPoints(points, kNone));
}

} // namespace

class TestPointTrees : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void geographiesBecomePoints()
    {
        TestModel model;
        const auto expect = [](int geography, qint64 time, Points points) {
            QCOMPARE(takeContents(VORN_CreatePointTreeFromCentroids(geography, time, kNone)),
                     points.isEmpty() ? QStringList() : contents(points));
            for (auto &point : points) {
                const QPointF p = point.first;
                point.first = QPointF(0.6 * p.x() - 0.8 * p.y(), 0.8 * p.x() + 0.7 * p.y());
            }
            QCOMPARE(takeContents(VORN_CreatePointTreeFromGeography(geography, time, kSkewed)),
                     points.isEmpty() ? QStringList() : contents(points));
        };
        const int points = addPoints(4); // (i, i)
        model.vectorData(points).RemoveObjects({1});
        expect(points, 5, {{{0, 0}, 0}, {{2, 2}, 1}, {{3, 3}, 2}});
        expect(points, 2000, {}); // nothing is there then
        // Without an area there is no centre of gravity: the middle of the bounds stands in.
        const int polygons = addPolygons({{{0, 0}, {6, 0}, {0, 6}}, {{0, 0}, {4, 4}, {9, 9}}});
        expect(polygons, 5, {{{2, 2}, 0}, {{4.5, 4.5}, 1}});
        const int grid = addGrid(2, 3, QRectF(10, 20, 6, 2));
        Points cells;
        for (int i = 0; i < 6; ++i)
            cells.append({QPointF(11 + 2 * (i % 3), i < 3 ? 21.5 : 20.5), i});
        expect(grid, 77, cells);
    }

    void rotations()
    {
        // Half a turn, and equal diagonals, are taken for no turn at all.
        for (const auto &[m, expected] :
             {std::make_pair(PT_RotationMatrix{1, 0, 0, 1}, QPointF(3, 4)),
              {{0, -1, 1, 0}, {-4, 3}},
              {{-1, 0, 0, -1}, {3, 4}},
              {{2, 5, 5, 2}, {3, 4}},
              {{2, 0, 0, 1}, {6, 4}}}) {
            const int tree = VORN_CreatePointTreeFromPoints({{{3, 4}, 1}, {{3, 4}, 3}}, m);
            QVERIFY(VORN_AddToPointTree(tree, QPointF(3, 4), 2, m));
            QCOMPARE(VORN_RemoveFromPointTree(tree, QPointF(3, 4), 1), expected == QPointF(3, 4));
            VORN_RemoveFromPointTree(tree, expected, 1); // as it lies in the tree
            QCOMPARE(takeContents(tree), contents({{expected, 2}, {expected, 3}}));
        }
    }

    void queriesArePassedOn()
    {
        TestModel model;
        const int tree = VORN_CreatePointTreeFromPoints(
            {{{0, 3}, 1}, {{4, 0}, 2}, {{0, 5}, 3}, {{5, 0}, 4}}, kNone);
        Hits hits;
        QVERIFY(VORN_GetPointTreeNearestNeighbors(tree, QPointF(0, 0), 2, {1}, hits));
        QCOMPARE(ids(hits), QStringLiteral("2 3 4")); // 3 and 4 tie
        QCOMPARE(hits[0].distance, 16.0);             // squared
        QCOMPARE(hits[1].angle, std::acos(0.0));
        QVERIFY(VORN_GetPointTreeRangeNeighbors(tree, QPointF(0, 0), 4, {}, hits));
        QCOMPARE(ids(hits), QStringLiteral("1 2"));
        QVERIFY(VORN_GetPointTreeRangeNeighbors(tree, QPointF(0, 3), 0, {}, hits));
        QCOMPARE(ids(hits), QStringLiteral("1"));
        QVERIFY(VORN_QueryPointTreeWithRect(tree, QRectF(-1, 2, 2, 3), hits));
        QCOMPARE(ids(hits), QStringLiteral("1 3"));
        const int polygons = addPolygons({{{-1, -1}, {0, -1}, {-1, 0}}, {{0, 0}, {6, 0}, {0, 3}}});
        QVERIFY(VORN_QueryPointTreeWithPolygon(tree, polygons, 1, 5, hits));
        QCOMPARE(ids(hits), QStringLiteral("1 2 4"));
        for (const int object : {-1, 2})
            QVERIFY(!VORN_QueryPointTreeWithPolygon(tree, polygons, object, 5, hits));
        QVERIFY(!VORN_QueryPointTreeWithPolygon(tree, polygons, 1, 11, hits));
        QVERIFY(!VORN_QueryPointTreeWithPolygon(tree, addPoints(2), 1, 5, hits));
        QCOMPARE(hits.size(), 3);
        VORN_DeletePointTree(tree);
    }

    void cursorsGoOn()
    {
        const int tree =
            VORN_CreatePointTreeFromPoints({{{5, 0}, 1}, {{1, 0}, 2}, {{3, 0}, 3}}, kNone);
        const int other = VORN_CreatePointTreeFromPoints({{{9, 9}, 9}}, kNone);
        void *cursor = nullptr;
        ptTreeQueryResult hit;
        QVERIFY(VORN_GetPointTreeFirstNearestNeighbor(tree, QPointF(0, 0), {}, hit, cursor));
        QCOMPARE(hit.id, 2);
        QVERIFY(!VORN_GetPointTreeNextNearestNeighbor(other, {}, hit, cursor)); // another tree's
        QVERIFY(
            VORN_GetPointTreeNextNearestNeighbor(tree, {3}, hit, cursor)); // the set takes no part
        QCOMPARE(hit.id, 3);
        VORN_DoneWithPointTreeNearestNeighbors(tree, cursor);
        QCOMPARE(answers({cursor, VORN_GetPointTreeNextNearestNeighbor(tree, {}, hit, cursor)}),
                 "nn");
        QVERIFY(VORN_GetPointTreeFirstNearestNeighbor(tree, QPointF(0, 0), {2, 3}, hit, cursor));
        QCOMPARE(hit.id, 1);
        QVERIFY(!VORN_GetPointTreeNextNearestNeighbor(tree, {}, hit, cursor));
        QCOMPARE(answers({VORN_DeletePointTree(tree), VORN_DeletePointTree(other)}),
                 "yy"); // with the cursor open
    }

    void handlesAreNeverReused()
    {
        const int gone = VORN_CreatePointTree();
        QCOMPARE(answers({VORN_DeletePointTree(gone), VORN_DeletePointTree(gone)}), "yn");
        const int next = VORN_CreatePointTree();
        QCOMPARE(next, gone + 1);
        QVERIFY(VORN_DeletePointTree(next));
        void *cursor = &cursor;
        ptTreeQueryResult hit;
        Hits hits(2);
        const QPointF place;
        QCOMPARE(answers({VORN_AddToPointTree(gone, place, 1, kNone),
                          VORN_RemoveFromPointTree(gone, place, 1),
                          VORN_GetPointTreeFirstNearestNeighbor(gone, place, {}, hit, cursor),
                          VORN_GetPointTreeNextNearestNeighbor(gone, {}, hit, cursor),
                          VORN_GetPointTreeNearestNeighbors(gone, place, 1, {}, hits),
                          VORN_GetPointTreeRangeNeighbors(gone, place, 1, {}, hits),
                          VORN_QueryPointTreeWithRect(gone, QRectF(0, 0, 1, 1), hits),
                          VORN_QueryPointTreeWithPolygon(gone, 0, 0, 0, hits)}),
                 "nnnnnnnn");
        VORN_DoneWithPointTreeNearestNeighbors(gone, cursor);
        QCOMPARE(hits.size(), 2);
        QCOMPARE(cursor, &cursor);
    }

    void badInputIsRefused()
    {
        TestModel model;
        const double nan = std::numeric_limits<double>::quiet_NaN();
        QCOMPARE(VORN_CreatePointTreeFromPoints({}, kNone), -1);
        QCOMPARE(VORN_CreatePointTreeFromPoints({{{1, nan}, 1}}, kNone), -1);
        QCOMPARE(VORN_CreatePointTreeFromPoints({{{1, 1}, 1}}, {nan, 0, 0, 1}), -1);
        QCOMPARE(VORN_CreatePointTreeFromCentroids(99, 5, kNone), -1);
        QVERIFY(VORN_StartNewVectorGeography(QRectF(0, 0, 9, 9), 0, 10, -1));
        const auto chain = static_cast<unsigned int>(VORN_CreateNewObjectChain());
        QVERIFY(VORN_AddLineToChain(chain, {{QPointF(0, 0), QPointF(1, 1)}}, interval("[0, 10]")));
        const int lines = VORN_FinishVectorGeography("lines", QString(), TF_Integer);
        QCOMPARE(VORN_CreatePointTreeFromCentroids(lines, 5, kNone), -1);
        const int tree = VORN_CreatePointTreeFromPoints({{{1, 1}, 1}}, kNone);
        QVERIFY(!VORN_AddToPointTree(tree, QPointF(nan, 0), 1, kNone));
        QVERIFY(VORN_DeletePointTree(tree));
    }
};

QTEST_GUILESS_MAIN(TestPointTrees)
#include "tst_PointTrees.moc"
