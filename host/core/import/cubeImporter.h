// SPDX-License-Identifier: MIT
/// The import of a cube.
#pragma once
#include "core/export.h"
#include "core/import/mapImporter.h"

namespace meridor {

/// Imports the grids of a NetCDF, HDF5 or Zarr file into the loaded project, as one geography: a
/// dataset for each variable and each place of its dimensions other than time and
/// `options.realizations`. Raises a Failure; the project is then unchanged.
MERIDOR_EXPORT ImportReport importCube(const ImportOptions &options, const Notes &notes,
                                       const Progress &progress);

} // namespace meridor
