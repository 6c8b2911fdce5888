// SPDX-License-Identifier: MIT
/// The codes of value types and of the two storage forms of a vector dataset. Both are written to
/// project files.
#pragma once
#include <QtGlobal>

/// The value type of a dataset. Vector datasets use the first three; the codes from 0x100 on are
/// types of raster cells, whose width is the bit depth of the dataset.
enum DataType : qint32 {
    DecimalType = 0x1,
    IntegerType = 0x2, ///< 32 bits in a vector dataset
    StringType = 0x4,
    RasterDecimalType = 0x100,
    RasterIntegerType = 0x200,
    RasterUnsignedType = 0x400,
    RasterCellType = 0x800,  ///< read as unsigned; files only
    RasterColorType = 0x1000 ///< 8-bit index into a colour map
};

/// The public form of MVectorDataset::StorageType.
enum StorageType : qint32 {
    TimeSeries = 0, ///< each object has intervals of its own
    TimeSlice = 1   ///< all objects share the intervals
};
