// SPDX-License-Identifier: MIT
#include "core/render/classes.h"
#include <QMap>
#include <algorithm>
#include "core/grids/gridValues.h"
#include "core/grids/valuesAt.h"
#include "core/project/cancel.h"
#include "core/project/catalog.h"
#include "core/project/failure.h"
#include "datainterface/DataAPI.h"
#include "datainterface/HeldGrid.h"
#include "datainterface/MRasterDataset.h"
#include "datainterface/RasterAPI.h"

namespace meridor {
namespace {

/// A temporary dataset, removed at the end of its scope.
class PassingDataset {
public:
    explicit PassingDataset(int id) : mId(id) {}
    ~PassingDataset() { VORN_RemoveDataset(mId); }
    PassingDataset(const PassingDataset &) = delete;
    PassingDataset &operator=(const PassingDataset &) = delete;

private:
    int mId;
};

const QMap<QString, MDataset::ClassificationType> &methods()
{
    static const QMap<QString, MDataset::ClassificationType> map{
        {QStringLiteral("equal"), MDataset::EqualIntervals},
        {QStringLiteral("quantile"), MDataset::Quantiles},
        {QStringLiteral("jenks"), MDataset::Jenks}};
    return map;
}

} // namespace

MDataset::ClassificationType classificationOf(const QString &method)
{
    return methods().value(method, MDataset::Jenks);
}

QStringList classificationNames()
{
    return methods().keys();
}

QVector<double> breaksOfAll(int dataset, MDataset::ClassificationType method, int classes)
{
    // An empty frequency table means that there are no values, and so no classes.
    MDataset *owner = datasetOf(dataset);
    if (rasterOf(dataset) && owner->UniqueValueCount(nullptr) == 0)
        VORN_RecalculateDataFrequencies(dataset); // the import does not count large grids
    stopIfCancelled();
    if (owner->UniqueValueCount(nullptr) == 0)
        return {};
    // Natural breaks need at least one distinct value per class.
    const int wanted =
        method == MDataset::Jenks ? qMin(classes, owner->UniqueValueCount(nullptr)) : classes;
    const QVector<double> breaks = owner->GetIntervalBreaks(0, wanted + 1, method, true).toVector();
    stopIfCancelled();
    return breaks;
}

namespace {

QVector<double> gridBreaksAt(int dataset, qint64 time, MDataset::ClassificationType method,
                             int classes)
{
    const MRasterDataset &raster = *rasterOf(dataset);
    const MRasterObservation *grid = raster.GetConstRasterInfo(0, time);
    if (!grid)
        fail(QStringLiteral("%1 holds no grid at that time").arg(datasetName(dataset)));
    const HeldGrid hold(*grid);
    const int alone =
        VORN_NewRasterDataset(VORN_GetGeographyId(dataset), datasetName(dataset),
                              raster.GetDataType(), 1, raster.GetRasterBitDepth(), QString());
    const PassingDataset passing(alone);
    rasterOf(alone)->SetMissingFlag(raster.GetMissingFlag());
    rasterOf(alone)->AddRasterValues(0, TimeStamp(0, 0, true, true), *grid, true, true);
    return breaksOfAll(alone, method, classes);
}

} // namespace

QVector<double> breaksAt(int dataset, qint64 time, MDataset::ClassificationType method, int classes)
{
    if (rasterOf(dataset))
        return gridBreaksAt(dataset, time, method, classes);
    const ValuesAt values = valuesAt(dataset, time);
    const int alone = VORN_NewVectorDataset(VORN_GetGeographyId(dataset),
                                            datasetName(dataset) + QStringLiteral(" alone"),
                                            TimeSlice, DecimalType, 1, QString());
    const PassingDataset passing(alone);
    VORN_AddDataValues(alone, 0, Interval{time, time, true, true}, values.numbers, values.missing,
                       true, true);
    return breaksOfAll(alone, method, classes);
}

int classOf(double value, const QVector<double> &breaks)
{
    if (breaks.size() < 2 || !(value >= breaks.first() && value <= breaks.last()))
        return -1;
    const auto upper = std::lower_bound(breaks.begin() + 1, breaks.end(), value);
    return static_cast<int>(upper - breaks.begin()) - 1;
}

} // namespace meridor
