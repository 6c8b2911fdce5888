// SPDX-License-Identifier: MIT
/// The visitor of the six maps that hold the containers of a vector dataset.
#pragma once
#include "datainterface/DataTypeVisitor.h"
#include "datainterface/MVectorDataset.h"

namespace datainterface {

/// The label of failures in the stores, which are a part of MVectorDataset in files of their own.
inline constexpr char kDatasetLabel[] = "MVectorDataset";

/// Calls `visit` with the map of a realization that data type and storage type select.
template <class Realization, class Visit>
decltype(auto) visitContainers(Realization &realization, DataType type,
                               MVectorDataset::StorageType storage, Visit &&visit,
                               const char *file = __builtin_FILE(), int line = __builtin_LINE())
{
    return visitElement(
        type,
        [&](auto element) -> decltype(auto) {
            using T = ElementOf<decltype(element)>;
            return storage == MVectorDataset::TimeSlice ? visit(realization.template slicesOf<T>())
                                                        : visit(realization.template seriesOf<T>());
        },
        file, line);
}

} // namespace datainterface
