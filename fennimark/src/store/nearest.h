// SPDX-License-Identifier: MIT
/// Records by distance: best-first search over the box tree (G. R. Hjaltason and H. Samet,
/// "Distance browsing in spatial databases", ACM Transactions on Database Systems 24, 1999,
/// 265-318).
#pragma once
#include <queue>
#include <vector>
#include "store/recordStore.h"

namespace fennimark {

/// The distance of an object and that of its box are rounded differently. A bound that is lowered
/// by this factor never excludes a record because of that.
constexpr double kBoundSlack = 1.0 - 1e-14;

struct RecordDistance {
    double sqrDistance;
    quint32 record;
    friend bool operator<(const RecordDistance &a, const RecordDistance &b)
    {
        return a.sqrDistance < b.sqrDistance
               || (a.sqrDistance == b.sqrDistance && a.record < b.record);
    }
};

/// The `count` records nearest to an object whose box is `from`, by distance and then record.
/// @param limit  the largest squared distance of a result.
/// @param exact  exact(record) returns the squared distance of the record's geometry. A record with
/// NaN or infinity is left out.
template <class When, class Exact>
std::vector<RecordDistance> nearestRecords(const RecordStore &store, const Rect2D &from,
                                           const When &when, std::size_t count, double limit,
                                           Exact exact)
{
    // Levels from 0 on are nodes of the tree.
    constexpr int kLeaf = -1, kRecord = -2;
    struct Waiting {
        double bound;
        int level;
        quint32 index;
        // std::priority_queue has its largest element on top; this order puts the least bound
        // there.
        bool operator<(const Waiting &other) const { return bound > other.bound; }
    };
    std::vector<RecordDistance> best; // a heap with the farthest on top
    if (count == 0 || !store.mayHold(when))
        return best;
    std::priority_queue<Waiting> waiting;
    const auto worst = [&] { return best.size() < count ? limit : best.front().sqrDistance; };
    const auto wait = [&](double sqrDistance, int level, quint32 index) {
        const double bound = sqrDistance * kBoundSlack;
        if (bound <= worst())
            waiting.push({bound, level, index});
    };
    const auto take = [&](quint32 record) {
        const RecordDistance found{exact(record), record};
        if (!(found.sqrDistance <= limit) || found.sqrDistance == kInfinity
            || (best.size() == count && !(found < best.front())))
            return;
        if (best.size() == count) {
            std::pop_heap(best.begin(), best.end());
            best.pop_back();
        }
        best.push_back(found);
        std::push_heap(best.begin(), best.end());
    };
    waiting.push({0.0, store.tree().levelCount() - 1, 0});
    while (!waiting.empty() && waiting.top().bound <= worst()) {
        const Waiting next = waiting.top();
        waiting.pop();
        if (next.level == kRecord) {
            take(next.index);
        } else if (next.level == kLeaf) {
            store.visitLeaf(next.index, Rect2D{-kInfinity, kInfinity, -kInfinity, kInfinity}, when,
                            [&](quint32 record) {
                                wait(sqrDistance(store.box(record), from), kRecord, record);
                            });
        } else {
            const BoxNode &node = store.tree().node(next.level, next.index);
            for (unsigned i = 0; i < kFanOut; ++i) {
                const Rect2D box{node.xMin[i], node.xMax[i], node.yMin[i], node.yMax[i]};
                if (node.start[i] <= when.to() && node.end[i] >= when.from())
                    wait(sqrDistance(box, from), next.level - 1, next.index * kFanOut + i);
            }
        }
    }
    std::sort_heap(best.begin(), best.end());
    return best;
}

} // namespace fennimark
