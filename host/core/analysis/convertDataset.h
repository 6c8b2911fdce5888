// SPDX-License-Identifier: MIT
/// Datasets of another type or storage.
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
    int decimals = 6; ///< of numbers that become text
};

/// A new dataset with the values of `dataset`, which stays; all realizations, missing values kept.
/// Raises a Failure, or the cancel, with nothing left behind. @return the new id
MERIDOR_EXPORT int convertDataset(int dataset, const Conversion &conversion);

} // namespace meridor
