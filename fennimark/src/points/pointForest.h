// SPDX-License-Identifier: MIT
/// A few static trees and a short list of newcomers, which together are one changing set of points.
///
/// Adding only appends to the newcomers. The query that finds more than 64 of them builds a tree of
/// them and of all trees of up to three times their number, so that a point is moved O(log n)
/// times. Once the queries since the last change outnumber half the points, all become one tree. A
/// tree with more removed points than live ones is made anew.
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
    PointForest(const PointForest &other); ///< without the cursors
    PointForest &operator=(const PointForest &other);
    ~PointForest();

    void clear();
    /// Replaces the content; empty and false when `report` returns false.
    bool setPoints(std::vector<IdPoint> points, const PointTree::PlacedReport &report);
    void add(const IdPoint &point);
    bool remove(const IdPoint &point);

    bool nearest(const QPointF &place, int count, const QSet<int> &exclude,
                 QVector<ptTreeQueryResult> &hits);
    void within(const QPointF &place, double squaredRange, const QSet<int> &exclude,
                QVector<ptTreeQueryResult> &hits);
    /// visit(IdPoint, inside) for all points in cells for which `cell` does not return Apart.
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

    std::vector<std::shared_ptr<PointTree>> mTrees; // the large ones first; shared with copies
    std::vector<IdPoint> mNewcomers;
    size_t mLive = 0;
    size_t mQueries = 0; // since the last change
    quint64 mVersion = 0;
    std::vector<std::unique_ptr<Cursor>> mCursors;
    std::vector<std::unique_ptr<Cursor>> mClosedCursors; // kept for their memory
    std::vector<PointHit> mHits;                         // of the running query
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
