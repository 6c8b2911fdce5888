// SPDX-License-Identifier: MIT
#pragma once
#include <QString>
#include <QtGlobal>

namespace meridor {

/// The grid of a raster dataset at a time as a GeoTIFF of one band, with its type, depth, no-data
/// value and colours; whole or not at all. Raises a Failure or the cancel.
void exportGrid(const QString &path, int dataset, qint64 time);

} // namespace meridor
