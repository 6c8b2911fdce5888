// SPDX-License-Identifier: MIT
/// How limits between classes move, in the form of classes and in a histogram.
#pragma once
#include <QVector>
#include <optional>

namespace meridor {

/// The limits that can be moved: without the first and the last.
inline QVector<double> innerLimits(const QVector<double> &limits)
{
    return limits.size() > 2 ? limits.mid(1, limits.size() - 2) : QVector<double>();
}

/// Limits after one of them was moved. Limits do not pass each other, nor the ends.
/// @param least  the smallest distance between two limits.
/// @return nothing if there is no room for it, or if it did not move.
std::optional<QVector<double>> withMovedLimit(const QVector<double> &inner, int limit, double value,
                                              double low, double high, double least);

} // namespace meridor
