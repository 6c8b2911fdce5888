// SPDX-License-Identifier: MIT
#include "fennimark/FM_PointTree.h"
#include "fennimark/FMPolygon.h"
#include "points/pointCells.h"
#include "points/pointForest.h"

using namespace fennimark;

namespace {

constexpr quint32 kWorthTesting = 64; // the least points in a cell that is tested as a whole

PointTree::Cell relation(const FMPolygon &polygon, const Rect2D &box)
{
    if (!polygon.OverlapsRect(box))
        return PointTree::Cell::Apart;
    const FMPolygon cell(QVector<QPointF>{
        {box.xMin, box.yMin}, {box.xMax, box.yMin}, {box.xMax, box.yMax}, {box.xMin, box.yMax}});
    return polygon.ContainsPolygon(cell) ? PointTree::Cell::Inside : PointTree::Cell::Cut;
}

} // namespace

bool FM_PointTree::GetPointsInPolygon(const FMPolygon *polygon, const QSet<int> &exclude,
                                      QVector<ptTreeQueryResult> &hits) const
{
    CellMembers members(exclude, hits);
    if (!polygon)
        return false;
    const Rect2D window = polygon->GetBounds();
    mForest->inCells(
        [&](const Rect2D &box, quint32 points) {
            if (relation(window, box) == PointTree::Cell::Apart)
                return PointTree::Cell::Apart;
            return points < kWorthTesting ? PointTree::Cell::Cut : relation(*polygon, box);
        },
        [&](const IdPoint &point, bool inside) {
            if (inside || (contains(window, point) && polygon->ContainsPoint(point.x, point.y)))
                members.add(point);
        });
    return true;
}
