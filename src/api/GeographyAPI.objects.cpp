// SPDX-License-Identifier: MIT
// Single objects: handles on their geometry, and its coordinates.
#include "datainterface/GeographyAPI.h"
#include <algorithm>
#include <new>
#include <vector>
#include "api/shapeCalls.h"
#include "fennimark/FMLine.h"
#include "fennimark/FMPoint.h"
#include "fennimark/FMShapes.h"

using namespace datainterface;

namespace {

/// Replaces chain ids by object indices, -1 where there is none. Chain ids are seldom sparse, so a
/// table by id is much faster than the geography's hash.
void toObjects(const MVectorData &geography, std::vector<int> &ids)
{
    const QVector<int> &chains = geography.GetFennimIdMap();
    if (chains.isEmpty())
        return;
    const auto [least, greatest] = std::minmax_element(chains.cbegin(), chains.cend());
    const int first = *least;
    const qint64 span = qint64(*greatest) - first + 1;
    if (span > 4 * qint64(chains.size()) + 1024) {
        for (int &id : ids)
            id = geography.GetObjectId(id);
        return;
    }
    std::vector<int> indexOf(static_cast<std::size_t>(span), -1);
    for (int i = 0; i < chains.size(); ++i)
        indexOf[static_cast<std::size_t>(chains[i] - first)] = i;
    for (int &id : ids) {
        const qint64 at = qint64(id) - first;
        id = at >= 0 && at < span ? indexOf[static_cast<std::size_t>(at)] : -1;
    }
}

} // namespace

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

bool VORN_GetAllShapes(int geographyId, qint64 time, FMShapes &shapes)
{
    return onGeography<MVectorData>(geographyId, false, [&](const MVectorData &geography) {
        try {
            FMShapes found;
            if (!geography.GetFennims()->GetShapesAtTime(time, found))
                return false;
            toObjects(geography, found.ids);
            shapes = std::move(found);
            return true;
        } catch (const std::bad_alloc &) {
            return false;
        }
    });
}
