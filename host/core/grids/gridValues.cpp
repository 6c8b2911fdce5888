// SPDX-License-Identifier: MIT
#include "core/grids/gridValues.h"
#include <algorithm>
#include <cmath>
#include <limits>
#include "core/formats/values.h"
#include "core/project/cancel.h"
#include "core/project/catalog.h"
#include "core/project/failure.h"
#include "core/project/projectHost.h"
#include "core/project/text.h"
#include "datainterface/DataAPI.h"
#include "datainterface/GeographyAPI.h"
#include "datainterface/HeldGrid.h"
#include "datainterface/MGeoData.h"
#include "datainterface/MRasterDataSource.h"
#include "datainterface/MRasterDataset.h"
#include "datainterface/RasterAPI.h"

namespace meridor {

namespace {

[[noreturn]] void failNoGrid(int dataset, qint64 time)
{
    fail(QStringLiteral("%1 holds no grid at %2")
             .arg(datasetName(dataset), axisOf(VORN_GetGeographyId(dataset)).show(time)));
}

// Reading one cell in place takes about as long as passing over this many of a grid in memory.
constexpr int kCellsPerRead = 16;

} // namespace

CellReader::CellReader(int dataset, qint64 time, int realization)
    : mDataset(rasterOf(dataset)),
      mGrid(mDataset ? mDataset->GetConstRasterInfo(realization, time) : nullptr)
{
    if (!mGrid)
        failNoGrid(dataset, time);
    mReadsUntilHeld = mGrid->CellCount() / kCellsPerRead;
}

CellReader::~CellReader() = default;

double CellReader::at(unsigned column, unsigned row)
{
    if (!mHold && --mReadsUntilHeld < 0)
        mHold = std::make_unique<const HeldGrid>(*mGrid);
    const int index = static_cast<int>(row) * mGrid->Columns() + static_cast<int>(column);
    double value = 0;
    return mGrid->GetValueAsDecimal(index, value, mDataset->GetCellFlag())
               ? value
               : std::numeric_limits<double>::quiet_NaN();
}

QVector<double> gridValues(int dataset, qint64 time, int realization)
{
    QVector<double> values;
    MissingFlag missing;
    if (!VORN_GetRasterDataAsDecimal(dataset, realization, time, values, missing))
        failNoGrid(dataset, time);
    for (double &value : values)
        if (missing.matches(value))
            value = std::numeric_limits<double>::quiet_NaN();
    return values;
}

void visitCells(int dataset, qint64 time, int realization,
                const std::function<void(int row, int column, double value)> &visit)
{
    constexpr int kRowsBetweenPolls = 16;
    const MRasterDataset &raster = *rasterOf(dataset);
    const MRasterObservation *const grid = raster.GetConstRasterInfo(realization, time);
    if (!grid)
        return;
    const HeldGrid hold(*grid);
    const MissingFlag flag = raster.GetMissingFlag();
    for (int row = 0; row < grid->Rows(); ++row) {
        if (row % kRowsBetweenPolls == 0)
            stopIfCancelled();
        double value = 0;
        for (int column = 0; column < grid->Columns(); ++column)
            if (grid->GetValueAsDecimal(column, row, value, flag) && std::isfinite(value))
                visit(row, column, value);
    }
}

QVector<double> gridSample(int dataset, const QVector<qint64> &times, int realization, int count)
{
    const double cells =
        static_cast<double>(VORN_GetGeographyProperties(VORN_GetGeographyId(dataset)).objectCount)
        * times.size();
    const int distance = std::max(1, static_cast<int>(std::ceil(std::sqrt(cells / count))));
    QVector<double> sample;
    double least = std::numeric_limits<double>::infinity();
    double largest = -least;
    for (const qint64 time : times) {
        if (!rasterOf(dataset)->GetConstRasterInfo(realization, time))
            failNoGrid(dataset, time);
        visitCells(dataset, time, realization, [&](int row, int column, double value) {
            least = std::min(least, value);
            largest = std::max(largest, value);
            if (row % distance == 0 && column % distance == 0)
                sample.append(value);
        });
    }
    if (least <= largest)
        sample << least << largest;
    return sample;
}

QString cellText(int dataset, double value)
{
    const MRasterDataset *raster = rasterOf(dataset);
    if (!raster || raster->GetDataType() != RasterDecimalType || raster->GetRasterBitDepth() > 32)
        return exactNumber(value);
    const auto narrow = static_cast<float>(value);
    for (int digits = 6; digits < 9; ++digits) {
        const QString text = QString::number(value, 'g', digits);
        if (text.toFloat() == narrow)
            return text;
    }
    return QString::number(value, 'g', 9);
}

QVector<double> numbersOf(const QString &text, int count, const QString &option)
{
    QVector<double> numbers;
    for (const QString &part : text.split(QLatin1Char(','))) {
        const auto number = toDecimal(part.toStdString());
        if (number)
            numbers.append(*number);
        if (!number || numbers.size() > count)
            break;
    }
    if (numbers.size() != count || text.count(QLatin1Char(',')) != count - 1)
        failUsage(QStringLiteral("%1 %2: not %3 numbers separated by commas")
                      .arg(option, text, QString::number(count)));
    return numbers;
}

QPair<unsigned, unsigned> findCell(int geography, const QString &text)
{
    const GeoProps props = VORN_GetGeographyProperties(geography);
    unsigned column = 0;
    unsigned row = 0;
    bool isThere = false;
    if (text.startsWith(QLatin1Char('@'))) {
        const auto *source =
            dynamic_cast<const MRasterDataSource *>(geographyOf(geography)->GetDataSource());
        const QVector<double> place = numbersOf(text.mid(1), 2, QStringLiteral("place"));
        isThere = source && source->PointQuery(place[0], place[1], column, row, true);
    } else {
        const QVector<double> cell = numbersOf(text, 2, QStringLiteral("cell"));
        isThere = cell[0] >= 0 && cell[0] < props.columns && cell[1] >= 0 && cell[1] < props.rows;
        column = isThere ? static_cast<unsigned>(cell[0]) : 0;
        row = isThere ? static_cast<unsigned>(cell[1]) : 0;
    }
    if (!isThere)
        fail(QStringLiteral("%1 has no cell %2; it has %3")
                 .arg(geographyName(geography), text, gridText(props)));
    return {column, row};
}

} // namespace meridor
