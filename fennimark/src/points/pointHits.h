// SPDX-License-Identifier: MIT
/// What point queries collect: hits in order of distance, with the ties of the last one.
#pragma once
#include <QSet>
#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

namespace fennimark {

struct PointHit {
    double distance; ///< squared
    int id;
    quint32 slot;
    bool operator<(const PointHit &other) const
    {
        return distance < other.distance || (distance == other.distance && id < other.id);
    }
};

/// A set of ids that is empty or holds one id most of the time.
class ExcludedIds {
public:
    explicit ExcludedIds(const QSet<int> &ids)
        : mIds(ids), mCount(ids.size()), mOnly(mCount == 1 ? *ids.constBegin() : 0)
    {
    }
    bool holds(int id) const
    {
        return mCount > 0 && (mCount == 1 ? id == mOnly : mIds.contains(id));
    }

private:
    const QSet<int> &mIds;
    const int mCount;
    const int mOnly;
};

/// All within a squared distance.
class HitsWithin {
public:
    HitsWithin(std::vector<PointHit> &hits, double limit, const ExcludedIds &excluded)
        : mHits(hits), mLimit(limit), mExcluded(excluded)
    {
        mHits.clear();
    }
    double limit() const { return mLimit; }
    void offer(double distance, int id, quint32 slot)
    {
        if (!mExcluded.holds(id))
            mHits.push_back({distance, id, slot});
    }

private:
    std::vector<PointHit> &mHits;
    const double mLimit;
    const ExcludedIds &mExcluded;
};

/// The nearest `count` and what ties with the last of them. The nearest are kept in order, or many
/// of them in a heap; what was or could be tied waits apart, under a limit that is a little too
/// wide, until the last distance is known.
class NearestHits {
public:
    /// @param tolerance  by how much tied distances may differ.
    /// @param after      hits up to this one are passed over; may be null.
    NearestHits(std::vector<PointHit> &hits, std::vector<PointHit> &ties, size_t count,
                double tolerance, const ExcludedIds &excluded, const PointHit *after)
        : mHits(hits),
          mTies(ties),
          mWanted(count),
          mTolerance(tolerance),
          mExcluded(excluded),
          mAfter(after)
    {
        mHits.resize(count);
        mTies.clear();
    }

    double limit() const { return mLimit; }

    Q_ALWAYS_INLINE void offer(double distance, int id, quint32 slot)
    {
        const PointHit hit{distance, id, slot};
        if (mExcluded.holds(id) || (mAfter && !(*mAfter < hit)))
            return;
        if (mFound < mWanted) {
            insert(hit, mFound++);
            if (mFound == mWanted)
                setSlack();
        } else if (distance < mLast) {
            const PointHit evicted = replaceLast(hit);
            if (evicted.distance <= mLimit)
                mTies.push_back(evicted);
        } else {
            mTies.push_back(hit);
        }
    }

    /// The hits in order of distance and id, ties at the end. @return how many of the last are
    /// tied: with each other and, when there are more than wanted, at a distance that counts as
    /// one.
    size_t finish()
    {
        mHits.resize(mFound);
        if (mFound == 0)
            return 0;
        const double last = mFound == mWanted ? mLast : HUGE_VAL;
        const double upper = std::sqrt(last) + mTolerance;
        for (const PointHit &tie : mTies) {
            if (tie.distance <= upper * upper)
                mHits.push_back(tie);
        }
        sort();
        const double lower = std::max(std::sqrt(last) - mTolerance, 0.0);
        size_t tied = 0;
        while (tied < mHits.size() && mHits[mHits.size() - 1 - tied].distance >= lower * lower)
            ++tied;
        return tied;
    }
    double lastDistance() const { return mLast; }

private:
    static constexpr size_t kSortedCount = 32;
    static constexpr size_t kSelectedCount = 8;

    // What was kept in order lacks the order of ids only.
    void sort()
    {
        if (mHits.size() > 2 * kSortedCount) {
            std::sort(mHits.begin(), mHits.end());
            return;
        }
        for (size_t i = 1; i < mHits.size(); ++i) {
            const PointHit hit = mHits[i];
            size_t at = i;
            for (; at > 0 && hit < mHits[at - 1]; --at)
                mHits[at] = mHits[at - 1];
            mHits[at] = hit;
        }
    }

    static bool nearer(const PointHit &a, const PointHit &b) { return a.distance < b.distance; }

    void insert(const PointHit &hit, size_t end)
    {
        PointHit *at = mHits.data() + end;
        if (mWanted > kSortedCount) {
            *at = hit;
            std::push_heap(mHits.data(), at + 1, nearer);
            return;
        }
        if (mWanted <= kSelectedCount) {
            // Where a hit belongs cannot be predicted: in a short list each place selects.
            *at = hit;
            for (; at != mHits.data(); --at) {
                const bool moves = at[-1].distance > hit.distance;
                *at = select(moves, at[-1], *at);
                at[-1] = select(moves, hit, at[-1]);
            }
            return;
        }
        for (; at != mHits.data() && at[-1].distance > hit.distance; --at)
            *at = at[-1];
        *at = hit;
    }
    static PointHit select(bool first, const PointHit &a, const PointHit &b)
    {
        quint64 words[2][2];
        std::memcpy(words[0], &a, sizeof a);
        std::memcpy(words[1], &b, sizeof b);
        const quint64 mask = 0U - quint64(first);
        for (int i = 0; i < 2; ++i)
            words[0][i] = (words[0][i] & mask) | (words[1][i] & ~mask);
        PointHit hit;
        std::memcpy(&hit, words[0], sizeof hit);
        return hit;
    }

    PointHit replaceLast(const PointHit &hit)
    {
        if (mWanted > kSortedCount)
            std::pop_heap(mHits.begin(), mHits.end(), nearer);
        const PointHit evicted = mHits.back();
        insert(hit, mWanted - 1);
        setLast();
        return evicted;
    }

    void setLast()
    {
        mLast = mWanted > kSortedCount ? mHits.front().distance : mHits.back().distance;
        mLimit = mLast + mSlack;
    }

    // (d + t)^2 - d^2 for the first last distance, which only falls from here on, and some more for
    // rounding.
    void setSlack()
    {
        mLast = mWanted > kSortedCount ? mHits.front().distance : mHits.back().distance;
        mSlack = 2.5 * mTolerance * (std::sqrt(mLast) + mTolerance)
                 + 4.0 * std::numeric_limits<double>::epsilon() * mLast;
        setLast();
    }

    std::vector<PointHit> &mHits;
    std::vector<PointHit> &mTies;
    const size_t mWanted;
    const double mTolerance;
    const ExcludedIds &mExcluded;
    const PointHit *const mAfter;
    size_t mFound = 0;
    double mLast = HUGE_VAL;
    double mLimit = HUGE_VAL;
    double mSlack = 0.0;
};

} // namespace fennimark
