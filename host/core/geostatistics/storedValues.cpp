// SPDX-License-Identifier: MIT
#include "core/geostatistics/storedValues.h"
#include <cmath>
#include <limits>
#include "core/project/catalog.h"
#include "core/project/failure.h"
#include "core/project/geographyTimes.h"
#include "core/project/shapeAccess.h"
#include "datainterface/DataAPI.h"
#include "datainterface/FrameAPI.h"
#include "datainterface/GeographyAPI.h"
#include "datainterface/MGeoData.h"
#include "datainterface/MRasterDataset.h"
#include "datainterface/RasterAPI.h"

namespace meridor {
namespace {

constexpr double kMissingCell = std::numeric_limits<double>::max();
constexpr double kMostCells = 1e8;
/// Cells whose frequencies are counted. Almost every realization of a cell is a value of its own,
/// and each takes about 50 bytes in the table, so many of them would take more memory than the rest.
constexpr double kMostCounted = 16 << 20;
constexpr double kMostCountedRealizations = 1 << 18;

} // namespace

StoredValues::StoredValues(int geography, const QString &name, int realizations, bool isStatic)
{
    requireNewDatasetName(geography, name);
    const GeoProps props = VORN_GetGeographyProperties(geography);
    mRaster = props.type == GeoProps::Raster;
    mId = mRaster ? VORN_NewRasterDataset(geography, name, RasterDecimalType, realizations, 64,
                                          QString())
                  : VORN_NewVectorDataset(geography, name, TimeSlice, DecimalType, realizations,
                                          QString());
    if (mId < 0)
        fail(QStringLiteral("dataset %1 could not be made").arg(name));
    if (!isStatic)
        return;
    // A static dataset of a grid is at the time zero, to which it would extend the grid's times.
    const TimeStamp times = timeBoundsOf(geography);
    if (mRaster && !props.isStatic && times.startTime <= times.endTime)
        mAlways =
            Interval{times.startTime, times.endTime, times.inclusiveStart, times.inclusiveEnd};
    else
        datasetOf(mId)->SetStatic(true);
}

StoredValues::~StoredValues()
{
    if (mFinished || mId < 0)
        return;
    try {
        VORN_RemoveDataset(mId);
    } catch (...) { // The failure that led here is the one to report.
    }
}

void StoredValues::add(int realization, const Interval &given, const std::vector<double> &values)
{
    const Interval when = mAlways.value_or(given);
    bool stored = false;
    if (mRaster) {
        QVector<double> cells(values.begin(), values.end());
        for (double &cell : cells)
            if (!std::isfinite(cell))
                cell = kMissingCell;
        stored = VORN_AddRasterValues(mId, realization, when, cells, kMissingCell, true, false);
    } else {
        QVector<double> numbers(values.begin(), values.end());
        QSet<int> missing;
        for (int i = 0; i < numbers.size(); ++i) {
            if (std::isfinite(numbers[i]))
                continue;
            numbers[i] = 0;
            missing.insert(i);
        }
        stored = missing.size() == numbers.size()
                 || VORN_AddDataValues(mId, realization, when, numbers, missing, true, false);
    }
    if (!stored)
        fail(QStringLiteral("dataset %1 does not take its values").arg(datasetName(mId)));
}

int StoredValues::finish(const QString &history)
{
    const DatasetProps props = VORN_GetDatasetProperties(mId);
    const GeoProps geography = VORN_GetGeographyProperties(VORN_GetGeographyId(mId));
    const double cells = double(geography.rows) * geography.columns * props.realizationCount
                         * qMax(1, dataTimes(mId).size());
    if (!mRaster || cells <= (props.realizationCount > 1 ? kMostCountedRealizations : kMostCounted))
        VORN_RecalculateDataFrequencies(mId);
    VORN_AppendToLongDescription(mId, history + QLatin1Char('\n'));
    VORN_NewDatasetCreated(mId);
    mFinished = true;
    return mId;
}

int makeGrid(const QString &name, double cell, const QRectF &bounds, int dataset)
{
    if (name.trimmed().isEmpty())
        failUsage(QStringLiteral("a name is not empty"), "grid");
    if (!std::isfinite(cell) || !(cell > 0))
        failUsage(QStringLiteral("the size of a cell is above 0"), "cell");
    // Bounds without a width are those of places on one line.
    if (!(bounds.width() >= 0 && bounds.height() >= 0 && std::isfinite(bounds.width())
          && std::isfinite(bounds.height())))
        failUsage(QStringLiteral("bounds are left, bottom, right, top"), "bounds");
    const double columns = std::max(1.0, std::ceil(bounds.width() / cell * (1 - 1e-12)));
    const double rows = std::max(1.0, std::ceil(bounds.height() / cell * (1 - 1e-12)));
    if (!(columns * rows <= kMostCells))
        fail(QStringLiteral("a grid of %1 columns and %2 rows is too large").arg(columns).arg(rows),
             "cell");
    const GeoProps like = VORN_GetGeographyProperties(VORN_GetGeographyId(dataset));
    QRectF covered(0, 0, columns * cell, rows * cell);
    covered.moveCenter(bounds.center());
    const Interval when(timeBoundsOf(like.id));
    const int id = VORN_CreateNewRasterGeography(
        VORN_GetUniqueGeographyName(name), static_cast<unsigned>(rows),
        static_cast<unsigned>(columns), covered, when, like.timeFormat,
        QStringLiteral("Grid for predictions of %1").arg(datasetName(dataset)),
        projectionText(VORN_GetGeographyId(dataset)));
    if (id < 0)
        fail(QStringLiteral("the grid %1 could not be made").arg(name));
    if (datasetOf(dataset)->IsStatic())
        geographyOf(id)->SetStatic(true);
    return id;
}

SimulationGrid gridOf(int geography)
{
    const GeoProps props = VORN_GetGeographyProperties(geography);
    if (props.type != GeoProps::Raster)
        fail(QStringLiteral("%1 is no grid").arg(props.name));
    return {props.columns,         props.rows,       props.bounds.left(),
            props.bounds.bottom(), props.pixelWidth, props.pixelHeight};
}

void alignTimeFormat(int dataset, int geography)
{
    const TimeFormat format = axisOf(VORN_GetGeographyId(dataset)).format();
    const GeoProps target = VORN_GetGeographyProperties(geography);
    if (target.timeFormat == format || datasetOf(dataset)->IsStatic())
        return;
    bool free = target.isStatic;
    for (const int id : datasetIds(geography))
        free = free && datasetOf(id)->IsStatic();
    if (!free)
        fail(QStringLiteral("the times of %1 are of format %2, those of %3 of format %4")
                 .arg(datasetName(dataset), QLatin1String(timeFormatName(format)), target.name,
                      QLatin1String(timeFormatName(target.timeFormat))));
    geographyOf(geography)->SetTimeFormat(format);
}

} // namespace meridor
