// SPDX-License-Identifier: MIT
/// Reads one field of the statistics of a dataset, if the field is valid.
#pragma once
#include "datainterface/MDataSource.h"
#include "sources/askDataset.h"

namespace datainterface {

/// At one time. False, with `value` unchanged, when the dataset does not exist or has no such
/// statistics.
template <class Value>
bool askStatistics(const MDataSource &source, int id, int realization, qint64 t,
                   Value DataSetStats::*field, Value &value)
{
    return ask(source, id, false, [&](const MDataset &dataset) {
        DataSetStats stats;
        if (!dataset.GetDataSetStats(realization, t, stats) || !stats.meanValid)
            return false;
        value = stats.*field;
        return true;
    });
}

/// Over all times.
template <class Value>
bool askGlobalStatistics(const MDataSource &source, int id, int realization,
                         Value DataSetStats::*field, Value &value)
{
    return ask(source, id, false, [&](const MDataset &dataset) {
        DataSetStats stats;
        if (!dataset.GetGlobalDataSetStats(realization, stats) || !stats.meanValid)
            return false;
        value = stats.*field;
        return true;
    });
}

/// The hull of the time bounds of all datasets; TimeStamp::Invalid without data.
template <class Datasets> TimeStamp hullOf(const Datasets &datasets)
{
    TimeStamp hull = TimeStamp::Invalid;
    for (const MDataset *dataset : datasets) {
        TimeStamp bounds;
        if (dataset->GetTimeBounds(bounds))
            hull += bounds;
    }
    return hull;
}

} // namespace datainterface
