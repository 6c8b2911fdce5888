// SPDX-License-Identifier: MIT
/// Weights of one object's neighbours, from nothing but their list.
#pragma once
#include <algorithm>
#include <cmath>
#include <limits>
#include "datainterface/AdjacencySet.h"

namespace datainterface {

/// As a float; beyond its range the end of it, so that finite weights and distances stay finite.
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
    int neighborCount; ///< asked for by the nearest method
    double numerator;
    double power;

    /// Sets all weights. Lists of points are ordered by distance. Raises "Invalid weight set type"
    /// for weights that the method has no distances for; a method that is no vector geography's own
    /// leaves the weights alone.
    void apply(neighborDatum *list, int count) const;

private:
    void weighCells(neighborDatum *list, int count) const;
    void weighPoints(neighborDatum *list, int count) const;
    void weighPolygons(neighborDatum *list, int count) const;
};

} // namespace datainterface
