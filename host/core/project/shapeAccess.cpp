// SPDX-License-Identifier: MIT
#include "core/project/shapeAccess.h"
#include "fennimark/FMPolygon.h"
#include "fennimark/Fennims.h"
#include "fennimark/HeldObject.h"

namespace meridor {

QList<QVector<QPointF>> ringsOf(const MVectorData &geography, int object, qint64 time)
{
    QList<QVector<QPointF>> rings;
    const Fennims &shapes = *geography.GetFennims();
    const FMObjectChain *chain =
        shapes.GetChainById(geography.GetFennimId(static_cast<unsigned>(object)));
    const int record = chain ? chain->GetObservation(time).second : -1;
    if (record < 0)
        return rings;
    const fennimark::HeldObject held(*shapes.mTree, record);
    if (const auto *polygon = held.as<FMPolygon>())
        for (const QPolygonF &ring : polygon->GetVertices())
            rings.append(ring);
    return rings;
}

} // namespace meridor
