// SPDX-License-Identifier: MIT
/// Statistics of a grid over the polygons of a geography.
#pragma once
#include <QString>
#include <QVector>
#include <array>
#include "core/export.h"
#include "core/grids/zones.h"
#include "core/project/progress.h"
#include "datainterface/TimeStamp.h"

namespace meridor {

struct ZonesAtTime {
    Interval when;
    QVector<ZoneStatistics> zones; ///< by object
};

struct ZoneStatistic {
    const char *name;
    double ZoneStatistics::*field;
};
/// What is known of a zone, by the names that users write.
MERIDOR_EXPORT const std::array<ZoneStatistic, 6> &zoneStatistics();

/// Raises a Failure or the cancel.
MERIDOR_EXPORT QVector<ZonesAtTime> zonalStatistics(int dataset, int polygons,
                                                    const QVector<Interval> &times,
                                                    const Progress &progress);

/// One of zoneStatistics() as a new dataset of the polygons. Raises a Failure. @return its id
MERIDOR_EXPORT int keepZonal(const QVector<ZonesAtTime> &times, int dataset, int polygons,
                             const QString &name, const QString &statistic);

} // namespace meridor
