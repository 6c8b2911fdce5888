// SPDX-License-Identifier: MIT
/// A double that can be the key of an ordered map.
#pragma once
#include <QDataStream>
#include <QtGlobal>

/// Behaves as the double it holds. Its order is total: a NaN is one key, behind all numbers. (As a plain double it
/// would match the smallest key of a QMap, or swallow every later one.)
class OrderedDouble {
public:
    OrderedDouble() = default;
    OrderedDouble(double value) : mValue(value) {}
    operator double() const { return mValue; }

    friend bool operator<(OrderedDouble a, OrderedDouble b)
    {
        return a.mValue < b.mValue || (a.mValue == a.mValue && b.mValue != b.mValue);
    }
    friend bool operator==(OrderedDouble a, OrderedDouble b)
    {
        return a.mValue == b.mValue || (a.mValue != a.mValue && b.mValue != b.mValue);
    }
    friend QDataStream &operator<<(QDataStream &out, OrderedDouble value) { return out << value.mValue; }
    friend QDataStream &operator>>(QDataStream &in, OrderedDouble &value) { return in >> value.mValue; }

private:
    double mValue = 0.0;
};

Q_DECLARE_TYPEINFO(OrderedDouble, Q_PRIMITIVE_TYPE);
