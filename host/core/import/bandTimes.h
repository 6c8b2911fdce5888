// SPDX-License-Identifier: MIT
/// When the bands of a file hold.
#pragma once
#include "core/export.h"
#include "core/formats/rasterReader.h"
#include "core/import/importOptions.h"
#include "core/project/times.h"

namespace meridor {

struct BandTimes {
    TimeFormat format = TF_Integer;
    Interval hull{0, 0, true, true};
    QVector<Interval> of; ///< by band; none when bands are datasets
};

/// The start of a band is its item `options.start`, else its name when all bands' names are times,
/// else its number; its end is the item `options.end`, or with "next" the start of the following
/// band, else that of the start's span. Of two bands that share one instant the earlier gives way;
/// raises a Failure for more than that and for a text that is no time.
MERIDOR_EXPORT BandTimes bandTimes(const RasterReader &reader, const ImportOptions &options);

} // namespace meridor
