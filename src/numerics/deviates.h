// SPDX-License-Identifier: MIT
/// The process-wide random generators and draws from them. They are not locked, so only one thread
/// may draw.
#pragma once
#include <QtGlobal>
#include "numerics/MersenneTwister.h"

namespace datainterface {

constexpr double kTwoToMinus32 = 2.3283064365386963e-10;

/// The generator of everything but normal deviates, which have their own.
MersenneTwister &ownGenerator();

/// Seeds it and the generator of normal deviates.
void seedGenerators(quint32 seed);

/// In [0, 1).
inline double uniformDraw(MersenneTwister &generator)
{
    return generator.draw() * kTwoToMinus32;
}

/// Strictly between 0 and 1.
inline double openUniformDraw(MersenneTwister &generator)
{
    return (generator.draw() + 0.5) * kTwoToMinus32;
}

/// One of the positions `first` to `count` - 1, all equally likely.
inline int drawPosition(MersenneTwister &generator, int first, int count)
{
    return static_cast<int>(uniformDraw(generator) * (count - first) + first);
}

} // namespace datainterface
