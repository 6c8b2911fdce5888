// SPDX-License-Identifier: MIT
#include "datainterface/MRasterDataSource.h"
#include <cmath>
#include <limits>
#include "cells/binary16.h"
#include "cells/cellForms.h"
#include "frame/loadContext.h"
#include "raster/askRaster.h"
#include "sources/askStatistics.h"
#include "time/boxes.h"

using namespace datainterface;

namespace {

constexpr int kMaxDisplaySize = 2000;

/// The number of columns of a grid that a display shows.
unsigned int displayColumns(unsigned int columns, unsigned int rows)
{
    if (columns > kMaxDisplaySize)
        return kMaxDisplaySize;
    if (rows <= kMaxDisplaySize)
        return columns;
    return qMax(columns * kMaxDisplaySize / rows, 1u);
}

/// False for colours. The data source then returns false where the dataset would raise.
bool hasStatisticsForm(const MRasterDataSource &source, int id)
{
    return askRaster(source, id,
                     [](const MRasterDataset &dataset) { return dataset.HasStatisticsForm(); });
}

} // namespace

MRasterDataSource::MRasterDataSource(const QString &directory) : MDataSource(directory, 0)
{
    mKind = RasterSource;
}

MRasterDataSource::MRasterDataSource(const QString &directory, unsigned int columns,
                                     unsigned int rows, const QRectF &bounds, int idSeed)
    : MDataSource(directory, idSeed),
      mBounds(bounds),
      mColumns(columns),
      mRows(rows),
      mDisplayStep(static_cast<double>(columns) / displayColumns(columns, rows))
{
    mKind = RasterSource;
}

bool MRasterDataSource::IsGrid(qint64 columns, qint64 rows, const QRectF &bounds)
{
    const double right = bounds.x() + bounds.width();
    const double bottom = bounds.y() + bounds.height();
    return columns > 0 && rows > 0 && rows <= std::numeric_limits<int>::max() / columns
           && std::isfinite(right) && std::isfinite(bottom) && std::isfinite(bounds.width())
           && std::isfinite(bounds.height()) && bounds.width() > 0.0 && bounds.height() > 0.0;
}

bool MRasterDataSource::SaveToStream(QDataStream &out)
{
    if (!MDataSource::SaveToStream(out))
        return false;
    out << mBounds.x() << mBounds.x() + mBounds.width() << mBounds.y()
        << mBounds.y() + mBounds.height() << qint32(mColumns) << qint32(mRows)
        << qint32(mMaxDisplaySize) << mDisplayStep;
    return out.status() == QDataStream::Ok;
}

MDataset *MRasterDataSource::NewEmptyDataset(int kind)
{
    return kind == MDataset::RasterKind ? new MRasterDataset(this, QString()) : nullptr;
}

bool MRasterDataSource::RestoreFromStream(QDataStream &in)
{
    LoadContext context = loadContext();
    return MRasterDataSource::Restore(in, context);
}

bool MRasterDataSource::Restore(QDataStream &in, LoadContext &context)
{
    if (!MDataSource::Restore(in, context))
        return false;
    double left = 0.0;
    double right = 0.0;
    double low = 0.0;
    double high = 0.0;
    qint32 columns = 0;
    qint32 rows = 0;
    qint32 maxDisplaySize = 0;
    in >> left >> right >> low >> high >> columns >> rows >> maxDisplaySize >> mDisplayStep;
    mBounds = QRectF(left, low, right - left, high - low);
    if (in.status() != QDataStream::Ok || !IsGrid(columns, rows, mBounds) || maxDisplaySize <= 0
        || !(mDisplayStep > 0.0))
        return false;
    mColumns = static_cast<unsigned int>(columns);
    mRows = static_cast<unsigned int>(rows);
    mMaxDisplaySize = maxDisplaySize;
    // Reading a dataset of another size would run past its end.
    return std::all_of(mDatasets.cbegin(), mDatasets.cend(), [this](const MDataset *dataset) {
        unsigned int datasetColumns = 0;
        unsigned int datasetRows = 0;
        static_cast<const MRasterDataset *>(dataset)->GetRasterDims(datasetColumns, datasetRows);
        return datasetColumns == mColumns && datasetRows == mRows;
    });
}

MRasterDataset *MRasterDataSource::GetRasterDataset(int id)
{
    return static_cast<MRasterDataset *>(GetDataset(id)); // no other kind is registered here
}

const MRasterDataset *MRasterDataSource::GetRasterDataset(int id) const
{
    return static_cast<const MRasterDataset *>(GetDataset(id));
}

bool MRasterDataSource::IsDatasetIdValid(int id) const
{
    return GetRasterDataset(id) != nullptr;
}

void MRasterDataSource::IncDisplayIndex(double &index, double &row, double &column) const
{
    if (mDisplayStep == 1.0) {
        index += 1.0;
        column += 1.0;
        if (std::fmod(std::trunc(column), mColumns) == 0.0) {
            column = 0.0;
            row += 1.0;
        }
        return;
    }
    column += mDisplayStep;
    if (std::trunc(column) >= mColumns) {
        row += mDisplayStep;
        column = 0.0;
        index = std::trunc(row) * mColumns;
    } else {
        index = std::trunc(row) * mColumns + std::trunc(column);
    }
}

void MRasterDataSource::GetRasterDims(unsigned int &columns, unsigned int &rows) const
{
    columns = mColumns;
    rows = mRows;
}

void MRasterDataSource::GetDisplayDims(unsigned int &width, unsigned int &height) const
{
    const auto limit = static_cast<quint64>(mMaxDisplaySize);
    const auto scaled = [limit](quint64 count, quint64 by) {
        return static_cast<unsigned int>(count * limit / by);
    };
    if (mColumns > limit) {
        width = static_cast<unsigned int>(limit);
        height = scaled(mRows, mColumns);
    } else if (mRows <= limit) {
        width = mColumns;
        height = mRows;
    } else {
        width = scaled(mColumns, mRows);
        height = static_cast<unsigned int>(limit);
    }
}

RectInT MRasterDataSource::GetBoundingRect()
{
    return boxOf(mBounds, GetTimeBounds());
}

int MRasterDataSource::NewRasterDataset(const QString &name, DataType type, int realizationCount,
                                        int bitDepth, const QString &path)
{
    if (!isCellForm(type, bitDepth) || realizationCount < 1)
        return -1;
    const int id = GetNewDatasetId();
    mDatasets.insert(id,
                     new MRasterDataset(this, realizationCount, type, name, path, id, bitDepth));
    return id;
}

bool MRasterDataSource::GetCommonTimeStamp(int id, int realization, qint64 t,
                                           TimeStamp &stamp) const
{
    return GetContainingTimeStamp(id, realization, t, stamp);
}

QList<double> MRasterDataSource::GetIntervalBreaks(int id, int realization, int count,
                                                   MDataset::ClassificationType type, bool flag)
{
    return askRaster(*this, id, [=](MRasterDataset &dataset) {
        return dataset.GetIntervalBreaks(realization, count, type, flag);
    });
}

QMap<MDatum, int> MRasterDataSource::GetDataFrequencies(int id)
{
    return askRaster(*this, id,
                     [](MRasterDataset &dataset) { return dataset.GetDataFrequencies(); });
}

int MRasterDataSource::GetUniqueValueCount(int id) const
{
    return askRaster(
        *this, id, [](const MRasterDataset &dataset) { return dataset.UniqueValueCount(nullptr); });
}

bool MRasterDataSource::SetHierarchyPath(int id, const QString &path)
{
    return tell(*this, id, [&path](MDataset &dataset) { dataset.SetHierarchyPath(path); });
}

bool MRasterDataSource::SetHierarchyPath(int id, const QList<MDataset::pathLevel> &path)
{
    return tell(*this, id, [&path](MDataset &dataset) { dataset.SetHierarchyPath(path); });
}

bool MRasterDataSource::GetHierarchyPath(int id, QList<MDataset::pathLevel> &path) const
{
    return tell(*this, id, [&path](const MDataset &dataset) { path = dataset.GetHierarchyPath(); });
}

bool MRasterDataSource::GetHierarchyPathAsString(int id, QString &path) const
{
    return tell(*this, id,
                [&path](const MDataset &dataset) { path = dataset.GetHierarchyPathAsString(); });
}

bool MRasterDataSource::GetTimeBounds(int id, TimeStamp &bounds) const
{
    return askRaster(*this, id, [&bounds](const MRasterDataset &dataset) {
        return dataset.GetTimeBounds(bounds);
    });
}

TimeStamp MRasterDataSource::GetTimeBounds()
{
    return hullOf(mDatasets);
}

bool MRasterDataSource::GetMean(int id, int realization, qint64 t, double &mean)
{
    return askStatistics(*this, id, realization, t, &DataSetStats::mean, mean);
}

bool MRasterDataSource::GetStddev(int id, int realization, qint64 t, double &deviation)
{
    return askRaster(*this, id, [&](const MRasterDataset &dataset) {
        return dataset.HasStatisticsForm() && dataset.GetStdDev(realization, t, deviation);
    });
}

bool MRasterDataSource::GetMax(int id, int realization, qint64 t, MDatum &value)
{
    return askStatistics(*this, id, realization, t, &DataSetStats::maximum, value);
}

bool MRasterDataSource::GetMin(int id, int realization, qint64 t, MDatum &value)
{
    return askStatistics(*this, id, realization, t, &DataSetStats::minimum, value);
}

bool MRasterDataSource::GetGlobalMin(int id, int realization, MDatum &value)
{
    return hasStatisticsForm(*this, id)
           && askGlobalStatistics(*this, id, realization, &DataSetStats::minimum, value);
}

bool MRasterDataSource::GetGlobalMax(int id, int realization, MDatum &value)
{
    return hasStatisticsForm(*this, id)
           && askGlobalStatistics(*this, id, realization, &DataSetStats::maximum, value);
}

bool MRasterDataSource::IsNumeric(int id) const
{
    return askRaster(*this, id, [](const MRasterDataset &dataset) { return dataset.IsNumeric(); });
}
