// SPDX-License-Identifier: MIT
/// A static kd-tree over points with ids, laid out without pointers: 21.5 bytes a point.
///
/// Points lie in leaves of twelve, by columns. A node over m leaves has m/2 of them on its left;
/// nodes are in preorder, so that its left child is the next node and its right child comes m/2
/// later, and a subtree's leaves are neighbours. Five leaves:
///
///     node 0 (leaves 0 to 4)
///       node 1 (0 to 1): leaf 0, leaf 1
///       node 2 (2 to 4): leaf 2, node 3 (3 to 4): leaf 3, leaf 4
///
/// A node holds the two bounds of the gap between its halves along one axis, and no byte for the
/// axis: it is the last bit of the lower bound, 0 for x and 1 for y. A bound whose last bit differs
/// is rounded up by one ulp, which keeps all points of the left half at or below it. Removed points
/// and the unused end of the last leaf have NaN coordinates, which no comparison accepts.
///
/// Distances to cells are computed by the expression of the distances to points, so that rounding
/// is monotone: a cell is never farther than a point in it.
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
    /// Takes the number of points placed since the last report; false ends the work.
    using PlacedReport = std::function<bool(quint32)>;

    /// Reorders `points`, at least one. Null when `report` (may be empty) returns false.
    static std::shared_ptr<PointTree> build(std::vector<IdPoint> &points,
                                            const PlacedReport &report = {});

    quint32 slotCount() const { return mSlots; } ///< places, removed points included
    quint32 liveCount() const { return mLive; }
    IdPoint point(quint32 slot) const
    {
        const Leaf &leaf = mLeaves[slot / kLeafSize];
        return {leaf.x[slot % kLeafSize], leaf.y[slot % kLeafSize], leaf.id[slot % kLeafSize]};
    }
    void appendLive(std::vector<IdPoint> &points) const;

    /// The place of a point with exactly these coordinates and this id; slotCount() when there is
    /// none.
    quint32 find(double x, double y, int id) const;
    void remove(quint32 slot);

    /// Calls sink.offer(squared distance, id, slot) for all points whose squared distance is at
    /// most sink.limit(), which may fall meanwhile; near cells first.
    template <class Sink> void visitNear(double x, double y, Sink &sink) const;

    enum class Cell { Apart, Cut, Inside };
    /// Calls cell(box, points) on the way down, leaves included: what is apart is passed over,
    /// visit(IdPoint, inside) gets the live points of the rest, `inside` saying that one of their
    /// cells was.
    template <class CellTest, class Visit> void visitCells(CellTest cell, Visit visit) const;

private:
    struct Leaf {
        double x[kLeafSize];
        double y[kLeafSize];
        int id[kLeafSize];

        /// All squared distances, and a bit for each that is at most `limit`: few are, and which
        /// ones cannot be predicted.
        quint32 within(double limit, double fromX, double fromY, double *distance) const;
    };
    // The axis is the last bit of `low`, which is rounded up to make it so.
    struct Node {
        double low;          ///< no point on the left is above
        double high;         ///< no point on the right is below
        quint32 axis() const // 0: x
        {
            quint64 bits;
            std::memcpy(&bits, &low, sizeof bits);
            return bits & 1;
        }
    };
    struct Range {
        quint32 node;
        quint32 leaf;
        quint32 leaves;
        Range left() const { return half(false); }
        Range right() const { return half(true); }
        /// By masks, since which half a walk takes cannot be predicted.
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
    /// Prefetches a leaf while the walk to it goes on.
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
    // What differs between the axes and between left and right is indexed and computed, not
    // branched on: neither can be predicted.
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
            const double across = std::max(toLeft, toRight); // to the farther side, not negative
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
