// SPDX-License-Identifier: MIT
/// The records that are checked out, with their live objects, and the last few that were.
#pragma once
#include <memory>
#include <vector>
#include "fennimark/FMObject.h"
#include "fennimark/HilbertTreeRecord.h"

namespace fennimark {

struct LiveRecord final : HilbertTreeRecord {
    quint32 checkOuts = 0;
    quint32 objectsOut = 0;
    bool keep = false;
    bool isPresent = false; // false: the object is left from another record, to be seated anew
    std::unique_ptr<FMObject> object;
    std::vector<quint64> bytes; // the payload, where the store is not mapped
    LiveRecord *nextInBucket = nullptr;
    LiveRecord *older = nullptr, *newer = nullptr; // while waiting among the kept ones
};

/// A hash table of live records, chained through themselves, and a pool of unused ones.
///
/// A live record is in one of four states:
///     free     in the pool; it has no id, but may still have an object to be seated anew
///     held     in the table, checked out, without a present object
///     live     in the table, with a present object, checked out or with objects handed out
///     waiting  in the table and in the list of kept ones, with a present object and no users
/// checkOut takes free or waiting to held or live; the first GetTreeObject takes held to live. When
/// the last user of a live record returns it, it becomes waiting if it was checked out to be kept,
/// and free otherwise. The 64 latest records wait; the oldest one becomes free for the next.
class LiveRecords {
public:
    /// Called for each live object that is dropped.
    class Owner {
    public:
        virtual void objectDropped(int recordId, const FMObject &object) = 0;

    protected:
        ~Owner() = default;
    };

    explicit LiveRecords(Owner *owner) : mOwner(owner) {}
    ~LiveRecords();

    LiveRecord *find(int recordId) const;
    /// Checks a record out once more; it is taken from the pool when it is not in the table.
    LiveRecord *checkOut(int recordId, int chainId, bool keep);
    void checkIn(int recordId);
    void returnObject(LiveRecord &record);
    /// Drops a record that has been removed from the store, at once or at its last return.
    void forget(int recordId);
    void clear();

    /// The number of records checked out now, for tests of balance.
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
