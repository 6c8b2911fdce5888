// SPDX-License-Identifier: MIT
/// The lookup of objects by id for all public functions. Every function here calls `call` with the
/// object that the id names and returns its result. It returns `miss`, the caller's own value, for
/// an unknown id and for an object of another kind; nothing is reported.
///
///     data id = geography id << 16 | number      (32 bits; of datasets and weight sets)
#pragma once
#include <QMap>
#include <new>
#include <type_traits>
#include "datainterface/ControllerBase.h"
#include "datainterface/MDataSource.h"
#include "datainterface/MDataset.h"
#include "datainterface/MGeoData.h"
#include "datainterface/MRasterDataset.h"
#include "datainterface/MVectorDataset.h"
#include "frame/frameState.h"

namespace datainterface {

/// The object as a `Kind`; null when it is of another kind or null.
template <class Kind, class Base> Kind *asKind(Base *object)
{
    if constexpr (std::is_same_v<Kind, Base>)
        return object;
    else
        return dynamic_cast<Kind *>(object);
}
/// Datasets are distinguished by GetDatasetKind: a dynamic_cast would be a third of the cost of
/// reading a single value.
template <> inline MVectorDataset *asKind<MVectorDataset, MDataset>(MDataset *dataset)
{
    return dataset && dataset->GetDatasetKind() == MDataset::VectorKind
               ? static_cast<MVectorDataset *>(dataset)
               : nullptr;
}

template <> inline MRasterDataset *asKind<MRasterDataset, MDataset>(MDataset *dataset)
{
    return dataset && dataset->GetDatasetKind() == MDataset::RasterKind
               ? static_cast<MRasterDataset *>(dataset)
               : nullptr;
}

/// The shift keeps the sign, so that a negative id gives a negative geography id.
constexpr int geographyIdOf(int dataId)
{
    return dataId >> 16;
}

/// The geography of the id. A null entry is a miss, too.
template <class Geography = MGeoData, class Result, class Call>
Result onGeography(int geographyId, Result miss, Call call)
{
    const QMap<int, MGeoData *> &geographies = controller()->GetGeoData();
    const auto found = geographies.constFind(geographyId);
    if (found == geographies.constEnd())
        return miss;
    auto *geography = asKind<Geography>(found.value());
    return geography ? call(*geography) : miss;
}

/// The data source of the geography of the id.
template <class Source = MDataSource, class Result, class Call>
Result onGeographySource(int geographyId, Result miss, Call call)
{
    return onGeography(geographyId, miss, [&](MGeoData &geography) {
        auto *source = asKind<Source>(geography.GetDataSource());
        return source ? call(*source) : miss;
    });
}

/// The data source to which a dataset id belongs, whether or not it has the dataset.
template <class Source = MDataSource, class Result, class Call>
Result onSource(int dataId, Result miss, Call call)
{
    return onGeographySource<Source>(geographyIdOf(dataId), miss, call);
}

/// The dataset of the id.
template <class Dataset = MDataset, class Result, class Call>
Result onDataset(int dataId, Result miss, Call call)
{
    return onSource(dataId, miss, [&](MDataSource &source) {
        auto *dataset = asKind<Dataset>(source.GetDataset(dataId));
        return dataset ? call(*dataset) : miss;
    });
}

/// The id that `make` gives; -1 when memory cannot hold what was asked for.
template <class Make> int idWithinMemory(Make make)
{
    try {
        return make();
    } catch (const std::bad_alloc &) {
        return -1;
    }
}

} // namespace datainterface
