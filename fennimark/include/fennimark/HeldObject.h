// SPDX-License-Identifier: MIT
/// Guards that check out a record, or its live object, for a scope and return it at the end.
#pragma once
#include "fennimark/HilbertTree.h"
#include "fennimark/TreeObject.h"

namespace fennimark {

/// Checks out a record for its own lifetime; null for an id that does not exist or was removed.
class HeldRecord {
public:
    /// @param keep  see HilbertTree::CheckOutRecord.
    HeldRecord(const HilbertTree &tree, int recordId, bool keep = true)
        : mTree(tree), mRecord(tree.CheckOutRecord(recordId, keep))
    {
    }
    ~HeldRecord()
    {
        if (mRecord)
            mTree.CheckInRecord(mRecord->recordId);
    }
    Q_DISABLE_COPY(HeldRecord)

    const HilbertTreeRecord *get() const { return mRecord; }
    /// The chain that the record belongs to; -1 without a record.
    int chainId() const { return mRecord ? mRecord->chainId : -1; }

private:
    const HilbertTree &mTree;
    const HilbertTreeRecord *const mRecord;
};

/// The live geometry of a record that the caller has checked out. Null when the record is null and
/// when its bytes cannot be read.
class LiveObject {
public:
    LiveObject(const HilbertTree *tree, const HilbertTreeRecord *record)
        : mTree(tree), mRecord(record), mObject(record ? record->GetTreeObject(tree) : nullptr)
    {
    }
    ~LiveObject()
    {
        if (mObject)
            mRecord->ReturnTreeObject(mTree);
    }
    Q_DISABLE_COPY(LiveObject)

    const TreeObject *get() const { return mObject; }
    /// Null when the object is of another kind.
    template <class Kind> const Kind *as() const { return dynamic_cast<const Kind *>(mObject); }

private:
    const HilbertTree *const mTree;
    const HilbertTreeRecord *const mRecord;
    const TreeObject *const mObject;
};

/// Checks out a record and its live geometry.
class HeldObject {
public:
    /// @param keep  see HilbertTree::CheckOutRecord.
    HeldObject(const HilbertTree &tree, int recordId, bool keep = true)
        : mRecord(tree, recordId, keep), mObject(&tree, mRecord.get())
    {
    }
    const TreeObject *get() const { return mObject.get(); }
    template <class Kind> const Kind *as() const { return mObject.as<Kind>(); }
    int chainId() const { return mRecord.chainId(); }

private:
    const HeldRecord mRecord;
    const LiveObject mObject;
};

} // namespace fennimark
