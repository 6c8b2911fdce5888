// SPDX-License-Identifier: MIT
/// A missing flag in the width of a dataset's cells.
#pragma once
#include "datainterface/MissingFlag.h"

namespace datainterface {

/// `flag` itself where it has the cells' width. One of another width becomes the cell that holds
/// the same value (decimals rounded; integers by their bits, so that all bits set is all bits set);
/// not set when there is no such cell.
MissingFlag cellFlag(const MissingFlag &flag, int type, int bitDepth);

} // namespace datainterface
