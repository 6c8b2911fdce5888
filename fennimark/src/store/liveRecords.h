// SPDX-License-Identifier: MIT
/// The records that are checked out, with their live objects, and the last 64 that were.
///
/// A live record is in one of four states:
///     free     in the pool; it has no id, but may still have the object of another record, whose
///              memory is used again
///     held     in the table, in use, without a present object
///     live     in the table, in use, with a present object
///     waiting  in the table and in the list of kept records, with a present object, not in use
/// A record is in use while it is checked out or while objects of it are handed out. Its object is
/// present when it has the geometry of this record.
///
///                 checkOut              first GetTreeObject
///          free -----------> held -----------------------------> live
///           ^  <------------      <-----------------------------  | ^
///           |    last check-in     last object returned, not kept | |
///           |                                                     | |
///           |                             last check-in or return | | checkOut
///           |                                  of a kept record   v |
///           +--------------------------------------------------- waiting
///               65th waiting record, or removed from the store
///
/// A record is kept when one of its check-outs asked for it and it has not been removed from the
/// store since. A live record that is not kept becomes free at its last check-in or return.
#pragma once
#include <memory>
#include <vector>
#include "fennimark/FMObject.h"
#include "fennimark/HilbertTreeRecord.h"

namespace fennimark {

struct LiveRecord final : HilbertTreeRecord {
    quint32 checkOuts = 0;
    quint32 objectsOut = 0;
    bool keep = false;      // one of the check-outs asked to keep the object
    bool isPresent = false; // false: `object` is null or was made for another record
    std::unique_ptr<FMObject> object;
    std::vector<quint64> bytes; // the payload, where the store is not mapped
    LiveRecord *nextInBucket = nullptr;
    LiveRecord *older = nullptr, *newer = nullptr; // neighbours in the list of waiting records
};

/// A hash table of live records, with chains through the records themselves; a list of the waiting
/// ones, the newest and the oldest at its ends; a pool of free ones.
class LiveRecords {
public:
    /// Receives a call for each live object that is dropped, before its backing is freed.
    class Owner {
    public:
        virtual void objectDropped(int recordId, const FMObject &object) = 0;

    protected:
        ~Owner() = default;
    };

    explicit LiveRecords(Owner *owner) : mOwner(owner) {}
    ~LiveRecords();

    LiveRecord *find(int recordId) const;
    /// Adds a check-out of a record, which is taken from the pool when it is not in the table.
    LiveRecord *checkOut(int recordId, int chainId, bool keep);
    void checkIn(int recordId);
    void returnObject(LiveRecord &record);
    /// Drops a record that has been removed from the store: at once when it is not in use,
    /// otherwise at its last check-in or return.
    void forget(int recordId);
    void clear();

    /// The number of records in use. Tests check with it that every check-out has its check-in.
    quint32 inUse() const { return mInUse; }

private:
    std::size_t bucketOf(int recordId) const
    {
        return (quint32(recordId) * 2654435769U) & (mBuckets.size() - 1);
    }
    void rehash();
    void settle(LiveRecord &record);
    void drop(LiveRecord &record);
    void dropObject(LiveRecord &record);
    void unlinkWaiting(LiveRecord &record);

    Owner *mOwner;
    std::vector<LiveRecord *> mBuckets = std::vector<LiveRecord *>(128, nullptr);
    std::vector<std::unique_ptr<LiveRecord>> mRecords;
    std::vector<LiveRecord *> mFree;
    LiveRecord *mOldest = nullptr, *mNewest = nullptr;
    quint32 mWaiting = 0;
    quint32 mInUse = 0;
};

} // namespace fennimark
