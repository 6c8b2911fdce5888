// SPDX-License-Identifier: MIT
// The public queries on objects: indices, distances and areas of what the geometry library finds.
#include <algorithm>
#include <limits>
#include "datainterface/GeographyAPI.h"
#include "datainterface/MVectorData.h"
#include "datainterface/RasterAPI.h"
#include "fennimark/FMPolygon.h"
#include "fennimark/FMShapes.h"
#include "fennimark/Fennims.h"
#include "support/checks.h"
#include "support/model.h"
#include "support/support.h"

namespace {

using Objects = QVector<unsigned int>;
using Rings = QList<QVector<QPointF>>;
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinite = std::numeric_limits<double>::infinity();

const QVector<QPointF> kSquare{{0, 0}, {4, 0}, {4, 4}, {0, 4}};
const QVector<QPointF> kBowTie{{0, 0}, {4, 4}, {4, 0}, {0, 4}};

Objects sorted(Objects objects)
{
    std::sort(objects.begin(), objects.end());
    return objects;
}

/// A handle for a scope.
struct Handle {
    Handle(int geography, unsigned int index, qint64 time = 5)
        : object(VORN_GetObject(geography, index, time))
    {
    }
    ~Handle() { VORN_ReturnObject(object); }
    Q_DISABLE_COPY(Handle)
    const VORN_Object object;
};

/// Six points at (i, 0) before 10 and at (i, 5) until 20, of which the first and the fourth are
/// gone.
int addMovingPoints(TestModel &model)
{
    VORN_StartNewVectorGeography(QRectF(0, 0, 40, 40), 0, 30, -1);
    for (int i = 0; i < 6; ++i) {
        const auto chain = static_cast<unsigned int>(VORN_CreateNewObjectChain());
        VORN_AddPointToChain(chain, QPointF(i, 0), {0, 10, true, false});
        VORN_AddPointToChain(chain, QPointF(i, 5), {10, 20, true, true});
    }
    const int id = VORN_FinishVectorGeography("moving", QString(), TF_Integer);
    model.vectorData(id).RemoveObjects({0, 3});
    return id;
}

} // namespace

class TestGeographyQueries : public QObject {
    Q_OBJECT
private Q_SLOTS:
    // The geometry library tests which records are found; here the records become object indices.
    void queriesAnswerWithObjectIndices()
    {
        TestModel model;
        const int id = addMovingPoints(model);
        Objects found;
        const auto told = [&found](bool isAnswered) {
            return isAnswered ? sorted(found) : Objects{99};
        };
        const QRectF low(1.5, -1, 3, 2);
        QCOMPARE(told(VORN_RectQuery(id, low, 5, found)), (Objects{1, 2}));
        QCOMPARE(told(VORN_RectQuery(id, low, 15, found)), Objects());
        QCOMPARE(told(VORN_MBRQuery(id, low.translated(0, 5), 15, found)), (Objects{1, 2}));
        QCOMPARE(told(VORN_CircleQuery(id, QPointF(4, 0), 1, 5, found)), (Objects{2, 3}));
        // An object once for each of its geometries.
        QCOMPARE(told(VORN_RectTimeQuery(id, QRectF(1.5, -1, 3, 9), 0, 20, found)),
                 (Objects{1, 1, 2, 2}));
        QCOMPARE(told(VORN_RectTimeQuery(id, QRectF(1.5, -1, 3, 9), 0, 9, found)), (Objects{1, 2}));
        QCOMPARE(VORN_GetObjectCount(id, 5), 4U);
        QCOMPARE(VORN_GetObjectCount(id, 25), 0U);
        QCOMPARE(answers({VORN_ObjectExistsAtTime(id, 3, 5), VORN_ObjectExistsAtTime(id, 3, 25),
                          VORN_ObjectExistsAtTime(id, 4, 5)}),
                 "ynn");
        QCOMPARE(told(VORN_GetExistingObjects(id, 25, found)), Objects());
        QVERIFY(!VORN_GetExistingObjects(99, 5, found) && !VORN_GetExistingObjects(-1, 5, found));
        const int windows = addPolygons({kSquare, {{9, 9}, {10, 9}, {10, 10}}});
        model.vectorData(windows).RemoveObjects({1});
        QCOMPARE(told(VORN_ObjectQuery(windows, 0, id, 5, found)), (Objects{0, 1, 2}));
        QCOMPARE(told(VORN_ObjectQuery(id, 3, windows, 5, found)), Objects());
        QCOMPARE(told(VORN_ObjectQuery(id, 2, windows, 5, found)), Objects{0});
        QVERIFY(!VORN_ObjectQuery(windows, 1, id, 5, found));
        QCOMPARE(found, Objects{0});
    }

    // The arrays against the same objects one by one, at two times and after a removal.
    void allShapesAreThoseOfTheObjects()
    {
        TestModel model;
        const int points = addMovingPoints(model);
        FMShapes shapes;
        for (const qint64 time : {5, 15, 25}) {
            const InCase inCase(time);
            QVERIFY(VORN_GetAllShapes(points, time, shapes));
            QCOMPARE(shapes.ids.size(), std::size_t(VORN_GetObjectCount(points, time)));
            QCOMPARE(shapes.vertices.size(), shapes.ids.size());
            for (std::size_t i = 0; i < shapes.ids.size(); ++i) {
                QPointF place(kNan, kNan);
                VORN_GetPointVertex(points, unsigned(shapes.ids[i]), time, place);
                QCOMPARE(shapes.vertices[i], place);
            }
        }
        const QVector<QPointF> hole{{1, 1}, {2, 1}, {2, 2}};
        VORN_StartNewVectorGeography(QRectF(0, 0, 9, 9), 0, 9, -1);
        for (const auto &rings :
             {QList<QList<QPointF>>{kSquare.toList(), hole.toList()}, {kBowTie.toList()}})
            VORN_AddPolygonToChain(unsigned(VORN_CreateNewObjectChain()), rings,
                                   {0, 9, true, true});
        const int polygons = VORN_FinishVectorGeography("areas", QString(), TF_Integer);
        QVERIFY(VORN_GetAllShapes(polygons, 5, shapes));
        QCOMPARE(shapes.ids.size(), std::size_t(2));
        for (std::size_t i = 0; i < 2; ++i) {
            const auto object = unsigned(shapes.ids[i]);
            Rings rings;
            for (quint32 part = shapes.firstPart[i]; part < shapes.firstPart[i + 1]; ++part)
                rings.append(QVector<QPointF>(shapes.vertices.data() + shapes.partStart[part],
                                              shapes.vertices.data() + shapes.partStart[part + 1]));
            Rings expected;
            const Handle handle(polygons, object);
            QVERIFY(VORN_GetPolygonVertices(handle.object, expected));
            QCOMPARE(rings, expected);
            const Rect2D &box = shapes.boxes[i];
            QRectF bounds;
            VORN_GetObjectBounds(polygons, object, 5, bounds);
            QCOMPARE(QRectF(QPointF(box.xMin, box.yMin), QPointF(box.xMax, box.yMax)), bounds);
        }
        QVERIFY(VORN_GetAllShapes(polygons, 99, shapes)); // nothing exists
        QCOMPARE(shapes.ids.size(), std::size_t(0));
        shapes.ids = {7};
        QVERIFY(!VORN_GetAllShapes(addGrid(2, 2), 5, shapes));
        QVERIFY(!VORN_GetAllShapes(99, 5, shapes));
        QCOMPARE(shapes.ids, std::vector<int>{7});
    }

    void neighborsComeWithDistanceAndAngle()
    {
        TestModel model;
        const int id = addMovingPoints(model);
        const auto text = [](const QVector<neighborDatum> &neighbors) {
            QStringList parts;
            for (const neighborDatum &one : neighbors)
                parts.append(QString("%1: %2 to %3")
                                 .arg(one.id)
                                 .arg(double(one.distance))
                                 .arg(double(one.angle)));
            return parts.join(", ");
        };
        QVector<neighborDatum> near;
        QVERIFY(VORN_NearestNeighborQuery(id, QPointF(2, 1), 15, 2, near));
        QCOMPARE(text(near), QString("1: 16 to 1.5708, 0: 17 to 1.81578"));
        QVector<QVector<neighborDatum>> all;
        QVERIFY(VORN_NearestNeighborObjectQuery(id, id, 5, 2, all, true));
        QCOMPARE(all.size(), 4);
        QCOMPARE(text(all[2]), QString("2: 0 to 0, 3: 1 to 0"));
        QCOMPARE(text(all[3]), QString("3: 0 to 0, 2: 1 to 3.14159"));
        const QVector<QPointF> around{{4.5, -1}, {5.5, -1}, {5.5, 1}, {4.5, 1}};
        const int areas = addPolygons({around, {{90, 90}, {91, 90}, {91, 91}}});
        QVERIFY(VORN_RangeObjectQuery(areas, id, 5, 1, all,
                                      false)); // no angle between an area and a point
        QCOMPARE(all.size(), 2);
        QCOMPARE(text(all[0]), QString("3: 0 to 0, 2: 0.25 to 0"));
        QCOMPARE(text(all[1]), QString());
        QVERIFY(VORN_RangeObjectQuery(areas, id, 5, kInfinite, all, false));
        QCOMPARE(all[1].size(), 4);
    }

    void polygonQueriesMeasureWhatTheyShare()
    {
        TestModel model;
        const int points = addMovingPoints(model);
        const int id = addPolygons({kSquare, kBowTie, {{50, 50}, {51, 50}, {51, 51}}});
        model.vectorData(id).RemoveObjects({2});
        const Handle square(id, 0);
        const Handle bowTie(id, 1);
        Objects found;
        QVector<double> overlap{-7.0};
        QVERIFY(VORN_PolygonQuery(square.object, points, 5, found, &overlap));
        QCOMPARE(sorted(found), (Objects{0, 1, 2}));
        QVERIFY(
            VORN_PolygonQuery(bowTie.object, id, 5, found, &overlap)); // not simple: not measured
        QCOMPARE(sorted(found), (Objects{0, 1}));
        QCOMPARE(overlap, QVector<double>{-7.0});
        QVERIFY(VORN_PolygonQuery(square.object, id, 5, found, &overlap));
        QCOMPARE(overlap[found.indexOf(0)], 16.0);
        QCOMPARE(overlap[found.indexOf(1)], 8.0);
    }

    // Squares 0 1 / 2 3 / 4 5 once the first two rows are gone: diagonals are a step for queens
    // only.
    void ringsAreStepsOfAWalk()
    {
        TestModel model;
        Rings squares;
        for (int i = 0; i < 10; ++i) {
            const QRectF r(QPointF(i % 2, i / 2), QSizeF(1, 1));
            squares.append({r.topLeft(), r.topRight(), r.bottomRight(), r.bottomLeft()});
        }
        const int id = addPolygons(squares);
        model.vectorData(id).RemoveObjects({0, 1, 2, 3});
        QVector<Objects> rings;
        QVERIFY(VORN_GetPolygonNeighborRings(id, 0, 5, 3, true, rings));
        QCOMPARE(rings, (QVector<Objects>{{1, 2, 3}, {4, 5}, {}}));
        QVERIFY(VORN_GetPolygonNeighborRings(id, 0, 5, 3, false, rings));
        QCOMPARE(rings, (QVector<Objects>{{1, 2}, {3, 4}, {5}}));
        for (const int count : {0, -3})
            QVERIFY(!VORN_GetPolygonNeighborRings(id, 0, 5, count, true, rings));
        QVERIFY(!VORN_GetPolygonNeighborRings(id, 0, 11, 2, true, rings));
        QVERIFY(!VORN_GetPolygonNeighborRings(addPoints(3), 0, 5, 2, true, rings));
        QCOMPARE(rings.size(), 3);
    }

    void timesOfObjects()
    {
        TestModel model;
        VORN_StartNewVectorGeography(QRectF(0, 0, 10, 10), 0, 100, -1);
        for (const char *spans : {"[0, 10) [10, 10] (10, 40]", "[20, 60)"}) {
            const auto chain = static_cast<unsigned int>(VORN_CreateNewObjectChain());
            for (const TimeStamp &span : stamps(spans))
                QVERIFY(VORN_AddPointToChain(chain, QPointF(1, double(span.startTime)), span));
        }
        const int id = VORN_FinishVectorGeography("g", QString(), TF_Integer);
        QVector<Interval> intervals;
        QVERIFY(VORN_GetObservationTimes(id, 0, intervals));
        QCOMPARE(intervals.size(), 3);
        QCOMPARE(intervals[1], interval("[10, 10]"));
        QVERIFY(VORN_GetAllObjectTimes(id, intervals));
        QCOMPARE(intervals.size(), 5);
        QCOMPARE(intervals[3], interval("[20, 40]"));
        const auto agree = [id] {
            for (const qint64 time : {-1, 0, 10, 15, 20, 50, 60}) {
                Objects alone;
                for (const unsigned object : {0U, 1U})
                    if (VORN_ObjectExistsAtTime(id, object, time))
                        alone.append(object);
                Objects together{7};
                QVERIFY(VORN_GetExistingObjects(id, time, together));
                QCOMPARE(together, alone);
            }
        };
        agree();
        // The geometry can lose an object behind the geography's back.
        Fennims *fennims = model.vectorData(id).GetFennims();
        fennims->RemoveChain(fennims->GetChainById(model.vectorData(id).GetFennimId(1)));
        QCOMPARE(raisedText([&] { VORN_GetObservationTimes(id, 1, intervals); }),
                 QStringLiteral("Invalid object chain"));
        QCOMPARE(answers({VORN_ObjectExistsAtTime(id, 1, 30), VORN_GetObject(id, 1, 30).record}),
                 "nn");
        agree();
    }

    void gridsAnswerByCell()
    {
        TestModel model;
        const int grid = VORN_CreateNewRasterGeography("grid", 8, 10, QRectF(0, 0, 10, 8),
                                                       interval("[3, 9)"), TF_Integer, "", "");
        QVector<Interval> intervals;
        QVERIFY(VORN_GetAllObjectTimes(grid, intervals));
        QCOMPARE(intervals, QVector<Interval>{interval("[3, 9)")});
        QCOMPARE(VORN_GetObjectCount(grid, 77), 80U);
        const int id = addPolygons({{{1, 1}, {7, 2}, {5, 7}}, {{50, 50}, {51, 50}, {51, 51}}});
        const Handle window(id, 0);
        const auto cellsOf = [](const RasterPixels &pixels) {
            Objects cells;
            for (const auto &pixel : pixels)
                cells.append(pixel.second * 10 + pixel.first);
            return cells;
        };
        Objects found;
        RasterPixels pixels;
        QVector<double> overlap;
        QVERIFY(VORN_CircleQuery(grid, QPointF(4, 4), 2.6, 5, found));
        QCOMPARE(answers({VORN_QueryRasterWithCircle(grid, QPointF(4, 4), 2.6, pixels),
                          pixels.size() > 9}),
                 "yy");
        QCOMPARE(found, cellsOf(pixels));
        QVERIFY(VORN_PolygonQuery(window.object, grid, 5, found, &overlap));
        QCOMPARE(
            answers({VORN_GetPixelCentersInPolygon(grid, id, 0, 5, pixels), pixels.size() > 9}),
            "yy");
        QCOMPARE(found, cellsOf(pixels));
        QVERIFY(!VORN_PolygonQuery(Handle(id, 1).object, grid, 5, found, &overlap));
        QVERIFY(!VORN_CircleQuery(grid, QPointF(50, 50), 1, 5, found));
        QVERIFY(!VORN_RectQuery(grid, QRectF(0, 0, 5, 5), 5, found));
        QCOMPARE(found, cellsOf(pixels));
        QVERIFY(overlap.isEmpty());
    }

    void badPolygonsAreRefused()
    {
        TestModel model;
        const int id = addPolygons({kSquare, kBowTie, {{4, 0}, {8, 0}, {8, 4}, {4, 4}}});
        const Handle square(id, 0);
        const Handle bowTie(id, 1);
        const Handle beside(id, 2);
        const Handle point(addPoints(3), 1);
        const VORN_Object none;
        VORN_ReturnObject(none);
        Rings rings;
        QList<QLineF> border;
        QVector<QPointF> points;
        QPointF place;
        double area = 5.0;
        for (const VORN_Object &bad : {none, point.object, bowTie.object}) {
            QVERIFY(!VORN_GetPolygonArea(bad, area));
            QCOMPARE(area, 0.0);
            area = 5.0;
            QCOMPARE(answers({VORN_GetPolygonIntersection(square.object, bad, rings, area),
                              VORN_GetPolygonIntersection(bad, square.object, rings, area),
                              VORN_GetPolygonRectIntersection(bad, QRectF(0, 0, 1, 1), rings, area),
                              VORN_GetPolygonUnion({square.object, bad}, rings)}),
                     "nnnn");
        }
        for (const VORN_Object &bad : {none, point.object}) {
            QCOMPARE(
                answers({VORN_GetPolygonUnion({bad}, rings), VORN_GetPolygonVertices(bad, rings),
                         VORN_GetCommonPolygonBorder(square.object, bad, border),
                         VORN_GetCommonPolygonBorder(bad, square.object, border),
                         VORN_GetRandomPointsInPolygon(bad, 3, points),
                         VORN_GetPolygonCentroid(bad, place)}),
                "nnnnnn");
            QCOMPARE(raisedText([&] {
                         Objects found;
                         VORN_PolygonQuery(bad, id, 5, found, nullptr);
                     }),
                     QStringLiteral("Invalid object type"));
        }
        QVERIFY(!VORN_GetPolygonUnion({}, rings));
        for (const int count : {0, -1})
            QVERIFY(!VORN_GetRandomPointsInPolygon(square.object, count, points));
        for (const QRectF &rect :
             {QRectF(1, 1, 0, 5), QRectF(kNan, 0, 1, 1), QRectF(0, 0, kInfinite, 1)})
            QVERIFY(!VORN_GetPolygonRectIntersection(square.object, rect, rings, area));
        QCOMPARE(answers({rings.isEmpty(), points.isEmpty()}), "yy");
        QCOMPARE(area, 5.0);
        QVERIFY(VORN_GetPolygonRectIntersection(square.object, QRectF(3, 3, 9, 9), rings, area));
        QCOMPARE(area, 1.0);
        QVERIFY(VORN_GetPolygonIntersection(square.object, square.object, rings, area));
        QCOMPARE(area, FMPolygon(rings.value(0)).GetArea());
        QVERIFY(VORN_GetPolygonUnion({square.object, beside.object}, rings));
        QCOMPARE(rings.size(), 1);
        QCOMPARE(FMPolygon(rings[0]).GetArea(), 32.0);
        QVERIFY(VORN_GetCommonPolygonBorder(square.object, beside.object, border));
        QCOMPARE(border.size(), 1);
        QCOMPARE(border[0].length(), 4.0);
        // What a polygon that is not simple still gives.
        QVERIFY(VORN_GetPolygonUnion({bowTie.object}, rings));
        QCOMPARE(rings, Rings{kBowTie});
        QVERIFY(VORN_GetPolygonCentroid(bowTie.object, place));
        QCOMPARE(place, QPointF(2, 2));
        QVERIFY(VORN_GetRandomPointsInPolygon(bowTie.object, 50, points));
        QCOMPARE(points.size(), 50);
        for (const QPointF &drawn : qAsConst(points))
            QVERIFY(FMPolygon(kBowTie).ContainsPoint(drawn));
    }

    void badPlacesAndCountsAreRefused()
    {
        TestModel model;
        const int id = addPolygons({kSquare, kBowTie});
        Objects found;
        for (const QRectF &rect :
             {QRectF(3, 3, -2, -2), QRectF(kNan, 0, 9, 9), QRectF(0, 0, kNan, 9)}) {
            QCOMPARE(answers({VORN_RectQuery(id, rect, 5, found), found.isEmpty(),
                              VORN_MBRQuery(id, rect, 5, found), found.isEmpty(),
                              VORN_RectTimeQuery(id, rect, 0, 9, found), found.isEmpty()}),
                     "yyyyyy");
        }
        QCOMPARE(
            answers({VORN_RectTimeQuery(id, QRectF(0, 0, 9, 9), 9, 0, found), found.isEmpty()}),
            "yy");
        for (const double radius : {-1.0, kNan, kInfinite}) {
            const InCase inRadius(radius);
            QVERIFY(VORN_CircleQuery(id, QPointF(1, 1), radius, 5, found));
            QCOMPARE(found.size(), radius == kInfinite ? 2 : 0);
        }
        QVector<neighborDatum> neighbors(3);
        QVector<QVector<neighborDatum>> all(3);
        for (const int count : {0, -1}) {
            const InCase inCount(count);
            QVERIFY(!VORN_NearestNeighborQuery(id, QPointF(1, 1), 5, count, neighbors));
            QVERIFY(!VORN_NearestNeighborObjectQuery(id, id, 5, count, all, false));
        }
        for (const double range : {-1.0, kNan})
            QVERIFY(!VORN_RangeObjectQuery(id, id, 5, range, all, false));
        QVERIFY(!VORN_NearestNeighborQuery(id, QPointF(kNan, 1), 5, 1, neighbors));
        QVERIFY(
            !VORN_NearestNeighborQuery(id, QPointF(1, 1), 11, 1, neighbors)); // nothing is there
        QVERIFY(VORN_NearestNeighborObjectQuery(id, -5, 11, 1, all, false));  // nobody asks
        QVERIFY(!VORN_NearestNeighborObjectQuery(id, -5, 5, 1, all, false));
        QCOMPARE(neighbors.size(), 3);
        QCOMPARE(all.size(), 3);
        QVERIFY(VORN_NearestNeighborQuery(id, QPointF(7, 8), 5, 99, neighbors));
        QCOMPARE(neighbors.size(), 2);
        QCOMPARE(neighbors[1].distance, 25.0F); // squared: 3 and 4 away
    }
};

QTEST_GUILESS_MAIN(TestGeographyQueries)
#include "tst_GeographyQueries.moc"
