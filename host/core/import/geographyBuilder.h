// SPDX-License-Identifier: MIT
/// Creates the geography of an import plan through the public builder.
#pragma once
#include <functional>
#include "core/import/importPlan.h"

namespace meridor {

/// Objects get their indices in the order of the plan. The builder is discarded on an exception.
/// @param progress  receives 0 to 100; throws to stop.
/// @return the id of the new geography.
int buildGeography(const ImportPlan &plan, const std::function<void(int)> &progress);

} // namespace meridor
