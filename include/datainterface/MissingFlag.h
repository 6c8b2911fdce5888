// SPDX-License-Identifier: MIT
/// The value that marks a raster cell as empty.
#pragma once
#include <QDataStream>
#include <QtGlobal>
#include <tuple>
#include <type_traits>
#include "datainterface/export.h"
#include "datainterface/half.h"

/// A type code and one value of each type, of which the code selects one. A plain record that is
/// copied bit for bit.
///
/// The high byte of the code is the width (1: 8 bits, 2: 16, 3: 32, 4: 64), 0x400 means unsigned;
/// 0x100 to 0x300 are the floating forms.
struct DATAINTERFACE_EXPORT MissingFlag {
    enum Type : qint32 {
        None = 0,
        Double = 0x100,
        Float = 0x200,
        Half = 0x300,
        Int8 = 0x1000,
        UInt8 = 0x1400,
        Int16 = 0x2000,
        UInt16 = 0x2400,
        Int32 = 0x3000,
        UInt32 = 0x3400,
        Int64 = 0x4000,
        UInt64 = 0x4400
    };

    qint32 type = None;
    quint64 uint64Value = 0;
    quint32 uint32Value = 0;
    quint16 uint16Value = 0;
    quint8 uint8Value = 0;
    qint64 int64Value = 0;
    qint32 int32Value = 0;
    qint16 int16Value = 0;
    qint8 int8Value = 0;
    half halfValue;
    float floatValue = 0.0f;
    double doubleValue = 0.0;

    MissingFlag() = default;
    /// A flag of the value's own width.
    template <class T> explicit MissingFlag(T value) : type(codeOf(T())) { field<T>() = value; }

    /// The value fields in their order.
    auto fields()
    {
        return std::tie(uint64Value, uint32Value, uint16Value, uint8Value, int64Value, int32Value,
                        int16Value, int8Value, halfValue, floatValue, doubleValue);
    }
    auto fields() const
    {
        return std::tie(uint64Value, uint32Value, uint16Value, uint8Value, int64Value, int32Value,
                        int16Value, int8Value, halfValue, floatValue, doubleValue);
    }
    /// The field of one type.
    template <class T> T &field() { return std::get<T &>(fields()); }
    template <class T> T field() const { return std::get<const T &>(fields()); }

    /// Whether a value equals the field of its type. Values of float and double are compared as
    /// numbers, so a NaN matches nothing; a half is compared by its bit pattern.
    template <class T> bool matches(T value) const
    {
        if constexpr (std::is_same_v<T, half>)
            return type != None && halfValue.bits == value.bits;
        else
            return type != None && field<T>() == value;
    }

    /// The code of a flag of that type.
    static constexpr Type codeOf(double) { return Double; }
    static constexpr Type codeOf(float) { return Float; }
    static constexpr Type codeOf(half) { return Half; }
    static constexpr Type codeOf(qint8) { return Int8; }
    static constexpr Type codeOf(quint8) { return UInt8; }
    static constexpr Type codeOf(qint16) { return Int16; }
    static constexpr Type codeOf(quint16) { return UInt16; }
    static constexpr Type codeOf(qint32) { return Int32; }
    static constexpr Type codeOf(quint32) { return UInt32; }
    static constexpr Type codeOf(qint64) { return Int64; }
    static constexpr Type codeOf(quint64) { return UInt64; }
};
static_assert(std::is_trivially_copyable_v<MissingFlag>);

/// The code, then the selected value in its own width. An unknown code raises "Invalid data type"
/// on writing and on reading.
DATAINTERFACE_EXPORT QDataStream &operator<<(QDataStream &out, const MissingFlag &flag);
DATAINTERFACE_EXPORT QDataStream &operator>>(QDataStream &in, MissingFlag &flag);
