// SPDX-License-Identifier: MIT
/// Reads any grid that GDAL reads, whose cells stand in rows and columns along the axes of its map.
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
    QString name;                 ///< the file's own; empty for none
    QMap<QString, QString> items; ///< what the file says of it besides
    DataType type = RasterDecimalType;
    int bits = 0;
    MissingFlag missing; ///< of the cells' own width; none when the file names none
    bool missingIsNaN = false;
    QVector<unsigned> colors; ///< of cells that are indices into it
    QString unit;
};

struct RasterReadOptions {
    QString projection; ///< replaces the file's own
    QString noData;     ///< a number or "none", in place of the file's
};

/// Whether the file is to be read as a grid: GDAL finds bands in it and no layers.
MERIDOR_EXPORT bool isRasterFile(const QString &path);

class MERIDOR_EXPORT RasterReader {
public:
    /// Raises a Failure for a file that GDAL cannot read, that holds no bands, whose grid is
    /// turned, sheared or too large, and for a no-data value that the cells cannot hold.
    RasterReader(const QString &path, const RasterReadOptions &options);

    int columns() const { return mColumns; }
    int rows() const { return mRows; }
    const QRectF &bounds() const { return mBounds; }
    const QString &projection() const { return mProjection; }
    const QVector<RasterBand> &bands() const { return mBands; }
    /// Worth telling the user.
    const QStringList &notes() const { return mNotes; }
    qint64 bytesOf(int band) const { return qint64(mColumns) * mRows * mBands[band].bits / 8; }
    /// How many bands from this one on are best read at a time: one, but where the file keeps the
    /// cells of all bands together.
    int groupAt(int band) const;

    /// Whole grids of `count` bands of one form, one behind another, the top row first. `progress`
    /// is told 0 to 100 and raises to stop. Raises a Failure that names the band.
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
