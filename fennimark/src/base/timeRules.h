// SPDX-License-Identifier: MIT
/// The semantics of timeRange: comparisons of doubles with inclusive and exclusive ends, and the
/// pieces of time in which nothing changes.
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
/// The same range with flags of 0 or all four bits for each end. A range with equal ends is one
/// closed instant, whatever its flags.
timeRange normalized(const timeRange &range);

inline bool contains(const timeRange &range, double time)
{
    return (range.start < time || (range.start == time && startIncluded(range)))
           && (time < range.end || (range.end == time && endIncluded(range)));
}
/// Whether the ranges have a time in common. An end and a start at the same time overlap only when
/// both are inclusive.
bool overlaps(const timeRange &a, const timeRange &b);
/// By the time of the start, an inclusive start before an exclusive one, then likewise by the end.
/// A strict total order of normalized ranges.
bool startsBefore(const timeRange &a, const timeRange &b);
bool sameRange(const timeRange &a, const timeRange &b);
/// Extends `hull` to the hull of both ranges. A `hull` that ends before it starts is replaced.
void widen(timeRange &hull, const timeRange &range);

/// The time truncated to an integer and clamped to the range of qint64, since a time may be any
/// finite double.
qint64 truncated(double time);

/// A position on the time line just before or just after a time.
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
/// exclusive end are cuts just before their time, an exclusive start and an inclusive end just
/// after. [0, 50] and [50, 100] give the pieces [0, 50), [50, 50] and (50, 100].
class TimePieces {
public:
    void add(const timeRange &range);
    void sort(); ///< to be called once, after the last `add` and before the first query
    /// The piece that contains a time; it may be a gap between ranges. False before the first and
    /// after the last cut.
    bool pieceAround(double time, timeRange &piece) const;
    /// Whether one of the ranges contains the time.
    bool isCovered(double time) const;
    /// The distinct times, ascending, truncated.
    std::vector<qint64> times() const;

private:
    std::vector<TimeCut>::const_iterator cutBehind(double time) const;

    std::vector<TimeCut> mStarts, mEnds; // emptied by sort
    std::vector<TimeCut> mCuts;
    std::vector<bool> mCovered; // by cut: whether a range covers the piece after it
};

} // namespace fennimark
