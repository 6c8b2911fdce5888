// SPDX-License-Identifier: MIT
#include "points/pointTree.h"
#include <algorithm>
#include <cmath>
#include <limits>

namespace fennimark {
namespace {

constexpr double kNone = std::numeric_limits<double>::quiet_NaN(); // an empty or removed slot

template <bool isY> double coordinate(const IdPoint &point)
{
    return isY ? point.y : point.x;
}

bool isEven(double value)
{
    quint64 bits;
    std::memcpy(&bits, &value, sizeof bits);
    return (bits & 1) == 0;
}

Rect2D boundsOf(const std::vector<IdPoint> &points)
{
    Rect2D box{HUGE_VAL, -HUGE_VAL, HUGE_VAL, -HUGE_VAL};
    for (const IdPoint &point : points) {
        box.xMin = std::min(box.xMin, point.x);
        box.xMax = std::max(box.xMax, point.x);
        box.yMin = std::min(box.yMin, point.y);
        box.yMax = std::max(box.yMax, point.y);
    }
    return box;
}

} // namespace

class PointTree::Builder {
public:
    Builder(PointTree &tree, const PlacedReport &report) : mTree(tree), mReport(report) {}

    // Progress: every largest subtree of at most 1/64 of all points, or of 48 points when that is
    // more, reports its number of points when it is complete.
    bool run(std::vector<IdPoint> &points)
    {
        const auto count = static_cast<quint32>(points.size());
        const quint32 leaves = (count + kLeafSize - 1) / kLeafSize;
        mTree.mNodes.resize(leaves - 1);
        mTree.mLeaves.resize(leaves);
        mTree.mSlots = count;
        mTree.mBounds = boundsOf(points);
        mTree.mLive = count;
        mReportBelow = std::max(count / 64, 4 * kLeafSize);
        mReported = std::max(count, mReportBelow) + 1;
        return place(points.data(), count, mTree.all(), mTree.mBounds);
    }

private:
    bool place(IdPoint *points, quint32 count, Range range, const Rect2D &box)
    {
        const bool reports = mReport && count <= mReportBelow && mReported > mReportBelow;
        if (reports)
            mReported = count;
        const bool goesOn = range.leaves == 1 ? fillLeaf(points, count, range.leaf)
                                              : split(points, count, range, box);
        if (!reports || !goesOn)
            return goesOn;
        mReported = mReportBelow + 1;
        return mReport(count);
    }

    bool fillLeaf(const IdPoint *points, quint32 count, quint32 at)
    {
        Leaf &leaf = mTree.mLeaves[at];
        for (quint32 i = 0; i < kLeafSize; ++i) {
            leaf.x[i] = i < count ? points[i].x : kNone;
            leaf.y[i] = i < count ? points[i].y : kNone;
            leaf.id[i] = i < count ? points[i].id : 0;
        }
        return true;
    }

    // Splits across the longer side of the box. All leaves of the left half are full.
    bool split(IdPoint *points, quint32 count, Range range, const Rect2D &box)
    {
        const quint32 rank = range.left().leaves * kLeafSize;
        const bool splitsY = box.yMax - box.yMin > box.xMax - box.xMin;
        Node &node = mTree.mNodes[range.node];
        node = splitsY ? part<true>(points, count, rank) : part<false>(points, count, rank);
        Rect2D left = box;
        Rect2D right = box;
        (splitsY ? left.yMax : left.xMax) = node.low;
        (splitsY ? right.yMin : right.xMin) = node.high;
        if (isEven(node.low) == splitsY)
            node.low = std::nextafter(node.low, HUGE_VAL);
        return place(points, rank, range.left(), left)
               && place(points + rank, count - rank, range.right(), right);
    }

    template <bool isY> static Node part(IdPoint *points, quint32 count, quint32 rank)
    {
        const auto before = [](const IdPoint &a, const IdPoint &b) {
            return coordinate<isY>(a) < coordinate<isY>(b);
        };
        std::nth_element(points, points + rank, points + count, before);
        double low = coordinate<isY>(points[0]);
        for (quint32 i = 1; i < rank; ++i)
            low = std::max(low, coordinate<isY>(points[i]));
        return {low, coordinate<isY>(points[rank])};
    }

    PointTree &mTree;
    const PlacedReport &mReport;
    quint32 mReportBelow = 0;
    // At most mReportBelow while a subtree that will report is being built; then its size.
    quint32 mReported = 0;
};

std::shared_ptr<PointTree> PointTree::build(std::vector<IdPoint> &points,
                                            const PlacedReport &report)
{
    auto tree = std::make_shared<PointTree>();
    return Builder(*tree, report).run(points) ? tree : nullptr;
}

void PointTree::appendLive(std::vector<IdPoint> &points) const
{
    for (quint32 slot = 0; slot < slotCount(); ++slot) {
        const IdPoint found = point(slot);
        if (found.x == found.x)
            points.push_back(found);
    }
}

quint32 PointTree::find(double x, double y, int id) const
{
    Range stack[kMaxDepth];
    int depth = 0;
    stack[depth++] = all();
    while (depth > 0) {
        const Range range = stack[--depth];
        if (range.leaves == 1) {
            const quint32 end = std::min((range.leaf + 1) * kLeafSize, slotCount());
            for (quint32 slot = range.leaf * kLeafSize; slot < end; ++slot) {
                const IdPoint found = point(slot);
                if (found.x == x && found.y == y && found.id == id)
                    return slot;
            }
            continue;
        }
        const Node &node = mNodes[range.node];
        const double v = node.axis() ? y : x;
        if (v >= node.high)
            stack[depth++] = range.right();
        if (v <= node.low)
            stack[depth++] = range.left();
    }
    return slotCount();
}

void PointTree::remove(quint32 slot)
{
    Leaf &leaf = mLeaves[slot / kLeafSize];
    leaf.x[slot % kLeafSize] = kNone;
    leaf.y[slot % kLeafSize] = kNone;
    --mLive;
}

} // namespace fennimark
