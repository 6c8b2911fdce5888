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
    mStarts.push_back(startCut(range));
    mEnds.push_back(endCut(range));
}

void TimePieces::sort()
{
    std::sort(mStarts.begin(), mStarts.end());
    std::sort(mEnds.begin(), mEnds.end());
    mCuts.resize(mStarts.size() + mEnds.size());
    std::merge(mStarts.begin(), mStarts.end(), mEnds.begin(), mEnds.end(), mCuts.begin());
    mCuts.erase(std::unique(mCuts.begin(), mCuts.end()), mCuts.end());
    std::size_t begun = 0;
    std::size_t ended = 0;
    for (const TimeCut &cut : mCuts) {
        while (begun < mStarts.size() && !(cut < mStarts[begun]))
            ++begun;
        while (ended < mEnds.size() && !(cut < mEnds[ended]))
            ++ended;
        mCovered.push_back(begun > ended);
    }
    std::vector<TimeCut>().swap(mStarts);
    std::vector<TimeCut>().swap(mEnds);
}

/// The first cut after an instant.
std::vector<TimeCut>::const_iterator TimePieces::cutBehind(double time) const
{
    return std::lower_bound(mCuts.begin(), mCuts.end(), TimeCut{time, true});
}

bool TimePieces::pieceAround(double time, timeRange &piece) const
{
    const auto upper = cutBehind(time);
    if (upper == mCuts.begin() || upper == mCuts.end())
        return false;
    const TimeCut &from = *(upper - 1);
    piece = {from.time, upper->time,
             static_cast<unsigned char>((from.after ? 0 : kStartInclusive)
                                        | (upper->after ? kEndInclusive : 0))};
    return true;
}

bool TimePieces::isCovered(double time) const
{
    const auto upper = cutBehind(time);
    return upper != mCuts.begin() && mCovered[std::size_t(upper - mCuts.begin() - 1)];
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
