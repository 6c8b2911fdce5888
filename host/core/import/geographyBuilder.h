// SPDX-License-Identifier: MIT
/// Makes a geography of a plan through the public builder.
#pragma once
#include <functional>
#include "core/import/importPlan.h"

namespace meridor {

/// Objects get their indices in the order of the plan. `progress` is told 0 to 100 and raises to
/// stop; a stop or a failure leaves no builder behind.
/// @return the new geography's id
int buildGeography(const ImportPlan &plan, const std::function<void(int)> &progress);

} // namespace meridor
