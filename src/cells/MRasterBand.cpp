// SPDX-License-Identifier: MIT
#include "datainterface/MRasterBand.h"
#include <cstring>
#include <limits>
#include <new>
#include "Common/detail/failure.h"

using namespace datainterface;

namespace {

// The most bytes that a QByteArray can hold; its header counts against the limit of int.
constexpr qint64 kMaxBytes = std::numeric_limits<int>::max() - 64;

qint64 lengthOf(qint64 columns, qint64 rows, int bitDepth)
{
    if (columns <= 0 || rows <= 0 || bitDepth <= 0 || bitDepth > 64 || rows > kMaxBytes / columns)
        return 0;
    const qint64 cells = columns * rows;
    const qint64 length = bitDepth == 1 ? cells / 8 + 1 : cells * bitDepth / 8;
    return length <= kMaxBytes ? length : 0;
}

} // namespace

MRasterBand::MRasterBand(int columns, int rows, DataType type, int bitDepth)
    : mRows(rows), mColumns(columns), mType(type), mBitDepth(bitDepth)
{
    const qint64 byteLength = lengthOf(columns, rows, bitDepth);
    require(byteLength > 0, "int(byteLength) > 0");
    try {
        mData = QByteArray(static_cast<int>(byteLength), '\0');
    } catch (const std::bad_alloc &) {
        fail("Insufficient memory to create new raster");
    }
}

MRasterBand::MRasterBand(int columns, int rows, DataType type, int bitDepth, const void *data,
                         const QVector<unsigned int> &colorMap)
    : mRows(rows), mColumns(columns), mType(type), mBitDepth(bitDepth), mColorMap(colorMap)
{
    const qint64 byteLength = lengthOf(columns, rows, bitDepth);
    require(byteLength > 0, "int(byteLength) > 0");
    try {
        mData = QByteArray(static_cast<const char *>(data), static_cast<int>(byteLength));
    } catch (const std::bad_alloc &) {
        fail("Insufficient memory to create new raster");
    }
}

MRasterBand::~MRasterBand() = default;

int MRasterBand::GetByteLength() const
{
    return static_cast<int>(lengthOf(mColumns, mRows, mBitDepth));
}

void MRasterBand::SetColorMap(const QVector<unsigned int> &colorMap)
{
    mColorMap = colorMap;
}

void MRasterBand::SetData(unsigned char *data, const QVector<unsigned int> &colorMap)
{
    MRasterBand::SetData(static_cast<void *>(data));
    mColorMap = colorMap;
}

void MRasterBand::SetData(void *data)
{
    if (mData.size() > 0)
        std::memcpy(mData.data(), data, static_cast<std::size_t>(mData.size()));
}
