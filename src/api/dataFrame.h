// SPDX-License-Identifier: MIT
/// What the public functions of datasets share beyond the call frame.
#pragma once
#include <QList>
#include <QVector>
#include "datainterface/MVectorDataSource.h"
#include "datainterface/datum.h"
#include "api/callFrame.h"

namespace datainterface {

/// `call` on a vector dataset that has the object; an index out of range is a miss like an unknown
/// id.
template <class Result, class Call>
Result onObject(int dataId, unsigned int object, Result miss, Call call)
{
    return onDataset<MVectorDataset>(dataId, miss, [&](MVectorDataset &dataset) {
        return object < static_cast<unsigned int>(dataset.GetObjectCount()) ? call(dataset) : miss;
    });
}

/// `call` on the source of a dataset that is there.
template <class Result, class Call> Result onValidSource(int dataId, Result miss, Call call)
{
    return onSource(dataId, miss, [&](MDataSource &source) {
        return source.IsDatasetIdValid(dataId) ? call(source) : miss;
    });
}

QVector<Interval> toIntervals(const QList<TimeStamp> &stamps);

/// False for no value; a type that is none raises "Invalid data type". An integer keeps its low 32
/// bits.
bool toDatum(const MDatum &value, datum &result);

} // namespace datainterface
