// SPDX-License-Identifier: MIT
/// Statistics of a grid over polygons: each cell weighs as much as the area it shares with the
/// polygon.
#pragma once
#include <QMap>
#include "core/export.h"
#include "core/grids/cellShares.h"
#include "core/project/progress.h"

namespace meridor {

struct ZoneStatistics {
    int cells = 0;   ///< that have a value
    double area = 0; ///< of them within the zone
    double sum = 0;  ///< of value times area
    double mean = 0;
    double deviation = 0; ///< of the whole, not of a sample
    double minimum = 0;
    double maximum = 0;
};

MERIDOR_EXPORT ZoneStatistics statisticsOf(const QVector<CellShare> &shares,
                                           const QVector<double> &values, int columns);

/// The cells of polygons of a vector geography, found once for each shape.
class MERIDOR_EXPORT Zones {
public:
    Zones(int grid, int polygons);
    /// By object; none for one that is not there at the time or lies beside the grid.
    const QVector<QVector<CellShare>> &at(qint64 time, const Progress &progress);

private:
    int mPolygons;
    CellShares mShares;
    QMap<int, QVector<CellShare>> mOfRecord;
    QVector<QVector<CellShare>> mNow;
};

} // namespace meridor
