// SPDX-License-Identifier: MIT
/// One grid of cells in memory.
#pragma once
#include <QByteArray>
#include <QVector>
#include "datainterface/DataType.h"
#include "datainterface/export.h"

/// Cells stand row by row, row 0 first, without padding, in the machine's byte order: column x of
/// row y is cell y * columns + x. Depths are 16, 32 and 64 bits for decimals, 8 to 64 for integers,
/// 1 to 64 for unsigned cells, 8 for colour indices. A plain value; the bytes are shared between
/// copies.
class DATAINTERFACE_EXPORT MRasterBand {
public:
    MRasterBand() = default;
    /// Cells of zero. Raises "int(byteLength) > 0" for a grid without cells or beyond 2 GiB, and
    /// "Insufficient memory to create new raster".
    MRasterBand(int columns, int rows, DataType type, int bitDepth);
    /// Copies the cells from `data`, as many bytes as the grid takes.
    MRasterBand(int columns, int rows, DataType type, int bitDepth, const void *data,
                const QVector<unsigned int> &colorMap);
    MRasterBand(const MRasterBand &other) = default;
    MRasterBand &operator=(const MRasterBand &other) = default;
    virtual ~MRasterBand();

    virtual void SetColorMap(const QVector<unsigned int> &colorMap);
    /// Copy GetByteLength() bytes over the cells.
    virtual void SetData(unsigned char *data, const QVector<unsigned int> &colorMap);
    virtual void SetData(void *data);

    int Rows() const { return mRows; }
    int Columns() const { return mColumns; }
    int CellCount() const { return mRows * mColumns; }
    DataType Type() const { return mType; }
    int BitDepth() const { return mBitDepth; }
    /// The bytes of all cells. At depth 1 there is one byte more than `cells / 8`, also where 8
    /// divides the cells.
    int GetByteLength() const;
    const QByteArray &GetData() const { return mData; }
    /// The colour of each cell value: alpha, red, green, blue from the high byte down.
    const QVector<unsigned int> &GetColorMap() const { return mColorMap; }

    /// The first cell, for types of the grid's own width.
    template <class T> const T *cells() const
    {
        return reinterpret_cast<const T *>(mData.constData());
    }

protected:
    int mRows = 0;
    int mColumns = 0;
    DataType mType = RasterDecimalType;
    int mBitDepth = 0;
    mutable QByteArray mData; ///< of an observation: empty while nobody has it checked out
    QVector<unsigned int> mColorMap;
};
