// SPDX-License-Identifier: MIT
/// The packed box tree over leaves of 16 records.
///
/// The tree is implicit, without pointers. Entry r of the lowest level is the hull of records 16 r
/// to 16 r + 15 (a leaf); entry i of every other level is the hull of node i one level below. A
/// node holds 16 entries side by side, as floats rounded outwards in space and as doubles in time:
/// 512 bytes, which makes 2.13 bytes a record. Lanes without an entry hold a box that meets
/// nothing. The levels are stored one after the other, the lowest first; the highest is a single
/// node:
///
///     | level 0: ceil(leaves / 16) nodes | level 1: ceil(level 0 / 16) nodes | ... | root |
#pragma once
#include <QtAlgorithms>
#include <QtGlobal>
#include <array>
#include <limits>
#include <vector>
#include "base/boxRules.h"
#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace fennimark {

constexpr quint32 kFanOut = 16;
constexpr quint32 kRecordsPerLeaf = 16;

struct alignas(16) BoxNode {
    float xMin[kFanOut], xMax[kFanOut], yMin[kFanOut], yMax[kFanOut];
    double start[kFanOut], end[kFanOut];
};

/// A closed window in space and time, rounded outwards so that it meets every box that touches it.
struct BoxWindow {
    float xMin, xMax, yMin, yMax;
    double start, end;

    explicit BoxWindow(const Rect2D &box, double from = -kInfinity, double to = kInfinity)
        : xMin(roundedDown(box.xMin)),
          xMax(roundedUp(box.xMax)),
          yMin(roundedDown(box.yMin)),
          yMax(roundedUp(box.yMax)),
          start(from),
          end(to)
    {
    }
    /// A mask of the node's entries that meet the window; bit i stands for entry i.
    unsigned entriesOf(const BoxNode &node) const;
};

struct LeafHull {
    Rect2D box = kNoBox;
    double start = kInfinity, end = -kInfinity;
};

class BoxTree {
public:
    static std::vector<BoxNode> build(const std::vector<LeafHull> &leaves);

    BoxTree() = default;
    /// A view of the nodes that `build` made for `leafCount` leaves; they must outlive the tree.
    BoxTree(const BoxNode *nodes, quint32 leafCount);

    int levelCount() const { return mLevelCount; }
    const BoxNode &node(int level, quint32 index) const
    {
        return mNodes[mLevelStart[std::size_t(level)] + index];
    }

    /// Calls visit(leaf) for every leaf that may hold a record in the window, in ascending order.
    template <class Visit> void visitLeaves(const BoxWindow &window, Visit visit) const
    {
        if (mLevelCount > 0)
            descend(mLevelCount - 1, 0, window, visit);
    }

private:
    template <class Visit>
    void descend(int level, quint32 index, const BoxWindow &window, Visit &visit) const
    {
        for (unsigned hits = window.entriesOf(node(level, index)); hits != 0; hits &= hits - 1) {
            const quint32 entry = index * kFanOut + quint32(qCountTrailingZeroBits(hits));
            if (level == 0)
                visit(entry);
            else
                descend(level - 1, entry, window, visit);
        }
    }

    const BoxNode *mNodes = nullptr;
    int mLevelCount = 0;
    std::array<quint32, 9> mLevelStart{}; // enough for 16^9 leaves
};

#ifdef __SSE2__
inline unsigned BoxWindow::entriesOf(const BoxNode &node) const
{
    const __m128 left = _mm_set1_ps(xMin), right = _mm_set1_ps(xMax);
    const __m128 bottom = _mm_set1_ps(yMin), top = _mm_set1_ps(yMax);
    unsigned hits = 0;
    for (unsigned i = 0; i < kFanOut; i += 4) {
        const __m128 x = _mm_and_ps(_mm_cmple_ps(_mm_load_ps(node.xMin + i), right),
                                    _mm_cmpge_ps(_mm_load_ps(node.xMax + i), left));
        const __m128 y = _mm_and_ps(_mm_cmple_ps(_mm_load_ps(node.yMin + i), top),
                                    _mm_cmpge_ps(_mm_load_ps(node.yMax + i), bottom));
        hits |= unsigned(_mm_movemask_ps(_mm_and_ps(x, y))) << i;
    }
    if (hits == 0)
        return 0;
    const __m128d from = _mm_set1_pd(start), to = _mm_set1_pd(end);
    unsigned inTime = 0;
    for (unsigned i = 0; i < kFanOut; i += 2) {
        const __m128d t = _mm_and_pd(_mm_cmple_pd(_mm_load_pd(node.start + i), to),
                                     _mm_cmpge_pd(_mm_load_pd(node.end + i), from));
        inTime |= unsigned(_mm_movemask_pd(t)) << i;
    }
    return hits & inTime;
}
#else
inline unsigned BoxWindow::entriesOf(const BoxNode &node) const
{
    unsigned hits = 0;
    for (unsigned i = 0; i < kFanOut; ++i) {
        const bool hit = (node.xMin[i] <= xMax) & (node.xMax[i] >= xMin) & (node.yMin[i] <= yMax)
                         & (node.yMax[i] >= yMin) & (node.start[i] <= end) & (node.end[i] >= start);
        hits |= unsigned(hit) << i;
    }
    return hits;
}
#endif

} // namespace fennimark
