// SPDX-License-Identifier: MIT
/// Everything about an import that can be known before the model is touched: files read, columns
/// found, objects grouped, times resolved. A plan that stands is a plan whose geography can be
/// built.
#pragma once
#include <QHash>
#include <functional>
#include "core/export.h"
#include "core/formats/featureTable.h"
#include "core/import/importOptions.h"
#include "core/import/join.h"
#include "core/import/seriesSpec.h"
#include "core/project/notes.h"
#include "core/project/times.h"

namespace meridor {

/// One object: a key and the rows of its shapes in the order of time.
struct ObjectRows {
    QString key;
    QVector<int> rows;
};

struct ImportPlan {
    ImportOptions options;
    FeatureTable map;
    FeatureTable observations;
    QVector<SeriesSpec> series;
    QVector<ObservationSpec> observed;
    QVector<int> attributes; ///< columns of the map that become datasets
    int keyColumn = -1;
    int observationKey = -1;
    QVector<ObjectRows>
        objects; ///< in the order of first appearance: their indices in the geography
    QHash<QString, int> objectOf;

    bool timed = false; ///< false: nothing changes, and there is no time
    TimeAxis axis{TF_Integer};
    Interval hull;              ///< all times that the files name
    QVector<Interval> rowSpans; ///< when each row of the map holds
    QVector<Unmatched> unmatched;
};

/// Reads the files. `progress` is told 0 to 100 and raises to stop.
/// Raises a Failure that names the file, the field and the row.
MERIDOR_EXPORT ImportPlan makePlan(const ImportOptions &options, const Notes &notes,
                                   const std::function<void(int)> &progress);

} // namespace meridor
