// SPDX-License-Identifier: MIT
/// The first step of an import, which leaves the project unchanged: it reads the files, finds the
/// columns, groups rows to objects and determines all times. Most failures are raised here.
#pragma once
#include <functional>
#include "core/export.h"
#include "core/formats/featureTable.h"
#include "core/import/importOptions.h"
#include "core/import/join.h"
#include "core/import/objectRows.h"
#include "core/import/seriesSpec.h"
#include "core/project/notes.h"
#include "core/project/times.h"

namespace meridor {

struct ImportPlan {
    ImportOptions options;
    FeatureTable map;
    FeatureTable observations;
    QVector<SeriesSpec> series;
    QVector<ObservationSpec> observed;
    QVector<int> attributes; ///< columns of the map that become datasets
    int keyColumn = -1;
    int observationKey = -1;
    ObjectRows objects; ///< by index in the geography; the rows of each in order of time

    bool timed = false; ///< false: the geography is static
    TimeAxis axis{TF_Integer};
    Interval hull; ///< hull of all times in the files
    /// The time of a row's existence.
    const Interval &spanOf(int row) const { return timed ? rowSpans[row] : hull; }
    QVector<Interval> rowSpans; ///< by row of the map; empty if the geography is static
    QVector<Unmatched> unmatched;
};

/// Reads the files. Raises a Failure that names the file, the field and the row.
/// @param progress  receives 0 to 100; throws to stop.
MERIDOR_EXPORT ImportPlan makePlan(const ImportOptions &options, const Notes &notes,
                                   const std::function<void(int)> &progress);
/// The same for a map in memory, in place of the one that the options name.
ImportPlan makePlan(const FeatureTable &map, const ImportOptions &options, const Notes &notes);

} // namespace meridor
