// SPDX-License-Identifier: MIT
/// The import of a grid.
#pragma once
#include "core/export.h"
#include "core/import/mapImporter.h"

namespace meridor {

/// Imports a grid into the loaded project: its bands become the times of one dataset if
/// `options.bandsAreTimes`, else a static dataset each. Raises a Failure; the project is then
/// unchanged.
MERIDOR_EXPORT ImportReport importRaster(const ImportOptions &options, const Notes &notes,
                                         const Progress &progress);

} // namespace meridor
