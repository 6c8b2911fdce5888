// SPDX-License-Identifier: MIT
/// The records of one geography: columns in the order of the Hilbert curve, payloads, a packed box
/// tree over them.
///
/// All of it lies in one ScratchSpace, payloads first, each at a multiple of 8:
///     u32 part count, u32 part sizes, padding, 16 bytes a vertex, the run boxes of objects with
///     more than 8 vertices.
/// A point has no payload: its 16 bytes are its box. Behind the payloads stand the columns and the
/// nodes. Per record:
///     box 32 (point 16), time index 4 (none when all records share one range), chain id 4, payload
///     position 8 (points none), entry in the list of observations 4, nodes 2.1; on the heap 1 of
///     flags, which are the only thing to change.
///
///     payload 0 | payload 1 | ... | ranges | time index | chain ids | observations | boxes |
///     payload positions | nodes
///
/// Here records count from 0; their public ids count from 1, since callers check in only ids above
/// 0. Columns never change once they are laid out. Removing and reviving records changes flags and
/// the version number alone; each change of the version invalidates the hull and the pieces of time
/// here, the lists of observations in the Fennims, and the contiguity graph with its reaches.
#pragma once
#include <QHash>
#include <QVector>
#include <vector>
#include "base/boxTree.h"
#include "fennimark/HilbertTree.h"
#include "shape/geometryView.h"
#include "store/liveRecords.h"
#include "object/observationSource.h"
#include "store/scratchSpace.h"
#include "base/timeRules.h"

namespace fennimark {

constexpr quint64 kMaxRecords = 0x7ffffffeU;
constexpr quint32 kRecordsARange = 64; // so many, and testing all ranges costs next to nothing

/// Flags of a record; the lower two bits are its geometry type.
constexpr quint8 kTypeMask = 0x03;
constexpr quint8 kKnownSimple = 0x04;
constexpr quint8 kKnownNotSimple = 0x08;
constexpr quint8 kRemoved = 0x10;

constexpr quint8 typeCode(ObjectKind kind)
{
    return kind == ObjectKind::Point ? 1 : kind == ObjectKind::Polygon ? 2 : 3;
}

/// What is collected, record by record, before a store is made of it.
class StoreContent {
public:
    ObjectKind kind = ObjectKind::Point;
    double tolerance = 0.0;
    std::vector<timeRange> times;      // distinct
    std::vector<quint32> timeIndex;    // by record
    std::vector<qint32> chainOf;       // by record
    std::vector<quint32> observations; // public record ids by chain and time
    std::vector<QPointF> points;
    std::vector<Rect2D> boxes;
    ScratchSpace space;

    std::size_t recordCount() const
    {
        return kind == ObjectKind::Point ? points.size() : boxes.size();
    }
    /// Makes room for lines or polygons that are about to come, and for their bytes on the heap
    /// only when they will stay there.
    void expect(std::size_t records, quint64 payloadBytes);
    void addPoint(const QPointF &point) { points.push_back(point); }
    /// Takes a line's or polygon's bytes; its run boxes are made here. False when the scratch file
    /// fails.
    bool addPayload(const GeometryView &view);
    const std::vector<quint64> &payloads() const { return mPayloads; }

private:
    std::vector<quint64> mPayloads;
    std::vector<RunBox> mRuns;
};

/// Records that exist at a time, or at some time of a range.
struct AtTime {
    double time;
    double from() const { return time; }
    double to() const { return time; }
    bool operator()(const timeRange &range) const { return contains(range, time); }
};
struct DuringTime {
    timeRange span;
    double from() const { return span.start; }
    double to() const { return span.end; }
    bool operator()(const timeRange &range) const { return overlaps(range, span); }
};

class RecordStore final : public ObservationSource, private LiveRecords::Owner {
public:
    RecordStore();

    /// Replaces all there is. False, and the store is empty, when the scratch file fails.
    bool assign(StoreContent &&content);
    void clear();

    ObjectKind kind() const { return mKind; }
    double tolerance() const { return mTolerance; }
    quint32 recordCount() const { return mCount; }
    bool lives(quint32 record) const { return (mFlags[record] & kRemoved) == 0; }
    bool isRecordId(int id) const
    {
        return id > 0 && quint32(id) <= mCount && lives(quint32(id) - 1);
    }
    Rect2D box(quint32 record) const
    {
        return mPoints ? Rect2D{mPoints[record].x(), mPoints[record].x(), mPoints[record].y(),
                                mPoints[record].y()}
                       : mBoxes[record];
    }
    const timeRange &range(quint32 record) const
    {
        return mTimes[mTimeIndex ? mTimeIndex[record] : 0];
    }
    int chainId(quint32 record) const;
    QPair<timeRange, int> observation(quint32 first, quint32 index) const override;

    /// A line's or polygon's vertices in place, or in `buffer` where they are not in memory. False
    /// when the device fails.
    bool view(quint32 record, GeometryView &view, std::vector<quint64> &buffer) const;
    /// Asks for the memory that a view of the record will read.
    void fetchAhead(quint32 record) const
    {
        if (!mPoints) {
            __builtin_prefetch(mBoxes + record);
            __builtin_prefetch(mSpace.at(mPayloads[record]));
        }
    }
    /// Makes `object` a live object of the record, in place of an earlier one where there is one.
    /// False when the device fails. `buffer` must outlive it.
    bool present(quint32 record, std::unique_ptr<FMObject> &object,
                 std::vector<quint64> &buffer) const;
    /// The record's live object while it is checked out; it stays the record's.
    FMObject *liveObject(LiveRecord &record) const;
    LiveRecords &live() const { return mLive; }

    /// Bytes of all columns and nodes, without the payloads.
    quint64 columnBytes() const { return mColumnBytes; }

    /// Changes with every removal and addition: whoever caches derived things compares it.
    quint32 version() const { return mVersion; }
    void remove(quint32 record);
    /// Removed records live again, in a new chain. @return where its observations begin
    quint32 revive(const std::vector<quint32> &records, int chain);

    /// Hull of the living; zero and kNoTime when there are none.
    RectInT hull() const;
    const TimePieces &pieces() const;

    const BoxTree &tree() const { return mTree; }
    /// Calls visit(record) for the living records of a run, or of all, whose box meets the window
    /// at the time.
    template <class When, class Visit>
    void visitLeaf(quint32 leaf, const Rect2D &window, const When &when, Visit visit) const;
    template <class When, class Visit>
    void visit(const Rect2D &window, const When &when, Visit visit) const;
    /// The ids of the same records, ascending.
    template <class When>
    void collect(const Rect2D &window, const When &when, QVector<int> &ids) const;
    /// Whether the store has records of the time at all, where one range says it for all.
    template <class When> bool mayHold(const When &when) const
    {
        return mCount > 0 && (mTimeIndex != nullptr || when(mTimes[0]));
    }

private:
    unsigned livingIn(quint32 first, quint32 count) const;
    /// One bit for each record of the run that lives and hits.
    template <class When>
    unsigned hitsIn(quint32 leaf, const Rect2D &window, const When &when) const;
    template <class T> const T *column(quint64 offset) const
    {
        return reinterpret_cast<const T *>(mSpace.at(offset));
    }
    struct Layout;
    bool layOut(const StoreContent &content, const std::vector<BoxNode> &nodes, Layout &at);
    template <class T> bool appendColumn(const std::vector<T> &values, quint64 &offset);
    std::vector<LeafHull> leafHulls(const StoreContent &content) const;
    void objectDropped(int recordId, const FMObject &object) override;
    void refresh() const;

    ObjectKind mKind = ObjectKind::Point;
    double mTolerance = 0.0;
    quint32 mCount = 0;
    ScratchSpace mSpace;
    quint64 mPayloadEnd = 0;
    quint64 mColumnBytes = 0;
    const timeRange *mTimes = nullptr;
    const quint32 *mTimeIndex = nullptr; // null: all records have the first range
    const qint32 *mChainOf = nullptr;
    const quint32 *mObservations = nullptr;
    quint32 mTimeCount = 0;
    const QPointF *mPoints = nullptr;
    const Rect2D *mBoxes = nullptr;
    const quint64 *mPayloads = nullptr;
    BoxTree mTree;
    Rect2D mBounds = kNoBox; // of all records, removed ones included
    std::vector<quint8> mFlags;
    quint32 mRemoved = 0; // how many records are
    quint32 mVersion = 0;

    std::vector<quint32>
        mLaterObservations; // of chains made after the columns; they count on from the column's end
    QHash<quint32, qint32> mLaterChains; // their records

    mutable LiveRecords mLive;
    mutable quint32 mRefreshed = ~quint32(0); // the version that hull and pieces are of
    mutable RectInT mHull;
    mutable TimePieces mPieces;
};

/// The way past the public surface of a tree.
struct StoreAccess {
    static RecordStore &store(const HilbertTree &tree) { return *tree.mStore; }
};

/// One bit for each of `count` boxes, or points, that meets the window.
unsigned boxesIn(const Rect2D *boxes, quint32 count, const Rect2D &window);
unsigned pointsIn(const QPointF *points, quint32 count, const Rect2D &window);

inline unsigned RecordStore::livingIn(quint32 first, quint32 count) const
{
    unsigned bits = (1U << count) - 1;
    if (mRemoved == 0)
        return bits;
    for (quint32 i = 0; i < count; ++i)
        bits &= ~(unsigned(!lives(first + i)) << i);
    return bits;
}

template <class When>
unsigned RecordStore::hitsIn(quint32 leaf, const Rect2D &window, const When &when) const
{
    const quint32 first = leaf * kRecordsPerLeaf;
    const quint32 count = std::min(mCount - first, kRecordsPerLeaf);
    const unsigned inWindow =
        mPoints ? pointsIn(mPoints + first, count, window) : boxesIn(mBoxes + first, count, window);
    unsigned hits = inWindow & livingIn(first, count);
    for (unsigned untested = mTimeIndex ? hits : 0; untested != 0; untested &= untested - 1) {
        const quint32 i = qCountTrailingZeroBits(untested);
        hits &= ~(unsigned(!when(mTimes[mTimeIndex[first + i]])) << i);
    }
    return hits;
}

template <class Visit> void visitBits(quint32 first, unsigned bits, Visit visit)
{
    for (; bits != 0; bits &= bits - 1)
        visit(first + quint32(qCountTrailingZeroBits(bits)));
}

template <class When, class Visit>
void RecordStore::visitLeaf(quint32 leaf, const Rect2D &window, const When &when, Visit visit) const
{
    visitBits(leaf * kRecordsPerLeaf, hitsIn(leaf, window, when), visit);
}

template <class When, class Visit>
void RecordStore::visit(const Rect2D &window, const When &when, Visit visit) const
{
    if (!mayHold(when))
        return;
    mTree.visitLeaves(BoxWindow(window, when.from(), when.to()),
                      [&](quint32 leaf) { visitLeaf(leaf, window, when, visit); });
}

/// Appends first + 1 + i for each i < count that takes(first + i), without a branch: which ones do
/// cannot be predicted.
template <class Takes>
void appendIds(quint32 first, quint32 count, QVector<int> &ids, int &found, Takes takes)
{
    if (ids.size() < found + int(kRecordsPerLeaf))
        ids.resize(std::max(64, 2 * ids.size()));
    int *const out = ids.data();
    int at = found;
    for (quint32 record = first; record < first + count; ++record) {
        out[at] = int(record) + 1;
        at += takes(record) ? 1 : 0;
    }
    found = at;
}

template <class When>
void RecordStore::collect(const Rect2D &window, const When &when, QVector<int> &ids) const
{
    ids.clear();
    if (!covers(window, mBounds)) {
        visit(window, when, [&ids](quint32 record) { ids.append(int(record) + 1); });
        return;
    }
    if (!mayHold(when))
        return;
    int found = 0;
    const auto collectLeaves = [&](auto takes) {
        mTree.visitLeaves(BoxWindow(window, when.from(), when.to()), [&](quint32 leaf) {
            const quint32 first = leaf * kRecordsPerLeaf;
            appendIds(first, std::min(mCount - first, kRecordsPerLeaf), ids, found, takes);
        });
    };
    // No box needs a look; and where ranges are far fewer than records, they are tested beforehand.
    if (mRemoved == 0 && mTimeIndex && mTimeCount < mCount / kRecordsARange) {
        std::vector<quint8> admitted(mTimeCount);
        for (quint32 i = 0; i < mTimeCount; ++i)
            admitted[i] = when(mTimes[i]);
        collectLeaves([&](quint32 record) { return admitted[mTimeIndex[record]]; });
    } else {
        collectLeaves([&](quint32 record) { return lives(record) && when(range(record)); });
    }
    ids.resize(found);
}

} // namespace fennimark
