// SPDX-License-Identifier: MIT
/// A static kd-tree over points with ids (J. L. Bentley, "Multidimensional binary search trees used
/// for associative searching", Communications of the ACM 18, 1975, 509-517), stored without
/// pointers in two arrays: 20 bytes a point in leaves and 1.3 in nodes.
///
/// A leaf has twelve points, stored by columns:
///
///     | x of 12 points | y of 12 points | id of 12 points |     240 bytes
///
/// All leaves but the last one are full. Removed points and the unused slots of the last leaf have
/// NaN coordinates, which fail every comparison. Slot s is the point s % 12 of leaf s / 12.
///
/// Nodes are stored in preorder. A node over m leaves has the first m/2 (rounded down) of them on
/// its left: its left child is the next node, its right child is m/2 nodes later, and the leaves of
/// a subtree are contiguous. With five leaves:
///
///     node 0 (leaves 0 to 4)
///       node 1 (leaves 0 to 1): leaf 0, leaf 1
///       node 2 (leaves 2 to 4): leaf 2, node 3 (leaves 3 to 4): leaf 3, leaf 4
///
/// A node holds the gap between its halves along one axis. The axis is packed into the last bit of
/// the lower bound:
///
///      63                               1   0     63                                0
///     +------------------------------------+---+ +-----------------------------------+
///     | low: upper bound of the left half  | a | | high: lower bound of the right    |
///     +------------------------------------+---+ +-----------------------------------+
///       a = 0: the halves differ in x      a = 1: they differ in y
///
/// When the last bit of a bound does not match its axis, the bound is rounded up by one ulp. All
/// points of the left half are still at or below it.
///
/// Distances to cells are computed by the same expression as distances to points. So rounding is
/// monotone: a cell is never farther than a point in it.
#pragma once
#include <QtAlgorithms>
#include <QtGlobal>
#include <algorithm>
#include <cstring>
#include <functional>
#include <memory>
#include <vector>
#include "fennimark/geometryTypes.h"
#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace fennimark {

struct IdPoint {
    double x;
    double y;
    int id;
};

class PointTree {
public:
    static constexpr quint32 kLeafSize = 12;
    /// Receives the number of points placed since the last report; building stops when it returns
    /// false.
    using PlacedReport = std::function<bool(quint32)>;

    /// Builds a tree of `points`, at least one, and reorders them. Null when `report` (may be
    /// empty) returns false.
    static std::shared_ptr<PointTree> build(std::vector<IdPoint> &points,
                                            const PlacedReport &report = {});

    quint32 slotCount() const { return mSlots; } ///< removed points included
    quint32 liveCount() const { return mLive; }
    IdPoint point(quint32 slot) const
    {
        const Leaf &leaf = mLeaves[slot / kLeafSize];
        return {leaf.x[slot % kLeafSize], leaf.y[slot % kLeafSize], leaf.id[slot % kLeafSize]};
    }
    void appendLive(std::vector<IdPoint> &points) const;

    /// The slot of a point with exactly these coordinates and this id; slotCount() when there is
    /// none.
    quint32 find(double x, double y, int id) const;
    void remove(quint32 slot);

    /// Calls sink.offer(squared distance, id, slot) for all points whose squared distance is at
    /// most sink.limit(). The limit may decrease during the call, so near cells are visited first.
    template <class Sink> void visitNear(double x, double y, Sink &sink) const;

    enum class Cell { Apart, Cut, Inside };
    /// Calls cell(box, points) for the cells from the root down to the leaves; `points` is an upper
    /// bound of the points in the cell. Cells that are Apart are skipped, and below a cell that is
    /// Inside no further cell is tested. Calls visit(IdPoint, inside) for the remaining live
    /// points; `inside` is true below a cell that is Inside.
    template <class CellTest, class Visit> void visitCells(CellTest cell, Visit visit) const;

private:
    struct Leaf {
        double x[kLeafSize];
        double y[kLeafSize];
        int id[kLeafSize];

        /// Computes all squared distances. @return a mask of those that are at most `limit`. A mask
        /// saves unpredictable branches: few points are within the limit.
        quint32 within(double limit, double fromX, double fromY, double *distance) const;
    };
    // The last bit of `low` is the axis; see above.
    struct Node {
        double low;          ///< no point of the left half is above
        double high;         ///< no point of the right half is below
        quint32 axis() const // 0: x, 1: y
        {
            quint64 bits;
            std::memcpy(&bits, &low, sizeof bits);
            return bits & 1;
        }
    };
    /// A subtree: its first node, its first leaf and the number of its leaves.
    struct Range {
        quint32 node;
        quint32 leaf;
        quint32 leaves;
        Range left() const { return half(false); }
        Range right() const { return half(true); }
        /// Computed with masks, because the half that a walk takes is unpredictable.
        Range half(bool isRight) const
        {
            const quint32 mask = 0U - quint32(isRight);
            const quint32 onLeft = leaves / 2;
            return {node + 1 + ((onLeft - 1) & mask), leaf + (onLeft & mask),
                    onLeft + (leaves & 1 & mask)};
        }
    };
    class Builder;
    static constexpr int kMaxDepth = 34;

    Range all() const { return {0, 0, static_cast<quint32>(mLeaves.size())}; }
    /// Prefetches a leaf that the walk is about to reach.
    void fetchAhead(quint32 leaf) const
    {
        const auto *bytes = reinterpret_cast<const char *>(mLeaves.data() + leaf);
        for (std::size_t i = 0; i < sizeof(Leaf); i += 64)
            __builtin_prefetch(bytes + i);
    }
    template <class Sink> void scanLeaf(quint32 leaf, double x, double y, Sink &sink) const;
    template <class CellTest, class Visit>
    void visitCells(Range range, const Rect2D &box, bool inside, CellTest &cell,
                    Visit &visit) const;

    std::vector<Node> mNodes;
    std::vector<Leaf> mLeaves;
    quint32 mSlots = 0;
    Rect2D mBounds; ///< of all points, removed ones included
    quint32 mLive = 0;
};

inline quint32 PointTree::Leaf::within(double limit, double fromX, double fromY,
                                       double *distance) const
{
    quint32 near = 0;
#ifdef __SSE2__
    const __m128d placeX = _mm_set1_pd(fromX);
    const __m128d placeY = _mm_set1_pd(fromY);
    const __m128d most = _mm_set1_pd(limit);
    for (quint32 i = 0; i < kLeafSize; i += 2) {
        const __m128d dx = _mm_sub_pd(_mm_loadu_pd(x + i), placeX);
        const __m128d dy = _mm_sub_pd(_mm_loadu_pd(y + i), placeY);
        const __m128d squared = _mm_add_pd(_mm_mul_pd(dx, dx), _mm_mul_pd(dy, dy));
        _mm_storeu_pd(distance + i, squared);
        near |= static_cast<quint32>(_mm_movemask_pd(_mm_cmple_pd(squared, most))) << i;
    }
#else
    for (quint32 i = 0; i < kLeafSize; ++i) {
        const double dx = x[i] - fromX;
        const double dy = y[i] - fromY;
        distance[i] = dx * dx + dy * dy;
        near |= static_cast<quint32>(distance[i] <= limit) << i;
    }
#endif
    return near;
}

template <class Sink> void PointTree::scanLeaf(quint32 leaf, double x, double y, Sink &sink) const
{
    const Leaf &points = mLeaves[leaf];
    double distance[kLeafSize];
    for (quint32 near = points.within(sink.limit(), x, y, distance); near != 0; near &= near - 1) {
        const quint32 i = qCountTrailingZeroBits(near);
        if (distance[i] <= sink.limit())
            sink.offer(distance[i], points.id[i], leaf * kLeafSize + i);
    }
}

template <class Sink> void PointTree::visitNear(double x, double y, Sink &sink) const
{
    // The axis and the side are unpredictable, so they are array indices and masks instead of
    // branches.
    struct Waiting {
        double distance; // to the cell
        double away[2];  // along the axes
        Range range;
    } stack[kMaxDepth];
    int depth = 0;
    const auto outside = [](double low, double high, double v) {
        return v < low ? low - v : v > high ? v - high : 0.0;
    };
    const double place[2] = {x, y};
    double away[2] = {outside(mBounds.xMin, mBounds.xMax, x),
                      outside(mBounds.yMin, mBounds.yMax, y)};
    Range range = all();
    if (!(away[0] * away[0] + away[1] * away[1] <= sink.limit()))
        return;
    for (;;) {
        while (range.leaves > 1) {
            const Node &node = mNodes[range.node];
            const quint32 axis = node.axis();
            const double v = place[axis];
            const double toLeft = v - node.low;
            const double toRight = node.high - v;
            const double across = std::max(toLeft, toRight); // to the farther half; not negative
            const double along = away[1 - axis];
            const double distance = across * across + along * along;
            const bool rightFirst = toRight <= toLeft;
            Waiting &farther = stack[depth];
            farther.distance = distance;
            farther.away[axis] = across;
            farther.away[1 - axis] = along;
            farther.range = range.half(!rightFirst);
            depth += distance <= sink.limit();
            range = range.half(rightFirst);
            if (range.leaves <= 2) {
                fetchAhead(range.leaf);
                fetchAhead(farther.range.leaf);
            }
        }
        scanLeaf(range.leaf, x, y, sink);
        do {
            if (depth == 0)
                return;
            --depth;
        } while (stack[depth].distance > sink.limit());
        away[0] = stack[depth].away[0];
        away[1] = stack[depth].away[1];
        range = stack[depth].range;
    }
}

template <class CellTest, class Visit> void PointTree::visitCells(CellTest cell, Visit visit) const
{
    visitCells(all(), mBounds, false, cell, visit);
}

template <class CellTest, class Visit>
void PointTree::visitCells(Range range, const Rect2D &box, bool inside, CellTest &cell,
                           Visit &visit) const
{
    if (!inside) {
        const Cell found = cell(box, range.leaves * kLeafSize);
        if (found == Cell::Apart)
            return;
        inside = found == Cell::Inside;
    }
    if (range.leaves > 1) {
        const Node &node = mNodes[range.node];
        Rect2D left = box;
        Rect2D right = box;
        (node.axis() ? left.yMax : left.xMax) = node.low;
        (node.axis() ? right.yMin : right.xMin) = node.high;
        visitCells(range.left(), left, inside, cell, visit);
        visitCells(range.right(), right, inside, cell, visit);
        return;
    }
    const quint32 end = std::min((range.leaf + 1) * kLeafSize, slotCount());
    for (quint32 slot = range.leaf * kLeafSize; slot < end; ++slot) {
        const IdPoint found = point(slot);
        if (found.x == found.x)
            visit(found, inside);
    }
}

} // namespace fennimark
