// SPDX-License-Identifier: MIT
/// Display names among the datasets of one geography.
#pragma once
#include <QString>

namespace datainterface {

/// `name`, or "name n" with the first n from 2 on that no dataset of the geography shows; `name`
/// when the geography is unknown.
QString uniqueDatasetName(int geographyId, const QString &name);

} // namespace datainterface
