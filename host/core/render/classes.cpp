// SPDX-License-Identifier: MIT
#include "core/render/classes.h"
#include <QMap>
#include <algorithm>
#include <limits>
#include "core/grids/gridValues.h"
#include "core/grids/valuesAt.h"
#include "core/project/cancel.h"
#include "core/project/catalog.h"
#include "core/project/failure.h"
#include "core/project/projectHost.h"
#include "datainterface/DataAPI.h"
#include "datainterface/GeographyAPI.h"
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
    int id() const { return mId; }
    PassingDataset(const PassingDataset &) = delete;
    PassingDataset &operator=(const PassingDataset &) = delete;

private:
    int mId;
};

/// A temporary geography, removed at the end of its scope.
class PassingGeography {
public:
    explicit PassingGeography(int id) : mId(id) {}
    ~PassingGeography()
    {
        if (mId >= 0)
            controller().RemoveGeography(mId);
    }
    int id() const { return mId; }
    PassingGeography(const PassingGeography &) = delete;
    PassingGeography &operator=(const PassingGeography &) = delete;

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

bool isLargeGrid(int dataset, int times)
{
    // A table of so many different values takes about 250 MB.
    constexpr double kMostCounted = 4e6;
    const GeoProps props = VORN_GetGeographyProperties(VORN_GetGeographyId(dataset));
    return rasterOf(dataset) && static_cast<double>(props.objectCount) * times > kMostCounted;
}

namespace {

/// Whether the type of a grid's cells has more values than are quickly counted.
bool hasManyValues(int dataset)
{
    return rasterOf(dataset)->GetRasterBitDepth() > 16;
}

/// Of the frequency table, which counts the values of all realizations.
QVector<double> breaksOfTable(int dataset, MDataset::ClassificationType method, int classes)
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

/// Of values that belong to no dataset.
QVector<double> breaksOfSample(const QVector<double> &values, MDataset::ClassificationType method,
                               int classes)
{
    if (values.isEmpty())
        return {};
    const Interval always{0, 0, true, true};
    const PassingGeography row(VORN_CreateNewRasterGeography(
        QStringLiteral("sample"), 1, static_cast<unsigned>(values.size()),
        QRectF(0, 0, values.size(), 1), always, TF_Integer, QString(), QString()));
    if (row.id() < 0)
        fail(QStringLiteral("there is no room for a sample of the values"));
    const PassingDataset alone(VORN_NewRasterDataset(row.id(), QStringLiteral("sample"),
                                                     RasterDecimalType, 1, 64, QString()));
    constexpr double kNone = -std::numeric_limits<double>::infinity(); // the values are finite
    VORN_AddRasterValues(alone.id(), 0, always, values, kNone, true, true);
    return breaksOfTable(alone.id(), method, classes);
}

/// A dataset of the same type that holds the grids of some times.
int gridsAt(int dataset, const QVector<qint64> &times, int realization)
{
    const MRasterDataset &raster = *rasterOf(dataset);
    const int alone =
        VORN_NewRasterDataset(VORN_GetGeographyId(dataset), datasetName(dataset),
                              raster.GetDataType(), 1, raster.GetRasterBitDepth(), QString());
    rasterOf(alone)->SetMissingFlag(raster.GetMissingFlag());
    for (int i = 0; i < times.size(); ++i) {
        const MRasterObservation *grid = raster.GetConstRasterInfo(realization, times[i]);
        if (!grid) {
            VORN_RemoveDataset(alone);
            fail(QStringLiteral("%1 holds no grid at %2")
                     .arg(datasetName(dataset),
                          axisOf(VORN_GetGeographyId(dataset)).show(times[i])));
        }
        const HeldGrid hold(*grid);
        rasterOf(alone)->AddRasterValues(0, TimeStamp(i, i, true, true), *grid, true, true);
    }
    return alone;
}

/// The same for the values of the objects that exist; for those of all objects if they hold for good
/// and all times are asked for.
int objectsAlone(int dataset, const QVector<qint64> &times, int realization, bool all)
{
    const int geography = VORN_GetGeographyId(dataset);
    const int alone =
        VORN_NewVectorDataset(geography, datasetName(dataset) + QStringLiteral(" alone"), TimeSlice,
                              DecimalType, 1, QString());
    for (const qint64 time : times) {
        const ValuesAt values = all && datasetOf(dataset)->IsStatic()
                                    ? valuesAt(dataset, time, realization)
                                    : existingValuesAt(dataset, time, realization);
        VORN_AddDataValues(alone, 0, Interval{time, time, true, true}, values.numbers,
                           values.missing, true, true);
    }
    return alone;
}

} // namespace

QVector<double> breaksOfAll(int dataset, MDataset::ClassificationType method, int classes,
                            int realization)
{
    const bool isAlone = VORN_GetDatasetProperties(dataset).realizationCount <= 1;
    if (isAlone && (!rasterOf(dataset) || datasetOf(dataset)->UniqueValueCount(nullptr) > 0))
        return breaksOfTable(dataset, method, classes);
    QVector<qint64> times;
    for (const Interval &when : dataTimes(dataset, realization))
        times.append(instantOf(when));
    if (isLargeGrid(dataset, times.size()) && hasManyValues(dataset))
        return breaksOfSample(gridSample(dataset, times, realization, kSampledCells), method,
                              classes);
    if (isAlone)
        return breaksOfTable(dataset, method, classes);
    const PassingDataset alone(rasterOf(dataset) ? gridsAt(dataset, times, realization)
                                                 : objectsAlone(dataset, times, realization, true));
    return breaksOfTable(alone.id(), method, classes);
}

ValuesAt existingValuesAt(int dataset, qint64 time, int realization)
{
    const int geography = VORN_GetGeographyId(dataset);
    ValuesAt values = valuesAt(dataset, time, realization);
    if (rasterOf(dataset))
        return values;
    const QVector<int> existing = objectsAt(geography, shapeTime(geography, time));
    auto next = existing.begin();
    const int count = values.numeric ? values.numbers.size() : values.texts.size();
    for (int i = 0; i < count; ++i) {
        if (next != existing.end() && *next == i)
            ++next;
        else
            values.missing.insert(i);
    }
    return values;
}

QVector<double> breaksAt(int dataset, const QVector<qint64> &times,
                         MDataset::ClassificationType method, int classes, int realization)
{
    if (isLargeGrid(dataset, times.size()) && hasManyValues(dataset))
        return breaksOfSample(gridSample(dataset, times, realization, kSampledCells), method,
                              classes);
    const PassingDataset alone(rasterOf(dataset)
                                   ? gridsAt(dataset, times, realization)
                                   : objectsAlone(dataset, times, realization, false));
    return breaksOfTable(alone.id(), method, classes);
}

QVector<double> breaksAt(int dataset, qint64 time, MDataset::ClassificationType method, int classes)
{
    return breaksAt(dataset, QVector<qint64>{time}, method, classes);
}

double quantileOf(const QVector<double> &sorted, double share)
{
    if (sorted.isEmpty())
        return std::numeric_limits<double>::quiet_NaN();
    const double rank = share * (sorted.size() - 1);
    const int low = static_cast<int>(rank);
    const int high = std::min(low + 1, static_cast<int>(sorted.size()) - 1);
    return sorted[low] + (rank - low) * (sorted[high] - sorted[low]);
}

int classOf(double value, const QVector<double> &breaks)
{
    if (breaks.size() < 2 || !(value >= breaks.first() && value <= breaks.last()))
        return -1;
    const auto upper = std::lower_bound(breaks.begin() + 1, breaks.end(), value);
    return static_cast<int>(upper - breaks.begin()) - 1;
}

} // namespace meridor
