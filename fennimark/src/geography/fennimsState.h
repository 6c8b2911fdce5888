// SPDX-License-Identifier: MIT
/// The state of a geography beside its records: name, projection, chains, and data derived from the
/// records.
#pragma once
#include <deque>
#include <vector>
#include "base/progress.h"
#include "fennimark/FMProjectionInfo.h"
#include "fennimark/Fennims.h"
#include "store/contiguity.h"
#include "store/recordStore.h"

namespace fennimark {

class FileContent;

/// The lists of records at the static pieces of time that were asked for last, at most 8 of them.
/// The lists are implicitly shared with the callers. A list is valid for one version of the store.
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

    /// Whether a record id is that of a polygon that exists at `time`. @param record  receives its
    /// number from 0.
    bool polygonAt(int recordId, qint64 time, quint32 &record) const;
    /// Sets `content` to the given chains and their records. `buffer` must outlive `content`.
    void describe(const QMap<int, FMObjectChain *> &chains, fennimark::FileContent &content,
                  std::vector<quint64> &buffer) const;
    /// Appends the points that exist at `time` and their record ids; false for other geographies.
    bool pointsAt(qint64 time, QVector<QPointF> &points, QVector<int> &ids) const;
};
