// SPDX-License-Identifier: MIT
/// The switch over the value types of a vector dataset: generic code is written once over the
/// element type and gets it from a DataType by a visitor.
///
///     datainterface::visitElement(type, [&](auto element) {
///         using T = datainterface::ElementOf<decltype(element)>;
///         QVector<T> values;
///         VORN_GetDataValues(dataset, 0, time, values, missing);
///     });
#pragma once
#include <QString>
#include <type_traits>
#include "datainterface/DataType.h"
#include "datainterface/export.h"

namespace datainterface {

/// An element type as a value, which a visitor receives; it holds no data.
template <class T> struct Element {
    using type = T;
};
/// The type of an Element: `using T = ElementOf<decltype(element)>`.
template <class E> using ElementOf = typename std::decay_t<E>::type;

/// The DataType of an element type: `double`, `int` or QString.
template <class T> constexpr DataType typeCode()
{
    static_assert(std::is_same_v<T, double> || std::is_same_v<T, int> || std::is_same_v<T, QString>,
                  "not a value type of vector datasets");
    if constexpr (std::is_same_v<T, double>)
        return DecimalType;
    else if constexpr (std::is_same_v<T, int>)
        return IntegerType;
    else
        return StringType;
}

/// Raises vorn_error with "Invalid data type" and the given place in the source.
[[noreturn]] DATAINTERFACE_EXPORT void raiseInvalidDataType(const char *file, int line);

/// Calls `visit` with the Element of a numeric type and returns its result. Any other code raises
/// "Invalid data type" with the place of the call.
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
        raiseInvalidDataType(file, line);
    }
}

/// As visitNumericElement, for texts also. `visit` must return the same type for each element type.
template <class Visit>
decltype(auto) visitElement(DataType type, Visit &&visit, const char *file = __builtin_FILE(),
                            int line = __builtin_LINE())
{
    if (type == StringType)
        return visit(Element<QString>{});
    return visitNumericElement(type, visit, file, line);
}

} // namespace datainterface
