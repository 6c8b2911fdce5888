// SPDX-License-Identifier: MIT
/// The value record of the public functions.
#pragma once
#include <QString>
#include <QtGlobal>

struct datum {
    qint32 type = 0;         ///< 0 decimal, 1 integer, 2 string
    double decimalValue = 0; ///< for type 0
    qint64 integerValue = 0; ///< for type 1
    QString stringValue;     ///< for type 2

    datum() = default;
    datum(double value) : type(0), decimalValue(value) {}
    datum(int value) : type(1), integerValue(value) {}
    datum(const QString &value) : type(2), stringValue(value) {}
};
Q_DECLARE_TYPEINFO(datum, Q_MOVABLE_TYPE);
