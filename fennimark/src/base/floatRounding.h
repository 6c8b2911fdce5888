// SPDX-License-Identifier: MIT
/// Doubles as floats that are never on the wrong side of them, and the spacing of doubles.
#pragma once
#include <cstdint>
#include <cstring>
#include <limits>

namespace fennimark {

/// A float, moved by one representable step in the given direction when `wrong`. There are no
/// branches, since the direction of rounding cannot be predicted and boxes are rounded by the
/// million. From 0 it takes two steps, since there are two zeros.
inline float stepped(float value, bool wrong, int direction)
{
    std::int32_t bits = 0;
    std::memcpy(&bits, &value, sizeof bits);
    const auto ordered = [](std::int32_t b) {
        return b ^ ((b >> 31) & 0x7fffffff);
    }; // its own inverse
    bits = ordered(ordered(bits) + direction * (int(wrong) << int(value == 0.0F)));
    std::memcpy(&value, &bits, sizeof bits);
    return value;
}

/// The nearest float that is not above, or not below, `value`.
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

/// The distance from the largest power of two that is not above |value| to the next double: one
/// unit in the last place of all numbers of that binade. 0 for 0.
inline double ulp(double value)
{
    std::uint64_t bits = 0;
    std::memcpy(&bits, &value, sizeof bits);
    bits &= std::uint64_t(0x7ff) << 52;
    std::memcpy(&value, &bits, sizeof bits);
    return value * std::numeric_limits<double>::epsilon();
}

} // namespace fennimark
