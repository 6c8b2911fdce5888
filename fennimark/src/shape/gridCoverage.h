// SPDX-License-Identifier: MIT
/// What a polygon covers of a grid, cell by cell without a test per cell.
#pragma once
#include <QPair>
#include <QVector>
#include "shape/shape.h"

namespace fennimark {

/// Columns count from the left, rows down from the top; the order is column by column.
void containedCenters(const Shape &polygon, const FMGrid &grid, const FMGridWindow &window,
                      QVector<QPair<unsigned int, unsigned int>> &cells);

/// Rows count up from the bottom. The rings bound a valid multipolygon; `reversed` tells of each
/// whether its area lies to the right of its segments.
void cellAreas(const Shape &polygon, const std::vector<bool> &reversed, const FMGrid &grid,
               const FMGridWindow &window, QVector<FMCellArea> &cells);

} // namespace fennimark
