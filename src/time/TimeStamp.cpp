// SPDX-License-Identifier: MIT
#include "datainterface/TimeStamp.h"
#include <fennimark/geometryTypes.h>
#include <limits>
#include <utility>
#include "Common/detail/failure.h"
#include "time/calendar.h"
#include "time/sweeps.h"

using datainterface::require;
using datainterface::SweepRules;

namespace {

constexpr qint64 kFirst = std::numeric_limits<qint64>::min();
constexpr qint64 kLast = std::numeric_limits<qint64>::max();
constexpr SweepRules kStampRules{"TimeStamp.cpp", "Invalid time stamp overlap", true, true};

// Truncates toward zero; the infinities of an unbounded range are the ends of the 64-bit line.
qint64 toTime(double time)
{
    constexpr double kBeyond = 9223372036854775808.0;
    if (time >= kBeyond)
        return kLast;
    return time >= -kBeyond ? static_cast<qint64>(time) : kFirst;
}

// The length of a stamp, which wraps for the widest ones.
qint64 span(const TimeStamp &stamp)
{
    return static_cast<qint64>(static_cast<quint64>(stamp.endTime)
                               - static_cast<quint64>(stamp.startTime));
}

void closePoint(TimeStamp &stamp)
{
    if (stamp.startTime == stamp.endTime)
        stamp.inclusiveStart = stamp.inclusiveEnd = true;
}

} // namespace

const TimeStamp TimeStamp::Invalid(kLast, kFirst, true, true);

// Not a copy of Invalid: stamps with static storage in other sources may be constructed
// before it.
TimeStamp::TimeStamp() : startTime(kLast), endTime(kFirst), inclusiveStart(true), inclusiveEnd(true)
{
}

TimeStamp::TimeStamp(qint64 start, qint64 end, bool startInclusive, bool endInclusive)
    : startTime(start), endTime(end), inclusiveStart(startInclusive), inclusiveEnd(endInclusive)
{
    closePoint(*this);
}

TimeStamp::TimeStamp(const Interval &interval)
    : TimeStamp(interval.startTime, interval.endTime, interval.inclusiveStart,
                interval.inclusiveEnd)
{
}

TimeStamp::TimeStamp(const timeRange &range)
    : TimeStamp(toTime(range.start), toTime(range.end), (range.flags & 0xF0) != 0,
                (range.flags & 0x0F) != 0)
{
}

bool TimeStamp::isValid() const
{
    return !datainterface::holdsNoInstant(*this);
}

bool TimeStamp::overlaps(const TimeStamp &ts) const
{
    return !(*this < ts) && !(ts < *this);
}

qint64 TimeStamp::timeInInterval() const
{
    if (inclusiveStart)
        return startTime;
    if (inclusiveEnd)
        return endTime;
    require(span(*this) != 1, "Invalid time stamp");
    return static_cast<qint64>(static_cast<quint64>(startTime) + static_cast<quint64>(endTime)) / 2;
}

TimeStamp TimeStamp::operator+(const TimeStamp &ts) const
{
    TimeStamp hull = *this;
    if (ts.startTime <= startTime) {
        hull.inclusiveStart = ts.inclusiveStart || (ts.startTime == startTime && inclusiveStart);
        hull.startTime = ts.startTime;
    }
    if (ts.endTime >= endTime) {
        hull.inclusiveEnd = ts.inclusiveEnd || (ts.endTime == endTime && inclusiveEnd);
        hull.endTime = ts.endTime;
    }
    return hull;
}

TimeStamp TimeStamp::operator+=(const TimeStamp &ts)
{
    *this = *this + ts;
    return *this;
}

TimeStamp TimeStamp::intersect(const TimeStamp &ts) const
{
    require(span(ts) != 1 || ts.inclusiveEnd || ts.inclusiveStart,
            "!(ts.endTime-ts.startTime == 1 and !ts.inclusiveEnd and !ts.inclusiveStart)");
    return datainterface::intersection(*this, ts);
}

QString TimeStamp::toString(TimeFormat format, const char *dateFormat, const char *timeFormat) const
{
    return datainterface::IntervalToString(*this, format, dateFormat, timeFormat);
}

QList<TimeStamp> TimeStamp::TimeStampIntersection(const QList<TimeStamp> &a,
                                                  const QList<TimeStamp> &b)
{
    if (a.isEmpty() || b.isEmpty())
        return a.isEmpty() ? b : a;
    return datainterface::sweepDepth(a, b, 2, kStampRules);
}

QList<TimeStamp> TimeStamp::TimeStampUnion(const QList<TimeStamp> &a, const QList<TimeStamp> &b)
{
    if (a.isEmpty() || b.isEmpty())
        return a.isEmpty() ? b : a;
    return datainterface::sweepDepth(a, b, 1, kStampRules);
}

QList<TimeStamp> TimeStamp::TimeStampDifference(const QList<TimeStamp> &a,
                                                const QList<TimeStamp> &b)
{
    if (a == b)
        return {};
    return datainterface::sweepDifference(a, b, kStampRules);
}

QList<TimeStamp> TimeStamp::MergeTimeStamps(const QList<TimeStamp> &a, const QList<TimeStamp> &b)
{
    return MergeTimeStamps(QList<QList<TimeStamp>>{a, b});
}

QList<TimeStamp> TimeStamp::MergeTimeStamps(const QList<QList<TimeStamp>> &lists)
{
    datainterface::TimeBoundaries boundaries;
    for (const QList<TimeStamp> &list : lists)
        datainterface::appendBoundaries(boundaries, list, 0, false);
    return datainterface::refine<QList<TimeStamp>>(std::move(boundaries), kStampRules.file);
}

bool operator<(const Interval &a, const Interval &b)
{
    return TimeStamp(a) < TimeStamp(b);
}

bool operator==(const Interval &a, const Interval &b)
{
    return a.startTime == b.startTime && a.endTime == b.endTime
           && a.inclusiveStart == b.inclusiveStart && a.inclusiveEnd == b.inclusiveEnd;
}

// The flags go out as 32-bit integers; one byte would shift every later field of old files.
QDataStream &operator<<(QDataStream &out, const TimeStamp &stamp)
{
    return out << stamp.startTime << stamp.endTime << qint32(stamp.inclusiveStart)
               << qint32(stamp.inclusiveEnd);
}

QDataStream &operator>>(QDataStream &in, TimeStamp &stamp)
{
    qint32 inclusiveStart = 0;
    qint32 inclusiveEnd = 0;
    in >> stamp.startTime >> stamp.endTime >> inclusiveStart >> inclusiveEnd;
    stamp.inclusiveStart = (inclusiveStart & 0xFF) != 0;
    stamp.inclusiveEnd = (inclusiveEnd & 0xFF) != 0;
    return in;
}
