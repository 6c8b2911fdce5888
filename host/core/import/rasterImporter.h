// SPDX-License-Identifier: MIT
/// A grid from its file to the finished geography.
#pragma once
#include "core/export.h"
#include "core/import/mapImporter.h"

namespace meridor {

/// Brings a grid into the model that is loaded: its bands as the times of one dataset when
/// `options.bandsAreTimes`, else as datasets that hold for good. Raises a Failure; the geography is
/// then not there.
MERIDOR_EXPORT ImportReport importRaster(const ImportOptions &options, const Notes &notes,
                                         const Progress &progress);

} // namespace meridor
