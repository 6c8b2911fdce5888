// SPDX-License-Identifier: MIT
/// The only switch over the value types of a vector dataset, and over the six maps that hold its
/// containers.
#pragma once
#include "Common/detail/failure.h"
#include "datainterface/MVectorDataset.h"

namespace datainterface {

/// The label of failures in the stores, which are a part of MVectorDataset in files of their own.
inline constexpr char kDatasetLabel[] = "MVectorDataset";

/// Passes the element type to a visitor: `using T = ElementOf<decltype(element)>`.
template <class T> struct Element {
    using type = T;
};
template <class E> using ElementOf = typename std::decay_t<E>::type;

/// The DataType of an element type.
template <class T> constexpr DataType typeCode()
{
    if constexpr (std::is_same_v<T, double>)
        return DecimalType;
    else if constexpr (std::is_same_v<T, int>)
        return IntegerType;
    else
        return StringType;
}

/// Calls `visit` with the element type of a vector dataset; any other code raises "Invalid data
/// type".
template <class Visit>
decltype(auto) visitElement(DataType type, Visit &&visit, const char *file = __builtin_FILE(),
                            int line = __builtin_LINE())
{
    switch (type) {
    case DecimalType:
        return visit(Element<double>{});
    case IntegerType:
        return visit(Element<int>{});
    case StringType:
        return visit(Element<QString>{});
    default:
        break;
    }
    fail("Invalid data type", file, line);
}

/// As visitElement, for the numeric types only.
template <class Visit>
decltype(auto) visitNumericElement(DataType type, Visit &&visit,
                                   const char *file = __builtin_FILE(), int line = __builtin_LINE())
{
    switch (type) {
    case DecimalType:
        return visit(Element<double>{});
    case IntegerType:
        return visit(Element<int>{});
    default:
        break;
    }
    fail("Invalid data type", file, line);
}

/// Calls `visit` with the map of a realization that data type and storage type select.
template <class Realization, class Visit>
decltype(auto) visitContainers(Realization &realization, DataType type,
                               MVectorDataset::StorageType storage, Visit &&visit,
                               const char *file = __builtin_FILE(), int line = __builtin_LINE())
{
    return visitElement(
        type,
        [&](auto element) -> decltype(auto) {
            using T = ElementOf<decltype(element)>;
            return storage == MVectorDataset::TimeSlice ? visit(realization.template slicesOf<T>())
                                                        : visit(realization.template seriesOf<T>());
        },
        file, line);
}

} // namespace datainterface
