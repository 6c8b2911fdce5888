// SPDX-License-Identifier: MIT
/// The rows of each object of an import, and the objects by key, in a few bytes for each row.
#pragma once
#include <QString>
#include <algorithm>
#include <string_view>
#include <vector>
#include "core/export.h"
#include "core/formats/featureTable.h"

namespace meridor {

/// Finds the first row of each text of a column. A slot holds a hash value and a row; texts are
/// compared only if their hash values are equal.
class MERIDOR_EXPORT KeyIndex {
public:
    KeyIndex() = default;
    explicit KeyIndex(const Column &keys) : mKeys(keys) {}

    /// Enters a row. Returns the first row with the same text, which may be this one.
    int add(int row);
    /// The first row with a text; -1 if there is none.
    int find(std::string_view key) const;

private:
    struct Slot {
        quint32 hash = 0;
        int row = -1;
    };
    size_t slotOf(std::string_view key, quint32 hash) const;
    void grow();

    Column mKeys;
    std::vector<Slot> mSlots; ///< open addressing; the size is a power of two
    size_t mUsed = 0;
};

/// The rows of one object.
struct RowSpan {
    const int *first;
    const int *last;
    const int *begin() const { return first; }
    const int *end() const { return last; }
    int size() const { return static_cast<int>(last - first); }
    int front() const { return *first; }
    int operator[](int i) const { return first[i]; }
};

/// The objects of a map, in the order of their first rows.
class MERIDOR_EXPORT ObjectRows {
public:
    /// Every row is an object, and its number is its key.
    explicit ObjectRows(int rows = 0);
    /// Rows with the same key are one object. Raises a Failure for a row without a key.
    ObjectRows(const FeatureTable &table, int keyColumn);

    int size() const { return static_cast<int>(mStarts.size()) - 1; }
    /// In the order of the file, or the one of the last sort.
    RowSpan rows(int object) const;
    /// Sorts the rows of an object; equal ones keep their order.
    template <class Less> void sort(int object, Less isLess)
    {
        const auto index = static_cast<size_t>(object);
        std::stable_sort(mRows.begin() + mStarts[index], mRows.begin() + mStarts[index + 1],
                         isLess);
    }
    QString key(int object) const;
    /// The object with a key; -1 if there is none.
    int find(std::string_view key) const;

private:
    Column mKeys;
    bool mHasKeys = false;
    KeyIndex mIndex;             ///< of the first rows
    std::vector<int> mStarts{0}; ///< of each object in mRows, and the end of the last one
    std::vector<int> mRows;
    std::vector<int> mObjectOfFirstRow; ///< by row; empty if each row is an object
};

} // namespace meridor
