// SPDX-License-Identifier: MIT
/// The limits of a legend's classes, from the values that a frequency table holds.
#pragma once
#include <QList>
#include "Common/valueRuns.h"
#include "datainterface/MDataset.h"

namespace datainterface {

/// @param sorted  ascending and finite, each value with how often it is held.
/// @return `breakCount` limits, ascending; empty when the user cancels. An unknown classification
/// raises
///         "Invalid data type".
QList<double> intervalBreaks(int breakCount, const ValueRuns &sorted,
                             MDataset::ClassificationType classification, bool showProgress,
                             const char *file = __builtin_FILE(), int line = __builtin_LINE());

} // namespace datainterface
