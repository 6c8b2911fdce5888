// SPDX-License-Identifier: MIT
#include "core/project/shapeAccess.h"
#include "core/project/catalog.h"
#include "datainterface/GeographyAPI.h"
#include "fennimark/FMLine.h"
#include "fennimark/FMPoint.h"
#include "fennimark/FMPolygon.h"
#include "fennimark/FMProjectionInfo.h"
#include "fennimark/Fennims.h"
#include "fennimark/HeldObject.h"

namespace meridor {
namespace {

/// The record of an object at a time; -1 if it does not exist then.
int recordOf(const MVectorData &geography, int object, qint64 time)
{
    const FMObjectChain *chain =
        geography.GetFennims()->GetChainById(geography.GetFennimId(static_cast<unsigned>(object)));
    return chain ? chain->GetObservation(time).second : -1;
}

} // namespace

QString projectionText(int geography)
{
    const MGeoData *data = geographyOf(geography);
    if (const auto *vector = dynamic_cast<const MVectorData *>(data))
        return vector->GetFennims()->GetProjectionSettings().GetWkt();
    const QString text = VORN_GetGeographyProperties(geography)
                             .metaData.value(QStringLiteral("Projection"))
                             .toString();
    // Grids that were made for predictions had a name there once.
    return text.contains(QLatin1Char('[')) ? text : QString();
}

QList<QVector<QPointF>> ringsOf(const MVectorData &geography, int object, qint64 time)
{
    QList<QVector<QPointF>> rings;
    const int record = recordOf(geography, object, time);
    if (record < 0)
        return rings;
    const fennimark::HeldObject held(*geography.GetFennims()->mTree, record);
    if (const auto *polygon = held.as<FMPolygon>())
        for (const QPolygonF &ring : polygon->GetVertices())
            rings.append(ring);
    return rings;
}

std::optional<QPointF> centreOf(const MVectorData &geography, int object, qint64 time)
{
    const int record = recordOf(geography, object, time);
    if (record < 0)
        return {};
    const fennimark::HeldObject held(*geography.GetFennims()->mTree, record);
    double x = 0.0;
    double y = 0.0;
    if (const auto *polygon = held.as<FMPolygon>(); polygon && polygon->GetCentroid(x, y))
        return QPointF(x, y);
    const auto *shape = held.as<FMObject>();
    if (!shape)
        return {};
    const Rect2D box = shape->GetBounds();
    return QPointF(box.xMin + (box.xMax - box.xMin) * 0.5, box.yMin + (box.yMax - box.yMin) * 0.5);
}

QVector<QVector<QPointF>> partsOf(const MVectorData &geography, int record)
{
    QVector<QVector<QPointF>> parts;
    if (record < 0)
        return parts;
    const fennimark::HeldObject held(*geography.GetFennims()->mTree, record, false);
    if (const auto *point = held.as<FMPoint>())
        parts.append({QPointF(point->x, point->y)});
    else if (const auto *line = held.as<FMLine>())
        parts = line->GetVertices().toVector();
    else if (const auto *polygon = held.as<FMPolygon>())
        for (const QPolygonF &ring : polygon->GetVertices())
            parts.append(ring);
    return parts;
}

} // namespace meridor
