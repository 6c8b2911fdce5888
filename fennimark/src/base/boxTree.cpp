// SPDX-License-Identifier: MIT
#include "base/boxTree.h"

namespace fennimark {
namespace {

quint32 nodesFor(std::size_t entries)
{
    return quint32((entries + kFanOut - 1) / kFanOut);
}

BoxNode emptyNode()
{
    constexpr float kFar = std::numeric_limits<float>::infinity();
    BoxNode node;
    for (unsigned i = 0; i < kFanOut; ++i) {
        node.xMin[i] = node.yMin[i] = kFar;
        node.xMax[i] = node.yMax[i] = -kFar;
        node.start[i] = kInfinity;
        node.end[i] = -kInfinity;
    }
    return node;
}

void setEntry(BoxNode &node, unsigned lane, const LeafHull &hull)
{
    node.xMin[lane] = roundedDown(hull.box.xMin);
    node.xMax[lane] = roundedUp(hull.box.xMax);
    node.yMin[lane] = roundedDown(hull.box.yMin);
    node.yMax[lane] = roundedUp(hull.box.yMax);
    node.start[lane] = hull.start;
    node.end[lane] = hull.end;
}

} // namespace

std::vector<BoxNode> BoxTree::build(const std::vector<LeafHull> &leaves)
{
    std::vector<BoxNode> nodes;
    std::vector<LeafHull> below = leaves;
    while (!below.empty()) {
        std::vector<LeafHull> hulls(nodesFor(below.size()));
        const std::size_t first = nodes.size();
        nodes.resize(first + hulls.size(), emptyNode());
        for (std::size_t i = 0; i < below.size(); ++i) {
            setEntry(nodes[first + i / kFanOut], unsigned(i % kFanOut), below[i]);
            LeafHull &hull = hulls[i / kFanOut];
            widen(hull.box, below[i].box);
            hull.start = std::min(hull.start, below[i].start);
            hull.end = std::max(hull.end, below[i].end);
        }
        if (hulls.size() == 1)
            break;
        below.swap(hulls);
    }
    return nodes;
}

BoxTree::BoxTree(const BoxNode *nodes, quint32 leafCount) : mNodes(nodes)
{
    quint32 start = 0;
    for (quint32 entries = leafCount; entries > 0;) {
        const quint32 count = nodesFor(entries);
        mLevelStart[std::size_t(mLevelCount++)] = start;
        start += count;
        entries = count > 1 ? count : 0;
    }
}

} // namespace fennimark
