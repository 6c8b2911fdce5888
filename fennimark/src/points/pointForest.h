// SPDX-License-Identifier: MIT
/// A set of points that can change: a few static trees and a short list of newcomers (the
/// logarithmic method: J. L. Bentley and J. B. Saxe, "Decomposable searching problems", Journal of
/// Algorithms 1, 1980, 301-358).
///
///     mTrees     | 1,000,000 points | 40,000 | 300 |     static trees, the large ones first
///     mNewcomers | up to 64 points, searched one by one |
///
/// Adding a point appends it to the newcomers. Removing one erases it from the newcomers, or marks
/// it as removed in its tree. Before a query the set is arranged:
///   - A tree with more removed points than live ones is rebuilt.
///   - More than 64 newcomers are merged into a new tree. From the last tree backwards, every tree
///     of at most three times as many points as are merged so far is merged with them. So a point
///     is moved O(log n) times.
///   - When there were more queries since the last change than half the number of points, all
///     points become one tree.
/// To rebuild a tree is to merge the newcomers, that tree and all trees after it into one.
///
/// Slots number the points through all trees and then the newcomers. Trees are shared with copies
/// of the set and copied before a point is removed from them. mVersion changes with every change of
/// the set: a cursor whose batch belongs to another version searches again, from its last hit on.
#pragma once
#include <QPointF>
#include <memory>
#include <vector>
#include "fennimark/FM_PointTree.h"
#include "points/pointHits.h"
#include "points/pointTree.h"

namespace fennimark {

class PointForest {
public:
    PointForest();
    PointForest(const PointForest &other); ///< cursors are not copied
    PointForest &operator=(const PointForest &other);
    ~PointForest();

    void clear();
    /// Replaces the content. False, and the set is empty, when `report` returns false.
    bool setPoints(std::vector<IdPoint> points, const PointTree::PlacedReport &report);
    void add(const IdPoint &point);
    bool remove(const IdPoint &point);

    bool nearest(const QPointF &place, int count, const QSet<int> &exclude,
                 QVector<ptTreeQueryResult> &hits);
    void within(const QPointF &place, double squaredRange, const QSet<int> &exclude,
                QVector<ptTreeQueryResult> &hits);
    /// Calls visit(IdPoint, inside) for all newcomers and for all points of the trees in cells for
    /// which `cell` does not return Apart; see PointTree::visitCells.
    template <class CellTest, class Visit> void inCells(CellTest cell, Visit visit);

    void *openCursor(const QPointF &place, const QSet<int> &exclude);
    bool next(void *cursor, ptTreeQueryResult &hit);
    void closeCursor(void *cursor);

private:
    struct Cursor;

    size_t liveCount() const { return mLive; }
    void changed();
    void arrange();
    void rebuild(size_t firstTree);
    void absorbNewcomers();
    IdPoint pointAt(quint32 slot) const;
    size_t collectNearest(const QPointF &place, int count, const ExcludedIds &excluded,
                          const PointHit *after);
    template <class Sink> void visitNear(const QPointF &place, Sink &sink) const;
    void report(const QPointF &place, QVector<ptTreeQueryResult> &records) const;
    Cursor *findCursor(void *cursor) const;
    bool fetch(Cursor &cursor);

    std::vector<std::shared_ptr<PointTree>> mTrees;
    std::vector<IdPoint> mNewcomers;
    size_t mLive = 0;
    size_t mQueries = 0; // since the last change
    quint64 mVersion = 0;
    std::vector<std::unique_ptr<Cursor>> mCursors;
    std::vector<std::unique_ptr<Cursor>> mClosedCursors; // used again by openCursor
    std::vector<PointHit> mHits;                         // work areas of the current query
    std::vector<PointHit> mTies;
};

inline IdPoint PointForest::pointAt(quint32 slot) const
{
    for (const auto &tree : mTrees) {
        if (slot < tree->slotCount())
            return tree->point(slot);
        slot -= tree->slotCount();
    }
    return mNewcomers[slot];
}

template <class CellTest, class Visit> void PointForest::inCells(CellTest cell, Visit visit)
{
    arrange();
    for (const auto &tree : mTrees)
        tree->visitCells(cell, visit);
    for (const IdPoint &point : mNewcomers)
        visit(point, false);
}

} // namespace fennimark
