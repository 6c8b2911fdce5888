// SPDX-License-Identifier: MIT
/// Determines the time format of an import and the time of each row of the map.
#pragma once
#include "core/export.h"
#include "core/import/importPlan.h"

namespace meridor {

/// Sets `timed`, `axis`, `hull` and `rowSpans`, and sorts each object's rows by time. Raises a
/// Failure for a text that is no time, for an end before its start, and for two shapes of one
/// object at one time.
MERIDOR_EXPORT void resolveTimes(ImportPlan &plan);

} // namespace meridor
