// SPDX-License-Identifier: MIT
#include "fennimark/FM_PointTree.h"
#include <cmath>
#include "points/pointCells.h"
#include "points/pointForest.h"

using namespace fennimark;

namespace {

bool isFinite(const QPointF &point)
{
    return std::isfinite(point.x()) && std::isfinite(point.y());
}

} // namespace

FM_PointTree::FM_PointTree() : mForest(std::make_unique<PointForest>())
{
}
FM_PointTree::FM_PointTree(const FM_PointTree &other)
    : mForest(std::make_unique<PointForest>(*other.mForest))
{
}
FM_PointTree::~FM_PointTree() = default;

FM_PointTree &FM_PointTree::operator=(const FM_PointTree &other)
{
    if (this != &other)
        *mForest = *other.mForest;
    return *this;
}

bool FM_PointTree::SetPoints(const QVector<QPointF> &points, const QVector<int> &ids,
                             bool (*progress)(int, const char *), int firstPercent, int lastPercent)
{
    mForest->clear();
    if (points.size() != ids.size() || !std::all_of(points.begin(), points.end(), isFinite))
        return false;
    std::vector<IdPoint> members(static_cast<size_t>(points.size()));
    for (int i = 0; i < points.size(); ++i)
        members[static_cast<size_t>(i)] = {points[i].x(), points[i].y(), ids[i]};
    PointTree::PlacedReport report;
    quint32 done = 0;
    if (progress) {
        report = [&](quint32 placed) {
            done += placed;
            const double part = static_cast<double>(done) / points.size();
            return progress(firstPercent + static_cast<int>((lastPercent - firstPercent) * part),
                            nullptr);
        };
    }
    return mForest->setPoints(std::move(members), report);
}

bool FM_PointTree::AddPointToSet(const QPointF &point, int id)
{
    if (!isFinite(point))
        return false;
    mForest->add({point.x(), point.y(), id});
    return true;
}

bool FM_PointTree::RemovePointFromSet(const QPointF &point, int id)
{
    return mForest->remove({point.x(), point.y(), id});
}

bool FM_PointTree::GetFirstNearestNeighbor(const QPointF &place, const QSet<int> &exclude,
                                           ptTreeQueryResult &hit, void *&cursor) const
{
    cursor = mForest->openCursor(place, exclude);
    return mForest->next(cursor, hit);
}

bool FM_PointTree::GetNextNearestNeighbor(ptTreeQueryResult &hit, void *&cursor) const
{
    return mForest->next(cursor, hit);
}

void FM_PointTree::DoneWithNeighborSearch(void *&cursor) const
{
    mForest->closeCursor(cursor);
    cursor = nullptr;
}

bool FM_PointTree::GetNearestNeighbors(const QPointF &place, int count, const QSet<int> &exclude,
                                       QVector<ptTreeQueryResult> &hits, bool) const
{
    return mForest->nearest(place, count, exclude, hits);
}

bool FM_PointTree::GetRangeNeighbors(const QPointF &place, double range, const QSet<int> &exclude,
                                     QVector<ptTreeQueryResult> &hits, bool) const
{
    hits.clear();
    if (!(range >= 0.0))
        return false;
    mForest->within(place, range * range, exclude, hits);
    return true;
}

bool FM_PointTree::GetPointsInRect(const QRectF &rect, const QSet<int> &exclude,
                                   QVector<ptTreeQueryResult> &hits) const
{
    const QRectF normal = rect.normalized();
    const Rect2D window{normal.left(), normal.right(), normal.top(), normal.bottom()};
    CellMembers members(exclude, hits);
    mForest->inCells([&](const Rect2D &box, quint32) { return relation(window, box); },
                     [&](const IdPoint &point, bool inside) {
                         if (inside || contains(window, point))
                             members.add(point);
                     });
    return true;
}
