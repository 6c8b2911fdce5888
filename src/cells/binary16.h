// SPDX-License-Identifier: MIT
/// The conversion of a double to a cell of 16 bits.
#pragma once
#include <cstring>
#include "datainterface/half.h"

namespace datainterface {

/// The half that is nearest to the high 32-bit word of the double, ties away from zero; the low
/// word is ignored. NaN gives 0xFE00, whatever its sign.
inline half halfFromDouble(double value)
{
    quint64 bits = 0;
    std::memcpy(&bits, &value, sizeof bits);
    const auto high = static_cast<quint32>(bits >> 32);
    const quint32 sign = (high >> 16) & 0x8000u;
    const quint32 mantissa = high & 0xFFFFFu;
    const int biased = static_cast<int>((high >> 20) & 0x7FFu);
    if (biased == 0)
        return half::fromBits(static_cast<quint16>(sign));
    if (biased == 0x7FF)
        return half::fromBits(static_cast<quint16>(mantissa == 0 ? sign | 0x7C00u : 0xFE00u));
    const int exponent = biased - 1008;
    if (exponent >= 31)
        return half::fromBits(static_cast<quint16>(sign | 0x7C00u));
    if (exponent < 1) {
        if (10 - exponent > 21)
            return half::fromBits(static_cast<quint16>(sign));
        const quint32 whole = mantissa | 0x100000u;
        const quint32 subnormal = (whole >> (11 - exponent)) + ((whole >> (10 - exponent)) & 1u);
        return half::fromBits(static_cast<quint16>(sign | subnormal));
    }
    const quint32 normal = (static_cast<quint32>(exponent) << 10) | (mantissa >> 10);
    return half::fromBits(static_cast<quint16>((sign | normal) + ((mantissa >> 9) & 1u)));
}

} // namespace datainterface
