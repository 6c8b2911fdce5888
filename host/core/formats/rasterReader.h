// SPDX-License-Identifier: MIT
/// Reads any grid that GDAL reads and whose rows and columns are parallel to the axes of the map.
#pragma once
#include <QMap>
#include <QRectF>
#include <QString>
#include <QStringList>
#include <QVector>
#include <functional>
#include "core/export.h"
#include "core/formats/gdalHandle.h"
#include "datainterface/DataType.h"
#include "datainterface/MissingFlag.h"

namespace meridor {

struct RasterBand {
    QString name;                 ///< from the file; empty if it has none
    QMap<QString, QString> items; ///< the band's metadata items
    DataType type = RasterDecimalType;
    int bits = 0;
    MissingFlag missing; ///< as wide as the cells; None if there is no no-data value
    bool missingIsNaN = false;
    QVector<unsigned> colors; ///< the colour table of cells that are indices into it
    QString unit;
};

struct RasterReadOptions {
    QString projection; ///< replaces that of the file
    QString noData;     ///< a number or "none"; replaces that of the file
};

/// Whether a file is read as a grid by default: GDAL finds bands in it and no layers.
MERIDOR_EXPORT bool isRasterFile(const QString &path);

class MERIDOR_EXPORT RasterReader {
public:
    /// Raises a Failure if GDAL cannot read the file, if it has no bands, if its grid is rotated,
    /// sheared or too large, or if no cell can hold the no-data value.
    RasterReader(const QString &path, const RasterReadOptions &options);

    int columns() const { return mColumns; }
    int rows() const { return mRows; }
    const QRectF &bounds() const { return mBounds; }
    const QString &projection() const { return mProjection; }
    const QVector<RasterBand> &bands() const { return mBands; }
    /// Messages for the user.
    const QStringList &notes() const { return mNotes; }
    qint64 bytesOf(int band) const { return qint64(mColumns) * mRows * mBands[band].bits / 8; }
    /// How many bands from `band` on should be read together: one, unless the file interleaves the
    /// cells of its bands.
    int groupAt(int band) const;

    /// Reads the whole grids of `count` bands from `band` on, which must have one form.
    /// @param cells     receives band after band, each with its top row first.
    /// @param progress  receives 0 to 100; throws to stop.
    /// Raises a Failure that names the band.
    void read(int band, int count, char *cells, const std::function<void(int)> &progress) const;

private:
    void place(const QString &projection);
    void describe(int band, const QString &noData);
    void readRows(int band, int count, int row, int rows, char *cells) const;

    QString mPath;
    GdalFile mFile;
    int mColumns = 0;
    int mRows = 0;
    bool mIsSouthUp = false;
    bool mIsInterleaved = false;
    QRectF mBounds;
    QString mProjection;
    QVector<RasterBand> mBands;
    QStringList mNotes;
};

} // namespace meridor
