// SPDX-License-Identifier: MIT
/// Calls an operation of a vector dataset by id, with an empty result for an unknown id. Nearly
/// every operation of MVectorDataSource uses it.
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
