// SPDX-License-Identifier: MIT
#include "store/liveRecords.h"
#include "shape/geometryView.h"
#include "shape/shape.h"

namespace fennimark {
namespace {

constexpr quint32 kKept = 64;

} // namespace

LiveRecords::~LiveRecords() = default;

LiveRecord *LiveRecords::find(int recordId) const
{
    LiveRecord *record = mBuckets[bucketOf(recordId)];
    while (record && record->recordId != recordId)
        record = record->nextInBucket;
    return record;
}

LiveRecord *LiveRecords::checkOut(int recordId, int chainId, bool keep)
{
    LiveRecord *record = find(recordId);
    if (!record) {
        if (mFree.empty()) {
            mRecords.push_back(std::make_unique<LiveRecord>());
            mFree.push_back(mRecords.back().get());
            if (mRecords.size() > mBuckets.size())
                rehash();
        }
        record = mFree.back();
        mFree.pop_back();
        record->recordId = recordId;
        record->chainId = chainId;
        LiveRecord *&bucket = mBuckets[bucketOf(recordId)];
        record->nextInBucket = bucket;
        bucket = record;
        ++mInUse;
    } else if (record->checkOuts == 0 && record->objectsOut == 0) {
        unlinkWaiting(*record);
        ++mInUse;
    }
    ++record->checkOuts;
    record->keep |= keep;
    return record;
}

void LiveRecords::checkIn(int recordId)
{
    LiveRecord *record = find(recordId);
    if (!record || record->checkOuts == 0)
        return;
    --record->checkOuts;
    settle(*record);
}

void LiveRecords::returnObject(LiveRecord &record)
{
    if (record.objectsOut == 0)
        return;
    --record.objectsOut;
    if (record.objectsOut == 0 && !record.keep)
        dropObject(record);
    settle(record);
}

void LiveRecords::settle(LiveRecord &record)
{
    if (record.checkOuts > 0 || record.objectsOut > 0)
        return;
    --mInUse;
    if (!record.keep || !record.isPresent) {
        drop(record);
        return;
    }
    record.older = mNewest;
    record.newer = nullptr;
    (mNewest ? mNewest->newer : mOldest) = &record;
    mNewest = &record;
    if (++mWaiting > kKept) {
        LiveRecord &oldest = *mOldest;
        unlinkWaiting(oldest);
        drop(oldest);
    }
}

void LiveRecords::unlinkWaiting(LiveRecord &record)
{
    (record.older ? record.older->newer : mOldest) = record.newer;
    (record.newer ? record.newer->older : mNewest) = record.older;
    record.older = record.newer = nullptr;
    --mWaiting;
}

void LiveRecords::dropObject(LiveRecord &record)
{
    if (!record.isPresent)
        return;
    mOwner->objectDropped(record.recordId, *record.object);
    ObjectAccess::backing(*record.object).reset();
    record.isPresent = false;
}

void LiveRecords::drop(LiveRecord &record)
{
    dropObject(record);
    LiveRecord **link = &mBuckets[bucketOf(record.recordId)];
    while (*link != &record)
        link = &(*link)->nextInBucket;
    *link = record.nextInBucket;
    record.keep = false;
    if (!record.bytes.empty())
        std::vector<quint64>().swap(record.bytes);
    mFree.push_back(&record);
}

void LiveRecords::forget(int recordId)
{
    LiveRecord *record = find(recordId);
    if (!record)
        return;
    record->keep = false;
    if (record->checkOuts == 0 && record->objectsOut == 0) {
        unlinkWaiting(*record);
        drop(*record);
    }
}

void LiveRecords::rehash()
{
    std::vector<LiveRecord *> old(mBuckets.size() * 2, nullptr);
    old.swap(mBuckets);
    for (LiveRecord *record : old) {
        while (record) {
            LiveRecord *next = record->nextInBucket;
            LiveRecord *&bucket = mBuckets[bucketOf(record->recordId)];
            record->nextInBucket = bucket;
            bucket = record;
            record = next;
        }
    }
}

void LiveRecords::clear()
{
    mBuckets.assign(128, nullptr);
    mFree.clear();
    mRecords.clear();
    mOldest = mNewest = nullptr;
    mWaiting = mInUse = 0;
}

} // namespace fennimark
