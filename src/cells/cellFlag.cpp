// SPDX-License-Identifier: MIT
#include "cells/cellFlag.h"
#include <cmath>
#include <cstring>
#include <limits>
#include "cells/binary16.h"
#include "cells/cellForms.h"

namespace datainterface {

namespace {

template <class T> bool cellFrom(double value, T &cell)
{
    if constexpr (std::is_same_v<T, half>) {
        cell = halfFromDouble(value);
    } else if constexpr (std::is_floating_point_v<T>) {
        cell = static_cast<T>(value);
    } else {
        constexpr double kLow = static_cast<double>(std::numeric_limits<T>::min());
        const double high = std::ldexp(1.0, static_cast<int>(8 * sizeof(T)) - std::is_signed_v<T>);
        if (!(value >= kLow && value < high && value == std::trunc(value)))
            return false;
        cell = static_cast<T>(value);
    }
    return true;
}

// Accepts every value that a signed or an unsigned integer of the cell's width can represent.
template <class T> bool cellFrom(qint64 value, T &cell)
{
    if constexpr (std::is_integral_v<T>) {
        if constexpr (sizeof(T) < sizeof(value)) {
            constexpr qint64 kHigh = qint64(1) << (8 * sizeof(T));
            if (value >= kHigh || value < -kHigh / 2)
                return false;
        }
        cell = static_cast<T>(value);
        return true;
    } else {
        return cellFrom(static_cast<double>(value), cell);
    }
}

template <class T, class Value> bool cellFromValue(Value value, T &cell)
{
    if constexpr (std::is_same_v<T, Value>) {
        cell = value;
        return true;
    } else if constexpr (std::is_integral_v<Value>) {
        return cellFrom(static_cast<qint64>(value), cell);
    } else {
        return cellFrom(cellToDouble(value), cell);
    }
}

/// A flag with all fields of the cell's width set, because a cell can be read as any type of its
/// width.
template <class T> MissingFlag flagOfBits(T cell)
{
    MissingFlag flag(cell);
    const auto fill = [&cell](auto &value) {
        if constexpr (sizeof value == sizeof cell)
            std::memcpy(static_cast<void *>(&value), &cell, sizeof cell);
    };
    std::apply([&fill](auto &...value) { (fill(value), ...); }, flag.fields());
    return flag;
}

} // namespace

MissingFlag cellFlag(const MissingFlag &flag, int type, int bitDepth)
{
    MissingFlag result;
    if (flag.type == MissingFlag::None)
        return result;
    visitCellForm(type, bitDepth, [&](auto form) {
        using T = CellOf<decltype(form)>;
        const auto tryValue = [&](auto value) {
            T cell{};
            if (flag.type == MissingFlag::codeOf(value) && cellFromValue(value, cell))
                result = flagOfBits(cell);
        };
        std::apply([&](auto... value) { (tryValue(value), ...); }, flag.fields());
    });
    return result;
}

} // namespace datainterface
