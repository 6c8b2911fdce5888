// SPDX-License-Identifier: MIT
/// The conversion of a missing flag to the type of a dataset's cells.
#pragma once
#include "datainterface/MissingFlag.h"

namespace datainterface {

/// The flag for cells of the given type and depth. A value of another type is converted: decimals
/// are rounded to the precision of decimal cells, and integers keep their bits, so that all bits
/// set stays all bits set. The result is not set when no cell holds the value.
MissingFlag cellFlag(const MissingFlag &flag, int type, int bitDepth);

} // namespace datainterface
