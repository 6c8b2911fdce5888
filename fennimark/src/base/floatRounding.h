// SPDX-License-Identifier: MIT
/// Directed rounding of doubles to floats, and the spacing of doubles.
#pragma once
#include <cstdint>
#include <cstring>
#include <limits>

namespace fennimark {

/// Moves a float by one representable step in `direction` (1 or -1) when `wrong`. The function has
/// no branches: the direction of rounding is unpredictable, and boxes are rounded by the million.
/// From 0 it takes two steps, because there are two zeros.
inline float stepped(float value, bool wrong, int direction)
{
    std::int32_t bits = 0;
    std::memcpy(&bits, &value, sizeof bits);
    // Maps the bits of a float to integers in the same order; the mapping is its own inverse.
    const auto ordered = [](std::int32_t b) { return b ^ ((b >> 31) & 0x7fffffff); };
    bits = ordered(ordered(bits) + direction * (int(wrong) << int(value == 0.0F)));
    std::memcpy(&value, &bits, sizeof bits);
    return value;
}

/// The largest float that is not above `value`; roundedUp: the smallest that is not below it.
inline float roundedDown(double value)
{
    const auto near = static_cast<float>(value);
    return stepped(near, static_cast<double>(near) > value, -1);
}
inline float roundedUp(double value)
{
    const auto near = static_cast<float>(value);
    return stepped(near, static_cast<double>(near) < value, 1);
}

/// One unit in the last place of the binade of |value|: the distance from the largest power of two
/// that is not above |value| to the next double. 0 for 0.
inline double ulp(double value)
{
    std::uint64_t bits = 0;
    std::memcpy(&bits, &value, sizeof bits);
    bits &= std::uint64_t(0x7ff) << 52;
    std::memcpy(&value, &bits, sizeof bits);
    return value * std::numeric_limits<double>::epsilon();
}

} // namespace fennimark
