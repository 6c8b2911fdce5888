// SPDX-License-Identifier: MIT
/// Writes rasters in a foreign format.
#pragma once
#include <QString>
#include <QtGlobal>
#include "core/export.h"

namespace meridor {

/// Writes the grid of a raster dataset at a time as a GeoTIFF of one band, with its type, depth,
/// no-data value and colours. The file is replaced atomically. Raises a Failure, also on a cancel.
MERIDOR_EXPORT void exportGrid(const QString &path, int dataset, qint64 time, int realization = 0);

} // namespace meridor
