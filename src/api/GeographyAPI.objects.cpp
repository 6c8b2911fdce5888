// SPDX-License-Identifier: MIT
// Single objects: handles on their geometry, and its coordinates.
#include "datainterface/GeographyAPI.h"
#include "api/shapeCalls.h"
#include "fennimark/FMLine.h"
#include "fennimark/FMPoint.h"

using namespace datainterface;

VORN_Object VORN_GetObject(int geographyId, unsigned int object, qint64 time)
{
    return onGeography<MVectorData>(geographyId, VORN_Object(), [&](const MVectorData &geography) {
        HilbertTree *tree = geography.GetFennims()->mTree;
        const int recordId = recordAt(geography, object, time);
        HilbertTreeRecord *record = recordId < 0 ? nullptr : tree->CheckOutRecord(recordId, true);
        if (!record)
            return VORN_Object();
        record->GetTreeObject(tree); // checked out until the handle is returned
        return VORN_Object{tree, record};
    });
}

void VORN_ReturnObject(VORN_Object object)
{
    if (!object.tree || !object.record)
        return;
    object.record->ReturnTreeObject(object.tree);
    object.tree->CheckInRecord(object.record->recordId);
}

bool VORN_GetPointVertex(int geographyId, unsigned int object, qint64 time, QPointF &point)
{
    return onShape<FMPoint>(geographyId, object, time, [&](const FMPoint &shape) {
        point = QPointF(shape.x, shape.y);
        return true;
    });
}

bool VORN_GetLineVertices(int geographyId, unsigned int object, qint64 time,
                          QList<QVector<QPointF>> &parts)
{
    return onShape<FMLine>(geographyId, object, time, [&](const FMLine &line) {
        parts = line.GetVertices();
        return true;
    });
}

bool VORN_GetObjectBounds(int geographyId, unsigned int object, qint64 time, QRectF &bounds)
{
    return onShape<FMObject>(geographyId, object, time, [&](const FMObject &shape) {
        bounds = rectOf(shape.GetBounds());
        return true;
    });
}
