// SPDX-License-Identifier: MIT
/// Contiguity: which polygons of one time share a boundary point (queen) or a piece of border
/// (rook).
///
/// Candidates come from the box tree: two polygons in contact have boxes that are no farther apart
/// than the larger one of their reaches (contactReach in shape/border.h). Each candidate pair is
/// tested by contact() of shape/border.h; nothing else decides.
///
/// There are two ways with equal results. borderingRecords answers for one record. ContiguityGraph
/// tests all pairs leaf by leaf, each pair once, and stores both directions as arrays:
///
///     mFirst      [ 0 | 2 | 3 | ... ]           by record
///     mNeighbors  [ 1*2+1, 9*2 | 0*2+1 | ... ]  neighbour * 2, plus 1 where a piece is shared
///
/// The neighbours of record r are mNeighbors[mFirst[r]] to mNeighbors[mFirst[r + 1] - 1], in
/// ascending order. The queen relation is all of them, the rook relation those with the lowest bit
/// set. Neighbours of a higher order are found by a breadth-first walk.
///
/// Contiguity keeps one graph, for one static piece of time and one version of the store. When the
/// version of the store differs or the time is in another piece, the graph, the reaches and the
/// count of queries are dropped.
#pragma once
#include <optional>
#include <vector>
#include "base/progress.h"
#include "store/recordStore.h"

namespace fennimark {

/// The windows in which the polygons in contact with a record are searched.
///
/// The slack of a pair grows with its largest coordinate, so the boxes of a pair in contact are no
/// farther apart than the larger one of the two polygons' reaches. The magnitude of a record is the
/// largest absolute coordinate of its box. Records up to 1024 times the median magnitude share one
/// reach, which is still far below their size. Records beyond that are wide: each has its own
/// reach, and a contact with a wide record is searched from the wide one. So an outlying polygon
/// does not enlarge the windows of the others.
class ContactReaches {
public:
    explicit ContactReaches(const RecordStore &store);

    /// The box of a record, enlarged by its reach.
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

/// The records in contact with `record` at `time`, ascending.
std::vector<quint32> borderingRecords(const RecordStore &store, const ContactReaches &reaches,
                                      quint32 record, double time, bool queen);

/// The same for all records at once, as arrays: 4 bytes for each neighbour and 4 for each record of
/// the store. One pair test gives both relations, so one graph serves queen and rook.
class ContiguityGraph {
public:
    /// False when the callback returns false.
    bool build(const RecordStore &store, const ContactReaches &reaches, double time,
               ProgressCallback progress);
    std::vector<quint32> bordering(quint32 record, bool queen) const;

private:
    std::vector<quint32> mFirst;     // where the list of each record begins; see above
    std::vector<quint32> mNeighbors; // record * 2, plus 1 where a piece of border is shared
};

/// Contiguity of one store. The graph is built for walks of more than one step, and after 64
/// queries of one step about one static piece of time.
class Contiguity {
public:
    explicit Contiguity(const RecordStore &store) : mStore(store) {}

    /// Element i holds the records exactly i + 1 steps from `record`, ascending; no element is
    /// empty.
    std::vector<std::vector<quint32>> rings(quint32 record, qint64 time, bool queen, int steps);
    /// Builds the graph of the static piece that contains `time`, unless it is the current one.
    /// False when the callback returns false.
    bool prepare(qint64 time, ProgressCallback progress);
    void clear();

private:
    void moveTo(qint64 time);
    std::vector<quint32> bordering(quint32 record, qint64 time, bool queen) const;

    const RecordStore &mStore;
    ContiguityGraph mGraph;
    bool mHasGraph = false;
    // The piece of time and the version of the store to which the graph, the reaches and the count
    // of queries belong.
    timeRange mPiece{0.0, -1.0, 0};
    quint32 mVersion = 0;
    std::optional<ContactReaches> mReaches;
    int mQueries = 0;
    std::vector<bool> mReached; // work area of a walk, all false between walks
};

} // namespace fennimark
