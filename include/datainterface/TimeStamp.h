// SPDX-License-Identifier: MIT
/// Time intervals: the internal type TimeStamp, the public type Interval, and their operations.
#pragma once
#include <QDataStream>
#include <QList>
#include <QString>
#include <QtGlobal>
#include "datainterface/TimeFormat.h"
#include "datainterface/export.h"

struct timeRange;

/// A span of time as the public functions take and return it. A plain record.
struct Interval {
    qint64 startTime = 0;
    qint64 endTime = 0;
    bool inclusiveStart = false;
    bool inclusiveEnd = false;
};

/// A span of discrete time. Two stamps that overlap are equal keys of a map: `operator<` means
/// wholly before.
class DATAINTERFACE_EXPORT TimeStamp {
public:
    qint64 startTime;
    qint64 endTime;
    bool inclusiveStart;
    bool inclusiveEnd;

    /// Crossed ends, both inclusive: empty, and neutral under `operator+`.
    static const TimeStamp Invalid;

    TimeStamp();
    TimeStamp(qint64 t) : startTime(t), endTime(t), inclusiveStart(true), inclusiveEnd(true) {}
    /// A one-point interval is always closed, whatever flags are given.
    TimeStamp(qint64 start, qint64 end, bool startInclusive, bool endInclusive);
    TimeStamp(const Interval &interval);
    /// Truncates toward zero; beyond the 64-bit range, the infinities included, the ends are those
    /// of the range.
    TimeStamp(const timeRange &range);

    operator Interval() const { return {startTime, endTime, inclusiveStart, inclusiveEnd}; }
    /// False for crossed ends and for ends one tick apart that are both exclusive.
    bool isValid() const;
    /// Whether the instant is in the interval.
    bool contains(qint64 t) const
    {
        return (startTime < t && t < endTime) || (t == startTime && inclusiveStart)
               || (t == endTime && inclusiveEnd);
    }
    /// Compares only ends and flags: (1, 2) overlaps itself although it contains no instant.
    bool overlaps(const TimeStamp &ts) const;
    /// An instant in the interval; raises "Invalid time stamp" when it contains none.
    qint64 timeInInterval() const;
    /// Wholly before.
    bool operator<(const TimeStamp &ts) const
    {
        if (endTime == ts.startTime)
            return !(inclusiveEnd && ts.inclusiveStart);
        return endTime < ts.startTime;
    }
    bool operator==(const TimeStamp &ts) const
    {
        return startTime == ts.startTime && endTime == ts.endTime
               && inclusiveStart == ts.inclusiveStart && inclusiveEnd == ts.inclusiveEnd;
    }
    bool operator!=(const TimeStamp &ts) const { return !(*this == ts); }
    /// The hull, which includes a gap between the two.
    TimeStamp operator+(const TimeStamp &ts) const;
    TimeStamp operator+=(const TimeStamp &ts);
    /// Disjoint stamps give crossed ends: test `overlaps` before or `isValid` after. Raises when
    /// `ts` is one tick wide and excludes both ends.
    TimeStamp intersect(const TimeStamp &ts) const;
    /// "[start, end)", both ends in the given Qt formats.
    QString toString(TimeFormat format, const char *dateFormat, const char *timeFormat) const;

    /// The time that both lists cover. In this function and in TimeStampUnion an empty list means
    /// no restriction, and the result is the other list. Intervals of one list must not overlap
    /// ("Invalid time stamp overlap"). Pieces that only touch are not joined. O(n log n).
    static QList<TimeStamp> TimeStampIntersection(const QList<TimeStamp> &a,
                                                  const QList<TimeStamp> &b);
    /// The time that at least one list covers.
    static QList<TimeStamp> TimeStampUnion(const QList<TimeStamp> &a, const QList<TimeStamp> &b);
    /// The time that `a` covers and `b` does not.
    static QList<TimeStamp> TimeStampDifference(const QList<TimeStamp> &a,
                                                const QList<TimeStamp> &b);
    /// The common refinement: disjoint pieces, cut at every boundary of every input. O(n log n).
    static QList<TimeStamp> MergeTimeStamps(const QList<TimeStamp> &a, const QList<TimeStamp> &b);
    static QList<TimeStamp> MergeTimeStamps(const QList<QList<TimeStamp>> &lists);
};

/// Wholly before, as for TimeStamp, so that an Interval can be a key.
DATAINTERFACE_EXPORT bool operator<(const Interval &a, const Interval &b);
DATAINTERFACE_EXPORT bool operator==(const Interval &a, const Interval &b);
// Stamps and intervals convert into each other; mixed comparisons compare stamps.
inline bool operator<(const TimeStamp &a, const Interval &b)
{
    return a < TimeStamp(b);
}
inline bool operator<(const Interval &a, const TimeStamp &b)
{
    return TimeStamp(a) < b;
}
inline bool operator==(const TimeStamp &a, const Interval &b)
{
    return a == TimeStamp(b);
}
inline bool operator==(const Interval &a, const TimeStamp &b)
{
    return TimeStamp(a) == b;
}

/// 24 bytes: both times as 64-bit, both flags as 32-bit integers. Reading does not validate or
/// normalise.
DATAINTERFACE_EXPORT QDataStream &operator<<(QDataStream &out, const TimeStamp &stamp);
DATAINTERFACE_EXPORT QDataStream &operator>>(QDataStream &in, TimeStamp &stamp);

Q_DECLARE_TYPEINFO(TimeStamp, Q_MOVABLE_TYPE);
Q_DECLARE_TYPEINFO(Interval, Q_MOVABLE_TYPE);
