// SPDX-License-Identifier: MIT
#include "fennimark/FMPolygon.h"
#include <cmath>
#include <limits>
#include "shape/gridCoverage.h"
#include "shape/overlay.h"

using fennimark::Shape;

namespace {

bool isUsable(const FMGrid &grid, const FMGridWindow &window)
{
    const bool finite = std::isfinite(grid.left) && std::isfinite(grid.bottom)
                        && std::isfinite(grid.top) && std::isfinite(grid.cellWidth)
                        && std::isfinite(grid.cellHeight);
    return finite && grid.cellWidth > 0.0 && grid.cellHeight > 0.0
           && window.firstColumn <= window.lastColumn && window.firstRow <= window.lastRow;
}

/// Removes columns outside the bounds from the window, except for one at either end. False when no
/// column is left.
bool narrow(FMGridWindow &window, const FMGrid &grid, const Rect2D &bounds)
{
    const double first = std::floor((bounds.xMin - grid.left) / grid.cellWidth) - 1.0;
    const double last = std::floor((bounds.xMax - grid.left) / grid.cellWidth) + 1.0;
    if (!(first <= window.lastColumn && last >= window.firstColumn))
        return false;
    if (first > window.firstColumn)
        window.firstColumn = static_cast<unsigned int>(first);
    if (last < window.lastColumn)
        window.lastColumn = static_cast<unsigned int>(last);
    return true;
}

/// For each ring: whether the polygon's area is to the right of its segments.
std::vector<bool> reversedRings(const Shape &shape, const fennimark::Nesting &nesting)
{
    std::vector<bool> reversed(shape.partCount());
    for (quint32 part = 0; part < shape.partCount(); ++part) {
        double area = 0.0;
        const quint32 first = shape.partBegin(part);
        const QPointF origin = first < shape.partEnd(part) ? shape.vertex(first) : QPointF();
        shape.visitSegments(first, shape.partEnd(part),
                            [&](quint32, const QPointF &from, const QPointF &to) {
                                area += (from.x() - origin.x()) * (to.y() - origin.y())
                                        - (from.y() - origin.y()) * (to.x() - origin.x());
                                return true;
                            });
        reversed[part] = (area < 0.0) != (nesting.isHole[part] != 0);
    }
    return reversed;
}

/// Draws points uniformly from the covered part of a grid: first a cell with a probability
/// proportional to its covered area, then points in that cell until one is in the polygon.
class CellSampler {
public:
    CellSampler(const FMGrid &grid, const QVector<FMCellArea> &cells, double (*deviate)(void))
        : mGrid(grid), mCells(cells), mDeviate(deviate)
    {
        double sum = 0.0;
        for (const FMCellArea &cell : cells)
            mSums.push_back(sum += cell.area);
    }

    bool draw(const FMPolygon &polygon, QPointF &point) const
    {
        constexpr int kMaxTries = 10000;
        const double at = mDeviate() * mSums.back();
        const auto found = std::upper_bound(mSums.cbegin(), mSums.cend() - 1, at) - mSums.cbegin();
        const FMCellArea &cell = mCells[static_cast<int>(found)];
        for (int i = 0; i < kMaxTries; ++i) {
            const double x = (cell.column + mDeviate()) * mGrid.cellWidth + mGrid.left;
            const double y = (cell.row + mDeviate()) * mGrid.cellHeight + mGrid.bottom;
            if (polygon.ContainsPoint(x, y)) {
                point = QPointF(x, y);
                return true;
            }
        }
        return false;
    }

private:
    const FMGrid &mGrid;
    const QVector<FMCellArea> &mCells;
    double (*const mDeviate)(void);
    std::vector<double> mSums;
};

} // namespace

void FMPolygon::ContainedCenters(const FMGrid &grid, const FMGridWindow &window,
                                 QVector<QPair<unsigned int, unsigned int>> &cells) const
{
    cells.clear();
    const Shape shape(*this);
    FMGridWindow within = window;
    if (!shape.isEmpty() && isUsable(grid, window) && narrow(within, grid, shape.bounds()))
        fennimark::containedCenters(shape, grid, within, cells);
}

void FMPolygon::CellAreas(const FMGrid &grid, const FMGridWindow &window,
                          QVector<FMCellArea> &cells) const
{
    cells.clear();
    if (!IsSimple()) {
        if (const auto whole = fennimark::fromGeometry(fennimark::repaired(*this).get()))
            whole->CellAreas(grid, window, cells);
        return;
    }
    const Shape shape(*this);
    FMGridWindow within = window;
    if (isUsable(grid, window) && narrow(within, grid, shape.bounds()))
        fennimark::cellAreas(shape, reversedRings(shape, fennimark::nestingOf(*this)), grid, within,
                             cells);
}

QVector<QPointF> FMPolygon::GetRandomPoints(double (*deviate)(void), int count) const
{
    // The capacity of one vector; larger counts are refused at once.
    constexpr int kMostPoints = (std::numeric_limits<int>::max() - 64) / int(sizeof(QPointF));
    QVector<QPointF> points;
    const Rect2D bounds = GetBounds();
    const Shape shape(*this);
    const unsigned int side =
        shape.vertexCount() < 64 ? 16 : (shape.vertexCount() < 1024 ? 32 : 64);
    const FMGrid grid{bounds.xMin, bounds.yMin, bounds.yMax, (bounds.xMax - bounds.xMin) / side,
                      (bounds.yMax - bounds.yMin) / side};
    if (!deviate || count < 1 || count > kMostPoints)
        return points;
    QVector<FMCellArea> cells;
    CellAreas(grid, {0, 0, side - 1, side - 1}, cells);
    if (cells.isEmpty())
        return points;
    const CellSampler sampler(grid, cells, deviate);
    QPointF point;
    while (points.size() < count && sampler.draw(*this, point))
        points.append(point);
    return points;
}
