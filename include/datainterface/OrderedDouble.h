// SPDX-License-Identifier: MIT
/// Floating numbers that can be keys of an ordered map.
#pragma once
#include <QDataStream>
#include <QMap>
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

namespace datainterface {

/// The counts of a table of numbers under keys of the plain type, as hosts are given them. A NaN is
/// left out: a map of plain numbers could not tell it from its other keys.
template <class T> class PlainCounts {
public:
    /// The counts of `table`, valid until the next call. They are copied only when the table is not
    /// the one of the call before: its copy, which shares its nodes, tells.
    const QMap<T, int> *of(const QMap<OrderedNumber<T>, int> &table)
    {
        if (!mTable.isSharedWith(table)) {
            mTable = table;
            mCounts.clear();
            for (auto it = table.cbegin(); it != table.cend(); ++it) {
                const T key = it.key();
                if (key == key)
                    mCounts.insert(mCounts.cend(), key, it.value());
            }
        }
        return &mCounts;
    }

private:
    QMap<OrderedNumber<T>, int> mTable;
    QMap<T, int> mCounts;
};

} // namespace datainterface

Q_DECLARE_TYPEINFO(OrderedDouble, Q_PRIMITIVE_TYPE);
Q_DECLARE_TYPEINFO(OrderedFloat, Q_PRIMITIVE_TYPE);
