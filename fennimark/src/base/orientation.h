// SPDX-License-Identifier: MIT
/// The exact orientation test: on which side of a directed line a point is.
#pragma once
#include <QPointF>
#include <cmath>

namespace fennimark {

/// The same as orientation, by exact arithmetic alone.
int exactOrientation(const QPointF &a, const QPointF &b, const QPointF &c);

inline int signOf(double value)
{
    return (value > 0.0) - (value < 0.0);
}

/// Whether the coordinates are equal. The operator == of QPointF has a tolerance.
inline bool samePlace(const QPointF &a, const QPointF &b)
{
    return a.x() == b.x() && a.y() == b.y();
}

/// 1 when c is left of the line from a to b, -1 when it is right of it, 0 when it is on it. The
/// filter is the first stage of Shewchuk (1997, see Expansion): the sign of the rounded determinant
/// is right when its magnitude exceeds (3 + 16 u) u times the sum of its products, u = 2^-53.
inline int orientation(const QPointF &a, const QPointF &b, const QPointF &c)
{
    constexpr double kFilter = 3.3306690738754716e-16;
    const double left = (a.x() - c.x()) * (b.y() - c.y());
    const double right = (a.y() - c.y()) * (b.x() - c.x());
    const double determinant = left - right;
    const double bound = kFilter * (std::abs(left) + std::abs(right));
    if (Q_LIKELY(determinant > bound || -determinant > bound))
        return signOf(determinant);
    return exactOrientation(a, b, c);
}

} // namespace fennimark
