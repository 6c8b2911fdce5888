// SPDX-License-Identifier: MIT
/// Fills a new geography with the datasets of a plan.
#pragma once
#include <functional>
#include "core/import/importPlan.h"

namespace meridor {

/// The datasets in the order of making: key, attributes, series, observations. `progress` is told 0
/// to 100 and raises to stop. Raises a Failure for a cell that its dataset cannot hold.
QVector<int> buildDatasets(const ImportPlan &plan, int geography,
                           const std::function<void(int)> &progress);

} // namespace meridor
