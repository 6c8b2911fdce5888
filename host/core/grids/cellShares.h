// SPDX-License-Identifier: MIT
/// What cells of a grid share with polygons.
#pragma once
#include <QList>
#include <QPointF>
#include <QRectF>
#include <QVector>
#include "core/export.h"

namespace meridor {

struct CellShare {
    unsigned column;
    unsigned row; ///< from the top
    double area;  ///< common area in map units, above 0
};

/// Asks the library's polygon query, on grids of its own beside the one that is asked about. They
/// are there as long as this object.
class MERIDOR_EXPORT CellShares {
public:
    explicit CellShares(int geography);
    ~CellShares();
    CellShares(const CellShares &) = delete;
    CellShares &operator=(const CellShares &) = delete;

    /// Of the even-odd set of the rings, column after column. Empty for one that does not meet the
    /// grid; raises a Failure for one that has no area.
    QVector<CellShare> of(const QList<QVector<QPointF>> &rings);

private:
    int gridFor(int rows);

    int mGeography;
    int mRows;
    int mColumns;
    QRectF mBounds;
    double mPixelHeight;
    int mGrids[2] = {-1, -1};
};

} // namespace meridor
