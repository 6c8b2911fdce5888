// SPDX-License-Identifier: MIT
#include <QtTest>
#include <limits>
#include <random>
#include <set>
#include "datainterface/TimeAPI.h"
#include "support/checks.h"
#include "support/support.h"

using Stamps = QList<TimeStamp>;

namespace {

QVector<Interval> intervals(const Stamps &list)
{
    QVector<Interval> result;
    for (const TimeStamp &stamp : list)
        result.append(stamp);
    return result;
}

Stamps asStamps(const QVector<Interval> &list)
{
    Stamps result;
    for (const Interval &interval : list)
        result.append(interval);
    return result;
}

// The naive model: a stamp as the set of places it covers, 2t for the instant t and 2t + 1 for the
// gap behind it.
using Places = std::set<qint64>;

void cover(Places &places, const TimeStamp &stamp)
{
    const qint64 last = 2 * stamp.endTime - (stamp.inclusiveEnd ? 0 : 1);
    for (qint64 place = 2 * stamp.startTime + (stamp.inclusiveStart ? 0 : 1); place <= last;
         ++place)
        places.insert(place);
}

Places cover(const Stamps &list)
{
    Places places;
    for (const TimeStamp &stamp : list)
        cover(places, stamp);
    return places;
}

Places instants(Places places)
{
    for (auto it = places.begin(); it != places.end();)
        it = *it % 2 ? places.erase(it) : std::next(it);
    return places;
}

bool areInOrder(const Stamps &list)
{
    for (int i = 0; i < list.size(); ++i) {
        if (!list[i].isValid() || (i > 0 && !(list[i - 1] < list[i])))
            return false;
    }
    return true;
}

class RandomStamps {
public:
    explicit RandomStamps(unsigned seed) : mRandom(seed) {}
    int below(int limit) { return static_cast<int>(mRandom() % static_cast<unsigned>(limit)); }
    TimeStamp any(int start, int longest)
    {
        return TimeStamp(start, start + below(longest + 1), below(2) != 0, below(2) != 0);
    }
    // In order, free of overlap, each holding an instant; touching ones among them.
    Stamps disjoint()
    {
        Stamps list;
        for (int at = below(5), n = below(8); n > 0; --n) {
            const TimeStamp next = any(at, 4);
            if (next.isValid() && (list.isEmpty() || list.last() < next))
                list.append(next);
            at = static_cast<int>(next.endTime) + below(3);
        }
        for (int i = list.size() - 1; i > 0; --i)
            list.swapItemsAt(i, below(i + 1)); // the sweeps sort for themselves
        return list;
    }

private:
    std::mt19937 mRandom;
};

} // namespace

class TestIntervalSweeps : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void pairs_data()
    {
        QTest::addColumn<QString>("a");
        QTest::addColumn<QString>("b");
        QTest::addColumn<QString>("both");
        QTest::addColumn<QString>("either");
        QTest::addColumn<QString>("onlyA");
        const auto check = [](const char *name, const char *a, const char *b, const char *both,
                              const char *either, const char *onlyA) {
            QTest::newRow(name) << a << b << both << either << onlyA;
        };
        check("hole, open", "[1, 10]", "(3, 5)", "(3, 5)", "[1, 10]", "[1, 3] [5, 10]");
        check("a point out of the middle", "[1, 9]", "[5, 5]", "[5, 5]", "[1, 9]", "[1, 5) (5, 9]");
        check("all of time", "[-9223372036854775808, 9223372036854775807]",
              "(0, 9223372036854775807]", "(0, 9223372036854775807]",
              "[-9223372036854775808, 9223372036854775807]", "[-9223372036854775808, 0]");
    }
    void pairs()
    {
        QFETCH(QString, a);
        QFETCH(QString, b);
        QFETCH(QString, both);
        QFETCH(QString, either);
        QFETCH(QString, onlyA);
        const Stamps first = stamps(a);
        const Stamps second = stamps(b);
        const auto i = intervals(first);
        const auto j = intervals(second);
        QCOMPARE(text(TimeStamp::TimeStampIntersection(first, second)), both);
        QCOMPARE(text(TimeStamp::TimeStampIntersection(second, first)), both);
        QCOMPARE(text(asStamps(VORN_IntervalIntersection(i, j, true))), both);
        QCOMPARE(text(TimeStamp::TimeStampUnion(first, second)), either);
        QCOMPARE(text(asStamps(VORN_IntervalUnion(i, j))), either);
        QCOMPARE(text(TimeStamp::TimeStampDifference(first, second)), onlyA);
        QCOMPARE(text(asStamps(VORN_IntervalDifference(i, j))), onlyA);
    }

    void emptyListsAreNoRestriction()
    {
        const Stamps some = stamps("[1, 2]");
        QCOMPARE(TimeStamp::TimeStampIntersection({}, some), some);
        QCOMPARE(TimeStamp::TimeStampUnion(some, {}), some);
        QCOMPARE(TimeStamp::TimeStampDifference({}, some), Stamps());
        QCOMPARE(TimeStamp::TimeStampDifference(some, {}), some);
        const QVector<Interval> plain = intervals(some);
        QCOMPARE(VORN_IntervalIntersection({}, plain, false), plain);
        QCOMPARE(VORN_IntervalIntersection(plain, {}, true), QVector<Interval>());
        QCOMPARE(VORN_IntervalUnion({}, plain), plain);
        const Stamps twice =
            stamps("[1, 10] [3, 5]"); // overlaps itself: only the shortcut can answer
        QCOMPARE(TimeStamp::TimeStampDifference(twice, twice), Stamps());
    }

    void intervalsKeepEmptyPieces()
    {
        QCOMPARE(TimeStamp::TimeStampUnion(stamps("(1, 2)"), stamps("[4, 5]")), stamps("[4, 5]"));
        QCOMPARE(text(asStamps(VORN_IntervalUnion({interval("(1, 2)")}, {interval("[4, 5]")}))),
                 "(1, 2) [4, 5]");
    }

    void overlapWithinAListFails()
    {
        const QString stampText = QStringLiteral("Invalid time stamp overlap");
        const QPair<const char *, const char *> cases[] = {
            {"[1, 9] [2, 8]", "[3, 4]"}, // three open
            {"[9, 1]", "[20, 30]"}};
        for (const auto &[a, b] : cases) {
            const Stamps first = stamps(a);
            const Stamps second = stamps(b);
            QCOMPARE(raisedText([&] { TimeStamp::TimeStampIntersection(first, second); }),
                     stampText);
            QCOMPARE(raisedText([&] { TimeStamp::TimeStampUnion(second, first); }), stampText);
            QCOMPARE(raisedText([&] { VORN_IntervalUnion(intervals(first), intervals(second)); }),
                     QStringLiteral("Invalid time stamp containment"));
        }
    }

    void intervalsMustBeInOrderAndClosed()
    {
        const QVector<Interval> good{interval("[1, 2]")};
        const QVector<Interval> crossed{interval("[2, 1]")};
        const QVector<Interval> openPoint{Interval{5, 5, true, false}};
        QCOMPARE(raisedText([&] { VORN_IntervalIntersection(crossed, good, true); }),
                 QStringLiteral("ts1[i].startTime <= ts1[i].endTime"));
        QCOMPARE(raisedText([&] { VORN_IntervalIntersection(good, crossed, true); }),
                 QStringLiteral("ts2[i].startTime <= ts2[i].endTime"));
        QCOMPARE(raisedText([&] { VORN_IntervalDifference(openPoint, good); }),
                 QStringLiteral("Invalid time stamp"));
        // In the second list its flags stand as they are, and its end sorts before its start.
        QCOMPARE(raisedText([&] { VORN_IntervalUnion(good, openPoint); }),
                 QStringLiteral("Invalid time stamp containment"));
        try {
            VORN_IntervalUnion(openPoint, good);
        } catch (const vorn_error &error) {
            QVERIFY(QString::fromLatin1(error.what()).contains(QLatin1String("\n(TimeAPI, line ")));
        }
    }

    void refinement()
    {
        const auto refined = [](const char *a, const char *b) {
            const QString pieces = text(TimeStamp::MergeTimeStamps(stamps(a), stamps(b)));
            const bool agree =
                text(TimeStamp::MergeTimeStamps(stamps(b), stamps(a))) == pieces
                && text(asStamps(VORN_MergeIntervals(intervals(stamps(a)), intervals(stamps(b)))))
                       == pieces;
            return agree ? pieces : QString("disagreement");
        };
        QCOMPARE(refined("[1, 5]", "[3, 8]"), QString("[1, 3) [3, 5] (5, 8]"));
        QCOMPARE(refined("[1, 5]", "(1, 5]"), QString("[1, 1] (1, 5]"));
        QCOMPARE(refined("[1, 5]", "[5, 8]"), QString("[1, 5) [5, 5] (5, 8]"));
        QCOMPARE(refined("[1, 5) (5, 9]", "[0, 9]"), QString("[0, 1) [1, 5) [5, 5] (5, 9]"));
        QCOMPARE(refined("[1, 5)", "(5, 9]"), QString("[1, 5) (5, 9]")); // nobody covers 5
        QCOMPARE(refined("[1, 9]", "[2, 3] [6, 7]"), QString("[1, 2) [2, 3] (3, 6) [6, 7] (7, 9]"));
    }

    void agreesWithTheModel()
    {
        const unsigned start = walkSeed(1);
        for (unsigned seed = start; seed - start < 3000; ++seed) {
            RandomStamps random(seed);
            const Stamps a = random.disjoint();
            const Stamps b = random.disjoint();
            if (a.isEmpty() || b.isEmpty())
                continue;
            const Places inA = cover(a);
            const Places inB = cover(b);
            Places both, either, onlyA;
            std::set_intersection(inA.begin(), inA.end(), inB.begin(), inB.end(),
                                  std::inserter(both, both.end()));
            std::set_union(inA.begin(), inA.end(), inB.begin(), inB.end(),
                           std::inserter(either, either.end()));
            std::set_difference(inA.begin(), inA.end(), inB.begin(), inB.end(),
                                std::inserter(onlyA, onlyA.end()));
            const auto agrees = [](const Stamps &pieces, const QVector<Interval> &plain,
                                   const Places &expected) {
                return areInOrder(pieces) && instants(cover(pieces)) == instants(expected)
                       && cover(asStamps(plain)) == expected;
            };
            const QByteArray message = "seed " + QByteArray::number(seed) + ": "
                                       + text(a).toLatin1() + " with " + text(b).toLatin1();
            QVERIFY2(agrees(TimeStamp::TimeStampIntersection(a, b),
                            VORN_IntervalIntersection(intervals(a), intervals(b), true), both),
                     message);
            QVERIFY2(agrees(TimeStamp::TimeStampUnion(a, b),
                            VORN_IntervalUnion(intervals(a), intervals(b)), either),
                     message);
            QVERIFY2(agrees(TimeStamp::TimeStampDifference(a, b),
                            VORN_IntervalDifference(intervals(a), intervals(b)), onlyA),
                     message);
        }
    }

    void refinementAgreesWithTheModel()
    {
        const unsigned start = walkSeed(1);
        for (unsigned seed = start; seed - start < 3000; ++seed) {
            RandomStamps random(seed);
            QList<Stamps> lists;
            for (int n = 1 + random.below(4); n > 0; --n) {
                Stamps list;
                for (int i = random.below(4); i > 0; --i)
                    list.append(random.any(random.below(20), 6));
                lists.append(list);
            }
            Stamps all;
            for (const Stamps &list : qAsConst(lists))
                all += list;
            const Stamps pieces = TimeStamp::MergeTimeStamps(lists);
            const QByteArray message = "seed " + QByteArray::number(seed) + ": "
                                       + text(all).toLatin1() + " to " + text(pieces).toLatin1();
            QVERIFY2(areInOrder(pieces), message);
            QVERIFY2(instants(cover(pieces)) == instants(cover(all)), message);
            for (const TimeStamp &piece : pieces) {
                const Places within = instants(cover(Stamps{piece}));
                for (const TimeStamp &stamp : qAsConst(all)) {
                    const Places covered = instants(cover(Stamps{stamp}));
                    const bool first = covered.count(*within.begin()) != 0;
                    for (const qint64 place : within)
                        QVERIFY2((covered.count(place) != 0) == first, message);
                }
            }
        }
    }

    void longListsAreSortedWhateverTheirOrder()
    {
        constexpr int n = 2000;
        Stamps even, odd;
        for (int i = 0; i < n; ++i) {
            even.append(TimeStamp(10 * i, 10 * i + 4, true, true));
            odd.append(TimeStamp(10 * i + 5, 10 * i + 9, true, true));
        }
        Stamps expected;
        for (int i = 0; i < n; ++i)
            expected << even[i] << odd[i];
        RandomStamps random(7);
        // Two runs, then many runs of odd lengths, then no order at all.
        for (const int blocks : {1, 37, n}) {
            const InCase inBlocks(blocks);
            Stamps shuffled;
            QList<int> order;
            for (int i = 0; i < blocks; ++i)
                order.insert(random.below(i + 1), i);
            for (const int block : qAsConst(order))
                shuffled +=
                    odd.mid(block * n / blocks, (block + 1) * n / blocks - block * n / blocks);
            QCOMPARE(TimeStamp::TimeStampUnion(even, shuffled), expected);
            QCOMPARE(TimeStamp::MergeTimeStamps({shuffled, even}), expected);
        }
    }
};

QTEST_GUILESS_MAIN(TestIntervalSweeps)
#include "tst_IntervalSweeps.moc"
