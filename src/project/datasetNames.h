// SPDX-License-Identifier: MIT
/// Display names among the datasets of one geography.
#pragma once
#include <QString>

class MGeoData;

namespace datainterface {

/// `name`, or "name n" with the first n from 2 on that no dataset of the geography shows; `name`
/// without a geography.
QString uniqueDatasetName(const MGeoData *geography, const QString &name);

} // namespace datainterface
