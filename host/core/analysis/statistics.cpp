// SPDX-License-Identifier: MIT
#include "core/analysis/statistics.h"
#include <limits>
#include <memory>
#include "core/project/catalog.h"
#include "datainterface/DataAPI.h"
#include "datainterface/GeographyAPI.h"
#include "datainterface/HeldGrid.h"
#include "datainterface/MRasterDataset.h"

namespace meridor {
namespace {

/// Keeps the grid of a time in memory while it is read several times; nothing for vector datasets.
std::unique_ptr<const HeldGrid> holdGrid(int dataset, qint64 time, int realization)
{
    const MRasterDataset *raster = rasterOf(dataset);
    const MRasterObservation *grid =
        raster ? raster->GetConstRasterInfo(realization, time) : nullptr;
    return grid ? std::make_unique<const HeldGrid>(*grid) : nullptr;
}

} // namespace

Statistics statisticsAt(int dataset, qint64 time, int realization)
{
    Statistics result;
    const auto hold = holdGrid(dataset, time, realization);
    result.count = datasetOf(dataset)->GetDataCount(realization, time);
    if (result.count == 0)
        return result;
    VORN_GetMean(dataset, realization, time, result.mean);
    VORN_GetStddev(dataset, realization, time, result.deviation);
    VORN_GetMin(dataset, realization, time, result.minimum);
    VORN_GetMax(dataset, realization, time, result.maximum);
    return result;
}

namespace {

/// The number of stored values. An entry of a series counts once, into however many intervals the
/// times of other objects divide it.
qint64 valueCount(int dataset, int realization)
{
    const DatasetProps props = VORN_GetDatasetProperties(dataset);
    qint64 count = 0;
    if (props.storageType == TimeSlice || rasterOf(dataset)) {
        for (const Interval &interval : dataTimes(dataset, realization))
            count += datasetOf(dataset)->GetDataCount(realization, instantOf(interval));
        return count;
    }
    const int objects = VORN_GetGeographyProperties(VORN_GetGeographyId(dataset)).objectCount;
    for (int object = 0; object < objects; ++object) {
        QVector<Interval> intervals;
        VORN_GetDataIntervals(dataset, realization, object, intervals);
        count += intervals.size();
    }
    return count;
}

} // namespace

Statistics statisticsOfAll(int dataset, int realization)
{
    const bool isStatic = datasetOf(dataset)->IsStatic();
    if (const QVector<Interval> times = dataTimes(dataset, realization);
        rasterOf(dataset) && times.size() == 1) {
        Statistics result = statisticsAt(dataset, instantOf(times[0]), realization);
        if (!isStatic)
            result.deviation = std::numeric_limits<double>::quiet_NaN();
        return result;
    }
    Statistics result;
    result.deviation = std::numeric_limits<double>::quiet_NaN();
    DataSetStats whole;
    if (!datasetOf(dataset)->GetGlobalDataSetStats(realization, whole))
        return result;
    result.mean = whole.mean;
    result.minimum = whole.minimum.toDouble();
    result.maximum = whole.maximum.toDouble();
    result.count = valueCount(dataset, realization);
    if (isStatic)
        VORN_GetStddev(dataset, realization, 0, result.deviation);
    return result;
}

} // namespace meridor
