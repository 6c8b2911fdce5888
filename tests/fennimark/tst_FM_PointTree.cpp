// SPDX-License-Identifier: MIT
#include <QtTest>
#include <cmath>
#include <random>
#include "fennimark/FMPolygon.h"
#include "fennimark/FM_PointTree.h"

namespace {

struct Member {
    double x;
    double y;
    int id;
};
using Hits = QVector<ptTreeQueryResult>;

// Every query by looking at each point.
class NaiveTree {
public:
    QVector<Member> members;

    static double distance(const Member &member, const QPointF &place)
    {
        const double dx = member.x - place.x();
        const double dy = member.y - place.y();
        return dx * dx + dy * dy;
    }

    double tolerance() const
    {
        double largest = 0.0;
        for (const Member &member : members)
            largest = std::max({largest, std::abs(member.x), std::abs(member.y)});
        return 4.0 * (std::nextafter(largest, HUGE_VAL) - largest);
    }

    // Ascending by distance, then id: squared distance and id of all that are not excluded.
    QVector<QPair<double, int>> sorted(const QPointF &place, const QSet<int> &exclude) const
    {
        QVector<QPair<double, int>> all;
        for (const Member &member : members) {
            if (!exclude.contains(member.id))
                all.append({distance(member, place), member.id});
        }
        std::sort(all.begin(), all.end());
        return all;
    }

    QVector<QPair<double, int>> nearest(const QPointF &place, int count, const QSet<int> &exclude) const
    {
        auto all = sorted(place, exclude);
        if (all.size() <= count)
            return all;
        const double last = all[count - 1].first;
        const double upper = std::sqrt(last) + tolerance();
        const double lower = std::max(std::sqrt(last) - tolerance(), 0.0);
        int end = count;
        while (end < all.size() && all[end].first <= upper * upper)
            ++end;
        all.resize(end);
        if (end > count) {
            for (auto &hit : all)
                hit.first = hit.first >= lower * lower ? last : hit.first;
        }
        std::sort(all.begin(), all.end());
        return all;
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

QVector<Member> makeMembers(const QString &kind, int count, std::mt19937 &random)
{
    const auto unit = [&random] { return double(random()) / 4294967296.0; };
    QVector<Member> members;
    const int side = std::max(1, int(std::sqrt(double(count))));
    for (int i = 0; i < count; ++i) {
        Member member{unit(), unit(), i};
        if (kind == "lattice")
            member = {double(i % side), double(i / side), i};
        else if (kind == "lattice of 0.1")
            member = {0.1 * (i % side), 0.1 * (i / side), i};
        else if (kind == "lattice of 10.1")
            member = {10.1 * (i % side), 10.1 * (i / side), i};
        else if (kind == "collinear")
            member = {unit(), 2.0, i};
        else if (kind == "one place")
            member = {3.0, -4.0, i};
        else if (kind == "pairs")
            member = {std::floor(8.0 * unit()), std::floor(8.0 * unit()), i / 2};
        else if (kind == "far off")
            member = {5e8 + unit(), -3e8 + unit(), i};
        else if (kind == "clusters")
            member = {std::pow(10.0, 12.0 * unit()), -std::pow(10.0, 12.0 * unit()), i};
        members.append(member);
    }
    return members;
}

void fill(FM_PointTree &tree, const QVector<Member> &members)
{
    QVector<QPointF> points;
    QVector<int> memberIds;
    for (const Member &member : members) {
        points.append(QPointF(member.x, member.y));
        memberIds.append(member.id);
    }
    QVERIFY(tree.SetPoints(points, memberIds, nullptr, 0, 100));
}

QPointF placeNear(const QVector<Member> &members, std::mt19937 &random)
{
    const Member &a = members[int(random() % unsigned(members.size()))];
    const Member &b = members[int(random() % unsigned(members.size()))];
    return random() % 2 ? QPointF(a.x, a.y) : QPointF(0.5 * (a.x + b.x), 0.5 * (a.y + b.y));
}

QSet<int> someIds(const QVector<Member> &members, std::mt19937 &random)
{
    QSet<int> result;
    for (unsigned i = random() % 4; i > 0; --i)
        result.insert(members[int(random() % unsigned(members.size()))].id);
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
    const double range = std::sqrt(within.isEmpty() ? 1.0 : within[int(random() % unsigned(within.size()))].first);
    while (!within.isEmpty() && within.last().first > range * range)
        within.removeLast();
    QVERIFY(tree.GetRangeNeighbors(place, range, exclude, hits, true));
    QCOMPARE(pairs(hits), within);

    const QRectF rect = QRectF(place, placeNear(naive.members, random)); // either way round
    const QRectF window = rect.normalized();
    QVector<int> inside;
    for (const Member &member : naive.members) {
        if (!exclude.contains(member.id) && window.left() <= member.x && member.x <= window.right()
            && window.top() <= member.y && member.y <= window.bottom())
            inside.append(member.id);
    }
    std::sort(inside.begin(), inside.end());
    QVERIFY(tree.GetPointsInRect(rect, exclude, hits));
    QCOMPARE(ids(hits), inside);
}

int gReports = 0;
int gLastPercent = 0;
bool report(int percent, const char *)
{
    ++gReports;
    gLastPercent = percent;
    return gReports < 20;
}
bool reportAll(int percent, const char *)
{
    gLastPercent = percent;
    return true;
}

} // namespace

class TestPointTree : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void queriesAgreeWithLookingAtEachPoint_data();
    void queriesAgreeWithLookingAtEachPoint();
    void changesAgreeWithLookingAtEachPoint();
    void polygonsHoldWhatTheirPredicateSays();
    void anglesAreThoseOfTheCLibrary();
    void tiesOfALatticeDoNotDependOnItsSpacing();
    void aTieGroupHasOneDistance();
    void cursorsGoThroughAllPointsInOrder();
    void cursorsSurviveChanges();
    void cursorsBelongToTheirTree();
    void removalNeedsPlaceAndId();
    void copiesPartWhenOneChanges();
    void aFarPointWidensTiesOnlyWhileItIsThere();
    void badInputIsRefused();
    void progressRunsBetweenItsLimits();
};

void TestPointTree::queriesAgreeWithLookingAtEachPoint_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<int>("count");
    const QStringList kinds{"random", "lattice", "lattice of 0.1", "lattice of 10.1", "collinear",
                            "one place", "pairs", "far off", "clusters"};
    for (const QString &kind : kinds) {
        for (const int count : {1, 7, 8, 9, 65, 500})
            QTest::newRow(qPrintable(QString("%1, %2").arg(kind).arg(count))) << kind << count;
    }
}

void TestPointTree::queriesAgreeWithLookingAtEachPoint()
{
    QFETCH(QString, kind);
    QFETCH(int, count);
    std::mt19937 random(static_cast<unsigned>(count));
    NaiveTree naive{makeMembers(kind, count, random)};
    FM_PointTree tree;
    fill(tree, naive.members);
    for (int i = 0; i < 60 && !QTest::currentTestFailed(); ++i)
        compareQueries(tree, naive, random);
}

void TestPointTree::changesAgreeWithLookingAtEachPoint()
{
    // Long enough for trees to be absorbed, to die by half and to be put together after many queries.
    std::mt19937 random(5);
    NaiveTree naive;
    FM_PointTree tree;
    for (int step = 0; step < 6000 && !QTest::currentTestFailed(); ++step) {
        const bool shrinks = step / 1500 % 2;
        const int kind = static_cast<int>(random() % 100);
        if (naive.members.isEmpty() || kind < (shrinks ? 25 : 60)) {
            const Member member{double(random() % 64), double(random() % 64), int(random() % 500)};
            naive.members.append(member);
            QVERIFY(tree.AddPointToSet(QPointF(member.x, member.y), member.id));
        } else if (kind < 80) {
            const int at = int(random() % unsigned(naive.members.size()));
            const Member member = naive.members.takeAt(at);
            QVERIFY(tree.RemovePointFromSet(QPointF(member.x, member.y), member.id));
        } else if (!naive.members.isEmpty()) {
            for (unsigned i = random() % 100 ? 1 : 900; i > 0; --i)
                compareQueries(tree, naive, random);
        }
    }
}

void TestPointTree::polygonsHoldWhatTheirPredicateSays()
{
    // Large enough for cells that lie inside, outside and in the hole; lattice points lie on edges and corners.
    std::mt19937 random(2);
    const FMPolygon star(QList<QPolygonF>{
        QPolygonF({{5, 5}, {60, 20}, {95, 5}, {80, 60}, {95, 95}, {50, 80}, {5, 95}, {20, 50}}),
        QPolygonF({{30, 30}, {30, 60}, {60, 60}, {60, 30}})});
    const FMPolygon sliver(QVector<QPointF>{{0, 0}, {99, 99}, {0, 0.5}});
    const FMPolygon apart(QVector<QPointF>{{200, 0}, {210, 0}, {210, 10}});
    for (const char *kind : {"lattice", "random"}) {
        NaiveTree naive{makeMembers(kind, 10000, random)};
        if (kind == QByteArray("random")) {
            for (Member &member : naive.members)
                member = {100 * member.x, 100 * member.y, member.id};
        }
        FM_PointTree tree;
        fill(tree, naive.members);
        tree.AddPointToSet(QPointF(20, 50), 20000);
        naive.members.append({20, 50, 20000});
        for (const FMPolygon *polygon : {&star, &sliver, &apart}) {
            const QSet<int> exclude = someIds(naive.members, random);
            QVector<int> inside;
            for (const Member &member : naive.members) {
                if (!exclude.contains(member.id) && polygon->ContainsPoint(member.x, member.y))
                    inside.append(member.id);
            }
            Hits hits;
            QVERIFY(tree.GetPointsInPolygon(polygon, exclude, hits));
            QCOMPARE(ids(hits), inside);
            QCOMPARE(inside.isEmpty(), polygon == &apart);
        }
    }
}

void TestPointTree::anglesAreThoseOfTheCLibrary()
{
    std::mt19937 random(6);
    const auto coordinate = [&random] {
        const double simple[] = {0.0, 1.0, -1.0, 1e-300, -1e-300, 1e305, -1e305};
        const double unit = double(random()) / 2147483648.0 - 1.0;
        return random() % 4 == 0 ? simple[random() % 7] : unit * std::pow(10.0, double(random() % 20));
    };
    for (int i = 0; i < 20000; ++i) {
        const QPointF point(coordinate(), coordinate());
        FM_PointTree tree;
        QVERIFY(tree.AddPointToSet(point, 1));
        Hits hits;
        QVERIFY(tree.GetNearestNeighbors(QPointF(0, 0), 1, {}, hits, true));
        const double expected = std::atan2(point.y(), point.x());
        const double ulp = std::nextafter(std::abs(expected), 10.0) - std::abs(expected);
        QVERIFY2(std::abs(hits[0].angle - expected) <= 2.5 * ulp && std::signbit(hits[0].angle) == std::signbit(expected),
                 qPrintable(QString("%1 %2").arg(point.x(), 0, 'g', 17).arg(point.y(), 0, 'g', 17)));
    }
}

void TestPointTree::tiesOfALatticeDoNotDependOnItsSpacing()
{
    constexpr int kSide = 60;
    FM_PointTree trees[3];
    const double spacings[] = {1.0, 0.1, 10.1};
    for (int t = 0; t < 3; ++t) {
        for (int i = 0; i < kSide * kSide; ++i)
            trees[t].AddPointToSet(QPointF(spacings[t] * (i % kSide), spacings[t] * (i / kSide)), i);
    }
    for (int i = 0; i < kSide * kSide; ++i) {
        for (const int count : {1, 4, 5, 20}) {
            QVector<QSet<int>> found;
            for (int t = 0; t < 3; ++t) {
                Hits hits;
                QVERIFY(trees[t].GetNearestNeighbors(QPointF(spacings[t] * (i % kSide), spacings[t] * (i / kSide)), count,
                                                     {i}, hits, true));
                const QVector<int> list = ids(hits);
                found.append(QSet<int>(list.begin(), list.end()));
            }
            QCOMPARE(found[1], found[0]);
            QCOMPARE(found[2], found[0]);
        }
    }
}

void TestPointTree::aTieGroupHasOneDistance()
{
    FM_PointTree tree;
    for (int i = 0; i < 100; ++i)
        tree.AddPointToSet(QPointF(0.1 * (i % 10), 0.1 * (i / 10)), i);
    Hits hits;
    QVERIFY(tree.GetNearestNeighbors(QPointF(0.1 * 4, 0.1 * 4), 6, {44}, hits, true));
    QCOMPARE(hits.size(), 8); // four beside, four across the corners
    QCOMPARE(ids(hits).mid(4), (QVector<int>{33, 35, 53, 55}));
    for (int i = 5; i < 8; ++i)
        QVERIFY(hits[i].distance == hits[4].distance);
    QVERIFY(hits[3].distance < hits[4].distance);
}

void TestPointTree::cursorsGoThroughAllPointsInOrder()
{
    std::mt19937 random(3);
    for (const char *kind : {"random", "lattice of 0.1", "one place", "pairs"}) {
        NaiveTree naive{makeMembers(kind, 300, random)};
        FM_PointTree tree;
        fill(tree, naive.members);
        const QPointF place = placeNear(naive.members, random);
        const QSet<int> exclude = someIds(naive.members, random);
        Hits hits;
        ptTreeQueryResult hit;
        void *cursor = nullptr;
        for (bool more = tree.GetFirstNearestNeighbor(place, exclude, hit, cursor); more;
             more = tree.GetNextNearestNeighbor(hit, cursor))
            hits.append(hit);
        QCOMPARE(pairs(hits), naive.sorted(place, exclude));
        QVERIFY(!tree.GetNextNearestNeighbor(hit, cursor));
        tree.DoneWithNeighborSearch(cursor);
        QVERIFY(!cursor);
        tree.DoneWithNeighborSearch(cursor);
    }
    FM_PointTree empty;
    void *cursor = nullptr;
    ptTreeQueryResult hit;
    QVERIFY(!empty.GetFirstNearestNeighbor(QPointF(), {}, hit, cursor));
    empty.DoneWithNeighborSearch(cursor);
}

void TestPointTree::cursorsSurviveChanges()
{
    std::mt19937 random(8);
    for (int round = 0; round < 20; ++round) {
        NaiveTree naive{makeMembers("random", 200, random)};
        FM_PointTree tree;
        fill(tree, naive.members);
        const QPointF place(0.5, 0.5);
        void *cursor = nullptr;
        ptTreeQueryResult hit;
        bool more = tree.GetFirstNearestNeighbor(place, {}, hit, cursor);
        while (more && !QTest::currentTestFailed()) {
            const double last = hit.distance;
            if (random() % 3 == 0) {
                const Member added{double(random() % 1000) / 1000, double(random() % 1000) / 1000, 1000 + int(random() % 9000)};
                naive.members.append(added);
                tree.AddPointToSet(QPointF(added.x, added.y), added.id);
            }
            if (random() % 3 == 0) {
                const Member gone = naive.members.takeAt(int(random() % unsigned(naive.members.size())));
                QVERIFY(tree.RemovePointFromSet(QPointF(gone.x, gone.y), gone.id));
            }
            const QPair<double, int> position{last, hit.id};
            const auto all = naive.sorted(place, {});
            const auto expected = std::upper_bound(all.begin(), all.end(), position);
            more = tree.GetNextNearestNeighbor(hit, cursor);
            QCOMPARE(more, expected != all.end());
            if (more)
                QCOMPARE(qMakePair(hit.distance, hit.id), *expected);
        }
        tree.DoneWithNeighborSearch(cursor);
    }
}

void TestPointTree::cursorsBelongToTheirTree()
{
    FM_PointTree a;
    FM_PointTree b;
    a.AddPointToSet(QPointF(1, 1), 1);
    a.AddPointToSet(QPointF(2, 2), 2);
    b.AddPointToSet(QPointF(1, 1), 1);
    ptTreeQueryResult hit;
    void *cursor = nullptr;
    QVERIFY(a.GetFirstNearestNeighbor(QPointF(), {}, hit, cursor));
    QVERIFY(!b.GetNextNearestNeighbor(hit, cursor));
    void *copy = cursor;
    b.DoneWithNeighborSearch(copy);
    QVERIFY(a.GetNextNearestNeighbor(hit, cursor));
    QCOMPARE(hit.id, 2);
    copy = cursor;
    a.DoneWithNeighborSearch(cursor);
    a.DoneWithNeighborSearch(copy); // a second time
    QVERIFY(a.GetFirstNearestNeighbor(QPointF(), {}, hit, cursor)); // left open: the tree frees it
}

void TestPointTree::removalNeedsPlaceAndId()
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
    QVERIFY(tree.RemovePointFromSet(QPointF(3, 4), 2));
    QVERIFY(tree.RemovePointFromSet(QPointF(3, 4), 1));
    QVERIFY(!tree.RemovePointFromSet(QPointF(3, 4), 1));
    QVERIFY(!tree.GetNearestNeighbors(QPointF(), 9, {}, hits, true));
    QVERIFY(hits.isEmpty());
}

void TestPointTree::copiesPartWhenOneChanges()
{
    std::mt19937 random(12);
    NaiveTree naive{makeMembers("random", 300, random)};
    FM_PointTree tree;
    fill(tree, naive.members);
    FM_PointTree copy(tree);
    NaiveTree naiveCopy = naive;
    for (int i = 0; i < 200; ++i) {
        const Member gone = naiveCopy.members.takeFirst();
        QVERIFY(copy.RemovePointFromSet(QPointF(gone.x, gone.y), gone.id));
    }
    for (int i = 0; i < 20 && !QTest::currentTestFailed(); ++i) {
        compareQueries(tree, naive, random);
        compareQueries(copy, naiveCopy, random);
    }
    tree = copy;
    compareQueries(tree, naiveCopy, random);
}

void TestPointTree::aFarPointWidensTiesOnlyWhileItIsThere()
{
    FM_PointTree tree;
    tree.AddPointToSet(QPointF(1, 0), 1);
    tree.AddPointToSet(QPointF(0, 1.25), 2);
    tree.AddPointToSet(QPointF(1e15, 0), 3);
    Hits hits;
    QVERIFY(tree.GetNearestNeighbors(QPointF(0, 0), 1, {}, hits, true));
    QCOMPARE(ids(hits), (QVector<int>{1, 2})); // an ulp is 0.125 out there
    QVERIFY(tree.RemovePointFromSet(QPointF(1e15, 0), 3));
    QVERIFY(tree.GetNearestNeighbors(QPointF(0, 0), 1, {}, hits, true));
    QCOMPARE(ids(hits), (QVector<int>{1}));
}

void TestPointTree::badInputIsRefused()
{
    FM_PointTree tree;
    const double inf = HUGE_VAL;
    tree.AddPointToSet(QPointF(1, 1), 1);
    QVERIFY(!tree.AddPointToSet(QPointF(qQNaN(), 1), 2));
    Hits hits(3);
    QVERIFY(!tree.GetNearestNeighbors(QPointF(), 0, {}, hits, true));
    QVERIFY(hits.isEmpty());
    QVERIFY(!tree.GetNearestNeighbors(QPointF(qQNaN(), 0), 1, {}, hits, true));
    QVERIFY(!tree.GetNearestNeighbors(QPointF(), 1, {1}, hits, true));
    QVERIFY(!tree.GetRangeNeighbors(QPointF(), -1.0, {}, hits, true));
    QVERIFY(!tree.GetRangeNeighbors(QPointF(), qQNaN(), {}, hits, true));
    QVERIFY(tree.GetRangeNeighbors(QPointF(), inf, {}, hits, true));
    QCOMPARE(ids(hits), QVector<int>{1});
    QVERIFY(tree.GetNearestNeighbors(QPointF(), INT_MAX, {}, hits, true));
    QCOMPARE(ids(hits), QVector<int>{1});
    QVERIFY(!tree.GetPointsInPolygon(nullptr, {}, hits));
    QVERIFY(!tree.SetPoints({QPointF(1, 1)}, {1, 2}, nullptr, 0, 100));
    QVERIFY(!tree.GetNearestNeighbors(QPointF(), 1, {}, hits, true)); // and the tree is empty
    QVERIFY(!tree.SetPoints({QPointF(1, inf)}, {1}, nullptr, 0, 100));
    QVERIFY(tree.SetPoints({}, {}, nullptr, 0, 100));
}

void TestPointTree::progressRunsBetweenItsLimits()
{
    std::mt19937 random(1);
    QVector<QPointF> points(5000);
    QVector<int> pointIds(5000);
    for (QPointF &point : points)
        point = QPointF(double(random()), double(random()));
    FM_PointTree tree;
    QVERIFY(tree.SetPoints(points, pointIds, reportAll, 40, 60));
    QCOMPARE(gLastPercent, 60);
    QVERIFY(!tree.SetPoints(points, pointIds, report, 40, 60));
    QCOMPARE(gReports, 20);
    QVERIFY(gLastPercent > 40 && gLastPercent < 60);
    Hits hits;
    QVERIFY(!tree.GetNearestNeighbors(QPointF(), 1, {}, hits, true));
}

QTEST_GUILESS_MAIN(TestPointTree)
#include "tst_FM_PointTree.moc"
