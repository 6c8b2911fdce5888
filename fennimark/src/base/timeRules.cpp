// SPDX-License-Identifier: MIT
#include "base/timeRules.h"
#include <algorithm>
#include <limits>

namespace fennimark {

timeRange normalized(const timeRange &range)
{
    const bool instant = range.start == range.end;
    timeRange result = range;
    result.flags =
        static_cast<unsigned char>((instant || startIncluded(range) ? kStartInclusive : 0)
                                   | (instant || endIncluded(range) ? kEndInclusive : 0));
    return result;
}

namespace {

bool endsBeforeStart(const timeRange &a, const timeRange &b)
{
    return a.end < b.start || (a.end == b.start && !(endIncluded(a) && startIncluded(b)));
}

TimeCut startCut(const timeRange &range)
{
    return {range.start, !startIncluded(range)};
}
TimeCut endCut(const timeRange &range)
{
    return {range.end, endIncluded(range)};
}

} // namespace

bool overlaps(const timeRange &a, const timeRange &b)
{
    return !endsBeforeStart(a, b) && !endsBeforeStart(b, a);
}

bool startsBefore(const timeRange &a, const timeRange &b)
{
    const TimeCut start = startCut(a), otherStart = startCut(b);
    return start < otherStart || (start == otherStart && endCut(a) < endCut(b));
}

bool sameRange(const timeRange &a, const timeRange &b)
{
    return startCut(a) == startCut(b) && endCut(a) == endCut(b);
}

void widen(timeRange &hull, const timeRange &range)
{
    if (hull.end < hull.start) {
        hull = range;
        return;
    }
    const TimeCut start = std::min(startCut(hull), startCut(range));
    const TimeCut end = std::max(endCut(hull), endCut(range));
    hull = {start.time, end.time,
            static_cast<unsigned char>((start.after ? 0 : kStartInclusive)
                                       | (end.after ? kEndInclusive : 0))};
}

qint64 truncated(double time)
{
    constexpr double kLimit = 9223372036854775808.0; // 2^63
    if (time >= kLimit)
        return std::numeric_limits<qint64>::max();
    return time < -kLimit ? std::numeric_limits<qint64>::min() : static_cast<qint64>(time);
}

void TimePieces::add(const timeRange &range)
{
    mCuts.push_back(startCut(range));
    mCuts.push_back(endCut(range));
}

void TimePieces::sort()
{
    std::sort(mCuts.begin(), mCuts.end());
    mCuts.erase(std::unique(mCuts.begin(), mCuts.end()), mCuts.end());
}

bool TimePieces::pieceAround(double time, timeRange &piece) const
{
    // The instant lies between the cut just before it and the one just after it.
    const auto upper = std::lower_bound(mCuts.begin(), mCuts.end(), TimeCut{time, true});
    if (upper == mCuts.begin() || upper == mCuts.end())
        return false;
    const TimeCut &from = *(upper - 1);
    piece = {from.time, upper->time,
             static_cast<unsigned char>((from.after ? 0 : kStartInclusive)
                                        | (upper->after ? kEndInclusive : 0))};
    return true;
}

std::vector<qint64> TimePieces::times() const
{
    std::vector<qint64> result;
    for (const TimeCut &cut : mCuts) {
        const qint64 time = truncated(cut.time);
        if (result.empty() || result.back() != time)
            result.push_back(time);
    }
    return result;
}

} // namespace fennimark
