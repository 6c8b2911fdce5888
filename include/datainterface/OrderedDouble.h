// SPDX-License-Identifier: MIT
/// Floating numbers that can be keys of an ordered map.
#pragma once
#include <QDataStream>
#include <QtGlobal>

/// Behaves as the number it holds. Its order is total: a NaN is one key, behind all numbers. (As a
/// plain double it would match the smallest key of a QMap, or swallow every later one.)
template <class T> class OrderedNumber {
public:
    OrderedNumber() = default;
    OrderedNumber(T value) : mValue(value) {}
    operator T() const { return mValue; }

    friend bool operator<(OrderedNumber a, OrderedNumber b)
    {
        return a.mValue < b.mValue || (a.mValue == a.mValue && b.mValue != b.mValue);
    }
    friend bool operator==(OrderedNumber a, OrderedNumber b)
    {
        return a.mValue == b.mValue || (a.mValue != a.mValue && b.mValue != b.mValue);
    }
    friend QDataStream &operator<<(QDataStream &out, OrderedNumber value)
    {
        return out << value.mValue;
    }
    friend QDataStream &operator>>(QDataStream &in, OrderedNumber &value)
    {
        return in >> value.mValue;
    }

private:
    T mValue = 0;
};

using OrderedDouble = OrderedNumber<double>;
using OrderedFloat = OrderedNumber<float>;

Q_DECLARE_TYPEINFO(OrderedDouble, Q_PRIMITIVE_TYPE);
Q_DECLARE_TYPEINFO(OrderedFloat, Q_PRIMITIVE_TYPE);
