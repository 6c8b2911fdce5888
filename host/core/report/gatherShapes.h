// SPDX-License-Identifier: MIT
/// The shapes of a geography over the steps of its slider, in page units.
#pragma once
#include <functional>
#include "core/report/reportModel.h"

namespace meridor {

/// @param simplify  as in ReportPlan.
/// @param stop      called repeatedly; throws on a cancel.
ReportShapes gatherShapes(int geography, const QVector<ReportStep> &steps, double simplify,
                          const std::function<void()> &stop);

} // namespace meridor
