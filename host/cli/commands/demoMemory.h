// SPDX-License-Identifier: MIT
/// The part of the demo about values that do not fit into memory.
#pragma once
#include "cli/commands/demoSteps.h"

namespace meridor {

/// Asks many realizations of rain for their mean, deviation and the probability of a flood, with a
/// small and a large cache. No session may be open.
void compareCaches(DemoSteps &steps, const DemoPlace &place);

} // namespace meridor
