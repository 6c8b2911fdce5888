// SPDX-License-Identifier: MIT
// Every query of a geography against a plain loop over the observations that were added to it.
#include <algorithm>
#include <set>
#include "fennimark/geographies.h"
#include "store/recordStore.h"
#include "store/scratchSpace.h"
#include "support/checks.h"

namespace {

bool meets(const Rect2D &a, const Rect2D &b)
{
    return a.xMin <= b.xMax && b.xMin <= a.xMax && a.yMin <= b.yMax && b.yMin <= a.yMax;
}

/// Calls tell(object, record) for each given observation that is not removed and contains the time.
template <class Tell> void walk(const RandomGeography &geography, qint64 time, Tell tell)
{
    for (const Given &one : geography.given) {
        if (geography.holds(one) && fennimark::contains(one.range, double(time)))
            tell(*one.object, one.record);
    }
}

/// The record ids of those for which `hits` is true, ascending.
template <class Hits>
QVector<int> expected(const RandomGeography &geography, qint64 time, Hits hits)
{
    QVector<int> ids;
    walk(geography, time, [&](FMObject &object, int record) {
        if (hits(object))
            ids.append(record);
    });
    std::sort(ids.begin(), ids.end());
    return ids;
}

/// Ids by distance and then id.
template <class Distance>
QVector<int> expectedNearest(const RandomGeography &geography, qint64 time, int count, double limit,
                             Distance distance)
{
    std::set<std::pair<double, int>> byDistance;
    walk(geography, time, [&](FMObject &object, int record) {
        if (distance(object) <= limit)
            byDistance.insert({distance(object), record});
    });
    QVector<int> ids;
    for (const auto &one : byDistance) {
        if (ids.size() < count)
            ids.append(one.second);
    }
    return ids;
}

} // namespace

class TestRecordQueries : public QObject {
    Q_OBJECT
    static void checkQueries(RandomGeography::Kind kind, int chains, int observations, double step,
                             double offset)
    {
        const InCase inCase(QPoint(kind, chains));
        RandomGeography geography(7, kind, chains, observations, step, offset);
        QVERIFY(geography.fennims);
        Fennims &fennims = *geography.fennims;
        QCOMPARE(fennims.GetChainCount(), chains);
        const Rect2D whole = fennims.GetBoundingRect();
        for (int round = 0; round < 40; ++round) {
            if (round == 30) { // the same queries after every fifth chain was removed
                for (int chain = 0; chain < chains; chain += 5)
                    fennims.RemoveChain(fennims.GetChainById(chain));
            }
            const auto time = qint64(geography.uniform(0, 60));
            const QPointF corner = geography.place();
            const double size = round % 4 ? geography.uniform(0, 30) : 0;
            const Rect2D rect = round % 5 == 4 ? whole
                                               : Rect2D{corner.x(), corner.x() + size, corner.y(),
                                                        corner.y() + size};
            const auto all = [&](auto hits) { return expected(geography, time, hits); };
            QVector<int> found;
            fennims.OverlapsMBRs(rect, time, found);
            QCOMPARE(found, all([&](FMObject &o) { return meets(o.GetObjectBounds(), rect); }));
            fennims.RectQuery(rect, time, found);
            QCOMPARE(found, all([&](FMObject &o) { return o.OverlapsRect(rect); }));
            fennims.CircleQuery(corner.x(), corner.y(), size, time, found);
            QCOMPARE(found, all([&](FMObject &o) {
                         return o.OverlapsCircle(corner.x(), corner.y(), size);
                     }));
            const std::unique_ptr<FMObject> object(geography.newObject());
            fennims.ObjectQuery(*object, time, found);
            QCOMPARE(found, all([&](FMObject &o) { return o.Overlaps(*object); }));

            RectInT box{rect, span(double(time), double(time) + 5, round % 2 ? 0xFF : 0x00)};
            fennims.mTree->Overlaps(box, found);
            QVector<int> overlapping;
            for (const Given &one : geography.given) {
                if (geography.holds(one) && fennimark::overlaps(one.range, box)
                    && meets(one.object->GetObjectBounds(), rect))
                    overlapping.append(one.record);
            }
            std::sort(overlapping.begin(), overlapping.end());
            QCOMPARE(found, overlapping);

            QVector<int> atTime = fennims.GetObservationsAtTime(time);
            std::sort(atTime.begin(), atTime.end());
            QCOMPARE(atTime, all([](FMObject &) { return true; }));
            const int count = 1 + round;
            fennims.CalculateNearestNeighborsToPoint(corner, time, count, found);
            const auto toCorner = [&corner](const FMObject &o) {
                return o.SqrDistance(corner.x(), corner.y());
            };
            QCOMPARE(found, expectedNearest(geography, time, count, HUGE_VAL, toCorner));
            if (atTime.isEmpty())
                continue;
            const int record = atTime[round % atTime.size()];
            const Given *source = geography.of(record);
            QVERIFY(source);
            QMap<int, QVector<int>> neighbors;
            const auto toSource = [source](const FMObject &o) {
                return source->object->SqrDistance(&o);
            };
            QVERIFY(fennims.CalculateNearestNeighborsToObjects(fennims.mTree, {record}, time, count,
                                                               neighbors, nullptr));
            QCOMPARE(neighbors.value(record),
                     expectedNearest(geography, time, count, HUGE_VAL, toSource));
            QVERIFY(fennims.CalculateRangeNeighborsToObjects(fennims.mTree, {record}, time, size,
                                                             neighbors, nullptr));
            QCOMPARE(neighbors.value(record),
                     expectedNearest(geography, time, INT_MAX, size * size, toSource));
        }
        QCOMPARE(fennimark::StoreAccess::store(*fennims.mTree).live().inUse(), 0U);
    }

private Q_SLOTS:
    void agreeWithThePlainWalk()
    {
        for (const auto kind :
             {RandomGeography::Points, RandomGeography::Lines, RandomGeography::Polygons}) {
            checkQueries(kind, 1, 1, 0, 0);
            checkQueries(kind, 900, 1, 0, 0);
            checkQueries(kind, 120, 6, 0, 0);       // changing
            checkQueries(kind, 500, 1, 10, 0);      // on a lattice
            checkQueries(kind, 200, 3, 0.1, 6.5e6); // far off
        }
    }

    void storesBeyondTheHeapAnswerAlike_data()
    {
        QTest::addColumn<bool>("mapped");
        QTest::newRow("mapped") << true;
        QTest::newRow("read") << false;
    }
    void storesBeyondTheHeapAnswerAlike()
    {
        QFETCH(bool, mapped);
        QTemporaryDir scratch;
        Fennims::SetScratchDirectory(scratch.filePath(QStringLiteral("made/when/missing")));
        fennimark::ScratchSpace::allowMapping(mapped);
        // Two parts of 3,000 vertices each; 60 of them go beyond the 4 MiB of a heap store.
        const auto rings = [](double x) {
            QList<QPolygonF> two{QPolygonF(), QPolygonF()};
            for (int i = 0; i < 3000; ++i) {
                const QPointF way(std::cos(i * M_PI / 1500), std::sin(i * M_PI / 1500));
                two[0].append(QPointF(x, 0) + 2 * way);
                two[1].append(QPointF(x, 0) + way);
            }
            return two;
        };
        VORNBuilder builder(extent(100), nullptr, nullptr);
        for (int i = 0; i < 60; ++i)
            builder.CreateChain({new FMPolygon(rings(10 * i))}, {span(i, i + 1)}, -1);
        const std::unique_ptr<Fennims> fennims = opened(builder);
        fennimark::ScratchSpace::allowMapping(true);
        Fennims::SetScratchDirectory(QString());
        QVERIFY(fennims);
        for (int i = 0; i < 60; ++i) {
            const auto observation = fennims->GetChainById(i)->GetObservation(i);
            HilbertTreeRecord *record = fennims->mTree->CheckOutRecord(observation.second, i % 2);
            const auto *polygon = dynamic_cast<FMPolygon *>(record->GetTreeObject(fennims->mTree));
            QVERIFY(polygon);
            QCOMPARE(polygon->GetVertices(), rings(10 * i));
            QCOMPARE(answers({polygon->ContainsPoint(10 * i + 1.5, 0),
                              polygon->ContainsPoint(10 * i + 0.5, 0)}),
                     "yn");
            record->ReturnTreeObject(fennims->mTree);
            fennims->mTree->CheckInRecord(observation.second);
            QVector<int> found;
            fennims->RectQuery(Rect2D{10.0 * i + 1.9, 10.0 * i + 3, -0.1, 0.1}, i, found);
            QCOMPARE(found.size(), 1);
        }
        QVERIFY(QDir(scratch.filePath(QStringLiteral("made/when/missing"))).exists());
        QCOMPARE(fennimark::StoreAccess::store(*fennims->mTree).live().inUse(), 0U);
    }

    void liveObjectsAreCountedAndKept()
    {
        VORNBuilder builder(extent(200), nullptr, nullptr);
        for (int i = 0; i < 200; ++i)
            builder.CreateChain({square(i, 0)}, {span(0, 1)}, -1);
        const std::unique_ptr<Fennims> fennims = opened(builder);
        HilbertTree &tree = *fennims->mTree;
        const fennimark::LiveRecords &live = fennimark::StoreAccess::store(tree).live();
        QCOMPARE(answers({tree.CheckOutRecord(0, true), tree.CheckOutRecord(201, true),
                          tree.CheckOutRecord(-1, true)}),
                 "nnn");
        tree.CheckInRecord(17); // never out

        HilbertTreeRecord *record = tree.CheckOutRecord(5, true);
        TreeObject *object = record->GetTreeObject(&tree);
        QCOMPARE(tree.CheckOutRecord(5, false), record);
        QCOMPARE(record->GetTreeObject(&tree), object);
        for (int times = 0; times < 3; ++times) // one too many
            record->ReturnTreeObject(&tree);
        tree.CheckInRecord(5);
        QCOMPARE(live.inUse(), 1U);
        tree.CheckInRecord(5);
        tree.CheckInRecord(5);
        QCOMPARE(live.inUse(), 0U);

        // A kept object is the same one until 64 others have been returned after it.
        const auto use = [&tree](int id, bool keep) {
            HilbertTreeRecord *held = tree.CheckOutRecord(id, keep);
            held->GetTreeObject(&tree);
            held->ReturnTreeObject(&tree);
            tree.CheckInRecord(id);
        };
        for (int id = 10; id < 73; ++id)
            use(id, true);
        for (int id = 80; id < 200; ++id)
            use(id, false);
        QCOMPARE(answers({live.find(5), live.find(72), live.find(80)}), "yyn");
        use(73, true);
        QCOMPARE(answers({live.find(5), live.find(10)}), "ny");
        // Many records are held, and none is lost when the table grows.
        for (int id = 1; id <= 200; ++id)
            QVERIFY(tree.CheckOutRecord(id, false)->GetTreeObject(&tree));
        QCOMPARE(live.inUse(), 200U);
        for (int id = 1; id <= 200; ++id) {
            QCOMPARE(live.find(id)->recordId, id);
            live.find(id)->ReturnTreeObject(&tree);
            tree.CheckInRecord(id);
        }
        QCOMPARE(live.inUse(), 0U);
    }

    // A window over all records of few ranges is a special case, in which ranges are tested first.
    void sharedRangesAreTestedByTheirOwnEnds()
    {
        VORNBuilder builder(extent(30), nullptr, nullptr);
        for (int i = 0; i < 333; ++i)
            builder.CreateChain({square(i % 18, i / 18), square(i % 18, i / 18, 2)},
                                {span(0, 5, 0xF0), span(5, 10)}, -1);
        const std::unique_ptr<Fennims> fennims = opened(builder);
        for (const int removed : {-1, 7}) {
            const InCase inRemoved(removed);
            fennims->RemoveChain(fennims->GetChainById(removed));
            for (const qint64 time : {-1, 0, 5, 10, 11}) {
                const InCase inTime(time);
                QVector<int> found;
                fennims->OverlapsMBRs(Rect2D{-1, 99, -1, 99}, time, found);
                QVector<int> expected = fennims->GetObservationsAtTime(time);
                std::sort(expected.begin(), expected.end());
                QCOMPARE(found, expected);
            }
        }
    }

    void removedChainsAreGone()
    {
        VORNBuilder builder(extent(10), nullptr, nullptr);
        builder.CreateChain({square(0, 0)}, {span(0, 10)}, 4);
        builder.CreateChain({square(100, 50), square(7, 7)}, {span(20, 30), span(40, 60)}, 9);
        builder.CreateChain({}, {}, 17);
        const std::unique_ptr<Fennims> fennims = opened(builder);
        const int record = fennims->GetChainById(9)->GetObservation(25).second;
        HilbertTreeRecord *held = fennims->mTree->CheckOutRecord(record, true);
        TreeObject *object = held->GetTreeObject(fennims->mTree);
        QCOMPARE(fennims->GetBoundingRect().xMax, 101.0);
        fennims->RemoveChain(fennims->GetChainById(9));
        QCOMPARE(fennims->GetBoundingRect().xMax, 1.0);
        QCOMPARE(fennims->GetTimeBounds().end, 10.0);
        QCOMPARE(fennims->GetAllObjectTimes(), (QList<qint64>{0, 10}));
        QVERIFY(fennims->GetObservationsAtTime(25).isEmpty());
        QVERIFY(!fennims->mTree->CheckOutRecord(record, true));
        QCOMPARE(object->GetObjectBounds().xMax, 101.0); // still valid until it is returned
        held->ReturnTreeObject(fennims->mTree);
        fennims->mTree->CheckInRecord(record);

        Fennims again;
        QVERIFY(open(again, saved(*fennims)));
        QCOMPARE(again.mChains.keys(), (QList<int>{4, 17}));
        QCOMPARE(again.GetBoundingRect().xMax, 1.0);
        again.RemoveChain(again.GetChainById(4));
        QCOMPARE(again.GetBoundingRect().xMax, 0.0);
        QCOMPARE(again.GetTimeBounds().end, -1.0);
        Fennims empty;
        QVERIFY(open(empty, saved(again)));
        QCOMPARE(empty.GetChainCount(), 1);
        QVERIFY(empty.GetAllObjectTimes().isEmpty());
    }

    void removedRecordsCanJoinANewChain()
    {
        struct Open : Fennims {
            using Fennims::AddChain;
        } fennims;
        VORNBuilder builder(extent(10), nullptr, nullptr);
        builder.CreateChain({square(0, 0), square(3, 3)}, {span(0, 10), span(20, 30)}, -1);
        builder.CreateChain({square(6, 6)}, {span(0, 30)}, -1);
        QVERIFY(open(fennims, saved(*opened(builder))));
        const auto observations = fennims.GetChainById(0)->GetObservations();
        QVERIFY(!fennims.AddChain(observations, -1, Fennims::PolygonGeography)); // still in use
        fennims.RemoveChain(fennims.GetChainById(0));
        QVERIFY(!fennims.AddChain(observations, -1, Fennims::LineGeography));
        QVERIFY(!fennims.AddChain({{span(0, 11), observations[0].second}}, -1,
                                  Fennims::PolygonGeography));
        QVERIFY(!fennims.AddChain({{span(0, 10), 99}}, -1, Fennims::PolygonGeography));
        const FMObjectChain *chain = fennims.AddChain(observations, -1, Fennims::PolygonGeography);
        QVERIFY(chain);
        QCOMPARE(chain->id, 2);
        QCOMPARE(chain->GetObservation(25).second, observations[1].second);
        QCOMPARE(fennims.mTree->CheckOutRecord(observations[1].second, false)->chainId, 2);
        fennims.mTree->CheckInRecord(observations[1].second);
        Fennims again;
        QVERIFY(open(again, saved(fennims)));
        QCOMPARE(again.GetChainById(2)->GetObservations().size(), 2);
    }
};

QTEST_GUILESS_MAIN(TestRecordQueries)
#include "tst_RecordQueries.moc"
