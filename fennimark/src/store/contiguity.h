// SPDX-License-Identifier: MIT
/// Which polygons of one time share a boundary point (queen) or a piece of border (rook).
#pragma once
#include <optional>
#include <vector>
#include "base/progress.h"
#include "store/recordStore.h"

namespace fennimark {

/// Where the polygons in contact with a record are to be looked for.
///
/// The slack of a pair grows with its larger coordinate, so the boxes of a pair in contact are no
/// farther apart than the larger one of the two polygons' reaches. Records up to 1024 times the
/// median magnitude share one reach, which is still far below their size; each of them finds the
/// others. The few beyond it are wide: they look for all others with a reach of their own, so an
/// outlying polygon costs the others nothing.
class ContactReaches {
public:
    explicit ContactReaches(const RecordStore &store);

    /// The box of a record, wider by its reach.
    Rect2D window(const Rect2D &box) const;
    bool isWide(const Rect2D &box) const;
    /// The wide records, removed ones included, ascending.
    const std::vector<quint32> &wide() const { return mWide; }

private:
    double mTolerance;
    double mUsualMagnitude = 0.0;
    double mUsual = 0.0;
    std::vector<quint32> mWide;
};

/// The records that border on one, ascending: candidates from the box tree, then the pair test.
std::vector<quint32> borderingRecords(const RecordStore &store, const ContactReaches &reaches,
                                      quint32 record, double time, bool queen);

/// The same of all records at once, as arrays: 4 bytes a neighbour and 4 a record of the store.
/// Both relations come out of one pair test, so one graph serves queen and rook.
class ContiguityGraph {
public:
    /// False when the callback returns false.
    bool build(const RecordStore &store, const ContactReaches &reaches, double time,
               ProgressCallback progress);
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
    /// Makes the graph of the static piece around the time unless it is the one kept; false when the
    /// callback returns false.
    bool prepare(qint64 time, ProgressCallback progress);
    void clear();

private:
    void moveTo(qint64 time);
    std::vector<quint32> bordering(quint32 record, qint64 time, bool queen) const;

    const RecordStore &mStore;
    ContiguityGraph mGraph;
    bool mHasGraph = false;
    // The piece of time and the version of the store that all of this belongs to.
    timeRange mPiece{0.0, -1.0, 0};
    quint32 mVersion = 0;
    std::optional<ContactReaches> mReaches;
    int mQuestions = 0;
    std::vector<bool> mReached; // scratch of a walk, all false between walks
};

} // namespace fennimark
