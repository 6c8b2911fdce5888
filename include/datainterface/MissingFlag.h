// SPDX-License-Identifier: MIT
/// The value that marks a raster cell as empty.
#pragma once
#include <QDataStream>
#include <QtGlobal>
#include <tuple>
#include <type_traits>
#include "datainterface/export.h"
#include "datainterface/half.h"

/// A type code and one value of each width, of which the code selects one. A plain value.
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
    std::tuple<quint64, quint32, quint16, quint8, qint64, qint32, qint16, qint8, half, float,
               double>
        values{};

    MissingFlag() = default;
    /// A flag of the value's own width.
    template <class T> explicit MissingFlag(T value) : type(codeOf(T()))
    {
        std::get<T>(values) = value;
    }

    /// Whether a value of this width is the flag's. float and double compare as numbers, so that a
    /// NaN matches nothing; a half is its bit pattern.
    template <class T> bool matches(T value) const
    {
        if constexpr (std::is_same_v<T, half>)
            return type != None && std::get<half>(values).bits == value.bits;
        else
            return type != None && std::get<T>(values) == value;
    }

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

/// The code, then the selected value in its own width; an unknown code raises "Invalid data type"
/// both ways.
DATAINTERFACE_EXPORT QDataStream &operator<<(QDataStream &out, const MissingFlag &flag);
DATAINTERFACE_EXPORT QDataStream &operator>>(QDataStream &in, MissingFlag &flag);
