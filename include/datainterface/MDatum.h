// SPDX-License-Identifier: MIT
/// The variant value of the data layer: one cell, one extreme, one key of a frequency table.
#pragma once
#include <QByteArray>
#include <QDataStream>
#include <QString>
#include <QtGlobal>
#include "datainterface/export.h"

/// A whole number, a number, a text or no value. A plain value; a key of maps and hashes.
class DATAINTERFACE_EXPORT MDatum {
public:
    /// Codes of the stream form. The public record `datum` numbers its kinds the other way round.
    enum Type : qint32 { Integer = 0, Decimal = 1, String = 2, Empty = 3 };

    /// No value.
    MDatum() = default;
    MDatum(int value) : mType(Integer), mInteger(value) {}
    MDatum(unsigned int value) : mType(Integer), mInteger(value) {}
    MDatum(long value) : mType(Integer), mInteger(value) {}
    MDatum(qint64 value) : mType(Integer), mInteger(value) {}
    MDatum(unsigned long value) : MDatum(quint64(value)) {}
    /// The field is signed: integerValue() gives the bits of a number from 2^63 on. Its order and
    /// its number are those of the unsigned value, which a stream does not keep.
    MDatum(quint64 value)
        : mType(Integer), mInteger(static_cast<qint64>(value)), mIsBeyondSigned(mInteger < 0)
    {
    }
    MDatum(double value) : mType(Decimal), mDecimal(value) {}
    /// Bytes that are not UTF-8 are taken for Latin-1.
    MDatum(const char *value);
    MDatum(const QString &value) : mType(String), mText(value.toUtf8()) {}

    qint32 type() const { return mType; }
    bool isEmpty() const { return mType == Empty; }
    qint64 integerValue() const { return mInteger; }
    /// Whether the value is an unsigned number from 2^63 on, whose bits integerValue() gives.
    bool isBeyondSigned() const { return mIsBeyondSigned; }
    double decimalValue() const { return mDecimal; }
    /// The text, with every letter.
    QString text() const;
    /// The text as UTF-8, valid while this value lives.
    const char *charstr() const { return mText.constData(); }
    /// A text is read in the C locale, 0 when it does not parse; no value is NaN.
    double toDouble() const;

    /// Within a type the natural order (a NaN is one key, behind all numbers; texts by their UTF-8
    /// bytes); across types by code.
    bool operator<(const MDatum &other) const;
    bool operator==(const MDatum &other) const;
    bool operator!=(const MDatum &other) const { return !(*this == other); }

private:
    friend DATAINTERFACE_EXPORT QDataStream &operator<<(QDataStream &out, const MDatum &value);
    friend DATAINTERFACE_EXPORT QDataStream &operator>>(QDataStream &in, MDatum &value);
    friend DATAINTERFACE_EXPORT uint qHash(const MDatum &value, uint seed);

    qint32 mType = Empty;
    qint8 mFlag = 0; ///< opaque; saved and restored only
    qint64 mInteger = 0;
    double mDecimal = 0.0;
    QByteArray mText; ///< UTF-8
    bool mIsBeyondSigned = false;
};

/// Equal values have equal hashes.
DATAINTERFACE_EXPORT uint qHash(const MDatum &value, uint seed = 0);
/// Always the present form: all five fields, whatever the type. A text goes out as Latin-1 where
/// that holds it, and as UTF-8 behind the bytes EF BB BF otherwise.
DATAINTERFACE_EXPORT QDataStream &operator<<(QDataStream &out, const MDatum &value);
/// By dataInterfaceVersionLoading.
DATAINTERFACE_EXPORT QDataStream &operator>>(QDataStream &in, MDatum &value);
