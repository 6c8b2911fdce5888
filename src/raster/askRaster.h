// SPDX-License-Identifier: MIT
/// "The raster dataset's own answer, else an empty one": the road of nearly every operation of
/// MRasterDataSource.
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
