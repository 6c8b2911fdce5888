// SPDX-License-Identifier: MIT
#include "core/import/objectRows.h"
#include <charconv>
#include <functional>
#include <numeric>
#include <string>
#include <utility>
#include "core/project/failure.h"

namespace meridor {
namespace {

quint32 hashOf(std::string_view text)
{
    const auto hash = static_cast<quint64>(std::hash<std::string_view>()(text));
    return static_cast<quint32>(hash ^ (hash >> 32));
}

} // namespace

/// The slot of the text, or the free slot where it would be.
size_t KeyIndex::slotOf(std::string_view key, quint32 hash) const
{
    size_t slot = hash & (mSlots.size() - 1);
    while (mSlots[slot].row >= 0
           && (mSlots[slot].hash != hash || mKeys.view(mSlots[slot].row) != key))
        slot = (slot + 1) & (mSlots.size() - 1);
    return slot;
}

void KeyIndex::grow()
{
    const std::vector<Slot> old(qMax<size_t>(64, 2 * mSlots.size()));
    std::vector<Slot> slots = std::exchange(mSlots, old);
    for (const Slot &one : slots) {
        if (one.row < 0)
            continue;
        size_t slot = one.hash & (mSlots.size() - 1);
        while (mSlots[slot].row >= 0)
            slot = (slot + 1) & (mSlots.size() - 1);
        mSlots[slot] = one;
    }
}

int KeyIndex::add(int row)
{
    if (4 * (mUsed + 1) > 3 * mSlots.size())
        grow();
    const std::string key(mKeys.view(row)); // a view ends with the next one
    const quint32 hash = hashOf(key);
    Slot &slot = mSlots[slotOf(key, hash)];
    if (slot.row < 0) {
        slot = {hash, row};
        ++mUsed;
    }
    return slot.row;
}

int KeyIndex::find(std::string_view key) const
{
    return mSlots.empty() ? -1 : mSlots[slotOf(key, hashOf(key))].row;
}

ObjectRows::ObjectRows(int rows)
    : mStarts(static_cast<size_t>(rows) + 1), mRows(static_cast<size_t>(rows))
{
    std::iota(mStarts.begin(), mStarts.end(), 0);
    std::iota(mRows.begin(), mRows.end(), 0);
}

ObjectRows::ObjectRows(const FeatureTable &table, int keyColumn)
    : mKeys(table.columns[keyColumn]),
      mHasKeys(true),
      mIndex(mKeys),
      mRows(static_cast<size_t>(table.rows))
{
    // First the object of each row, then the rows of each object, counted and distributed.
    std::vector<int> objectOf(static_cast<size_t>(table.rows));
    std::vector<int> counts;
    for (int row = 0; row < table.rows; ++row) {
        if (mKeys.isMissing(row))
            fail(QStringLiteral("%1: no key").arg(place(table, mKeys, row)));
        const int first = mIndex.add(row);
        auto &object = objectOf[static_cast<size_t>(row)];
        object =
            first == row ? static_cast<int>(counts.size()) : objectOf[static_cast<size_t>(first)];
        if (first == row)
            counts.push_back(0);
        ++counts[static_cast<size_t>(object)];
    }
    mStarts.resize(counts.size() + 1);
    std::partial_sum(counts.begin(), counts.end(), mStarts.begin() + 1);
    std::vector<int> next(mStarts.begin(), mStarts.end() - 1);
    for (int row = 0; row < table.rows; ++row) {
        int &position = next[static_cast<size_t>(objectOf[static_cast<size_t>(row)])];
        mRows[static_cast<size_t>(position++)] = row;
    }
    if (size() < table.rows)
        mObjectOfFirstRow = std::move(objectOf);
}

RowSpan ObjectRows::rows(int object) const
{
    const auto index = static_cast<size_t>(object);
    return {mRows.data() + mStarts[index], mRows.data() + mStarts[index + 1]};
}

QString ObjectRows::key(int object) const
{
    // All rows of an object have its key, in whatever order they are.
    return mHasKeys ? mKeys.text(rows(object).front()) : QString::number(object + 1);
}

int ObjectRows::find(std::string_view key) const
{
    if (!mHasKeys) {
        int number = 0;
        const auto [stop, error] = std::from_chars(key.data(), key.data() + key.size(), number);
        const bool isNumber = error == std::errc() && stop == key.data() + key.size();
        return isNumber && number >= 1 && number <= size() ? number - 1 : -1;
    }
    const int row = mIndex.find(key);
    return row < 0 || mObjectOfFirstRow.empty() ? row : mObjectOfFirstRow[static_cast<size_t>(row)];
}

} // namespace meridor
