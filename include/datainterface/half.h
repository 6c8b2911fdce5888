// SPDX-License-Identifier: MIT
/// A 16-bit float of the IEEE 754 binary16 form, as raster cells hold it.
#pragma once
#include <QFloat16>
#include <QtGlobal>
#include <cstring>

/// Holds the bit pattern and converts from and to float.
struct half {
    quint16 bits = 0;

    half() = default;
    explicit half(float value)
    {
        const qfloat16 narrow(value);
        std::memcpy(&bits, &narrow, sizeof bits);
    }
    /// The number of a bit pattern.
    static half fromBits(quint16 bits)
    {
        half value;
        value.bits = bits;
        return value;
    }
    operator float() const
    {
        qfloat16 narrow;
        std::memcpy(static_cast<void *>(&narrow), &bits, sizeof bits);
        return static_cast<float>(narrow);
    }
};

Q_DECLARE_TYPEINFO(half, Q_PRIMITIVE_TYPE);
