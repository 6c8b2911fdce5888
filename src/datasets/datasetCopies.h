// SPDX-License-Identifier: MIT
/// Functions that all copies of whole datasets use.
#pragma once
#include "datainterface/MVectorDataset.h"
#include "datasets/elementTypes.h"
#include "datasets/ownedContainers.h"

namespace datainterface {

template <class T> using SliceMap = MVectorDataset::SliceMap<T>;
template <class T> using SeriesMap = MVectorDataset::SeriesMap<T>;

template <class T> const SliceMap<T> *slicesOf(const MVectorDataset &dataset, int realization)
{
    if constexpr (std::is_same_v<T, double>)
        return dataset.GetTimeSliceDecimalData(realization);
    else if constexpr (std::is_same_v<T, int>)
        return dataset.GetTimeSliceIntegerData(realization);
    else
        return dataset.GetTimeSliceStringData(realization);
}

template <class T> const SeriesMap<T> *seriesOf(const MVectorDataset &dataset, int realization)
{
    if constexpr (std::is_same_v<T, double>)
        return dataset.GetTimeSeriesDecimalData(realization);
    else if constexpr (std::is_same_v<T, int>)
        return dataset.GetTimeSeriesIntegerData(realization);
    else
        return dataset.GetTimeSeriesStringData(realization);
}

/// A static source has its only slice at time 0, where a static copy reads it.
inline void takeOverStatic(MVectorDataset &target, const MDataset &source)
{
    if (source.IsStatic() && target.GetStorageType() == MVectorDataset::TimeSlice)
        target.SetStatic(true);
}

} // namespace datainterface
