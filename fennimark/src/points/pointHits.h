// SPDX-License-Identifier: MIT
/// The result sets of point queries: hits in order of distance, with the ties of the last one.
#pragma once
#include <QSet>
#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <vector>
#include "base/floatRounding.h"

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

/// A view of a set of ids, fast for sets of no or one id, which are the usual ones.
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

/// Collects all hits within a squared distance.
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

/// Collects the nearest `count` hits and those that are tied with the last of them. mHits holds the
/// nearest hits: sorted when `count` is at most 32, otherwise as a heap. mTies holds the other hits
/// up to mLimit, which is the distance of the last hit plus an upper bound of the tolerance of
/// ties; finish() drops those that are not tied.
///
/// Two hits are tied when their distances differ by no more than 4 ulp of the largest coordinate of
/// the place and the two points: on a lattice of spacing 0.1, distances that are equal in exact
/// arithmetic differ by up to that much. Points that are not among the hits have no influence.
class NearestHits {
public:
    /// @param magnitude  the larger absolute coordinate of the place.
    /// @param after      hits up to this one are skipped; may be null.
    NearestHits(std::vector<PointHit> &hits, std::vector<PointHit> &ties, size_t count,
                double magnitude, const ExcludedIds &excluded, const PointHit *after)
        : mHits(hits),
          mTies(ties),
          mWanted(count),
          mMagnitude(magnitude),
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

    /// Sorts the hits by distance and id, with the ties at the end.
    /// @param magnitude  magnitude(hit) returns the larger absolute coordinate of a hit.
    /// @return the number of hits at the end that are tied with the last one wanted, which is
    /// included; 0 when there are fewer hits than wanted.
    template <class Magnitude> size_t finish(Magnitude magnitude)
    {
        mHits.resize(mFound);
        if (mFound < mWanted) {
            sort();
            return 0;
        }
        double largest = mMagnitude;
        for (const auto *list : {&mHits, &mTies}) {
            for (const PointHit &hit : *list) {
                if (hit.distance == mLast)
                    largest = std::max(largest, magnitude(hit));
            }
        }
        const double last = std::sqrt(mLast);
        const auto isTied = [&](const PointHit &hit) {
            const double tolerance = kTieUlps * ulp(std::max(largest, magnitude(hit)));
            const double lower = std::max(last - tolerance, 0.0);
            const double upper = last + tolerance;
            // Squares overflow from 1e154 on; only an infinite last distance is tied with another.
            return hit.distance >= lower * lower && hit.distance <= upper * upper
                   && (std::isfinite(hit.distance) || !std::isfinite(mLast));
        };
        for (const PointHit &tie : mTies) {
            if (isTied(tie))
                mHits.push_back(tie);
        }
        sort();
        size_t tied = 0;
        while (tied < mHits.size() && isTied(mHits[mHits.size() - 1 - tied]))
            ++tied;
        return tied;
    }

private:
    static constexpr size_t kSortedCount = 32;
    static constexpr size_t kSelectedCount = 8;
    static constexpr double kTieUlps = 4.0;

    // Short lists are sorted by distance already, and only ids and ties may be out of order, so
    // they are sorted by insertion.
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
            // The position of a hit is unpredictable, so a short list is updated by selections
            // instead of branches.
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

    // The slack is an upper bound of (d + t)^2 - d^2 plus rounding, where d is the distance of the
    // last hit when the list is first full; from then on d only decreases. No hit has a coordinate
    // larger than the place's plus d, so t is at least the tolerance of every hit.
    void setSlack()
    {
        mLast = mWanted > kSortedCount ? mHits.front().distance : mHits.back().distance;
        const double distance = std::sqrt(mLast);
        const double tolerance = 2.0 * kTieUlps * ulp(mMagnitude + distance);
        mSlack = 2.5 * tolerance * (distance + tolerance)
                 + 4.0 * std::numeric_limits<double>::epsilon() * mLast;
        setLast();
    }

    std::vector<PointHit> &mHits;
    std::vector<PointHit> &mTies;
    const size_t mWanted;
    const double mMagnitude;
    const ExcludedIds &mExcluded;
    const PointHit *const mAfter;
    size_t mFound = 0;
    double mLast = HUGE_VAL;
    double mLimit = HUGE_VAL;
    double mSlack = 0.0;
};

} // namespace fennimark
