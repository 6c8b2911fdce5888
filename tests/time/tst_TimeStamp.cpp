// SPDX-License-Identifier: MIT
#include <fennimark/geometryTypes.h>
#include <QtTest>
#include <limits>
#include "Common/detail/streams.h"
#include "datainterface/TimeAPI.h"
#include "support/support.h"

namespace {

constexpr qint64 kFirst = std::numeric_limits<qint64>::min();
constexpr qint64 kLast = std::numeric_limits<qint64>::max();

// "(5, 5)" and the like: fields as they stand, past the constructors.
TimeStamp raw(qint64 start, qint64 end, bool inclusiveStart, bool inclusiveEnd)
{
    TimeStamp stamp;
    stamp.startTime = start;
    stamp.endTime = end;
    stamp.inclusiveStart = inclusiveStart;
    stamp.inclusiveEnd = inclusiveEnd;
    return stamp;
}

timeRange range(double start, double end, unsigned char flags)
{
    timeRange range;
    range.start = start;
    range.end = end;
    range.flags = flags;
    return range;
}

} // namespace

Q_DECLARE_METATYPE(TimeStamp)

class TestTimeStamp : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void constructorsCloseAPoint();
    void invalidIsNeutralUnderTheHull();
    void validity_data();
    void validity();
    void containsItsInclusiveEnds();
    void relations_data();
    void relations();
    void mapFindsTheStampThatCoversATime();
    void representativeInstant_data();
    void representativeInstant();
    void hullAndIntersection_data();
    void hullAndIntersection();
    void intersectRefusesAnEmptyArgument();
    void rangesOfTheGeometryLibrary_data();
    void rangesOfTheGeometryLibrary();
    void streamIsTwentyFourBytes();
};

void TestTimeStamp::constructorsCloseAPoint()
{
    const TimeStamp closed = raw(5, 5, true, true);
    QCOMPARE(TimeStamp(5, 5, false, false), closed);
    QCOMPARE(TimeStamp(Interval{5, 5, true, false}), closed);
    QCOMPARE(TimeStamp(range(5.25, 5.75, 0)), closed);
    QVERIFY(!raw(5, 5, false, false).contains(5));
}

void TestTimeStamp::invalidIsNeutralUnderTheHull()
{
    QCOMPARE(TimeStamp(), TimeStamp::Invalid);
    QVERIFY(!TimeStamp::Invalid.isValid());
    for (const TimeStamp &other : stamps("[1, 5) (1, 2) (-3, 8]")) {
        QCOMPARE(TimeStamp::Invalid + other, other);
        QCOMPARE(other + TimeStamp::Invalid, other);
    }
}

void TestTimeStamp::validity_data()
{
    QTest::addColumn<TimeStamp>("stamp");
    QTest::addColumn<bool>("expected");
    QTest::newRow("one tick, open") << stamp("(3, 4)") << false;
    QTest::newRow("one tick, half open") << stamp("(3, 4]") << true;
    QTest::newRow("two ticks, open") << stamp("(3, 5)") << true;
    QTest::newRow("crossed") << stamp("[4, 3]") << false;
    QTest::newRow("a point left open") << raw(3, 3, false, false) << true;
    QTest::newRow("all of time, open")
        << stamp("(-9223372036854775808, 9223372036854775807)") << true;
    QTest::newRow("the last tick, open") << TimeStamp(kLast - 1, kLast, false, false) << false;
}

void TestTimeStamp::validity()
{
    QFETCH(TimeStamp, stamp);
    QTEST(stamp.isValid(), "expected");
}

void TestTimeStamp::containsItsInclusiveEnds()
{
    QVERIFY(stamp("[1, 5)").contains(1) && stamp("[1, 5)").contains(4)
            && !stamp("[1, 5)").contains(5));
    QVERIFY(!stamp("(1, 5]").contains(1) && stamp("(1, 5]").contains(5)
            && !stamp("(1, 5]").contains(6));
}

void TestTimeStamp::relations_data()
{
    QTest::addColumn<TimeStamp>("a");
    QTest::addColumn<TimeStamp>("b");
    QTest::addColumn<bool>("before");
    QTest::addColumn<bool>("after");
    QTest::newRow("touching, both closed") << stamp("[1, 5]") << stamp("[5, 8]") << false << false;
    QTest::newRow("touching, left open") << stamp("[1, 5)") << stamp("[5, 8]") << true << false;
    QTest::newRow("touching, right open") << stamp("[1, 5]") << stamp("(5, 8]") << true << false;
    QTest::newRow("apart") << stamp("[6, 8]") << stamp("[1, 5]") << false << true;
    QTest::newRow("inside") << stamp("[1, 5]") << stamp("[2, 3]") << false << false;
    QTest::newRow("share no instant") << stamp("(1, 3)") << stamp("(2, 5)") << false << false;
    QTest::newRow("hold no instant") << stamp("(1, 2)") << stamp("(1, 2)") << false << false;
}

void TestTimeStamp::relations()
{
    QFETCH(TimeStamp, a);
    QFETCH(TimeStamp, b);
    QFETCH(bool, before);
    QFETCH(bool, after);
    QCOMPARE(a < b, before);
    QCOMPARE(b < a, after);
    QCOMPARE(a.overlaps(b), !before && !after);
    QCOMPARE(b.overlaps(a), !before && !after);
    QCOMPARE(Interval(a) < Interval(b), before);
}

void TestTimeStamp::mapFindsTheStampThatCoversATime()
{
    QMap<TimeStamp, int> map;
    map.insert(stamp("[1, 5)"), 1);
    map.insert(stamp("[5, 8]"), 2);
    map.insert(stamp("(8, 20]"), 3);
    QCOMPARE(map.value(TimeStamp(4)), 1);
    QCOMPARE(map.value(TimeStamp(5)), 2);
    QCOMPARE(map.value(TimeStamp(8)), 2);
    QCOMPARE(map.value(TimeStamp(9)), 3);
    QVERIFY(!map.contains(TimeStamp(0)) && !map.contains(TimeStamp(21)));
}

void TestTimeStamp::representativeInstant_data()
{
    QTest::addColumn<TimeStamp>("stamp");
    QTest::addColumn<QString>("failure");
    QTest::addColumn<qint64>("expected");
    QTest::newRow("start") << stamp("[1, 9]") << QString() << qint64(1);
    QTest::newRow("end") << stamp("(1, 9]") << QString() << qint64(9);
    QTest::newRow("middle") << stamp("(3, 5)") << QString() << qint64(4);
    QTest::newRow("middle, toward zero") << stamp("(-3, 0)") << QString() << qint64(-1);
    QTest::newRow("middle of all time")
        << TimeStamp(kFirst, kLast, false, false) << QString() << qint64(0);
    QTest::newRow("sum wraps") << TimeStamp(kLast - 4, kLast, false, false) << QString()
                               << qint64(-3);
    QTest::newRow("none") << stamp("(3, 4)") << "Invalid time stamp" << qint64(0);
}

void TestTimeStamp::representativeInstant()
{
    QFETCH(TimeStamp, stamp);
    QFETCH(QString, failure);
    qint64 instant = 0;
    QCOMPARE(raisedText([&] { instant = stamp.timeInInterval(); }), failure);
    QTEST(instant, "expected");
}

void TestTimeStamp::hullAndIntersection_data()
{
    QTest::addColumn<TimeStamp>("a");
    QTest::addColumn<TimeStamp>("b");
    QTest::addColumn<TimeStamp>("hull");
    QTest::addColumn<TimeStamp>("shared");
    QTest::newRow("over") << stamp("[1, 5)") << stamp("(3, 8]") << stamp("[1, 8]")
                          << stamp("(3, 5)");
    QTest::newRow("inside") << stamp("(1, 8)") << stamp("[2, 3]") << stamp("(1, 8)")
                            << stamp("[2, 3]");
    QTest::newRow("same ends") << stamp("[1, 8)") << stamp("(1, 8]") << stamp("[1, 8]")
                               << stamp("(1, 8)");
    QTest::newRow("apart") << stamp("[1, 2]") << stamp("[5, 6]") << stamp("[1, 6]")
                           << stamp("[5, 2]");
    QTest::newRow("touching") << stamp("[1, 5)") << stamp("[5, 8]") << stamp("[1, 8]")
                              << raw(5, 5, true, false);
}

void TestTimeStamp::hullAndIntersection()
{
    QFETCH(TimeStamp, a);
    QFETCH(TimeStamp, b);
    QFETCH(TimeStamp, hull);
    QFETCH(TimeStamp, shared);
    QCOMPARE(a + b, hull);
    QCOMPARE(b + a, hull);
    QCOMPARE(a.intersect(b), shared);
    QCOMPARE(b.intersect(a), shared);
    QCOMPARE(VORN_IntersectIntervals(a, b), Interval(shared));
    TimeStamp grown = a;
    QCOMPARE(grown += b, hull);
    QCOMPARE(grown, hull);
}

void TestTimeStamp::intersectRefusesAnEmptyArgument()
{
    const QString text =
        "!(ts.endTime-ts.startTime == 1 and !ts.inclusiveEnd and !ts.inclusiveStart)";
    QCOMPARE(raisedText([] { stamp("[1, 9]").intersect(stamp("(3, 4)")); }), text);
    QCOMPARE(stamp("(3, 4)").intersect(stamp("[1, 9]")), stamp("(3, 4)"));
    QCOMPARE(VORN_IntersectIntervals(interval("[1, 9]"), interval("(3, 4)")), interval("(3, 4)"));
}

void TestTimeStamp::rangesOfTheGeometryLibrary_data()
{
    QTest::addColumn<double>("start");
    QTest::addColumn<double>("end");
    QTest::addColumn<int>("flags");
    QTest::addColumn<TimeStamp>("expected");
    constexpr double inf = std::numeric_limits<double>::infinity();
    QTest::newRow("closed") << 1.0 << 5.0 << 0xFF << stamp("[1, 5]");
    QTest::newRow("any bit of a nibble counts") << 1.0 << 5.0 << 0x10 << stamp("[1, 5)");
    QTest::newRow("low nibble") << 1.0 << 5.0 << 0x02 << stamp("(1, 5]");
    QTest::newRow("toward zero") << -1.9 << 1.9 << 0 << stamp("(-1, 1)");
    QTest::newRow("unbounded") << -inf << inf << 0xFF << TimeStamp(kFirst, kLast, true, true);
    QTest::newRow("no time at all") << inf << -inf << 0 << TimeStamp(kLast, kFirst, false, false);
    QTest::newRow("beyond 2^53") << 9007199254740993.0 << 1e300 << 0
                                 << TimeStamp(9007199254740992, kLast, false, false);
}

void TestTimeStamp::rangesOfTheGeometryLibrary()
{
    QFETCH(double, start);
    QFETCH(double, end);
    QFETCH(int, flags);
    QTEST(TimeStamp(range(start, end, static_cast<unsigned char>(flags))), "expected");
}

void TestTimeStamp::streamIsTwentyFourBytes()
{
    const QByteArray golden =
        QByteArray::fromHex("0000000000000001 ffffffffffffffff 00000001 00000000");
    QByteArray bytes;
    datainterface::BytesWriter out(&bytes);
    out << TimeStamp(1, -1, true, false);
    QCOMPARE(bytes.toHex(), golden.toHex());

    // Neither the crossed ends nor the open point are touched, and of a flag the low byte counts.
    for (const char *hex : {"0000000000000001ffffffffffffffff0000000100000100",
                            "000000000000000500000000000000050000000000000000"}) {
        TimeStamp read;
        datainterface::BytesReader in(QByteArray::fromHex(hex));
        in >> read;
        QCOMPARE(read, read.startTime == 1 ? raw(1, -1, true, false) : raw(5, 5, false, false));
    }
}

QTEST_GUILESS_MAIN(TestTimeStamp)
#include "tst_TimeStamp.moc"
