// SPDX-License-Identifier: MIT
#pragma once
#include <QPointF>
#include <QVector>
#include "core/export.h"
#include "datainterface/MVectorData.h"
#include "fennimark/Fennims.h"

namespace meridor {

/// A geometry for a scope: checked out and in again in pairs.
class ShapeAccess {
public:
    ShapeAccess(const HilbertTree &tree, int record)
        : mTree(tree),
          mRecordId(record),
          mRecord(tree.CheckOutRecord(record, true)),
          mObject(mRecord ? mRecord->GetTreeObject(&tree) : nullptr)
    {
    }
    ~ShapeAccess()
    {
        if (mObject)
            mRecord->ReturnTreeObject(&mTree);
        if (mRecordId > 0)
            mTree.CheckInRecord(mRecordId);
    }
    ShapeAccess(const ShapeAccess &) = delete;
    ShapeAccess &operator=(const ShapeAccess &) = delete;
    const TreeObject *object() const { return mObject; }

private:
    const HilbertTree &mTree;
    int mRecordId;
    const HilbertTreeRecord *mRecord;
    const TreeObject *mObject;
};

/// The rings of the polygon that an object is at a time; none when it is no polygon or is not
/// there.
MERIDOR_EXPORT QList<QVector<QPointF>> ringsOf(const MVectorData &geography, int object,
                                               qint64 time);

} // namespace meridor
