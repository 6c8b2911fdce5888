// SPDX-License-Identifier: MIT
#pragma once
#include <QString>
#include <QtGlobal>
#include "core/export.h"

namespace meridor {

/// The grid of a raster dataset at a time as a GeoTIFF of one band, with its type, depth, no-data
/// value and colours; whole or not at all. Raises a Failure or the cancel.
MERIDOR_EXPORT void exportGrid(const QString &path, int dataset, qint64 time);

} // namespace meridor
