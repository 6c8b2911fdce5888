// SPDX-License-Identifier: MIT
#include <QtTest>
#include <cmath>
#include <random>
#include "fennimark/FMPolygon.h"
#include "fennimark/FM_PointTree.h"
#include "support/checks.h"

namespace {

struct Member {
    QPointF place;
    int id;
};
using Hits = QVector<ptTreeQueryResult>;

// The reference: every query tests each point.
class NaiveTree {
public:
    QVector<Member> members;

    // 4 ulp of the largest coordinate of the place, the hits at the last distance and the given
    // point.
    double tolerance(const QPointF &place, double last, const QPair<double, int> &hit) const
    {
        const auto magnitude = [](const QPointF &p) {
            return std::max(std::abs(p.x()), std::abs(p.y()));
        };
        double largest = magnitude(place);
        for (const Member &member : members) {
            const QPointF gap = member.place - place;
            const double distance = gap.x() * gap.x() + gap.y() * gap.y();
            if (distance == last || (distance == hit.first && member.id == hit.second))
                largest = std::max(largest, magnitude(member.place));
        }
        return 4.0 * (std::nextafter(largest, HUGE_VAL) - largest);
    }

    // Squared distance and id of all points that are not excluded, ascending by distance, then id.
    QVector<QPair<double, int>> sorted(const QPointF &place, const QSet<int> &exclude) const
    {
        QVector<QPair<double, int>> all;
        for (const Member &member : members) {
            const QPointF gap = member.place - place;
            if (!exclude.contains(member.id))
                all.append({gap.x() * gap.x() + gap.y() * gap.y(), member.id});
        }
        std::sort(all.begin(), all.end());
        return all;
    }

    QVector<QPair<double, int>> nearest(const QPointF &place, int count,
                                        const QSet<int> &exclude) const
    {
        auto all = sorted(place, exclude);
        if (all.size() <= count)
            return all;
        const double last = all[count - 1].first;
        const auto isTied = [&](const QPair<double, int> &hit) {
            const double width = tolerance(place, last, hit);
            const double upper = std::sqrt(last) + width;
            const double lower = std::max(std::sqrt(last) - width, 0.0);
            return hit.first >= lower * lower && hit.first <= upper * upper
                   && (std::isfinite(hit.first) || !std::isfinite(last));
        };
        int end = count;
        while (end < all.size() && isTied(all[end]))
            ++end;
        all.resize(end);
        for (int i = end; end > count && i-- > 0 && isTied(all[i]);)
            all[i].first = last;
        std::sort(all.begin(), all.end());
        return all;
    }

    template <class Holds> QVector<int> where(const QSet<int> &exclude, Holds holds) const
    {
        QVector<int> found;
        for (const Member &member : members) {
            if (!exclude.contains(member.id) && holds(member.place))
                found.append(member.id);
        }
        std::sort(found.begin(), found.end());
        return found;
    }
};

QVector<QPair<double, int>> pairs(const Hits &hits)
{
    QVector<QPair<double, int>> result;
    for (const ptTreeQueryResult &hit : hits)
        result.append({hit.distance, hit.id});
    return result;
}

QVector<int> ids(const Hits &hits)
{
    QVector<int> result;
    for (const ptTreeQueryResult &hit : hits)
        result.append(hit.id);
    return result;
}

/// The coordinates of a point of a kind of data, from a place in the unit square and a place of a
/// lattice.
const QMap<QString, QPointF (*)(QPointF any, QPointF knot)> kKinds{
    {"random", [](QPointF any, QPointF) { return any; }},
    {"lattice", [](QPointF, QPointF knot) { return knot; }},
    {"lattice of 0.1", [](QPointF, QPointF knot) { return 0.1 * knot; }},
    {"lattice of 10.1", [](QPointF, QPointF knot) { return 10.1 * knot; }},
    {"collinear", [](QPointF any, QPointF) { return QPointF(any.x(), 2.0); }},
    {"one place", [](QPointF, QPointF) { return QPointF(3.0, -4.0); }},
    {"pairs", [](QPointF any, QPointF) { return QPointF((8.0 * any).toPoint()); }},
    {"far off", [](QPointF any, QPointF) { return any + QPointF(5e8, -3e8); }},
    {"clusters", [](QPointF any, QPointF) {
         return QPointF(std::pow(10.0, 12.0 * any.x()), -std::pow(10.0, 12.0 * any.y()));
     }}};

QVector<Member> makeMembers(const QString &kind, int count, std::mt19937 &random)
{
    const auto unit = [&random] { return double(random()) / 4294967296.0; };
    QVector<Member> members;
    const int side = std::max(1, int(std::sqrt(double(count))));
    for (int i = 0; i < count; ++i) {
        const QPointF place = kKinds[kind]({unit(), unit()}, QPointF(i % side, i / side));
        members.append({place, kind == "pairs" ? i / 2 : i});
    }
    return members;
}

void fill(FM_PointTree &tree, const QVector<Member> &members)
{
    QVector<QPointF> points;
    QVector<int> memberIds;
    for (const Member &member : members) {
        points.append(member.place);
        memberIds.append(member.id);
    }
    QVERIFY(tree.SetPoints(points, memberIds, nullptr, 0, 100));
}

const Member &anyOf(const QVector<Member> &members, std::mt19937 &random)
{
    return members[int(random() % unsigned(members.size()))];
}

QPointF placeNear(const QVector<Member> &members, std::mt19937 &random)
{
    const QPointF a = anyOf(members, random).place;
    return random() % 2 ? a : 0.5 * (a + anyOf(members, random).place);
}

QSet<int> someIds(const QVector<Member> &members, std::mt19937 &random)
{
    QSet<int> result;
    for (unsigned i = random() % 4; i > 0; --i)
        result.insert(anyOf(members, random).id);
    return result;
}

void compareQueries(const FM_PointTree &tree, const NaiveTree &naive, std::mt19937 &random)
{
    const QPointF place = placeNear(naive.members, random);
    const QSet<int> exclude = someIds(naive.members, random);
    const int count = 1 + int(random() % (random() % 4 ? 10 : 100));
    Hits hits;
    const auto expected = naive.nearest(place, count, exclude);
    QCOMPARE(tree.GetNearestNeighbors(place, count, exclude, hits, true), !expected.isEmpty());
    QCOMPARE(pairs(hits), expected);
    for (const ptTreeQueryResult &hit : qAsConst(hits))
        QCOMPARE(hit.angle, std::atan2(hit.point.y() - place.y(), hit.point.x() - place.x()));

    auto within = naive.sorted(place, exclude);
    const double range =
        std::sqrt(within.isEmpty() ? 1.0 : within[int(random() % unsigned(within.size()))].first);
    while (!within.isEmpty() && within.last().first > range * range)
        within.removeLast();
    QVERIFY(tree.GetRangeNeighbors(place, range, exclude, hits, true));
    QCOMPARE(pairs(hits), within);

    const QRectF rect = QRectF(place, placeNear(naive.members, random)); // either way round
    const QRectF window = rect.normalized();
    const auto inside = naive.where(exclude, [&window](const QPointF &p) {
        return window.left() <= p.x() && p.x() <= window.right() && window.top() <= p.y()
               && p.y() <= window.bottom();
    });
    QVERIFY(tree.GetPointsInRect(rect, exclude, hits));
    QCOMPARE(ids(hits), inside);
}

int gReportsLeft = 0;
int gLastPercent = 0;
bool report(int percent, const char *)
{
    gLastPercent = percent;
    return --gReportsLeft > 0;
}

} // namespace

class TestPointTree : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void queriesAgreeWithLookingAtEachPoint()
    {
        std::mt19937 random(walkSeed(1));
        for (const QString &kind : kKinds.keys()) {
            for (const int count : {1, 7, 8, 9, 65, 500}) {
                const InCase inCase(QString("%1, %2").arg(kind).arg(count));
                NaiveTree naive{makeMembers(kind, count, random)};
                FM_PointTree tree;
                fill(tree, naive.members);
                for (int i = 0; i < 60 && !QTest::currentTestFailed(); ++i)
                    compareQueries(tree, naive, random);
            }
        }
    }

    void changesAgreeWithLookingAtEachPoint()
    {
        // Long enough that trees are merged, that one loses half of its points and is rebuilt, and
        // that all become one tree after many queries.
        std::mt19937 random(walkSeed(5));
        NaiveTree naive;
        FM_PointTree tree;
        for (int step = 0; step < 6000 && !QTest::currentTestFailed(); ++step) {
            const bool shrinks = step / 1500 % 2;
            const int kind = static_cast<int>(random() % 100);
            if (naive.members.isEmpty() || kind < (shrinks ? 25 : 60)) {
                // A far point must not enlarge the tolerance of other ties.
                const double x = random() % 300 ? double(random() % 64)
                                 : random() % 2 ? 1e15
                                                : 1e300;
                naive.members.append({{x, double(random() % 64)}, int(random() % 500)});
                QVERIFY(tree.AddPointToSet(naive.members.last().place, naive.members.last().id));
            } else if (kind < 80) {
                const int at = int(random() % unsigned(naive.members.size()));
                const Member member = naive.members.takeAt(at);
                QVERIFY(tree.RemovePointFromSet(member.place, member.id));
            } else {
                for (unsigned i = random() % 100 ? 1 : 900; i > 0; --i)
                    compareQueries(tree, naive, random);
            }
        }
    }

    void polygonsHoldWhatTheirPredicateSays()
    {
        // Large enough for cells inside, outside and in the hole. Lattice points are on edges and
        // corners.
        std::mt19937 random(walkSeed(2));
        const FMPolygon star(QList<QPolygonF>{
            QPolygonF({{5, 5}, {60, 20}, {95, 5}, {80, 60}, {95, 95}, {50, 80}, {5, 95}, {20, 50}}),
            QPolygonF({{30, 30}, {30, 60}, {60, 60}, {60, 30}})});
        const FMPolygon sliver(QVector<QPointF>{{0, 0}, {99, 99}, {0, 0.5}});
        const FMPolygon apart(QVector<QPointF>{{200, 0}, {210, 0}, {210, 10}});
        for (const char *kind : {"lattice", "random"}) {
            NaiveTree naive{makeMembers(kind, 10000, random)};
            if (kind == QByteArray("random")) {
                for (Member &member : naive.members)
                    member.place *= 100;
            }
            FM_PointTree tree;
            fill(tree, naive.members);
            naive.members.append({{20, 50}, 20000}); // at a vertex
            tree.AddPointToSet({20, 50}, 20000);
            for (const FMPolygon *polygon : {&star, &sliver, &apart}) {
                const QSet<int> exclude = someIds(naive.members, random);
                const auto inside = naive.where(
                    exclude, [polygon](const QPointF &p) { return polygon->ContainsPoint(p); });
                Hits hits;
                QVERIFY(tree.GetPointsInPolygon(polygon, exclude, hits));
                QCOMPARE(ids(hits), inside);
                QCOMPARE(inside.isEmpty(), polygon == &apart);
            }
        }
    }

    void anglesAreThoseOfTheCLibrary()
    {
        std::mt19937 random(walkSeed(6));
        const auto coordinate = [&random] {
            const double simple[] = {0.0, 1.0, -1.0, 1e-300, -1e-300, 1e305, -1e305};
            const double unit = double(random()) / 2147483648.0 - 1.0;
            return random() % 4 == 0 ? simple[random() % 7]
                                     : unit * std::pow(10.0, double(random() % 20));
        };
        for (int i = 0; i < 20000; ++i) {
            const QPointF point(coordinate(), coordinate());
            FM_PointTree tree;
            QVERIFY(tree.AddPointToSet(point, 1));
            Hits hits;
            QVERIFY(tree.GetNearestNeighbors(QPointF(0, 0), 1, {}, hits, true));
            const double expected = std::atan2(point.y(), point.x());
            const double ulp = std::nextafter(std::abs(expected), 10.0) - std::abs(expected);
            const InCase inCase(point);
            const double error = std::abs(hits[0].angle - expected) / ulp;
            QVERIFY2(error <= 2.5, QByteArray::number(error));
            QCOMPARE(std::signbit(hits[0].angle), std::signbit(expected));
        }
    }

    void cursorsSurviveChanges()
    {
        std::mt19937 random(walkSeed(8));
        const char *const kinds[] = {"random", "lattice of 0.1", "one place"};
        for (int round = 0; round < 24; ++round) {
            const char *const kind = kinds[round % 3];
            const bool changes = round % 2;
            const InCase inRound(round);
            NaiveTree naive{makeMembers(kind, 200, random)};
            FM_PointTree tree;
            fill(tree, naive.members);
            const QPointF place = placeNear(naive.members, random);
            const QSet<int> exclude = someIds(naive.members, random);
            void *cursor = nullptr;
            ptTreeQueryResult hit;
            bool more = tree.GetFirstNearestNeighbor(place, exclude, hit, cursor);
            QCOMPARE(qMakePair(hit.distance, hit.id), naive.sorted(place, exclude).first());
            while (more && !QTest::currentTestFailed()) {
                const double last = hit.distance;
                if (changes && random() % 3 == 0) {
                    const Member added{makeMembers(kind, 1, random)[0].place,
                                       1000 + int(random() % 9000)};
                    naive.members.append(added);
                    tree.AddPointToSet(added.place, added.id);
                }
                if (changes && random() % 3 == 0) {
                    const Member gone =
                        naive.members.takeAt(int(random() % unsigned(naive.members.size())));
                    QVERIFY(tree.RemovePointFromSet(gone.place, gone.id));
                }
                const QPair<double, int> position{last, hit.id};
                const auto all = naive.sorted(place, exclude);
                const auto expected = std::upper_bound(all.begin(), all.end(), position);
                more = tree.GetNextNearestNeighbor(hit, cursor);
                QCOMPARE(more, expected != all.end());
                if (more)
                    QCOMPARE(qMakePair(hit.distance, hit.id), *expected);
            }
            QVERIFY(!tree.GetNextNearestNeighbor(hit, cursor));
            tree.DoneWithNeighborSearch(cursor);
            QVERIFY(!cursor);
            tree.DoneWithNeighborSearch(cursor);
        }
    }

    void cursorsBelongToTheirTree()
    {
        FM_PointTree a;
        FM_PointTree b;
        a.AddPointToSet(QPointF(1, 1), 1);
        a.AddPointToSet(QPointF(2, 2), 2);
        b.AddPointToSet(QPointF(1, 1), 1);
        ptTreeQueryResult hit;
        void *cursor = nullptr;
        QVERIFY(!FM_PointTree().GetFirstNearestNeighbor(QPointF(), {}, hit, cursor));
        QVERIFY(a.GetFirstNearestNeighbor(QPointF(), {}, hit, cursor));
        QVERIFY(!b.GetNextNearestNeighbor(hit, cursor));
        void *copy = cursor;
        b.DoneWithNeighborSearch(copy);
        QVERIFY(a.GetNextNearestNeighbor(hit, cursor));
        QCOMPARE(hit.id, 2);
        copy = cursor;
        a.DoneWithNeighborSearch(cursor);
        a.DoneWithNeighborSearch(copy); // a second time
        // This cursor is left open, so the tree must free it.
        QVERIFY(a.GetFirstNearestNeighbor(QPointF(), {}, hit, cursor));
    }

    void removalNeedsPlaceAndId()
    {
        FM_PointTree tree;
        for (const int id : {1, 2, 2})
            tree.AddPointToSet(QPointF(3, 4), id);
        QVERIFY(!tree.RemovePointFromSet(QPointF(3, 4), 3));
        QVERIFY(!tree.RemovePointFromSet(QPointF(3, std::nextafter(4.0, 5.0)), 1));
        QVERIFY(tree.RemovePointFromSet(QPointF(3, 4), 2));
        Hits hits;
        QVERIFY(tree.GetNearestNeighbors(QPointF(), 9, {}, hits, true));
        QCOMPARE(ids(hits), (QVector<int>{1, 2}));
    }

    void copiesPartWhenOneChanges()
    {
        std::mt19937 random(walkSeed(12));
        NaiveTree naive{makeMembers("random", 300, random)};
        FM_PointTree tree;
        fill(tree, naive.members);
        FM_PointTree copy(tree);
        NaiveTree naiveCopy = naive;
        for (int i = 0; i < 200; ++i) {
            const Member gone = naiveCopy.members.takeFirst();
            QVERIFY(copy.RemovePointFromSet(gone.place, gone.id));
        }
        for (int i = 0; i < 20 && !QTest::currentTestFailed(); ++i) {
            compareQueries(tree, naive, random);
            compareQueries(copy, naiveCopy, random);
        }
        tree = copy;
        compareQueries(tree, naiveCopy, random);
    }

    void badInputIsRefused()
    {
        FM_PointTree tree;
        tree.AddPointToSet(QPointF(1, 1), 1);
        QVERIFY(!tree.AddPointToSet(QPointF(qQNaN(), 1), 2));
        Hits hits(3);
        const auto nearest = [&](double x, int count, const QSet<int> &exclude) {
            return tree.GetNearestNeighbors(QPointF(x, 0), count, exclude, hits, true);
        };
        const auto inRange = [&](double range) {
            return tree.GetRangeNeighbors(QPointF(), range, {}, hits, true);
        };
        QCOMPARE(answers({nearest(0, 0, {}), nearest(qQNaN(), 1, {}), nearest(0, 1, {1})}), "nnn");
        QVERIFY(hits.isEmpty());
        QCOMPARE(
            answers({inRange(-1.0), inRange(qQNaN()), tree.GetPointsInPolygon(nullptr, {}, hits)}),
            "nnn");
        QCOMPARE(answers({inRange(HUGE_VAL), hits.size() == 1, nearest(0, INT_MAX, {}),
                          hits.size() == 1}),
                 "yyyy");
        QVERIFY(!tree.SetPoints({QPointF(1, 1)}, {1, 2}, nullptr, 0, 100));
        QVERIFY(!nearest(0, 1, {})); // and the tree is empty
        QVERIFY(!tree.SetPoints({QPointF(1, HUGE_VAL)}, {1}, nullptr, 0, 100));
        QVERIFY(tree.SetPoints({}, {}, nullptr, 0, 100));
    }

    void progressRunsBetweenItsLimits()
    {
        for (const int count : {1, 12, 47, 48, 49, 300}) { // every tree asks
            FM_PointTree small;
            gReportsLeft = 1;
            QVERIFY(!small.SetPoints(QVector<QPointF>(count), QVector<int>(count), report, 0, 100));
            QCOMPARE(gReportsLeft, 0);
        }
        std::mt19937 random(walkSeed(1));
        QVector<QPointF> points(5000);
        const QVector<int> pointIds(5000);
        for (QPointF &point : points)
            point = QPointF(double(random()), double(random()));
        FM_PointTree tree;
        gReportsLeft = INT_MAX;
        QVERIFY(tree.SetPoints(points, pointIds, report, 40, 60));
        QCOMPARE(gLastPercent, 60);
        gReportsLeft = 20;
        QVERIFY(!tree.SetPoints(points, pointIds, report, 40, 60));
        QCOMPARE(gReportsLeft, 0);
        QCOMPARE(answers({gLastPercent > 40, gLastPercent < 60}), "yy");
        Hits hits;
        QVERIFY(!tree.GetNearestNeighbors(QPointF(), 1, {}, hits, true));
    }
};

QTEST_GUILESS_MAIN(TestPointTree)
#include "tst_FM_PointTree.moc"
