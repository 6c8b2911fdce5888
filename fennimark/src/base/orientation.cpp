// SPDX-License-Identifier: MIT
// The exact stages of the orientation test, for points that the filter cannot decide. Most of them
// are on axis-parallel edges, where a product is 0, or have exact coordinate differences, where two
// exact products decide. The others are decided by expansions.
#include "base/orientation.h"
#include "base/expansion.h"

namespace fennimark {
namespace {

/// Whether a - b is exact, that is, not rounded.
bool exactDifference(double a, double b)
{
    const double difference = a - b;
    const double virtualB = a - difference;
    return (a - (difference + virtualB)) + (virtualB - b) == 0.0;
}

} // namespace

int exactOrientation(const QPointF &a, const QPointF &b, const QPointF &c)
{
    const double ax = a.x() - c.x();
    const double ay = a.y() - c.y();
    const double bx = b.x() - c.x();
    const double by = b.y() - c.y();
    if ((ax == 0.0 || by == 0.0) && (ay == 0.0 || bx == 0.0))
        return 0;
    if (exactDifference(a.x(), c.x()) && exactDifference(a.y(), c.y())
        && exactDifference(b.x(), c.x()) && exactDifference(b.y(), c.y())) {
        const double left = ax * by;
        const double right = ay * bx;
        if (left != right) // rounding is monotone, so the exact products have the same order
            return signOf(left - right);
        return signOf(std::fma(ax, by, -left) - std::fma(ay, bx, -right));
    }
    Expansion determinant =
        Expansion::difference(a.x(), c.x()) * Expansion::difference(b.y(), c.y());
    determinant -= Expansion::difference(a.y(), c.y()) * Expansion::difference(b.x(), c.x());
    return determinant.sign();
}

} // namespace fennimark
