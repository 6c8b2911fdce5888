// SPDX-License-Identifier: MIT
// The public face of the record store. Public record ids begin at 1, numbers in the store at 0.
#include "fennimark/HilbertTree.h"
#include "store/recordStore.h"

using fennimark::LiveRecord;

HilbertTree::HilbertTree() : mStore(std::make_unique<fennimark::RecordStore>())
{
}
HilbertTree::~HilbertTree() = default;

HilbertTreeRecord *HilbertTree::CheckOutRecord(int recordId, bool keep)
{
    if (!mStore->isRecordId(recordId))
        return nullptr;
    mStore->fetchAhead(quint32(recordId) - 1);
    return mStore->live().checkOut(recordId, mStore->chainId(quint32(recordId) - 1), keep);
}

const HilbertTreeRecord *HilbertTree::CheckOutRecord(int recordId, bool keep) const
{
    return const_cast<HilbertTree *>(this)->CheckOutRecord(recordId, keep);
}

void HilbertTree::CheckInRecord(int recordId) const
{
    mStore->live().checkIn(recordId);
}

void HilbertTree::Overlaps(const RectInT &box, QVector<int> &records) const
{
    records.clear();
    const fennimark::DuringTime during{fennimark::normalized(box)};
    if (!fennimark::isRect(box) || !(during.span.start <= during.span.end))
        return;
    mStore->collect(box, during, records);
}

TreeObject *HilbertTreeRecord::GetTreeObject(const HilbertTree *tree)
{
    auto &record = static_cast<LiveRecord &>(*this);
    TreeObject *object = tree->mStore->liveObject(record);
    if (object)
        ++record.objectsOut;
    return object;
}

const TreeObject *HilbertTreeRecord::GetTreeObject(const HilbertTree *tree) const
{
    return const_cast<HilbertTreeRecord *>(this)->GetTreeObject(tree);
}

void HilbertTreeRecord::ReturnTreeObject(const HilbertTree *tree) const
{
    tree->mStore->live().returnObject(
        const_cast<LiveRecord &>(static_cast<const LiveRecord &>(*this)));
}
