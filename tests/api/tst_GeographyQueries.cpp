// SPDX-License-Identifier: MIT
// The public queries on objects, beside a plain walk over the same objects.
#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <random>
#include "datainterface/GeographyAPI.h"
#include "datainterface/MVectorData.h"
#include "datainterface/RasterAPI.h"
#include "fennimark/FMLine.h"
#include "fennimark/FMPoint.h"
#include "fennimark/FMPolygon.h"
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

/// A random geography on a coarse lattice, so that much touches, and the plain list of what it
/// holds. Some objects are removed again: object indices and chain ids are not the same.
class Twin {
public:
    struct Observation {
        Interval span;
        std::shared_ptr<FMObject> shape;
    };

    Twin(TestModel &model, int type, unsigned seed) : mType(type), mRandom(walkSeed(seed))
    {
        VORN_StartNewVectorGeography(QRectF(0, 0, 40, 40), 0, 30, -1);
        for (int i = 0; i < 60; ++i) {
            const auto chain = static_cast<unsigned int>(VORN_CreateNewObjectChain());
            objects.append(QVector<Observation>());
            for (int start = number(0, 9); start < 28; start += number(6, 15))
                addObservation(chain, {start, start + number(1, 5), true, number(0, 1) == 1});
        }
        id = VORN_FinishVectorGeography("random", QString(), TF_Integer);
        model.vectorData(id).RemoveObjects({0, 7, 8, 31, 59});
        for (const int removed : {59, 31, 8, 7, 0})
            objects.removeAt(removed);
    }

    int number(int low, int high) { return std::uniform_int_distribution<int>(low, high)(mRandom); }
    QPointF place() { return QPointF(number(0, 40), number(0, 40)); }

    /// The object's geometry at a time; null when it does not exist then.
    const FMObject *shape(int object, qint64 time) const
    {
        for (const Observation &one : objects[object]) {
            if (TimeStamp(one.span).contains(time))
                return one.shape.get();
        }
        return nullptr;
    }
    template <class Hits> Objects found(qint64 time, Hits hits) const
    {
        Objects all;
        for (int i = 0; i < objects.size(); ++i) {
            const FMObject *one = shape(i, time);
            if (one && hits(*one))
                all.append(static_cast<unsigned int>(i));
        }
        return all;
    }
    /// Squared, of all objects of a time, ascending.
    QVector<float> distances(qint64 time, const TreeObject *from) const
    {
        QVector<float> all;
        for (const unsigned int i : found(time, [](const FMObject &) { return true; }))
            all.append(static_cast<float>(shape(int(i), time)->SqrDistance(from)));
        std::sort(all.begin(), all.end());
        return all;
    }

    int id = -1;
    QVector<QVector<Observation>> objects;

private:
    void addObservation(unsigned int chain, const Interval &span)
    {
        const QPointF at = place();
        QVector<QPointF> ring;
        for (int i = 0, count = number(3, 7); i < count; ++i)
            ring.append(at + QPointF(number(-4, 4), number(-4, 4))); // not simple at times
        bool isAdded = false; // not with fewer than three places
        std::shared_ptr<FMObject> shape;
        if (mType == GeoProps::Points) {
            shape = std::make_shared<FMPoint>(at);
            isAdded = VORN_AddPointToChain(chain, at, span);
        } else if (mType == GeoProps::Lines) {
            shape = std::make_shared<FMLine>(Rings{ring});
            isAdded = VORN_AddLineToChain(chain, {ring.toList()}, span);
        } else {
            shape = std::make_shared<FMPolygon>(ring);
            isAdded = VORN_AddPolygonToChain(chain, ring.toList(), span);
        }
        if (isAdded)
            objects.last().append({span, shape});
    }

    const int mType;
    std::mt19937 mRandom;
};

QVector<float> distancesOf(const QVector<neighborDatum> &neighbors)
{
    QVector<float> all;
    for (const neighborDatum &one : neighbors)
        all.append(one.distance);
    return all;
}

} // namespace

class TestGeographyQueries : public QObject {
    Q_OBJECT
    static void compareQueries(int type);
    static void compareNeighbors(int type);
    static void comparePolygonQueries(int type);

private Q_SLOTS:
    void resultsAgreeWithAWalk();
    void ringsAreStepsOfAWalk();
    void timesOfObjects();
    void gridsAnswerByCell();
    void badPolygonsAreRefused();
    void badPlacesAndCountsAreRefused();
};

void TestGeographyQueries::resultsAgreeWithAWalk()
{
    for (const int type : {GeoProps::Points, GeoProps::Lines, GeoProps::Polygons}) {
        const InCase inType(type);
        compareQueries(type);
        compareNeighbors(type);
        comparePolygonQueries(type);
    }
}

void TestGeographyQueries::compareQueries(int type)
{
    TestModel model;
    Twin twin(model, type, 11);
    const Twin other(model, GeoProps::Polygons, 12);
    for (int round = 0; round < 60; ++round) {
        const qint64 time = twin.number(-1, 34);
        const QPointF at = twin.place();
        const int size = twin.number(0, 9);
        const QRectF rect(at, QSizeF(size, 9 - size));
        const Rect2D box{rect.left(), rect.right(), rect.top(), rect.bottom()};
        const auto meetsBox = [&](const FMObject &shape) {
            const Rect2D b = shape.GetBounds();
            return b.xMin <= box.xMax && box.xMin <= b.xMax && b.yMin <= box.yMax
                   && box.yMin <= b.yMax;
        };
        const auto isIn = [&](const FMObject &shape) { return shape.OverlapsRect(box); };
        const auto isNear = [&](const FMObject &shape) { return shape.OverlapsCircle(at, size); };
        Objects found;
        QVERIFY(VORN_RectQuery(twin.id, rect, time, found));
        QCOMPARE(sorted(found), twin.found(time, isIn));
        QVERIFY(VORN_CircleQuery(twin.id, at, size, time, found));
        QCOMPARE(sorted(found), twin.found(time, isNear));
        QVERIFY(VORN_MBRQuery(twin.id, rect, time, found));
        QCOMPARE(sorted(found), twin.found(time, meetsBox));
        QVERIFY(VORN_RectTimeQuery(twin.id, rect, time, time + size, found));
        Objects expected; // an object once for each of its geometries
        for (int i = 0; i < twin.objects.size(); ++i) {
            for (const auto &one : twin.objects[i]) {
                const TimeStamp span(time, time + size, true, true);
                if (TimeStamp(one.span).overlaps(span) && meetsBox(*one.shape))
                    expected.append(static_cast<unsigned int>(i));
            }
        }
        QCOMPARE(sorted(found), expected);
        const Objects all = twin.found(time, [](const FMObject &) { return true; });
        QCOMPARE(VORN_GetObjectCount(twin.id, time), static_cast<unsigned int>(all.size()));
        const auto object = static_cast<unsigned int>(twin.number(0, twin.objects.size() - 1));
        const FMObject *shape = twin.shape(int(object), time);
        QCOMPARE(VORN_ObjectExistsAtTime(twin.id, object, time), shape != nullptr);
        found = {77};
        QCOMPARE(VORN_ObjectQuery(twin.id, object, other.id, time, found), shape != nullptr);
        const auto meetsShape = [shape](const FMObject &one) { return shape->Overlaps(one); };
        QCOMPARE(sorted(found), shape ? other.found(time, meetsShape) : Objects{77});
    }
}

void TestGeographyQueries::compareNeighbors(int type)
{
    TestModel model;
    Twin from(model, type, 21);
    const Twin to(model, GeoProps::Points, 22);
    for (int round = 0; round < 20; ++round) {
        const qint64 time = from.number(2, 25);
        const int count = from.number(1, 70);
        const double range = round == 0 ? kInfinite : from.number(0, 15);
        const FMPoint place(from.place());
        QVector<neighborDatum> nearest;
        QVERIFY(VORN_NearestNeighborQuery(to.id, QPointF(place.x, place.y), time, count, nearest));
        QCOMPARE(distancesOf(nearest), to.distances(time, &place).mid(0, count));
        for (const neighborDatum &one : qAsConst(nearest)) {
            const auto &point = dynamic_cast<const FMPoint &>(*to.shape(one.id, time));
            const double dx = point.x - place.x;
            const double dy = point.y - place.y;
            QCOMPARE(one.angle, static_cast<float>(std::atan2(dy, dx)));
            QCOMPARE(one.distance, static_cast<float>(dx * dx + dy * dy));
        }
        QVector<QVector<neighborDatum>> byCount;
        QVector<QVector<neighborDatum>> byRange;
        QVERIFY(VORN_NearestNeighborObjectQuery(from.id, to.id, time, count, byCount, true));
        QVERIFY(VORN_RangeObjectQuery(from.id, to.id, time, range, byRange, false));
        QCOMPARE(byCount.size(), from.objects.size());
        QCOMPARE(byRange.size(), from.objects.size());
        for (int i = 0; i < from.objects.size(); ++i) {
            const TreeObject *ego = from.shape(i, time);
            QVector<float> all = ego ? to.distances(time, ego) : QVector<float>();
            QCOMPARE(distancesOf(byCount[i]), all.mid(0, count));
            const auto isFar = [range](float distance) { return distance > range * range; };
            all.erase(std::find_if(all.begin(), all.end(), isFar), all.end());
            QCOMPARE(distancesOf(byRange[i]), all);
            for (const neighborDatum &one : qAsConst(byRange[i])) {
                const TreeObject *target = to.shape(one.id, time);
                QCOMPARE(one.distance, static_cast<float>(ego->SqrDistance(target)));
                const auto *a = dynamic_cast<const FMPoint *>(ego);
                const auto *b = dynamic_cast<const FMPoint *>(target);
                QCOMPARE(one.angle, a ? float(std::atan2(b->y - a->y, b->x - a->x)) : 0.0F);
            }
        }
    }
}

// Overlaps are measured against the public intersection, where both polygons are simple.
void TestGeographyQueries::comparePolygonQueries(int type)
{
    TestModel model;
    Twin twin(model, type, 31);
    const Rings windows{{{5, 5}, {30, 8}, {25, 33}, {8, 20}}, {{5, 5}, {30, 30}, {30, 5}, {5, 30}}};
    const int id = addPolygons(windows);
    int measured = 0;
    for (int round = 0; round < 40; ++round) {
        const qint64 time = twin.number(0, 28);
        const bool isSimple = round % 2 == 0;
        const Handle query(id, isSimple ? 0 : 1);
        const FMPolygon polygon(windows[isSimple ? 0 : 1]);
        Objects found;
        QVector<double> overlap{-7.0};
        QVERIFY(VORN_PolygonQuery(query.object, twin.id, time, found, &overlap));
        const auto meets = [&](const FMObject &shape) { return polygon.Overlaps(shape); };
        QCOMPARE(sorted(found), twin.found(time, meets));
        if (type != GeoProps::Polygons || !isSimple) {
            QCOMPARE(overlap, QVector<double>{-7.0});
            continue;
        }
        QCOMPARE(overlap.size(), found.size());
        for (int i = 0; i < found.size(); ++i) {
            const Handle hit(twin.id, found[i], time);
            Rings rings;
            double area = 0.0;
            if (!VORN_GetPolygonIntersection(query.object, hit.object, rings, area))
                continue;
            QVERIFY(std::fabs(overlap[i] - area) <= 1e-9 * (1.0 + area));
            ++measured;
        }
    }
    QVERIFY(type != GeoProps::Polygons || measured > 50);
}

// Squares 0 1 / 2 3 / 4 5 once the first two rows are gone: diagonals are a step for queens only.
void TestGeographyQueries::ringsAreStepsOfAWalk()
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

void TestGeographyQueries::timesOfObjects()
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
    // The geometry can lose an object behind the geography's back.
    Fennims *fennims = model.vectorData(id).GetFennims();
    fennims->RemoveChain(fennims->GetChainById(model.vectorData(id).GetFennimId(1)));
    QCOMPARE(raisedText([&] { VORN_GetObservationTimes(id, 1, intervals); }),
             QStringLiteral("Invalid object chain"));
    QCOMPARE(answers({VORN_ObjectExistsAtTime(id, 1, 30), VORN_GetObject(id, 1, 30).record}), "nn");
}

void TestGeographyQueries::gridsAnswerByCell()
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
    QCOMPARE(
        answers({VORN_QueryRasterWithCircle(grid, QPointF(4, 4), 2.6, pixels), pixels.size() > 9}),
        "yy");
    QCOMPARE(found, cellsOf(pixels));
    QVERIFY(VORN_PolygonQuery(window.object, grid, 5, found, &overlap));
    QCOMPARE(answers({VORN_GetPixelCentersInPolygon(grid, id, 0, 5, pixels), pixels.size() > 9}),
             "yy");
    QCOMPARE(found, cellsOf(pixels));
    QVERIFY(!VORN_PolygonQuery(Handle(id, 1).object, grid, 5, found, &overlap));
    QVERIFY(!VORN_CircleQuery(grid, QPointF(50, 50), 1, 5, found));
    QVERIFY(!VORN_RectQuery(grid, QRectF(0, 0, 5, 5), 5, found));
    QCOMPARE(found, cellsOf(pixels));
    QVERIFY(overlap.isEmpty());
}

void TestGeographyQueries::badPolygonsAreRefused()
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
        QCOMPARE(answers({VORN_GetPolygonUnion({bad}, rings), VORN_GetPolygonVertices(bad, rings),
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

void TestGeographyQueries::badPlacesAndCountsAreRefused()
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
    QCOMPARE(answers({VORN_RectTimeQuery(id, QRectF(0, 0, 9, 9), 9, 0, found), found.isEmpty()}),
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
    QVERIFY(!VORN_NearestNeighborQuery(id, QPointF(1, 1), 11, 1, neighbors)); // nothing is there
    QVERIFY(VORN_NearestNeighborObjectQuery(id, -5, 11, 1, all, false));      // nobody asks
    QVERIFY(!VORN_NearestNeighborObjectQuery(id, -5, 5, 1, all, false));
    QCOMPARE(neighbors.size(), 3);
    QCOMPARE(all.size(), 3);
    QVERIFY(VORN_NearestNeighborQuery(id, QPointF(7, 8), 5, 99, neighbors));
    QCOMPARE(distancesOf(neighbors), (QVector<float>{25, 25})); // squared: 3 and 4 away
}

QTEST_GUILESS_MAIN(TestGeographyQueries)
#include "tst_GeographyQueries.moc"
