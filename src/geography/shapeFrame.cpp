// SPDX-License-Identifier: MIT
#include "geography/shapeFrame.h"

namespace datainterface {
namespace {

constexpr unsigned char kBothInclusive = 0xFF;

} // namespace

FMObjectChain *chainOf(const MVectorData &geography, unsigned int object)
{
    const QVector<int> &ids = geography.GetFennimIdMap();
    return object < static_cast<unsigned int>(ids.size())
               ? geography.GetFennims()->GetChainById(ids[static_cast<int>(object)])
               : nullptr;
}

int recordAt(const MVectorData &geography, unsigned int object, qint64 time)
{
    const FMObjectChain *chain = chainOf(geography, object);
    return chain ? chain->GetObservation(time).second : -1;
}

int objectOf(const MVectorData &geography, int recordId)
{
    const HeldRecord record(*geography.GetFennims()->mTree, recordId);
    return record.get() ? geography.GetObjectId(record.get()->chainId) : -1;
}

QRectF rectOf(const Rect2D &box)
{
    return QRectF(box.xMin, box.yMin, box.xMax - box.xMin, box.yMax - box.yMin);
}

Rect2D boxOf(const QRectF &rect)
{
    return {rect.x(), rect.x() + rect.width(), rect.y(), rect.y() + rect.height()};
}

RectInT boxOf(const QRectF &rect, qint64 start, qint64 end)
{
    return {boxOf(rect), {static_cast<double>(start), static_cast<double>(end), kBothInclusive}};
}

HeldRecord::HeldRecord(const HilbertTree &tree, int recordId, bool keep)
    : mTree(tree), mRecord(tree.CheckOutRecord(recordId, keep))
{
}

HeldRecord::~HeldRecord()
{
    if (mRecord)
        mTree.CheckInRecord(mRecord->recordId);
}

LiveObject::LiveObject(const HilbertTree *tree, const HilbertTreeRecord *record)
    : mTree(tree), mRecord(record), mObject(record ? record->GetTreeObject(tree) : nullptr)
{
}

LiveObject::~LiveObject()
{
    if (mObject)
        mRecord->ReturnTreeObject(mTree);
}

} // namespace datainterface
