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
    bool isPresent = false; // the object is this record's, not one that waits to be used again
    std::unique_ptr<FMObject> object;
    std::vector<quint64> bytes; // the payload, where the store is not mapped
    LiveRecord *nextInBucket = nullptr;
    LiveRecord *older = nullptr, *newer = nullptr; // while waiting among the kept ones
};

/// A hash table of live records, chained through themselves, and a pool that gives them again.
/// Records that were checked out to be kept wait after their final return, the 64 latest of them.
class LiveRecords {
public:
    /// Told of each live object that is given up.
    class Owner {
    public:
        virtual void objectDropped(int recordId, const FMObject &object) = 0;

    protected:
        ~Owner() = default;
    };

    explicit LiveRecords(Owner *owner) : mOwner(owner) {}
    ~LiveRecords();

    LiveRecord *find(int recordId) const;
    /// One more check-out of a record, which is made when it is not here.
    LiveRecord *checkOut(int recordId, int chainId, bool keep);
    void checkIn(int recordId);
    void returnObject(LiveRecord &record);
    /// Gives up a record that only waits: it has been removed.
    void forget(int recordId);
    void clear();

    quint32 inUse() const
    {
        return mInUse;
    } ///< Records checked out at the moment, for tests of balance.

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
