// SPDX-License-Identifier: MIT
/// Arithmetic on boxes.
#pragma once
#include <QtGlobal>
#include <algorithm>
#include <cmath>
#include <limits>
#include "base/floatRounding.h"
#include "fennimark/geometryTypes.h"

namespace fennimark {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr Rect2D kNoBox{kInfinity, -kInfinity, kInfinity, -kInfinity};

/// Whether no limit is NaN and no lower limit exceeds the upper one.
inline bool isRect(const Rect2D &rect)
{
    return (rect.xMin <= rect.xMax) & (rect.yMin <= rect.yMax);
}

inline void widen(Rect2D &hull, const Rect2D &box)
{
    hull.xMin = std::min(hull.xMin, box.xMin);
    hull.xMax = std::max(hull.xMax, box.xMax);
    hull.yMin = std::min(hull.yMin, box.yMin);
    hull.yMax = std::max(hull.yMax, box.yMax);
}

inline bool meet(const Rect2D &a, const Rect2D &b)
{
    return (a.xMin <= b.xMax) & (b.xMin <= a.xMax) & (a.yMin <= b.yMax) & (b.yMin <= a.yMax);
}

/// Whether `inner` has no point outside `outer`.
inline bool covers(const Rect2D &outer, const Rect2D &inner)
{
    return (outer.xMin <= inner.xMin) & (inner.xMax <= outer.xMax) & (outer.yMin <= inner.yMin)
           & (inner.yMax <= outer.yMax);
}

inline Rect2D grown(const Rect2D &box, double by)
{
    return {box.xMin - by, box.xMax + by, box.yMin - by, box.yMax + by};
}

/// The squared distance of two boxes, 0 when they meet. A point is a box without extent.
inline double sqrDistance(const Rect2D &a, const Rect2D &b)
{
    const double dx = std::max({a.xMin - b.xMax, b.xMin - a.xMax, 0.0});
    const double dy = std::max({a.yMin - b.yMax, b.yMin - a.yMax, 0.0});
    return dx * dx + dy * dy;
}

/// The squared distance from a point to the farthest point of a box.
inline double sqrFarthest(const Rect2D &box, double x, double y)
{
    const double dx = std::max(x - box.xMin, box.xMax - x);
    const double dy = std::max(y - box.yMin, box.yMax - y);
    return dx * dx + dy * dy;
}

} // namespace fennimark
