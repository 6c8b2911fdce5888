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

/// Creates a dataset with the values of `dataset`, of the same type and storage; of a grid, too.
/// Raises a Failure if a dataset has the name.
/// @return the id of the new dataset.
MERIDOR_EXPORT int copyDataset(int dataset, const QString &name);

/// What a conversion to a type does not keep, in numbers of values of all times and realizations.
struct ConversionLoss {
    qint64 values = 0;     ///< of the dataset, missing ones left out
    qint64 notNumbers = 0; ///< texts that become 0
    qint64 fractions = 0;  ///< decimals whose places after the point are cut off
    qint64 outside = 0;    ///< numbers that become the nearest integer of 32 bits
};
MERIDOR_EXPORT ConversionLoss lossOf(int dataset, DataType type);

} // namespace meridor
