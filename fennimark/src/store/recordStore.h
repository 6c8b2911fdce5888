// SPDX-License-Identifier: MIT
/// The records of one geography: columns in the order of the Hilbert curve, payloads, and a packed
/// box tree over them.
///
/// All of this is stored in one ScratchSpace, the payloads first, then the columns:
///
///     | payload 0 | payload 1 | ... | ranges | time index | chain ids | observations |
///     | boxes, or the coordinates of points | payload positions | nodes of the box tree |
///
/// A payload begins at a multiple of 8 bytes, a column at a multiple of 64. A payload holds
///     u32 part count | u32 size of each part | zeros up to a multiple of 8 |
///     f64 x, f64 y of each vertex | the run boxes, for objects of more than 8 vertices
/// A point has no payload: the column of boxes holds its 16 bytes of coordinates.
///
/// The columns, with the bytes they take for one record:
///     ranges            the distinct time ranges; 24 for each of them
///     time index     4  the record's entry in `ranges`; absent when all records have one range
///     chain ids      4  the chain of the record
///     observations   4  record ids by chain and time: each chain has a section of this list
///     boxes         32  the bounds (points: 16)
///     positions      8  where the payload begins (points: absent)
///     nodes        2.1  see base/boxTree.h
/// and on the heap 1 byte of flags.
///
/// Here records are numbered from 0. Public record ids begin at 1, because callers check in only
/// ids above 0.
///
/// Columns never change once they are laid out. Removing a record sets a flag. Reviving one clears
/// it and enters the record into two lists on the heap, which replace its entries in the columns of
/// chain ids and observations. Both operations, and replacing the content, change the version
/// number. What was derived from the records under another version is invalid:
///     the hull and the pieces of time       here, see refresh()
///     the lists of observations by time     ObservationLists in geography/fennimsState.h
///     the contiguity graph and its reaches  Contiguity in store/contiguity.h
/// Flags that record whether a polygon is simple change without a new version: they only cache a
/// property of the geometry.
#pragma once
#include <QHash>
#include <QVector>
#include <vector>
#include "base/boxTree.h"
#include "base/timeRules.h"
#include "fennimark/HilbertTree.h"
#include "object/observationSource.h"
#include "shape/geometryView.h"
#include "store/liveRecords.h"
#include "store/scratchSpace.h"

namespace fennimark {

constexpr quint64 kMaxRecords = 0x7ffffffeU;
// With at least this many records per range, the cost of testing all ranges before the records is
// negligible.
constexpr quint32 kRecordsARange = 64;

/// Flags of a record; the lower two bits are its geometry type.
constexpr quint8 kTypeMask = 0x03;
constexpr quint8 kKnownSimple = 0x04;
constexpr quint8 kKnownNotSimple = 0x08;
constexpr quint8 kRemoved = 0x10;

constexpr quint8 typeCode(ObjectKind kind)
{
    return kind == ObjectKind::Point ? 1 : kind == ObjectKind::Polygon ? 2 : 3;
}

/// The content of a store while it is collected, record by record.
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
    /// Reserves memory for `records` lines or polygons, and for their payloads when these will stay
    /// on the heap.
    void expect(std::size_t records, quint64 payloadBytes);
    void addPoint(const QPointF &point) { points.push_back(point); }
    /// Appends a line or polygon and computes its run boxes. False when the scratch file fails.
    bool addPayload(const GeometryView &view);
    const std::vector<quint64> &payloads() const { return mPayloads; }

private:
    std::vector<quint64> mPayloads;
    std::vector<RunBox> mRuns;
};

/// Selects the ranges that contain a time. DuringTime: those that overlap a range.
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

    /// Replaces the content. False, and the store is empty, when the scratch file fails.
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

    /// Views the vertices of a line or polygon: in place, or a copy in `buffer` when the payloads
    /// are not in memory. False when the device fails.
    bool view(quint32 record, GeometryView &view, std::vector<quint64> &buffer) const;
    /// Prefetches the memory that a view of the record will read.
    void fetchAhead(quint32 record) const
    {
        if (!mPoints) {
            __builtin_prefetch(mBoxes + record);
            __builtin_prefetch(mSpace.at(mPayloads[record]));
        }
    }
    /// Makes `object` a live object of the record. An object that is passed in is used again; it
    /// must be of this store. `buffer` must outlive the object. False when the device fails.
    bool present(quint32 record, std::unique_ptr<FMObject> &object,
                 std::vector<quint64> &buffer) const;
    /// The live object of a record that is checked out, owned by the record. Null when the device
    /// fails.
    FMObject *liveObject(LiveRecord &record) const;
    LiveRecords &live() const { return mLive; }

    /// Bytes of all columns and nodes, without the payloads.
    quint64 columnBytes() const { return mColumnBytes; }

    /// Changes with every removal, revival and replacement. Every cache of derived data stores the
    /// version that it belongs to and compares it; see the list at the head of this file.
    quint32 version() const { return mVersion; }
    void remove(quint32 record);
    /// Restores removed records as the observations of a new chain. @return the position of the
    /// first observation, see observation().
    quint32 revive(const std::vector<quint32> &records, int chain);

    /// The hull of all records that are not removed; a zero rectangle and kNoTime when there is
    /// none.
    RectInT hull() const;
    const TimePieces &pieces() const;

    const BoxTree &tree() const { return mTree; }
    /// Calls visit(record) for the records of a leaf, or of all leaves, that are not removed, whose
    /// box meets the window and whose range satisfies `when`. Records ascend.
    template <class When, class Visit>
    void visitLeaf(quint32 leaf, const Rect2D &window, const When &when, Visit visit) const;
    template <class When, class Visit>
    void visit(const Rect2D &window, const When &when, Visit visit) const;
    /// The ids of the same records, ascending.
    template <class When>
    void collect(const Rect2D &window, const When &when, QVector<int> &ids) const;
    /// False when the store is empty, or when all records share one range and `when` rejects it.
    template <class When> bool mayHold(const When &when) const
    {
        return mCount > 0 && (mTimeIndex != nullptr || when(mTimes[0]));
    }

private:
    unsigned livingIn(quint32 first, quint32 count) const;
    /// A mask of the records of the leaf that visitLeaf visits; bit i stands for the i-th record.
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
    quint32 mRemoved = 0; // the number of removed records
    quint32 mVersion = 0;

    // The observations of revived chains. Their positions continue those of the column.
    std::vector<quint32> mLaterObservations;
    QHash<quint32, qint32> mLaterChains; // the chain of each revived record

    mutable LiveRecords mLive;
    mutable quint32 mRefreshed = ~quint32(0); // the version to which mHull and mPieces belong
    mutable RectInT mHull;
    mutable TimePieces mPieces;
};

/// Gives other parts of the library access to the store of a tree.
struct StoreAccess {
    static RecordStore &store(const HilbertTree &tree) { return *tree.mStore; }
};

/// A mask of the boxes, or points, that meet the window; `count` is at most 16.
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

/// Writes the ids of those of `count` records from `first` on for which takes(record) is true to
/// `ids`, from index `found` on, and advances `found`. The loop has no branch, since the result of
/// `takes` is unpredictable.
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
    // The window covers all boxes, so only removal and time are tested. When there are far fewer
    // ranges than records, each range is tested once, before the records.
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
