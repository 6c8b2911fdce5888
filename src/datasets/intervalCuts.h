// SPDX-License-Identifier: MIT
/// How an interval cuts another. Time is discrete: an exclusive end excludes one tick, and an
/// interval without a tick is never stored.
#pragma once
#include <limits>
#include "Common/detail/failure.h"
#include "datainterface/TimeStamp.h"

namespace datainterface {

inline qint64 firstTick(const TimeStamp &stamp)
{
    const bool next = !stamp.inclusiveStart && stamp.startTime < std::numeric_limits<qint64>::max();
    return stamp.startTime + (next ? 1 : 0);
}

inline qint64 lastTick(const TimeStamp &stamp)
{
    const bool previous = !stamp.inclusiveEnd && stamp.endTime > std::numeric_limits<qint64>::min();
    return stamp.endTime - (previous ? 1 : 0);
}

inline bool holdsTick(const TimeStamp &stamp)
{
    return firstTick(stamp) <= lastTick(stamp);
}

/// What remains of an interval under a cutter that overlaps it.
enum class Cut {
    Nothing, ///< it is covered
    Head,    ///< the part before the cutter
    Tail,    ///< the part after the cutter
    HeadAndTail
};

/// Raises "Invalid time stamp" for crossed ends.
inline Cut cutBy(const TimeStamp &cutter, const TimeStamp &stamp,
                 const char *file = __builtin_FILE(), int line = __builtin_LINE())
{
    require(stamp.startTime <= stamp.endTime, "Invalid time stamp", file, line);
    const bool head = firstTick(stamp) < firstTick(cutter);
    const bool tail = lastTick(stamp) > lastTick(cutter);
    if (head && tail)
        return Cut::HeadAndTail;
    return head ? Cut::Head : tail ? Cut::Tail : Cut::Nothing;
}

/// From the start of `stamp` up to the cutter.
inline TimeStamp headOf(const TimeStamp &stamp, const TimeStamp &cutter)
{
    return TimeStamp(stamp.startTime, cutter.startTime, stamp.inclusiveStart,
                     !cutter.inclusiveStart);
}

/// From the end of the cutter to the end of `stamp`.
inline TimeStamp tailOf(const TimeStamp &stamp, const TimeStamp &cutter)
{
    return TimeStamp(cutter.endTime, stamp.endTime, !cutter.inclusiveEnd, stamp.inclusiveEnd);
}

/// The common part of two intervals that overlap. Where ends are equal, the bounds of `stamp`.
inline TimeStamp partUnder(const TimeStamp &stamp, const TimeStamp &cutter)
{
    const TimeStamp &start = firstTick(stamp) >= firstTick(cutter) ? stamp : cutter;
    const TimeStamp &end = lastTick(stamp) <= lastTick(cutter) ? stamp : cutter;
    return TimeStamp(start.startTime, end.endTime, start.inclusiveStart, end.inclusiveEnd);
}

/// The position in an interval that is cut into pieces from its start to its end. A piece without a
/// tick is returned as an invalid stamp.
class PieceCursor {
public:
    explicit PieceCursor(const TimeStamp &whole)
        : mWhole(whole),
          mTime(whole.startTime),
          mInclusive(whole.inclusiveStart),
          mDone(!holdsTick(whole))
    {
    }
    /// Returns the piece up to the start of `next`, and moves there.
    TimeStamp upTo(const TimeStamp &next)
    {
        if (mDone || tick() >= firstTick(next))
            return TimeStamp();
        const TimeStamp piece(mTime, next.startTime, mInclusive, !next.inclusiveStart);
        moveTo(next.startTime, next.inclusiveStart);
        return piece;
    }
    /// Returns the piece up to the earlier end of the whole and of `other` (the bound of `other` at
    /// a tie), and moves past it.
    TimeStamp through(const TimeStamp &other)
    {
        const TimeStamp &end = lastTick(other) <= lastTick(mWhole) ? other : mWhole;
        const qint64 last = lastTick(end);
        TimeStamp piece;
        if (!mDone && tick() <= last)
            piece = TimeStamp(mTime, end.endTime, mInclusive, end.inclusiveEnd);
        if (tick() <= last || last + 1 == tick())
            moveTo(end.endTime, !end.inclusiveEnd);
        mDone = mDone || last == lastTick(mWhole);
        return piece;
    }
    /// Returns the piece up to the end of the whole.
    TimeStamp rest() { return through(mWhole); }

private:
    qint64 tick() const
    {
        return firstTick(TimeStamp(mTime, std::numeric_limits<qint64>::max(), mInclusive, true));
    }
    void moveTo(qint64 time, bool inclusive)
    {
        mTime = time;
        mInclusive = inclusive;
    }

    const TimeStamp mWhole;
    qint64 mTime;
    bool mInclusive;
    bool mDone;
};

} // namespace datainterface
