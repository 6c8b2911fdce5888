// SPDX-License-Identifier: MIT
/// The limits of the classes of a legend, from the keys of a frequency table.
#pragma once
#include <QList>
#include "Common/valueRuns.h"
#include "datainterface/MDataset.h"

namespace datainterface {

/// @param sorted  ascending and finite, each value with its count.
/// @return `breakCount` limits, ascending; empty when the user cancels. An unknown classification
///         raises "Invalid data type".
QList<double> intervalBreaks(int breakCount, const ValueRuns &sorted,
                             MDataset::ClassificationType classification, bool showProgress,
                             const char *file = __builtin_FILE(), int line = __builtin_LINE());

} // namespace datainterface
