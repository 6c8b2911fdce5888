// SPDX-License-Identifier: MIT
/// Fills shapes into a part of a pick buffer, in lattice coordinates.
#pragma once
#include <QtGlobal>
#include <vector>
#include "fennimark/FMShapes.h"

namespace meridor {

class ViewTransform;

/// A rectangle of the lattice and its pixels in memory.
struct PickArea {
    int left = 0;
    int top = 0;
    int right = 0; ///< exclusive, as the next
    int bottom = 0;
    quint32 *pixels = nullptr; ///< of the first row, column `left`
    int stride = 0;            ///< pixels from one row to the next

    quint32 *row(int y) const { return pixels + qptrdiff(y - top) * stride; }
    bool isEmpty() const { return left >= right || top >= bottom; }
};

/// Places map coordinates on the lattice of a view.
struct Lattice {
    explicit Lattice(const ViewTransform &view);
    double x(double mapX) const { return (mapX - anchorX) * xScale; }
    double y(double mapY) const { return (anchorY - mapY) * yScale; }
    /// The box with xMin left and yMin up.
    Rect2D box(const Rect2D &map) const
    {
        return {x(map.xMin), x(map.xMax), y(map.yMax), y(map.yMin)};
    }

    double anchorX, anchorY, xScale, yScale;
};

/// The least whole number not below `value`, which must be in the range of int. std::ceil is a call
/// on machines without SSE4.1.
inline int ceilInt(double value)
{
    const int whole = static_cast<int>(value);
    return whole + (value > whole ? 1 : 0);
}
inline int floorInt(double value)
{
    const int whole = static_cast<int>(value);
    return whole - (value < whole ? 1 : 0);
}
/// The same, within [low, high]; infinities and NaN are allowed.
inline int ceilWithin(double value, int low, int high)
{
    return ceilInt(value > low ? (value < high ? value : high) : low);
}
inline int floorWithin(double value, int low, int high)
{
    return floorInt(value > low ? (value < high ? value : high) : low);
}

/// Even-odd scanlines. A pixel belongs to an area when its centre does. A centre on an edge belongs
/// to the area on its right, or below, so that areas with a common border neither overlap nor leave
/// a gap. An area whose box is smaller than a pixel, or so thin that it holds no centre, takes the
/// pixel of the box's centre.
///
/// For each row that an edge crosses, the first column at or behind the crossing is kept: in fixed
/// slots while the area has few rows and few crossings in each of them, otherwise in a list that is
/// sorted by row afterwards.
class PolygonFill {
public:
    /// @param snap  vertices are moved to multiples of half a pixel, and those that fall together
    ///              become one. Neighbours remain neighbours, since a vertex moves alike in both.
    PolygonFill(const Lattice &lattice, const PickArea &area, bool snap)
        : mLattice(lattice), mArea(area), mSnap(snap)
    {
    }
    void fill(const FMShapes &shapes, std::size_t shape, quint32 value);

private:
    static constexpr int kSlotRows = 64;
    static constexpr int kSlots = 8;

    struct Crossing {
        int row;
        int column;
    };

    template <bool Snap, class Cross>
    void visitCrossings(const FMShapes &shapes, std::size_t shape, Cross cross) const;
    template <bool Snap> void fillArea(const FMShapes &shapes, std::size_t shape, quint32 value);
    bool fillSlots(quint32 value);
    void fillList(quint32 value);
    void fillRow(int row, int *columns, int count, quint32 value) const;

    const Lattice mLattice;
    const PickArea mArea;
    const bool mSnap;
    int mFirstRow = 0; // the rows of the present shape
    int mEndRow = 0;
    int mSlots[kSlotRows][kSlots] = {};
    int mCounts[kSlotRows] = {};
    std::vector<Crossing> mCrossings;
    std::vector<int> mStarts;
    std::vector<int> mColumns;
};

} // namespace meridor
