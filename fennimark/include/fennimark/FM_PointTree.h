// SPDX-License-Identifier: MIT
/// A search structure over points with integer ids. Its queries: nearest neighbours with their
/// ties, points in range, in a rectangle and in a polygon.
#pragma once
#include <QPointF>
#include <QRectF>
#include <QSet>
#include <QVector>
#include <memory>
#include "fennimark/export.h"

class FMPolygon;
namespace fennimark {
class PointForest;
}

/// One hit. The queries for neighbours fill all fields; the rectangle and the polygon query leave
/// distance and angle at 0.
struct ptTreeQueryResult {
    QPointF point;
    int id = -1;
    double distance = 0.0; ///< Squared, in squared map units.
    /// The direction from the place of the query to the hit, in radians in [-pi, pi],
    /// counter-clockwise from the x axis.
    double angle = 0.0;
};
Q_DECLARE_TYPEINFO(ptTreeQueryResult, Q_MOVABLE_TYPE);

/// Points may be added and removed at any time; the next query rearranges the structure. Several
/// points may have the same coordinates, and several the same id.
///
/// Two points are tied when their distances differ by no more than 4 ulp of the largest coordinate
/// of the query's place and the two points, so that a lattice with a spacing of 0.1 has the same
/// ties as one with a spacing of 1. Other points of the tree have no influence on ties. Hits are in
/// ascending order of distance, then of id, unless stated otherwise. Points whose id is in
/// `exclude` are skipped. Every query replaces the content of `hits`.
///
/// Copies share their points until one of them changes. A cursor belongs to the tree that opened it
/// and is not copied. Queries rearrange the tree, so two calls on one tree must not run at the same
/// time.
class FENNIMARK_EXPORT FM_PointTree {
public:
    FM_PointTree();
    FM_PointTree(const FM_PointTree &other);
    FM_PointTree &operator=(const FM_PointTree &other);
    /// Frees the cursors that are still open.
    virtual ~FM_PointTree();

    /// Replaces the content in O(n log n). `progress` (may be null) is called with percentages from
    /// `firstPercent` to `lastPercent`, at least once for a tree with points.
    /// @return false, and the tree is empty, when `progress` returns false, when the lengths
    /// differ, and when a coordinate is not finite.
    bool SetPoints(const QVector<QPointF> &points, const QVector<int> &ids,
                   bool (*progress)(int, const char *), int firstPercent, int lastPercent);
    /// Adds one point in O(1); the next query arranges the points. False, with nothing done, when a
    /// coordinate is not finite.
    bool AddPointToSet(const QPointF &point, int id);
    /// Removes one point that has exactly these coordinates and this id; false when there is none.
    bool RemovePointFromSet(const QPointF &point, int id);

    /// Opens a cursor that returns the points in ascending order of distance, and returns the
    /// nearest one. The cursor keeps a copy of `exclude` and stays valid when the tree changes: it
    /// continues after its last hit in the order of distance and id. It must be closed with
    /// DoneWithNeighborSearch, also when the result is false.
    /// @return false when no point is left.
    bool GetFirstNearestNeighbor(const QPointF &place, const QSet<int> &exclude,
                                 ptTreeQueryResult &hit, void *&cursor) const;
    /// The next hit of a cursor; false when there is none.
    bool GetNextNearestNeighbor(ptTreeQueryResult &hit, void *&cursor) const;
    /// Frees the cursor and sets it to null. A null cursor is ignored.
    void DoneWithNeighborSearch(void *&cursor) const;

    /// The `count` nearest points and all points that are tied with the last of them. When these
    /// are more than `count`, all points of the tie are given the same distance. Hits are always
    /// sorted; `sorted` has no effect.
    /// @return false, with `hits` empty, when `count` is below 1 or no point is left.
    bool GetNearestNeighbors(const QPointF &place, int count, const QSet<int> &exclude,
                             QVector<ptTreeQueryResult> &hits, bool sorted) const;
    /// All points no farther than `range` map units; `sorted` has no effect. False for a negative
    /// range and for NaN; true for an empty result.
    bool GetRangeNeighbors(const QPointF &place, double range, const QSet<int> &exclude,
                           QVector<ptTreeQueryResult> &hits, bool sorted) const;
    /// All points in the closed rectangle, in ascending order of id. Always true.
    bool GetPointsInRect(const QRectF &rect, const QSet<int> &exclude,
                         QVector<ptTreeQueryResult> &hits) const;
    /// All points in the closed polygon, in ascending order of id. False for a null polygon.
    bool GetPointsInPolygon(const FMPolygon *polygon, const QSet<int> &exclude,
                            QVector<ptTreeQueryResult> &hits) const;

private:
    std::unique_ptr<fennimark::PointForest> mForest;
};
