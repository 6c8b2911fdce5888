// SPDX-License-Identifier: MIT
/// The call frame of the public functions: the one place that knows how an id finds its object.
/// Each function names its own miss, which stands for an unknown id and for an object of another
/// kind; nothing is reported.
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

/// The object as one of that kind; null for another kind and for null.
template <class Kind, class Base> Kind *asKind(Base *object)
{
    if constexpr (std::is_same_v<Kind, Base>)
        return object;
    else
        return dynamic_cast<Kind *>(object);
}
/// A dataset names its kind. Single values are read through here, and a cast would be a third of
/// their cost.
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

/// Arithmetic: a negative half stays negative.
constexpr int geographyIdOf(int dataId)
{
    return dataId >> 16;
}

/// `call` on the geography of that id; null is a miss too.
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

/// `call` on the data source of a geography.
template <class Source = MDataSource, class Result, class Call>
Result onGeographySource(int geographyId, Result miss, Call call)
{
    return onGeography(geographyId, miss, [&](MGeoData &geography) {
        auto *source = asKind<Source>(geography.GetDataSource());
        return source ? call(*source) : miss;
    });
}

/// `call` on the data source that a dataset id belongs to. Whether it has the dataset is not looked
/// at.
template <class Source = MDataSource, class Result, class Call>
Result onSource(int dataId, Result miss, Call call)
{
    return onGeographySource<Source>(geographyIdOf(dataId), miss, call);
}

/// `call` on the dataset.
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
