// SPDX-License-Identifier: MIT
/// Which polygons of one time share a boundary point (queen) or a piece of border (rook).
#pragma once
#include <vector>
#include "file/geometryFile.h"
#include "store/recordStore.h"

namespace fennimark {

/// The records that border on one, ascending: candidates from the box tree, then the pair test.
std::vector<quint32> borderingRecords(const RecordStore &store, quint32 record, double time,
                                      bool queen);

/// The same of all records at once, as arrays: 4 bytes a neighbour and 4 a record of the store.
/// Both relations come out of one pair test, so one graph serves queen and rook.
class ContiguityGraph {
public:
    /// False when the callback says so.
    bool build(const RecordStore &store, double time, Progress progress);
    std::vector<quint32> bordering(quint32 record, bool queen) const;

private:
    std::vector<quint32> mFirst;     // by record, and one more
    std::vector<quint32> mNeighbors; // record * 2, plus 1 where a piece of border is shared
};

/// Contiguity of one store, with the first-order graph kept where it pays: for walks of more than
/// one step and after 64 questions about one static piece of time.
class Contiguity {
public:
    explicit Contiguity(const RecordStore &store) : mStore(store) {}

    /// Element i: the records exactly i + 1 steps from `record`, ascending; ends with the last that
    /// has any.
    std::vector<std::vector<quint32>> rings(quint32 record, qint64 time, bool queen, int steps);
    /// Makes the graph of the time's piece if it is not the one at hand; false when the callback
    /// says so.
    bool prepare(qint64 time, Progress progress);
    void clear();

private:
    bool isAtHand(qint64 time);
    std::vector<quint32> bordering(quint32 record, qint64 time, bool queen) const;

    const RecordStore &mStore;
    ContiguityGraph mGraph;
    bool mHasGraph = false;
    timeRange mPiece{0.0, -1.0, 0}; // that the graph, or the count of questions, is of
    quint32 mVersion = 0;
    int mQuestions = 0;
    std::vector<bool> mReached; // scratch of a walk, all false between walks
};

} // namespace fennimark
