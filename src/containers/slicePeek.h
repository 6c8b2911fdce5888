// SPDX-License-Identifier: MIT
/// Reads one number of a slice that is not in memory, without the other numbers.
#pragma once
#include <type_traits>
#include "Common/DataManager.h"
#include "datainterface/TimeContainers.h"

namespace datainterface {

/// Value: read. NoValue: the object is missing or out of range. Unknown: the slice must be paged in
/// to find out.
enum class Peek { Value, NoValue, Unknown };

/// The offset of an object's value in a slice's image. T is int or double.
template <class T> constexpr int placeOfValue(int object)
{
    return 4 + object * static_cast<int>(sizeof(T));
}

/// Reads the object's value from the block in the cache, else by reading a few bytes of it from the
/// scratch file.
/// @param shape  of the block; found here, and set, when it is not known (count -1).
template <class T>
Peek peekValue(const BlockReading &store, int blockId, SliceShape &shape, int object, T &value);

/// For reads of many slices in a row.
struct SliceAccess {
    /// The same as TimeSliceData::GetValue, under a lock of the store that is already taken.
    template <class T>
    static bool getValue(const BlockReading &store, const TimeSliceData<T> &slice, int object,
                         T &value)
    {
        if constexpr (std::is_arithmetic_v<T>) {
            const Peek peek = slice.mContent
                                  ? Peek::Unknown
                                  : peekValue(store, slice.BlockId(), slice.mShape, object, value);
            if (peek != Peek::Unknown)
                return peek == Peek::Value;
        }
        return slice.getWhole(object, value);
    }
};

} // namespace datainterface
