// SPDX-License-Identifier: MIT
/// Shared parts of the queries by area: the test of cells against a rectangle, and the collection
/// of hits.
#pragma once
#include <QSet>
#include <QVector>
#include <algorithm>
#include "fennimark/FM_PointTree.h"
#include "points/pointHits.h"
#include "points/pointTree.h"

namespace fennimark {

inline bool contains(const Rect2D &rect, const IdPoint &point)
{
    return rect.xMin <= point.x && point.x <= rect.xMax && rect.yMin <= point.y
           && point.y <= rect.yMax;
}

inline PointTree::Cell relation(const Rect2D &rect, const Rect2D &box)
{
    if (box.xMax < rect.xMin || rect.xMax < box.xMin || box.yMax < rect.yMin
        || rect.yMax < box.yMin)
        return PointTree::Cell::Apart;
    const bool inside = rect.xMin <= box.xMin && box.xMax <= rect.xMax && rect.yMin <= box.yMin
                        && box.yMax <= rect.yMax;
    return inside ? PointTree::Cell::Inside : PointTree::Cell::Cut;
}

/// Collects points that are not excluded, without distances. The destructor sorts them by id.
class CellMembers {
public:
    CellMembers(const QSet<int> &exclude, QVector<ptTreeQueryResult> &hits)
        : mExcluded(exclude), mHits(hits)
    {
        mHits.clear();
    }
    ~CellMembers()
    {
        std::sort(mHits.begin(), mHits.end(),
                  [](const auto &a, const auto &b) { return a.id < b.id; });
    }
    Q_DISABLE_COPY(CellMembers)

    void add(const IdPoint &point)
    {
        if (mExcluded.holds(point.id))
            return;
        ptTreeQueryResult hit;
        hit.point = QPointF(point.x, point.y);
        hit.id = point.id;
        mHits.append(hit);
    }

private:
    const ExcludedIds mExcluded;
    QVector<ptTreeQueryResult> &mHits;
};

} // namespace fennimark
