// SPDX-License-Identifier: MIT
/// What a geography holds beside its records: name, projection, pooled chains, and what is remade
/// when records change.
#pragma once
#include <deque>
#include <vector>
#include "base/progress.h"
#include "store/contiguity.h"
#include "fennimark/FMProjectionInfo.h"
#include "fennimark/Fennims.h"
#include "store/recordStore.h"

namespace fennimark {

class FileContent;

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
