// SPDX-License-Identifier: MIT
/// One grid of cells in memory.
#pragma once
#include <QByteArray>
#include <QVector>
#include "datainterface/DataType.h"
#include "datainterface/export.h"

/// Cells are stored row by row, row 0 first, without padding, in the byte order of the machine:
/// column x of row y is cell y * columns + x. Depths are 16, 32 and 64 bits for decimals, 8 to 64
/// for integers, 1 to 64 for unsigned cells, 8 for colour indices. Cells of 1 bit are stored eight
/// to a byte: see MRasterObservation on how they are read. A plain value; copies share the bytes.
class DATAINTERFACE_EXPORT MRasterBand {
public:
    MRasterBand() = default;
    /// Makes cells of zero. Raises "int(byteLength) > 0" for a grid that has no cells or is larger
    /// than 2 GiB, and "Insufficient memory to create new raster".
    MRasterBand(int columns, int rows, DataType type, int bitDepth);
    /// Copies GetByteLength() bytes from `data`.
    MRasterBand(int columns, int rows, DataType type, int bitDepth, const void *data,
                const QVector<unsigned int> &colorMap);
    MRasterBand(const MRasterBand &other) = default;
    MRasterBand &operator=(const MRasterBand &other) = default;
    virtual ~MRasterBand();

    virtual void SetColorMap(const QVector<unsigned int> &colorMap);
    /// Replaces the cells by GetByteLength() bytes from `data`.
    virtual void SetData(unsigned char *data, const QVector<unsigned int> &colorMap);
    virtual void SetData(void *data);

    int Rows() const { return mRows; }
    int Columns() const { return mColumns; }
    int CellCount() const { return mRows * mColumns; }
    DataType Type() const { return mType; }
    int BitDepth() const { return mBitDepth; }
    /// The size of all cells in bytes. At depth 1 it is `cells / 8` + 1, even if 8 divides the
    /// number of cells.
    int GetByteLength() const;
    const QByteArray &GetData() const { return mData; }
    /// The colour of each cell value: alpha, red, green, blue from the most significant byte down.
    const QVector<unsigned int> &GetColorMap() const { return mColorMap; }

    /// The first cell. T must have the width of the cells.
    template <class T> const T *cells() const
    {
        return reinterpret_cast<const T *>(mData.constData());
    }

protected:
    int mRows = 0;
    int mColumns = 0;
    DataType mType = RasterDecimalType;
    int mBitDepth = 0;
    mutable QByteArray mData; ///< of an observation: empty while it is not checked out
    QVector<unsigned int> mColorMap;
};
