// SPDX-License-Identifier: MIT
// The cell centres in a polygon. Each column of centres is a vertical line. Its crossings with the
// rings are sorted; centres between an odd crossing (the first, third and so on) and the next one
// are inside:
//
//     row        0    1    2    3    4    5    6    7    8    9
//     crossing          x              x         x         x
//     inside               2    3    4              7    8
//
// Centres that are so near a crossing that rounding could decide, and those on vertices or vertical
// edges, are tested by the exact point test. So the result equals that test for every centre.
#include <cmath>
#include <limits>
#include "shape/gridCoverage.h"
#include "shape/locate.h"

namespace fennimark {
namespace {

constexpr double kNear = 1.0e-7; // in cells
constexpr double kRounding = 16.0 * 2.220446049250313e-16;

class CenterWalk {
public:
    CenterWalk(const Shape &polygon, const FMGrid &grid, const FMGridWindow &window)
        : mPolygon(polygon),
          mGrid(grid),
          mWindow(window),
          mColumns(window.lastColumn - window.firstColumn + 1U)
    {
        const Rect2D &bounds = polygon.bounds();
        const double reach =
            std::max({std::abs(bounds.yMin), std::abs(bounds.yMax), std::abs(grid.top)});
        mNear = kNear + kRounding * reach / grid.cellHeight;
    }

    void run(QVector<QPair<unsigned int, unsigned int>> &cells)
    {
        mPolygon.visitSegments(0, mPolygon.vertexCount(),
                               [this](quint32, const QPointF &a, const QPointF &b) {
                                   addEdge(a, b);
                                   return true;
                               });
        for (std::size_t i = 0; i < mColumns.size(); ++i)
            collectSpans(mWindow.firstColumn + static_cast<unsigned int>(i), mColumns[i]);
        report(cells);
    }

private:
    struct Column {
        std::vector<double> crossings;  ///< in rows of centres
        std::vector<unsigned int> near; ///< rows to be tested by the exact test
    };

    double centerX(unsigned int column) const
    {
        return (column + 0.5) * mGrid.cellWidth + mGrid.left;
    }
    double centerY(unsigned int row) const { return mGrid.top - (row + 0.5) * mGrid.cellHeight; }
    double rowOf(double y) const { return (mGrid.top - y) / mGrid.cellHeight - 0.5; }

    /// The first row of the window whose number is at least `position`. endRow: one more than the
    /// last row whose number is at most `position`.
    qint64 firstRow(double position) const
    {
        return static_cast<qint64>(std::ceil(
            std::min(std::max(position, double(mWindow.firstRow)), double(mWindow.lastRow) + 1.0)));
    }
    qint64 endRow(double position) const
    {
        return static_cast<qint64>(std::floor(std::min(
                   std::max(position, double(mWindow.firstRow) - 1.0), double(mWindow.lastRow))))
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
            return std::min(std::max(column, double(mWindow.firstColumn)),
                            double(mWindow.lastColumn));
        };
        const double rounding = 1.0; // a column more at either end; the exact tests below reject it
        const double low =
            std::max(columnOf(std::min(a.x(), b.x())) - rounding, double(mWindow.firstColumn));
        const double high =
            std::min(columnOf(std::max(a.x(), b.x())) + rounding, double(mWindow.lastColumn));
        const double slope = (b.y() - a.y()) / (b.x() - a.x());
        for (auto column = static_cast<unsigned int>(std::ceil(low));
             column <= static_cast<unsigned int>(high); ++column) {
            const double x = centerX(column);
            Column &line = mColumns[column - mWindow.firstColumn];
            if ((a.x() <= x) != (b.x() <= x)) {
                const bool fromA = std::abs(x - a.x()) <= std::abs(x - b.x());
                const double row =
                    rowOf(fromA ? a.y() + (x - a.x()) * slope : b.y() + (x - b.x()) * slope);
                line.crossings.push_back(row);
                addNear(line, row, row);
            }
            if (a.x() == x)
                addNear(line, rowOf(a.y()), rowOf(a.y()));
            if (a.x() == x && b.x() == x)
                addNear(line, rowOf(std::max(a.y(), b.y())), rowOf(std::min(a.y(), b.y())));
        }
    }

    /// The cells [first, end) of a column.
    struct RowSpan {
        unsigned int column;
        qint64 first;
        qint64 end;
    };

    void append(unsigned int column, qint64 first, qint64 end)
    {
        if (first >= end)
            return;
        mTotal += end - first;
        if (!mSpans.empty() && mSpans.back().column == column && mSpans.back().end == first)
            mSpans.back().end = end;
        else
            mSpans.push_back({column, first, end});
    }

    void collectSpans(unsigned int column, Column &line)
    {
        std::sort(line.crossings.begin(), line.crossings.end());
        std::sort(line.near.begin(), line.near.end());
        line.near.erase(std::unique(line.near.begin(), line.near.end()), line.near.end());
        auto next = line.near.cbegin();
        // Appends the near rows before row `end` that the exact test accepts.
        const auto appendNear = [&](qint64 end) {
            for (; next != line.near.cend() && *next < end; ++next) {
                if (locate(mPolygon, QPointF(centerX(column), centerY(*next))) != Place::Outside)
                    append(column, *next, qint64(*next) + 1);
            }
        };
        qint64 row = mWindow.firstRow; // the first row that is not decided yet
        for (std::size_t i = 0; i + 1 < line.crossings.size(); i += 2) {
            const qint64 end = endRow(line.crossings[i + 1]);
            // Two crossings may be in one row, which must be decided only once.
            row = std::max(row, firstRow(line.crossings[i]));
            appendNear(row);
            while (row < end) { // appends the rows before the next near one, then tests that one
                const qint64 stop = next == line.near.cend() ? end : std::min(end, qint64(*next));
                append(column, row, stop);
                row = stop;
                if (row < end) {
                    ++row;
                    appendNear(row);
                }
            }
        }
        appendNear(qint64(mWindow.lastRow) + 1);
    }

    void report(QVector<QPair<unsigned int, unsigned int>> &cells) const
    {
        cells.resize(static_cast<int>(std::min<qint64>(mTotal, std::numeric_limits<int>::max())));
        auto *to = cells.data();
        const auto *const stop = to + cells.size();
        for (const RowSpan &span : mSpans) {
            for (qint64 row = span.first; row < span.end && to != stop; ++row)
                *to++ = {span.column, static_cast<unsigned int>(row)};
        }
    }

    const Shape &mPolygon;
    const FMGrid &mGrid;
    const FMGridWindow &mWindow;
    std::vector<Column> mColumns;
    double mNear;
    std::vector<RowSpan> mSpans;
    qint64 mTotal = 0;
};

} // namespace

void containedCenters(const Shape &polygon, const FMGrid &grid, const FMGridWindow &window,
                      QVector<QPair<unsigned int, unsigned int>> &cells)
{
    CenterWalk(polygon, grid, window).run(cells);
}

} // namespace fennimark
