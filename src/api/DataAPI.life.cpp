// SPDX-License-Identifier: MIT
// Creates, announces, removes and copies datasets, and computes the values of simulated
// realizations.
#include "datainterface/DataAPI.h"
#include <algorithm>
#include "Common/detail/failure.h"
#include "api/dataFrame.h"
#include "datainterface/HeldGrid.h"
#include "datainterface/MRasterDataSource.h"
#include "datainterface/MVectorData.h"
#include "datainterface/OrderedDouble.h"
#include "datainterface/dataContainer.h"
#include "datasets/datasetCopies.h"
#include "sources/newDatasetGuard.h"

using namespace datainterface;

namespace {

bool isVectorType(DataType type)
{
    return type == DecimalType || type == IntegerType || type == StringType;
}

QMap<int, QList<DataId>> byGeography(const QVector<int> &ids)
{
    QMap<int, QList<DataId>> lists;
    for (int id : ids)
        lists[geographyIdOf(id)].append(DataId(id));
    return lists;
}

// Calls `call` for each geography that exists, in ascending order of ids. @return whether all
// exist.
template <class Call> bool forEachGeography(const QVector<int> &ids, Call call)
{
    const QMap<int, QList<DataId>> lists = byGeography(ids);
    bool areAllThere = true;
    for (auto list = lists.cbegin(); list != lists.cend(); ++list) {
        areAllThere = onGeographySource(list.key(), false,
                                        [&](MDataSource &source) {
                                            call(source, list.value());
                                            return true;
                                        })
                      && areAllThere;
    }
    return areAllThere;
}

template <class T, class Map>
bool copyContainers(const MVectorDataset &from, int realization, Map &map)
{
    if constexpr (std::is_same_v<T, double>)
        return from.CopyDecimalData(realization, map);
    else if constexpr (std::is_same_v<T, int>)
        return from.CopyIntegerData(realization, map);
    else
        return from.CopyStringData(realization, map);
}

template <class T>
bool copyRealization(const MVectorDataset &from, MVectorDataset &to, int realization)
{
    if (from.GetStorageType() == MVectorDataset::TimeSlice) {
        OwnedContainers<MVectorDataset::SliceMap<T>> copies;
        return copyContainers<T>(from, realization, copies.map())
               && copies.handOver(
                   [&](const auto &map) { return to.SetTimeSliceData(realization, map, true); });
    }
    OwnedContainers<MVectorDataset::SeriesMap<T>> copies;
    return copyContainers<T>(from, realization, copies.map())
           && copies.handOver(
               [&](const auto &map) { return to.SetTimeSeriesData(realization, map, true); });
}

bool copyValues(const MVectorDataset &from, MVectorDataset &to)
{
    for (int realization = 0; realization < from.GetRealizationCount(); ++realization) {
        const bool isCopied = visitElement(from.GetDataType(), [&](auto element) {
            return copyRealization<ElementOf<decltype(element)>>(from, to, realization);
        });
        if (!isCopied)
            return false;
    }
    to.RecalculateFrequencies();
    takeOverStatic(to, from);
    return true;
}

int migrateVector(MVectorDataset &dataset, MVectorDataSource &target)
{
    const int newId = target.NewVectorDataset(
        dataset.GetDisplayName(), dataset.GetDataType(), dataset.GetStorageType(),
        dataset.GetRealizationCount(), dataset.GetHierarchyPath());
    NewDatasetGuard guard(target, newId);
    return copyValues(dataset, *target.GetVectorDataset(newId)) ? guard.keep() : -1;
}

bool copyGrids(const MRasterDataset &from, MRasterDataset &to)
{
    for (int realization = 0; realization < from.GetRealizationCount(); ++realization) {
        for (const TimeStamp &stamp : from.GetRasterIntervals(realization)) {
            const MRasterObservation &grid =
                *from.GetConstRasterInfo(realization, stamp.timeInInterval());
            const HeldGrid hold(grid);
            if (!to.AddRasterValues(realization, stamp, grid, true, false))
                return false;
        }
    }
    to.SetMissingFlag(from.GetMissingFlag());
    to.RecalculateFrequencies();
    // A static dataset has its only grid at time 0, where a static copy looks for it.
    if (from.IsStatic())
        to.SetStatic(true);
    return true;
}

int migrateRaster(MRasterDataset &dataset, MRasterDataSource &target)
{
    const int newId = target.NewRasterDataset(
        dataset.GetDisplayName(), dataset.GetDataType(), dataset.GetRealizationCount(),
        dataset.GetRasterBitDepth(), dataset.GetHierarchyPathAsString());
    NewDatasetGuard guard(target, newId);
    return newId != -1 && copyGrids(dataset, *target.GetRasterDataset(newId)) ? guard.keep() : -1;
}

/// Copies a dataset to another source. @return the copy's id; -1 unless the target is of the
/// dataset's kind and has as many objects.
int migrate(MDataset &dataset, MDataSource &target)
{
    if (auto *vector = dynamic_cast<MVectorDataset *>(&dataset)) {
        auto *source = dynamic_cast<MVectorDataSource *>(&target);
        const bool fits =
            source
            && source->GetObjectCount() == static_cast<unsigned int>(vector->GetObjectCount());
        return fits ? migrateVector(*vector, *source) : -1;
    }
    auto *raster = dynamic_cast<MRasterDataset *>(&dataset);
    auto *source = dynamic_cast<MRasterDataSource *>(&target);
    if (!raster || !source)
        return -1;
    unsigned int columns = 0;
    unsigned int rows = 0;
    raster->GetRasterDims(columns, rows);
    return source->GetObjectCount() == columns * rows ? migrateRaster(*raster, *source) : -1;
}

struct RankedValue {
    OrderedDouble value;
    int position;
    bool operator<(const RankedValue &other) const { return value < other.value; }
};

// The values that are not missing, in ascending order; equal values in the order of positions.
QVector<RankedValue> ranked(const VORN_DataContainer &values)
{
    QVector<RankedValue> list;
    for (int i = 0; i < values.count(); ++i)
        if (!values.isMissing(i))
            list.append({values.value(i), i});
    std::stable_sort(list.begin(), list.end());
    return list;
}

bool holdsNormalScores(MDataset &dataset, qint64 t)
{
    const QString key = QStringLiteral("Normal scores");
    if (!dataset.GetMetaData().tagExists(key))
        dataset.SetMetaData(key, static_cast<int>(dataset.IsNormalScoreDataset(t, 0)));
    return dataset.GetMetaData(key).toInt() != 0;
}

} // namespace

int VORN_NewVectorDataset(int geographyId, const QString &name, StorageType storage, DataType type,
                          int realizations, const QString &path)
{
    if (!isVectorType(type) || (storage != TimeSeries && storage != TimeSlice) || realizations < 1)
        return -1;
    return onGeography<MVectorData>(geographyId, -1, [&](const MVectorData &geography) {
        return idWithinMemory([&] {
            return geography.GetVectorDataSource()->NewVectorDataset(
                name, type, static_cast<MVectorDataset::StorageType>(storage), realizations, path);
        });
    });
}

bool VORN_NewDatasetCreated(int id)
{
    return onSource(id, false, [id](MDataSource &source) {
        source.AnnounceNewDataset(id, true);
        return true;
    });
}

bool VORN_NewDatasetsCreated(const QVector<int> &ids)
{
    return forEachGeography(ids, [](MDataSource &source, const QList<DataId> &list) {
        source.AnnounceNewDatasets(list, true);
    });
}

bool VORN_DatasetChanged(int id)
{
    return onSource(id, false, [id](MDataSource &source) {
        source.AnnounceChangedDataset(id);
        return true;
    });
}

bool VORN_DatasetsChanged(const QVector<int> &ids)
{
    return forEachGeography(ids, [](MDataSource &source, const QList<DataId> &list) {
        source.AnnounceChangedDatasets(list);
    });
}

bool VORN_RemoveDataset(int id)
{
    return onSource(id, false, [id](MDataSource &source) { return source.RemoveDataset(id); });
}

bool VORN_RemoveDatasets(const QVector<int> &ids)
{
    for (int geographyId : byGeography(ids).keys())
        require(controller()->GetGeoData().contains(geographyId), "gd");
    return forEachGeography(
        ids, [](MDataSource &source, const QList<DataId> &list) { source.RemoveDatasets(list); });
}

int VORN_MigrateDataset(int id, int targetGeographyId, bool announce)
{
    return onDataset(id, -1, [&](MDataset &dataset) {
        return onGeographySource(targetGeographyId, -1, [&](MDataSource &target) {
            const int newId = migrate(dataset, target);
            if (newId != -1 && announce)
                target.AnnounceNewDataset(newId, false);
            return newId;
        });
    });
}

bool VORN_IsNormalScoreDataset(int id, qint64 t)
{
    return onDataset(id, false,
                     [t](const MDataset &dataset) { return dataset.IsNormalScoreDataset(t, 0); });
}

bool VORN_GetRealizationValues(int id, int realization, qint64 t, const VORN_DataContainer &scores,
                               VORN_DataContainer &result)
{
    return onDataset(id, false, [&](MDataset &dataset) {
        result = VORN_DataContainer(VORN_ConstDataContainer(&dataset, t, realization));
        if (!holdsNormalScores(dataset, t))
            return true;
        result.missingData() += scores.missingData();
        const QVector<RankedValue> sources = ranked(scores);
        const QVector<RankedValue> targets = ranked(result);
        for (int k = 0; k < std::min(sources.size(), targets.size()); ++k)
            result.setValue(targets[k].position, static_cast<double>(sources[k].value));
        return true;
    });
}
