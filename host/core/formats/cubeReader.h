// SPDX-License-Identifier: MIT
/// Reads grids out of files of named variables with named dimensions: NetCDF, HDF5, Zarr.
#pragma once
#include <QRectF>
#include <QString>
#include <QStringList>
#include <QVector>
#include <functional>
#include <memory>
#include "core/export.h"
#include "datainterface/DataType.h"
#include "datainterface/MissingFlag.h"

namespace meridor {

struct CubeOptions {
    QString projection;   ///< replaces that of the file
    QString noData;       ///< a number or "none"; replaces that of the file
    QStringList fields;   ///< names of variables or of datasets; empty: all
    QString realizations; ///< the dimension whose places are realizations; empty: none
    bool packed = false;  ///< keep the cells as they are stored, without scale and offset
};

/// The places of a time dimension as the file states them.
struct CubeTimes {
    QString name;
    QString unit;
    QString calendar;
    QVector<double> values; ///< empty if the places are texts or have no coordinates
    QVector<double> bounds; ///< empty, or the start and the end of each place
    QStringList texts;      ///< empty, or the places as texts
    int count = 0;
};

/// A variable at one place of each dimension that is neither the map's, nor time, nor that of the
/// realizations: it becomes one dataset.
struct CubeGrid {
    QString name; ///< the variable, and the places of its other dimensions
    QString unit;
    QString title;
    DataType type = RasterDecimalType;
    int bits = 0;
    MissingFlag missing; ///< None if the file marks no cell as missing
    int times = -1;      ///< index into CubeReader::times(); -1: it has no times
    int realizations = 1;
    int variable = -1;       ///< the reader's
    QVector<quint64> places; ///< by dimension of the variable; 0 for those that vary
};

/// Whether a file is read as a cube by default: it is NetCDF, HDF5 or Zarr, and a variable in it
/// has a grid.
MERIDOR_EXPORT bool isCubeFile(const QString &path);

class MERIDOR_EXPORT CubeReader {
public:
    /// Raises a Failure if GDAL cannot read the file; if no variable has a grid, or a variable or
    /// dimension is not there, with the names of those that are; if variables have different
    /// grids, coordinates are not evenly spaced, or the grid is too large.
    CubeReader(const QString &path, const CubeOptions &options);
    ~CubeReader();

    int columns() const { return mColumns; }
    int rows() const { return mRows; }
    const QRectF &bounds() const { return mBounds; }
    const QString &projection() const { return mProjection; }
    const QVector<CubeGrid> &grids() const { return mGrids; }
    const QVector<CubeTimes> &times() const { return mTimes; }
    /// Messages for the user.
    const QStringList &notes() const { return mNotes; }
    qint64 bytesOf(const CubeGrid &grid) const { return qint64(mColumns) * mRows * grid.bits / 8; }
    /// How many times should be read together, because the file stores their cells together.
    int timesTogether(const CubeGrid &grid) const;

    /// Reads whole grids.
    /// @param time      the first time to read; 0 for a grid without times.
    /// @param cells     receives grid after grid, each with its top row first.
    /// @param progress  receives 0 to 100; throws to stop.
    /// @return the value that was given to missing cells, if there are any; else None.
    /// Raises a Failure that names the variable and the time.
    MissingFlag read(const CubeGrid &grid, int realization, int time, int count, char *cells,
                     const std::function<void(int)> &progress) const;

private:
    struct File;
    std::unique_ptr<File> mFile;
    int mColumns = 0;
    int mRows = 0;
    QRectF mBounds;
    QString mProjection;
    QVector<CubeGrid> mGrids;
    QVector<CubeTimes> mTimes;
    QStringList mNotes;
};

} // namespace meridor
