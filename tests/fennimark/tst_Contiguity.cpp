// SPDX-License-Identifier: MIT
// Neighbours of polygons and points over time. The pair test itself has its own tests.
#include "fennimark/geographies.h"
#include "recordStore.h"
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <algorithm>

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
    int index(int record) const
    {
        const int chain = fennims->mTree->CheckOutRecord(record, false)->chainId;
        fennims->mTree->CheckInRecord(record);
        return chain;
    }
    QVector<int> indices(const QVector<int> &records) const
    {
        QVector<int> result;
        for (const int one : records)
            result.append(index(one));
        std::sort(result.begin(), result.end());
        return result;
    }
    std::unique_ptr<Fennims> fennims;
};

std::unique_ptr<Fennims> fromGeoJson(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return nullptr;
    VORNBuilder builder(extent(100), nullptr, nullptr);
    const QJsonObject collection = QJsonDocument::fromJson(file.readAll()).object();
    for (const auto feature : collection[QStringLiteral("features")].toArray()) {
        QList<QPolygonF> rings;
        const QJsonObject geometry = feature.toObject()[QStringLiteral("geometry")].toObject();
        const QJsonArray coordinates = geometry[QStringLiteral("coordinates")].toArray();
        const bool multi =
            geometry[QStringLiteral("type")].toString() == QLatin1String("MultiPolygon");
        for (const auto polygon : multi ? coordinates : QJsonArray{coordinates}) {
            for (const auto ring : polygon.toArray()) {
                QPolygonF vertices;
                for (const auto vertex : ring.toArray())
                    vertices.append(
                        QPointF(vertex.toArray()[0].toDouble(), vertex.toArray()[1].toDouble()));
                rings.append(vertices);
            }
        }
        builder.CreateChain({new FMPolygon(rings)}, {span(0, 1)}, -1);
    }
    return opened(builder);
}

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

int callsLeft = 0;
bool countDown(int, const char *)
{
    return --callsLeft > 0;
}

} // namespace

class TestContiguity : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void gridsHaveTheirNeighbours_data();
    void gridsHaveTheirNeighbours();
    void oneByOneAndAllAgree();
    void ringsGrowStepByStep();
    void publishedCounts_data();
    void publishedCounts();
    void toleranceJoinsWhatIsNearlyThere();
    void onlyTheTimeAskedForCounts();
    void pointsFindTheirNeighbours();
    void stopsLeaveNothingOut();
};

void TestContiguity::gridsHaveTheirNeighbours_data()
{
    QTest::addColumn<double>("step");
    QTest::newRow("1") << 1.0;
    QTest::newRow("0.1") << 0.1; // corners differ in their last bits
    QTest::newRow("10.1") << 10.1;
}

void TestContiguity::gridsHaveTheirNeighbours()
{
    QFETCH(double, step);
    const Grid grid(30, 20, step);
    QVERIFY(grid.fennims);
    QCOMPARE(links(*grid.fennims, false), 2 * (29 * 20 + 30 * 19));
    QCOMPARE(links(*grid.fennims, true), 2 * (29 * 20 + 30 * 19 + 2 * 29 * 19));
    const auto around = [&grid](int index, bool queen, int order, const QSet<int> &exclude) {
        return grid.indices(grid.fennims->CalculatePolygonAdjacencies(grid.record(index), 5, queen,
                                                                      order, exclude));
    };
    QCOMPARE(around(31, false, 1, {}), (QVector<int>{1, 30, 31, 32, 61}));
    QCOMPARE(around(31, true, 1, {grid.record(31), grid.record(0)}),
             (QVector<int>{1, 2, 30, 32, 60, 61, 62}));
    QCOMPARE(around(0, false, 0, {}), (QVector<int>{0}));
    // Exclusion drops from the result, not from the walk.
    QCOMPARE(around(0, false, 2, {grid.record(0), grid.record(1), grid.record(30)}),
             (QVector<int>{2, 31, 60}));
    QVERIFY(around(0, false, -1, {}).isEmpty());
    QVERIFY(grid.fennims->CalculatePolygonAdjacencies(grid.record(0), 11, true, 1, {}).isEmpty());
    QVERIFY(grid.fennims->CalculatePolygonAdjacencies(0, 5, true, 1, {}).isEmpty());
}

void TestContiguity::oneByOneAndAllAgree()
{
    RandomGeography geography(11, RandomGeography::Polygons, 300, 2, 0, 0);
    Fennims &fennims = *geography.fennims;
    for (const qint64 time : {0, 8, 15}) {
        const QVector<int> records = fennims.GetObservationsAtTime(time);
        for (const bool queen : {true, false}) {
            QMap<int, QVector<int>> all, asked;
            for (const int record : records) // the first 64 without the graph, the others with it
                asked.insert(record,
                             fennims.CalculatePolygonAdjacencies(record, time, queen, 1, {record}));
            QVERIFY(fennims.CalculatePolygonAdjacencies(queen, time, 1, false, all, nullptr));
            QCOMPARE(asked, all);
            for (auto one = all.cbegin(); one != all.cend(); ++one) {
                QVector<int> expected;
                const auto *polygon =
                    static_cast<const FMPolygon *>(geography.of(one.key())->object.get());
                for (const int other : records) {
                    const FMObject &object = *geography.of(other)->object;
                    if (other != one.key()
                        && polygon->BordersPolygon(static_cast<const FMPolygon &>(object), queen))
                        expected.append(other);
                }
                std::sort(expected.begin(), expected.end());
                QCOMPARE(one.value(), expected);
            }
        }
    }
}

void TestContiguity::ringsGrowStepByStep()
{
    const Grid grid(9, 9, 1);
    const auto rings = grid.fennims->CalculatePolygonNeighborRings(grid.record(40), 5, true, 7);
    QCOMPARE(rings.size(), 7);
    for (int i = 0; i < 7; ++i)
        QCOMPARE(rings[i].size(), i < 4 ? 8 * (i + 1) : 0);
    QVERIFY(rings[1].contains(grid.record(20)) && !rings[0].contains(grid.record(40)));
    QCOMPARE(grid.fennims->CalculatePolygonAdjacencies(grid.record(40), 5, false, 3, {}).size(),
             25);
    QVERIFY(grid.fennims->CalculatePolygonNeighborRings(grid.record(40), 5, true, 0).isEmpty());
    QVERIFY(grid.fennims->CalculatePolygonNeighborRings(9999, 5, true, 2).isEmpty());
}

void TestContiguity::publishedCounts_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<int>("queen");
    QTest::addColumn<int>("rook");
    // Counts by spdep 1.2-7 (poly2nb), both directions.
    QTest::newRow("counties of North Carolina") << "nc_sids/nc_counties.geojson" << 490 << 462;
    QTest::newRow("48 states") << "us_income/states48.geojson" << 214 << 210;
}

void TestContiguity::publishedCounts()
{
    QFETCH(QString, file);
    QFETCH(int, queen);
    QFETCH(int, rook);
    const std::unique_ptr<Fennims> fennims =
        fromGeoJson(QStringLiteral(SAMPLES_DIRECTORY "/") + file);
    QVERIFY(fennims);
    QCOMPARE(links(*fennims, true), queen);
    QCOMPARE(links(*fennims, false), rook);
}

void TestContiguity::toleranceJoinsWhatIsNearlyThere()
{
    for (const double tolerance : {0.0, 0.02}) {
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

void TestContiguity::onlyTheTimeAskedForCounts()
{
    // The left neighbour goes at 10 and comes back at 20 with another shape, which does not touch.
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
    QCOMPARE(neighbors(5), 0); // what was kept of that time is not asked any more
}

void TestContiguity::pointsFindTheirNeighbours()
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
        const auto ties = std::upper_bound(distances.begin(), distances.end(), distances[2] + 1e-9);
        QCOMPARE(near[record].size(), int(ties - distances.begin()));
        QCOMPARE(near[record].last().distance, distances[2]);
        QCOMPARE(inRange[record].size(), within);
    }
    QVERIFY(!fennims.CalculatePointAdjacenciesByRange(-1, time, true, inRange, nullptr)
            && inRange.isEmpty());
    QVERIFY(!fennims.CalculatePointAdjacenciesByNearestNeighbor(0, time, true, near, nullptr));
    QVERIFY(!fennims.CalculatePolygonNeighborRings(records[0], time, true, 2).size());
}

void TestContiguity::stopsLeaveNothingOut()
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
    QVERIFY(stopped([&] {
                return fennims.CalculatePolygonAdjacencies(true, 5, 1, true, neighbors, &countDown);
            })
            > 1);
    QVERIFY(stopped([&] {
                return fennims.CalculateNearestNeighborsToObjects(fennims.mTree, records, 5, 2,
                                                                  neighbors, &countDown);
            })
            > 1);
    QVERIFY(stopped([&] {
                return fennims.CalculateRangeNeighborsToObjects(fennims.mTree, records, 5, 1,
                                                                neighbors, &countDown);
            })
            > 1);
    QCOMPARE(fennimark::StoreAccess::store(*fennims.mTree).live().inUse(), 0U);
    QCOMPARE(neighbors.value(grid.record(82)).size(),
             21); // 5 by 5 without the corners: exactly 1 is in range
    // Records that are not there have no entry.
    QVERIFY(fennims.CalculateNearestNeighborsToObjects(fennims.mTree, {1, 0, 5000}, 5, 2, neighbors,
                                                       nullptr));
    QCOMPARE(neighbors.keys(), QList<int>{1});
    QCOMPARE(neighbors[1].first(), 1); // it finds itself
}

QTEST_GUILESS_MAIN(TestContiguity)
#include "tst_Contiguity.moc"
