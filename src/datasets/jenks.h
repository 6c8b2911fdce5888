// SPDX-License-Identifier: MIT
/// Natural breaks of a sorted list.
#pragma once
#include <QList>
#include <QVector>
#include "Common/valueRuns.h"

namespace datainterface {

/// The limits of the `breakCount` - 1 classes with the least within-class sum of squares (Fisher
/// 1958, JASA 53, 789-798): minimum, midpoints between neighbouring classes, maximum. Of equally
/// good partitions the one whose last class begins first is taken, then the one whose last but one
/// class does, and so on.
/// @param sorted  ascending and finite; repeats count.
/// @return `breakCount` limits; minimum and maximum alone for a count of 2 and below; empty when
///         the user cancels and for an empty list. O(k d log d) time and O(k d) memory for d
///         different values in k classes; O(k n^2) time and O(k n) memory when rounding decides.
QList<double> jenksBreaks(int breakCount, const QVector<double> &sorted);
/// The same for a list that is given by its runs, in O(k d) memory however long the list is.
QList<double> jenksBreaks(int breakCount, const ValueRuns &sorted);

} // namespace datainterface
