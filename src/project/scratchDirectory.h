// SPDX-License-Identifier: MIT
/// Where the library creates its temporary files.
#pragma once
#include <QString>

namespace datainterface {

/// The directory of the library's scratch files: the one given to InitializeDataManager, else the
/// platform's cache location.
QString scratchDirectory();

} // namespace datainterface
