// SPDX-License-Identifier: MIT
/// The verbs "weights export" and "weights import".
#pragma once
#include "cli/commands/commands.h"

namespace meridor {

void addWeightsExport(const Command &weights, Context &context);
void addWeightsImport(const Command &weights, Context &context);

} // namespace meridor
