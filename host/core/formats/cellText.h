// SPDX-License-Identifier: MIT
/// Cells of grids as texts.
#pragma once
#include <QString>
#include <cmath>
#include "core/formats/cellTypes.h"

namespace meridor {

/// Converts a number to a cell; decimals are rounded to the precision of the cell. False if no cell
/// can hold it.
template <class T> bool toCell(const QString &text, T &cell)
{
    bool fits = false;
    if constexpr (std::is_integral_v<T>) {
        const double number = text.toDouble(&fits);
        if (!fits || number != std::trunc(number))
            return false;
        if constexpr (sizeof(T) == 8) {
            cell = std::is_signed_v<T> ? static_cast<T>(text.toLongLong(&fits))
                                       : static_cast<T>(text.toULongLong(&fits));
            return fits;
        }
        cell = static_cast<T>(static_cast<qint64>(qBound(-1e18, number, 1e18)));
        return static_cast<double>(cell) == number;
    } else {
        const double number = text.toDouble(&fits);
        if constexpr (std::is_same_v<T, double>)
            cell = number;
        else
            cell = T(static_cast<float>(number));
        return fits
               && (std::isinf(number)
                   || !std::isinf(static_cast<double>(static_cast<float>(cell))));
    }
}

} // namespace meridor
