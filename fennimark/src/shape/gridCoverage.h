// SPDX-License-Identifier: MIT
/// The cells of a grid that a polygon covers, without a separate test of each cell.
#pragma once
#include <QPair>
#include <QVector>
#include "shape/shape.h"

namespace fennimark {

/// The cells whose centres are in the polygon, column after column. Columns count from the left,
/// rows down from the top.
void containedCenters(const Shape &polygon, const FMGrid &grid, const FMGridWindow &window,
                      QVector<QPair<unsigned int, unsigned int>> &cells);

/// The cells that share area with the polygon, column after column. Rows count up from the bottom.
/// The rings must form a valid multipolygon; reversed[i] is true when the area is to the right of
/// the segments of ring i.
void cellAreas(const Shape &polygon, const std::vector<bool> &reversed, const FMGrid &grid,
               const FMGridWindow &window, QVector<FMCellArea> &cells);

} // namespace fennimark
