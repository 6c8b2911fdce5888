// SPDX-License-Identifier: MIT
/// The values of datasets over the steps of a slider, with their classes.
#pragma once
#include <functional>
#include "core/report/reportModel.h"

namespace meridor {

/// Fills in how much of a grid is shown: every cell, or every n-th row and column of a large one.
void chooseCells(int geography, int times, ReportGeography &shown);

/// @param stop  called between times; raises the cancel.
ReportLayer gatherLayer(int dataset, const ReportGeography &shown,
                        const std::function<void()> &stop);

} // namespace meridor
