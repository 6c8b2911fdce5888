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
/// The statistics of a zone by their names in options and results.
MERIDOR_EXPORT const std::array<ZoneStatistic, 6> &zoneStatistics();

/// Raises a Failure of the setting "statistic" for a name that is none of them.
MERIDOR_EXPORT double ZoneStatistics::*zoneStatistic(const QString &name);

/// Statistics of the grids of `dataset` over the polygons at each of the times. Raises a Failure,
/// also on a cancel.
MERIDOR_EXPORT QVector<ZonesAtTime> zonalStatistics(int dataset, int polygons,
                                                    const QVector<Interval> &times,
                                                    const Progress &progress, int realization = 0);

/// Stores one of zoneStatistics() as a dataset of the polygons. Raises a Failure.
/// @return the id of the new dataset.
MERIDOR_EXPORT int keepZonal(const QVector<ZonesAtTime> &times, int dataset, int polygons,
                             const QString &name, const QString &statistic);

} // namespace meridor
