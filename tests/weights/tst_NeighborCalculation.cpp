// SPDX-License-Identifier: MIT
// Neighbours and weights beside what plain loops over all pairs find, on changing random maps.
#include <QApplication>
#include <QProgressDialog>
#include <QTimer>
#include <cmath>
#include <limits>
#include <map>
#include <random>
#include "datainterface/AdjacencySet.h"
#include "datainterface/GeographyAPI.h"
#include "datainterface/MRasterData.h"
#include "datainterface/MVectorData.h"
#include "datainterface/MissingData.h"
#include "datainterface/RasterAPI.h"
#include "datainterface/WeightsAPI.h"
#include "support/checks.h"
#include "support/model.h"
#include "support/support.h"

namespace {

using List = QVector<neighborDatum>;
constexpr int kTimes = 12;
constexpr double kNoNumber = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinite = std::numeric_limits<double>::infinity();

// Where an object stands, and when: from the first time up to, not including, the second.
struct Placed {
    int x;
    int y;
    int from;
    int to;
    bool exists(int t) const { return from <= t && t < to; }
    int squared(const Placed &other) const
    {
        return (x - other.x) * (x - other.x) + (y - other.y) * (y - other.y);
    }
    bool touches(const Placed &other, bool queen) const
    {
        return squared(other) == 1 || (queen && squared(other) == 2);
    }
};
using Map = std::vector<Placed>;

Map randomMap(unsigned seed, int count, int size)
{
    std::mt19937 random(walkSeed(seed));
    const auto draw = [&random](int n) {
        return static_cast<int>(random() % static_cast<unsigned>(n));
    };
    Map map;
    for (int i = 0; i < count; ++i) {
        const int from = draw(3) > 0 ? 0 : draw(kTimes / 2);
        map.push_back(
            {draw(size), draw(size), from, draw(3) > 0 ? kTimes : from + 1 + draw(kTimes / 2)});
    }
    return map;
}

// Squares of a lattice, each place at most once, a third of them not there.
Map randomLattice(unsigned seed, int size)
{
    Map map;
    const Map spans = randomMap(seed, size * size, 9);
    for (int i = 0; i < size * size; ++i)
        if (spans[static_cast<size_t>(i)].x > 2)
            map.push_back({i % size, i / size, spans[static_cast<size_t>(i)].from,
                           spans[static_cast<size_t>(i)].to});
    return map;
}

int addMap(const Map &map, bool isPolygons)
{
    VORN_StartNewVectorGeography(QRectF(0, 0, 20, 20), 0, kTimes, -1);
    for (const Placed &place : map) {
        const auto chain = static_cast<unsigned int>(VORN_CreateNewObjectChain());
        const Interval span{place.from, place.to, true, false};
        const double x = place.x;
        const double y = place.y;
        if (isPolygons)
            VORN_AddPolygonToChain(
                chain, QList<QPointF>{{x, y}, {x + 1, y}, {x + 1, y + 1}, {x, y + 1}}, span);
        else
            VORN_AddPointToChain(chain, QPointF(x, y), span);
    }
    return VORN_FinishVectorGeography(QStringLiteral("map"), QString(), TF_Integer);
}

// The formulas as they are told, over any list.
double rank(const List &list, int i)
{
    int nearer = 0;
    for (const neighborDatum &other : list)
        nearer += other.distance < list[i].distance;
    return 1.0 + nearer;
}

void weighPoints(List &list, int wanted, int type, double numerator, double power)
{
    const int n = list.size();
    std::vector<double> factors(static_cast<size_t>(n), 1.0);
    if (wanted > 0 && n > wanted) {
        int ties = 0;
        for (const neighborDatum &datum : list)
            ties += datum.distance == list.last().distance;
        for (int i = n - ties; i < n; ++i)
            factors[static_cast<size_t>(i)] = 1.0 - static_cast<double>(n - wanted) / ties;
    }
    double sum = 0.0;
    for (double factor : factors)
        sum += factor;
    for (int i = 0; i < n; ++i) {
        const double factor = factors[static_cast<size_t>(i)];
        const double distance = std::sqrt(static_cast<double>(list[i].distance));
        const double weights[] = {factor, factor / sum, 1.0 / rank(list, i),
                                  numerator / (1.0 + std::pow(distance, power))};
        list[i].weight = static_cast<float>(weights[type]);
    }
}

void weighPolygons(List &list, int type)
{
    double borders = 0.0;
    for (const neighborDatum &datum : list)
        borders += static_cast<double>(datum.distance);
    for (neighborDatum &datum : list) {
        const double border = static_cast<double>(datum.distance);
        const double share = borders > 0.0 ? border / borders : 0.0;
        const double weights[] = {1.0, 1.0 / list.size(), 0.0, 0.0, border, share};
        datum.weight = static_cast<float>(weights[type]);
    }
}

List without(const List &list, const VORN_MissingData &missing)
{
    List kept;
    for (const neighborDatum &datum : list)
        if (!missing.isMissing(datum.id))
            kept.append(datum);
    return kept;
}

QString text(const List &list)
{
    QStringList lines;
    for (const neighborDatum &datum : list)
        lines.append(QStringLiteral("%1: %2 at %3, %4")
                         .arg(datum.id)
                         .arg(datum.weight)
                         .arg(datum.angle)
                         .arg(datum.distance));
    return lines.join('\n');
}

List byId(List list)
{
    std::sort(list.begin(), list.end(),
              [](const neighborDatum &a, const neighborDatum &b) { return a.id < b.id; });
    return list;
}

neighborDatum entry(int id, double distance, double angle = 0.0)
{
    return {id, 0.0F, static_cast<float>(angle), static_cast<float>(distance)};
}

List pointNeighbors(const Map &map, size_t ego, int t, int count, double range, bool includeEgo)
{
    List list;
    for (size_t i = 0; i < map.size(); ++i)
        if (map[i].exists(t) && (i != ego || includeEgo))
            list.append(entry(static_cast<int>(i), map[ego].squared(map[i]),
                              std::atan2(map[i].y - map[ego].y, map[i].x - map[ego].x)));
    std::stable_sort(list.begin(), list.end(), [](const neighborDatum &a, const neighborDatum &b) {
        return a.distance < b.distance;
    });
    const auto last = count > 0 && count < list.size()
                          ? static_cast<double>(list[count - 1].distance)
                          : kInfinite;
    const double limit = count > 0 ? last : count < 0 ? range * range : -1.0;
    list.erase(std::remove_if(list.begin(), list.end(),
                              [limit](const neighborDatum &datum) {
                                  return !(static_cast<double>(datum.distance) <= limit);
                              }),
               list.end());
    return list;
}

List polygonNeighbors(const Map &map, size_t ego, int t, bool queen, int rings, bool includeEgo)
{
    std::map<size_t, int> steps{{ego, 0}};
    for (int step = 1; step <= rings; ++step) {
        std::vector<size_t> reached;
        for (size_t i = 0; i < map.size(); ++i)
            for (const auto &[from, at] : steps)
                if (at == step - 1 && map[i].exists(t) && map[from].touches(map[i], queen))
                    reached.push_back(i);
        for (size_t i : reached)
            steps.emplace(i, step);
    }
    List list;
    for (const auto &[i, step] : steps)
        if (i != ego || includeEgo)
            list.append(entry(static_cast<int>(i), i == ego ? 4.0 : map[ego].squared(map[i]) == 1));
    return list;
}

int addCells(unsigned int rows, unsigned int columns)
{
    return addGrid(rows, columns, QRectF(-3, 2, columns * 0.5, rows * 0.25), 9);
}

List listOf(int set, unsigned int object, qint64 t,
            const VORN_MissingData &missing = VORN_MissingData())
{
    List list;
    return VORN_GetSpatialWeights(set, object, t, list, missing) ? list : List{entry(-99, 0.0)};
}

} // namespace

class TestNeighborCalculation : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void pointsAreThoseOfAllPairs_data()
    {
        QTest::addColumn<int>("count");
        QTest::addColumn<double>("range");
        QTest::addColumn<int>("type");
        QTest::addColumn<bool>("includeEgo");
        const QList<QPair<int, double>> kinds{{5, 0.0},        {1000, 0.0}, {0, 0.0},
                                              {-1, 2.5},       {-1, 0.0},   {-1, kInfinite},
                                              {-1, kNoNumber}, {-1, -2.0}};
        for (const auto &[count, range] : kinds) // a count of -1: by range
            for (int type = 0; type < 4; ++type)
                for (bool includeEgo : {false, true})
                    QTest::addRow("count %d, range %g, weights %d, ego %d", count, range, type,
                                  includeEgo)
                        << count << range << type << includeEgo;
    }
    void pointsAreThoseOfAllPairs()
    {
        QFETCH(int, count);
        QFETCH(double, range);
        QFETCH(int, type);
        QFETCH(bool, includeEgo);
        TestModel model;
        constexpr double kNumerator = 3.0;
        constexpr double kPower = 1.5;
        const Map map = randomMap(static_cast<unsigned>(7 + type), 48, 6);
        const int geography = addMap(map, false);
        const auto weights = static_cast<spatialWeightType>(type);
        const int set = count >= 0 ? VORN_CreateNearestNeighborWeightSet(
                            geography, {}, {}, count, weights, includeEgo, kNumerator, kPower)
                                   : VORN_CreateRangeWeightSet(geography, {}, {}, range, weights,
                                                               includeEgo, kNumerator, kPower);
        QVERIFY(set >= 0);
        if (range < 0.0)
            range = kNoNumber;
        const VORN_MissingData missing(QSet<int>{3, 17, 18, 30, 31, 42, 66});
        for (int t = 0; t < kTimes; ++t) {
            for (size_t ego = 0; ego < map.size(); ++ego) {
                List expected;
                if (map[ego].exists(t))
                    expected = pointNeighbors(map, ego, t, count, range, includeEgo);
                List present = without(expected, missing);
                weighPoints(expected, count, type, kNumerator, kPower);
                weighPoints(present, count, type, kNumerator, kPower);
                QCOMPARE(text(listOf(set, static_cast<unsigned int>(ego), t)), text(expected));
                QCOMPARE(text(listOf(set, static_cast<unsigned int>(ego), t, missing)),
                         text(present));
            }
        }
    }

    void polygonsAreThoseOfAllPairs_data()
    {
        QTest::addColumn<bool>("queen");
        QTest::addColumn<int>("rings");
        QTest::addColumn<int>("type");
        QTest::addColumn<bool>("includeEgo");
        for (bool queen : {true, false})
            for (int rings : {-1, 0, 1, 2, 3})
                for (int type : {0, 1, 4, 5})
                    QTest::addRow("%s, %d rings, weights %d", queen ? "queen" : "rook", rings, type)
                        << queen << rings << type << ((rings + type) % 3 == 1);
    }
    void polygonsAreThoseOfAllPairs()
    {
        QFETCH(bool, queen);
        QFETCH(int, rings);
        QFETCH(int, type);
        QFETCH(bool, includeEgo);
        TestModel model;
        const Map map = randomLattice(static_cast<unsigned>(11 + rings), 8);
        const int geography = addMap(map, true);
        const int set =
            VORN_CreatePolygonWeightSet(geography, {}, {}, rings, queen,
                                        static_cast<spatialWeightType>(type), includeEgo, 0.0, 0.0);
        QVERIFY(set >= 0);
        const VORN_MissingData missing(QSet<int>{1, 5, 8, 9, 21});
        for (int t = 0; t < kTimes; ++t) {
            for (size_t ego = 0; ego < map.size(); ++ego) {
                List expected;
                if (map[ego].exists(t) && rings >= 0)
                    expected = polygonNeighbors(map, ego, t, queen, rings, includeEgo);
                if (type < 4)
                    for (neighborDatum &one : expected)
                        one.distance = -1.0F;
                List present = without(expected, missing);
                weighPolygons(expected, type);
                weighPolygons(present, type);
                QCOMPARE(text(byId(listOf(set, static_cast<unsigned int>(ego), t))),
                         text(expected));
                QCOMPARE(text(byId(listOf(set, static_cast<unsigned int>(ego), t, missing))),
                         text(present));
            }
        }
    }

    void cellsAreThoseOfAllPairs_data()
    {
        QTest::addColumn<int>("method");
        QTest::addColumn<double>("range");
        QTest::addColumn<int>("type");
        QTest::addColumn<bool>("includeEgo");
        const auto add = [](int method, double range, int type) {
            for (bool includeEgo : {false, true})
                QTest::addRow("method %d, range %g, weights %d, ego %d", method, range, type,
                              includeEgo)
                    << method << range << type << includeEgo;
        };
        for (int type = 0; type < 4; ++type) {
            add(RookNeighbors, 0.0, type);
            add(QueenNeighbors, 0.0, type);
            for (double range : {1.01, 0.0, 100.0})
                add(RangeNeighbors, range, type);
        }
    }
    void cellsAreThoseOfAllPairs()
    {
        QFETCH(int, method);
        QFETCH(double, range);
        QFETCH(int, type);
        QFETCH(bool, includeEgo);
        TestModel model;
        constexpr int kColumns = 7;
        constexpr int kRows = 5;
        const int geography = addCells(kRows, kColumns);
        const auto weights = static_cast<spatialWeightType>(type);
        const int set =
            method == RangeNeighbors
                ? VORN_CreateRangeWeightSet(geography, {}, {}, range, weights, includeEgo, 2.0, 0.5)
                : VORN_CreateAdjacentPixelWeightSet(geography, {}, {},
                                                    static_cast<neighborMethodType>(method),
                                                    weights, includeEgo, 2.0, 0.5);
        VORN_MissingData missing(MissingData::Raster, kColumns * kRows);
        for (int id : {0, 8, 9, 16, 34})
            missing.setMissing(id);
        const auto weigh = [type](List list) { // of distances as they are, a power of a half
            weighPoints(list, 0, type, 2.0, 1.0);
            return list;
        };
        for (int ego = 0; ego < kColumns * kRows; ++ego) {
            List expected;
            for (int id = 0; id < kColumns * kRows; ++id) {
                const int columns = id % kColumns - ego % kColumns;
                const int rows = id / kColumns - ego / kColumns;
                const double distance = std::hypot(columns * 0.5, rows * 0.25);
                const bool isNear = method == RangeNeighbors ? distance <= range
                                    : method == RookNeighbors
                                        ? std::abs(columns) + std::abs(rows) <= 1
                                        : std::abs(columns) <= 1 && std::abs(rows) <= 1;
                // Rows count down the map.
                if (isNear && (id != ego || includeEgo))
                    expected.append(entry(id, type < 2 ? 0.0 : distance,
                                          std::atan2(0.25 * -rows, 0.5 * columns)));
            }
            QCOMPARE(text(byId(listOf(set, static_cast<unsigned int>(ego), 4))),
                     text(weigh(expected)));
            QCOMPARE(text(byId(listOf(set, static_cast<unsigned int>(ego), 4, missing))),
                     text(weigh(without(expected, missing))));
        }
        QVERIFY(listOf(set, 0, 10).value(0).id == -99); // outside the grid's own time
    }

    void adjacentCellsComeInTheirOrder()
    {
        TestModel model;
        const int geography = addCells(3, 3);
        const auto ids = [geography](neighborMethodType method, bool includeEgo,
                                     unsigned int cell) {
            const int set = VORN_CreateAdjacentPixelWeightSet(geography, {}, {}, method,
                                                              ConstantWeight, includeEgo, 1, 1);
            QVector<int> result;
            for (const neighborDatum &one : listOf(set, cell, 0))
                result.append(one.id);
            return result;
        };
        QCOMPARE(ids(QueenNeighbors, true, 4), (QVector<int>{4, 3, 5, 1, 7, 0, 2, 6, 8}));
        QCOMPARE(ids(RookNeighbors, false, 2), (QVector<int>{1, 5}));
    }

    void weightsThatDoNotSuitRaise()
    {
        TestModel model;
        const QString text = QStringLiteral("Invalid weight set type");
        const int polygons = addMap({{0, 0, 0, 9}, {1, 0, 0, 9}}, true);
        const int ranks =
            VORN_CreatePolygonWeightSet(polygons, {}, {}, 1, true, DistanceRankWeight, false, 1, 1);
        QVERIFY(ranks >= 0);
        QCOMPARE(raisedText([&] { listOf(ranks, 0, 1); }), text);
        QCOMPARE(raisedText([&] { listOf(ranks, 0, 1); }),
                 text); // nothing was left behind that would pass for lists
        QCOMPARE(raisedText([&] { VORN_PrecalculateSpatialWeights(ranks, 77, false); }),
                 QStringLiteral("Invalid time stamp"));
        auto &geography = model.vectorData(polygons);
        MRasterData *const nowhere = nullptr;
        const auto made = [](auto *on, auto what, auto... rest) {
            return raisedText([&] { AdjacencySet({}, on, what, rest...); });
        };
        QCOMPARE(made(&geography, 1, true, InverseDistanceWeight, false), text);
        QCOMPARE(made(&geography, 1, BorderShareWeight, false, 1, 1), text);
        QCOMPARE(made(&geography, 1.0, BorderLengthWeight, false, 1, 1), text);
        QCOMPARE(made(nowhere, NearestNeighbors, ConstantWeight, false, 1, 1), text);
        QCOMPARE(made(nowhere, 1.0, ConstantWeight, false, 1, 1),
                 QStringLiteral("Geography not defined"));
        const int grid = addCells(2, 2);
        for (double range : {kNoNumber, -1.0, -kInfinite}) {
            const InCase inRange(range);
            const int set =
                VORN_CreateRangeWeightSet(grid, {}, {}, range, ConstantWeight, false, 1, 1);
            for (int i = 0; i < 2; ++i)
                QCOMPARE(raisedText([&] { listOf(set, 0, 1); }),
                         QStringLiteral("Invalid pixel id"));
        }
    }

    // Two places for three neighbours: ties are told by distances relative to each other, in
    // degrees as in metres.
    void tiesAndWeightsKnowNoUnit()
    {
        TestModel model;
        const int geography = addPoints(3);
        const auto weights = [&](spatialWeightType type, double numerator,
                                 const QVector<float> &distances) {
            const AdjacencySet set({}, &model.vectorData(geography), 2, type, false, numerator,
                                   1.0);
            List list;
            for (const float distance : distances)
                list.append({list.size(), 0.0F, 0.0F, distance});
            QVector<float> result;
            for (const neighborDatum &datum :
                 set.RecalculateNeighborWeights(list, VORN_MissingData()))
                result.append(datum.weight);
            return result;
        };
        for (const float unit : {1e-20F, 1e-8F, 1.0F, 1e30F}) {
            QCOMPARE(weights(ConstantWeight, 1, {1 * unit, 2 * unit, 3 * unit}),
                     (QVector<float>{1, 1, 0}));
            QCOMPARE(
                weights(ConstantWeight, 1, {1 * unit, 2 * unit, std::nextafterf(2 * unit, 1e38F)}),
                (QVector<float>{1, 0.5F, 0.5F}));
        }
        QCOMPARE(weights(ConstantWeight, 1, {0, 0, 0}), QVector<float>(3, 2.0F / 3.0F));
        const float largest = std::numeric_limits<float>::max();
        QCOMPARE(weights(InverseDistanceWeight, -1e300, {0, 1, 4}), QVector<float>(3, -largest));
    }

    // More than one batch of objects, found out of their order.
    void manyPointsAreStoredAsTheyAreFound()
    {
        TestModel model;
        constexpr int kCount = 70000;
        const int geography = addPoints(kCount);
        const int set =
            VORN_CreateRangeWeightSet(geography, {}, {}, 1.5, ConstantWeight, true, 1, 1);
        const WeightsAtT handle = VORN_GetSpatialWeightsHandle(set, 5, false);
        List list;
        for (unsigned int id = 0; id < kCount; ++id) {
            QVERIFY(VORN_GetSpatialWeights(handle, id, list, VORN_MissingData()));
            const int first = static_cast<int>(id) - (id > 0);
            const List sorted = byId(list);
            QCOMPARE(sorted.size(), id == 0 || id + 1 == kCount ? 2 : 3);
            QCOMPARE(sorted.first().id, first);
        }
    }

    // Of points they leave nothing, of cells what was done.
    void cancelledRuns_data()
    {
        QTest::addColumn<bool>("isRaster");
        QTest::newRow("points") << false;
        QTest::newRow("cells") << true;
    }
    void cancelledRuns()
    {
        QFETCH(bool, isRaster);
        TestModel model;
        const int geography = isRaster ? addCells(30, 40) : addPoints(1000);
        const int set =
            VORN_CreateRangeWeightSet(geography, {}, {}, 0.3, ConstantWeight, true, 1, 1);
        bool wasShown = false;
        QTimer::singleShot(0, [&wasShown] {
            if (QProgressDialog *dialog = progressBar()) {
                wasShown =
                    dialog->windowTitle() == QStringLiteral("Spatial weights")
                    && dialog->labelText() == QStringLiteral("Calculating spatial weights...");
                dialog->cancel();
            }
        });
        QVERIFY(!VORN_GetSpatialWeightsHandle(set, 5, true).set);
        QVERIFY(wasShown);
        QVERIFY(!progressBar());
        MGeoData &data = *model.controller.GetGeoData().value(geography);
        QCOMPARE(data.HasSpatialWeightSetAtTime(set, 5.9), isRaster);
        QCOMPARE(listOf(set, 999, 5).size(), isRaster ? 0 : 1);
    }
};

QTEST_MAIN(TestNeighborCalculation)
#include "tst_NeighborCalculation.moc"
