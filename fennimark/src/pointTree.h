// SPDX-License-Identifier: MIT
/// A static kd-tree over points with ids, laid out without pointers: 21.5 bytes a point.
///
/// Points lie in leaves of twelve, by columns. A node over m leaves has m/2 of them on its left; nodes are
/// in preorder, so that its left child is the next node and its right child comes m/2 later, and a subtree's leaves are
/// neighbours. A node holds the two bounds of the gap between its halves along one axis. Removed points and the unused
/// end of the last leaf have NaN coordinates, which no comparison accepts.
///
/// Distances to cells are computed by the expression of the distances to points, so that rounding is monotone: a cell is
/// never farther than a point in it.
#pragma once
#include <QtGlobal>
#include <algorithm>
#include <cstring>
#include <functional>
#include <memory>
#include <vector>
#include "fennimark/geometryTypes.h"

namespace fennimark {

struct IdPoint {
    double x;
    double y;
    int id;
};

class PointTree {
public:
    static constexpr quint32 kLeafSize = 12;
    /// Told how many points more have found their place; false ends the work.
    using Progress = std::function<bool(quint32)>;

    /// Reorders `points`, at least one. Null when `progress` (may be empty) answers false.
    static std::shared_ptr<PointTree> build(std::vector<IdPoint> &points, const Progress &progress = {});

    quint32 slotCount() const { return mSlots; } ///< places, removed points included
    quint32 liveCount() const { return mLive; }
    IdPoint point(quint32 slot) const
    {
        const Leaf &leaf = mLeaves[slot / kLeafSize];
        return {leaf.x[slot % kLeafSize], leaf.y[slot % kLeafSize], leaf.id[slot % kLeafSize]};
    }
    void appendLive(std::vector<IdPoint> &points) const;

    /// The place of a point with exactly these coordinates and this id; slotCount() when there is none.
    quint32 find(double x, double y, int id) const;
    void remove(quint32 slot);

    /// Calls sink.offer(squared distance, id, slot) for all points whose squared distance is at most sink.limit(), which
    /// may fall meanwhile; near cells first.
    template <class Sink> void visitNear(double x, double y, Sink &sink) const;

    enum class Cell { Apart, Cut, Inside };
    /// Calls cell(box, points) on the way down, leaves included: what is apart is passed over, visit(IdPoint, inside)
    /// gets the live points of the rest, `inside` saying that one of their cells was.
    template <class CellTest, class Visit> void visitCells(CellTest cell, Visit visit) const;

private:
    struct Leaf {
        double x[kLeafSize];
        double y[kLeafSize];
        int id[kLeafSize];
    };
    // The axis is the last bit of `low`, which is rounded up to make it so.
    struct Node {
        double low;  ///< no point on the left is above
        double high; ///< no point on the right is below
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
        Range left() const { return {node + 1, leaf, leaves / 2}; }
        Range right() const { return {node + leaves / 2, leaf + leaves / 2, leaves - leaves / 2}; }
    };
    class Builder;
    static constexpr int kMaxDepth = 34;

    Range all() const { return {0, 0, static_cast<quint32>(mLeaves.size())}; }
    template <class Sink> void scanLeaf(quint32 leaf, double x, double y, Sink &sink) const;
    template <class CellTest, class Visit>
    void visitCells(Range range, const Rect2D &box, bool inside, CellTest &cell, Visit &visit) const;

    std::vector<Node> mNodes;
    std::vector<Leaf> mLeaves;
    quint32 mSlots = 0;
    Rect2D mBounds; ///< of all points, removed ones included
    quint32 mLive = 0;
};

template <class Sink> void PointTree::scanLeaf(quint32 leaf, double x, double y, Sink &sink) const
{
    const Leaf &points = mLeaves[leaf];
    double distance[kLeafSize];
    for (quint32 i = 0; i < kLeafSize; ++i) {
        const double dx = points.x[i] - x;
        const double dy = points.y[i] - y;
        distance[i] = dx * dx + dy * dy;
    }
    // Few points of a leaf are near enough, and which ones cannot be predicted: they are listed without branches.
    const double limit = sink.limit();
    quint32 near[kLeafSize];
    quint32 found = 0;
    for (quint32 i = 0; i < kLeafSize; ++i) {
        near[found] = i;
        found += distance[i] <= limit;
    }
    for (quint32 n = 0; n < found; ++n) {
        const quint32 i = near[n];
        if (distance[i] <= sink.limit())
            sink.offer(distance[i], points.id[i], leaf * kLeafSize + i);
    }
}

template <class Sink> void PointTree::visitNear(double x, double y, Sink &sink) const
{
    // What differs between the axes and between left and right is indexed and computed, not branched on: neither can
    // be predicted.
    struct Waiting {
        double distance; // to the cell
        double away[2];  // along the axes
        Range range;
    } stack[kMaxDepth];
    int depth = 0;
    const auto outside = [](double low, double high, double v) { return v < low ? low - v : v > high ? v - high : 0.0; };
    const double place[2] = {x, y};
    double away[2] = {outside(mBounds.xMin, mBounds.xMax, x), outside(mBounds.yMin, mBounds.yMax, y)};
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
            const quint32 rightFirst = toRight <= toLeft;
            const Range halves[2] = {range.left(), range.right()};
            Waiting &farther = stack[depth];
            farther.distance = distance;
            farther.away[axis] = across;
            farther.away[1 - axis] = along;
            farther.range = halves[1 - rightFirst];
            depth += distance <= sink.limit();
            range = halves[rightFirst];
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
void PointTree::visitCells(Range range, const Rect2D &box, bool inside, CellTest &cell, Visit &visit) const
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
