// SPDX-License-Identifier: MIT
#include "datainterface/MRasterDataset.h"
#include <algorithm>
#include <cmath>
#include "Common/detail/failure.h"
#include "cells/cellForms.h"
#include "cells/cellTally.h"
#include "datainterface/HeldGrid.h"
#include "datasets/intervalBreaks.h"
#include "frame/progressSection.h"

using namespace datainterface;

namespace {

/// The key of a value in the map of its type.
template <class T> auto keyOf(T value)
{
    if constexpr (std::is_same_v<T, float>)
        return OrderedFloat(value);
    else if constexpr (std::is_same_v<T, double>)
        return OrderedDouble(value);
    else
        return patternOf(value);
}
/// The value of a key in the map of cells of type T.
template <class T, class Key> T valueOfKey(Key key)
{
    if constexpr (std::is_floating_point_v<T>)
        return key;
    else
        return valueOf<T>(key);
}

/// Calls `visit` with the type as which the values of a dataset are counted.
template <class Visit> bool visitCounted(int type, int bitDepth, Visit visit)
{
    if (BitForm::holds(type, bitDepth)) {
        visit(CellForm<kUnsignedCells, 1, quint8>{});
        return true;
    }
    return visitCellForm(type, bitDepth, visit);
}

template <class T> bool isFiniteCell(T value)
{
    if constexpr (std::is_integral_v<T>)
        return true;
    else
        return std::isfinite(cellToDouble(value));
}

/// Converts a datum to a cell value; false when no cell can hold it.
template <class T> bool cellOf(const MDatum &datum, T &cell)
{
    if constexpr (std::is_integral_v<T>) {
        cell = static_cast<T>(datum.integerValue());
        return datum.type() == MDatum::Integer && static_cast<qint64>(cell) == datum.integerValue();
    } else {
        cell = T(static_cast<float>(datum.toDouble()));
        if constexpr (std::is_same_v<T, double>)
            cell = datum.toDouble();
        return true;
    }
}

ValueRuns mergedRuns(const ValueRuns &sorted)
{
    ValueRuns merged;
    for (const ValueRun &run : sorted) {
        if (merged.empty() || merged.back().value != run.value)
            merged.push_back(run);
        else
            merged.back().count += run.count;
    }
    return merged;
}

template <class T, class Map> void countOne(Map &map, T value, bool add)
{
    const auto key = keyOf(value);
    if (add) {
        ++map[key];
        return;
    }
    const auto found = map.find(key);
    if (found != map.end() && --*found <= 0)
        map.erase(found);
}

} // namespace

template <class T> void MRasterDataset::updateFrequency(T value, bool add)
{
    countOne(mFrequencies.mapOf<T>(), value, add);
}
// Instances for the single values that SetValue counts.
template void MRasterDataset::updateFrequency(half, bool);
template void MRasterDataset::updateFrequency(float, bool);
template void MRasterDataset::updateFrequency(double, bool);
template void MRasterDataset::updateFrequency(qint8, bool);
template void MRasterDataset::updateFrequency(qint16, bool);
template void MRasterDataset::updateFrequency(qint32, bool);
template void MRasterDataset::updateFrequency(qint64, bool);
template void MRasterDataset::updateFrequency(quint8, bool);
template void MRasterDataset::updateFrequency(quint16, bool);
template void MRasterDataset::updateFrequency(quint32, bool);
template void MRasterDataset::updateFrequency(quint64, bool);

bool MRasterDataset::RecalculateFrequencies()
{
    mFrequencies = RealizationRasterDataFrequencies();
    bool isComplete = true;
    visitCounted(mDataType, mBitDepth, [&](auto form) {
        using T = CellOf<decltype(form)>;
        CellTally<T> tally;
        const auto countGrid = [&](const MRasterObservation &grid) {
            const HeldGrid hold(grid);
            const int count = grid.CellCount();
            visitCells(grid, [&](const auto &cells) {
                using Cells = std::decay_t<decltype(cells)>;
                if constexpr (std::is_same_v<ValueOf<Cells>, T>) {
                    const CellTest<Cells> test(mCellFlag);
                    for (int i = 0; i < count; ++i) {
                        const T cell = cells[i];
                        if (!test.isMissing(cell))
                            tally.count(cell);
                    }
                }
            });
        };
        for (const ObservationMap &grids : qAsConst(mRealizations)) {
            for (const MRasterObservation *grid : grids) {
                isComplete = isComplete && !isCanceled();
                if (isComplete)
                    countGrid(*grid);
            }
        }
        tally.finish(mFrequencies.mapOf<T>(), [](T value) { return keyOf(value); });
    });
    return isComplete;
}

QMap<MDatum, int> MRasterDataset::GetDataFrequencies()
{
    QMap<MDatum, int> frequencies;
    visitCounted(mDataType, mBitDepth, [&](auto form) {
        using T = CellOf<decltype(form)>;
        const auto &map = mFrequencies.mapOf<T>();
        for (auto it = map.cbegin(); it != map.cend(); ++it)
            frequencies[cellToDatum(valueOfKey<T>(it.key()))] += it.value();
    });
    return frequencies;
}

int MRasterDataset::UniqueValueCount(bool *capped) const
{
    if (capped)
        *capped = false;
    int count = 0;
    visitCounted(mDataType, mBitDepth,
                 [&](auto form) { count = mFrequencies.mapOf<CellOf<decltype(form)>>().size(); });
    return count;
}

int MRasterDataset::GetDatumFrequency(const MDatum &value) const
{
    int count = 0;
    visitCounted(mDataType, mBitDepth, [&](auto form) {
        using T = CellOf<decltype(form)>;
        T cell{};
        if (cellOf(value, cell))
            count = mFrequencies.mapOf<T>().value(keyOf(cell), 0);
    });
    return count;
}

bool MRasterDataset::HasMissing(int) const
{
    bool isCounted = false;
    if (mCellFlag.type == MissingFlag::None)
        return isCounted;
    visitCellForm(mDataType, mBitDepth, [&](auto form) {
        using T = CellOf<decltype(form)>;
        isCounted = mFrequencies.mapOf<T>().contains(keyOf(mCellFlag.field<T>()));
    });
    return isCounted;
}

bool MRasterDataset::IsValid() const
{
    const bool hasGrid = std::any_of(mRealizations.begin(), mRealizations.end(),
                                     [](const ObservationMap &grids) { return !grids.isEmpty(); });
    bool hasValue = false;
    visitCounted(mDataType, mBitDepth, [&](auto form) {
        using T = CellOf<decltype(form)>;
        const auto &map = mFrequencies.mapOf<T>();
        hasValue = std::any_of(map.keyBegin(), map.keyEnd(),
                               [](auto key) { return isFiniteCell(valueOfKey<T>(key)); });
    });
    return hasGrid && hasValue;
}

/// Every finite value with its count, ascending by value. The keys of signed cells and halves are
/// bit patterns, whose order is another; different integers of 64 bits can become the same double.
ValueRuns MRasterDataset::sortedValues() const
{
    ValueRuns runs;
    visitCounted(mDataType, mBitDepth, [&](auto form) {
        using T = CellOf<decltype(form)>;
        const auto &map = mFrequencies.mapOf<T>();
        for (auto it = map.cbegin(); it != map.cend(); ++it) {
            const T value = valueOfKey<T>(it.key());
            if (isFiniteCell(value) && it.value() > 0)
                runs.push_back({cellToDouble(value), it.value()});
        }
    });
    const auto isBefore = [](const ValueRun &a, const ValueRun &b) { return a.value < b.value; };
    if (!std::is_sorted(runs.begin(), runs.end(), isBefore))
        std::sort(runs.begin(), runs.end(), isBefore);
    return mergedRuns(runs);
}

QList<double> MRasterDataset::GetIntervalBreaks(int, int breakCount,
                                                MDataset::ClassificationType classification,
                                                bool showProgress)
{
    require(IsNumeric(), "Invalid dataset type");
    return intervalBreaks(breakCount, sortedValues(), classification, showProgress);
}

const QMap<quint8, int> *MRasterDataset::GetInt8Frequencies() const
{
    return &mFrequencies.mapOf<quint8>();
}

const QMap<quint16, int> *MRasterDataset::GetInt16Frequencies() const
{
    return &mFrequencies.mapOf<quint16>();
}

const QMap<quint32, int> *MRasterDataset::GetInt32Frequencies() const
{
    return &mFrequencies.mapOf<quint32>();
}

const QMap<quint64, int> *MRasterDataset::GetInt64Frequencies() const
{
    return &mFrequencies.mapOf<quint64>();
}

const QMap<double, int> *MRasterDataset::GetDoubleFrequencies() const
{
    return mDoubleCounts.of(mFrequencies.mapOf<double>());
}

const QMap<float, int> *MRasterDataset::GetFloatFrequencies() const
{
    return mFloatCounts.of(mFrequencies.mapOf<float>());
}

const QMap<quint16, int> *MRasterDataset::GetHalfFloatFrequencies() const
{
    return &mFrequencies.mapOf<half>();
}

void MRasterDataset::UpdateInt8Frequencies(quint8 value, bool add)
{
    updateFrequency(value, add);
}

void MRasterDataset::UpdateInt16Frequencies(quint16 value, bool add)
{
    updateFrequency(value, add);
}

void MRasterDataset::UpdateInt32Frequencies(quint32 value, bool add)
{
    updateFrequency(value, add);
}

void MRasterDataset::UpdateInt64Frequencies(quint64 value, bool add)
{
    updateFrequency(value, add);
}

void MRasterDataset::UpdateDoubleFrequencies(double value, bool add)
{
    updateFrequency(value, add);
}

void MRasterDataset::UpdateFloatFrequencies(float value, bool add)
{
    updateFrequency(value, add);
}

void MRasterDataset::UpdateHalfFloatFrequencies(quint16 value, bool add)
{
    updateFrequency(half::fromBits(value), add);
}
