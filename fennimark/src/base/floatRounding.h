// SPDX-License-Identifier: MIT
/// Doubles as floats that are never on the wrong side of them.
#pragma once
#include <cstdint>
#include <cstring>

namespace fennimark {

/// A float, moved by so many steps of its own scale when `wrong`. Without branches: whether
/// rounding went the wrong way is a coin's toss, and boxes are rounded by the million. Two steps
/// from 0, since there are two zeros.
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

} // namespace fennimark
