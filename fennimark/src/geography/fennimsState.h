// SPDX-License-Identifier: MIT
/// What a geography holds beside its records: name, projection, pooled chains, and what is remade
/// when records change.
#pragma once
#include <deque>
#include <vector>
#include "store/contiguity.h"
#include "fennimark/FMProjectionInfo.h"
#include "fennimark/Fennims.h"
#include "store/recordStore.h"

namespace fennimark {

/// The records of the latest static pieces of time; handing one out costs a reference.
class ObservationLists {
public:
    const QVector<int> *find(double time, quint32 version) const;
    void insert(const timeRange &piece, quint32 version, const QVector<int> &records);
    void clear() { mLists.clear(); }

private:
    struct List {
        timeRange piece;
        quint32 version;
        QVector<int> records;
    };
    std::deque<List> mLists;
};

/// Checks one record out and in again.
class CheckedOutRecord {
public:
    CheckedOutRecord(const HilbertTree &tree, int recordId)
        : mTree(tree),
          mRecord(tree.CheckOutRecord(recordId, false)),
          mObject(mRecord ? mRecord->GetTreeObject(&tree) : nullptr)
    {
    }
    ~CheckedOutRecord()
    {
        if (mObject)
            mRecord->ReturnTreeObject(&mTree);
        if (mRecord)
            mTree.CheckInRecord(mRecord->recordId);
    }
    Q_DISABLE_COPY(CheckedOutRecord)
    const TreeObject *object() const { return mObject; }

private:
    const HilbertTree &mTree;
    const HilbertTreeRecord *mRecord;
    const TreeObject *mObject;
};

/// Reports i of n now and then; false: stop.
inline bool reported(Progress progress, int i, int n)
{
    return !progress || (i & 0xff) != 0 || progress(int(qint64(i) * 100 / n), nullptr);
}

} // namespace fennimark

class Fennims::Private {
public:
    explicit Private(fennimark::RecordStore &records) : store(records), contiguity(records) {}

    fennimark::RecordStore &store;
    QString name;
    FMProjectionInfo projection;
    bool hasType = false;
    std::deque<FMObjectChain> chains; // those of mChains, and removed ones
    fennimark::ObservationLists observationLists;
    fennimark::Contiguity contiguity;

    /// The record, counted from 0, when it is a polygon of the time.
    bool polygonAt(int recordId, qint64 time, quint32 &record) const;
    /// Into a content to be written: all living records, or those of some chains.
    void describe(const QMap<int, FMObjectChain *> &chains, fennimark::FileContent &content,
                  std::vector<quint64> &buffer) const;
    /// The tree of the points that exist at the time, by record id.
    bool pointsAt(qint64 time, QVector<QPointF> &points, QVector<int> &ids) const;
};
