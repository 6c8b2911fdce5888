// SPDX-License-Identifier: MIT
/// Statistics of a grid over the polygons of a geography.
#pragma once
#include <QString>
#include <QVector>
#include "datainterface/TimeStamp.h"
#include "core/grids/zones.h"

namespace meridor {

struct ZonesAtTime {
    Interval when;
    QVector<ZoneStatistics> zones; ///< by object
};

/// Raises a Failure or the cancel.
QVector<ZonesAtTime> zonalStatistics(int dataset, int polygons, const QVector<Interval> &times,
                                     const Progress &progress);

/// One statistic ("mean", ...) as a new dataset of the polygons. @return its id
int keepZonal(const QVector<ZonesAtTime> &times, int dataset, int polygons, const QString &name,
              const QString &statistic);

} // namespace meridor
