// SPDX-License-Identifier: MIT
/// The value record of the public functions.
#pragma once
#include <QString>
#include <QtGlobal>

/// A decimal, an integer or a text. A plain value.
struct datum {
    /// The codes of Decimal and Integer are those of MDatum::Type exchanged.
    enum Type : qint32 { Decimal = 0, Integer = 1, String = 2 };

    qint32 type = Decimal; ///< One of Type: which field holds the value.
    double decimalValue = 0;
    qint64 integerValue = 0;
    QString stringValue;

    datum() = default;
    datum(double value) : type(Decimal), decimalValue(value) {}
    datum(int value) : type(Integer), integerValue(value) {}
    datum(const QString &value) : type(String), stringValue(value) {}
};
Q_DECLARE_TYPEINFO(datum, Q_MOVABLE_TYPE);
