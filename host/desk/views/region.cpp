// SPDX-License-Identifier: MIT
#include "desk/views/region.h"
#include <QPolygonF>
#include <QTransform>
#include <cmath>
#include "core/project/catalog.h"
#include "datainterface/MVectorData.h"
#include "desk/draw/viewTransform.h"
#include "fennimark/FMPolygon.h"
#include "fennimark/Fennims.h"
#include "fennimark/HeldObject.h"

namespace meridor {
namespace {

Region::Kind kindOf(const QPainterPath &path)
{
    int curves = 0;
    for (int i = 0; i < path.elementCount(); ++i)
        curves += path.elementAt(i).isCurveTo() ? 1 : 0;
    if (path.elementCount() < 2)
        return Region::Click;
    if (curves == 4 && path.elementCount() == 13)
        return Region::Circle;
    if (path.elementCount() != 5)
        return Region::Polygon;
    for (int i = 0; i < 4; ++i) {
        const QPointF from = path.elementAt(i);
        const QPointF to = path.elementAt(i + 1);
        if (from.x() != to.x() && from.y() != to.y())
            return Region::Polygon;
    }
    return Region::Rectangle;
}

} // namespace

Region::Region(const QPainterPath &path, double ratio)
    : mPath(QTransform::fromScale(ratio, ratio).map(path)), mKind(kindOf(path))
{
}

QPoint Region::pixel() const
{
    const QPointF place = mPath.elementCount() > 0 ? QPointF(mPath.elementAt(0)) : QPointF();
    return {static_cast<int>(std::floor(place.x())), static_cast<int>(std::floor(place.y()))};
}

QList<QVector<QPointF>> Region::rings(const ViewTransform &view) const
{
    QList<QVector<QPointF>> rings;
    for (const QPolygonF &part : mPath.toSubpathPolygons()) {
        QVector<QPointF> ring;
        for (const QPointF &pixel : part)
            ring.append(view.toMap(pixel));
        if (ring.size() > 2)
            rings.append(ring);
    }
    return rings;
}

QVector<unsigned int> Region::objectsOf(int geography, qint64 time, const ViewTransform &view) const
{
    const auto *const vector = dynamic_cast<const MVectorData *>(geographyOf(geography));
    QList<QPolygonF> parts;
    for (const QVector<QPointF> &ring : rings(view))
        parts.append(QPolygonF(ring));
    if (!vector || parts.isEmpty())
        return {};
    const Fennims &shapes = *vector->GetFennims();
    QVector<int> records;
    shapes.ObjectQuery(FMPolygon(parts), time, records);
    QVector<unsigned int> objects;
    for (const int record : records) {
        const fennimark::HeldRecord held(*shapes.mTree, record);
        objects.append(static_cast<unsigned int>(vector->GetObjectId(held.chainId())));
    }
    return objects;
}

} // namespace meridor
