// SPDX-License-Identifier: MIT
#include <QtTest>
#include <fennimark/geometryTypes.h>
#include <limits>
#include "Common/detail/streams.h"
#include "datainterface/TimeAPI.h"
#include "support/checks.h"
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
    void constructorsCloseAPoint()
    {
        const TimeStamp closed = raw(5, 5, true, true);
        QCOMPARE(TimeStamp(5, 5, false, false), closed);
        QCOMPARE(TimeStamp(Interval{5, 5, true, false}), closed);
        QCOMPARE(TimeStamp(range(5.25, 5.75, 0)), closed);
        QVERIFY(!raw(5, 5, false, false).contains(5));
    }

    void invalidIsNeutralUnderTheHull()
    {
        QCOMPARE(TimeStamp(), TimeStamp::Invalid);
        QVERIFY(!TimeStamp::Invalid.isValid());
        for (const TimeStamp &other : stamps("[1, 5) (1, 2) (-3, 8]")) {
            QCOMPARE(TimeStamp::Invalid + other, other);
            QCOMPARE(other + TimeStamp::Invalid, other);
        }
    }

    void validity()
    {
        QVERIFY(!stamp("(3, 4)").isValid());
        QVERIFY(stamp("(3, 4]").isValid());
        QVERIFY(stamp("(3, 5)").isValid());
        QVERIFY(!stamp("[4, 3]").isValid());
        QVERIFY(raw(3, 3, false, false).isValid()); // a point left open
        QVERIFY(TimeStamp(kFirst, kLast, false, false).isValid());
        QVERIFY(!TimeStamp(kLast - 1, kLast, false, false).isValid());
    }

    void containsItsInclusiveEnds()
    {
        QCOMPARE(answers({stamp("[1, 5)").contains(1), stamp("[1, 5)").contains(4),
                          stamp("[1, 5)").contains(5)}),
                 "yyn");
        QCOMPARE(answers({stamp("(1, 5]").contains(1), stamp("(1, 5]").contains(5),
                          stamp("(1, 5]").contains(6)}),
                 "nyn");
    }

    void relations()
    {
        const auto relation = [](const char *first, const char *second) {
            const TimeStamp a = stamp(first);
            const TimeStamp b = stamp(second);
            const bool touch = a.overlaps(b);
            if (b.overlaps(a) != touch || (Interval(a) < Interval(b)) != (a < b))
                return QString("disagreement");
            return QString::fromLatin1(touch ? "overlap " : "")
                .append(a < b ? "before " : "")
                .append(b < a ? "after " : "");
        };
        QCOMPARE(relation("[1, 5]", "[5, 8]"), QString("overlap "));
        QCOMPARE(relation("[1, 5)", "[5, 8]"), QString("before "));
        QCOMPARE(relation("[1, 5]", "(5, 8]"), QString("before "));
        QCOMPARE(relation("[6, 8]", "[1, 5]"), QString("after "));
        QCOMPARE(relation("[1, 5]", "[2, 3]"), QString("overlap "));
        QCOMPARE(relation("(1, 3)", "(2, 5)"), QString("overlap ")); // share no instant
        QCOMPARE(relation("(1, 2)", "(1, 2)"), QString("overlap ")); // hold no instant
    }

    void representativeInstant()
    {
        QCOMPARE(stamp("[1, 9]").timeInInterval(), qint64(1));
        QCOMPARE(stamp("(1, 9]").timeInInterval(), qint64(9));
        QCOMPARE(stamp("(3, 5)").timeInInterval(), qint64(4));
        QCOMPARE(stamp("(-3, 0)").timeInInterval(), qint64(-1)); // toward zero
        QCOMPARE(TimeStamp(kFirst, kLast, false, false).timeInInterval(), qint64(0));
        QCOMPARE(TimeStamp(kLast - 4, kLast, false, false).timeInInterval(), qint64(-3)); // wraps
        QCOMPARE(raisedText([] { stamp("(3, 4)").timeInInterval(); }),
                 QString("Invalid time stamp"));
    }

    void hullAndIntersection_data()
    {
        QTest::addColumn<TimeStamp>("a");
        QTest::addColumn<TimeStamp>("b");
        QTest::addColumn<TimeStamp>("hull");
        QTest::addColumn<TimeStamp>("shared");
        const auto check = [](const TimeStamp &a, const TimeStamp &b, const TimeStamp &hull,
                              const TimeStamp &shared) {
            QTest::newRow(qPrintable(QString(text(a) + " and " + text(b))))
                << a << b << hull << shared;
        };
        check(stamp("[1, 5)"), stamp("(3, 8]"), stamp("[1, 8]"), stamp("(3, 5)"));
        check(stamp("(1, 8)"), stamp("[2, 3]"), stamp("(1, 8)"), stamp("[2, 3]"));
        check(stamp("[1, 8)"), stamp("(1, 8]"), stamp("[1, 8]"), stamp("(1, 8)"));
        check(stamp("[1, 2]"), stamp("[5, 6]"), stamp("[1, 6]"), stamp("[5, 2]"));
        check(stamp("[1, 5)"), stamp("[5, 8]"), stamp("[1, 8]"), raw(5, 5, true, false));
    }
    void hullAndIntersection()
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
    }

    void intersectRefusesAnEmptyArgument()
    {
        const QString text =
            "!(ts.endTime-ts.startTime == 1 and !ts.inclusiveEnd and !ts.inclusiveStart)";
        QCOMPARE(raisedText([] { stamp("[1, 9]").intersect(stamp("(3, 4)")); }), text);
        QCOMPARE(stamp("(3, 4)").intersect(stamp("[1, 9]")), stamp("(3, 4)"));
        QCOMPARE(VORN_IntersectIntervals(interval("[1, 9]"), interval("(3, 4)")),
                 interval("(3, 4)"));
    }

    void rangesOfTheGeometryLibrary()
    {
        const auto rounded = [](double start, double end, unsigned char flags) {
            return TimeStamp(range(start, end, flags));
        };
        constexpr double inf = std::numeric_limits<double>::infinity();
        QCOMPARE(rounded(1, 5, 0xFF), stamp("[1, 5]"));
        QCOMPARE(rounded(1, 5, 0x10), stamp("[1, 5)")); // any bit of a nibble counts
        QCOMPARE(rounded(1, 5, 0x02), stamp("(1, 5]"));
        QCOMPARE(rounded(-1.9, 1.9, 0), stamp("(-1, 1)")); // toward zero
        QCOMPARE(rounded(-inf, inf, 0xFF), TimeStamp(kFirst, kLast, true, true));
        QCOMPARE(rounded(inf, -inf, 0), TimeStamp(kLast, kFirst, false, false));
        QCOMPARE(rounded(9007199254740993.0, 1e300, 0),
                 TimeStamp(9007199254740992, kLast, false, false));
    }

    void streamIsTwentyFourBytes()
    {
        const QByteArray golden =
            QByteArray::fromHex("0000000000000001 ffffffffffffffff 00000001 00000000");
        QByteArray bytes;
        datainterface::BytesWriter out(&bytes);
        out << TimeStamp(1, -1, true, false);
        QCOMPARE(bytes.toHex(), golden.toHex());

        // Neither the crossed ends nor the open point are touched, and of a flag the low byte
        // counts.
        for (const char *hex : {"0000000000000001ffffffffffffffff0000000100000100",
                                "000000000000000500000000000000050000000000000000"}) {
            TimeStamp read;
            datainterface::BytesReader in(QByteArray::fromHex(hex));
            in >> read;
            QCOMPARE(read, read.startTime == 1 ? raw(1, -1, true, false) : raw(5, 5, false, false));
        }
    }
};

QTEST_GUILESS_MAIN(TestTimeStamp)
#include "tst_TimeStamp.moc"
