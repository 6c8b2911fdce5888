// SPDX-License-Identifier: MIT
#include "desk/views/classLimits.h"
#include <algorithm>

namespace meridor {

std::optional<QVector<double>> withMovedLimit(const QVector<double> &inner, int limit, double value,
                                              double low, double high, double least)
{
    if (limit < 0 || limit >= inner.size())
        return {};
    const double from = (limit > 0 ? inner[limit - 1] : low) + least;
    const double to = (limit + 1 < inner.size() ? inner[limit + 1] : high) - least;
    if (from > to)
        return {};
    QVector<double> moved = inner;
    moved[limit] = std::clamp(value, from, to);
    if (moved == inner)
        return {};
    return moved;
}

} // namespace meridor
