// SPDX-License-Identifier: MIT
/// Statistics of a grid over polygons. A cell is weighted with the area that it shares with the
/// polygon.
#pragma once
#include <QMap>
#include "core/export.h"
#include "core/grids/cellShares.h"
#include "core/project/progress.h"

namespace meridor {

struct ZoneStatistics {
    int cells = 0;   ///< number of cells that have a value
    double area = 0; ///< common area of these cells and the zone
    double sum = 0;  ///< sum of value times common area
    double mean = 0;
    double deviation = 0; ///< population standard deviation
    double minimum = 0;
    double maximum = 0;
};

MERIDOR_EXPORT ZoneStatistics statisticsOf(const QVector<CellShare> &shares,
                                           const QVector<double> &values, int columns);

/// The cell shares of the polygons of a vector geography, computed once for each shape.
class MERIDOR_EXPORT Zones {
public:
    Zones(int grid, int polygons);
    /// By object index; empty for an object that does not exist at the time or is outside the grid.
    const QVector<QVector<CellShare>> &at(qint64 time, const Progress &progress);

private:
    int mPolygons;
    CellShares mShares;
    QMap<int, QVector<CellShare>> mOfRecord;
    QVector<QVector<CellShare>> mNow;
};

} // namespace meridor
