// SPDX-License-Identifier: MIT
/// Files that end early and that their readers fill up with zeros instead of failing.
#pragma once
#include <QString>

namespace meridor {

/// Raises a Failure if the file is shorter than its header says: classic NetCDF, SQLite
/// (GeoPackage), PCRaster, and raw cells beside a header. Other formats are left to their readers.
/// @param dataset  the open GDAL dataset; null if it is no raster.
void requireWholeFile(const QString &path, void *dataset);

} // namespace meridor
