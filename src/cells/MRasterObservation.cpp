// SPDX-License-Identifier: MIT
#include "datainterface/MRasterObservation.h"
#include "Common/DataManager.h"
#include "Common/detail/failure.h"
#include "Common/detail/streams.h"
#include "cells/binary16.h"
#include "cells/cellForms.h"
#include "cells/oldTypeCodes.h"
#include "datainterface/DataBlocks.h"
#include "datainterface/HeldGrid.h"
#include "frame/loadContext.h"

using namespace datainterface;

MRasterObservation::MRasterObservation(const MRasterBand &band) : MRasterBand(band)
{
    mBlockId = SaveDataBlock(mData);
    mData.clear();
}

MRasterObservation::MRasterObservation(QDataStream &in)
{
    qint32 rows = 0;
    qint32 columns = 0;
    qint32 type = 0;
    qint32 bitDepth = 0;
    qint32 blockId = -1;
    in >> rows >> columns >> type >> bitDepth;
    readList(in, mColorMap, sizeof(quint32));
    in >> blockId;
    mRows = rows;
    mColumns = columns;
    mType = cellTypeOf(type, loadContext());
    mBitDepth = bitDepth;
    if (in.status() == QDataStream::Ok)
        mBlockId = blockId;
}

MRasterObservation::MRasterObservation(const MRasterObservation &other)
    : MRasterObservation(other, HeldGrid(other))
{
}

// The HeldGrid keeps the cells of `other` in memory while the copy is made.
MRasterObservation::MRasterObservation(const MRasterObservation &other, const HeldGrid &)
    : MRasterObservation(static_cast<const MRasterBand &>(other))
{
}

MRasterObservation &MRasterObservation::operator=(const MRasterObservation &other)
{
    if (this == &other)
        return *this;
    const HeldGrid hold(other);
    const int blockId = mBlockId;
    if (blockId >= 0)
        ReplaceDataBlock(blockId, other.mData);
    mBlockId = blockId >= 0 ? blockId : SaveDataBlock(other.mData);
    MRasterBand::operator=(other);
    mDirty = false;
    if (mCheckOutCount == 0)
        mData.clear();
    return *this;
}

MRasterObservation::~MRasterObservation()
{
    if (mBlockId >= 0)
        DeleteDataBlock(mBlockId);
}

std::unique_ptr<MRasterObservation> MRasterObservation::clone() const
{
    return std::make_unique<MRasterObservation>(*this);
}

void MRasterObservation::SaveToStream(QDataStream &out) const
{
    out << qint32(mRows) << qint32(mColumns) << qint32(mType) << qint32(mBitDepth) << mColorMap
        << qint32(mBlockId);
}

bool MRasterObservation::CheckOutObservation() const
{
    if (++mCheckOutCount == 1 && mBlockId >= 0)
        ReadData();
    return true;
}

bool MRasterObservation::CheckInObservation() const
{
    if (mCheckOutCount == 0 || --mCheckOutCount > 0)
        return true;
    if (mDirty)
        WriteData();
    if (mBlockId >= 0)
        mData.clear();
    mReadCells.clear();
    return true;
}

void MRasterObservation::WriteData() const
{
    if (mBlockId >= 0)
        ReplaceDataBlock(mBlockId, mData);
    else
        mBlockId = SaveDataBlock(mData);
    mData.clear();
    mDirty = false;
}

// The header and the block come from different parts of a file. A block that is too short for the
// header's dimensions is refused, because readers would read beyond its end.
void MRasterObservation::ReadData() const
{
    // Changes that could not be written back are still in memory.
    if (mDirty && !mData.isEmpty())
        return;
    const bool isRead =
        ReadDataBlock(mBlockId, mData) && mData.size() >= GetByteLength() && GetByteLength() > 0;
    if (!isRead)
        mData.clear();
    require(isRead, "Can't load raster data block");
}

void MRasterObservation::SetColorMap(const QVector<unsigned int> &colorMap)
{
    const HeldGrid hold(*this);
    MRasterBand::SetColorMap(colorMap);
    mDirty = false;
}

void MRasterObservation::SetData(unsigned char *data, const QVector<unsigned int> &colorMap)
{
    const HeldGrid hold(*this);
    writableCells();
    MRasterBand::SetData(data, colorMap);
    mDirty = false;
}

void MRasterObservation::SetData(void *data)
{
    const HeldGrid hold(*this);
    writableCells();
    MRasterBand::SetData(data);
    mDirty = false;
}

bool MRasterObservation::holdsCell(int column, int row) const
{
    return column >= 0 && column < mColumns && row >= 0 && row < mRows;
}

bool MRasterObservation::holdsIndex(int index) const
{
    return index >= 0 && index < CellCount();
}

// The bytes are shared with the store's cache until the first write. mReadCells then keeps the old
// bytes, so that pointers handed out before the write stay valid until the last check-in.
char *MRasterObservation::writableCells()
{
    if (!mData.isDetached())
        mReadCells = mData;
    return mData.data();
}

bool MRasterObservation::SetValue(double value, int column, int row)
{
    if (!holdsCell(column, row))
        return false;
    const HeldGrid hold(*this);
    const bool isSet = visitDecimalWidth(*this, [&](const auto *cells) {
        using T = std::decay_t<decltype(*cells)>;
        T *cell = reinterpret_cast<T *>(writableCells()) + (row * mColumns + column);
        if constexpr (std::is_same_v<T, half>)
            *cell = halfFromDouble(value);
        else
            *cell = static_cast<T>(value);
    });
    mDirty = mDirty || isSet;
    return isSet;
}

bool MRasterObservation::SetValue(quint64 value, int column, int row)
{
    if (!holdsCell(column, row))
        return false;
    const HeldGrid hold(*this);
    const int index = row * mColumns + column;
    bool isSet = mBitDepth == 1;
    if (isSet) {
        const unsigned int bits =
            (static_cast<unsigned int>(value & 0xFF) << ((index - index / 8) & 31)) & 7u;
        char &byte = writableCells()[index >> 3];
        byte = static_cast<char>(static_cast<unsigned char>(byte) | bits);
    } else {
        isSet = visitUnsignedWidth(*this, [&](const auto *cells) {
            using T = std::decay_t<decltype(*cells)>;
            reinterpret_cast<T *>(writableCells())[index] = static_cast<T>(value);
        });
    }
    mDirty = mDirty || isSet;
    return isSet;
}

bool MRasterObservation::SetValue(qint64 value, int column, int row)
{
    return mBitDepth != 1 && SetValue(static_cast<quint64>(value), column, row);
}
