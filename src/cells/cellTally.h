// SPDX-License-Identifier: MIT
/// Counts the cells of whole grids by value.
///
/// An ordered map would cost a dozen cache misses for each cell. Cells of up to 16 bits are counted
/// in a table of all patterns. Wider ones are counted in a hash table with linear probing that is
/// at most half full. Either table is converted to a map at the end.
///
/// FrequencyIndex of the vector datasets is a separate table, because it starts from the keys of an
/// ordered table, counts up and down, and stops taking new keys where that table does. The table
/// here starts empty, grows with the cells and marks free slots by a reserved pattern.
#pragma once
#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <numeric>
#include <type_traits>
#include <vector>
#include "datainterface/half.h"

namespace datainterface {

/// The bits under which a value is counted. All NaNs have the same bits, and so have both zeros; a
/// half is counted by its own bits.
template <class T> auto patternOf(T value)
{
    if constexpr (std::is_same_v<T, half>) {
        return value.bits;
    } else if constexpr (std::is_floating_point_v<T>) {
        std::conditional_t<sizeof(T) == 4, quint32, quint64> bits = 0;
        const T plain = value != value ? std::numeric_limits<T>::quiet_NaN() : value + T(0);
        std::memcpy(&bits, &plain, sizeof bits);
        return bits;
    } else {
        return static_cast<std::make_unsigned_t<T>>(value);
    }
}

template <class T, class Pattern> T valueOf(Pattern pattern)
{
    T value{};
    std::memcpy(static_cast<void *>(&value), &pattern, sizeof value);
    return value;
}

/// For patterns of up to 16 bits. Each pattern has kLanes counters, which are used in turn:
/// neighbouring cells are often equal, and successive increments of one counter would wait for each
/// other.
template <class Pattern> class PatternTable {
public:
    PatternTable() : mCounts(kLanes << (8 * sizeof(Pattern))) {}

    void count(Pattern pattern)
    {
        ++mCounts[kLanes * pattern + mLane];
        mLane = (mLane + 1) & (kLanes - 1);
    }
    /// `visit(pattern, count)`, ascending.
    template <class Visit> void visit(Visit visit) const
    {
        for (std::size_t pattern = 0; pattern < mCounts.size() / kLanes; ++pattern) {
            const auto first = mCounts.begin() + static_cast<std::ptrdiff_t>(kLanes * pattern);
            const int count =
                std::accumulate(first, first + static_cast<std::ptrdiff_t>(kLanes), 0);
            if (count > 0)
                visit(static_cast<Pattern>(pattern), count);
        }
    }

private:
    static constexpr std::size_t kLanes = 4;
    std::vector<int> mCounts;
    std::size_t mLane = 0;
};

/// For wider patterns. One reserved pattern marks free slots; cells that have it are counted in
/// mFreeCount.
template <class Pattern> class PatternHash {
public:
    PatternHash() : mSlots(1024) {}

    void count(Pattern pattern)
    {
        if (pattern == kFree) {
            ++mFreeCount;
            return;
        }
        Slot &slot = slotOf(pattern);
        if (slot.pattern == kFree) {
            slot.pattern = pattern;
            slot.count = 1;
            if (2 * ++mUsed > mSlots.size())
                grow();
            return;
        }
        ++slot.count;
    }
    /// `visit(pattern, count)`, in no particular order.
    template <class Visit> void visit(Visit visit) const
    {
        for (const Slot &slot : mSlots) {
            if (slot.pattern != kFree)
                visit(slot.pattern, slot.count);
        }
        if (mFreeCount > 0)
            visit(kFree, mFreeCount);
    }

private:
    static constexpr Pattern kFree = static_cast<Pattern>(0x7FB5A1D3C26E9F47u);

    struct Slot {
        Pattern pattern = kFree;
        int count = 0;
    };

    Slot &slotOf(Pattern pattern)
    {
        quint64 mixed =
            pattern * 0x9E3779B97F4A7C15u; // Fibonacci hashing: the high bits are the good ones
        mixed ^= mixed >> 32;
        std::size_t i = mixed & (mSlots.size() - 1);
        while (mSlots[i].pattern != pattern && mSlots[i].pattern != kFree)
            i = (i + 1) & (mSlots.size() - 1);
        return mSlots[i];
    }
    void grow()
    {
        std::vector<Slot> old(4 * mSlots.size());
        old.swap(mSlots);
        for (const Slot &slot : old) {
            if (slot.pattern != kFree)
                slotOf(slot.pattern) = slot;
        }
    }

    std::vector<Slot> mSlots;
    std::size_t mUsed = 0;
    int mFreeCount = 0;
};

/// Counts cells of one type; `finish` converts the counts to a map.
template <class T> class CellTally {
public:
    void count(T value) { mTable.count(patternOf(value)); }

    /// @param keyOf  the map's key for a value.
    template <class Map, class KeyOf> void finish(Map &map, KeyOf keyOf) const
    {
        using Key = typename Map::key_type;
        std::vector<std::pair<Key, int>> counts;
        mTable.visit([&](auto pattern, int count) {
            counts.emplace_back(keyOf(valueOf<T>(pattern)), count);
        });
        std::sort(counts.begin(), counts.end(),
                  [](const auto &a, const auto &b) { return a.first < b.first; });
        map.clear();
        for (const auto &entry : counts)
            map.insert(map.constEnd(), entry.first, entry.second);
    }

private:
    using Pattern = decltype(patternOf(T()));
    std::conditional_t<sizeof(Pattern) <= 2, PatternTable<Pattern>, PatternHash<Pattern>> mTable;
};

} // namespace datainterface
