// SPDX-License-Identifier: MIT
/// The search for a slice by time, which remembers what it found last.
#pragma once
#include "datainterface/MVectorDataset.h"

template <class T>
inline const TimeSliceData<T> *MVectorDataset::sliceAt(int realization, qint64 time) const
{
    const TimeStamp instant(timeOf(time));
    LastSlice<T> &last = std::get<LastSlice<T>>(mLastSlices);
    if (last.slice && last.realization == realization && !(last.stamp < instant)
        && !(instant < last.stamp))
        return last.slice;
    const MVectorDataRealization *found = realizationAt(realization);
    if (!found)
        return nullptr;
    const auto &slices = found->slicesOf<T>();
    const auto slice = slices.constFind(instant);
    if (slice == slices.constEnd())
        return nullptr;
    last = {realization, slice.key(), *slice};
    return *slice;
}
