// SPDX-License-Identifier: MIT
#include "desk/draw/polygonFill.h"
#include <algorithm>
#include "desk/draw/viewTransform.h"

namespace meridor {
namespace {

/// To the nearest multiple of one half; values beyond 2^49 are returned as they are or changed by
/// less than their precision.
double snapped(double value)
{
    constexpr double kHalves = 3377699720527872.0; // 1.5 * 2^51, whose last bit is one half
    return (value + kHalves) - kHalves;
}

template <bool Snap> double placed(double value)
{
    if constexpr (Snap)
        return snapped(value);
    else
        return value;
}

/// Whether one of the ranges of the box is so short that no line of pixel centres is in it, or both
/// are shorter than a pixel. It must not depend on the area that is drawn.
bool isOnePixel(const Rect2D &box)
{
    const double width = box.xMax - box.xMin;
    const double height = box.yMax - box.yMin;
    if (width >= 1.0 && height >= 1.0)
        return false;
    const auto holdsCentre = [](double low, double high) {
        constexpr int kFar = 1 << 30;
        return ceilWithin(low - 0.5, -kFar, kFar) < ceilWithin(high - 0.5, -kFar, kFar);
    };
    return (width < 1.0 && height < 1.0) || !holdsCentre(box.xMin, box.xMax)
           || !holdsCentre(box.yMin, box.yMax);
}

void sortFew(int *values, int count)
{
    for (int i = 1; i < count; ++i) {
        const int value = values[i];
        int at = i;
        for (; at > 0 && values[at - 1] > value; --at)
            values[at] = values[at - 1];
        values[at] = value;
    }
}

} // namespace

Lattice::Lattice(const ViewTransform &view)
    : anchorX(view.anchor().x()),
      anchorY(view.anchor().y()),
      xScale(view.xScale()),
      yScale(view.yScale())
{
}

void PolygonFill::fill(const FMShapes &shapes, std::size_t shape, quint32 value)
{
    const Rect2D box = mLattice.box(shapes.boxes[shape]);
    if (!(box.xMin < mArea.right && box.xMax >= mArea.left && box.yMin < mArea.bottom
          && box.yMax >= mArea.top))
        return;
    if (isOnePixel(box)) {
        const int x = floorInt(0.5 * (box.xMin + box.xMax));
        const int y = floorInt(0.5 * (box.yMin + box.yMax));
        if (x >= mArea.left && x < mArea.right && y >= mArea.top && y < mArea.bottom)
            mArea.row(y)[x - mArea.left] = value;
        return;
    }
    // Snapping can move a border by a quarter of a pixel.
    const double margin = mSnap ? 0.25 : 0.0;
    mFirstRow = ceilWithin(box.yMin - margin - 0.5, mArea.top, mArea.bottom);
    mEndRow = ceilWithin(box.yMax + margin - 0.5, mArea.top, mArea.bottom);
    if (mFirstRow >= mEndRow
        || ceilWithin(box.xMin - margin - 0.5, mArea.left, mArea.right)
               >= ceilWithin(box.xMax + margin - 0.5, mArea.left, mArea.right))
        return;
    if (mSnap)
        fillArea<true>(shapes, shape, value);
    else
        fillArea<false>(shapes, shape, value);
}

/// Calls cross(row, column) for each row of the shape whose centre line an edge crosses. Both
/// neighbours of an edge calculate the crossing from its upper vertex on, so that they agree.
template <bool Snap, class Cross>
void PolygonFill::visitCrossings(const FMShapes &shapes, std::size_t shape, Cross cross) const
{
    const double firstRow = mFirstRow;
    const double endRow = mEndRow;
    const double left = mArea.left;
    const double right = mArea.right;
    const auto rowOf = [&](double y) {
        const double at = y - 0.5;
        return ceilInt(at > firstRow ? (at < endRow ? at : endRow) : firstRow);
    };
    for (quint32 part = shapes.firstPart[shape]; part < shapes.firstPart[shape + 1]; ++part) {
        const QPointF *vertex = shapes.vertices.data() + shapes.partStart[part];
        const QPointF *const end = shapes.vertices.data() + shapes.partStart[part + 1];
        if (vertex == end)
            continue;
        const QPointF *before = end - 1;
        double yBefore = placed<Snap>(mLattice.y(before->y()));
        int rowBefore = rowOf(yBefore);
        for (; vertex != end; ++vertex) {
            const double y = placed<Snap>(mLattice.y(vertex->y()));
            const int row = rowOf(y);
            if (row != rowBefore) {
                const bool down = row > rowBefore;
                const double x0 = placed<Snap>(mLattice.x(down ? before->x() : vertex->x()));
                const double x1 = placed<Snap>(mLattice.x(down ? vertex->x() : before->x()));
                const double y0 = down ? yBefore : y;
                const double y1 = down ? y : yBefore;
                const double slope = (x1 - x0) / (y1 - y0);
                const int last = down ? row : rowBefore;
                for (int at = down ? rowBefore : row; at < last; ++at) {
                    const double x = x0 + (at + 0.5 - y0) * slope - 0.5;
                    cross(at, ceilInt(x > left ? (x < right ? x : right) : left));
                }
            }
            before = vertex;
            yBefore = y;
            rowBefore = row;
        }
    }
}

template <bool Snap>
void PolygonFill::fillArea(const FMShapes &shapes, std::size_t shape, quint32 value)
{
    const int rows = mEndRow - mFirstRow;
    if (rows <= kSlotRows) {
        std::fill(mCounts, mCounts + rows, 0);
        visitCrossings<Snap>(shapes, shape, [this](int row, int column) {
            const int slotRow = row - mFirstRow;
            const int count = mCounts[slotRow]++;
            if (count < kSlots)
                mSlots[slotRow][count] = column;
        });
        if (fillSlots(value))
            return;
    }
    mCrossings.clear();
    visitCrossings<Snap>(shapes, shape, [this](int row, int column) {
        mCrossings.push_back({row - mFirstRow, column});
    });
    fillList(value);
}

/// False, with nothing filled, when a row has more crossings than slots.
bool PolygonFill::fillSlots(quint32 value)
{
    const int rows = mEndRow - mFirstRow;
    for (int i = 0; i < rows; ++i) {
        if (mCounts[i] > kSlots)
            return false;
    }
    for (int i = 0; i < rows; ++i) {
        sortFew(mSlots[i], mCounts[i]);
        fillRow(mFirstRow + i, mSlots[i], mCounts[i], value);
    }
    return true;
}

void PolygonFill::fillList(quint32 value)
{
    const auto rows = static_cast<std::size_t>(mEndRow - mFirstRow);
    mStarts.assign(rows + 1, 0);
    for (const Crossing &crossing : mCrossings)
        ++mStarts[static_cast<std::size_t>(crossing.row) + 1];
    for (std::size_t i = 1; i <= rows; ++i)
        mStarts[i] += mStarts[i - 1];
    mColumns.resize(mCrossings.size());
    for (const Crossing &crossing : mCrossings) // the start of a row moves to its end
        mColumns[static_cast<std::size_t>(mStarts[static_cast<std::size_t>(crossing.row)]++)] =
            crossing.column;
    int start = 0;
    for (std::size_t i = 0; i < rows; ++i) {
        int *columns = mColumns.data() + start;
        const int count = mStarts[i] - start;
        std::sort(columns, columns + count);
        fillRow(mFirstRow + static_cast<int>(i), columns, count, value);
        start = mStarts[i];
    }
}

void PolygonFill::fillRow(int row, int *columns, int count, quint32 value) const
{
    quint32 *pixels = mArea.row(row) - mArea.left;
    for (int i = 0; i + 1 < count; i += 2) {
        for (int x = columns[i]; x < columns[i + 1]; ++x)
            pixels[x] = value;
    }
}

} // namespace meridor
