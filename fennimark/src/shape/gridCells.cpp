// SPDX-License-Identifier: MIT
// The area of a polygon in each cell of a grid. Every edge is cut at the grid lines into pieces of
// one cell each. A piece has two contributions, signed by its direction in x:
//
//     +-----------+
//     |   | * * | |   *  cover: the width of the piece times the height of the cell, for every cell
//     |   | * * | |      above the piece's own
//     +-----------+
//     |   | # # | |   #  area above: the trapezoid between the piece and the top of its own cell
//     |   | # _/  |
//     |   |_/     |
//     +-----------+
//
// The cells of a column are processed from the bottom to the top. In a cell that an edge enters,
// the polygon's area is the sum of the areas above of its own pieces and the covers of all pieces
// below. The cells between those are inside or outside as a whole. That is decided by the winding
// number just right of the column's left line, which is an exact count of crossings. The sum of
// covers is then set to the winding number times the cell's width, so rounding does not accumulate.
#include <cmath>
#include <limits>
#include "shape/gridCoverage.h"

namespace fennimark {
namespace {

constexpr double kNothing = 1.0e-12; // of a cell's area; at most this much counts as none

class CellWalk {
public:
    CellWalk(const Shape &polygon, const FMGrid &grid, const FMGridWindow &window)
        : mPolygon(polygon),
          mGrid(grid),
          mWindow(window),
          mFirstRow(window.firstRow),
          mEndRow(qint64(window.lastRow) + 1),
          mColumns(window.lastColumn - window.firstColumn + 1U)
    {
    }

    void run(const std::vector<bool> &reversed, QVector<FMCellArea> &cells)
    {
        for (quint32 part = 0; part < mPolygon.partCount(); ++part) {
            const int sign = reversed[part] ? -1 : 1;
            mPolygon.visitSegments(mPolygon.partBegin(part), mPolygon.partEnd(part),
                                   [this, sign](quint32, const QPointF &a, const QPointF &b) {
                                       a.x() <= b.x() ? addEdge(a, b, sign) : addEdge(b, a, -sign);
                                       return true;
                                   });
        }
        for (std::size_t i = 0; i < mColumns.size(); ++i)
            collectSpans(mWindow.firstColumn + static_cast<unsigned int>(i), mColumns[i]);
        report(cells);
    }

private:
    /// A piece of an edge in one cell of a column.
    struct Entry {
        qint64 row;
        double area;  ///< the area above, signed
        double cover; ///< the width of the piece, signed
        int winding;  ///< 1 or -1 where an edge enters the column at its left line, otherwise 0
    };

    double lineX(qint64 column) const { return double(column) * mGrid.cellWidth + mGrid.left; }
    double lineY(qint64 row) const { return double(row) * mGrid.cellHeight + mGrid.bottom; }

    /// The number of the cell that contains a coordinate; its lower line belongs to it. Clamped to
    /// [low, high]. The quotient may be wrong by rounding, so it is corrected by the lines
    /// themselves.
    template <class Line>
    static qint64 cellOf(double place, double origin, double size, qint64 low, qint64 high,
                         Line line)
    {
        const double guess = std::floor((place - origin) / size);
        auto cell = static_cast<qint64>(std::min(std::max(guess, double(low)), double(high)));
        while (cell > low && place < line(cell))
            --cell;
        while (cell < high && place >= line(cell + 1))
            ++cell;
        return cell;
    }
    /// The row of a y coordinate: mFirstRow - 1 below the window, mEndRow above it.
    qint64 rowOf(double y) const
    {
        return cellOf(y, mGrid.bottom, mGrid.cellHeight, mFirstRow - 1, mEndRow,
                      [this](qint64 r) { return lineY(r); });
    }
    qint64 columnOf(double x) const
    {
        return cellOf(x, mGrid.left, mGrid.cellWidth, qint64(mWindow.firstColumn) - 1,
                      qint64(mWindow.lastColumn) + 1, [this](qint64 c) { return lineX(c); });
    }

    static double between(double from, double to, double fraction)
    {
        const double value = from + (to - from) * fraction;
        return std::min(std::max(value, std::min(from, to)), std::max(from, to));
    }

    /// Adds an edge, given from left to right. `sign` is 1 when the polygon's area is above it and
    /// -1 when it is below.
    void addEdge(const QPointF &left, const QPointF &right, int sign)
    {
        const qint64 first = columnOf(left.x());
        const qint64 last = columnOf(right.x());
        if (first > mWindow.lastColumn || last < mWindow.firstColumn)
            return;
        if (left.x() == right.x() && (left.y() == right.y() || left.x() == lineX(first)))
            return; // a single place, or along a vertical grid line: enters no cell
        QPointF from = left;
        for (qint64 column = first; column <= std::min<qint64>(last, mWindow.lastColumn);
             ++column) {
            const double end = lineX(column + 1);
            if (column == last && right.x() == lineX(column))
                break;
            const QPointF to =
                column == last ? right
                               : QPointF(end, between(left.y(), right.y(),
                                                      (end - left.x()) / (right.x() - left.x())));
            if (column >= mWindow.firstColumn) {
                const bool entersLeft = column > first || left.x() == lineX(column);
                addPiece(mColumns[static_cast<std::size_t>(column - mWindow.firstColumn)], from, to,
                         sign, entersLeft ? sign : 0);
            }
            from = to;
        }
    }

    /// Adds a piece of an edge within one column, cut at the lines of the rows from its left end
    /// on. `winding` belongs to the first entry, where the piece begins at the column's left line.
    void addPiece(std::vector<Entry> &column, const QPointF &left, const QPointF &right, int sign,
                  int winding)
    {
        const bool rises = right.y() > left.y();
        qint64 row = rowOf(left.y());
        if (!rises && row >= mFirstRow && left.y() == lineY(row))
            --row; // the piece is below this line or along it, so it does not enter the cell above
        QPointF from = left;
        for (;; row += rises ? 1 : -1) {
            const bool canLeave = rises ? row < mEndRow : row >= mFirstRow;
            const double line = canLeave ? lineY(rises ? row + 1 : row) : 0.0;
            const bool ends = !canLeave || (rises ? right.y() <= line : right.y() >= line);
            const QPointF to = ends ? right
                                    : QPointF(between(left.x(), right.x(),
                                                      (line - left.y()) / (right.y() - left.y())),
                                              line);
            if (row < mEndRow) {
                const double cover = sign * (to.x() - from.x());
                const double above =
                    row < mFirstRow ? 0.0 : lineY(row + 1) - 0.5 * (from.y() + to.y());
                column.push_back({row, cover * above, cover, winding});
            }
            if (ends)
                return;
            winding = 0;
            from = to;
        }
    }

    /// The cells [first, end) of a column, which have the same covered area.
    struct RowSpan {
        unsigned int column;
        qint64 first;
        qint64 end;
        double area;
    };

    void append(const RowSpan &span)
    {
        mSpans.push_back(span);
        mTotal += span.end - span.first;
    }

    void collectSpans(unsigned int column, std::vector<Entry> &entries)
    {
        std::sort(entries.begin(), entries.end(),
                  [](const Entry &a, const Entry &b) { return a.row < b.row; });
        const double whole = mGrid.cellWidth * mGrid.cellHeight;
        qint64 next = mFirstRow;
        double cover = 0.0;
        int winding = 0;
        const auto fillTo = [&](qint64 end) { // passes the cells before `end`, which no edge enters
            if (next >= end)
                return;
            if (winding > 0)
                append({column, next, end, whole});
            next = end;
            cover = winding * mGrid.cellWidth;
        };
        for (std::size_t i = 0; i < entries.size();) {
            const qint64 row = entries[i].row;
            fillTo(row);
            double area = cover * mGrid.cellHeight;
            for (; i < entries.size() && entries[i].row == row; ++i) {
                area += entries[i].area;
                cover += entries[i].cover;
                winding += entries[i].winding;
            }
            if (row >= mFirstRow && area > kNothing * whole)
                append({column, row, row + 1, std::min(area, whole)});
            next = std::max(next, row + 1);
        }
        fillTo(mEndRow);
    }

    void report(QVector<FMCellArea> &cells) const
    {
        cells.resize(static_cast<int>(std::min<qint64>(mTotal, std::numeric_limits<int>::max())));
        FMCellArea *to = cells.data();
        const FMCellArea *const stop = to + cells.size();
        for (const RowSpan &span : mSpans) {
            for (qint64 row = span.first; row < span.end && to != stop; ++row)
                *to++ = {span.column, static_cast<unsigned int>(row), span.area};
        }
    }

    const Shape &mPolygon;
    const FMGrid &mGrid;
    const FMGridWindow &mWindow;
    const qint64 mFirstRow;
    const qint64 mEndRow;
    std::vector<std::vector<Entry>> mColumns;
    std::vector<RowSpan> mSpans;
    qint64 mTotal = 0;
};

} // namespace

void cellAreas(const Shape &polygon, const std::vector<bool> &reversed, const FMGrid &grid,
               const FMGridWindow &window, QVector<FMCellArea> &cells)
{
    CellWalk(polygon, grid, window).run(reversed, cells);
}

} // namespace fennimark
