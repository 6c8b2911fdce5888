// SPDX-License-Identifier: MIT
/// "The vector dataset's own answer, else an empty one": the road of nearly every operation of
/// MVectorDataSource.
#pragma once
#include "datainterface/MVectorDataSource.h"
#include "sources/askDataset.h"

namespace datainterface {

template <class Call> auto askVector(MVectorDataSource &source, int id, Call call)
{
    auto *dataset = source.GetVectorDataset(id);
    return dataset ? call(*dataset) : decltype(call(*dataset))();
}

template <class Call> auto askVector(const MVectorDataSource &source, int id, Call call)
{
    const auto *dataset = source.GetVectorDataset(id);
    return dataset ? call(*dataset) : decltype(call(*dataset))();
}

} // namespace datainterface
