// SPDX-License-Identifier: MIT
/// The compact lists in which a builder stores time ranges and the observations of a chain.
#pragma once
#include <algorithm>
#include <cstring>
#include <deque>
#include <functional>
#include <vector>
#include "base/timeRules.h"

namespace fennimark {

/// Distinct time ranges by number: a hash table with open addressing over the numbers.
class RangeTable {
public:
    const timeRange &operator[](quint32 number) const { return mRanges[number]; }

    /// The number of a range; a new range is added.
    quint32 numberOf(const timeRange &range)
    {
        if (2 * mRanges.size() >= mSlots.size())
            grow();
        quint32 &slot = mSlots[slotOf(range)];
        if (slot == 0) {
            mRanges.push_back(range);
            slot = quint32(mRanges.size());
        }
        return slot - 1;
    }

private:
    std::size_t slotOf(const timeRange &range) const
    {
        quint64 start = 0;
        quint64 end = 0;
        std::memcpy(&start, &range.start, sizeof start);
        std::memcpy(&end, &range.end, sizeof end);
        quint64 hash = (start * 0x9e3779b97f4a7c15U) ^ (end + range.flags);
        hash = (hash ^ (hash >> 32)) * 0xd6e8feb86659fd93U;
        const std::size_t mask = mSlots.size() - 1;
        std::size_t slot = (hash >> 32) & mask;
        while (mSlots[slot] != 0 && !same(mRanges[mSlots[slot] - 1], range))
            slot = (slot + 1) & mask;
        return slot;
    }
    static bool same(const timeRange &a, const timeRange &b)
    {
        return a.start == b.start && a.end == b.end && a.flags == b.flags;
    }
    void grow()
    {
        mSlots.assign(2 * mSlots.size(), 0);
        for (quint32 i = 0; i < mRanges.size(); ++i)
            mSlots[slotOf(mRanges[i])] = i + 1;
    }

    std::deque<timeRange> mRanges;
    std::vector<quint32> mSlots = std::vector<quint32>(64, 0); // number + 1; 0: a free slot
};

/// The records of a chain that are not contiguous or were not added in order of time, ascending in
/// time. They are stored in blocks of at most 512, so that an insertion moves few of them.
class TimeOrderedRecords {
public:
    quint32 at(quint32 index) const
    {
        if (mBlock >= mBlocks.size() || index < mBlockStart)
            mBlock = mBlockStart = 0;
        while (index - mBlockStart >= mBlocks[mBlock].size())
            mBlockStart += quint32(mBlocks[mBlock++].size());
        return mBlocks[mBlock][index - mBlockStart];
    }

    /// Inserts a record before the first one for which isAfter(other) is true.
    template <class IsAfter> void insert(quint32 record, IsAfter isAfter)
    {
        mBlock = mBlockStart = 0;
        if (mBlocks.empty()) {
            mBlocks.push_back({record});
            return;
        }
        const std::size_t number = blockOf(isAfter);
        Block &block = mBlocks[number];
        block.insert(std::partition_point(block.begin(), block.end(), std::not_fn(isAfter)),
                     record);
        if (block.size() <= kLargest)
            return;
        Block tail(block.begin() + kLargest / 2, block.end());
        block.resize(kLargest / 2);
        mBlocks.insert(mBlocks.begin() + std::ptrdiff_t(number) + 1, std::move(tail));
    }

    /// Calls visit(record) for the record before and the record after the position at which
    /// `insert` would insert one, if they exist.
    template <class IsAfter, class Visit> void visitNeighbors(IsAfter isAfter, Visit visit) const
    {
        if (mBlocks.empty())
            return;
        const std::size_t number = blockOf(isAfter);
        const Block &block = mBlocks[number];
        const auto place = std::partition_point(block.begin(), block.end(), std::not_fn(isAfter));
        if (place != block.begin())
            visit(*(place - 1));
        if (place != block.end())
            visit(*place);
        else if (number + 1 < mBlocks.size())
            visit(mBlocks[number + 1].front());
    }

    template <class Visit> void visit(Visit visit) const
    {
        for (const Block &block : mBlocks)
            std::for_each(block.begin(), block.end(), visit);
    }

private:
    using Block = std::vector<quint32>;
    static constexpr std::size_t kLargest = 512;

    /// The last block for whose first record isAfter is false; the first block when there is none.
    template <class IsAfter> std::size_t blockOf(IsAfter isAfter) const
    {
        const auto after =
            std::partition_point(mBlocks.begin(), mBlocks.end(),
                                 [&](const Block &block) { return !isAfter(block.front()); });
        return std::size_t(std::max<std::ptrdiff_t>(after - mBlocks.begin() - 1, 0));
    }

    std::vector<Block> mBlocks;
    // The block that `at` used last and the index of its first record, so that reading all records
    // in turn takes linear time.
    mutable std::size_t mBlock = 0;
    mutable quint32 mBlockStart = 0;
};

} // namespace fennimark
