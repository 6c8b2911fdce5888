// SPDX-License-Identifier: MIT
/// Calls an operation of a raster dataset by id, with an empty result for an unknown id. Nearly
/// every operation of MRasterDataSource uses it.
#pragma once
#include "datainterface/MRasterDataSource.h"
#include "sources/askDataset.h"

namespace datainterface {

template <class Source, class Call> auto askRaster(Source &source, int id, Call call)
{
    auto *dataset = source.GetRasterDataset(id);
    return dataset ? call(*dataset) : decltype(call(*dataset))();
}

} // namespace datainterface
