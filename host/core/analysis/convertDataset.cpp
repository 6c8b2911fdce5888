// SPDX-License-Identifier: MIT
#include "core/analysis/convertDataset.h"
#include <algorithm>
#include <cmath>
#include <limits>
#include "core/project/cancel.h"
#include "core/project/catalog.h"
#include "core/project/edit.h"
#include "core/project/failure.h"
#include "core/project/progress.h"
#include "datainterface/DataAPI.h"
#include "datainterface/DataTypeVisitor.h"
#include "datainterface/GeographyAPI.h"
#include "datainterface/MDatum.h"
#include "datainterface/MVectorData.h"
#include "datainterface/MVectorDataSource.h"
#include "datainterface/TimeAPI.h"

namespace meridor {
namespace {

using Storage = MVectorDataset::StorageType;

/// The number of values kept in memory while slices are converted to series.
constexpr int kValuesInHand = 1 << 20;

/// Removes a new dataset at the end of its scope unless keep() was called.
class NewDataset {
public:
    explicit NewDataset(int id) : mId(id) {}
    ~NewDataset()
    {
        if (mId >= 0)
            VORN_RemoveDataset(mId);
    }
    NewDataset(const NewDataset &) = delete;
    NewDataset &operator=(const NewDataset &) = delete;
    int id() const { return mId; }
    int keep()
    {
        const int id = mId;
        mId = -1;
        return id;
    }

private:
    int mId;
};

MVectorDataSource &sourceOf(int dataset)
{
    auto *vector = dynamic_cast<MVectorData *>(geographyOf(VORN_GetGeographyId(dataset)));
    if (!vector)
        fail(QStringLiteral("%1 is a grid; its cells stay as they are").arg(datasetName(dataset)));
    return *vector->GetVectorDataSource();
}

int withType(int dataset, DataType type, const QString &name, int decimals)
{
    const int id = sourceOf(dataset).ConvertDataset(dataset, name, type, decimals);
    stopIfCancelled();
    if (id < 0)
        fail(QStringLiteral("%1 could not be converted").arg(datasetName(dataset)));
    return id;
}

template <class T> void sliceUp(int from, int to, int realization, const Progress &progress)
{
    QVector<Interval> times;
    VORN_GetAllDatasetTimes(from, realization, times);
    QVector<T> values;
    QSet<int> missing;
    for (int i = 0; i < times.size(); ++i) {
        progress.report(static_cast<int>(100LL * i / times.size()));
        if (VORN_GetDataValues(from, realization, instantOf(times[i]), values, missing)
            && missing.size() < values.size())
            VORN_AddDataValues(to, realization, times[i], values, missing, true, false);
    }
}

/// Converts slices to series in batches of objects: each slice is read once per batch, and the
/// values of one batch are in memory.
template <class T> void stringUp(int from, int to, int realization, const Progress &progress)
{
    QVector<Interval> times;
    VORN_GetTimeSliceDataIntervals(from, realization, times);
    const int objects = VORN_GetGeographyProperties(VORN_GetGeographyId(from)).objectCount;
    const int batch = qMax(1, kValuesInHand / qMax(1, times.size()));
    QVector<T> values;
    QSet<int> missing;
    for (int first = 0; first < objects; first += batch) {
        const int count = qMin(batch, objects - first);
        QVector<QVector<QPair<Interval, T>>> series(count);
        for (const Interval &time : times) {
            progress.report(static_cast<int>(100LL * first / objects));
            if (!VORN_GetDataValues(from, realization, instantOf(time), values, missing))
                continue;
            for (int i = 0; i < count; ++i)
                if (!missing.contains(first + i))
                    series[i].append(qMakePair(time, values[first + i]));
        }
        for (int i = 0; i < count; ++i)
            if (!series[i].isEmpty())
                VORN_AddDataValues(to, realization, static_cast<unsigned int>(first + i), series[i],
                                   true, false);
    }
}

int withStorage(int dataset, Storage storage, const QString &name)
{
    const DatasetProps props = VORN_GetDatasetProperties(dataset);
    const auto type = static_cast<DataType>(props.dataType);
    NewDataset made(
        VORN_NewVectorDataset(VORN_GetGeographyId(dataset), name,
                              storage == MVectorDataset::TimeSlice ? TimeSlice : TimeSeries, type,
                              props.realizationCount, props.path));
    if (made.id() < 0)
        fail(QStringLiteral("dataset %1 could not be made").arg(name));
    const Progress progress("Dataset conversion", "Storing the values anew...");
    for (int realization = 0; realization < props.realizationCount; ++realization) {
        datainterface::visitElement(type, [&](auto element) {
            using T = datainterface::ElementOf<decltype(element)>;
            if (storage == MVectorDataset::TimeSlice)
                sliceUp<T>(dataset, made.id(), realization, progress);
            else
                stringUp<T>(dataset, made.id(), realization, progress);
        });
    }
    VORN_RecalculateDataFrequencies(made.id());
    VORN_AppendToLongDescription(
        made.id(),
        QStringLiteral("Stored as %1 from dataset (\"%2\") on %3\n")
            .arg(QLatin1String(storageName(storage)), datasetName(dataset), VORN_GetDateTime()));
    VORN_NewDatasetCreated(made.id());
    return made.keep();
}

} // namespace

ConversionLoss lossOf(int dataset, DataType type)
{
    ConversionLoss loss;
    MDataset &from = *datasetOf(dataset);
    const auto frequencies = from.GetDataFrequencies();
    for (auto it = frequencies.begin(); it != frequencies.end(); ++it) {
        loss.values += it.value();
        if (type == StringType)
            continue;
        bool isNumber = true;
        const double value =
            from.IsNumeric() ? it.key().toDouble() : it.key().text().toDouble(&isNumber);
        const double whole = std::trunc(value);
        const bool fits =
            whole >= std::numeric_limits<int>::min() && whole <= std::numeric_limits<int>::max();
        if (!isNumber)
            loss.notNumbers += it.value();
        else if (type == IntegerType && !fits)
            loss.outside += it.value();
        else if (type == IntegerType && value != whole)
            loss.fractions += it.value();
    }
    return loss;
}

int convertDataset(int dataset, const Conversion &conversion)
{
    const DatasetProps props = VORN_GetDatasetProperties(dataset);
    sourceOf(dataset); // raises a Failure for a grid
    const bool otherType = conversion.type && *conversion.type != props.dataType;
    const bool otherStorage = conversion.storage && *conversion.storage != props.storageType;
    if (otherStorage && props.isStatic)
        fail(QStringLiteral("%1 is static: it has one slice and no series")
                 .arg(datasetName(dataset)));
    if (!otherType && !otherStorage)
        fail(QStringLiteral("%1 is stored as %2 of %3 values already")
                 .arg(datasetName(dataset),
                      QLatin1String(storageName(static_cast<Storage>(props.storageType))),
                      QLatin1String(typeName(static_cast<DataType>(props.dataType)))));
    if (!otherStorage)
        return withType(dataset, *conversion.type, conversion.name, conversion.decimals);
    if (!otherType)
        return withStorage(dataset, *conversion.storage, conversion.name);
    const NewDataset typed(
        withType(dataset, *conversion.type, conversion.name, conversion.decimals));
    return withStorage(typed.id(), *conversion.storage, conversion.name);
}

int copyDataset(int dataset, const QString &name)
{
    const int geography = VORN_GetGeographyId(dataset);
    requireNewDatasetName(geography, name);
    NewDataset copy(VORN_MigrateDataset(dataset, geography, false));
    if (copy.id() < 0)
        fail(QStringLiteral("%1 could not be copied").arg(datasetName(dataset)));
    renameDataset(copy.id(), name);
    VORN_NewDatasetCreated(copy.id());
    return copy.keep();
}

} // namespace meridor
