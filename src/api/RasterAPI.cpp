// SPDX-License-Identifier: MIT
// Values of raster datasets. Each overload calls a template with its cell type.
#include "datainterface/RasterAPI.h"
#include "api/callFrame.h"
#include "api/dataFrame.h"
#include "cells/cellForms.h"
#include "datainterface/HeldGrid.h"
#include "datainterface/MRasterData.h"
#include "datainterface/MRasterDataSource.h"

using namespace datainterface;

namespace {

template <class Result, class Call> Result onRaster(int id, Result miss, Call call)
{
    return onSource<MRasterDataSource>(id, miss, call);
}

template <class T> bool holdsCells(const MRasterDataset &dataset, DataType type)
{
    return dataset.GetDataType() == type
           && dataset.GetRasterBitDepth() == static_cast<int>(8 * sizeof(T));
}

/// Adds a grid and then sets the dataset's missing flag, after the cells have been counted: the
/// frequencies then show whether any cell is missing.
template <class T>
bool addValues(int id, int realization, const Interval &interval, DataType type,
               const QVector<T> &values, T missing, const QVector<unsigned int> &colorMap,
               bool overwrite, bool recalculate)
{
    return onDataset<MRasterDataset>(id, false, [&](MRasterDataset &dataset) {
        unsigned int columns = 0;
        unsigned int rows = 0;
        dataset.GetRasterDims(columns, rows);
        if (!holdsCells<T>(dataset, type)
            || static_cast<unsigned int>(values.size()) != columns * rows)
            return false;
        const MRasterBand band(static_cast<int>(columns), static_cast<int>(rows), type,
                               dataset.GetRasterBitDepth(), values.constData(), colorMap);
        if (!dataset.AddRasterValues(realization, TimeStamp(interval), band, overwrite,
                                     recalculate))
            return false;
        dataset.SetMissingFlag(MissingFlag(missing));
        return true;
    });
}

template <class T>
bool getCells(int id, int realization, qint64 time, DataType type, const T *&data,
              MissingFlag &flag)
{
    return onDataset<MRasterDataset>(id, false, [&](const MRasterDataset &dataset) {
        const MRasterObservation *grid = dataset.GetConstRasterInfo(realization, time);
        if (!holdsCells<T>(dataset, type) || !grid || grid->GetData().isEmpty())
            return false;
        data = grid->cells<T>();
        flag = dataset.GetMissingFlag();
        return true;
    });
}

template <class T>
bool setCell(int id, int realization, unsigned int column, unsigned int row,
             const Interval &interval, DataType type, T value)
{
    return onDataset<MRasterDataset>(id, false, [&](MRasterDataset &dataset) {
        return dataset.GetDataType() == type
               && dataset.SetValue(realization, value, static_cast<int>(column),
                                   static_cast<int>(row), TimeStamp(interval));
    });
}

/// One cell of a dataset of the given type, or of any type when `type` is 0.
template <class T>
bool getCell(int id, int realization, unsigned int column, unsigned int row, qint64 time, int type,
             T &value)
{
    return onDataset<MRasterDataset>(id, false, [&](const MRasterDataset &dataset) {
        return (type == 0 || dataset.GetDataType() == type)
               && dataset.GetValue(realization, static_cast<int>(column), static_cast<int>(row),
                                   time, value);
    });
}

} // namespace

int VORN_CreateNewRasterGeography(const QString &name, unsigned int rows, unsigned int columns,
                                  const QRectF &bounds, const Interval &interval, TimeFormat format,
                                  const QString &history, const QString &projection)
{
    return controller()->AddNewRasterGeography(name, rows, columns, bounds, TimeStamp(interval),
                                               format, history, projection);
}

int VORN_NewRasterDataset(int geographyId, const QString &name, DataType type, int realizationCount,
                          int bitDepth, const QString &path)
{
    if (type == RasterCellType) // occurs in files only
        return -1;
    return onGeographySource<MRasterDataSource>(geographyId, -1, [&](MRasterDataSource &source) {
        return idWithinMemory(
            [&] { return source.NewRasterDataset(name, type, realizationCount, bitDepth, path); });
    });
}

bool VORN_AddRasterValues(int id, int realization, const Interval &interval,
                          const QVector<double> &values, double missing, bool overwrite,
                          bool recalculate)
{
    return addValues(id, realization, interval, RasterDecimalType, values, missing, {}, overwrite,
                     recalculate);
}

bool VORN_AddRasterValues(int id, int realization, const Interval &interval,
                          const QVector<float> &values, float missing, bool overwrite,
                          bool recalculate)
{
    return addValues(id, realization, interval, RasterDecimalType, values, missing, {}, overwrite,
                     recalculate);
}

bool VORN_AddRasterValues(int id, int realization, const Interval &interval,
                          const QVector<int> &values, int missing, bool overwrite, bool recalculate)
{
    return addValues(id, realization, interval, RasterIntegerType, values, missing, {}, overwrite,
                     recalculate);
}

bool VORN_AddRasterValues(int id, int realization, const Interval &interval,
                          const QVector<quint64> &values, quint64 missing, bool overwrite,
                          bool recalculate)
{
    return addValues(id, realization, interval, RasterUnsignedType, values, missing, {}, overwrite,
                     recalculate);
}

bool VORN_AddRasterValues(int id, int realization, const Interval &interval,
                          const QVector<unsigned char> &values, unsigned char missing,
                          const QVector<unsigned int> &colorMap, bool overwrite, bool recalculate)
{
    return addValues(id, realization, interval, RasterColorType, values, missing, colorMap,
                     overwrite, recalculate);
}

bool VORN_GetRasterData(int id, int realization, qint64 time, const double *&data,
                        MissingFlag &flag)
{
    return getCells(id, realization, time, RasterDecimalType, data, flag);
}

bool VORN_GetRasterData(int id, int realization, qint64 time, const qint64 *&data,
                        QSet<quint64> &missing, MissingFlag &flag)
{
    if (!getCells(id, realization, time, RasterIntegerType, data, flag))
        return false;
    missing.clear();
    return onDataset<MRasterDataset>(id, false, [&missing](const MRasterDataset &dataset) {
        const MissingFlag &cell = dataset.GetCellFlag(); // in the cells' type
        if (cell.type != MissingFlag::None)
            missing.insert(static_cast<quint64>(cell.int64Value));
        return true;
    });
}

bool VORN_GetRasterData(int id, int realization, qint64 time, const quint64 *&data,
                        MissingFlag &flag)
{
    return getCells(id, realization, time, RasterUnsignedType, data, flag);
}

bool VORN_GetRasterData(int id, int realization, qint64 time, const signed char *&data,
                        MissingFlag &flag)
{
    return getCells(id, realization, time, RasterIntegerType, data, flag);
}

bool VORN_GetRasterData(int id, int realization, qint64 time, const unsigned char *&data,
                        MissingFlag &flag)
{
    return getCells(id, realization, time, RasterUnsignedType, data, flag);
}

bool VORN_GetRasterDataAsDecimal(int id, int realization, qint64 time, QVector<double> &values,
                                 MissingFlag &flag)
{
    return onDataset<MRasterDataset>(id, false, [&](const MRasterDataset &dataset) {
        return dataset.GetValuesAsDecimal(realization, time, values, flag);
    });
}

bool VORN_GetRasterValue(int id, int realization, unsigned int column, unsigned int row,
                         qint64 time, double &value)
{
    return getCell(id, realization, column, row, time, RasterDecimalType, value);
}

bool VORN_GetRasterValue(int id, int realization, unsigned int column, unsigned int row,
                         qint64 time, quint64 &value)
{
    return getCell(id, realization, column, row, time, 0, value);
}

bool VORN_GetRasterValue(int id, int realization, unsigned int column, unsigned int row,
                         qint64 time, qint64 &value)
{
    return getCell(id, realization, column, row, time, RasterIntegerType, value);
}

bool VORN_GetRasterValue(int id, int realization, unsigned int column, unsigned int row,
                         qint64 time, datum &value)
{
    MDatum found;
    return onRaster(id, false, [&](const MRasterDataSource &source) {
        return source.GetRasterValue(id, realization, column, row, time, found)
               && toDatum(found, value);
    });
}

bool VORN_SetRasterValue(int id, int realization, unsigned int column, unsigned int row,
                         const Interval &interval, double value)
{
    return setCell(id, realization, column, row, interval, RasterDecimalType, value);
}

bool VORN_SetRasterValue(int id, int realization, unsigned int column, unsigned int row,
                         const Interval &interval, qint64 value)
{
    return setCell(id, realization, column, row, interval, RasterIntegerType, value);
}

bool VORN_IsRasterDataMissing(int id, unsigned int column, unsigned int row, qint64 time)
{
    return onRaster(id, false, [=](MRasterDataSource &source) {
        return source.IsMissing(id, 0, column, row, time);
    });
}

bool VORN_GetMissingPixels(int id, int realization, qint64 time, QSet<int> &missing)
{
    return onDataset<MRasterDataset>(id, false, [&](const MRasterDataset &dataset) {
        const MRasterObservation *grid = dataset.GetConstRasterInfo(realization, time);
        if (!grid)
            return false;
        const HeldGrid hold(*grid);
        QSet<int> found;
        visitMissingCells(*grid, dataset.GetCellFlag(), [&found](int i) { found.insert(i); });
        missing = found;
        return true;
    });
}

bool VORN_GetRasterIntervals(int id, int realization, QVector<Interval> &intervals)
{
    return onDataset<MRasterDataset>(id, false, [&](const MRasterDataset &dataset) {
        intervals = toIntervals(dataset.GetRasterIntervals(realization));
        return true;
    });
}
