// SPDX-License-Identifier: MIT
/// What a timeRange means: comparisons on doubles with the flags, and the pieces of time in which
/// nothing changes.
#pragma once
#include <QtGlobal>
#include <cmath>
#include <vector>
#include "fennimark/geometryTypes.h"

namespace fennimark {

constexpr unsigned char kStartInclusive = 0xF0;
constexpr unsigned char kEndInclusive = 0x0F;
constexpr timeRange kNoTime{0.0, -1.0, 0};

inline bool startIncluded(const timeRange &range)
{
    return (range.flags & kStartInclusive) != 0;
}
inline bool endIncluded(const timeRange &range)
{
    return (range.flags & kEndInclusive) != 0;
}

inline bool isUsable(const timeRange &range)
{
    return std::isfinite(range.start) && std::isfinite(range.end) && range.start <= range.end;
}
/// Full nibbles for inclusive ends; equal ends are one closed instant.
timeRange normalized(const timeRange &range);

inline bool contains(const timeRange &range, double time)
{
    return (range.start < time || (range.start == time && startIncluded(range)))
           && (time < range.end || (range.end == time && endIncluded(range)));
}
/// Ends that meet overlap only when both are inclusive.
bool overlaps(const timeRange &a, const timeRange &b);
/// By start, then by which begins first, then by which ends first: strict and total over normalized
/// ranges.
bool startsBefore(const timeRange &a, const timeRange &b);
bool sameRange(const timeRange &a, const timeRange &b);
/// The hull of both; kNoTime adds nothing.
void widen(timeRange &hull, const timeRange &range);

/// Truncated, and held within the type: times may be any finite double.
qint64 truncated(double time);

/// A cut of the time line just before or just after a time.
struct TimeCut {
    double time;
    bool after;
    friend bool operator<(const TimeCut &a, const TimeCut &b)
    {
        return a.time < b.time || (a.time == b.time && !a.after && b.after);
    }
    friend bool operator==(const TimeCut &a, const TimeCut &b)
    {
        return a.time == b.time && a.after == b.after;
    }
};

/// The time line, cut at every start and end of a set of ranges. An inclusive start and an
/// exclusive end lie just before their time, an exclusive start and an inclusive end just after, so
/// [0, 50] and [50, 100] give the pieces [0, 50), [50, 50] and (50, 100].
class TimePieces {
public:
    void add(const timeRange &range);
    void sort(); ///< After the last range, before the first question.
    /// The piece around a time, also where it is a gap between ranges. False outside the first and
    /// the last cut.
    bool pieceAround(double time, timeRange &piece) const;
    /// Whether one of the ranges holds the time.
    bool isCovered(double time) const;
    /// The distinct times, ascending, truncated.
    std::vector<qint64> times() const;

private:
    std::vector<TimeCut>::const_iterator cutBehind(double time) const;

    std::vector<TimeCut> mStarts, mEnds; // emptied by sort
    std::vector<TimeCut> mCuts;
    std::vector<bool> mCovered; // by cut: whether a range holds the piece behind it
};

} // namespace fennimark
