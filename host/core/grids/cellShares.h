// SPDX-License-Identifier: MIT
/// The areas that cells of a grid have in common with rectangles and polygons.
#pragma once
#include <QList>
#include <QPointF>
#include <QRectF>
#include <QVector>
#include "core/export.h"
#include "datainterface/RasterAPI.h"

namespace meridor {

struct CellShare {
    unsigned column;
    unsigned row; ///< from the top
    double area;  ///< common area in map units, above 0
};

/// The cells that share area with a rectangle, row by row. The library's query also gives cells that
/// only touch it on one side.
MERIDOR_EXPORT QVector<CellShare> sharesWithRect(int geography, const QRectF &rect);

/// The cells whose centres are in a rectangle or on its boundary, row by row. The library's query
/// rounds the limits, so that it gives up to one row and column too many or too few.
MERIDOR_EXPORT RasterPixels centersInRect(int geography, const QRectF &rect);

/// Computes shares with the library's polygon query, on up to two auxiliary grid geographies, which
/// exist as long as this object (see cellShares.cpp).
class MERIDOR_EXPORT CellShares {
public:
    explicit CellShares(int geography);
    ~CellShares();
    CellShares(const CellShares &) = delete;
    CellShares &operator=(const CellShares &) = delete;

    /// The cells that share area with the rings (even-odd rule), column by column. Empty if the
    /// rings do not meet the grid; raises a Failure if they have no area.
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
