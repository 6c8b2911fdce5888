// SPDX-License-Identifier: MIT
/// What the public functions of objects share beyond the call frame: from an object index to a
/// live geometry and back. Records and live objects are held for a scope.
#pragma once
#include "datainterface/MVectorData.h"
#include "datainterface/VORN_Object.h"
#include "fennimark/Fennims.h"
#include "fennimark/TreeObject.h"
#include "api/callFrame.h"
#include "time/boxes.h"

namespace datainterface {

/// The object's chain; null for an index out of range and when the geometry has lost it.
FMObjectChain *chainOf(const MVectorData &geography, unsigned int object);
/// The record that carries the object's geometry at a time; -1 when it does not exist then.
int recordAt(const MVectorData &geography, unsigned int object, qint64 time);
/// The object index behind a record; -1 when it has none.
int objectOf(const MVectorData &geography, int recordId);

/// A record that is checked out; null for an id that does not exist.
class HeldRecord {
public:
    /// @param keep  see HilbertTree::CheckOutRecord.
    HeldRecord(const HilbertTree &tree, int recordId, bool keep = true);
    ~HeldRecord();
    Q_DISABLE_COPY(HeldRecord)
    const HilbertTreeRecord *get() const { return mRecord; }
    int chainId() const { return mRecord ? mRecord->chainId : -1; }

private:
    const HilbertTree &mTree;
    const HilbertTreeRecord *const mRecord;
};

/// The live geometry of a record that somebody holds; null without a record, and when its bytes
/// cannot be read.
class LiveObject {
public:
    LiveObject(const HilbertTree *tree, const HilbertTreeRecord *record);
    explicit LiveObject(const VORN_Object &handle) : LiveObject(handle.tree, handle.record) {}
    ~LiveObject();
    Q_DISABLE_COPY(LiveObject)
    const TreeObject *get() const { return mObject; }
    /// Null when it is of another kind.
    template <class Kind> const Kind *as() const { return dynamic_cast<const Kind *>(mObject); }

private:
    const HilbertTree *const mTree;
    const HilbertTreeRecord *const mRecord;
    const TreeObject *const mObject;
};

/// Both at once.
class HeldObject {
public:
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

/// `call` on the geometry of an object at a time; false when there is none, or none of that kind.
template <class Kind, class Call>
bool onShape(int geographyId, unsigned int object, qint64 time, Call call)
{
    return onGeography<MVectorData>(geographyId, false, [&](const MVectorData &geography) {
        const HeldObject held(*geography.GetFennims()->mTree, recordAt(geography, object, time));
        const Kind *shape = held.as<Kind>();
        return shape && call(*shape);
    });
}

} // namespace datainterface
