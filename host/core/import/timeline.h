// SPDX-License-Identifier: MIT
/// The times of an import: which format its texts need, and when each row of the map holds.
#pragma once
#include "core/export.h"
#include "core/import/importPlan.h"

namespace meridor {

/// Fills `timed`, `axis`, `hull` and `rowSpans`, and puts each object's rows in the order of time.
/// Raises a Failure for a text that is no time, an end before its start, and two shapes of one
/// object at one time.
MERIDOR_EXPORT void resolveTimes(ImportPlan &plan);

} // namespace meridor
