// SPDX-License-Identifier: MIT
/// MT19937: M. Matsumoto and T. Nishimura, "Mersenne Twister", ACM TOMACS 8 (1998) 3-30, with the
/// seeding of 2002. The outputs of a whole state are computed at once, so that a draw is one load
/// from an array.
#pragma once
#include <array>
#include <cstddef>
#include <cstdint>

namespace datainterface {

class MersenneTwister {
public:
    static constexpr std::uint32_t kDefaultSeed = 5489;
    static constexpr std::size_t kStateSize = 624;

    void seed(std::uint32_t seed);
    /// The next 32-bit output. A generator that was never seeded is first seeded with 5489.
    std::uint32_t draw()
    {
        if (mNext >= kStateSize)
            refill();
        return mOutputs[mNext++];
    }

private:
    static constexpr std::size_t kNeverSeeded = kStateSize + 1;

    void refill();

    std::array<std::uint32_t, kStateSize> mState{};
    std::array<std::uint32_t, kStateSize> mOutputs{};
    std::size_t mNext = kNeverSeeded;
};

} // namespace datainterface
