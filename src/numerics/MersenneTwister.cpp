// SPDX-License-Identifier: MIT
#include "numerics/MersenneTwister.h"

namespace datainterface {
namespace {

constexpr std::size_t kShift = 397;
constexpr std::uint32_t kUpperMask = 0x80000000U;
constexpr std::uint32_t kLowerMask = 0x7fffffffU;
constexpr std::uint32_t kMatrix = 0x9908b0dfU;

// Has no branch, so that the compiler can vectorise the loops below.
inline std::uint32_t twist(std::uint32_t upper, std::uint32_t lower)
{
    const std::uint32_t y = (upper & kUpperMask) | (lower & kLowerMask);
    return (y >> 1) ^ ((0U - (lower & 1U)) & kMatrix);
}

} // namespace

void MersenneTwister::seed(std::uint32_t seed)
{
    mState[0] = seed;
    for (std::size_t i = 1; i < kStateSize; ++i)
        mState[i] =
            1812433253U * (mState[i - 1] ^ (mState[i - 1] >> 30)) + static_cast<std::uint32_t>(i);
    mNext = kStateSize;
}

void MersenneTwister::refill()
{
    if (mNext == kNeverSeeded)
        seed(kDefaultSeed);
    std::uint32_t *const state = mState.data();
    for (std::size_t i = 0; i < kStateSize - kShift; ++i)
        state[i] = state[i + kShift] ^ twist(state[i], state[i + 1]);
    for (std::size_t i = kStateSize - kShift; i < kStateSize - 1; ++i)
        state[i] = state[i - (kStateSize - kShift)] ^ twist(state[i], state[i + 1]);
    state[kStateSize - 1] = state[kShift - 1] ^ twist(state[kStateSize - 1], state[0]);

    for (std::size_t i = 0; i < kStateSize; ++i) {
        std::uint32_t y = state[i];
        y ^= y >> 11;
        y ^= (y << 7) & 0x9d2c5680U;
        y ^= (y << 15) & 0xefc60000U;
        mOutputs[i] = y ^ (y >> 18);
    }
    mNext = 0;
}

} // namespace datainterface
