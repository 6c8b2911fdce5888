// SPDX-License-Identifier: MIT
/// Export of datasets over all their times as a cube: NetCDF with the CF conventions, or Zarr.
#pragma once
#include <QString>
#include <QStringList>
#include <QVector>
#include <optional>
#include "core/export.h"

namespace meridor {

/// Whether an export to this file is one of a cube: by the format "netcdf" or "zarr", or without a
/// format by the suffix .nc or .zarr.
MERIDOR_EXPORT bool isCube(const QString &path, const QString &format);

/// Raises a Failure if the target exists and `overwrite` is false, if it is a directory that holds
/// no Zarr store, or if its directory does not exist.
MERIDOR_EXPORT void requireCubeWritable(const QString &path, const QString &format, bool overwrite);

/// Writes datasets of one geography as variables: of grids by time, realization, y and x, of
/// objects by time, realization and object, beside the objects' keys. Datasets with the same times
/// share a dimension of time; with `realization` only that one is written, without a dimension, and
/// datasets of one realization are written as they are. Of the times, intervals outside the closed interval [start, end] are left out. The
/// file, or the directory of a Zarr store, is replaced when it is complete. Raises a Failure, also
/// on a cancel; the target is then unchanged.
MERIDOR_EXPORT void exportCube(const QString &path, const QString &format,
                               const QVector<int> &datasets, qint64 start, qint64 end,
                               std::optional<int> realization = std::nullopt);

} // namespace meridor
