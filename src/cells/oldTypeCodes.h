// SPDX-License-Identifier: MIT
/// The type codes of cells in files of all versions. A dataset and its grids use the same codes.
#pragma once
#include "datainterface/DataType.h"
#include "frame/loadContext.h"

namespace datainterface {

/// Codes are 0 to 3 before 201001, one bit for each type before 306014, and today's from then on. A
/// code that the file's version does not know is returned unchanged.
DataType cellTypeOf(qint32 code, const LoadContext &context);

} // namespace datainterface
