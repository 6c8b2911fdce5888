// SPDX-License-Identifier: MIT
#include "datainterface/MRasterDataset.h"
#include <cmath>
#include <limits>
#include "Common/detail/failure.h"
#include "cells/binary16.h"
#include "cells/cellFlag.h"
#include "cells/cellForms.h"
#include "datainterface/HeldGrid.h"
#include "datainterface/dataContainer.h"
#include "datasets/dataContainer.elements.h"

using namespace datainterface;

namespace {

/// The value that marks a missing cell when a container becomes a grid.
template <class T> T missingCell()
{
    if constexpr (std::is_same_v<T, half>)
        return half::fromBits(0x7BFF); // the largest half
    else if constexpr (std::is_same_v<T, double>)
        return -HUGE_VAL;
    else if constexpr (std::is_same_v<T, qint64>)
        return 0x7FFFFFFF; // the largest of 32 bits here too, as in existing files
    else
        return std::numeric_limits<T>::max();
}

template <class T> void fillMissing(VORN_DataContainer &values, QVector<T> &cells)
{
    if (values.missingData().noneMissing() && !values.missingData().isAllMissing())
        return;
    for (int i = 0; i < cells.size(); ++i) {
        if (values.isMissing(i))
            cells[i] = missingCell<T>();
    }
}

} // namespace

template <class Value>
bool MRasterDataset::setCell(int realization, Value value, int column, int row,
                             const TimeStamp &stamp)
{
    MRasterObservation *grid = GetRasterInfo(realization, stamp);
    if (!grid)
        return false;
    const HeldGrid hold(*grid);
    if (!grid->SetValue(value, column, row))
        return false;
    dataChanged(realization);
    countCell(*grid, column, row);
    return true;
}

/// Counts the present value of a cell. Its previous value stays counted until the table is counted
/// again.
void MRasterDataset::countCell(const MRasterObservation &grid, int column, int row)
{
    const int index = row * grid.Columns() + column;
    visitCellForm(mDataType, mBitDepth, [&](auto form) {
        using T = CellOf<decltype(form)>;
        updateFrequency(grid.cells<T>()[index], true);
    });
}

bool MRasterDataset::SetValue(int realization, double value, int column, int row,
                              const TimeStamp &stamp)
{
    return mDataType == RasterDecimalType && setCell(realization, value, column, row, stamp);
}

bool MRasterDataset::SetValue(int realization, qint64 value, int column, int row,
                              const TimeStamp &stamp)
{
    return mDataType == RasterIntegerType && setCell(realization, value, column, row, stamp);
}

bool MRasterDataset::SetValue(int realization, quint64 value, int column, int row,
                              const TimeStamp &stamp)
{
    return SetValue(realization, static_cast<qint64>(value), column, row, stamp);
}

bool MRasterDataset::GetValue(int realization, int column, int row, qint64 time,
                              quint64 &value) const
{
    const MRasterObservation *grid = GetConstRasterInfo(realization, time);
    return grid && grid->GetUnsignedIntegerValue(column, row, value, mCellFlag);
}

bool MRasterDataset::GetValue(int realization, int column, int row, qint64 time,
                              qint64 &value) const
{
    const MRasterObservation *grid = GetConstRasterInfo(realization, time);
    return grid && grid->GetIntegerValue(column, row, value, mCellFlag);
}

bool MRasterDataset::GetValue(int realization, int column, int row, qint64 time,
                              double &value) const
{
    const MRasterObservation *grid = GetConstRasterInfo(realization, time);
    return grid && grid->GetDecimalValue(column, row, value, mCellFlag);
}

MDatum MRasterDataset::GetValue(int index, qint64 time, int realization)
{
    const MRasterObservation *grid = GetConstRasterInfo(realization, time);
    return grid ? grid->GetValue(index, mCellFlag) : MDatum();
}

MDatum MRasterDataset::GetValue(int index, qint64 time, bool interpolate, int realization)
{
    require(!interpolate, "Raster interpolation not yet implemented");
    const MRasterObservation *grid = GetConstRasterInfo(realization, time);
    return grid ? grid->GetValue(index, mCellFlag) : MDatum(static_cast<const char *>(nullptr));
}

bool MRasterDataset::GetValueAsDecimal(int index, int realization, qint64 time, double &value) const
{
    const MRasterObservation *grid = GetConstRasterInfo(realization, time);
    return grid && grid->GetValueAsDecimal(index, value, mCellFlag);
}

bool MRasterDataset::GetValueAsDecimal(int column, int row, int realization, qint64 time,
                                       double &value) const
{
    const MRasterObservation *grid = GetConstRasterInfo(realization, time);
    return grid && grid->GetValueAsDecimal(column, row, value, mCellFlag);
}

bool MRasterDataset::GetValuesAsDecimal(int realization, qint64 time, QVector<double> &values,
                                        MissingFlag &missing) const
{
    const MRasterObservation *grid = GetConstRasterInfo(realization, time);
    return grid && grid->GetValuesAsDecimal(values, mCellFlag, missing);
}

bool MRasterDataset::IsPixelMissing(int realization, int column, int row, qint64 time) const
{
    double value = 0.0;
    return !GetValueAsDecimal(column, row, realization, time, value);
}

int MRasterDataset::GetDataCount(int realization, qint64 time) const
{
    const MRasterObservation *grid = GetConstRasterInfo(realization, time);
    if (!grid)
        return 0;
    int missing = 0;
    const HeldGrid hold(*grid);
    visitMissingCells(*grid, mCellFlag, [&missing](int) { ++missing; });
    return grid->CellCount() - missing;
}

bool MRasterDataset::AddTimeSliceValues(int realization, const TimeStamp &stamp,
                                        VORN_DataContainer &values, bool overwrite,
                                        bool updateFrequencies)
{
    if (values.count() != static_cast<int>(mRows * mColumns)
        || (mDataType == RasterColorType) != values.hasColorTable())
        return false;
    const MissingFlag flagBefore = mMissingFlag;
    bool isAdded = false;
    visitCellForm(mDataType, mBitDepth, [&](auto form) {
        using T = CellOf<decltype(form)>;
        ContainerAccess::visitVector(values, [&](auto &vector) {
            if constexpr (std::is_same_v<std::decay_t<decltype(vector)>, QVector<T>>) {
                if (mDataType != RasterColorType) {
                    fillMissing(values, vector);
                    SetMissingFlag(MissingFlag(missingCell<T>()));
                }
                const MRasterBand band(static_cast<int>(mColumns), static_cast<int>(mRows),
                                       mDataType, mBitDepth, vector.constData(),
                                       values.getColorTable());
                isAdded = AddRasterValues(realization, stamp, band, overwrite, updateFrequencies);
            }
        });
    });
    if (!isAdded)
        SetMissingFlag(flagBefore);
    return isAdded;
}
