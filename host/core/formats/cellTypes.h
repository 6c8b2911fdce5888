// SPDX-License-Identifier: MIT
/// The C++ types of raster cells.
#pragma once
#include "datainterface/DataType.h"
#include "datainterface/half.h"

namespace meridor {

/// Calls `visit` with a zero of the cells' C++ type.
/// @param bits  the depth. @return false if no C++ type has this form; cells of one bit have none.
template <class Visit> bool visitCellType(int type, int bits, Visit visit)
{
    const auto take = [&](auto zero) {
        return bits == static_cast<int>(8 * sizeof zero) && (visit(zero), true);
    };
    switch (type) {
    case RasterDecimalType:
        return take(half()) || take(0.0f) || take(0.0);
    case RasterIntegerType:
        return take(qint8(0)) || take(qint16(0)) || take(qint32(0)) || take(qint64(0));
    case RasterUnsignedType:
    case RasterCellType:
    case RasterColorType:
        return take(quint8(0)) || take(quint16(0)) || take(quint32(0)) || take(quint64(0));
    default:
        return false;
    }
}

} // namespace meridor
