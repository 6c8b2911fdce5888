// SPDX-License-Identifier: MIT
/// Lookups and conversions that the public functions of datasets share.
#pragma once
#include <QList>
#include <QVector>
#include "api/callFrame.h"
#include "datainterface/MVectorDataSource.h"
#include "datainterface/datum.h"

namespace datainterface {

/// Calls `call` with a vector dataset that has the object; an index out of range is a miss.
template <class Result, class Call>
Result onObject(int dataId, unsigned int object, Result miss, Call call)
{
    return onDataset<MVectorDataset>(dataId, miss, [&](MVectorDataset &dataset) {
        return object < static_cast<unsigned int>(dataset.GetObjectCount()) ? call(dataset) : miss;
    });
}

/// Calls `call` with the source of a dataset that exists.
template <class Result, class Call> Result onValidSource(int dataId, Result miss, Call call)
{
    return onSource(dataId, miss, [&](MDataSource &source) {
        return source.IsDatasetIdValid(dataId) ? call(source) : miss;
    });
}

QVector<Interval> toIntervals(const QList<TimeStamp> &stamps);

/// Converts a value; false for an empty one. An integer keeps its low 32 bits. An unknown type
/// raises "Invalid data type".
bool toDatum(const MDatum &value, datum &result);

} // namespace datainterface
