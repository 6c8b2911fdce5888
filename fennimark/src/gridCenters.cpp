// SPDX-License-Identifier: MIT
// Cell centres in a polygon: each column of centres is a vertical line, its crossings with the rings are sorted, and the
// centres between odd and even crossings are inside. Centres so near a crossing that rounding could decide, and those
// on vertices or vertical edges, are put to the exact point test; so the answer is that test's for every centre.
#include <cmath>
#include "gridCoverage.h"
#include "relate.h"

namespace fennimark {
namespace {

constexpr double kNear = 1.0e-7; // cells
constexpr double kRounding = 16.0 * 2.220446049250313e-16;

class CenterWalk {
public:
    CenterWalk(const Shape &polygon, const FMGrid &grid, const FMGridWindow &window)
        : mPolygon(polygon), mGrid(grid), mWindow(window), mColumns(window.lastColumn - window.firstColumn + 1U)
    {
        const Rect2D &bounds = polygon.bounds();
        const double reach = std::max({std::abs(bounds.yMin), std::abs(bounds.yMax), std::abs(grid.top)});
        mNear = kNear + kRounding * reach / grid.cellHeight;
    }

    void run(QVector<QPair<unsigned int, unsigned int>> &cells)
    {
        mPolygon.visitSegments(0, mPolygon.vertexCount(), [this](quint32, const QPointF &a, const QPointF &b) {
            addEdge(a, b);
            return true;
        });
        for (std::size_t i = 0; i < mColumns.size(); ++i)
            emitColumn(mWindow.firstColumn + static_cast<unsigned int>(i), mColumns[i], cells);
    }

private:
    struct Column {
        std::vector<double> crossings;  ///< in rows of centres
        std::vector<unsigned int> near; ///< rows to be tested one by one
    };

    double centerX(unsigned int column) const { return (column + 0.5) * mGrid.cellWidth + mGrid.left; }
    double centerY(unsigned int row) const { return mGrid.top - (row + 0.5) * mGrid.cellHeight; }
    double rowOf(double y) const { return (mGrid.top - y) / mGrid.cellHeight - 0.5; }

    /// The first row of the window not above `position`, and the one behind the last not below it.
    qint64 firstRow(double position) const
    {
        return static_cast<qint64>(std::ceil(std::min(std::max(position, double(mWindow.firstRow)),
                                                      double(mWindow.lastRow) + 1.0)));
    }
    qint64 endRow(double position) const
    {
        return static_cast<qint64>(std::floor(std::min(std::max(position, double(mWindow.firstRow) - 1.0),
                                                       double(mWindow.lastRow))))
               + 1;
    }

    void addNear(Column &column, double first, double last)
    {
        for (qint64 row = firstRow(first - mNear); row < endRow(last + mNear); ++row)
            column.near.push_back(static_cast<unsigned int>(row));
    }

    void addEdge(const QPointF &a, const QPointF &b)
    {
        const auto columnOf = [this](double x) {
            const double column = (x - mGrid.left) / mGrid.cellWidth - 0.5;
            return std::min(std::max(column, double(mWindow.firstColumn)), double(mWindow.lastColumn));
        };
        const double rounding = 1.0; // one column more at either end; the exact tests below drop it
        const double low = std::max(columnOf(std::min(a.x(), b.x())) - rounding, double(mWindow.firstColumn));
        const double high = std::min(columnOf(std::max(a.x(), b.x())) + rounding, double(mWindow.lastColumn));
        const double slope = (b.y() - a.y()) / (b.x() - a.x());
        for (auto column = static_cast<unsigned int>(std::ceil(low)); column <= static_cast<unsigned int>(high); ++column) {
            const double x = centerX(column);
            Column &line = mColumns[column - mWindow.firstColumn];
            if ((a.x() <= x) != (b.x() <= x)) {
                const bool fromA = std::abs(x - a.x()) <= std::abs(x - b.x());
                const double row = rowOf(fromA ? a.y() + (x - a.x()) * slope : b.y() + (x - b.x()) * slope);
                line.crossings.push_back(row);
                addNear(line, row, row);
            }
            if (a.x() == x)
                addNear(line, rowOf(a.y()), rowOf(a.y()));
            if (a.x() == x && b.x() == x)
                addNear(line, rowOf(std::max(a.y(), b.y())), rowOf(std::min(a.y(), b.y())));
        }
    }

    void emitColumn(unsigned int column, Column &line, QVector<QPair<unsigned int, unsigned int>> &cells)
    {
        std::sort(line.crossings.begin(), line.crossings.end());
        std::sort(line.near.begin(), line.near.end());
        line.near.erase(std::unique(line.near.begin(), line.near.end()), line.near.end());
        auto next = line.near.cbegin();
        const auto emitNear = [&](qint64 end) { // those before row `end` that the test accepts
            for (; next != line.near.cend() && *next < end; ++next) {
                if (locate(mPolygon, QPointF(centerX(column), centerY(*next))) != Place::Outside)
                    cells.append({column, *next});
            }
        };
        for (std::size_t i = 0; i + 1 < line.crossings.size(); i += 2) {
            const qint64 end = endRow(line.crossings[i + 1]);
            for (qint64 row = firstRow(line.crossings[i]); row < end;) {
                emitNear(row + 1);
                const bool tested = next != line.near.cbegin() && *std::prev(next) == row;
                const qint64 stop = tested ? row + 1 : std::min(end, next == line.near.cend() ? end : qint64(*next));
                for (qint64 inside = tested ? stop : row; inside < stop; ++inside)
                    cells.append({column, static_cast<unsigned int>(inside)});
                row = stop;
            }
        }
        emitNear(qint64(mWindow.lastRow) + 1);
    }

    const Shape &mPolygon;
    const FMGrid &mGrid;
    const FMGridWindow &mWindow;
    std::vector<Column> mColumns;
    double mNear;
};

} // namespace

void containedCenters(const Shape &polygon, const FMGrid &grid, const FMGridWindow &window,
                      QVector<QPair<unsigned int, unsigned int>> &cells)
{
    CenterWalk(polygon, grid, window).run(cells);
}

} // namespace fennimark
