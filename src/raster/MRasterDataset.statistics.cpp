// SPDX-License-Identifier: MIT
#include "datainterface/MRasterDataset.h"
#include <cmath>
#include "Common/detail/failure.h"
#include "datainterface/HeldGrid.h"
#include "datasets/normalScores.h"
#include "raster/cellSummary.h"

using namespace datainterface;

namespace {

/// False for colours and for the unsigned type that occurs only in files.
bool hasStatisticsOf(DataType type)
{
    return type == RasterDecimalType || type == RasterIntegerType || type == RasterUnsignedType;
}

} // namespace

// The record is stored under the interval of its grid, so that every time in the interval finds it.
// Records of files under other intervals that overlap the grid's are replaced.
bool MRasterDataset::CalcMinMaxMean(int realization, qint64 time) const
{
    TimeStamp stamp;
    if (!hasStatistics(realization) || !GetContainingTimeStamp(realization, time, stamp)
        || !hasStatisticsOf(mDataType))
        return false;
    auto &perTime = mStatistics[realization].perTime;
    const auto known = perTime.constFind(stamp);
    if (known != perTime.constEnd() && known.key() == stamp)
        return true;
    const MRasterObservation &grid = *GetConstRasterInfo(realization, time);
    const bool isKnown = visitCellForm(mDataType, mBitDepth, [&](auto form) {
        using T = CellOf<decltype(form)>;
        const HeldGrid hold(grid);
        CellSummary<T> summary;
        summary.add(grid.cells<T>(), grid.CellCount(), CellTest<const T *>(mCellFlag));
        while (perTime.remove(stamp) > 0) // stamps that overlap compare equal
            ;
        perTime.insert(stamp, summary.stats());
    });
    require(isKnown, "Invalid bit depth");
    return true;
}

bool MRasterDataset::CalcMinMaxMean(int realization) const
{
    const auto grids = mRealizations.constFind(realization);
    if (!hasStatistics(realization) || grids == mRealizations.constEnd())
        return false;
    require(hasStatisticsOf(mDataType), "Invalid raster data type");
    if (mStatistics.at(realization).whole.meanValid)
        return true;
    const bool isKnown = visitCellForm(mDataType, mBitDepth, [&](auto form) {
        using T = CellOf<decltype(form)>;
        CellSummary<T> summary;
        for (const MRasterObservation *grid : *grids) {
            const HeldGrid hold(*grid);
            summary.add(grid->cells<T>(), grid->CellCount(), CellTest<const T *>(mCellFlag));
        }
        if (summary.count() > 0)
            mStatistics[realization].whole = summary.stats();
    });
    require(isKnown, "Invalid bit depth");
    return mStatistics.at(realization).whole.meanValid;
}

bool MRasterDataset::GetStdDev(int realization, qint64 time, double &result) const
{
    const MRasterObservation *grid = GetConstRasterInfo(realization, time);
    if (!grid || !hasStatistics(realization))
        return false;
    require(hasStatisticsOf(mDataType), "Invalid raster type");
    if (!CalcMinMaxMean(realization, time))
        return false;
    auto &perTime = mStatistics[realization].perTime;
    const auto found = perTime.find(TimeStamp(timeOf(time)));
    require(found != perTime.end(), "Can't find dataset statistics");
    DataSetStats &stats = *found;
    if (!stats.stdDevValid) {
        qint64 count = 0;
        double sum = 0.0;
        visitCellForm(mDataType, mBitDepth, [&](auto form) {
            using T = CellOf<decltype(form)>;
            const HeldGrid hold(*grid);
            sum = squaredDeviations(grid->cells<T>(), grid->CellCount(),
                                    CellTest<const T *>(mCellFlag), stats.mean, count);
        });
        if (count == 0)
            return false;
        stats.stdDev = std::sqrt(sum / static_cast<double>(count));
        stats.stdDevValid = true;
    }
    result = stats.stdDev;
    return true;
}

// Streams hold only the bits of the extremes, so the type of the cells decides whether they are
// unsigned.
void MRasterDataset::restoreStatistics()
{
    const bool isUnsigned = mDataType != RasterDecimalType && mDataType != RasterIntegerType;
    const auto settle = [isUnsigned](DataSetStats &stats) {
        for (MDatum *extreme : {&stats.minimum, &stats.maximum}) {
            if (isUnsigned && extreme->type() == MDatum::Integer)
                *extreme = MDatum(static_cast<quint64>(extreme->integerValue()));
        }
    };
    for (int realization = 0; realization < mStatistics.size(); ++realization) {
        StatsRealization &statistics = mStatistics[realization];
        const ObservationMap grids = mRealizations.value(realization);
        for (auto record = statistics.perTime.begin(); record != statistics.perTime.end();) {
            const auto grid = grids.constFind(record.key());
            if (grid == grids.constEnd() || grid.key() != record.key()) {
                record = statistics.perTime.erase(record);
            } else {
                settle(*record);
                ++record;
            }
        }
        settle(statistics.whole);
    }
}

bool MRasterDataset::HasStatisticsForm() const
{
    return hasStatisticsOf(mDataType);
}

bool MRasterDataset::IsNormalScoreDataset(qint64 time, int realization) const
{
    DataSetStats stats;
    QVector<double> values;
    MissingFlag missing;
    if (mDataType != RasterDecimalType || !GetDataSetStats(realization, time, stats)
        || !GetValuesAsDecimal(realization, time, values, missing))
        return false;
    QVector<OrderedDouble> present;
    for (const double value : qAsConst(values)) {
        if (!missing.matches(value))
            present.append(value);
    }
    return areNormalScores(stats.mean, present);
}
