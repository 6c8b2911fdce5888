// SPDX-License-Identifier: MIT
/// The times over which a geography has something. The library counts the stamp of what holds for good
/// as well, which is time 0: that of static shapes, and of static datasets among grids that change.
#pragma once
#include <QVector>
#include "core/export.h"
#include "datainterface/TimeStamp.h"

namespace meridor {

/// From the first to the last time of what changes; what the library tells if nothing does.
MERIDOR_EXPORT TimeStamp timeBoundsOf(int geography);

/// The spans in which no object changes; that of timeBoundsOf for a grid.
MERIDOR_EXPORT QVector<Interval> objectTimes(int geography);

} // namespace meridor
