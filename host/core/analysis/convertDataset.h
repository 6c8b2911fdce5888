// SPDX-License-Identifier: MIT
/// Conversion of datasets to another type or storage.
#pragma once
#include <QString>
#include <optional>
#include "core/export.h"
#include "datainterface/DataType.h"
#include "datainterface/MVectorDataset.h"

namespace meridor {

struct Conversion {
    QString name; ///< of the new dataset
    std::optional<DataType> type;
    std::optional<MVectorDataset::StorageType> storage;
    int decimals = 6; ///< decimal places of numbers that become texts
};

/// Creates a dataset with the values of `dataset`, which is unchanged. All realizations are
/// converted, missing values stay missing. Raises a Failure, also on a cancel; no dataset is added
/// then.
/// @return the id of the new dataset.
MERIDOR_EXPORT int convertDataset(int dataset, const Conversion &conversion);

} // namespace meridor
