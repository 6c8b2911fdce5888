// SPDX-License-Identifier: MIT
/// Display names that are unique among the datasets of one geography.
#pragma once
#include <QString>

class MGeoData;

namespace datainterface {

/// `name`, or "name n" with the first n from 2 on, so that no dataset of the geography has it as
/// its display name. `name` when `geography` is null.
QString uniqueDatasetName(const MGeoData *geography, const QString &name);

} // namespace datainterface
