// SPDX-License-Identifier: MIT
/// The times of the bands of a raster file.
#pragma once
#include "core/export.h"
#include "core/formats/rasterReader.h"
#include "core/import/importOptions.h"
#include "core/project/times.h"

namespace meridor {

struct BandTimes {
    TimeFormat format = TF_Integer;
    Interval hull{0, 0, true, true};
    QVector<Interval> of; ///< by band; empty if bands are datasets
};

/// The start of a band is its metadata item `options.start`; without that option its name, if the
/// names of all bands are times, else its number. The end is the item `options.end`; the start of
/// the following band if the option is "next"; without the option the end of the start's span. If
/// two bands share only one day or instant, the earlier one ends before it. Raises a Failure if
/// they share more, and for a text that is no time.
MERIDOR_EXPORT BandTimes bandTimes(const RasterReader &reader, const ImportOptions &options);

/// Ends each span at the start of the following one if `untilNext`; else before the following one
/// if they share only one day or instant. Raises a Failure if they share more.
/// @param what  names the spans in the message: "file: bands".
void partSpans(QVector<Interval> &spans, const TimeAxis &axis, bool untilNext, const QString &what);
/// The interval from the first start to the last end.
Interval hullOf(const QVector<Interval> &spans);

} // namespace meridor
