// SPDX-License-Identifier: MIT
// Neighbours of polygons and points over time. The pair test itself has its own tests.
#include <algorithm>
#include "fennimark/geographies.h"
#include "store/recordStore.h"
#include "support/checks.h"

namespace {

/// Squares of side `step`, record ids by their place in the grid.
struct Grid {
    Grid(int columns, int rows, double step)
    {
        VORNBuilder builder(extent(columns * step), nullptr, nullptr);
        for (int row = 0; row < rows; ++row) {
            for (int column = 0; column < columns; ++column)
                builder.CreateChain({square(column * step, row * step, step)}, {span(0, 10)}, -1);
        }
        fennims = opened(builder);
    }
    int record(int index) const { return fennims->GetChainById(index)->GetObservation(5).second; }
    QVector<int> records(const QVector<int> &indices) const
    {
        QVector<int> result;
        for (const int one : indices)
            result.append(record(one));
        std::sort(result.begin(), result.end());
        return result;
    }
    std::unique_ptr<Fennims> fennims;
};

int links(Fennims &fennims, bool queen)
{
    QMap<int, QVector<int>> neighbors;
    if (!fennims.CalculatePolygonAdjacencies(queen, 0, 1, false, neighbors, nullptr))
        return -1;
    int count = 0;
    for (auto one = neighbors.cbegin(); one != neighbors.cend(); ++one) {
        for (const int other : one.value()) {
            if (!neighbors.value(other).contains(one.key()))
                return -1; // not symmetric
        }
        count += one.value().size();
    }
    return count;
}

} // namespace

class TestContiguity : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void gridsHaveTheirNeighbours_data()
    {
        QTest::addColumn<double>("step");
        // Corners of the last two differ in their bits.
        for (const double step : {1.0, 0.1, 10.1})
            QTest::addRow("steps of %g", step) << step;
    }
    void gridsHaveTheirNeighbours()
    {
        QFETCH(double, step);
        const Grid grid(30, 20, step);
        QCOMPARE(links(*grid.fennims, false), 2 * (29 * 20 + 30 * 19));
        QCOMPARE(links(*grid.fennims, true), 2 * (29 * 20 + 30 * 19 + 2 * 29 * 19));
        const auto around = [&grid](int index, bool queen, int order, const QSet<int> &exclude) {
            return grid.fennims->CalculatePolygonAdjacencies(grid.record(index), 5, queen, order,
                                                             exclude);
        };
        QCOMPARE(around(31, false, 1, {}), grid.records({1, 30, 31, 32, 61}));
        QCOMPARE(around(31, true, 1, {grid.record(31), grid.record(0)}),
                 grid.records({1, 2, 30, 32, 60, 61, 62}));
        QCOMPARE(around(0, false, 0, {}), grid.records({0}));
        // Excluded records are left out of the result, but the walk passes through them.
        QCOMPARE(around(0, false, 2, {grid.record(0), grid.record(1), grid.record(30)}),
                 grid.records({2, 31, 60}));
        QVERIFY(around(0, false, -1, {}).isEmpty());
        for (const int time : {11, 5})
            QVERIFY(
                grid.fennims
                    ->CalculatePolygonAdjacencies(time == 5 ? 0 : grid.record(0), time, true, 1, {})
                    .isEmpty());
    }

    void oneByOneAndAllAgree()
    {
        RandomGeography geography(11, RandomGeography::Polygons, 300, 2, 0, 0);
        Fennims &fennims = *geography.fennims;
        for (const qint64 time : {0, 8, 15}) {
            const InCase inTime(time);
            const QVector<int> records = fennims.GetObservationsAtTime(time);
            for (const bool queen : {true, false}) {
                const InCase inQueen(queen);
                QMap<int, QVector<int>> all, asked;
                for (const int record :
                     records) // the first 64 without the graph, the others with it
                    asked.insert(record, fennims.CalculatePolygonAdjacencies(record, time, queen, 1,
                                                                             {record}));
                QVERIFY(fennims.CalculatePolygonAdjacencies(queen, time, 1, false, all, nullptr));
                QCOMPARE(asked, all);
                for (auto one = all.cbegin(); one != all.cend(); ++one) {
                    QVector<int> expected;
                    const auto polygon = [&geography](int record) -> const FMPolygon & {
                        return static_cast<const FMPolygon &>(*geography.of(record)->object);
                    };
                    for (const int other : records) {
                        if (other != one.key()
                            && polygon(one.key()).BordersPolygon(polygon(other), queen))
                            expected.append(other);
                    }
                    std::sort(expected.begin(), expected.end());
                    QCOMPARE(one.value(), expected);
                }
            }
        }
    }

    // The slack of a pair depends on its own coordinates alone: a polygon that is far away or much
    // larger neither hides a contact nor makes one, for queries from either of the two.
    void thePairDecidesWhatIsNear()
    {
        VORNBuilder builder(extent(100), nullptr, nullptr);
        const auto add = [&builder](double x0, double y0, double x1, double y1) {
            builder.CreateChain(
                {new FMPolygon(QVector<QPointF>{{x0, y0}, {x1, y0}, {x1, y1}, {x0, y1}})},
                {span(0, 10)}, -1);
        };
        for (int i = 0; i < 30; ++i)
            add(i, 0, i + 1 - 1e-12, 1); // gaps that are above the slack of neighbours
        add(-1e15, 1 + 1e-12, 1e15, 2);  // a wide one above all of them, within its own slack
        add(1e15, 5e14, 1.1e15, 6e14);
        const std::unique_ptr<Fennims> fennims = opened(builder);
        QMap<int, QVector<int>> all;
        QVERIFY(fennims->CalculatePolygonAdjacencies(true, 5, 1, false, all, nullptr));
        const auto record = [&](int chain) {
            return fennims->GetChainById(chain)->GetObservation(5).second;
        };
        QMap<int, QVector<int>> expected;
        for (int i = 0; i < 30; ++i) {
            expected[record(i)].append(record(30));
            expected[record(30)].append(record(i));
        }
        expected[record(31)];
        std::sort(expected[record(30)].begin(), expected[record(30)].end());
        QCOMPARE(all, expected);
        const std::unique_ptr<Fennims> again = opened(builder); // no graph yet
        for (const int chain : {0, 29, 30, 31})
            QCOMPARE(again->CalculatePolygonAdjacencies(record(chain), 5, true, 1, {record(chain)}),
                     expected[record(chain)]);
    }

    void toleranceJoinsWhatIsNearlyThere()
    {
        for (const double tolerance : {0.0, 0.02}) {
            const InCase inTolerance(tolerance);
            VORNBuilder builder(extent(10), nullptr, nullptr);
            builder.SetAdjacencyTolerance(tolerance);
            builder.CreateChain({square(0, 0)}, {span(0, 1)}, -1);
            builder.CreateChain({square(1.01, 0)}, {span(0, 1)}, -1);
            const std::unique_ptr<Fennims> fennims = opened(builder);
            QCOMPARE(links(*fennims, false), tolerance > 0 ? 2 : 0);
            QCOMPARE(fennims->CalculatePolygonAdjacencies(1, 0, true, 1, {1}).size(),
                     tolerance > 0 ? 1 : 0);
            const auto polygon = [&fennims](int record) {
                return static_cast<FMPolygon *>(
                    fennims->mTree->CheckOutRecord(record, false)->GetTreeObject(fennims->mTree));
            };
            QCOMPARE(polygon(1)->GetBorderEdges(*polygon(2), nullptr) > 0.9, tolerance > 0);
        }
    }

    void onlyTheTimeAskedForCounts()
    {
        // The left neighbour ends at 10 and exists again from 20 on, with another shape that does
        // not touch.
        VORNBuilder builder(extent(10), nullptr, nullptr);
        builder.CreateChain({square(1, 0)}, {span(0, 30)}, -1);
        builder.CreateChain({square(0, 0), square(5, 5)}, {span(0, 10, 0xF0), span(20, 30)}, -1);
        const std::unique_ptr<Fennims> fennims = opened(builder);
        const int middle = fennims->GetChainById(0)->GetObservation(5).second;
        const auto neighbors = [&](qint64 time) {
            return fennims->CalculatePolygonAdjacencies(middle, time, true, 2, {middle}).size();
        };
        QCOMPARE(neighbors(5), 1);
        QCOMPARE(neighbors(10), 0);
        QCOMPARE(neighbors(25), 0);
        QCOMPARE(neighbors(5), 1);
        fennims->RemoveChain(fennims->GetChainById(1));
        QCOMPARE(neighbors(5), 0); // the graph of that time is not used any more
    }

    void pointsFindTheirNeighbours()
    {
        RandomGeography geography(13, RandomGeography::Points, 200, 3, 5, 0);
        Fennims &fennims = *geography.fennims;
        const qint64 time = 12;
        const QVector<int> records = fennims.GetObservationsAtTime(time);
        QVERIFY(records.size() > 40);
        QMap<int, QVector<ptTreeQueryResult>> near, inRange;
        QVERIFY(fennims.CalculatePointAdjacenciesByRange(15, time, true, inRange, nullptr));
        QVERIFY(fennims.CalculatePointAdjacenciesByNearestNeighbor(3, time, false, near, nullptr));
        QCOMPARE(near.size(), records.size());
        for (const int record : records) {
            const auto &point = static_cast<const FMPoint &>(*geography.of(record)->object);
            QVector<double> distances;
            int within = 0;
            for (const int other : records) {
                const double distance = geography.of(other)->object->SqrDistance(point.x, point.y);
                within += distance <= 15 * 15;
                if (other != record)
                    distances.append(distance);
            }
            std::sort(distances.begin(), distances.end());
            const auto ties =
                std::upper_bound(distances.begin(), distances.end(), distances[2] + 1e-9);
            QCOMPARE(near[record].size(), int(ties - distances.begin()));
            QCOMPARE(near[record].last().distance, distances[2]);
            QCOMPARE(inRange[record].size(), within);
        }
        QCOMPARE(
            answers({fennims.CalculatePointAdjacenciesByRange(-1, time, true, inRange, nullptr),
                     inRange.isEmpty()}),
            "ny");
        QVERIFY(!fennims.CalculatePointAdjacenciesByNearestNeighbor(0, time, true, near, nullptr));
        QVERIFY(!fennims.CalculatePolygonNeighborRings(records[0], time, true, 2).size());
    }

    void stopsLeaveNothingOut()
    {
        const Grid grid(40, 40, 1);
        Fennims &fennims = *grid.fennims;
        const QVector<int> records = fennims.GetObservationsAtTime(5);
        QMap<int, QVector<int>> neighbors;
        const auto stopped = [&](auto call) {
            bool done = false;
            int stops = -1;
            for (int calls = 1; !done; ++calls, ++stops) {
                callsLeft = calls;
                done = call();
                if (!done && !neighbors.isEmpty())
                    return -1;
            }
            return stops;
        };
        const int adjacent = stopped([&] {
            return fennims.CalculatePolygonAdjacencies(true, 5, 1, true, neighbors, &countDown);
        });
        const int nearest = stopped([&] {
            return fennims.CalculateNearestNeighborsToObjects(fennims.mTree, records, 5, 2,
                                                              neighbors, &countDown);
        });
        const int inRange = stopped([&] {
            return fennims.CalculateRangeNeighborsToObjects(fennims.mTree, records, 5, 1, neighbors,
                                                            &countDown);
        });
        QCOMPARE(answers({adjacent > 1, nearest > 1, inRange > 1}), "yyy");
        QCOMPARE(fennimark::StoreAccess::store(*fennims.mTree).live().inUse(), 0U);
        // 5 by 5 without the corners: exactly 1 is in range.
        QCOMPARE(neighbors.value(grid.record(82)).size(), 21);
        // Records that do not exist have no entry.
        QVERIFY(fennims.CalculateNearestNeighborsToObjects(fennims.mTree, {1, 0, 5000}, 5, 2,
                                                           neighbors, nullptr));
        QCOMPARE(neighbors.keys(), QList<int>{1});
        QCOMPARE(neighbors[1].first(), 1); // it finds itself
    }
};

QTEST_GUILESS_MAIN(TestContiguity)
#include "tst_Contiguity.moc"
