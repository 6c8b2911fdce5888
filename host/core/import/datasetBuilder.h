// SPDX-License-Identifier: MIT
/// Creates the datasets of an import plan in its new geography.
#pragma once
#include <functional>
#include "core/import/importPlan.h"

namespace meridor {

/// @param progress  receives 0 to 100; throws to stop.
/// @return the new datasets: key, attributes, series, observations. Raises a Failure for a cell
///         that its dataset cannot hold.
QVector<int> buildDatasets(const ImportPlan &plan, int geography, const Notes &notes,
                           const std::function<void(int)> &progress);

} // namespace meridor
