// SPDX-License-Identifier: MIT
/// The variant value of the data layer, such as one cell, one extreme or one key of a frequency
/// table.
#pragma once
#include <QByteArray>
#include <QDataStream>
#include <QString>
#include <QtGlobal>
#include "datainterface/export.h"

/// An integer, a decimal, a text or no value. A plain value that can be a key of maps and hashes.
class DATAINTERFACE_EXPORT MDatum {
public:
    /// Codes of the stream form. The public record `datum` has the codes of Integer and Decimal
    /// exchanged.
    enum Type : qint32 { Integer = 0, Decimal = 1, String = 2, Empty = 3 };

    /// No value.
    MDatum() = default;
    MDatum(int value) : mType(Integer), mInteger(value) {}
    MDatum(unsigned int value) : mType(Integer), mInteger(value) {}
    MDatum(long value) : mType(Integer), mInteger(value) {}
    MDatum(qint64 value) : mType(Integer), mInteger(value) {}
    MDatum(unsigned long value) : MDatum(quint64(value)) {}
    /// The field is signed, so integerValue() returns the bits of a value from 2^63 on. Comparisons
    /// and toDouble() use the unsigned value. A stream holds only the bits.
    MDatum(quint64 value)
        : mType(Integer), mInteger(static_cast<qint64>(value)), mIsBeyondSigned(mInteger < 0)
    {
    }
    MDatum(double value) : mType(Decimal), mDecimal(value) {}
    /// Takes UTF-8; bytes that are not valid UTF-8 are read as Latin-1.
    MDatum(const char *value);
    MDatum(const QString &value) : mType(String), mText(value.toUtf8()) {}

    qint32 type() const { return mType; }
    bool isEmpty() const { return mType == Empty; }
    qint64 integerValue() const { return mInteger; }
    /// Whether the value is an unsigned number from 2^63 on, whose bits integerValue() returns.
    bool isBeyondSigned() const { return mIsBeyondSigned; }
    double decimalValue() const { return mDecimal; }
    /// The whole text.
    QString text() const;
    /// The text as UTF-8, valid while this value lives.
    const char *charstr() const { return mText.constData(); }
    /// A text is parsed in the C locale and gives 0 when it does not parse; no value gives NaN.
    double toDouble() const;

    /// Values of one type are in their natural order: a NaN is equal to itself and after all
    /// numbers, and texts are ordered by their UTF-8 bytes. Values of different types are ordered
    /// by type code.
    bool operator<(const MDatum &other) const;
    bool operator==(const MDatum &other) const;
    bool operator!=(const MDatum &other) const { return !(*this == other); }

private:
    friend DATAINTERFACE_EXPORT QDataStream &operator<<(QDataStream &out, const MDatum &value);
    friend DATAINTERFACE_EXPORT QDataStream &operator>>(QDataStream &in, MDatum &value);
    friend DATAINTERFACE_EXPORT uint qHash(const MDatum &value, uint seed);

    qint32 mType = Empty;
    qint8 mFlag = 0; ///< not interpreted; saved and restored only
    qint64 mInteger = 0;
    double mDecimal = 0.0;
    QByteArray mText; ///< UTF-8
    bool mIsBeyondSigned = false;
};

/// Equal values have equal hashes.
DATAINTERFACE_EXPORT uint qHash(const MDatum &value, uint seed = 0);
/// Writes the present form: all five fields, whatever the type. A text is written as Latin-1 where
/// that can hold it, and otherwise as UTF-8 after the bytes EF BB BF.
DATAINTERFACE_EXPORT QDataStream &operator<<(QDataStream &out, const MDatum &value);
/// Reads the form of dataInterfaceVersionLoading.
DATAINTERFACE_EXPORT QDataStream &operator>>(QDataStream &in, MDatum &value);
