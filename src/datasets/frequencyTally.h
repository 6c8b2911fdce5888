// SPDX-License-Identifier: MIT
/// Counting values into the ordered table of a dataset.
///
/// A look-up in the table costs a dozen cache misses. For many numbers at once, the keys are copied
/// into a hash table (open addressing, at most 5001 keys), the values are counted there, and the
/// counts are written back at the end. The result is the same as counting one by one, including the
/// limit of the table.
#pragma once
#include <QVector>
#include <cmath>
#include <cstring>
#include <limits>
#include <memory>
#include <vector>
#include "datainterface/MVectorDataset.h"

namespace datainterface {

template <class T> using FrequencyTable = RealizationVectorDataFrequencies::Table<T>;
constexpr int kFrequencyKeyLimit = RealizationVectorDataFrequencies::kKeyLimit;

/// False, and nothing is changed, when the table is over its limit.
template <class T> bool countUp(FrequencyTable<T> &table, const T &value)
{
    if (table.size() > kFrequencyKeyLimit)
        return false;
    ++table[value];
    return true;
}

/// A count that reaches 0 removes its key.
template <class T> void countDown(FrequencyTable<T> &table, const T &value)
{
    const auto found = table.find(value);
    if (found != table.end() && --*found == 0)
        table.erase(found);
}

/// A hash table over the keys of a table, for one series of additions or of removals.
template <class T> class FrequencyIndex {
public:
    FrequencyIndex(FrequencyTable<T> &table, qint64 expected)
        : mTable(table), mKeyCount(table.size())
    {
        const qint64 keys = qMax<qint64>(
            table.size(), qMin<qint64>(kFrequencyKeyLimit + 1, table.size() + expected));
        while ((std::size_t(1) << mBits) < 2 * static_cast<std::size_t>(keys))
            ++mBits;
        mSlots.resize(std::size_t(1) << mBits);
        for (auto it = table.begin(); it != table.end(); ++it) {
            Slot &slot = slotOf(it.key());
            slot.key = it.key();
            slot.count = &*it;
            slot.isUsed = true;
        }
    }

    bool isFull() const { return mKeyCount > kFrequencyKeyLimit; }
    void add(T value)
    {
        if (isFull())
            return;
        Slot &slot = slotOf(value);
        ++slot.change;
        if (slot.isUsed)
            return;
        slot.key = value;
        slot.isUsed = true;
        ++mKeyCount;
    }
    void remove(T value)
    {
        Slot &slot = slotOf(value);
        slot.change += slot.isUsed;
    }

    void finishAdding()
    {
        for (const Slot &slot : mSlots) {
            if (slot.count)
                *slot.count += slot.change;
            else if (slot.isUsed)
                mTable.insert(slot.key, slot.change);
        }
    }
    // Counting down one by one erases a key when its count reaches 0; later values do not find it.
    void finishRemoving()
    {
        for (const Slot &slot : mSlots) {
            if (slot.change == 0)
                continue;
            if (*slot.count > 0 && *slot.count <= slot.change)
                mTable.remove(slot.key);
            else
                *slot.count -= slot.change;
        }
    }

private:
    struct Slot {
        T key{};
        int change = 0;
        int *count = nullptr; ///< in the table; null for a new key
        bool isUsed = false;
    };

    static quint64 hash(T value)
    {
        quint64 bits = 0;
        if constexpr (std::is_floating_point_v<T>) {
            const T plain = std::isnan(value) ? std::numeric_limits<T>::quiet_NaN()
                                              : value + 0.0; // -0 becomes 0
            std::memcpy(&bits, &plain, sizeof plain);
        } else {
            bits = static_cast<quint32>(value);
        }
        // Fibonacci hashing: only the high bits of the product depend on all bits of the value.
        return bits * 0x9E3779B97F4A7C15u;
    }
    static bool equal(T a, T b) { return a == b || (a != a && b != b); }
    Slot &slotOf(T value)
    {
        std::size_t i = hash(value) >> (64 - mBits);
        while (mSlots[i].isUsed && !equal(mSlots[i].key, value))
            i = (i + 1) & (mSlots.size() - 1);
        return mSlots[i];
    }

    FrequencyTable<T> &mTable;
    int mKeyCount;
    int mBits = 6; ///< the number of slots is 2^mBits
    std::vector<Slot> mSlots;
};

/// Counts values into a table, all up or all down. The table is correct after `finish`.
template <class T> class FrequencyTally {
public:
    enum Direction { Up, Down };

    /// @param expected  about how many values will be counted; decides whether the keys are hashed.
    FrequencyTally(FrequencyTable<T> &table, qint64 expected, Direction direction)
        : mTable(table), mDirection(direction)
    {
        if constexpr (kHashes) {
            if (!isFull() && expected > 64 + table.size() / 8)
                mIndex = std::make_unique<FrequencyIndex<T>>(table, expected);
        }
    }

    void count(const T &value)
    {
        if constexpr (kHashes) {
            if (mIndex)
                return mDirection == Up ? mIndex->add(value) : mIndex->remove(value);
        }
        if (mDirection == Up)
            countUp(mTable, value);
        else
            countDown(mTable, value);
    }
    /// Whether no further value can change the table.
    bool isFull() const
    {
        if constexpr (kHashes) {
            if (mIndex)
                return mDirection == Up && mIndex->isFull();
        }
        return mDirection == Up && mTable.size() > kFrequencyKeyLimit;
    }
    void finish()
    {
        if constexpr (kHashes) {
            if (mIndex)
                mDirection == Up ? mIndex->finishAdding() : mIndex->finishRemoving();
            mIndex.reset();
        }
    }

private:
    static constexpr bool kHashes = std::is_arithmetic_v<T>;

    FrequencyTable<T> &mTable;
    const Direction mDirection;
    std::unique_ptr<FrequencyIndex<std::conditional_t<kHashes, T, int>>> mIndex;
};

} // namespace datainterface
