// SPDX-License-Identifier: MIT
// Values and frequencies. Each operation calls that of the dataset.
#include "datainterface/MRasterDataSource.h"
#include "cells/binary16.h"
#include "raster/askRaster.h"

using namespace datainterface;

namespace {

template <class Value>
bool getCell(const MRasterDataSource &source, int id, int realization, unsigned int column,
             unsigned int row, qint64 time, Value &value)
{
    return askRaster(source, id, [&](const MRasterDataset &dataset) {
        return dataset.GetValue(realization, static_cast<int>(column), static_cast<int>(row), time,
                                value);
    });
}

template <class Value>
bool setCell(MRasterDataSource &source, int id, int realization, unsigned int column,
             unsigned int row, const TimeStamp &stamp, Value value)
{
    return askRaster(source, id, [&](MRasterDataset &dataset) {
        return dataset.SetValue(realization, value, static_cast<int>(column), static_cast<int>(row),
                                stamp);
    });
}

} // namespace

int MRasterDataSource::GetRasterBitDepth(int id) const
{
    return askRaster(*this, id,
                     [](const MRasterDataset &dataset) { return dataset.GetRasterBitDepth(); });
}

bool MRasterDataSource::AddRasterValues(int id, int realization, const TimeStamp &stamp,
                                        const MRasterBand &band, bool overwrite, bool recalculate)
{
    return askRaster(*this, id, [&](MRasterDataset &dataset) {
        return dataset.AddRasterValues(realization, stamp, band, overwrite, recalculate);
    });
}

const QMap<quint8, int> *MRasterDataSource::GetInt8Frequencies(int id) const
{
    return askRaster(*this, id,
                     [](const MRasterDataset &dataset) { return dataset.GetInt8Frequencies(); });
}

const QMap<quint16, int> *MRasterDataSource::GetInt16Frequencies(int id) const
{
    return askRaster(*this, id,
                     [](const MRasterDataset &dataset) { return dataset.GetInt16Frequencies(); });
}

const QMap<quint32, int> *MRasterDataSource::GetInt32Frequencies(int id) const
{
    return askRaster(*this, id,
                     [](const MRasterDataset &dataset) { return dataset.GetInt32Frequencies(); });
}

const QMap<quint64, int> *MRasterDataSource::GetInt64Frequencies(int id) const
{
    return askRaster(*this, id,
                     [](const MRasterDataset &dataset) { return dataset.GetInt64Frequencies(); });
}

const QMap<double, int> *MRasterDataSource::GetDoubleFrequencies(int id) const
{
    return askRaster(*this, id,
                     [](const MRasterDataset &dataset) { return dataset.GetDoubleFrequencies(); });
}

const QMap<float, int> *MRasterDataSource::GetFloatFrequencies(int id) const
{
    return askRaster(*this, id,
                     [](const MRasterDataset &dataset) { return dataset.GetFloatFrequencies(); });
}

const QMap<quint16, int> *MRasterDataSource::GetHalfFloatFrequencies(int id) const
{
    return askRaster(
        *this, id, [](const MRasterDataset &dataset) { return dataset.GetHalfFloatFrequencies(); });
}

QList<TimeStamp> MRasterDataSource::GetRasterIntervals(int id, int realization)
{
    return askRaster(*this, id, [=](const MRasterDataset &dataset) {
        return dataset.GetRasterIntervals(realization);
    });
}

bool MRasterDataSource::GetContainingTimeStamp(int id, int realization, qint64 time,
                                               TimeStamp &stamp) const
{
    return askRaster(*this, id, [&](const MRasterDataset &dataset) {
        return dataset.GetContainingTimeStamp(realization, time, stamp);
    });
}

bool MRasterDataSource::HasMissingValues(int id) const
{
    return askRaster(*this, id,
                     [](const MRasterDataset &dataset) { return dataset.HasMissing(0); });
}

bool MRasterDataSource::IsMissing(int id, int realization, unsigned int column, unsigned int row,
                                  qint64 time)
{
    return askRaster(*this, id, [=](const MRasterDataset &dataset) {
        return dataset.IsPixelMissing(realization, static_cast<int>(column), static_cast<int>(row),
                                      time);
    });
}

bool MRasterDataSource::IsMissingFlag(int id, quint64 value) const
{
    return ask(*this, id, true, [value](const MDataset &dataset) {
        const auto &raster = static_cast<const MRasterDataset &>(dataset);
        const bool isSigned = raster.GetDataType() == RasterIntegerType;
        const MissingFlag &flag = raster.GetCellFlag();
        switch (raster.GetRasterBitDepth()) {
        case 8:
            return isSigned ? flag.matches(static_cast<qint8>(value))
                            : flag.matches(static_cast<quint8>(value));
        case 16:
            return isSigned ? flag.matches(static_cast<qint16>(value))
                            : flag.matches(static_cast<quint16>(value));
        case 32:
            return isSigned ? flag.matches(static_cast<qint32>(value))
                            : flag.matches(static_cast<quint32>(value));
        case 64:
            return isSigned ? flag.matches(static_cast<qint64>(value)) : flag.matches(value);
        default:
            return false;
        }
    });
}

bool MRasterDataSource::IsMissingFlag(int id, double value) const
{
    return ask(*this, id, true, [value](const MDataset &dataset) {
        const auto &raster = static_cast<const MRasterDataset &>(dataset);
        const MissingFlag &flag = raster.GetCellFlag();
        switch (raster.GetRasterBitDepth()) {
        case 64:
            return flag.matches(value);
        case 32:
            return flag.matches(static_cast<float>(value));
        default:
            return flag.matches(halfFromDouble(value));
        }
    });
}

bool MRasterDataSource::GetRasterValue(int id, int realization, unsigned int column,
                                       unsigned int row, qint64 time, double &value) const
{
    return getCell(*this, id, realization, column, row, time, value);
}

bool MRasterDataSource::GetRasterValue(int id, int realization, unsigned int column,
                                       unsigned int row, qint64 time, qint64 &value) const
{
    return getCell(*this, id, realization, column, row, time, value);
}

bool MRasterDataSource::GetRasterValue(int id, int realization, unsigned int column,
                                       unsigned int row, qint64 time, quint64 &value) const
{
    return getCell(*this, id, realization, column, row, time, value);
}

bool MRasterDataSource::GetRasterValue(int id, int realization, unsigned int column,
                                       unsigned int row, qint64 time, MDatum &value) const
{
    if (!holds(column, row))
        return false;
    return askRaster(*this, id, [&](const MRasterDataset &dataset) {
        const MRasterObservation *grid = dataset.GetConstRasterInfo(realization, time);
        const MDatum found = grid ? grid->GetValue(static_cast<int>(IndexFromColRow(column, row)),
                                                   dataset.GetCellFlag())
                                  : MDatum();
        if (!found.isEmpty())
            value = found;
        return !found.isEmpty();
    });
}

bool MRasterDataSource::SetRasterValue(int id, int realization, unsigned int column,
                                       unsigned int row, const TimeStamp &stamp, double value)
{
    return setCell(*this, id, realization, column, row, stamp, value);
}

bool MRasterDataSource::SetRasterValue(int id, int realization, unsigned int column,
                                       unsigned int row, const TimeStamp &stamp, qint64 value)
{
    return setCell(*this, id, realization, column, row, stamp, value);
}

bool MRasterDataSource::SetRasterValue(int id, int realization, unsigned int column,
                                       unsigned int row, const TimeStamp &stamp, quint64 value)
{
    return setCell(*this, id, realization, column, row, stamp, value);
}

MRasterObservation *MRasterDataSource::GetRasterInfo(int id, int realization,
                                                     const TimeStamp &stamp)
{
    return askRaster(*this, id, [&](MRasterDataset &dataset) {
        return dataset.GetRasterInfo(realization, stamp);
    });
}

const MRasterObservation *MRasterDataSource::GetRasterInfo(int id, int realization,
                                                           qint64 time) const
{
    return askRaster(*this, id, [&](const MRasterDataset &dataset) {
        return dataset.GetConstRasterInfo(realization, time);
    });
}

bool MRasterDataSource::RasterChanged(int id, int realization, qint64 first, qint64 second)
{
    return askRaster(*this, id, [=](MRasterDataset &dataset) {
        return dataset.ObjectValueChanged(realization, 0, first, second);
    });
}
