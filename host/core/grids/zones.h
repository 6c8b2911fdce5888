// SPDX-License-Identifier: MIT
/// Statistics of a grid over polygons. A cell is weighted with the area that it shares with the
/// polygon.
#pragma once
#include <QMap>
#include <functional>
#include "core/export.h"
#include "core/grids/cellShares.h"
#include "core/project/progress.h"

class MVectorData;

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

/// `values` are those of the cells in the order of the shares; NaN for a missing cell.
MERIDOR_EXPORT ZoneStatistics statisticsOf(const QVector<CellShare> &shares,
                                           const QVector<double> &values);

/// The cell shares of the polygons of a vector geography. Those of each shape are computed once if
/// they are few enough to be kept, and otherwise for each time anew.
class MERIDOR_EXPORT Zones {
public:
    Zones(int grid, int polygons);
    int count() const { return mCount; }
    /// Calls `visit` with the index of each object that exists at the time and its shares, which are
    /// empty outside the grid. Raises a Failure on a cancel.
    void each(qint64 time, const Progress &progress,
              const std::function<void(int, const QVector<CellShare> &)> &visit);

private:
    const QVector<CellShare> &sharesOf(const MVectorData &geography, int object, qint64 when);

    int mPolygons;
    int mCount;
    CellShares mShares;
    QMap<int, QVector<CellShare>> mKept; ///< by record
    qint64 mKeptCells = 0;
    QVector<CellShare> mLast; ///< shares that are not kept
};

} // namespace meridor
