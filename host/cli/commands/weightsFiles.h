// SPDX-License-Identifier: MIT
/// The verbs between weight sets and files.
#pragma once
#include "cli/commands/commands.h"

namespace meridor {

void addWeightsExport(const Command &weights, Context &context);
void addWeightsImport(const Command &weights, Context &context);

} // namespace meridor
