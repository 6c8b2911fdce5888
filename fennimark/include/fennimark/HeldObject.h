// SPDX-License-Identifier: MIT
/// A record and its live object for a scope: check-outs and returns come in pairs on every way out.
#pragma once
#include "fennimark/HilbertTree.h"
#include "fennimark/TreeObject.h"

namespace fennimark {

/// A record that is checked out; null for an id that does not exist or was removed.
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

/// The live geometry of a record that is checked out elsewhere; null without a record, and when its
/// bytes cannot be read.
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
    /// Null when it is of another kind.
    template <class Kind> const Kind *as() const { return dynamic_cast<const Kind *>(mObject); }

private:
    const HilbertTree *const mTree;
    const HilbertTreeRecord *const mRecord;
    const TreeObject *const mObject;
};

/// A record and its live geometry.
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
