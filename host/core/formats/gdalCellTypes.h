// SPDX-License-Identifier: MIT
/// The types of GDAL for cells of C++ types.
#pragma once
#include <gdal.h>
#include <type_traits>
#include "datainterface/half.h"

namespace meridor {

/// The type of cells that have T's width, or of the next wider type for a half. GDAL has no signed
/// bytes: a qint8 gets the type of bytes, whose sign has to be told apart.
template <class T> constexpr GDALDataType gdalType()
{
    if constexpr (std::is_same_v<T, double>)
        return GDT_Float64;
    else if constexpr (std::is_same_v<T, float> || std::is_same_v<T, half>)
        return GDT_Float32;
    else if constexpr (sizeof(T) == 1)
        return GDT_Byte;
    else if constexpr (sizeof(T) == 2)
        return std::is_signed_v<T> ? GDT_Int16 : GDT_UInt16;
    else if constexpr (sizeof(T) == 4)
        return std::is_signed_v<T> ? GDT_Int32 : GDT_UInt32;
    else
        return std::is_signed_v<T> ? GDT_Int64 : GDT_UInt64;
}

} // namespace meridor
