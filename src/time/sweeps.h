// SPDX-License-Identifier: MIT
/// The algebra of interval lists, told once for TimeStamp and Interval.
///
/// Every interval becomes two boundaries. Sorted, they are walked once, and a piece of the result
/// opens and closes where the number of open intervals passes a given depth (1: union, 2:
/// intersection) or where the membership in one list changes against the other (difference).
/// Boundaries at the same time are ordered by where they sit on the time line, so that [1, 5) and
/// [5, 8) are never open together:
///
///     rank 0  exclusive end     just before t
///     rank 1  inclusive start   at t
///     rank 2  inclusive end     at t
///     rank 3  exclusive start   just after t
///
/// At the same time and rank the first list goes first. With that the order is total up to records
/// that are the same in every field, and no sort has to be stable.
#pragma once
#include <QtGlobal>
#include <vector>
#include "Common/detail/failure.h"

namespace datainterface {

/// One end of an interval: 16 bytes, since the sort moves little else.
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

/// Sorts lists that hold long ascending runs, as the boundaries of sorted intervals do, by merging
/// the runs: O(n) for a fixed number of sorted lists, O(n log n) for any.
void sortBoundaries(TimeBoundaries &boundaries);

/// Where the algebras of TimeStamp and of Interval differ.
struct SweepRules {
    const char *file;     ///< of the operation, as the failure shows it
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

/// The span shared by both, by its fields: crossed ends when they share none.
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

/// The pieces on which at least `depth` intervals are open. A list that overlaps itself
/// counts as two.
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

/// What lies in `a` and not in `b`. Where `b` begins or ends inside `a`, the remainder takes in
/// what `b` keeps out.
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

/// The common refinement: consecutive boundaries are the ends of a piece, except across a gap
/// between the inputs.
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
