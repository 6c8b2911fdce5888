// SPDX-License-Identifier: MIT
/// Set operations on interval lists, shared by TimeStamp and Interval.
///
/// Every interval becomes two boundaries, a start and an end. The boundaries are sorted and walked
/// once. A piece of the result begins and ends where the number of open intervals passes a given
/// depth (1: union, 2: intersection), where the membership in one list changes relative to the
/// other (difference), or at every boundary (refinement). Boundaries at the same time t are ordered
/// by the position on the time line at which they take effect, so that [1, 5) and [5, 8) are never
/// open together:
///
///     rank 0   )  exclusive end     just before t
///     rank 1   [  inclusive start   at t
///     rank 2   ]  inclusive end     at t
///     rank 3   (  exclusive start   just after t
///
/// Boundaries of the same time and rank are ordered by list, the first one first. The order is
/// total up to records that are equal in every field, so the sort need not be stable.
#pragma once
#include <QtGlobal>
#include <vector>
#include "Common/detail/failure.h"

namespace datainterface {

/// One end of an interval, in 16 bytes, because most of the time is spent in sorting it.
class TimeBoundary {
public:
    enum Kind : quint32 { Start, End };

    TimeBoundary(qint64 at, Kind kind, bool inclusive, quint32 list)
        : time(at), mOrder(rank(kind, inclusive) * 2 + list)
    {
    }
    bool isStart() const { return (mOrder & 2) != 0; }
    bool inclusive() const { return ((mOrder + 2) & 4) != 0; }
    quint32 list() const { return mOrder & 1; }
    bool operator<(const TimeBoundary &other) const
    {
        return time != other.time ? time < other.time : mOrder < other.mOrder;
    }

    qint64 time;

private:
    static quint32 rank(Kind kind, bool inclusive)
    {
        return kind == Start ? (inclusive ? 1 : 3) : (inclusive ? 2 : 0);
    }

    quint32 mOrder; ///< rank, then list in the lowest bit
};

using TimeBoundaries = std::vector<TimeBoundary>;

/// Sorts. Boundaries of sorted intervals have long ascending runs, which are merged: O(n) for a
/// fixed number of sorted lists, O(n log n) in general.
void sortBoundaries(TimeBoundaries &boundaries);

/// The differences between the operations on TimeStamp and on Interval.
struct SweepRules {
    const char *file;     ///< the source that a failure names
    const char *badCount; ///< raised when more than two intervals are open, or fewer than none
    bool closesPoints;    ///< one-point intervals count as closed; else the first list's must be
    bool dropsEmpty;      ///< pieces without an instant are left out
};

/// True for crossed ends and for ends one tick apart that are both exclusive.
template <class Span> bool holdsNoInstant(const Span &span)
{
    return span.startTime > span.endTime
           || (span.endTime != span.startTime && span.endTime - 1 == span.startTime
               && !span.inclusiveStart && !span.inclusiveEnd);
}

/// The span that both share, from their fields. Its ends are crossed when the spans lie apart.
template <class Span> Span intersection(const Span &a, const Span &b)
{
    Span shared = a;
    if (b.startTime >= a.startTime) {
        shared.startTime = b.startTime;
        shared.inclusiveStart = b.inclusiveStart && (b.startTime > a.startTime || a.inclusiveStart);
    }
    if (b.endTime <= a.endTime) {
        shared.endTime = b.endTime;
        shared.inclusiveEnd = b.inclusiveEnd && (b.endTime < a.endTime || a.inclusiveEnd);
    }
    return shared;
}

template <class Spans>
void appendBoundaries(TimeBoundaries &boundaries, const Spans &spans, quint32 list,
                      bool closesPoints)
{
    for (const auto &span : spans) {
        const bool closed = closesPoints && span.startTime == span.endTime;
        boundaries.emplace_back(span.startTime, TimeBoundary::Start, closed || span.inclusiveStart,
                                list);
        boundaries.emplace_back(span.endTime, TimeBoundary::End, closed || span.inclusiveEnd, list);
    }
}

template <class Spans>
TimeBoundaries sortedBoundaries(const Spans &a, const Spans &b, const SweepRules &rules)
{
    if (!rules.closesPoints) {
        for (const auto &span : a)
            require(span.startTime != span.endTime || (span.inclusiveStart && span.inclusiveEnd),
                    "Invalid time stamp", rules.file);
    }
    TimeBoundaries boundaries;
    boundaries.reserve(2 * (static_cast<size_t>(a.size()) + static_cast<size_t>(b.size())));
    appendBoundaries(boundaries, a, 0, rules.closesPoints);
    appendBoundaries(boundaries, b, 1, rules.closesPoints);
    sortBoundaries(boundaries);
    return boundaries;
}

/// The pieces on which at least `depth` intervals are open. Where a list overlaps itself, its
/// intervals count separately.
template <class Spans>
Spans sweepDepth(const Spans &a, const Spans &b, int depth, const SweepRules &rules)
{
    Spans pieces;
    typename Spans::value_type piece{};
    int open = 0;
    for (const TimeBoundary &boundary : sortedBoundaries(a, b, rules)) {
        const int before = open;
        open += boundary.isStart() ? 1 : -1;
        require(open >= 0 && open <= 2, rules.badCount, rules.file);
        if (before < depth && open == depth) {
            piece.startTime = boundary.time;
            piece.inclusiveStart = boundary.inclusive();
        } else if (before == depth && open < depth) {
            piece.endTime = boundary.time;
            piece.inclusiveEnd = boundary.inclusive();
            if (!rules.dropsEmpty || !holdsNoInstant(piece))
                pieces.append(piece);
        }
    }
    return pieces;
}

/// The pieces that are in `a` and not in `b`. Where `b` begins or ends inside `a`, the piece is
/// closed if `b` is open there and open if `b` is closed.
template <class Spans>
Spans sweepDifference(const Spans &a, const Spans &b, const SweepRules &rules)
{
    Spans pieces;
    typename Spans::value_type piece{};
    bool inA = false;
    bool inB = false;
    const auto open = [&piece](const TimeBoundary &at, bool inclusive) {
        piece.startTime = at.time;
        piece.inclusiveStart = inclusive;
    };
    const auto close = [&](const TimeBoundary &at, bool inclusive) {
        piece.endTime = at.time;
        piece.inclusiveEnd = inclusive;
        return !rules.dropsEmpty || !holdsNoInstant(piece);
    };
    for (const TimeBoundary &boundary : sortedBoundaries(a, b, rules)) {
        const bool wasInA = inA;
        const bool wasInB = inB;
        (boundary.list() == 0 ? inA : inB) = boundary.isStart();
        if (!inB && !wasInA && inA) {
            open(boundary, boundary.inclusive());
        } else if (!inB && wasInA && !inA) {
            if (close(boundary, boundary.inclusive()))
                pieces.append(piece);
        } else if (inA && wasInA && wasInB && !inB) {
            open(boundary, !boundary.inclusive());
        } else if (inA && wasInA && !wasInB && inB) {
            const bool holds = close(boundary, !boundary.inclusive());
            if (holds
                && (piece.startTime < piece.endTime
                    || (piece.inclusiveStart && piece.inclusiveEnd)))
                pieces.append(piece);
        }
    }
    return pieces;
}

/// The common refinement of any number of lists: the longest pieces on which no interval of the
/// lists begins or ends. Every two consecutive boundaries p and q are the ends of a piece, or of
/// none:
///
///     p.time < q.time: a piece, unless it is a gap (p an end, q a start, no interval open) or
///     holds no instant. A bracket of the inputs is kept on its side; the piece on its other side
///     takes the opposite one.
///
///         p    start of the piece        q    end of the piece
///         [    [                         ]    ]
///         (    (                         )    )
///         ]    (                         [    )
///         )    [                         (    ]
///
///     p.time == q.time: the piece [t, t], where p and q separate the instant t from both sides.
///
///         p q    piece
///         [ ]    yes
///         [ (    yes: t is in the interval of p and not in that of q
///         ) ]    yes: t is in the interval of q and not in that of p
///         ) (    if another interval is open: t is in neither of the two
///         ) [    no: p ends before t, and q starts the piece from t on
///         ] (    no: the piece that p ends includes t
///         two equal brackets: no
template <class Spans> Spans refine(TimeBoundaries boundaries, const char *file)
{
    Spans pieces;
    sortBoundaries(boundaries);
    int open = 0;
    for (size_t i = 1; i < boundaries.size(); ++i) {
        const TimeBoundary &p = boundaries[i - 1];
        const TimeBoundary &q = boundaries[i];
        open += p.isStart() ? 1 : -1;
        require(p.time <= q.time, "Invalid time stamp ordering", file);
        typename Spans::value_type piece{};
        piece.startTime = p.time;
        piece.endTime = q.time;
        bool exists = false;
        if (p.time < q.time) {
            piece.inclusiveStart = p.inclusive() == p.isStart();
            piece.inclusiveEnd = q.inclusive() != q.isStart();
            exists = (p.isStart() || !q.isStart() || open > 0) && !holdsNoInstant(piece);
        } else {
            piece.inclusiveStart = true;
            piece.inclusiveEnd = true;
            if (p.isStart() == q.isStart())
                exists = p.inclusive() != q.inclusive();
            else
                exists = p.isStart() || (!p.inclusive() && !q.inclusive() && open > 0);
        }
        if (exists)
            pieces.append(piece);
    }
    return pieces;
}

} // namespace datainterface
