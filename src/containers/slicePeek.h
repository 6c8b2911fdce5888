// SPDX-License-Identifier: MIT
/// One number of a slice that nobody holds, without its other numbers.
#pragma once
#include <type_traits>
#include "Common/DataManager.h"
#include "datainterface/TimeContainers.h"

namespace datainterface {

/// Unknown: not to be told so; page the slice in.
enum class Peek { Value, NoValue, Unknown };

/// Where the value of an object lies in a slice's image. T is int or double.
template <class T> constexpr int placeOfValue(int object)
{
    return 4 + object * static_cast<int>(sizeof(T));
}

/// Reads the object's value out of the block, where that lies in the cache, or a few bytes of it
/// out of the scratch file. `shape` is the block's; it is found out when it is not known yet.
template <class T>
Peek peekValue(const BlockReading &store, int blockId, SliceShape &shape, int object, T &value);

/// For reads of many slices in a row.
struct SliceAccess {
    /// As TimeSliceData::GetValue.
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
