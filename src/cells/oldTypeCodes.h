// SPDX-License-Identifier: MIT
/// The type codes of cells in files of every age: a dataset and its grids carry the same.
#pragma once
#include "datainterface/DataType.h"
#include "frame/loadContext.h"

namespace datainterface {

/// 0 to 3 before 201001, one bit a type before 306014, today's from then on. A code that is none of
/// its age stands as it is.
DataType cellTypeOf(qint32 code, const LoadContext &context);

} // namespace datainterface
