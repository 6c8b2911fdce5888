// SPDX-License-Identifier: MIT
/// Weights of one object's neighbours, calculated from their list alone.
#pragma once
#include <algorithm>
#include <cmath>
#include <limits>
#include "datainterface/AdjacencySet.h"

namespace datainterface {

/// Rounds to float. A finite value beyond the range becomes the nearest bound, so that weights and
/// distances stay finite.
inline float narrowed(double value)
{
    constexpr double kLargest = std::numeric_limits<float>::max();
    return static_cast<float>(std::isfinite(value) ? std::clamp(value, -kLargest, kLargest)
                                                   : value);
}

struct WeightRule {
    bool isRaster;
    neighborMethodType method;
    spatialWeightType type;
    int neighborCount; ///< requested by the nearest method
    double numerator;
    double power;

    /// Sets all weights of a list. Lists of points must be ordered by distance. Raises "Invalid
    /// weight set type" for weights that do not suit the method. Does nothing for other methods of
    /// a vector geography.
    void apply(neighborDatum *list, int count) const;

private:
    void weighCells(neighborDatum *list, int count) const;
    void weighPoints(neighborDatum *list, int count) const;
    void weighPolygons(neighborDatum *list, int count) const;
};

} // namespace datainterface
