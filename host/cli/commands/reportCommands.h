// SPDX-License-Identifier: MIT
/// The command lines of meridor that a report lists.
#pragma once
#include "core/report/reportModel.h"

namespace meridor {

/// Adds to a report of the loaded project the lines that print what it shows.
/// @param file  the project, as a command line names it.
void addCommandLines(ReportProject &report, const QString &file);

} // namespace meridor
