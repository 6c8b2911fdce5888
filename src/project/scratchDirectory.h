// SPDX-License-Identifier: MIT
#pragma once
#include <QString>

namespace datainterface {

/// Where the library keeps its scratch files: the directory given to InitializeDataManager, else
/// the platform's cache location.
QString scratchDirectory();

} // namespace datainterface
