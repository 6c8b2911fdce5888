// SPDX-License-Identifier: MIT
/// The values of datasets over the steps of a slider, with their classes.
#pragma once
#include <functional>
#include "core/report/reportModel.h"

namespace meridor {

/// Sets the part of a grid that is shown: all cells, or every n-th row and column of a large grid.
void chooseCells(int geography, int times, ReportGeography &shown);

/// @param realization  from 0.
/// @param stop  called between times; throws on a cancel.
ReportLayer gatherLayer(int dataset, int realization, const ReportGeography &shown,
                        const std::function<void()> &stop);

} // namespace meridor
