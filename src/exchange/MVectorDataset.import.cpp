// SPDX-License-Identifier: MIT
// Copies the values of another dataset through a map that gives for each object of this dataset an
// object, or a cell, of the source. An object without an entry, or whose entry does not exist in
// the source, is missing.
#include "datainterface/MVectorDataset.h"
#include <algorithm>
#include <cmath>
#include <memory>
#include <vector>
#include "Common/detail/failure.h"
#include "cells/cellForms.h"
#include "datainterface/HeldGrid.h"
#include "datainterface/MRasterDataset.h"
#include "datasets/dataContainer.elements.h"
#include "datasets/datasetCopies.h"
#include "time/calendar.h"

using namespace datainterface;

namespace {

// The number of series that are built in one pass over the grids.
constexpr int kObjectsPerPass = 1 << 16;

template <class T>
std::unique_ptr<TimeSliceData<T>> importedSlice(const TimeSliceData<T> &slice,
                                                const QVector<int> &objectMap, int objectCount,
                                                int sourceCount)
{
    const CheckedOut<TimeSliceData<T>> hold(slice);
    const T *from = slice.Data();
    const QSet<int> &holes = slice.MissingIds();
    const int count = std::min(slice.GetCount(), sourceCount);
    QVector<T> values(objectCount);
    T *to = values.data();
    QSet<int> missing;
    for (int object = 0; object < objectCount; ++object) {
        const int source = objectMap.value(object, -1);
        if (source < 0 || source >= count || (!holes.isEmpty() && holes.contains(source)))
            missing.insert(object);
        else
            to[object] = from[source];
    }
    return std::make_unique<TimeSliceData<T>>(values, missing);
}

template <class T>
bool importRealization(MVectorDataset &target, const MVectorDataset &source, int realization,
                       const QVector<int> &objectMap)
{
    if (source.GetStorageType() == MVectorDataset::TimeSlice) {
        const SliceMap<T> &slices = *slicesOf<T>(source, realization);
        OwnedContainers<SliceMap<T>> imported;
        for (auto slice = slices.cbegin(); slice != slices.cend(); ++slice)
            imported.insert(slice.key(),
                            importedSlice(*slice.value(), objectMap, target.GetObjectCount(),
                                          source.GetObjectCount()));
        return imported.handOver([&](const SliceMap<T> &map) {
            return target.SetTimeSliceData(realization, map, true);
        });
    }
    const SeriesMap<T> &series = *seriesOf<T>(source, realization);
    OwnedContainers<SeriesMap<T>> imported;
    for (int object = 0; object < std::min(objectMap.size(), target.GetObjectCount()); ++object) {
        // A source that was resized keeps the series of the objects that were cut off.
        const TimeSeriesData<T> *one = objectMap[object] < source.GetObjectCount()
                                           ? series.value(objectMap[object], nullptr)
                                           : nullptr;
        if (one)
            imported.insert(object, std::make_unique<TimeSeriesData<T>>(*one));
    }
    return imported.handOver(
        [&](const SeriesMap<T> &map) { return target.SetTimeSeriesData(realization, map, true); });
}

// Converts a cell to a value of a vector dataset; false for a number that is not finite, which is
// missing there.
template <class T, class Cell> bool cellValue(Cell cell, T &value)
{
    if (!std::isfinite(cellToDouble(cell)))
        return false;
    if constexpr (std::is_same_v<T, double>)
        value = cellToDouble(cell);
    else if constexpr (std::is_same_v<T, int>)
        value = integerFrom<int>(cellToDouble(cell));
    else
        value = textOf(cell);
    return true;
}

// Calls `take(object, value)` for each object in [first, last) that has a value in the grid.
template <class T, class Take>
void readCells(const MRasterObservation &grid, const MissingFlag &flag,
               const QVector<int> &objectMap, int first, int last, Take take)
{
    const HeldGrid hold(grid);
    const bool isKnown = visitCells(grid, [&](const auto &cells) {
        const CellTest<std::decay_t<decltype(cells)>> test(flag);
        for (int object = first; object < last; ++object) {
            const int from = objectMap.value(object, -1);
            T value{};
            if (from >= 0 && from < grid.CellCount() && !test.isMissing(cells[from])
                && cellValue(cells[from], value))
                take(object, value);
        }
    });
    require(isKnown, "Invalid data type");
}

template <class T>
std::unique_ptr<TimeSliceData<T>> sliceOfCells(const MRasterObservation &grid,
                                               const MissingFlag &flag,
                                               const QVector<int> &objectMap, int objectCount)
{
    QVector<T> values(objectCount);
    QVector<bool> isPresent(objectCount);
    readCells<T>(grid, flag, objectMap, 0, objectCount, [&](int object, const T &value) {
        values[object] = value;
        isPresent[object] = true;
    });
    QSet<int> missing;
    for (int object = 0; object < objectCount; ++object)
        if (!isPresent[object])
            missing.insert(object);
    return std::make_unique<TimeSliceData<T>>(values, missing);
}

template <class T>
bool importSlices(MVectorDataset &target, const MRasterDataset &source, int realization,
                  const QVector<int> &objectMap)
{
    OwnedContainers<SliceMap<T>> imported;
    for (const TimeStamp &stamp : source.GetRasterIntervals(realization)) {
        const MRasterObservation &grid =
            *source.GetConstRasterInfo(realization, stamp.timeInInterval());
        imported.insert(
            stamp, sliceOfCells<T>(grid, source.GetCellFlag(), objectMap, target.GetObjectCount()));
    }
    return imported.handOver(
        [&](const SliceMap<T> &map) { return target.SetTimeSliceData(realization, map, true); });
}

template <class T>
bool importSeries(MVectorDataset &target, const MRasterDataset &source, int realization,
                  const QVector<int> &objectMap)
{
    OwnedContainers<SeriesMap<T>> imported;
    for (int first = 0; first < target.GetObjectCount(); first += kObjectsPerPass) {
        const int last = first + std::min(kObjectsPerPass, target.GetObjectCount() - first);
        std::vector<QVector<TimeSeriesEntry<T>>> histories(static_cast<std::size_t>(last - first));
        for (const TimeStamp &stamp : source.GetRasterIntervals(realization)) {
            const MRasterObservation &grid =
                *source.GetConstRasterInfo(realization, stamp.timeInInterval());
            readCells<T>(
                grid, source.GetCellFlag(), objectMap, first, last,
                [&](int object, const T &value) {
                    histories[static_cast<std::size_t>(object - first)].append({stamp, value});
                });
        }
        for (int object = first; object < last; ++object) {
            const auto &history = histories[static_cast<std::size_t>(object - first)];
            if (!history.isEmpty())
                imported.insert(object, std::make_unique<TimeSeriesData<T>>(history));
        }
    }
    return imported.handOver(
        [&](const SeriesMap<T> &map) { return target.SetTimeSeriesData(realization, map, true); });
}

template <class T>
bool importRealization(MVectorDataset &target, const MRasterDataset &source, int realization,
                       const QVector<int> &objectMap)
{
    return target.GetStorageType() == MVectorDataset::TimeSlice
               ? importSlices<T>(target, source, realization, objectMap)
               : importSeries<T>(target, source, realization, objectMap);
}

// Values of a vector dataset are copied unchanged; cells are converted to the type of the target.
template <class Source>
bool importAll(MVectorDataset &target, const Source &source, DataType type,
               const QVector<int> &objectMap)
{
    for (int realization = 0; realization < source.GetRealizationCount(); ++realization) {
        const bool isDone = visitElement(type, [&](auto element) {
            return importRealization<ElementOf<decltype(element)>>(target, source, realization,
                                                                   objectMap);
        });
        if (!isDone)
            return false;
    }
    target.RecalculateFrequencies();
    takeOverStatic(target, source);
    return true;
}

} // namespace

bool MVectorDataset::ImportDataset(const MDataset *source, const QVector<int> &objectMap)
{
    const auto *vector = dynamic_cast<const MVectorDataset *>(source);
    const auto *raster = dynamic_cast<const MRasterDataset *>(source);
    require(vector || raster, "Invalid data type");
    if (vector ? !importAll(*this, *vector, vector->GetDataType(), objectMap)
               : !importAll(*this, *raster, GetDataType(), objectMap))
        return false;
    const QString name = source->GetMetaData(QStringLiteral("Name")).toString();
    AddToLongDescription(
        QStringLiteral("Subsetted from dataset (\"%1\") on %2\n").arg(name, presentMoment()));
    return true;
}
