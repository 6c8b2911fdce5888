// SPDX-License-Identifier: MIT
/// Floating numbers that can be keys of an ordered map.
#pragma once
#include <QDataStream>
#include <QMap>
#include <QtGlobal>

/// Behaves as the number that it holds, with a total order: all NaNs are equal and after all
/// numbers. (A plain double NaN in a QMap would be found as the smallest key, or prevent later keys
/// from being found.)
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

/// The counts of a table of numbers under keys of the plain type, for hosts. NaN is left out,
/// because a map of plain numbers cannot distinguish it from other keys.
template <class T> class PlainCounts {
public:
    /// The counts of `table`, valid until the next call. They are copied only if the table has
    /// changed since the last call, which is detected by keeping a copy that shares its nodes.
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
