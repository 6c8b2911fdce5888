// SPDX-License-Identifier: MIT
/// The verbs between weight sets and files.
#pragma once
#include "cli/commands/commands.h"

namespace meridor {

void addWeightsExport(CLI::App &weights, Context &context);
void addWeightsImport(CLI::App &weights, Context &context);

} // namespace meridor
